#include "edit/array_record.hpp"
#include "cmd/dialogue.hpp"
#include "edit/new_entities.hpp"
#include "edit/entity_copies.hpp"
#include "engine/modify/exploded_parts.hpp"
#include "engine/inquiry/value_text.hpp"
#include "cmd/prompts/name_prompts.hpp"
#include "edit/property_changes.hpp"
#include "cmd/prompts/property_prompts.hpp"
#include "cmd/registry.hpp"
#include "cmd/selection_command.hpp"
#include "engine/entities/polyline.hpp"

namespace kova::cmd::commands {

namespace {

bool hasWidth(const engine::Entity& entity) {
    const auto* polyline = dynamic_cast<const engine::PolylineEntity*>(&entity);
    return polyline != nullptr && polyline->hasWidths();
}

/// Explodes one object after the other, as part of the open group.
struct Exploder {
    doc::Document& document;
    std::vector<std::uint64_t> gone = {};
    std::vector<std::uint64_t> added = {};
    std::size_t refused = 0;
    std::size_t arrays = 0;  ///< that fell into their items
    bool widths = false;

    /// `change` sees each part before it is added.
    void explode(const engine::Entity& entity, const std::function<void(engine::Entity&)>& change = {}) {
        std::optional<EntityParts> parts = explodedParts(entity);
        if (!parts) {
            ++refused;
            return;
        }
        widths = widths || hasWidth(entity);
        gone.push_back(entity.id());
        // Parts go where the whole stood in space, above all that is there.
        engine::EntityList& space = *entity.owner();
        for (std::unique_ptr<engine::Entity>& part : *parts) {
            if (change) change(*part);
            added.push_back(document.addEntity(std::move(part), space).id());
        }
    }
    void removeWholes() { document.removeEntities(gone); }
    void tell(ToolHost& host) {
        const std::size_t exploded = gone.size() + arrays;
        if (exploded != 0) host.message(counted(exploded, "object") + " exploded.");
        if (refused != 0) host.message(counted(refused, "object") + " could not be exploded.");
        if (widths) host.message("Exploding this polyline has lost width information.");
    }
};

void explodeSelection(doc::Document& document, ToolHost& host) {
    Exploder exploder(document);
    {
        const doc::GroupScope group(document, "EXPLODE");
        // An associative array falls into its items first.
        std::vector<std::uint64_t> ids = document.selection().ids();
        exploder.arrays = untieArrays(document, ids);
        for (const engine::Entity* entity : entitiesInOrder(document, ids)) exploder.explode(*entity);
        exploder.removeWholes();
    }
    // The parts are what P selects afterwards.
    if (!exploder.gone.empty()) document.selection().set(exploder.added);
    exploder.tell(host);
}

/// XPLODE: explodes objects and gives their parts properties.
class XplodeTool final : public DialogueTool {
public:
    void end() override { group_.reset(); }

protected:
    Dialogue dialogue(Ask& ask) override {
        const Answer selected = co_await ask.selection();
        std::vector<std::uint64_t> ids;
        std::size_t invalid = 0;
        for (const engine::Entity* entity : entitiesInOrder(document(), selected.ids)) {
            if (explodedParts(*entity))
                ids.push_back(entity->id());
            else
                ++invalid;
        }
        if (selected.ids.empty()) co_return;
        message(counted(selected.ids.size(), "object") + " found." +
                (invalid != 0 ? " " + std::to_string(invalid) + " invalid." : std::string()));
        if (ids.empty()) co_return;
        bool individually = false;
        if (ids.size() > 1) {
            const Answer how =
                co_await ask.keyword("XPlode [Individually/Globally] <Globally>:", "Individually Globally");
            individually = how.is("INDIVIDUALLY");
        }
        std::vector<Wish> wishes;
        for (std::size_t i = 0; i < (individually ? ids.size() : 1); ++i) {
            if (individually)
                if (const engine::Entity* entity = drawing().findById(ids[i]))
                    message("Object " + handleText(entity->handle()) + ":");
            wishes.push_back(co_await askWish(ask));
        }
        Exploder exploder(document());
        changing();
        for (std::size_t i = 0; i < ids.size(); ++i) {
            const engine::Entity* whole = drawing().findById(ids[i]);
            const Wish& wish = wishes[std::min(i, wishes.size() - 1)];
            if (whole != nullptr)
                exploder.explode(*whole, [&](engine::Entity& part) {
                    if (wish.inherit) inherit(*whole, part);
                    wish.changes.applyTo(part);
                });
        }
        exploder.removeWholes();
        exploder.tell(*host());
        repaint();
    }

private:
    void changing() {
        if (!group_) group_.emplace(document(), "XPLODE");
    }

    /// What becomes of the parts.
    struct Wish {
        bool inherit = false;
        PropertyChanges changes;
    };

    /// What stood on layer "0" or took its properties from the block gets those of the reference.
    static void inherit(const engine::Entity& whole, engine::Entity& part) {
        if (part.layer == engine::commonNames().layerZero) part.layer = whole.layer;
        if (part.color.method == engine::ColorMethod::ByBlock) part.color = whole.color;
        if (part.linetype == engine::commonNames().byBlock) part.linetype = whole.linetype;
        if (part.lineweight == -2) part.lineweight = whole.lineweight;
    }

    Task<Wish> askWish(Ask& ask) {
        Wish wish;
        const Answer option = co_await ask.keyword(
            "Enter an option [All/Color/LAyer/LType/LWeight/Inherit from parent block/Explode] <Explode>:",
            "All Color LAyer LType LWeight Inherit Explode");
        const bool all = option.is("ALL");
        if (option.is("INHERIT")) wish.inherit = true;
        if (all || option.is("COLOR")) {
            const auto color =
                co_await askColor(ask, "New color for exploded objects [Truecolor/COlorbook] <BYLAYER>:");
            wish.changes.color = color.value_or(engine::Color{});
        }
        if (all || option.is("LTYPE")) co_await askLinetype(ask, wish.changes);
        if (all || option.is("LWEIGHT")) co_await askLineweight(ask, wish.changes);
        if (all || option.is("LAYER")) co_await askLayer(ask, wish.changes);
        co_return wish;
    }

    Dialogue askLinetype(Ask& ask, PropertyChanges& changes) {
        for (;;) {
            const Answer answer = co_await ask.text("Enter new linetype name for exploded objects <BYLAYER>:");
            changes.linetype = engine::commonNames().byLayer;
            if (answer.isEnter()) co_return;
            const engine::Name name(typedName(answer.text));
            if (name == engine::commonNames().byLayer) co_return;
            changes.linetype = engine::commonNames().byBlock;
            if (name == engine::commonNames().byBlock) co_return;
            changing();
            if (const engine::Linetype* linetype = useLinetype(document(), name)) {
                changes.linetype = linetype->name;
                co_return;
            }
            message("Linetype " + inQuotes(name.view()) + " not found.");
        }
    }

    Dialogue askLineweight(Ask& ask, PropertyChanges& changes) {
        for (;;) {
            const Answer answer = co_await ask.text("Enter new lineweight for exploded objects <ByLayer>:");
            changes.lineweight = answer.isEnter() ? std::optional<int>(-1) : parseLineweight(answer.text);
            if (changes.lineweight) co_return;
            message("Invalid lineweight.");
        }
    }

    Dialogue askLayer(Ask& ask, PropertyChanges& changes) {
        for (;;) {
            std::string prompt =
                withDefault("Enter new layer name for exploded objects", drawing().currentLayer.view());
            const Answer answer = co_await ask.text(std::move(prompt));
            const engine::Name name = answer.isEnter() ? drawing().currentLayer : engine::Name(typedName(answer.text));
            if (const engine::Layer* layer = drawing().layers.find(name)) {
                changes.layer = layer->name;
                co_return;
            }
            message("Unknown layer " + inQuotes(name.view()) + ".");
        }
    }

    std::optional<doc::GroupScope> group_;
};

/// EXPLODE: objects fall into their parts, one level deep.
class ExplodeCommand final : public SelectionCommand {
public:
    ExplodeCommand() : SelectionCommand("EXPLODE", "Explode", "Modify", {"X"}) {}
    void work(doc::Document& document, ToolHost& host) override { explodeSelection(document, host); }
};

}  // namespace

KOVA_REGISTER_COMMAND(ExplodeCommand)
KOVA_TOOL_COMMAND(Xplode, "XPLODE", "Extended Explode", "Modify", {"XP"})

}  // namespace kova::cmd::commands
