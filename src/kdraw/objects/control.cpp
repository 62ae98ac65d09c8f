#include "kdraw/objects/control.hpp"

#include "kdraw/groups/describing_objects.hpp"

namespace kdraw {

void Control::describe(Fields& f) {
    if (f.dxf()) {
        f.subclass("AcDbSymbolTable");
        f.constant(70, static_cast<std::int64_t>(recordCount()));
        describeRest(f);
        return;
    }
    const std::size_t n = f.count(Width::BL, 0, records.size(), 8);
    describeSecondCount(f);
    f.restOfHandles(Ref::SoftOwner, 0, records, n);
    describeRest(f);
}

std::size_t BlockControl::recordCount() const { return records.size() + 2; }

void BlockControl::describeRest(Fields& f) {
    f.handle(Ref::HardOwner, 0, modelSpace);
    f.handle(Ref::HardOwner, 0, paperSpace);
}

std::size_t LinetypeControl::recordCount() const { return records.size() + 2; }

void LinetypeControl::describeRest(Fields& f) {
    f.handle(Ref::HardOwner, 0, byBlock);
    f.handle(Ref::HardOwner, 0, byLayer);
}

void DimStyleControl::describeSecondCount(Fields& f) {
    // One byte counts these.
    if (further.size() > 255) further.resize(255);
    furtherCount_ = f.count(Width::RC, 0, further.size(), 8);
}

void DimStyleControl::describeRest(Fields& f) {
    if (!f.dxf()) {
        f.restOfHandles(Ref::HardPointer, 0, further, furtherCount_);
        return;
    }
    f.subclass("AcDbDimStyleTable");
    f.constant(71, static_cast<std::int64_t>(further.size()));
    groupHandles(f, 340, further);
}

}  // namespace kdraw
