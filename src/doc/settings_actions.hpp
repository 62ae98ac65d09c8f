#pragma once

#include <map>
#include <optional>
#include <string>
#include <vector>

#include "doc/undoable_action.hpp"
#include "engine/model/drawing.hpp"

namespace kova::doc {

/// The drawing's own settings: what stands in no table and is no plain system variable.
struct DrawingSettings {
    engine::DrawingProperties properties;
    engine::Name currentLayer;
    std::vector<std::string> shapeFiles;
    math::Vector2 basePoint;
    engine::Limits limits;
    math::Vector2 snapBase;
    engine::Name currentTextStyle;
    engine::Name currentLinetype;
    engine::Name currentDimStyle;
    std::map<std::string, double> dimStyleOverrides;
    std::map<std::string, std::string> dimStyleNameOverrides;
    engine::Name currentMLeaderStyle;
    engine::Name currentTableStyle;
    std::vector<engine::Name> appIds;
    engine::Name currentUcs;
    engine::Ucs ucs;
    engine::Color currentColor;
    engine::NamedView currentView;
    bool tileMode = true;
    std::uint64_t activeViewportId = 0;
    engine::Name activeLayoutName;

    static DrawingSettings of(const engine::Drawing& drawing);
    /// Exchanges these settings with the drawing's.
    void swapWith(engine::Drawing& drawing);
    std::size_t heldBytes() const;
    /// What is other in the drawing, as a sum of `changed` bits.
    std::int32_t changesIn(const engine::Drawing& drawing) const;
};

class EditSettingsAction final : public IUndoableAction {
public:
    /// `changes`: what was changed in them, see DrawingSettings::changesIn.
    EditSettingsAction(DrawingSettings before, std::int32_t changes, std::string description = "Edit settings")
        : other_(std::move(before)), changes_(changes), description_(std::move(description)) {}
    void undo(engine::Drawing& drawing) override { other_.swapWith(drawing); }
    void redo(engine::Drawing& drawing) override { other_.swapWith(drawing); }
    std::string description() const override { return description_; }
    std::size_t sizeInBytes() const override { return sizeof *this + other_.heldBytes(); }
    std::int32_t changes() const override { return changes_; }

private:
    DrawingSettings other_;
    std::int32_t changes_;
    std::string description_;
};

/// A layout's page setup and tab order.
struct LayoutSettings {
    engine::PageSetup pageSetup;
    std::int32_t tabOrder = 1;

    static LayoutSettings of(const engine::Layout& layout) { return {layout.pageSetup, layout.tabOrder}; }
    void swapWith(engine::Layout& layout);
};

class EditLayoutAction final : public IUndoableAction {
public:
    EditLayoutAction(engine::Name name, LayoutSettings before) : name_(name), other_(std::move(before)) {}
    void undo(engine::Drawing& drawing) override { swap(drawing); }
    void redo(engine::Drawing& drawing) override { swap(drawing); }
    std::string description() const override { return "Edit layout " + name_.str(); }
    std::size_t sizeInBytes() const override;

private:
    void swap(engine::Drawing& drawing);

    engine::Name name_;
    LayoutSettings other_;
};

/// What a block holds besides its name and entities.
struct BlockSettings {
    std::string description;
    math::Vector2 base;
    bool explodable = true;
    bool scaleUniform = false;
    engine::XrefType xrefType = engine::XrefType::None;
    std::string xrefPath;
    engine::XrefStatus xrefStatus = engine::XrefStatus::Unloaded;
    bool isDynamic = false;
    std::vector<engine::DynParameter> dynParams;
    std::vector<engine::DynAction> dynActions;
    std::vector<engine::VisibilityState> visibilityStates;
    std::optional<engine::LookupTable> lookupTable;

    static BlockSettings of(const engine::Block& block);
    void swapWith(engine::Block& block);
};

class EditBlockAction final : public IUndoableAction {
public:
    EditBlockAction(engine::Name name, BlockSettings before) : name_(name), other_(std::move(before)) {}
    void undo(engine::Drawing& drawing) override { swap(drawing); }
    void redo(engine::Drawing& drawing) override { swap(drawing); }
    std::string description() const override { return "Edit block " + name_.str(); }
    std::size_t sizeInBytes() const override;

private:
    void swap(engine::Drawing& drawing);

    engine::Name name_;
    BlockSettings other_;
};

}  // namespace kova::doc
