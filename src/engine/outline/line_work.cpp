#include "engine/outline/line_work.hpp"

#include "engine/model/drawing.hpp"
#include "engine/entities/mtext.hpp"
#include "engine/entities/text.hpp"
#include "engine/text/text_line.hpp"
#include "engine/model/outline.hpp"
#include "math/angles.hpp"
#include "math/curves/curves.hpp"
#include "math/curves/polygon.hpp"

namespace kova::engine {

using math::BoundaryLoop;
using math::BoundaryPiece;
using math::Vector2;
using Kind = PathElement::Kind;

namespace {

/// Curves are cut until arcs follow them within this part of their size.
constexpr double kCurveTolerance = 1e-6;
constexpr int kCurveDepth = 8;

bool isCircular(const PathElement& e) {
    const double r = e.a.length();
    if (!(r > 0.0)) return false;
    const double side = e.a.cross(e.b) < 0.0 ? -1.0 : 1.0;
    return e.b.near_equal(e.a.perpendicular() * side, 1e-9 * r);
}

/// Arcs through points of a curve, halved until they follow it.
void addCurve(const PathElement& e, const Vector2& from, double t0, const Vector2& a, double t1, const Vector2& b,
              double tolerance, int depth, int source, std::vector<BoundaryPiece>& out) {
    const auto at = [&](double share) { return elementPoint(e, from, t0 + (t1 - t0) * share); };
    const double bulge = math::bulgeThrough(a, at(0.5), b);
    bool follows = depth < kCurveDepth - 1;  // the first halves may look alike by chance
    for (const double share : {0.25, 0.75}) {
        const Vector2 p = at(share);
        const auto arc = math::arcFromBulge(a, b, bulge);
        const double off =
            arc ? std::abs(p.distance_to(arc->center) - arc->radius) : p.distance_to(math::closestOnSegment(p, a, b));
        follows = follows && off <= tolerance;
    }
    if (follows || depth == 0) {
        out.push_back({a, b, bulge, source});
        return;
    }
    const double middle = (t0 + t1) / 2.0;
    const Vector2 m = elementPoint(e, from, middle);
    addCurve(e, from, t0, a, middle, m, tolerance, depth - 1, source, out);
    addCurve(e, from, middle, m, t1, b, tolerance, depth - 1, source, out);
}

void addElement(const PathElement& e, const Vector2& from, int source, std::vector<BoundaryPiece>& out) {
    if (e.kind == Kind::Move || !from.is_finite() || !e.p.is_finite()) return;
    if (e.kind == Kind::Line || e.kind == Kind::Close) {
        if (from != e.p) out.push_back({from, e.p, 0.0, source});
        return;
    }
    if (e.kind == Kind::Arc && isCircular(e)) {
        // In halves at most: a full circle has no ends to tell its sides apart.
        const double side = e.a.cross(e.b) < 0.0 ? -1.0 : 1.0;
        const double sweep = (e.t1 - e.t0) * side;
        if (!(std::abs(sweep) <= math::kTwoPi * (1.0 + 1e-9))) return;
        const int parts = std::abs(sweep) > math::kPi * 1.001 ? 2 : 1;
        Vector2 a = from;
        for (int i = 1; i <= parts; ++i) {
            const Vector2 b = i == parts ? e.p : elementPoint(e, from, static_cast<double>(i) / parts);
            out.push_back({a, b, math::bulgeFromSweep(sweep / parts), source});
            a = b;
        }
        return;
    }
    const math::Bounds2 box = elementBounds(e, from);
    const double size = std::hypot(box.width(), box.height());
    if (!std::isfinite(size) || !(size > 0.0)) return;
    addCurve(e, from, 0.0, from, 1.0, e.p, kCurveTolerance * size, kCurveDepth, source, out);
}

/// Takes down the lines of what entities emit.
class LineWorkSink final : public OutlineSink {
public:
    LineWorkSink(const Drawing& drawing, const LineWork::Reach& reachOf) : drawing_(drawing), reachOf_(reachOf) {}

    Path path;
    bool takeFills = false;

    using OutlineSink::fill;
    using OutlineSink::stroke;
    void stroke(PathView view, const OutlineStyle&, const StrokeOptions&) override { path.append(view); }
    void fill(PathView rings, const OutlineStyle&, const FillOptions&) override {
        if (takeFills) path.append(rings);
    }
    void text(const TextRun&, const OutlineStyle&) override {}
    void point(const Vector2&, const OutlineStyle&) override {}
    void line(const Vector2& a, const Vector2& b, const OutlineStyle&) override {
        path.moveTo(a);
        path.lineTo(b);
    }
    void unbounded(const Vector2& base, const Vector2& direction, bool bothWays, const OutlineStyle&) override {
        // Far enough to cross whatever is drawn. The extents are asked only for this: finding them may take long.
        if (!reach_) reach_ = reachOf_ ? reachOf_() : math::Bounds2();
        const double far =
            2.0 * (std::hypot(reach_->width(), reach_->height()) + base.distance_to(reach_->center())) + 1.0;
        if (reach_->is_empty() || !std::isfinite(far)) return;
        path.moveTo(bothWays ? base - direction * far : base);
        path.lineTo(base + direction * far);
    }
    bool wantsLayer(Name layer) const override {
        const Layer* record = drawing_.layers.find(layer);
        return record == nullptr || record->isVisible();
    }

private:
    const Drawing& drawing_;
    const LineWork::Reach& reachOf_;
    std::optional<math::Bounds2> reach_;
};

}  // namespace

struct LineWork::Impl {
    Reach reach;
    LineWorkSink sink;
    Impl(const Drawing& drawing, Reach reachOf) : reach(std::move(reachOf)), sink(drawing, reach) {}
};

LineWork::LineWork(const Drawing& drawing, Reach reach) : impl_(std::make_unique<Impl>(drawing, std::move(reach))) {}
LineWork::~LineWork() = default;

PathView LineWork::of(const Entity& entity) {
    LineWorkSink& sink = impl_->sink;
    sink.path.clear();
    sink.takeFills = entity.type() == EntityType::Solid2D;
    entity.emit(sink, outlineStyle(entity));
    return sink.path.view();
}

bool LineWork::shows(const Entity& entity) const { return entity.visible && impl_->sink.wantsLayer(entity.layer); }

bool boundsAreas(EntityType type) {
    return type != EntityType::Hatch && type != EntityType::Point && type != EntityType::Text &&
           type != EntityType::MText && type != EntityType::Viewport;
}

void addPieces(PathView path, int source, std::vector<BoundaryPiece>& out) {
    Vector2 from;
    for (const PathElement& e : path) {
        addElement(e, from, source, out);
        from = e.p;
    }
}

std::optional<BoundaryLoop> textIsland(const Entity& entity) {
    std::array<Vector2, 4> box;
    double margin = 0.0;
    if (const auto* text = dynamic_cast<const TextEntity*>(&entity)) {
        const TextLinePlacement place = placeTextLine(text->line(), entity.drawing());
        if (!place.valid) return std::nullopt;
        box = place.box();
        margin = 0.25 * text->height;
    } else if (const auto* mtext = dynamic_cast<const MTextEntity*>(&entity)) {
        if (mtext->content.empty()) return std::nullopt;
        box = mtext->box();
        margin = 0.25 * mtext->height;
    } else {
        return std::nullopt;
    }
    BoundaryLoop loop;
    const Vector2 x = (box[1] - box[0]).normalized() * margin;
    const Vector2 y = (box[3] - box[0]).normalized() * margin;
    loop.points = {box[0] - x - y, box[1] + x - y, box[2] + x + y, box[3] - x + y};
    loop.bulges.assign(4, 0.0);
    for (const Vector2& p : loop.points)
        if (!p.is_finite()) return std::nullopt;
    if (math::signedArea(loop.points) < 0.0) std::reverse(loop.points.begin(), loop.points.end());
    return loop;
}

/// The next figure of a path from element `i` on; i is moved behind it.
PathView nextFigure(PathView path, std::size_t& i) {
    const std::size_t begin = i++;
    while (i < path.size() && path[i].kind != Kind::Move) ++i;
    return path.subspan(begin, i - begin);
}

bool isClosedFigure(PathView figure) {
    if (figure.size() < 2) return false;
    if (figure.back().kind == Kind::Close) return true;
    const Vector2& a = figure.front().p;
    const Vector2& b = figure.back().p;
    return a.distance_to(b) <= 1e-9 * (1.0 + std::max(std::abs(a.x), std::abs(a.y)));
}

/// A closed figure as a hatch keeps it: a polyline, or edges when it has other curves.
HatchLoop figureLoop(PathView figure) {
    HatchLoop loop;
    bool plain = true;
    for (const PathElement& e : figure)
        plain = plain && e.kind != Kind::Cubic && (e.kind != Kind::Arc || isCircular(e));
    Vector2 from = figure.front().p;
    if (plain) {
        std::vector<BoundaryPiece> pieces;
        addPieces(figure, 0, pieces);
        for (const BoundaryPiece& piece : pieces) {
            loop.vertices.push_back(piece.a);
            loop.bulges.push_back(piece.bulge);
        }
        loop.type = HatchLoop::kExternal | HatchLoop::kPolyline;
        return loop;
    }
    for (const PathElement& e : figure) {
        switch (e.kind) {
            case Kind::Move:
                break;
            case Kind::Line:
            case Kind::Close:
                if (from != e.p) loop.edges.push_back(HatchLineEdge{from, e.p});
                break;
            case Kind::Arc:
                loop.edges.push_back(HatchEllipseEdge{e.center, e.a, e.b, e.t0, e.t1});
                break;
            case Kind::Cubic: {
                HatchSplineEdge edge;
                edge.control = {from, e.a, e.b, e.p};
                edge.knots = {0, 0, 0, 0, 1, 1, 1, 1};
                loop.edges.push_back(std::move(edge));
                break;
            }
        }
        from = e.p;
    }
    return loop;
}

HatchLoop hatchLoop(const BoundaryLoop& loop, bool island) {
    HatchLoop out;
    out.type = HatchLoop::kPolyline | HatchLoop::kDerived | (island ? HatchLoop::kOutermost : HatchLoop::kExternal);
    out.inner = island;
    out.vertices = loop.points;
    if (std::any_of(loop.bulges.begin(), loop.bulges.end(), [](double b) { return b != 0.0; }))
        out.bulges = loop.bulges;
    return out;
}

BoundaryLoop polylineLoop(const HatchLoop& loop) {
    BoundaryLoop out;
    if (loop.isPolyline()) {
        out.points = loop.vertices;
        out.bulges = loop.bulges;
        out.bulges.resize(out.points.size());
        return out;
    }
    const Path path = loop.path();
    std::vector<BoundaryPiece> pieces;
    addPieces(path.view(), 0, pieces);
    for (const BoundaryPiece& piece : pieces) {
        out.points.push_back(piece.a);
        out.bulges.push_back(piece.bulge);
    }
    return out;
}

}  // namespace kova::engine
