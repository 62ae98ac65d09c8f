#include "cmd/entity_copies.hpp"
#include "cmd/exploded_parts.hpp"
#include "cmd/format.hpp"
#include "cmd/registry.hpp"
#include "cmd/selection_command.hpp"
#include "engine/entities/polyline.hpp"

namespace kova::cmd::commands {

namespace {

bool hasWidth(const engine::Entity& entity) {
    const auto* polyline = dynamic_cast<const engine::PolylineEntity*>(&entity);
    return polyline != nullptr && polyline->hasWidths();
}

void explodeSelection(doc::Document& document, ToolHost& host) {
    std::vector<std::uint64_t> gone;
    std::vector<std::uint64_t> added;
    std::size_t refused = 0;
    bool widths = false;
    {
        const doc::GroupScope group(document, "EXPLODE");
        for (const engine::Entity* entity : entitiesInOrder(document, document.selection().ids())) {
            std::optional<EntityParts> parts = explodedParts(*entity);
            if (!parts) {
                ++refused;
                continue;
            }
            widths = widths || hasWidth(*entity);
            gone.push_back(entity->id());
            // Parts go where the whole stood in space, above all that is there.
            engine::EntityList& space = *entity->owner();
            for (std::unique_ptr<engine::Entity>& part : *parts)
                added.push_back(document.addEntity(std::move(part), space).id());
        }
        document.removeEntities(gone);
    }
    if (!gone.empty()) {
        // The parts are what P selects afterwards.
        document.selection().set(std::move(added));
        host.message(counted(gone.size(), "object") + " exploded.");
    }
    if (refused != 0) host.message(counted(refused, "object") + " could not be exploded.");
    if (widths) host.message("Exploding this polyline has lost width information.");
}

/// EXPLODE: objects fall into their parts, one level deep.
class ExplodeCommand final : public SelectionCommand {
public:
    ExplodeCommand() : SelectionCommand("EXPLODE", "Explode", "Modify", {"X"}) {}
    void work(doc::Document& document, ToolHost& host) override { explodeSelection(document, host); }
};

}  // namespace

KOVA_REGISTER_COMMAND(ExplodeCommand)

}  // namespace kova::cmd::commands
