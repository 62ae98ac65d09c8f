#pragma once

#include <string>

#include "doc/document.hpp"

namespace kova::cmd {

/// The undo group of a command that changes the drawing step by step and can take back its last step: one entry in the
/// history for all of it. The group opens with the first step and closes with the object.
class StepGroup {
public:
    StepGroup(doc::Document& document, std::string label) : document_(document), label_(std::move(label)) {}
    ~StepGroup() {
        for (; steps_ > 0; --steps_) document_.endGroup();
        if (open_) document_.endGroup();
    }
    StepGroup(const StepGroup&) = delete;
    StepGroup& operator=(const StepGroup&) = delete;

    /// What follows is a step of its own.
    void begin() {
        if (!open_) document_.beginGroup(label_);
        open_ = true;
        document_.beginGroup(label_);
        ++steps_;
    }
    /// Takes back the last step; false when there is none.
    bool drop() {
        if (steps_ == 0) return false;
        document_.rollbackGroup();
        --steps_;
        return true;
    }

private:
    doc::Document& document_;
    std::string label_;
    int steps_ = 0;
    bool open_ = false;
};

}  // namespace kova::cmd
