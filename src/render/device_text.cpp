#include "render/device_text.hpp"

#include <QGlyphRun>
#include <QPainter>

#include "engine/fonts/fonts.hpp"
#include "render/painter_sink.hpp"

namespace kova::render {

using math::Vector2;

void GlyphRunOutput::write(QPainter& painter, const DeviceText& text) {
    QGlyphRun run;
    run.setRawFont(text.font);
    run.setGlyphIndexes(QList<quint32>(text.glyphs.begin(), text.glyphs.end()));
    run.setPositions(QList<QPointF>(text.positions.begin(), text.positions.end()));
    painter.save();
    painter.setPen(text.color);
    painter.setTransform(text.toDevice);
    painter.drawGlyphRun(QPointF(0.0, 0.0), run);
    painter.restore();
}

void PainterSink::drawGlyph(const engine::Path& shape, bool filled, const Look& look) {
    if (filled) {
        fillRings(shape, look.color, false, false);
        return;
    }
    flattener_.flatten(shape);
    for (std::size_t i = 0; i < flattener_.count(); ++i) drawChain(flattener_[i].points, flattener_[i].closed);
}

bool PainterSink::writeText(const engine::TextRun& run, const Look& look) {
    // Larger letters than this are rather shapes, and fonts measure in whole numbers.
    constexpr double kLargestLetter = 1e5;  // pixels
    const engine::Font& font = engine::fontFor(run.font, run.bigFont, run.bold, run.italic);
    const QRawFont* raw = font.rawFont();
    const Vector2 along = view_.mapDirection(run.xAxis);
    const Vector2 up = view_.mapDirection(run.yAxis);
    if (raw == nullptr || up.length() > kLargestLetter || along.length() > kLargestLetter) return false;
    const math::Bounds2 box = engine::textRunBounds(run);
    if (box.is_empty() || !box.intersects(visible_)) return true;

    const double capital = font.rawCapital();
    const Vector2 origin = view_.map(run.origin);
    DeviceText text;
    text.font = *raw;
    text.color = look.color;
    text.toDevice =
        QTransform(along.x / capital, along.y / capital, -up.x / capital, -up.y / capital, origin.x, origin.y);
    engine::Path placed;
    engine::forEachGlyph(run, [&](char32_t c, const engine::Glyph& glyph, const Vector2& offset) {
        if (const std::uint32_t index = c < 0x20 ? 0 : font.rawGlyph(c)) {
            text.glyphs.push_back(index);
            text.characters.push_back(c);
            text.positions.emplace_back(offset.x * capital, -offset.y * capital);
        } else if (!glyph.shape.empty()) {
            engine::placeGlyph(run, glyph, offset, placed);
            drawGlyph(placed, glyph.filled, look);
        }
    });
    if (!text.glyphs.empty()) settings_.textOutput->write(painter_, text);
    engine::emitTextLines(run, [&](engine::PathView path) {
        flattener_.flatten(path);
        for (std::size_t i = 0; i < flattener_.count(); ++i) drawChain(flattener_[i].points, flattener_[i].closed);
    });
    return true;
}

}  // namespace kova::render
