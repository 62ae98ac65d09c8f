#pragma once

#include <string>

#include "doc/document.hpp"

namespace kova::cmd {

/// The undo group of a command that changes the drawing step by step and can take back its last step: one entry in the
/// history for all of it, none when nothing was changed. What is done outside of steps (settings) belongs to it too.
class StepGroup {
public:
    StepGroup(doc::Document& document, const std::string& label) : document_(document) { document_.beginGroup(label); }
    ~StepGroup() {
        for (; steps_ >= 0; --steps_) document_.endGroup();
    }
    StepGroup(const StepGroup&) = delete;
    StepGroup& operator=(const StepGroup&) = delete;

    /// What follows is a step of its own.
    void begin() {
        document_.beginGroup({});
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
    int steps_ = 0;
};

}  // namespace kova::cmd
