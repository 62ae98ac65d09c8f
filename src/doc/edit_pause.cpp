#include "doc/edit_pause.hpp"

#include <utility>

#include "doc/block_edit.hpp"
#include "doc/reference_edit.hpp"

namespace kova::doc {

using engine::Entity;

namespace {

/// Changes entities of a drawing behind its observer's back.
class Unobserved {
public:
    explicit Unobserved(engine::Drawing& drawing)
        : drawing_(drawing), observer_(std::exchange(drawing.observer, nullptr)) {}
    ~Unobserved() { drawing_.observer = observer_; }

private:
    engine::Drawing& drawing_;
    decltype(engine::Drawing::observer) observer_;
};

engine::EntityList* spaceOf(engine::Drawing& drawing, const ReferenceEdit& edit) {
    if (edit.layout.empty()) return &drawing.modelSpace();
    engine::Layout* layout = drawing.findLayout(edit.layout);
    return layout != nullptr ? &layout->entities : nullptr;
}

}  // namespace

EditPause::EditPause(Document& document) : drawing_(document.drawing()) {
    // The working copy of a block stands in no table and no space that is written.
    if (const auto& block = document.blockEdit())
        line_ = "Block \"" + block->block.str() +
                "\" is open in the block editor: it is saved as it was before. BCLOSE saves the changes in it.";
    const auto& edit = document.referenceEdit();
    if (!edit) return;
    line_ = "Reference \"" + edit->block.str() +
            "\" is being edited: it is saved as it was before. REFCLOSE saves the changes in it.";
    space_ = spaceOf(drawing_, *edit);
    if (space_ == nullptr) return;
    const Unobserved unobserved(drawing_);
    for (Entity* entity : space_->entities())
        if (!edit->locked.contains(entity->id())) out_.push_back(space_->take(*entity));
    reference_ = drawing_.findById(edit->reference);
    if (reference_ != nullptr && reference_->visible) reference_ = nullptr;
    if (reference_ != nullptr) show(true);
}

void EditPause::show(bool visible) {
    reference_->visible = visible;
    space_->touch(*reference_);
}

EditPause::~EditPause() {
    if (space_ == nullptr) return;
    const Unobserved unobserved(drawing_);
    for (auto it = out_.rbegin(); it != out_.rend(); ++it) space_->putBack(std::move(*it));
    if (reference_ != nullptr) show(false);
}

}  // namespace kova::doc
