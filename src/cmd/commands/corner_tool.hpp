#pragma once

#include "cmd/dialogue.hpp"
#include "cmd/step_group.hpp"
#include "engine/corner.hpp"

namespace kova::cmd::commands {

/// What FILLET and CHAMFER share: two picked curves, and what is done with the corner between them.
class CornerTool : public DialogueTool {
protected:
    /// A picked object, by id since questions stand between.
    struct Pick {
        std::uint64_t id = 0;
        math::Vector2 point;
    };
    /// Finds the corner; a fault has been told.
    virtual std::optional<engine::Corner> cornerOf(const engine::PickedCurve& a, const engine::PickedCurve& b) = 0;
    virtual const char* label() const = 0;

    bool trims() const;
    Dialogue askTrimMode(Ask& ask);
    /// Makes the corner as a step; false when there is none.
    bool makeCorner(StepGroup& group, const Pick& first, const Pick& second);
    /// Asks for a polyline and cuts all its corners as `cut` says; `verb`: "filleted". False: nothing was cut.
    Task<bool> askPolyline(Ask& ask, StepGroup& group, const char* verb,
                           std::function<engine::PolylineCorners(const engine::PolylineEntity&)> cut);
    void tell(engine::CornerFault fault, const char* what);
    static bool hasCorners(const engine::Entity& entity);

private:
    bool apply(engine::Entity& a, engine::Entity& b, const engine::EditCurve& curveA, const engine::EditCurve& curveB,
               const engine::Corner& corner);
    /// The joint's id; 0 for a sharp corner.
    std::uint64_t addJoint(const engine::Entity& a, const engine::Entity& b, const engine::Corner& corner);
    /// A polyline takes up the corner and what lies beyond.
    void joinToPolyline(const std::vector<std::uint64_t>& ids);
};

}  // namespace kova::cmd::commands
