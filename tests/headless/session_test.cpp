#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QDialog>
#include <QMessageBox>
#include <QTemporaryDir>
#include <QTimer>
#include <filesystem>
#include <fstream>

#include "doc/reference_edit.hpp"
#include "engine/entities/line.hpp"
#include "engine/entities/text.hpp"
#include "headless/session.hpp"
#include "headless/templates.hpp"
#include "io/save.hpp"
#include "io/native/native_file.hpp"

namespace kova::headless {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

struct SessionTest : ::testing::Test {
    Session session;
    QTemporaryDir directory;

    std::string path(const std::string& name) { return directory.filePath(QString::fromStdString(name)).toStdString(); }
    void write(const std::string& name, const std::string& text) { std::ofstream(path(name)) << text; }
    std::size_t entities() { return session.document().drawing().modelSpace().size(); }
    std::vector<std::string> feedAll(const std::vector<std::string>& lines) {
        std::vector<std::string> out;
        for (const std::string& line : lines)
            for (std::string& text : session.feed(line)) out.push_back(std::move(text));
        return out;
    }
};

/// A LISP engine that knows one command and one error.
struct FakeLisp : LispEvaluator {
    std::vector<std::string> seen;
    Result evaluate(const std::string& text) override {
        seen.push_back(text);
        if (text == "(bad)") return {"", "no function definition: BAD"};
        if (text.starts_with("(if (boundp 'C:STAIRS)")) return {"\"yes\"", ""};
        if (text.starts_with("(if (boundp")) return {"\"no\"", ""};
        return {"42", ""};
    }
};

TEST_F(SessionTest, EchoesPromptAndLineForEveryAnswer) {
    EXPECT_THAT(feedAll({"LINE", "0,0", "100,0", ""}),
                ElementsAre("Command: LINE", "Specify first point: 0,0", "Specify next point or [Close/Undo]: 100,0",
                            "Specify next point or [Close/Undo]: "));
    EXPECT_FALSE(session.isWaiting());
    EXPECT_EQ(session.currentPrompt(), "Command:");
    EXPECT_EQ(entities(), 1u);
}

TEST_F(SessionTest, InlineAnswersFollowTheCommandOnItsLine) {
    EXPECT_THAT(session.feed("line 0,0 @10,0 @0,10"), ElementsAre("Command: line 0,0 @10,0 @0,10"));
    EXPECT_TRUE(session.isWaiting());
    EXPECT_EQ(entities(), 2u);
    // What is left when the command has ended is a line of its own.
    EXPECT_THAT(session.feed("c"), ElementsAre("Specify next point or [Close/Undo]: c"));
    session.feed("line 0,0 1,1 1,2 c LINE 5,5 6,6");
    EXPECT_TRUE(session.isWaiting());
    EXPECT_EQ(entities(), 3u + 3u + 1u);
}

TEST_F(SessionTest, EmptyLineRepeatsTheLastCommandWithOneEcho) {
    EXPECT_THAT(session.feed(""), ElementsAre("Command: "));
    feedAll({"_Line", ""});
    EXPECT_THAT(session.feed(""), ElementsAre("Command: _Line"));
    session.feed("");
    // Words that are no command are not remembered.
    session.feed("nonsense");
    EXPECT_THAT(session.feed(""), ElementsAre("Command: _Line"));
}

TEST_F(SessionTest, UnknownWordsAndTransparentCommands) {
    EXPECT_THAT(session.feed("FROB 1 2"), ElementsAre("Command: FROB 1 2", "Unknown command: FROB 1 2"));
    EXPECT_THAT(session.feed("'frob"), ElementsAre("Command: 'frob", "Unknown command: frob"));
    EXPECT_THAT(session.feed("'"), ElementsAre("Command: '", "Unknown command: '"));
    feedAll({"LINE", "0,0", "1,0"});
    EXPECT_THAT(session.feed("'_line"), ElementsAre("Specify next point or [Close/Undo]: '_line",
                                                    "'_line: cannot be used transparently."));
    EXPECT_THAT(session.feed("'UNDO"), ElementsAre("Specify next point or [Close/Undo]: 'UNDO", "Undone: LINE"));
    EXPECT_TRUE(session.isWaiting());
    EXPECT_EQ(entities(), 0u);
    session.feed("5,5");
    EXPECT_EQ(entities(), 1u);
}

TEST_F(SessionTest, CancelEndsTheCommandAndSaysSo) {
    session.cancel();
    EXPECT_THAT(session.takeOutput(), IsEmpty());
    session.feed("LINE");
    session.setPromptOverride("Pick something:");
    EXPECT_EQ(session.currentPrompt(), "Pick something:");
    session.cancel();
    EXPECT_THAT(session.takeOutput(), ElementsAre("*Cancel*"));
    EXPECT_EQ(session.currentPrompt(), "Command:");
    session.feed("LINE");
    EXPECT_EQ(session.currentPrompt(), "Specify first point:");
}

TEST_F(SessionTest, LispLinesGoToTheEngineOnlyWhenIdle) {
    session.setLisp(nullptr);
    EXPECT_THAT(session.feed("(+ 1 2)"), ElementsAre("Command: (+ 1 2)", "Unknown command: (+ 1 2)"));
    auto owned = std::make_unique<FakeLisp>();
    FakeLisp& lisp = *owned;
    session.setLisp(std::move(owned));
    EXPECT_THAT(session.feed("(+ 1 2)"), ElementsAre("Command: (+ 1 2)", "42"));
    EXPECT_THAT(session.feed("(bad)"), ElementsAre("Command: (bad)", "; error: no function definition: BAD"));
    EXPECT_THAT(session.feed("stairs"), ElementsAre("Command: stairs", "42"));
    EXPECT_EQ(lisp.seen.back(), "(C:STAIRS)");
    const std::size_t asked = lisp.seen.size();
    session.feed("no.such");
    EXPECT_EQ(lisp.seen.size(), asked);
    feedAll({"LINE", "(+ 1 2)"});
    EXPECT_EQ(lisp.seen.size(), asked);
}

TEST_F(SessionTest, ScriptsRunInPlaceAndSelfCallsEnd) {
    write("inner.scr", "LINE\n3,0\n4,0\n\n");
    write("outer.scr", "LINE\n0,0\n1,0\n\n; a comment\nSCRIPT " + path("inner.scr") + "\nLINE\n5,0\n6,0\n\n");
    session.feed("SCRIPT " + path("outer.scr"));
    ASSERT_EQ(entities(), 3u);
    std::vector<double> starts;
    for (const engine::Entity& e : session.document().drawing().modelSpace())
        starts.push_back(static_cast<const engine::LineEntity&>(e).start.x);
    EXPECT_THAT(starts, ElementsAre(0.0, 3.0, 5.0));

    write("self.scr", "SCRIPT " + path("self.scr") + "\n");
    const auto lines = session.feed("SCRIPT " + path("self.scr"));
    EXPECT_THAT(lines, ::testing::Contains("Scripts are nested too deeply."));
    EXPECT_FALSE(session.isWaiting());
}

TEST_F(SessionTest, VariablesTellWhatRuns) {
    const auto value = [&](const std::string& text) { return session.feed(text).back(); };
    EXPECT_EQ(value("(list (getvar \"CMDNAMES\") (getvar \"CMDACTIVE\"))"), "(\"\" 0)");
    EXPECT_EQ(value("(progn (command \"LINE\" '(0 0)) (list (getvar \"CMDNAMES\") (getvar \"CMDACTIVE\")))"),
              "(\"LINE\" 1)");
    session.cancel();
    // The loop that every routine knows ends when the command does.
    EXPECT_EQ(value("(progn (command \"CIRCLE\" '(0 0)) (setq n 0)"
                    " (while (> (getvar \"CMDACTIVE\") 0) (setq n (1+ n)) (command \"5\")) n)"),
              "1");
    write("a.scr", "(setq in-script (getvar \"CMDACTIVE\"))\n");
    feedAll({"SCRIPT", path("a.scr")});
    EXPECT_EQ(value("(list in-script (getvar \"CMDACTIVE\"))"), "(4 0)");
    feedAll({"UNDO M", "CIRCLE", "0,0", "1", "UNDO M"});
    EXPECT_EQ(value("(getvar \"UNDOMARKS\")"), "2");
}

TEST_F(SessionTest, DbmodTellsWhatWasChangedSinceTheLastSave) {
    const auto changes = [&] { return engine::sysVarInt(session.document().drawing(), "DBMOD", -1); };
    const auto after = [&](const std::vector<std::string>& lines) {
        session.document().setModified(false);
        feedAll(lines);
        return changes();
    };
    EXPECT_EQ(changes(), 0);
    EXPECT_EQ(after({"LINE", "0,0", "5,5", ""}), 1);
    EXPECT_EQ(after({"U"}), 1);
    EXPECT_EQ(after({"UNDO M", "LIST", ""}), 0);
    EXPECT_EQ(after({"ZOOM", "C", "50,50", "20"}), 16);
    EXPECT_EQ(after({"LTSCALE", "2"}), 4);
    EXPECT_EQ(after({"FILEDIA", "0"}), 0);
    EXPECT_EQ(after({"-LAYER", "N", "Walls", ""}), 3);
    EXPECT_EQ(after({"ZOOM", "C", "0,0", "30", "LUNITS", "4", "CIRCLE", "0,0", "5"}), 21);
    EXPECT_EQ(session.save(path("saved.kvcad")), "");
    EXPECT_EQ(changes(), 0);
    feedAll({"POINT", "1,1"});
    EXPECT_EQ(session.open(path("saved.kvcad")), "");
    EXPECT_EQ(changes(), 0);
}

TEST_F(SessionTest, AReplacedDrawingEndsWhatWaits) {
    feedAll({"LINE", "0,0", "5,5"});
    EXPECT_EQ(session.save(path("a.kvcad")), "");
    EXPECT_NE(session.open(path("missing.kvcad")), "");
    EXPECT_TRUE(session.isWaiting());  // the drawing is still there
    EXPECT_EQ(session.open(path("a.kvcad")), "");
    EXPECT_FALSE(session.isWaiting());
    session.feed("9,9");
    EXPECT_EQ(entities(), 1u);
    feedAll({"CIRCLE", "0,0"});
    session.newDrawing();
    EXPECT_FALSE(session.isWaiting());
    feedAll({"LINE", "0,0", "'NEW"});
    EXPECT_FALSE(session.isWaiting());
    EXPECT_EQ(session.newFromTemplate("no such template").substr(0, 8), "Template");
    feedAll({"OPEN", path("a.kvcad")});
    EXPECT_EQ(entities(), 1u);
    EXPECT_FALSE(session.isWaiting());
}

TEST_F(SessionTest, DialogsAreRefusedAndTheirWindowsClosed) {
    QDialog titled;
    titled.setWindowTitle("Layer Properties");
    titled.show();
    QDialog untitled;
    untitled.show();
    QMessageBox box(QMessageBox::Warning, "t", "The text.");
    box.setInformativeText("More.");
    box.show();
    const auto lines = session.feed("'frob");
    EXPECT_THAT(lines, ::testing::IsSupersetOf(
                           {std::string("\"Layer Properties\" needs its dialog, which kovacad-cli cannot show; cancelled."),
                            std::string("\"a window\" needs its dialog, which kovacad-cli cannot show; cancelled."),
                            std::string("The text."), std::string("More.")}));
    EXPECT_FALSE(titled.isVisible());
    EXPECT_FALSE(box.isVisible());
}

TEST_F(SessionTest, NewDrawingsAndTemplates) {
    session.feed("LINE 0,0 1,1");
    session.newDrawing();
    EXPECT_THAT(session.takeOutput(), ::testing::Contains("New drawing initialized."));
    EXPECT_EQ(entities(), 0u);
    EXPECT_EQ(engine::sysVarInt(session.document().drawing(), "INSUNITS"), 4);

    EXPECT_EQ(session.newFromTemplate("imperial"), "");
    EXPECT_EQ(engine::sysVarInt(session.document().drawing(), "INSUNITS"), 1);
    EXPECT_DOUBLE_EQ(engine::sysVarReal(session.document().drawing(), "DIMTXT"), 0.18);
    EXPECT_DOUBLE_EQ(session.document().drawing().layouts().front()->pageSetup.sheet().width(), 11.0);
    EXPECT_EQ(session.newFromTemplate("metric-a4"), "");
    EXPECT_EQ(session.document().drawing().layouts().front()->pageSetup.paperSizeName, "ISO A4");
    EXPECT_EQ(engine::sysVarInt(session.document().drawing(), "MEASUREMENT"), 1);

    session.takeOutput();
    EXPECT_EQ(session.newFromTemplate("nowhere.dwt"), "Template not found: nowhere.dwt");
    session.newDrawing("nowhere.dwt");
    EXPECT_THAT(session.takeOutput(), ElementsAre("Template not found: nowhere.dwt Created a blank drawing."));
    write("broken.dwt", "{\"format\": ");
    EXPECT_THAT(session.newFromTemplate(path("broken.dwt")), ::testing::StartsWith("Could not load the template: JSON parse error: "));
}

// The templates that are shipped as files are what the program makes by itself where no file is found.
TEST_F(SessionTest, ShippedTemplatesAreTheBuiltInOnes) {
    for (const auto& [name, file] : {std::pair{"imperial", "acad.dwt"}, {"metric", "acadiso.dwt"}, {"metric-a4", "acadiso-a4.dwt"}}) {
        engine::Drawing shipped;
        ASSERT_EQ(loadTemplate(std::string(KOVA_SOURCE_DIR "/templates/") + file, shipped), "");
        engine::Drawing own;
        ASSERT_EQ(loadTemplate(name, own), "");
        // Both were made just now, not when the template was.
        EXPECT_NEAR(shipped.realVariables["TDCREATE"], own.realVariables["TDCREATE"], 1e-3) << name;
        for (const char* date : {"TDCREATE", "TDUCREATE", "TDUPDATE", "TDUUPDATE"}) {
            shipped.realVariables.erase(date);
            own.realVariables.erase(date);
        }
        EXPECT_TRUE(io::native::nativeText(shipped) == io::native::nativeText(own)) << name;
    }
}

// The times of a drawing are its own: opening keeps them, saving goes on from them.
TEST_F(SessionTest, TimesGoOnFromTheFile) {
    engine::Drawing& drawing = session.document().drawing();
    drawing.realVariables["TDCREATE"] = 2451544.5;
    drawing.realVariables["TDUPDATE"] = 2451545.5;
    drawing.realVariables["TDEDITED"] = 3.0;
    for (const char* name : {"t.kvcad", "t.dxf", "t.dwg"}) {
        ASSERT_EQ(session.save(path(name)), "") << name;
        const double updated = engine::sysVarReal(session.document().drawing(), "TDUPDATE");
        EXPECT_GT(updated, 2451600.0) << name;
        ASSERT_EQ(session.open(path(name)), "") << name;
        const engine::Drawing& opened = session.document().drawing();
        EXPECT_NEAR(engine::sysVarReal(opened, "TDCREATE"), 2451544.5, 1e-7) << name;
        EXPECT_NEAR(engine::sysVarReal(opened, "TDUPDATE"), updated, 1e-7) << name;
        EXPECT_NEAR(engine::sysVarReal(opened, "TDINDWG"), 3.0, 0.01) << name;
    }
    // A save that fails is none.
    const auto times = session.document().drawing().realVariables;
    EXPECT_NE(session.save(path("no/such/folder/t.dxf")), "");
    EXPECT_EQ(session.document().drawing().realVariables, times);
}

TEST_F(SessionTest, SavingAndOpening) {
    EXPECT_EQ(session.save(""), "The drawing has no file name yet: give one.");
    session.feed("LINE 0,0 1,1");
    session.cancel();
    session.takeOutput();
    const std::string file = path("a.kvcad");
    EXPECT_EQ(session.save(file), "");
    EXPECT_THAT(session.takeOutput(), ElementsAre("Saved: " + file));
    EXPECT_FALSE(session.document().isModified());
    session.feed("LINE 5,5 6,6");
    session.cancel();
    EXPECT_TRUE(session.document().isModified());
    EXPECT_EQ(session.save(""), "");
    EXPECT_TRUE(std::ifstream(path("a.bak")).good());

    // A failed open leaves the open drawing as it was, whatever the file holds.
    write("broken.kvcad", "[[[");
    write("other.bak", "{\"format\": \"something\"}");
    EXPECT_THAT(session.open(path("broken.kvcad")), ::testing::StartsWith("JSON parse error: "));
    EXPECT_EQ(session.open(path("other.bak")), "Not an KovaCAD file");
    EXPECT_EQ(session.open(path("missing.kvcad")), "Cannot open file: " + path("missing.kvcad"));
    EXPECT_EQ(entities(), 2u);

    session.newDrawing();
    EXPECT_EQ(session.open(file), "");
    EXPECT_EQ(entities(), 2u);
    EXPECT_FALSE(session.document().isModified());
    EXPECT_FALSE(session.document().history().canUndo());
    EXPECT_THAT(session.save("/no/such/folder/x.kvcad"), ::testing::StartsWith("Cannot open file for writing: "));
    EXPECT_EQ(session.document().drawing().fileName, file);
}

TEST_F(SessionTest, WhatIsDiscardedIsTold) {
    const auto told = [&](const std::string& line) { return session.feed(line); };
    feedAll({"LINE 0,0 1,1", ""});
    EXPECT_THAT(told("NEW"), ElementsAre("Command: NEW", "Changes to the drawing were not saved.",
                                         "New drawing initialized."));
    EXPECT_THAT(told("NEW"), ElementsAre("Command: NEW", "New drawing initialized."));
    const std::string file = path("a.kvcad");
    session.feed("SAVEAS " + file);
    feedAll({"LINE 0,0 1,1", ""});
    EXPECT_THAT(told("OPEN " + file),
                ElementsAre("Command: OPEN " + file, "Changes to " + file + " were not saved.", "Opened: " + file));
    EXPECT_THAT(told("OPEN " + file), ElementsAre("Command: OPEN " + file, "Opened: " + file));
    // A drawing that cannot be opened discards nothing.
    feedAll({"LINE 0,0 1,1", ""});
    session.feed("OPEN " + path("missing.kvcad"));
    EXPECT_TRUE(session.document().isModified());
    EXPECT_THAT(told("CLOSE"), ElementsAre("Command: CLOSE", "Changes to " + file + " were not saved.",
                                           "New drawing initialized."));
}

TEST_F(SessionTest, WhatIsReplacedIsTold) {
    const std::string file = path("a.kvcad"), other = path("b.kvcad");
    feedAll({"SAVEAS " + file, "SAVEAS " + other});
    EXPECT_THAT(session.feed("SAVEAS " + file),
                ElementsAre("Command: SAVEAS " + file, "Replaced: " + file + ", kept as " + path("a.bak"),
                            "Saved: " + file));
    // Its own file is what a drawing is saved to.
    EXPECT_THAT(session.feed("SAVEAS " + file), ElementsAre("Command: SAVEAS " + file, "Saved: " + file));
    EXPECT_THAT(session.feed("SAVE"), ElementsAre("Command: SAVE", "Saved: " + file));
    session.feed("ISAVEBAK 0");
    EXPECT_THAT(session.feed("EXPORT " + other),
                ElementsAre("Command: EXPORT " + other, "Replaced: " + other, "Saved: " + other));
    session.feed("ISAVEBAK 1");
}

TEST_F(SessionTest, FormatsThatAreNotWrittenAreTold) {
    const std::string file = path("a.dwg");
    const std::string written = " is not written. The versions written are 2010, 2013 and 2018.";
    for (const char* version : {"2000", "2004", "2007", "R14", "LT2000", "r12", "R2007"})
        EXPECT_THAT(session.feed(std::string("SAVEAS ") + version + " " + file),
                    ElementsAre(std::string("Command: SAVEAS ") + version + " " + file,
                                "DWG " + engine::upperCase(version) + written,
                                "Not saved: no version was chosen in place of " + engine::upperCase(version) + "."));
    EXPECT_FALSE(std::ifstream(file).good());
    feedAll({"SAVEAS", "2004"});
    EXPECT_TRUE(session.isWaiting());
    EXPECT_THAT(feedAll({"2010", file}), ::testing::Contains("Saved: " + file));
    std::string tag(6, ' ');
    std::ifstream(file).read(tag.data(), 6);
    EXPECT_EQ(tag, "AC1024");
    EXPECT_THAT(feedAll({"SAVEAS 2013 " + path("b.dxf")}),
                ::testing::Contains("The format is that of the name, .dxf, not .dwg."));
    // The setting of programs is served with the newest version, and they are told.
    session.setProperty("kovaDwgVersion", QStringLiteral("R2004"));
    session.takeOutput();
    EXPECT_EQ(session.save(path("c.dwg")), "");
    EXPECT_THAT(session.takeOutput(),
                ElementsAre("DWG R2004 is not written, this is R2018. The versions written are 2010, 2013 and 2018.",
                            "Saved: " + path("c.dwg")));
    const std::string plot = path("x.PDF");
    EXPECT_THAT(session.feed("SAVEAS " + plot),
                ElementsAre("Command: SAVEAS " + plot,
                            plot + " is a KovaCAD drawing: drawings are saved as .dwg, .dxf or .kvcad, PDFEXPORT "
                                   "writes .pdf.",
                            "Saved: " + plot));
    EXPECT_THAT(session.feed("SAVEAS " + path("plan.kvcad")), ::testing::SizeIs(2));
}

TEST_F(SessionTest, AFailedSaveKeepsTheBackup) {
    for (const char* extension : {".kvcad", ".dxf", ".dwg"}) {
        const std::string file = path(std::string("a") + extension);
        feedAll({"SAVEAS " + file, "LINE 0,0 1,1", "", "SAVE"});
        const auto bytes = [](const std::string& name) {
            std::ifstream in(name, std::ios::binary);
            return std::string(std::istreambuf_iterator<char>(in), {});
        };
        const std::string before = bytes(file), backup = bytes(path("a.bak"));
        ASSERT_NE(before, backup);
        feedAll({"LINE 0,0 1,1", ""});
        io::Save::probe().step = [&](io::Save::Step step) {
            if (step != io::Save::Step::BackupPlaced) return;
            std::filesystem::rename(file, file + ".moved");
            std::filesystem::create_directory(file);
        };
        EXPECT_NE(session.save(""), "") << extension;
        io::Save::probe() = {};
        std::filesystem::remove(file);
        std::filesystem::rename(file + ".moved", file);
        EXPECT_EQ(bytes(file), before) << extension;
        EXPECT_EQ(bytes(path("a.bak")), backup) << extension;
        EXPECT_TRUE(session.document().isModified());
        if (std::string_view(extension) != ".dwg") continue;
        // No file can be made in this folder, not even by root.
        const QByteArray temporary = qgetenv("TMPDIR");
        qputenv("TMPDIR", "/proc");
        EXPECT_THAT(session.save(""), ::testing::StartsWith("DWG export: writing the intermediate DXF failed: "));
        temporary.isEmpty() ? qunsetenv("TMPDIR") : qputenv("TMPDIR", temporary);
        EXPECT_EQ(bytes(file), before);
        EXPECT_EQ(bytes(path("a.bak")), backup);
    }
}

TEST_F(SessionTest, WhatIsBeingEditedIsSavedAsItWasBefore) {
    feedAll({"CIRCLE 0,0 1", "BLOCK Part 0,0 L", "", "INSERT Part 10,10 1 1 0", "CIRCLE 50,50 2"});
    const std::string reference =
        "Reference \"Part\" is being edited: it is saved as it was before. REFCLOSE saves the changes in it.";
    const std::string block =
        "Block \"Part\" is open in the block editor: it is saved as it was before. BCLOSE saves the changes in it.";
    const auto check = [&](const std::string& file, const std::string& line) {
        SCOPED_TRACE(file);
        Session other;
        ASSERT_EQ(other.open(file), "");
        const engine::Drawing& drawing = other.document().drawing();
        ASSERT_EQ(drawing.modelSpace().size(), 2u);
        for (const engine::Entity& entity : drawing.modelSpace()) EXPECT_TRUE(entity.visible);
        EXPECT_EQ(drawing.modelSpace().first()->type(), engine::EntityType::BlockReference);
        ASSERT_NE(drawing.findBlock(engine::Name("Part")), nullptr);
        EXPECT_EQ(drawing.findBlock(engine::Name("Part"))->entities.size(), 1u);
        EXPECT_FALSE(line.empty());
    };
    const auto saveEverywhere = [&](const std::string& line) {
        for (const char* name : {"a.kvcad", "a.dxf", "a.dwg"}) {
            EXPECT_THAT(feedAll({"SAVEAS " + path(name)}), ::testing::Contains(line));
            check(path(name), line);
            EXPECT_THAT(feedAll({std::string("EXPORT ") + path(std::string("e-") + name)}),
                        ::testing::Contains(line));
            check(path(std::string("e-") + name), line);
        }
        EXPECT_THAT(feedAll({"WBLOCK", path("w.kvcad"), "*"}), ::testing::Contains(line));
        check(path("w.kvcad"), line);
        std::ignore = std::remove(path("w.kvcad").c_str());
        EXPECT_TRUE(session.document().isModified());
    };

    ASSERT_EQ(entities(), 2u);
    feedAll({"REFEDIT 11,10", "", "", "LINE 0,0 5,5", ""});
    ASSERT_NE(session.document().referenceEdit(), nullptr);
    ASSERT_EQ(entities(), 4u);
    saveEverywhere(reference);
    // The edit goes on where it was.
    EXPECT_EQ(entities(), 4u);
    feedAll({"REFCLOSE", ""});
    EXPECT_EQ(entities(), 2u);
    EXPECT_EQ(session.document().drawing().findBlock(engine::Name("Part"))->entities.size(), 2u);
    feedAll({"U", "REFCLOSE D"});

    feedAll({"BEDIT Part", "LINE 0,0 5,5", ""});
    ASSERT_NE(session.document().blockEdit(), nullptr);
    saveEverywhere(block);
    feedAll({"BCLOSE", ""});
    EXPECT_EQ(session.document().drawing().findBlock(engine::Name("Part"))->entities.size(), 2u);
    EXPECT_THAT(feedAll({"SAVEAS " + path("done.kvcad")}), ::testing::SizeIs(2));
    EXPECT_FALSE(session.document().isModified());
}

TEST_F(SessionTest, HiddenObjectsAreSavedAsShownUnlessIsolationLasts) {
    const auto shownAfterSaving = [&](const std::string& file) {
        EXPECT_EQ(session.save(path(file)), "");
        Session other;
        EXPECT_EQ(other.open(path(file)), "");
        std::size_t count = 0;
        for (const engine::Entity& e : other.document().drawing().modelSpace()) count += e.visible ? 1 : 0;
        return count;
    };
    feedAll({"LINE 0,0 10,0", "", "LINE 0,5 10,5", "", "HIDEOBJECTS 5,0", ""});
    session.takeOutput();
    for (const char* file : {"a.kvcad", "a.dxf", "a.dwg"}) EXPECT_EQ(shownAfterSaving(file), 2u) << file;
    EXPECT_THAT(session.takeOutput(), ::testing::Contains("1 hidden object(s) were saved as shown (OBJECTISOLATIONMODE 0)."));
    EXPECT_FALSE(session.document().drawing().modelSpace().entities().front()->visible) << "it stays hidden here";
    feedAll({"OBJECTISOLATIONMODE 1"});
    for (const char* file : {"b.kvcad", "b.dxf", "b.dwg"}) EXPECT_EQ(shownAfterSaving(file), 1u) << file;
    engine::resetProfileVariables();
}

TEST_F(SessionTest, FieldsComeUpToDateOnOpeningAndSaving) {
    feedAll({"FIELD F 0,0", "5", "0"});
    const auto content = [&] {
        return static_cast<engine::TextEntity&>(*session.document().drawing().modelSpace().entities().back()).content;
    };
    ASSERT_EQ(entities(), 1u);
    const std::string before = content();
    ASSERT_EQ(session.save(path("first.kvcad")), "");
    ASSERT_EQ(session.save(path("second.kvcad")), "");
    std::filesystem::rename(path("second.kvcad"), path("third.kvcad"));
    ASSERT_EQ(session.open(path("third.kvcad")), "");
    EXPECT_EQ(content(), "third.kvcad");
    feedAll({"FIELDEVAL 0"});
    ASSERT_EQ(session.save(""), "");
    std::filesystem::rename(path("third.kvcad"), path("fourth.kvcad"));
    ASSERT_EQ(session.open(path("fourth.kvcad")), "");
    EXPECT_EQ(content(), "third.kvcad");
}

}  // namespace
}  // namespace kova::headless
