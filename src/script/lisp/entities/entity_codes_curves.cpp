// Lines and curves as groups.

#include <cmath>

#include "engine/entities/arc.hpp"
#include "engine/entities/circle.hpp"
#include "engine/entities/ellipse.hpp"
#include "engine/entities/line.hpp"
#include "engine/entities/mline.hpp"
#include "engine/entities/polyline.hpp"
#include "engine/entities/spline.hpp"
#include "script/lisp/entities/entity_codes.hpp"

namespace kova::script::lisp {

using namespace engine;
using math::Vector2;
using math::Vector3;

void lineGroups(const GroupIo& io, Entity& entity) {
    auto& e = static_cast<LineEntity&>(entity);
    io.marker("AcDbLine");
    Vector3 start = e.start3();
    Vector3 end = e.end3();
    io.point(10, start);
    io.point(11, end);
    if (io.reading()) e.setEnds(start, end);
    normalGroup(io, e);
}

void arcGroups(const GroupIo& io, Entity& entity) {
    auto& e = static_cast<ArcEntity&>(entity);
    io.marker("AcDbCircle");
    io.point(10, e.center, e.elevation);
    io.real(40, e.radius);
    normalGroup(io, e);
    io.marker("AcDbArc");
    io.real(50, e.startAngle);
    io.real(51, e.endAngle);
}

void circleGroups(const GroupIo& io, Entity& entity) {
    auto& e = static_cast<CircleEntity&>(entity);
    io.marker("AcDbCircle");
    io.point(10, e.center, e.elevation);
    io.real(40, e.radius);
    normalGroup(io, e);
}

void ellipseGroups(const GroupIo& io, Entity& entity) {
    auto& e = static_cast<EllipseEntity&>(entity);
    io.marker("AcDbEllipse");
    io.point(10, e.center, e.elevation);
    Vector3 major = io.reading() ? Vector3(e.major) : e.major3();
    io.point(11, major);
    e.major = major.xy();
    normalGroup(io, e);
    io.real(40, e.minorRatio);
    io.real(41, e.startParam);
    io.real(42, e.endParam);
}

void polylineGroups(const GroupIo& io, Entity& entity) {
    auto& e = static_cast<PolylineEntity&>(entity);
    io.marker("AcDbPolyline");
    if (!io.reading()) {
        GroupWriter& out = io.out();
        out.integer(90, static_cast<std::int64_t>(e.vertices.size()));
        out.integer(70, (e.closed ? 1 : 0) | (e.ltgen ? 128 : 0));
        out.real(43, 0.0);
        out.real(38, e.elevation);
        out.real(39, e.thickness());
        for (std::size_t i = 0; i < e.vertices.size(); ++i) {
            out.point(10, e.vertices[i]);
            out.real(40, e.startWidth(i));
            out.real(41, e.endWidth(i));
            out.real(42, e.bulge(i));
        }
        normalGroup(io, e);
        return;
    }
    const GroupList& in = io.in();
    const std::int64_t flags = in.integer(70, (e.closed ? 1 : 0) | (e.ltgen ? 128 : 0));
    e.closed = (flags & 1) != 0;
    e.ltgen = (flags & 128) != 0;
    e.elevation = in.real(38, e.elevation);
    if (!in.has(10)) return;
    const double width = in.real(43);
    PolylineEntity fresh;
    for (const GroupList::Group& g : in.groups()) {
        const std::size_t last = fresh.vertices.size() - 1;
        switch (g.code) {
            case 10:
                fresh.addVertex(GroupList::pointOf(10, *g.value).xy(), 0.0, width, width);
                break;
            case 40:
                if (!fresh.vertices.empty())
                    fresh.setWidths(last, GroupList::realOf(40, *g.value), fresh.endWidth(last));
                break;
            case 41:
                if (!fresh.vertices.empty())
                    fresh.setWidths(last, fresh.startWidth(last), GroupList::realOf(41, *g.value));
                break;
            case 42:
                if (!fresh.vertices.empty()) fresh.setBulge(last, GroupList::realOf(42, *g.value));
                break;
            default:
                break;
        }
    }
    e.vertices = std::move(fresh.vertices);
    e.bulges = std::move(fresh.bulges);
    e.startWidths = std::move(fresh.startWidths);
    e.endWidths = std::move(fresh.endWidths);
    e.records.clear();
    e.fit.clear();
    e.spline = false;
    e.curveType = 0;
}

void splineGroups(const GroupIo& io, Entity& entity) {
    auto& e = static_cast<SplineEntity&>(entity);
    io.marker("AcDbSpline");
    if (!io.reading()) {
        GroupWriter& out = io.out();
        normalGroup(io, e);
        out.integer(70, (e.closed ? 1 : 0) | (e.weights.empty() ? 0 : 4) | 8);
        out.integer(71, e.degree);
        out.integer(72, static_cast<std::int64_t>(e.knots.size()));
        out.integer(73, static_cast<std::int64_t>(e.controlPoints.size()));
        out.integer(74, static_cast<std::int64_t>(e.fitPoints.size()));
        for (const double k : e.knots) out.real(40, k);
        for (const double w : e.weights) out.real(41, w);
        for (std::size_t i = 0; i < e.controlPoints.size(); ++i)
            out.point(10, Vector3(e.controlPoints[i], i < e.controlZ.size() ? e.controlZ[i] : e.elevation));
        for (const Vector2& p : e.fitPoints) out.point(11, Vector3(p, e.elevation));
        return;
    }
    const GroupList& in = io.in();
    if (in.has(70)) e.closed = (in.integer(70) & 1) != 0;
    io.integer(71, e.degree);
    if (in.has(40)) e.knots = in.reals(40);
    if (in.has(41)) e.weights = in.reals(41);
    if (in.has(10)) {
        e.controlPoints.clear();
        e.controlZ.clear();
        bool level = true;
        const std::vector<Vector3> points = in.points(10);
        for (const Vector3& p : points) {
            e.controlPoints.push_back(p.xy());
            e.controlZ.push_back(p.z);
            level = level && p.z == points.front().z;
        }
        if (level) {
            e.elevation = points.front().z;
            e.controlZ.clear();
        }
    }
    if (in.has(11)) {
        e.fitPoints.clear();
        for (const Vector3& p : in.points(11)) e.fitPoints.push_back(p.xy());
        if (!in.has(10)) {
            e.elevation = in.point(11).z;
            e.controlPoints.clear();
            e.fitThroughPoints();
        }
    }
}

void mlineGroups(const GroupIo& io, Entity& entity) {
    auto& e = static_cast<MLineEntity&>(entity);
    io.marker("AcDbMline");
    io.name(2, e.styleName);
    io.real(40, e.scale);
    std::int32_t justification = static_cast<std::int32_t>(e.justification);
    io.integer(70, justification);
    e.justification = static_cast<MLineJustification>(std::clamp(justification, 0, 2));
    std::int32_t flags = 1 | (e.closed ? 2 : 0);
    io.integer(71, flags);
    e.closed = (flags & 2) != 0;
    if (!io.reading()) {
        io.out().integer(72, static_cast<std::int64_t>(e.vertices.size()));
        io.out().integer(73, static_cast<std::int64_t>(e.elements.size()));
        if (!e.vertices.empty()) io.out().point(10, Vector3(e.vertices.front(), e.elevation));
        for (const Vector2& p : e.vertices) io.out().point(11, Vector3(p, e.elevation));
        normalGroup(io, e);
    } else if (io.in().has(11)) {
        e.vertices.clear();
        for (const Vector3& p : io.in().points(11)) e.vertices.push_back(p.xy());
    }
}

}  // namespace kova::script::lisp
