#pragma once

#include "cmd/pick_request.hpp"
#include "doc/step_group.hpp"

namespace kova::cmd::commands {

/// What OFFSET and EXOFFSET share: the distance, what becomes of layer and source, and the parallel itself.
class ParallelTool : public DialogueTool {
protected:
    // These hold for the program.
    bool erases() const;
    void setErases(bool erases);
    bool takesCurrentLayer() const;
    Dialogue askLayer(Ask& ask, std::string question);

    /// 0: through a point.
    double distance() const { return distance_; }
    /// Remembered in OFFSETDIST.
    void setDistance(double distance);

    static PickRequest objectRequest(std::string prompt, std::string_view options);
    /// Adds the parallels towards a point. Gives the id of the first one, from which Multiple goes on; 0: none.
    std::uint64_t offset(StepGroup& group, engine::Entity& source, const math::Vector2& side, bool erase);

private:
    double distance_ = 0.0;
};

}  // namespace kova::cmd::commands
