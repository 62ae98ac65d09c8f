#include "cmd/dialogue.hpp"
#include "edit/entity_copies.hpp"
#include "cmd/prompts/displacement.hpp"
#include "cmd/registry.hpp"
#include "edit/stretching.hpp"

namespace kova::cmd::commands {

namespace {

using math::Vector2;

/// STRETCH: points inside the crossing windows and polygons that selected move; what was selected in another way moves
/// as a whole.
class StretchTool final : public DialogueTool {
public:
    void crossingSelected(std::span<const Vector2> polygon) override {
        regions_.push_back(SelectionRegion::polygon(polygon));
    }

protected:
    Dialogue dialogue(Ask& ask) override {
        message("Select objects to stretch by crossing-window or crossing-polygon...");
        const Answer selected = co_await ask.selection();
        if (selected.ids.empty()) co_return;
        const Vector2 by = co_await askDisplacement(ask, drawing());
        if (by != Vector2{} && by.is_finite()) stretch(selected.ids, by);
    }

private:
    bool crosses(const engine::Entity& entity) const {
        for (const SelectionRegion& region : regions_)
            if (ShapeTest(drawing(), region, ShapeTest::Mode::Touches).passes(entity)) return true;
        return false;
    }

    void stretch(const std::vector<std::uint64_t>& ids, const Vector2& by) {
        std::vector<std::uint64_t> whole;
        const doc::GroupScope group(document(), "STRETCH");
        for (engine::Entity* entity : entitiesInOrder(document(), ids)) {
            switch (stretchEffect(*entity, regions_)) {
                case StretchEffect::Whole:
                    whole.push_back(entity->id());
                    break;
                case StretchEffect::Partly:
                    document().modifyEntity(*entity, [&](engine::Entity& e) { stretchEntity(e, regions_, by); });
                    break;
                case StretchEffect::None:
                    if (!crosses(*entity)) whole.push_back(entity->id());
                    break;
            }
        }
        document().transformEntities(whole, math::Matrix4::translation(by));
    }

    StretchRegions regions_;
};

}  // namespace

KOVA_TOOL_COMMAND(Stretch, "STRETCH", "Stretch", "Modify", {"S"})

}  // namespace kova::cmd::commands
