#include "render/renderer.hpp"

#include <QPainter>
#include <QPainterPath>
#include <filesystem>

#include "engine/entities/viewport.hpp"
#include "engine/model/frame_lines.hpp"
#include "engine/outline/spatial_sink.hpp"
#include "engine/model/sysvar.hpp"
#include "engine/model/view_frame.hpp"
#include "render/painter_sink.hpp"

namespace kova::render {

using math::Bounds2;
using math::Matrix4;
using math::Vector2;
using math::Vector3;

namespace {

constexpr double kMargin = 0.025;       // of the extents, on every side
constexpr double kSmallestSize = 1e-6;  // a padded size below this becomes 1

/// Whether lines of a kind are drawn: FRAME, unless it leaves that to the kind's own variable.
engine::FrameLines::Shown framesShown(const engine::Drawing& drawing, bool plotted) {
    const std::int32_t all = engine::sysVarInt(drawing, "FRAME", 3);
    const auto shown = [&](std::string_view variable) {
        const std::int32_t mode = all != 3 ? all : engine::sysVarInt(drawing, variable, 1);
        return mode == 1 || (mode == 2 && !plotted);
    };
    return {shown("IMAGEFRAME"), shown("WIPEOUTFRAME"), shown("XCLIPFRAME"),
            engine::sysVarInt(drawing, "SPLFRAME", 0) != 0};
}

/// What MSLTSCALE makes of the dashes of the model tab: drawing units for a paper unit of the current scale.
double annotationFactor(const engine::Drawing& drawing) {
    if (engine::sysVarInt(drawing, "MSLTSCALE", 1) == 0) return 1.0;
    const auto* scale = drawing.annotationScales.find(engine::Name(engine::sysVarString(drawing, "CANNOSCALE", "1:1")));
    if (scale == nullptr) return 1.0;
    const double factor = scale->drawingUnits / scale->paperUnits;
    return std::isfinite(factor) && factor > 0.0 ? factor : 1.0;
}

PainterSink::Settings sinkSettings(const engine::Drawing& drawing, const RenderRequest& request) {
    PainterSink::Settings settings;
    settings.dotsPerMillimetre = request.dotsPerMillimetre();
    settings.linetypeScale = engine::sysVarReal(drawing, "LTSCALE", 1.0);
    settings.defaultLineweight = std::clamp(engine::sysVarInt(drawing, "LWDEFAULT", 25), 0, 211);
    settings.fill = engine::sysVarInt(drawing, "FILLMODE", 1) != 0;
    settings.pointMode = engine::sysVarInt(drawing, "PDMODE", 0);
    settings.pointSize = engine::sysVarReal(drawing, "PDSIZE", 0.0);
    settings.textAsFrames = engine::sysVarInt(drawing, "QTEXTMODE", 0) != 0;
    settings.textFill = engine::sysVarInt(drawing, "TEXTFILL", 1) != 0;
    const double most = engine::sysVarReal(drawing, "HPMAXLINES", 1e6);
    settings.hatchLimits.lines = static_cast<std::size_t>(std::clamp(most, 100.0, 1e7));
    settings.background = request.background;
    settings.look = request.look;
    if (!request.look.plotted && engine::sysVarInt(drawing, "TRANSPARENCYDISPLAY", 1) == 0)
        settings.look.transparency = false;
    settings.textOutput = request.textOutput;
    settings.dot = request.dot;
    if (!drawing.fileName.empty()) settings.folder = std::filesystem::path(drawing.fileName).parent_path().string();
    return settings;
}

/// Paints one entity if it is to be seen.
void paintEntity(PainterSink& sink, const LayerLook& layers, const engine::Entity& entity) {
    if (!entity.visible || !layers.isShown(entity.layer)) return;
    sink.beginEntity();
    entity.emit(sink, engine::outlineStyle(entity));
}

/// Paints a space; through the index when the view shows a part of it only.
void paintSpace(QPainter& painter, const engine::Drawing& drawing, const engine::EntityList& space, const View& view,
                const LayerLook& layers, const PainterSink::Settings& settings, const RenderRequest& request,
                bool everything) {
    PainterSink sink(painter, drawing, view, layers, settings);
    if (request.query && !everything) {
        for (const engine::Entity* entity :
             request.query(const_cast<engine::EntityList&>(space), view.visible().inflated(2.0 / view.scale)))
            paintEntity(sink, layers, *entity);
        return;
    }
    for (const engine::Entity& entity : space) paintEntity(sink, layers, entity);
}

/// Paints a space as it is seen from a direction: `from` carries it to the coordinates of the view.
void paintSeen(QPainter& painter, const engine::Drawing& drawing, const engine::EntityList& space, const Matrix4& from,
               const View& view, const LayerLook& layers, const PainterSink::Settings& settings) {
    PainterSink sink(painter, drawing, view, layers, settings);
    engine::SpatialSink spatial(sink, from);
    for (const engine::Entity& entity : space) {
        if (!entity.visible || !layers.isShown(entity.layer)) continue;
        sink.beginEntity();
        spatial.draw(entity, engine::outlineStyle(entity));
    }
}

/// Gathers the lines of an entity: the border of a clipped viewport.
class BorderSink final : public engine::OutlineSink {
public:
    using OutlineSink::fill;
    using OutlineSink::stroke;
    void stroke(engine::PathView path, const engine::OutlineStyle&, const engine::StrokeOptions&) override {
        border.append(path);
    }
    void fill(engine::PathView, const engine::OutlineStyle&, const engine::FillOptions&) override {}
    void text(const engine::TextRun&, const engine::OutlineStyle&) override {}

    engine::Path border;
};

/// Cuts what follows off at the entity that bounds a viewport. A border that encloses nothing is passed over.
void clipToEntity(QPainter& painter, const engine::Entity& entity, const View& paper) {
    BorderSink sink;
    entity.emit(sink, engine::outlineStyle(entity));
    Flattener flattener(paper);
    flattener.flatten(sink.border);
    QPainterPath area;
    const Bounds2 guard = paper.pixels.inflated(2000.0);
    for (std::size_t i = 0; i < flattener.count(); ++i) {
        QPolygonF ring;
        for (const Vector2& p : clipPolygon(flattener[i].points, guard)) ring << QPointF(p.x, p.y);
        if (ring.size() < 3) continue;
        area.addPolygon(ring);
        area.closeSubpath();
    }
    if (!area.isEmpty()) painter.setClipPath(area, Qt::IntersectClip);
}

/// Shows model space through a viewport of a layout.
void paintViewport(QPainter& painter, const engine::Drawing& drawing, const engine::ViewportEntity& viewport,
                   const View& paper, const RenderRequest& request) {
    if (viewport.isSheet() || !viewport.on || (viewport.statusFlags & engine::ViewportEntity::kOff) != 0) return;
    if (!(viewport.viewScale > 0.0) || !std::isfinite(viewport.viewScale)) return;
    const Bounds2 frame = viewport.frame();
    if (frame.is_empty() || !frame.min.is_finite() || !frame.max.is_finite()) return;
    const bool plan = viewport.showsPlan();
    // Seen from a direction, the view's own coordinates lie on paper as the plan does otherwise.
    const Matrix4 onSheet = Matrix4::translation(viewport.center) * Matrix4::rotation_z(viewport.viewTwist) *
                            Matrix4::scaling(viewport.viewScale, viewport.viewScale, viewport.viewScale);
    View view = paper.under(plan ? viewport.modelToPaper() : onSheet);
    Bounds2 window;
    window.expand(paper.map(frame.min));
    window.expand(paper.map(frame.max));
    if (!window.intersects(paper.pixels)) return;
    view.pixels = Bounds2{{std::max(window.min.x, paper.pixels.min.x), std::max(window.min.y, paper.pixels.min.y)},
                          {std::min(window.max.x, paper.pixels.max.x), std::min(window.max.y, paper.pixels.max.y)}};
    painter.save();
    painter.setClipRect(QRectF(window.min.x, window.min.y, window.width(), window.height()), Qt::IntersectClip);
    if (const engine::Entity* border = viewport.clipEntity()) clipToEntity(painter, *border, paper);
    const LayerLook layers(drawing, &viewport);
    PainterSink::Settings settings = sinkSettings(drawing, request);
    // With PSLTSCALE the dashes are as long on paper in every viewport.
    if (engine::sysVarInt(drawing, "PSLTSCALE", 1) != 0) settings.linetypeScale /= viewport.viewScale;
    if (plan) {
        paintSpace(painter, drawing, drawing.modelSpace(), view, layers, settings, request, false);
    } else {
        const Vector3 target(viewport.viewTarget, viewport.viewTargetZ);
        paintSeen(painter, drawing, drawing.modelSpace(), engine::worldToView(viewport.viewDirection, target, 0.0),
                  view, layers, settings);
    }
    painter.restore();
}

}  // namespace

void paintModel(QPainter& painter, const engine::Drawing& drawing, const View& view, const RenderRequest& request,
                bool everything) {
    const engine::FrameLines frames(framesShown(drawing, request.look.plotted));
    const LayerLook layers(drawing);
    const Matrix4 from = engine::worldToView(drawing.currentView);
    PainterSink::Settings settings = sinkSettings(drawing, request);
    settings.linetypeScale *= annotationFactor(drawing);
    if (!engine::isPlanView(drawing.currentView.viewDirection))
        return paintSeen(painter, drawing, drawing.modelSpace(), from, view, layers, settings);
    paintSpace(painter, drawing, drawing.modelSpace(), from == Matrix4() ? view : view.under(from), layers, settings,
               request, everything);
}

void paintLayout(QPainter& painter, const engine::Drawing& drawing, const engine::Layout& layout, const View& view,
                 const RenderRequest& request) {
    const engine::FrameLines frames(framesShown(drawing, request.look.plotted));
    const LayerLook layers(drawing);
    const PainterSink::Settings settings = sinkSettings(drawing, request);
    std::optional<PainterSink> sink;
    for (const engine::Entity& entity : layout.entities) {
        if (!entity.visible || !layers.isShown(entity.layer)) continue;
        if (entity.type() == engine::EntityType::Viewport) {
            // The viewport's picture changes the painter: the sheet's sink begins anew behind it.
            sink.reset();
            paintViewport(painter, drawing, static_cast<const engine::ViewportEntity&>(entity), view, request);
        }
        if (!sink) sink.emplace(painter, drawing, view, layers, settings);
        paintEntity(*sink, layers, entity);
    }
}

namespace {

void renderLayout(QPainter& painter, const engine::Drawing& drawing, const RenderRequest& request) {
    const engine::PageSetup& page = request.layout->pageSetup;
    const auto size = [](double v) { return std::isfinite(v) ? std::max(v, 1.0) : 1.0; };
    const double paperWidth = size(page.paperWidth) / page.paperUnit();
    const double paperHeight = size(page.paperHeight) / page.paperUnit();
    const double scale = std::min(request.height / paperHeight, request.width / paperWidth);
    const View view = View::centred(request.width, request.height, scale, {paperWidth / 2.0, paperHeight / 2.0});
    paintLayout(painter, drawing, *request.layout, view, request);
}

void renderModel(QPainter& painter, const engine::Drawing& drawing, const RenderRequest& request) {
    Bounds2 box;
    bool everything = false;
    if (request.area == Area::Display) {
        const engine::NamedView& current = drawing.currentView;
        // The whole current view is shown, whatever the picture's proportions.
        const Vector2 half{std::abs(current.width) / 2.0, std::abs(current.height) / 2.0};
        box = {current.center - half, current.center + half};
    } else if (request.area == Area::Window) {
        box = engine::windowInView(drawing.currentView, request.window);
    } else {
        box = engine::modelExtentsInView(drawing);
        everything = !request.useScale;
    }
    if (box.is_empty() || !box.min.is_finite() || !box.max.is_finite()) box = {{-100.0, -100.0}, {100.0, 100.0}};
    double width = box.width();
    double height = box.height();
    if (request.area != Area::Display) {
        width += 2.0 * kMargin * box.width();
        height += 2.0 * kMargin * box.height();
    }
    if (width < kSmallestSize) width = 1.0;
    if (height < kSmallestSize) height = 1.0;
    const double dots = request.dotsPerMillimetre();
    const double scale = request.useScale
                             ? (request.scaleDrawing > 0.0 ? request.scalePaper / request.scaleDrawing : 1.0) * dots
                             : std::min(request.width / width, request.height / height);
    Vector2 center = box.center();
    if (!request.centered) center += Vector2{request.offsetX, request.offsetY} * (dots / scale);
    const View view = View::centred(request.width, request.height, scale, center);
    paintModel(painter, drawing, view, request, everything);
}

}  // namespace

void render(QPainter& painter, const engine::Drawing& drawing, const RenderRequest& request) {
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    const QRectF page(0.0, 0.0, request.width, request.height);
    painter.fillRect(page, QColor(request.background.red, request.background.green, request.background.blue));
    painter.setClipRect(page);
    if (request.layout != nullptr)
        renderLayout(painter, drawing, request);
    else
        renderModel(painter, drawing, request);
    painter.restore();
}

QImage renderImage(const engine::Drawing& drawing, int width, int height,
                   const std::function<std::vector<engine::Entity*>(engine::EntityList&, const Bounds2&)>& query) {
    QImage image(std::max(width, 16), std::max(height, 16), QImage::Format_ARGB32_Premultiplied);
    if (image.isNull()) return image;
    image.fill(Qt::white);
    RenderRequest request;
    request.width = image.width();
    request.height = image.height();
    request.query = query;
    if (!drawing.tileMode) request.layout = drawing.activeLayout();
    QPainter painter(&image);
    render(painter, drawing, request);
    painter.end();
    return image;
}

}  // namespace kova::render
