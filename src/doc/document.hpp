#pragma once

#include <QObject>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "doc/block_edit.hpp"
#include "doc/entity_actions.hpp"
#include "doc/reference_edit.hpp"
#include "doc/selection_set.hpp"
#include "doc/symbol_actions.hpp"
#include "doc/undo_history.hpp"
#include "doc/undoable_action.hpp"
#include "engine/model/document_reactor.hpp"
#include "engine/model/drawing.hpp"
#include "engine/model/space_observer.hpp"
#include "engine/symbols/symbols.hpp"

namespace kova::engine {
class AssociativityReactor;
}

namespace kova::doc {

class SpatialIndex;

/// The open drawing with its selection, undo history, spatial index and reactors. Every change made for a user
/// goes through here: it is applied to the drawing and recorded in the open group.
///
/// Editing operations called while no group is open make a group of their own, labelled after the action.
class Document : public QObject, private engine::SpaceObserver {
    Q_OBJECT
public:
    explicit Document(QObject* parent = nullptr);
    explicit Document(std::unique_ptr<engine::Drawing> drawing, QObject* parent = nullptr);
    ~Document() override;

    engine::Drawing& drawing() { return *drawing_; }
    const engine::Drawing& drawing() const { return *drawing_; }
    /// Replaces the drawing (open, new, template): selection, history and the modified flag are cleared.
    /// Gives the old one, for who may still look at it; most let it go at once.
    std::unique_ptr<engine::Drawing> setDrawing(std::unique_ptr<engine::Drawing> drawing);
    SelectionSet& selection() { return selection_; }
    UndoHistory& history() { return history_; }
    /// Index of a space; of the current one when none is named.
    SpatialIndex& spatialIndex();
    SpatialIndex& spatialIndex(engine::EntityList& space);

    // Groups ---------------------------------------------------------------------------------------------
    /// Opens a group, or nests inside the open one; the outermost label names the whole group.
    UndoGroup& beginGroup(const std::string& label);
    /// Closes the innermost level; closing the outermost commits the group to the history.
    void endGroup();
    bool isGroupOpen() const { return open_ != nullptr; }
    /// Undoes what the open group recorded since its innermost level began, and closes that level. The outermost
    /// level's group is gone afterwards without an entry in the history.
    void rollbackGroup();
    /// Appends an already applied action to the open group (or to one of its own). Passed over while an undo or redo
    /// is at work: what reactors bring up to date then is derived data.
    void record(std::unique_ptr<IUndoableAction> action);

    // Undo -----------------------------------------------------------------------------------------------
    /// False when refused: a group is open, or there is nothing to undo.
    bool undo();
    bool redo();
    /// Undoes groups while the top one's sequence number is greater than `sequence`.
    void undoTo(std::uint64_t sequence);

    bool isModified() const { return changes_ != 0; }
    /// What was changed since the drawing was opened, made or saved: a sum of `changed` bits, as DBMOD tells it.
    std::int32_t changes() const { return changes_; }
    /// False: the drawing is as saved.
    void setModified(bool modified);
    void addReactor(engine::IDocumentReactor* reactor);
    void removeReactor(engine::IDocumentReactor* reactor);
    /// Keeps associative dimensions on what they measure; every document has it among its reactors.
    engine::AssociativityReactor& associativity() { return *associativity_; }

    // Entities -------------------------------------------------------------------------------------------
    /// Adds to the current space (or the given one) and records it.
    engine::Entity& addEntity(std::unique_ptr<engine::Entity> entity);
    engine::Entity& addEntity(std::unique_ptr<engine::Entity> entity, engine::EntityList& space);
    /// Makes an entity carry the current layer, colour, linetype, linetype scale, lineweight and transparency.
    void applyCurrentProperties(engine::Entity& entity) const;
    /// Removes an entity of model space, a layout or a block.
    void removeEntity(engine::Entity& entity);
    /// Removes all; ids that are gone are passed over. Gives the number removed.
    std::size_t removeEntities(const std::vector<std::uint64_t>& ids);
    /// Lets `change` edit the entity in place and records its state before. The reference stays valid until an undo.
    /// When `change` throws, what it did up to then is recorded too.
    void modifyEntity(engine::Entity& entity, const std::function<void(engine::Entity&)>& change);
    /// Puts another object in the entity's place, under its id and handle. Gives the object now in the drawing.
    engine::Entity& replaceEntity(engine::Entity& entity, std::unique_ptr<engine::Entity> with);
    /// Transforms entities (circles under unequal scales become ellipses ...). Ids that are gone are passed over, and
    /// repeated ones count once. A matrix that is not finite changes nothing. What cannot be transformed stays and is
    /// counted: see takeUntransformed.
    void transformEntities(const std::vector<std::uint64_t>& ids, const math::Matrix4& matrix);
    /// Counts an entity that was to be transformed and could not be.
    void noteUntransformed() { ++untransformed_; }
    /// How many there were since the last call, for the line that tells the user.
    std::size_t takeUntransformed() { return std::exchange(untransformed_, 0U); }
    /// Rearranges a space's drawing order; false when `order` does not hold each entity exactly once.
    bool setDrawOrder(engine::EntityList& space, const std::vector<engine::Entity*>& order);
    /// May be selected: shown, of the current space, on a layer that is neither frozen nor locked, and no bystander of a
    /// reference that is being edited in place.
    bool isSelectable(const engine::Entity& entity) const;

    /// The reference that is being edited in place; null: none. Undo takes back that it began and that it ended.
    const std::shared_ptr<const ReferenceEdit>& referenceEdit() const { return referenceEdit_; }
    void setReferenceEdit(std::shared_ptr<const ReferenceEdit> edit);

    /// What is open in the block editor; null: nothing. Its contents are those of Drawing::editedBlock.
    const std::shared_ptr<const BlockEdit>& blockEdit() const { return blockEdit_; }
    /// Opens the block editor on a working copy, or closes it (both null).
    void setBlockEdit(std::shared_ptr<const BlockEdit> edit, std::unique_ptr<engine::Block> working);
    /// Replaces what is kept about the open block, its contents staying as they are.
    void noteBlockEdit(std::shared_ptr<const BlockEdit> edit);

    // Tables, blocks, layouts, variables -----------------------------------------------------------------
    /// Lets `change` edit a table and records it; see table_edits.hpp for the traits. When `change` throws, the table
    /// is as before.
    template <class Traits>
    void editTable(const std::function<void(engine::Table<typename Traits::Record>&)>& change);
    /// Deletes a TextStyle, DimStyle, MLeaderStyle or TableStyle. False for an unknown, the current and the "Standard"
    /// one. Whether something refers to it is for the caller to see, as with the other records below.
    template <class Style>
    bool deleteStyle(engine::Name name);
    /// Null when the name is empty, taken or one of a space.
    engine::Block* addBlock(std::unique_ptr<engine::Block> block);
    /// Adds several blocks as one action; those whose name addBlock would refuse are dropped. Gives the number added.
    std::size_t addBlocks(std::vector<std::unique_ptr<engine::Block>> blocks);
    /// False for an unknown name. References to the block stay, and draw nothing.
    bool deleteBlock(engine::Name name);
    void replaceBlockContents(engine::Block& block, std::vector<std::unique_ptr<engine::Entity>> contents);
    /// Lets `change` edit what a block holds besides its name and entities.
    void editBlock(engine::Block& block, const std::function<void(engine::Block&)>& change);
    /// Null when the name is no valid one or taken.
    engine::Layout* addLayout(engine::Name name);
    /// False for an unknown name and for the last layout. The next layout takes the place of an active one.
    bool deleteLayout(engine::Name name);
    /// Lets `change` edit a layout's page setup and tab order.
    void editLayout(engine::Layout& layout, const std::function<void(engine::Layout&)>& change);
    /// False for an unknown layer, layer "0" and the current layer.
    bool deleteLayer(engine::Name name);
    /// Renames many records, whatever form their names have. Gives the number renamed.
    std::size_t renameSymbolsUnchecked(std::vector<engine::SymbolRename> renames);
    /// Lets `change` edit the drawing's own settings (see DrawingSettings): properties, current names, UCS, limits ...
    void editSettings(const std::function<void(engine::Drawing&)>& change);
    /// Renames a table's record and everything that refers to it. Error text, empty on success.
    std::string renameSymbol(engine::SymbolKind kind, engine::Name from, engine::Name to);
    /// Sets a system variable, undoably unless it is program-wide. Error text, empty on success.
    std::string setVariable(std::string_view name, const engine::SysVarValue& value);

Q_SIGNALS:
    void documentModified();
    /// The current space (model or a layout) changed.
    void spaceChanged();

private:
    /// Where a nested level of the open group began.
    struct Mark {
        std::size_t actions;  ///< the group's number of actions then
        std::uint8_t flag;    ///< not 0 while the level is rolled back: endGroup leaves it to the rollback
    };
    class ImplicitGroup;

    void entityAdded(engine::EntityList& list, engine::Entity& entity) override;
    void entityRemoved(engine::EntityList& list, engine::Entity& entity) override;
    void entityChanged(engine::EntityList& list, engine::Entity& entity) override;
    void listChanged(engine::EntityList& list) override;
    SpatialIndex* knownIndex(const engine::EntityList& list);
    /// Drops the indexes that hold references of blocks when the list is a block's.
    void noteBlockChange(const engine::EntityList& list);
    void adopt();
    /// Lets reactors change what depends on the group's changes, while they can be recorded.
    void closing();
    void replay(UndoGroup& group, bool forward);
    /// Brings selection, reactors and current space up to date after changes that no editing operation announced.
    void restored();
    void noteSpace();
    void pruneSelection();
    void compactLists();
    SpacePlace placeOf(const engine::EntityList& list);
    void notifyAdded(engine::Entity& entity);
    void notifyModified(engine::Entity& entity);
    void notifyErased(engine::Entity& entity);
    void takeOut(engine::Entity& entity);
    bool insertBlock(std::unique_ptr<engine::Block> block);

    std::unique_ptr<engine::Drawing> drawing_;
    SelectionSet selection_;
    UndoHistory history_;
    std::shared_ptr<const ReferenceEdit> referenceEdit_;
    std::shared_ptr<const BlockEdit> blockEdit_;
    std::vector<std::pair<engine::EntityList*, std::unique_ptr<SpatialIndex>>> indexes_;
    std::unique_ptr<engine::AssociativityReactor> associativity_;
    std::vector<engine::IDocumentReactor*> reactors_;
    std::unique_ptr<UndoGroup> open_;
    std::vector<Mark> marks_;
    std::int32_t changes_ = 0;
    bool closing_ = false;
    bool restoring_ = false;
    std::uint32_t untransformed_ = 0;
    CurrentSpace space_;               ///< as last announced
    SpacePlace lastPlace_;             ///< of the list last edited
    std::uint64_t styleRevision_ = 0;  ///< that the indexes were built for
};

/// Opens a group for a scope and closes it at the end.
class GroupScope {
public:
    GroupScope(Document& document, const std::string& label) : document_(document) { document_.beginGroup(label); }
    ~GroupScope() {
        if (open_) document_.endGroup();
    }
    GroupScope(const GroupScope&) = delete;
    GroupScope& operator=(const GroupScope&) = delete;
    /// Takes back everything since the scope began, and ends it.
    void rollback() {
        if (open_) document_.rollbackGroup();
        open_ = false;
    }

private:
    Document& document_;
    bool open_ = true;
};

}  // namespace kova::doc
