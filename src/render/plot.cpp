#include "render/plot.hpp"

#include <QBuffer>
#include <QImage>
#include <QPageLayout>
#include <QPageSize>
#include <QPainter>
#include <QPdfWriter>
#include <filesystem>

#include "render/device_text.hpp"
#include "render/renderer.hpp"
#include "render/svg_device.hpp"

namespace kova::render {

using engine::PlotArea;
using engine::PlotFormat;
using engine::PlotPage;
using math::Bounds2;
using math::Vector2;

namespace {

constexpr double kInch = 25.4;
constexpr int kVectorDpi = 1200;          // dots of PDF and SVG pages: 0.02 mm, the thinnest line
constexpr double kFinestDot = 0.1;        // millimetres: lines closer than this run together
constexpr double kSmallestPaper = 1.0;    // millimetres
constexpr double kLargestPaper = 5000.0;  // what a page of a PDF file can be, rounded down
constexpr double kMaxPlotPixels = 200e6;      // of a picture
constexpr double kWidestHalfLine = 1.1;   // millimetres: how far a line on the border reaches over it

double paperSide(double v) { return std::isfinite(v) ? std::clamp(v, kSmallestPaper, kLargestPaper) : 297.0; }

/// The paper within its margins, millimetres from the lower left corner; the whole paper when the margins eat it up.
Bounds2 printable(const engine::PageSetup& setup, double width, double height) {
    const auto margin = [](double v) { return std::isfinite(v) ? std::max(v, 0.0) : 0.0; };
    const Bounds2 box{{margin(setup.marginLeft), margin(setup.marginBottom)},
                      {width - margin(setup.marginRight), height - margin(setup.marginTop)}};
    return box.width() > 1.0 && box.height() > 1.0 ? box : Bounds2{{0.0, 0.0}, {width, height}};
}

/// Millimetres for a drawing unit; 0 for "fit".
double fixedScale(const engine::PageSetup& setup) {
    if (setup.scaleType == 0) return 0.0;
    const double scale = setup.scaleDrawing > 0.0 ? setup.scalePaper / setup.scaleDrawing : 1.0;
    return (std::isfinite(scale) && scale > 0.0 ? scale : 1.0) * setup.paperUnit();
}

QString title(const engine::Drawing& drawing) {
    if (!drawing.properties.title.empty()) return QString::fromStdString(drawing.properties.title);
    return QString::fromStdString(std::filesystem::path(drawing.fileName).stem().string());
}

void paintPage(QPainter& painter, const engine::Drawing& drawing, const PlotPage& page, const PagePlacement& place,
               double dpi, TextOutput* text, const SpaceQuery& query) {
    RenderRequest request;
    request.width = place.view.pixels.width();
    request.height = place.view.pixels.height();
    request.dpi = dpi;
    request.query = query;
    request.textOutput = text;
    if (text != nullptr) request.dot = kFinestDot * dpi / kInch;
    request.look.colors = engine::plotColors(page.setup.plotStyleTable);
    request.look.lineweights = page.setup.plotWithLineweights;
    request.look.transparency = page.setup.plotTransparency;
    request.look.plotted = true;
    if (page.scaleLineweights) request.look.lineweightFactor = place.scale / page.setup.paperUnit();
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setClipRect(QRectF(place.clip.min.x, place.clip.min.y, place.clip.width(), place.clip.height()));
    const engine::Layout* layout = page.layout.empty() ? nullptr : drawing.findLayout(page.layout);
    if (layout != nullptr)
        paintLayout(painter, drawing, *layout, place.view, request);
    else
        paintModel(painter, drawing, place.view, request, false);
}

QByteArray plotPdf(const engine::Drawing& drawing, std::span<const PlotPage> pages, const SpaceQuery& query) {
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    QPdfWriter writer(&buffer);
    writer.setResolution(kVectorDpi);
    writer.setTitle(title(drawing));
    writer.setCreator(QStringLiteral("kovacad-cli"));
    GlyphRunOutput text;
    QPainter painter;
    for (const PlotPage& page : pages) {
        const PagePlacement place = placePage(drawing, page, kVectorDpi);
        const QPageSize size(QSizeF(place.width, place.height), QPageSize::Millimeter, {}, QPageSize::ExactMatch);
        const QPageLayout layout(size, QPageLayout::Portrait, QMarginsF());
        writer.setPageLayout(layout);
        if (!painter.isActive()) {
            if (!painter.begin(&writer)) return {};
        } else {
            writer.newPage();
        }
        painter.save();
        paintPage(painter, drawing, page, place, kVectorDpi, &text, query);
        painter.restore();
    }
    painter.end();
    return bytes;
}

QByteArray plotSvg(const engine::Drawing& drawing, const PlotPage& page, const SpaceQuery& query) {
    const PagePlacement place = placePage(drawing, page, kVectorDpi);
    SvgDevice device(place.width, place.height, kVectorDpi, title(drawing));
    QPainter painter(&device);
    paintPage(painter, drawing, page, place, kVectorDpi, &device, query);
    painter.end();
    return device.document();
}

QByteArray plotPicture(const engine::Drawing& drawing, const PlotPage& page, const char* kind,
                       const SpaceQuery& query) {
    const double dpi = std::clamp(page.setup.dpi, 10, 2400);
    const PagePlacement place = placePage(drawing, page, dpi);
    const double width = std::max(std::round(place.width / kInch * dpi), 1.0);
    const double height = std::max(std::round(place.height / kInch * dpi), 1.0);
    if (width * height > kMaxPlotPixels) return {};
    QImage image(static_cast<int>(width), static_cast<int>(height), QImage::Format_ARGB32_Premultiplied);
    if (image.isNull()) return {};
    image.setDotsPerMeterX(static_cast<int>(std::lround(dpi / kInch * 1000.0)));
    image.setDotsPerMeterY(image.dotsPerMeterX());
    image.fill(Qt::white);
    QPainter painter(&image);
    paintPage(painter, drawing, page, place, dpi, nullptr, query);
    painter.end();
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    constexpr int kQuality = 92;  // of JPEG
    const bool jpeg = std::string_view(kind) == "JPG";
    return image.save(&buffer, kind, jpeg ? kQuality : -1) ? bytes : QByteArray();
}

}  // namespace

PagePlacement placePage(const engine::Drawing& drawing, const PlotPage& page, double dpi) {
    const engine::PageSetup& setup = page.setup;
    const double dots = dpi / kInch;
    PagePlacement place;
    place.width = paperSide(setup.paperWidth);
    place.height = paperSide(setup.paperHeight);
    const Bounds2 paper{{0.0, 0.0}, {place.width, place.height}};
    const Vector2 offset{std::isfinite(setup.offsetX) ? setup.offsetX : 0.0,
                         std::isfinite(setup.offsetY) ? setup.offsetY : 0.0};
    const bool layout = !page.layout.empty() && drawing.findLayout(page.layout) != nullptr;
    const auto area = static_cast<PlotArea>(setup.plotArea);

    Bounds2 box = engine::plottedBox(drawing, page);
    if (box.is_empty() || !box.min.is_finite() || !box.max.is_finite()) box = {{-100.0, -100.0}, {100.0, 100.0}};
    const bool sheet = layout && area != PlotArea::Extents && area != PlotArea::View && area != PlotArea::Window;
    const Bounds2 room = sheet ? paper : printable(setup, place.width, place.height);
    place.scale = fixedScale(setup);
    if (!(place.scale > 0.0)) {
        const double across = box.width() > 0.0 ? room.width() / box.width() : 1e300;
        const double up = box.height() > 0.0 ? room.height() / box.height() : 1e300;
        place.scale = std::min(across, up) < 1e300 ? std::min(across, up) : 1.0;
    }
    // Millimetres on paper of the drawing's point p: at + (p - from) * scale.
    Vector2 from = box.min;
    Vector2 at = room.min + offset;
    if (setup.centerOnPage && !sheet) {
        from = box.center();
        at = room.center();
    }
    View& view = place.view;
    const double s = place.scale * dots;
    view.a = s;
    view.d = -s;
    view.dx = at.x * dots - from.x * s;
    view.dy = (place.height - at.y) * dots + from.y * s;
    view.scale = s;
    view.pixels = {{0.0, 0.0}, {place.width * dots, place.height * dots}};

    Bounds2 onPaper{at + (box.min - from) * place.scale, at + (box.max - from) * place.scale};
    // Lines along the border of the extents are not to lose their outer half.
    if (area == PlotArea::Extents) onPaper = onPaper.inflated(kWidestHalfLine);
    Bounds2 clip{{std::max(onPaper.min.x, 0.0), std::max(onPaper.min.y, 0.0)},
                 {std::min(onPaper.max.x, place.width), std::min(onPaper.max.y, place.height)}};
    if (sheet) clip = paper;
    if (!sheet && area != PlotArea::Extents)
        clip = {{std::max(clip.min.x, room.min.x), std::max(clip.min.y, room.min.y)},
                {std::min(clip.max.x, room.max.x), std::min(clip.max.y, room.max.y)}};
    clip.max = {std::max(clip.max.x, clip.min.x), std::max(clip.max.y, clip.min.y)};
    place.clip = {{clip.min.x * dots, (place.height - clip.max.y) * dots},
                  {clip.max.x * dots, (place.height - clip.min.y) * dots}};
    if (page.upsideDown) {
        const Vector2 corner = view.pixels.max;
        view.a = -view.a;
        view.d = -view.d;
        view.dx = corner.x - view.dx;
        view.dy = corner.y - view.dy;
        place.clip = {corner - place.clip.max, corner - place.clip.min};
    }
    return place;
}

QByteArray plot(const engine::Drawing& drawing, std::span<const PlotPage> pages, PlotFormat format,
                const SpaceQuery& query) {
    if (pages.empty()) return {};
    switch (format) {
        case PlotFormat::Svg:
            return plotSvg(drawing, pages.front(), query);
        case PlotFormat::Png:
            return plotPicture(drawing, pages.front(), "PNG", query);
        case PlotFormat::Jpg:
            return plotPicture(drawing, pages.front(), "JPG", query);
        case PlotFormat::Bmp:
            return plotPicture(drawing, pages.front(), "BMP", query);
        default:
            return plotPdf(drawing, pages, query);
    }
}

}  // namespace kova::render
