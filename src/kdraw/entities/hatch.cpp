#include "kdraw/entities/hatch.hpp"

#include <algorithm>

#include "kdraw/groups/describing.hpp"

namespace kdraw {

void HatchEntity::describeGradient(Fields& f) {
    f.bl(450, gradient.on);
    f.bl(451, gradient.reserved);
    f.bd(460, gradient.angle);
    f.bd(461, gradient.shift);
    f.bl(452, gradient.singleColor);
    f.bd(462, gradient.tint);
    f.list(Width::BL, 453, gradient.stops, 2 + 12, [&](Stop& stop) {
        f.bd(463, stop.value);
        // The true colour of a later stop is not this one's.
        f.color(63, 0, stop.color);
        if (f.dxf() && follows(f, 421, true)) f.color(0, 421, stop.color);
    });
    f.text(470, gradient.name);
}

void HatchEntity::describe(Fields& f) {
    f.subclass("AcDbHatch");
    if (!f.dxf() && f.since(Version::R2004)) describeGradient(f);
    if (f.dxf()) {
        Vector3 base{0.0, 0.0, elevation};
        f.bd3(10, base);
        elevation = base.z;
        // The normal always stands here.
        f.bd3(210, normal);
    } else {
        f.bd(0, elevation);
        f.bd3(0, normal);
    }
    f.text(2, pattern);
    f.b(70, solid);
    f.b(71, associative);
    std::vector<std::size_t> sources;
    f.list(Width::BL, 91, paths, 6, [&](Path& path) {
        sources.push_back(0);
        describePath(f, path, sources.back());
    });
    f.bs(75, style);
    f.bs(76, patternKind);
    if (!solid) describePattern(f);
    const bool derived =
        std::any_of(paths.begin(), paths.end(), [](const Path& path) { return (path.flags & Path::kDerived) != 0; });
    if (derived) f.bd(47, pixelSize);
    f.list(Width::BL, 98, seeds, 128, [&](Vector2& seed) { f.rd2(10, seed); });
    if (f.dxf()) {
        if (wanted(f, gradient.on != 0)) describeGradient(f);
        return;
    }
    // The boundary objects of all paths stand together.
    for (std::size_t i = 0; i < paths.size() && i < sources.size() && !f.failed(); ++i)
        f.restOfHandles(Ref::SoftPointer, 0, paths[i].sources, sources[i]);
}

void HatchEntity::describePath(Fields& f, Path& path, std::size_t& sources) {
    f.bl(92, path.flags);
    if ((path.flags & Path::kPolyline) != 0) {
        f.b(72, path.bulged);
        f.b(73, path.closed);
        f.list(Width::BL, 93, path.vertices, 128, [&](Vector3& vertex) {
            f.rd(10, vertex.x);
            f.rd(20, vertex.y);
            if (path.bulged) f.bd(42, vertex.z);
        });
    } else {
        f.list(Width::BL, 93, path.edges, 8 + 12, [&](Edge& edge) { describeEdge(f, edge); });
    }
    sources = f.count(Width::BL, 97, path.sources.size(), kBitsOfHandle);
    if (f.dxf()) f.restOfHandles(Ref::SoftPointer, 330, path.sources, sources);
}

void HatchEntity::describeEdge(Fields& f, Edge& edge) {
    f.rc(72, edge.kind);
    switch (edge.kind) {
        case kLine:
            f.rd2(10, edge.a);
            f.rd2(11, edge.b);
            break;
        case kArc:
        case kEllipse:
            f.rd2(10, edge.a);
            if (edge.kind == kEllipse) f.rd2(11, edge.b);
            f.bd(40, edge.size);
            f.angle(50, edge.start);
            f.angle(51, edge.end);
            f.b(73, edge.counterClockwise);
            break;
        case kSpline:
            if (edge.spline.empty()) edge.spline.emplace_back();
            describeSpline(f, edge.spline.front());
            break;
        default:
            f.fail();  // nobody knows how long it is
    }
}

void HatchEntity::describeSpline(Fields& f, SplineEdge& spline) {
    f.bl(94, spline.degree);
    f.b(73, spline.rational);
    f.b(74, spline.periodic);
    const std::size_t knots = f.count(Width::BL, 95, spline.knots.size(), kBitsOfReal);
    const std::size_t control = f.count(Width::BL, 96, spline.control.size(), 128);
    f.rest(spline.knots, knots, [&](double& knot) { f.bd(40, knot); });
    f.rest(spline.control, control, [&](Vector3& point) {
        f.rd(10, point.x);
        f.rd(20, point.y);
        if (spline.rational)
            f.bd(42, point.z);
        else if (f.reading())
            point.z = 1.0;
    });
    if (f.before(Version::R2010)) return;
    f.list(Width::BL, 97, spline.fit, 128, [&](Vector2& point) { f.rd2(11, point); });
    if (spline.fit.empty()) return;
    f.rd2(12, spline.startTangent);
    f.rd2(13, spline.endTangent);
}

void HatchEntity::describePattern(Fields& f) {
    f.angle(52, angle);
    f.bd(41, scale);
    f.b(77, doubled);
    f.list(Width::BS, 78, lines, 12, [&](PatternLine& line) {
        f.angle(53, line.angle);
        f.bd(43, line.base.x);
        f.bd(44, line.base.y);
        f.bd(45, line.offset.x);
        f.bd(46, line.offset.y);
        f.list(Width::BS, 79, line.dashes, kBitsOfReal, [&](double& dash) { f.bd(49, dash); });
    });
}

}  // namespace kdraw
