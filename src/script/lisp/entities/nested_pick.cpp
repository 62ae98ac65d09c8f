#include "script/lisp/entities/nested_pick.hpp"

#include "engine/model/drawing.hpp"
#include "engine/entities/block_nesting.hpp"
#include "engine/entities/block_reference.hpp"
#include "engine/model/object_plane.hpp"

namespace kova::script::lisp {

using namespace engine;
using math::Matrix4;
using math::Vector2;

namespace {

/// More copies of a grid than this are not looked into.
constexpr std::int64_t kMaxCopies = 10'000;

class Search {
public:
    explicit Search(const Vector2& p) : p_(p), nesting_(BlockNesting::Purpose::Measure) {}

    void reference(const BlockReferenceEntity& e, const Matrix4& outer) {
        attributes(e, outer);
        const Block* block = e.block();
        if (block == nullptr) return;
        BlockNesting nesting(BlockNesting::Purpose::Measure, *block);
        if (!nesting.entered()) return;
        containers_.push_back(e.handle());
        const std::int64_t copies = static_cast<std::int64_t>(e.rowCount()) * e.columnCount();
        for (std::int64_t i = 0; i < std::min(copies, kMaxCopies); ++i) {
            if (!nesting.takePlacement()) break;
            const auto row = static_cast<std::int32_t>(i / e.columnCount());
            const auto column = static_cast<std::int32_t>(i % e.columnCount());
            contents(*block, outer * e.blockMatrix(row, column), nesting);
        }
        containers_.pop_back();
    }
    NestedPick take() { return std::move(best_); }

private:
    void contents(const Block& block, const Matrix4& toWorld, BlockNesting& nesting) {
        const auto toBlock = toWorld.inverse();
        if (!toBlock) return;
        const Vector2 local = toBlock->transform_point(p_);
        for (const Entity& e : block.entities) {
            if (!nesting.takeEntity()) return;
            if (hiddenInReferences(e)) continue;
            if (e.type() == EntityType::BlockReference) {
                reference(static_cast<const BlockReferenceEntity&>(e), toWorld);
                continue;
            }
            if (!std::isfinite(e.distanceTo(local))) continue;
            offer(toWorld.transform_point(e.nearestPoint(local)), e, 0, toWorld);
        }
    }
    void attributes(const BlockReferenceEntity& e, const Matrix4& outer) {
        const auto toOwner = outer.inverse();
        if (!toOwner || e.attributes.empty()) return;
        for (std::size_t i = 0; i < e.attributes.size(); ++i) {
            const BlockAttribute& attribute = e.attributes[i];
            const auto inPlane = e.attributeFromPlan(attribute, toOwner->transform_point(p_));
            if (!inPlane || attribute.invisible || attribute.value.empty()) continue;
            const Vector2 nearest = nearestOnTextLine(attribute.line(), e.drawing(), *inPlane);
            offer(outer.transform_point(e.planFromAttribute(attribute, nearest)), e, i + 1, outer);
        }
    }
    void offer(const Vector2& nearest, const Entity& e, std::size_t attribute, const Matrix4& toWorld) {
        const double distance = nearest.distance_to(p_);
        if (!(distance < distance_)) return;
        distance_ = distance;
        best_ = {&e, attribute, toWorld, {containers_.rbegin(), containers_.rend()}};
    }

    Vector2 p_;
    BlockNesting nesting_;
    std::vector<std::uint64_t> containers_;
    NestedPick best_;
    double distance_ = std::numeric_limits<double>::infinity();
};

}  // namespace

NestedPick pickNested(const BlockReferenceEntity& reference, const Vector2& p) {
    Search search(p);
    search.reference(reference, Matrix4());
    return search.take();
}

}  // namespace kova::script::lisp
