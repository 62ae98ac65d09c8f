#include "engine/entities/mline.hpp"

#include <algorithm>
#include <cmath>
#include <numeric>

#include "engine/model/object_plane.hpp"
#include "engine/model/outline.hpp"

namespace kova::engine {

using math::Vector2;

namespace {

/// Corners are mitred up to this factor of the width.
constexpr double kMaxMiter = 100.0;
/// Least sine of a slanted end's angle against the line.
constexpr double kLeastSlant = 0.1;

/// The step of a slanted end: to the left by 1, along the line as the angle demands.
Vector2 slantedStep(const Vector2& dir, double angle) {
    const double sine = std::sin(angle);
    if (!(sine > kLeastSlant)) return dir.perpendicular();
    return dir.perpendicular() + dir * (std::cos(angle) / sine);
}

Vector2 miter(const Vector2& before, const Vector2& after) {
    const Vector2 a = before.perpendicular();
    const Vector2 b = after.perpendicular();
    const double whole = 1.0 + a.dot(b);
    if (whole < 2.0 / (kMaxMiter * kMaxMiter)) return a;  // it turns back on itself
    return (a + b) / whole;
}

}  // namespace

void MLineElement::describe(FieldVisitor& v) {
    v.length("offset", offset);
    v.color("color", color);
    v.name("linetype", linetype);
}

double MLineEntity::elementDistance(const MLineElement& element) const {
    double zero = 0.0;
    if (!elements.empty() && justification != MLineJustification::Zero) {
        const auto [low, high] =
            std::minmax_element(elements.begin(), elements.end(),
                                [](const MLineElement& a, const MLineElement& b) { return a.offset < b.offset; });
        zero = justification == MLineJustification::Top ? high->offset : low->offset;
    }
    return (element.offset - zero) * scale;
}

std::vector<Vector2> MLineEntity::miterSteps() const {
    const std::size_t n = vertices.size();
    std::vector<Vector2> steps(n);
    if (n < 2) return steps;
    // Direction of the segment behind every vertex; those without length take that of the one before them.
    std::vector<Vector2> out(n);
    std::size_t known = n;
    for (std::size_t i = 0; i < n; ++i) {
        if (i + 1 == n && !closed) break;
        out[i] = (vertices[(i + 1) % n] - vertices[i]).normalized();
        if (out[i] != Vector2{} && known == n) known = i;
    }
    if (known == n) return steps;
    std::vector<Vector2> in(n);
    Vector2 last = out[known];
    if (closed)
        for (std::size_t i = n; i-- > 0;)
            if (out[i] != Vector2{}) {
                last = out[i];
                break;
            }
    for (std::size_t i = 0; i < n; ++i) {
        in[i] = last;
        if (out[i] != Vector2{}) last = out[i];
    }
    Vector2 next = closed ? out[known] : last;
    for (std::size_t i = n; i-- > 0;) {
        if (out[i] != Vector2{}) next = out[i];
        out[i] = next;
    }
    for (std::size_t i = 0; i < n; ++i) steps[i] = miter(in[i], out[i]);
    if (!closed) {
        steps.front() = slantedStep(out.front(), startAngle);
        steps.back() = slantedStep(in.back(), endAngle);
    }
    return steps;
}

namespace {

std::vector<Vector2> offsetPoints(const std::vector<Vector2>& vertices, const std::vector<Vector2>& steps,
                                  double distance) {
    std::vector<Vector2> points(vertices.size());
    for (std::size_t i = 0; i < vertices.size(); ++i) points[i] = vertices[i] + steps[i] * distance;
    return points;
}

}  // namespace

std::vector<Vector2> MLineEntity::elementPoints(const MLineElement& element) const {
    return offsetPoints(vertices, miterSteps(), elementDistance(element));
}

math::Bounds2 MLineEntity::bounds() const { return outlineBounds(*this); }

void MLineEntity::transform(const math::Matrix4& m) {
    for (Vector2& p : vertices) p = m.transform_point(p);
    const double det = m.plane_determinant();
    const double factor = std::sqrt(std::abs(det));
    if (factor > 0.0 && std::isfinite(factor)) scale *= factor;
    if (det < 0.0) {
        // What lay left of the line lies right of it now.
        scale = -scale;
        startAngle = math::kPi - startAngle;
        endAngle = math::kPi - endAngle;
    }
    elevation = m.transform_point(math::Vector3(Vector2{}, elevation)).z;
    transformExtrusion(*this, m);
}

double MLineEntity::distanceTo(const Vector2& p) const { return p.distance_to(nearestPoint(p)); }
Vector2 MLineEntity::nearestPoint(const Vector2& p) const { return nearestOnOutline(*this, p); }
std::vector<Vector2> MLineEntity::gripPoints() const { return vertices; }

void MLineEntity::moveGrip(std::size_t index, const Vector2& to) {
    if (index < vertices.size() && to.is_finite()) vertices[index] = to;
}

void MLineEntity::describe(FieldVisitor& v) {
    v.points("vertices", vertices);
    v.number("scale", scale);
    v.objects("elements", elements);
    v.integer("justificationAcad", justification);
    v.boolean("closed", closed);
    v.name("styleName", styleName, "Standard");
    v.integer("flags", flags, 0);
    v.optionalColor("fillColor", fillColor);
    v.angle("startAngle", startAngle, math::kPi / 2);
    v.angle("endAngle", endAngle, math::kPi / 2);
}

void MLineEntity::emit(OutlineSink& sink, const OutlineStyle& style) const {
    for (const Vector2& p : vertices)
        if (!p.is_finite()) return;
    if (vertices.size() < 2 || elements.empty() || !std::isfinite(scale)) return;
    const std::vector<Vector2> steps = miterSteps();
    double low = elementDistance(elements.front());
    double high = low;
    std::vector<double> distances;
    distances.reserve(elements.size());
    for (const MLineElement& element : elements) {
        distances.push_back(elementDistance(element));
        low = std::min(low, distances.back());
        high = std::max(high, distances.back());
    }
    if (!std::isfinite(low) || !std::isfinite(high)) return;

    if ((flags & kMLineFill) != 0) {
        OutlineStyle fill = style;
        if (fillColor.method != ColorMethod::ByLayer && fillColor.method != ColorMethod::ByBlock)
            fill.color = fillColor;
        std::vector<Vector2> ring = offsetPoints(vertices, steps, high);
        const std::vector<Vector2> other = offsetPoints(vertices, steps, low);
        Path rings;
        if (closed) {
            rings.polygon(ring);
            rings.polygon(other);
        } else {
            ring.insert(ring.end(), other.rbegin(), other.rend());
            rings.polygon(ring);
        }
        sink.fill(rings, fill);
    }
    for (std::size_t i = 0; i < elements.size(); ++i) {
        OutlineStyle own = style;
        const MLineElement& element = elements[i];
        // ByLayer and ByBlock elements look as the multiline itself.
        if (element.color.method != ColorMethod::ByLayer && element.color.method != ColorMethod::ByBlock)
            own.color = element.color;
        if (!element.linetype.empty() && element.linetype != commonNames().byLayer &&
            element.linetype != commonNames().byBlock)
            own.linetype = element.linetype;
        sink.stroke(Path().polygon(offsetPoints(vertices, steps, distances[i]), closed), own);
    }
    emitJointsAndCaps(sink, style, steps, distances);
}

void MLineEntity::emitJointsAndCaps(OutlineSink& sink, const OutlineStyle& style, const std::vector<Vector2>& steps,
                                    std::vector<double>& distances) const {
    std::sort(distances.begin(), distances.end());
    const std::size_t last = vertices.size() - 1;
    const auto across = [&](std::size_t i) {
        sink.stroke(
            Path().moveTo(vertices[i] + steps[i] * distances.front()).lineTo(vertices[i] + steps[i] * distances.back()),
            style);
    };
    if ((flags & kMLineJoints) != 0)
        for (std::size_t i = closed ? 0 : 1; i < (closed ? last + 1 : last); ++i) across(i);
    if (closed) return;
    // At the start the half circle runs counter-clockwise from left to right, at the end from right to left.
    const auto round = [&](std::size_t i, double left, double right, bool start) {
        const Vector2 a = vertices[i] + steps[i] * (start ? left : right);
        const Vector2 b = vertices[i] + steps[i] * (start ? right : left);
        sink.stroke(Path().moveTo(a).bulgeTo(b, 1.0), style);
    };
    const auto cap = [&](std::size_t i, bool start, bool square, bool inner, bool outer) {
        if (distances.size() < 2) return;
        if (square) across(i);
        if (outer) round(i, distances.back(), distances.front(), start);
        if (!inner) return;
        for (std::size_t k = 1; k < distances.size() / 2; ++k)
            round(i, distances[distances.size() - 1 - k], distances[k], start);
    };
    cap(0, true, (flags & kMLineStartSquare) != 0, (flags & kMLineStartInnerArc) != 0, (flags & kMLineStartRound) != 0);
    cap(last, false, (flags & kMLineEndSquare) != 0, (flags & kMLineEndInnerArc) != 0, (flags & kMLineEndRound) != 0);
}

std::size_t MLineEntity::sizeInBytes() const {
    return sizeof *this + extrasSize() + vertices.capacity() * sizeof(Vector2) +
           elements.capacity() * sizeof(MLineElement);
}

}  // namespace kova::engine
