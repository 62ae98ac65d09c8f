#pragma once

#include <QObject>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "doc/selection_set.hpp"
#include "doc/undo_history.hpp"
#include "doc/undoable_action.hpp"
#include "engine/document_reactor.hpp"
#include "engine/drawing.hpp"
#include "engine/space_observer.hpp"
#include "engine/symbols.hpp"

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
    void setDrawing(std::unique_ptr<engine::Drawing> drawing);
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
    /// Undoes what the open group recorded since its innermost level began, and closes that level.
    void rollbackGroup();
    /// Appends an already applied action to the open group (or to one of its own).
    void record(std::unique_ptr<IUndoableAction> action);

    // Undo -----------------------------------------------------------------------------------------------
    /// False when refused: a group is open, or there is nothing to undo.
    bool undo();
    bool redo();
    /// Undoes groups while the top one's sequence number is greater than `sequence`.
    void undoTo(std::uint64_t sequence);

    bool isModified() const { return modified_; }
    void setModified(bool modified);
    void addReactor(engine::IDocumentReactor* reactor);
    void removeReactor(engine::IDocumentReactor* reactor);

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
    /// Lets `change` edit the entity in place and records its state before. The reference stays valid.
    void modifyEntity(engine::Entity& entity, const std::function<void(engine::Entity&)>& change);
    /// Puts another object in the entity's place, under its id and handle. Gives the object now in the drawing.
    engine::Entity& replaceEntity(engine::Entity& entity, std::unique_ptr<engine::Entity> with);
    /// Transforms entities (circles under unequal scales become ellipses ...). Ids that are gone are passed over.
    void transformEntities(const std::vector<std::uint64_t>& ids, const math::Matrix4& matrix);
    /// Rearranges a space's drawing order; false when `order` does not hold each entity exactly once.
    bool setDrawOrder(engine::EntityList& space, const std::vector<engine::Entity*>& order);
    /// May be selected: shown, of the current space, on a layer that is neither frozen nor locked.
    bool isSelectable(const engine::Entity& entity) const;

    // Tables, blocks, layouts, variables -----------------------------------------------------------------
    /// Lets `change` edit a table and records it; see table_edits.hpp for the traits.
    template <class Traits>
    void editTable(const std::function<void(engine::Table<typename Traits::Record>&)>& change);
    engine::Block* addBlock(std::unique_ptr<engine::Block> block);
    bool deleteBlock(engine::Name name);
    void replaceBlockContents(engine::Block& block, std::vector<std::unique_ptr<engine::Entity>> contents);
    engine::Layout* addLayout(engine::Name name);
    bool deleteLayout(engine::Name name);
    bool deleteLayer(engine::Name name);
    /// Renames a table's record and everything that refers to it. Error text, empty on success.
    std::string renameSymbol(engine::SymbolKind kind, engine::Name from, engine::Name to);
    /// Sets a system variable, undoably unless it is program-wide. Error text, empty on success.
    std::string setVariable(std::string_view name, const engine::SysVarValue& value);

Q_SIGNALS:
    void documentModified();
    /// The current space (model or a layout) changed.
    void spaceChanged();

private:
    struct Mark {
        std::size_t actions;
        std::uint8_t flag;
    };

    void entityAdded(engine::EntityList& list, engine::Entity& entity) override;
    void entityRemoved(engine::EntityList& list, engine::Entity& entity) override;
    void entityChanged(engine::EntityList& list, engine::Entity& entity) override;
    void listChanged(engine::EntityList& list) override;
    SpatialIndex* knownIndex(const engine::EntityList& list);
    void closing();
    void restored();

    std::unique_ptr<engine::Drawing> drawing_;
    SelectionSet selection_;
    UndoHistory history_;
    std::vector<std::pair<engine::EntityList*, std::unique_ptr<SpatialIndex>>> indexes_;
    std::vector<engine::IDocumentReactor*> reactors_;
    std::unique_ptr<UndoGroup> open_;
    std::vector<Mark> marks_;
    bool modified_ = false;
};

/// Opens a group for a scope and closes it at the end.
class GroupScope {
public:
    GroupScope(Document& document, const std::string& label) : document_(document) { document_.beginGroup(label); }
    ~GroupScope() { document_.endGroup(); }
    GroupScope(const GroupScope&) = delete;
    GroupScope& operator=(const GroupScope&) = delete;

private:
    Document& document_;
};

}  // namespace kova::doc
