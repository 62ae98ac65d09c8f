#pragma once

#include <QColor>
#include <QPointF>
#include <QRawFont>
#include <QTransform>
#include <vector>

class QPainter;

namespace kova::render {

/// Characters of one installed font where a page wants them.
struct DeviceText {
    QRawFont font;
    std::vector<quint32> glyphs;       ///< numbers in the font
    std::vector<char32_t> characters;  ///< the same as code points
    std::vector<QPointF> positions;    ///< of the glyphs' origins, in the font's pixels, y down
    QTransform toDevice;               ///< from the font's pixels to the device's
    QColor color;
};

/// A device that keeps text as text (PDF, SVG); pictures of pixels have none.
class TextOutput {
public:
    virtual ~TextOutput() = default;
    virtual void write(QPainter& painter, const DeviceText& text) = 0;
};

/// Hands the glyphs to the painter: the PDF device embeds their font.
class GlyphRunOutput final : public TextOutput {
public:
    void write(QPainter& painter, const DeviceText& text) override;
};

}  // namespace kova::render
