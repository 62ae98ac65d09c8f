#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "doc/document.hpp"

namespace kova::cmd {

/// Radius within which a typed point picks an entity when there is no view: one hundredth of the diagonal of the
/// current space's extents, in drawing units; never 0.
double pickTolerance(doc::Document& document);

/// The selectable entity of the current space nearest to p within pickTolerance; null: none.
engine::Entity* pickEntity(doc::Document& document, const math::Vector2& p,
                           const std::function<bool(const engine::Entity&)>& filter = {});

/// A pick by handle, as LISP programs make it: (handent "2A"), with an optional point "x,y" behind it in world
/// coordinates.
struct NamedPick {
    engine::Entity* entity = nullptr;  ///< null: no selectable entity of the current space has that handle
    math::Vector2 point;               ///< where it counts as picked; without a point, on the entity
};
/// Nothing when the line is no such pick.
std::optional<NamedPick> parseNamedPick(doc::Document& document, std::string_view line);
/// The line that parseNamedPick reads.
std::string namedPick(std::uint64_t handle, const math::Vector2* point = nullptr);

// Ids of the selectable entities of the current space, in drawing order. Shapes are judged by what they emit, not
// by their boxes.
std::vector<std::uint64_t> selectAll(doc::Document& document);
/// Inside the box of two corners; with `crossing` also what crosses its edge.
std::vector<std::uint64_t> selectBox(doc::Document& document, const math::Vector2& a, const math::Vector2& b,
                                     bool crossing);
std::vector<std::uint64_t> selectPolygon(doc::Document& document, std::span<const math::Vector2> polygon,
                                         bool crossing);
/// What crosses the open line of points.
std::vector<std::uint64_t> selectFence(doc::Document& document, std::span<const math::Vector2> points);
/// The last selectable entity in drawing order; 0: none.
std::uint64_t lastEntity(doc::Document& document);

}  // namespace kova::cmd
