#include "cmd/dialogue.hpp"
#include "edit/new_entities.hpp"
#include "edit/entity_copies.hpp"
#include "engine/inquiry/value_text.hpp"
#include "cmd/prompts/name_prompts.hpp"
#include "cmd/registry.hpp"

namespace kova::cmd::commands {

namespace {

using engine::Entity;
using engine::Name;
using math::Vector2;

/// BLOCK: makes a definition out of objects, which go from the drawing (OOPS brings them back). The base point becomes
/// the origin of the block, and the axes of the current coordinate system its axes.
class BlockTool final : public DialogueTool {
protected:
    Dialogue dialogue(Ask& ask) override {
        const Name name = co_await askName(ask);
        if (name.empty()) co_return;
        Vector2 base = drawing().ucs.origin;
        bool annotative = false;
        for (;;) {
            const Answer answer = co_await ask.point("Specify insertion base point or [Annotative]:", "Annotative");
            if (answer.isPoint()) base = answer.point;
            if (!answer.is("ANNOTATIVE")) break;
            annotative = co_await askYesNo(ask, "Create annotative block [Yes/No] <Yes>:", true);
        }
        const Answer selected = co_await ask.selection();
        define(name, base, selected.ids, annotative);
    }

private:
    /// A free name, or one that may be redefined; empty: given up.
    Task<Name> askName(Ask& ask) {
        for (;;) {
            const Answer answer = co_await ask.text("Enter block name or [?]:", "?");
            if (answer.isEnter()) co_return Name();
            if (answer.is("?")) {
                const std::string pattern = co_await askNamesToList(ask, "Enter block(s) to list <*>:");
                listBlocks(drawing(), pattern, *host());
                continue;
            }
            const std::string text = typedName(answer.text);
            if (!engine::isValidSymbolName(text)) {
                message("Invalid block name " + inQuotes(text) + ".");
                continue;
            }
            const engine::Block* known = drawing().findBlock(Name(text));
            if (known == nullptr) co_return Name(text);
            if (known->xrefType != engine::XrefType::None) {
                message("Block " + inQuotes(known->name) + " is an external reference.");
                continue;
            }
            if (engine::sysVarInt(drawing(), "EXPERT") >= 2) co_return known->name;
            const Name name = known->name;
            std::string question = "Block " + inQuotes(name) + " already exists. Redefine it? [Yes/No] <N>:";
            const bool redefine = co_await askYesNo(ask, std::move(question), false);
            if (redefine) co_return name;
        }
    }

    /// What the block holds: copies in drawing order, attribute definitions last and in the order they were picked,
    /// which is the order in which their values are asked for.
    std::vector<std::unique_ptr<Entity>> contents(const Vector2& base, const std::vector<std::uint64_t>& ids) {
        const math::Matrix4 matrix =
            math::Matrix4::rotation_z(-ucsRotation(drawing())) * math::Matrix4::translation(-base);
        std::vector<const Entity*> sources;
        for (const Entity* entity : entitiesInOrder(document(), ids))
            if (entity->type() != engine::EntityType::AttributeDefinition) sources.push_back(entity);
        for (const std::uint64_t id : ids) {
            const Entity* entity = drawing().findById(id);
            if (entity != nullptr && entity->type() == engine::EntityType::AttributeDefinition)
                sources.push_back(entity);
        }
        std::vector<std::unique_ptr<Entity>> copies;
        copies.reserve(sources.size());
        for (const Entity* source : sources) {
            // A window onto the model has no place in a block.
            if (source->type() == engine::EntityType::Viewport) continue;
            std::unique_ptr<Entity> copy = source->clone();
            copy->transform(matrix);
            copies.push_back(std::move(copy));
        }
        return copies;
    }

    void define(Name name, const Vector2& base, const std::vector<std::uint64_t>& ids, bool annotative) {
        doc::GroupScope group(document(), "BLOCK");
        std::vector<std::unique_ptr<Entity>> copies = contents(base, ids);
        if (annotative)
            for (const auto& copy : copies) copy->setAnnotative(true);
        std::vector<std::uint64_t> taken;
        for (const std::uint64_t id : ids) {
            const Entity* entity = drawing().findById(id);
            if (entity != nullptr && entity->type() != engine::EntityType::Viewport) taken.push_back(id);
        }
        // The contents take over the handles.
        document().removeEntities(taken);
        engine::Block* block = drawing().findBlock(name);
        const bool known = block != nullptr;
        if (!known) block = document().addBlock(std::make_unique<engine::Block>(name));
        if (block == nullptr) {
            group.rollback();
            return message("Invalid block name " + inQuotes(name) + ".");
        }
        document().replaceBlockContents(*block, std::move(copies));
        if (known)
            document().editBlock(*block, [](engine::Block& b) {
                b.base = {};
                b.isDynamic = false;
                b.dynParams.clear();
                b.dynActions.clear();
                b.visibilityStates.clear();
                b.lookupTable.reset();
            });
        if (drawing().blockContainsItself(name)) {
            group.rollback();
            return message("Block " + inQuotes(name) + " references itself.");
        }
        engine::setSysVar(drawing(), "INSNAME", name.str());
        if (known) message("Block " + inQuotes(name) + " redefined.");
        if (taken.empty() && !known) message("Block " + inQuotes(name) + " defined without objects.");
    }
};

}  // namespace

KOVA_TOOL_COMMAND(Block, "BLOCK", "Make Block", "Insert", {"B"})

}  // namespace kova::cmd::commands
