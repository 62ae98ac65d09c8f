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

/// True for what is drawn: neither hidden nor on a layer that is off or frozen.
bool isShown(const engine::Drawing& drawing, const engine::Entity& entity);

// Picks of one object -----------------------------------------------------------------------------------------------

/// Objects on locked layers: refused, or taken where an object is only looked at.
enum class Locked { Refused, Taken };
/// How far a pick on a layout's sheet reaches: to what stands there, or also to what its viewports show of the model.
enum class Reach { Space, ThroughViewports };

/// What a pick may give.
struct PickRules {
    std::function<bool(const engine::Entity&)> usable;  ///< empty: anything that is shown
    Locked locked = Locked::Refused;
    Reach reach = Reach::Space;
};

/// What a pick gave.
struct Picked {
    engine::Entity* entity = nullptr;  ///< null: nothing, and `refusal` says why
    math::Vector2 point;               ///< where it counts as picked, in the current space
    const char* refusal = nullptr;
};
inline constexpr const char* kUnusable = "Object cannot be used here.";

/// The usable entity nearest to a point, within pickTolerance. What lies in front but is of no use does not hide what
/// is.
Picked pickAt(doc::Document& document, const math::Vector2& p, const PickRules& rules);
/// A pick that is no point: L or LAST for the newest object, or a handle (see NamedPick). Nothing when the line is
/// neither.
std::optional<Picked> pickByWord(doc::Document& document, std::string_view line, const PickRules& rules);

/// The selectable entity of the current space nearest to p within pickTolerance; null: none.
engine::Entity* pickEntity(doc::Document& document, const math::Vector2& p,
                           const std::function<bool(const engine::Entity&)>& filter = {});
/// The entity on a locked layer of the current space nearest to p within pickTolerance; null: none.
engine::Entity* pickLocked(doc::Document& document, const math::Vector2& p);

/// A pick by handle, as LISP programs make it: (handent "2A"), with an optional point "x,y" behind it in world
/// coordinates.
struct NamedPick {
    engine::Entity* entity = nullptr;  ///< null: nothing that may be picked has that handle
    math::Vector2 point;               ///< where it counts as picked; without a point, on the entity
};
/// Nothing when the line is no such pick. Of the rules, all but `usable` count.
std::optional<NamedPick> parseNamedPick(doc::Document& document, std::string_view line, const PickRules& rules = {});
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
/// The newest entity of the current space that may be picked, whatever the drawing order; 0: none.
std::uint64_t lastEntity(doc::Document& document, Locked locked = Locked::Refused);

}  // namespace kova::cmd
