#include <gtest/gtest.h>

#include <QPainter>

#include "engine/kinds/all.hpp"
#include "engine/model/view_frame.hpp"
#include "math/angles.hpp"
#include "render/plot.hpp"
#include "render/renderer.hpp"

// Pictures of the model as it is seen from a direction.

namespace kova::render {
namespace {

using namespace engine;
using math::Vector2;
using math::Vector3;

void addLine(Drawing& drawing, const Vector3& a, const Vector3& b, int color) {
    drawing.modelSpace().append(std::make_unique<LineEntity>(a, b)).color = Color::index(color);
}

/// What the current view shows, 200 x 200 pixels for a height of 200.
QImage picture(Drawing& drawing, Area area = Area::Display) {
    QImage image(200, 200, QImage::Format_ARGB32_Premultiplied);
    RenderRequest request;
    request.width = request.height = 200.0;
    request.dpi = 25.4;
    request.area = area;
    QPainter painter(&image);
    render(painter, drawing, request);
    return image;
}

/// True when something of the colour lies within two pixels of a place, counted from the middle, y up.
bool shows(const QImage& image, double x, double y, const QColor& color) {
    for (int dx = -2; dx <= 2; ++dx)
        for (int dy = -2; dy <= 2; ++dy) {
            const QPoint p(int(100 + x) + dx, int(100 - y) + dy);
            if (!image.valid(p)) continue;
            const QColor c = image.pixelColor(p);
            if (std::abs(c.red() - color.red()) + std::abs(c.green() - color.green()) +
                    std::abs(c.blue() - color.blue()) <
                300)  // a thin line may cover half of two pixels; paper is 510 away
                return true;
        }
    return false;
}

const QColor kRed(255, 0, 0);
const QColor kGreen(0, 255, 0);
const QColor kBlue(0, 0, 255);

/// The axes of the world from the origin, 60 long: x red, y green, z blue.
void drawAxes(Drawing& drawing) {
    addLine(drawing, {0, 0, 0}, {60, 0, 0}, 1);
    addLine(drawing, {0, 0, 0}, {0, 60, 0}, 3);
    addLine(drawing, {0, 0, 0}, {0, 0, 60}, 5);
    NamedView& view = drawing.currentView;
    view = {};
    view.width = view.height = 200.0;
}

TEST(ViewPictures, TheCurrentViewHasDirectionTargetAndTwist) {
    Drawing drawing;
    drawAxes(drawing);
    QImage image = picture(drawing);
    EXPECT_TRUE(shows(image, 50, 0, kRed) && shows(image, 0, 50, kGreen));
    EXPECT_FALSE(shows(image, 0, -40, kBlue) || shows(image, 0, 70, kBlue));

    NamedView& view = drawing.currentView;
    view.viewDirection = {0, -1, 0};
    view.upHint = {0, 0, 1};
    image = picture(drawing);
    EXPECT_TRUE(shows(image, 50, 0, kRed) && shows(image, 0, 50, kBlue));

    view.viewDirection = {1, 1, 1};
    view.upHint = viewUp(view.viewDirection, 0.0);
    image = picture(drawing);
    const double along = 50 / std::sqrt(2.0);
    const double down = -50 / std::sqrt(6.0);
    EXPECT_TRUE(shows(image, -along, down, kRed));
    EXPECT_TRUE(shows(image, along, down, kGreen));
    EXPECT_TRUE(shows(image, 0, 50 * std::sqrt(2.0 / 3.0), kBlue));
    view.target = {0, 0, 60};
    EXPECT_TRUE(shows(picture(drawing), 0, -40 * std::sqrt(2.0 / 3.0), kBlue));

    // The plan, turned and moved.
    view.viewDirection = {0, 0, 1};
    view.upHint = viewUp({0, 0, 1}, math::kPi / 2);
    view.target = {10, 20, 0};
    view.center = {5, 0};
    image = picture(drawing);
    // (x, y) shows at (20 - y - 5, x - 10).
    EXPECT_TRUE(shows(image, 15, 30, kRed));
    EXPECT_TRUE(shows(image, -25, -10, kGreen));
    // All of it fits a picture of the extents from any direction.
    view.viewDirection = {0, -1, 0};
    view.upHint = {0, 0, 1};
    image = picture(drawing, Area::Extents);
    EXPECT_TRUE(shows(image, 90, -95, kRed) && shows(image, -95, 90, kBlue));
}

TEST(ViewPictures, ViewportsLookFromTheirOwnDirections) {
    Drawing drawing;
    drawAxes(drawing);
    Layout& layout = *drawing.layouts().front();
    layout.pageSetup.paperWidth = layout.pageSetup.paperHeight = 200;
    ViewportEntity viewport;
    viewport.vpId = 2;
    viewport.center = {50, 100};
    viewport.width = viewport.height = 80;
    viewport.viewScale = 0.5;
    layout.entities.append(std::make_unique<ViewportEntity>(viewport));
    viewport.center = {150, 100};
    viewport.viewDirection = {0, -1, 0};
    viewport.viewTwist = math::kPi;
    viewport.vpId = 3;
    const Entity& border = layout.entities.append(std::make_unique<CircleEntity>(Vector2{150, 100}, 20.0));
    viewport.clipHandle = border.handle();
    viewport.width = viewport.height = 40;
    layout.entities.append(std::make_unique<ViewportEntity>(viewport));
    drawing.tileMode = false;
    drawing.activeLayoutName = layout.name;
    const QImage image = renderImage(drawing, 200, 200);
    EXPECT_TRUE(shows(image, -50 + 25, 0, kRed) && shows(image, -50, 25, kGreen));  // the plan
    EXPECT_TRUE(shows(image, 50 - 15, 0, kRed) && shows(image, 50, -15, kBlue));    // the front, upside down
    EXPECT_FALSE(shows(image, 50 - 26, 0, kRed) || shows(image, 50, -26, kBlue));   // within the circle only
    EXPECT_FALSE(shows(image, 50, 15, kGreen));

    // Every format cuts it off there.
    const std::vector<PlotPage> pages{plotPage(drawing, layout.name)};
    EXPECT_GE(plot(drawing, pages, PlotFormat::Svg).count("<clipPath"), 2);
    EXPECT_TRUE(plot(drawing, pages, PlotFormat::Pdf).startsWith("%PDF-"));
}

TEST(ViewPictures, NothingThatViewsSayStopsThePicture) {
    Drawing drawing;
    drawAxes(drawing);
    const double nan = std::nan("");
    for (const Vector3& direction :
         {Vector3{}, Vector3{nan, 0, 1}, Vector3{1e300, 1e300, 1e300}, Vector3{0, 0, -1e-300}})
        for (const double v : {0.0, nan, 1e300}) {
            drawing.currentView.viewDirection = direction;
            drawing.currentView.target = {v, 0, v};
            drawing.currentView.upHint = {v, v, v};
            picture(drawing);
            picture(drawing, Area::Extents);
        }
}

}  // namespace
}  // namespace kova::render
