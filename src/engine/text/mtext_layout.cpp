#include "engine/text/mtext_layout.hpp"

#include "engine/text/mtext_layouter.hpp"
#include "engine/fonts/fonts.hpp"

namespace kova::engine {

using math::Bounds2;
using math::Matrix4;

void MTextColumns::describe(FieldVisitor& v) {
    v.integer("type", type);
    v.integer("count", count);
    v.length("width", width);
    v.length("gutter", gutter);
    v.boolean("autoHeight", autoHeight);
    v.boolean("flowReversed", flowReversed);
    v.numbers("heights", heights);
}

MTextLayout layoutMText(const MTextBlock& block, const Drawing* drawing) {
    MTextLayout layout;
    MTextLayouter(block, drawing, layout).run();
    if (layout.lineCount == 0) layout.box = Bounds2{{0.0, 0.0}, {0.0, 0.0}};
    return layout;
}

Bounds2 MTextLayout::ink(const Matrix4& matrix) const {
    Bounds2 bounds;
    for (const Piece& piece : pieces) {
        TextRun run = runOf(piece);
        run.origin = matrix.transform_point(run.origin);
        run.xAxis = matrix.transform_direction(run.xAxis);
        run.yAxis = matrix.transform_direction(run.yAxis);
        bounds.expand(textRunBounds(run));
    }
    for (const Rule& rule : rules) {
        bounds.expand(matrix.transform_point(rule.a));
        bounds.expand(matrix.transform_point(rule.b));
    }
    return bounds;
}

Matrix4 mtextMatrix(const MTextBlock& block) {
    const double rotation = std::isfinite(block.rotation) ? block.rotation : 0.0;
    const Matrix4 placed = Matrix4::translation(block.position) * Matrix4::rotation_z(rotation);
    return block.backward ? placed * Matrix4::scaling(-1.0, 1.0) : placed;
}

void emitMTextLayout(const MTextLayout& layout, const Matrix4& matrix, OutlineSink& sink, const OutlineStyle& style) {
    OutlineStyle colored = style;
    const auto styleFor = [&](const std::optional<Color>& color) -> const OutlineStyle& {
        if (!color || color->method == ColorMethod::ByBlock) return style;
        colored.color = *color;
        return colored;
    };
    for (const MTextLayout::Piece& piece : layout.pieces) {
        TextRun run = layout.runOf(piece);
        run.origin = matrix.transform_point(run.origin);
        run.xAxis = matrix.transform_direction(run.xAxis);
        run.yAxis = matrix.transform_direction(run.yAxis);
        sink.text(run, styleFor(piece.color));
    }
    StrokeOptions options;
    options.continuous = true;
    for (const MTextLayout::Rule& rule : layout.rules) {
        Path path;
        path.moveTo(matrix.transform_point(rule.a)).lineTo(matrix.transform_point(rule.b));
        sink.stroke(path, styleFor(rule.color), options);
    }
}

void emitMText(const MTextBlock& block, const Drawing* drawing, OutlineSink& sink, const OutlineStyle& style) {
    if (!block.position.is_finite()) return;
    emitMTextLayout(layoutMText(block, drawing), mtextMatrix(block), sink, style);
}

std::string plainText(std::string_view content) {
    std::string text;
    std::string plain;
    MTextParser parser(content, MTextFormat{}, text);
    for (;;) {
        switch (parser.next()) {
            case MTextParser::Token::End:
                return plain;
            case MTextParser::Token::Text:
                plain += std::string_view(text).substr(parser.offset(), parser.size());
                break;
            case MTextParser::Token::Tab:
                plain += '\t';
                break;
            case MTextParser::Token::Paragraph:
            case MTextParser::Token::ColumnBreak:
                plain += '\n';
                break;
            case MTextParser::Token::Stack:
                plain += std::string_view(text).substr(parser.topOffset(), parser.topSize());
                plain += parser.stackKind() == '^' ? ' ' : '/';
                plain += std::string_view(text).substr(parser.bottomOffset(), parser.bottomSize());
                break;
        }
    }
}

std::string mtextFromPlain(std::string_view text) {
    std::string content;
    content.reserve(text.size());
    for (std::size_t i = 0; i < text.size(); ++i) {
        const char c = text[i];
        if (c == '\\' || c == '{' || c == '}') {
            content += '\\';
            content += c;
        } else if (c == '\n') {
            content += "\\P";
        } else if (c != '\r') {
            content += c;
        }
    }
    return content;
}

}  // namespace kova::engine
