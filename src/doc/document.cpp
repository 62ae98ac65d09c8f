#include "doc/document.hpp"

#include "doc/spatial_index.hpp"
#include "doc/viewport_clips.hpp"
#include "engine/associativity/associativity.hpp"

namespace kova::doc {

namespace {

std::int32_t changesOf(const UndoGroup& group) {
    std::int32_t changes = 0;
    for (const auto& action : group.actions) changes |= action->changes();
    return changes;
}

}  // namespace

Document::Document(QObject* parent) : Document(std::make_unique<engine::Drawing>(), parent) {}

Document::Document(std::unique_ptr<engine::Drawing> drawing, QObject* parent)
    : QObject(parent),
      drawing_(drawing ? std::move(drawing) : std::make_unique<engine::Drawing>()),
      associativity_(std::make_unique<engine::AssociativityReactor>(
          [this](engine::Entity& entity, const std::function<void(engine::Entity&)>& change) {
              modifyEntity(entity, change);
          })) {
    addReactor(associativity_.get());
    addReactor(new ViewportClips(*this));  // a child: it goes with the document
    connect(&history_, &UndoHistory::cleared, this, &Document::compactLists);
    adopt();
}

Document::~Document() { drawing_->observer = nullptr; }

void Document::adopt() {
    drawing_->observer = this;
    space_ = CurrentSpace::of(*drawing_);
    styleRevision_ = drawing_->styleRevision;
    lastPlace_ = {};
    changes_ = 0;
}

std::unique_ptr<engine::Drawing> Document::setDrawing(std::unique_ptr<engine::Drawing> drawing) {
    if (!drawing) drawing = std::make_unique<engine::Drawing>();
    open_.reset();
    marks_.clear();
    indexes_.clear();
    drawing_->observer = nullptr;
    drawing_.swap(drawing);
    adopt();
    history_.clear();
    selection_.clear();
    referenceEdit_.reset();
    blockEdit_.reset();
    for (std::size_t i = 0; i < reactors_.size(); ++i) reactors_[i]->documentRestored(*drawing_);
    Q_EMIT spaceChanged();
    return drawing;
}

// Groups -------------------------------------------------------------------------------------------------

UndoGroup& Document::beginGroup(const std::string& label) {
    if (open_) {
        marks_.push_back({open_->actions.size(), 0});
        return *open_;
    }
    marks_.clear();
    open_ = std::make_unique<UndoGroup>();
    open_->label = label;
    return *open_;
}

void Document::endGroup() {
    if (!marks_.empty()) {
        if (marks_.back().flag == 0) marks_.pop_back();
        closing();
        return;
    }
    if (!open_) return;
    closing();
    if (open_->actions.empty()) {
        // A command that changed nothing leaves no trace: no entry, no flag, and what can be redone stays.
        open_.reset();
        return;
    }
    changes_ |= changesOf(*open_);
    history_.push(std::move(open_));
    compactLists();
    noteSpace();
    Q_EMIT documentModified();
}

void Document::closing() {
    // Reactors open and close groups of their own around what they change.
    if (closing_) return;
    closing_ = true;
    for (std::size_t i = 0; i < reactors_.size(); ++i) reactors_[i]->groupClosing(*drawing_);
    closing_ = false;
}

void Document::rollbackGroup() {
    if (!open_ || restoring_) return;
    const bool nested = !marks_.empty();
    const std::size_t keep = nested ? marks_.back().actions : 0;
    const bool any = open_->actions.size() > keep;
    if (nested) marks_.back().flag = 1;
    restoring_ = true;
    try {
        while (open_->actions.size() > keep) {
            open_->actions.back()->undo(*drawing_);
            open_->actions.pop_back();
        }
    } catch (...) {
        restoring_ = false;
        open_.reset();
        marks_.clear();
        restored();
        throw;
    }
    restoring_ = false;
    if (nested)
        marks_.pop_back();
    else
        open_.reset();
    if (!any) return;
    restored();
    Q_EMIT documentModified();
}

void Document::record(std::unique_ptr<IUndoableAction> action) {
    if (!action || restoring_) return;
    const auto append = [this](std::unique_ptr<IUndoableAction> recorded) {
        open_->measuredBytes += recorded->sizeInBytes();
        ++open_->measuredActions;
        open_->actions.push_back(std::move(recorded));
    };
    if (open_) return append(std::move(action));
    beginGroup(action->description());
    append(std::move(action));
    endGroup();
}

// Undo ---------------------------------------------------------------------------------------------------

void Document::replay(UndoGroup& group, bool forward) {
    restoring_ = true;
    try {
        if (forward)
            for (auto& action : group.actions) action->redo(*drawing_);
        else
            for (auto it = group.actions.rbegin(); it != group.actions.rend(); ++it) (*it)->undo(*drawing_);
    } catch (...) {
        // The caller's group goes with the exception; what was done up to here stays.
        restoring_ = false;
        Q_EMIT history_.historyChanged();
        changes_ |= changesOf(group);
        restored();
        Q_EMIT documentModified();
        throw;
    }
    restoring_ = false;
}

bool Document::undo() {
    if (open_ || restoring_ || !history_.canUndo()) return false;
    std::unique_ptr<UndoGroup> group = history_.takeUndo();
    replay(*group, false);
    changes_ |= changesOf(*group);
    history_.putRedo(std::move(group));
    restored();
    Q_EMIT documentModified();
    return true;
}

bool Document::redo() {
    if (open_ || restoring_ || !history_.canRedo()) return false;
    std::unique_ptr<UndoGroup> group = history_.takeRedo();
    replay(*group, true);
    changes_ |= changesOf(*group);
    history_.putUndo(std::move(group));
    restored();
    Q_EMIT documentModified();
    return true;
}

void Document::undoTo(std::uint64_t sequence) {
    while (history_.canUndo() && history_.topSequence() > sequence)
        if (!undo()) return;
}

void Document::restored() {
    pruneSelection();
    restoring_ = true;
    for (std::size_t i = 0; i < reactors_.size(); ++i) reactors_[i]->documentRestored(*drawing_);
    restoring_ = false;
    noteSpace();
}

// State --------------------------------------------------------------------------------------------------

void Document::setModified(bool modified) { changes_ = modified ? changes_ | changed::kObjects : 0; }

void Document::addReactor(engine::IDocumentReactor* reactor) {
    if (reactor != nullptr && std::find(reactors_.begin(), reactors_.end(), reactor) == reactors_.end())
        reactors_.push_back(reactor);
}

void Document::removeReactor(engine::IDocumentReactor* reactor) { std::erase(reactors_, reactor); }

void Document::noteSpace() {
    const CurrentSpace now = CurrentSpace::of(*drawing_);
    const bool same = now.sameSpace(space_);
    space_ = now;
    if (same) return;
    selection_.clear();
    Q_EMIT spaceChanged();
}

void Document::pruneSelection() {
    std::vector<std::uint64_t> gone;
    for (const std::uint64_t id : selection_.ids())
        if (drawing_->findById(id) == nullptr) gone.push_back(id);
    selection_.remove(gone);
}

void Document::compactLists() {
    if (open_ || history_.canUndo() || history_.canRedo()) return;
    const auto compact = [this](engine::EntityList& list) {
        if (list.slotCount() == list.size()) return;
        list.compact();
        if (SpatialIndex* index = knownIndex(list)) index->invalidate();
    };
    compact(drawing_->modelSpace());
    for (const auto& layout : drawing_->layouts()) compact(layout->entities);
    for (const auto& block : drawing_->blocks()) compact(block->entities);
}

// Spatial indexes ----------------------------------------------------------------------------------------

SpatialIndex& Document::spatialIndex() { return spatialIndex(drawing_->currentSpace()); }

SpatialIndex& Document::spatialIndex(engine::EntityList& space) {
    if (styleRevision_ != drawing_->styleRevision) {
        styleRevision_ = drawing_->styleRevision;
        for (auto& [list, index] : indexes_) index->invalidate();
    }
    if (SpatialIndex* known = knownIndex(space)) return *known;
    return *indexes_.emplace_back(&space, std::make_unique<SpatialIndex>(space)).second;
}

SpatialIndex* Document::knownIndex(const engine::EntityList& list) {
    for (auto& [known, index] : indexes_)
        if (known == &list) return index.get();
    return nullptr;
}

void Document::noteBlockChange(const engine::EntityList& list) {
    if (indexes_.empty() || &list == &drawing_->modelSpace()) return;
    if (drawing_->editedBlock() != nullptr && &list == &drawing_->editedBlock()->entities) return;
    for (const auto& layout : drawing_->layouts())
        if (&layout->entities == &list) return;
    for (auto& [known, index] : indexes_)
        if (index->dependsOnBlocks()) index->invalidate();
}

void Document::entityAdded(engine::EntityList& list, engine::Entity& entity) {
    if (SpatialIndex* index = knownIndex(list)) index->added(entity);
    noteBlockChange(list);
}

void Document::entityRemoved(engine::EntityList& list, engine::Entity& entity) {
    if (SpatialIndex* index = knownIndex(list)) index->removed(entity);
    noteBlockChange(list);
}

void Document::entityChanged(engine::EntityList& list, engine::Entity& entity) {
    if (SpatialIndex* index = knownIndex(list)) index->changed(entity);
    noteBlockChange(list);
}

void Document::listChanged(engine::EntityList& list) {
    // A list that leaves may never come back, and another one may be made at its address: an index without contents
    // serves either.
    if (SpatialIndex* index = knownIndex(list)) index->invalidate();
    noteBlockChange(list);
}

}  // namespace kova::doc
