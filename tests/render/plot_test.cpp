#include "render/plot.hpp"

#include <gtest/gtest.h>

#include <QGuiApplication>
#include <QImage>
#include <QPainter>
#include <chrono>

#include "engine/kinds/all.hpp"
#include "math/angles.hpp"
#include "render/renderer.hpp"

namespace kova::render {
namespace {

using namespace engine;
using math::Bounds2;
using math::Vector2;

PlotPage modelPage(const Drawing& drawing, double width, double height) {
    PlotPage page = plotPage(drawing, {});
    page.setup.paperWidth = width;
    page.setup.paperHeight = height;
    page.setup.marginLeft = page.setup.marginRight = page.setup.marginTop = page.setup.marginBottom = 10.0;
    return page;
}

void addBox(EntityList& space, double x0, double y0, double x1, double y1) {
    const Vector2 c[] = {{x0, y0}, {x1, y0}, {x1, y1}, {x0, y1}};
    for (int i = 0; i < 4; ++i) space.append(std::make_unique<LineEntity>(c[i], c[(i + 1) % 4]));
}

void addText(Drawing& drawing, const char* content, const char* font) {
    TextStyle style;
    style.name = font;
    style.fontFile = font;
    drawing.textStyles.add(style);
    auto text = std::make_unique<TextEntity>();
    text->content = content;
    text->height = 10.0;
    text->position = {10.0, 10.0};
    text->textStyle = font;
    drawing.modelSpace().append(std::move(text));
}

/// Where a drawing's point lies on the page, millimetres from its lower left corner.
Vector2 onPaper(const PagePlacement& place, const Vector2& p, double dpi) {
    const Vector2 dots = place.view.map(p) / (dpi / 25.4);
    return {dots.x, place.height - dots.y};
}

TEST(Plot, PagesArePlacedByTheirSetup) {
    Drawing drawing;
    addBox(drawing.modelSpace(), 0, 0, 100, 50);
    PlotPage page = modelPage(drawing, 220.0, 170.0);
    constexpr double dpi = 254.0;
    const auto at = [&](const Vector2& p) { return onPaper(placePage(drawing, page, dpi), p, dpi); };

    // Fitted and centred: 200 x 150 mm of room for 100 x 50 units.
    EXPECT_NEAR(placePage(drawing, page, dpi).scale, 2.0, 1e-9);
    EXPECT_LT(at({50, 25}).distance_to({110, 85}), 1e-6);
    EXPECT_LT(at({0, 0}).distance_to({10, 35}), 1e-6);

    // To scale, from the corner of the margins, with an offset.
    page.setup.scaleType = 17;
    page.setup.scalePaper = 1.0;
    page.setup.scaleDrawing = 2.0;
    page.setup.centerOnPage = false;
    page.setup.offsetX = 5.0;
    page.setup.offsetY = 7.0;
    EXPECT_LT(at({0, 0}).distance_to({15, 17}), 1e-6);
    EXPECT_LT(at({100, 50}).distance_to({65, 42}), 1e-6);
    page.upsideDown = true;
    EXPECT_LT(at({0, 0}).distance_to({205, 153}), 1e-6);
    page.upsideDown = false;

    // Only the window is shown.
    page.setup.plotArea = static_cast<std::int32_t>(PlotArea::Window);
    page.setup.scaleType = 0;
    page.setup.centerOnPage = true;
    page.window = {{0, 0}, {20, 10}};
    const PagePlacement window = placePage(drawing, page, dpi);
    EXPECT_NEAR(window.scale, 10.0, 1e-9);
    EXPECT_NEAR(window.clip.width(), 2000.0, 1e-6);
    EXPECT_NEAR(window.clip.height(), 1000.0, 1e-6);

    // Nothing that a setup says breaks a page.
    page.setup.paperWidth = std::numeric_limits<double>::quiet_NaN();
    page.setup.paperHeight = 1e30;
    page.setup.marginLeft = 1e9;
    page.setup.scaleType = 17;
    page.setup.scaleDrawing = 0.0;
    page.window = {};
    const PagePlacement odd = placePage(drawing, page, dpi);
    EXPECT_TRUE(std::isfinite(odd.scale) && odd.scale > 0.0);
    EXPECT_LE(odd.height, 5000.0);
}

TEST(Plot, PdfKeepsSizeLinesAndText) {
    Drawing drawing;
    addBox(drawing.modelSpace(), 0, 0, 100, 50);
    addText(drawing, "Plotted text", "DejaVu Sans");
    Layout& second = *drawing.addLayout("Second");
    second.pageSetup.paperWidth = 210.0;
    second.pageSetup.paperHeight = 297.0;
    addBox(second.entities, 10, 10, 200, 287);
    const std::vector<PlotPage> pages{modelPage(drawing, 420.0, 297.0), plotPage(drawing, "Second")};
    const QByteArray pdf = plot(drawing, pages, PlotFormat::Pdf);
    ASSERT_TRUE(pdf.startsWith("%PDF-"));
    EXPECT_EQ(pdf.count("/MediaBox"), 2);
    // A3 and A4 in points, rounded.
    EXPECT_TRUE(pdf.contains("/MediaBox [0 0 1191.000000 842.000000]"));
    EXPECT_TRUE(pdf.contains("/MediaBox [0 0 595.000000 842.000000]"));
    EXPECT_TRUE(pdf.contains("/ToUnicode"));  // the letters are letters
    EXPECT_FALSE(pdf.contains("/Subtype /Image"));

    // A stroke font is lines.
    Drawing strokes;
    addText(strokes, "Plotted text", "txt.shx");
    const std::vector<PlotPage> one{modelPage(strokes, 420.0, 297.0)};
    EXPECT_FALSE(plot(strokes, one, PlotFormat::Pdf).contains("/ToUnicode"));
    EXPECT_TRUE(plot(strokes, {}, PlotFormat::Pdf).isEmpty());
}

TEST(Plot, SvgIsInMillimetresWithText) {
    Drawing drawing;
    addBox(drawing.modelSpace(), 0, 0, 100, 50);
    addText(drawing, "A<B & \"C\"", "DejaVu Sans");
    drawing.modelSpace().append(std::make_unique<LineEntity>(Vector2{0, 0}, Vector2{100, 50})).color = Color::index(1);
    std::vector<PlotPage> pages{modelPage(drawing, 220.0, 170.0)};
    const QByteArray svg = plot(drawing, pages, PlotFormat::Svg);
    EXPECT_TRUE(svg.contains("width=\"220mm\" height=\"170mm\" viewBox=\"0 0 220 170\""));
    EXPECT_TRUE(svg.contains(">A&lt;B &amp; &quot;C&quot;</text>"));
    EXPECT_TRUE(svg.contains("d=\"M10 135L210 35\"")) << svg.left(3000).constData();
    EXPECT_TRUE(svg.contains("stroke=\"#ff0000\""));
    EXPECT_EQ(svg.count("<g"), svg.count("</g>"));

    pages.front().setup.plotStyleTable = "monochrome.ctb";
    EXPECT_FALSE(plot(drawing, pages, PlotFormat::Svg).contains("#ff0000"));
    pages.front().setup.plotStyleTable = "Grayscale.ctb";
    EXPECT_TRUE(plot(drawing, pages, PlotFormat::Svg)
                    .contains(QColor(qGray(255, 0, 0), qGray(255, 0, 0), qGray(255, 0, 0)).name().toUtf8()));
}

/// A unit of a sheet in inches is an inch: on the plot, in pictures, and in what a viewport's picture is laid on.
TEST(Plot, SheetsInInches) {
    Drawing drawing;
    Layout& layout = *drawing.layouts().front();
    layout.pageSetup.paperUnits = 0;
    layout.pageSetup.paperWidth = 279.4;
    layout.pageSetup.paperHeight = 215.9;
    EXPECT_EQ(layout.pageSetup.sheet().max, Vector2(11.0, 8.5));
    layout.entities.append(std::make_unique<LineEntity>(Vector2{1, 1}, Vector2{10, 1}));
    std::vector<PlotPage> pages{plotPage(drawing, layout.name)};
    const QByteArray svg = plot(drawing, pages, PlotFormat::Svg);
    EXPECT_TRUE(svg.contains("width=\"279.4mm\""));
    EXPECT_TRUE(svg.contains("d=\"M25.4 190.5L254 190.5\"")) << svg.left(3000).constData();
    // Lineweights are in millimetres, and 1:1 scales nothing.
    layout.entities.first()->lineweight = 100;
    pages.front().scaleLineweights = true;
    EXPECT_TRUE(plot(drawing, pages, PlotFormat::Svg).contains("stroke-width=\"1\""));
    layout.entities.first()->lineweight = -1;
    RenderRequest request;
    request.width = 1100;
    request.height = 850;
    request.layout = &layout;
    QImage image(1100, 850, QImage::Format_RGB32);
    QPainter painter(&image);
    render(painter, drawing, request);
    painter.end();
    EXPECT_EQ(image.pixelColor(500, 750).lightness() < 128, image.pixelColor(500, 700).lightness() > 128);
    // Model space takes the first sheet's paper, and a scale in its units.
    pages = {plotPage(drawing, {})};
    EXPECT_EQ(pages.front().setup.paperUnits, 0);
    pages.front().setup.scaleType = 16;
    EXPECT_DOUBLE_EQ(placePage(drawing, pages.front(), 96.0).scale, 25.4);
}

TEST(Plot, LineweightsAndTransparencyFollowTheSetup) {
    Drawing drawing;
    auto& line = drawing.modelSpace().append(std::make_unique<LineEntity>(Vector2{0, 0}, Vector2{100, 50}));
    line.lineweight = 100;
    line.transparency = 45;
    std::vector<PlotPage> pages{modelPage(drawing, 220.0, 170.0)};
    PageSetup& setup = pages.front().setup;
    const auto svg = [&] { return plot(drawing, pages, PlotFormat::Svg); };
    EXPECT_TRUE(svg().contains("stroke-width=\"1\""));
    EXPECT_FALSE(svg().contains("stroke-opacity"));
    setup.plotTransparency = true;
    EXPECT_TRUE(svg().contains("stroke-opacity=\"0.5\""));
    pages.front().scaleLineweights = true;  // at 2 mm a unit
    EXPECT_TRUE(svg().contains("stroke-width=\"2\""));
    setup.plotWithLineweights = false;
    EXPECT_TRUE(svg().contains("stroke-width=\"0.0212\""));  // a dot
}

TEST(Plot, PngHasTheSetupsResolution) {
    Drawing drawing;
    addBox(drawing.modelSpace(), 0, 0, 100, 50);
    std::vector<PlotPage> pages{modelPage(drawing, 254.0, 127.0)};
    pages.front().setup.dpi = 100;
    const QImage image = QImage::fromData(plot(drawing, pages, PlotFormat::Png));
    EXPECT_EQ(image.size(), QSize(1000, 500));
    pages.front().setup.paperWidth = pages.front().setup.paperHeight = 5000.0;
    pages.front().setup.dpi = 2400;
    EXPECT_TRUE(plot(drawing, pages, PlotFormat::Png).isEmpty());
}

TEST(Plot, PaperSizesAreKnownByManyNames) {
    const auto size = [](const char* name) { return parsePaperSize(name).value_or(Vector2{}); };
    for (const char* name : {"A3", "iso a3", "ISO_A3_(420.00_x_297.00_MM)", "ISO full bleed A3 (420.00 x 297.00 MM)"})
        EXPECT_EQ(size(name), (Vector2{420, 297})) << name;
    EXPECT_EQ(size("Letter_(8.50_x_11.00_Inches)"), (Vector2{8.5 * 25.4, 11.0 * 25.4}));
    EXPECT_EQ(size("500 x 300"), (Vector2{500, 300}));
    for (const char* name : {"", "A33", "Foo", "0 x 0", "1e30 x 5", "nan x nan", " X "})
        EXPECT_FALSE(parsePaperSize(name)) << name;
}

/// The window of a layout takes the shape of the entity that bounds it.
TEST(Plot, ViewportsAreClippedByTheirBorder) {
    Drawing drawing;
    auto wide = std::make_unique<PolylineEntity>();
    wide->vertices = {{-500, 0}, {500, 0}};
    wide->bulges = {0.0, 0.0};
    wide->startWidths = wide->endWidths = {1000.0, 1000.0};
    wide->color = Color::index(1);
    drawing.modelSpace().append(std::move(wide));
    Layout& layout = *drawing.layouts().front();
    layout.pageSetup.paperWidth = layout.pageSetup.paperHeight = 200;
    auto border = std::make_unique<CircleEntity>();
    border->center = {100, 100};
    border->radius = 50;
    Entity& circle = layout.entities.append(std::move(border));
    auto viewport = std::make_unique<ViewportEntity>();
    viewport->vpId = 2;
    viewport->center = {100, 100};
    viewport->width = viewport->height = 100;
    viewport->clipHandle = circle.handle();
    layout.entities.append(std::move(viewport));
    std::vector<PlotPage> pages{plotPage(drawing, layout.name)};
    pages.front().setup.dpi = 127;  // 5 dots a millimetre
    const QImage image = QImage::fromData(plot(drawing, pages, PlotFormat::Png));
    ASSERT_EQ(image.size(), QSize(1000, 1000));
    const auto at = [&](double x, double y) { return image.pixelColor(int(5 * x), 999 - int(5 * y)); };
    EXPECT_EQ(at(100, 100), QColor(255, 0, 0));
    EXPECT_EQ(at(130, 130), QColor(255, 0, 0));
    EXPECT_EQ(at(140, 140), QColor(Qt::white));  // within the frame, outside the circle
    EXPECT_EQ(at(50.4, 60), QColor(Qt::white));  // no frame is drawn
}

}  // namespace
}  // namespace kova::render
