#include "cmd/prompts/plot_prompts.hpp"

#include <filesystem>

#include "cmd/command.hpp"
#include "edit/new_entities.hpp"
#include "engine/inquiry/value_text.hpp"
#include "cmd/prompts/name_prompts.hpp"
#include "strings/numbers.hpp"

namespace kova::cmd {

using engine::PageSetup;
using engine::PlotArea;
using engine::PlotFormat;
using engine::PlotPage;
using math::Vector2;
namespace fs = std::filesystem;

namespace {

std::string plain(double value) { return strings::general(value, 6); }
std::string fixed2(double value) { return strings::fixed(value, 2); }

const char* areaName(std::int32_t area) {
    switch (static_cast<PlotArea>(area)) {
        case PlotArea::Extents:
            return "Extents";
        case PlotArea::Limits:
            return "Limits";
        case PlotArea::View:
            return "View";
        case PlotArea::Window:
            return "Window";
        case PlotArea::Layout:
            return "Layout";
        default:
            return "Display";
    }
}

bool isLandscape(const PageSetup& setup) { return setup.paperWidth >= setup.paperHeight; }

void turnPaper(PageSetup& setup, bool landscape) {
    setup.landscape = landscape;
    if (isLandscape(setup) == landscape || setup.paperWidth == setup.paperHeight) return;
    // The margins turn with the sheet.
    std::swap(setup.paperWidth, setup.paperHeight);
    const double left = setup.marginLeft;
    setup.marginLeft = setup.marginTop;
    setup.marginTop = setup.marginRight;
    setup.marginRight = setup.marginBottom;
    setup.marginBottom = left;
}

/// The name without directories and extension, for a plot style table.
bool looksLikeStyleTable(std::string_view text) {
    const std::string upper = engine::upperCase(text);
    return upper == "." || upper.ends_with(".CTB") || upper.ends_with(".STB");
}

void takeStyleTable(PageSetup& setup, std::string_view text) {
    setup.plotStyleTable = text == "." ? std::string() : std::string(text);
}

Task<> askPaper(Ask& ask, PageSetup& setup) {
    for (;;) {
        const std::string prompt = withDefault("Enter paper size or [?]", setup.paperSizeName);
        const Answer answer = co_await ask.text(prompt);
        if (answer.isEnter()) co_return;
        if (answer.text == "?") {
            for (const engine::PaperSize& size : engine::paperSizes())
                ask.message(std::string(size.name) + "  " + plain(size.width) + " x " + plain(size.height) + " mm");
            continue;
        }
        const auto size = engine::parsePaperSize(answer.text);
        if (!size) {
            ask.message("Unknown paper size. Enter ? for a list, or a size as in 420 x 297 mm.");
            continue;
        }
        const bool landscape = setup.landscape;
        setup.paperSizeName = std::string(trimmed(answer.text));
        setup.paperWidth = std::max(size->x, size->y);
        setup.paperHeight = std::min(size->x, size->y);
        turnPaper(setup, landscape);
        co_return;
    }
}

Task<> askScale(Ask& ask, const PlotPage& page, PageSetup& setup) {
    const bool sheet = setup.plotArea == static_cast<std::int32_t>(PlotArea::Layout) && !page.layout.empty();
    for (;;) {
        std::string question = "Enter plot scale (Plotted ";
        question += setup.paperUnits == 0 ? "Inches" : "Millimeters";
        question += sheet ? "=Drawing Units)" : "=Drawing Units) or [Fit]";
        const Answer answer = co_await ask.text(withDefault(question, plotScaleText(setup)));
        if (answer.isEnter() || parsePlotScale(answer.text, setup)) co_return;
        ask.message("Invalid scale.");
    }
}

Task<> askOffset(Ask& ask, PageSetup& setup) {
    const double unit = setup.paperUnit();
    std::string fallback = fixed2(setup.offsetX / unit) + "," + fixed2(setup.offsetY / unit);
    if (setup.centerOnPage) fallback = "Center";
    for (;;) {
        const Answer answer = co_await ask.text(withDefault("Enter plot offset (x,y) or [Center]", fallback), "Center");
        if (answer.isEnter()) co_return;
        if (answer.is("CENTER")) {
            setup.centerOnPage = true;
            co_return;
        }
        const std::string_view text = trimmed(answer.text);
        const std::size_t comma = text.find(',');
        const auto x = parseNumber(text.substr(0, comma));
        const auto y =
            comma == std::string_view::npos ? std::optional<double>(0.0) : parseNumber(text.substr(comma + 1));
        if (x && y) {
            setup.centerOnPage = false;
            setup.offsetX = *x * unit;
            setup.offsetY = *y * unit;
            co_return;
        }
        ask.message("Invalid offset.");
    }
}

Task<> askStyles(Ask& ask, PageSetup& setup) {
    const bool styles = co_await askYesNo(ask, "Plot with plot styles? [Yes/No] <Yes>:", true);
    if (!styles) setup.plotStyleTable.clear();
    if (styles) {
        for (;;) {
            const std::string prompt =
                withDefault("Enter plot style table name or [?] (enter . for none)", setup.plotStyleTable);
            const Answer answer = co_await ask.text(prompt);
            if (answer.text == "?") {
                ask.message("monochrome.ctb  index colours print black");
                ask.message("grayscale.ctb  colours print as greys");
                continue;
            }
            if (!answer.isEnter()) takeStyleTable(setup, trimmed(answer.text));
            break;
        }
    }
    std::string fallback = setup.plotWithLineweights ? "Yes" : "No";
    for (;;) {
        // Scripts may name a table though styles were declined.
        const Answer answer = co_await ask.text(withDefault("Plot with lineweights? [Yes/No]", fallback), "Yes No");
        if (answer.isEnter()) break;
        if (answer.isText() && !styles && looksLikeStyleTable(answer.text)) continue;
        if (answer.isText()) {
            ask.message("Invalid option keyword.");
            continue;
        }
        setup.plotWithLineweights = answer.is("YES");
        break;
    }
}

}  // namespace

std::string plotScaleText(const PageSetup& setup) {
    if (setup.scaleType == 0) return "Fit";
    return plain(setup.scalePaper) + "=" + plain(setup.scaleDrawing);
}

bool parsePlotScale(std::string_view text, PageSetup& setup) {
    text = trimmed(text);
    if (text.starts_with('_')) text.remove_prefix(1);
    if (engine::equalNoCase(text, "Fit") || engine::equalNoCase(text, "F")) {
        setup.scaleType = 0;
        return true;
    }
    const std::size_t sign = text.find_first_of("=:");
    const auto paper = parseNumber(trimmed(text.substr(0, sign)));
    const auto drawing =
        sign == std::string_view::npos ? std::optional<double>(1.0) : parseNumber(trimmed(text.substr(sign + 1)));
    if (!paper || !drawing || !(*paper > 0.0) || !(*drawing > 0.0)) return false;
    const double scale = *paper / *drawing;
    if (!std::isfinite(scale) || !(scale > 0.0)) return false;
    setup.scalePaper = *paper;
    setup.scaleDrawing = *drawing;
    setup.scaleType = scale == 1.0 ? 16 : engine::kCustomPlotScale;
    return true;
}

Task<> askPlotArea(Ask& ask, engine::Drawing& drawing, PlotPage& page, std::string choices) {
    std::string current = areaName(page.setup.plotArea);
    if (choices.find(current) == std::string::npos) current = choices.substr(0, choices.find('/'));
    std::string words = choices;
    std::replace(words.begin(), words.end(), '/', ' ');
    // Each choice by its first letter; "LAyout" and "LImits" where both are there.
    if (words.find("Layout") != std::string::npos && words.find("Limits") != std::string::npos) {
        words.replace(words.find("Layout"), 6, "Layout");
        words.replace(words.find("Limits"), 6, "LImits");
    }
    const Answer answer = co_await ask.keyword(withDefault("Enter plot area [" + choices + "]", current), words);
    const std::string word = answer.isEnter() ? engine::upperCase(current) : answer.word;
    PlotArea area = PlotArea::Display;
    if (word == "EXTENTS") area = PlotArea::Extents;
    if (word == "LIMITS") area = PlotArea::Limits;
    if (word == "LAYOUT") area = PlotArea::Layout;
    if (word == "WINDOW") {
        area = PlotArea::Window;
        const Answer first = co_await ask.point("Enter lower left corner of window:");
        const Answer second = co_await ask.point("Enter upper right corner of window:");
        page.window = {};
        if (first.isPoint()) page.window.expand(first.point);
        if (second.isPoint()) page.window.expand(second.point);
    }
    if (word == "VIEW") {
        for (;;) {
            const Answer name = co_await ask.text("Enter view name:");
            if (name.isEnter()) co_return;
            const engine::NamedView* view = drawing.namedViews.find(engine::Name(typedName(name.text)));
            if (view == nullptr) {
                ask.message("Cannot find the specified view.");
                continue;
            }
            const Vector2 half{std::abs(view->width) / 2.0, std::abs(view->height) / 2.0};
            page.window = math::Bounds2{view->center - half, view->center + half};
            area = PlotArea::View;
            break;
        }
    }
    page.setup.plotArea = static_cast<std::int32_t>(area);
}

Task<> askPageSetup(Ask& ask, engine::Drawing& drawing, PlotPage& page, bool askArea) {
    PageSetup& setup = page.setup;
    co_await askPaper(ask, setup);

    std::string unitName = setup.paperUnits == 0 ? "Inches" : "Millimeters";
    const Answer units =
        co_await ask.keyword(withDefault("Enter paper units [Inches/Millimeters]", unitName), "Inches Millimeters");
    if (!units.isEnter()) setup.paperUnits = units.is("INCHES") ? 0 : 1;

    std::string orientation = isLandscape(setup) ? "Landscape" : "Portrait";
    const Answer turned = co_await ask.keyword(
        withDefault("Enter drawing orientation [Portrait/Landscape]", orientation), "Portrait Landscape");
    if (!turned.isEnter()) turnPaper(setup, turned.is("LANDSCAPE"));
    page.upsideDown = co_await askYesNo(ask, "Plot upside down? [Yes/No] <No>:", false);
    if (askArea) {
        std::string choices = "Display/Extents/Limits/View/Window";
        if (!page.layout.empty()) choices = "Display/Extents/Layout/View/Window";
        co_await askPlotArea(ask, drawing, page, choices);
    }
    co_await askScale(ask, page, setup);
    co_await askOffset(ask, setup);
    co_await askStyles(ask, setup);
    if (!page.layout.empty()) {
        page.scaleLineweights = co_await askYesNo(ask, "Scale lineweights with plot scale? [Yes/No] <No>:", false);
        co_await askYesNo(ask, "Plot paper space first? [Yes/No] <No>:", false);
        co_await askYesNo(ask, "Hide paperspace objects? [Yes/No] <No>:", false);
    } else {
        // There is one way to draw here; what scripts say is heard and passed over.
        co_await ask.text(
            "Enter shade plot setting [As displayed/legacy Wireframe/legacy Hidden/Visual styles/Rendered] <As "
            "displayed>:");
    }
}

std::optional<PlotFormat> plotDevice(std::string_view name) {
    const std::string upper = engine::upperCase(trimmed(name));
    if (upper.find("SVG") != std::string::npos) return PlotFormat::Svg;
    if (upper.find("PNG") != std::string::npos) return PlotFormat::Png;
    if (upper.find("PDF") != std::string::npos || upper.empty() || upper == "NONE") return PlotFormat::Pdf;
    return {};
}

std::string_view plotExtension(PlotFormat format) {
    switch (format) {
        case PlotFormat::Svg:
            return ".svg";
        case PlotFormat::Png:
            return ".png";
        case PlotFormat::Jpg:
            return ".jpg";
        case PlotFormat::Bmp:
            return ".bmp";
        default:
            return ".pdf";
    }
}

std::string defaultPlotFile(const engine::Drawing& drawing, engine::Name layout, PlotFormat format) {
    fs::path path = drawing.fileName.empty() ? fs::path("Drawing") : fs::path(drawing.fileName).replace_extension();
    path += "-" + (layout.empty() ? std::string("Model") : layout.str());
    path += std::string(plotExtension(format));
    return path.string();
}

std::string plotFile(const std::string& answer, const std::string& fallback, PlotFormat format) {
    std::string_view text = trimmed(answer);
    if (text.size() >= 2 && text.front() == '"' && text.back() == '"') text = text.substr(1, text.size() - 2);
    if (text.empty()) return fallback;
    const std::string name = engine::upperCase(text);
    const std::string ending = engine::upperCase(plotExtension(format));
    return name.ends_with(ending) ? std::string(text) : std::string(text) + std::string(plotExtension(format));
}

void writePlot(ToolHost& host, const std::vector<PlotPage>& pages, PlotFormat format, const std::string& path) {
    AppServices* services = host.services();
    if (services == nullptr) return host.message("Plots cannot be written here.");
    if (format == PlotFormat::Pdf || pages.size() == 1) {
        const std::string error = services->plot(pages, format, path);
        return host.message(error.empty() ? "Plotted: " + path : error);
    }
    for (const PlotPage& page : pages) {
        fs::path file(path);
        file.replace_filename(file.stem().string() + "-" +
                              (page.layout.empty() ? std::string("Model") : page.layout.str()) +
                              std::string(plotExtension(format)));
        const std::string error = services->plot({&page, 1}, format, file.string());
        host.message(error.empty() ? "Plotted: " + file.string() : error);
        if (!error.empty()) return;
    }
}

}  // namespace kova::cmd
