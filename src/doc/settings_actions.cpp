#include "doc/settings_actions.hpp"

namespace kova::doc {

namespace {

/// Calls `each(a member of x, the same member of y)` for all members of DrawingSettings, which bear the same names in
/// the drawing.
template <class X, class Y, class Each>
void eachSetting(X& x, Y& y, Each&& each) {
    each(x.properties, y.properties);
    each(x.currentLayer, y.currentLayer);
    each(x.shapeFiles, y.shapeFiles);
    each(x.basePoint, y.basePoint);
    each(x.limits, y.limits);
    each(x.snapBase, y.snapBase);
    each(x.currentTextStyle, y.currentTextStyle);
    each(x.currentLinetype, y.currentLinetype);
    each(x.currentDimStyle, y.currentDimStyle);
    each(x.dimStyleOverrides, y.dimStyleOverrides);
    each(x.dimStyleNameOverrides, y.dimStyleNameOverrides);
    each(x.currentMLeaderStyle, y.currentMLeaderStyle);
    each(x.currentTableStyle, y.currentTableStyle);
    each(x.appIds, y.appIds);
    each(x.currentUcs, y.currentUcs);
    each(x.ucs, y.ucs);
    each(x.currentColor, y.currentColor);
    each(x.currentView, y.currentView);
    each(x.tileMode, y.tileMode);
    each(x.activeViewportId, y.activeViewportId);
    each(x.activeLayoutName, y.activeLayoutName);
}

template <class X, class Y, class Each>
void eachBlockSetting(X& x, Y& y, Each&& each) {
    each(x.description, y.description);
    each(x.base, y.base);
    each(x.explodable, y.explodable);
    each(x.scaleUniform, y.scaleUniform);
    each(x.xrefType, y.xrefType);
    each(x.xrefPath, y.xrefPath);
    each(x.xrefStatus, y.xrefStatus);
    each(x.isDynamic, y.isDynamic);
    each(x.dynParams, y.dynParams);
    each(x.dynActions, y.dynActions);
    each(x.visibilityStates, y.visibilityStates);
    each(x.lookupTable, y.lookupTable);
}

constexpr auto copy = [](auto& to, const auto& from) { to = from; };
constexpr auto exchange = [](auto& a, auto& b) { std::swap(a, b); };

}  // namespace

DrawingSettings DrawingSettings::of(const engine::Drawing& drawing) {
    DrawingSettings settings;
    eachSetting(settings, drawing, copy);
    return settings;
}

void DrawingSettings::swapWith(engine::Drawing& drawing) { eachSetting(*this, drawing, exchange); }

std::int32_t DrawingSettings::changesIn(const engine::Drawing& drawing) const {
    std::int32_t changes = 0;
    eachSetting(*this, drawing, [&](const auto& before, const auto& now) {
        if (before == now) return;
        const void* const setting = &before;
        if (setting == &currentView)
            changes |= changed::kView;
        else if (setting == &activeViewportId)
            changes |= changed::kWindow;
        else if (setting == &appIds)
            changes |= changed::kObjects | changed::kTables;
        else
            changes |= changed::kVariables;
    });
    return changes;
}

std::size_t DrawingSettings::heldBytes() const {
    constexpr std::size_t mapNode = 96;
    return properties.title.capacity() + properties.author.capacity() + properties.subject.capacity() +
           properties.keywords.capacity() + shapeFiles.capacity() * sizeof(std::string) +
           (dimStyleOverrides.size() + dimStyleNameOverrides.size()) * mapNode +
           appIds.capacity() * sizeof(engine::Name);
}

void LayoutSettings::swapWith(engine::Layout& layout) {
    std::swap(pageSetup, layout.pageSetup);
    std::swap(tabOrder, layout.tabOrder);
}

void EditLayoutAction::swap(engine::Drawing& drawing) {
    if (engine::Layout* layout = drawing.findLayout(name_)) other_.swapWith(*layout);
}

std::size_t EditLayoutAction::sizeInBytes() const {
    const engine::PageSetup& setup = other_.pageSetup;
    return sizeof *this + setup.plotDevice.capacity() + setup.paperSizeName.capacity() +
           setup.plotStyleTable.capacity();
}

BlockSettings BlockSettings::of(const engine::Block& block) {
    BlockSettings settings;
    eachBlockSetting(settings, block, copy);
    return settings;
}

void BlockSettings::swapWith(engine::Block& block) { eachBlockSetting(*this, block, exchange); }

void EditBlockAction::swap(engine::Drawing& drawing) {
    engine::Block* block = drawing.findBlock(name_);
    if (block == nullptr) return;
    other_.swapWith(*block);
    ++drawing.styleRevision;
}

std::size_t EditBlockAction::sizeInBytes() const {
    return sizeof *this + other_.description.capacity() + other_.xrefPath.capacity() +
           other_.dynParams.capacity() * sizeof(engine::DynParameter) +
           other_.dynActions.capacity() * sizeof(engine::DynAction) +
           other_.visibilityStates.capacity() * sizeof(engine::VisibilityState);
}

}  // namespace kova::doc
