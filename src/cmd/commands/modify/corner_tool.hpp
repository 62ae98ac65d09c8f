#pragma once

#include "cmd/dialogue.hpp"
#include "doc/step_group.hpp"
#include "engine/curves/corner.hpp"

namespace kova::cmd::commands {

/// What FILLET and CHAMFER share: two picked curves, and what is done with the corner between them.
class CornerTool : public DialogueTool {
public:
    void textInput(const std::string& line) override;

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
    /// Asks for a polyline and cuts all its corners; `verb`: "filleted". False: nothing was cut.
    Task<bool> askPolyline(Ask& ask, StepGroup& group, const char* verb, engine::CornerMeasure measure);
    void tell(engine::CornerFault fault, const char* tooLarge);
    static bool hasCorners(const engine::Entity& entity);
    /// The next answer begins a corner, or is the name of one of these commands (older scripts expect that setting a
    /// value has ended the command).
    void expectFirst() { expectsFirst_ = true; }

private:
    bool apply(engine::Entity& a, engine::Entity& b, const engine::EditCurve& curveA, const engine::EditCurve& curveB,
               const engine::Corner& corner);
    /// The joint's id; 0 for a sharp corner.
    std::uint64_t addJoint(const engine::Entity& a, const engine::Entity& b, const engine::Corner& corner);
    /// True for what a polyline takes up when it has a corner with it.
    static bool joins(const engine::Entity& entity, const engine::EditCurve& curve);
    /// A polyline takes up the corner and what lies beyond.
    void joinToPolyline(const std::vector<std::uint64_t>& ids);

    bool expectsFirst_ = false;
};

}  // namespace kova::cmd::commands
