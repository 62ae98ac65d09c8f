#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QTemporaryDir>
#include <filesystem>
#include <fstream>

#include "cli/options.hpp"
#include "cmd/script_lines.hpp"

namespace kova::cli {
namespace {

using ::testing::HasSubstr;
using ::testing::Not;
using ::testing::StartsWith;

struct Result {
    int status = -1;
    std::string out;
    std::string error;
};

Result run(const QStringList& arguments, const QString& workingDirectory = {}) {
    QProcess process;
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.remove("QT_QPA_PLATFORM");
    environment.remove("DISPLAY");
    process.setProcessEnvironment(environment);
    if (!workingDirectory.isEmpty()) process.setWorkingDirectory(workingDirectory);
    process.start(QStringLiteral(KOVA_PROGRAM), arguments);
    EXPECT_TRUE(process.waitForFinished(60000)) << process.errorString().toStdString();
    return {process.exitStatus() == QProcess::NormalExit ? process.exitCode() : -1,
            process.readAllStandardOutput().toStdString(), process.readAllStandardError().toStdString()};
}

struct CliTest : ::testing::Test {
    QTemporaryDir directory;
    QString path(const QString& name) { return directory.filePath(name); }
    QString write(const QString& name, const QByteArray& text) {
        QFile file(path(name));
        EXPECT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(text);
        return path(name);
    }
    std::string read(const QString& name) {
        QFile file(path(name));
        return file.open(QIODevice::ReadOnly) ? file.readAll().toStdString() : std::string("(missing)");
    }
};

// What a run changes for the program is gone with it: the settings file gives first values and is never written.
TEST_F(CliTest, SettingsAreReadAndNeverWritten) {
    ASSERT_TRUE(QDir(directory.path()).mkpath("config/KovaCAD"));
    const QByteArray text = "[SystemVariables]\nPICKBOX=7\nATTREQ=0\nFILEDIA=1\nOSMODE=no number\nISAVEBAK=yes\n";
    write("config/KovaCAD/kovacad-cli.ini", text);
    qputenv("XDG_CONFIG_HOME", path("config").toLocal8Bit());
    const Result first = run({"run", "-c", "(mapcar 'getvar '(\"PICKBOX\" \"ATTREQ\" \"FILEDIA\" \"ISAVEBAK\"))", "-c", "PICKBOX 9",
                              "-c", "ATTREQ", "-c", "1", "-c", "ALIASEDIT A QQ LINE", "-c", "WORKSPACE SA Mine"});
    EXPECT_THAT(first.out, HasSubstr("(7 0 0 1)"));
    EXPECT_THAT(first.out, HasSubstr("ATTREQ = 1 (for this process)"));
    EXPECT_THAT(first.out, HasSubstr("Alias \"QQ\" stands for LINE, for this process."));
    EXPECT_THAT(first.out, HasSubstr("Workspace \"Mine\" saved for this process."));
    const Result second = run({"run", "-c", "(mapcar 'getvar '(\"PICKBOX\" \"ATTREQ\"))", "-c", "QQ"});
    qunsetenv("XDG_CONFIG_HOME");
    EXPECT_THAT(second.out, HasSubstr("(7 0)"));
    EXPECT_THAT(second.out, HasSubstr("Unknown command: QQ"));
    EXPECT_EQ(read("config/KovaCAD/kovacad-cli.ini"), text.toStdString());
    EXPECT_EQ(QDir(path("config")).entryList(QDir::AllEntries | QDir::NoDotAndDotDot), QStringList("KovaCAD"));
}

TEST_F(CliTest, DrawsWithoutAFolderForItsLog) {
    qputenv("TMPDIR", path("missing").toLocal8Bit());
    const Result result = run({"run", "-c", "(+ 1 1)", "--save", path("a.kvcad")});
    qunsetenv("TMPDIR");
    EXPECT_EQ(result.status, 0) << result.error;
    EXPECT_THAT(result.out, HasSubstr("Saved: "));
    EXPECT_TRUE(QFile::exists(path("a.kvcad")));
}

// Whoever adds a variable of the environment tells it there.
TEST(CliDocument, NamesEveryVariableOfTheEnvironment) {
    const auto contentOf = [](const std::filesystem::path& path) {
        std::ifstream in(path);
        return std::string(std::istreambuf_iterator<char>(in), {});
    };
    const std::string document = contentOf(KOVA_SOURCE_DIR "/docs/cli.md");
    std::size_t count = 0;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(KOVA_SOURCE_DIR "/src")) {
        if (!entry.is_regular_file()) continue;
        const std::string source = contentOf(entry.path());
        for (const std::string call : {"getenv(\"", "environmentText(\"", "qEnvironmentVariable(\"",
                                       "qEnvironmentVariableIsEmpty(\"", "qEnvironmentVariableIntValue(\""})
            for (std::size_t at = 0; (at = source.find(call, at)) != std::string::npos; ++count) {
                at += call.size();
                EXPECT_THAT(document, HasSubstr("`" + source.substr(at, source.find('"', at) - at) + "`"));
            }
    }
    EXPECT_GT(count, 5u);
}

TEST_F(CliTest, HelpVersionAndUsageErrors) {
    const Result none = run({});
    EXPECT_EQ(none.status, 2);
    EXPECT_THAT(none.out, StartsWith("kovacad-cli 1.1.7 - KovaCAD without its window\n\n  kovacad-cli run [options] "));
    const std::string program = QFileInfo(QStringLiteral(KOVA_PROGRAM)).canonicalFilePath().toStdString();
    EXPECT_THAT(none.out, ::testing::EndsWith("\nAdd it to an MCP client, e.g. Claude Code:\n"
                                              "  claude mcp add --scope user kovacad -- \"" + program + "\" mcp\n"));
    for (const char* word : {"help", "--help", "-h"}) {
        const Result help = run({word});
        EXPECT_EQ(help.status, 0);
        EXPECT_EQ(help.out, none.out);
    }
    EXPECT_EQ(run({"--version"}).out, "kovacad-cli 1.1.7\n");
    EXPECT_EQ(run({"version", "ignored"}).status, 0);
    const Result unknown = run({"Run"});
    EXPECT_EQ(unknown.status, 2);
    EXPECT_EQ(unknown.out, "");
    EXPECT_EQ(unknown.error, "Unknown command 'Run'.\n\n" + none.out);
    for (const QStringList& bad : {QStringList{"help"}, {"-c"}, {"--save"}, {"--frob", "x"}}) {
        const Result result = run(QStringList{"run"} + bad);
        EXPECT_EQ(result.status, 2);
        EXPECT_EQ(result.out, "");
        EXPECT_EQ(result.error, "run: unexpected argument '" + bad.front().toStdString() + "'\n\n" + none.out);
    }
    EXPECT_THAT(run({"run", "--size", "15x100"}).error, StartsWith("run: unexpected argument '--size'\n"));
    const Result few = run({"render", "only.kvcad"});
    EXPECT_EQ(few.status, 2);
    EXPECT_EQ(few.error, none.out);
}

TEST(Options, Sizes) {
    const auto text = [](const std::string& s) {
        const auto size = parseSize(s);
        return size ? std::to_string(size->width) + " " + std::to_string(size->height) : "invalid";
    };
    EXPECT_EQ(text("800X600"), "800 600");
    EXPECT_EQ(text("+100x 50abc"), "100 50");
    EXPECT_EQ(text("100x200x300"), "100 200");
    EXPECT_EQ(text("16x8192"), "16 8192");
    for (const char* bad : {"15x100", "100x8193", "0x100x100", "x100", "100x", "100", "", "99999999999x100", "-20x20"})
        EXPECT_EQ(text(bad), "invalid") << bad;
}

TEST(Options, RepeatsReplaceAndLinesAccumulate) {
    std::string unexpected;
    const auto options = parseRunOptions({"-c", "--save", "--save", "a", "--save", "b", "-c", ";", "-c", ""}, unexpected);
    ASSERT_TRUE(options);
    EXPECT_EQ(options->save, "b");
    EXPECT_THAT(options->lines, ::testing::ElementsAre("--save", "", ""));
}

TEST(Options, ScriptText) {
    EXPECT_THAT(cmd::scriptLines("\xEF\xBB\xBFLINE\r\n  0,0  \r\n\r\n;note\n  ; note\nEND"),
                ::testing::ElementsAre("LINE", "0,0", "", "END"));
    EXPECT_THAT(cmd::scriptLines("A\n"), ::testing::ElementsAre("A"));
    EXPECT_THAT(cmd::scriptLines(""), ::testing::IsEmpty());
}

TEST_F(CliTest, RunFeedsScriptThenLinesAndSaves) {
    const QString script = write("a.scr", "LINE\n0,0\n10,0\n\n");
    const QString saved = path("out.kvcad");
    const Result result = run({"run", "-c", "LINE", "-c", "1,1", "-c", "2,2", "--script", script, "--save", saved});
    EXPECT_EQ(result.status, 0);
    EXPECT_EQ(result.out,
              "Command: LINE\nSpecify first point: 0,0\nSpecify next point or [Close/Undo]: 10,0\n"
              "Specify next point or [Close/Undo]: \nCommand: LINE\nSpecify first point: 1,1\n"
              "Specify next point or [Close/Undo]: 2,2\n"
              "(still waiting: Specify next point or [Close/Undo]: - cancelled)\nSaved: " + saved.toStdString() + "\n");
    EXPECT_EQ(result.error, "");
    EXPECT_THAT(read("out.kvcad"), StartsWith("{\n  \"format\": \"kovacad\",\n  \"version\": 2,\n"));
    const Result again = run({"run", "--open", saved, "-c", "ERASE", "-c", "ALL", "-c", "", "--save", path("empty.kvcad")});
    EXPECT_EQ(again.status, 0);
    EXPECT_THAT(read("empty.kvcad"), HasSubstr("\"entities\": []"));
}

TEST_F(CliTest, FailuresAreReportedInOrderAndLoseNothing) {
    EXPECT_EQ(run({"run", "--script", path("none.scr"), "--open", path("none.kvcad")}).error,
              "Cannot read " + path("none.scr").toStdString() + "\n");
    const Result open = run({"run", "--open", path("none.kvcad"), "-c", "LINE"});
    EXPECT_EQ(open.status, 1);
    EXPECT_EQ(open.out, "");
    EXPECT_EQ(open.error, "Cannot open file: " + path("none.kvcad").toStdString() + "\n");
    EXPECT_EQ(run({"run", "--template", "none.dwt"}).error, "Template not found: none.dwt\n");

    const Result save = run({"run", "-c", "FROB", "--save", path("no/such/x.kvcad")});
    EXPECT_EQ(save.status, 1);
    EXPECT_EQ(save.out, "Command: FROB\nUnknown command: FROB\n");
    EXPECT_THAT(save.error, StartsWith("Save failed: Cannot open file for writing: "));

    write("good.kvcad", "{\"format\": \"kovacad\"}");
    const Result picture = run({"render", path("good.kvcad"), path("no/such.png")});
    EXPECT_EQ(picture.status, 1);
    EXPECT_THAT(picture.error, HasSubstr("Could not write " + path("no/such.png").toStdString() + "\n"));
}

TEST_F(CliTest, ABrokenPythonIsReportedAndTheRunGoesOn) {
    qputenv("PYTHONHOME", "/nonexistent/python");
    const Result result = run({"run", "-c", "LINE", "-c", ""});
    qunsetenv("PYTHONHOME");
    EXPECT_EQ(result.status, 0);
    EXPECT_THAT(result.error, HasSubstr("Python is not available: "));
    EXPECT_THAT(result.out, StartsWith("Command: LINE\n"));
}

TEST_F(CliTest, FileDialogsAreOff) {
    const Result result = run({"run", "-c", "FILEDIA", "-c", ""});
    EXPECT_THAT(result.out, HasSubstr("<0>"));
}

TEST_F(CliTest, TextFilesThatAreNoUtf8KeepTheirLetters) {
    write("old.scr", "-LAYER M M\xF6" "bel\r\n\r\n(load \"old.lsp\")\r\n");
    write("old.lsp", "(defun c:T\xFCR () (princ \"T\xFCr\"))");
    write("old.lin", "*D\xC4MM,D\xE4mmung\nA,1,-1\n");
    write("old.txt", "Stra\xDF" "e\r\nGr\xF6\xDF" "e");
    write("mark.txt", QByteArray("\xEF\xBB\xBFW\xC3\xA4nde"));
    const Result western = run({"run", "--script", "old.scr", "-c", "T\u00FCr", "-c", "-LINETYPE", "-c", "L", "-c", "D\u00E4mm",
                                "-c", "old.lin", "-c", ";", "-c", "(setq f (open \"old.txt\" \"r\"))", "-c", "(read-line f)",
                                "-c", "(read-line f)", "-c", "(read-line f)", "-c", "(read-line (open \"mark.txt\" \"r\"))",
                                "-c", "(list (cdr (assoc 2 (tblsearch \"LAYER\" \"M\u00D6BEL\"))) (cdr (assoc 3 (tblsearch \"LTYPE\" \"D\u00E4mm\"))))"},
                               directory.path());
    EXPECT_THAT(western.out, HasSubstr("\nTür"));
    EXPECT_THAT(western.out, HasSubstr("\n\"Straße\"\n"));
    EXPECT_THAT(western.out, HasSubstr("\n\"Größe\"\n"));
    EXPECT_THAT(western.out, HasSubstr("\nnil\n"));
    EXPECT_THAT(western.out, HasSubstr("\n\"Wände\"\n"));
    EXPECT_THAT(western.out, HasSubstr("\n(\"Möbel\" \"Dämmung\")\n"));
    EXPECT_THAT(western.out, Not(HasSubstr("\uFFFD")));

    // The drawing's own code page, from its file or set; and UTF-16.
    write("east.dxf", "  0\nSECTION\n  2\nHEADER\n  9\n$ACADVER\n  1\nAC1015\n  9\n$DWGCODEPAGE\n  3\nANSI_1251\n  0\nENDSEC\n  0\nEOF\n");
    write("east.scr", "-LAYER M \xCC\xEE\xF1\xF2\n\n");
    const QStringList asked{"-c", "(cdr (assoc 2 (tblsearch \"LAYER\" \"\u043C\u043E\u0441\u0442\")))", "-c", "DWGCODEPAGE", "-c", ";"};
    const Result east = run(QStringList{"run", "--open", "east.dxf", "--script", "east.scr", "--save", "east.dwg"} + asked, directory.path());
    EXPECT_THAT(east.out, HasSubstr("\n\"Мост\"\n"));
    EXPECT_THAT(east.out, HasSubstr("<ANSI_1251>"));
    const Result again = run(QStringList{"run", "--open", "east.dwg"} + asked, directory.path());
    EXPECT_THAT(again.out, HasSubstr("<ANSI_1251>"));
    const Result set = run(QStringList{"run", "-c", "DWGCODEPAGE", "-c", "klingon", "-c", "cp1251", "-c", "SCRIPT", "-c", "east.scr"} + asked,
                           directory.path());
    EXPECT_THAT(set.out, HasSubstr("Cannot set DWGCODEPAGE to that value."));
    EXPECT_THAT(set.out, HasSubstr("\n\"Мост\"\n"));
    write("wide.scr", QByteArray("\xFF\xFE" "-\0L\0A\0Y\0E\0R\0 \0M\0 \0\x1C\x04>\x04\x41\x04\x42\x04\n\0\n\0", 32));
    EXPECT_THAT(run(QStringList{"run", "--script", "wide.scr"} + asked, directory.path()).out, HasSubstr("\n\"Мост\"\n"));
}

/// A path is bytes: one that is no UTF-8 names the file that it names, and no other.
TEST_F(CliTest, PathsAreBytes) {
    const std::string folder = directory.path().toStdString();
    const std::string program = "QT_QPA_PLATFORM=offscreen '" KOVA_PROGRAM "' ";
    // The shell makes the name, since Qt's own processes take Unicode only.
    const auto shell = [&](const std::string& line) {
        return std::system(("cd '" + folder + "' && N=$(printf 'M\\366bel') && { " + line + "; } > out.txt 2>&1").c_str());
    };
    EXPECT_EQ(shell(program + "run -c LINE -c 0,0 -c 5,5 -c '' --save \"$N.dxf\" --png \"$N.png\""), 0);
    EXPECT_EQ(shell("printf 'CIRCLE\\n1,1\\n2\\n' > \"$N.scr\" && " + program +
                    "run --open \"$N.dxf\" --script \"$N.scr\" -c SAVEAS -c \"$N.dwg\" -c -IMAGE -c \"$N.png\" -c 0,0 -c 1 -c 0 --save \"$N.kvcad\""), 0);
    EXPECT_EQ(shell(program + "render \"$N.kvcad\" \"$N-2.png\""), 0) << read("out.txt");
    std::vector<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(folder)) names.push_back(entry.path().filename().string());
    std::erase(names, "out.txt");
    const std::string name = "M\xF6" "bel";
    EXPECT_THAT(names, ::testing::UnorderedElementsAre(name + ".dxf", name + ".png", name + ".scr", name + ".dwg", name + ".kvcad",
                                                       name + "-2.png"));
    EXPECT_EQ(shell(program + "run --open \"$N.dwg\" -c '(sslength (ssget \"X\"))'"), 0);
    EXPECT_THAT(read("out.txt"), HasSubstr("\n2\n"));
    // Python has such paths with their odd bytes escaped, and gives them back.
    write("copy.py", "import os, kova\nd = kova.doc\n[n] = [n for n in os.listdir('.') if n.endswith('.dwg')]\n"
                     "d.open(n)\nd.save(os.path.abspath('copy-' + n))\nprint('at', os.path.basename(d.current().path) == 'copy-' + n)\n");
    EXPECT_EQ(shell("cp copy.py \"$N.py\" && " + program + "run -c PYSCRIPT -c \"$N.py\" && test -f \"copy-$N.dwg\""), 0);
    EXPECT_THAT(read("out.txt"), HasSubstr("at True"));
    std::filesystem::remove_all(folder);  // Qt cannot name these files
}

}  // namespace
}  // namespace kova::cli
