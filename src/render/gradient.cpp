#include "render/gradient.hpp"

#include <QImage>

#include "engine/model/name.hpp"
#include "math/angles.hpp"

namespace kova::render {

using math::Vector2;

namespace {
// Colours change slowly: this many steps each way cannot be told from a smooth run.
constexpr int kSteps = 192;
}  // namespace

double gradientPart(std::string_view kind, double u, double v) {
    const bool inverted = kind.starts_with("INV");
    const std::string_view shape = inverted ? kind.substr(3) : kind;
    double part;
    if (shape == "CYLINDER") {
        part = std::cos(std::clamp(u, -1.0, 1.0) * math::kPi / 2.0);
    } else if (shape == "SPHERICAL") {
        part = 1.0 - std::min(1.0, std::hypot(u, v));
    } else if (shape == "HEMISPHERICAL") {
        // Half a sphere that stands on the lower edge.
        part = 1.0 - std::min(1.0, std::hypot(u, (v + 1.0) / 2.0));
    } else if (shape == "CURVED") {
        // A band bent round the lower edge: the first colour below, the second above.
        part = std::clamp((v + 1.0) / 2.0 + 0.5 * u * u, 0.0, 1.0);
    } else {
        return std::clamp((u + 1.0) / 2.0, 0.0, 1.0);
    }
    return inverted ? 1.0 - part : part;
}

QBrush gradientBrush(const engine::GradientFill& gradient, const math::Bounds2& box, const View& view,
                     const QColor& from, const QColor& to) {
    const std::string kind = engine::upperCase(gradient.name);
    const double angle = std::isfinite(gradient.angle) ? gradient.angle : 0.0;
    const double shift = std::isfinite(gradient.shift) ? std::clamp(gradient.shift, 0.0, 1.0) : 0.0;
    const Vector2 d = Vector2::from_angle(angle);
    const Vector2 n = d.perpendicular();
    // Half the size of the turned square that holds the area.
    const double reachU = std::max((std::abs(d.x) * box.width() + std::abs(d.y) * box.height()) / 2.0, 1e-9);
    const double reachV = std::max((std::abs(n.x) * box.width() + std::abs(n.y) * box.height()) / 2.0, 1e-9);

    QImage image(kSteps, kSteps, QImage::Format_RGB32);
    const auto mix = [](int a, int b, double t) { return static_cast<int>(std::lround(a + (b - a) * t)); };
    for (int y = 0; y < kSteps; ++y) {
        auto* row = reinterpret_cast<QRgb*>(image.scanLine(y));
        for (int x = 0; x < kSteps; ++x) {
            // One step on every side lies outside, so that the edges do not mix with the opposite ones.
            const double u = (x + 0.5 - kSteps / 2.0) / (kSteps / 2.0 - 1.0) + 0.5 * shift;
            const double v = -(y + 0.5 - kSteps / 2.0) / (kSteps / 2.0 - 1.0) - 0.5 * shift;
            const double t = gradientPart(kind, u, v);
            row[x] =
                qRgb(mix(from.red(), to.red(), t), mix(from.green(), to.green(), t), mix(from.blue(), to.blue(), t));
        }
    }
    const Vector2 center = view.map(box.center());
    const Vector2 along = view.mapDirection(d * reachU) / (kSteps / 2.0 - 1.0);
    const Vector2 up = view.mapDirection(n * reachV) / (kSteps / 2.0 - 1.0);
    QTransform place(along.x, along.y, -up.x, -up.y, center.x, center.y);
    place.translate(-kSteps / 2.0, -kSteps / 2.0);
    QBrush brush(image);
    brush.setTransform(place);
    return brush;
}

}  // namespace kova::render
