#include "kdraw/objects/block_header.hpp"

#include "kdraw/groups/describing_objects.hpp"
#include "strings/case_fold.hpp"

namespace kdraw {

namespace {

bool startsWith(std::string_view text, std::string_view lowerStart) {
    return kova::strings::equalNoCase(text.substr(0, lowerStart.size()), lowerStart);
}

constexpr std::string_view kModel = "*model_space", kPaper = "*paper_space";

}  // namespace

bool BlockHeader::isSpace() const { return startsWith(name, kModel) || startsWith(name, kPaper); }

std::string BlockHeader::storedName() const {
    if (startsWith(name, kPaper)) return name.substr(0, kPaper.size());
    if (anonymous && name.size() > 2 && name.front() == '*' && !startsWith(name, kModel)) {
        std::size_t end = name.size();
        while (end > 2 && name[end - 1] >= '0' && name[end - 1] <= '9') --end;
        return name.substr(0, end);
    }
    return name;
}

void BlockHeader::describe(Fields& f) {
    if (f.dxf()) {
        // Group 70 of this record is the unit: the flags of other records' heads stand with the BLOCK entity.
        f.subclass("AcDbSymbolTableRecord");
        f.subclass("AcDbBlockTableRecord");
        f.text(2, name);
        f.handle(Ref::HardPointer, 340, layout);
        f.bs(70, units);
        f.b(280, explodable);
        f.rc(281, scaling);
        if (f.reading()) anonymous = name.starts_with('*') && !isSpace();
        return;
    }
    int none = 0;
    std::string stored = f.reading() ? std::string() : storedName();
    describeHead(f, {}, none, stored);
    if (f.reading()) name = std::move(stored);
    f.b(0, anonymous);
    f.b(0, hasAttributes);
    f.b(0, isXref);
    f.b(0, isOverlay);
    f.b(0, xrefUnloaded);
    const bool external = isXref || isOverlay;
    std::size_t count = 0;
    if (f.since(Version::R2004) && !external) count = f.count(Width::BL, 0, owned.size(), 8);
    f.bd3(0, base);
    f.text(0, xrefPath);
    // One byte for every reference, and a zero.
    std::size_t references = 0;
    for (;;) {
        std::uint8_t more = references < inserts.size() ? 1 : 0;
        f.rc(0, more);
        if (more == 0 || f.failed()) break;
        ++references;
    }
    f.text(0, description);
    const std::size_t size = f.count(Width::BL, 0, preview.size(), 8);
    f.bytes(0, preview, size);
    if (f.since(Version::R2007)) {
        f.bs(0, units);
        f.b(0, explodable);
        f.rc(0, scaling);
    }
    f.handle(Ref::HardOwner, 0, block);
    if (f.before(Version::R2004)) {
        if (!external) {
            f.handle(Ref::SoftPointer, 0, firstEntity);
            f.handle(Ref::SoftPointer, 0, lastEntity);
        }
    } else if (!external) {
        f.restOfHandles(Ref::HardOwner, 0, owned, count);
    }
    f.handle(Ref::HardOwner, 0, endBlock);
    f.restOfHandles(Ref::SoftPointer, 0, inserts, references);
    f.handle(Ref::HardPointer, 0, layout);
}

}  // namespace kdraw
