#pragma once

#include <memory>
#include <string>
#include <vector>

#include "doc/document.hpp"

namespace kova::doc {

/// While it lives, a drawing in which a reference or a block is open for editing is what it was before: the reference
/// shows, and what was laid out or drawn in the edit is out of its space. So whoever writes the drawing writes neither
/// loose parts nor a reference that is hidden. Undo and reactors hear nothing of it; the drawing must not be changed
/// meanwhile.
class EditPause {
public:
    explicit EditPause(Document& document);
    ~EditPause();
    EditPause(const EditPause&) = delete;
    EditPause& operator=(const EditPause&) = delete;

    /// One line that says what the file does not hold; empty: nothing is being edited.
    const std::string& line() const { return line_; }

private:
    void show(bool visible);

    engine::Drawing& drawing_;
    engine::EntityList* space_ = nullptr;
    engine::Entity* reference_ = nullptr;  ///< shown meanwhile
    std::vector<std::unique_ptr<engine::Entity>> out_;
    std::string line_;
};

}  // namespace kova::doc
