#include "cmd/prompts/dimension_tool.hpp"
#include "engine/inquiry/value_text.hpp"
#include "cmd/registry.hpp"

namespace kova::cmd::commands {

namespace {

using engine::InspectionShape;

/// DIMINSPECT: how often what a dimension measures is to be checked, in a frame round its text.
class DimInspectTool final : public DialogueTool {
protected:
    Dialogue dialogue(Ask& ask) override {
        const Answer option = co_await ask.keyword("Add inspection data or [Remove] <Add>:", "Add Remove");
        const Answer selected = co_await ask.selection("Select dimensions:");
        const std::vector<std::uint64_t> ids = dimensionsOf(document(), selected.ids);
        if (ids.empty()) co_return message("No dimensions selected.");
        InspectionShape shape = InspectionShape::Off;
        std::string label;
        std::string rate;
        if (!option.is("REMOVE")) {
            const Answer frame =
                co_await ask.keyword("Enter shape [Round/Angular/None] <Round>:", "Round Angular None");
            shape = frame.is("ANGULAR") ? InspectionShape::Angular
                    : frame.is("NONE")  ? InspectionShape::None
                                        : InspectionShape::Round;
            const Answer first = co_await ask.text("Enter inspection label <None>:");
            label = trimmed(first.text);
            if (engine::equalNoCase(label, "none") || label == ".") label.clear();
            const Answer last = co_await ask.text("Enter inspection rate <100%>:");
            rate = last.isEnter() ? "100%" : std::string(trimmed(last.text));
        }
        const doc::GroupScope group(document(), "DIMINSPECT");
        std::size_t changed = 0;
        for (const std::uint64_t id : ids) {
            // Some may have gone while the command waited.
            engine::Entity* entity = drawing().findById(id);
            if (entity == nullptr) continue;
            ++changed;
            document().modifyEntity(*entity, [&](engine::Entity& e) {
                auto& dimension = static_cast<engine::DimensionEntity&>(e);
                dimension.inspectShape = shape;
                dimension.inspectLabel = label;
                dimension.inspectRate = rate;
            });
        }
        message(counted(changed, "dimension") + " changed.");
        repaint();
    }
};

}  // namespace

KOVA_TOOL_COMMAND(DimInspect, "DIMINSPECT", "Inspection Dimension", "Annotate")

}  // namespace kova::cmd::commands
