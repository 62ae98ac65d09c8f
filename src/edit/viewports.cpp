#include "edit/viewports.hpp"

#include "edit/new_entities.hpp"
#include "engine/entities/ellipse.hpp"
#include "engine/entities/polyline.hpp"
#include "engine/entities/spline.hpp"

#include <unordered_set>

namespace kova::cmd {

using engine::ViewportEntity;
using math::Bounds2;

namespace {
/// The viewport that PSPACE left last, by its id.
constexpr const char* kLeftViewport = "MSPACE viewport";
}  // namespace

std::vector<ViewportEntity*> viewportsOf(const engine::Layout& layout) {
    std::vector<ViewportEntity*> found;
    for (std::uint32_t slot = 0; slot < layout.entities.slotCount(); ++slot) {
        engine::Entity* entity = layout.entities.atSlot(slot);
        if (entity == nullptr || entity->type() != engine::EntityType::Viewport) continue;
        auto* viewport = static_cast<ViewportEntity*>(entity);
        if (!viewport->isSheet()) found.push_back(viewport);
    }
    return found;
}

ViewportEntity* usualViewport(const doc::Document& document) {
    const engine::Layout* layout = document.drawing().activeLayout();
    if (layout == nullptr) return nullptr;
    const auto left = static_cast<std::uint64_t>(remembered(document, kLeftViewport, 0.0));
    ViewportEntity* usual = nullptr;
    for (ViewportEntity* viewport : viewportsOf(*layout)) {
        if (!viewport->isOn()) continue;
        if (viewport->id() == left) return viewport;
        if (usual == nullptr || viewport->vpId > usual->vpId) usual = viewport;
    }
    return usual;
}

std::unordered_map<std::uint64_t, ViewportEntity*> boundedViewports(const engine::Drawing& drawing) {
    std::unordered_map<std::uint64_t, ViewportEntity*> found;
    if (const engine::Layout* layout = drawing.activeLayout())
        for (ViewportEntity* viewport : viewportsOf(*layout))
            if (viewport->clipHandle != 0) found.emplace(viewport->clipHandle, viewport);
    return found;
}

std::vector<ViewportEntity*> viewportsAmong(const engine::Drawing& drawing, const std::vector<std::uint64_t>& ids) {
    const std::unordered_map<std::uint64_t, ViewportEntity*> bounded = boundedViewports(drawing);
    std::vector<ViewportEntity*> found;
    std::unordered_set<const ViewportEntity*> taken;
    for (const std::uint64_t id : ids) {
        engine::Entity* entity = drawing.findById(id);
        if (entity == nullptr) continue;
        auto* viewport = dynamic_cast<ViewportEntity*>(entity);
        if (const auto it = bounded.find(entity->handle()); it != bounded.end()) viewport = it->second;
        if (viewport != nullptr && !viewport->isSheet() && taken.insert(viewport).second) found.push_back(viewport);
    }
    return found;
}

bool canBoundViewport(const engine::Entity& entity) {
    switch (entity.type()) {
        case engine::EntityType::Circle:
        case engine::EntityType::Region:
            break;
        case engine::EntityType::Ellipse:
            if (!static_cast<const engine::EllipseEntity&>(entity).isFull()) return false;
            break;
        case engine::EntityType::Polyline: {
            const auto& polyline = static_cast<const engine::PolylineEntity&>(entity);
            if (!polyline.closed || polyline.vertices.size() < (polyline.hasBulges() ? 2U : 3U)) return false;
            break;
        }
        case engine::EntityType::Spline:
            if (!static_cast<const engine::SplineEntity&>(entity).closed) return false;
            break;
        default:
            return false;
    }
    const Bounds2 box = entity.bounds();
    return box.width() > 0.0 && box.height() > 0.0 && box.min.is_finite() && box.max.is_finite();
}

std::string enterViewport(doc::Document& document, const ViewportEntity& viewport) {
    if (!viewport.isOn()) return "The viewport is off.";
    document.editSettings([&](engine::Drawing& drawing) { drawing.activeViewportId = viewport.id(); });
    return {};
}

void leaveViewport(doc::Document& document) {
    remember(document, kLeftViewport, static_cast<double>(document.drawing().activeViewportId));
    document.editSettings([](engine::Drawing& drawing) { drawing.activeViewportId = 0; });
}

Bounds2 printableArea(const engine::Layout& layout) {
    const engine::PageSetup& page = layout.pageSetup;
    const double unit = page.paperUnit();
    const Bounds2 area{math::Vector2{page.marginLeft, page.marginBottom} / unit,
                       math::Vector2{page.paperWidth - page.marginRight, page.paperHeight - page.marginTop} / unit};
    return area.is_empty() ? page.sheet() : area;
}

std::unique_ptr<ViewportEntity> makeViewport(doc::Document& document, const Bounds2& frame, const Bounds2& model) {
    const engine::Drawing& drawing = document.drawing();
    auto viewport = std::make_unique<ViewportEntity>();
    document.applyCurrentProperties(*viewport);
    remember(document, kLeftViewport, 0.0);
    viewport->center = frame.center();
    viewport->width = frame.width();
    viewport->height = frame.height();
    std::int32_t number = ViewportEntity::kSheetId;
    if (const engine::Layout* layout = drawing.activeLayout())
        for (const ViewportEntity* other : viewportsOf(*layout)) number = std::max(number, other->vpId);
    viewport->vpId = number < 32767 ? number + 1 : number;
    Bounds2 shown = model.is_empty() ? drawing.extents(drawing.modelSpace()) : model;
    if (shown.is_empty()) shown = {drawing.limits.lower, drawing.limits.upper};
    viewport->viewTarget = shown.center();
    // A little air around what is shown.
    const double scale = std::min(frame.width() / shown.width(), frame.height() / shown.height()) / 1.02;
    viewport->viewScale = std::isfinite(scale) && scale > 0.0 ? scale : 1.0;
    return viewport;
}

}  // namespace kova::cmd
