#pragma once

#include <string>

#include "cmd/processor.hpp"
#include "engine/model/drawing.hpp"
#include "script/lisp/engine.hpp"

namespace kova::fuzz {

/// Evaluates a text with small limits, answers what it asks a few times and ends it. Functions that leave the program
/// (files, environment) are taken away first.
inline void lispLine(const std::string& text) {
    struct Host final : script::lisp::LispHost {
        doc::Document document_;
        cmd::CommandProcessor processor_{document_, cmd::CommandRegistry::instance(), [](const std::string&) {}};
        doc::Document& document() override { return document_; }
        cmd::CommandProcessor& processor() override { return processor_; }
        void print(const std::string&) override {}
    };
    Host host;
    script::lisp::LispEngine engine(host);
    for (const char* name : {"OPEN", "LOAD", "SETENV", "GETENV", "VL-FILE-DELETE", "VL-FILE-RENAME", "VL-FILE-COPY",
                             "VL-MKDIR", "VL-DIRECTORY-FILES", "COMMAND", "COMMAND-S", "VL-CMDF", "FINDFILE"})
        engine.symbols().intern(name)->value = script::lisp::Value();
    engine.machine().setStepLimit(200'000);
    engine.machine().setDepthLimit(5'000);
    const std::size_t limit = script::lisp::Heap::limit;
    script::lisp::Heap::limit = script::lisp::Heap::bytes + (std::size_t{64} << 20);
    engine.evaluate(text);
    for (const char* answer : {"", "1,2", "5", "ALL", "x", ""})
        if (engine.isWaiting()) engine.feed(answer);
    for (int i = 0; i < 3 && engine.isWaiting(); ++i) engine.cancel();
    script::lisp::Heap::limit = limit;
}

}  // namespace kova::fuzz
