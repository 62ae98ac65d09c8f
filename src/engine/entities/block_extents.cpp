#include "engine/model/drawing.hpp"
#include "engine/entities/block_nesting.hpp"
#include "engine/entities/block_reference.hpp"
#include "engine/model/outline.hpp"
#include "engine/model/block.hpp"

namespace kova::engine {

namespace {

/// An entity as it shows under a map, so that the extents of the outline can be taken from it.
class MappedEntity final : public Entity {
public:
    explicit MappedEntity(const math::Matrix4& m) : map_(m) {}
    void show(const Entity& entity) { shown_ = &entity; }

    EntityType type() const override { return shown_->type(); }
    math::Bounds2 bounds() const override { return outlineBounds(*this); }
    void transform(const math::Matrix4& m) override { map_ = m * map_; }
    std::unique_ptr<Entity> clone() const override { return nullptr; }
    double distanceTo(const math::Vector2& p) const override { return p.distance_to(nearestPoint(p)); }
    math::Vector2 nearestPoint(const math::Vector2& p) const override { return nearestOnOutline(*this, p); }
    std::vector<math::Vector2> gripPoints() const override { return {}; }
    void moveGrip(std::size_t, const math::Vector2&) override {}
    void describe(FieldVisitor&) override {}
    void emit(OutlineSink& sink, const OutlineStyle& style) const override {
        TransformSink mapped(sink, map_);
        shown_->emit(mapped, style);
    }
    std::size_t sizeInBytes() const override { return sizeof *this; }

private:
    math::Matrix4 map_;
    const Entity* shown_ = nullptr;
};

/// A map that leaves the edges of a box parallel to the axes: its corners give exact extents.
bool keepsBoxes(const math::Matrix4& m) {
    const double straight = std::max(std::abs(m(0, 0)), std::abs(m(1, 1)));
    const double crossed = std::max(std::abs(m(0, 1)), std::abs(m(1, 0)));
    return crossed <= 1e-14 * straight || straight <= 1e-14 * crossed;
}

constexpr std::size_t kKeptPlacements = 8;

}  // namespace

math::Bounds2 boundsUnder(const math::Bounds2& box, const math::Matrix4& m) {
    math::Bounds2 out;
    if (box.is_empty()) return out;
    out.expand(m.transform_point(box.min));
    out.expand(m.transform_point(box.max));
    out.expand(m.transform_point(math::Vector2{box.min.x, box.max.y}));
    out.expand(m.transform_point(math::Vector2{box.max.x, box.min.y}));
    return out;
}

void Block::refreshCache() const {
    const Drawing* drawing = entities.drawing();
    const auto revision = [&] {
        return drawing != nullptr && !selfContained_ ? drawing->revision() : entities.revision();
    };
    if (drawing == cacheDrawing_ && revision() == cacheRevision_) return;
    // A block whose shape hangs on nothing but its own entities stays measured while the rest of the drawing changes.
    selfContained_ = std::none_of(entities.begin(), entities.end(), [](const Entity& e) {
        switch (e.type()) {
            case EntityType::BlockReference:
            case EntityType::Dimension:
            case EntityType::Leader:
            case EntityType::MLeader:
            case EntityType::Table:
                return true;
            default:
                return false;
        }
    });
    cacheDrawing_ = drawing;
    cacheRevision_ = revision();
    measured_ = false;
    placed_.clear();
    nextPlaced_ = 0;
}

math::Bounds2 Block::measure(const math::Matrix4* m, const std::vector<bool>* visible) const {
    math::Bounds2 box;
    BlockNesting nesting(BlockNesting::Purpose::Measure, *this);
    if (!nesting.entered()) return box;
    const bool exactCorners = m == nullptr || keepsBoxes(*m);
    MappedEntity mapped(m != nullptr ? *m : math::Matrix4{});
    std::size_t position = 0;
    for (const Entity& e : entities) {
        const std::size_t at = position++;
        if (hiddenInReferences(e) || (visible != nullptr && (at >= visible->size() || !(*visible)[at]))) continue;
        if (!nesting.takeEntity()) break;
        if (e.type() == EntityType::BlockReference) {
            if (!nesting.takePlacement()) break;
            box.expand(static_cast<const BlockReferenceEntity&>(e).boundsUnder(m != nullptr ? *m : math::Matrix4{}));
        } else if (exactCorners) {
            box.expand(m != nullptr ? engine::boundsUnder(e.bounds(), *m) : e.bounds());
        } else {
            mapped.show(e);
            box.expand(mapped.bounds());
        }
    }
    return box;
}

math::Bounds2 Block::extents() const {
    refreshCache();
    if (measured_) return extents_;
    // What a cycle or a limit cut short is only kept for the block that was asked for: the blocks below it would
    // show more when asked for themselves.
    BlockNesting span(BlockNesting::Purpose::Measure);
    const math::Bounds2 box = measure(nullptr, nullptr);
    bool unbounded = false;
    for (const Entity& e : entities)
        if (e.type() == EntityType::Xline || e.type() == EntityType::Ray) unbounded = true;
    for (const Entity& e : entities) {
        if (unbounded) break;
        if (e.type() != EntityType::BlockReference) continue;
        const Block* inner = static_cast<const BlockReferenceEntity&>(e).block();
        // Their extents have just been measured above, so this ends with one look at each.
        if (inner != nullptr && inner->measured_ && inner->unbounded_) unbounded = true;
    }
    if (!span.truncated() || span.outermost()) {
        extents_ = box;
        unbounded_ = unbounded;
        measured_ = true;
    }
    return box;
}

bool Block::hasUnbounded() const {
    extents();
    return unbounded_;
}

math::Bounds2 Block::extents(const math::Matrix4& m, const std::vector<bool>* visible) const {
    if (visible != nullptr) return measure(&m, visible);
    if (keepsBoxes(m)) return engine::boundsUnder(extents(), m);
    refreshCache();
    const math::Vector2 shift{m(0, 3), m(1, 3)};
    const auto moved = [&](const math::Bounds2& b) {
        return b.is_empty() ? b : math::Bounds2{b.min + shift, b.max + shift};
    };
    for (const Placed& p : placed_)
        if (p.xx == m(0, 0) && p.xy == m(0, 1) && p.yx == m(1, 0) && p.yy == m(1, 1)) return moved(p.box);
    math::Matrix4 linear;
    linear(0, 0) = m(0, 0);
    linear(0, 1) = m(0, 1);
    linear(1, 0) = m(1, 0);
    linear(1, 1) = m(1, 1);
    BlockNesting span(BlockNesting::Purpose::Measure);
    math::Bounds2 box = measure(&linear, nullptr);
    if (span.truncated() && !span.outermost()) return moved(box);
    const Placed placed{m(0, 0), m(0, 1), m(1, 0), m(1, 1), box};
    if (placed_.size() < kKeptPlacements)
        placed_.push_back(placed);
    else
        placed_[nextPlaced_++ % kKeptPlacements] = placed;
    return moved(box);
}

}  // namespace kova::engine
