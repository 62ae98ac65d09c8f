#pragma once

#include <string>

namespace kova::script::lisp {

/// Evaluates LISP text for a session. An evaluation may stop to ask: it then waits for lines, as a command does.
class LispEvaluator {
public:
    struct Result {
        std::string printed;  ///< the value as it prints; empty while the evaluation waits
        std::string error;    ///< not empty: the evaluation failed with this text
    };
    virtual ~LispEvaluator() = default;
    virtual Result evaluate(const std::string& text) = 0;
    /// True while an evaluation waits for a line.
    virtual bool isWaiting() const { return false; }
    /// What it asks.
    virtual std::string prompt() const { return {}; }
    /// Answers it.
    virtual Result feed(const std::string&) { return {}; }
    /// Ends it, as Escape does.
    virtual Result cancel() { return {}; }
};

}  // namespace kova::script::lisp
