// Hatches and dimensions as groups.

#include <cmath>

#include "engine/entities/dimensions/dimension.hpp"
#include "engine/entities/hatch.hpp"
#include "script/lisp/entities/entity_codes.hpp"

namespace kova::script::lisp {

using namespace engine;
using math::Vector2;
using math::Vector3;

namespace {

constexpr std::int64_t kMaxItems = 1'000'000;

void writeEdge(GroupWriter& out, const HatchEdge& edge) {
    if (const auto* line = std::get_if<HatchLineEdge>(&edge)) {
        out.integer(72, 1);
        out.point(10, line->start);
        out.point(11, line->end);
    } else if (const auto* arc = std::get_if<HatchArcEdge>(&edge)) {
        const bool ccw = arc->endAngle >= arc->startAngle;
        out.integer(72, 2);
        out.point(10, arc->center);
        out.real(40, arc->radius);
        out.real(50, ccw ? arc->startAngle : -arc->startAngle);
        out.real(51, ccw ? arc->endAngle : -arc->endAngle);
        out.integer(73, ccw ? 1 : 0);
    } else if (const auto* ellipse = std::get_if<HatchEllipseEdge>(&edge)) {
        const bool ccw = ellipse->t1 >= ellipse->t0;
        const double major = ellipse->u.length();
        out.integer(72, 3);
        out.point(10, ellipse->center);
        out.point(11, ellipse->u);
        out.real(40, major > 0.0 ? ellipse->v.length() / major : 1.0);
        out.real(50, ccw ? ellipse->t0 : -ellipse->t0);
        out.real(51, ccw ? ellipse->t1 : -ellipse->t1);
        out.integer(73, ccw ? 1 : 0);
    } else {
        const auto& spline = std::get<HatchSplineEdge>(edge);
        out.integer(72, 4);
        out.integer(94, spline.degree);
        out.integer(73, spline.weights.empty() ? 0 : 1);
        out.integer(74, spline.periodic ? 1 : 0);
        out.integer(95, static_cast<std::int64_t>(spline.knots.size()));
        out.integer(96, static_cast<std::int64_t>(spline.control.size()));
        for (const double k : spline.knots) out.real(40, k);
        for (std::size_t i = 0; i < spline.control.size(); ++i) {
            out.point(10, spline.control[i]);
            if (i < spline.weights.size()) out.real(42, spline.weights[i]);
        }
    }
}

void writeHatch(GroupWriter& out, const HatchEntity& h) {
    out.text(100, "AcDbHatch");
    out.point(10, Vector3(0, 0, h.elevation));
    out.point(210, h.normal());
    out.text(2, h.patternName.view());
    out.integer(70, h.isSolid() ? 1 : 0);
    out.integer(71, h.isAssociative() ? 1 : 0);
    out.integer(91, static_cast<std::int64_t>(h.loops.size()));
    for (const HatchLoop& loop : h.loops) {
        const bool polyline = loop.isPolyline();
        out.integer(92, (loop.type & ~HatchLoop::kPolyline) | (polyline ? HatchLoop::kPolyline : 0));
        if (polyline) {
            const bool bulges = std::any_of(loop.bulges.begin(), loop.bulges.end(), [](double b) { return b != 0.0; });
            out.integer(72, bulges ? 1 : 0);
            out.integer(73, 1);
            out.integer(93, static_cast<std::int64_t>(loop.vertices.size()));
            for (std::size_t i = 0; i < loop.vertices.size(); ++i) {
                out.point(10, loop.vertices[i]);
                if (bulges) out.real(42, i < loop.bulges.size() ? loop.bulges[i] : 0.0);
            }
        } else {
            out.integer(93, static_cast<std::int64_t>(loop.edges.size()));
            for (const HatchEdge& edge : loop.edges) writeEdge(out, edge);
        }
        out.integer(97, static_cast<std::int64_t>(loop.sources.size()));
        for (const std::uint64_t source : loop.sources) out.entity(330, source);
    }
    out.integer(75, h.islandStyle);
    out.integer(76, h.patternType);
    if (!h.isSolid()) {
        out.real(52, h.patternAngle);
        out.real(41, h.patternScale);
        out.integer(77, h.doubled ? 1 : 0);
    }
    out.integer(98, static_cast<std::int64_t>(h.seedPoints.size()));
    for (const Vector2& p : h.seedPoints) out.point(10, p);
}

/// Reads groups in their order, as boundaries need it.
class Cursor {
public:
    Cursor(const std::vector<GroupList::Group>& groups, std::size_t at) : groups_(groups), at_(at) {}
    bool is(int code) const { return at_ < groups_.size() && groups_[at_].code == code; }
    bool atEnd() const { return at_ >= groups_.size(); }
    void skip() { ++at_; }
    const Value& need(int code) {
        if (!is(code)) throw LispError("HATCH: expected group " + std::to_string(code));
        return *groups_[at_++].value;
    }
    std::int64_t integer(int code) { return GroupList::integerOf(code, need(code)); }
    double real(int code) { return GroupList::realOf(code, need(code)); }
    Vector2 point(int code) { return GroupList::pointOf(code, need(code)).xy(); }
    std::int64_t count(int code) {
        const std::int64_t n = integer(code);
        if (n < 0 || n > kMaxItems || static_cast<std::size_t>(n) > groups_.size())
            throw LispError("HATCH: bad count in group " + std::to_string(code));
        return n;
    }

private:
    const std::vector<GroupList::Group>& groups_;
    std::size_t at_;
};

HatchEdge readEdge(Cursor& c) {
    switch (c.integer(72)) {
        case 1: {
            HatchLineEdge line;
            line.start = c.point(10);
            line.end = c.point(11);
            return line;
        }
        case 2: {
            HatchArcEdge arc;
            arc.center = c.point(10);
            arc.radius = c.real(40);
            arc.startAngle = c.real(50);
            arc.endAngle = c.real(51);
            if (c.integer(73) == 0) {
                arc.startAngle = -arc.startAngle;
                arc.endAngle = -arc.endAngle;
            }
            return arc;
        }
        case 3: {
            HatchEllipseEdge ellipse;
            ellipse.center = c.point(10);
            ellipse.u = c.point(11);
            ellipse.v = ellipse.u.perpendicular() * c.real(40);
            ellipse.t0 = c.real(50);
            ellipse.t1 = c.real(51);
            if (c.integer(73) == 0) {
                ellipse.t0 = -ellipse.t0;
                ellipse.t1 = -ellipse.t1;
            }
            return ellipse;
        }
        case 4: {
            HatchSplineEdge spline;
            spline.degree = static_cast<std::int32_t>(std::clamp<std::int64_t>(c.integer(94), 1, 25));
            const bool rational = c.integer(73) != 0;
            spline.periodic = c.integer(74) != 0;
            const std::int64_t knots = c.count(95);
            const std::int64_t points = c.count(96);
            for (std::int64_t i = 0; i < knots; ++i) spline.knots.push_back(c.real(40));
            for (std::int64_t i = 0; i < points; ++i) {
                spline.control.push_back(c.point(10));
                if (rational) spline.weights.push_back(c.real(42));
            }
            return spline;
        }
        default:
            throw LispError("HATCH: expected an edge of kind 1 to 4");
    }
}

void readHatch(const GroupList& in, HatchEntity& h) {
    if (in.has(2)) h.patternName = Name(in.text(2));
    if (in.has(70) && in.integer(70) == 1) h.patternName = Name("SOLID");
    h.islandStyle = static_cast<std::int32_t>(std::clamp<std::int64_t>(in.integer(75, h.islandStyle), 0, 2));
    h.patternType = static_cast<std::int32_t>(std::clamp<std::int64_t>(in.integer(76, h.patternType), 0, 2));
    h.doubled = in.integer(77, h.doubled ? 1 : 0) != 0;
    h.patternAngle = in.real(52, h.patternAngle);
    const auto& groups = in.groups();
    std::size_t at = 0;
    while (at < groups.size() && groups[at].code != 91) {
        if (groups[at].code == 10) h.elevation = GroupList::pointOf(10, *groups[at].value).z;
        ++at;
    }
    if (at == groups.size()) {
        h.patternScale = in.real(41, h.patternScale);
        return;
    }
    const bool follows = in.integer(71, 0) != 0;
    Cursor c(groups, at);
    const std::int64_t loops = c.count(91);
    std::vector<HatchLoop> made;
    for (std::int64_t i = 0; i < loops; ++i) {
        HatchLoop loop;
        loop.type = static_cast<std::int32_t>(c.integer(92) & 0xFFFF);
        if ((loop.type & HatchLoop::kPolyline) != 0) {
            const bool bulges = c.integer(72) != 0;
            c.integer(73);
            const std::int64_t points = c.count(93);
            for (std::int64_t k = 0; k < points; ++k) {
                loop.vertices.push_back(c.point(10));
                if (bulges) loop.bulges.push_back(c.is(42) ? c.real(42) : 0.0);
            }
        } else {
            const std::int64_t edges = c.count(93);
            for (std::int64_t k = 0; k < edges; ++k) loop.edges.push_back(readEdge(c));
        }
        if (c.is(97)) c.skip();
        while (c.is(330)) {
            const Value& source = c.need(330);
            if (follows && source.isEntity()) loop.sources.push_back(source.handle());
        }
        made.push_back(std::move(loop));
    }
    h.loops = std::move(made);
    std::vector<Vector2> seeds;
    while (!c.atEnd()) {
        if (c.is(41))
            h.patternScale = c.real(41);
        else if (c.is(10))
            seeds.push_back(c.point(10));
        else
            c.skip();
    }
    h.seedPoints = std::move(seeds);
}

}  // namespace

void hatchGroups(const GroupIo& io, Entity& entity) {
    auto& h = static_cast<HatchEntity&>(entity);
    if (io.reading())
        readHatch(io.in(), h);
    else
        writeHatch(io.out(), h);
}

namespace {

/// Which member each point group of a kind of dimension is.
struct DimensionPoints {
    Vector2 DimensionEntity::*p10;
    Vector2 DimensionEntity::*p13 = nullptr;
    Vector2 DimensionEntity::*p14 = nullptr;
    Vector2 DimensionEntity::*p15 = nullptr;
    Vector2 DimensionEntity::*p16 = nullptr;
};

DimensionPoints pointsOf(DimensionType kind) {
    using D = DimensionEntity;
    switch (kind) {
        case DimensionType::Angular2Line:
            return {&D::def4, &D::def1, &D::def2, &D::def3, &D::dimLine};
        case DimensionType::Angular3Point:
            return {&D::dimLine, &D::def1, &D::def2, &D::def3};
        case DimensionType::Diameter:
            return {&D::def2, nullptr, nullptr, &D::def1};
        case DimensionType::Radius:
            return {&D::def1, nullptr, nullptr, &D::def2};
        case DimensionType::Ordinate:
        case DimensionType::OrdinateX:
            return {&D::def3, &D::def1, &D::def2};
        case DimensionType::ArcLength:
            return {&D::dimLine, &D::def1, &D::def2, &D::def3, &D::def4};
        default:
            return {&D::dimLine, &D::def1, &D::def2};
    }
}

const char* markerOf(DimensionType kind) {
    switch (kind) {
        case DimensionType::Angular2Line:
            return "AcDb2LineAngularDimension";
        case DimensionType::Angular3Point:
            return "AcDb3PointAngularDimension";
        case DimensionType::Diameter:
            return "AcDbDiametricDimension";
        case DimensionType::Radius:
            return "AcDbRadialDimension";
        case DimensionType::Ordinate:
        case DimensionType::OrdinateX:
            return "AcDbOrdinateDimension";
        case DimensionType::ArcLength:
            return "AcDbArcDimension";
        default:
            return "AcDbAlignedDimension";
    }
}

}  // namespace

void dimensionGroups(const GroupIo& io, Entity& entity) {
    auto& d = static_cast<DimensionEntity&>(entity);
    if (io.reading() && io.in().has(70)) {
        const std::int64_t flags = io.in().integer(70);
        const std::int64_t kind = flags & 15;
        if (kind > 6 && kind != 8) throw LispError("group 70: unknown kind of dimension");
        d.subType = kind == 6 && (flags & 64) != 0 ? DimensionType::OrdinateX : static_cast<DimensionType>(kind);
    }
    const DimensionType kind = d.kind();
    const bool ordinateX = kind == DimensionType::OrdinateX;
    const std::int64_t number = ordinateX ? 6 : static_cast<std::int64_t>(kind);
    const DimensionPoints points = pointsOf(kind);
    io.marker("AcDbDimension");
    if (!io.reading() && !d.blockName.empty()) io.out().text(2, d.blockName.view());
    io.point(10, d.*points.p10, d.elevation);
    if (!io.reading()) {
        if (d.hasUserText()) io.out().point(11, Vector3(d.userText, d.elevation));
        io.out().integer(70, number + 32 + (ordinateX ? 64 : 0) + (d.hasUserText() ? 128 : 0));
    } else if (io.in().has(11) && (io.in().integer(70, 128) & 128) != 0) {
        d.setUserText(io.in().point(11).xy());
    }
    io.text(1, d.textOverride);
    if (!io.reading()) io.out().real(42, d.measurement());
    io.real(53, d.textRotation);
    io.name(3, d.dimStyleName);
    io.marker(markerOf(kind));
    const std::pair<int, Vector2 DimensionEntity::*> more[] = {
        {13, points.p13}, {14, points.p14}, {15, points.p15}, {16, points.p16}};
    for (const auto& [code, member] : more)
        if (member != nullptr) io.flat(code, d.*member);
    if (kind == DimensionType::Rotated || kind == DimensionType::Aligned) {
        io.real(52, d.obliqueAngle);
        if (kind == DimensionType::Rotated) io.real(50, d.linearRotation);
    }
    if (kind == DimensionType::Rotated) io.marker("AcDbRotatedDimension");
}

}  // namespace kova::script::lisp
