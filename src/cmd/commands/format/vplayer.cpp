#include "cmd/dialogue.hpp"
#include "engine/inquiry/value_text.hpp"
#include "cmd/prompts/name_prompts.hpp"
#include "cmd/pick_request.hpp"
#include "cmd/registry.hpp"
#include "edit/viewports.hpp"
#include "strings/wildcards.hpp"
#include "doc/table_edits.hpp"

namespace kova::cmd::commands {

namespace {

using engine::Name;
using engine::ViewportEntity;

/// VPLAYER: layers that are frozen in single viewports.
class VplayerTool final : public DialogueTool {
public:
    void end() override { group_.reset(); }

protected:
    Dialogue dialogue(Ask& ask) override {
        if (drawing().tileMode) {
            message("** Command not allowed in Model Tab **");
            co_return;
        }
        for (;;) {
            const Answer option = co_await ask.keyword(
                "Enter an option [?/Color/Ltype/LWeight/TRansparency/Freeze/Thaw/Reset/Newfrz/Vpvisdflt]:",
                "? Color Ltype LWeight TRansparency Freeze Thaw Reset Newfrz Vpvisdflt");
            if (option.isEnter()) co_return;
            if (option.is("?"))
                co_await list(ask);
            else if (option.is("FREEZE"))
                co_await change(ask, "freeze", true);
            else if (option.is("THAW"))
                co_await change(ask, "thaw", false);
            else if (option.is("RESET"))
                co_await change(ask, "reset", false);
            else if (option.is("NEWFRZ"))
                co_await newFrozen(ask);
            else if (option.is("VPVISDFLT"))
                message("New viewports show all layers that are thawed.");
            else
                message("Viewports keep no colors, linetypes, lineweights or transparencies of their own here.");
        }
    }

private:
    using Names = std::vector<Name>;

    void changing() {
        if (!group_) group_.emplace(document(), "VPLAYER");
    }

    std::vector<ViewportEntity*> all() const {
        const engine::Layout* layout = drawing().activeLayout();
        return layout != nullptr ? viewportsOf(*layout) : std::vector<ViewportEntity*>();
    }

    /// Which viewports: those of the layout, selected ones, or the current one.
    Task<std::vector<ViewportEntity*>> askViewports(Ask& ask) {
        const Answer option =
            co_await ask.keyword("Enter an option [All/Select/Current] <Current>:", "All Select Current");
        if (option.is("ALL")) co_return all();
        if (option.is("SELECT")) {
            if (drawing().activeViewport() != nullptr) {
                changing();
                leaveViewport(document());
            }
            // Each option asks for viewports of its own.
            document().selection().clear();
            const Answer selected = co_await ask.selection();
            co_return viewportsAmong(drawing(), selected.ids);
        }
        ViewportEntity* current = drawing().activeViewport();
        if (current == nullptr) current = usualViewport(document());
        if (current == nullptr) co_return std::vector<ViewportEntity*>();
        co_return std::vector<ViewportEntity*>(1, current);
    }

    void setFrozen(const std::vector<ViewportEntity*>& viewports, const Names& layers, bool frozen) {
        if (viewports.empty()) return message("There is no active viewport.");
        changing();
        for (ViewportEntity* viewport : viewports)
            document().modifyEntity(*viewport, [&](engine::Entity& entity) {
                auto& list = static_cast<ViewportEntity&>(entity).vpFrozenLayers;
                for (const Name layer : layers) {
                    std::erase(list, layer);
                    if (frozen) list.push_back(layer);
                }
            });
        repaint();
    }

    Dialogue change(Ask& ask, std::string_view what, bool frozen) {
        for (;;) {
            std::string prompt = "Enter layer name(s) to " + std::string(what);
            prompt += frozen ? " or <select objects>:" : ":";
            const Answer answer = co_await ask.text(std::move(prompt));
            Names layers;
            if (answer.isEnter() && frozen) {
                const Answer object = co_await askSource(ask, "Select object whose layer is to be frozen:");
                const engine::Entity* entity = object.isObject() ? drawing().findById(object.id) : nullptr;
                if (entity != nullptr) layers.push_back(entity->layer);
            }
            if (answer.isText()) {
                const std::vector<std::string> patterns = splitNames(answer.text);
                for (const engine::Layer& layer : drawing().layers)
                    if (std::any_of(patterns.begin(), patterns.end(), [&](const std::string& pattern) {
                            return matchesWildcards(layer.name.view(), pattern);
                        }))
                        layers.push_back(layer.name);
            }
            if (layers.empty() && answer.isEnter()) co_return;
            if (layers.empty()) {
                message("No matching names found.");
                continue;
            }
            const std::vector<ViewportEntity*> viewports = co_await askViewports(ask);
            setFrozen(viewports, layers, frozen);
            co_return;
        }
    }

    Dialogue newFrozen(Ask& ask) {
        const Answer answer = co_await ask.text("Enter name(s) of new layers frozen in all viewports:");
        Names names;
        for (const std::string& name : splitNames(answer.text)) {
            if (!engine::isValidSymbolName(name))
                message("Invalid layer name " + inQuotes(name) + ".");
            else if (drawing().layers.contains(Name(name)))
                message("Layer " + inQuotes(name) + " already exists.");
            else
                names.emplace_back(name);
        }
        if (names.empty()) co_return;
        changing();
        document().editTable<doc::LayerTraits>([&](engine::Table<engine::Layer>& layers) {
            for (const Name name : names) layers.ensure(name);
        });
        std::vector<ViewportEntity*> viewports;
        for (const auto& layout : drawing().layouts())
            for (ViewportEntity* viewport : viewportsOf(*layout)) viewports.push_back(viewport);
        if (!viewports.empty()) setFrozen(viewports, names, true);
    }

    Dialogue list(Ask& ask) {
        const ViewportEntity* viewport = drawing().activeViewport();
        if (viewport == nullptr) {
            const Answer pick = co_await ask.object("Select a viewport:", {}, [](const engine::Entity& entity) {
                return entity.type() == engine::EntityType::Viewport;
            });
            viewport = pick.isObject() ? dynamic_cast<const ViewportEntity*>(drawing().findById(pick.id)) : nullptr;
        }
        if (viewport == nullptr) co_return;
        message("Layers currently frozen in viewport " + std::to_string(viewport->vpId) + ":");
        if (viewport->vpFrozenLayers.empty()) message("  None");
        for (const Name layer : viewport->vpFrozenLayers) message("  " + inQuotes(layer));
    }

    std::optional<doc::GroupScope> group_;
};

}  // namespace

KOVA_TOOL_COMMAND(Vplayer, "VPLAYER", "Viewport Layers", "Format")

}  // namespace kova::cmd::commands
