#pragma once

#include <span>
#include <string>
#include <string_view>

#include "engine/model/color.hpp"
#include "engine/model/name.hpp"
#include "math/curves/path.hpp"
#include "math/bounds2.hpp"
#include "math/matrix4.hpp"

namespace kova::engine {

class Entity;
class BlockReferenceEntity;
class ViewportEntity;
class ImageEntity;
struct HatchFamily;

/// How a piece of shape is drawn. ByLayer values are left to the consumer (a viewport may override layers);
/// ByBlock values and layer "0" inside a block are already replaced by what the block reference gives.
struct OutlineStyle {
    Color color;
    Name layer;
    Name linetype;
    double linetypeScale = 1.0;
    int lineweight = -1;   ///< hundredths of a millimetre; -1 ByLayer, -2 ByBlock, -3 default
    int transparency = 0;  ///< percent; 0 ByLayer
};

struct StrokeOptions {
    /// Start and end width of every drawn element (Line, Arc, Cubic, and the closing line), in drawing units;
    /// empty: a line without width. Every element but Move counts, a closing line without length too.
    std::span<const math::Vector2> widths;
    bool patternThroughVertices = false;  ///< the dashes run on through vertices (LTGEN, curves)
    bool continuous = false;              ///< never dashed (arrows, frames)
};

/// A two-colour gradient; the consumer interpolates from `from` to `to`.
struct GradientFill {
    std::string name;    ///< "LINEAR", "CYLINDER", "INVCYLINDER", "SPHERICAL", "INVSPHERICAL", ...
    double angle = 0.0;  ///< radians
    double shift = 0.0;  ///< 0 centred, 1 shifted up left
    Color from;
    Color to;
};

struct FillOptions {
    const GradientFill* gradient = nullptr;
    bool evenOdd = true;
    bool background = false;  ///< covers what lies below with the paper's colour (wipeout, text mask)
};

/// One line of text in one font. A glyph point (gx, gy), in capital-letter heights from the start of the
/// baseline, lies at origin + gx * xAxis + gy * yAxis; width factor, slant, rotation and mirroring are in the axes.
struct TextRun {
    std::string_view text;  ///< UTF-8, all codes already resolved
    Name font;              ///< font file ("txt.shx", "arial.ttf") or family
    Name bigFont;
    bool bold = false;
    bool italic = false;
    bool underline = false;
    bool overline = false;
    bool strikeThrough = false;
    bool vertical = false;
    double tracking = 1.0;  ///< factor on the advance between characters
    math::Vector2 origin;
    math::Vector2 xAxis{1, 0};
    math::Vector2 yAxis{0, 1};
};

/// Receives an entity's shape in drawing coordinates. Painting, extents, picking, exploding and plotting are
/// consumers of the same emission.
class OutlineSink {
public:
    virtual ~OutlineSink() = default;

    virtual void stroke(PathView path, const OutlineStyle& style, const StrokeOptions& options) = 0;
    virtual void fill(PathView rings, const OutlineStyle& style, const FillOptions& options) = 0;
    virtual void text(const TextRun& run, const OutlineStyle& style) = 0;
    /// An image's picture and frame. Default: strokes the frame.
    virtual void image(const ImageEntity& image, const OutlineStyle& style);
    /// A point entity; its symbol is the consumer's (PDMODE). Default: a stroked path of no length.
    virtual void point(const math::Vector2& p, const OutlineStyle& style);
    /// A ray or (both ways) a construction line. `direction` has length 1. Default: nothing.
    virtual void unbounded(const math::Vector2& base, const math::Vector2& direction, bool bothWays,
                           const OutlineStyle& style);
    /// An area filled by families of lines. Default: nothing (the boundary is not part of a hatch's shape).
    virtual void pattern(PathView rings, std::span<const HatchFamily> families, const OutlineStyle& style);
    /// A straight line; overridden where plain lines must be fast.
    virtual void line(const math::Vector2& a, const math::Vector2& b, const OutlineStyle& style);
    /// A viewport of a layout: its frame is stroked by the entity; its view of model space is the consumer's.
    virtual void viewport(const ViewportEntity& viewport, const OutlineStyle& style);

    /// False when nothing within these extents (drawing coordinates) is wanted.
    virtual bool wants(const math::Bounds2& extents) const;
    /// False when shape on this layer is not wanted (off, frozen): asked for the entities inside blocks.
    virtual bool wantsLayer(Name layer) const;
    /// Everything up to popClip lies within (or, inverted, outside) the closed path.
    virtual void pushClip(PathView path, bool inverted);
    virtual void popClip();

    void stroke(PathView path, const OutlineStyle& style) { stroke(path, style, StrokeOptions{}); }
    void fill(PathView rings, const OutlineStyle& style) { fill(rings, style, FillOptions{}); }
};

/// Passes everything on under an affine map: how a block reference places its block.
class TransformSink final : public OutlineSink {
public:
    TransformSink(OutlineSink& target, const math::Matrix4& matrix);
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
    OutlineSink& target_;
    math::Matrix4 matrix_;
    double widthScale_;
    Path scratch_;
};

/// The style an entity's own properties give.
OutlineStyle outlineStyle(const Entity& entity);
/// The style of an entity inside a block whose reference is drawn in style `outer`: ByBlock values take the
/// reference's, layer "0" becomes the reference's layer.
OutlineStyle nestedStyle(const Entity& entity, const OutlineStyle& outer);

/// Extents of a path whose elements have widths (see StrokeOptions::widths); without joins between elements.
math::Bounds2 strokeBounds(PathView path, std::span<const math::Vector2> widths);
/// Extents of everything an entity emits (texts by their font metrics; unbounded lines by their base point).
math::Bounds2 outlineBounds(const Entity& entity);
/// The nearest point of an entity's emitted shape to p (inside a fill: p itself); p for an empty shape.
math::Vector2 nearestOnOutline(const Entity& entity, const math::Vector2& p);

}  // namespace kova::engine
