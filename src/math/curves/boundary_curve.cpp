#include "math/curves/boundary_curve.hpp"

#include "math/curves/intersect.hpp"

namespace kova::math {

namespace {

Bounds2 boxOf(const BoundaryCurve& piece) {
    Bounds2 box;
    box.expand(piece.a);
    box.expand(piece.b);
    if (piece.arc) {
        const CircularArc& arc = *piece.arc;
        const double from = arc.sweep > 0.0 ? arc.start : arc.end();
        const double to = arc.sweep > 0.0 ? arc.end() : arc.start;
        for (int quarter = 0; quarter < 4; ++quarter)
            if (angleInSweep(quarter * kPi / 2.0, from, to)) box.expand(arc.pointAt(quarter * kPi / 2.0));
    }
    return box;
}

}  // namespace

BoundaryCurve boundaryCurve(const Vector2& a, const Vector2& b, double bulge, int source) {
    BoundaryCurve curve{a, b, bulge, arcFromBulge(a, b, bulge), {}, source};
    curve.box = boxOf(curve);
    return curve;
}

void meetCurves(const BoundaryCurve& x, const BoundaryCurve& y, double tolerance, std::vector<Vector2>& out) {
    if (!x.arc && !y.arc) {
        if (const auto p = segmentSegment(x.a, x.b, y.a, y.b, tolerance)) out.push_back(*p);
    } else if (!x.arc) {
        for (const Vector2& p : segmentArc(x.a, x.b, *y.arc, tolerance)) out.push_back(p);
    } else if (!y.arc) {
        for (const Vector2& p : segmentArc(y.a, y.b, *x.arc, tolerance)) out.push_back(p);
    } else {
        for (const Vector2& p : arcArc(*x.arc, *y.arc, tolerance)) out.push_back(p);
    }
    // Ends on the other piece: touching, and the ends of a stretch that the two share.
    for (const Vector2& p : {y.a, y.b})
        if (x.passes(p, tolerance)) out.push_back(p);
    for (const Vector2& p : {x.a, x.b})
        if (y.passes(p, tolerance)) out.push_back(p);
}

void PieceGrid::build(const std::vector<BoundaryCurve>& pieces, double margin) {
    margin_ = margin;
    for (const BoundaryCurve& piece : pieces) box_.expand(piece.box);
    if (box_.is_empty()) return;
    box_ = box_.inflated(2.0 * margin);
    size_ = std::clamp(static_cast<int>(std::sqrt(static_cast<double>(pieces.size()))), 1, 400);
    // A width beyond all numbers leaves one cell for all.
    columns_ = size_ / box_.width();
    rows_ = size_ / box_.height();
    rowHeight_ = box_.height() / size_;
    starts_.assign(static_cast<std::size_t>(size_) * static_cast<std::size_t>(size_) + 1, 0);
    // Worked out once, counted, then laid out in one list.
    std::vector<std::uint32_t> cells;
    std::vector<std::uint32_t> ends;
    cells.reserve(8 * pieces.size());
    ends.reserve(pieces.size());
    for (const BoundaryCurve& piece : pieces) {
        visit(piece, [&](std::size_t cell) { cells.push_back(static_cast<std::uint32_t>(cell)); });
        ends.push_back(static_cast<std::uint32_t>(cells.size()));
    }
    for (const std::uint32_t cell : cells) ++starts_[cell + 1];
    for (std::size_t i = 1; i < starts_.size(); ++i) starts_[i] += starts_[i - 1];
    items_.resize(starts_.back());
    std::vector<std::uint32_t> at(starts_.begin(), starts_.end() - 1);
    for (std::uint32_t i = 0, k = 0; i < ends.size(); ++i)
        for (; k < ends[i]; ++k) items_[at[cells[k]]++] = i;
}

int NodeTable::at(const Vector2& p) {
    const std::int64_t x1 = cell(p.x + tolerance_);
    const std::int64_t y1 = cell(p.y + tolerance_);
    for (std::int64_t x = cell(p.x - tolerance_); x <= x1; ++x)
        for (std::int64_t y = cell(p.y - tolerance_); y <= y1; ++y)
            for (int node = first_[slot(x, y)]; node >= 0; node = next_[static_cast<std::size_t>(node)])
                if (point(node).distance_to(p) <= tolerance_) return node;
    if (points_.size() >= first_.size()) grow();
    int& first = first_[slot(cell(p.x), cell(p.y))];
    points_.push_back(p);
    next_.push_back(first);
    first = static_cast<int>(points_.size()) - 1;
    return first;
}

void NodeTable::grow() {
    first_.assign(4 * first_.size(), -1);
    for (std::size_t i = 0; i < points_.size(); ++i) {
        int& first = first_[slot(cell(points_[i].x), cell(points_[i].y))];
        next_[i] = first;
        first = static_cast<int>(i);
    }
}

}  // namespace kova::math
