#include "engine/outline/plot_page.hpp"

#include <charconv>

#include "engine/model/view_frame.hpp"
#include "strings/numbers.hpp"

namespace kova::engine {

using math::Bounds2;
using math::Vector2;

namespace {

constexpr double kInch = 25.4;
constexpr double kLargestSheet = 5000.0;  // millimetres; what a page of a PDF file can be, rounded down

constexpr PaperSize kSizes[] = {
    {"ISO A0", 1189.0, 841.0},  {"ISO A1", 841.0, 594.0},  {"ISO A2", 594.0, 420.0},  {"ISO A3", 420.0, 297.0},
    {"ISO A4", 297.0, 210.0},   {"ISO A5", 210.0, 148.0},  {"ISO B1", 1000.0, 707.0}, {"ISO B2", 707.0, 500.0},
    {"ISO B3", 500.0, 353.0},   {"ISO B4", 353.0, 250.0},  {"ISO B5", 250.0, 176.0},  {"Letter", 279.4, 215.9},
    {"Legal", 355.6, 215.9},    {"Tabloid", 431.8, 279.4}, {"ANSI A", 279.4, 215.9},  {"ANSI B", 431.8, 279.4},
    {"ANSI C", 558.8, 431.8},   {"ANSI D", 863.6, 558.8},  {"ANSI E", 1117.6, 863.6}, {"ARCH A", 304.8, 228.6},
    {"ARCH B", 457.2, 304.8},   {"ARCH C", 609.6, 457.2},  {"ARCH D", 914.4, 609.6},  {"ARCH E", 1219.2, 914.4},
    {"ARCH E1", 1066.8, 762.0},
};

/// Upper case words, with everything that is no letter, digit or point as one blank.
std::string plainWords(std::string_view text) {
    std::string out;
    for (const char c : text) {
        const bool keep = std::isalnum(static_cast<unsigned char>(c)) != 0 || c == '.';
        if (keep)
            out += static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
        else if (!out.empty() && out.back() != ' ')
            out += ' ';
    }
    while (!out.empty() && out.back() == ' ') out.pop_back();
    return out;
}

/// "420.00 X 297.00 MM" within plain words.
std::optional<Vector2> writtenSize(const std::string& words) {
    for (std::size_t x = words.find(" X "); x != std::string::npos; x = words.find(" X ", x + 1)) {
        std::size_t begin = x;
        while (begin > 0 && words[begin - 1] != ' ') --begin;
        Vector2 size;
        const char* const end = words.data() + words.size();
        const char* const first = strings::readReal(words.data() + begin, words.data() + x, size.x);
        const char* const second = strings::readReal(words.data() + x + 3, end, size.y);
        if (first == nullptr || second == nullptr) continue;
        if (std::string_view(second, static_cast<std::size_t>(end - second)).starts_with(" INCH"))
            size *= kInch;
        if (size.x >= 1.0 && size.y >= 1.0 && size.x <= kLargestSheet && size.y <= kLargestSheet) return size;
    }
    return {};
}

bool endsWithWord(const std::string& words, const std::string& name) {
    return words.size() >= name.size() && words.compare(words.size() - name.size(), name.size(), name) == 0 &&
           (words.size() == name.size() || words[words.size() - name.size() - 1] == ' ');
}

Bounds2 viewBox(const NamedView& view) {
    const Vector2 half{std::abs(view.width) / 2.0, std::abs(view.height) / 2.0};
    return {view.center - half, view.center + half};
}

}  // namespace

std::span<const PaperSize> paperSizes() { return kSizes; }

std::optional<Vector2> parsePaperSize(std::string_view text) {
    const std::string words = plainWords(text);
    if (const auto size = writtenSize(words)) return size;
    for (const PaperSize& size : kSizes) {
        const std::string name = plainWords(size.name);
        const std::string tail = name.starts_with("ISO ") ? name.substr(4) : name;
        if (endsWithWord(words, tail)) return Vector2{size.width, size.height};
    }
    return {};
}

PlotColors plotColors(std::string_view plotStyleTable) {
    const std::string name = upperCase(plotStyleTable);
    if (name.find("MONOCHROME") != std::string::npos) return PlotColors::Black;
    if (name.find("GRAYSCALE") != std::string::npos || name.find("GREYSCALE") != std::string::npos)
        return PlotColors::Grey;
    return PlotColors::AsDrawn;
}

PageSetup modelPageSetup(const Drawing& drawing) {
    PageSetup setup;
    if (!drawing.layouts().empty()) {
        const PageSetup& first = drawing.layouts().front()->pageSetup;
        setup.paperWidth = first.paperWidth;
        setup.paperHeight = first.paperHeight;
        setup.paperUnits = first.paperUnits;
        setup.landscape = first.landscape;
        setup.paperSizeName = first.paperSizeName;
        setup.plotStyleTable = first.plotStyleTable;
        setup.plotTransparency = first.plotTransparency;
    }
    setup.plotArea = static_cast<std::int32_t>(PlotArea::Extents);
    setup.scaleType = 0;
    setup.centerOnPage = true;
    return setup;
}

PlotPage plotPage(const Drawing& drawing, Name layout) {
    PlotPage page;
    if (const Layout* found = layout.empty() ? nullptr : drawing.findLayout(layout)) {
        page.layout = found->name;
        page.setup = found->pageSetup;
    } else {
        page.setup = modelPageSetup(drawing);
    }
    return page;
}

Bounds2 plottedBox(const Drawing& drawing, const PlotPage& page) {
    const Layout* layout = page.layout.empty() ? nullptr : drawing.findLayout(page.layout);
    const auto area = static_cast<PlotArea>(page.setup.plotArea);
    if (area == PlotArea::View) return page.window;
    if (area == PlotArea::Window)
        return layout == nullptr ? windowInView(drawing.currentView, page.window) : page.window;
    if (layout != nullptr) {
        if (area == PlotArea::Extents) return drawing.extents(layout->entities);
        return page.setup.sheet();
    }
    if (area == PlotArea::Display) return viewBox(drawing.currentView);
    if (area == PlotArea::Limits)
        return windowInView(drawing.currentView, {drawing.limits.lower, drawing.limits.upper});
    return modelExtentsInView(drawing);
}

}  // namespace kova::engine
