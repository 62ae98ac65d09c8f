#pragma once

#include <string>
#include <vector>

#include "engine/model/entity.hpp"
#include "engine/model/outline.hpp"
#include "engine/model/records.hpp"

namespace kova::engine {

/// Keeps every call that an emission makes, with its style.
class ShapeSink final : public OutlineSink {
public:
    using OutlineSink::fill;
    using OutlineSink::stroke;

    struct Shape {
        enum class Kind { Stroke, Fill, Text, Pattern, PushClip, PopClip };
        Kind kind;
        OutlineStyle style;
        Path path;
        std::string text;
        bool background = false;
        bool inverted = false;
        std::vector<HatchFamily> families;
        std::string gradient;
        Color from;
        Color to;

        math::Bounds2 box() const { return pathBounds(path); }
    };
    std::vector<Shape> shapes;
    std::vector<Name> hiddenLayers;
    math::Bounds2 window;  ///< empty: everything is wanted

    std::size_t count(Shape::Kind kind) const {
        return static_cast<std::size_t>(
            std::count_if(shapes.begin(), shapes.end(), [&](const Shape& s) { return s.kind == kind; }));
    }

    void stroke(PathView path, const OutlineStyle& style, const StrokeOptions&) override {
        add(Shape::Kind::Stroke, style, path);
    }
    void fill(PathView rings, const OutlineStyle& style, const FillOptions& options) override {
        Shape& s = add(Shape::Kind::Fill, style, rings);
        s.background = options.background;
        if (options.gradient == nullptr) return;
        s.gradient = options.gradient->name;
        s.from = options.gradient->from;
        s.to = options.gradient->to;
    }
    void text(const TextRun& run, const OutlineStyle& style) override {
        add(Shape::Kind::Text, style, {}).text = std::string(run.text);
    }
    void pattern(PathView rings, std::span<const HatchFamily> families, const OutlineStyle& style) override {
        add(Shape::Kind::Pattern, style, rings).families.assign(families.begin(), families.end());
    }
    bool wants(const math::Bounds2& extents) const override { return window.is_empty() || window.intersects(extents); }
    bool wantsLayer(Name layer) const override {
        return std::find(hiddenLayers.begin(), hiddenLayers.end(), layer) == hiddenLayers.end();
    }
    void pushClip(PathView path, bool inverted) override { add(Shape::Kind::PushClip, {}, path).inverted = inverted; }
    void popClip() override { add(Shape::Kind::PopClip, {}, {}); }

private:
    Shape& add(Shape::Kind kind, const OutlineStyle& style, PathView path) {
        Shape& s = shapes.emplace_back();
        s.kind = kind;
        s.style = style;
        s.path.append(path);
        return s;
    }
};

/// What an entity emits in its own style.
inline ShapeSink shapesOf(const Entity& entity) {
    ShapeSink sink;
    entity.emit(sink, outlineStyle(entity));
    return sink;
}

}  // namespace kova::engine
