// Hatches: the order of groups is what gives them their meaning.
#include <algorithm>
#include <cmath>

#include "engine/entities/hatch.hpp"
#include "io/dxf/dxf_facts.hpp"
#include "io/dxf/reading/reader.hpp"
#include "math/angles.hpp"

namespace kova::io::dxf {

using engine::Entity;
using engine::HatchEntity;
using math::Vector2;
using math::Vector3;

namespace {

/// Never more than what can still follow.
std::size_t bounded(std::int64_t count, std::size_t left) {
    return count <= 0 ? 0 : std::min(static_cast<std::size_t>(count), left);
}

}  // namespace

/// One boundary path, from its group 92 on. False when there is none.
bool Reader::readHatchLoop(TagCursor& c, HatchEntity& hatch, bool associative) {
    const Tag* head = c.takeIf(92);
    if (head == nullptr) return false;
    engine::HatchLoop loop;
    loop.type = small(*head);
    const auto point = [&](std::int32_t code) {
        Vector2 p;
        if (const Tag* t = c.takeIf(code)) p.x = real(*t);
        if (const Tag* t = c.takeIf(code + 10)) p.y = real(*t);
        c.takeIf(code + 20);
        return p;
    };
    if ((loop.type & engine::HatchLoop::kPolyline) != 0) {
        std::int64_t count = 0;
        while (!c.atEnd() && (c.peek().code == 72 || c.peek().code == 73 || c.peek().code == 93)) {
            const Tag& tag = c.take();
            if (tag.code == 93) {
                count = tag.integer();
                break;
            }
        }
        loop.vertices.reserve(bounded(count, c.left() / 2));
        while (c.peek().code == 10) {
            loop.vertices.push_back(point(10));
            if (const Tag* bulge = c.takeIf(42)) {
                const double b = real(*bulge);
                if (b != 0.0) {
                    loop.bulges.resize(loop.vertices.size(), 0.0);
                    loop.bulges.back() = b;
                }
            }
        }
        if (!loop.bulges.empty()) loop.bulges.resize(loop.vertices.size(), 0.0);
    } else {
        std::int64_t count = 0;
        if (const Tag* t = c.takeIf(93)) count = t->integer();
        for (std::int64_t i = 0; i < count && c.peek().code == 72; ++i) {
            const std::int64_t type = c.take().integer();
            if (type == 1) {
                engine::HatchLineEdge edge;
                edge.start = point(10);
                edge.end = point(11);
                loop.edges.emplace_back(edge);
            } else if (type == 2) {
                engine::HatchArcEdge edge;
                edge.center = point(10);
                if (const Tag* t = c.takeIf(40)) edge.radius = real(*t);
                double from = 0.0;
                double to = 0.0;
                if (const Tag* t = c.takeIf(50)) from = angle(*t);
                if (const Tag* t = c.takeIf(51)) to = angle(*t);
                bool ccw = true;
                if (const Tag* t = c.takeIf(73)) ccw = t->integer() != 0;
                // Angles of clockwise edges are measured clockwise.
                if (ccw) {
                    edge.startAngle = from;
                    edge.endAngle = to > from ? to : from + math::sweepAngle(from, to);
                } else {
                    edge.startAngle = -from;
                    edge.endAngle = -(to > from ? to : from + math::sweepAngle(from, to));
                }
                loop.edges.emplace_back(edge);
            } else if (type == 3) {
                engine::HatchEllipseEdge edge;
                edge.center = point(10);
                edge.u = point(11);
                double ratio = 1.0;
                if (const Tag* t = c.takeIf(40)) ratio = real(*t);
                double from = 0.0;
                double to = 0.0;
                if (const Tag* t = c.takeIf(50)) from = angle(*t);
                if (const Tag* t = c.takeIf(51)) to = angle(*t);
                bool ccw = true;
                if (const Tag* t = c.takeIf(73)) ccw = t->integer() != 0;
                edge.v = Vector2{-edge.u.y, edge.u.x} * ratio;
                const double end = to > from ? to : from + math::sweepAngle(from, to);
                edge.t0 = ccw ? from : -from;
                edge.t1 = ccw ? end : -end;
                loop.edges.emplace_back(edge);
            } else if (type == 4) {
                engine::HatchSplineEdge edge;
                std::int64_t knots = 0;
                std::int64_t points = 0;
                while (c.peek().code == 94 || c.peek().code == 73 || c.peek().code == 74 || c.peek().code == 95 ||
                       c.peek().code == 96) {
                    const Tag& tag = c.take();
                    if (tag.code == 94) edge.degree = small(tag);
                    if (tag.code == 74) edge.periodic = tag.integer() != 0;
                    if (tag.code == 95) knots = tag.integer();
                    if (tag.code == 96) points = tag.integer();
                    if (tag.code == 96) break;
                }
                edge.knots.reserve(bounded(knots, c.left()));
                edge.control.reserve(bounded(points, c.left() / 2));
                while (c.peek().code == 40) edge.knots.push_back(real(c.take()));
                while (c.peek().code == 10) {
                    edge.control.push_back(point(10));
                    if (const Tag* t = c.takeIf(42)) {
                        edge.weights.resize(edge.control.size() - 1, 1.0);
                        edge.weights.push_back(real(*t));
                    }
                }
                if (!edge.weights.empty()) edge.weights.resize(edge.control.size(), 1.0);
                // A 97 here counts fit points when another one, for the path's sources, follows them; else it is
                // that other one.
                if (c.peek().code == 97) {
                    std::size_t ahead = 1;
                    while (c.peek(ahead).code == 11 || c.peek(ahead).code == 21) ++ahead;
                    const std::int32_t next = c.peek(ahead).code;
                    if (ahead > 1 || next == 97 || next == 72 || next == 12 || next == 13) {
                        c.take();
                        while (c.peek().code == 11) edge.fit.push_back(point(11));
                        if (c.peek().code == 12) edge.startTangent = point(12);
                        if (c.peek().code == 13) edge.endTangent = point(13);
                    }
                }
                loop.edges.emplace_back(std::move(edge));
            } else {
                break;
            }
        }
    }
    if (c.takeIf(97) != nullptr)
        while (c.peek().code == 330) {
            const std::uint64_t source = c.take().handle();
            if (associative && source != 0) loop.sources.push_back(source);
        }
    if (loop.vertices.empty() && loop.edges.empty()) return true;
    loop.inner =
        (loop.type & (engine::HatchLoop::kExternal | engine::HatchLoop::kOutermost)) == 0 && !hatch.loops.empty();
    hatch.loops.push_back(std::move(loop));
    return true;
}

std::unique_ptr<Entity> Reader::buildHatch(const EntityTags& tags) {
    auto out = std::make_unique<HatchEntity>();
    Vector3 base;
    Vector3 normal{0, 0, 1};
    bool solid = false;
    bool associative = false;
    TagCursor c(tags.body);
    while (!c.atEnd() && c.peek().code != 91) {
        const Tag& tag = c.take();
        if (axis(tag, 10, base) || axis(tag, 210, normal)) continue;
        if (tag.code == 2) out->patternName = name(tag);
        if (tag.code == 70) solid = tag.integer() != 0;
        if (tag.code == 71) associative = tag.integer() != 0;
    }
    std::int64_t paths = 0;
    if (const Tag* t = c.takeIf(91)) paths = t->integer();
    for (std::int64_t i = 0; i < paths && !c.atEnd(); ++i) {
        // What a damaged path leaves behind is passed over up to the next one.
        while (!c.atEnd() && c.peek().code != 92 && c.peek().code != 75) c.take();
        if (!readHatchLoop(c, *out, associative)) break;
    }

    std::vector<engine::HatchFamily> families;
    engine::HatchGradient gradient;
    bool hasGradient = false;
    while (!c.atEnd()) {
        const Tag& tag = c.take();
        switch (tag.code) {
            case 75:
                out->islandStyle = std::clamp(small(tag), 0, 2);
                break;
            case 76:
                out->patternType = std::clamp(small(tag), 0, 2);
                break;
            case 52:
                out->patternAngle = angle(tag);
                break;
            case 41:
                out->patternScale = real(tag);
                break;
            case 77:
                out->doubled = tag.integer() != 0;
                break;
            case 53: {
                engine::HatchFamily family;
                family.angle = angle(tag);
                Vector2 step;
                if (const Tag* t = c.takeIf(43)) family.origin.x = real(*t);
                if (const Tag* t = c.takeIf(44)) family.origin.y = real(*t);
                if (const Tag* t = c.takeIf(45)) step.x = real(*t);
                if (const Tag* t = c.takeIf(46)) step.y = real(*t);
                c.takeIf(79);
                while (c.peek().code == 49) family.dashes.push_back(real(c.take()));
                // The file's step is a vector of the plane.
                const Vector2 along = Vector2::from_angle(family.angle);
                family.shift = {step.dot(along), along.cross(step)};
                families.push_back(std::move(family));
                break;
            }
            case 98: {
                while (c.peek().code == 10) {
                    Vector2 p{real(c.take()), 0.0};
                    if (const Tag* t = c.takeIf(20)) p.y = real(*t);
                    out->seedPoints.push_back(p);
                }
                break;
            }
            case 450:
                hasGradient = tag.integer() != 0;
                break;
            case 451:
                gradient.reserved = small(tag);
                break;
            case 460:
                gradient.angle = real(tag);
                break;
            case 461:
                gradient.shift = real(tag);
                break;
            case 452:
                gradient.singleColor = tag.integer() != 0;
                break;
            case 462:
                gradient.tint = real(tag);
                break;
            case 463: {
                engine::HatchGradientStop stop;
                stop.value = real(tag);
                if (const Tag* t = c.takeIf(63))
                    if (const auto color = engine::Color::fromBareIndex(small(*t))) stop.color = *color;
                if (const Tag* t = c.takeIf(421)) {
                    const auto rgb = static_cast<std::uint32_t>(t->integer());
                    stop.color = colorOfRgb(rgb);
                }
                gradient.stops.push_back(stop);
                break;
            }
            case 470:
                gradient.name = text(tag);
                break;
            default:
                break;
        }
    }
    if (out->loops.empty()) return nullptr;
    if (hasGradient) out->gradient = std::move(gradient);
    if (solid && !out->gradient)
        out->patternName = engine::Name("SOLID");
    else if (!solid && !families.empty())
        // Final values: the named pattern may be unknown here, or of another size.
        out->setFinalPattern(families);
    if (solid) out->patternScale = out->patternScale == 0.0 ? 1.0 : out->patternScale;
    setPlane(*out, normal, 0.0, base.z);
    return out;
}

namespace {

bool sameFamilies(const std::vector<engine::HatchFamily>& a, const std::vector<engine::HatchFamily>& b) {
    if (a.size() != b.size()) return false;
    const auto near = [](double x, double y) { return std::abs(x - y) <= 1e-9 * (1.0 + std::abs(x) + std::abs(y)); };
    for (std::size_t i = 0; i < a.size(); ++i) {
        const double turn = std::abs(std::remainder(a[i].angle - b[i].angle, math::kTwoPi));
        if (turn > 1e-9 || !near(a[i].origin.x, b[i].origin.x) || !near(a[i].origin.y, b[i].origin.y) ||
            !near(a[i].shift.x, b[i].shift.x) || !near(a[i].shift.y, b[i].shift.y) ||
            !std::equal(a[i].dashes.begin(), a[i].dashes.end(), b[i].dashes.begin(), b[i].dashes.end(), near))
            return false;
    }
    return true;
}

}  // namespace

/// A pattern that is the library's, as drawn with this scale, angle and origin, is not kept in the hatch.
void Reader::dropKnownPattern(HatchEntity& hatch) {
    if (hatch.ownPattern.empty()) return;
    std::vector<engine::HatchFamily> known;
    if (hatch.patternType == HatchEntity::kUserDefined) {
        HatchEntity plain(hatch);
        plain.ownPattern.clear();
        known = plain.families();
    } else {
        const engine::HatchPattern* pattern = drawing_.findHatchPattern(hatch.patternName);
        if (pattern == nullptr) return;
        for (const double turn : {0.0, math::kPi / 2.0}) {
            if (turn != 0.0 && !hatch.doubled) break;
            for (const engine::HatchFamily& f : pattern->families)
                known.push_back(engine::placedFamily(f, hatch.patternScale, hatch.patternAngle + turn,
                                                     hatch.patternOrigin, hatch.patternMirrored));
        }
    }
    if (sameFamilies(known, hatch.families())) hatch.ownPattern.clear();
}

}  // namespace kova::io::dxf
