#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>

#include "cmd/console.hpp"

namespace kova::cmd {
namespace {

namespace fs = std::filesystem;

class FileCommands : public ::testing::Test {
protected:
    FileCommands() : folder(fs::temp_directory_path() / ("kova_cmd_" + std::to_string(::getpid()))) {
        fs::create_directories(folder);
    }
    ~FileCommands() override { fs::remove_all(folder); }
    std::string write(const char* name, const std::string& text) {
        const fs::path path = folder / name;
        std::ofstream(path, std::ios::binary) << text;
        return path.string();
    }
    Console c;
    fs::path folder;
};

TEST_F(FileCommands, OpenReportsWhatHappened) {
    EXPECT_EQ(c.feed("OPEN a.kvcad"), Lines{"Opened: a.kvcad"});
    EXPECT_EQ(c.calls, Lines{"open a.kvcad"});
    c.failure = "no such file";
    EXPECT_EQ(c.feed("OPEN \"my drawing.dxf\""), Lines{"Could not open my drawing.dxf: no such file"});
    EXPECT_EQ(c.calls.back(), "open my drawing.dxf");
    EXPECT_TRUE(c.idle());
}

TEST_F(FileCommands, OpenAndSaveasNeedANameWhileDialogsAreOn) {
    c.feed("FILEDIA 1");
    EXPECT_EQ(
        c.feed("OPEN"),
        Lines{"OPEN needs a file name: FILEDIA is 1, and kovacad-cli cannot show the file dialog. Set FILEDIA 0."});
    EXPECT_EQ(
        c.feed("SAVEAS"),
        Lines{"SAVEAS needs a file name: FILEDIA is 1, and kovacad-cli cannot show the file dialog. Set FILEDIA 0."});
    EXPECT_TRUE(c.idle());
    EXPECT_TRUE(c.calls.empty());
    EXPECT_EQ(c.feed("OPEN x.dxf"), Lines{"Opened: x.dxf"});
    EXPECT_EQ(c.feed("SAVEAS y.dxf"), Lines{"Saved: y.dxf"});
    c.feed("FILEDIA 0");
    c.feed("OPEN");
    EXPECT_EQ(c.prompt(), "Enter name of drawing to open <.>:");
    c.feed("with blanks.dxf");
    EXPECT_EQ(c.calls.back(), "open with blanks.dxf");
    c.run({"OPEN", "", "OPEN", "."});
    EXPECT_TRUE(c.idle());
    EXPECT_EQ(c.calls.size(), 3u);
    c.feed("SAVEAS");
    EXPECT_EQ(c.prompt(), "Save drawing as:");
    c.run({"2013", "out"});
    EXPECT_EQ(c.calls[3], "version 2013");
    EXPECT_EQ(c.calls[4], "save out.dwg");
    c.feed("SAVEAS DXF out.txt");
    EXPECT_EQ(c.calls.back(), "save out.txt");
}

TEST_F(FileCommands, OpenTakesTheAnswerThatOldScriptsGiveFirst) {
    c.run({"FILEDIA 0", "LINE 0,0 1,1", "", "OPEN", "Y", "next.dxf"});
    ASSERT_FALSE(c.calls.empty());
    EXPECT_EQ(c.calls, Lines{"open next.dxf"});
    // Nothing to give up: it is a name.
    c.document.setModified(false);
    c.run({"OPEN", "Y"});
    EXPECT_EQ(c.calls.back(), "open Y");
    EXPECT_TRUE(c.idle());
}

TEST_F(FileCommands, DxfoutNamesItsFile) {
    EXPECT_EQ(c.feed("DXFOUT"), Lines{"The drawing has no file name yet: give one."});
    // The console writes nothing: what counts is that the name got there.
    EXPECT_EQ(c.feed("DXFOUT out 16"), Lines{"Files cannot be written here."});
    EXPECT_EQ(c.feed("IMPORT nowhere"), Lines{"File not found: nowhere"});
    EXPECT_EQ(c.feed("DXFIN " + write("note.txt", "x")), Lines{"Unsupported file type \".txt\"."});
}

TEST_F(FileCommands, SaveNewClose) {
    c.feed("SAVE");
    EXPECT_EQ(c.calls.back(), "save ");
    c.feed("QSAVE");
    EXPECT_EQ(c.calls.back(), "save ");
    c.failure = "The drawing has no file name yet: give one.";
    EXPECT_EQ(c.feed("SAVE"), Lines{"The drawing has no file name yet: give one."});
    c.failure.clear();
    c.run({"NEW", "NEW imperial", "QNEW", "NEW ."});
    EXPECT_EQ((Lines{c.calls.end() - 4, c.calls.end()}), (Lines{"new ", "new imperial", "new ", "new "}));
    c.run({"LINE 0,0 1,1", ""});
    c.feed("CLOSE");
    EXPECT_EQ(c.count(), 0u);
    EXPECT_TRUE(c.feed("CLOSE").empty());
}

TEST_F(FileCommands, OpeningWhileAGroupWaitsIsHarmless) {
    // LAYER keeps its undo group open while it waits; a new drawing beside it must not be hurt by that.
    c.run({"LAYER", "N", "A", "'NEW", "N", "B", ""});
    EXPECT_TRUE(c.idle());
    EXPECT_FALSE(c.document.isGroupOpen());
    EXPECT_TRUE(c.drawing().layers.contains("B"));
    EXPECT_FALSE(c.drawing().layers.contains("A"));
}

TEST_F(FileCommands, ScriptsAreRead) {
    const std::string path = write("draw.scr", "; two lines\r\n  LINE 0,0 10,0\r\n@0,10\r\n\r\nCIRCLE 5,5 2");
    EXPECT_TRUE(c.feed("SCRIPT " + path).empty());
    EXPECT_TRUE(c.idle());
    EXPECT_EQ(c.count(), 3u);
    c.feed("SCRIPT");
    EXPECT_EQ(c.prompt(), "Enter script file name <Drawing1.scr>:");
    c.feed((folder / "draw").string());
    EXPECT_EQ(c.count(), 6u);
    EXPECT_EQ(c.feed("SCRIPT /nonexistent/x.scr"), Lines{"Cannot read /nonexistent/x.scr"});
    EXPECT_EQ(c.feed("SCRIPT " + folder.string()), Lines{"Cannot read " + folder.string()});
    EXPECT_EQ(c.feed("SCRIPT /dev/zero"), Lines{"Cannot read /dev/zero"});
    EXPECT_TRUE(c.idle());
}

TEST_F(FileCommands, DelayWaitsWithinItsRange) {
    c.feed("DELAY 250");
    EXPECT_EQ(c.calls, Lines{"wait 250"});
    EXPECT_EQ(c.feed("DELAY 40000"), Lines{"Invalid number. Enter 0-32767:"});
    EXPECT_EQ(c.feed("soon"), Lines{"Invalid number. Enter 0-32767:"});
    c.feed("");
    EXPECT_TRUE(c.idle());
    EXPECT_EQ(c.calls.size(), 1u);
}

TEST_F(FileCommands, LinetypeFiles) {
    const std::string path = write("own.lin", "*MYLINE,My line __ . __\nA,5,-2,0,-2\n");
    c.run({"LINETYPE", "L", "*", path, ""});
    ASSERT_TRUE(c.drawing().linetypes.contains("MYLINE"));
    EXPECT_EQ(c.drawing().linetypes.find("MYLINE")->pattern, (std::vector<double>{5, -2, 0, -2}));

    // A definition of one's own goes into a file; one of the same name gives way, the others stay.
    const std::string made = write("made.lin", "; mine\n*Other,x\nA,1,-1\n*FENCE,old\nA,9,-9");
    c.run(
        {"LINETYPE C FENCE " + made, "N", "C", "Fence", made, "Y", "A fence", "x", "A,4,-1,0,-1", "L", "*", made, ""});
    EXPECT_TRUE(c.idle());
    ASSERT_TRUE(c.drawing().linetypes.contains("FENCE"));
    EXPECT_EQ(c.drawing().linetypes.find("FENCE")->pattern, (std::vector<double>{4, -1, 0, -1}));
    EXPECT_EQ(c.drawing().linetypes.find("FENCE")->description, "A fence");
    EXPECT_TRUE(c.drawing().linetypes.contains("Other"));
}

}  // namespace
}  // namespace kova::cmd
