// Lines and curves.
#include "engine/model/object_plane.hpp"
#include "io/dxf/writing/writer.hpp"

namespace kova::io::dxf {

using namespace engine;
using math::Vector2;
using math::Vector3;

namespace {


/// A direction of length 1 for the records that want one.
Vector2 unit(const Vector2& v) {
    const double length = v.length();
    return length > 0.0 ? Vector2{v.x / length, v.y / length} : v;
}

}  // namespace

bool Writer::write(const LineEntity& e, const Target& t) {
    if (!finite(e.start) || !finite(e.end)) return false;
    const OwnData own = gather(e, kElevation | kThickness | kNormal);
    head("LINE", e, t, own);
    GroupWriter& out = *out_;
    out.subclass("AcDbLine");
    thickness(e);
    out.point(10, e.start3());
    out.point(11, e.end3());
    normal(e);
    tail(e, own);
    return true;
}

bool Writer::write(const CircleEntity& e, const Target& t) {
    if (!finite(e.center) || !finite(e.radius)) return false;
    FieldKeys keys;
    if (!(e.radius > 0.0)) keys.push_back("radius");
    const OwnData own = gather(e, kElevation | kThickness | kNormal, keys);
    head("CIRCLE", e, t, own);
    GroupWriter& out = *out_;
    out.subclass("AcDbCircle");
    thickness(e);
    out.point(10, e.center, e.elevation);
    out.real(40, std::abs(e.radius));
    normal(e);
    tail(e, own);
    return true;
}

bool Writer::write(const ArcEntity& e, const Target& t) {
    if (!finite(e.center) || !finite(e.radius) || !finite(e.startAngle) || !finite(e.endAngle)) return false;
    FieldKeys keys;
    if (!(e.radius > 0.0)) keys.push_back("radius");
    const OwnData own = gather(e, kElevation | kThickness | kNormal, keys);
    head("ARC", e, t, own);
    GroupWriter& out = *out_;
    out.subclass("AcDbCircle");
    thickness(e);
    out.point(10, e.center, e.elevation);
    out.real(40, std::abs(e.radius));
    normal(e);
    out.subclass("AcDbArc");
    out.angle(50, e.startAngle);
    out.angle(51, e.endAngle);
    tail(e, own);
    return true;
}

bool Writer::write(const PointEntity& e, const Target& t) {
    if (!finite(e.position)) return false;
    const OwnData own = gather(e, kElevation | kThickness | kNormal);
    head("POINT", e, t, own);
    out_->subclass("AcDbPoint");
    out_->point(10, e.position, e.elevation);
    thickness(e);
    normal(e);
    tail(e, own);
    return true;
}

bool Writer::write(const EllipseEntity& e, const Target& t) {
    if (!finite(e.center) || !finite(e.major) || !finite(e.minorRatio) || e.major == Vector2{}) return false;
    const Vector3 axis = e.major3();
    FieldKeys keys;
    double ratio = std::abs(e.minorRatio);
    if (!(ratio >= 1e-6 && ratio <= 1.0) || e.minorRatio < 0.0) {
        keys.push_back("minorRatio");
        ratio = std::clamp(ratio, 1e-6, 1.0);
    }
    // What is read is the axis in plan.
    if (!(Vector2{axis.x, axis.y} == e.major)) keys.push_back("major");
    const OwnData own = gather(e, kElevation | kNormal, keys);
    head("ELLIPSE", e, t, own);
    GroupWriter& out = *out_;
    out.subclass("AcDbEllipse");
    out.point(10, e.center, e.elevation);
    out.point(11, axis);
    normal(e);
    out.real(40, ratio);
    out.real(41, e.startParam);
    out.real(42, e.endParam);
    tail(e, own);
    return true;
}

bool Writer::writeUnbounded(const Entity& e, const Target& t, std::string_view type, std::string_view marker,
                            const Vector2& from, const Vector2& dir) {
    if (!finite(from) || !finite(dir) || dir == Vector2{}) return false;
    const Vector2 direction = unit(dir);
    FieldKeys keys;
    if (!(direction == dir)) keys.push_back("dir");
    const OwnData own = gather(e, kElevation, keys);
    head(type, e, t, own);
    out_->subclass(marker);
    out_->point(10, from, e.elevation);
    out_->point(11, direction, 0.0);
    tail(e, own);
    return true;
}

bool Writer::write(const XlineEntity& e, const Target& t) {
    return writeUnbounded(e, t, "XLINE", "AcDbXline", e.base, e.dir);
}

bool Writer::write(const RayEntity& e, const Target& t) {
    return writeUnbounded(e, t, "RAY", "AcDbRay", e.origin, e.dir);
}

void Writer::splinePart(const SplineEntity& e) {
    GroupWriter& out = *out_;
    const std::size_t count = e.controlPoints.size();
    const bool flat = e.controlZ.empty();
    const bool rational = e.weights.size() >= count && count > 0;
    out.subclass("AcDbSpline");
    if (flat) out.point(210, Vector3{0, 0, 1});
    out.integer(70, (e.closed ? 1 : 0) | (rational ? 4 : 0) | (flat ? 8 : 0));
    out.integer(71, e.degree);
    // Records need a whole knot vector; one that does not fit is replaced by that which is drawn.
    std::vector<double> clamped;
    const std::vector<double>* knots = &e.knots;
    const auto degree = static_cast<std::size_t>(e.degree);
    if (count > 0 && e.knots.size() != count + degree + 1) {
        clamped.assign(degree + 1, 0.0);
        for (std::size_t i = 1; i + degree < count; ++i) clamped.push_back(static_cast<double>(i));
        const double last = count > degree ? static_cast<double>(count - degree) : 1.0;
        clamped.insert(clamped.end(), degree + 1, last);
        knots = &clamped;
    }
    out.integer(72, count > 0 ? static_cast<std::int64_t>(knots->size()) : 0);
    out.integer(73, static_cast<std::int64_t>(count));
    out.integer(74, static_cast<std::int64_t>(e.fitPoints.size()));
    out.real(42, 1e-7);
    out.real(43, 1e-7);
    if (!e.fitPoints.empty()) out.real(44, 1e-10);
    if (count > 0)
        for (const double knot : *knots) out.real(40, knot);
    if (rational)
        for (std::size_t i = 0; i < count; ++i) out.real(41, e.weights[i]);
    for (std::size_t i = 0; i < count; ++i)
        out.point(10, e.controlPoints[i], i < e.controlZ.size() ? e.controlZ[i] : e.elevation);
    for (const Vector2& p : e.fitPoints) out.point(11, p, e.elevation);
}

bool Writer::write(const SplineEntity& e, const Target& t) {
    if (e.controlPoints.empty() && e.fitPoints.size() < 2) return false;
    const std::size_t count = e.controlPoints.size();
    // A curve needs more control points than its degree, or fit points to make them from.
    if (count > 0 && (e.degree < 1 || e.degree > 25 || count < static_cast<std::size_t>(e.degree) + 1)) return false;
    const auto allFinite = [](const auto& list) {
        return std::all_of(list.begin(), list.end(), [](const auto& v) { return finite(v); });
    };
    if (!allFinite(e.controlPoints) || !allFinite(e.fitPoints) || !allFinite(e.knots) || !allFinite(e.weights))
        return false;
    FieldKeys keys;
    if (count == 0 ? !e.knots.empty() : e.knots.size() != count + static_cast<std::size_t>(e.degree) + 1)
        keys.push_back("knots");
    if (!e.controlZ.empty()) keys.push_back("controlZ");
    if (!e.weights.empty() && e.weights.size() != count) keys.push_back("weights");
    if (forDwg_ && count > 0 && !e.fitPoints.empty()) keys.push_back("fitPoints");
    if (forDwg_ && count == 0 && e.closed) keys.push_back("closed");
    // The native helix knows no radius at the top.
    if (e.helix) keys.push_back("helix");
    unsigned native = kElevation;
    if (!e.controlZ.empty()) native = kNoCommon;
    const OwnData own = gather(e, native, keys);
    head(e.helix ? "HELIX" : "SPLINE", e, t, own);
    splinePart(e);
    if (e.helix) {
        GroupWriter& out = *out_;
        const HelixData& h = *e.helix;
        ++classCounts_["HELIX"];
        out.subclass("AcDbHelix");
        out.integer(90, 29);
        out.integer(91, 63);
        out.point(10, h.axisBase);
        out.point(11, h.start);
        out.point(12, h.axis == Vector3{} ? Vector3{0, 0, 1} : h.axis);
        out.real(40, h.topRadius);
        out.real(41, h.turns);
        out.real(42, h.turnHeight);
        out.flag(290, h.ccw);
        out.integer(280, std::clamp(h.constraint, 0, 2));
    }
    tail(e, own);
    return true;
}

bool Writer::write(const Solid2DEntity& e, const Target& t) {
    for (const Vector2& p : e.corners)
        if (!finite(p)) return false;
    const OwnData own = gather(e, kElevation | kThickness | kNormal);
    head(e.trace ? "TRACE" : "SOLID", e, t, own);
    out_->subclass("AcDbTrace");
    for (int i = 0; i < 4; ++i) out_->point(10 + i, e.corners[static_cast<std::size_t>(i)], e.elevation);
    thickness(e);
    normal(e);
    tail(e, own);
    return true;
}

bool Writer::write(const Face3DEntity& e, const Target& t) {
    FieldKeys keys;
    if (e.edgeFlags < 0 || e.edgeFlags > 15) keys.push_back("edgeFlags");
    const OwnData own = gather(e, kNoCommon, keys);
    head("3DFACE", e, t, own);
    out_->subclass("AcDbFace");
    for (int i = 0; i < 4; ++i) out_->point(10 + i, e.corners[static_cast<std::size_t>(i)]);
    if ((e.edgeFlags & 15) != 0) out_->integer(70, e.edgeFlags & 15);
    tail(e, own);
    return true;
}

bool Writer::write(const ShapeEntity& e, const Target& t) {
    if (!finite(e.position) || !finite(e.size)) return false;
    FieldKeys keys;
    if (e.number != 0) keys.push_back("number");
    // Records have the number in place of the name.
    if (forDwg_) keys.push_back("name");
    if (!e.file.empty()) keys.push_back("file");
    const OwnData own = gather(e, kElevation | kThickness | kNormal, keys);
    // The shape's file is a text style without a name.
    if (!e.file.empty() && shapeStyles_.find(e.file) == shapeStyles_.end()) shapeStyles_.emplace(e.file, newHandle());
    head("SHAPE", e, t, own);
    GroupWriter& out = *out_;
    out.subclass("AcDbShape");
    thickness(e);
    out.point(10, e.position, e.elevation);
    out.real(40, e.size);
    out.text(2, e.name);
    if (e.rotation != 0.0) out.angle(50, e.rotation);
    if (e.widthFactor != 1.0) out.real(41, e.widthFactor);
    if (e.oblique != 0.0) out.angle(51, e.oblique);
    normal(e);
    tail(e, own);
    return true;
}

}  // namespace kova::io::dxf
