#include "engine/entities/hatch.hpp"

#include "engine/model/object_plane.hpp"
#include "engine/model/outline.hpp"
#include "math/curves/ring_nesting.hpp"
#include "math/curves/curves.hpp"

namespace kova::engine {

using math::Bounds2;
using math::Matrix4;
using math::Vector2;

namespace {

constexpr int kNoIndex = -1;

/// The far colour of a gradient of one colour: `tint` above a half mixes white in, below it black.
Color tinted(const Color& color, double tint) {
    Rgb rgb{color.red, color.green, color.blue};
    if (color.method == ColorMethod::ACI) rgb = aciToRgb(color.aci);
    if (color.method != ColorMethod::ACI && color.method != ColorMethod::RGB) return color;
    const double t = std::clamp(std::isfinite(tint) ? tint : 0.5, 0.0, 1.0);
    const double goal = t > 0.5 ? 255.0 : 0.0;
    const double share = std::abs(2.0 * t - 1.0);
    const auto mix = [&](std::uint8_t c) { return static_cast<std::uint8_t>(std::lround(c + (goal - c) * share)); };
    return Color::rgb(mix(rgb.red), mix(rgb.green), mix(rgb.blue));
}

GradientFill gradientFill(const HatchGradient& g) {
    GradientFill fill;
    fill.name = g.name;
    fill.angle = g.angle;
    fill.shift = g.shift;
    if (g.stops.empty()) {
        fill.from = HatchGradientStop{}.color;
        fill.to = Color::rgb(255, 255, 255);
        return fill;
    }
    const auto byValue = [](const HatchGradientStop& a, const HatchGradientStop& b) { return a.value < b.value; };
    const auto [first, last] = std::minmax_element(g.stops.begin(), g.stops.end(), byValue);
    fill.from = first->color;
    fill.to = g.singleColor || g.stops.size() == 1 ? tinted(first->color, g.tint) : last->color;
    return fill;
}

}  // namespace

// Fields ----------------------------------------------------------------------------------------------------

void HatchGradientStop::describe(FieldVisitor& v) {
    v.number("value", value);
    const bool trueColor = color.method == ColorMethod::RGB;
    std::int32_t aci = v.reading() || trueColor ? kNoIndex : color.bareIndex();
    std::int32_t rgb = v.reading() || !trueColor ? kNoIndex : (color.red << 16) | (color.green << 8) | color.blue;
    v.integer("aci", aci, kNoIndex);
    v.integer("rgb", rgb, kNoIndex);
    if (!v.reading()) return;
    if (const auto index = Color::fromBareIndex(aci)) color = *index;
    if (rgb >= 0)
        color = Color::rgb(static_cast<std::uint8_t>(rgb >> 16 & 255), static_cast<std::uint8_t>(rgb >> 8 & 255),
                           static_cast<std::uint8_t>(rgb & 255));
}

void HatchGradient::describe(FieldVisitor& v) {
    v.text("name", name);
    v.angle("angle", angle);
    v.number("shift", shift);
    v.number("tint", tint);
    v.boolean("singleColor", singleColor);
    v.integer("reserved", reserved);
    v.objects("stops", stops);
}

void HatchEntity::describe(FieldVisitor& v) {
    v.integer("patternType", patternType);
    v.name("patternName", patternName);
    v.number("patternScale", patternScale);
    v.angle("patternAngle", patternAngle);
    v.pointObject("patternOrigin", patternOrigin);
    v.boolean("double", doubled, false);
    v.boolean("patternMirrored", patternMirrored, false);
    v.integer("islandStyle", islandStyle);
    v.points("seedPoints", seedPoints, true);
    v.object("gradient", gradient);
    v.objects("ownPattern", ownPattern, true);
    v.objects("loops", loops);
}

// Area ------------------------------------------------------------------------------------------------------

Path HatchEntity::boundary() const {
    Path all;
    for (const HatchLoop& loop : loops) all.append(loop.path());
    return all;
}

Path HatchEntity::rings() const {
    if (islandStyle != kOuter && islandStyle != kIgnore) return boundary();
    std::vector<Path> paths;
    std::vector<std::vector<Ring>> groups;
    paths.reserve(loops.size());
    groups.reserve(loops.size());
    for (const HatchLoop& loop : loops) {
        paths.push_back(loop.path());
        groups.push_back(ringsOf(paths.back()));
    }
    const std::optional<std::vector<int>> depths = ringDepths(groups);
    const int deepest = islandStyle == kOuter ? 1 : 0;
    Path chosen;
    for (std::size_t i = 0; i < loops.size(); ++i) {
        // Without known depths the loops' own marks tell.
        const std::int32_t outside = HatchLoop::kExternal | HatchLoop::kOutermost;
        const bool counts = depths ? (*depths)[i] <= deepest
                                   : !loops[i].inner && (islandStyle == kOuter || (loops[i].type & outside) != 0);
        if (counts) chosen.append(paths[i]);
    }
    return chosen;
}

double HatchEntity::area() const { return evenOddArea(rings()); }

Bounds2 HatchEntity::bounds() const {
    if (inWorldPlane(*this)) return pathBounds(boundary());
    Path plan;
    transformPath(boundary(), objectPlane(*this), plan);
    return pathBounds(plan);
}

Vector2 HatchEntity::nearestPoint(const Vector2& p) const {
    if (inWorldPlane(*this)) return nearestInArea(rings(), p);
    Path plan;
    transformPath(rings(), objectPlane(*this), plan);
    return nearestInArea(plan, p);
}

double HatchEntity::distanceTo(const Vector2& p) const {
    if (loops.empty()) return std::numeric_limits<double>::infinity();
    return p.distance_to(nearestPoint(p));
}

void HatchEntity::emit(OutlineSink& sink, const OutlineStyle& style) const {
    const Path area = rings();
    if (area.empty()) return;
    emitFromObjectPlane(*this, sink, [&](OutlineSink& plane) {
        if (gradient) {
            const GradientFill fill = gradientFill(*gradient);
            FillOptions options;
            options.gradient = &fill;
            plane.fill(area, style, options);
        } else if (isSolid()) {
            plane.fill(area, style);
        } else {
            plane.pattern(area, families(), style);
        }
    });
}

// Editing ---------------------------------------------------------------------------------------------------

void HatchEntity::transformLoop(HatchLoop& loop, const Matrix4& plane, bool uniform) const {
    const bool mirrored = plane.plane_determinant() < 0.0;
    const Vector2 axis = plane.transform_direction(Vector2::unit_x());
    const double turn = axis.angle();
    const double scale = axis.length();
    const bool curved = std::any_of(loop.bulges.begin(), loop.bulges.end(), [](double b) { return b != 0.0; });
    if (loop.isPolyline() && curved && !uniform) {
        // Arcs become parts of ellipses, which only edges can be.
        for (std::size_t i = 0; i < loop.vertices.size(); ++i) {
            const Vector2& a = loop.vertices[i];
            const Vector2& b = loop.vertices[i + 1 < loop.vertices.size() ? i + 1 : 0];
            if (const auto arc = math::arcFromBulge(a, b, i < loop.bulges.size() ? loop.bulges[i] : 0.0))
                loop.edges.emplace_back(HatchArcEdge{arc->center, arc->radius, arc->start, arc->end()});
            else
                loop.edges.emplace_back(HatchLineEdge{a, b});
        }
        loop.vertices.clear();
        loop.bulges.clear();
        loop.type &= ~HatchLoop::kPolyline;
    }
    for (Vector2& p : loop.vertices) p = plane.transform_point(p);
    if (mirrored)
        for (double& b : loop.bulges) b = -b;
    for (HatchEdge& edge : loop.edges) {
        if (auto* line = std::get_if<HatchLineEdge>(&edge)) {
            line->start = plane.transform_point(line->start);
            line->end = plane.transform_point(line->end);
        } else if (auto* arc = std::get_if<HatchArcEdge>(&edge)) {
            const Vector2 center = plane.transform_point(arc->center);
            if (uniform) {
                const double side = mirrored ? -1.0 : 1.0;
                edge = HatchArcEdge{center, arc->radius * scale, turn + side * arc->startAngle,
                                    turn + side * arc->endAngle};
            } else {
                edge = HatchEllipseEdge{center, plane.transform_direction(Vector2{arc->radius, 0.0}),
                                        plane.transform_direction(Vector2{0.0, arc->radius}), arc->startAngle,
                                        arc->endAngle};
            }
        } else if (auto* ellipse = std::get_if<HatchEllipseEdge>(&edge)) {
            ellipse->center = plane.transform_point(ellipse->center);
            ellipse->u = plane.transform_direction(ellipse->u);
            ellipse->v = plane.transform_direction(ellipse->v);
        } else {
            auto& spline = std::get<HatchSplineEdge>(edge);
            for (Vector2& p : spline.control) p = plane.transform_point(p);
            for (Vector2& p : spline.fit) p = plane.transform_point(p);
            spline.startTangent = plane.transform_direction(spline.startTangent);
            spline.endTangent = plane.transform_direction(spline.endTangent);
        }
    }
}

void HatchEntity::transformPattern(const Matrix4& plane, bool uniform) {
    const Vector2 axis = plane.transform_direction(Vector2::unit_x());
    const bool mirrored = plane.plane_determinant() < 0.0;
    const double turn = axis.angle();
    const double scale = std::sqrt(std::abs(plane.plane_determinant()));
    if (gradient) gradient->angle = mirrored ? turn - gradient->angle : turn + gradient->angle;
    if (!(scale > 0.0) || !std::isfinite(scale)) return;
    // Unequal scales turn each family in a way of its own. Outside a drawing the units of a library pattern are not
    // known; scale and angle then come as near as they can.
    const bool ownFamilies =
        !uniform && !isSolid() && (!ownPattern.empty() || patternType == kUserDefined || drawing() != nullptr);
    std::vector<HatchFamily> placed;
    if (ownFamilies)
        for (const HatchFamily& f : families()) placed.push_back(transformedFamily(f, plane));
    patternOrigin = plane.transform_point(patternOrigin);
    patternScale *= scale;
    if (mirrored || turn != 0.0)
        patternAngle = math::normalizeAngle(mirrored ? turn - patternAngle : turn + patternAngle);
    if (ownFamilies) {
        patternMirrored = false;
        setFinalPattern(placed);
    } else if (mirrored && !(patternType == kUserDefined && ownPattern.empty())) {
        // Plain lines are their own mirror image; any other pattern is turned over.
        patternMirrored = !patternMirrored;
    }
}

void HatchEntity::transform(const Matrix4& m) {
    const Matrix4 plane = transformObjectPlane(*this, m);
    const bool uniform = math::planeParts(plane).uniform;
    for (HatchLoop& loop : loops) transformLoop(loop, plane, uniform);
    for (Vector2& p : seedPoints) p = plane.transform_point(p);
    transformPattern(plane, uniform);
}

// Grips: the middle, then the corners of polyline loops and the starts of straight edges. ----------------------

std::vector<Vector2> HatchEntity::gripPoints() const {
    std::vector<Vector2> grips;
    const Bounds2 box = pathBounds(boundary());
    if (box.is_empty()) return grips;
    grips.push_back(planFromObject(*this, box.center()));
    for (const HatchLoop& loop : loops) {
        if (loop.isPolyline())
            for (const Vector2& p : loop.vertices) grips.push_back(planFromObject(*this, p));
        for (const HatchEdge& edge : loop.edges)
            if (const auto* line = std::get_if<HatchLineEdge>(&edge))
                grips.push_back(planFromObject(*this, line->start));
    }
    return grips;
}

void HatchEntity::moveGrip(std::size_t index, const Vector2& to) {
    const std::optional<Vector2> target = objectFromPlan(*this, to);
    if (!target || !target->is_finite()) return;
    if (index == 0) {
        const Bounds2 box = pathBounds(boundary());
        if (box.is_empty()) return;
        const Matrix4 shift = Matrix4::translation(*target - box.center());
        for (HatchLoop& loop : loops) transformLoop(loop, shift, true);
        for (Vector2& p : seedPoints) p = shift.transform_point(p);
        transformPattern(shift, true);
        return;
    }
    --index;
    for (HatchLoop& loop : loops) {
        if (loop.isPolyline()) {
            if (index < loop.vertices.size()) {
                loop.vertices[index] = *target;
                return;
            }
            index -= loop.vertices.size();
            continue;
        }
        for (std::size_t i = 0; i < loop.edges.size(); ++i) {
            auto* line = std::get_if<HatchLineEdge>(&loop.edges[i]);
            if (line == nullptr || index-- > 0) continue;
            // A straight edge that ends here follows.
            auto* before = std::get_if<HatchLineEdge>(&loop.edges[i > 0 ? i - 1 : loop.edges.size() - 1]);
            if (before != nullptr && before->end.near_equal(line->start, 1e-6)) before->end = *target;
            line->start = *target;
            return;
        }
    }
}

std::size_t HatchEntity::sizeInBytes() const {
    std::size_t size = sizeof *this + extrasSize() + seedPoints.capacity() * sizeof(Vector2) +
                       ownPattern.capacity() * sizeof(HatchFamily) + loops.capacity() * sizeof(HatchLoop);
    for (const HatchFamily& f : ownPattern) size += f.dashes.capacity() * sizeof(double);
    if (gradient) size += gradient->stops.capacity() * sizeof(HatchGradientStop) + gradient->name.capacity();
    for (const HatchLoop& loop : loops) {
        size += loop.vertices.capacity() * sizeof(Vector2) + loop.bulges.capacity() * sizeof(double) +
                loop.edges.capacity() * sizeof(HatchEdge) + loop.sources.capacity() * sizeof(std::uint64_t);
        for (const HatchEdge& edge : loop.edges)
            if (const auto* spline = std::get_if<HatchSplineEdge>(&edge))
                size += (spline->knots.capacity() + spline->weights.capacity()) * sizeof(double) +
                        (spline->control.capacity() + spline->fit.capacity()) * sizeof(Vector2);
    }
    return size;
}

}  // namespace kova::engine
