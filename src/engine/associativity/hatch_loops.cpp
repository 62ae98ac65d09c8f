#include "engine/associativity/hatch_loops.hpp"

#include "engine/model/drawing.hpp"
#include "math/curves/ring_nesting.hpp"
#include "math/curves/polygon.hpp"

namespace kova::engine {

using math::BoundaryLoop;
using math::Bounds2;
using math::Vector2;

namespace {

/// Searches kept at a time.
constexpr std::size_t kMaxSearches = 64;
/// Pieces beside which areas are looked for when no known point lies in the right one.
constexpr std::size_t kMaxProbes = 64;
/// Curves follow their pieces, and copies their originals, within this part of the size.
constexpr double kNear = 1e-5;
/// Sizes closer than this are those of one shape that was moved or turned.
constexpr double kSameShape = 1e-7;

double sizeOf(const Bounds2& box) { return box.is_empty() ? 0.0 : std::hypot(box.width(), box.height()); }

/// What rounding leaves at such coordinates.
double roundingOf(const Bounds2& box) {
    if (box.is_empty()) return 0.0;
    return 1e-10 * std::max({std::abs(box.min.x), std::abs(box.min.y), std::abs(box.max.x), std::abs(box.max.y)});
}

Bounds2 boxOf(const HatchLoop& loop) { return pathBounds(loop.path()); }

bool contains(const BoundaryLoop& loop, const Vector2& p) { return math::pointInPolygon(p, loop.points, loop.bulges); }

double areaOf(const BoundaryLoop& loop) { return std::abs(math::signedArea(loop.points, loop.bulges)); }

bool congruent(const BoundaryLoop& a, const BoundaryLoop& b) {
    const double area = areaOf(a);
    const double length = math::perimeter(a.points, a.bulges);
    return std::abs(areaOf(b) - area) <= kSameShape * area &&
           std::abs(math::perimeter(b.points, b.bulges) - length) <= kSameShape * length;
}

/// A point as it lies when `before` has become `now`.
Vector2 carried(const Vector2& p, const Bounds2& before, const Bounds2& now) {
    const auto axis = [](double v, double from0, double from1, double to0, double to1) {
        const double width = from1 - from0;
        return width > 0.0 ? to0 + (v - from0) / width * (to1 - to0) : v + to0 - from0;
    };
    return {axis(p.x, before.min.x, before.max.x, now.min.x, now.max.x),
            axis(p.y, before.min.y, before.max.y, now.min.y, now.max.y)};
}

}  // namespace

bool sameFigure(const HatchLoop& a, const HatchLoop& b) {
    const Bounds2 one = boxOf(a);
    const Bounds2 other = boxOf(b);
    if (one.is_empty() || other.is_empty()) return false;
    const double near = kNear * std::min(sizeOf(one), sizeOf(other)) + roundingOf(one);
    if (!one.min.near_equal(other.min, near) || !one.max.near_equal(other.max, near)) return false;
    return std::abs(areaOf(polylineLoop(a)) - areaOf(polylineLoop(b))) <= near * sizeOf(one);
}

// Covering --------------------------------------------------------------------------------------------------------

LoopCover::LoopCover(const Drawing& drawing, const std::vector<const Entity*>& entities) : entities_(entities) {
    Bounds2 all;
    for (const Entity* entity : entities_) all.expand(entity->bounds());
    LineWork lines(drawing, [&] { return all; });
    std::vector<math::BoundaryPiece> pieces;
    std::vector<Bounds2> boxes;
    for (std::size_t i = 0; i < entities_.size(); ++i) {
        if (auto box = textIsland(*entities_[i])) {
            texts_.emplace_back(hatchLoop(*box, true), entities_[i]);
            boxes.push_back(boxOf(texts_.back().first));
        }
        if (boundsAreas(entities_[i]->type())) addPieces(lines.of(*entities_[i]), static_cast<int>(i), pieces);
    }
    textTree_.emplace(std::move(boxes));
    boxes = {};
    for (const math::BoundaryPiece& piece : pieces) {
        curves_.push_back(math::boundaryCurve(piece.a, piece.b, piece.bulge, piece.source));
        boxes.push_back(curves_.back().box);
    }
    tree_.emplace(std::move(boxes));
}

const Entity* LoopCover::textUnder(const HatchLoop& loop) const {
    const Entity* found = nullptr;
    const Bounds2 box = boxOf(loop);
    if (box.is_empty()) return nullptr;
    textTree_->query(Bounds2(box.center(), box.center()), [&](std::size_t i) {
        if (sameFigure(texts_[i].first, loop)) found = texts_[i].second;
        return found == nullptr;
    });
    return found;
}

std::vector<std::uint64_t> LoopCover::under(const HatchLoop& loop, double gap) const {
    if ((loop.type & HatchLoop::kTextBox) != 0) {
        const Entity* text = textUnder(loop);
        return text != nullptr ? std::vector{text->handle()} : std::vector<std::uint64_t>{};
    }
    const BoundaryLoop figure = polylineLoop(loop);
    const Bounds2 box = boxOf(loop);
    const double near = kNear * sizeOf(box) + roundingOf(box);
    constexpr std::size_t kMaxBeside = 16;
    std::vector<int> beside;  // candidates of all segments, one after the other
    std::vector<std::size_t> ends;
    std::unordered_map<int, std::size_t> uses;
    const std::size_t n = figure.points.size();
    for (std::size_t i = 0; i < n; ++i) {
        const Vector2& a = figure.points[i];
        const Vector2& b = figure.points[i + 1 < n ? i + 1 : 0];
        if (a.distance_to(b) <= std::max(gap, near)) continue;
        const Vector2 middle = math::bulgeMidPoint(a, b, figure.bulges[i]);
        const std::size_t first = beside.size();
        tree_->query(Bounds2(middle, middle).inflated(near), [&](std::size_t k) {
            const int source = curves_[k].source;
            if (!curves_[k].passes(middle, near)) return true;
            if (std::find(beside.begin() + static_cast<std::ptrdiff_t>(first), beside.end(), source) != beside.end())
                return true;
            beside.push_back(source);
            ++uses[source];
            return beside.size() - first < kMaxBeside;
        });
        if (beside.size() == first) return {};
        ends.push_back(beside.size());
    }
    // Where several lie on each other the one that bounds most.
    std::vector<std::uint64_t> handles;
    std::unordered_map<int, bool> taken;
    std::size_t first = 0;
    for (const std::size_t end : ends) {
        int best = beside[first];
        for (std::size_t k = first; k < end; ++k) {
            const std::size_t more = uses[beside[k]];
            if (more > uses[best] || (more == uses[best] && beside[k] < best)) best = beside[k];
        }
        first = end;
        if (taken.emplace(best, true).second) handles.push_back(entities_[static_cast<std::size_t>(best)]->handle());
    }
    return handles;
}

// Making ----------------------------------------------------------------------------------------------------------

LoopMaker::Search& LoopMaker::searchAmong(const HatchLoop& loop) {
    if (const auto known = searches_.find(loop.sources); known != searches_.end()) return known->second;
    if (searches_.size() >= kMaxSearches) searches_.clear();
    Search& made = searches_[loop.sources];
    made.box = {};
    for (const std::uint64_t handle : loop.sources)
        if (const Entity* entity = drawing_.findByHandle(handle)) made.box.expand(entity->bounds());
    Bounds2 reach = made.box;
    reach.expand(boxOf(loop));
    LineWork lines(drawing_, [&] { return reach; });
    for (std::size_t i = 0; i < loop.sources.size(); ++i) {
        const Entity* entity = drawing_.findByHandle(loop.sources[i]);
        if (entity != nullptr && boundsAreas(entity->type()))
            addPieces(lines.of(*entity), static_cast<int>(i), made.pieces);
    }
    made.search = std::make_unique<math::BoundarySearch>(made.pieces, gap_);
    return made;
}

std::optional<LoopMaker::Made> LoopMaker::again(const HatchEntity& hatch, std::size_t loop, const Bounds2& before,
                                                bool all) {
    const HatchLoop& old = hatch.loops[loop];
    if (old.sources.empty()) return std::nullopt;
    std::optional<Made> made;
    if ((old.type & HatchLoop::kTextBox) != 0) {
        const Entity* text = drawing_.findByHandle(old.sources.front());
        if (const auto box = text != nullptr ? textIsland(*text) : std::nullopt) made = Made{hatchLoop(*box, true), {}};
    } else {
        const bool derived = (old.type & HatchLoop::kDerived) != 0;
        std::optional<Vector2> seed;
        if (derived && !old.inner && !hatch.seedPoints.empty()) {
            const BoundaryLoop figure = polylineLoop(old);
            for (const Vector2& p : hatch.seedPoints)
                if (!seed && contains(figure, p)) seed = p;
            // The hatch may have been stretched away from where it was picked.
            const std::vector<Ring> rings = seed ? std::vector<Ring>{} : ringsOf(old.path());
            if (!rings.empty()) seed = pointInside(rings.front());
        }
        if (seed) made = around(old, *seed, before, all);
        if (!seed && !(derived && old.inner)) made = figure(hatch, loop);
        if (!seed && !made) made = outline(old, before);
    }
    if (!made) return std::nullopt;
    if (sameFigure(made->loop, old)) return Made{old, {}};
    made->loop.type = (old.type & ~HatchLoop::kPolyline) | (made->loop.isPolyline() ? HatchLoop::kPolyline : 0);
    made->loop.inner = old.inner;
    made->loop.sources = old.sources;
    return made;
}

std::optional<LoopMaker::Made> LoopMaker::around(const HatchLoop& old, const Vector2& seed, const Bounds2& before,
                                                 bool all) {
    Search& among = searchAmong(old);
    const BoundaryLoop was = polylineLoop(old);
    std::optional<Made> whole;  // with all objects along it
    std::optional<Made> part;
    bool exact = false;
    double difference = 0.0;
    const auto consider = [&](const Vector2& p, bool byArea) {
        const auto area = among.search->around(p, false);
        if (!area) return false;
        Made made{hatchLoop(area->outer, false), p};
        if (area->outer.sources.size() < old.sources.size()) {
            if (!part) part = std::move(made);
            return false;
        }
        exact = congruent(area->outer, was);
        const double off = std::abs(areaOf(area->outer) - areaOf(was));
        if (!whole || exact || (byArea && off < difference)) {
            whole = std::move(made);
            difference = off;
        }
        return exact;
    };
    // As it stands: most often so when the hatch was changed with its objects.
    if (const auto area = among.search->around(seed, false))
        if (sameFigure(hatchLoop(area->outer, false), old)) return Made{old, {}};
    const bool known = !before.is_empty() && !among.box.is_empty();
    const Vector2 moved = known ? carried(seed, before, among.box) : seed;
    if (consider(all ? moved : seed, false)) return whole;
    if (!all && whole) return whole;
    if (moved != seed && consider(all ? seed : moved, false)) return whole;
    if (!all && whole) return whole;
    // Turned, or moved out of itself: the areas along the objects are tried.
    const std::size_t step = std::max<std::size_t>(1, among.pieces.size() / kMaxProbes);
    const bool replaceable = !whole;
    const double off = 1e-4 * sizeOf(boxOf(old));
    for (std::size_t i = 0; i < among.pieces.size() && !among.search->gaveUp(); i += step) {
        const math::BoundaryPiece& piece = among.pieces[i];
        const Vector2 middle = math::bulgeMidPoint(piece.a, piece.b, piece.bulge);
        const Vector2 side = (piece.b - piece.a).normalized().perpendicular() * off;
        if (consider(middle + side, replaceable) || consider(middle - side, replaceable)) return whole;
    }
    return whole ? whole : part;
}

std::optional<LoopMaker::Made> LoopMaker::outline(const HatchLoop& old, const Bounds2& before) {
    Search& among = searchAmong(old);
    const std::vector<BoundaryLoop> loops = among.search->outlines();
    if (loops.empty()) return std::nullopt;
    const Bounds2 box = boxOf(old);
    const Vector2 center =
        before.is_empty() || among.box.is_empty() ? box.center() : carried(box.center(), before, among.box);
    const BoundaryLoop* best = nullptr;
    double least = 0.0;
    for (const BoundaryLoop& loop : loops) {
        const bool whole = loop.sources.size() >= old.sources.size();
        // One with all objects along it before any other, then the nearest.
        const double distance = boxOf(hatchLoop(loop, false)).center().distance_to(center) +
                                (whole ? 0.0 : 2.0 * sizeOf(among.box) + sizeOf(box));
        if (best != nullptr && !(distance < least)) continue;
        best = &loop;
        least = distance;
    }
    return Made{hatchLoop(*best, false), {}};
}

std::optional<LoopMaker::Made> LoopMaker::figure(const HatchEntity& hatch, std::size_t index) {
    const HatchLoop& old = hatch.loops[index];
    if (old.sources.size() != 1) return std::nullopt;
    if (figuresOf_ != &hatch) {
        figures_.clear();
        figuresOf_ = &hatch;
        for (std::size_t i = 0; i < hatch.loops.size(); ++i)
            if (hatch.loops[i].sources.size() == 1) figures_[hatch.loops[i].sources.front()].loops.push_back(i);
    }
    Figures& of = figures_[old.sources.front()];
    std::vector<HatchLoop>& figures = of.figures;
    if (!std::exchange(of.taken, true)) {
        const Entity* entity = drawing_.findByHandle(old.sources.front());
        if (entity == nullptr || !boundsAreas(entity->type()) || entity->type() == EntityType::Xline)
            return std::nullopt;
        LineWork lines(drawing_, {});
        const PathView path = lines.of(*entity);
        for (std::size_t i = 0; i < path.size();) {
            const PathView view = nextFigure(path, i);
            if (isClosedFigure(view)) figures.push_back(figureLoop(view));
        }
        std::erase_if(figures, [](const HatchLoop& f) { return f.edges.empty() && f.vertices.size() < 2; });
    }
    if (figures.size() == 1) return Made{figures.front(), {}};
    // Of several, the one of the same place in the row; when some are left out of the hatch, the nearest.
    if (figures.size() == of.loops.size()) {
        const auto place = std::lower_bound(of.loops.begin(), of.loops.end(), index);
        if (place != of.loops.end() && *place == index)
            return Made{figures[static_cast<std::size_t>(place - of.loops.begin())], {}};
    }
    const Vector2 center = boxOf(old).center();
    const HatchLoop* best = nullptr;
    double least = 0.0;
    for (const HatchLoop& f : figures) {
        const double distance = boxOf(f).center().distance_to(center);
        if (best != nullptr && !(distance < least)) continue;
        best = &f;
        least = distance;
    }
    if (best == nullptr) return std::nullopt;
    return Made{*best, {}};
}

}  // namespace kova::engine
