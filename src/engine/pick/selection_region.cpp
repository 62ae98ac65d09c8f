#include "engine/pick/selection_region.hpp"

#include "math/curves/element_cuts.hpp"
#include "engine/entities/wipeout.hpp"
#include "engine/fonts/fonts.hpp"
#include "math/curves/curves.hpp"
#include "math/curves/polygon.hpp"

namespace kova::cmd {

using engine::Path;
using engine::PathElement;
using engine::PathView;
using math::Bounds2;
using math::Vector2;

namespace {

/// Samples along a curved element whose sides are no simple curves.
constexpr int kSideSamples = 64;
/// Clips are compared with as chords, at most this part of their size off.
constexpr double kClipTolerance = 1e-6;

/// Whether the straight segment meets the box, edges included.
bool segmentMeetsBox(const Vector2& a, const Vector2& b, const Bounds2& box) {
    double t0 = 0.0;
    double t1 = 1.0;
    const auto clip = [&](double from, double step, double low, double high) {
        if (step == 0.0) return from >= low && from <= high;
        double enter = (low - from) / step;
        double leave = (high - from) / step;
        if (enter > leave) std::swap(enter, leave);
        t0 = std::max(t0, enter);
        t1 = std::min(t1, leave);
        return t0 <= t1;
    };
    return clip(a.x, b.x - a.x, box.min.x, box.max.x) && clip(a.y, b.y - a.y, box.min.y, box.max.y);
}

PathElement straight(const Vector2& to) {
    PathElement e;
    e.kind = PathElement::Kind::Line;
    e.p = to;
    return e;
}

}  // namespace

SelectionRegion::SelectionRegion(Kind kind, std::span<const Vector2> points)
    : kind_(kind), points_(points.begin(), points.end()) {
    for (const Vector2& p : points_) bounds_.expand(p);
    const double reach = std::max(
        {std::abs(bounds_.min.x), std::abs(bounds_.min.y), std::abs(bounds_.max.x), std::abs(bounds_.max.y), 1.0});
    tolerance_ = std::max(math::kTolerance, std::isfinite(reach) ? reach * 1e-13 : 0.0);
}

SelectionRegion SelectionRegion::box(const Vector2& a, const Vector2& b) {
    const Vector2 lo{std::min(a.x, b.x), std::min(a.y, b.y)};
    const Vector2 hi{std::max(a.x, b.x), std::max(a.y, b.y)};
    const Vector2 corners[4] = {lo, {hi.x, lo.y}, hi, {lo.x, hi.y}};
    return {Kind::Box, corners};
}

SelectionRegion SelectionRegion::polygon(std::span<const Vector2> points) { return {Kind::Polygon, points}; }
SelectionRegion SelectionRegion::fence(std::span<const Vector2> points) { return {Kind::Fence, points}; }

bool SelectionRegion::contains(const Vector2& p) const {
    if (!bounds_.inflated(tolerance_).contains_point(p)) return false;
    if (isBox()) return true;
    if (!isFence() && math::pointInPolygon(p, points_)) return true;
    for (std::size_t i = 0; i < edgeCount(); ++i)
        if (math::closestOnSegment(p, edgeStart(i), edgeEnd(i)).distance_to(p) <= tolerance_) return true;
    return false;
}

bool ShapeTest::passes(const engine::Entity& entity) {
    any_ = outside_ = touched_ = false;
    clips_.clear();
    // A wipeout is known by its frame: its area would be in the way of what is drawn over it.
    if (entity.type() == engine::EntityType::Wipeout)
        stroke(static_cast<const engine::WipeoutEntity&>(entity).path(), engine::OutlineStyle{}, {});
    else
        entity.emit(*this, engine::outlineStyle(entity));
    return mode_ == Mode::Inside ? any_ && !outside_ : touched_;
}

void ShapeTest::judge(bool inside) {
    any_ = true;
    if (mode_ == Mode::Inside)
        outside_ = outside_ || !inside;
    else
        touched_ = touched_ || inside;
}

bool ShapeTest::shown(const Vector2& p) const {
    for (const Clip& clip : clips_)
        if (engine::insidePath(clip.path, p) == clip.inverted) return false;
    return true;
}

void ShapeTest::line(const Vector2& a, const Vector2& b, const engine::OutlineStyle& /*style*/) {
    if (!decided()) testElement(straight(b), a);
}

void ShapeTest::stroke(PathView path, const engine::OutlineStyle& /*style*/, const engine::StrokeOptions& options) {
    Vector2 from;
    std::size_t drawn = 0;
    for (const PathElement& e : path) {
        if (decided()) return;
        if (e.kind != PathElement::Kind::Move) {
            const Vector2 widths = drawn < options.widths.size() ? options.widths[drawn] : Vector2{};
            ++drawn;
            if (widths == Vector2{})
                testElement(e, from);
            else
                testWide(e, from, widths);
        }
        from = e.p;
    }
}

void ShapeTest::testElement(const PathElement& e, const Vector2& from) {
    if (!clips_.empty()) return testPieces(e, from);
    const bool line = e.kind == PathElement::Kind::Line || e.kind == PathElement::Kind::Close;
    if (region_.isBox()) {
        const Bounds2 box = region_.bounds().inflated(region_.tolerance());
        if (line)
            return judge(mode_ == Mode::Inside ? box.contains_point(from) && box.contains_point(e.p)
                                               : segmentMeetsBox(from, e.p, box));
        const Bounds2 extents = engine::elementBounds(e, from);
        if (mode_ == Mode::Inside || box.contains_box(extents)) return judge(box.contains_box(extents));
        if (!box.intersects(extents)) return judge(false);
    } else if (!region_.bounds().inflated(region_.tolerance()).intersects(engine::elementBounds(e, from))) {
        return judge(false);
    }
    testPieces(e, from);
}

/// Cuts the element at the edges of the region and of the clips and judges the pieces between by their middles.
void ShapeTest::testPieces(const PathElement& e, const Vector2& from) {
    cuts_.clear();
    for (std::size_t i = 0; i < region_.edgeCount(); ++i)
        cutElement(e, from, region_.edgeStart(i), region_.edgeEnd(i), region_.tolerance(), cuts_);
    if (clips_.empty() && mode_ == Mode::Touches) {
        // Nothing is hidden, so that the first touch decides, and without one any point of the element does.
        return judge(!cuts_.empty() || region_.contains(from));
    }
    const std::size_t regionCuts = cuts_.size();
    std::vector<double> touches(cuts_.begin(), cuts_.begin() + static_cast<std::ptrdiff_t>(regionCuts));
    for (const Clip& clip : clips_)
        for (const auto& ring : clip.edges)
            for (std::size_t i = 0; i + 1 < ring.size(); ++i)
                cutElement(e, from, ring[i], ring[i + 1], region_.tolerance(), cuts_);
    cuts_.push_back(0.0);
    cuts_.push_back(1.0);
    std::sort(cuts_.begin(), cuts_.end());
    std::sort(touches.begin(), touches.end());
    const bool isPoint = from == e.p && e.kind == PathElement::Kind::Line;
    for (std::size_t i = 0; i + 1 < cuts_.size(); ++i) {
        if (cuts_[i + 1] - cuts_[i] < 1e-12 && !isPoint) continue;
        const Vector2 middle = engine::elementPoint(e, from, 0.5 * (cuts_[i] + cuts_[i + 1]));
        if (!shown(middle)) continue;
        const auto touch = std::lower_bound(touches.begin(), touches.end(), cuts_[i] - 1e-12);
        const bool atEnd = touch != touches.end() && *touch <= cuts_[i + 1] + 1e-12;
        judge(region_.contains(middle) || (mode_ == Mode::Touches && atEnd));
        if (decided()) return;
    }
}

void ShapeTest::fill(PathView rings, const engine::OutlineStyle& /*style*/, const engine::FillOptions& options) {
    testArea(rings, options.evenOdd);
}

void ShapeTest::pattern(PathView rings, std::span<const engine::HatchFamily> /*families*/,
                        const engine::OutlineStyle& /*style*/) {
    testArea(rings, true);
}

void ShapeTest::testArea(PathView rings, bool evenOdd) {
    Vector2 from;
    for (const PathElement& e : rings) {
        if (decided()) return;
        if (e.kind != PathElement::Kind::Move) testElement(e, from);
        from = e.p;
    }
    if (decided() || mode_ == Mode::Inside || rings.empty()) return;
    // No visible edge of the area meets the region: the region lies wholly within it or wholly without.
    const auto covers = [&](const Vector2& p) { return engine::insidePath(rings, p, evenOdd) && shown(p); };
    for (const Vector2& p : region_.points()) {
        if (covers(p)) return judge(true);
        if (clips_.empty()) return;
    }
    // What the clips leave of the area may still reach into the region along the clips' own edges.
    for (const Clip& clip : clips_)
        for (const auto& ring : clip.edges)
            for (std::size_t i = 0; i + 1 < ring.size(); ++i) {
                std::vector<double> cuts;
                for (std::size_t k = 0; k < region_.edgeCount(); ++k)
                    cutElement(straight(ring[i + 1]), ring[i], region_.edgeStart(k), region_.edgeEnd(k),
                               region_.tolerance(), cuts);
                cuts.push_back(0.0);
                for (const double t : cuts) {
                    const Vector2 p = ring[i].lerp(ring[i + 1], t);
                    if (region_.contains(p) && engine::insidePath(rings, p, evenOdd)) return judge(true);
                }
            }
}

/// A wide element as the area between its two sides.
void ShapeTest::testWide(const PathElement& e, const Vector2& from, const Vector2& widths) {
    const bool curved = e.kind == PathElement::Kind::Arc || e.kind == PathElement::Kind::Cubic;
    const int steps = curved ? kSideSamples : 1;
    std::vector<Vector2> sides;
    const auto addSide = [&](int i, double sign) {
        const double t = static_cast<double>(i) / steps;
        const Vector2 tangent = engine::elementTangent(e, from, t);
        const double speed = tangent.length();
        const double half = 0.5 * (widths.x + (widths.y - widths.x) * t) * sign;
        const Vector2 across = speed > 0.0 ? tangent.perpendicular() / speed : Vector2{};
        sides.push_back(engine::elementPoint(e, from, t) + across * half);
    };
    const double radius = e.a.length();
    const bool circular = e.kind == PathElement::Kind::Arc && radius > 0.0 && widths.x == widths.y &&
                          (e.b == e.a.perpendicular() || e.b == -e.a.perpendicular());
    Path ring;
    if (circular) {
        const double half = 0.5 * widths.x / radius;
        ring.ellipticArc(e.center, e.a * (1.0 + half), e.b * (1.0 + half), e.t0, e.t1);
        ring.ellipticArc(e.center, e.a * (1.0 - half), e.b * (1.0 - half), e.t1, e.t0);
        ring.close();
    } else {
        for (int i = 0; i <= steps; ++i) addSide(i, 1.0);
        for (int i = steps; i >= 0; --i) addSide(i, -1.0);
        ring.polygon(sides);
    }
    testArea(ring, false);
}

void ShapeTest::text(const engine::TextRun& run, const engine::OutlineStyle& /*style*/) {
    if (decided()) return;
    // Measured upright and laid along the run's axes, so that the box turns and slants with the text.
    engine::TextRun upright = run;
    upright.origin = {};
    upright.xAxis = {1, 0};
    upright.yAxis = {0, 1};
    const Bounds2 box = engine::textRunBounds(upright);
    if (box.is_empty()) return;
    const auto place = [&](double x, double y) { return run.origin + run.xAxis * x + run.yAxis * y; };
    const Vector2 corners[4] = {place(box.min.x, box.min.y), place(box.max.x, box.min.y), place(box.max.x, box.max.y),
                                place(box.min.x, box.max.y)};
    testArea(Path().polygon(corners), true);
}

void ShapeTest::unbounded(const Vector2& base, const Vector2& direction, bool bothWays,
                          const engine::OutlineStyle& /*style*/) {
    if (decided()) return;
    if (mode_ == Mode::Inside) return judge(false);
    // The stretch beside the region is all of the line that can meet it.
    const Bounds2& box = region_.bounds();
    const double half = 0.5 * std::hypot(box.width(), box.height()) + region_.tolerance();
    const double along = (box.center() - base).dot(direction);
    const double first = bothWays ? along - half : std::max(0.0, along - half);
    const double last = along + half;
    if (last < first || !std::isfinite(first) || !std::isfinite(last)) return judge(false);
    testElement(straight(base + direction * last), base + direction * first);
}

bool ShapeTest::wants(const Bounds2& extents) const {
    if (decided()) return false;
    return mode_ == Mode::Inside || region_.bounds().inflated(region_.tolerance()).intersects(extents);
}

bool ShapeTest::wantsLayer(engine::Name layer) const {
    const engine::Layer* record = drawing_.layers.find(layer);
    return record == nullptr || record->isVisible();
}

void ShapeTest::pushClip(PathView path, bool inverted) {
    Clip clip;
    clip.path.append(path);
    clip.inverted = inverted;
    const Bounds2 box = engine::pathBounds(path);
    const double size = std::max(box.width(), box.height());
    if (size > 0.0 && std::isfinite(size)) clip.edges = engine::flattenPath(path, size * kClipTolerance);
    clips_.push_back(std::move(clip));
}

void ShapeTest::popClip() {
    if (!clips_.empty()) clips_.pop_back();
}

}  // namespace kova::cmd
