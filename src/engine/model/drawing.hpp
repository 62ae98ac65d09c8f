#pragma once

#include <cstdint>
#include <list>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "engine/model/color.hpp"
#include "engine/model/entity_index.hpp"
#include "engine/model/entity_list.hpp"
#include "engine/model/name.hpp"
#include "engine/model/numbered_names.hpp"
#include "engine/model/block.hpp"
#include "engine/model/layer.hpp"
#include "engine/model/records.hpp"
#include "engine/model/styles.hpp"
#include "engine/model/sysvar.hpp"
#include "engine/model/table.hpp"
#include "math/bounds2.hpp"

namespace kova::engine {

class SpaceObserver;
class ViewportEntity;

struct DrawingProperties {
    std::string title;
    std::string author;
    std::string subject;
    std::string keywords;
    friend bool operator==(const DrawingProperties&, const DrawingProperties&) = default;
};

struct Limits {
    math::Vector2 lower{0, 0};
    math::Vector2 upper{420, 297};
    bool check = false;
    friend bool operator==(const Limits&, const Limits&) = default;
};

/// The drawing database: model space, blocks, layouts, symbol tables, current settings and system variables.
/// Changes made for a user go through kova::doc::Document, which records them for undo.
class Drawing {
public:
    /// A new drawing with its standard records and defaults (metric starting values).
    Drawing();
    ~Drawing();
    Drawing(const Drawing&) = delete;
    Drawing& operator=(const Drawing&) = delete;

    // Tables and current settings; read and set directly ---------------------------------------------------
    DrawingProperties properties;
    Table<Layer> layers;
    Name currentLayer = commonNames().layerZero;
    Table<LayerFilter> layerFilters;
    std::vector<std::string> shapeFiles;
    math::Vector2 basePoint;
    Limits limits;
    math::Vector2 snapBase;
    Table<Group> groups;
    Table<TextStyle> textStyles;
    Name currentTextStyle = commonNames().standard;
    Table<Linetype> linetypes;
    Name currentLinetype = commonNames().byLayer;
    Table<DimStyle> dimStyles;
    Name currentDimStyle = commonNames().standard;
    std::map<std::string, double> dimStyleOverrides;           ///< by dimension variable name, for new dimensions
    std::map<std::string, std::string> dimStyleNameOverrides;  ///< name-valued ones (arrow blocks, linetypes, style)
    Table<MLeaderStyle> mleaderStyles;
    Name currentMLeaderStyle = commonNames().standard;
    Table<TableStyle> tableStyles;
    Name currentTableStyle = commonNames().standard;
    Table<HatchPattern> hatchPatterns;
    std::vector<DictionaryEntry> objectDictionary;
    std::vector<Name> appIds;
    Table<Ucs> ucsList;
    Name currentUcs;  ///< empty: world, or the unnamed system below
    Ucs ucs;          ///< the system in force
    Color currentColor;
    Table<LayerState> layerStates;
    Table<NamedView> namedViews;
    Table<AnnotationScale> annotationScales;
    Table<PageSetup> namedPageSetups;
    NamedView currentView;    ///< what the interactive view shows in model space
    math::Vector2 lastPoint;  ///< LASTPOINT
    std::string fileName;     ///< path of the file it was opened from or saved to; empty: none yet

    // Spaces ---------------------------------------------------------------------------------------------
    EntityList& modelSpace() { return modelSpace_; }
    const EntityList& modelSpace() const { return modelSpace_; }
    /// The edited block's entities while there is one; else model space, or the active layout's entities when TILEMODE
    /// is 0 and no viewport is active.
    EntityList& currentSpace();
    const EntityList& currentSpace() const { return const_cast<Drawing*>(this)->currentSpace(); }
    /// True when what is drawn stands in model units: on the Model tab, through a viewport of a layout and in the block
    /// editor. False on the paper of a layout.
    bool currentSpaceIsModel() const;
    bool tileMode = true;  ///< the Model tab is shown, not a layout's; which space is current is another question
    std::uint64_t activeViewportId = 0;  ///< id of the viewport of a layout through which model space is worked on

    const std::vector<std::unique_ptr<Layout>>& layouts() const { return layouts_; }
    Layout* findLayout(Name name) const;
    Layout* activeLayout() const { return findLayout(activeLayoutName); }
    Name activeLayoutName{"Layout1"};
    /// Adds a layout at the end; null when the name is taken, empty or "Model".
    Layout* addLayout(Name name);
    /// The viewport of the active layout through which model space is current; null in the model tab and on paper.
    ViewportEntity* activeViewport() const;
    std::unique_ptr<Layout> takeLayout(Name name);
    void putLayout(std::unique_ptr<Layout> layout, std::size_t position);
    /// False when the name is unknown or the new one is taken.
    bool renameLayout(Name from, Name to);

    // Blocks ---------------------------------------------------------------------------------------------
    const std::list<std::unique_ptr<Block>>& blocks() const { return blocks_; }
    /// A block definition; null when there is none ("*Model_Space" and "*Paper_Space" are not in this table).
    Block* findBlock(Name name) const;
    /// Adds an empty block; null when the name is taken or empty.
    Block* addBlock(Name name);
    std::unique_ptr<Block> takeBlock(Name name);
    /// Takes out all blocks, in their order.
    std::vector<std::unique_ptr<Block>> takeBlocks();
    /// Adds a block before the one of a name, at the end when there is none. Its own name must not be taken.
    void putBlock(std::unique_ptr<Block> block, Name next = {});
    /// The name of the block that stands behind another one; empty: none does.
    Name blockAfter(Name name) const;
    bool renameBlock(Name from, Name to);
    /// The entities of a block or of a space under its block name; null when there is none.
    EntityList* spaceByBlockName(Name name);
    /// The next unused anonymous name with the prefix: "*D" gives "*D1", "*D2" ...
    Name nextAnonymousName(std::string_view prefix);
    /// True when references make the block contain itself.
    bool blockContainsItself(Name name) const { return blockContains(name, name); }
    /// True when the outer block has a reference to the inner one, itself or through other blocks.
    bool blockContains(Name outer, Name inner) const;
    /// The copy of a definition that is worked on in the block editor; null while there is none. It stands in no table
    /// and no file, but findBlock knows it by its name.
    Block* editedBlock() const { return editedBlock_.get(); }
    /// The name that the edited block must have.
    static Name editedBlockName();
    /// Puts another one in its place (null: none) and gives the old one out.
    std::unique_ptr<Block> exchangeEditedBlock(std::unique_ptr<Block> block);

    // Entities -------------------------------------------------------------------------------------------
    /// Anywhere in the drawing; null when there is none.
    Entity* findById(std::uint64_t id) const { return byId_.find(id); }
    Entity* findByHandle(std::uint64_t handle) const { return byHandle_.find(handle); }
    std::size_t entityCount() const { return byId_.size(); }

    // Handles --------------------------------------------------------------------------------------------
    /// The next handle of the counter; passes over handles that entities use.
    std::uint64_t takeHandle();
    std::uint64_t nextHandle = 1;

    // System variables kept in the drawing's three maps; see sysvar.hpp for all variables ------------------
    std::map<std::string, std::int32_t, std::less<>> integerVariables;
    std::map<std::string, double, std::less<>> realVariables;
    std::map<std::string, std::string, std::less<>> stringVariables;

    /// Extents of what is visible: entities that are shown, on layers that are on and thawed.
    math::Bounds2 extents(const EntityList& space) const;

    /// A linetype by name, loaded from the built-in library when the drawing does not hold it yet; null when
    /// neither knows it.
    Linetype* loadLinetype(Name name);
    /// A pattern held by the drawing, else one of the built-in library (scaled for imperial drawings); null: unknown.
    const HatchPattern* findHatchPattern(Name name) const;
    /// The text style of that name, else "Standard".
    const TextStyle& textStyleOrStandard(Name name) const;
    const DimStyle& dimStyleOrStandard(Name name) const;
    /// The current dimension style with the overrides in force.
    DimStyle effectiveDimStyle() const;
    bool isMetric() const;

    /// Grows with every change of any entity list.
    std::uint64_t revision() const { return revision_; }
    /// Grows with every change of a style or block property that may alter how entities look and how far they reach.
    /// Whoever makes such a change outside the document counts it up.
    std::uint64_t styleRevision = 0;
    /// Hears of every change of the entity lists; not owned, may be null.
    SpaceObserver* observer = nullptr;

private:
    friend class EntityList;

    std::uint64_t revision_ = 0;
    PagedEntityIndex<&Entity::id> byId_;
    PagedEntityIndex<&Entity::handle> byHandle_;
    using Blocks = std::list<std::unique_ptr<Block>>;
    Blocks blocks_;
    std::unordered_map<const void*, Blocks::iterator> blockIndex_;  ///< by the key of the name
    NumberedNames anonymous_;                                       ///< of blocks
    std::unique_ptr<Block> editedBlock_;
    std::vector<std::unique_ptr<Layout>> layouts_;
    EntityList modelSpace_;
};

}  // namespace kova::engine
