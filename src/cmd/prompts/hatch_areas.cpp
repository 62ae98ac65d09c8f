#include "cmd/prompts/hatch_areas.hpp"

#include "math/curves/polygon.hpp"

namespace kova::cmd::commands {

using engine::HatchEntity;
using engine::HatchLoop;
using math::BoundaryLoop;
using math::Vector2;

namespace {

/// A text's box is an island when all of it lies in the area, outside the others.
bool isFree(const BoundaryLoop& box, const math::BoundaryArea& area) {
    for (const Vector2& p : box.points) {
        if (!math::pointInPolygon(p, area.outer.points, area.outer.bulges)) return false;
        for (const BoundaryLoop& island : area.islands)
            if (math::pointInPolygon(p, island.points, island.bulges)) return false;
    }
    return true;
}

}  // namespace

void HatchAreaFinder::limitTo(std::optional<std::vector<std::uint64_t>> ids) {
    only_ = std::move(ids);
    work_.reset();
    search_.reset();
}

void HatchAreaFinder::setGap(double gap) {
    if (gap == gap_) return;
    gap_ = gap;
    search_.reset();
}

std::optional<HatchArea> HatchAreaFinder::around(const Vector2& p, std::int32_t islandStyle, bool islands) {
    if (!work_) work_ = boundaryWork(document_, only_ ? &*only_ : nullptr);
    if (!search_) search_ = std::make_unique<math::BoundarySearch>(work_->pieces, gap_);
    const bool wanted = islands && islandStyle != HatchEntity::kIgnore;
    const auto found = search_->around(p, wanted);
    if (!found) return std::nullopt;
    HatchArea area;
    area.seed = p;
    take(found->outer, false, area);
    if (!wanted) return area;
    const int deepest = islandStyle == HatchEntity::kNormal ? 1 << 20 : 0;
    for (const BoundaryLoop& island : found->islands) {
        if (island.depth > deepest) continue;
        take(island, true, area);
    }
    for (const BoundaryLoop& box : work_->texts)
        if (isFree(box, *found)) {
            take(box, true, area);
            area.loops.back().type |= HatchLoop::kTextBox;
        }
    return area;
}

void HatchAreaFinder::take(const BoundaryLoop& loop, bool island, HatchArea& area) const {
    area.loops.push_back(hatchLoop(loop, island));
    for (const int source : loop.sources) {
        const std::uint64_t id = work_->ids[static_cast<std::size_t>(source)];
        area.sources.push_back(id);
        if (const engine::Entity* entity = document_.drawing().findById(id))
            area.loops.back().sources.push_back(entity->handle());
    }
}

const char* HatchAreaFinder::refusal() const {
    return search_ && search_->gaveUp() ? kBoundaryGaveUp : kNoHatchBoundary;
}

HatchArea areaOfObjects(doc::Document& document, std::span<const std::uint64_t> ids, double gap) {
    ClosedFigures figures = closedFigures(document, ids, gap);
    HatchArea area;
    if (figures.gaveUp) area.refusal = kBoundaryGaveUp;
    if (figures.loops.empty()) return area;
    area.loops = std::move(figures.loops);
    area.sources = std::move(figures.used);
    for (const std::uint64_t id : ids) {
        const engine::Entity* entity = document.drawing().findById(id);
        const auto box = entity != nullptr ? engine::textIsland(*entity) : std::nullopt;
        if (!box) continue;
        area.loops.push_back(hatchLoop(*box, true));
        area.loops.back().type |= HatchLoop::kTextBox;
        area.loops.back().sources.push_back(entity->handle());
    }
    return area;
}

bool sameOutline(const HatchLoop& a, const HatchLoop& b) {
    if (a.vertices.empty() || a.vertices.size() != b.vertices.size() || a.bulges.size() != b.bulges.size())
        return false;
    const auto from = std::find(a.vertices.begin(), a.vertices.end(), b.vertices.front());
    if (from == a.vertices.end()) return false;
    const std::size_t n = a.vertices.size();
    const auto shift = static_cast<std::size_t>(from - a.vertices.begin());
    for (std::size_t i = 0; i < n; ++i) {
        const std::size_t k = (i + shift) % n;
        if (a.vertices[k] != b.vertices[i]) return false;
        if (!a.bulges.empty() && a.bulges[k] != b.bulges[i]) return false;
    }
    return true;
}

std::size_t removeLoops(std::vector<HatchLoop>& loops, const std::vector<HatchLoop>& figures) {
    std::size_t removed = 0;
    for (const HatchLoop& figure : figures) {
        const math::Bounds2 box = engine::pathBounds(figure.path());
        const double near = 1e-6 * (1.0 + box.width() + box.height());
        removed += std::erase_if(loops, [&](const HatchLoop& loop) {
            const math::Bounds2 other = engine::pathBounds(loop.path());
            return other.min.near_equal(box.min, near) && other.max.near_equal(box.max, near);
        });
    }
    return removed;
}

}  // namespace kova::cmd::commands
