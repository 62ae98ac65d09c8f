#include "kdraw/entities/spline.hpp"

#include "kdraw/groups/describing.hpp"

namespace kdraw {

void SplineEntity::describeSpline(Fields& f) {
    f.subclass("AcDbSpline");
    if (DxfInput* in = f.input()) {
        readGroups(*in);
        f.extrusion(210, normal);
        return;
    }
    if (DxfOutput* out = f.output()) {
        if (planar) out->point(210, normal);
        writeGroups(*out);
        return;
    }
    constexpr std::int32_t kByControl = 1, kByFit = 2;
    constexpr std::int32_t kMethodFit = 1, kClosed = 4, kUsesKnotParameter = 8;
    std::int32_t form = byFitPoints() ? kByFit : kByControl;
    std::int32_t flags = form == kByFit ? kMethodFit | kUsesKnotParameter : 0;
    if (closed) flags |= kClosed;
    f.bl(0, form);
    if (f.since(Version::R2013)) {
        if (!f.reading() && form == kByControl) knotParameter = kCustomKnots;
        if (!f.reading() && form == kByFit && knotParameter == kCustomKnots) knotParameter = kChords;
        f.bl(0, flags);
        f.bl(0, knotParameter);
        // The stored form is 1 in either case.
        if (f.reading())
            form = knotParameter == kCustomKnots || (flags & kUsesKnotParameter) == 0 ? kByControl : kByFit;
    }
    f.bl(0, degree);
    if (form == kByFit) {
        if (f.reading() && f.since(Version::R2013)) closed = (flags & kClosed) != 0;
        f.bd(0, fitTolerance);
        f.bd3(0, startTangent);
        f.bd3(0, endTangent);
        f.list(Width::BL, 0, fit, kBitsOfPoint, [&](Vector3& p) { f.bd3(0, p); });
        return;
    }
    if (form != kByControl) {
        f.fail();
        return;
    }
    f.b(0, rational);
    f.b(0, closed);
    f.b(0, periodic);
    f.bd(0, knotTolerance);
    f.bd(0, controlTolerance);
    const std::size_t knotCount = f.count(Width::BL, 0, knots.size(), kBitsOfReal);
    const std::size_t count = f.count(Width::BL, 0, control.size(), kBitsOfPoint);
    bool weighted = !weights.empty();
    f.b(0, weighted);
    f.rest(knots, knotCount, [&](double& knot) { f.bd(0, knot); });
    if (weighted) weights.resize(count, 1.0);
    std::size_t i = 0;
    f.rest(control, count, [&](Vector3& p) {
        f.bd3(0, p);
        if (weighted) f.bd(0, weights[i]);
        ++i;
    });
}

void SplineEntity::readGroups(DxfInput& in) {
    const std::size_t start = in.cursor();
    const auto coordinate = [&](std::vector<Vector3>& list, int axis) {
        if (axis == 0)
            list.push_back({in.real(), 0.0, 0.0});
        else if (!list.empty())
            (axis == 1 ? list.back().y : list.back().z) = in.real();
    };
    for (; !in.atEnd(); in.skip()) {
        const int code = in.peek();
        switch (code) {
            case 70: {
                const std::int64_t flags = in.integer();
                closed = (flags & 1) != 0;
                periodic = (flags & 2) != 0;
                rational = (flags & 4) != 0;
                planar = (flags & 8) != 0;
                break;
            }
            case 71:
                degree = static_cast<std::int32_t>(in.integer());
                break;
            case 42:
                knotTolerance = in.real();
                break;
            case 43:
                controlTolerance = in.real();
                break;
            case 44:
                fitTolerance = in.real();
                break;
            case 40:
                knots.push_back(in.real());
                break;
            case 41:
                weights.push_back(in.real());
                break;
            case 10:
            case 20:
            case 30:
                coordinate(control, code / 10 - 1);
                break;
            case 11:
            case 21:
            case 31:
                coordinate(fit, code / 10 - 1);
                break;
            case 12:
                startTangent.x = in.real();
                break;
            case 22:
                startTangent.y = in.real();
                break;
            case 32:
                startTangent.z = in.real();
                break;
            case 13:
                endTangent.x = in.real();
                break;
            case 23:
                endTangent.y = in.real();
                break;
            case 33:
                endTangent.z = in.real();
                break;
            default:
                break;
        }
    }
    if (!weights.empty()) weights.resize(control.size(), 1.0);
    in.setCursor(start);
}

void SplineEntity::writeGroups(DxfOutput& out) {
    const bool isRational = rational || !weights.empty();
    out.integer(70, (closed ? 1 : 0) | (periodic ? 2 : 0) | (isRational ? 4 : 0) | (planar ? 8 : 0));
    out.integer(71, degree);
    out.integer(72, static_cast<std::int64_t>(knots.size()));
    out.integer(73, static_cast<std::int64_t>(control.size()));
    out.integer(74, static_cast<std::int64_t>(fit.size()));
    out.real(42, knotTolerance);
    out.real(43, controlTolerance);
    if (!fit.empty()) out.real(44, fitTolerance);
    if (!(startTangent == Vector3{})) out.point(12, startTangent);
    if (!(endTangent == Vector3{})) out.point(13, endTangent);
    for (const double knot : knots) out.real(40, knot);
    for (const double weight : weights) out.real(41, weight);
    for (const Vector3& p : control) out.point(10, p);
    for (const Vector3& p : fit) out.point(11, p);
}

void HelixEntity::describe(Fields& f) {
    describeSpline(f);
    f.subclass("AcDbHelix");
    f.bl(90, release);
    f.bl(91, maintenance);
    f.bd3(10, axisBase);
    f.bd3(11, start);
    f.bd3(12, axis);
    f.bd(40, radius);
    f.bd(41, turns);
    f.bd(42, turnHeight);
    f.b(290, counterClockwise);
    f.rc(280, constraint);
}

}  // namespace kdraw
