#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

#include "headless/session.hpp"
#include "script/python/runner.hpp"

namespace kova::script::python {

/// The interpreter can be started once in a process: all tests share it.
inline Interpreter& sharedInterpreter() {
    static Interpreter interpreter;
    return interpreter;
}

/// A session with Python, both fresh for every test; names that code defines stay.
struct PythonTest : ::testing::Test {
    headless::Session session;
    Runner runner{sharedInterpreter(), session};

    PythonTest() {
        session.takeOutput();
        good(
            "from kova.doc import current, transaction\nfrom kova.ent import *\nfrom kova import cmd, doc, ent, geom\n"
            "ms = current().model_space\nd = current().drawing");
    }

    /// Runs code that must work; what it printed, without the last line end.
    std::string good(const std::string& code) {
        const Runner::Result result = runner.run(code);
        EXPECT_FALSE(result.failed) << code << "\n" << result.error;
        return result.output.substr(0, result.output.find_last_not_of('\n') + 1);
    }
    /// The value of an expression as Python shows it.
    std::string show(const std::string& expression) { return good("print(repr(" + expression + "))"); }
    /// Runs code that must fail; the last line of the error.
    std::string bad(const std::string& code) {
        const Runner::Result result = runner.run(code);
        EXPECT_TRUE(result.failed) << code;
        return result.error.substr(result.error.rfind('\n') + 1);
    }
    doc::Document& document() { return session.document(); }
    engine::EntityList& model() { return session.document().drawing().modelSpace(); }
};

}  // namespace kova::script::python
