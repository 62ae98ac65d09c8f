#pragma once

#include <map>
#include <optional>
#include <string>
#include <variant>
#include <vector>

#include "edit/array_items.hpp"

namespace kova::cmd {

/// What an associative array is made by. Its items are the members of an unnamed group; they carry this as extended
/// data "KOVA_ARRAY", which every file format keeps: each its place in the array, and those of the first items all
/// numbers.
struct ArrayDefinition {
    std::variant<RectangularArray, PolarArray, PathArray> shape;
    std::uint64_t path = 0;  ///< handle of the curve of a path array

    ArrayRows& rows();
    const ArrayRows& rows() const { return const_cast<ArrayDefinition*>(this)->rows(); }
    bool isPolar() const { return std::holds_alternative<PolarArray>(shape); }
    bool isPath() const { return std::holds_alternative<PathArray>(shape); }
    /// "Rectangular", "Polar", "Path".
    const char* typeName() const;
    /// The curve of a path array; null: gone, or no curve any more.
    const engine::Entity* curve(const engine::Drawing& drawing) const;
};

/// An associative array as it stands in a drawing.
struct ArrayObject {
    struct Item {
        std::map<int, std::uint64_t> parts;  ///< ids by number of the part
        bool replaced = false;               ///< holds other objects than the source
        std::optional<PathArray::Stand> stand;
    };
    engine::Name group;
    ArrayDefinition definition;        ///< moved and turned as the items are by now
    std::map<ArrayPlace, Item> items;  ///< those that are there
};

/// Ties the items of a new array together, as part of the open group of actions: the objects themselves and their
/// copies in the order of the places. `base` and `direction` of a path array are those of the objects in their first
/// place.
void tieArray(doc::Document& document, const ArrayDefinition& definition,
              const std::vector<std::vector<std::uint64_t>>& items);

/// True for what looks like an item; arrayOf tells for sure.
bool carriesArrayData(const engine::Entity& entity);
/// The array that an entity is an item of, and its place; nothing when it belongs to none.
struct ArrayMember {
    ArrayObject array;
    ArrayPlace place;
};
std::optional<ArrayMember> arrayOf(doc::Document& document, const engine::Entity& entity);

/// Unties the associative arrays that these entities are items of, as part of the open group of actions: their items
/// become plain entities and go out of the list. Gives the number of arrays.
std::size_t untieArrays(doc::Document& document, std::vector<std::uint64_t>& ids);

// Changes of an array, as part of the open group of actions. Each gives an error text, empty on success, and brings the
// object up to date. Items keep their identity; those that were erased stay away until a reset.

/// Arranges the items by another definition of the same kind.
std::string rearrange(doc::Document& document, ArrayObject& array, const ArrayDefinition& next);
/// Brings back erased items, and the source in place of replaced ones.
std::string resetArray(doc::Document& document, ArrayObject& array);
/// Makes all items that are not replaced like the one at this place.
std::string takeAsSource(doc::Document& document, ArrayObject& array, const ArrayPlace& place);
/// Puts copies of objects in place of an item's. `base` of the objects comes to the middle of what they replace.
std::string replaceItem(doc::Document& document, ArrayObject& array, const ArrayPlace& place,
                        const std::vector<std::uint64_t>& ids, const math::Vector2& base);

}  // namespace kova::cmd
