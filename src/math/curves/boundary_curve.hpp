#pragma once

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <optional>
#include <vector>

#include "math/angles.hpp"
#include "math/bounds2.hpp"
#include "math/curves/curves.hpp"

namespace kova::math {

/// A piece of line work as the searches for closed figures use it: a segment or an arc from a to b.
struct BoundaryCurve {
    Vector2 a;
    Vector2 b;
    double bulge = 0.0;
    std::optional<CircularArc> arc;
    Bounds2 box;
    int source = 0;

    Vector2 pointAt(double t) const {
        if (t <= 0.0) return a;
        if (t >= 1.0) return b;
        return arc ? arc->pointAt(arc->start + arc->sweep * t) : a.lerp(b, t);
    }
    /// Unit tangent in the sense of growing t.
    Vector2 tangentAt(double t) const {
        if (!arc) return (b - a).normalized();
        const Vector2 d = unitAt(arc->start + arc->sweep * t).perpendicular();
        return arc->sweep > 0.0 ? d : -d;
    }
    double curvature() const { return arc ? std::copysign(1.0 / arc->radius, arc->sweep) : 0.0; }
    double length() const { return arc ? arc->length() : a.distance_to(b); }
    /// Parameter of a point on the piece, in [0, 1].
    double parameterOf(const Vector2& p) const {
        if (!arc) return closestParameterOnSegment(p, a, b);
        const double size = std::abs(arc->sweep);
        const double angle = (p - arc->center).angle();
        const double run = normalizeAngle(arc->sweep > 0.0 ? angle - arc->start : arc->start - angle);
        if (run <= size) return run / size;
        return run - size < kTwoPi - run ? 1.0 : 0.0;
    }
    bool passes(const Vector2& p, double tolerance) const {
        return box.inflated(tolerance).contains_point(p) && pointAt(parameterOf(p)).distance_to(p) <= tolerance;
    }
};

/// With its arc and extents worked out.
BoundaryCurve boundaryCurve(const Vector2& a, const Vector2& b, double bulge, int source);
/// Appends where two pieces meet: crossings, and ends of one on the other.
void meetCurves(const BoundaryCurve& x, const BoundaryCurve& y, double tolerance, std::vector<Vector2>& out);

/// A uniform grid of what pieces lie where.
class PieceGrid {
public:
    void build(const std::vector<BoundaryCurve>& pieces, double margin);
    /// Calls use(piece) for the pieces that lie where one passes, itself included, some more than once.
    template <class Use>
    void near(const BoundaryCurve& piece, const Use& use) const {
        visit(piece, [&](std::size_t cell) {
            for (std::uint32_t i = starts_[cell]; i < starts_[cell + 1]; ++i) use(static_cast<int>(items_[i]));
        });
    }

private:
    /// Calls use(cell) for the cells that a piece may pass through.
    template <class Use>
    void visit(const BoundaryCurve& piece, const Use& use) const {
        const Bounds2 box = piece.box.inflated(margin_);
        const int firstRow = rowOf(box.min.y);
        const int lastRow = rowOf(box.max.y);
        const int firstColumn = columnOf(box.min.x);
        const int lastColumn = columnOf(box.max.x);
        const double rise = piece.b.y - piece.a.y;
        // A slanting line passes few of the cells of its box.
        const bool slants = !piece.arc && rise != 0.0 && firstRow < lastRow && firstColumn < lastColumn;
        const double slope = slants ? (piece.b.x - piece.a.x) / rise : 0.0;
        for (int row = firstRow; row <= lastRow; ++row) {
            int first = firstColumn;
            int last = lastColumn;
            if (slants) {
                const double y0 = box_.min.y + row * rowHeight_ - margin_;
                const double xa = piece.a.x + (y0 - piece.a.y) * slope;
                const double xb = piece.a.x + (y0 + rowHeight_ + 2.0 * margin_ - piece.a.y) * slope;
                first = std::max(first, columnOf(std::min(xa, xb) - margin_));
                last = std::min(last, columnOf(std::max(xa, xb) + margin_));
            }
            const std::size_t start = static_cast<std::size_t>(row) * static_cast<std::size_t>(size_);
            for (int column = first; column <= last; ++column) use(start + static_cast<std::size_t>(column));
        }
    }
    int rowOf(double y) const { return cellAt((y - box_.min.y) * rows_); }
    int columnOf(double x) const { return cellAt((x - box_.min.x) * columns_); }
    /// Also of what is no number.
    int cellAt(double v) const { return v > 0.0 ? static_cast<int>(std::min(v, size_ - 1.0)) : 0; }

    Bounds2 box_;
    double margin_ = 0.0;
    double columns_ = 0.0;  ///< cells to a drawing unit
    double rows_ = 0.0;
    double rowHeight_ = 0.0;
    int size_ = 1;
    std::vector<std::uint32_t> starts_{0, 0};  ///< by cell: where its items begin
    std::vector<std::uint32_t> items_;
};

/// Numbers points that lie within a tolerance of each other alike.
class NodeTable {
public:
    void setTolerance(double tolerance) { tolerance_ = std::max(tolerance, 1e-300); }
    int at(const Vector2& p);
    const Vector2& point(int node) const { return points_[static_cast<std::size_t>(node)]; }

private:
    /// Cells are wide against the tolerance: mostly a point has one to look at.
    std::int64_t cell(double v) const {
        return static_cast<std::int64_t>(std::clamp(std::floor(v / (8.0 * tolerance_)), -9e18, 9e18));
    }
    std::size_t slot(std::int64_t x, std::int64_t y) const {
        std::uint64_t key = static_cast<std::uint64_t>(x) * 0x9E3779B97F4A7C15ULL ^
                            static_cast<std::uint64_t>(y) * 0xC2B2AE3D27D4EB4FULL;
        key ^= key >> 32;
        return static_cast<std::size_t>(key) & (first_.size() - 1);
    }
    void grow();

    double tolerance_ = 1e-9;
    std::vector<Vector2> points_;
    std::vector<int> next_;                              ///< by node: the next one of its list; -1: none
    std::vector<int> first_ = std::vector<int>(64, -1);  ///< heads of the lists; a power of two of them
};

}  // namespace kova::math
