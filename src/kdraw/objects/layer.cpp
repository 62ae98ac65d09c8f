#include "kdraw/objects/layer.hpp"

#include "kdraw/groups/describing_objects.hpp"

namespace kdraw {

namespace {

constexpr int kFrozen = 1, kOff = 2, kFrozenInNew = 4, kLocked = 8, kPlottable = 16, kWeightShift = 5;

}  // namespace

void LayerRecord::describe(Fields& f) {
    if (f.dxf()) {
        describeGroups(f);
        return;
    }
    describeHead(f, {});
    int packed = (frozen ? kFrozen : 0) | (off ? kOff : 0) | (frozenInNew ? kFrozenInNew : 0) | (locked ? kLocked : 0) |
                 (plottable ? kPlottable : 0) | (lineweight & 31) << kWeightShift;
    f.bs(0, packed);
    if (f.reading()) {
        frozen = (packed & kFrozen) != 0;
        off = (packed & kOff) != 0;
        frozenInNew = (packed & kFrozenInNew) != 0;
        locked = (packed & kLocked) != 0;
        plottable = (packed & kPlottable) != 0;
        lineweight = static_cast<std::uint8_t>(packed >> kWeightShift & 31);
    }
    f.color(0, 0, color);
    f.handle(Ref::HardPointer, 0, plotStyle);
    if (f.since(Version::R2007)) f.handle(Ref::HardPointer, 0, material);
    f.record(Table::Linetype, 0, linetype);
    if (f.since(Version::R2013)) f.handle(Ref::HardPointer, 0, visualStyle);
}

void LayerRecord::describeGroups(Fields& f) {
    int flags = (frozen ? 1 : 0) | (frozenInNew ? 2 : 0) | (locked ? 4 : 0);
    describeHead(f, "AcDbLayerTableRecord", flags);
    if (f.reading()) {
        frozen = (flags & 1) != 0;
        frozenInNew = (flags & 2) != 0;
        locked = (flags & 4) != 0;
    }
    // The sign of the colour says whether the layer is on.
    int index = color.index();
    if (index < 1 || index > 255) index = 7;
    if (off) index = -index;
    f.bs(62, index);
    if (DxfInput* in = f.input()) {
        off = index < 0;
        const int bare = off ? -index : index;
        color = Color::fromIndex(bare >= 1 && bare <= 255 ? bare : 7);
        if (in->find(420)) color.raw = Color::kTrue | (static_cast<std::uint32_t>(in->integer()) & 0xFFFFFF);
    } else if (color.isTrue()) {
        f.output()->integer(420, static_cast<std::int64_t>(color.rgb()));
    }
    f.record(Table::Linetype, 6, linetype);
    if (f.reading() || !plottable) f.b(290, plottable);
    int weight = lineweightOf(lineweight);
    f.bs(370, weight);
    if (f.reading()) lineweight = lineweightIndex(weight);
    optionalHandle(f, Ref::HardPointer, 390, plotStyle);
    optionalHandle(f, Ref::HardPointer, 347, material);
    optionalHandle(f, Ref::HardPointer, 348, visualStyle);
}

}  // namespace kdraw
