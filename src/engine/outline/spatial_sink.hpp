#pragma once

#include "engine/model/entity.hpp"
#include "engine/model/outline.hpp"

namespace kova::engine {

/// Shows entities as they are seen from a direction: what they emit reaches the target in view coordinates. Kinds with
/// points in space show them there, flat kinds lie in their plane at their height and stand up by their thickness;
/// references of blocks show the space inside their blocks. Nothing is hidden by what stands before it.
class SpatialSink final : public OutlineSink {
public:
    /// `view` carries world to view coordinates (see worldToView).
    SpatialSink(OutlineSink& target, const math::Matrix4& view);

    void draw(const Entity& entity, const OutlineStyle& style) { drawIn(entity, space_, style); }
    /// An entity of a block whose reference is being drawn.
    void drawPlaced(const Entity& entity, const math::Matrix4& placement, const OutlineStyle& style) {
        drawIn(entity, space_ * placement, style);
    }

    // What an entity emits in plan: shown in the plane of the entity being drawn.
    using OutlineSink::fill;
    using OutlineSink::stroke;
    void stroke(PathView path, const OutlineStyle& style, const StrokeOptions& options) override;
    void fill(PathView rings, const OutlineStyle& style, const FillOptions& options) override;
    void text(const TextRun& run, const OutlineStyle& style) override;
    void image(const ImageEntity& image, const OutlineStyle& style) override;
    void point(const math::Vector2& p, const OutlineStyle& style) override;
    void unbounded(const math::Vector2& base, const math::Vector2& direction, bool bothWays,
                   const OutlineStyle& style) override;
    void pattern(PathView rings, std::span<const HatchFamily> families, const OutlineStyle& style) override;
    void line(const math::Vector2& a, const math::Vector2& b, const OutlineStyle& style) override;
    void viewport(const ViewportEntity& viewport, const OutlineStyle& style) override;
    bool wants(const math::Bounds2& extents) const override;
    bool wantsLayer(Name layer) const override;
    void pushClip(PathView path, bool inverted) override;
    void popClip() override;

private:
    void drawIn(const Entity& entity, const math::Matrix4& space, const OutlineStyle& style);
    /// Emits a flat entity in its plane, and above it by its thickness with the edges between.
    void drawFlat(const Entity& entity, const math::Matrix4& plane, double thickness, const OutlineStyle& style);
    void edge(const math::Vector3& a, const math::Vector3& b, const math::Matrix4& m, const OutlineStyle& style);

    OutlineSink& target_;
    math::Matrix4 space_;             ///< of the entities being drawn to view coordinates
    TransformSink* plane_ = nullptr;  ///< of the entity being drawn
};

/// Extents, in view coordinates, of what is seen of a space: shown entities on visible layers.
math::Bounds2 viewedExtents(const EntityList& space, const math::Matrix4& view);

}  // namespace kova::engine
