#pragma once

namespace kova::engine {

class Entity;
class EntityList;

/// Hears of every change of a drawing's entity lists, whoever makes it; how the spatial index stays true.
class SpaceObserver {
public:
    virtual ~SpaceObserver() = default;
    virtual void entityAdded(EntityList& list, Entity& entity) = 0;
    /// Called before the entity leaves the list.
    virtual void entityRemoved(EntityList& list, Entity& entity) = 0;
    /// The entity was changed in place.
    virtual void entityChanged(EntityList& list, Entity& entity) = 0;
    /// The list was rearranged, or entered or left the drawing as a whole.
    virtual void listChanged(EntityList& list) = 0;
};

}  // namespace kova::engine
