#pragma once

#include <memory>
#include <vector>

#include "engine/model/drawing.hpp"
#include "engine/text/mtext_layout.hpp"
#include "engine/model/outline.hpp"

namespace kova::cmd {

using EntityParts = std::vector<std::unique_ptr<engine::Entity>>;

/// Makes plain entities of a shape that is emitted: strokes become lines, arcs, ellipses and splines (polylines where
/// they are wide), filled areas become 2-D solids or solid hatches, lines of patterns become lines and points, texts
/// become texts. They look as the styles say and lie in the plane z = elevation.
class PartsSink final : public engine::OutlineSink {
public:
    /// `drawing` names fonts and text styles. Texts take `textStyle` where its font is theirs. When `takeTexts` is
    /// false texts are left out; addParagraphs puts what they say in their place.
    PartsSink(const engine::Drawing* drawing, double elevation, engine::Name textStyle, bool takeTexts = true)
        : drawing_(drawing), elevation_(elevation), textStyle_(textStyle), takeTexts_(takeTexts) {}

    using OutlineSink::fill;
    using OutlineSink::stroke;
    void stroke(engine::PathView path, const engine::OutlineStyle& style,
                const engine::StrokeOptions& options) override;
    void fill(engine::PathView rings, const engine::OutlineStyle& style, const engine::FillOptions& options) override;
    void text(const engine::TextRun& run, const engine::OutlineStyle& style) override;
    void point(const math::Vector2& p, const engine::OutlineStyle& style) override;
    void unbounded(const math::Vector2& base, const math::Vector2& direction, bool bothWays,
                   const engine::OutlineStyle& style) override;
    void pattern(engine::PathView rings, std::span<const engine::HatchFamily> families,
                 const engine::OutlineStyle& style) override;
    void line(const math::Vector2& a, const math::Vector2& b, const engine::OutlineStyle& style) override;

    /// How the first text was to look, taken or left out; nothing when there was none.
    const std::optional<engine::OutlineStyle>& textOutline() const { return textOutline_; }
    /// Adds a paragraph text; nothing for an empty one.
    void addParagraphs(const engine::MTextBlock& block, const engine::OutlineStyle& style);
    /// Adds an entity that is at hand, as it is.
    void add(std::unique_ptr<engine::Entity> entity) { parts_.push_back(std::move(entity)); }
    /// Adds an entity in a style.
    void add(std::unique_ptr<engine::Entity> entity, const engine::OutlineStyle& style);
    /// The pattern of a hatch was too dense to be made of lines.
    bool overflowed() const { return overflow_; }
    EntityParts take() { return std::move(parts_); }

private:
    void addElement(const engine::PathElement& e, const math::Vector2& from, const engine::OutlineStyle& style);
    void addWide(engine::PathView path, const engine::OutlineStyle& style, std::span<const math::Vector2> widths);
    void addCubics(engine::PathView cubics, const math::Vector2& from, const engine::OutlineStyle& style);

    const engine::Drawing* drawing_;
    double elevation_;
    engine::Name textStyle_;
    bool takeTexts_;
    bool overflow_ = false;
    std::optional<engine::OutlineStyle> textOutline_;
    EntityParts parts_;
};

}  // namespace kova::cmd
