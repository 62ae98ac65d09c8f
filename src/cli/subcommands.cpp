#include "cli/subcommands.hpp"

#include <fcntl.h>
#include <unistd.h>

#include <QBuffer>
#include <QImage>
#include <QSettings>

#include "cli/mcp_server.hpp"
#include "cli/options.hpp"
#include "cli/output.hpp"
#include "cli/usage.hpp"
#include "cmd/script_lines.hpp"
#include "io/text_file.hpp"
#include "engine/model/sysvar.hpp"
#include "headless/session.hpp"
#include "io/file_content.hpp"
#include "io/save.hpp"
#include "script/python/interpreter.hpp"
#include "script/python/runner.hpp"
#include "strings/numbers.hpp"

namespace kova::cli {

namespace {

/// Reads the program-wide variables from the user's settings, and turns file dialogs off.
void applySettings() {
    const QSettings settings(QSettings::IniFormat, QSettings::UserScope, QStringLiteral("KovaCAD"),
                             QStringLiteral("kovacad-cli"));
    for (const engine::SysVarDef& def : engine::sysVarTable()) {
        if ((def.saved & engine::saved::Profile) == 0 || def.readOnly) continue;
        const QVariant value =
            settings.value(QStringLiteral("SystemVariables/") +
                           QString::fromUtf8(def.name.data(), static_cast<qsizetype>(def.name.size())));
        if (!value.isValid()) continue;
        switch (def.type) {
            // What is no number of its kind is passed over, as one out of range is.
            case engine::SysVarType::Integer:
                if (const auto n = strings::parseInteger(value.toString().toStdString()))
                    engine::setProfileVariable(def.name, static_cast<std::int32_t>(*n));
                break;
            case engine::SysVarType::Real:
                if (const auto r = strings::parseReal(value.toString().toStdString())) engine::setProfileVariable(def.name, *r);
                break;
            case engine::SysVarType::String:
                engine::setProfileVariable(def.name, value.toString().toStdString());
                break;
            case engine::SysVarType::Point:
                break;
        }
    }
    engine::setProfileVariable("FILEDIA", 0);
}

bool writePng(const QImage& image, const std::string& path) {
    QBuffer png;
    if (image.isNull() || !png.open(QIODevice::WriteOnly) || !image.save(&png, "PNG")) return false;
    const QByteArray& bytes = png.data();
    return io::saveFile(path, {bytes.constData(), static_cast<std::size_t>(bytes.size())}).empty();
}

/// Finds out whether Python can run, or says why not; the program goes on without it. It starts when it is first used.
bool checkPython(script::python::Interpreter& interpreter) {
    const std::string reason = interpreter.check();
    if (!reason.empty()) printError("Python is not available: " + reason);
    return reason.empty();
}

/// Python for the server's tool.
class ServerPython final : public PythonRunner {
public:
    explicit ServerPython(script::python::Runner& runner) : runner_(runner) {}
    Result run(const std::string& code) override {
        script::python::Runner::Result done = runner_.run(code);
        return {std::move(done.output), std::move(done.error), done.failed};
    }

private:
    script::python::Runner& runner_;
};

void printLines(const std::vector<std::string>& lines) {
    for (const std::string& line : lines) printOut(line);
}

}  // namespace

int runCommand(const std::vector<std::string>& arguments) {
    std::string unexpected;
    const auto options = parseRunOptions(arguments, unexpected);
    if (!options) {
        printError("run: unexpected argument '" + unexpected + "'\n\n" + usageText());
        return kExitUsage;
    }
    io::FileContent script;
    if (options->script && !script.open(*options->script).empty()) {
        printError("Cannot read " + *options->script);
        return kExitFailed;
    }

    script::python::Interpreter python;
    const bool withPython = checkPython(python);
    headless::Session session;
    std::optional<script::python::Runner> runner;
    if (withPython) runner.emplace(python, session);
    std::string error;
    if (options->open)
        error = session.open(*options->open);
    else if (options->templateName)
        error = session.newFromTemplate(*options->templateName);
    if (!error.empty()) {
        printError(error);
        return kExitFailed;
    }
    printLines(session.takeOutput());
    // An old script is in the code page of the drawing that it works on.
    std::vector<std::string> lines;
    if (options->script)
        lines = cmd::scriptLines(cmd::decodedText(script.view(), cmd::codePageOf(session.document().drawing())));
    lines.insert(lines.end(), options->lines.begin(), options->lines.end());
    for (const std::string& line : lines) printLines(session.feed(line));
    if (session.isWaiting()) {
        printOut("(still waiting: " + session.currentPrompt() + " - cancelled)");
        session.cancel();
        session.takeOutput();
    }
    int status = kExitOk;
    if (options->save) {
        error = session.save(*options->save);
        printLines(session.takeOutput());
        if (!error.empty()) {
            printError("Save failed: " + error);
            status = kExitFailed;
        }
    }
    if (options->png && !writePng(session.renderImage(options->size.width, options->size.height), *options->png)) {
        printError("Could not write " + *options->png);
        status = kExitFailed;
    }
    return status;
}

int renderCommand(const std::vector<std::string>& arguments) {
    if (arguments.size() < 2) {
        printError(usageText());
        return kExitUsage;
    }
    const std::string& file = arguments[0];
    const std::string& out = arguments[1];
    ImageSize size;
    if (arguments.size() > 3 && arguments[2] == "--size") size = parseSize(arguments[3]).value_or(size);
    script::python::Interpreter python;
    checkPython(python);
    headless::Session session;
    if (const std::string error = session.open(file); !error.empty()) {
        printError(error);
        return kExitFailed;
    }
    if (!writePng(session.renderImage(size.width, size.height), out)) {
        printError("Could not write " + out);
        return kExitFailed;
    }
    printOut("Rendered " + file + " to " + out);
    return kExitOk;
}

int mcpCommand(const std::vector<std::string>&) {
    // The protocol keeps the real standard output to itself; whatever else prints goes to standard error.
    const int out = ::dup(STDOUT_FILENO);
    ::dup2(STDERR_FILENO, STDOUT_FILENO);
    // Nor does anything else read its input, a program that Python starts for instance.
    const int in = ::dup(STDIN_FILENO);
    if (const int nothing = ::open("/dev/null", O_RDONLY | O_CLOEXEC); nothing >= 0) {
        ::dup2(nothing, STDIN_FILENO);
        ::close(nothing);
    }
    ::fcntl(out, F_SETFD, FD_CLOEXEC);
    ::fcntl(in, F_SETFD, FD_CLOEXEC);
    script::python::Interpreter python;
    const bool withPython = checkPython(python);
    headless::Session session;
    session.takeOutput();
    std::optional<script::python::Runner> runner;
    if (withPython) runner.emplace(python, session);
    std::optional<ServerPython> serverPython;
    if (runner) serverPython.emplace(*runner);
    McpTools tools(session, serverPython ? &*serverPython : nullptr);
    McpServer server(tools);
    printError("kovacad-cli 1.1.7 MCP server ready.");
    return serveMcp(server, in, out);
}

int dispatch(const std::vector<std::string>& arguments) {
    if (arguments.empty()) {
        printOut(usageText());
        return kExitUsage;
    }
    const std::string& word = arguments.front();
    if (word == "help" || word == "--help" || word == "-h") {
        printOut(usageText());
        return kExitOk;
    }
    if (word == "--version" || word == "version") {
        printOut(std::string("kovacad-cli ") + kVersion);
        return kExitOk;
    }
    const std::vector<std::string> rest(arguments.begin() + 1, arguments.end());
    if (word != "run" && word != "render" && word != "mcp") {
        printError("Unknown command '" + word + "'.\n\n" + usageText());
        return kExitUsage;
    }
    applySettings();
    if (word == "run") return runCommand(rest);
    if (word == "render") return renderCommand(rest);
    return mcpCommand(rest);
}

}  // namespace kova::cli
