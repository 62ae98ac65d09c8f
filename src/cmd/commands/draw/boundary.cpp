#include "edit/boundary_shapes.hpp"
#include "cmd/dialogue.hpp"
#include "edit/new_entities.hpp"
#include "engine/inquiry/value_text.hpp"
#include "cmd/registry.hpp"
#include "engine/entities/region.hpp"

namespace kova::cmd::commands {

namespace {

using math::BoundaryLoop;

std::unique_ptr<engine::RegionEntity> regionOf(BoundaryLoop loop) {
    auto region = std::make_unique<engine::RegionEntity>();
    region->vertices = std::move(loop.points);
    region->bulges = std::move(loop.bulges);
    return region;
}

/// BOUNDARY: polylines or regions along the areas round picked points.
class BoundaryTool final : public DialogueTool {
protected:
    Dialogue dialogue(Ask& ask) override {
        regions_ = engine::sysVarInt(drawing(), "HPBOUND", 1) == 0;
        for (;;) {
            const Answer answer = co_await ask.point("Specify internal point or [Advanced options]:", "Advanced");
            if (answer.isEnter()) break;
            if (answer.is("ADVANCED")) {
                co_await askOptions(ask);
                continue;
            }
            if (!work_) work_ = boundaryWork(document(), limited_ ? &set_ : nullptr);
            if (!search_)
                search_ =
                    std::make_unique<math::BoundarySearch>(work_->pieces, engine::sysVarReal(drawing(), "HPGAPTOL"));
            auto area = search_->around(answer.point, islands_);
            if (!area) {
                message(search_->gaveUp() ? kBoundaryGaveUp : "Valid boundary not found.");
                continue;
            }
            loops_.push_back(std::move(area->outer));
            for (BoundaryLoop& loop : area->islands)
                if (loop.depth == 0) loops_.push_back(std::move(loop));
        }
        if (loops_.empty()) co_return;
        const doc::GroupScope group(document(), "BOUNDARY");
        for (const BoundaryLoop& loop : loops_) {
            std::unique_ptr<engine::Entity> made;
            if (regions_)
                made = regionOf(loop);
            else
                made = polylineOf(loop);
            applyCurrentValues(document(), *made);
            document().addEntity(std::move(made));
        }
        message("BOUNDARY created " + counted(loops_.size(), regions_ ? "region" : "polyline") + ".");
    }

private:
    Dialogue askOptions(Ask& ask) {
        for (;;) {
            const Answer option = co_await ask.keyword("Enter an option [Boundary set/Island detection/Object type]:",
                                                       "Boundary Island Object");
            if (option.is("BOUNDARY")) {
                const Answer kind = co_await ask.keyword(
                    "Specify candidate set for boundary [New/Everything] <Everything>:", "New Everything");
                limited_ = kind.is("NEW");
                if (limited_) {
                    const Answer chosen = co_await ask.selection();
                    set_ = chosen.ids;
                    document().selection().clear();
                }
                work_.reset();
                search_.reset();
            } else if (option.is("ISLAND")) {
                islands_ = co_await askYesNo(ask, "Do you want island detection? [Yes/No] <Y>:", true);
            } else if (option.is("OBJECT")) {
                const Answer kind =
                    co_await ask.keyword(regions_ ? "Enter type of boundary object [Region/Polyline] <Region>:"
                                                  : "Enter type of boundary object [Region/Polyline] <Polyline>:",
                                         "Region Polyline");
                if (!kind.isEnter()) regions_ = kind.is("REGION");
                engine::setSysVar(drawing(), "HPBOUND", regions_ ? 0 : 1);
            } else {
                co_return;
            }
        }
    }

    bool regions_ = false;
    bool islands_ = true;
    bool limited_ = false;
    std::vector<std::uint64_t> set_;
    std::optional<BoundaryWork> work_;
    std::unique_ptr<math::BoundarySearch> search_;
    std::vector<BoundaryLoop> loops_;
};

/// REGION: a region from every figure that the selected objects close, alone or end to end.
class RegionTool final : public DialogueTool {
protected:
    Dialogue dialogue(Ask& ask) override {
        const Answer selected = co_await ask.selection();
        if (selected.ids.empty()) co_return;
        ClosedLoops found = closedLoops(document(), selected.ids);
        if (found.rejected > 0) message(counted(found.rejected, "loop") + " rejected.");
        message(counted(found.loops.size(), "loop") + " extracted.");
        const doc::GroupScope group(document(), "REGION");
        for (ClosedLoops::Loop& loop : found.loops) {
            auto region = regionOf(std::move(loop.outline));
            applyCurrentValues(document(), *region);
            region->elevation = loop.elevation;
            document().addEntity(std::move(region));
        }
        if (engine::sysVarInt(drawing(), "DELOBJ", 1) != 0) document().removeEntities(found.used);
        const std::size_t made = found.loops.size();
        message(counted(made, "Region") + " created.");
    }
};

}  // namespace

KOVA_TOOL_COMMAND(Boundary, "BOUNDARY", "Boundary", "Draw", {"BO", "BPOLY"})
KOVA_TOOL_COMMAND(Region, "REGION", "Region", "Draw", {"REG"})

}  // namespace kova::cmd::commands
