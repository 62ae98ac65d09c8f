#pragma once

#include <span>
#include <string>
#include <string_view>

#include "doc/document.hpp"
#include "math/vector2.hpp"

class QPainter;

namespace kova::cmd {

/// What a tool asks of an interactive view. Absent in a program without a window.
class Viewport {
public:
    virtual ~Viewport() = default;
    virtual void repaint() = 0;
    /// Radius of the pick box, in drawing units.
    virtual double worldPickTolerance() const = 0;
};

class AppServices;
class CommandRegistry;

/// What a running tool tells its surroundings.
class ToolHost {
public:
    virtual ~ToolHost() = default;
    virtual void promptChanged(const std::string& text) = 0;
    /// The tool ended; sent once.
    virtual void finished() = 0;
    /// A line for the transcript; an empty one is no line.
    virtual void message(const std::string& text) = 0;
    /// What the program around the commands offers (files, templates, scripts); null in a bare host.
    virtual AppServices* services() { return nullptr; }
    /// All commands, and their aliases to be listed and edited; null in a bare host.
    virtual CommandRegistry* registry() { return nullptr; }
};

inline constexpr int kLeftButton = 1;
inline constexpr int kRightButton = 2;

/// The state machine of one running command. Tools never throw on bad input: they print a one-line refusal, or
/// ignore the line, and keep their prompt.
class Tool {
public:
    Tool() = default;
    virtual ~Tool() = default;
    Tool(const Tool&) = delete;
    Tool& operator=(const Tool&) = delete;

    /// Sets the first prompt. A tool that has nothing to ask may finish here.
    virtual void begin() = 0;
    virtual void end() {}
    virtual void mouseMove(const math::Vector2& point);
    virtual void mousePress(const math::Vector2& point, int button);
    virtual void mouseRelease(const math::Vector2& point, int button);
    virtual void mouseWheel(const math::Vector2& point, int steps);
    /// One typed line as received, without its line end; an empty one is Enter.
    virtual void textInput(const std::string& line) = 0;
    virtual void cancel();
    virtual void paint(QPainter& painter);
    /// True while picks and windows go to the selection set instead of to mousePress.
    virtual bool isSelectingObjects() const;
    virtual void selectionChanged() {}
    /// A crossing window or polygon added to the selection; its corners in order. Comes before selectionChanged.
    virtual void crossingSelected(std::span<const math::Vector2>) {}
    /// Points given to this tool may be drawn to object snaps.
    virtual bool acceptsSnap() const { return true; }
    /// What is asked for is a line of text: inline answers give it all the words that are left, blanks and all.
    virtual bool takesRestOfLine() const { return false; }
    /// The selection stays as it is when the tool ends (SELECT and its kin).
    virtual bool keepsSelection() const { return false; }

    /// Set by the processor before begin.
    void attach(doc::Document* document, Viewport* viewport, ToolHost* host);
    const std::string& prompt() const { return prompt_; }
    bool isActive() const { return active_; }
    void activate() { active_ = true; }
    /// "-NAME" was typed: the command's variant that prompts instead of opening a dialog.
    void setCommandLineVariant(bool on) { commandLine_ = on; }
    /// Words stood behind the command's name on its line; they follow as input right after begin.
    void setInlineInput(bool on) { inlineInput_ = on; }

protected:
    doc::Document& document() const { return *document_; }
    doc::Document* documentOrNull() const { return document_; }
    engine::Drawing& drawing() const { return document_->drawing(); }
    Viewport* viewport() const { return viewport_; }
    ToolHost* host() const { return host_; }
    const math::Vector2& cursor() const { return cursor_; }
    bool isCommandLineVariant() const { return commandLine_; }
    bool hasInlineInput() const { return inlineInput_; }
    void setPrompt(std::string text);
    void message(const std::string& text) const;
    void repaint() const;
    /// Clears `active` and sends finished(); the tool must not be used afterwards.
    void finish();
    double pickTolerance() const { return viewport_ != nullptr ? viewport_->worldPickTolerance() : 0.0; }

private:
    doc::Document* document_ = nullptr;
    Viewport* viewport_ = nullptr;
    ToolHost* host_ = nullptr;
    std::string prompt_;
    bool active_ = false;
    bool commandLine_ = false;
    bool inlineInput_ = false;
    math::Vector2 cursor_;
};

}  // namespace kova::cmd
