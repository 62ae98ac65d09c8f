#include "render/painter_sink.hpp"

#include <QPainterPath>
#include <QPolygonF>

#include "engine/entities/viewport.hpp"
#include "engine/fonts/fonts.hpp"
#include "engine/outline/hatch_lines.hpp"
#include "engine/model/linetype_flags.hpp"
#include "engine/libraries/shape_files.hpp"
#include "math/angles.hpp"
#include "render/dashes.hpp"
#include "render/gradient.hpp"
#include "render/wide_line.hpp"

namespace kova::render {

using engine::Color;
using engine::ColorMethod;
using engine::OutlineStyle;
using engine::PathView;
using math::Bounds2;
using math::Vector2;

namespace {

// Text lower than this many pixels is drawn as a bar: its letters could not be told apart.
constexpr double kSmallestText = 1.5;

// Painters take long over one figure of many crossing lines; pieces of it are drawn one by one.
constexpr std::size_t kMaxChain = 256;
constexpr double kMaxChainLength = 2000.0;  // pixels
// Pixels of line that one entity may draw: many times what a picture holds.
constexpr double kMaxInk = 30e6;
// An area whose outline crosses more rows of pixels than this is filled as its box: it is a tangle, not a shape.
constexpr double kMaxRowCrossings = 1e6;
// Of one entity: points of the shapes and texts in its linetype, and letters of such a text.
constexpr std::size_t kMaxMarkPoints = 400'000;
constexpr std::size_t kMaxMarkText = 256;
// Lines of one hatch; more cannot be told apart on any sheet.
constexpr engine::HatchLineLimits kHatchLimits{200'000, 400'000};
constexpr engine::HatchLineLimits kVectorHatchLimits{100'000, 150'000};

QPointF toQt(const Vector2& p) { return {p.x, p.y}; }
QColor toQt(engine::Rgb c) { return QColor(c.red, c.green, c.blue); }

/// How wide strokes of letters of a height are (pixels): thicker than an eighth of it they would close the letters up,
/// and so would a whole pixel in small ones.
double letterWidth(double lineWidth, double height) {
    constexpr double kThinnest = 0.3;
    return std::min(lineWidth, std::max(height / 8.0, kThinnest));
}

/// Text along this direction (pixels, y down) is read with the head turned over; straight down counts, straight up
/// does not.
bool readsUpsideDown(const Vector2& along) {
    const double slack = 1e-6 * along.length();
    return along.x < -slack || (along.x <= slack && along.y > 0.0);
}

bool sameStyle(const OutlineStyle& a, const OutlineStyle& b) {
    return a.color == b.color && a.layer.key() == b.layer.key() && a.linetype.key() == b.linetype.key() &&
           a.linetypeScale == b.linetypeScale && a.lineweight == b.lineweight && a.transparency == b.transparency;
}

}  // namespace

bool LayerLook::isShown(engine::Name layer) const { return entry(layer).shown; }

const engine::Layer& LayerLook::record(engine::Name layer) const {
    static const engine::Layer unknown;
    const engine::Layer* known = entry(layer).layer;
    return known != nullptr ? *known : unknown;
}

const LayerLook::Entry& LayerLook::entry(engine::Name layer) const {
    if (layer.key() == lastKey_) return last_;
    auto it = known_.find(layer.key());
    if (it == known_.end()) {
        const engine::Layer* record = drawing_.layers.find(layer);
        const bool shown = (record == nullptr || (record->isVisible() && record->plottable)) &&
                           (viewport_ == nullptr || !viewport_->isFrozenHere(layer));
        it = known_.emplace(layer.key(), Entry{record, shown}).first;
    }
    lastKey_ = layer.key();
    return last_ = it->second;
}

PainterSink::PainterSink(QPainter& painter, const engine::Drawing& drawing, const View& view, const LayerLook& layers,
                         Settings settings)
    : painter_(painter),
      drawing_(drawing),
      view_(view),
      layers_(layers),
      settings_(std::move(settings)),
      flattener_(view_),
      visible_(view.visible()),
      guard_(view.pixels.inflated(2000.0)) {}

/// Colour 7 is white on a dark screen and black on paper; a picture is paper. Only index colours have pens.
QColor PainterSink::ink(const Color& color, const Color& layerColor) const {
    const Color& c = color.method == ColorMethod::ByLayer ? layerColor : color;
    QColor ink(0, 0, 0);
    if (c.method == ColorMethod::RGB)
        ink = QColor(c.red, c.green, c.blue);
    else if (c.method == ColorMethod::ACI && c.aci != 7 && settings_.look.colors != engine::PlotColors::Black)
        ink = toQt(engine::aciToRgb(c.aci));
    if (settings_.look.colors != engine::PlotColors::Grey) return ink;
    const int grey = qGray(ink.rgb());
    return QColor(grey, grey, grey);
}

PainterSink::~PainterSink() {
    while (clips_ > 0) popClip();
    useOpacity(1.0);
}

const PainterSink::Look& PainterSink::look(const OutlineStyle& style) {
    if (hasLook_ && sameStyle(style, lastStyle_)) return look_;
    lastStyle_ = style;
    hasLook_ = true;
    const engine::CommonNames& names = engine::commonNames();
    const engine::Layer& layer = layers_.record(style.layer);
    look_.color = ink(style.color, layer.color);

    int lineweight = style.lineweight == -1 ? layer.lineweight : style.lineweight;
    if (lineweight < 0) lineweight = settings_.defaultLineweight;
    if (!settings_.look.lineweights) lineweight = 0;
    const double width = lineweight / 100.0 * settings_.dotsPerMillimetre * settings_.look.lineweightFactor;
    look_.width = std::isfinite(width) ? std::clamp(width, 1.0, 500.0) : 1.0;

    engine::Name linetype = style.linetype;
    if (linetype == names.byLayer) linetype = layer.linetype;
    look_.linetype = nullptr;
    if (!(linetype == names.continuous) && !(linetype == names.byBlock) && !(linetype == names.byLayer)) {
        const engine::Linetype* record = drawing_.linetypes.find(linetype);
        if (record != nullptr && record->pattern.size() >= 2) look_.linetype = record;
    }
    look_.dashScale = settings_.linetypeScale * style.linetypeScale * view_.scale;

    const int transparency = std::clamp(style.transparency != 0 ? style.transparency : layer.transparency, 0, 90);
    look_.opacity = settings_.look.transparency ? (90.0 - transparency) / 90.0 : 1.0;
    return look_;
}

void PainterSink::useOpacity(double opacity) {
    if (opacity >= 0.999) opacity = 1.0;
    if (opacity == opacity_) return;
    opacity_ = opacity;
    painter_.setOpacity(opacity);
}

void PainterSink::usePen(const Look& look, bool dashes) {
    useOpacity(look.opacity);
    const bool thin = look.width < 2.0;
    dashes = dashes && thin;
    if (look.width == penWidth_ && look.color == penColor_ && dashes == penForDashes_) return;
    penWidth_ = look.width;
    penColor_ = look.color;
    penForDashes_ = dashes;
    const Qt::PenCapStyle cap = dashes ? Qt::FlatCap : thin ? Qt::SquareCap : Qt::RoundCap;
    painter_.setPen(QPen(look.color, look.width, Qt::SolidLine, cap, thin ? Qt::BevelJoin : Qt::RoundJoin));
}

void PainterSink::line(const Vector2& a, const Vector2& b, const OutlineStyle& style) {
    Vector2 p = view_.map(a);
    Vector2 q = view_.map(b);
    if (!p.is_finite() || !q.is_finite()) return;
    const Look& look = this->look(style);
    const double margin = look.width + 1.0;
    if ((p.x < -margin && q.x < -margin) || (p.y < -margin && q.y < -margin) ||
        (p.x > view_.pixels.max.x + margin && q.x > view_.pixels.max.x + margin) ||
        (p.y > view_.pixels.max.y + margin && q.y > view_.pixels.max.y + margin))
        return;
    usePen(look);
    if (look.linetype != nullptr) {
        const Vector2 points[2] = {p, q};
        return drawDashed(points, look, {});
    }
    if (clipSegment(p, q, guard_) && takeInk(std::abs(q.x - p.x) + std::abs(q.y - p.y)))
        painter_.drawLine(toQt(p), toQt(q));
}

bool PainterSink::takeInk(double length) {
    ink_ += length;
    return ink_ < kMaxInk || settings_.textOutput != nullptr;
}

void PainterSink::drawChain(std::span<const Vector2> points, bool closed) {
    if (points.empty()) return;
    if (points.size() == 1 || (points.size() == 2 && points[0] == points[1])) {
        if (guard_.contains_point(points[0])) painter_.drawPoint(toQt(points[0]));
        return;
    }
    const bool inside =
        std::all_of(points.begin(), points.end(), [&](const Vector2& p) { return guard_.contains_point(p); });
    if (!inside) {
        for (std::size_t i = 1; i < points.size(); ++i) {
            Vector2 a = points[i - 1];
            Vector2 b = points[i];
            if (clipSegment(a, b, guard_)) painter_.drawLine(toQt(a), toQt(b));
        }
        return;
    }
    buffer_.clear();
    double length = 0.0;
    for (std::size_t i = 1; i < points.size(); ++i) length += points[i - 1].distance_to(points[i]);
    if (!takeInk(length)) return;
    if (points.size() > kMaxChain || (points.size() > 16 && length > kMaxChainLength)) {
        double reach = 0.0;
        for (std::size_t i = 0; i < points.size(); ++i) {
            buffer_.push_back(toQt(points[i]));
            if (i > 0) reach += points[i - 1].distance_to(points[i]);
            if (i == 0 || (buffer_.size() < kMaxChain && reach < kMaxChainLength && i + 1 < points.size())) continue;
            painter_.drawPolyline(buffer_.data(), static_cast<int>(buffer_.size()));
            buffer_.assign(1, toQt(points[i]));
            reach = 0.0;
        }
        return;
    }
    for (const Vector2& p : points) buffer_.push_back(toQt(p));
    if (closed && buffer_.size() > 3) {
        buffer_.pop_back();
        painter_.setBrush(Qt::NoBrush);
        painter_.drawPolygon(buffer_.data(), static_cast<int>(buffer_.size()));
    } else {
        painter_.drawPolyline(buffer_.data(), static_cast<int>(buffer_.size()));
    }
}

void PainterSink::drawDashed(std::span<const Vector2> points, const Look& look, std::span<const double>) {
    const engine::Linetype& linetype = *look.linetype;
    dashes_.clear();
    for (const double dash : linetype.pattern) dashes_.push_back(dash * look.dashScale);
    std::function<void(std::size_t, const Vector2&, double)> mark;
    if (!linetype.elements.empty())
        mark = [&](std::size_t entry, const Vector2& at, double angle) {
            if (entry < linetype.elements.size() && linetype.elements[entry].flags != 0)
                drawElement(linetype, entry, at, angle, look);
        };
    const bool laid = layDashes(
        points, dashes_, view_.pixels, settings_.dot,
        [&](std::span<const Vector2> piece) {
            usePen(look, !(piece.front() == piece.back()));
            drawChain(piece, false);
        },
        mark);
    usePen(look);
    if (!laid) drawChain(points, false);
}

void PainterSink::drawElement(const engine::Linetype& linetype, std::size_t entry, const Vector2& at, double angle,
                              const Look& look) {
    const engine::LinetypeElement& element = linetype.elements[entry];
    const bool isShape = (element.flags & engine::kElementShape) != 0;
    const engine::TextStyle& style = drawing_.textStyleOrStandard(element.style);
    // The scale of a text multiplies the height that its style fixes.
    const double unit = !isShape && style.height > 0.0 ? style.height : 1.0;
    // Pixels, y down: shapes and texts are laid out in pixel coordinates. A positive rotation turns counter-clockwise.
    const double size = element.scale * unit * look.dashScale;
    const double turn =
        (element.flags & engine::kElementAbsolute) != 0 ? -element.rotation : angle - element.rotation;
    const auto up = [](const Vector2& x) { return Vector2{x.y, -x.x}; };
    Vector2 xAxis = Vector2::from_angle(turn) * size;
    Vector2 yAxis = up(xAxis);
    const Vector2 along = Vector2::from_angle(angle);
    Vector2 origin = at + (along * element.offsetX + up(along) * element.offsetY) * look.dashScale;
    if (!origin.is_finite() || !xAxis.is_finite() || std::abs(size) > 1e6) return;
    View flat;
    flat.d = 1.0;
    flat.pixels = view_.pixels;
    Flattener flattener(flat);
    const auto draw = [&](PathView path) {
        flattener.flatten(path);
        for (std::size_t i = 0; i < flattener.count(); ++i) {
            marks_ += flattener[i].points.size();
            drawChain(flattener[i].points, flattener[i].closed);
        }
    };
    if (marks_ > kMaxMarkPoints) return;
    usePen(look);
    if (isShape) {
        math::Matrix4 place;
        place(0, 0) = xAxis.x;
        place(0, 1) = yAxis.x;
        place(0, 3) = origin.x;
        place(1, 0) = xAxis.y;
        place(1, 1) = yAxis.y;
        place(1, 3) = origin.y;
        engine::Path shape;
        engine::transformPath(elementShape(element), place, shape);
        return draw(shape);
    }
    if (element.text.empty()) return;
    engine::TextRun run;
    run.text = std::string_view(element.text).substr(0, kMaxMarkText);
    run.font = style.fontFile;
    run.bigFont = style.bigFontFile;
    const double widthFactor = style.widthFactor != 0.0 && std::isfinite(style.widthFactor) ? style.widthFactor : 1.0;
    run.xAxis = xAxis * widthFactor;
    const double slant = std::tan(std::clamp(style.obliqueAngle, -1.4, 1.4));
    run.yAxis = yAxis + (std::isfinite(slant) ? run.xAxis * slant : Vector2{});
    if ((element.flags & engine::kElementUpright) != 0 && readsUpsideDown(xAxis)) {
        // Turned about its middle, so that it keeps its place in the gap.
        origin += run.xAxis * engine::textAdvance(run) + run.yAxis;
        run.xAxis = -run.xAxis;
        run.yAxis = -run.yAxis;
    }
    run.origin = origin;
    Look letters = look;
    letters.width = letterWidth(look.width, std::abs(size));
    usePen(letters);
    const auto fill = [&](PathView path) {
        if (!settings_.textFill) return draw(path);
        flattener.flatten(path);
        QPainterPath area;
        area.setFillRule(Qt::WindingFill);
        for (std::size_t i = 0; i < flattener.count(); ++i) {
            marks_ += flattener[i].points.size();
            QPolygonF ring;
            for (const Vector2& p : flattener[i].points)
                if (guard_.contains_point(p)) ring << toQt(p);
            area.addPolygon(ring);
            area.closeSubpath();
        }
        painter_.fillPath(area, look.color);
    };
    engine::emitTextRun(run, draw, fill);
}

const engine::Path& PainterSink::elementShape(const engine::LinetypeElement& element) {
    const auto key = std::make_pair(element.style.key(), std::to_string(element.shape) + '|' + element.text);
    const auto [it, fresh] = shapes_.try_emplace(key);
    if (fresh) it->second = engine::findShape(element.style, settings_.folder, element.shape, element.text);
    return it->second;
}

void PainterSink::drawFigure(Figure& figure, const Look& look, bool dashed, bool throughVertices) {
    if (figure.points.size() < 2) return;
    if (!dashed) return drawChain(figure.points, figure.closed);
    if (throughVertices || figure.elements.empty()) return drawDashed(figure.points, look, {});
    // The pattern starts anew at every vertex of the path, not at every chord of a curve.
    std::size_t begin = 0;
    for (std::size_t i = 1; i <= figure.elements.size(); ++i) {
        if (i < figure.elements.size() && figure.elements[i] == figure.elements[begin]) continue;
        drawDashed(std::span(figure.points).subspan(begin, i - begin + 1), look, {});
        begin = i;
    }
}

void PainterSink::drawWide(Figure& figure, const Look& look, const engine::StrokeOptions& options) {
    std::vector<WidePoint> line;
    const std::size_t chords = figure.elements.size();
    // Widths run linearly over an element: how far a chord's ends have come is told by its length.
    for (std::size_t begin = 0; begin < chords;) {
        std::size_t end = begin;
        double total = 0.0;
        while (end < chords && figure.elements[end] == figure.elements[begin]) {
            total += figure.points[end].distance_to(figure.points[end + 1]);
            ++end;
        }
        const std::uint32_t element = figure.elements[begin];
        const Vector2 widths = element < options.widths.size() ? options.widths[element] * view_.scale : Vector2{};
        double reach = 0.0;
        for (std::size_t i = begin; i < end; ++i) {
            const double w0 = widths.x + (widths.y - widths.x) * (total > 0.0 ? reach / total : 0.0);
            reach += figure.points[i].distance_to(figure.points[i + 1]);
            const double w1 = widths.x + (widths.y - widths.x) * (total > 0.0 ? reach / total : 1.0);
            if (line.empty()) line.push_back({figure.points[i], w0, w0});
            line.back().widthOut = w0;
            line.push_back({figure.points[i + 1], w1, w1});
        }
        begin = end;
    }
    if (figure.closed && line.size() > 1) line.front().widthIn = line.back().widthIn;
    const auto quads = widenLine(line, figure.closed);
    if (!settings_.fill) {
        for (const auto& quad : quads) {
            const Vector2 ring[5] = {quad[0], quad[1], quad[2], quad[3], quad[0]};
            drawChain(ring, true);
        }
        return;
    }
    QPainterPath area;
    area.setFillRule(Qt::WindingFill);
    for (const auto& quad : quads) {
        Bounds2 box;
        for (const Vector2& p : quad) box.expand(p);
        if (!box.intersects(guard_)) continue;
        std::vector<Vector2> polygon(quad.begin(), quad.end());
        if (!guard_.contains_box(box)) polygon = clipPolygon(std::move(polygon), guard_);
        // All quadrilaterals run the same way round, so that their overlaps stay filled.
        double turn = 0.0;
        for (std::size_t i = 0; i < polygon.size(); ++i) turn += polygon[i].cross(polygon[(i + 1) % polygon.size()]);
        if (turn < 0.0) std::reverse(polygon.begin(), polygon.end());
        QPolygonF ring;
        for (const Vector2& p : polygon) ring << toQt(p);
        if (!ring.isEmpty()) {
            area.addPolygon(ring);
            area.closeSubpath();
        }
    }
    painter_.fillPath(area, look.color);
    // A taper that comes to nothing must not vanish before its end.
    const bool thin =
        std::any_of(line.begin(), line.end(), [](const WidePoint& p) { return p.widthIn < 1.0 || p.widthOut < 1.0; });
    if (!thin) return;
    Look hair = look;
    hair.width = 1.0;
    usePen(hair);
    drawChain(figure.points, figure.closed);
}

void PainterSink::stroke(PathView path, const OutlineStyle& style, const engine::StrokeOptions& options) {
    const Look look = this->look(style);
    flattener_.flatten(path);
    usePen(look);
    const bool dashed = look.linetype != nullptr && !options.continuous;
    double widest = 0.0;
    for (const Vector2& w : options.widths) widest = std::max({widest, std::abs(w.x), std::abs(w.y)});
    const bool wide = widest * view_.scale > 1.0 && std::isfinite(widest);
    for (std::size_t i = 0; i < flattener_.count(); ++i) {
        Figure& figure = flattener_[i];
        Bounds2 box;
        for (const Vector2& p : figure.points) box.expand(p);
        if (!box.inflated(look.width + widest * view_.scale).intersects(view_.pixels)) continue;
        if (wide)
            drawWide(figure, look, options);
        else
            drawFigure(figure, look, dashed, options.patternThroughVertices);
        usePen(look);
    }
}

void PainterSink::fillRings(PathView rings, const QBrush& brush, bool evenOdd, bool trace) {
    flattener_.flatten(rings);
    QPainterPath area;
    area.setFillRule(evenOdd ? Qt::OddEvenFill : Qt::WindingFill);
    Bounds2 all;
    double crossings = 0.0;
    for (std::size_t i = 0; i < flattener_.count(); ++i) {
        Bounds2 box;
        for (const Vector2& p : flattener_[i].points) box.expand(p);
        if (!box.intersects(view_.pixels)) continue;
        QPolygonF ring;
        if (guard_.contains_box(box)) {
            for (const Vector2& p : flattener_[i].points) ring << toQt(p);
        } else {
            for (const Vector2& p : clipPolygon(flattener_[i].points, guard_)) ring << toQt(p);
        }
        if (ring.size() < 2) continue;
        for (qsizetype k = 1; k < ring.size(); ++k) crossings += std::abs(ring[k].y() - ring[k - 1].y());
        all.expand(box);
        area.addPolygon(ring);
        area.closeSubpath();
    }
    if (settings_.textOutput == nullptr && crossings > kMaxRowCrossings)
        painter_.fillRect(area.controlPointRect(), brush);
    else if (!area.isEmpty())
        painter_.fillPath(area, brush);
    // An area thinner than a pixel leaves hardly a trace: its outline keeps it visible.
    if (trace && !all.is_empty() && (all.width() < 1.0 || all.height() < 1.0) && brush.style() == Qt::SolidPattern) {
        painter_.setPen(QPen(brush.color(), 1.0));
        penWidth_ = -1.0;
        painter_.drawLine(toQt(all.min), toQt(all.max));
    }
}

void PainterSink::fill(PathView rings, const OutlineStyle& style, const engine::FillOptions& options) {
    const Look& look = this->look(style);
    useOpacity(look.opacity);
    if (options.background) return fillRings(rings, toQt(settings_.background), options.evenOdd);
    if (!settings_.fill) return stroke(rings, style, {});
    if (options.gradient != nullptr) {
        const Bounds2 box = engine::pathBounds(rings);
        if (box.is_empty() || !box.min.is_finite() || !box.max.is_finite()) return;
        const auto color = [&](const Color& c) {
            return c.method == ColorMethod::ByLayer || c.method == ColorMethod::ByBlock ? look.color : ink(c, c);
        };
        const engine::GradientFill& gradient = *options.gradient;
        return fillRings(rings, gradientBrush(gradient, box, view_, color(gradient.from), color(gradient.to)),
                         options.evenOdd);
    }
    fillRings(rings, look.color, options.evenOdd);
}

void PainterSink::pattern(PathView rings, std::span<const engine::HatchFamily> families, const OutlineStyle& style) {
    const Look look = this->look(style);
    if (!settings_.fill) return;
    engine::HatchLineLimits limits = settings_.textOutput != nullptr ? kVectorHatchLimits : kHatchLimits;
    limits.lines = std::min(limits.lines, settings_.hatchLimits.lines);
    const engine::HatchLines lines = engine::hatchLines(
        rings, families, std::max(Flattener::kTolerance / view_.scale, 1e-12), &visible_, limits);
    if (lines.overflow) {
        // Too dense to be told apart: at this scale the lines would cover the area.
        useOpacity(look.opacity);
        return fillRings(rings, look.color, true);
    }
    usePen(look);
    for (const engine::HatchSegment2& s : lines.segments) {
        Vector2 a = view_.map(s.a);
        Vector2 b = view_.map(s.b);
        if (clipSegment(a, b, guard_)) painter_.drawLine(toQt(a), toQt(b));
    }
    for (const Vector2& dot : lines.dots) {
        const Vector2 p = view_.map(dot);
        if (guard_.contains_point(p)) painter_.drawPoint(toQt(p));
    }
}

void PainterSink::text(const engine::TextRun& run, const OutlineStyle& style) {
    const Look look = this->look(style);
    const Vector2 up = view_.mapDirection(run.yAxis);
    const Vector2 along = view_.mapDirection(run.xAxis);
    if (!up.is_finite() || !along.is_finite() || !run.origin.is_finite()) return;
    const double height = up.length();
    Look letters = look;
    letters.width = letterWidth(look.width, height);
    usePen(letters);
    if (settings_.textAsFrames) return drawTextBox(run);
    if (height < kSmallestText) {
        Vector2 a = view_.map(run.origin);
        Vector2 b = a + along * engine::textAdvance(run);
        if (b.is_finite() && clipSegment(a, b, guard_)) painter_.drawLine(toQt(a), toQt(b));
        return;
    }
    if (settings_.textOutput != nullptr && settings_.textFill && writeText(run, letters)) return;
    const auto draw = [&](PathView path) {
        flattener_.flatten(path);
        for (std::size_t i = 0; i < flattener_.count(); ++i) drawChain(flattener_[i].points, flattener_[i].closed);
    };
    engine::emitTextRun(run, draw, [&](PathView path) {
        if (!settings_.textFill) return draw(path);
        fillRings(path, letters.color, false, false);
    });
}

/// The box of a run in place of its letters.
void PainterSink::drawTextBox(const engine::TextRun& run) {
    engine::TextRun upright = run;
    upright.origin = {};
    upright.xAxis = {1, 0};
    upright.yAxis = {0, 1};
    const Bounds2 box = engine::textRunBounds(upright);
    if (box.is_empty()) return;
    const auto corner = [&](double x, double y) { return view_.map(run.origin + run.xAxis * x + run.yAxis * y); };
    const Vector2 ring[] = {corner(box.min.x, box.min.y), corner(box.max.x, box.min.y), corner(box.max.x, box.max.y),
                            corner(box.min.x, box.max.y), corner(box.min.x, box.min.y)};
    if (std::all_of(std::begin(ring), std::end(ring), [](const Vector2& p) { return p.is_finite(); }))
        drawChain(ring, true);
}

void PainterSink::point(const Vector2& p, const OutlineStyle& style) {
    const Vector2 at = view_.map(p);
    if (!guard_.contains_point(at)) return;
    usePen(look(style));
    const double full = settings_.pointSize > 0.0   ? settings_.pointSize * view_.scale
                        : settings_.pointSize < 0.0 ? -settings_.pointSize / 100.0 * view_.pixels.height()
                                                    : 0.05 * view_.pixels.height();
    const double r = std::clamp(full, 1.0, 1e5) / 2.0;
    const auto lineTo = [&](double x0, double y0, double x1, double y1) {
        painter_.drawLine(QPointF(at.x + x0 * r, at.y + y0 * r), QPointF(at.x + x1 * r, at.y + y1 * r));
    };
    painter_.setBrush(Qt::NoBrush);
    switch (settings_.pointMode & 7) {
        case 0:
            painter_.drawPoint(toQt(at));
            break;
        case 2:
            lineTo(-2, 0, 2, 0), lineTo(0, -2, 0, 2);
            break;
        case 3:
            lineTo(-1.5, -1.5, 1.5, 1.5), lineTo(-1.5, 1.5, 1.5, -1.5);
            break;
        case 4:
            lineTo(0, 0, 0, -1);
            break;
        default:
            break;
    }
    if ((settings_.pointMode & 32) != 0) painter_.drawEllipse(toQt(at), r, r);
    if ((settings_.pointMode & 64) != 0) painter_.drawRect(QRectF(at.x - r, at.y - r, 2 * r, 2 * r));
}

void PainterSink::unbounded(const Vector2& base, const Vector2& direction, bool bothWays, const OutlineStyle& style) {
    const Vector2 p = view_.map(base);
    const Vector2 d = view_.mapDirection(direction).normalized();
    if (!p.is_finite() || d == Vector2{}) return;
    const double reach = p.distance_to(view_.pixels.center()) + view_.pixels.width() + view_.pixels.height();
    Vector2 a = bothWays ? p - d * reach : p;
    Vector2 b = p + d * reach;
    if (!clipSegment(a, b, view_.pixels.inflated(50.0))) return;
    const Look look = this->look(style);
    usePen(look);
    const Vector2 points[2] = {a, b};
    if (look.linetype != nullptr)
        drawDashed(points, look, {});
    else
        painter_.drawLine(toQt(a), toQt(b));
}

bool PainterSink::wants(const Bounds2& extents) const { return extents.is_empty() || extents.intersects(visible_); }

void PainterSink::pushClip(PathView path, bool inverted) {
    painter_.save();
    ++clips_;
    flattener_.flatten(path);
    QPainterPath area;
    if (inverted) area.addRect(QRectF(toQt(guard_.min), toQt(guard_.max)));
    for (std::size_t i = 0; i < flattener_.count(); ++i) {
        QPolygonF ring;
        for (const Vector2& p : clipPolygon(flattener_[i].points, guard_)) ring << toQt(p);
        area.addPolygon(ring);
        area.closeSubpath();
    }
    painter_.setClipPath(area, Qt::IntersectClip);
}

void PainterSink::popClip() {
    if (clips_ == 0) return;
    --clips_;
    painter_.restore();
    penWidth_ = -1.0;
    opacity_ = -1.0;
    useOpacity(1.0);
}

}  // namespace kova::render
