#pragma once

#include <span>
#include <vector>

#include "engine/model/drawing.hpp"
#include "engine/model/outline.hpp"

namespace kova::cmd {

/// A part of the drawing plane that shapes are judged by: a box, a polygon (even-odd where it crosses itself) or an
/// open fence. Edges belong to it, within a tolerance that grows with the coordinates.
class SelectionRegion {
public:
    static SelectionRegion box(const math::Vector2& a, const math::Vector2& b);
    static SelectionRegion polygon(std::span<const math::Vector2> points);
    static SelectionRegion fence(std::span<const math::Vector2> points);

    const math::Bounds2& bounds() const { return bounds_; }
    bool isBox() const { return kind_ == Kind::Box; }
    bool isFence() const { return kind_ == Kind::Fence; }
    double tolerance() const { return tolerance_; }
    bool contains(const math::Vector2& p) const;
    std::span<const math::Vector2> points() const { return points_; }
    std::size_t edgeCount() const { return isFence() ? points_.size() - 1 : points_.size(); }
    const math::Vector2& edgeStart(std::size_t i) const { return points_[i]; }
    const math::Vector2& edgeEnd(std::size_t i) const { return points_[i + 1 < points_.size() ? i + 1 : 0]; }

private:
    enum class Kind { Box, Polygon, Fence };
    SelectionRegion(Kind kind, std::span<const math::Vector2> points);

    Kind kind_;
    std::vector<math::Vector2> points_;
    math::Bounds2 bounds_;
    double tolerance_;
};

/// Judges the shape that an entity emits: lines, arcs and curves exactly, wide lines and fills as areas, texts by
/// their boxes, masks and pictures by their frames, all within the clips in force.
class ShapeTest final : public engine::OutlineSink {
public:
    enum class Mode {
        Inside,  ///< all of the shape lies in the region
        Touches  ///< some of it does
    };
    ShapeTest(const engine::Drawing& drawing, const SelectionRegion& region, Mode mode)
        : drawing_(drawing), region_(region), mode_(mode) {}

    /// An entity without any shape passes neither test.
    bool passes(const engine::Entity& entity);

    /// What has been fed by hand since the last passes() touches the region.
    bool touched() const { return touched_; }

    using OutlineSink::fill;
    using OutlineSink::stroke;
    void stroke(engine::PathView path, const engine::OutlineStyle& style,
                const engine::StrokeOptions& options) override;
    void fill(engine::PathView rings, const engine::OutlineStyle& style, const engine::FillOptions& options) override;
    void text(const engine::TextRun& run, const engine::OutlineStyle& style) override;
    void unbounded(const math::Vector2& base, const math::Vector2& direction, bool bothWays,
                   const engine::OutlineStyle& style) override;
    void pattern(engine::PathView rings, std::span<const engine::HatchFamily> families,
                 const engine::OutlineStyle& style) override;
    void line(const math::Vector2& a, const math::Vector2& b, const engine::OutlineStyle& style) override;
    bool wants(const math::Bounds2& extents) const override;
    bool wantsLayer(engine::Name layer) const override;
    void pushClip(engine::PathView path, bool inverted) override;
    void popClip() override;

private:
    struct Clip {
        engine::Path path;
        bool inverted = false;
        std::vector<std::vector<math::Vector2>> edges;
    };

    bool decided() const { return outside_ || touched_; }
    void judge(bool inside);
    void testElement(const engine::PathElement& e, const math::Vector2& from);
    void testPieces(const engine::PathElement& e, const math::Vector2& from);
    void testArea(engine::PathView rings, bool evenOdd);
    void testWide(const engine::PathElement& e, const math::Vector2& from, const math::Vector2& widths);
    bool shown(const math::Vector2& p) const;

    const engine::Drawing& drawing_;
    const SelectionRegion& region_;
    Mode mode_;
    std::vector<Clip> clips_;
    std::vector<double> cuts_;
    bool any_ = false;
    bool outside_ = false;  ///< Inside: some of the shape lies without
    bool touched_ = false;  ///< Touches: some of it lies within
};

}  // namespace kova::cmd
