#include <gtest/gtest.h>

#include "cmd/console.hpp"
#include "engine/model/sysvar.hpp"
#include "math/angles.hpp"

namespace kova::cmd {
namespace {

TEST(VariableCommands, AskSetAndUndo) {
    Console c;
    c.feed("PDMODE");
    EXPECT_EQ(c.prompt(), "Enter new value for PDMODE <0>:");
    EXPECT_TRUE(c.feed("34").empty());
    EXPECT_TRUE(c.idle());
    EXPECT_EQ(engine::sysVarInt(c.drawing(), "PDMODE"), 34);
    EXPECT_EQ(c.feed("UNDO"), Lines{"Undone: PDMODE"});
    EXPECT_EQ(engine::sysVarInt(c.drawing(), "PDMODE"), 0);
    // Enter keeps the value and leaves no trace.
    c.run({"PDMODE", ""});
    EXPECT_TRUE(c.idle());
    EXPECT_FALSE(c.document.history().canUndo());
    c.feed("LTSCALE");
    EXPECT_EQ(c.prompt(), "Enter new linetype scale factor <1>:");
    c.feed("2.5");
    EXPECT_DOUBLE_EQ(engine::sysVarReal(c.drawing(), "LTSCALE"), 2.5);
}

TEST(VariableCommands, RefuseWhatIsOutOfRangeAndAskAgain) {
    Console c;
    c.feed("SELECTIONAREAOPACITY");
    for (const char* text : {"101", "-1", "1.5", "abc", "1e1", "99999999999"}) {
        EXPECT_EQ(c.feed(text), Lines{"Invalid number. Enter 0-100:"}) << text;
        EXPECT_EQ(c.prompt(), "Enter new value for SELECTIONAREAOPACITY <25>:") << text;
    }
    c.feed("60");
    EXPECT_TRUE(c.idle());
    EXPECT_EQ(engine::sysVarInt(c.drawing(), "SELECTIONAREAOPACITY"), 60);
    EXPECT_EQ(c.feed("LAYLOCKFADECTL 91"), Lines{"Invalid number. Enter -90 to 90:"});
    c.feed("-90");
    EXPECT_EQ(engine::sysVarInt(c.drawing(), "LAYLOCKFADECTL"), -90);
    EXPECT_EQ(c.feed("FACETRES 20"), Lines{"Invalid number. Enter 0.01-10:"});
    for (const char* text : {"nan", "inf", "1e999", "0x1"})
        EXPECT_EQ(c.feed(text), Lines{"Invalid number. Enter 0.01-10:"}) << text;
    c.feed("");
    EXPECT_EQ(c.feed("CLAYER Nowhere"), Lines{"Unknown layer \"Nowhere\"."});
    EXPECT_EQ(c.prompt(), "Enter new value for CLAYER <0>:");
}

TEST(VariableCommands, TogglesTakeWordsAndNumbers) {
    Console c;
    const std::pair<const char*, int> answers[] = {{"ON", 1}, {"off", 0}, {"1", 1}, {"0", 0}, {"Toggle", 1}, {"t", 0}};
    for (const auto& [text, value] : answers) {
        EXPECT_EQ(c.feed(std::string("MIRRTEXT ") + text), Lines{"MIRRTEXT = " + std::to_string(value)}) << text;
        EXPECT_EQ(engine::sysVarInt(c.drawing(), "MIRRTEXT"), value) << text;
    }
    EXPECT_EQ(c.feed("MIRRTEXT 2"), Lines{"Invalid number. Enter 0-1:"});
    EXPECT_EQ(c.feed("o"), Lines{"Invalid number. Enter 0-1:"});
    // Enter keeps the value, it does not change it over.
    EXPECT_TRUE(c.feed("").empty());
    EXPECT_EQ(engine::sysVarInt(c.drawing(), "MIRRTEXT"), 0);
    c.feed("BLIPMODE");
    EXPECT_EQ(c.prompt(), "Enter mode [ON/OFF] <OFF>:");
    c.feed("ON");
    EXPECT_EQ(engine::sysVarInt(c.drawing(), "BLIPMODE"), 1);
}

TEST(VariableCommands, AnglesAreTypedAndShownInDegrees) {
    Console c;
    c.feed("ANGBASE 90");
    EXPECT_NEAR(engine::sysVarReal(c.drawing(), "ANGBASE"), math::kPi / 2.0, 1e-15);
    c.feed("ANGBASE");
    EXPECT_EQ(c.prompt(), "Enter new value for ANGBASE <90>:");
    c.feed("");
    c.feed("POLARANG 45");
    EXPECT_DOUBLE_EQ(engine::sysVarReal(c.drawing(), "POLARANG"), 45.0);
}

TEST(VariableCommands, ReadOnlyOnesAreShown) {
    Console c;
    const Lines shown = c.feed("DWGTITLED");
    EXPECT_EQ(shown, Lines{"DWGTITLED = 0 (read only)"});
    EXPECT_TRUE(c.idle());
    EXPECT_EQ(c.feed("SETVAR CTAB").size(), 0u);
    c.feed("");
}

TEST(VariableCommands, TextsPointsAndProgramWideOnes) {
    Console c;
    c.run({"SAVEFILEPATH", "\"/tmp/my files\""});
    EXPECT_EQ(engine::sysVarString(c.drawing(), "SAVEFILEPATH"), "/tmp/my files");
    EXPECT_FALSE(c.document.history().canUndo());
    c.feed("SNAPBASE 3,4");
    EXPECT_EQ(c.drawing().snapBase, math::Vector2(3, 4));
    EXPECT_EQ(c.feed("SNAPBASE 3").size(), 1u);
    EXPECT_FALSE(c.idle());
    c.feed("");
    c.feed("CECOLOR 3");
    EXPECT_EQ(c.drawing().currentColor, engine::Color::index(3));
    EXPECT_EQ(c.feed("CECOLOR 256").size(), 1u);
    c.feed("");
    c.feed("DIMTXT 5");
    EXPECT_DOUBLE_EQ(c.drawing().effectiveDimStyle().textHeight, 5.0);
}

TEST(VariableCommands, SetvarAsksForNameThenValue) {
    Console c;
    c.feed("SETVAR");
    EXPECT_TRUE(c.prompt().starts_with("Enter variable name or [?]"));
    EXPECT_EQ(c.feed("NOSUCH"), Lines{"Unknown variable name \"NOSUCH\"."});
    c.feed("ltscale");
    EXPECT_EQ(c.prompt(), "Enter new linetype scale factor <1>:");
    c.feed("3");
    EXPECT_TRUE(c.idle());
    EXPECT_EQ(c.feed("UNDO"), Lines{"Undone: SETVAR"});
    c.feed("SETVAR");
    EXPECT_EQ(c.prompt(), "Enter variable name or [?] <LTSCALE>:");
    c.run({"", "4"});
    EXPECT_DOUBLE_EQ(engine::sysVarReal(c.drawing(), "LTSCALE"), 4.0);
    EXPECT_EQ(c.feed("SETVAR DWGTITLED"), Lines{"DWGTITLED = 0 (read only)"});
    const Lines listed = c.run({"SETVAR", "?", "LTS*,PDMODE"});
    EXPECT_EQ(listed, (Lines{"LTSCALE = 4", "PDMODE = 0"}));
    EXPECT_EQ(c.run({"SETVAR ? Q9*"}), Lines{"No matching names found."});
    EXPECT_GT(c.run({"SETVAR", "?", ""}).size(), 300u);
    c.feed("SETVAR PDSIZE -5");
    EXPECT_DOUBLE_EQ(engine::sysVarReal(c.drawing(), "PDSIZE"), -5.0);
}

TEST(VariableCommands, ModesSwitchVariablesByWords) {
    Console c;
    c.feed("ORTHO");
    EXPECT_EQ(c.prompt(), "Enter mode [ON/OFF] <OFF>:");
    c.feed("on");
    EXPECT_EQ(engine::sysVarInt(c.drawing(), "ORTHOMODE"), 1);
    c.feed("DRAGMODE");
    EXPECT_EQ(c.prompt(), "Enter new value [ON/OFF/Auto] <Auto>:");
    EXPECT_EQ(c.feed("x"), Lines{"Invalid option keyword."});
    c.feed("OFF");
    EXPECT_EQ(engine::sysVarInt(c.drawing(), "DRAGMODE"), 0);
    c.feed("ATTDISP ON");
    EXPECT_EQ(engine::sysVarInt(c.drawing(), "ATTMODE"), 2);
    c.run({"VIEWRES", "", "500"});
    EXPECT_EQ(engine::sysVarInt(c.drawing(), "VIEWRES"), 500);
    c.feed("QTEXT ON");
    EXPECT_EQ(engine::sysVarInt(c.drawing(), "QTEXTMODE"), 1);
}

// Every variable's command survives every kind of answer, and none of them leaves a prompt behind on Enter.
TEST(VariableCommands, AllOfThemAnswerToAnything) {
    for (const engine::SysVarDef& def : engine::sysVarTable()) {
        Console c;
        const Command* command = CommandRegistry::instance().find(def.name);
        if (command == nullptr || command->category() != "Settings") continue;
        c.feed(std::string(def.name));
        for (const char* text : {"1e400", "-99999999999", "(", "\"", "ON", "0", "1", "-1", "red", "1,2", "ByLayer"}) {
            if (c.idle()) break;
            c.feed(text);
        }
        for (int i = 0; i < 3 && !c.idle(); ++i) c.feed("");
        EXPECT_TRUE(c.idle()) << def.name << " waits with " << c.prompt();
    }
    engine::resetProfileVariables();
}

}  // namespace
}  // namespace kova::cmd
