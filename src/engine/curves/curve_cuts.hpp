#pragma once

#include <vector>

#include "engine/curves/edit_curve.hpp"
#include "engine/model/outline.hpp"

namespace kova::engine {

/// The line work of entities of any kind (block references with what they hold) as edges that curves are cut at.
class EdgeSink final : public OutlineSink {
public:
    struct Edge {
        CurvePiece piece;
        bool unbounded = false;  ///< both ways
        bool ray = false;        ///< from its start on
        bool extends = false;    ///< may count as longer than it is
    };

    /// Only what meets `window` is collected; an empty one takes all.
    explicit EdgeSink(const math::Bounds2& window = {}) : window_(window) {}
    using OutlineSink::fill;
    using OutlineSink::stroke;
    void add(const Entity& entity);
    void clear() { edges_.clear(); }
    const std::vector<Edge>& edges() const { return edges_; }

    void stroke(PathView path, const OutlineStyle& style, const StrokeOptions& options) override;
    void fill(PathView, const OutlineStyle&, const FillOptions&) override {}
    void text(const TextRun&, const OutlineStyle&) override {}
    void point(const math::Vector2&, const OutlineStyle&) override {}
    void unbounded(const math::Vector2& base, const math::Vector2& direction, bool bothWays,
                   const OutlineStyle& style) override;
    bool wants(const math::Bounds2& extents) const override {
        return window_.is_empty() || window_.intersects(extents);
    }

private:
    math::Bounds2 window_;
    std::vector<Edge> edges_;
};

/// True for the kinds whose line work can be an edge: curves, blocks, hatch-free outlines; no texts and dimensions.
bool canBeEdge(const Entity& entity);

/// Appends the places u at which a curve meets an edge, between u0 and u1 (which may lie beyond the ends where the
/// curve can be extended). `implied`: edges that can be extended count as unbounded or as whole circles.
void cutsWith(const EditCurve& curve, double u0, double u1, const EdgeSink::Edge& edge, bool implied,
              std::vector<double>& out);

/// The places at which the curve, extended over an open end, meets an edge: beyond end() for the far end, below
/// start() for the near one.
void extensionCuts(const EditCurve& curve, bool atEnd, const EdgeSink::Edge& edge, bool implied,
                   std::vector<double>& out);

/// What is left of a curve when the part between the cuts around `pick` goes: none, one or two entities. Nothing when
/// no cut bounds that part (a closed curve needs two). The cuts may come in any order.
std::optional<std::vector<std::unique_ptr<Entity>>> trimmedCurve(const EditCurve& curve, double pick,
                                                                 std::vector<double> cuts);

/// The curve lengthened to the nearest of the cuts that extensionCuts gave; null when there is none.
std::unique_ptr<Entity> extendedCurve(const EditCurve& curve, bool atEnd, const std::vector<double>& cuts);

}  // namespace kova::engine
