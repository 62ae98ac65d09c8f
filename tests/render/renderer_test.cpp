#include <gtest/gtest.h>

#include "engine/kinds/all.hpp"
#include "math/angles.hpp"
#include "picture.hpp"

namespace kova::render {
namespace {

using namespace engine;
using math::Vector2;

std::unique_ptr<CircleEntity> circle(const Vector2& center, double radius) {
    auto e = std::make_unique<CircleEntity>();
    e->center = center;
    e->radius = radius;
    return e;
}

TEST(Renderer, ImageSetUpAndFit) {
    Drawing drawing;
    QImage small = renderImage(drawing, 10, 10);
    EXPECT_EQ(small.size(), QSize(16, 16));
    EXPECT_EQ(small.format(), QImage::Format_ARGB32_Premultiplied);
    EXPECT_EQ(small.pixelColor(8, 8), QColor(Qt::white));
    // One point alone: no division by zero.
    drawing.modelSpace().append(std::make_unique<LineEntity>(Vector2{5, 5}, Vector2{5, 5}));
    renderImage(drawing, 100, 100);

    // A square of 100 fits 200 x 100 pixels with 2.5 % on every side: its left edge lies at 100 - 50 / 1.05.
    Drawing square;
    const Vector2 corners[] = {{0, 0}, {100, 0}, {100, 100}, {0, 100}};
    for (int i = 0; i < 4; ++i) square.modelSpace().append(std::make_unique<LineEntity>(corners[i], corners[(i + 1) % 4]));
    const QImage image = renderImage(square, 200, 100);
    int first = -1;
    for (int x = 0; x < 200 && first < 0; ++x)
        if (image.pixelColor(x, 50).lightness() < 128) first = x;
    EXPECT_NEAR(first, 100.0 - 50.0 / 1.05, 1.0);
}

TEST(Renderer, ColoursLayersAndTransparency) {
    Picture picture;
    const auto line = [&](double y) -> LineEntity& { return picture.add(LineEntity(Vector2{0, y}, Vector2{400, y})); };
    line(50).color = Color::index(1);
    line(100).color = Color::index(7);
    line(150).color = Color::rgb(255, 255, 255);
    line(200).layer = "Red";
    Layer red;
    red.name = "Red";
    red.color = Color::index(1);
    picture.drawing.layers.add(red);
    for (const char* name : {"Off", "Frozen", "Hidden"}) {
        Layer& layer = picture.drawing.layers.ensure(name);
        layer.on = std::string(name) != "Off";
        layer.frozen = std::string(name) == "Frozen";
        layer.plottable = std::string(name) != "Hidden";
    }
    line(250).layer = "Off";
    line(270).layer = "Frozen";
    line(290).layer = "Hidden";
    line(310).visible = false;
    line(330).transparency = 90;
    line(350).transparency = 45;
    for (auto& e : picture.drawing.modelSpace()) e.lineweight = 200;
    picture.paint(127.0);  // 2 mm are 10 pixels
    EXPECT_EQ(picture.at(200, 50), QColor(255, 0, 0));
    EXPECT_EQ(picture.at(200, 100), QColor(0, 0, 0));
    EXPECT_EQ(picture.at(200, 150), QColor(255, 255, 255));
    EXPECT_EQ(picture.at(200, 200), QColor(255, 0, 0));
    for (const double y : {250.0, 270.0, 290.0, 310.0, 330.0}) EXPECT_EQ(picture.ink(200, y, 3), 0.0) << y;
    EXPECT_NEAR(picture.at(200, 350).lightnessF(), 0.5, 0.02);
    // Ten pixels wide.
    EXPECT_GT(picture.ink(200, 104, 0), 0.5);
    EXPECT_LT(picture.ink(200, 107, 0), 0.1);
}

TEST(Renderer, CurvesLieWhereTheyShould) {
    Picture picture;
    picture.add(circle({200, 200}, 150));
    auto arc = std::make_unique<ArcEntity>();
    arc->center = {200, 200};
    arc->radius = 100;
    arc->startAngle = 0.0;
    arc->endAngle = math::kPi / 2;
    picture.add(std::move(arc));
    auto bulged = std::make_unique<PolylineEntity>();
    bulged->vertices = {{50, 20}, {350, 20}};
    bulged->bulges = {-1.0 / 3.0, 0.0};  // below the chord of 300: sagitta 50
    picture.add(std::move(bulged));
    picture.paint();
    for (int i = 0; i < 64; ++i) {
        const Vector2 d = Vector2::from_angle(i * math::kTwoPi / 64);
        EXPECT_GT(picture.ink(200 + 150 * d.x, 200 + 150 * d.y), 0.4) << i;
        const bool onArc = i <= 16;
        if (i != 0 && i != 16 && i != 17 && i != 63) EXPECT_EQ(picture.ink(200 + 100 * d.x, 200 + 100 * d.y, 2) > 0.3, onArc) << i;
    }
    EXPECT_GT(picture.ink(200, 70), 0.4);
}

TEST(Renderer, WidePolylinesAreFilledAndTapered) {
    Picture picture;
    auto wide = std::make_unique<PolylineEntity>();
    wide->vertices = {{50, 50}, {350, 50}, {350, 350}};
    wide->startWidths = {40, 40, 40};
    wide->endWidths = {40, 40, 40};
    picture.add(std::move(wide));
    auto taper = std::make_unique<PolylineEntity>();
    taper->vertices = {{50, 200}, {250, 200}};
    taper->startWidths = {60, 0};
    taper->endWidths = {0, 0};
    picture.add(std::move(taper));
    picture.paint();
    EXPECT_GT(picture.coverage(60, 35, 340, 65), 0.99);
    EXPECT_GT(picture.ink(367, 33, 0), 0.9);  // the mitred corner
    EXPECT_LT(picture.coverage(60, 75, 320, 100), 0.01);
    EXPECT_NEAR(picture.coverage(50, 160, 250, 240), 0.5 * 60 * 200 / (200.0 * 80.0), 0.02);
    picture.drawing.integerVariables["FILLMODE"] = 0;
    picture.paint();
    EXPECT_LT(picture.coverage(60, 40, 340, 60), 0.2);
}

TEST(Renderer, DashesAreCentredAndScaled) {
    Picture picture;
    Linetype dashed;
    dashed.name = "D";
    dashed.pattern = {20, -20};
    picture.drawing.linetypes.add(dashed);
    LineEntity& line = picture.add(LineEntity(Vector2{20, 200}, Vector2{380, 200}));
    line.linetype = "D";
    picture.add(LineEntity(Vector2{100, 100}, Vector2{130, 100})).linetype = "D";
    picture.paint();
    // 360 long: 8 rounds and a dash of 20 leave 20, half for each end: dashes 0-30, 50-70, ...
    for (const double x : {2.0, 28.0, 60.0, 100.0, 180.0, 340.0, 358.0}) EXPECT_GT(picture.ink(20 + x, 200, 0), 0.3) << x;
    for (const double x : {40.0, 80.0, 120.0, 320.0}) EXPECT_LT(picture.ink(20 + x, 200), 0.1) << x;
    // Too short for the pattern: continuous.
    EXPECT_GT(picture.ink(115, 100, 0), 0.3);
    picture.drawing.realVariables["LTSCALE"] = 2.0;
    picture.paint();
    // 360 long, round 80, dash 40: 4 rounds and a dash fit exactly: dashes 0-40, 80-120, ...
    EXPECT_GT(picture.ink(20 + 35, 200, 0), 0.3);
    EXPECT_LT(picture.ink(20 + 60, 200), 0.1);
}

TEST(Renderer, HatchesFillTheirAreas) {
    Picture picture;
    const auto hatch = [&](const char* pattern, double x) -> HatchEntity& {
        auto e = std::make_unique<HatchEntity>();
        e->patternName = pattern;
        HatchLoop loop;
        loop.vertices = {{x, 50}, {x + 100, 50}, {x + 100, 350}, {x, 350}};
        e->loops.push_back(loop);
        return picture.add(std::move(e));
    };
    HatchEntity& solid = hatch("SOLID", 20);
    HatchLoop hole;
    hole.inner = true;
    hole.vertices = {{50, 150}, {90, 150}, {90, 250}, {50, 250}};
    solid.loops.push_back(hole);
    hatch("ANSI31", 150).patternScale = 5.0;
    hatch("ANSI31", 280).patternScale = 1e-7;  // far too dense: falls back to solid
    picture.paint();
    EXPECT_GT(picture.coverage(22, 52, 118, 148), 0.99);
    EXPECT_LT(picture.coverage(52, 152, 88, 248), 0.01);
    // Lines of one pixel, 3.175 * 5 apart.
    EXPECT_NEAR(picture.coverage(155, 55, 245, 345), 1.0 / 15.875, 0.035);
    EXPECT_GT(picture.coverage(285, 55, 375, 345), 0.99);
}

TEST(Renderer, TextStandsWhereItIsAligned) {
    Picture picture;
    auto text = std::make_unique<TextEntity>();
    text->position = {50, 200};
    text->height = 40;
    text->content = "HHH";
    picture.add(std::move(text));
    picture.paint();
    EXPECT_GT(picture.coverage(50, 200, 90, 240), 0.02);
    EXPECT_EQ(picture.coverage(50, 245, 300, 300), 0.0);
    EXPECT_EQ(picture.coverage(50, 120, 300, 195), 0.0);
}

TEST(Renderer, BlocksInheritAndFrozenContentIsHidden) {
    Picture picture;
    Block* block = picture.drawing.addBlock("B");
    auto onZero = std::make_unique<LineEntity>(Vector2{0, 0}, Vector2{100, 0});
    auto byBlock = std::make_unique<LineEntity>(Vector2{0, 10}, Vector2{100, 10});
    byBlock->color = Color::byBlock();
    auto frozen = std::make_unique<LineEntity>(Vector2{0, 20}, Vector2{100, 20});
    frozen->layer = "Cold";
    for (auto* e : {onZero.get(), byBlock.get(), frozen.get()}) e->lineweight = 200;
    block->entities.append(std::move(onZero));
    block->entities.append(std::move(byBlock));
    block->entities.append(std::move(frozen));
    picture.drawing.layers.ensure("Cold").frozen = true;
    picture.drawing.layers.ensure("Green").color = Color::index(3);
    auto reference = std::make_unique<BlockReferenceEntity>();
    reference->blockName = "B";
    reference->insert = {50, 100};
    reference->scaleX = reference->scaleY = 2.0;
    reference->layer = "Green";
    reference->color = Color::index(1);
    picture.add(std::move(reference));
    picture.paint(127.0);
    EXPECT_EQ(picture.at(150, 100), QColor(0, 255, 0));
    EXPECT_EQ(picture.at(150, 120), QColor(255, 0, 0));
    EXPECT_EQ(picture.ink(150, 140, 2), 0.0);
}

TEST(Renderer, PaperSpaceShowsModelThroughViewports) {
    Drawing drawing;
    drawing.modelSpace().append(std::make_unique<LineEntity>(Vector2{0, 0}, Vector2{1000, 0})).lineweight = 200;
    Layout& layout = *drawing.layouts().front();
    layout.pageSetup.paperWidth = 400;
    layout.pageSetup.paperHeight = 200;
    auto viewport = std::make_unique<ViewportEntity>();
    viewport->vpId = 2;
    viewport->center = {100, 100};
    viewport->width = 100;
    viewport->height = 100;
    viewport->viewTarget = {500, 0};
    viewport->viewScale = 0.05;
    layout.entities.append(std::move(viewport));
    drawing.tileMode = false;
    drawing.activeLayoutName = layout.name;
    const QImage image = renderImage(drawing, 800, 400);  // two pixels a millimetre
    const auto dark = [&](double x, double y) { return image.pixelColor(int(2 * x), 399 - int(2 * y)).lightness() < 128; };
    EXPECT_TRUE(dark(80, 100));
    EXPECT_TRUE(dark(120, 100));
    EXPECT_FALSE(dark(60, 100));   // 1000 * 0.05 = 50 wide: from 75 to 125
    EXPECT_FALSE(dark(140, 100));
    EXPECT_TRUE(dark(50.25, 60) || dark(50, 60) || dark(49.75, 60));  // the viewport's frame
}

TEST(Renderer, NothingThatDataSayStopsThePicture) {
    Picture picture;
    const double inf = std::numeric_limits<double>::infinity();
    const double nan = std::numeric_limits<double>::quiet_NaN();
    for (const double v : {1e15, -1e300, 1e-300, inf, nan}) {
        picture.add(LineEntity(Vector2{v, 0}, Vector2{100, v}));
        picture.add(circle({v, 0}, 10));
        picture.add(circle({0, 0}, v));
        auto text = std::make_unique<TextEntity>();
        text->height = v;
        text->content = "TEXT";
        picture.add(std::move(text));
        auto polyline = std::make_unique<PolylineEntity>();
        polyline->vertices = {{0, 0}, {v, v}, {100, 100}};
        polyline->bulges = {v, 1.0, 0.0};
        polyline->startWidths = polyline->endWidths = {v, 1.0, 1.0};
        picture.add(std::move(polyline));
    }
    Linetype fine;
    fine.name = "Fine";
    fine.pattern = {1e-9, -1e-9};
    picture.drawing.linetypes.add(fine);
    Linetype dense;
    dense.name = "Dense";
    dense.pattern = {1, -1};
    picture.drawing.linetypes.add(dense);
    picture.add(LineEntity(Vector2{-1e9, 10}, Vector2{1e9, 10})).linetype = "Fine";
    picture.add(LineEntity(Vector2{-1e9, 20}, Vector2{1e9, 20})).linetype = "Dense";
    picture.add(circle({200, 200}, 100));
    picture.paint();
    EXPECT_GT(picture.ink(300, 200), 0.3);
    renderImage(picture.drawing, 100, 100);
}

}  // namespace
}  // namespace kova::render
