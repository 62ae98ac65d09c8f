// What connects a session with its LISP engine.

#include <cstdlib>
#include <filesystem>

#include "headless/session.hpp"
#include "headless/session_lisp.hpp"
#include "script/lisp/engine.hpp"
#include "script/lisp/printer.hpp"

namespace kova::headless {

namespace {

/// The file that is loaded at the start; empty: none.
std::string startupFile() {
    namespace fs = std::filesystem;
    if (const char* named = std::getenv("KOVACAD_LISP")) return named;
    fs::path folder;
    if (const char* config = std::getenv("XDG_CONFIG_HOME"); config != nullptr && *config != 0)
        folder = config;
    else if (const char* home = std::getenv("HOME"); home != nullptr && *home != 0)
        folder = fs::path(home) / ".config";
    else
        return {};
    const fs::path file = folder / "kovacad" / "startup.lsp";
    std::error_code error;
    return fs::is_regular_file(file, error) ? file.string() : std::string();
}

}  // namespace

void Session::startLisp() {
    lispLink_ = std::make_unique<LispLink>(*this);
    auto engine = std::make_unique<script::lisp::LispEngine>(*lispLink_);
    script::lisp::LispEngine& lisp = *engine;
    lisp_ = std::move(engine);
    const std::string file = startupFile();
    if (file.empty()) return;
    // Only what goes wrong is worth a line.
    if (const auto result = lisp.loadFile(file); !result.error.empty()) return report(result);
    if (lisp.isWaiting()) return;
    const auto& startup = lisp.symbols().intern("S::STARTUP")->value;
    if (startup.isCallable()) {
        const auto result = lisp.evaluate("(S::STARTUP)");
        if (!result.error.empty()) report(result);
    }
}

void Session::reloadLisp() {
    auto* lisp = dynamic_cast<script::lisp::LispEngine*>(lisp_.get());
    if (lisp == nullptr) return;
    const std::vector<std::string> files = lisp->loadedFiles();
    if (files.empty()) return append("No LISP files are loaded.");
    std::size_t count = 0;
    for (const std::string& file : files) {
        const auto result = lisp->loadFile(file);
        if (!result.error.empty())
            append("Could not load " + file + ": " + result.error);
        else
            ++count;
        if (lisp->isWaiting()) break;
    }
    append(std::to_string(count) + (count == 1 ? " LISP file reloaded." : " LISP files reloaded."));
}

}  // namespace kova::headless
