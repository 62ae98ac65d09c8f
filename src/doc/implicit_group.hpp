#pragma once

#include "doc/document.hpp"

namespace kova::doc {

/// A group for one editing operation that is called while no group is open; named after its first action, and gone
/// without a trace when the operation turns out to change nothing.
class Document::ImplicitGroup {
public:
    explicit ImplicitGroup(Document& document)
        : document_(document), own_(!document.isGroupOpen() && !document.restoring_) {
        if (own_) document_.beginGroup({});
    }
    ~ImplicitGroup() {
        if (!own_ || !document_.open_) return;
        if (document_.open_->actions.empty()) {
            document_.open_.reset();
            return;
        }
        document_.open_->label = document_.open_->actions.front()->description();
        document_.endGroup();
    }
    ImplicitGroup(const ImplicitGroup&) = delete;
    ImplicitGroup& operator=(const ImplicitGroup&) = delete;

private:
    Document& document_;
    bool own_;
};

}  // namespace kova::doc
