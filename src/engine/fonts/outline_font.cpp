#include <QFont>
#include <QFontDatabase>
#include <QFontInfo>
#include <QGlyphRun>
#include <QGuiApplication>
#include <QPainterPath>
#include <QRawFont>
#include <QTextLayout>

#include "engine/fonts/font_sources.hpp"

namespace kova::engine {

namespace {

using math::Vector2;

// Outlines are taken at this size, so that hinting and rounding play no part.
constexpr int kPixelSize = 1024;

bool haveFontSystem() {
    static bool found = false;  // asking is slow, and the fonts do not go away again
    if (!found)
        found = qobject_cast<QGuiApplication*>(QCoreApplication::instance()) != nullptr &&
                !QFontDatabase::families().isEmpty();
    return found;
}

/// File names of widespread fonts and their families; letters behind the stem tell bold and italic.
struct FileName {
    std::string_view stem;
    std::string_view family;
};
constexpr FileName kFileNames[] = {
    {"arial", "Arial"},
    {"arialn", "Arial Narrow"},
    {"ariblk", "Arial Black"},
    {"times", "Times New Roman"},
    {"cour", "Courier New"},
    {"verdana", "Verdana"},
    {"tahoma", "Tahoma"},
    {"calibri", "Calibri"},
    {"cambria", "Cambria"},
    {"consola", "Consolas"},
    {"georgia", "Georgia"},
    {"comic", "Comic Sans MS"},
    {"trebuc", "Trebuchet MS"},
    {"segoeui", "Segoe UI"},
    {"micross", "Microsoft Sans Serif"},
    {"pala", "Palatino Linotype"},
    {"gara", "Garamond"},
    {"isocpeur", "ISOCPEUR"},
    {"isocteur", "ISOCTEUR"},
    {"swissl", "Swis721 Lt BT"},
    {"swissek", "Swis721 BlkEx BT"},
    {"dejavusans", "DejaVu Sans"},
    {"dejavuserif", "DejaVu Serif"},
    {"dejavusansmono", "DejaVu Sans Mono"},
    {"liberationsans", "Liberation Sans"},
    {"liberationserif", "Liberation Serif"},
    {"liberationmono", "Liberation Mono"},
    {"simsun", "SimSun"},
    {"simhei", "SimHei"},
    {"msyh", "Microsoft YaHei"},
    {"msgothic", "MS Gothic"},
    {"malgun", "Malgun Gothic"},
};

struct Wanted {
    QString family;
    bool bold = false;
    bool italic = false;
};

/// What a font name (folded, without folder) asks for.
Wanted wantedFont(std::string name) {
    Wanted wanted;
    bool file = false;
    for (const std::string_view ending : {".ttf", ".otf", ".ttc"}) {
        if (name.size() > 4 && std::string_view(name).substr(name.size() - 4) == ending) {
            name.resize(name.size() - 4);
            file = true;
            break;
        }
    }
    // "dejavusans-bold", "liberationsans-regular"
    const std::size_t dash = name.rfind('-');
    if (dash != std::string::npos && dash > 0) {
        const std::string_view tail = std::string_view(name).substr(dash + 1);
        const bool bold = tail.find("bold") != std::string_view::npos;
        const bool italic =
            tail.find("italic") != std::string_view::npos || tail.find("oblique") != std::string_view::npos;
        if (bold || italic || tail == "regular" || tail == "book") {
            wanted.bold = bold;
            wanted.italic = italic;
            name.resize(dash);
        }
    }
    wanted.family = QString::fromStdString(name);
    if (!file && QFontDatabase::hasFamily(wanted.family)) return wanted;
    for (const FileName& f : kFileNames) {
        if (name.compare(0, f.stem.size(), f.stem) != 0) continue;
        const std::string_view tail = std::string_view(name).substr(f.stem.size());
        const bool bold = tail == "b" || tail == "bd" || tail == "z" || tail == "bi";
        const bool italic = tail == "i" || tail == "z" || tail == "bi";
        if (!tail.empty() && !bold && !italic) continue;
        wanted.family = QString::fromUtf8(f.family.data(), static_cast<qsizetype>(f.family.size()));
        wanted.bold = wanted.bold || bold;
        wanted.italic = wanted.italic || italic;
        break;
    }
    return wanted;
}

/// The family itself when it is installed, else the nearest that is.
QString installedFamily(const QString& family) {
    if (QFontDatabase::hasFamily(family)) return family;
    const QString name = family.toLower();
    const auto has = [&](std::initializer_list<const char*> words) {
        return std::any_of(words.begin(), words.end(), [&](const char* w) { return name.contains(QLatin1String(w)); });
    };
    QStringList candidates;
    if (has({"cour", "mono", "consol", "typewriter", "fixed", "lucida con"}))
        candidates = {"Liberation Mono", "DejaVu Sans Mono", "Noto Sans Mono", "FreeMono"};
    else if (!has({"sans"}) && has({"times", "serif", "roman", "georgia", "garamond", "cambria", "book", "palatino",
                                    "century", "schoolbook", "bodoni", "simsun"}))
        candidates = {"Liberation Serif", "DejaVu Serif", "Noto Serif", "FreeSerif"};
    else
        candidates = {"Liberation Sans", "DejaVu Sans", "Noto Sans", "FreeSans"};
    for (const QString& c : candidates)
        if (QFontDatabase::hasFamily(c)) return c;
    return {};
}

/// The outline of a glyph in capital heights, y up.
void appendOutline(const QPainterPath& path, double scale, Glyph& g) {
    const auto at = [&](int i) {
        const QPainterPath::Element e = path.elementAt(i);
        return Vector2{e.x * scale, -e.y * scale};
    };
    bool open = false;
    for (int i = 0; i < path.elementCount(); ++i) {
        switch (path.elementAt(i).type) {
            case QPainterPath::MoveToElement:
                if (open) g.shape.close();
                g.shape.moveTo(at(i));
                open = true;
                break;
            case QPainterPath::LineToElement:
                g.shape.lineTo(at(i));
                break;
            case QPainterPath::CurveToElement:
                if (i + 2 < path.elementCount()) g.shape.cubicTo(at(i), at(i + 1), at(i + 2));
                i += 2;
                break;
            case QPainterPath::CurveToDataElement:
                break;
        }
    }
    if (open) g.shape.close();
    const QRectF box = path.boundingRect();
    g.box.expand(Vector2{box.left() * scale, -box.top() * scale});
    g.box.expand(Vector2{box.right() * scale, -box.bottom() * scale});
    g.filled = true;
}

/// The height of the capital H in pixels at the raw font's size; 0 when there is none.
double capitalHeight(const QRawFont& raw) {
    const auto glyphs = raw.glyphIndexesForString(QStringLiteral("H"));
    if (!glyphs.isEmpty() && glyphs[0] != 0) {
        const double height = -raw.pathForGlyph(glyphs[0]).boundingRect().top();
        if (height > 0.0) return height;
    }
    return raw.capHeight();
}

class OutlineFont final : public Font {
public:
    OutlineFont(QRawFont raw, double capital, bool italic)
        : raw_(std::move(raw)), italic_(italic), capital_(capital), scale_(1.0 / capital) {
        ascent_ = std::max(1.0, raw_.ascent() * scale_);
        descent_ = std::max(0.0, raw_.descent() * scale_);
    }

    const Glyph& glyph(char32_t c) const override {
        if (c < ascii_.size()) {
            if (ascii_[c] == nullptr) ascii_[c] = &make(c);
            return *ascii_[c];
        }
        const auto it = glyphs_.find(c);
        return it != glyphs_.end() ? it->second : make(c);
    }
    double ascent() const override { return ascent_; }
    double descent() const override { return descent_; }
    const QRawFont* rawFont() const override { return &raw_; }
    double rawCapital() const override { return capital_; }
    std::uint32_t rawGlyph(char32_t c) const override {
        const auto indexes = raw_.glyphIndexesForString(QString::fromUcs4(&c, 1));
        return indexes.isEmpty() ? 0 : indexes[0];
    }

private:
    bool take(char32_t c, Glyph& g) const {
        const auto indexes = raw_.glyphIndexesForString(QString::fromUcs4(&c, 1));
        if (indexes.isEmpty() || indexes[0] == 0) return false;
        const QPainterPath path = raw_.pathForGlyph(indexes[0]);
        if (path.isEmpty() && !isBlank(c)) return false;
        const auto advances = raw_.advancesForGlyphIndexes(indexes);
        g.advance = advances.isEmpty() ? 0.0 : advances[0].x() * scale_;
        if (!path.isEmpty() && !isBlank(c)) appendOutline(path, scale_, g);
        return true;
    }

    const Glyph& make(char32_t c) const {
        Glyph& g = glyphs_[c];
        if (c == '\t') {
            g.advance = 4.0 * glyph(' ').advance;
            return g;
        }
        if (c < 0x20) return g;
        if (take(c, g)) return g;
        // The diameter sign is rare in fonts; letters that look alike are not.
        if (c == 0x2300 && (take(0x2205, g) || take(0xD8, g))) return g;
        g = (italic_ ? slantedStrokeFont() : strokeFont()).glyph(c);
        return g;
    }

    QRawFont raw_;
    bool italic_;
    double capital_;
    double scale_;
    double ascent_ = 1.0;
    double descent_ = 0.3;
    mutable std::unordered_map<char32_t, Glyph> glyphs_;  // nodes keep their addresses
    mutable std::array<const Glyph*, 128> ascii_{};
};

}  // namespace

std::unique_ptr<Font> makeOutlineFont(const std::string& name, bool bold, bool italic) {
    if (!haveFontSystem()) return nullptr;
    const Wanted wanted = wantedFont(name);
    QFont font;
    const QString family = installedFamily(wanted.family);
    if (!family.isEmpty()) font.setFamily(family);
    font.setStyleHint(QFont::SansSerif, QFont::PreferOutline);
    font.setPixelSize(kPixelSize);
    font.setBold(bold || wanted.bold);
    font.setItalic(italic || wanted.italic);
    font.setHintingPreference(QFont::PreferNoHinting);
    QRawFont raw = QRawFont::fromFont(font);
    if (!raw.isValid()) return nullptr;
    const double capital = capitalHeight(raw);
    if (!(capital > 0.0)) return nullptr;
    return std::make_unique<OutlineFont>(std::move(raw), capital, italic || wanted.italic);
}

bool systemGlyph(char32_t c, Glyph& out) {
    if (!haveFontSystem()) return false;
    // The text layout looks through all installed fonts.
    QFont font;
    font.setStyleHint(QFont::SansSerif, QFont::PreferOutline);
    font.setPixelSize(kPixelSize);
    font.setHintingPreference(QFont::PreferNoHinting);
    QTextLayout layout(QString::fromUcs4(&c, 1), font);
    layout.beginLayout();
    layout.createLine();
    layout.endLayout();
    for (const QGlyphRun& run : layout.glyphRuns()) {
        const QRawFont raw = run.rawFont();
        const auto indexes = run.glyphIndexes();
        if (!raw.isValid() || indexes.isEmpty() || indexes[0] == 0) continue;
        const QPainterPath path = raw.pathForGlyph(indexes[0]);
        const double capital = capitalHeight(raw);
        if (path.isEmpty() || !(capital > 0.0)) continue;
        const auto advances = raw.advancesForGlyphIndexes(indexes);
        appendOutline(path, 1.0 / capital, out);
        out.advance = advances.isEmpty() ? out.box.max.x : advances[0].x() / capital;
        return true;
    }
    return false;
}

}  // namespace kova::engine
