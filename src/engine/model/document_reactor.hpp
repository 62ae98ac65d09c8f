#pragma once

namespace kova::engine {

class Drawing;
class Entity;

/// Hears of changes made through a document. Reactors are not owned by the document.
class IDocumentReactor {
public:
    virtual ~IDocumentReactor() = default;
    virtual void entityAdded(Drawing& drawing, Entity& entity) = 0;
    virtual void entityModified(Drawing& drawing, Entity& entity) = 0;
    /// Called before the entity leaves the drawing.
    virtual void entityErased(Drawing& drawing, Entity& entity) = 0;
    /// A group of changes is about to be closed: the last chance to change what depends on them, within the group.
    virtual void groupClosing(Drawing& drawing) = 0;
    /// After an undo or redo.
    virtual void documentRestored(Drawing& drawing) = 0;
};

}  // namespace kova::engine
