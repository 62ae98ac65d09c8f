#include "engine/fonts/fonts.hpp"

#include <QCoreApplication>

#include "engine/text/text_codes.hpp"
#include "engine/fonts/font_sources.hpp"

namespace kova::engine {

using math::Bounds2;
using math::Vector2;

namespace {

// Heights of the lines along text, in capital heights.
constexpr double kUnderline = -0.2;
constexpr double kOverline = 1.2;
constexpr double kStrikeThrough = 0.45;

/// Names of shape fonts that files give without an extension.
bool isShapeFontName(std::string_view base) {
    static constexpr std::string_view kNames[] = {
        "txt",      "monotxt",  "simplex", "complex",  "italic",  "italicc",  "italict",  "romans",   "romanc",
        "romand",   "romant",   "scripts", "scriptc",  "gothice", "gothicg",  "gothici",  "greeks",   "greekc",
        "cyrillic", "cyriltlc", "isocp",   "isocp2",   "isocp3",  "isoct",    "isoct2",   "isoct3",   "iso",
        "ltypeshp", "gdt",      "amgdt",   "gdt0",     "bigfont", "chineset", "extfont",  "extfont2", "gbcbig",
        "gbenor",   "gbeitc",   "whgdtxt", "whgtxt",   "whtgtxt", "whtmtxt",  "special",  "symap",    "syastro",
        "symath",   "symeteo",  "symusic", "standard", "dim",     "iges1001", "iges1002", "iges1003", "amdtsymbols"};
    return std::find(std::begin(kNames), std::end(kNames), base) != std::end(kNames);
}

struct FontKey {
    const void* name;
    bool bold;
    bool italic;
    bool operator==(const FontKey&) const = default;
};
struct FontKeyHash {
    std::size_t operator()(const FontKey& k) const {
        return std::hash<const void*>{}(k.name) * 4 + (k.bold ? 2U : 0U) + (k.italic ? 1U : 0U);
    }
};

const Font& findFont(const std::string& folded, bool bold, bool italic) {
    std::string base = folded.substr(folded.find_last_of("/\\") + 1);  // npos + 1 is 0
    const std::size_t comma = base.find(',');                          // "txt,bigfont"
    if (comma != std::string::npos) base.resize(comma);
    const auto endsWith = [&](std::string_view tail) {
        return base.size() > tail.size() && std::string_view(base).substr(base.size() - tail.size()) == tail;
    };
    const bool shape = endsWith(".shx") || endsWith(".shp") || endsWith(".pfb");
    if (shape) base.resize(base.size() - 4);
    if (base.empty() || shape || isShapeFontName(base)) {
        if (base.find("gdt") != std::string::npos) return gdtFont();
        return italic || base.compare(0, 6, "italic") == 0 ? slantedStrokeFont() : strokeFont();
    }
    // Never destroyed: font engines must not outlive the application object, and statics would.
    static auto& outlineFonts = *new std::vector<std::unique_ptr<Font>>;
    if (auto font = makeOutlineFont(base, bold, italic)) {
        outlineFonts.push_back(std::move(font));
        return *outlineFonts.back();
    }
    return italic ? slantedStrokeFont() : strokeFont();
}

/// Walks the characters of a run: at(character, glyph, offset of its origin in capital heights).
template <class At>
void walkCharacters(const TextRun& run, At at) {
    const Font& font = fontFor(run.font, run.bigFont, run.bold, run.italic);
    std::size_t i = 0;
    double pen = 0.0;
    if (!run.vertical) {
        while (i < run.text.size()) {
            const char32_t c = nextCodePoint(run.text, i);
            const Glyph& g = font.glyph(c);
            at(c, g, Vector2{pen, 0.0});
            pen += g.advance * run.tracking;
        }
        return;
    }
    double last = 0.0;
    while (i < run.text.size()) {
        const char32_t c = nextCodePoint(run.text, i);
        const Glyph& g = font.glyph(c);
        const bool mark = g.advance == 0.0;
        const double top = mark ? last : pen;
        const double x = g.box.is_empty() ? 0.0 : -g.box.center().x;
        at(c, g, Vector2{x, -top - 1.0});
        if (mark) continue;
        last = pen;
        pen += kVerticalPitch * run.tracking;
    }
}

/// The same without the characters themselves: at(glyph, offset).
template <class At>
void walk(const TextRun& run, At at) {
    walkCharacters(run, [&](char32_t, const Glyph& g, const Vector2& offset) { at(g, offset); });
}

bool isDrawable(const TextRun& run) {
    return !run.text.empty() && run.origin.is_finite() && run.xAxis.is_finite() && run.yAxis.is_finite() &&
           std::isfinite(run.tracking);
}

/// Visits the lines along the run: at(y) in capital heights. Vertical text has none.
template <class At>
void forLines(const TextRun& run, At at) {
    if (run.vertical) return;
    if (run.underline) at(kUnderline);
    if (run.overline) at(kOverline);
    if (run.strikeThrough) at(kStrikeThrough);
}

void emitGlyphsIn(const TextRun& run, const PathCallback& stroke, const PathCallback& fill) {
    Path placed;
    walk(run, [&](const Glyph& g, const Vector2& offset) {
        if (g.shape.empty()) return;
        placeGlyph(run, g, offset, placed);
        (g.filled ? fill : stroke)(placed);
    });
}

}  // namespace

void placeGlyph(const TextRun& run, const Glyph& glyph, const Vector2& offset, Path& out) {
    const Vector2 o = run.origin + run.xAxis * offset.x + run.yAxis * offset.y;
    math::Matrix4 m;
    m(0, 0) = run.xAxis.x;
    m(0, 1) = run.yAxis.x;
    m(0, 3) = o.x;
    m(1, 0) = run.xAxis.y;
    m(1, 1) = run.yAxis.y;
    m(1, 3) = o.y;
    out.clear();
    transformPath(glyph.shape, m, out);
}

void forEachGlyph(const TextRun& run, const std::function<void(char32_t, const Glyph&, const Vector2&)>& at) {
    if (isDrawable(run)) walkCharacters(run, at);
}

const Font& fontFor(Name font, Name, bool bold, bool italic) {
    // Without a GUI application there are no outline fonts; one may come up later, so answers are kept apart.
    static std::unordered_map<FontKey, const Font*, FontKeyHash> known[2];
    auto& cache = known[QCoreApplication::instance() != nullptr ? 1 : 0];
    const FontKey key{font.key(), bold, italic};
    const auto it = cache.find(key);
    if (it != cache.end()) return *it->second;
    const Font& found = findFont(font.folded(), bold, italic);
    cache.emplace(key, &found);
    return found;
}

double Font::advance(std::string_view text, double tracking) const {
    double pen = 0.0;
    for (std::size_t i = 0; i < text.size();) pen += glyph(nextCodePoint(text, i)).advance * tracking;
    return pen;
}

void Font::emitGlyphs(const TextRun& run, const PathCallback& stroke, const PathCallback& fill) const {
    if (isDrawable(run)) emitGlyphsIn(run, stroke, fill);
}

double textAdvance(const TextRun& run) {
    double pen = 0.0;
    walk(run, [&](const Glyph& g, const Vector2&) {
        if (!run.vertical)
            pen += g.advance * run.tracking;
        else if (g.advance != 0.0)
            pen += kVerticalPitch * run.tracking;
    });
    return pen;
}

TextSpan textSpan(const TextRun& run) {
    if (run.vertical) {
        const double length = textAdvance(run);
        return {0.0, std::max(0.0, length - kVerticalPitch * run.tracking + 1.0)};
    }
    TextSpan span;
    bool first = true;
    walk(run, [&](const Glyph& g, const Vector2& offset) {
        const bool blank = g.box.is_empty();
        if (first) span.start = blank ? 0.0 : std::min(g.box.min.x, g.advance);
        const double end = offset.x + (blank ? g.advance * run.tracking : g.box.max.x);
        span.end = first ? end : std::max(span.end, end);
        first = false;
    });
    return span;
}

Bounds2 textRunBounds(const TextRun& run) {
    Bounds2 bounds;
    if (!isDrawable(run)) return bounds;
    const auto toDrawing = [&](const Vector2& g) { return run.origin + run.xAxis * g.x + run.yAxis * g.y; };
    const auto expandBox = [&](const Bounds2& b, const Vector2& by) {
        bounds.expand(toDrawing(b.min + by));
        bounds.expand(toDrawing(b.max + by));
        bounds.expand(toDrawing(Vector2{b.min.x, b.max.y} + by));
        bounds.expand(toDrawing(Vector2{b.max.x, b.min.y} + by));
    };
    walk(run, [&](const Glyph& g, const Vector2& offset) {
        if (!g.box.is_empty()) expandBox(g.box, offset);
    });
    const TextSpan span = textSpan(run);
    forLines(run, [&](double y) {
        bounds.expand(toDrawing({span.start, y}));
        bounds.expand(toDrawing({span.end, y}));
    });
    if (bounds.is_empty()) {
        bounds.expand(run.origin);
        bounds.expand(toDrawing(run.vertical ? Vector2{0.0, -span.end} : Vector2{span.end, 0.0}));
    }
    return bounds;
}

void emitTextRun(const TextRun& run, const PathCallback& stroke, const PathCallback& fill) {
    if (!isDrawable(run)) return;
    emitGlyphsIn(run, stroke, fill);
    emitTextLines(run, stroke);
}

void emitTextLines(const TextRun& run, const PathCallback& stroke) {
    if ((!run.underline && !run.overline && !run.strikeThrough) || !isDrawable(run)) return;
    const TextSpan span = textSpan(run);
    forLines(run, [&](double y) {
        Path line;
        line.moveTo(run.origin + run.xAxis * span.start + run.yAxis * y);
        line.lineTo(run.origin + run.xAxis * span.end + run.yAxis * y);
        stroke(line);
    });
}

}  // namespace kova::engine
