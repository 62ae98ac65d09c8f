#pragma once

#include <string>
#include <vector>

#include "engine/fonts/fonts.hpp"
#include "engine/model/outline.hpp"

namespace kova::engine {

/// Keeps what an entity emits.
class RecordingSink final : public OutlineSink {
public:
    using OutlineSink::fill;
    using OutlineSink::stroke;

    struct Text {
        std::string text;
        TextRun run;  ///< its text member is not valid
        OutlineStyle style;
        math::Bounds2 bounds;
    };
    void stroke(PathView path, const OutlineStyle&, const StrokeOptions&) override {
        strokes.append(path);
        strokeBox.expand(pathBounds(path));
    }
    void fill(PathView rings, const OutlineStyle& style, const FillOptions& options) override {
        fills.push_back({pathBounds(rings), style, options.background});
    }
    void text(const TextRun& run, const OutlineStyle& style) override {
        texts.push_back({std::string(run.text), run, style, textRunBounds(run)});
        textBox.expand(texts.back().bounds);
    }

    /// All texts, in order.
    std::string joined() const {
        std::string all;
        for (const Text& t : texts) all += (all.empty() ? "" : "|") + t.text;
        return all;
    }

    struct Fill {
        math::Bounds2 box;
        OutlineStyle style;
        bool background;
    };
    Path strokes;
    math::Bounds2 strokeBox;
    math::Bounds2 textBox;
    std::vector<Text> texts;
    std::vector<Fill> fills;
};

}  // namespace kova::engine
