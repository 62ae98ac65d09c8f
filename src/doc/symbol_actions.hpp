#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "doc/undoable_action.hpp"
#include "engine/model/drawing.hpp"
#include "engine/symbols/symbols.hpp"

namespace kova::doc {

/// Estimated memory of a list's entities, and of a block or layout with its entities.
std::size_t bytesOf(const engine::EntityList& list);
std::size_t bytesOf(const engine::Block& block);
std::size_t bytesOf(const engine::Layout& layout);

/// Which space is current, and which layout is the active one.
struct CurrentSpace {
    bool tileMode = true;
    engine::Name layout;
    bool throughViewport = false;  ///< model space, in a viewport of the layout
    bool blockEditor = false;

    static CurrentSpace of(const engine::Drawing& drawing) {
        return {drawing.tileMode, drawing.activeLayoutName, drawing.activeViewport() != nullptr,
                drawing.editedBlock() != nullptr};
    }
    void apply(engine::Drawing& drawing) const;
    /// The same space is current (the active layout counts only while it is shown).
    bool sameSpace(const CurrentSpace& o) const {
        return blockEditor == o.blockEditor && tileMode == o.tileMode && (tileMode || (layout == o.layout && throughViewport == o.throughViewport));
    }
};

/// Blocks came into the drawing.
class AddBlocksAction final : public IUndoableAction {
public:
    explicit AddBlocksAction(std::vector<engine::Name> names) : names_(std::move(names)) {}
    void undo(engine::Drawing& drawing) override;
    void redo(engine::Drawing& drawing) override;
    std::string description() const override { return "Add blocks"; }
    std::size_t sizeInBytes() const override;

private:
    std::vector<engine::Name> names_;
    std::vector<std::unique_ptr<engine::Block>> blocks_;  ///< while they are out of the drawing
};

class DeleteBlockAction final : public IUndoableAction {
public:
    DeleteBlockAction(std::unique_ptr<engine::Block> block, engine::Name next);
    ~DeleteBlockAction() override;
    void undo(engine::Drawing& drawing) override;
    void redo(engine::Drawing& drawing) override;
    std::string description() const override { return "Delete block " + name_.str(); }
    std::size_t sizeInBytes() const override;

private:
    engine::Name name_;
    std::unique_ptr<engine::Block> block_;
    engine::Name next_;  ///< the block behind it; empty: none
};

/// The block's contents were exchanged for others.
class ReplaceBlockContentsAction final : public IUndoableAction {
public:
    ReplaceBlockContentsAction(engine::Name name, std::vector<std::unique_ptr<engine::Entity>> before)
        : name_(name), other_(std::move(before)) {}
    void undo(engine::Drawing& drawing) override { swap(drawing); }
    void redo(engine::Drawing& drawing) override { swap(drawing); }
    std::string description() const override { return "Replace block contents"; }
    std::size_t sizeInBytes() const override;

private:
    void swap(engine::Drawing& drawing);

    engine::Name name_;
    std::vector<std::unique_ptr<engine::Entity>> other_;
};

class DeleteLayerAction final : public IUndoableAction {
public:
    DeleteLayerAction(engine::Layer layer, engine::Name next) : layer_(std::move(layer)), next_(next) {}
    void undo(engine::Drawing& drawing) override { drawing.layers.insertBefore(next_, layer_); }
    void redo(engine::Drawing& drawing) override { drawing.layers.erase(layer_.name); }
    std::string description() const override { return "Delete layer " + layer_.name.str(); }
    std::size_t sizeInBytes() const override { return sizeof *this + layer_.description.capacity(); }
    std::int32_t changes() const override { return changed::kObjects | changed::kTables; }

private:
    engine::Layer layer_;
    engine::Name next_;  ///< the layer behind it; empty: none
};

class AddLayoutAction final : public IUndoableAction {
public:
    explicit AddLayoutAction(engine::Name name) : name_(name) {}
    ~AddLayoutAction() override;
    void undo(engine::Drawing& drawing) override;
    void redo(engine::Drawing& drawing) override;
    std::string description() const override { return "Add layout " + name_.str(); }
    std::size_t sizeInBytes() const override;

private:
    engine::Name name_;
    std::unique_ptr<engine::Layout> layout_;  ///< while it is out of the drawing
};

class DeleteLayoutAction final : public IUndoableAction {
public:
    /// `before` and `after`: the current space then, and the one that took its place when the layout went.
    DeleteLayoutAction(std::unique_ptr<engine::Layout> layout, std::size_t position, CurrentSpace before,
                       CurrentSpace after);
    ~DeleteLayoutAction() override;
    void undo(engine::Drawing& drawing) override;
    void redo(engine::Drawing& drawing) override;
    std::string description() const override { return "Delete layout " + name_.str(); }
    std::size_t sizeInBytes() const override;

private:
    engine::Name name_;
    std::unique_ptr<engine::Layout> layout_;
    std::size_t position_;
    CurrentSpace before_;
    CurrentSpace after_;
};

/// Records got other names, and what refers to them followed.
class RenameSymbolsAction final : public IUndoableAction {
public:
    /// At least one.
    explicit RenameSymbolsAction(std::vector<engine::SymbolRename> renames) : renames_(std::move(renames)) {}
    void undo(engine::Drawing& drawing) override;
    void redo(engine::Drawing& drawing) override;
    std::string description() const override;
    std::size_t sizeInBytes() const override {
        return sizeof *this + renames_.capacity() * sizeof(engine::SymbolRename);
    }
    std::int32_t changes() const override { return changed::kObjects | changed::kTables; }

private:
    std::vector<engine::SymbolRename> renames_;
};

}  // namespace kova::doc
