#pragma once

#include <optional>

#include "cmd/dialogue.hpp"
#include "doc/step_group.hpp"
#include "engine/curves/spline_edit.hpp"

namespace kova::cmd::commands {

/// The fit data and the vertex editing of SPLINEDIT. Each change is a step of the group.
class SplineEditor {
public:
    SplineEditor(doc::Document& document, StepGroup& group, std::uint64_t id)
        : document_(document), group_(group), id_(id) {}

    Dialogue fitData(Ask& ask);
    Dialogue vertices(Ask& ask);

private:
    engine::SplineEntity* spline() const;
    /// Changes the spline as a step; takes the step back when `edit` gives false.
    bool change(const std::function<bool(engine::SplineEntity&)>& edit);
    bool applyFit(engine::SplineFit fit);
    std::optional<engine::SplineFit> fit() const;
    /// The points that the marker walks over: fit points, or different control vertices.
    std::vector<math::Vector2> points(bool fits) const;
    void tell(Ask& ask, bool fits) const;
    /// Takes Next, Previous and Select point; false: the answer is something else.
    Task<bool> walk(Ask& ask, const Answer& answer, bool fits);
    Dialogue addFit(Ask& ask);
    Dialogue removePoints(Ask& ask, bool fits);
    Dialogue onCurve(Ask& ask, bool kink);
    Dialogue move(Ask& ask, bool fits);
    Dialogue tangents(Ask& ask);
    Dialogue weights(Ask& ask);

    doc::Document& document_;
    StepGroup& group_;
    std::uint64_t id_;
    std::size_t marker_ = 0;
    bool forward_ = true;
    double tolerance_ = 0.0;
};

}  // namespace kova::cmd::commands
