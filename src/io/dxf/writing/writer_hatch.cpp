// Hatches.
#include "io/dxf/writing/writer.hpp"

namespace kova::io::dxf {

using namespace engine;
using math::Vector2;

namespace {

/// An elliptic edge in the form of the record: major axis, ratio, parameters on the counter-clockwise ellipse.
struct EllipseForm {
    Vector2 major;
    double ratio = 1.0;
    double from = 0.0;
    double to = 0.0;
};

EllipseForm ellipseForm(const HatchEllipseEdge& e) {
    // The principal axes of the conjugate radii u and v.
    const double turn = 0.5 * std::atan2(2.0 * e.u.dot(e.v), e.u.dot(e.u) - e.v.dot(e.v));
    const Vector2 major = e.u * std::cos(turn) + e.v * std::sin(turn);
    const Vector2 minor = e.v * std::cos(turn) - e.u * std::sin(turn);
    EllipseForm form{major, 1.0, e.t0 - turn, e.t1 - turn};
    if (major.length() > 0.0) form.ratio = std::clamp(minor.length() / major.length(), 1e-6, 1.0);
    if (major.cross(minor) < 0.0) {
        form.from = -form.from;
        form.to = -form.to;
    }
    return form;
}

/// True when the reader finds the same loop from the native groups.
bool isExact(const HatchLoop& loop) {
    constexpr std::int32_t outer = HatchLoop::kExternal | HatchLoop::kOutermost;
    if (loop.inner != ((loop.type & outer) == 0)) return false;
    if (((loop.type & HatchLoop::kPolyline) != 0) != loop.isPolyline()) return false;
    for (const HatchEdge& edge : loop.edges) {
        if (std::holds_alternative<HatchEllipseEdge>(edge)) return false;
        if (const auto* spline = std::get_if<HatchSplineEdge>(&edge)) {
            const bool tangents = !(spline->startTangent == Vector2{}) || !(spline->endTangent == Vector2{});
            if (tangents && spline->fit.empty()) return false;
            if (!spline->weights.empty() && spline->weights.size() != spline->control.size()) return false;
        }
    }
    return loop.bulges.size() <= loop.vertices.size();
}

/// The objects of a loop that are there.
std::vector<std::uint64_t> followed(const Drawing& drawing, const HatchEntity& hatch, const HatchLoop& loop) {
    std::vector<std::uint64_t> handles;
    for (const std::uint64_t handle : loop.sources)
        if (const Entity* entity = drawing.findByHandle(handle); entity && entity->owner() == hatch.owner())
            handles.push_back(handle);
    return handles;
}

/// Whether there is something to write.
bool hasBoundary(const HatchEntity& e) {
    const auto wrong = [](const HatchLoop& loop) {
        return std::any_of(loop.vertices.begin(), loop.vertices.end(),
                           [](const Vector2& p) { return !std::isfinite(p.x) || !std::isfinite(p.y); });
    };
    if (std::any_of(e.loops.begin(), e.loops.end(), wrong)) return false;
    return std::any_of(e.loops.begin(), e.loops.end(),
                       [](const HatchLoop& loop) { return !loop.vertices.empty() || !loop.edges.empty(); });
}

}  // namespace

/// Boundary objects name the hatches that follow them.
void Writer::noteFollowers() {
    const auto scan = [&](const EntityList& list) {
        for (const Entity& entity : list) {
            if (entity.type() != EntityType::Hatch) continue;
            const auto& hatch = static_cast<const HatchEntity&>(entity);
            if (!hatch.isAssociative() || !hasBoundary(hatch)) continue;
            for (const HatchLoop& loop : hatch.loops)
                for (const std::uint64_t handle : followed(drawing_, hatch, loop)) {
                    std::vector<std::uint64_t>& hatches = hatchesOf_[handle];
                    if (hatches.empty() || hatches.back() != hatch.handle()) hatches.push_back(hatch.handle());
                }
        }
    };
    scan(drawing_.modelSpace());
    for (const auto& layout : drawing_.layouts()) scan(layout->entities);
    for (const Block* block : saved_.blocks)
        if (hasOwnContents(*block)) scan(block->entities);
}

void Writer::hatchEdge(const HatchEdge& edge) {
    GroupWriter& out = *out_;
    if (const auto* line = std::get_if<HatchLineEdge>(&edge)) {
        out.integer(72, 1);
        out.point(10, line->start);
        out.point(11, line->end);
    } else if (const auto* arc = std::get_if<HatchArcEdge>(&edge)) {
        // Clockwise edges have their angles measured the other way round.
        const bool ccw = arc->endAngle >= arc->startAngle;
        out.integer(72, 2);
        out.point(10, arc->center);
        out.real(40, arc->radius);
        out.angle(50, ccw ? arc->startAngle : -arc->startAngle);
        out.angle(51, ccw ? arc->endAngle : -arc->endAngle);
        out.flag(73, ccw);
    } else if (const auto* ellipse = std::get_if<HatchEllipseEdge>(&edge)) {
        const EllipseForm form = ellipseForm(*ellipse);
        const bool ccw = form.to >= form.from;
        out.integer(72, 3);
        out.point(10, ellipse->center);
        out.point(11, form.major);
        out.real(40, form.ratio);
        out.angle(50, ccw ? form.from : -form.from);
        out.angle(51, ccw ? form.to : -form.to);
        out.flag(73, ccw);
    } else {
        const auto& spline = std::get<HatchSplineEdge>(edge);
        const bool rational = !spline.weights.empty() && spline.weights.size() >= spline.control.size();
        out.integer(72, 4);
        out.integer(94, spline.degree);
        out.flag(73, rational);
        out.flag(74, spline.periodic);
        out.integer(95, static_cast<std::int64_t>(spline.knots.size()));
        out.integer(96, static_cast<std::int64_t>(spline.control.size()));
        for (const double knot : spline.knots) out.real(40, knot);
        for (std::size_t i = 0; i < spline.control.size(); ++i) {
            out.point(10, spline.control[i]);
            if (rational) out.real(42, spline.weights[i]);
        }
        out.integer(97, static_cast<std::int64_t>(spline.fit.size()));
        for (const Vector2& p : spline.fit) out.point(11, p);
        if (!spline.fit.empty()) {
            out.point(12, spline.startTangent);
            out.point(13, spline.endTangent);
        }
    }
}

void Writer::hatchLoop(const HatchLoop& loop, const std::vector<std::uint64_t>& sources) {
    GroupWriter& out = *out_;
    constexpr std::int32_t polyline = HatchLoop::kPolyline;
    if (loop.isPolyline()) {
        out.integer(92, loop.type | polyline);
        const bool bulged =
            std::any_of(loop.bulges.begin(), loop.bulges.end(), [](double bulge) { return bulge != 0.0; });
        out.flag(72, bulged);
        out.integer(73, 1);
        out.integer(93, static_cast<std::int64_t>(loop.vertices.size()));
        for (std::size_t i = 0; i < loop.vertices.size(); ++i) {
            out.point(10, loop.vertices[i]);
            if (bulged) out.real(42, i < loop.bulges.size() ? loop.bulges[i] : 0.0);
        }
    } else {
        out.integer(92, loop.type & ~polyline);
        out.integer(93, static_cast<std::int64_t>(loop.edges.size()));
        for (const HatchEdge& edge : loop.edges) hatchEdge(edge);
    }
    out.integer(97, static_cast<std::int64_t>(sources.size()));
    for (const std::uint64_t source : sources) out.handle(330, source);
}

void Writer::hatchPattern(const HatchEntity& e) {
    GroupWriter& out = *out_;
    out.angle(52, e.patternAngle);
    out.real(41, e.patternScale);
    out.flag(77, e.doubled);
    const std::vector<HatchFamily> families = e.families();
    const std::size_t count = std::min<std::size_t>(families.size(), 32767);
    out.integer(78, static_cast<std::int64_t>(count));
    for (std::size_t i = 0; i < count; ++i) {
        const HatchFamily& family = families[i];
        const Vector2 along{std::cos(family.angle), std::sin(family.angle)};
        const Vector2 across{-along.y, along.x};
        out.angle(53, family.angle);
        out.real(43, family.origin.x);
        out.real(44, family.origin.y);
        const Vector2 step = along * family.shift.x + across * family.shift.y;
        out.real(45, step.x);
        out.real(46, step.y);
        out.integer(79, static_cast<std::int64_t>(family.dashes.size()));
        for (const double dash : family.dashes) out.real(49, dash);
    }
}

void Writer::hatchGradient(const HatchGradient& gradient) {
    GroupWriter& out = *out_;
    out.integer(450, 1);
    out.integer(451, 0);
    out.real(460, gradient.angle);
    out.real(461, gradient.shift);
    out.flag(452, gradient.singleColor);
    out.real(462, gradient.tint);
    // There are always two stops.
    Color colors[2] = {Color::index(5), Color::index(2)};
    for (std::size_t i = 0; i < 2 && !gradient.stops.empty(); ++i)
        colors[i] = gradient.stops[i == 0 ? 0 : gradient.stops.size() - 1].color;
    out.integer(453, 2);
    for (int i = 0; i < 2; ++i) {
        const Color& c = colors[i];
        out.real(463, i);
        const int index = std::clamp(c.bareIndex(), 1, 255);
        out.integer(63, index);
        Rgb rgb{c.red, c.green, c.blue};
        if (c.method != ColorMethod::RGB) rgb = aciToRgb(static_cast<std::uint8_t>(index));
        out.integer(421, rgb.red << 16 | rgb.green << 8 | rgb.blue);
    }
    out.text(470, gradient.name.empty() ? "LINEAR" : gradient.name);
}

bool Writer::write(const HatchEntity& e, const Target& t) {
    if (!hasBoundary(e)) return false;
    FieldKeys keys;
    if (!std::all_of(e.loops.begin(), e.loops.end(), isExact)) keys.push_back("loops");
    // The record holds final values; without this a pattern of its own would be made from them.
    if (!e.isSolid() || !e.ownPattern.empty()) keys.push_back("ownPattern");
    if (!(e.patternOrigin == Vector2{})) keys.push_back("patternOrigin");
    if (e.patternMirrored) keys.push_back("patternMirrored");
    if (e.gradient) {
        // The record has no place for the pattern under a gradient, nor for stops that are not at the ends.
        keys.push_back("gradient");
        if (!(e.patternName == "SOLID")) keys.push_back("patternName");
    }
    const bool solid = e.isSolid();
    if (solid) {
        if (e.patternScale != 1.0) keys.push_back("patternScale");
        if (e.patternAngle != 0.0) keys.push_back("patternAngle");
        if (e.doubled) keys.push_back("double");
    }
    if (!solid && e.patternName.empty()) keys.push_back("patternName");
    if (e.patternType < 0 || e.patternType > 2) keys.push_back("patternType");
    if (e.islandStyle < 0 || e.islandStyle > 2) keys.push_back("islandStyle");
    const OwnData own = gather(e, kElevation | kNormal, keys);
    head("HATCH", e, t, own);
    GroupWriter& out = *out_;
    out.subclass("AcDbHatch");
    out.point(10, Vector2{}, e.elevation);
    const math::Vector3 n = e.normal();
    out.point(210, n);
    if (solid)
        out.word(2, "SOLID");
    else
        out.text(2, e.patternName.empty() ? std::string_view("_U") : e.patternName.view());
    out.flag(70, solid);
    out.flag(71, std::any_of(e.loops.begin(), e.loops.end(),
                             [&](const HatchLoop& loop) { return !followed(drawing_, e, loop).empty(); }));
    out.integer(91, static_cast<std::int64_t>(e.loops.size()));
    for (const HatchLoop& loop : e.loops) hatchLoop(loop, followed(drawing_, e, loop));
    out.integer(75, std::clamp(e.islandStyle, 0, 2));
    out.integer(76, std::clamp(e.patternType, 0, 2));
    if (!solid) hatchPattern(e);
    out.integer(98, static_cast<std::int64_t>(e.seedPoints.size()));
    for (const Vector2& seed : e.seedPoints) out.point(10, seed);
    if (e.gradient) hatchGradient(*e.gradient);
    if (!(e.patternOrigin == Vector2{}) && (e.xdata() == nullptr || e.xdata()->find(Name("ACAD")) == nullptr)) {
        out.word(1001, "ACAD");
        out.point(1010, e.patternOrigin, 0.0);
    }
    tail(e, own);
    return true;
}

}  // namespace kova::io::dxf
