#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>

#include "cmd/calculator.hpp"
#include "cmd/draw_harness.hpp"
#include "cmd/macros.hpp"
#include "edit/transmittal.hpp"
#include "engine/entities/block_reference.hpp"
#include "engine/entities/circle.hpp"
#include "engine/entities/image.hpp"
#include "engine/entities/polyface.hpp"
#include "engine/entities/region.hpp"
#include "engine/outline/plot_page.hpp"

namespace kova::cmd {
namespace {

namespace fs = std::filesystem;
using testing::Contains;
using testing::HasSubstr;

/// A folder that goes with the test.
class Folder {
public:
    Folder() {
        std::string name = (fs::temp_directory_path() / "kova-tools-XXXXXX").string();
        path = mkdtemp(name.data());
    }
    ~Folder() { fs::remove_all(path); }
    std::string file(const std::string& name) const { return (path / name).string(); }
    fs::path path;
};

// CAL --------------------------------------------------------------------------------------------------------------

TEST(Cal, PrintsValuesAndKeepsThemUnderNames) {
    DrawConsole c;
    EXPECT_EQ(c.run({"CAL", "2*(3+4)"}), (Lines{"14"}));
    EXPECT_EQ(c.run({"CAL", "w=1/4"}), (Lines{"0.25"}));
    EXPECT_EQ(c.run({"CAL", "[w,2]+[1,1,1]"}), (Lines{"(1.25 3 1)"}));
    // The values belong to the session, not to the drawing.
    c.document.setDrawing(std::make_unique<engine::Drawing>());
    EXPECT_EQ(c.run({"CAL", "W*4"}), (Lines{"1"}));
    EXPECT_TRUE(c.idle());
    EXPECT_FALSE(c.document.history().canUndo());
}

TEST(Cal, KnowsTheDrawingAndRefusesPicks) {
    DrawConsole c;
    c.run({"UCS", "10,0", ""});
    c.drawing().lastPoint = {12, 3};
    EXPECT_EQ(c.run({"CAL", "@"}), (Lines{"(2 3 0)"}));
    EXPECT_EQ(c.run({"CAL", "[*12,3]"}), (Lines{"(2 3 0)"}));
    EXPECT_EQ(c.run({"CAL", "u2w([2,3])"}), (Lines{"(12 3 0)"}));
    EXPECT_EQ(c.run({"CAL", "getvar(luprec)+1"}), (Lines{"5"}));
    for (const char* wrong : {"cur", "dist(end,end)", "rad", "1/0", "2+", "nosuchname", "end=3", "[1,2]+1"})
        EXPECT_THAT(c.run({"CAL", wrong}), Contains(HasSubstr("Error: "))) << wrong;
    EXPECT_THAT(c.run({"LINE", "'CAL"}), Contains("'CAL: cannot be used transparently."));
}

// AUDIT ------------------------------------------------------------------------------------------------------------

TEST(AuditCommand, RepairsAsOneStepThatCanBeTakenBack) {
    DrawConsole c;
    c.addLine(0, 0, 1, 1).layer = engine::Name("gone");
    c.add(engine::CircleEntity({0, 0}, -1.0));
    c.drawing().addBlock(engine::Name("A"));
    c.drawing()
        .findBlock(engine::Name("A"))
        ->entities.append(std::make_unique<engine::BlockReferenceEntity>(engine::Name("A"), math::Vector2{}));
    c.drawing().layers.ensure(engine::Name("L")).linetype = engine::Name("lost");
    Lines lines = c.run({"AUDIT", ""});
    EXPECT_EQ(lines.back(), "Erased 0 objects");
    EXPECT_THAT(lines, Contains("Total errors found 4 fixed 0"));
    EXPECT_FALSE(c.document.history().canUndo());
    lines = c.run({"AUDIT", "Y"});
    EXPECT_THAT(lines, Contains("Total errors found 4 fixed 4"));
    EXPECT_THAT(lines, Contains(HasSubstr("layer \"gone\" is missing: set to 0.")));
    EXPECT_EQ(lines.back(), "Erased 2 objects");
    EXPECT_EQ(c.count(), 1u);
    EXPECT_EQ(c.entities()[0]->layer, "0");
    EXPECT_EQ(c.lastStep(), "AUDIT");
    EXPECT_THAT(c.run({"AUDIT", "Y"}), Contains("Total errors found 0 fixed 0"));
    c.feed("UNDO");
    EXPECT_EQ(c.count(), 2u);
    EXPECT_EQ(c.entities()[0]->layer, "gone");
    EXPECT_EQ(c.drawing().layers.find(engine::Name("L"))->linetype, "lost");
    EXPECT_TRUE(c.drawing().blockContainsItself(engine::Name("A")));
}

TEST(RecoverCommand, OpensAndRepairs) {
    DrawConsole c;
    c.failure = "no such file";
    EXPECT_THAT(c.run({"RECOVER", "x.dxf"}), Contains("Could not recover x.dxf: no such file"));
    c.failure.clear();
    c.add(engine::CircleEntity({0, 0}, 0.0));
    EXPECT_THAT(c.run({"RECOVER", "x.dxf"}), Contains("Total errors found 1 fixed 1"));
    EXPECT_EQ(c.count(), 0u);
}

// MASSPROP ---------------------------------------------------------------------------------------------------------

TEST(Massprop, OfRegionsInTheCurrentSystemAndToAFile) {
    DrawConsole c;
    const Folder folder;
    engine::RegionEntity region;
    region.vertices = {{10, 10}, {14, 10}, {14, 12}, {10, 12}};
    c.add(region);
    c.addLine(0, 0, 1, 1);
    c.run({"UCS", "10,10", ""});
    const Lines lines = c.run({"MASSPROP", "ALL", "", "Y", folder.file("plate")});
    EXPECT_THAT(lines, Contains("Area:                 8.0000"));
    EXPECT_THAT(lines, Contains("Perimeter:            12.0000"));
    EXPECT_THAT(lines, Contains("Centroid:             X: 2.0000"));
    EXPECT_THAT(lines, Contains("Moments of inertia:   X: 10.6667"));
    EXPECT_THAT(lines, Contains("Product of inertia:   XY: 16.0000"));
    EXPECT_THAT(lines, Contains(HasSubstr("I: 2.6667 along [1.0000 0.0000]")));
    EXPECT_THAT(lines, Contains("1 object ignored: neither region nor closed body."));
    EXPECT_GT(fs::file_size(folder.file("plate.mpr")), 300u);
    EXPECT_TRUE(c.idle());
    c.run({"UNDO"});
    EXPECT_THAT(c.run({"MASSPROP", "0.5,0.5", ""}), testing::Not(Contains(HasSubstr("Area:"))));
}

// Macros -----------------------------------------------------------------------------------------------------------

class Macros : public testing::Test {
protected:
    Macros() { setenv("KOVACAD_MACROS", folder.path.c_str(), 1); }
    ~Macros() override { unsetenv("KOVACAD_MACROS"); }
    /// Types lines as a session does, which notes them for the macro.
    Lines type(const Lines& input) {
        const std::size_t before = c.lines.size();
        for (const std::string& line : input) {
            noteMacroLine(c.document, line);
            c.feed(line);
        }
        return {c.lines.begin() + static_cast<std::ptrdiff_t>(before), c.lines.end()};
    }
    Folder folder;
    DrawConsole c;
};

TEST_F(Macros, AreRecordedKeptAndPlayed) {
    EXPECT_EQ(type({"ACTSTOP"}), (Lines{"No action is being recorded."}));
    type({"ACTRECORD", "LINE", "0,0", "1,0", ""});
    EXPECT_THAT(type({"ARR"}), Contains("An action is being recorded already."));
    EXPECT_THAT(type({"ARS", "a/b", ""}), Contains("Macro \"ActMacro001\" saved: 4 lines."));
    EXPECT_EQ(macroNames(), (Lines{"ActMacro001"}));
    EXPECT_EQ(freeMacroName(), "ActMacro002");
    EXPECT_THAT(type({"ACTPLAY", "nothing", "?", "actmacro001", "3"}), Contains("No macro of that name."));
    EXPECT_EQ(c.count(), 4u);
    // What a macro feeds stands in no other macro, and a name in use is asked about.
    type({"ACTRECORD", "ACTPLAY", "ActMacro001", "1"});
    type({"ACTSTOP", "ActMacro001", "N", "Two"});
    EXPECT_EQ(loadMacro("two"), (Lines{"ACTPLAY", "ActMacro001", "1"}));
}

TEST(Shell, IsRefusedUnlessTheEnvironmentAllowsIt) {
    DrawConsole c;
    unsetenv("KOVACAD_ALLOW_SHELL");
    EXPECT_EQ(c.run({"SHELL"}), (Lines{"SHELL is not allowed here."}));
    EXPECT_TRUE(c.idle());
    setenv("KOVACAD_ALLOW_SHELL", "1", 1);
    EXPECT_EQ(c.run({"SHELL", "echo a; cat; echo b >&2 # end"}), (Lines{"a", "b"}));
    EXPECT_EQ(c.run({"SH", "exit 3"}), (Lines{"Exit status 3."}));
    c.run({"SHELL", ""});
    EXPECT_TRUE(c.idle());
    unsetenv("KOVACAD_ALLOW_SHELL");
}

// Pictures, properties, packages -----------------------------------------------------------------------------------

class PlotConsole : public DrawConsole {
public:
    std::string plot(std::span<const engine::PlotPage> pages, engine::PlotFormat format,
                     const std::string& path) override {
        page = pages.front();
        kind = format;
        file = path;
        return {};
    }
    engine::PlotPage page;
    engine::PlotFormat kind = engine::PlotFormat::Pdf;
    std::string file;
};

TEST(ExportImage, TakesKindSizeAndArea) {
    PlotConsole c;
    c.addLine(0, 0, 10, 10);
    c.run({"EXPORTIMAGE", "a.xyz", "\"my picture.jpg\"", "10,x", "800x600", "Window", "0,0", "4,3"});
    EXPECT_EQ(c.file, "my picture.jpg");
    EXPECT_EQ(c.kind, engine::PlotFormat::Jpg);
    EXPECT_DOUBLE_EQ(c.page.setup.paperWidth / 25.4 * c.page.setup.dpi, 800.0);
    EXPECT_DOUBLE_EQ(c.page.setup.paperHeight / 25.4 * c.page.setup.dpi, 600.0);
    EXPECT_EQ(c.page.window.max, (math::Vector2{4, 3}));
    // The size is remembered; the area is the extents.
    c.run({"PNGOUT", "b", "", ""});
    EXPECT_EQ(c.file, "b.png");
    EXPECT_DOUBLE_EQ(c.page.setup.paperWidth / 25.4 * c.page.setup.dpi, 800.0);
    EXPECT_EQ(c.page.setup.plotArea, static_cast<std::int32_t>(engine::PlotArea::Extents));
    c.run({"EXPORT", "c.bmp"});
    EXPECT_EQ(c.kind, engine::PlotFormat::Bmp);
    EXPECT_TRUE(c.idle());
}

TEST(DrawingProperties, AreAskedForOneByOne) {
    DrawConsole c;
    const Lines lines = c.run({"DWGPROPS", "T", "House, ground floor", "K", "plan", "?", ""});
    EXPECT_THAT(lines, Contains("Title: House, ground floor"));
    EXPECT_EQ(c.drawing().properties.keywords, "plan");
    c.feed("UNDO");
    EXPECT_EQ(c.drawing().properties.keywords, "");
    EXPECT_EQ(c.drawing().properties.title, "House, ground floor");
}

TEST(Help, TellsOfOneCommandOrAll) {
    DrawConsole c;
    EXPECT_EQ(c.run({"?", "C"}), (Lines{"CIRCLE (C): Circle, Draw"}));
    EXPECT_GT(c.run({"HELP", ""}).size(), 300u);
    EXPECT_THAT(c.run({"HELP", "QQQ", ""}), Contains("Unknown command: QQQ"));
    EXPECT_FALSE(c.run({"LINE", "'ABOUT"}).empty());
    EXPECT_FALSE(c.idle());
    EXPECT_THAT(c.run({"'DWGWORKFLOW"}), Contains("No drawing has been saved as DWG in this session."));
}

TEST(Etransmit, ListsAndCollectsWhatTheDrawingNeeds) {
    const Folder folder;
    std::ofstream(folder.file("a.png")) << "x";
    DrawConsole c;
    c.drawing().fileName = folder.file("plan.dxf");
    engine::ImageEntity image;
    image.filePath = "C:\\elsewhere\\a.png";
    c.add(image);
    image.filePath = "missing.png";
    c.add(image);
    const Lines lines = c.run({"ETRANSMIT", ""});
    EXPECT_THAT(lines, Contains("Image: C:\\elsewhere\\a.png (" + folder.file("a.png") + ")"));
    EXPECT_THAT(lines, Contains("Image: missing.png (missing)"));
    fs::create_directory(folder.path / "package");
    EXPECT_THAT(copyFiles(neededFiles(c.drawing()), folder.file("package")),
                Contains("Copied: " + folder.file("package/a.png")));
    // A folder with something in it is left alone.
    EXPECT_THAT(c.run({"ZIP", "Create", folder.file("package")}),
                Contains("The folder is not empty: " + folder.file("package")));
}

}  // namespace
}  // namespace kova::cmd
