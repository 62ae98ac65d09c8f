// A sealed session for command-line fuzzing, and what must hold whatever was typed into it.
#pragma once

#include <cstdio>
#include <cstdlib>
#include <memory>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "engine/model/sysvar.hpp"
#include "headless/session.hpp"
#include "io/dxf/dxf_save.hpp"
#include "io/native/native_file.hpp"

namespace kova::fuzzing {

/// Prints what broke and stops, so that fuzzers and tests see the input that did it.
[[noreturn]] inline void broken(const std::string& what) {
    std::fprintf(stderr, "command line fuzz: %s\n", what.c_str());
    std::abort();
}

/// What commands may do to the world outside: nothing. Drawings are made, lines are queued; files are not touched.
class SealedServices final : public cmd::AppServices {
public:
    explicit SealedServices(headless::Session& session) : session_(session) {}
    std::string open(const std::string&) override { return "Not here."; }
    std::string save(const std::string&) override { return "Not here."; }
    void newDrawing(const std::string&) override {
        session_.newDrawing();
        replaced = true;
    }
    /// A small drawing for INSERT, XREF and LAYOUT Template.
    std::string readDrawing(const std::string& path, engine::Drawing& drawing) override {
        if (path.find("part") == std::string::npos) return "Not here.";
        return io::native::loadNativeText(R"({"format":"kovacad","version":2,"entities":[{"type":"Line","layer":"Part",
            "startX":0,"startY":0,"endX":5,"endY":5}]})",
                                          drawing);
    }
    std::string writeDrawing(const engine::Drawing& drawing, const std::string&) override {
        return io::native::nativeText(drawing).empty() ? "Nothing written." : "";
    }
    void queueLines(std::vector<std::string> lines) override { session_.queueLines(std::move(lines)); }
    void wait(int) override {}

    bool replaced = false;  ///< another drawing took the place of the first one

private:
    headless::Session& session_;
};

class CommandSession {
public:
    CommandSession() : services_(session_) {
        engine::resetProfileVariables();
        cmd::CommandRegistry::instance().resetAliases();
        session_.processor().setServices(&services_);
        // LISP could write files; it has a target of its own.
        session_.setLisp(nullptr);
        fresh_ = contents();
    }

    std::string prompt() const { return session_.currentPrompt(); }
    std::size_t entityCount() { return session_.document().drawing().entityCount(); }

    void feed(const std::string& line) {
        session_.feed(line);
        if (session_.currentPrompt().empty()) broken("empty prompt");
    }

    /// Ends what waits; then the drawing must save and load, and undoing all of it and making it again must work.
    void finish() {
        session_.cancel();
        if (session_.isWaiting()) broken("cannot be cancelled");
        session_.takeOutput();
        doc::Document& document = session_.document();
        while (document.isGroupOpen()) document.endGroup();

        const std::string text = io::native::nativeText(document.drawing());
        engine::Drawing again;
        const std::string error = io::native::loadNativeText(text, again);
        if (!error.empty()) broken("saved drawing does not load: " + error);
        if (io::dxf::dxfText(document.drawing()).empty()) broken("no DXF text");

        const nlohmann::json after = contents();
        const std::size_t steps = document.history().undoCount();
        document.undoTo(0);
        // The history starts with the drawing unless it was full.
        if (!services_.replaced && steps < kMostSteps) expectSame(fresh_, contents(), "undoing all");
        for (std::size_t i = 0; i < steps; ++i)
            if (!document.redo()) broken("a step cannot be made again");
        expectSame(after, contents(), "making all again");
    }

private:
    static constexpr std::size_t kMostSteps = 1000;

    /// What undo answers for: entities, tables, blocks, layouts. Variables, among them remembered defaults, what
    /// naming a linetype in one of them loads, and counters may go their own ways.
    nlohmann::json contents() {
        nlohmann::json all = nlohmann::json::parse(io::native::nativeText(session_.document().drawing()));
        nlohmann::json kept;
        for (const char* name : {"layers", "blocks", "groups", "textStyles", "dimStyles", "mleaderStyles",
                                 "tableStyles", "entities", "layouts", "namedPageSetups"})
            if (all.contains(name)) kept[name] = std::move(all[name]);
        return kept;
    }

    static void expectSame(const nlohmann::json& before, const nlohmann::json& now, const std::string& when) {
        if (before == now) return;
        for (const auto& [name, value] : before.items()) {
            if (now.contains(name) && now[name] == value) continue;
            std::string text = when + ": " + name;
            if (!now.contains(name)) broken(text + " is gone");
            if (value.size() != now[name].size())
                broken(text + " has " + std::to_string(now[name].size()) + " instead of " +
                       std::to_string(value.size()));
            for (std::size_t i = 0; i < value.size(); ++i)
                if (value[i] != now[name][i])
                    broken(text + "\n  was " + value[i].dump() + "\n  is  " + now[name][i].dump());
        }
        broken(when + ": a member more");
    }

    headless::Session session_;
    SealedServices services_;
    nlohmann::json fresh_;
};

}  // namespace kova::fuzzing
