#include "doc/viewport_clips.hpp"

#include "engine/entities/viewport.hpp"

namespace kova::doc {

using engine::Drawing;
using engine::Entity;
using engine::EntityType;
using engine::ViewportEntity;
using math::Bounds2;
using math::Matrix4;
using math::Vector2;

namespace {

const ViewportEntity* boundedViewport(const Entity& entity) {
    if (entity.type() != EntityType::Viewport) return nullptr;
    const auto& viewport = static_cast<const ViewportEntity&>(entity);
    return viewport.clipHandle != 0 ? &viewport : nullptr;
}

bool same(const Bounds2& a, const Bounds2& b) {
    const double size = std::max({std::abs(a.min.x), std::abs(a.min.y), std::abs(a.max.x), std::abs(a.max.y), 1.0});
    return a.min.near_equal(b.min, 1e-9 * size) && a.max.near_equal(b.max, 1e-9 * size);
}

bool hasArea(const Bounds2& box) {
    return !box.is_empty() && box.width() > 0.0 && box.height() > 0.0 && box.min.is_finite() && box.max.is_finite();
}

/// Carries one box onto another; only moves it when they are equally large.
Matrix4 boxToBox(const Bounds2& from, const Bounds2& to) {
    const double x = to.width() / from.width();
    const double y = to.height() / from.height();
    const Matrix4 move = Matrix4::translation(to.center()) * Matrix4::translation(-from.center());
    if (std::abs(x - 1.0) < 1e-9 && std::abs(y - 1.0) < 1e-9) return move;
    return Matrix4::translation(to.center()) * Matrix4::scaling(x, y) * Matrix4::translation(-from.center());
}

}  // namespace

ViewportClips::ViewportClips(Document& document) : QObject(&document), document_(document) {}

void ViewportClips::index(const Entity& entity) {
    const ViewportEntity* viewport = boundedViewport(entity);
    if (viewport == nullptr) return;
    std::vector<std::uint64_t>& handles = bounded_[viewport->clipHandle];
    if (std::find(handles.begin(), handles.end(), viewport->handle()) == handles.end())
        handles.push_back(viewport->handle());
}

void ViewportClips::know(Drawing& drawing) {
    if (known_ == &drawing) return;
    known_ = &drawing;
    bounded_.clear();
    for (const auto& layout : drawing.layouts())
        for (const Entity& entity : layout->entities) index(entity);
}

void ViewportClips::entityAdded(Drawing& drawing, Entity& entity) {
    if (working_) return;
    know(drawing);
    if (boundedViewport(entity) != nullptr)
        addedViewports_.push_back(entity.id());
    else if (!bounded_.empty())
        added_.push_back(entity.id());
}

void ViewportClips::entityModified(Drawing& drawing, Entity& entity) {
    if (working_) return;
    know(drawing);
    index(entity);
    if (bounded_.empty()) return;
    if (bounded_.contains(entity.handle())) changedBorders_.insert(entity.handle());
    if (boundedViewport(entity) != nullptr) changedViewports_.insert(entity.handle());
}

void ViewportClips::entityErased(Drawing& drawing, Entity& entity) {
    if (working_) return;
    know(drawing);
    if (bounded_.empty()) return;
    if (bounded_.contains(entity.handle())) erasedBorders_.push_back(entity.handle());
    if (const ViewportEntity* viewport = boundedViewport(entity))
        erasedViewports_.emplace_back(viewport->handle(), viewport->clipHandle);
}

void ViewportClips::documentRestored(Drawing& drawing) {
    // Entries of the table may be out of date and stay true through undo and redo; another drawing is read anew.
    if (known_ != &drawing) known_ = nullptr;
    added_.clear();
    addedViewports_.clear();
    changedBorders_.clear();
    changedViewports_.clear();
    erasedBorders_.clear();
    erasedViewports_.clear();
}

void ViewportClips::groupClosing(Drawing& drawing) {
    if (working_) return;
    if (changedBorders_.empty() && changedViewports_.empty() && erasedBorders_.empty() && erasedViewports_.empty() &&
        addedViewports_.empty()) {
        added_.clear();
        return;
    }
    working_ = true;
    for (const std::uint64_t id : std::exchange(addedViewports_, {})) giveBorder(drawing, id);
    follow(drawing);
    working_ = false;
    documentRestored(drawing);
}

/// The other of a pair goes where the one went.
void ViewportClips::follow(Drawing& drawing) {
    const auto gone = [&](std::uint64_t handle) { return drawing.findByHandle(handle) == nullptr; };
    // In the order of their making, so that the history does not depend on hashing.
    std::vector<std::uint64_t> pairs(changedBorders_.begin(), changedBorders_.end());
    for (const std::uint64_t handle : changedViewports_)
        if (const Entity* e = drawing.findByHandle(handle); e != nullptr && boundedViewport(*e) != nullptr)
            pairs.push_back(boundedViewport(*e)->clipHandle);
    std::sort(pairs.begin(), pairs.end());
    pairs.erase(std::unique(pairs.begin(), pairs.end()), pairs.end());
    for (const std::uint64_t border : pairs) {
        const Entity* shape = drawing.findByHandle(border);
        if (shape == nullptr) continue;
        const Bounds2 box = shape->bounds();
        for (const std::uint64_t handle : std::vector<std::uint64_t>(bounded_[border])) {
            auto* viewport = dynamic_cast<ViewportEntity*>(drawing.findByHandle(handle));
            if (viewport == nullptr || viewport->clipEntity() != shape) continue;
            const Bounds2 frame = viewport->frame();
            if (!hasArea(box) || !hasArea(frame) || same(box, frame)) continue;
            if (!changedBorders_.contains(border)) {
                document_.transformEntities({shape->id()}, boxToBox(box, frame));
                break;
            }
            document_.modifyEntity(*viewport, [&](Entity& entity) {
                auto& v = static_cast<ViewportEntity&>(entity);
                const Vector2 grown = box.max - box.min - (frame.max - frame.min);
                // A window that only moved takes its view along; one that grew shows more of what it showed.
                if (std::max(std::abs(grown.x), std::abs(grown.y)) > 1e-9 * std::max(box.width(), box.height()))
                    v.aimAt(box.center());
                v.center = box.center();
                v.width = box.width();
                v.height = box.height();
            });
        }
    }
    for (const std::uint64_t border : erasedBorders_) {
        if (!gone(border)) continue;
        for (const std::uint64_t handle : std::vector<std::uint64_t>(bounded_[border])) {
            Entity* viewport = drawing.findByHandle(handle);
            const ViewportEntity* held = viewport != nullptr ? boundedViewport(*viewport) : nullptr;
            if (held != nullptr && held->clipHandle == border) document_.removeEntity(*viewport);
        }
    }
    for (const auto& [handle, border] : erasedViewports_) {
        Entity* shape = gone(handle) ? drawing.findByHandle(border) : nullptr;
        if (shape == nullptr) continue;
        const auto holds = [&](std::uint64_t other) {
            const auto* v = dynamic_cast<const ViewportEntity*>(drawing.findByHandle(other));
            return v != nullptr && v->clipHandle == border;
        };
        const std::vector<std::uint64_t>& others = bounded_[border];
        if (std::none_of(others.begin(), others.end(), holds)) document_.removeEntity(*shape);
    }
}

/// A copied viewport names its model's border: it gets the copy of that, or one made for it.
void ViewportClips::giveBorder(Drawing& drawing, std::uint64_t viewportId) {
    auto* viewport = dynamic_cast<ViewportEntity*>(drawing.findById(viewportId));
    if (viewport == nullptr || viewport->owner() == nullptr) return;
    const auto holds = [&](std::uint64_t handle) {
        const auto* other = dynamic_cast<const ViewportEntity*>(drawing.findByHandle(handle));
        return other != nullptr && other != viewport && other->clipHandle == viewport->clipHandle;
    };
    const auto known = bounded_.find(viewport->clipHandle);
    const bool taken = known != bounded_.end() && std::any_of(known->second.begin(), known->second.end(), holds);
    const Entity* border = viewport->clipEntity();
    if (border != nullptr && !taken) return index(*viewport);
    const Bounds2 frame = viewport->frame();
    const Entity* found = nullptr;
    for (const std::uint64_t id : added_) {
        const Entity* other = drawing.findById(id);
        if (other == nullptr || other->owner() != viewport->owner() || bounded_.contains(other->handle())) continue;
        if (border != nullptr && other->type() != border->type()) continue;
        if (same(other->bounds(), frame)) found = other;
    }
    const Entity* model = drawing.findByHandle(viewport->clipHandle);
    if (found == nullptr && model != nullptr && hasArea(model->bounds()) && hasArea(frame)) {
        auto copy = engine::transformedEntity(*model, boxToBox(model->bounds(), frame));
        found = &document_.addEntity(std::move(copy), *viewport->owner());
    }
    const std::uint64_t handle = found != nullptr ? found->handle() : 0;
    document_.modifyEntity(*viewport,
                           [&](Entity& entity) { static_cast<ViewportEntity&>(entity).clipHandle = handle; });
    if (Entity* entity = drawing.findById(viewportId)) index(*entity);
}

}  // namespace kova::doc
