#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "headless/session.hpp"
#include "script/lisp/engine.hpp"

namespace kova::script::lisp {

/// A session, and shorthands for what a line prints.
struct LispTest : ::testing::Test {
    headless::Session session;

    /// The transcript of some lines without the echo of each.
    std::vector<std::string> lines(const std::vector<std::string>& input) {
        std::vector<std::string> out;
        for (const std::string& line : input) {
            std::vector<std::string> got = session.feed(line);
            out.insert(out.end(), got.begin() + 1, got.end());
        }
        return out;
    }
    /// What one expression gives: its value, or "; error: ...".
    std::string eval(const std::string& text) {
        const auto result = engine().evaluate(text);
        return result.error.empty() ? result.printed : "; error: " + result.error;
    }
    LispEngine& engine() { return *dynamic_cast<LispEngine*>(session.lisp()); }
    engine::Drawing& drawing() { return session.document().drawing(); }
};

}  // namespace kova::script::lisp
