#include "edit/entity_copies.hpp"
#include "engine/inquiry/value_text.hpp"
#include "edit/layer_changes.hpp"
#include "cmd/prompts/displacement.hpp"
#include "cmd/registry.hpp"
#include "cmd/selection_command.hpp"
#include "engine/entities/block_reference.hpp"

// Objects brought to other layers, and to the properties of their layers.

namespace kova::cmd::commands {

namespace {

using engine::Entity;
using engine::Name;

std::string changedLine(const engine::Drawing& drawing, std::size_t count, Name layer) {
    std::string line = counted(count, "object") + " changed to layer " + layer.str();
    line += layer == drawing.currentLayer ? " (the current layer)." : ".";
    return line;
}

/// LAYCUR: puts the selected objects onto the current layer.
class LaycurCommand final : public SelectionCommand {
public:
    LaycurCommand() : SelectionCommand("LAYCUR", "Objects to Current Layer", "Format") {}
    void work(doc::Document& document, ToolHost& host) override {
        const Name layer = document.drawing().currentLayer;
        const doc::GroupScope group(document, "LAYCUR");
        const std::size_t count = putOnLayer(document, document.selection().ids(), layer);
        host.message(changedLine(document.drawing(), count, layer));
    }
};

/// LAYMCH: puts objects onto the layer of another one.
class LaymchTool final : public DialogueTool {
protected:
    Dialogue dialogue(Ask& ask) override {
        const Answer selected = co_await ask.selection("Select objects to be changed:");
        if (selected.ids.empty()) co_return;
        LayerAnswer target =
            co_await askLayerOf(ask, document(), "Select object on destination layer or [Name]:", "Name", true);
        if (target.is("NAME")) target.layers = co_await askLayerNames(ask, document(), "Enter layer name:");
        if (target.layers.empty()) co_return;
        const doc::GroupScope group(document(), "LAYMCH");
        const std::size_t count = putOnLayer(document(), selected.ids, target.layers.front());
        message(changedLine(drawing(), count, target.layers.front()));
    }
};

/// COPYTOLAYER: copies of objects on another layer, in place or moved.
class CopyToLayerTool final : public DialogueTool {
protected:
    Dialogue dialogue(Ask& ask) override {
        const Answer selected = co_await ask.selection("Select objects to copy:");
        if (selected.ids.empty()) co_return;
        LayerAnswer target =
            co_await askLayerOf(ask, document(), "Select object on destination layer or [Name] <Name>:", "Name", true);
        if (target.layers.empty()) target.layers = co_await askLayerNames(ask, document(), "Enter layer name:");
        if (target.layers.empty()) co_return;
        const Name layer = target.layers.front();
        const Answer base =
            co_await ask.point("Specify base point or [Displacement/eXit] <eXit>:", "Displacement eXit");
        math::Vector2 by;
        if (base.is("DISPLACEMENT")) {
            const Answer way = co_await ask.point("Specify displacement <0,0,0>:", {}, math::Vector2());
            if (way.isPoint()) by = displacementOf(drawing(), way.point);
        } else if (base.isPoint()) {
            const Answer second = co_await ask.point(
                "Specify second point of displacement or <use first point as displacement>:", {}, base.point);
            by = second.isPoint() ? second.point - base.point : displacementOf(drawing(), base.point);
        }
        const doc::GroupScope group(document(), "COPYTOLAYER");
        const auto added = addCopies(document(), selected.ids, math::Matrix4::translation(by));
        putOnLayer(document(), added, layer);
        message(counted(added.size(), "object") + " copied and placed on layer " + inQuotes(layer) + ".");
    }
};

/// SETBYLAYER: objects look as their layers say again.
class SetByLayerCommand final : public SelectionCommand {
public:
    SetByLayerCommand() : SelectionCommand("SETBYLAYER", "Set to ByLayer", "Modify") {}
    void work(doc::Document& document, ToolHost& host) override {
        std::size_t changed = 0;
        std::size_t asTheyWere = 0;
        const doc::GroupScope group(document, "SETBYLAYER");
        for (Entity* entity : entitiesInOrder(document, document.selection().ids())) {
            if (isByLayer(*entity)) {
                ++asTheyWere;
                continue;
            }
            document.modifyEntity(*entity, makeByLayer);
            ++changed;
        }
        host.message(counted(changed, "object") + " modified, " + counted(asTheyWere, "object") +
                     " did not need to be changed.");
    }

private:
    static bool isByLayer(const Entity& e) {
        const engine::CommonNames& names = engine::commonNames();
        if (e.color != engine::Color::byLayer() || !(e.linetype == names.byLayer) || e.lineweight != -1 ||
            e.transparency != 0 || !(e.plotStyleName() == names.byLayer))
            return false;
        if (e.type() != engine::EntityType::BlockReference) return true;
        const auto& attributes = static_cast<const engine::BlockReferenceEntity&>(e).attributes;
        return std::all_of(attributes.begin(), attributes.end(),
                           [](const auto& a) { return a.color == engine::Color::byLayer(); });
    }
    static void makeByLayer(Entity& e) {
        e.color = engine::Color::byLayer();
        e.linetype = engine::commonNames().byLayer;
        e.lineweight = -1;
        e.transparency = 0;
        e.setPlotStyleName(engine::commonNames().byLayer);
        if (auto* reference = dynamic_cast<engine::BlockReferenceEntity*>(&e))
            for (engine::BlockAttribute& attribute : reference->attributes) attribute.color = engine::Color::byLayer();
    }
};

}  // namespace

KOVA_REGISTER_COMMAND(LaycurCommand)
KOVA_TOOL_COMMAND(Laymch, "LAYMCH", "Match Layer", "Format")
KOVA_TOOL_COMMAND(CopyToLayer, "COPYTOLAYER", "Copy to Layer", "Format")
KOVA_REGISTER_COMMAND(SetByLayerCommand)

}  // namespace kova::cmd::commands
