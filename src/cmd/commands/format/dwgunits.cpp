#include "cmd/dialogue.hpp"
#include "edit/new_entities.hpp"
#include "edit/drawing_transfer.hpp"
#include "cmd/registry.hpp"
#include "engine/model/units.hpp"
#include "math/matrix4.hpp"

namespace kova::cmd::commands {

namespace {

struct UnitRow {
    const char* line;
    int insunits;
};
constexpr UnitRow kUnits[] = {{"  1. Inches", 1},      {"  2. Feet", 2},        {"  3. Millimeters", 4},
                              {"  4. Centimeters", 5}, {"  5. Decimeters", 14}, {"  6. Meters", 6}};

/// DWGUNITS: the unit of the drawing and how lengths are shown; on wish everything drawn is scaled to a new unit.
class DwgUnitsTool final : public DialogueTool {
protected:
    Dialogue dialogue(Ask& ask) override {
        message("Drawing units:");
        const int before = engine::sysVarInt(drawing(), "INSUNITS");
        int unit = 3;
        for (int i = 0; i < static_cast<int>(std::size(kUnits)); ++i) {
            message(kUnits[i].line);
            if (kUnits[i].insunits == before) unit = i + 1;
        }
        unit = co_await askChoice(ask, "Enter choice, 1 to 6", unit, 1, 6);
        for (const char* line : {"Report formats:", "  1. Scientific", "  2. Decimal", "  3. Engineering",
                                 "  4. Architectural", "  5. Fractional"})
            message(line);
        const int lunits =
            co_await askChoice(ask, "Enter choice, 1 to 5", engine::sysVarInt(drawing(), "LUNITS", 2), 1, 5);
        const int luprec =
            co_await askChoice(ask, "Enter linear display precision", engine::sysVarInt(drawing(), "LUPREC", 4), 0, 8);
        const bool scalesInserts =
            co_await askYesNo(ask, "Scale objects from other drawings upon insert? [Yes/No] <Y>:", true);
        const bool match = co_await askYesNo(ask, "Match INSUNITS to drawing units? [Yes/No] <Y>:", true);
        const int chosen = kUnits[unit - 1].insunits;
        bool scale = false;
        bool paper = false;
        if (chosen != before && before != 0) {
            scale = co_await askYesNo(ask, "Scale objects in current drawing? [Yes/No] <Y>:", true);
            if (scale) paper = co_await askYesNo(ask, "Include objects in paper space? [Yes/No] <N>:", false);
        }
        const doc::GroupScope group(document(), "DWGUNITS");
        message(document().setVariable("LUNITS", lunits));
        message(document().setVariable("LUPREC", luprec));
        // Without a unit nothing is scaled when it is inserted.
        if (!scalesInserts)
            message(document().setVariable("INSUNITS", 0));
        else if (match)
            message(document().setVariable("INSUNITS", chosen));
        if (!scale) co_return;
        std::vector<std::uint64_t> ids;
        const auto take = [&](const engine::EntityList& list) {
            for (const engine::Entity& entity : list) ids.push_back(entity.id());
        };
        take(drawing().modelSpace());
        if (paper)
            for (const auto& layout : drawing().layouts()) take(layout->entities);
        document().transformEntities(ids, math::Matrix4::scaling_about({}, unitFactor(before, chosen)));
    }

private:
    Task<int> askChoice(Ask& ask, const char* question, int now, int lowest, int highest) {
        std::string prompt = withDefault(question, std::to_string(now));
        const Answer answer = co_await ask.integer(std::move(prompt), lowest, highest);
        co_return answer.isNumber() ? answer.integer() : now;
    }
};

}  // namespace

KOVA_TOOL_COMMAND(DwgUnits, "DWGUNITS", "Drawing Units", "Format")

}  // namespace kova::cmd::commands
