#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "engine/curves/curve_ruler.hpp"
#include "doc/document.hpp"
#include "math/angles.hpp"
#include "math/matrix4.hpp"
#include "math/vector3.hpp"

namespace kova::cmd {

/// What one array may hold, so that a slip of the finger does not fill the memory.
inline constexpr double kMaxArrayEntities = 1'000'000;

/// Rows and levels, which all kinds of arrays have.
struct ArrayRows {
    int rows = 1;
    double distance = 1.0;
    double rise = 0.0;  ///< elevation from row to row
    int levels = 1;
    double levelDistance = 1.0;

    double count() const { return static_cast<double>(rows) * levels; }
};

/// Which item of an array: its number along the row (round the centre, along the path), its row and its level, from 0.
struct ArrayPlace {
    int item = 0;
    int row = 0;
    int level = 0;
    friend auto operator<=>(const ArrayPlace&, const ArrayPlace&) = default;
};
/// All places, level by level and row by row: the order in which the arrays below give their items.
std::vector<ArrayPlace> arrayPlaces(int items, const ArrayRows& rows);

struct RectangularArray {
    int columns = 4;
    double columnDistance = 1.0;
    ArrayRows rows;
    double angle = 0.0;  ///< direction of the rows, radians in the world

    /// The way from the first item to each item, itself included.
    std::vector<math::Matrix4> items() const;
};

struct PolarArray {
    math::Vector3 center;
    math::Vector3 axis{0, 0, 1};  ///< length 1
    math::Vector2 base;           ///< what goes round while items are not turned; rows lie on its way outward
    int count = 6;
    double fill = math::kTwoPi;  ///< signed; from the first item to the last, or a whole turn
    bool turnItems = true;
    ArrayRows rows;

    /// Angle from item to item.
    double step() const;
    std::vector<math::Matrix4> items() const;
};

struct PathArray {
    math::Vector2 base;  ///< the point of the objects that runs along the path
    std::optional<math::Vector2>
        direction;          ///< of the objects that is laid along the path; none: the path's at its start
    bool reversed = false;  ///< begins at the end of the curve
    bool divide = false;    ///< spread evenly over the whole path instead of at a distance
    double distance = 1.0;
    int count = 2;
    bool alignItems = true;
    ArrayRows rows;

    /// How many items fit on the path.
    int fitting(const CurveRuler& path) const;
    /// How many there are in a row.
    int number(const CurveRuler& path) const { return std::max(1, divide ? count : std::min(count, fitting(path))); }
    /// Where the items of the first row go: the point of the path, and how far the item is turned there.
    struct Stand {
        math::Vector2 point;
        double turn = 0.0;
        math::Vector2 side;  ///< to the next row, length 1
    };
    std::vector<Stand> stands(const CurveRuler& path) const;
    /// The way of the objects to an item.
    math::Matrix4 way(const Stand& stand, int row, int level) const;
    /// Where all items go, the first one too.
    std::vector<math::Matrix4> items(const CurveRuler& path) const;
};

/// Extents of entities together.
math::Bounds2 boundsOf(const engine::Drawing& drawing, const std::vector<std::uint64_t>& ids);

}  // namespace kova::cmd
