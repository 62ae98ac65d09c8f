#include "engine/entities/dimensions/dimension_layout.hpp"

#include "engine/model/drawing.hpp"
#include "engine/entities/dimensions/arrowheads.hpp"
#include "engine/entities/dimensions/dimension_builder.hpp"
#include "math/curves/curves.hpp"

namespace kova::engine {

using math::Vector2;

namespace {

/// Styles of the picture's parts: the dimension's own with what the dimension variables set.
class PartStyles {
public:
    PartStyles(const DimStyle& dim, const OutlineStyle& own) : dim_(dim), own_(own) {}

    OutlineStyle operator()(DimPart part) const {
        switch (part) {
            case DimPart::ExtLine1:
                return make(dim_.extLineColor, dim_.extLine1Linetype, dim_.extLineLineweight);
            case DimPart::ExtLine2:
                return make(dim_.extLineColor, dim_.extLine2Linetype, dim_.extLineLineweight);
            case DimPart::CenterMark:
                return make(dim_.extLineColor, commonNames().byBlock, dim_.extLineLineweight);
            case DimPart::Frame:
                return text();
            case DimPart::DimLine:
            case DimPart::Leader:
                break;
        }
        return make(dim_.dimLineColor, dim_.dimLineLinetype, dim_.dimLineLineweight);
    }
    OutlineStyle text() const { return make(dim_.textColor, commonNames().byBlock, -2); }
    Color resolved(const Color& c) const { return c.method == ColorMethod::ByBlock ? own_.color : c; }

private:
    OutlineStyle make(const Color& color, Name linetype, std::int32_t lineweight) const {
        OutlineStyle s = own_;
        s.color = resolved(color);
        if (!linetype.empty() && linetype != commonNames().byBlock) s.linetype = linetype;
        if (lineweight != -2) s.lineweight = lineweight;
        return s;
    }

    const DimStyle& dim_;
    const OutlineStyle& own_;
};

}  // namespace

std::array<Vector2, 4> DimensionPicture::textBox(double margin) const {
    const double w = textWidth / 2.0 + margin;
    const double h = textHeight / 2.0 + margin;
    const Vector2 x = math::unitAt(textRotation);
    const Vector2 y = x.perpendicular();
    return {textMiddle - x * w - y * h, textMiddle + x * w - y * h, textMiddle + x * w + y * h,
            textMiddle - x * w + y * h};
}

DimensionPicture layoutDimension(const DimensionEntity& dimension) {
    if (!dimensionIsFinite(dimension)) return {};
    DimensionBuilder b(dimension);
    switch (dimension.kind()) {
        case DimensionType::Angular2Line:
        case DimensionType::Angular3Point:
        case DimensionType::ArcLength:
            buildAngular(b);
            break;
        case DimensionType::Diameter:
        case DimensionType::Radius:
            buildRadial(b);
            break;
        case DimensionType::Ordinate:
        case DimensionType::OrdinateX:
            buildOrdinate(b);
            break;
        default:
            buildLinear(b);
            break;
    }
    b.finish();
    return std::move(b.picture);
}

void emitDimensionPicture(const DimensionPicture& picture, const Drawing* drawing, OutlineSink& sink,
                          const OutlineStyle& style) {
    const PartStyles styles(picture.style, style);
    if (picture.hasText && picture.style.textFill != 0) {
        const bool coloured = picture.style.textFill == 2;
        OutlineStyle fillStyle = styles.text();
        if (coloured) fillStyle.color = styles.resolved(picture.style.textFillColor);
        FillOptions options;
        options.background = !coloured;
        const double margin = std::abs(picture.style.textGap) * picture.scale;
        sink.fill(Path().polygon(picture.textBox(std::isfinite(margin) ? margin : 0.0)), fillStyle, options);
    }
    for (const DimensionPicture::Stroke& s : picture.strokes) {
        StrokeOptions options;
        options.continuous = s.part == DimPart::Frame;
        sink.stroke(s.path, styles(s.part), options);
    }
    const OutlineStyle arrowStyle = styles(DimPart::DimLine);
    for (const DimensionPicture::Arrow& a : picture.arrows)
        emitArrow(sink, arrowStyle, drawing, a.block, a.tip, a.direction, a.size);
    for (const DimensionPicture::Text& t : picture.texts) emitMTextLayout(t.layout, t.matrix, sink, styles.text());
}

}  // namespace kova::engine
