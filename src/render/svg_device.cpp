#include "render/svg_device.hpp"

#include <QBuffer>
#include <QImage>
#include <QPaintEngine>
#include <QPainterPath>
#include <QPixmap>
#include <QTextItem>
#include <cmath>

namespace kova::render {

namespace {

// Lines of one look are gathered into one path up to this many bytes.
constexpr qsizetype kLargestPath = 60'000;

QByteArray number(double v, int decimals = 4) {
    if (!std::isfinite(v)) return "0";
    QByteArray text = QByteArray::number(v, 'f', decimals);
    if (text.contains('.')) {
        while (text.endsWith('0')) text.chop(1);
        if (text.endsWith('.')) text.chop(1);
    }
    return text == "-0" ? QByteArray("0") : text;
}

QByteArray matrix(const QTransform& t) {
    return "matrix(" + number(t.m11(), 8) + ' ' + number(t.m12(), 8) + ' ' + number(t.m21(), 8) + ' ' +
           number(t.m22(), 8) + ' ' + number(t.dx()) + ' ' + number(t.dy()) + ')';
}

/// A character as XML holds it; nothing for those that XML cannot hold.
QByteArray escaped(char32_t c) {
    switch (c) {
        case '<':
            return "&lt;";
        case '>':
            return "&gt;";
        case '&':
            return "&amp;";
        case '"':
            return "&quot;";
        default:
            break;
    }
    if (c < 0x20 || (c >= 0xD800 && c < 0xE000) || c == 0xFFFE || c == 0xFFFF || c > 0x10FFFF) return {};
    return QString::fromUcs4(&c, 1).toUtf8();
}

QByteArray escaped(const QString& text) {
    QByteArray out;
    for (const char32_t c : text.toStdU32String()) out += escaped(c);
    return out;
}

}  // namespace

class SvgEngine final : public QPaintEngine {
public:
    explicit SvgEngine(double millimetresPerDot)
        : QPaintEngine(PrimitiveTransform | PatternTransform | PixmapTransform | PatternBrush | MaskedBrush |
                       AlphaBlend | PainterPaths | Antialiasing | BrushStroke | ConstantOpacity |
                       PaintOutsidePaintEvent),
          toPage_(QTransform::fromScale(millimetresPerDot, millimetresPerDot)) {}

    bool begin(QPaintDevice*) override { return true; }
    bool end() override {
        leaveGroup();
        return true;
    }
    Type type() const override { return User; }
    const QByteArray& body() const { return body_; }

    void updateState(const QPaintEngineState& state) override {
        const DirtyFlags dirty = state.state();
        // Clipping areas that come back on restore bring their own transform without marking it.
        matrix_ = state.transform() * toPage_;
        if (dirty & DirtyPen) pen_ = state.pen();
        if (dirty & DirtyBrush) brush_ = state.brush();
        if (dirty & DirtyOpacity) opacity_ = state.opacity();
        if (dirty & DirtyClipPath) clip(state.clipPath(), state.clipOperation());
        if (dirty & DirtyClipRegion) {
            QPainterPath path;
            path.addRegion(state.clipRegion());
            clip(path, state.clipOperation());
        }
        if (dirty & DirtyClipEnabled && !state.isClipEnabled()) clip({}, Qt::NoClip);
    }

    void drawPath(const QPainterPath& path) override { draw(matrix_.map(path), true); }
    void drawPolygon(const QPointF* points, int count, PolygonDrawMode mode) override {
        QPainterPath path;
        path.setFillRule(mode == WindingMode ? Qt::WindingFill : Qt::OddEvenFill);
        for (int i = 0; i < count; ++i) {
            const QPointF p = matrix_.map(points[i]);
            if (i == 0)
                path.moveTo(p);
            else
                path.lineTo(p);
        }
        if (mode != PolylineMode) path.closeSubpath();
        draw(path, mode != PolylineMode);
    }
    void drawLines(const QLineF* lines, int count) override {
        for (int i = 0; i < count; ++i) {
            const QPointF ends[2] = {lines[i].p1(), lines[i].p2()};
            drawPolygon(ends, 2, PolylineMode);
        }
    }
    void drawPoints(const QPointF* points, int count) override {
        for (int i = 0; i < count; ++i) {
            const QPointF ends[2] = {points[i], points[i]};
            drawPolygon(ends, 2, PolylineMode);
        }
    }
    void drawPixmap(const QRectF& target, const QPixmap& pixmap, const QRectF& source) override {
        drawImage(target, pixmap.toImage(), source, Qt::AutoColor);
    }
    void drawImage(const QRectF& target, const QImage& image, const QRectF& source, Qt::ImageConversionFlags) override {
        enterGroup();
        QTransform place = matrix_;
        place.translate(target.x(), target.y());
        if (source.width() > 0.0 && source.height() > 0.0)
            place.scale(target.width() / source.width(), target.height() / source.height());
        writeImage(source.toRect() == image.rect() ? image : image.copy(source.toRect()), place, {});
    }

    void writeText(const DeviceText& text) {
        enterGroup();
        flush();
        const QTransform place = text.toDevice * toPage_;
        // The letters' size goes to the font, the rest to the matrix: viewers scale text badly by matrices alone.
        const double size = std::sqrt(std::abs(place.determinant()));
        if (!(size > 0.0) || !std::isfinite(size)) return;
        const QTransform turned(place.m11() / size, place.m12() / size, place.m21() / size, place.m22() / size,
                                place.dx(), place.dy());
        QByteArray look = "<text xml:space=\"preserve\" transform=\"" + matrix(turned) + "\" font-family=\"" +
                          escaped(text.font.familyName()) + "\" font-size=\"" + number(text.font.pixelSize() * size) +
                          '"';
        if (text.font.weight() > QFont::Medium) look += " font-weight=\"bold\"";
        if (text.font.style() != QFont::StyleNormal) look += " font-style=\"italic\"";
        look += " fill=\"" + text.color.name().toUtf8() + '"' + opacityOf("opacity", opacity_ * text.color.alphaF());
        const bool level =
            std::all_of(text.positions.begin(), text.positions.end(), [](const QPointF& p) { return p.y() == 0.0; });
        QByteArray xs;
        QByteArray letters;
        for (std::size_t i = 0; i < text.characters.size(); ++i) {
            const QByteArray letter = escaped(text.characters[i]);
            if (letter.isEmpty()) continue;
            const QByteArray x = number(text.positions[i].x() * size);
            if (!level) {
                // Letters below each other stand alone: not every viewer follows lists of places.
                body_ += look + " x=\"" + x + "\" y=\"" + number(text.positions[i].y() * size) + "\">" + letter +
                         "</text>\n";
                continue;
            }
            letters += letter;
            if (!xs.isEmpty()) xs += ' ';
            xs += x;
        }
        if (!letters.isEmpty()) body_ += look + " x=\"" + xs + "\">" + letters + "</text>\n";
    }

private:
    static QByteArray opacityOf(const char* name, double opacity) {
        return opacity < 0.999 ? ' ' + QByteArray(name) + "=\"" + number(std::max(opacity, 0.0), 3) + '"'
                               : QByteArray();
    }

    static QByteArray data(const QPainterPath& path) {
        QByteArray d;
        QPointF start;
        for (int i = 0; i < path.elementCount(); ++i) {
            const QPainterPath::Element e = path.elementAt(i);
            const QByteArray at = number(e.x) + ' ' + number(e.y);
            switch (e.type) {
                case QPainterPath::MoveToElement:
                    start = e;
                    d += 'M' + at;
                    break;
                case QPainterPath::LineToElement: {
                    const bool last = i + 1 == path.elementCount() || path.elementAt(i + 1).isMoveTo();
                    d += last && QPointF(e) == start && i > 1 && !path.elementAt(i - 1).isMoveTo() ? QByteArray("Z")
                                                                                                   : 'L' + at;
                    break;
                }
                case QPainterPath::CurveToElement:
                    d += 'C' + at;
                    break;
                case QPainterPath::CurveToDataElement:
                    d += ' ' + at;
                    break;
            }
        }
        return d;
    }

    /// Paints a path in page coordinates by the pen and, for areas, the brush in force.
    void draw(const QPainterPath& path, bool area) {
        if (path.isEmpty()) return;
        enterGroup();
        const bool filled = area && brush_.style() != Qt::NoBrush;
        const bool stroked = pen_.style() != Qt::NoPen;
        if (filled && brush_.style() == Qt::TexturePattern) {
            flush();
            const int id = writeClip(path);
            writeImage(brush_.textureImage(), brush_.transform() * matrix_,
                       " clip-path=\"url(#c" + QByteArray::number(id) + ")\"");
            if (!stroked) return;
        }
        const bool flat = filled && brush_.style() != Qt::TexturePattern;
        if (!flat && !stroked) return;
        QByteArray look;
        if (flat) {
            look += " fill=\"" + brush_.color().name().toUtf8() + '"' +
                    opacityOf("fill-opacity", opacity_ * brush_.color().alphaF());
            if (path.fillRule() == Qt::OddEvenFill) look += " fill-rule=\"evenodd\"";
        } else {
            look += " fill=\"none\"";
        }
        if (stroked) {
            const double scale = pen_.isCosmetic() ? toPage_.m11() : std::sqrt(std::abs(matrix_.determinant()));
            look += " stroke=\"" + pen_.color().name().toUtf8() + "\" stroke-width=\"" +
                    number(std::max(pen_.widthF(), 1.0) * scale) + '"' +
                    opacityOf("stroke-opacity", opacity_ * pen_.color().alphaF());
            look += pen_.capStyle() == Qt::RoundCap    ? " stroke-linecap=\"round\""
                    : pen_.capStyle() == Qt::SquareCap ? " stroke-linecap=\"square\""
                                                       : "";
            if (pen_.joinStyle() == Qt::RoundJoin) look += " stroke-linejoin=\"round\"";
            if (pen_.joinStyle() == Qt::BevelJoin) look += " stroke-linejoin=\"bevel\"";
        }
        // Lines of one look are one path; areas and see-through lines are not, since overlaps would look different.
        if (flat || opacity_ < 0.999) {
            flush();
            body_ += "<path" + look + " d=\"" + data(path) + "\"/>\n";
            return;
        }
        if (look != look_ || gathered_.size() > kLargestPath) flush();
        look_ = look;
        gathered_ += data(path);
    }

    void flush() {
        if (!gathered_.isEmpty()) body_ += "<path" + look_ + " d=\"" + gathered_ + "\"/>\n";
        gathered_.clear();
        look_.clear();
    }

    void writeImage(const QImage& image, const QTransform& place, const QByteArray& groupAttributes) {
        flush();
        QByteArray png;
        QBuffer buffer(&png);
        buffer.open(QIODevice::WriteOnly);
        if (!image.save(&buffer, "PNG")) return;
        body_ += "<g" + groupAttributes + opacityOf("opacity", opacity_) + "><image transform=\"" + matrix(place) +
                 "\" width=\"" + QByteArray::number(image.width()) + "\" height=\"" +
                 QByteArray::number(image.height()) +
                 "\" preserveAspectRatio=\"none\" xlink:href=\"data:image/png;base64," + png.toBase64() + "\"/></g>\n";
    }

    /// Writes a clipping area that lies within the last one, and gives its number.
    int writeClip(const QPainterPath& path) {
        const int id = ++lastClip_;
        body_ += "<clipPath id=\"c" + QByteArray::number(id) + '"';
        body_ += "><path clip-rule=\"" + QByteArray(path.fillRule() == Qt::OddEvenFill ? "evenodd" : "nonzero") +
                 "\" d=\"" + (path.isEmpty() ? QByteArray("M0 0") : data(path)) + "\"/></clipPath>\n";
        return id;
    }

    void clip(const QPainterPath& path, Qt::ClipOperation operation) {
        if (operation != Qt::IntersectClip) clips_.clear();
        if (operation != Qt::NoClip) clips_.push_back(matrix_.map(path));
        changed_ = true;
    }

    /// Opens the groups whose clipping areas are in force, one within the other.
    void enterGroup() {
        if (!changed_) return;
        changed_ = false;
        if (clips_ == entered_) return;
        leaveGroup();
        for (const QPainterPath& path : clips_) {
            const int id = writeClip(path);
            body_ += "<g clip-path=\"url(#c" + QByteArray::number(id) + ")\">\n";
        }
        entered_ = clips_;
    }
    void leaveGroup() {
        flush();
        for (std::size_t i = 0; i < entered_.size(); ++i) body_ += "</g>\n";
        entered_.clear();
    }

    QTransform toPage_;
    QTransform matrix_ = toPage_;
    QPen pen_;
    QBrush brush_;
    double opacity_ = 1.0;
    std::vector<QPainterPath> clips_;
    std::vector<QPainterPath> entered_;
    bool changed_ = false;
    int lastClip_ = 0;
    QByteArray look_;
    QByteArray gathered_;
    QByteArray body_;
};

SvgDevice::SvgDevice(double width, double height, int dpi, const QString& title)
    : width_(width), height_(height), dpi_(dpi), title_(title), engine_(std::make_unique<SvgEngine>(25.4 / dpi)) {}

SvgDevice::~SvgDevice() = default;

QPaintEngine* SvgDevice::paintEngine() const { return engine_.get(); }

void SvgDevice::write(QPainter& painter, const DeviceText& text) {
    // State that the painter still keeps to itself (clipping, opacity) reaches the engine with the next primitive.
    engine_->syncState();
    (void)painter;
    engine_->writeText(text);
}

QByteArray SvgDevice::document() const {
    const QByteArray w = number(width_);
    const QByteArray h = number(height_);
    return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<svg xmlns=\"http://www.w3.org/2000/svg\" "
           "xmlns:xlink=\"http://www.w3.org/1999/xlink\" version=\"1.1\" width=\"" +
           w + "mm\" height=\"" + h + "mm\" viewBox=\"0 0 " + w + ' ' + h + "\">\n<title>" + escaped(title_) +
           "</title>\n" + engine_->body() + "</svg>\n";
}

int SvgDevice::metric(PaintDeviceMetric metric) const {
    const auto dots = [&](double mm) { return static_cast<int>(std::ceil(mm / 25.4 * dpi_)); };
    switch (metric) {
        case PdmWidth:
            return dots(width_);
        case PdmHeight:
            return dots(height_);
        case PdmWidthMM:
            return static_cast<int>(std::lround(width_));
        case PdmHeightMM:
            return static_cast<int>(std::lround(height_));
        case PdmDpiX:
        case PdmDpiY:
        case PdmPhysicalDpiX:
        case PdmPhysicalDpiY:
            return dpi_;
        case PdmNumColors:
            return 0x7fffffff;
        case PdmDepth:
            return 32;
        case PdmDevicePixelRatio:
            return 1;
        case PdmDevicePixelRatioScaled:
            return static_cast<int>(devicePixelRatioFScale());
        default:
            return 0;
    }
}

}  // namespace kova::render
