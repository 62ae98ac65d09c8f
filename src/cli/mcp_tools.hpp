#pragma once

#include <functional>
#include <nlohmann/json_fwd.hpp>
#include <string>
#include <vector>

#include "headless/session.hpp"

namespace kova::cli {

/// Runs Python for the server's `run_python` tool.
class PythonRunner {
public:
    struct Result {
        std::string output;  ///< what the code printed
        std::string error;   ///< the interpreter's error text
        bool failed = false;
    };
    virtual ~PythonRunner() = default;
    virtual Result run(const std::string& code) = 0;
};

/// The tools that the server offers, over one session.
class McpTools {
public:
    explicit McpTools(headless::Session& session, PythonRunner* python = nullptr) : session_(session), python_(python) {}

    /// The array of tool descriptions for tools/list.
    static const nlohmann::ordered_json& descriptions();
    /// Runs a tool; the result object of tools/call. An unknown tool is a failed result; a wrong argument type throws
    /// the JSON library's exception.
    nlohmann::ordered_json call(const std::string& name, const nlohmann::json& arguments);

private:
    using Json = nlohmann::ordered_json;
    Json drawingInfo();
    /// A reply to which the session's lines add what the caller must know; the next run_commands begins clean.
    Json withNotes(const std::string& text, const std::string& error);
    Json newDrawing(const nlohmann::json& arguments);
    Json openDrawing(const nlohmann::json& arguments);
    Json saveDrawing(const nlohmann::json& arguments);
    Json runCommands(const nlohmann::json& arguments);
    Json cancelCommand();
    Json runPython(const nlohmann::json& arguments);
    Json listEntities(const nlohmann::json& arguments);
    Json renderImage(const nlohmann::json& arguments);
    Json listCommands(const nlohmann::json& arguments);

    headless::Session& session_;
    PythonRunner* python_;
};

}  // namespace kova::cli
