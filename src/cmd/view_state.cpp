#include "cmd/view_state.hpp"

#include <QVariant>

#include "engine/entities/viewport.hpp"

namespace kova::cmd {

namespace {

using engine::Drawing;
using engine::ViewportEntity;
using math::Bounds2;
using math::Vector2;

/// Views that ZOOM Previous can go back over, and where they are kept: with the document, neither saved nor undone.
constexpr qsizetype kHistory = 10;
constexpr const char* kHistoryName = "viewHistory";

/// The layout's own view of its sheet; null when none is kept.
ViewportEntity* sheetView(const Drawing& drawing) {
    const engine::Layout* layout = drawing.activeLayout();
    if (layout == nullptr) return nullptr;
    for (std::uint32_t slot = 0; slot < layout->entities.slotCount(); ++slot) {
        engine::Entity* entity = layout->entities.atSlot(slot);
        if (entity == nullptr || entity->type() != engine::EntityType::Viewport) continue;
        auto* viewport = static_cast<ViewportEntity*>(entity);
        if (viewport->isSheet()) return viewport;
    }
    return nullptr;
}

/// Which view is current: 0 the model tab's, else the id of a viewport; nothing for a sheet whose view is not kept.
std::optional<std::uint64_t> currentPlace(const Drawing& drawing) {
    if (drawing.tileMode) return 0;
    if (const ViewportEntity* viewport = drawing.activeViewport()) return viewport->id();
    if (const ViewportEntity* sheet = sheetView(drawing)) return sheet->id();
    return std::nullopt;
}

bool isUsable(const Vector2& center, double height) {
    return center.is_finite() && std::isfinite(height) && height > 1e-300 && height < 1e300;
}

std::string apply(doc::Document& document, const Vector2& center, double height) {
    Drawing& drawing = document.drawing();
    if (!isUsable(center, height)) return "Invalid value.";
    const std::optional<std::uint64_t> place = currentPlace(drawing);
    if (!place) return "The sheet is always shown whole here.";
    const ViewWindow now = viewWindow(drawing);
    const double width = now.height > 0.0 ? height * now.width / now.height : height;
    if (*place == 0) {
        document.editSettings([&](Drawing& d) {
            d.currentView.center = center;
            d.currentView.width = width;
            d.currentView.height = height;
            d.currentView.name = {};
        });
        return {};
    }
    ViewportEntity& viewport = static_cast<ViewportEntity&>(*drawing.findById(*place));
    if (viewport.locked && !viewport.isSheet()) return "Viewport is view-locked.";
    document.modifyEntity(viewport, [&](engine::Entity& entity) {
        auto& v = static_cast<ViewportEntity&>(entity);
        v.viewTarget = center;
        if (v.isSheet()) {
            v.center = center;
            v.width = width;
            v.height = height;
        } else {
            v.viewScale = std::abs(v.height) / height;
        }
    });
    return {};
}

void note(doc::Document& document, const ViewWindow& view, std::uint64_t place) {
    QVariantList history = document.property(kHistoryName).toList();
    history.append(QVariant(QVariantList{QVariant::fromValue(static_cast<qulonglong>(place)), view.center.x,
                                         view.center.y, view.width, view.height}));
    if (history.size() > kHistory) history.removeFirst();
    document.setProperty(kHistoryName, history);
}

}  // namespace

ViewWindow viewWindow(const Drawing& drawing) {
    if (drawing.tileMode) return {drawing.currentView.center, drawing.currentView.width, drawing.currentView.height};
    if (const ViewportEntity* viewport = drawing.activeViewport()) {
        const double scale = viewport->viewScale > 0.0 ? viewport->viewScale : 1.0;
        return {viewport->viewTarget, std::abs(viewport->width) / scale, std::abs(viewport->height) / scale};
    }
    if (const ViewportEntity* sheet = sheetView(drawing)) return {sheet->center, sheet->width, sheet->height};
    const Bounds2 paper = limitsOfSpace(drawing);
    return {paper.center(), paper.width(), paper.height()};
}

std::string showWindow(doc::Document& document, const Vector2& center, double height) {
    const ViewWindow before = viewWindow(document.drawing());
    const std::optional<std::uint64_t> place = currentPlace(document.drawing());
    std::string error = apply(document, center, height);
    if (error.empty() && place) note(document, before, *place);
    return error;
}

std::string showBox(doc::Document& document, const Bounds2& box) {
    const Bounds2 shown = box.is_empty() ? limitsOfSpace(document.drawing()) : box;
    const ViewWindow now = viewWindow(document.drawing());
    const double ratio = now.width > 0.0 && now.height > 0.0 ? now.width / now.height : 1.0;
    double height = std::max(shown.height(), shown.width() / ratio);
    // A point alone keeps the scale.
    if (!(height > 0.0)) height = now.height;
    return showWindow(document, shown.center(), height);
}

std::string showPrevious(doc::Document& document) {
    QVariantList history = document.property(kHistoryName).toList();
    const std::optional<std::uint64_t> place = currentPlace(document.drawing());
    for (qsizetype i = history.size(); place && i-- > 0;) {
        const QVariantList view = history[i].toList();
        if (view.size() != 5 || view[0].toULongLong() != *place) continue;
        history.removeAt(i);
        document.setProperty(kHistoryName, history);
        return apply(document, {view[1].toDouble(), view[2].toDouble()}, view[4].toDouble());
    }
    return "No previous view saved.";
}

Bounds2 limitsOfSpace(const Drawing& drawing) {
    const engine::Layout* layout = drawing.activeLayout();
    if (drawing.tileMode || drawing.activeViewport() != nullptr || layout == nullptr)
        return {drawing.limits.lower, drawing.limits.upper};
    const engine::PageSetup& page = layout->pageSetup;
    return {{}, {page.paperWidth, page.paperHeight}};
}

}  // namespace kova::cmd
