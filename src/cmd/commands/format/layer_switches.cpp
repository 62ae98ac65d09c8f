#include "edit/new_entities.hpp"
#include "engine/inquiry/value_text.hpp"
#include "edit/layer_changes.hpp"
#include "cmd/refusals.hpp"
#include "cmd/registry.hpp"
#include "doc/step_group.hpp"
#include "engine/entities/viewport.hpp"

// Layers switched by objects that lie on them, and all layers at once.

namespace kova::cmd::commands {

namespace {

using engine::Layer;
using engine::Name;

/// LAYFRZ and LAYOFF: one layer after the other, by an object on it. In a viewport of a layout the layer is frozen
/// there only, unless the setting says otherwise.
class LayerHidingTool : public DialogueTool {
public:
    LayerHidingTool(bool freeze) : freeze_(freeze) {}
    void end() override { group_.reset(); }

protected:
    Dialogue dialogue(Ask& ask) override {
        message(std::string("Current settings: Viewports=") + (inViewport() ? "Vpfreeze" : wholeWord()) +
                ", Block nesting level=" + levelWord());
        const std::string what =
            freeze_ ? "Select an object on the layer to be frozen" : "Select an object on the layer to be turned off";
        for (;;) {
            const LayerAnswer answer =
                co_await askLayerOf(ask, document(), what + " or [Settings/Undo]:", "Settings Undo", false);
            if (answer.kind == Answer::Kind::Enter) co_return;
            if (answer.is("SETTINGS"))
                co_await settings(ask);
            else if (answer.is("UNDO"))
                message(group_ && group_->drop() ? "Last layer restored." : "Nothing to undo.");
            else
                co_await hide(ask, answer.layers.front());
        }
    }

private:
    const char* wholeWord() const { return freeze_ ? "Freeze" : "Off"; }
    const char* viewportKey() const { return freeze_ ? "layfrzViewports" : "layoffViewports"; }
    bool inViewport() const { return remembered(document(), viewportKey(), 1.0) != 0.0; }
    const char* levelWord() const {
        constexpr const char* kWords[] = {"Block", "Entity", "None"};
        const double level = remembered(document(), "layerNestingLevel", 0.0);
        return kWords[level == 1.0 ? 1 : level == 2.0 ? 2 : 0];
    }

    Dialogue settings(Ask& ask) {
        const Answer type =
            co_await ask.keyword("Enter setting type for [Viewports/Block selection]:", "Viewports Block");
        if (type.is("VIEWPORTS")) {
            std::string prompt = std::string("In paper space viewport use [") + wholeWord() + "/Vpfreeze] <" +
                                 (inViewport() ? "Vpfreeze" : wholeWord()) + ">:";
            const Answer use = co_await ask.keyword(std::move(prompt), freeze_ ? "Freeze Vpfreeze" : "Off Vpfreeze");
            if (!use.isEnter()) remember(document(), viewportKey(), use.is("VPFREEZE") ? 1.0 : 0.0);
        } else if (type.is("BLOCK")) {
            std::string prompt =
                std::string("Enter block selection nesting level [Block/Entity/None] <") + levelWord() + ">:";
            const Answer level = co_await ask.keyword(std::move(prompt), "Block Entity None");
            if (!level.isEnter())
                remember(document(), "layerNestingLevel", level.is("ENTITY") ? 1.0 : level.is("NONE") ? 2.0 : 0.0);
            // Picks take whole references here.
            if (level.is("ENTITY")) message("Objects inside blocks cannot be picked here: the block's layer is taken.");
        }
    }

    Dialogue hide(Ask& ask, Name name) {
        engine::ViewportEntity* viewport = inViewport() ? drawing().activeViewport() : nullptr;
        if (viewport == nullptr && name == drawing().currentLayer) {
            if (freeze_) co_return message("Cannot freeze layer " + inQuotes(name) + ". It is the CURRENT layer.");
            std::string prompt = "Layer " + inQuotes(name) + " is current, do you want to turn it off? [Yes/No] <No>:";
            const bool off = co_await askYesNo(ask, std::move(prompt), false);
            if (!off) co_return;
        }
        if (!group_) group_.emplace(document(), freeze_ ? "LAYFRZ" : "LAYOFF");
        group_->begin();
        const bool freeze = freeze_;
        if (viewport != nullptr) {
            document().modifyEntity(*viewport, [name](engine::Entity& e) {
                auto& list = static_cast<engine::ViewportEntity&>(e).vpFrozenLayers;
                std::erase(list, name);
                list.push_back(name);
            });
            message("Layer " + inQuotes(name) + " has been frozen in the current viewport.");
            co_return;
        }
        editLayers(document(), LayerNames(1, name),
                   [freeze](Layer& layer) { (freeze ? layer.frozen : layer.on) = freeze; });
        message("Layer " + inQuotes(name) + (freeze_ ? " has been frozen." : " has been turned off."));
    }

    bool freeze_;
    std::optional<StepGroup> group_;
};

class LayfrzTool final : public LayerHidingTool {
public:
    LayfrzTool() : LayerHidingTool(true) {}
};
class LayoffTool final : public LayerHidingTool {
public:
    LayoffTool() : LayerHidingTool(false) {}
};

/// LAYLCK: locks the layer of one object.
class LaylckTool final : public DialogueTool {
protected:
    Dialogue dialogue(Ask& ask) override {
        const LayerAnswer answer =
            co_await askLayerOf(ask, document(), "Select an object on the layer to be locked:", {}, false);
        if (answer.layers.empty()) co_return;
        const doc::GroupScope group(document(), "LAYLCK");
        editLayers(document(), answer.layers, [](Layer& layer) { layer.locked = true; });
        message("Layer " + inQuotes(answer.layers.front()) + " has been locked.");
    }
};

/// LAYMCUR: makes the layer of one object current.
class LaymcurTool final : public DialogueTool {
protected:
    Dialogue dialogue(Ask& ask) override {
        const LayerAnswer answer =
            co_await askLayerOf(ask, document(), "Select object whose layer will become current:", {}, false);
        if (answer.layers.empty()) co_return;
        const Name name = answer.layers.front();
        const doc::GroupScope group(document(), "LAYMCUR");
        const std::string error = document().setVariable("CLAYER", name.str());
        message(error.empty() ? name.str() + " is now the current layer." : error);
    }
};

/// Switches all layers that are not as wanted already.
void switchAll(CommandContext& context, const char* label, bool Layer::*flag, bool to, const LayerNames* only,
               std::string line) {
    LayerNames names;
    for (const Layer& layer : context.drawing().layers) {
        const bool meant = only == nullptr || std::find(only->begin(), only->end(), layer.name) != only->end();
        if (meant && layer.*flag != to) names.push_back(layer.name);
    }
    const doc::GroupScope group(context.document, label);
    editLayers(context.document, names, [flag, to](Layer& layer) { layer.*flag = to; });
    context.message(line);
}

class LayonCommand final : public OneShotCommand {
public:
    LayonCommand() : OneShotCommand("LAYON", "Turn All Layers On", "Format") {}
    void execute(CommandContext& context) override {
        switchAll(context, "LAYON", &Layer::on, true, nullptr, "All layers have been turned on.");
    }
};

class LaythwCommand final : public OneShotCommand {
public:
    LaythwCommand() : OneShotCommand("LAYTHW", "Thaw All Layers", "Format") {}
    void execute(CommandContext& context) override {
        switchAll(context, "LAYTHW", &Layer::frozen, false, nullptr, "All layers have been thawed.");
    }
};

/// LAYULK: unlocks the layers of what is selected, or of names behind the command, else all.
class LayulkCommand final : public OneShotCommand {
public:
    LayulkCommand() : OneShotCommand("LAYULK", "Unlock Object's Layer", "Format") {}
    void execute(CommandContext& context) override {
        LayerNames names;
        if (!context.arguments.empty()) {
            const auto matched = matchLayers(context.drawing(), context.arguments.front(),
                                             [&](const std::string& text) { context.message(text); });
            context.arguments.clear();
            if (!matched) return;
            names = *matched;
        } else if (!context.transparent) {
            names = layersOf(context.drawing(), context.document.selection().ids());
            context.document.selection().clear();
        }
        std::string line = "All layers have been unlocked.";
        if (names.size() == 1) line = "Layer " + inQuotes(names.front()) + " has been unlocked.";
        if (names.size() > 1) line = counted(names.size(), "layer") + " have been unlocked.";
        switchAll(context, "LAYULK", &Layer::locked, false, names.empty() ? nullptr : &names, std::move(line));
    }
};

class LayerpaletteCommand final : public OneShotCommand {
public:
    LayerpaletteCommand() : OneShotCommand("LAYERPALETTE", "Layer Palette", "Format") {}
    void execute(CommandContext& context) override {
        context.message(needsDialog(title()));
        context.message(typedInstead("LAYER"));
    }
};

}  // namespace

KOVA_TOOL_COMMAND(Layfrz, "LAYFRZ", "Freeze Object's Layer", "Format")
KOVA_TOOL_COMMAND(Layoff, "LAYOFF", "Turn Object's Layer Off", "Format")
KOVA_TOOL_COMMAND(Laylck, "LAYLCK", "Lock Object's Layer", "Format")
KOVA_TOOL_COMMAND(Laymcur, "LAYMCUR", "Make Object's Layer Current", "Format", {"AI_MOLC"})
KOVA_REGISTER_COMMAND(LayonCommand)
KOVA_REGISTER_COMMAND(LaythwCommand)
KOVA_REGISTER_COMMAND(LayulkCommand)
KOVA_REGISTER_COMMAND(LayerpaletteCommand)

}  // namespace kova::cmd::commands
