#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <unordered_map>
#include <unordered_set>
#include <vector>

#include "engine/associativity/associativity_hatches.hpp"
#include "engine/associativity/associativity_leaders.hpp"
#include "engine/model/document_reactor.hpp"
#include "engine/entities/dimensions/dimension.hpp"
#include "math/angles.hpp"

namespace kova::engine {

/// What of an entity a dimension's definition point follows; the numbers are stored.
enum class LinkKind : std::uint8_t {
    End = 1,       ///< index: 0 start, 1 end; of a polyline the vertex
    Middle = 2,    ///< of the line, arc or polyline segment `index`
    Center = 3,    ///< of the circle, arc, ellipse or polyline arc `index`
    OnCircle = 4,  ///< at the angle `parameter` (radians)
    Place = 5,     ///< position of a point, text, multiline text or block reference
    Arc = 6,       ///< the whole circle, arc or polyline arc `index`: what radial and arc length dimensions measure
};

/// One tie of a dimension to what it measures.
struct DimensionLink {
    std::int32_t point = 1;  ///< 1 to 4: def1 to def4; 0 with LinkKind::Arc: all of them
    LinkKind kind = LinkKind::End;
    std::uint64_t handle = 0;
    std::int32_t index = 0;
    double parameter = 0.0;
    /// Handle of the viewport through which a dimension of a layout measures the model; 0: both stand in one space. A
    /// dimension has one such viewport at most.
    std::uint64_t viewport = 0;
    double viewScale = 0.0;  ///< of the viewport when the dimension was last brought up to date

    friend bool operator==(const DimensionLink&, const DimensionLink&) = default;
};

class ViewportEntity;

/// A circle or arc that a dimension measures, in drawing coordinates; the arc runs counter-clockwise.
struct MeasuredArc {
    math::Vector2 center;
    double radius = 0.0;
    double start = 0.0;  ///< radians
    double sweep = math::kTwoPi;

    math::Vector2 startPoint() const;
    math::Vector2 endPoint() const;
    /// The same as it is seen on paper.
    MeasuredArc seenThrough(const ViewportEntity& viewport) const;
};
/// Of a circle, arc or (bulged) polyline segment that lies in the world plane; nothing for anything else.
std::optional<MeasuredArc> measuredArc(const Entity& entity, std::int32_t segment = 0);

/// The links of a dimension: extended data "KOVA_ASSOC". Malformed data gives none.
std::vector<DimensionLink> dimensionLinks(const DimensionEntity& dimension);
/// Replaces them; an empty list unties the dimension.
void setDimensionLinks(DimensionEntity& dimension, const std::vector<DimensionLink>& links);
bool hasDimensionLinks(const Entity& entity);

/// Where the linked point of an entity is now; nothing when the entity has no such point.
std::optional<math::Vector2> linkedPoint(const Entity& entity, const DimensionLink& link);
/// Calls back with every point of an entity that a dimension may be tied to (`point` and `handle` of the links are
/// left 0), a long polyline's vertices included.
void eachLinkablePoint(const Entity& entity,
                       const std::function<void(const DimensionLink&, const math::Vector2&)>& take);

/// The definition point that a link drives.
math::Vector2& definitionPoint(DimensionEntity& dimension, std::int32_t point);

/// For a dimension that is new: has it show model units when its links go through a viewport, by an override of
/// DIMLFAC, which counts on paper only.
void measureThroughViewport(DimensionEntity& dimension, const DimStyle& style, const std::vector<DimensionLink>& links);

/// Brings a dimension to where the entities of its links are; links to what is gone are passed over. False when
/// nothing changes. `space` is where the dimension stands when it is a copy made to try; null: its own.
bool followLinks(DimensionEntity& dimension, const Drawing& drawing, const EntityList* space = nullptr);

/// Keeps associative dimensions on what they measure: when a group of changes closes, the dimensions tied to changed
/// entities follow, as changes of that group. A copied dimension is tied to the copies of what it measures, or to
/// nothing. Leaders follow their annotations and hatches their boundaries in the same manner. Without such entities
/// every notice costs a look at an empty table.
class AssociativityReactor final : public IDocumentReactor {
public:
    /// Changes an entity of the drawing so that the change is recorded.
    using Modify = std::function<void(Entity&, const std::function<void(Entity&)>&)>;
    explicit AssociativityReactor(Modify modify) : modify_(std::move(modify)) {}

    void entityAdded(Drawing& drawing, Entity& entity) override;
    void entityModified(Drawing& drawing, Entity& entity) override;
    void entityErased(Drawing& drawing, Entity& entity) override;
    void groupClosing(Drawing& drawing) override;
    void documentRestored(Drawing& drawing) override;

    /// Notes all tied dimensions to be brought up to date when the open group closes. Gives their number.
    std::size_t refreshAll(Drawing& drawing);
    /// How many hatches have lost their boundary since the last call.
    std::size_t takeLostHatches() { return hatches_.takeLost(); }

private:
    void know(Drawing& drawing);
    void index(const DimensionEntity& dimension);
    void tieCopies(Drawing& drawing);
    void change(DimensionEntity& dimension, const std::function<void(DimensionEntity&)>& edit);

    Modify modify_;
    const Drawing* known_ = nullptr;  ///< whose dimensions the table holds
    /// Handle of a measured entity to the ids of dimensions that were ever tied to it: entries may be out of date, and
    /// so stay true through undo and redo.
    std::unordered_map<std::uint64_t, std::vector<std::uint64_t>> tied_;
    std::unordered_set<std::uint64_t> dirty_;  ///< dimensions to look at when the group closes
    std::vector<std::uint64_t> added_;         ///< entities added in the group, while there are tied dimensions
    std::vector<std::uint64_t> copies_;        ///< dimensions added away from what their links name
    bool updating_ = false;
    LeaderTies leaders_;
    HatchTies hatches_;
};

}  // namespace kova::engine
