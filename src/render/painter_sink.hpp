#pragma once

#include <QColor>
#include <QImage>
#include <QPainter>
#include <map>
#include <string>
#include <unordered_map>

#include "engine/model/drawing.hpp"
#include "engine/outline/hatch_lines.hpp"
#include "engine/model/outline.hpp"
#include "render/device_text.hpp"
#include "render/flatten.hpp"
#include "render/request.hpp"
#include "render/view.hpp"

namespace kova::render {

/// How layers look in the space being painted: the drawing's table under a viewport's frozen layers.
class LayerLook {
public:
    explicit LayerLook(const engine::Drawing& drawing, const engine::ViewportEntity* viewport = nullptr)
        : drawing_(drawing), viewport_(viewport) {}
    /// On, thawed, plotted, and not frozen in the viewport. A layer that the drawing does not know is shown.
    bool isShown(engine::Name layer) const;
    const engine::Layer& record(engine::Name layer) const;

private:
    struct Entry {
        const engine::Layer* layer;
        bool shown;
    };
    const Entry& entry(engine::Name layer) const;

    const engine::Drawing& drawing_;
    const engine::ViewportEntity* viewport_;
    mutable std::unordered_map<const void*, Entry> known_;
    mutable const void* lastKey_ = nullptr;
    mutable Entry last_{nullptr, true};
};

/// Paints what entities emit.
class PainterSink final : public engine::OutlineSink {
public:
    struct Settings {
        double dotsPerMillimetre = 150.0 / 25.4;
        double linetypeScale = 1.0;  ///< LTSCALE, and what paper space makes of it
        int defaultLineweight = 25;  ///< hundredths of a millimetre
        bool fill = true;            ///< FILLMODE
        int pointMode = 0;           ///< PDMODE
        double pointSize = 0.0;      ///< PDSIZE
        engine::Rgb background{255, 255, 255};
        bool textAsFrames = false;  ///< QTEXTMODE
        bool textFill = true;       ///< TEXTFILL
        engine::HatchLineLimits hatchLimits;
        std::string folder;         ///< of the drawing's file: where relative image paths start
        PlotLook look;
        TextOutput* textOutput = nullptr;  ///< not owned; null: letters are drawn as shapes
        /// The size of a dot that an eye can tell from its neighbour: 1 pixel, more on devices with finer dots.
        double dot = 1.0;
    };

    PainterSink(QPainter& painter, const engine::Drawing& drawing, const View& view, const LayerLook& layers,
                Settings settings);
    ~PainterSink() override;

    using OutlineSink::fill;
    using OutlineSink::stroke;
    void stroke(engine::PathView path, const engine::OutlineStyle& style,
                const engine::StrokeOptions& options) override;
    void fill(engine::PathView rings, const engine::OutlineStyle& style, const engine::FillOptions& options) override;
    void text(const engine::TextRun& run, const engine::OutlineStyle& style) override;
    void image(const engine::ImageEntity& image, const engine::OutlineStyle& style) override;
    void point(const math::Vector2& p, const engine::OutlineStyle& style) override;
    void unbounded(const math::Vector2& base, const math::Vector2& direction, bool bothWays,
                   const engine::OutlineStyle& style) override;
    void pattern(engine::PathView rings, std::span<const engine::HatchFamily> families,
                 const engine::OutlineStyle& style) override;
    void line(const math::Vector2& a, const math::Vector2& b, const engine::OutlineStyle& style) override;
    /// A new entity begins: what one entity may cost is counted from here.
    void beginEntity() {
        marks_ = 0;
        ink_ = 0.0;
    }
    bool wants(const math::Bounds2& extents) const override;
    bool wantsLayer(engine::Name layer) const override { return layers_.isShown(layer); }
    void pushClip(engine::PathView path, bool inverted) override;
    void popClip() override;

private:
    /// A style with everything looked up.
    struct Look {
        QColor color;
        double width = 1.0;                          ///< pixels, at least 1
        const engine::Linetype* linetype = nullptr;  ///< null: continuous
        double dashScale = 1.0;                      ///< pixels for a unit of the pattern
        double opacity = 1.0;
    };
    const Look& look(const engine::OutlineStyle& style);
    /// `dashes`: pieces of a dashed line, which keep their length; other thin lines cover the pixels of their ends.
    void usePen(const Look& look, bool dashes = false);
    void useOpacity(double opacity);
    /// Counts pixels of line; false when the entity has drawn more than any picture can show.
    bool takeInk(double length);
    void drawChain(std::span<const math::Vector2> points, bool closed);
    void drawFigure(Figure& figure, const Look& look, bool dashed, bool throughVertices);
    void drawWide(Figure& figure, const Look& look, const engine::StrokeOptions& options);
    void drawDashed(std::span<const math::Vector2> points, const Look& look, std::span<const double> pattern);
    void drawElement(const engine::Linetype& linetype, std::size_t entry, const math::Vector2& at, double angle,
                     const Look& look);
    const engine::Path& elementShape(const engine::LinetypeElement& element);
    /// `trace`: what is thinner than a pixel is drawn as a line, so that it does not get lost.
    void fillRings(engine::PathView rings, const QBrush& brush, bool evenOdd, bool trace = true);
    void drawTextBox(const engine::TextRun& run);
    void drawGlyph(const engine::Path& shape, bool filled, const Look& look);
    /// Leaves the run to the device that keeps text; false when its font cannot be kept.
    bool writeText(const engine::TextRun& run, const Look& look);
    /// A colour as it is printed.
    QColor ink(const engine::Color& color, const engine::Color& layerColor) const;
    const QImage& picture(const engine::ImageEntity& image);

    QPainter& painter_;
    const engine::Drawing& drawing_;
    View view_;
    const LayerLook& layers_;
    Settings settings_;
    Flattener flattener_;
    math::Bounds2 visible_;  ///< drawing coordinates
    math::Bounds2 guard_;    ///< pixels beyond which nothing is handed to the painter
    engine::OutlineStyle lastStyle_;
    Look look_;
    bool hasLook_ = false;
    QColor penColor_;
    double penWidth_ = -1.0;
    bool penForDashes_ = false;
    double opacity_ = 1.0;
    std::vector<QPointF> buffer_;
    std::vector<double> dashes_;
    std::map<std::string, QImage> pictures_;
    std::map<std::pair<const void*, std::string>, engine::Path> shapes_;  ///< of complex linetypes
    int clips_ = 0;
    double ink_ = 0.0;       ///< pixels of line drawn for the entity
    std::size_t marks_ = 0;  ///< points drawn for shapes and texts in the entity's linetype
};

}  // namespace kova::render
