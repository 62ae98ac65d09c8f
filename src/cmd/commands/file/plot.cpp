#include "cmd/command.hpp"
#include "cmd/dialogue.hpp"
#include "edit/new_entities.hpp"
#include "cmd/prompts/name_prompts.hpp"
#include "cmd/prompts/plot_prompts.hpp"
#include "cmd/registry.hpp"

namespace kova::cmd::commands {

namespace {

using engine::PlotFormat;
using engine::PlotPage;

std::string spaceName(engine::Name layout) { return layout.empty() ? std::string("Model") : layout.str(); }

/// The space that is current, as a layout's name; empty: model space.
engine::Name currentSpaceName(const engine::Drawing& drawing) {
    return drawing.tileMode ? engine::Name() : drawing.activeLayoutName;
}

/// PLOT: one space to a file, by its page setup or by a detailed configuration. The prompts come in the order in which
/// scripts of old answer them.
class PlotTool final : public DialogueTool {
protected:
    Dialogue dialogue(Ask& ask) override {
        const bool detailed = co_await askYesNo(ask, "Detailed plot configuration? [Yes/No] <No>:", false);
        co_await askLayout(ask);
        if (!detailed) co_await askNamedSetup(ask);
        co_await askDevice(ask);
        if (detailed) co_await askPageSetup(ask, drawing(), page_, true);
        co_await askFile(ask);
        const bool save = co_await askYesNo(ask, "Save changes to page setup [Yes/No]? <N>:", false);
        const bool proceed = co_await askYesNo(ask, "Proceed with plot [Yes/No] <Y>:", true);
        engine::Layout* layout = page_.layout.empty() ? nullptr : drawing().findLayout(page_.layout);
        if (save && layout != nullptr)
            document().editLayout(*layout, [&](engine::Layout& l) { l.pageSetup = page_.setup; });
        if (!proceed) co_return;
        const std::vector<PlotPage> pages{page_};
        writePlot(*host(), pages, format_, file_);
    }

private:
    Task<> askLayout(Ask& ask) {
        const engine::Name current = currentSpaceName(drawing());
        for (;;) {
            const Answer answer = co_await ask.text(withDefault("Enter a layout name or [?]", spaceName(current)));
            const engine::Name name(typedName(answer.text));
            if (answer.text == "?") {
                message("Active Layouts:");
                message("Layout: Model");
                for (const auto& layout : drawing().layouts()) message("Layout: " + layout->name.str());
                continue;
            }
            if (answer.isEnter() || name == "Model" || drawing().findLayout(name) != nullptr) {
                engine::Name chosen = answer.isEnter() ? current : name;
                if (chosen == "Model") chosen = engine::Name();
                page_ = engine::plotPage(drawing(), chosen);
                co_return;
            }
            message("No layout named " + name.str());
        }
    }

    Task<> askNamedSetup(Ask& ask) {
        for (;;) {
            const Answer answer = co_await ask.text("Enter a page setup name <>:");
            if (answer.isEnter()) co_return;
            const auto* setup = drawing().namedPageSetups.find(engine::Name(typedName(answer.text)));
            if (setup != nullptr) {
                page_.setup = *setup;
                co_return;
            }
            message("Page setup not found.");
        }
    }

    Task<> askDevice(Ask& ask) {
        const auto known = plotDevice(page_.setup.plotDevice);
        format_ = known.value_or(PlotFormat::Pdf);
        std::string fallback = "PDF";
        if (known && !page_.setup.plotDevice.empty()) fallback = page_.setup.plotDevice;
        for (;;) {
            const Answer answer = co_await ask.text(withDefault("Enter an output device name or [?]", fallback));
            if (answer.isEnter()) co_return;
            if (answer.text == "?") {
                for (const char* device : {"PDF", "SVG", "PNG"}) message(device);
                continue;
            }
            if (const auto format = plotDevice(answer.text)) {
                format_ = *format;
                page_.setup.plotDevice = std::string(trimmed(answer.text));
                co_return;
            }
            message("Unknown device. Plots are written as PDF, SVG or PNG.");
        }
    }

    /// A file name given at once, as devices that only write files are answered, is taken too.
    Task<> askFile(Ask& ask) {
        file_ = defaultPlotFile(drawing(), page_.layout, format_);
        const Answer toFile = co_await ask.text("Write the plot to a file [Yes/No] <N>:", "Yes No");
        if (toFile.isText()) file_ = plotFile(toFile.text, file_, format_);
        if (toFile.is("YES")) {
            const Answer name = co_await ask.text(withDefault("Enter file name", file_));
            file_ = plotFile(name.text, file_, format_);
        }
    }

    PlotPage page_;
    PlotFormat format_ = PlotFormat::Pdf;
    std::string file_;
};

/// PDFEXPORT: the current space as it is set up. With a dash it asks for area, layouts and details first.
class PdfexportTool final : public DialogueTool {
protected:
    Dialogue dialogue(Ask& ask) override {
        const engine::Name current = currentSpaceName(drawing());
        std::vector<PlotPage> pages{engine::plotPage(drawing(), current)};
        if (isCommandLineVariant()) {
            if (current.empty()) {
                co_await askPlotArea(ask, drawing(), pages.front(), "Display/Extents/Window");
            } else {
                const Answer which = co_await ask.keyword(
                    "Enter layouts to export [Current layout/All layouts] <Current layout>:", "Current All");
                if (which.is("ALL")) pages = allLayouts(drawing());
            }
            const bool detailed = co_await askYesNo(ask, "Detailed plot configuration? [Yes/No] <No>:", false);
            if (detailed) {
                co_await askPageSetup(ask, drawing(), pages.front(), false);
                // One answer serves all sheets; each keeps its own area.
                for (PlotPage& page : pages) {
                    const std::int32_t area = page.setup.plotArea;
                    page.setup = pages.front().setup;
                    page.setup.plotArea = area;
                    page.upsideDown = pages.front().upsideDown;
                    page.scaleLineweights = pages.front().scaleLineweights;
                }
            }
        }
        std::string fallback = defaultPlotFile(drawing(), current, PlotFormat::Pdf);
        const Answer name = co_await ask.text(withDefault("Enter file name", fallback));
        writePlot(*host(), pages, PlotFormat::Pdf, plotFile(name.text, fallback, PlotFormat::Pdf));
    }

public:
    static std::vector<PlotPage> allLayouts(const engine::Drawing& drawing) {
        std::vector<const engine::Layout*> layouts;
        for (const auto& layout : drawing.layouts()) layouts.push_back(layout.get());
        std::stable_sort(layouts.begin(), layouts.end(),
                         [](const auto* a, const auto* b) { return a->tabOrder < b->tabOrder; });
        std::vector<PlotPage> pages;
        for (const engine::Layout* layout : layouts) pages.push_back(engine::plotPage(drawing, layout->name));
        return pages;
    }
};

/// SVGEXPORT: the current space, or a part of it.
class SvgexportTool final : public DialogueTool {
protected:
    Dialogue dialogue(Ask& ask) override {
        const engine::Name current = currentSpaceName(drawing());
        PlotPage page = engine::plotPage(drawing(), current);
        std::string fallback = defaultPlotFile(drawing(), current, PlotFormat::Svg);
        const Answer name = co_await ask.text(withDefault("Enter file name", fallback));
        std::string choices = "Display/Extents/Window";
        if (!current.empty()) choices = "Layout/Display/Extents/Window";
        co_await askPlotArea(ask, drawing(), page, choices);
        // A part of a sheet fills its paper.
        if (!current.empty() && page.setup.plotArea != static_cast<std::int32_t>(engine::PlotArea::Layout)) {
            page.setup.scaleType = 0;
            page.setup.centerOnPage = true;
        }
        const std::vector<PlotPage> pages{page};
        writePlot(*host(), pages, PlotFormat::Svg, plotFile(name.text, fallback, PlotFormat::Svg));
    }
};

/// PUBLISH: all layouts, a page each, in the order of their tabs.
class PublishTool final : public DialogueTool {
protected:
    Dialogue dialogue(Ask& ask) override {
        const std::vector<PlotPage> pages = PdfexportTool::allLayouts(drawing());
        if (pages.empty()) {
            message("The drawing has no layouts.");
            co_return;
        }
        std::string fallback = defaultPlotFile(drawing(), engine::Name("Layouts"), PlotFormat::Pdf);
        const Answer name = co_await ask.text(withDefault("Enter file name", fallback));
        if (engine::upperCase(trimmed(name.text)).ends_with(".DSD")) {
            message("Lists of drawings are not read here; give the name of a PDF file.");
            co_return;
        }
        writePlot(*host(), pages, PlotFormat::Pdf, plotFile(name.text, fallback, PlotFormat::Pdf));
    }
};

}  // namespace

KOVA_TOOL_COMMAND(Plot, "PLOT", "Plot", "File", {"PRINT"})
KOVA_TOOL_COMMAND(Pdfexport, "PDFEXPORT", "Export PDF", "File", {"EXPORTPDF"})
KOVA_TOOL_COMMAND(Svgexport, "SVGEXPORT", "Export SVG", "File")
KOVA_TOOL_COMMAND(Publish, "PUBLISH", "Publish", "File")

}  // namespace kova::cmd::commands
