#include "edit/layer_changes.hpp"
#include "cmd/registry.hpp"
#include "doc/sysvar_actions.hpp"
#include "doc/table_edits.hpp"

namespace kova::cmd::commands {

namespace {

using engine::Layer;
using engine::Name;

const std::string kLabel = "LAYERP";

/// What LAYERP brings back of a layer: all but its name and description.
bool sameSettings(const Layer& a, const Layer& b) {
    return a.on == b.on && a.frozen == b.frozen && a.locked == b.locked && a.plottable == b.plottable &&
           a.color == b.color && a.lineweight == b.lineweight && a.linetype == b.linetype &&
           a.transparency == b.transparency && a.plotStyleName == b.plotStyleName;
}

void takeSettings(Layer& layer, const Layer& from) {
    Layer settings = from;
    settings.name = layer.name;
    settings.description = layer.description;
    layer = std::move(settings);
}

/// Layers by the key of their name; null: there was none of that name.
using LayersThen = std::unordered_map<const void*, const Layer*>;

/// What a group of the history changed of layers.
struct LayerStep {
    LayersThen before;                   ///< those that it touched
    LayerNames touched;                  ///< in the order of the first change
    std::optional<std::string> current;  ///< the current layer before; nothing: it stayed
};

LayerStep stepOf(const doc::UndoGroup& group) {
    LayerStep step;
    for (const auto& action : group.actions) {
        if (const auto* edit = dynamic_cast<const doc::TableEditAction<doc::LayerTraits>*>(action.get())) {
            for (const auto& change : edit->tableChanges().list())
                if (step.before.emplace(change.name.key(), change.other.get()).second)
                    step.touched.push_back(change.name);
        } else if (const auto* variable = dynamic_cast<const doc::SetSysVarStringAction*>(action.get())) {
            if (!step.current && variable->name() == "CLAYER") step.current = variable->before();
        }
    }
    return step;
}

/// The layers whose settings a step changed, `later` being what they were before the steps that followed it. Layers
/// that came or went do not count.
LayerNames changedLayers(const engine::Drawing& drawing, const LayerStep& step, const LayersThen& later) {
    LayerNames names;
    for (const Name name : step.touched) {
        const auto known = later.find(name.key());
        const Layer* after = known != later.end() ? known->second : drawing.layers.find(name);
        const Layer* before = step.before.at(name.key());
        if (after != nullptr && before != nullptr && !sameSettings(*after, *before)) names.push_back(name);
    }
    return names;
}

/// LAYERP: takes back the last change of layers' settings and of the current layer, whatever was done to objects since.
/// Layers that came, went or got another name stay so. The history tells what was before; called again, it goes further
/// back.
class LayerpCommand final : public OneShotCommand {
public:
    LayerpCommand() : OneShotCommand("LAYERP", "Previous Layer States", "Format") {}

    void execute(CommandContext& context) override {
        const doc::UndoHistory& history = context.document.history();
        LayersThen later;
        std::size_t takenBack = 0;
        for (std::size_t i = 0;; ++i) {
            const doc::UndoGroup* group = history.undoGroup(i);
            if (group == nullptr) return context.message("No previous layer status.");
            const LayerStep step = stepOf(*group);
            const LayerNames changed = changedLayers(context.drawing(), step, later);
            for (const auto& [key, layer] : step.before) later[key] = layer;
            if (changed.empty() && !step.current) continue;
            if (group->label == kLabel) {
                ++takenBack;
            } else if (takenBack > 0) {
                --takenBack;
            } else {
                return restore(context, step, changed);
            }
        }
    }

private:
    static void restore(CommandContext& context, const LayerStep& step, const LayerNames& changed) {
        const doc::GroupScope group(context.document, kLabel);
        editLayers(context.document, changed, [&](Layer& layer) {
            const bool frozen = layer.frozen;
            takeSettings(layer, *step.before.at(layer.name.key()));
            // The layer that was current then may have been left meanwhile, and be frozen below.
            if (layer.frozen && layer.name == context.drawing().currentLayer && !step.current) layer.frozen = frozen;
        });
        // A layer that is gone cannot be current again.
        if (step.current) context.document.setVariable("CLAYER", *step.current);
        context.message("Restored previous layer states.");
    }
};

}  // namespace

KOVA_REGISTER_COMMAND(LayerpCommand)

}  // namespace kova::cmd::commands
