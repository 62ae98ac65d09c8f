#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <vector>

#include "engine/curves/edit_curve.hpp"
#include "engine/model/outline.hpp"
#include "math/curves/curves.hpp"

namespace kova::engine {

/// Kinds of points that object snaps find, as bits of a set.
using SnapKinds = std::uint32_t;
namespace snap {
inline constexpr SnapKinds kEnd = 1;              ///< ends of lines, arcs, curves, segments and edges
inline constexpr SnapKinds kMiddle = 2;           ///< half-way along them
inline constexpr SnapKinds kCenter = 4;           ///< of circles, arcs and ellipses
inline constexpr SnapKinds kCentroid = 8;         ///< of a closed polyline or curve
inline constexpr SnapKinds kNode = 16;            ///< point objects, definition points of dimensions, places of texts
inline constexpr SnapKinds kQuadrant = 32;        ///< of circles and arcs by the axes; the ends of an ellipse's axes
inline constexpr SnapKinds kIntersection = 64;    ///< where line work meets in plan
inline constexpr SnapKinds kInsertion = 128;      ///< of texts, block references, attributes, images, shapes
inline constexpr SnapKinds kPerpendicular = 256;  ///< foot of the perpendicular from the base point
inline constexpr SnapKinds kTangent = 512;        ///< where the line from the base point touches
inline constexpr SnapKinds kNearest = 1024;       ///< any place on the line work
}  // namespace snap

/// Finds the point of some kinds that a pick means. Line work that passes within reach of the pick offers its points,
/// wherever they lie; points that lie within reach themselves count, too. Shapes are taken as they are emitted, those
/// within blocks included.
class SnapSearch final : private OutlineSink {
public:
    struct Found {
        math::Vector2 point;
        double closeness = 0.0;  ///< how well the pick names what the point belongs to; smaller is better
        double distance = 0.0;   ///< from the pick
    };

    /// `reach` in drawing units, above 0.
    SnapSearch(const math::Vector2& pick, double reach, SnapKinds kinds);
    /// Where perpendiculars and tangents come from; without it there are none.
    void setBase(const math::Vector2& base) { base_ = base; }
    /// Direction of the first quadrant of circles that stand in no block, radians (the x axis of the user's system).
    void setAxis(double angle) { axis_ = angle; }
    /// Tells of the layers within blocks whether they show.
    void setLayerTest(std::function<bool(Name)> shows) { showsLayer_ = std::move(shows); }

    /// The box that an entity must meet to be of use.
    const math::Bounds2& window() const { return window_; }
    void add(const Entity& entity);
    /// The best of all; nothing when there is none. Meetings are looked for here.
    std::optional<Found> result();
    /// True when a is the better answer to a pick with that reach.
    static bool isBetter(const Found& a, const Found& b, double reach);

private:
    struct Near {
        CurvePiece piece;
        double distance = 0.0;
        bool unbounded = false;
        bool ray = false;
    };

    using OutlineSink::fill;
    using OutlineSink::stroke;
    void stroke(PathView path, const OutlineStyle& style, const StrokeOptions& options) override;
    void fill(PathView rings, const OutlineStyle& style, const FillOptions& options) override;
    void text(const TextRun&, const OutlineStyle&) override {}
    void point(const math::Vector2& p, const OutlineStyle& style) override;
    void unbounded(const math::Vector2& base, const math::Vector2& direction, bool bothWays,
                   const OutlineStyle& style) override;
    bool wants(const math::Bounds2& extents) const override { return window_.intersects(extents); }
    bool wantsLayer(Name layer) const override { return !showsLayer_ || showsLayer_(layer); }

    bool wantsKind(SnapKinds kinds) const { return (kinds_ & kinds) != 0; }
    /// An end or node: the nearer to the pick the better.
    void offerPoint(const math::Vector2& p);
    /// A point of something that passes the pick at a distance.
    void offerOf(double distance, const math::Vector2& p);
    void takeLine(const math::Vector2& from, const PathElement& e);
    void takeArc(const math::Vector2& from, const PathElement& e);
    void takeCubics(PathView cubics, const math::Vector2& from);
    void takeCentroid(PathView figure, const math::Vector2& from);
    void takePlaces(const Entity& entity);
    void takeMeetings();

    math::Vector2 pick_;
    double reach_;
    SnapKinds kinds_;
    math::Bounds2 window_;
    std::optional<math::Vector2> base_;
    double axis_ = 0.0;
    bool inBlock_ = false;
    bool takeFills_ = false;
    std::function<bool(Name)> showsLayer_;
    std::vector<Near> near_;
    std::optional<Found> best_;
};

}  // namespace kova::engine
