#include "engine/model/outline.hpp"

#include "engine/entities/image.hpp"
#include "engine/model/entity.hpp"

namespace kova::engine {

namespace {

PathElement element(PathElement::Kind kind, const math::Vector2& p) {
    PathElement e;
    e.kind = kind;
    e.p = p;
    return e;
}

}  // namespace

void OutlineSink::image(const ImageEntity& image, const OutlineStyle& style) {
    StrokeOptions options;
    options.continuous = true;
    const std::vector<math::Vector2> frame = image.frame();
    stroke(Path().polygon(frame), style, options);
}

void OutlineSink::point(const math::Vector2& p, const OutlineStyle& style) { line(p, p, style); }

void OutlineSink::unbounded(const math::Vector2& /*base*/, const math::Vector2& /*direction*/, bool /*bothWays*/,
                            const OutlineStyle& /*style*/) {}

void OutlineSink::pattern(PathView /*rings*/, std::span<const HatchFamily> /*families*/,
                          const OutlineStyle& /*style*/) {}

void OutlineSink::line(const math::Vector2& a, const math::Vector2& b, const OutlineStyle& style) {
    const PathElement path[2] = {element(PathElement::Kind::Move, a), element(PathElement::Kind::Line, b)};
    stroke(path, style, StrokeOptions{});
}

void OutlineSink::viewport(const ViewportEntity& /*viewport*/, const OutlineStyle& /*style*/) {}

bool OutlineSink::wants(const math::Bounds2& /*extents*/) const { return true; }
bool OutlineSink::wantsLayer(Name /*layer*/) const { return true; }
void OutlineSink::pushClip(PathView /*path*/, bool /*inverted*/) {}
void OutlineSink::popClip() {}

OutlineStyle outlineStyle(const Entity& entity) {
    OutlineStyle style;
    style.color = entity.color;
    style.layer = entity.layer;
    style.linetype = entity.linetype;
    style.linetypeScale = entity.linetypeScale();
    style.lineweight = entity.lineweight;
    style.transparency = entity.transparency;
    return style;
}

OutlineStyle nestedStyle(const Entity& entity, const OutlineStyle& outer) {
    OutlineStyle style = outlineStyle(entity);
    const CommonNames& names = commonNames();
    if (style.layer == names.layerZero) style.layer = outer.layer;
    if (style.color.method == ColorMethod::ByBlock) style.color = outer.color;
    if (style.linetype == names.byBlock) style.linetype = outer.linetype;
    if (style.lineweight == -2) style.lineweight = outer.lineweight;
    return style;
}

}  // namespace kova::engine
