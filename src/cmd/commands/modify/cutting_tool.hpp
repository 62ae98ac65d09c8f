#pragma once

#include <unordered_set>

#include "cmd/dialogue.hpp"
#include "doc/step_group.hpp"
#include "engine/curves/curve_cuts.hpp"

namespace kova::cmd::commands {

/// What TRIM and EXTEND share: edges first, then the objects to change, one pick after the other, all in one undo
/// group.
class CuttingTool : public DialogueTool {
public:
    explicit CuttingTool(bool trims) : trims_(trims) {}

protected:
    Dialogue dialogue(Ask& ask) override;

private:
    Dialogue askEdges(Ask& ask);
    Task<bool> askOption(Ask& ask, const Answer& answer, StepGroup& group);
    Dialogue askProjection(Ask& ask);
    Dialogue askEdgeMode(Ask& ask);
    Dialogue askMode(Ask& ask);
    Dialogue askErase(Ask& ask, StepGroup& group);
    Dialogue askFence(Ask& ask, StepGroup& group);
    Dialogue askCrossing(Ask& ask, StepGroup& group);

    void change(StepGroup& group, const std::vector<std::pair<std::uint64_t, std::vector<math::Vector2>>>& picks);
    /// Changes one object at one pick; false (with a message where `speaks`) when there is nothing to cut it at.
    /// `parts` are the ids of what came of it.
    bool changeOne(engine::Entity& entity, const math::Vector2& pick, bool speaks, std::vector<std::uint64_t>& parts);
    bool trim(engine::Entity& entity, const math::Vector2& pick, bool speaks, std::vector<std::uint64_t>& parts);
    bool extend(engine::Entity& entity, const math::Vector2& pick, bool speaks, std::vector<std::uint64_t>& parts);

    bool isEdge(const engine::Entity& entity) const;
    bool implied() const;
    bool quick() const;
    std::vector<double> cutsAround(const engine::EditCurve& curve, double pick);
    std::vector<double> cutsBeyond(const engine::EditCurve& curve, bool atEnd);
    /// The edges within a window (an empty one: all), but for those of one entity.
    template <class Use>
    void forEdges(const math::Bounds2& window, const engine::Entity* but, const Use& use);

    bool trims_;
    bool allEdges_ = false;
    std::unordered_set<std::uint64_t> edges_;
};

}  // namespace kova::cmd::commands
