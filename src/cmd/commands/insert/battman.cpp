#include "edit/block_attributes.hpp"
#include "cmd/dialogue.hpp"
#include "edit/new_entities.hpp"
#include "engine/inquiry/value_text.hpp"
#include "cmd/prompts/name_prompts.hpp"
#include "cmd/registry.hpp"

namespace kova::cmd::commands {

namespace {

using engine::AttributeDefinitionEntity;
using engine::BlockAttribute;
using engine::BlockReferenceEntity;
using engine::Name;

struct AttributeModeRow {
    const char* word;
    const char* letter;
    bool AttributeDefinitionEntity::*field;
    const char* name;
};
constexpr AttributeModeRow kAttributeModes[] = {{"INVISIBLE", "I", &AttributeDefinitionEntity::invisible, "Invisible"},
                              {"CONSTANT", "C", &AttributeDefinitionEntity::constant, "Constant"},
                              {"VERIFY", "V", &AttributeDefinitionEntity::verify, "Verify"},
                              {"PRESET", "P", &AttributeDefinitionEntity::preset, "Preset"},
                              {"LOCK", "L", &AttributeDefinitionEntity::locked, "Lock position"},
                              {"MULTIPLE", "M", &AttributeDefinitionEntity::multiline, "Multiple lines"}};

/// BATTMAN: edits, reorders and removes the attributes that a block defines. References follow at once, but for places
/// and sizes, which Sync brings after.
class BattmanTool final : public DialogueTool {
public:
    void end() override { group_.reset(); }

protected:
    Dialogue dialogue(Ask& ask) override {
        co_await askBlock(ask);
        if (block_.empty()) co_return;
        for (;;) {
            list();
            const Answer option = co_await ask.keyword(
                "Enter an option [Edit/Remove/MOve up/move Down/Sync/eXit] <eXit>:", "Edit Remove MOve Down Sync eXit");
            if (option.isEnter() || option.is("EXIT")) co_return;
            if (option.is("SYNC")) {
                changing();
                message(counted(synchronizeAttributes(document(), blocks()), "block reference") + " updated.");
                continue;
            }
            const std::string tag = co_await askTag(ask);
            if (tag.empty()) continue;
            if (option.is("EDIT"))
                co_await edit(ask, tag);
            else if (option.is("REMOVE"))
                remove(tag);
            else
                move(tag, option.is("MOVE"));
        }
    }

private:
    void changing() {
        if (!group_) group_.emplace(document(), "BATTMAN");
    }
    std::vector<Name> blocks() const { return std::vector<Name>(1, block_); }

    /// All definitions of the block, the constant ones too.
    std::vector<AttributeDefinitionEntity*> definitions(Name name) const {
        std::vector<AttributeDefinitionEntity*> found;
        engine::Block* block = drawing().findBlock(name);
        if (block == nullptr || block->xrefType != engine::XrefType::None) return found;
        for (engine::Entity& entity : block->entities)
            if (entity.type() == engine::EntityType::AttributeDefinition)
                found.push_back(static_cast<AttributeDefinitionEntity*>(&entity));
        return found;
    }
    AttributeDefinitionEntity* find(const std::string& tag) const {
        for (AttributeDefinitionEntity* definition : definitions(block_))
            if (engine::equalNoCase(definition->tag, tag)) return definition;
        return nullptr;
    }

    Dialogue askBlock(Ask& ask) {
        for (;;) {
            const Answer answer = co_await ask.text("Enter block name or [?]:", "?");
            if (answer.isEnter()) co_return;
            if (answer.is("?")) {
                const std::string filter = co_await askNamesToList(ask, "Enter block(s) to list <*>:");
                std::vector<Name> names;
                for (const auto& block : drawing().blocks())
                    if (!definitions(block->name).empty()) names.push_back(block->name);
                if (names.empty()) message("No blocks with attributes.");
                for (const Name name : matchingNames(drawing(), names, filter)) message("  " + inQuotes(name));
                continue;
            }
            const engine::Block* known = drawing().findBlock(Name(typedName(answer.text)));
            if (known == nullptr)
                message("Block " + inQuotes(typedName(answer.text)) + " not found.");
            else if (definitions(known->name).empty())
                message("Block " + inQuotes(known->name) + " has no attributes.");
            else {
                block_ = known->name;
                co_return;
            }
        }
    }

    void list() const {
        for (const AttributeDefinitionEntity* definition : definitions(block_)) {
            std::string modes;
            for (const AttributeModeRow& mode : kAttributeModes)
                if (definition->*mode.field) modes += mode.letter;
            message("  " + definition->tag + "  prompt " + inQuotes(definition->prompt) + "  default " +
                    inQuotes(definition->defaultValue) + (modes.empty() ? "" : "  modes " + modes));
        }
    }

    Task<std::string> askTag(Ask& ask) {
        for (;;) {
            const Answer answer = co_await ask.text("Enter attribute tag name:");
            if (answer.isEnter()) co_return std::string();
            std::string tag = typedName(answer.text);
            if (find(tag) != nullptr) co_return tag;
            message("Attribute " + inQuotes(tag) + " not found.");
        }
    }

    Dialogue edit(Ask& ask, std::string tag) {
        const AttributeDefinitionEntity* now = find(tag);
        if (now == nullptr) co_return;
        AttributeDefinitionEntity fresh(*now);
        for (;;) {
            std::string prompt = withDefault("Enter tag name", fresh.tag);
            const Answer answer = co_await ask.text(std::move(prompt));
            if (answer.isEnter()) break;
            const std::string typed = engine::upperCase(typedName(answer.text));
            const AttributeDefinitionEntity* other = find(typed);
            if (typed.empty() || typed.find_first_of(" \t!") != std::string::npos)
                message("Invalid attribute tag.");
            else if (other != nullptr && !engine::equalNoCase(typed, tag))
                message("Attribute " + inQuotes(typed) + " already exists.");
            else {
                fresh.tag = typed;
                break;
            }
        }
        std::string question = withDefault("Enter attribute prompt", fresh.prompt);
        const Answer prompt = co_await ask.text(std::move(question));
        if (prompt.isText()) fresh.prompt = prompt.text;
        question = withDefault("Enter default attribute value", fresh.defaultValue);
        const std::optional<std::string> value = co_await askAttributeValue(ask, std::move(question), fresh.multiline);
        if (value) fresh.defaultValue = *value;
        co_await askModes(ask, fresh);
        apply(tag, fresh);
    }

    Dialogue askModes(Ask& ask, AttributeDefinitionEntity& fresh) {
        for (;;) {
            std::string state = "Current attribute modes:";
            for (const AttributeModeRow& mode : kAttributeModes)
                state += std::string("  ") + mode.name + "=" + (fresh.*mode.field ? "Y" : "N");
            message(state);
            const Answer answer = co_await ask.keyword(
                "Enter an option to change [Invisible/Constant/Verify/Preset/Lock position/Multiple lines] <done>:",
                "Invisible Constant Verify Preset Lock Multiple");
            if (answer.isEnter()) co_return;
            for (const AttributeModeRow& mode : kAttributeModes) {
                if (!answer.is(mode.word)) continue;
                fresh.*mode.field = !(fresh.*mode.field);
                if (mode.field == &AttributeDefinitionEntity::multiline)
                    fresh.defaultValue = convertedValue(fresh.defaultValue, !fresh.multiline, fresh.multiline);
            }
        }
    }

    void editReferences(const std::function<void(BlockReferenceEntity&)>& change) {
        for (BlockReferenceEntity* reference : referencesOf(drawing(), blocks()))
            document().modifyEntity(
                *reference, [&](engine::Entity& entity) { change(static_cast<BlockReferenceEntity&>(entity)); });
    }

    void apply(const std::string& tag, const AttributeDefinitionEntity& fresh) {
        AttributeDefinitionEntity* target = find(tag);
        if (target == nullptr) return;
        changing();
        const bool wasConstant = target->constant;
        document().modifyEntity(*target, [&](engine::Entity& entity) {
            auto& definition = static_cast<AttributeDefinitionEntity&>(entity);
            definition.tag = fresh.tag;
            definition.prompt = fresh.prompt;
            definition.defaultValue = fresh.defaultValue;
            for (const AttributeModeRow& mode : kAttributeModes) definition.*mode.field = fresh.*mode.field;
        });
        // References hold no constant attributes.
        if (wasConstant != fresh.constant) {
            synchronizeAttributes(document(), blocks());
            return;
        }
        editReferences([&](BlockReferenceEntity& reference) {
            BlockAttribute* attribute = reference.findAttribute(tag);
            if (attribute == nullptr) return;
            attribute->tag = fresh.tag;
            attribute->invisible = fresh.invisible;
            attribute->locked = fresh.locked;
            attribute->value = convertedValue(attribute->value, attribute->multiline, fresh.multiline);
            attribute->multiline = fresh.multiline;
        });
    }

    void remove(const std::string& tag) {
        AttributeDefinitionEntity* target = find(tag);
        if (target == nullptr) return;
        if (isDynamic()) return;
        if (definitions(block_).size() == 1) return message("The last attribute of a block cannot be removed here.");
        changing();
        document().removeEntity(*target);
        editReferences([&](BlockReferenceEntity& reference) {
            std::erase_if(reference.attributes,
                          [&](const BlockAttribute& attribute) { return engine::equalNoCase(attribute.tag, tag); });
        });
    }

    /// Visibility states and actions of dynamic blocks count on the order of the contents.
    bool isDynamic() const {
        const engine::Block* block = drawing().findBlock(block_);
        if (block == nullptr || !block->isDynamic) return false;
        message("The attributes of a dynamic block keep their order.");
        return true;
    }

    /// Exchanges the definition with the one before or behind it.
    void move(const std::string& tag, bool up) {
        if (isDynamic()) return;
        const auto all = definitions(block_);
        const auto at = static_cast<std::size_t>(std::find(all.begin(), all.end(), find(tag)) - all.begin());
        if (at >= all.size() || (up ? at == 0 : at + 1 == all.size()))
            return message(up ? "The attribute is the first one already." : "The attribute is the last one already.");
        engine::Block* block = drawing().findBlock(block_);
        std::vector<engine::Entity*> order = block->entities.entities();
        std::iter_swap(std::find(order.begin(), order.end(), all[at]),
                       std::find(order.begin(), order.end(), all[up ? at - 1 : at + 1]));
        changing();
        if (!document().setDrawOrder(block->entities, order)) return;
        std::vector<std::string> tags;
        for (const AttributeDefinitionEntity* definition : definitions(block_)) tags.push_back(definition->tag);
        const auto rank = [&](const BlockAttribute& attribute) {
            return std::find_if(tags.begin(), tags.end(),
                                [&](const std::string& t) { return engine::equalNoCase(t, attribute.tag); }) -
                   tags.begin();
        };
        editReferences([&](BlockReferenceEntity& reference) {
            std::stable_sort(reference.attributes.begin(), reference.attributes.end(),
                             [&](const BlockAttribute& a, const BlockAttribute& b) { return rank(a) < rank(b); });
        });
    }

    Name block_;
    std::optional<doc::GroupScope> group_;
};

}  // namespace

KOVA_TOOL_COMMAND(Battman, "BATTMAN", "Block Attribute Manager", "Insert")

}  // namespace kova::cmd::commands
