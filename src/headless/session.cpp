#include "headless/session.hpp"

#include <QCoreApplication>
#include <QEvent>
#include <QImage>
#include <QImageReader>
#include <QMessageBox>
#include <QPointer>
#include <QTimer>
#include <QWidget>
#include <chrono>
#include <clocale>
#include <filesystem>

#include "cmd/isolation.hpp"
#include "cmd/macros.hpp"
#include "edit/text_fields.hpp"
#include "cmd/undo_marks.hpp"
#include "doc/edit_pause.hpp"
#include "engine/model/sysvar.hpp"
#include "engine/sysvars/host.hpp"
#include "headless/files.hpp"
#include "headless/session_lisp.hpp"
#include "headless/templates.hpp"
#include "render/picture_file.hpp"

namespace kova::headless {

namespace {

constexpr int kMaxScriptDepth = 100;
constexpr std::size_t kMaxPendingLines = 20'000'000;
// Posted events are delivered after every line; the full event loop, which asks the system, runs this often.
constexpr std::int64_t kPumpIntervalNs = 20'000'000;

/// Keeps what a save as DWG told, for DWGWORKFLOW.
void noteDwgSave(doc::Document& document, const std::string& path, const SaveReport& report) {
    if (engine::upperCase(path).ends_with(".DWG")) {
        QStringList lines(QString::fromStdString(path));
        for (const std::string& line : report.lines) lines.append(QString::fromStdString(line));
        document.setProperty("DWG save report", lines);
    }
}

/// Whose state system variables tell: the session that was made last.
const Session* told = nullptr;

std::int64_t nowNs() { return std::chrono::steady_clock::now().time_since_epoch().count(); }

}  // namespace

Session::Session(QObject* parent)
    : QObject(parent),
      document_(freshDrawing()),
      registry_(cmd::CommandRegistry::instance()),
      processor_(document_, registry_, [this](const std::string& text) { append(text); }) {
    setObjectName(QStringLiteral("KovaCadHeadlessSession"));
    // Whoever made the application object: Qt takes the user's locale with it, and libraries print by its decimal comma.
    std::setlocale(LC_NUMERIC, "C");
    processor_.setServices(this);
    if (QCoreApplication::instance() != nullptr) QCoreApplication::instance()->installEventFilter(this);
    publishState();
    startLisp();
}

Session::~Session() {
    if (told == this) {
        told = nullptr;
        engine::sysVarEnvironment() = {};
    }
    if (QCoreApplication::instance() != nullptr) QCoreApplication::instance()->removeEventFilter(this);
}

void Session::append(const std::string& line) {
    if (!line.empty()) transcript_.push_back(line);
}

std::vector<std::string> Session::takeOutput() { return std::exchange(transcript_, {}); }

void Session::publishState() {
    told = this;
    engine::SysVarEnvironment& environment = engine::sysVarEnvironment();
    environment = {};
    environment.modified = [this] { return document_.changes(); };
    environment.commandActive = [this] { return (processor_.isActive() ? 1 : 0) | (inScript_ ? 4 : 0); };
    environment.commandNames = [this] { return processor_.activeCommand(); };
    environment.undoControl = [this] { return document_.isGroupOpen() ? 13 : 5; };
    environment.undoMarks = [this] { return cmd::undoMarks(document_.history()); };
    environment.lastPrompt = [this] { return transcript_.empty() ? std::string() : transcript_.back(); };
}

std::string Session::currentPrompt() const {
    if (isLispWaiting()) return lisp_->prompt();
    if (processor_.isActive() && hasPromptOverride_) return promptOverride_;
    return processor_.prompt();
}

void Session::setPromptOverride(std::string prompt) {
    promptOverride_ = std::move(prompt);
    hasPromptOverride_ = true;
}

void Session::clearPromptOverride() { hasPromptOverride_ = false; }

void Session::cancel() {
    const bool evaluating = isLispWaiting();
    if (processor_.cancel() || evaluating) append("*Cancel*");
    retired_.clear();
    clearPromptOverride();
    if (evaluating) report(lisp_->cancel());
}

std::vector<std::string> Session::feed(const std::string& line) {
    feedQuietly(line);
    return takeOutput();
}

void Session::feedQuietly(const std::string& line) {
    process(line);
    if (!draining_) {
        draining_ = true;
        while (!pending_.empty()) {
            const PendingLine next = std::move(pending_.front());
            pending_.pop_front();
            depth_ = next.depth;
            inScript_ = next.script;
            process(next.text);
        }
        depth_ = 0;
        inScript_ = false;
        draining_ = false;
    }
}

void Session::queueLines(std::vector<std::string> lines) {
    const bool script = inScript_ || processor_.activeCommand() == "SCRIPT";
    if (depth_ >= kMaxScriptDepth) return append("Scripts are nested too deeply.");
    if (pending_.size() + lines.size() > kMaxPendingLines) return append("Too many lines are waiting.");
    // In front of what waits already: a script called by a script runs before the rest of its caller.
    for (auto it = lines.rbegin(); it != lines.rend(); ++it) pending_.push_front({std::move(*it), depth_ + 1, script});
}

void Session::chooseDwgVersion(const std::string& version) {
    const QString name = QString::fromStdString(version.starts_with('R') ? version : "R" + version);
    setProperty("kovaDwgVersion", name);
    document_.setProperty("DWG version", name);
}

void Session::process(const std::string& line) {
    // An empty line at the idle prompt is the last command line, typed again.
    std::string repeated;
    if (line.empty() && !isWaiting()) repeated = lastLine_;
    const std::string& text = repeated.empty() ? line : repeated;
    transcript_.push_back(currentPrompt() + " " + text);
    // What scripts and macros feed comes with the line that called them.
    if (!draining_) cmd::noteMacroLine(document_, text);

    if (text.size() >= 2 && text.front() == '\'') {
        const std::string name = text.substr(1);
        switch (processor_.runTransparent(name)) {
            case cmd::CommandProcessor::Start::Unknown:
                append("Unknown command: " + name);
                break;
            case cmd::CommandProcessor::Start::Refused:
                append("'" + name + ": cannot be used transparently.");
                break;
            case cmd::CommandProcessor::Start::Done:
                break;
        }
    } else if (isLispWaiting()) {
        report(lisp_->feed(text));
    } else if (processor_.isActive()) {
        processor_.input(text);
    } else {
        processIdle(text);
    }
    runAfterLine();
    if (!processor_.isActive()) retired_.clear();
    pumpEvents();
}

void Session::runAfterLine() {
    while (!afterLine_.empty()) {
        const std::function<void()> work = std::move(afterLine_.front());
        afterLine_.pop_front();
        work();
    }
}

void Session::processIdle(const std::string& line) {
    if (line.empty()) return;
    if (line.front() == '(' && lisp_) return evaluate(line);
    // The command may feed lines itself, so what it is remembered by stands before it starts.
    const std::string before = std::exchange(lastLine_, line);
    clearPromptOverride();
    if (processor_.startLine(line) != cmd::CommandProcessor::Start::Unknown) return;
    lastLine_ = before;
    if (!tryLisp(line)) append("Unknown command: " + line);
}

void Session::evaluate(const std::string& text) { report(lisp_->evaluate(text)); }

void Session::report(const LispEvaluator::Result& result) {
    append(result.error.empty() ? result.printed : "; error: " + result.error);
}

bool Session::tryLisp(const std::string& line) {
    if (!lisp_) return false;
    const auto isWordCharacter = [](char c) {
        return (c >= '0' && c <= '9') || (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || c == '_' || c == '-' ||
               static_cast<unsigned char>(c) >= 0x80;  // letters of other alphabets
    };
    if (!std::all_of(line.begin(), line.end(), isWordCharacter)) return false;
    const std::string symbol = "C:" + engine::upperCase(line);
    if (lisp_->evaluate("(if (boundp '" + symbol + ") \"yes\" \"no\")").printed != "\"yes\"") return false;
    evaluate("(" + symbol + ")");
    return true;
}

void Session::pumpEvents() {
    if (QCoreApplication::instance() == nullptr) return;
    QCoreApplication::sendPostedEvents();
    const std::int64_t now = nowNs();
    if (!windowSeen_ && now - lastPump_ < kPumpIntervalNs) return;
    windowSeen_ = false;
    lastPump_ = now;
    QCoreApplication::processEvents();
}

bool Session::eventFilter(QObject* watched, QEvent* event) {
    if (event->type() != QEvent::Show || !watched->isWidgetType()) return QObject::eventFilter(watched, event);
    auto* widget = static_cast<QWidget*>(watched);
    const Qt::WindowType type = widget->windowType();
    if (!widget->isWindow() || type == Qt::Popup || type == Qt::ToolTip) return QObject::eventFilter(watched, event);
    if (const auto* box = qobject_cast<const QMessageBox*>(widget)) {
        append(box->text().toStdString());
        append(box->informativeText().toStdString());
    } else {
        const QString title = widget->windowTitle();
        append("\"" + (title.isEmpty() ? std::string("a window") : title.toStdString()) +
               "\" needs its dialog, which kovacad-cli cannot show; cancelled.");
    }
    windowSeen_ = true;
    QTimer::singleShot(0, widget, [guard = QPointer<QWidget>(widget)] {
        if (guard) guard->close();
    });
    return QObject::eventFilter(watched, event);
}

void Session::replaceDrawing(std::unique_ptr<engine::Drawing> drawing) {
    // What waits for an answer was about the old drawing: its next line would be drawn into the new one. A command
    // that is replacing the drawing itself ends by itself.
    if (!processor_.isAtWork())
        cancel();
    else if (isLispWaiting())
        lisp_->cancel();
    // Nobody is asked: scripts and agents could not answer. So it is told.
    if (document_.isModified()) {
        const std::string& name = document_.drawing().fileName;
        append("Changes to " + (name.empty() ? std::string("the drawing") : name) + " were not saved.");
    }
    auto old = document_.setDrawing(std::move(drawing));
    // A command that waits may hold on to what it saw of it until it ends.
    if (processor_.isActive()) retired_.push_back(std::move(old));
}

std::string Session::open(const std::string& path) {
    auto drawing = std::make_unique<engine::Drawing>();
    OpenReport report;
    if (std::string error = openDrawing(path, *drawing, report); !error.empty()) return error;
    drawing->fileName = path;
    cmd::updateFieldsOnOpening(*drawing);
    for (const std::string& line : report.lines) append(line);
    replaceDrawing(std::move(drawing));
    return {};
}

std::string Session::newFromTemplate(const std::string& name) {
    auto drawing = std::make_unique<engine::Drawing>();
    std::vector<std::string> lines;
    if (std::string error = loadTemplate(name, *drawing, &lines); !error.empty()) return error;
    for (const std::string& line : lines) append(line);
    drawing->fileName.clear();
    replaceDrawing(std::move(drawing));
    return {};
}

void Session::newDrawing(const std::string& templateName) {
    if (templateName.empty()) {
        replaceDrawing(freshDrawing());
        return append("New drawing initialized.");
    }
    if (const std::string error = newFromTemplate(templateName); !error.empty()) {
        replaceDrawing(freshDrawing());
        return append(error + " Created a blank drawing.");
    }
    append("New drawing from template: " + templateName);
}

std::string Session::save(const std::string& path) {
    engine::Drawing& drawing = document_.drawing();
    const std::string target = path.empty() ? drawing.fileName : path;
    if (target.empty()) return "The drawing has no file name yet: give one.";
    cmd::updateFieldsAt(cmd::FieldMoment::Save, document_);
    if (std::string error = write(drawing, target); !error.empty()) return error;
    drawing.fileName = target;
    // What is being edited is not in the file yet.
    if (!document_.referenceEdit() && !document_.blockEdit()) document_.setModified(false);
    append("Saved: " + target);
    return {};
}

std::string Session::write(const engine::Drawing& drawing, const std::string& path) {
    const bool current = &drawing == &document_.drawing();
    std::error_code ignored;
    const bool own = !drawing.fileName.empty() && std::filesystem::equivalent(drawing.fileName, path, ignored);
    SaveReport report;
    const std::string version = property("kovaDwgVersion").toString().toStdString();
    // A failed save is none: the times stay.
    const auto times = document_.drawing().realVariables;
    if (current) engine::noteSaveTime(document_.drawing());
    {
        std::optional<doc::EditPause> pause;
        std::optional<cmd::ShownForSaving> shown;
        if (current) {
            pause.emplace(document_);
            shown.emplace(document_);
        }
        if (std::string error = saveDrawing(drawing, path, version, report); !error.empty()) {
            if (current) document_.drawing().realVariables = times;
            return error;
        }
        if (pause) append(pause->line());
        if (shown && shown->count() > 0)
            report.lines.push_back(std::to_string(shown->count()) +
                                   " hidden object(s) were saved as shown (OBJECTISOLATIONMODE 0).");
    }
    // Who writes a part of the drawing to a file that is there was asked before.
    if (current && report.replaced && !own)
        append("Replaced: " + path + (report.backup.empty() ? "" : ", kept as " + report.backup));
    for (const std::string& line : report.lines) append(line);
    noteDwgSave(document_, path, report);
    return {};
}

std::string Session::readDrawing(const std::string& path, engine::Drawing& drawing) {
    OpenReport report;
    std::string error = openDrawing(path, drawing, report);
    if (error.empty())
        for (const std::string& line : report.lines) append(line);
    return error;
}

std::string Session::readReference(const std::string& path, engine::Drawing& drawing) {
    OpenReport report;
    std::string error = openReference(path, document_.drawing().fileName, drawing, report);
    for (const std::string& line : report.lines) append(line);
    return error;
}

std::optional<cmd::PictureSize> Session::pictureSize(const std::string& path) {
    render::PictureFile file(path);
    QImageReader& reader = file.reader();
    const QSize size = reader.size();
    if (!size.isValid() || size.isEmpty()) return std::nullopt;
    cmd::PictureSize result;
    result.width = size.width();
    result.height = size.height();
    // Only reading tells the resolution; huge pictures are spared it.
    constexpr double kMostPixels = 4e7;
    if (double(size.width()) * size.height() <= kMostPixels) {
        const QImage picture = reader.read();
        if (!picture.isNull()) result.pixelsPerMeter = picture.dotsPerMeterX();
    }
    return result;
}

std::string Session::writeDrawing(const engine::Drawing& drawing, const std::string& path) {
    return write(drawing, path);
}

}  // namespace kova::headless
