#include "cmd/dialogue.hpp"
#include "edit/new_entities.hpp"
#include "engine/inquiry/value_text.hpp"
#include "doc/pick/picking.hpp"
#include "cmd/registry.hpp"
#include "edit/viewports.hpp"

// VPSCALE, SPACETRANS, CHSPACE: between the scales of a sheet and of the model.

namespace kova::cmd::commands {

namespace {

using engine::ViewportEntity;

constexpr const char* kModelTab = "** Command not allowed in Model Tab **";

bool isWindow(const engine::Entity& entity) {
    return entity.type() == engine::EntityType::Viewport && !static_cast<const ViewportEntity&>(entity).isSheet();
}

/// A viewport of the sheet by one of its edges or the object that bounds it; null: given up.
Task<ViewportEntity*> pickViewport(Ask& ask, engine::Drawing& drawing, std::string prompt) {
    const std::unordered_map<std::uint64_t, ViewportEntity*> bounded = boundedViewports(drawing);
    const auto leads = [&](const engine::Entity& entity) {
        return isWindow(entity) || bounded.contains(entity.handle());
    };
    const Answer pick = co_await ask.object(std::move(prompt), {}, leads);
    engine::Entity* entity = pick.isObject() ? drawing.findById(pick.id) : nullptr;
    if (entity == nullptr) co_return nullptr;
    if (isWindow(*entity)) co_return static_cast<ViewportEntity*>(entity);
    const auto found = bounded.find(entity->handle());
    co_return found != bounded.end() ? found->second : nullptr;
}

/// VPSCALE: how many units of the sheet are one of the model.
class VpscaleTool final : public DialogueTool {
protected:
    Dialogue dialogue(Ask& ask) override {
        if (drawing().tileMode) {
            message(kModelTab);
            co_return;
        }
        const ViewportEntity* viewport = drawing().activeViewport();
        if (viewport == nullptr) viewport = co_await pickViewport(ask, drawing(), "Select edge of viewport:");
        if (viewport == nullptr) co_return;
        const double scale = viewport->viewScale;
        if (!(scale > 0.0)) {
            message("The viewport has no scale.");
            co_return;
        }
        const std::string ratio =
            scale > 1.0 ? lengthDefault(drawing(), scale) + ":1" : "1:" + lengthDefault(drawing(), 1.0 / scale);
        message("PS:MS == " + ratio);
    }
};

/// SPACETRANS: a length of the other space as long as it is in this one.
class SpacetransTool final : public DialogueTool {
protected:
    Dialogue dialogue(Ask& ask) override {
        if (drawing().tileMode) {
            message(kModelTab);
            co_return;
        }
        const ViewportEntity* viewport = drawing().activeViewport();
        const bool inModel = viewport != nullptr;
        if (!inModel) {
            const engine::Layout* layout = drawing().activeLayout();
            const std::vector<ViewportEntity*> all =
                layout != nullptr ? viewportsOf(*layout) : std::vector<ViewportEntity*>();
            if (all.empty()) {
                message("The layout has no viewports.");
                co_return;
            }
            viewport = all.front();
            if (all.size() > 1) viewport = co_await pickViewport(ask, drawing(), "Select a viewport:");
            if (viewport == nullptr) co_return;
        }
        const double scale = viewport->viewScale;
        if (!(scale > 0.0)) {
            message("The viewport has no scale.");
            co_return;
        }
        const Answer answer =
            co_await ask.distance(inModel ? "Specify paper space distance <1>:" : "Specify model space distance <1>:");
        const double length = answer.numberOr(1.0);
        message(lengthDefault(drawing(), inModel ? length / scale : length * scale));
    }
};

/// CHSPACE: takes objects through a viewport from the model to the sheet or back; what is seen stays as it is.
class ChspaceTool final : public DialogueTool {
protected:
    Dialogue dialogue(Ask& ask) override {
        if (drawing().tileMode) {
            message(kModelTab);
            co_return;
        }
        const engine::Layout* layout = drawing().activeLayout();
        if (layout == nullptr || viewportsOf(*layout).empty()) {
            message("The layout has no viewports.");
            co_return;
        }
        const bool fromModel = drawing().activeViewport() != nullptr;
        const Answer selected = co_await ask.selection();
        if (selected.ids.empty()) co_return;
        const ViewportEntity* viewport = fromModel ? drawing().activeViewport() : usualViewport(document());
        if (openCount() > 1) {
            std::string prompt = fromModel ? "Set the SOURCE viewport active and press ENTER to continue."
                                           : "Set the TARGET viewport active and press ENTER to continue.";
            for (;;) {
                const Answer number = co_await ask.text(prompt);
                if (number.isEnter()) break;
                // Another viewport is named by its number, as CVPORT counts.
                const ViewportEntity* other = byNumber(parseInteger(number.text).value_or(0));
                if (other != nullptr) {
                    viewport = other;
                    break;
                }
                message("There is no such viewport that is on.");
            }
        }
        if (viewport == nullptr) {
            message("There is no active viewport.");
            co_return;
        }
        if (!viewport->showsPlan() || !(viewport->viewScale > 0.0)) {
            message("Objects change space through viewports that look straight down only.");
            co_return;
        }
        change(selected.ids, *viewport, fromModel);
    }

private:
    std::size_t openCount() const {
        std::size_t count = 0;
        for (const ViewportEntity* viewport : viewportsOf(*drawing().activeLayout())) count += viewport->isOn() ? 1 : 0;
        return count;
    }
    const ViewportEntity* byNumber(int number) const {
        for (const ViewportEntity* viewport : viewportsOf(*drawing().activeLayout()))
            if (viewport->isOn() && viewport->vpId == number) return viewport;
        return nullptr;
    }

    void change(const std::vector<std::uint64_t>& ids, const ViewportEntity& viewport, bool fromModel) {
        const math::Matrix4 toPaper = viewport.modelToPaper();
        const auto back = toPaper.inverse();
        if (!fromModel && !back) return message("The viewport has no scale.");
        const math::Matrix4 matrix = fromModel ? toPaper : *back;
        const double scale = fromModel ? viewport.viewScale : 1.0 / viewport.viewScale;
        engine::EntityList& to = fromModel ? drawing().activeLayout()->entities : drawing().modelSpace();
        const std::unordered_map<std::uint64_t, ViewportEntity*> bounded = boundedViewports(drawing());
        std::size_t count = 0;
        std::vector<std::uint64_t> changed;
        {
            const doc::GroupScope group(document(), "CHSPACE");
            for (const std::uint64_t id : ids) {
                engine::Entity* entity = drawing().findById(id);
                // Viewports belong to their sheet, with what bounds them.
                if (entity == nullptr || entity->type() == engine::EntityType::Viewport ||
                    (!fromModel && bounded.contains(entity->handle())))
                    continue;
                std::unique_ptr<engine::Entity> copy = engine::transformedEntity(*entity, matrix);
                document().removeEntity(*entity);
                changed.push_back(document().addEntity(std::move(copy), to).id());
                ++count;
            }
            if (count == 0) return message("No objects changed.");
            if (fromModel)
                leaveViewport(document());
            else
                message(enterViewport(document(), viewport));
        }
        document().selection().set(std::move(changed));
        message(std::to_string(count) + " object(s) changed from " +
                (fromModel ? "MODEL space to PAPER space." : "PAPER space to MODEL space."));
        message("Objects were scaled by a factor of " + lengthDefault(drawing(), scale) +
                " to maintain visual appearance.");
        repaint();
    }
};

}  // namespace

KOVA_TOOL_COMMAND(Vpscale, "VPSCALE", "Viewport Scale", "Inquiry")
KOVA_TOOL_COMMAND(Spacetrans, "SPACETRANS", "Translate between Spaces", "Inquiry")
KOVA_TOOL_COMMAND(Chspace, "CHSPACE", "Change Space", "Modify")

}  // namespace kova::cmd::commands
