#include <cmath>

#include "engine/model/drawing.hpp"
#include "engine/entities/image.hpp"
#include "engine/model/entity.hpp"
#include "engine/fonts/fonts.hpp"
#include "engine/model/outline.hpp"
#include "engine/model/frame_lines.hpp"
#include "engine/outline/spatial_sink.hpp"

namespace kova::engine {

using math::Bounds2;
using math::Vector2;

namespace {

/// Samples along a curved element whose sides are not simple curves.
constexpr int kSideSamples = 64;
/// Pieces of curves are compared with a clip in chords of this part of the curve's size.
constexpr double kClipTolerance = 1e-5;

/// Width of element number `drawn` (moves do not count) at its start and end.
Vector2 widthOf(std::span<const Vector2> widths, std::size_t drawn) {
    return drawn < widths.size() ? widths[drawn] : Vector2{};
}

Bounds2 intersection(const Bounds2& a, const Bounds2& b) {
    return {{std::max(a.min.x, b.min.x), std::max(a.min.y, b.min.y)},
            {std::min(a.max.x, b.max.x), std::min(a.max.y, b.max.y)}};
}

/// The four corners of a run's box: measured upright, then laid along the run's axes.
std::array<Vector2, 4> textCorners(const TextRun& run) {
    TextRun upright = run;
    upright.origin = {};
    upright.xAxis = {1, 0};
    upright.yAxis = {0, 1};
    const Bounds2 box = textRunBounds(upright);
    const auto place = [&](double x, double y) { return run.origin + run.xAxis * x + run.yAxis * y; };
    if (box.is_empty()) return {run.origin, run.origin, run.origin, run.origin};
    return {place(box.min.x, box.min.y), place(box.max.x, box.min.y), place(box.max.x, box.max.y),
            place(box.min.x, box.max.y)};
}

class BoundsSink final : public OutlineSink {
public:
    using OutlineSink::fill;
    using OutlineSink::stroke;

    void stroke(PathView path, const OutlineStyle& /*style*/, const StrokeOptions& options) override {
        add(options.widths.empty() ? pathBounds(path) : strokeBounds(path, options.widths));
    }
    void fill(PathView rings, const OutlineStyle& /*style*/, const FillOptions& /*options*/) override {
        add(pathBounds(rings));
    }
    void text(const TextRun& run, const OutlineStyle& /*style*/) override { add(textRunBounds(run)); }
    void unbounded(const Vector2& base, const Vector2& /*direction*/, bool /*bothWays*/,
                   const OutlineStyle& /*style*/) override {
        add({base, base});
    }
    void pattern(PathView rings, std::span<const HatchFamily> /*families*/, const OutlineStyle& /*style*/) override {
        add(pathBounds(rings));
    }
    void line(const Vector2& a, const Vector2& b, const OutlineStyle& /*style*/) override {
        Bounds2 box;
        box.expand(a);
        box.expand(b);
        add(box);
    }
    void pushClip(PathView path, bool inverted) override {
        Bounds2 window = clips_.empty() ? everything() : clips_.back();
        if (!inverted) window = intersection(window, pathBounds(path));
        clips_.push_back(window);
    }
    void popClip() override {
        if (!clips_.empty()) clips_.pop_back();
    }

    Bounds2 box;

private:
    static Bounds2 everything() {
        const double inf = std::numeric_limits<double>::infinity();
        return {{-inf, -inf}, {inf, inf}};
    }
    void add(const Bounds2& part) { box.expand(clips_.empty() ? part : intersection(part, clips_.back())); }

    std::vector<Bounds2> clips_;
};

class NearestSink final : public OutlineSink {
public:
    explicit NearestSink(const Vector2& p) : p_(p) {}
    using OutlineSink::fill;
    using OutlineSink::stroke;

    void stroke(PathView path, const OutlineStyle& /*style*/, const StrokeOptions& options) override {
        if (!clips_.empty()) {
            strokeClipped(path);
            return;
        }
        if (!options.widths.empty()) {
            strokeWide(path, options.widths);
            return;
        }
        if (const auto place = nearestPlace(path, p_)) offer(place->point);
    }
    void fill(PathView rings, const OutlineStyle& /*style*/, const FillOptions& /*options*/) override { area(rings); }
    void text(const TextRun& run, const OutlineStyle& /*style*/) override {
        const std::array<Vector2, 4> corners = textCorners(run);
        area(Path().polygon(corners));
    }
    void image(const ImageEntity& image, const OutlineStyle& /*style*/) override {
        // A picture is picked by its frame, as its middle usually lies under other things.
        const std::vector<Vector2> frame = image.frame();
        const Path path = Path().polygon(frame);
        stroke(path, OutlineStyle{}, StrokeOptions{});
    }
    void unbounded(const Vector2& base, const Vector2& direction, bool bothWays,
                   const OutlineStyle& /*style*/) override {
        const double along = (p_ - base).dot(direction);
        offerInside(base + direction * (bothWays ? along : std::max(0.0, along)));
    }
    void pattern(PathView rings, std::span<const HatchFamily> /*families*/, const OutlineStyle& /*style*/) override {
        area(rings);
    }
    void pushClip(PathView path, bool inverted) override {
        Clip clip;
        clip.path.append(path);
        clip.inverted = inverted;
        const Bounds2 box = pathBounds(path);
        const double size = std::max(box.width(), box.height());
        if (std::isfinite(size)) clip.edges = flattenPath(path, std::max(size * kClipTolerance, 1e-300));
        clips_.push_back(std::move(clip));
    }
    void popClip() override {
        if (!clips_.empty()) clips_.pop_back();
    }

    bool found() const { return found_; }
    const Vector2& point() const { return point_; }

private:
    struct Clip {
        Path path;
        bool inverted = false;
        std::vector<std::vector<Vector2>> edges;
    };

    void offer(const Vector2& q) {
        const double d = (q - p_).length_squared();
        if (found_ && !(d < best_)) return;
        found_ = true;
        best_ = std::isnan(d) ? std::numeric_limits<double>::infinity() : d;
        point_ = q;
    }
    bool shown(const Vector2& q) const {
        for (const Clip& clip : clips_)
            if (insidePath(clip.path, q) == clip.inverted) return false;
        return true;
    }
    void offerInside(const Vector2& q) {
        if (shown(q)) offer(q);
    }

    void area(PathView rings) {
        if (insidePath(rings, p_) && shown(p_)) {
            offer(p_);
            return;
        }
        stroke(rings, OutlineStyle{}, StrokeOptions{});
    }

    /// Within the width of an element lies p itself; else the way to the centre line ends at the edge.
    void strokeWide(PathView path, std::span<const Vector2> widths) {
        Vector2 from;
        std::size_t drawn = 0;
        for (const PathElement& e : path) {
            if (e.kind == PathElement::Kind::Move) {
                from = e.p;
                continue;
            }
            const Vector2 w = widthOf(widths, drawn++);
            PathElement move;
            move.p = from;
            const PathElement pair[2] = {move, e};
            from = e.p;
            const auto place = nearestPlace(pair, p_);
            if (!place) continue;
            const double half = 0.5 * std::abs(w.x + (w.y - w.x) * place->t);
            offer(place->distance <= half ? p_ : place->point.lerp(p_, half / place->distance));
        }
    }

    /// The parts of the path that the clips leave, as chords cut at the clips' edges.
    void strokeClipped(PathView path) {
        const Bounds2 box = pathBounds(path);
        const double size = std::max(box.width(), box.height());
        if (!std::isfinite(size)) return;
        std::vector<double> cuts;
        for (const std::vector<Vector2>& figure : flattenPath(path, std::max(size * kClipTolerance, 1e-300))) {
            for (std::size_t i = 0; i + 1 < figure.size(); ++i) {
                const Vector2& a = figure[i];
                const Vector2& b = figure[i + 1];
                cuts.assign({0.0, 1.0});
                for (const Clip& clip : clips_)
                    for (const std::vector<Vector2>& ring : clip.edges) cut(a, b, ring, cuts);
                std::sort(cuts.begin(), cuts.end());
                for (std::size_t k = 0; k + 1 < cuts.size(); ++k) {
                    if (!shown(a.lerp(b, 0.5 * (cuts[k] + cuts[k + 1])))) continue;
                    const Vector2 c = a.lerp(b, cuts[k]);
                    const Vector2 d = a.lerp(b, cuts[k + 1]) - c;
                    const double length = d.length_squared();
                    offer(length > 0.0 ? c + d * std::clamp((p_ - c).dot(d) / length, 0.0, 1.0) : c);
                }
            }
        }
    }
    static void cut(const Vector2& a, const Vector2& b, const std::vector<Vector2>& ring, std::vector<double>& cuts) {
        const Vector2 d = b - a;
        for (std::size_t i = 0; i + 1 < ring.size(); ++i) {
            const Vector2 e = ring[i + 1] - ring[i];
            const double cross = d.cross(e);
            if (cross == 0.0) continue;
            const double s = (ring[i] - a).cross(e) / cross;
            const double t = (ring[i] - a).cross(d) / cross;
            if (s > 0.0 && s < 1.0 && t >= 0.0 && t <= 1.0) cuts.push_back(s);
        }
    }

    Vector2 p_;
    Vector2 point_;
    double best_ = 0.0;
    bool found_ = false;
    std::vector<Clip> clips_;
};

}  // namespace

Bounds2 strokeBounds(PathView path, std::span<const Vector2> widths) {
    Bounds2 box;
    Vector2 from;
    std::size_t drawn = 0;
    for (const PathElement& e : path) {
        const Vector2 start = from;
        from = e.p;
        if (e.kind == PathElement::Kind::Move) continue;
        const Vector2 w = widthOf(widths, drawn++) * 0.5;
        const auto addSides = [&](double t) {
            const Vector2 tangent = elementTangent(e, start, t);
            const double speed = tangent.length();
            if (!(speed > 0.0)) return;
            const Vector2 side = tangent.perpendicular() * ((w.x + (w.y - w.x) * t) / speed);
            const Vector2 point = elementPoint(e, start, t);
            box.expand(point + side);
            box.expand(point - side);
        };
        if (e.kind == PathElement::Kind::Line || e.kind == PathElement::Kind::Close) {
            box.expand(start);
            box.expand(e.p);
            addSides(0.0);
            addSides(1.0);
            continue;
        }
        box.expand(elementBounds(e, start));
        if (w == Vector2{}) continue;
        const double radius = e.a.length();
        const bool circular = e.kind == PathElement::Kind::Arc && radius > 0.0 && e.b == e.a.perpendicular();
        if (circular && w.x == w.y) {
            // Both sides are arcs about the same centre.
            for (const double r : {radius - w.x, radius + w.x}) {
                Path sidePath;
                sidePath.ellipticArc(e.center, e.a * (r / radius), e.b * (r / radius), e.t0, e.t1);
                box.expand(pathBounds(sidePath));
            }
            continue;
        }
        for (int i = 0; i <= kSideSamples; ++i) addSides(static_cast<double>(i) / kSideSamples);
    }
    return box;
}

Bounds2 viewedExtents(const EntityList& space, const math::Matrix4& view) {
    const FrameLines usual;
    BoundsSink measured;
    SpatialSink sink(measured, view);
    for (const Entity& e : space) {
        const Drawing* drawing = e.drawing();
        const Layer* layer = drawing != nullptr ? drawing->layers.find(e.layer) : nullptr;
        if (e.visible && (layer == nullptr || layer->isVisible())) sink.draw(e, outlineStyle(e));
    }
    return measured.box;
}

Bounds2 outlineBounds(const Entity& entity) {
    const FrameLines usual;
    BoundsSink sink;
    entity.emit(sink, outlineStyle(entity));
    return sink.box;
}

Vector2 nearestOnOutline(const Entity& entity, const Vector2& p) {
    const FrameLines usual;
    NearestSink sink(p);
    entity.emit(sink, outlineStyle(entity));
    return sink.found() ? sink.point() : p;
}

}  // namespace kova::engine
