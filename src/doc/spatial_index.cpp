#include "doc/spatial_index.hpp"

#define BOOST_ALLOW_DEPRECATED_HEADERS
#include <boost/geometry.hpp>
#include <boost/geometry/geometries/box.hpp>
#include <boost/geometry/geometries/point.hpp>
#include <boost/geometry/index/rtree.hpp>

namespace kova::doc {

namespace {

namespace bg = boost::geometry;
namespace bgi = boost::geometry::index;

using TreePoint = bg::model::point<double, 2, bg::cs::cartesian>;
using TreeBox = bg::model::box<TreePoint>;
using TreeItem = std::pair<TreeBox, engine::Entity*>;
struct SameEntity {
    bool operator()(const TreeItem& a, const TreeItem& b) const { return a.second == b.second; }
};
using Tree = bgi::rtree<TreeItem, bgi::quadratic<16>, bgi::indexable<TreeItem>, SameEntity>;

/// Coordinates beyond this (or infinite) would spoil the tree's area measures; their entities are looked at one by one.
constexpr double kTreeReach = 1e150;

/// Distances that differ less than this count as equal when the nearest entity is sought.
constexpr double kSameDistance = 1e-10;
/// With no more entities than this the nearest one is sought in one go.
constexpr double kFewEntities = 64.0;

enum class Sort : std::uint8_t { Absent, InTree, Aside, Unbounded };

Sort sortOf(const engine::Entity& entity, const math::Bounds2& box) {
    if (entity.type() == engine::EntityType::Xline || entity.type() == engine::EntityType::Ray) return Sort::Unbounded;
    // Written so that a box with a coordinate that is no number counts as empty.
    if (!(box.min.x <= box.max.x && box.min.y <= box.max.y)) return Sort::Absent;
    const bool near =
        box.min.x >= -kTreeReach && box.min.y >= -kTreeReach && box.max.x <= kTreeReach && box.max.y <= kTreeReach;
    return near ? Sort::InTree : Sort::Aside;
}

TreeBox treeBox(const math::Bounds2& b) { return {TreePoint(b.min.x, b.min.y), TreePoint(b.max.x, b.max.y)}; }

}  // namespace

/// The tree, and per slot of the list what it holds of that slot's entity: an entity is taken out of the tree by the
/// box it was put in with, whatever it has become since.
struct SpatialIndex::Impl {
    struct Entry {
        math::Bounds2 box;
        Sort sort = Sort::Absent;
    };

    Tree tree;
    std::vector<Entry> entries;
    std::vector<engine::Entity*> aside;      ///< too far out for the tree
    std::vector<engine::Entity*> unbounded;  ///< construction lines and rays
    std::size_t references = 0;              ///< block references, whose boxes depend on their blocks

    Entry& entry(const engine::Entity& entity) {
        if (entity.order() >= entries.size()) entries.resize(entity.order() + std::size_t{1});
        return entries[entity.order()];
    }
    void insert(engine::Entity& entity) {
        Entry& e = entry(entity);
        e.box = entity.bounds();
        e.sort = sortOf(entity, e.box);
        if (e.sort == Sort::InTree) tree.insert(TreeItem(treeBox(e.box), &entity));
        if (e.sort == Sort::Aside) aside.push_back(&entity);
        if (e.sort == Sort::Unbounded) unbounded.push_back(&entity);
        if (entity.type() == engine::EntityType::BlockReference) ++references;
    }
    void remove(engine::Entity& entity) {
        Entry& e = entry(entity);
        if (e.sort == Sort::InTree) tree.remove(TreeItem(treeBox(e.box), &entity));
        if (e.sort == Sort::Aside) std::erase(aside, &entity);
        if (e.sort == Sort::Unbounded) std::erase(unbounded, &entity);
        if (entity.type() == engine::EntityType::BlockReference && references > 0) --references;
        e.sort = Sort::Absent;
    }
};

SpatialIndex::SpatialIndex(engine::EntityList& list) : list_(list) {}
SpatialIndex::~SpatialIndex() = default;

void SpatialIndex::build() {
    auto impl = std::make_unique<Impl>();
    impl->entries.resize(list_.slotCount());
    std::vector<TreeItem> items;
    items.reserve(list_.size());
    for (engine::Entity& entity : list_) {
        Impl::Entry& e = impl->entries[entity.order()];
        e.box = entity.bounds();
        e.sort = sortOf(entity, e.box);
        if (e.sort == Sort::InTree) items.emplace_back(treeBox(e.box), &entity);
        if (e.sort == Sort::Aside) impl->aside.push_back(&entity);
        if (e.sort == Sort::Unbounded) impl->unbounded.push_back(&entity);
        if (entity.type() == engine::EntityType::BlockReference) ++impl->references;
    }
    impl->tree = Tree(items.begin(), items.end());
    impl_ = std::move(impl);
}

std::vector<engine::Entity*> SpatialIndex::query(const math::Bounds2& box) {
    if (!impl_) build();
    pendingChanges_ = 0;
    std::vector<engine::Entity*> found;
    if (box.min.x <= box.max.x && box.min.y <= box.max.y) {
        const auto end = impl_->tree.qend();
        for (auto it = impl_->tree.qbegin(bgi::intersects(treeBox(box))); it != end; ++it) found.push_back(it->second);
        for (engine::Entity* entity : impl_->aside)
            if (impl_->entry(*entity).box.intersects(box)) found.push_back(entity);
    }
    found.insert(found.end(), impl_->unbounded.begin(), impl_->unbounded.end());
    std::sort(found.begin(), found.end(),
              [](const engine::Entity* a, const engine::Entity* b) { return a->order() < b->order(); });
    return found;
}

engine::Entity* SpatialIndex::nearest(const math::Vector2& p, double tolerance,
                                      const std::function<bool(const engine::Entity&)>& filter) {
    if (!(tolerance >= 0.0) || !std::isfinite(p.x) || !std::isfinite(p.y)) return nullptr;
    if (!impl_) build();
    // Among many entities the nearest one is mostly far nearer than the tolerance: the search widens until it is sure.
    double reach = tolerance * std::min(1.0, kFewEntities / static_cast<double>(impl_->tree.size() + 1));
    for (;;) {
        engine::Entity* best = nullptr;
        double least = tolerance;
        for (engine::Entity* entity : query(math::Bounds2(p, p).inflated(reach))) {
            if (filter && !filter(*entity)) continue;
            const double distance = entity->distanceTo(p);
            if (!(distance <= (best != nullptr ? least + kSameDistance : tolerance))) continue;
            least = std::min(least, distance);
            best = entity;
        }
        if (reach >= tolerance || (best != nullptr && least + kSameDistance <= reach)) return best;
        reach = std::min(tolerance, best != nullptr ? least + 2.0 * kSameDistance : reach * 8.0);
    }
}

math::Bounds2 SpatialIndex::extents() {
    if (!impl_) build();
    if (impl_->tree.empty()) return {};
    const TreeBox box = impl_->tree.bounds();
    return {{box.min_corner().get<0>(), box.min_corner().get<1>()},
            {box.max_corner().get<0>(), box.max_corner().get<1>()}};
}

bool SpatialIndex::dependsOnBlocks() const { return impl_ && impl_->references != 0; }

bool SpatialIndex::keep() {
    if (!impl_) return false;
    if (++pendingChanges_ <= impl_->tree.size() / 10 + 1000) return true;
    impl_.reset();
    return false;
}

void SpatialIndex::added(engine::Entity& entity) {
    if (keep()) impl_->insert(entity);
}

void SpatialIndex::removed(engine::Entity& entity) {
    if (keep()) impl_->remove(entity);
}

void SpatialIndex::changed(engine::Entity& entity) {
    if (!keep()) return;
    impl_->remove(entity);
    impl_->insert(entity);
}

void SpatialIndex::invalidate() { impl_.reset(); }

}  // namespace kova::doc
