#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QDialog>
#include <QMessageBox>
#include <QTemporaryDir>
#include <QTimer>
#include <filesystem>
#include <fstream>

#include "engine/entities/line.hpp"
#include "engine/entities/text.hpp"
#include "headless/session.hpp"
#include "headless/templates.hpp"
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
