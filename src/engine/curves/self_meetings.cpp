#include "engine/curves/self_meetings.hpp"

#include <array>
#include <cmath>

namespace kova::engine {

using math::Vector2;
using Kind = PathElement::Kind;

namespace {

constexpr double kTolerance = 1e-10;  ///< as part of the coordinates
/// Hits this near to where two neighbours are tied are that tie, as multiples of the tolerance.
constexpr double kTie = 1e3;

/// Parameters inside (0, 1) at which one coordinate of a cubic turns round.
void turns(double a, double b, double c, double d, std::vector<double>& out) {
    const double qa = d - 3.0 * c + 3.0 * b - a;
    const double qb = 2.0 * (c - 2.0 * b + a);
    const double qc = b - a;
    const auto take = [&](double t) {
        if (t > 1e-9 && t < 1.0 - 1e-9) out.push_back(t);
    };
    const double discriminant = qb * qb - 4.0 * qa * qc;
    if (discriminant < 0.0) return;
    const double q = -0.5 * (qb + std::copysign(std::sqrt(discriminant), qb));
    if (qa != 0.0) take(q / qa);
    if (q != 0.0) take(qc / q);
}

}  // namespace

bool SelfMeetings::possible(const EditCurve& curve) {
    return curve.pieces().size() > 1 || curve.pieces().front().element.kind == Kind::Cubic;
}

SelfMeetings::SelfMeetings(const EditCurve& curve) : closed_(curve.closed()), tolerance_(kTolerance * curve.scale()) {
    const auto& pieces = curve.pieces();
    parts_.reserve(pieces.size());
    for (std::size_t i = 0; i < pieces.size(); ++i) {
        const auto u = static_cast<double>(i);
        if (pieces[i].element.kind == Kind::Cubic) {
            addCubic(pieces[i], u);
        } else if (pieces[i].element.kind == Kind::Arc || pieces[i].from != pieces[i].element.p) {
            parts_.push_back({pieces[i], u, u + 1.0});
        }
    }
    std::vector<math::Bounds2> boxes;
    boxes.reserve(parts_.size());
    for (const Part& part : parts_) boxes.push_back(part.piece.bounds());
    tree_ = std::make_unique<math::BoxTree>(std::move(boxes));
}

/// Between the places where x or y turns round a curve cannot meet itself.
void SelfMeetings::addCubic(const CurvePiece& piece, double u) {
    const PathElement& e = piece.element;
    std::vector<double> stops{0.0, 1.0};
    turns(piece.from.x, e.a.x, e.b.x, e.p.x, stops);
    turns(piece.from.y, e.a.y, e.b.y, e.p.y, stops);
    std::sort(stops.begin(), stops.end());
    for (std::size_t i = 0; i + 1 < stops.size(); ++i) {
        if (!(stops[i + 1] - stops[i] > 1e-9)) continue;
        const math::Cubic c = math::cubicPart({piece.from, e.a, e.b, e.p}, stops[i], stops[i + 1]);
        Part part{piece, u + stops[i], u + stops[i + 1]};
        part.piece.from = c[0];
        part.piece.element.a = c[1];
        part.piece.element.b = c[2];
        part.piece.element.p = c[3];
        parts_.push_back(part);
    }
}

/// True when part b begins where part a ends.
bool SelfMeetings::follows(std::size_t a, std::size_t b) const {
    return b == a + 1 || (closed_ && b == 0 && a + 1 == parts_.size());
}

void SelfMeetings::cuts(double u0, double u1, std::vector<double>& out) const {
    auto at = std::lower_bound(parts_.begin(), parts_.end(), u0, [](const Part& p, double u) { return p.u1 < u; });
    std::vector<PieceHit> hits;
    for (; at != parts_.end() && at->u0 <= u1; ++at) {
        const auto index = static_cast<std::size_t>(at - parts_.begin());
        tree_->query(at->piece.bounds().inflated(tolerance_), [&](std::size_t other) {
            if (other == index) return true;
            hits.clear();
            meetPieces(at->piece, parts_[other].piece, tolerance_, hits);
            for (const PieceHit& hit : hits) {
                const Vector2 p = at->piece.pointAt(hit.s);
                const auto tied = [&](const Vector2& q) { return p.distance_to(q) <= kTie * tolerance_; };
                if (follows(index, other) && hit.s > 0.5 && hit.t < 0.5 && tied(at->piece.element.p)) continue;
                if (follows(other, index) && hit.s < 0.5 && hit.t > 0.5 && tied(at->piece.from)) continue;
                const double u = at->u0 + (at->u1 - at->u0) * hit.s;
                if (u >= u0 && u <= u1) out.push_back(u);
            }
            return true;
        });
    }
}

}  // namespace kova::engine
