#include "cmd/dialogue.hpp"
#include "edit/new_entities.hpp"
#include "engine/inquiry/value_text.hpp"
#include "cmd/prompts/name_prompts.hpp"
#include "cmd/registry.hpp"
#include "engine/entities/dynamic_block.hpp"

namespace kova::cmd::commands {

namespace {

using engine::BlockReferenceEntity;
using engine::DynProperty;

/// BPROPERTIES: the parameter values of one reference of a dynamic block.
class BpropertiesTool final : public DialogueTool {
protected:
    Dialogue dialogue(Ask& ask) override {
        const Answer pick = co_await ask.object("Select block reference:", {}, isDynamic);
        if (!pick.isObject()) co_return;
        id_ = pick.id;
        for (;;) {
            const Answer answer = co_await ask.text("Enter property name or [?/Reset/eXit] <eXit>:", "? Reset eXit");
            if (answer.isEnter() || answer.is("EXIT") || block() == nullptr) co_return;
            if (answer.is("?")) {
                list();
            } else if (answer.is("RESET")) {
                change([](BlockReferenceEntity& reference) { engine::resetDynValues(reference); });
            } else {
                co_await askValue(ask, typedName(answer.text));
            }
        }
    }

private:
    static bool isDynamic(const engine::Entity& entity) {
        if (entity.type() != engine::EntityType::BlockReference) return false;
        const engine::Block* block = static_cast<const BlockReferenceEntity&>(entity).block();
        return block != nullptr && !engine::dynProperties(*block).empty();
    }
    BlockReferenceEntity* reference() const { return dynamic_cast<BlockReferenceEntity*>(drawing().findById(id_)); }
    const engine::Block* block() const { return reference() != nullptr ? reference()->block() : nullptr; }

    std::optional<DynProperty> find(std::string_view name) const {
        if (block() == nullptr) return std::nullopt;
        for (const DynProperty& property : engine::dynProperties(*block()))
            if (engine::equalNoCase(property.name, name)) return property;
        return std::nullopt;
    }

    void list() const {
        for (const DynProperty& property : engine::dynProperties(*block()))
            message("  " + inQuotes(property.name) + " = " + engine::dynValueText(*reference(), *block(), property));
    }

    void change(const std::function<void(BlockReferenceEntity&)>& work) {
        const doc::GroupScope group(document(), "BPROPERTIES");
        document().modifyEntity(*reference(),
                                [&](engine::Entity& entity) { work(static_cast<BlockReferenceEntity&>(entity)); });
        repaint();
    }

    Dialogue askValue(Ask& ask, std::string name) {
        for (;;) {
            const std::optional<DynProperty> property = find(name);
            if (!property) co_return message("Property " + inQuotes(name) + " not found.");
            const std::string now = engine::dynValueText(*reference(), *block(), *property);
            const Answer answer = co_await ask.text(withDefault("Enter new value for " + inQuotes(property->name), now));
            if (answer.isEnter() || block() == nullptr) co_return;
            BlockReferenceEntity trial(*reference());
            const std::string error = engine::setDynValue(trial, *block(), *property, typedName(answer.text));
            if (!error.empty()) {
                message(error);
                continue;
            }
            change([&](BlockReferenceEntity& reference) {
                reference.dynParamValues = trial.dynParamValues;
                reference.dynFlipValues = trial.dynFlipValues;
                reference.activeVisibilityState = trial.activeVisibilityState;
            });
            co_return;
        }
    }

    std::uint64_t id_ = 0;
};

}  // namespace

KOVA_TOOL_COMMAND(Bproperties, "BPROPERTIES", "Block Properties", "Insert")

}  // namespace kova::cmd::commands
