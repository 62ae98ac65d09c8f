#include "engine/entities/shape.hpp"

#include <filesystem>
#include "engine/model/drawing.hpp"
#include "engine/model/object_plane.hpp"
#include "engine/text/text_line.hpp"
#include "engine/fonts/fonts.hpp"
#include "engine/libraries/shape_files.hpp"
#include "math/angles.hpp"

namespace kova::engine {

using math::Matrix4;
using math::Vector2;

namespace {

constexpr double kNameHeight = 0.5;  ///< largest height of the name, in shape sizes
constexpr double kMargin = 0.1;
constexpr double kMaxOblique = 85.0 * math::kDegree;

/// The corners of the unit square in the shape's plane.
std::array<Vector2, 4> corners(const Matrix4& m) {
    return {m.transform_point(Vector2{0, 0}), m.transform_point(Vector2{1, 0}), m.transform_point(Vector2{1, 1}),
            m.transform_point(Vector2{0, 1})};
}

}  // namespace

Matrix4 ShapeEntity::matrix() const {
    const double slant = std::isfinite(oblique) ? std::tan(std::clamp(oblique, -kMaxOblique, kMaxOblique)) : 0.0;
    const double factor = std::isfinite(widthFactor) && widthFactor != 0.0 ? widthFactor : 1.0;
    const double scale = std::isfinite(size) ? size : 0.0;
    const Vector2 along = Vector2::from_angle(std::isfinite(rotation) ? rotation : 0.0);
    const Vector2 x = along * (scale * factor);
    const Vector2 y = (along.perpendicular() + along * (factor < 0.0 ? -slant : slant)) * scale;
    Matrix4 m;
    m(0, 0) = x.x;
    m(0, 1) = y.x;
    m(0, 3) = position.x;
    m(1, 0) = x.y;
    m(1, 1) = y.y;
    m(1, 3) = position.y;
    return m;
}

Path ShapeEntity::outline() const {
    const Drawing* home = drawing();
    const std::string folder = home != nullptr && !home->fileName.empty()
                                   ? std::filesystem::path(home->fileName).parent_path().string()
                                   : std::string();
    return findShape(file, folder, number, name);
}

math::Bounds2 ShapeEntity::bounds() const {
    math::Bounds2 box;
    if (!position.is_finite()) return box;
    if (const Path shape = outline(); !shape.empty()) {
        Path placed;
        transformPath(shape, matrix(), placed);
        const math::Bounds2 own = pathBounds(placed);
        for (const Vector2& c : {own.min, own.max, Vector2{own.min.x, own.max.y}, Vector2{own.max.x, own.min.y}})
            if (!own.is_empty()) box.expand(planFromObject(*this, c));
        if (!box.is_empty()) return box;
    }
    for (const Vector2& c : corners(matrix())) box.expand(planFromObject(*this, c));
    return box;
}

void ShapeEntity::transform(const Matrix4& m) {
    const Matrix4 plane = transformObjectPlane(*this, m);
    position = plane.transform_point(position);
    TextFrame frame{rotation, size, std::abs(widthFactor), oblique, widthFactor < 0.0 ? kTextBackward : 0};
    transformTextFrame(frame, plane);
    rotation = frame.rotation;
    size = frame.height;
    oblique = frame.oblique;
    widthFactor = (frame.generation & kTextBackward) != 0 ? -frame.widthFactor : frame.widthFactor;
}

Vector2 ShapeEntity::nearestPoint(const Vector2& p) const {
    if (!outline().empty()) return nearestOnOutline(*this, p);
    std::array<Vector2, 4> box = corners(matrix());
    for (Vector2& c : box) c = planFromObject(*this, c);
    return nearestInQuad(box, p);
}

double ShapeEntity::distanceTo(const Vector2& p) const { return p.distance_to(nearestPoint(p)); }

std::vector<Vector2> ShapeEntity::gripPoints() const { return {planFromObject(*this, position)}; }

void ShapeEntity::moveGrip(std::size_t index, const Vector2& to) {
    if (index != 0 || !to.is_finite()) return;
    if (const auto p = objectFromPlan(*this, to)) position = *p;
}

void ShapeEntity::describe(FieldVisitor& v) {
    v.point("", position);
    v.text("name", name);
    v.integer("number", number);
    v.text("file", file);
    v.length("size", size);
    v.angle("rotation", rotation);
    v.number("widthFactor", widthFactor);
    v.angle("oblique", oblique);
}

void ShapeEntity::emit(OutlineSink& sink, const OutlineStyle& style) const {
    if (!position.is_finite() || !std::isfinite(size) || size == 0.0) return;
    emitFromObjectPlane(*this, sink, [&](OutlineSink& plane) {
        const Matrix4 m = matrix();
        const std::array<Vector2, 4> box = corners(m);
        StrokeOptions options;
        options.continuous = true;
        if (const Path shape = outline(); !shape.empty()) {
            Path placed;
            transformPath(shape, m, placed);
            plane.stroke(placed, style, options);
            return;
        }
        plane.stroke(Path().polygon(box), style, options);
        const std::string label = !name.empty() ? name : number != 0 ? std::to_string(number) : std::string("?");
        TextRun run;
        run.text = label;
        const TextSpan span = textSpan(run);
        if (!(span.length() > 0.0)) return;
        const double height = std::min(kNameHeight, (1.0 - 2.0 * kMargin) / span.length());
        run.origin = m.transform_point(Vector2{0.5 - (span.start + span.end) / 2.0 * height, (1.0 - height) / 2.0});
        run.xAxis = m.transform_direction(Vector2{height, 0.0});
        run.yAxis = m.transform_direction(Vector2{0.0, height});
        plane.text(run, style);
    });
}

std::size_t ShapeEntity::sizeInBytes() const { return sizeof *this + name.capacity() + file.capacity() + extrasSize(); }

}  // namespace kova::engine
