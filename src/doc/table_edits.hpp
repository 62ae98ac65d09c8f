#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "doc/undoable_action.hpp"
#include "engine/model/drawing.hpp"

namespace kova::doc {

// What an undoable edit knows of a table: Document::editTable<LayerTraits>([](auto& layers) { ... }).
//   Record            the table's record
//   table(drawing)    the table
//   description       what the edit is called in the history
//   changesShapes     an edit may alter how far entities reach, so that measured extents become stale
//   heldBytes(record) memory a record holds beyond itself

struct LayerTraits {
    using Record = engine::Layer;
    static constexpr const char* description = "Edit layers";
    static constexpr bool changesShapes = false;
    static engine::Table<Record>& table(engine::Drawing& drawing) { return drawing.layers; }
    static std::size_t heldBytes(const Record& record);
};

struct LayerFilterTraits {
    using Record = engine::LayerFilter;
    static constexpr const char* description = "Edit layer filters";
    static constexpr bool changesShapes = false;
    static engine::Table<Record>& table(engine::Drawing& drawing) { return drawing.layerFilters; }
    static std::size_t heldBytes(const Record& record);
};

struct LayerStateTraits {
    using Record = engine::LayerState;
    static constexpr const char* description = "Edit layer states";
    static constexpr bool changesShapes = false;
    static engine::Table<Record>& table(engine::Drawing& drawing) { return drawing.layerStates; }
    static std::size_t heldBytes(const Record& record);
};

struct LineTypeTraits {
    using Record = engine::Linetype;
    static constexpr const char* description = "Edit linetypes";
    static constexpr bool changesShapes = false;
    static engine::Table<Record>& table(engine::Drawing& drawing) { return drawing.linetypes; }
    static std::size_t heldBytes(const Record& record);
};

struct TextStyleTraits {
    using Record = engine::TextStyle;
    static constexpr const char* description = "Edit text styles";
    static constexpr const char* noun = "text style";
    static constexpr bool changesShapes = true;
    static engine::Table<Record>& table(engine::Drawing& drawing) { return drawing.textStyles; }
    static engine::Name current(const engine::Drawing& drawing) { return drawing.currentTextStyle; }
    static std::size_t heldBytes(const Record& record);
};

struct DimStyleTraits {
    using Record = engine::DimStyle;
    static constexpr const char* description = "Edit dimension styles";
    static constexpr const char* noun = "dimension style";
    static constexpr bool changesShapes = true;
    static engine::Table<Record>& table(engine::Drawing& drawing) { return drawing.dimStyles; }
    static engine::Name current(const engine::Drawing& drawing) { return drawing.currentDimStyle; }
    static std::size_t heldBytes(const Record& record);
};

struct MLeaderStyleTraits {
    using Record = engine::MLeaderStyle;
    static constexpr const char* description = "Edit multileader styles";
    static constexpr const char* noun = "multileader style";
    static constexpr bool changesShapes = true;
    static engine::Table<Record>& table(engine::Drawing& drawing) { return drawing.mleaderStyles; }
    static engine::Name current(const engine::Drawing& drawing) { return drawing.currentMLeaderStyle; }
    static std::size_t heldBytes(const Record& record);
};

struct TableStyleTraits {
    using Record = engine::TableStyle;
    static constexpr const char* description = "Edit table styles";
    static constexpr const char* noun = "table style";
    static constexpr bool changesShapes = true;
    static engine::Table<Record>& table(engine::Drawing& drawing) { return drawing.tableStyles; }
    static engine::Name current(const engine::Drawing& drawing) { return drawing.currentTableStyle; }
    static std::size_t heldBytes(const Record& record);
};

struct GroupTraits {
    using Record = engine::Group;
    static constexpr const char* description = "Edit groups";
    static constexpr bool changesShapes = false;
    static engine::Table<Record>& table(engine::Drawing& drawing) { return drawing.groups; }
    static std::size_t heldBytes(const Record& record);
};

struct NamedViewTraits {
    using Record = engine::NamedView;
    static constexpr const char* description = "Edit views";
    static constexpr bool changesShapes = false;
    static engine::Table<Record>& table(engine::Drawing& drawing) { return drawing.namedViews; }
    static std::size_t heldBytes(const Record& record);
};

struct UcsTraits {
    using Record = engine::Ucs;
    static constexpr const char* description = "Edit UCS list";
    static constexpr bool changesShapes = false;
    static engine::Table<Record>& table(engine::Drawing& drawing) { return drawing.ucsList; }
    static std::size_t heldBytes(const Record& record);
};

struct AnnotationScaleTraits {
    using Record = engine::AnnotationScale;
    static constexpr const char* description = "Edit annotation scales";
    static constexpr bool changesShapes = true;
    static engine::Table<Record>& table(engine::Drawing& drawing) { return drawing.annotationScales; }
    static std::size_t heldBytes(const Record& record);
};

struct PageSetupTraits {
    using Record = engine::PageSetup;
    static constexpr const char* description = "Edit page setups";
    static constexpr bool changesShapes = false;
    static engine::Table<Record>& table(engine::Drawing& drawing) { return drawing.namedPageSetups; }
    static std::size_t heldBytes(const Record& record);
};

struct HatchPatternTraits {
    using Record = engine::HatchPattern;
    static constexpr const char* description = "Edit hatch patterns";
    static constexpr bool changesShapes = false;
    static engine::Table<Record>& table(engine::Drawing& drawing) { return drawing.hatchPatterns; }
    static std::size_t heldBytes(const Record& record);
};

/// A table was edited: holds the records that the edit changed, as they were before, or after while it is undone.
template <class Traits>
class TableEditAction final : public IUndoableAction {
public:
    using Changes = engine::TableChanges<typename Traits::Record>;
    explicit TableEditAction(Changes changes) : changes_(std::move(changes)) {}
    void undo(engine::Drawing& drawing) override;
    void redo(engine::Drawing& drawing) override;
    std::string description() const override { return Traits::description; }
    std::size_t sizeInBytes() const override;
    std::int32_t changes() const override { return changed::kObjects | changed::kTables; }
    const Changes& tableChanges() const { return changes_; }

private:
    Changes changes_;
};

template <class Style>
struct TraitsOfStyle;
template <>
struct TraitsOfStyle<engine::TextStyle> : TextStyleTraits {};
template <>
struct TraitsOfStyle<engine::DimStyle> : DimStyleTraits {};
template <>
struct TraitsOfStyle<engine::MLeaderStyle> : MLeaderStyleTraits {};
template <>
struct TraitsOfStyle<engine::TableStyle> : TableStyleTraits {};

/// A style was deleted.
template <class Style>
class DeleteStyleAction final : public IUndoableAction {
public:
    DeleteStyleAction(Style style, engine::Name next) : style_(std::move(style)), next_(next) {}
    void undo(engine::Drawing& drawing) override;
    void redo(engine::Drawing& drawing) override;
    std::string description() const override;
    std::size_t sizeInBytes() const override;
    std::int32_t changes() const override { return changed::kObjects | changed::kTables; }

private:
    Style style_;
    engine::Name next_;  ///< the one behind it in its table; empty: none
};

}  // namespace kova::doc
