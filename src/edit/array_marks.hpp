#pragma once

#include <optional>
#include <vector>

#include "edit/array_record.hpp"
#include "engine/model/xdata.hpp"

namespace kova::cmd {

/// Name of the extended data that members of associative arrays carry.
const engine::Name& arrayApplication();

/// What one member carries: 1010 its place (and, along a path, 1010 where it stands: x, y, turn), 1071 its part, 1070
/// 1 for a replaced item. Holders of the definition besides 1000 type, 1005 path, and 1040 for each number.
struct ArrayMark {
    ArrayPlace place;
    int part = 0;
    bool replaced = false;
    std::optional<PathArray::Stand> stand;
    std::optional<ArrayDefinition> definition;
    math::Vector2 anchor;  ///< of the source, when the definition was written
};

std::vector<engine::XDataItem> writtenMark(const ArrayMark& mark);
/// Nothing for an entity without such data, or with data that makes no sense.
std::optional<ArrayMark> readArrayMark(const engine::Entity& entity);

}  // namespace kova::cmd
