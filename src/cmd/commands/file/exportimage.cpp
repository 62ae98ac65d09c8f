#include <filesystem>

#include "cmd/prompts/file_names.hpp"
#include "cmd/dialogue.hpp"
#include "edit/new_entities.hpp"
#include "cmd/prompts/plot_prompts.hpp"
#include "cmd/registry.hpp"
#include "engine/model/units.hpp"

namespace kova::cmd::commands {

namespace {

using engine::PlotFormat;

constexpr double kInch = 25.4;
constexpr int kDpi = 96;
constexpr int kFewestPixels = 16;
constexpr int kMostPixels = 16384;  // of a side

/// "1024,768" or "1024x768" within the bounds.
std::optional<std::pair<int, int>> parseSize(std::string_view text) {
    const std::size_t comma = text.find_first_of(",xX");
    if (comma == std::string_view::npos) return std::nullopt;
    const auto width = engine::parseDistance(trimmed(text.substr(0, comma)));
    const auto height = engine::parseDistance(trimmed(text.substr(comma + 1)));
    for (const auto& side : {width, height})
        if (!side || *side < kFewestPixels || *side > kMostPixels || *side != std::floor(*side)) return std::nullopt;
    return std::pair(static_cast<int>(*width), static_cast<int>(*height));
}

/// EXPORTIMAGE: the current space as a picture file on white.
class ExportimageTool final : public DialogueTool {
protected:
    Dialogue dialogue(Ask& ask) override {
        const engine::Name current = drawing().tileMode ? engine::Name() : drawing().activeLayoutName;
        const std::string fallback = defaultPlotFile(drawing(), current, PlotFormat::Png);
        PlotFormat format = PlotFormat::Png;
        std::string path;
        while (path.empty()) {
            const Answer name = co_await ask.text(withDefault("Enter file name", fallback));
            path = typedPath(name.text);
            if (path.empty()) path = fallback;
            if (!std::filesystem::path(path).has_extension()) path += ".png";
            const std::string extension = engine::foldCase(std::filesystem::path(path).extension().string());
            if (extension == ".jpg" || extension == ".jpeg")
                format = PlotFormat::Jpg;
            else if (extension == ".bmp")
                format = PlotFormat::Bmp;
            else if (extension == ".png")
                format = PlotFormat::Png;
            else {
                message("Unsupported file type \"" + extension + "\".");
                path.clear();
            }
        }
        // Remembered as one number: both sides are below 65536.
        const int last = static_cast<int>(remembered(document(), "EXPORTIMAGE size", 1024 * 65536.0 + 768.0));
        int width = last / 65536;
        int height = last % 65536;
        for (;;) {
            const std::string shown = std::to_string(width) + "," + std::to_string(height);
            const Answer size = co_await ask.text(withDefault("Enter image size (width,height)", shown));
            if (size.isEnter()) break;
            const auto typed = parseSize(size.text);
            if (typed) {
                width = typed->first;
                height = typed->second;
                break;
            }
            message("Enter two whole numbers from 16 to 16384, as in 1024,768.");
        }
        remember(document(), "EXPORTIMAGE size", width * 65536.0 + height);
        engine::PlotPage page = engine::plotPage(drawing(), current);
        page.setup.plotArea = static_cast<std::int32_t>(engine::PlotArea::Extents);
        std::string choices = "Display/Extents/Window";
        if (!current.empty()) choices = "Layout/Display/Extents/Window";
        co_await askPlotArea(ask, drawing(), page, choices);
        layOut(page, width, height);
        const std::vector<engine::PlotPage> pages{page};
        writePlot(*host(), pages, format, path);
    }

private:
    /// A paper of that many dots, filled by the area.
    void layOut(engine::PlotPage& page, int width, int height) const {
        engine::PageSetup& setup = page.setup;
        const math::Bounds2 sheet = setup.sheet();
        setup.dpi = kDpi;
        setup.paperWidth = width * kInch / kDpi;
        setup.paperHeight = height * kInch / kDpi;
        // The extents stand a little off the border, so that lines along it are seen.
        const bool extents = setup.plotArea == static_cast<std::int32_t>(engine::PlotArea::Extents);
        const double margin = extents ? std::min({1.5, 0.02 * setup.paperWidth, 0.02 * setup.paperHeight}) : 0.0;
        setup.marginLeft = setup.marginRight = setup.marginTop = setup.marginBottom = margin;
        setup.offsetX = setup.offsetY = 0.0;
        setup.scaleType = 0;
        setup.centerOnPage = true;
        page.upsideDown = false;
        if (page.layout.empty() || setup.plotArea != static_cast<std::int32_t>(engine::PlotArea::Layout)) return;
        // A sheet is shown whole, from its lower left corner on.
        setup.plotArea = static_cast<std::int32_t>(engine::PlotArea::Window);
        page.window = sheet;
    }
};

}  // namespace

KOVA_TOOL_COMMAND(Exportimage, "EXPORTIMAGE", "Export Image", "File", {"PNGOUT", "JPGOUT", "BMPOUT"})

}  // namespace kova::cmd::commands
