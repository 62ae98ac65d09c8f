#pragma once

#include <QObject>
#include <deque>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "cmd/command.hpp"
#include "cmd/processor.hpp"
#include "doc/document.hpp"
#include "script/lisp/evaluator.hpp"

class QImage;

namespace kova::headless {

using LispEvaluator = script::lisp::LispEvaluator;

/// One drawing driven by command lines, without a window: takes lines as a user types them and gives the transcript
/// that they produce. Opens, saves and renders, and stops any dialog that a command tries to show.
///
/// The property "kovaDwgVersion" (a string) names the DWG version that a save as .dwg writes.
class Session final : public QObject, private cmd::AppServices {
    Q_OBJECT
public:
    explicit Session(QObject* parent = nullptr);
    ~Session() override;

    /// Feeds one command line and gives the transcript lines collected so far, this line's included.
    std::vector<std::string> feed(const std::string& line);
    /// Feeds one command line and leaves its transcript lines with those collected.
    void feedQuietly(const std::string& line);
    /// The lines collected so far, which stay.
    const std::vector<std::string>& output() const { return transcript_; }
    /// A command runs and waits for input, or a LISP evaluation does.
    bool isWaiting() const { return processor_.isActive() || isLispWaiting(); }
    /// The prompt being shown; "Command:" when idle.
    std::string currentPrompt() const;
    /// Cancels the running command or evaluation, if any, with the line "*Cancel*".
    void cancel();
    /// Moves out the lines collected so far.
    std::vector<std::string> takeOutput();

    // Errors are texts, empty on success. The open drawing stays as it was when something fails.
    std::string open(const std::string& path) override;
    /// Starts from a template: metric, metric-a4, imperial, or a file name or path.
    std::string newFromTemplate(const std::string& name);
    void newDrawing(const std::string& templateName = {}) override;
    /// Saves by the path's extension; an empty path saves to the drawing's own file.
    std::string save(const std::string& path) override;
    /// Files beside the open drawing, which stays (INSERT, WBLOCK).
    std::string readDrawing(const std::string& path, engine::Drawing& drawing) override;
    std::string readReference(const std::string& path, engine::Drawing& drawing) override;
    std::string writeDrawing(const engine::Drawing& drawing, const std::string& path) override;
    std::optional<cmd::PictureSize> pictureSize(const std::string& path) override;
    /// The drawing as a picture; a null image when it cannot be rendered.
    QImage renderImage(int width, int height);

    doc::Document& document() { return document_; }
    cmd::CommandRegistry& registry() { return registry_; }
    cmd::CommandProcessor& processor() { return processor_; }
    /// Puts another evaluator in the place of the session's own.
    void setLisp(std::unique_ptr<LispEvaluator> lisp) { lisp_ = std::move(lisp); }
    LispEvaluator* lisp() const { return lisp_.get(); }
    /// What runs Python for commands; not owned, may be null.
    void setPython(cmd::PythonHost* python) { python_ = python; }
    cmd::PythonHost* python() override { return python_; }
    void afterLine(std::function<void()> work) override { afterLine_.push_back(std::move(work)); }
    /// A prompt shown instead of the running command's own; cleared on cancel and when a command starts.
    void setPromptOverride(std::string prompt);
    void clearPromptOverride();
    /// Lines fed, in order, once the line being fed is done; for a script within a script they come first.
    void queueLines(std::vector<std::string> lines) override;
    std::string plot(std::span<const engine::PlotPage> pages, engine::PlotFormat format,
                     const std::string& path) override;
    /// Sets "kovaDwgVersion", as SAVEAS names the version ("2013").
    void chooseDwgVersion(const std::string& version) override;
    /// Loads the LISP files that were loaded so far again.
    void reloadLisp() override;
    /// Adds a line to the transcript; an empty one is no line.
    void append(const std::string& line);

    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    struct PendingLine {
        std::string text;
        int depth;
        bool script;
    };

    void publishState();
    void process(const std::string& line);
    void processIdle(const std::string& line);
    bool tryLisp(const std::string& line);
    void evaluate(const std::string& text);
    bool isLispWaiting() const { return lisp_ && lisp_->isWaiting(); }
    void report(const LispEvaluator::Result& result);
    void startLisp();
    void runAfterLine();
    void pumpEvents();
    void replaceDrawing(std::unique_ptr<engine::Drawing> drawing);
    /// Writes a drawing and tells what is to be told of it; the open one as it was before what is being edited in it.
    std::string write(const engine::Drawing& drawing, const std::string& path);

    std::vector<std::unique_ptr<engine::Drawing>> retired_;  ///< replaced while the running command waits
    doc::Document document_;
    cmd::CommandRegistry& registry_;
    cmd::CommandProcessor processor_;
    class LispLink;
    std::unique_ptr<LispLink> lispLink_;
    std::unique_ptr<LispEvaluator> lisp_;
    cmd::PythonHost* python_ = nullptr;
    std::deque<std::function<void()>> afterLine_;
    std::vector<std::string> transcript_;
    std::string lastLine_;
    std::string promptOverride_;
    bool hasPromptOverride_ = false;
    std::deque<PendingLine> pending_;
    bool draining_ = false;
    bool inScript_ = false;  ///< the line being fed was played by SCRIPT, or queued by such a line
    int depth_ = 0;
    bool windowSeen_ = false;
    std::int64_t lastPump_ = 0;
};

}  // namespace kova::headless
