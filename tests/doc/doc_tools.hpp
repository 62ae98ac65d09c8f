#pragma once

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "doc/document.hpp"
#include "engine/entities/circle.hpp"
#include "engine/entities/line.hpp"

namespace kova::doc::test {

inline std::unique_ptr<engine::Entity> makeLine(double x0, double y0, double x1, double y1) {
    return std::make_unique<engine::LineEntity>(math::Vector2{x0, y0}, math::Vector2{x1, y1});
}

/// Adds a line from (x, 0) to (x + 1, 0) to model space; gives its id.
inline std::uint64_t addLine(Document& document, double x = 0.0) {
    return document.addEntity(makeLine(x, 0, x + 1, 0), document.drawing().modelSpace()).id();
}

/// Ids in drawing order.
inline std::vector<std::uint64_t> idsOf(const engine::EntityList& list) {
    std::vector<std::uint64_t> ids;
    for (const engine::Entity& entity : list) ids.push_back(entity.id());
    return ids;
}

/// The x of the start of a line of that id.
inline double startX(Document& document, std::uint64_t id) {
    const engine::Entity* entity = document.drawing().findById(id);
    return entity == nullptr ? -1e9 : static_cast<const engine::LineEntity*>(entity)->start.x;
}

inline void setStartX(engine::Entity& entity, double x) { static_cast<engine::LineEntity&>(entity).start.x = x; }

}  // namespace kova::doc::test
