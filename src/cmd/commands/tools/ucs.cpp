#include "cmd/dialogue.hpp"
#include "engine/inquiry/value_text.hpp"
#include "cmd/prompts/name_prompts.hpp"
#include "cmd/pick_request.hpp"
#include "doc/pick/picking.hpp"
#include "cmd/registry.hpp"
#include "strings/wildcards.hpp"
#include "doc/table_edits.hpp"
#include "engine/entities/arc.hpp"
#include "engine/entities/block_reference.hpp"
#include "engine/entities/circle.hpp"
#include "engine/entities/line.hpp"
#include "engine/entities/mtext.hpp"
#include "engine/entities/text.hpp"
#include "engine/symbols/symbols.hpp"
#include "math/angles.hpp"
#include "math/curves/curves.hpp"

namespace kova::cmd::commands {

namespace {

using engine::Ucs;
using math::Vector2;

/// Systems that UCS Previous goes back to, the latest last.
struct UcsHistory {
    static constexpr std::size_t kMost = 10;
    std::vector<Ucs> systems;

    void push(const Ucs& ucs) {
        if (systems.size() == kMost) systems.erase(systems.begin());
        systems.push_back(ucs);
    }
};

Ucs frame(const Vector2& origin, const Vector2& direction) {
    Ucs ucs;
    ucs.origin = origin;
    ucs.xAxis = direction.normalized();
    if (ucs.xAxis == Vector2{}) ucs.xAxis = {1, 0};
    ucs.yAxis = ucs.xAxis.perpendicular();
    return ucs;
}

/// The system that an entity gives, seen from where it was picked; nothing for a kind that gives none.
std::optional<Ucs> frameOf(const engine::Entity& entity, const Vector2& pick) {
    switch (entity.type()) {
        case engine::EntityType::Line: {
            const auto& line = static_cast<const engine::LineEntity&>(entity);
            const bool first = pick.distance_to(line.start) <= pick.distance_to(line.end);
            return first ? frame(line.start, line.end - line.start) : frame(line.end, line.start - line.end);
        }
        case engine::EntityType::Circle: {
            const auto& circle = static_cast<const engine::CircleEntity&>(entity);
            return frame(circle.center, pick - circle.center);
        }
        case engine::EntityType::Arc: {
            const auto& arc = static_cast<const engine::ArcEntity&>(entity);
            const bool first = pick.distance_to(arc.startPoint()) <= pick.distance_to(arc.endPoint());
            return frame(arc.center, (first ? arc.startPoint() : arc.endPoint()) - arc.center);
        }
        case engine::EntityType::Text: {
            const auto& text = static_cast<const engine::TextEntity&>(entity);
            return frame(text.position, math::unitAt(text.rotation));
        }
        case engine::EntityType::MText: {
            const auto& text = static_cast<const engine::MTextEntity&>(entity);
            return frame(text.position, math::unitAt(text.rotation));
        }
        case engine::EntityType::BlockReference: {
            const auto& reference = static_cast<const engine::BlockReferenceEntity&>(entity);
            return frame(reference.insert, math::unitAt(reference.rotation));
        }
        default:
            return std::nullopt;
    }
}

bool givesFrame(const engine::Entity& entity) { return frameOf(entity, {}).has_value(); }

/// Systems are kept with two axes in the drawing plane, and points at prompts have two coordinates.
constexpr const char* kTilted = "A UCS lies in the XY plane here: only Z turns it.";
bool isTilting(const Answer& answer) {
    for (const char* word : {"FACE", "VIEW", "X", "Y", "ZAXIS"})
        if (answer.is(word)) return true;
    return false;
}

class UcsTool final : public DialogueTool {
public:
    explicit UcsTool(UcsHistory& history) : history_(history) {}

protected:
    Dialogue dialogue(Ask& ask) override {
        const Answer first = co_await ask.point(
            "Specify origin of UCS or [NAmed/OBject/Previous/World/Z] <World>:",
            "NAmed OBject Entity Previous World Z New Move Origin 3point Save Restore Delete ? Face View X Y ZAxis",
            drawing().ucs.origin);
        if (isTilting(first)) co_return message(kTilted);
        if (first.isPoint()) co_return co_await threePoints(ask, first.point);
        if (first.isEnter() || first.is("WORLD")) co_return use({});
        if (first.is("PREVIOUS")) co_return previous();
        if (first.is("Z")) co_return co_await rotate(ask);
        if (first.is("OBJECT") || first.is("ENTITY")) co_return co_await byObject(ask);
        if (first.is("NAMED")) co_return co_await named(ask);
        if (first.is("NEW")) co_return co_await defineNew(ask);
        if (first.is("MOVE") || first.is("ORIGIN")) co_return co_await move(ask);
        if (first.is("3POINT")) co_return co_await fromThreePoints(ask);
        co_await records(ask, first.word);
    }

private:
    void use(const Ucs& ucs, bool remember = true) {
        if (remember) history_.push(drawing().ucs);
        const doc::GroupScope group(document(), "UCS");
        document().editSettings([&](engine::Drawing& d) {
            d.ucs = ucs;
            d.currentUcs = ucs.name;
        });
    }

    void previous() {
        if (history_.systems.empty()) return message("No previous UCS.");
        const Ucs ucs = history_.systems.back();
        history_.systems.pop_back();
        use(ucs, false);
    }

    Dialogue threePoints(Ask& ask, Vector2 origin) {
        Ucs ucs = drawing().ucs;
        ucs.name = {};
        ucs.origin = origin;
        const Answer x = co_await ask.point("Specify point on X-axis or <accept>:", {}, origin);
        if (!x.isPoint() || x.point == origin) co_return use(ucs);
        ucs = frame(origin, x.point - origin);
        const Answer y = co_await ask.point("Specify point on XY plane or <accept>:", {}, origin);
        // A point on the other side of the x axis turns the plane over.
        if (y.isPoint() && (y.point - origin).dot(ucs.yAxis) < 0.0) ucs.yAxis = -ucs.yAxis;
        use(ucs);
    }

    Dialogue fromThreePoints(Ask& ask) {
        const Answer origin = co_await ask.point("Specify new origin point <0,0,0>:", {}, drawing().ucs.origin);
        const Vector2 start = origin.isPoint() ? origin.point : drawing().ucs.origin;
        co_await threePoints(ask, start);
    }

    Dialogue move(Ask& ask) {
        const Answer origin = co_await ask.point("Specify new origin point <0,0,0>:", {}, drawing().ucs.origin);
        if (!origin.isPoint()) co_return;
        Ucs ucs = drawing().ucs;
        ucs.name = {};
        ucs.origin = origin.point;
        use(ucs);
    }

    Dialogue defineNew(Ask& ask) {
        const Answer option = co_await ask.point("Specify origin of new UCS or [3point/OBject/Z] <0,0,0>:",
                                                 "3point OBject Z Face View X Y ZAxis", drawing().ucs.origin);
        if (isTilting(option)) co_return message(kTilted);
        if (option.is("3POINT")) co_return co_await fromThreePoints(ask);
        if (option.is("OBJECT")) co_return co_await byObject(ask);
        if (option.is("Z")) co_return co_await rotate(ask);
        if (!option.isPoint()) co_return;
        Ucs ucs = drawing().ucs;
        ucs.name = {};
        ucs.origin = option.point;
        use(ucs);
    }

    Dialogue rotate(Ask& ask) {
        const Answer answer = co_await ask.number("Specify rotation angle about Z axis <90>:");
        const double angle = math::toRadians(answer.numberOr(90.0));
        Ucs ucs = drawing().ucs;
        ucs.name = {};
        const Vector2 turn = math::unitAt(angle);
        const Vector2 x = ucs.xAxis * turn.x + ucs.yAxis * turn.y;
        ucs.yAxis = ucs.yAxis * turn.x - ucs.xAxis * turn.y;
        ucs.xAxis = x;
        use(ucs);
    }

    Dialogue byObject(Ask& ask) {
        const Answer answer = co_await askSource(ask, "Select object to align UCS:", {}, givesFrame);
        const engine::Entity* entity = answer.isObject() ? drawing().findById(answer.id) : nullptr;
        if (entity != nullptr) use(*frameOf(*entity, answer.point));
    }

    Dialogue named(Ask& ask) {
        const Answer option = co_await ask.keyword("Enter an option [Restore/Save/Delete/?]:", "Restore Save Delete ?");
        if (!option.isEnter()) co_await records(ask, option.word);
    }

    /// Save, Restore, Delete and ?.
    Dialogue records(Ask& ask, std::string option) {
        if (option == "SAVE") co_return co_await save(ask);
        if (option == "?") {
            const std::string filter = co_await askNamesToList(ask, "Enter UCS name(s) to list <*>:");
            list(filter);
            co_return;
        }
        const bool restoring = option == "RESTORE";
        const char* prompt = restoring ? "Enter name of UCS to restore or [?]:" : "Enter UCS name(s) to delete:";
        for (;;) {
            const Answer answer = co_await ask.text(prompt);
            if (answer.isEnter()) co_return;
            if (restoring && answer.text == "?") {
                list("*");
                continue;
            }
            if (restoring ? restore(answer.text) : remove(answer.text)) co_return;
        }
    }

    void list(const std::string& filter) const {
        if (drawing().currentUcs.empty())
            message(drawing().ucs.isWorld() ? "Current UCS: World" : "Current UCS has no name.");
        else
            message("Current UCS: " + drawing().currentUcs.str());
        for (const Ucs& ucs : drawing().ucsList)
            if (matchesWildcards(ucs.name, filter))
                message(inQuotes(ucs.name) + "  Origin = " + lengthDefault(drawing(), ucs.origin.x) + "," +
                        lengthDefault(drawing(), ucs.origin.y) + "  X axis = " + lengthDefault(drawing(), ucs.xAxis.x) +
                        "," + lengthDefault(drawing(), ucs.xAxis.y) + "  Y axis = " +
                        lengthDefault(drawing(), ucs.yAxis.x) + "," + lengthDefault(drawing(), ucs.yAxis.y));
    }

    Dialogue save(Ask& ask) {
        for (;;) {
            const Answer answer = co_await ask.text("Enter name to save current UCS or [?]:");
            if (answer.isEnter()) co_return;
            if (answer.text == "?") {
                list("*");
                continue;
            }
            const std::vector<std::string> names = splitNames(answer.text);
            if (names.size() != 1 || !engine::isValidSymbolName(names.front())) {
                message("Invalid UCS name.");
                continue;
            }
            const engine::Name name(names.front());
            if (drawing().ucsList.contains(name)) {
                std::string question = "UCS " + inQuotes(name) + " already exists. Replace it? [Yes/No] <No>:";
                const bool replace = co_await askYesNo(ask, std::move(question), false);
                if (!replace) continue;
            }
            Ucs ucs = drawing().ucs;
            ucs.name = name;
            const doc::GroupScope group(document(), "UCS");
            document().editTable<doc::UcsTraits>([&](engine::Table<Ucs>& table) { table.add(ucs); });
            document().editSettings([&](engine::Drawing& d) {
                d.ucs.name = name;
                d.currentUcs = name;
            });
            co_return;
        }
    }

    bool restore(const std::string& text) {
        const std::vector<std::string> names = splitNames(text);
        const Ucs* ucs = names.empty() ? nullptr : drawing().ucsList.find(engine::Name(names.front()));
        if (ucs == nullptr) {
            message("Unknown UCS " + inQuotes(names.empty() ? text : names.front()) + ".");
            return false;
        }
        use(Ucs(*ucs));
        return true;
    }

    bool remove(const std::string& list) {
        std::vector<engine::Name> found;
        for (const Ucs& ucs : drawing().ucsList)
            for (const std::string& name : splitNames(list))
                if (ucs.name == engine::Name(name) || (hasWildcards(name) && matchesWildcards(ucs.name, name))) {
                    found.push_back(ucs.name);
                    break;
                }
        if (found.empty()) {
            message("No matching names found.");
            return false;
        }
        const doc::GroupScope group(document(), "UCS");
        document().editTable<doc::UcsTraits>([&](engine::Table<Ucs>& table) {
            for (const engine::Name name : found) table.erase(name);
        });
        // The system in force stays, without a name.
        if (std::find(found.begin(), found.end(), drawing().currentUcs) != found.end())
            document().editSettings([](engine::Drawing& d) {
                d.ucs.name = {};
                d.currentUcs = {};
            });
        message(std::to_string(found.size()) + " deleted.");
        return true;
    }

    UcsHistory& history_;
};

class UcsCommand final : public Command {
public:
    UcsCommand() : Command("UCS", "User Coordinate System", "Tools") {}
    std::unique_ptr<Tool> createTool() override { return std::make_unique<UcsTool>(history_); }

private:
    UcsHistory history_;
};

}  // namespace

KOVA_REGISTER_COMMAND(UcsCommand)

}  // namespace kova::cmd::commands
