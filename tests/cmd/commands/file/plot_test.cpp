#include "cmd/prompts/plot_prompts.hpp"
#include "cmd/console.hpp"

namespace kova::cmd {
namespace {

using engine::PlotArea;
using engine::PlotFormat;
using engine::PlotPage;

/// A console whose plots are noted.
class PlotConsole : public Console {
public:
    std::string plot(std::span<const PlotPage> pages, PlotFormat format, const std::string& path) override {
        plotted.assign(pages.begin(), pages.end());
        formats.push_back(format);
        paths.push_back(path);
        return failure;
    }
    const engine::PageSetup& setup() const { return plotted.at(0).setup; }

    std::vector<PlotPage> plotted;
    std::vector<PlotFormat> formats;
    std::vector<std::string> paths;
};

bool is(const engine::PageSetup& setup, PlotArea area) { return setup.plotArea == static_cast<std::int32_t>(area); }

TEST(PlotCommand, DetailedAnswersOfScriptsBuildThePage) {
    PlotConsole c;
    c.run({"-PLOT",
           "Y",
           "Layout1",
           "DWG To PDF.pc3",
           "ISO full bleed A2 (594.00 x 420.00 MM)",
           "M",
           "P",
           "Y",
           "E",
           "1=2",
           "5,7",
           "Y",
           "monochrome.ctb",
           "N",
           "N",
           "N",
           "N",
           "Y",
           "/tmp/a sheet",
           "N",
           "Y"});
    ASSERT_TRUE(c.idle()) << c.prompt();
    ASSERT_EQ(c.plotted.size(), 1U);
    EXPECT_EQ(c.paths.back(), "/tmp/a sheet.pdf");
    EXPECT_EQ(c.lines.back(), "Plotted: /tmp/a sheet.pdf");
    EXPECT_EQ(c.plotted[0].layout, engine::Name("Layout1"));
    EXPECT_TRUE(c.plotted[0].upsideDown);
    EXPECT_EQ(c.setup().paperWidth, 420.0);  // upright
    EXPECT_EQ(c.setup().paperHeight, 594.0);
    EXPECT_TRUE(is(c.setup(), PlotArea::Extents));
    EXPECT_EQ(c.setup().scalePaper / c.setup().scaleDrawing, 0.5);
    EXPECT_EQ(c.setup().offsetX, 5.0);
    EXPECT_EQ(c.setup().offsetY, 7.0);
    EXPECT_FALSE(c.setup().centerOnPage);
    EXPECT_EQ(c.setup().plotStyleTable, "monochrome.ctb");
    EXPECT_FALSE(c.setup().plotWithLineweights);
    // Nothing was saved.
    EXPECT_EQ(c.drawing().findLayout("Layout1")->pageSetup.paperWidth, 420.0);
    EXPECT_TRUE(c.drawing().findLayout("Layout1")->pageSetup.plotWithLineweights);
}

TEST(PlotCommand, ModelWindowInInchesWithTheFileNamedAtOnce) {
    PlotConsole c;
    c.run({"PLOT", "Yes",    "Model", "",  "A4",  "Inches", "Landscape",      "No", "Window", "10,10", "60,40",
           "1:4",  "Center", "No",    ".", "Yes", "W",      "/tmp/m.svg.pdf", "",   ""});
    ASSERT_TRUE(c.idle()) << c.prompt();
    ASSERT_EQ(c.plotted.size(), 1U);
    EXPECT_TRUE(c.plotted[0].layout.empty());
    EXPECT_TRUE(is(c.setup(), PlotArea::Window));
    EXPECT_EQ(c.plotted[0].window.min, math::Vector2(10, 10));
    EXPECT_EQ(c.plotted[0].window.max, math::Vector2(60, 40));
    EXPECT_EQ(c.setup().paperUnits, 0);
    EXPECT_DOUBLE_EQ(c.setup().scalePaper / c.setup().scaleDrawing, 1.0 / 4.0);
    EXPECT_TRUE(c.setup().centerOnPage);
    EXPECT_TRUE(c.setup().plotWithLineweights);
    EXPECT_EQ(c.paths.back(), "/tmp/m.svg.pdf");
}

/// The sheet's own units are the default, count in scale and offset, and are saved with the sheet.
TEST(PlotCommand, SheetsInInches) {
    PlotConsole c;
    engine::PageSetup& sheet = c.drawing().findLayout("Layout1")->pageSetup;
    sheet.paperUnits = 0;
    sheet.paperWidth = 279.4;
    sheet.paperHeight = 215.9;
    c.run({"PLOT", "Y", "Layout1", "", ""});
    EXPECT_EQ(c.prompt(), "Enter paper units [Inches/Millimeters] <Inches>:");
    c.run({"", "", "", ""});
    EXPECT_EQ(c.prompt(), "Enter plot scale (Plotted Inches=Drawing Units) <1=1>:");
    c.run({"", "0.5,1", "", "", "", "", "", "", "", "N", "Y"});
    ASSERT_TRUE(c.idle()) << c.prompt();
    EXPECT_EQ(c.setup().paperUnits, 0);
    EXPECT_DOUBLE_EQ(c.setup().offsetX, 12.7);
    EXPECT_EQ(c.setup().scaleType, 16);
    c.run({"PLOT", "Y", "Layout1", "", "", "M", "", "", "", "1=2", "", "", "", "", "", "", "", "N", "Y", "N"});
    ASSERT_TRUE(c.idle()) << c.prompt();
    EXPECT_EQ(sheet.paperUnits, 1);
    EXPECT_EQ(sheet.sheet().width(), 279.4);
    EXPECT_EQ(c.plotted.size(), 1U);
}

TEST(PlotCommand, BriefFormRefusalsAndSavedSetup) {
    PlotConsole c;
    engine::PageSetup named;
    named.name = "Half";
    named.scalePaper = 1.0;
    named.scaleDrawing = 2.0;
    c.drawing().namedPageSetups.add(named);
    EXPECT_EQ(c.run({"PLOT", "N", "Nowhere"}), Lines({"No layout named Nowhere"}));
    EXPECT_EQ(c.run({"Layout1", "Quarter"}), Lines({"Page setup not found."}));
    EXPECT_EQ(c.run({"Half", "LaserJet"}), Lines({"Unknown device. Plots are written as PDF, SVG or PNG."}));
    c.run({"SVG", "N", "Y", "Y"});
    ASSERT_TRUE(c.idle());
    EXPECT_EQ(c.formats.back(), PlotFormat::Svg);
    EXPECT_EQ(c.paths.back(), "Drawing-Layout1.svg");
    EXPECT_EQ(c.drawing().findLayout("Layout1")->pageSetup.scaleDrawing, 2.0);
    c.feed("U");
    EXPECT_EQ(c.drawing().findLayout("Layout1")->pageSetup.scaleDrawing, 1.0);
    // Not to proceed is to write nothing.
    c.run({"PLOT", "", "", "", "", "", "", "N"});
    ASSERT_TRUE(c.idle()) << c.prompt();
    EXPECT_EQ(c.paths.size(), 1U);
    c.failure = "Cannot open file for writing: x.pdf";
    EXPECT_EQ(c.run({"PDFEXPORT", "x"}), Lines({"Cannot open file for writing: x.pdf"}));
}

TEST(PlotCommand, ExportsOfSpacesAndLayouts) {
    PlotConsole c;
    c.drawing().addLayout("Details")->tabOrder = 0;
    c.run({"PDFEXPORT", "\"/tmp/my file.PDF\""});
    EXPECT_EQ(c.paths.back(), "/tmp/my file.PDF");
    EXPECT_TRUE(is(c.setup(), PlotArea::Extents));
    EXPECT_EQ(c.setup().scaleType, 0);

    c.run({"SVGEXPORT", "/tmp/w", "W", "0,0", "50,20"});
    EXPECT_EQ(c.paths.back(), "/tmp/w.svg");
    EXPECT_EQ(c.formats.back(), PlotFormat::Svg);
    EXPECT_EQ(c.plotted[0].window.width(), 50.0);

    c.run({"TILEMODE", "0"});
    c.run({"-PDFEXPORT", "A", "", "/tmp/all"});
    ASSERT_TRUE(c.idle()) << c.prompt();
    ASSERT_EQ(c.plotted.size(), c.drawing().layouts().size());
    EXPECT_EQ(c.plotted[0].layout, engine::Name("Details"));
    EXPECT_TRUE(is(c.setup(), PlotArea::Layout));
    c.run({"PUBLISH", ""});
    EXPECT_EQ(c.plotted.size(), c.drawing().layouts().size());
    EXPECT_EQ(c.paths.back(), "Drawing-Layouts.pdf");
}

TEST(PlotCommand, ScalesAsTheyAreTyped) {
    engine::PageSetup setup;
    const auto scale = [&](const char* text) {
        return parsePlotScale(text, setup) ? (setup.scaleType == 0 ? 0.0 : setup.scalePaper / setup.scaleDrawing)
                                                 : -1.0;
    };
    EXPECT_EQ(scale("1=50"), 0.02);
    EXPECT_EQ(scale(" 2 : 1 "), 2.0);
    EXPECT_EQ(scale("0.25"), 0.25);
    EXPECT_EQ(scale("_F"), 0.0);
    for (const char* bad : {"", "x", "1=0", "-1=5", "1=", "=", "1e308=1e-308", "nan"})
        EXPECT_EQ(scale(bad), -1.0) << bad;
}

}  // namespace
}  // namespace kova::cmd
