#pragma once

#include <gtest/gtest.h>

#include <deque>
#include <string>
#include <vector>

#include "cmd/command.hpp"
#include "cmd/processor.hpp"
#include "doc/document.hpp"
#include "engine/entities/line.hpp"

namespace kova::cmd {

/// A document with a command line, and services that only note what they are asked for. Lines are read as the program
/// reads them: "'" runs beside a command, queued lines follow at once.
class Console : public AppServices {
public:
    Console()
        : processor(document, CommandRegistry::instance(), [this](const std::string& text) { lines.push_back(text); }) {
        processor.setServices(this);
        engine::resetProfileVariables();
        CommandRegistry::instance().resetAliases();
    }

    /// Feeds a line and gives the lines that it printed.
    std::vector<std::string> feed(const std::string& line) {
        const std::size_t before = lines.size();
        take(line);
        while (!queue.empty()) {
            const std::string next = std::move(queue.front());
            queue.pop_front();
            take(next);
        }
        return {lines.begin() + static_cast<std::ptrdiff_t>(before), lines.end()};
    }
    /// Feeds several lines and gives what all of them printed.
    std::vector<std::string> run(const std::vector<std::string>& input) {
        const std::size_t before = lines.size();
        for (const std::string& line : input) feed(line);
        return {lines.begin() + static_cast<std::ptrdiff_t>(before), lines.end()};
    }
    const std::string& prompt() const { return processor.prompt(); }
    bool idle() const { return !processor.isActive(); }

    engine::Drawing& drawing() { return document.drawing(); }
    std::vector<engine::Entity*> entities() { return drawing().currentSpace().entities(); }
    std::size_t count() { return drawing().currentSpace().size(); }
    /// Adds an entity as it stands, outside the undo history.
    template <class Kind>
    Kind& add(Kind entity) {
        return static_cast<Kind&>(drawing().currentSpace().append(std::make_unique<Kind>(std::move(entity))));
    }
    engine::LineEntity& addLine(double x1, double y1, double x2, double y2) {
        return add(engine::LineEntity(math::Vector2{x1, y1}, math::Vector2{x2, y2}));
    }
    const std::vector<std::uint64_t>& selected() { return document.selection().ids(); }

    std::string open(const std::string& path) override {
        calls.push_back("open " + path);
        return failure;
    }
    std::string save(const std::string& path) override {
        calls.push_back("save " + path);
        if (failure.empty()) lines.push_back("Saved: " + path);
        return failure;
    }
    void newDrawing(const std::string& name) override {
        calls.push_back("new " + name);
        document.setDrawing(std::make_unique<engine::Drawing>());
    }
    void queueLines(std::vector<std::string> more) override { queue.insert(queue.begin(), more.begin(), more.end()); }
    void chooseDwgVersion(const std::string& version) override { calls.push_back("version " + version); }
    void wait(int milliseconds) override { calls.push_back("wait " + std::to_string(milliseconds)); }

    doc::Document document;
    CommandProcessor processor;
    std::vector<std::string> lines;
    std::vector<std::string> calls;
    std::deque<std::string> queue;
    std::string failure;

private:
    void take(const std::string& line) {
        if (line.size() >= 2 && line.front() == '\'') {
            const std::string name = line.substr(1);
            const auto result = processor.runTransparent(name);
            if (result == CommandProcessor::Start::Unknown) lines.push_back("Unknown command: " + name);
            if (result == CommandProcessor::Start::Refused)
                lines.push_back("'" + name + ": cannot be used transparently.");
        } else if (processor.isActive()) {
            processor.input(line);
        } else if (processor.startLine(line) == CommandProcessor::Start::Unknown && !line.empty()) {
            lines.push_back("Unknown command: " + line);
        }
    }
};

using Lines = std::vector<std::string>;

}  // namespace kova::cmd
