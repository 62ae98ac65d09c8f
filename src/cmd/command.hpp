#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "cmd/tool.hpp"

namespace kova::engine {
struct PlotPage;
enum class PlotFormat;
}  // namespace kova::engine

namespace kova::cmd {

/// Runs Python files for commands. What they print, and their errors, go to the transcript.
class PythonHost {
public:
    virtual ~PythonHost() = default;
    /// Runs a file as a program of its own.
    virtual void runFile(const std::string& path) = 0;
    /// Runs a file whose definitions stay (commands, functions), and notes it for reloadFiles.
    virtual void loadFile(const std::string& path) = 0;
    /// Loads all files again that were loaded, in their order.
    virtual void reloadFiles() = 0;
};

/// A picture file's size in pixels and its resolution; 0: not known.
struct PictureSize {
    int width = 0;
    int height = 0;
    double pixelsPerMeter = 0.0;
};

/// What the program around the commands offers: files, templates, scripts. Errors are texts, empty on success.
class AppServices {
public:
    virtual ~AppServices() = default;
    virtual std::string open(const std::string& path) = 0;
    /// Saves to the path, or to the drawing's own file when it is empty; prints the lines of a save itself.
    virtual std::string save(const std::string& path) = 0;
    /// A fresh drawing, or one from a template; prints its line itself.
    virtual void newDrawing(const std::string& templateName) = 0;
    /// Reads a drawing file (.kvcad, .dxf, .dwg) into a fresh drawing, beside the open one. Default: refuses.
    virtual std::string readDrawing(const std::string& path, engine::Drawing& drawing);
    /// Reads the drawing of an external reference of the open one, with what that refers to itself; the path counts
    /// from the open drawing's file. Default: refuses.
    virtual std::string readReference(const std::string& path, engine::Drawing& drawing);
    /// Writes a drawing that is not the open one, in the format of the path's extension. Default: refuses.
    virtual std::string writeDrawing(const engine::Drawing& drawing, const std::string& path);
    /// The size of a picture file, without reading the picture. Default: nothing, as for a file that is no picture.
    virtual std::optional<PictureSize> pictureSize(const std::string& path);
    /// Plots pages to a file: PDF a page each, the other formats the first page. Default: refuses.
    virtual std::string plot(std::span<const engine::PlotPage> pages, engine::PlotFormat format, const std::string& path);
    /// Lines that are fed, in order, when the running command's line is done.
    virtual void queueLines(std::vector<std::string> lines) = 0;
    /// Version of DWG files that following saves write, as SAVEAS names it ("2013"). Default: nothing.
    virtual void chooseDwgVersion(const std::string& version);
    /// Loads the LISP files that were loaded so far again; prints its lines itself. Default: nothing.
    virtual void reloadLisp();
    /// Waits, as DELAY asks; milliseconds. Default: sleeps.
    virtual void wait(int milliseconds);
    /// Null where there is no Python.
    virtual PythonHost* python() { return nullptr; }
    /// Runs `work` when the line that is being fed is done, its command ended or waiting. Default: at once.
    virtual void afterLine(std::function<void()> work);
};

/// What a one-shot command works with.
struct CommandContext {
    doc::Document& document;
    ToolHost& host;
    std::vector<std::string> arguments;  ///< the words behind the command's name on its line
    bool transparent = false;            ///< run while another command waits
    bool commandLine = false;            ///< "-NAME" was typed
    /// Set by a one-shot command that needs a dialogue after all (ERASE with nothing selected); never when
    /// transparent. The processor runs it as if the command were interactive.
    std::unique_ptr<Tool> handOver;
    /// Set by a one-shot command to what P selects from now on, by id.
    std::optional<std::vector<std::uint64_t>> previous = {};

    engine::Drawing& drawing() const { return document.drawing(); }
    void message(const std::string& text) const { host.message(text); }
};

/// A named, registered command; one object for the whole run of the program.
class Command {
public:
    Command(std::string name, std::string title, std::string category, std::vector<std::string> aliases = {})
        : name_(std::move(name)),
          title_(std::move(title)),
          category_(std::move(category)),
          aliases_(std::move(aliases)) {}
    virtual ~Command() = default;
    Command(const Command&) = delete;
    Command& operator=(const Command&) = delete;

    /// Runs a one-shot command at once; empty for interactive ones.
    virtual void execute(CommandContext&) {}
    /// True for commands that run a tool; only the others may run transparently.
    virtual bool isInteractive() const { return true; }
    virtual bool isHidden() const { return false; }
    /// A new tool of an interactive command.
    virtual std::unique_ptr<Tool> createTool() { return nullptr; }

    const std::string& name() const { return name_; }
    const std::string& title() const { return title_; }
    /// "Draw", "Modify", "Edit", "View", "Format", "Insert", "Annotate", "Inquiry", "Settings", "Tools", "File",
    /// "Help".
    const std::string& category() const { return category_; }
    const std::vector<std::string>& aliases() const { return aliases_; }

private:
    std::string name_;
    std::string title_;
    std::string category_;
    std::vector<std::string> aliases_;
};

/// An interactive command whose tool needs nothing but to be made.
template <class ToolClass>
class ToolCommand : public Command {
public:
    using Command::Command;
    std::unique_ptr<Tool> createTool() override { return std::make_unique<ToolClass>(); }
};

/// A one-shot command.
class OneShotCommand : public Command {
public:
    using Command::Command;
    bool isInteractive() const override { return false; }
    void execute(CommandContext& context) override = 0;
};

}  // namespace kova::cmd
