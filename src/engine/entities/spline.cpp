#include "engine/entities/spline.hpp"

#include <cmath>

#include "engine/model/object_plane.hpp"
#include "engine/model/outline.hpp"
#include "engine/model/frame_lines.hpp"
#include "math/curves/nurbs.hpp"
#include "math/curves/spline_part.hpp"

namespace kova::engine {

using math::Vector2;
using math::Vector3;

namespace {

/// Curves that cubics cannot hold are drawn within this part of the extents.
constexpr double kPathTolerance = 1e-7;

/// A usable B-spline for the entity's data: the data itself where it is complete, else with made-up knots or the
/// cubic through the fit points.
class Curve {
public:
    explicit Curve(const SplineEntity& e) {
        view_.degree = e.degree;
        view_.points = e.controlPoints;
        view_.knots = e.knots;
        const bool good =
            std::all_of(e.weights.begin(), e.weights.end(), [](double w) { return w > 0.0 && std::isfinite(w); });
        if (good && e.weights.size() == e.controlPoints.size()) view_.weights = e.weights;
        if (e.controlPoints.size() >= 2) {
            if (view_.usable()) {
                usable_ = true;
                return;
            }
            completeKnots(e);
        } else if (const auto cubic = math::interpolateCubic(e.fitPoints, e.closed); !cubic.points.empty()) {
            points_ = cubic.points;
            knots_ = cubic.knots;
            view_ = {3, points_, knots_};
        }
        usable_ = view_.usable();
    }
    Curve(const Curve&) = delete;
    Curve& operator=(const Curve&) = delete;

    bool usable() const { return usable_; }
    const math::SplineView& view() const { return view_; }
    /// Diagonal of the box of its control points.
    double size() const {
        math::Bounds2 extents;
        for (const Vector2& p : view_.points) extents.expand(p);
        return extents.is_empty() ? 0.0 : std::hypot(extents.width(), extents.height());
    }
    /// Cubics hold it exactly.
    bool simple() const { return view_.degree <= 3 && !view_.rational(); }

private:
    void completeKnots(const SplineEntity& e) {
        const int most = static_cast<int>(std::min<std::size_t>(e.controlPoints.size() - 1, math::kMaxDegree));
        view_.degree = std::clamp(e.degree, 1, most);
        knots_ = math::clampedUniformKnots(view_.degree, e.controlPoints.size());
        if (e.closed && e.knots.empty() && e.controlPoints.size() > 2) {
            // Round and round: the first points follow the last ones again.
            const auto p = static_cast<std::ptrdiff_t>(view_.degree);
            points_ = e.controlPoints;
            points_.insert(points_.end(), e.controlPoints.begin(), e.controlPoints.begin() + p);
            knots_ = math::uniformKnots(view_.degree, points_.size());
            view_.points = points_;
            if (!view_.weights.empty()) {
                weights_ = e.weights;
                weights_.insert(weights_.end(), e.weights.begin(), e.weights.begin() + p);
                view_.weights = weights_;
            }
        }
        view_.knots = knots_;
    }

    math::SplineView view_;
    std::vector<Vector2> points_;
    std::vector<double> knots_;
    std::vector<double> weights_;
    bool usable_ = false;
};

/// The scale of a matrix that keeps all shapes in space similar; nothing for any other matrix.
std::optional<double> similarityScale(const math::Matrix4& m) {
    const Vector3 x = m.transform_direction(Vector3{1, 0, 0});
    const Vector3 y = m.transform_direction(Vector3{0, 1, 0});
    const Vector3 z = m.transform_direction(Vector3{0, 0, 1});
    const double scale = x.length();
    const double slack = 1e-9 * scale;
    if (!(scale > 0.0) || std::abs(y.length() - scale) > slack || std::abs(z.length() - scale) > slack ||
        std::abs(x.dot(y)) > slack * scale || std::abs(y.dot(z)) > slack * scale || std::abs(z.dot(x)) > slack * scale)
        return std::nullopt;
    return scale;
}

/// Direction of the curve at an end that is not free; zero at an end without curvature.
Vector2 endTangent(const math::SplineView& view, bool atEnd) {
    const double u = atEnd ? view.domainEnd() : view.domainStart();
    const double width = view.domainEnd() - view.domainStart();
    const math::SplineDerivatives d = math::splineDerivatives(view, u);
    return std::abs(d.first.cross(d.second)) * width <= 1e-6 * d.first.length_squared() ? Vector2{} : d.first;
}

}  // namespace

void HelixData::describe(FieldVisitor& v) {
    v.pointObject("axisBase", axisBase);
    v.pointObject("start", start);
    v.pointObject("axis", axis);
    v.length("topRadius", topRadius);
    v.number("turns", turns);
    v.length("turnHeight", turnHeight);
    v.boolean("ccw", ccw);
    v.integer("constraint", constraint);
}

Path SplineEntity::path() const {
    Path path;
    const Curve curve(*this);
    if (!curve.usable()) {
        // A single point, or nothing that can be drawn.
        const std::vector<Vector2>& points = controlPoints.empty() ? fitPoints : controlPoints;
        if (points.size() == 1) path.moveTo(points[0]).lineTo(points[0]);
        return path;
    }
    const double size = curve.size();
    const std::vector<math::Cubic> cubics = math::splineToCubics(curve.view(), kPathTolerance * size);
    path.reserve(cubics.size() + 2);
    for (const math::Cubic& c : cubics) {
        if (path.empty() || path.current() != c[0]) path.moveTo(c[0]);
        path.cubicTo(c[1], c[2], c[3]);
    }
    if (closed && !cubics.empty() && cubics.front()[0].distance_to(cubics.back()[3]) <= 1e-9 * size) path.close();
    return path;
}

std::unique_ptr<SplineEntity> SplineEntity::part(double from, double to) const {
    const Curve curve(*this);
    if (!curve.usable() || !std::isfinite(from) || !std::isfinite(to)) return nullptr;
    math::SplineView view = curve.view();
    if (controlZ.size() == view.points.size()) view.z = controlZ;
    std::vector<double> ends;
    const std::vector<math::Cubic> cubics = math::splineToCubics(view, kPathTolerance * curve.size(), &ends);
    const auto parameterAt = [&](double place) {
        if (place <= 0.0) return view.domainStart();
        const auto piece = static_cast<std::size_t>(place);
        if (piece >= ends.size()) return view.domainEnd();
        const double t = place - static_cast<double>(piece);
        const double start = piece > 0 ? ends[piece - 1] : view.domainStart();
        double u = start + (ends[piece] - start) * t;
        if (curve.simple() || t == 0.0) return u;
        // The cubic is no more than near: the place of the curve nearest to its point.
        const Vector2 p = math::cubicPoint(cubics[piece], t);
        for (int i = 0; i < 4; ++i) {
            const math::SplineDerivatives d = math::splineDerivatives(view, u);
            const double speed = d.first.length_squared();
            if (!(speed > 0.0)) break;
            u = std::clamp(u + (p - d.point).dot(d.first) / speed, start, ends[piece]);
        }
        return u;
    };
    if (ends.empty()) return nullptr;
    const double u0 = parameterAt(from);
    const double u1 = parameterAt(to);
    math::SplineData data;
    if (u0 < u1) {
        data = math::splinePart(view, u0, u1);
    } else {
        data = math::splinePart(view, u0, view.domainEnd());
        math::appendSpline(data, math::splinePart(view, view.domainStart(), u1));
    }
    if (data.points.size() < 2) return nullptr;
    auto made = std::make_unique<SplineEntity>();
    made->copyCommonFrom(*this);
    made->setHandle(0);
    made->degree = data.degree;
    made->controlPoints = std::move(data.points);
    made->knots = std::move(data.knots);
    made->weights = std::move(data.weights);
    made->controlZ = std::move(data.z);
    return made;
}

void SplineEntity::fitThroughPoints(const Vector2& startTangent, const Vector2& endTangent) {
    math::CubicSpline cubic = math::interpolateCubic(fitPoints, closed, startTangent, endTangent);
    if (cubic.points.empty()) return;
    setCurve({3, std::move(cubic.points), std::move(cubic.knots), {}, {}});
}

std::pair<Vector2, Vector2> SplineEntity::endTangents() const {
    const Curve whole(*this);
    if (!whole.usable() || closed) return {};
    return {endTangent(whole.view(), false), endTangent(whole.view(), true)};
}

math::SplineData SplineEntity::curve() const {
    const Curve whole(*this);
    math::SplineData out;
    if (!whole.usable()) return out;
    const math::SplineView& view = whole.view();
    out.degree = view.degree;
    out.points.assign(view.points.begin(), view.points.end());
    out.knots.assign(view.knots.begin(), view.knots.end());
    out.weights.assign(view.weights.begin(), view.weights.end());
    // Made-up points of a closed curve repeat the first ones, heights and all.
    for (std::size_t i = 0; i < out.points.size() && !controlZ.empty(); ++i)
        out.z.push_back(controlZ[i < controlPoints.size() ? std::min(i, controlZ.size() - 1)
                                                          : (i - controlPoints.size()) % controlZ.size()]);
    return out;
}

void SplineEntity::setCurve(math::SplineData curve) {
    degree = curve.degree;
    controlPoints = std::move(curve.points);
    knots = std::move(curve.knots);
    weights = std::move(curve.weights);
    controlZ = std::move(curve.z);
    helix.reset();
}

double SplineEntity::length() const { return pathLength(path()); }

math::Bounds2 SplineEntity::bounds() const {
    const Curve curve(*this);
    return curve.usable() ? math::splineBounds(curve.view()) : pathBounds(path());
}

void SplineEntity::transform(const math::Matrix4& m) {
    // The plane's own z stands in `elevation` for what has no z of its own.
    const double oldElevation = elevation;
    elevation = m.transform_point(Vector3{0, 0, oldElevation}).z;
    std::vector<double> z(controlPoints.size());
    bool level = true;
    for (std::size_t i = 0; i < controlPoints.size(); ++i) {
        const double own = i < controlZ.size() ? controlZ[i] : oldElevation;
        const Vector3 moved = m.transform_point(Vector3(controlPoints[i], own));
        controlPoints[i] = moved.xy();
        z[i] = moved.z;
        level = level && moved.z == z[0];
    }
    if (!controlZ.empty() || !level)
        controlZ = std::move(z);
    else if (!z.empty())
        elevation = z[0];
    // Fit points have no z: they are given up when the curve leaves its plane.
    if (!level && !isPlanar(m)) fitPoints.clear();
    for (Vector2& p : fitPoints) p = m.transform_point(Vector3(p, oldElevation)).xy();
    transformExtrusion(*this, m);
    if (!helix) return;
    const auto scale = similarityScale(m);
    if (!scale) {
        helix.reset();  // still a curve, but no helix
        return;
    }
    const Vector3 x = m.transform_direction(Vector3{1, 0, 0});
    const Vector3 y = m.transform_direction(Vector3{0, 1, 0});
    const Vector3 zAxis = m.transform_direction(Vector3{0, 0, 1});
    helix->axisBase = m.transform_point(helix->axisBase);
    helix->start = m.transform_point(helix->start);
    helix->axis = m.transform_direction(helix->axis).normalized();
    helix->topRadius *= *scale;
    helix->turnHeight *= *scale;
    if (x.cross(y).dot(zAxis) < 0.0) helix->ccw = !helix->ccw;
}

double SplineEntity::distanceTo(const Vector2& p) const { return p.distance_to(nearestPoint(p)); }

Vector2 SplineEntity::nearestPoint(const Vector2& p) const {
    const Curve curve(*this);
    if (!curve.usable() || curve.simple()) return nearestOnPath(path(), p);
    return math::splinePoint(curve.view(), math::closestSplineParameter(curve.view(), p));
}

std::vector<Vector2> SplineEntity::gripPoints() const { return fitPoints.empty() ? controlPoints : fitPoints; }

void SplineEntity::moveGrip(std::size_t index, const Vector2& to) {
    if (fitPoints.empty()) {
        if (index >= controlPoints.size()) return;
        controlPoints[index] = to;
        helix.reset();
        return;
    }
    if (index >= fitPoints.size()) return;
    // The tangents that the user gave stay.
    const auto [first, last] = endTangents();
    fitPoints[index] = to;
    if (!controlPoints.empty()) fitThroughPoints(first, last);
}

void SplineEntity::describe(FieldVisitor& v) {
    v.integer("degree", degree);
    v.boolean("closed", closed);
    v.points("controlPoints", controlPoints);
    v.numbers("knots", knots);
    v.points("fitPoints", fitPoints);
    v.numbers("controlZ", controlZ, true);
    v.numbers("weights", weights, true);
    v.object("helix", helix);
}

void SplineEntity::emit(OutlineSink& sink, const OutlineStyle& style) const {
    StrokeOptions options;
    options.patternThroughVertices = true;
    sink.stroke(path(), style, options);
    // A helix is no spline to its user, and a curve through points alone has its polygon worked out with it.
    if (helix || !FrameLines::emitted(FrameKind::Control)) return;
    const std::vector<Vector2> polygon = controlPoints.empty() ? curve().points : controlPoints;
    if (polygon.size() < 2) return;
    Path control;
    control.moveTo(polygon.front());
    for (std::size_t i = 1; i < polygon.size(); ++i) control.lineTo(polygon[i]);
    sink.stroke(control, style);
}

std::size_t SplineEntity::sizeInBytes() const {
    return sizeof *this + extrasSize() + (controlPoints.capacity() + fitPoints.capacity()) * sizeof(Vector2) +
           (knots.capacity() + controlZ.capacity() + weights.capacity()) * sizeof(double);
}

}  // namespace kova::engine
