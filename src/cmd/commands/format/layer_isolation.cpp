#include <algorithm>

#include "edit/new_entities.hpp"
#include "engine/inquiry/value_text.hpp"
#include "edit/layer_changes.hpp"
#include "cmd/registry.hpp"
#include "engine/entities/viewport.hpp"

// Working with some layers while the others are out of the way.

namespace kova::cmd::commands {

namespace {

using engine::Layer;
using engine::Name;
using engine::ViewportEntity;

/// What LAYISO changed and LAYUNISO takes back; goes with the drawing.
class Isolation final : public QObject {
public:
    static Isolation& of(doc::Document& document) {
        static const QString name = QStringLiteral("layerIsolation");
        for (QObject* child : document.children())
            if (child->objectName() == name) return static_cast<Isolation&>(*child);
        auto* made = new Isolation(&document);
        made->setObjectName(name);
        // The history is emptied when another drawing takes the place of this one.
        QObject::connect(&document.history(), &doc::UndoHistory::cleared, made, [made] { made->clear(); });
        return *made;
    }
    bool empty() const { return off.empty() && locked.empty() && frozen.empty(); }
    void clear() {
        off.clear();
        locked.clear();
        frozen.clear();
    }

    LayerNames off;
    LayerNames locked;
    std::uint64_t viewport = 0;  ///< handle of the viewport in which the following are frozen
    LayerNames frozen;

private:
    explicit Isolation(QObject* parent) : QObject(parent) {}
};

// Kept values of the setting for the other layers.
constexpr double kLock = 0.0;
constexpr double kOff = 1.0;

/// LAYISO: all layers but those of the selected objects are locked, or turned off.
class LayisoTool final : public DialogueTool {
protected:
    Dialogue dialogue(Ask& ask) override {
        message(lock() ? "Current setting: Lock layers, Fade=" + std::to_string(fade())
                       : std::string("Current setting: Hide layers, Viewports=") + (vpfreeze() ? "Vpfreeze" : "Off"));
        Answer selected;
        for (;;) {
            selected =
                co_await ask.selection("Select objects on the layer(s) to be isolated or [Settings]:", "Settings");
            if (!selected.is("SETTINGS")) break;
            co_await settings(ask);
        }
        if (!selected.ids.empty()) isolate(selected.ids);
    }

private:
    bool lock() const { return remembered(document(), "layisoManner", kLock) != kOff; }
    bool vpfreeze() const { return remembered(document(), "layisoViewports", 0.0) != 0.0; }
    int fade() const { return std::abs(engine::sysVarInt(drawing(), "LAYLOCKFADECTL", 50)); }

    Dialogue settings(Ask& ask) {
        std::string prompt = "Enter setting for layers not isolated [Off/Lock and fade] <";
        prompt += lock() ? "Lock and fade>:" : "Off>:";
        const Answer manner = co_await ask.keyword(std::move(prompt), "Off Lock");
        if (!manner.isEnter()) remember(document(), "layisoManner", manner.is("OFF") ? kOff : kLock);
        if (!lock()) {
            prompt = "In paper space viewport use [Off/Vpfreeze] <";
            prompt += vpfreeze() ? "Vpfreeze>:" : "Off>:";
            const Answer use = co_await ask.keyword(std::move(prompt), "Off Vpfreeze");
            if (!use.isEnter()) remember(document(), "layisoViewports", use.is("VPFREEZE") ? 1.0 : 0.0);
            co_return;
        }
        prompt = withDefault("Enter fade value (0-90)", std::to_string(fade()));
        const Answer answer = co_await ask.integer(std::move(prompt), 0, 90);
        if (answer.isNumber()) document().setVariable("LAYLOCKFADECTL", std::int32_t{answer.integer()});
    }

    void isolate(const std::vector<std::uint64_t>& ids) {
        const LayerNames shown = layersOf(drawing(), ids);
        if (shown.empty()) return;
        const bool currentStays = std::find(shown.begin(), shown.end(), drawing().currentLayer) != shown.end();
        ViewportEntity* viewport = !lock() && vpfreeze() ? drawing().activeViewport() : nullptr;
        LayerNames others;
        for (const Layer& layer : drawing().layers)
            if (std::find(shown.begin(), shown.end(), layer.name) == shown.end()) others.push_back(layer.name);
        Isolation& isolation = Isolation::of(document());
        isolation.clear();
        const doc::GroupScope group(document(), "LAYISO");
        if (!currentStays) document().setVariable("CLAYER", shown.back().str());
        if (viewport != nullptr) {
            isolation.viewport = viewport->handle();
            for (const Name name : others)
                if (std::find(viewport->vpFrozenLayers.begin(), viewport->vpFrozenLayers.end(), name) ==
                    viewport->vpFrozenLayers.end())
                    isolation.frozen.push_back(name);
            document().modifyEntity(*viewport, [&](engine::Entity& e) {
                auto& list = static_cast<ViewportEntity&>(e).vpFrozenLayers;
                list.insert(list.end(), isolation.frozen.begin(), isolation.frozen.end());
            });
        } else {
            const bool locking = lock();
            LayerNames& changed = locking ? isolation.locked : isolation.off;
            for (const Name name : others) {
                const Layer* layer = drawing().layers.find(name);
                if (locking ? !layer->locked : layer->on) changed.push_back(name);
            }
            editLayers(document(), changed, [locking](Layer& layer) { (locking ? layer.locked : layer.on) = locking; });
        }
        message(shown.size() == 1 ? "Layer " + shown.front().str() + " has been isolated."
                                  : counted(shown.size(), "layer") + " have been isolated.");
        if (!currentStays) message(drawing().currentLayer.str() + " is now the current layer.");
    }
};

/// LAYUNISO: takes LAYISO back; layers that were changed since stay as they are.
class LayunisoCommand final : public OneShotCommand {
public:
    LayunisoCommand() : OneShotCommand("LAYUNISO", "Unisolate Layers", "Format") {}
    void execute(CommandContext& context) override {
        Isolation& isolation = Isolation::of(context.document);
        if (isolation.empty()) return context.message("There are no isolated layers.");
        {
            const doc::GroupScope group(context.document, "LAYUNISO");
            editLayers(context.document, isolation.off, [](Layer& layer) { layer.on = true; });
            editLayers(context.document, isolation.locked, [](Layer& layer) { layer.locked = false; });
            engine::Entity* viewport =
                isolation.frozen.empty() ? nullptr : context.drawing().findByHandle(isolation.viewport);
            if (viewport != nullptr && viewport->type() == engine::EntityType::Viewport)
                context.document.modifyEntity(*viewport, [&](engine::Entity& e) {
                    auto& list = static_cast<ViewportEntity&>(e).vpFrozenLayers;
                    for (const Name name : isolation.frozen) std::erase(list, name);
                });
        }
        isolation.clear();
        context.message("Layers isolated by the LAYISO command have been restored.");
    }
};

/// LAYWALK: shows some layers alone, one choice after the other; at the end all is as before, unless it is to stay.
class LaywalkTool final : public DialogueTool {
public:
    void end() override {
        if (!group_) return;
        if (restores_) group_->rollback();
        group_.reset();
    }

protected:
    Dialogue dialogue(Ask& ask) override {
        list();
        for (;;) {
            const Answer answer =
                co_await ask.text("Enter layer name(s) to show or [Restore/eXit] <eXit>:", "Restore eXit");
            if (answer.isEnter() || answer.is("EXIT")) co_return;
            if (answer.is("RESTORE")) {
                restores_ = !restores_;
                message(restores_ ? "The layers will be restored on exit." : "The layers will stay as shown on exit.");
                continue;
            }
            const auto names = matchLayers(drawing(), answer.text, [this](const std::string& text) { message(text); });
            if (names && !names->empty()) show(*names);
        }
    }

private:
    void list() const {
        const auto counts = objectsByLayer(drawing());
        LayerNames names;
        for (const Layer& layer : drawing().layers) names.push_back(layer.name);
        if (names.size() <= static_cast<std::size_t>(std::max(0, engine::sysVarInt(drawing(), "MAXSORT", 1000))))
            std::sort(names.begin(), names.end(), [](Name a, Name b) { return a.folded() < b.folded(); });
        for (const Name name : names) {
            const auto count = counts.find(name.key());
            message(inQuotes(name) + "  " + counted(count == counts.end() ? 0 : count->second, "object"));
        }
    }
    void show(const LayerNames& names) {
        if (!group_) group_.emplace(document(), "LAYWALK");
        LayerNames all;
        for (const Layer& layer : drawing().layers) all.push_back(layer.name);
        editLayers(document(), all, [&](Layer& layer) {
            const bool shown = std::find(names.begin(), names.end(), layer.name) != names.end();
            layer.on = shown;
            if (shown) layer.frozen = false;
        });
        repaint();
    }

    bool restores_ = true;
    std::optional<doc::GroupScope> group_;
};

}  // namespace

KOVA_TOOL_COMMAND(Layiso, "LAYISO", "Isolate Layers", "Format")
KOVA_REGISTER_COMMAND(LayunisoCommand)
KOVA_TOOL_COMMAND(Laywalk, "LAYWALK", "Walk through Layers", "Format")

}  // namespace kova::cmd::commands
