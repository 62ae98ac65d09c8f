#include "kdraw/objects/table_record.hpp"

namespace kdraw {

namespace {

constexpr int kDependent = 16, kResolved = 32, kReferenced = 64;
/// From R2007 on one number tells that a record came with an external reference.
constexpr int kDependentIndex = 0x100;

}  // namespace

void TableRecord::describeHead(Fields& f, std::string_view marker, int& flags) { describeHead(f, marker, flags, name); }

void TableRecord::describeHead(Fields& f, std::string_view marker, int& flags, std::string& stored) {
    if (f.dxf()) {
        f.subclass("AcDbSymbolTableRecord");
        f.subclass(marker);
        f.text(2, stored);
        int all = (flags & ~(kDependent | kResolved | kReferenced)) | (xrefDependent ? kDependent | kResolved : 0);
        f.bs(70, all);
        if (f.reading()) {
            xrefDependent = (all & kDependent) != 0;
            flags = all & ~(kDependent | kResolved | kReferenced);
        }
        return;
    }
    f.text(0, stored);
    if (f.before(Version::R2007)) {
        f.b(0, referenced);
        f.bs(0, xrefIndex);
        f.b(0, xrefDependent);
    } else {
        int index = xrefDependent ? kDependentIndex : xrefIndex;
        f.bs(0, index);
        if (f.reading()) {
            referenced = true;
            xrefDependent = (index & kDependentIndex) != 0;
            xrefIndex = index & ~kDependentIndex;
        }
    }
    f.handle(Ref::HardPointer, 0, xrefBlock);
}

}  // namespace kdraw
