#include "engine/pick/nested_picking.hpp"

#include "engine/entities/dynamic_block.hpp"
#include "engine/entities/block_nesting.hpp"

namespace kova::cmd {

using engine::BlockReferenceEntity;
using engine::Entity;
using math::Matrix4;
using math::Vector2;

namespace {

/// Copies of a grid that are looked at one by one; of larger grids only the first copy is.
constexpr double kMaxCopies = 10'000;

double distanceTo(const math::Bounds2& box, const Vector2& p) {
    const double dx = std::max({box.min.x - p.x, 0.0, p.x - box.max.x});
    const double dy = std::max({box.min.y - p.y, 0.0, p.y - box.max.y});
    return std::hypot(dx, dy);
}

class NestedSearch {
public:
    explicit NestedSearch(const Vector2& p) : p_(p) {}

    void enter(const BlockReferenceEntity& reference, const Matrix4& outer) {
        const engine::Block* block = reference.block();
        if (block == nullptr || now_.chain.size() >= engine::kMaxBlockNesting) return;
        for (const BlockReferenceEntity* above : now_.chain)
            if (above->blockName == reference.blockName) return;
        engine::ShownBlock shown = engine::shownBlock(*block, reference);
        if (shown.own) now_.shapes.push_back(shown.own);
        const bool small = double(reference.rowCount()) * reference.columnCount() <= kMaxCopies;
        now_.chain.push_back(&reference);
        for (std::int32_t row = 0; row < (small ? reference.rowCount() : 1); ++row)
            for (std::int32_t column = 0; column < (small ? reference.columnCount() : 1); ++column) {
                const Matrix4 matrix = outer * reference.blockMatrix(*block, row, column);
                if (!isNear(shown.block->extents(), matrix) && !shown.block->hasUnbounded()) continue;
                now_.matrices.push_back(matrix);
                scan(*shown.block, matrix, shown.mask());
                now_.matrices.pop_back();
            }
        now_.chain.pop_back();
        if (shown.own) now_.shapes.pop_back();
    }

    std::optional<NestedPick> take() {
        if (best_.entity == nullptr) return std::nullopt;
        return std::move(best_);
    }

private:
    bool isNear(const math::Bounds2& box, const Matrix4& matrix) const {
        if (box.is_empty()) return false;
        return distanceTo(engine::boundsUnder(box, matrix), p_) <= least_;
    }

    void scan(const engine::Block& block, const Matrix4& matrix, const std::vector<bool>* visible) {
        std::size_t position = 0;
        for (const Entity& entity : block.entities) {
            const std::size_t at = position++;
            if (visible != nullptr && at < visible->size() && !(*visible)[at]) continue;
            if (engine::hiddenInReferences(entity) || budget_ == 0) continue;
            --budget_;
            if (entity.type() == engine::EntityType::BlockReference) {
                enter(static_cast<const BlockReferenceEntity&>(entity), matrix);
                continue;
            }
            const math::Bounds2 box = entity.bounds();
            if (!box.is_empty() && !isNear(box, matrix)) continue;
            const std::unique_ptr<Entity> shown = engine::transformedEntity(entity, matrix);
            const double distance = shown ? shown->distanceTo(p_) : least_;
            if (!(distance < least_)) continue;
            least_ = distance;
            best_ = now_;
            best_.entity = &entity;
        }
    }

    Vector2 p_;
    double least_ = std::numeric_limits<double>::infinity();
    std::size_t budget_ = 1'000'000;
    NestedPick now_;
    NestedPick best_;
};

}  // namespace

std::optional<NestedPick> pickNested(const BlockReferenceEntity& reference, const Vector2& p) {
    NestedSearch search(p);
    search.enter(reference, {});
    return search.take();
}

}  // namespace kova::cmd
