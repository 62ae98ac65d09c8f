#include <unordered_set>

#include "engine/inquiry/value_text.hpp"
#include "edit/layer_changes.hpp"
#include "cmd/prompts/name_prompts.hpp"
#include "cmd/pick_request.hpp"
#include "cmd/refusals.hpp"
#include "cmd/registry.hpp"

// Selecting by what objects are.

namespace kova::cmd::commands {

namespace {

using engine::Entity;
using engine::EntityType;

/// GETSEL: selects the objects of one layer and one kind, each shown by an object or named; * for any.
class GetselTool final : public DialogueTool {
public:
    bool keepsSelection() const override { return true; }

protected:
    Dialogue dialogue(Ask& ask) override {
        const LayerAnswer layer =
            co_await askLayerOf(ask, document(), "Select an object on the Source layer <*>:", {}, true);
        std::optional<EntityType> type;
        for (;;) {
            PickRequest request;
            request.prompt = "Select an object of the Type you want <*>:";
            request.locked = Locked::Taken;
            request.isName = [](std::string_view line) {
                const std::string name = typedName(line);
                return name == "*" || engine::entityTypeFromAnyName(name).has_value();
            };
            const Answer answer = co_await askPick(ask, std::move(request));
            if (answer.isEnter()) break;
            if (const Entity* entity = answer.isObject() ? drawing().findById(answer.id) : nullptr) {
                type = entity->type();
                break;
            }
            const std::string name = typedName(answer.text);
            if (name == "*") break;
            type = engine::entityTypeFromAnyName(name);
            if (type) break;
            message("No object found.");
        }
        select(layer.layers, type);
    }

private:
    void select(const LayerNames& layers, std::optional<EntityType> type) {
        // Any layer: Enter, or all of them by *.
        const bool anyLayer = layers.empty() || layers.size() == drawing().layers.size();
        std::string what = type ? "all " + std::string(engine::dxfName(*type)) + " objects" : "all objects";
        std::string where;
        for (const engine::Name name : layers) where += (where.empty() ? "" : ",") + name.str();
        message("Collecting " + what + (anyLayer ? "..." : " on layer " + where + "..."));
        std::unordered_set<const void*> keys;
        for (const engine::Name name : layers) keys.insert(name.key());
        std::vector<std::uint64_t> ids;
        for (const Entity& entity : drawing().currentSpace())
            if (document().isSelectable(entity) && (!type || entity.type() == *type) &&
                (anyLayer || keys.contains(entity.layer.key())))
                ids.push_back(entity.id());
        document().selection().set(std::move(ids));
        message(counted(document().selection().size(), "object") + " have been placed in the active selection set.");
    }
};

/// FILTER works in its dialog only.
class FilterTool final : public Tool {
public:
    void begin() override {
        message(needsDialog("Object Filter"));
        message(typedInstead("QSELECT"));
        finish();
    }
    void textInput(const std::string&) override {}
};

}  // namespace

KOVA_TOOL_COMMAND(Getsel, "GETSEL", "Select by Layer and Type", "Edit")
KOVA_TOOL_COMMAND(Filter, "FILTER", "Object Filter", "Edit", {"FI"})

}  // namespace kova::cmd::commands
