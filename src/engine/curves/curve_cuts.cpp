#include "engine/curves/curve_cuts.hpp"

#include <cmath>

#include "engine/entities/line.hpp"

namespace kova::engine {

using math::Bounds2;
using math::Vector2;
using Kind = PathElement::Kind;

namespace {

/// Meetings within this part of the coordinates count.
constexpr double kTolerance = 1e-10;

double toleranceFor(const EditCurve& curve) { return kTolerance * curve.scale(); }

}  // namespace

bool canBeEdge(const Entity& entity) {
    switch (entity.type()) {
        case EntityType::Text:
        case EntityType::MText:
        case EntityType::Dimension:
        case EntityType::Leader:
        case EntityType::MLeader:
        case EntityType::Tolerance:
        case EntityType::Point:
        case EntityType::AttributeDefinition:
        case EntityType::Shape:
            return false;
        default:
            return true;
    }
}

void EdgeSink::add(const Entity& entity) {
    const std::size_t before = edges_.size();
    if (entity.type() == EntityType::Line) {
        // What there is most of, without the way round over paths.
        const auto& line = static_cast<const LineEntity&>(entity);
        Edge edge;
        edge.piece.from = line.start;
        edge.piece.element.kind = Kind::Line;
        edge.piece.element.p = line.end;
        edge.extends = true;
        if (window_.is_empty() || window_.intersects(edge.piece.bounds())) edges_.push_back(edge);
        return;
    }
    entity.emit(*this, outlineStyle(entity));
    switch (entity.type()) {
        case EntityType::Arc:
        case EntityType::Ellipse:
            for (std::size_t i = before; i < edges_.size(); ++i) edges_[i].extends = true;
            break;
        case EntityType::Ray:
            break;
        case EntityType::Polyline: {
            // The end segments of an open one.
            const auto curve = EditCurve::of(entity);
            if (!curve || curve->closed()) break;
            for (std::size_t i = before; i < edges_.size(); ++i) {
                const Vector2& from = edges_[i].piece.from;
                const Vector2& to = edges_[i].piece.element.p;
                edges_[i].extends = from == curve->pieces().front().from || to == curve->pieces().back().element.p;
            }
            break;
        }
        default:
            break;
    }
}

void EdgeSink::stroke(PathView path, const OutlineStyle&, const StrokeOptions&) {
    Vector2 from;
    for (const PathElement& e : path) {
        if (e.kind != Kind::Move && !(e.kind == Kind::Close && e.p == from)) {
            Edge edge;
            edge.piece = {from, e};
            const Bounds2 box = window_.is_empty() ? Bounds2{} : edge.piece.bounds();
            if (window_.is_empty() || window_.intersects(box)) edges_.push_back(edge);
        }
        from = e.p;
    }
}

void EdgeSink::unbounded(const Vector2& base, const Vector2& direction, bool bothWays, const OutlineStyle&) {
    Edge edge;
    edge.piece.from = base;
    edge.piece.element.kind = Kind::Line;
    edge.piece.element.p = base + direction;
    edge.unbounded = true;
    edge.ray = !bothWays;
    edges_.push_back(edge);
}

void cutsWith(const EditCurve& curve, double u0, double u1, const EdgeSink::Edge& edge, bool implied,
              std::vector<double>& out) {
    const double tolerance = toleranceFor(curve);
    const bool whole = edge.unbounded || (implied && edge.extends);
    const auto& pieces = curve.pieces();
    std::vector<PieceHit> hits;
    std::size_t first = 0;
    std::size_t last = pieces.size() - 1;
    if (!curve.isUnbounded()) {
        const auto clampIndex = [&](double u) {
            return static_cast<std::size_t>(std::clamp(std::floor(u), 0.0, static_cast<double>(pieces.size() - 1)));
        };
        first = clampIndex(u0);
        last = clampIndex(u1);
    }
    const Bounds2 edgeBox = whole ? Bounds2{} : edge.piece.bounds().inflated(tolerance);
    for (std::size_t i = first; i <= last; ++i) {
        const bool wholePiece = curve.isUnbounded();
        if (!whole && !wholePiece && !pieces[i].bounds().intersects(edgeBox)) continue;
        hits.clear();
        meetPieces(pieces[i], edge.piece, tolerance, hits, wholePiece, whole);
        for (const PieceHit& hit : hits) {
            if (edge.ray && !implied && hit.t < 0.0) continue;
            const double u = static_cast<double>(i) + hit.s;
            if (u >= u0 && u <= u1) out.push_back(u);
        }
    }
}

void extensionCuts(const EditCurve& curve, bool atEnd, const EdgeSink::Edge& edge, bool implied,
                   std::vector<double>& out) {
    if (!curve.extendable(atEnd)) return;
    const double tolerance = toleranceFor(curve);
    const std::size_t index = atEnd ? curve.pieces().size() - 1 : 0;
    const CurvePiece& piece = curve.pieces()[index];
    std::vector<PieceHit> hits;
    meetPieces(piece, edge.piece, tolerance, hits, true, edge.unbounded || (implied && edge.extends));
    const double speed = piece.tangentAt(atEnd ? 1.0 : 0.0).length();
    if (!(speed > 0.0)) return;
    const double slack = tolerance / speed;
    const bool turns = piece.element.kind == Kind::Arc;
    const double turn = turns ? math::kTwoPi / std::abs(piece.element.t1 - piece.element.t0) : 0.0;
    for (const PieceHit& hit : hits) {
        if (edge.ray && !implied && hit.t < 0.0) continue;
        double s = hit.s;
        if (turns) {
            // A place off the arc lies both beyond its end and before its start.
            if (s <= 1.0 + slack || s >= turn - slack) continue;
            if (!atEnd) s -= turn;
        } else if (atEnd ? s <= 1.0 + slack : s >= -slack) {
            continue;
        }
        out.push_back(static_cast<double>(index) + s);
    }
}

std::optional<std::vector<std::unique_ptr<Entity>>> trimmedCurve(const EditCurve& curve, double pick,
                                                                 std::vector<double> cuts) {
    const double tolerance = toleranceFor(curve) * 4.0;
    const double end = curve.end();
    const auto same = [&](double a, double b) {
        if (std::isinf(a) || std::isinf(b)) return a == b;
        return std::abs(a - b) < 1e-3 && curve.pointAt(a).distance_to(curve.pointAt(b)) <= tolerance;
    };
    std::vector<std::unique_ptr<Entity>> out;
    const auto keep = [&](double from, double to) {
        if (same(from, to)) return;
        if (auto part = curve.part(from, to)) out.push_back(std::move(part));
    };
    std::sort(cuts.begin(), cuts.end());
    if (curve.closed()) {
        // The seam is a place like any other.
        for (double& u : cuts)
            if (same(u, end)) u = 0.0;
        std::sort(cuts.begin(), cuts.end());
        cuts.erase(std::unique(cuts.begin(), cuts.end(), same), cuts.end());
        if (cuts.size() < 2) return std::nullopt;
        const auto after = std::upper_bound(cuts.begin(), cuts.end(), pick);
        const double to = after == cuts.end() ? cuts.front() : *after;
        const double from = after == cuts.begin() ? cuts.back() : *std::prev(after);
        if (auto part = curve.part(to, from)) out.push_back(std::move(part));
        return out;
    }
    std::erase_if(cuts, [&](double u) { return same(u, curve.start()) || same(u, end); });
    if (cuts.empty()) return std::nullopt;
    const auto after = std::upper_bound(cuts.begin(), cuts.end(), pick);
    const bool hasAfter = after != cuts.end();
    const bool hasBefore = after != cuts.begin();
    if (hasBefore) keep(curve.start(), *std::prev(after));
    if (hasAfter) keep(*after, end);
    return out;
}

std::unique_ptr<Entity> extendedCurve(const EditCurve& curve, bool atEnd, const std::vector<double>& cuts) {
    if (cuts.empty()) return nullptr;
    if (atEnd) return curve.part(curve.start(), *std::min_element(cuts.begin(), cuts.end()));
    return curve.part(*std::max_element(cuts.begin(), cuts.end()), curve.end());
}

}  // namespace kova::engine
