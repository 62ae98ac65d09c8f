#include "edit/entity_copies.hpp"

#include <algorithm>
#include <cmath>

namespace kova::cmd {

std::vector<engine::Entity*> entitiesInOrder(doc::Document& document, const std::vector<std::uint64_t>& ids) {
    std::vector<engine::Entity*> out;
    out.reserve(ids.size());
    for (const std::uint64_t id : ids)
        if (engine::Entity* entity = document.drawing().findById(id)) out.push_back(entity);
    std::sort(out.begin(), out.end(), [](const engine::Entity* a, const engine::Entity* b) {
        return a->order() != b->order() ? a->order() < b->order() : a->id() < b->id();
    });
    out.erase(std::unique(out.begin(), out.end()), out.end());
    return out;
}

std::vector<std::uint64_t> addCopies(doc::Document& document, const std::vector<std::uint64_t>& ids,
                                     const math::Matrix4& matrix) {
    std::vector<std::uint64_t> added;
    if (!std::all_of(matrix.m.begin(), matrix.m.end(), [](double v) { return std::isfinite(v); })) return added;
    const std::vector<engine::Entity*> sources = entitiesInOrder(document, ids);
    added.reserve(sources.size());
    for (const engine::Entity* source : sources) {
        if (!engine::canTransform(*source, matrix)) {
            document.noteUntransformed();
            continue;
        }
        if (std::unique_ptr<engine::Entity> copy = engine::transformedEntity(*source, matrix)) {
            copy->setHandle(0);  // a new one is given when it is added
            added.push_back(document.addEntity(std::move(copy)).id());
        }
    }
    return added;
}

}  // namespace kova::cmd
