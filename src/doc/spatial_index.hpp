#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <vector>

#include "engine/model/entity_list.hpp"
#include "math/bounds2.hpp"

namespace kova::doc {

/// Finds the entities of one space by place. Built in bulk at the first query and kept up by change notices;
/// a wave of changes drops it, and the next query builds it again.
class SpatialIndex {
public:
    explicit SpatialIndex(engine::EntityList& list);
    ~SpatialIndex();
    SpatialIndex(const SpatialIndex&) = delete;
    SpatialIndex& operator=(const SpatialIndex&) = delete;

    /// Entities whose bounds meet the box, and all unbounded ones (construction lines, rays), in drawing order.
    std::vector<engine::Entity*> query(const math::Bounds2& box);
    /// The entity nearest to p within `tolerance` that the filter accepts, the one drawn last among equals; null: none.
    engine::Entity* nearest(const math::Vector2& p, double tolerance,
                            const std::function<bool(const engine::Entity&)>& filter = {});
    /// Extents of all entities, hidden ones too and those far out and unbounded left out; empty when there are none.
    math::Bounds2 extents();
    bool isBuilt() const { return impl_ != nullptr; }
    /// True while the index holds boxes of block references, which change with their blocks.
    bool dependsOnBlocks() const;

    void added(engine::Entity& entity);
    void removed(engine::Entity& entity);
    void changed(engine::Entity& entity);
    void invalidate();

private:
    struct Impl;
    void build();
    /// Counts a change; true when the index is to be kept up for it.
    bool keep();

    engine::EntityList& list_;
    std::unique_ptr<Impl> impl_;
    std::size_t pendingChanges_ = 0;
};

}  // namespace kova::doc
