#include <filesystem>

#include "cmd/prompts/file_names.hpp"
#include "cmd/dialogue.hpp"
#include "edit/new_entities.hpp"
#include "edit/drawing_transfer.hpp"
#include "engine/inquiry/value_text.hpp"
#include "cmd/prompts/name_prompts.hpp"
#include "cmd/registry.hpp"
#include "strings/wildcards.hpp"
#include "doc/edit_pause.hpp"

namespace kova::cmd::commands {

namespace {

using engine::Layout;
using engine::Name;

/// LAYOUT: the sheets of the drawing.
class LayoutTool final : public DialogueTool {
protected:
    Dialogue dialogue(Ask& ask) override {
        for (;;) {
            const Answer option =
                co_await ask.keyword("Enter layout option [Copy/Delete/New/Template/Rename/SAveas/Set/?] <set>:",
                                     "Copy Delete New Template Rename SAveas Set ?");
            if (option.is("?")) {
                list();
                continue;
            }
            if (option.is("COPY")) co_return co_await copy(ask);
            if (option.is("DELETE")) co_return co_await remove(ask);
            if (option.is("NEW")) co_return co_await create(ask);
            if (option.is("TEMPLATE")) co_return co_await fromTemplate(ask);
            if (option.is("RENAME")) co_return co_await rename(ask);
            if (option.is("SAVEAS")) co_return co_await saveAs(ask);
            co_return co_await makeCurrent(ask);
        }
    }

private:
    /// The layout that is shown, or was last.
    Name current() const { return drawing().activeLayoutName; }

    std::vector<const Layout*> inTabOrder() const {
        std::vector<const Layout*> layouts;
        for (const auto& layout : drawing().layouts()) layouts.push_back(layout.get());
        std::stable_sort(layouts.begin(), layouts.end(),
                         [](const Layout* a, const Layout* b) { return a->tabOrder < b->tabOrder; });
        return layouts;
    }

    void list() const {
        message("Active layouts:");
        message(std::string("  \"Model\"") + (drawing().tileMode ? "  (current)" : ""));
        for (const Layout* layout : inTabOrder()) {
            const engine::PageSetup& page = layout->pageSetup;
            const math::Bounds2 sheet = page.sheet();
            message("  " + cmd::inQuotes(layout->name.view()) + "  " + lengthDefault(drawing(), sheet.width()) + " x " +
                    lengthDefault(drawing(), sheet.height()) + (page.paperUnits == 0 ? " inches  " : " mm  ") +
                    counted(layout->entities.size(), "object") +
                    (!drawing().tileMode && layout->name == current() ? "  (current)" : ""));
        }
    }

    /// An existing layout by name, the current one for Enter; null: given up.
    Task<Layout*> askLayout(Ask& ask, std::string question) {
        for (;;) {
            std::string prompt = withDefault(question, current().view());
            const Answer answer = co_await ask.text(std::move(prompt));
            const Name name = answer.isEnter() ? current() : Name(typedName(answer.text));
            if (Layout* layout = drawing().findLayout(name)) co_return layout;
            message("Layout " + cmd::inQuotes(name.view()) + " not found.");
            if (answer.isEnter()) co_return nullptr;
        }
    }

    /// A name for a new layout; empty: given up.
    Task<Name> askNewName(Ask& ask, std::string question, std::string fallback) {
        for (;;) {
            std::string prompt = fallback.empty() ? question + ":" : withDefault(question, fallback);
            const Answer answer = co_await ask.text(std::move(prompt));
            if (answer.isEnter() && fallback.empty()) co_return Name();
            const std::string name = answer.isEnter() ? fallback : typedName(answer.text);
            if (!engine::isValidSymbolName(name) || Name(name) == "Model")
                message("Invalid layout name " + cmd::inQuotes(name) + ".");
            else if (drawing().findLayout(Name(name)) != nullptr)
                message("Layout " + cmd::inQuotes(name) + " already exists.");
            else
                co_return Name(name);
        }
    }

    Dialogue copy(Ask& ask) {
        Layout* source = co_await askLayout(ask, "Enter name of layout to copy");
        if (source == nullptr) co_return;
        const Name from = source->name;
        const Name name = co_await askNewName(ask, "Enter layout name for copy", freeName(from.str()));
        source = drawing().findLayout(from);
        if (name.empty() || source == nullptr) co_return;
        const doc::GroupScope group(document(), "LAYOUT");
        if (copyLayout(document(), *source, name) != nullptr)
            message("Layout " + cmd::inQuotes(from.view()) + " copied to " + cmd::inQuotes(name.view()) + ".");
    }

    /// "A1 (2)", or the next number that is free.
    std::string freeName(const std::string& base) const {
        for (int n = 2;; ++n) {
            std::string name = base + " (" + std::to_string(n) + ")";
            if (drawing().findLayout(Name(name)) == nullptr) return name;
        }
    }

    Dialogue remove(Ask& ask) {
        for (;;) {
            std::string prompt = withDefault("Enter name of layout to delete", current().view());
            const Answer answer = co_await ask.text(std::move(prompt));
            const std::string typed = answer.isEnter() ? current().str() : typedName(answer.text);
            std::vector<Name> names;
            for (const Layout* layout : inTabOrder())
                if (layout->name == Name(typed) ||
                    (hasWildcards(typed) && matchesWildcards(layout->name.view(), typed)))
                    names.push_back(layout->name);
            if (names.empty()) {
                message(engine::equalNoCase(typed, "Model") ? "The model tab cannot be deleted."
                                                            : "Layout " + cmd::inQuotes(typed) + " not found.");
                if (answer.isEnter()) co_return;
                continue;
            }
            const doc::GroupScope group(document(), "LAYOUT");
            for (const Name name : names)
                message(document().deleteLayout(name) ? "Layout " + cmd::inQuotes(name.view()) + " deleted."
                                                      : "The drawing's last layout cannot be deleted.");
            co_return;
        }
    }

    Dialogue create(Ask& ask) {
        int n = 1;
        while (drawing().findLayout(Name("Layout" + std::to_string(n))) != nullptr) ++n;
        const Name name = co_await askNewName(ask, "Enter new Layout name", "Layout" + std::to_string(n));
        if (name.empty()) co_return;
        const doc::GroupScope group(document(), "LAYOUT");
        Layout* layout = document().addLayout(name);
        if (layout == nullptr) co_return;
        // Paper as the others have it.
        if (const Layout* model = drawing().activeLayout(); model != nullptr && model != layout) {
            const engine::PageSetup page = model->pageSetup;
            document().editLayout(*layout, [&](Layout& l) { l.pageSetup = page; });
        }
    }

    Dialogue fromTemplate(Ask& ask) {
        const Answer file = co_await ask.text("Enter name of template file:");
        const std::string path = typedPath(file.text);
        AppServices* services = host()->services();
        if (path.empty() || services == nullptr) co_return;
        const auto source = std::make_unique<engine::Drawing>();
        const std::string error = services->readDrawing(path, *source);
        if (!error.empty()) {
            message("Could not open " + path + ": " + error);
            co_return;
        }
        const Answer names = co_await ask.text("Enter layout name(s) to import <*>:");
        const std::string pattern(names.isText() ? names.text : "*");
        std::vector<ImportedLayout> chosen;
        for (const auto& layout : source->layouts()) {
            if (!matchesWildcards(layout->name.view(), pattern)) continue;
            const bool taken = drawing().findLayout(layout->name) != nullptr;
            chosen.push_back({layout.get(), taken ? Name(freeName(layout->name.str())) : layout->name});
        }
        if (chosen.empty()) {
            message("No matching names found.");
            co_return;
        }
        const doc::GroupScope group(document(), "LAYOUT");
        message(counted(importLayouts(document(), *source, chosen), "layout") + " imported.");
    }

    Dialogue rename(Ask& ask) {
        const Layout* layout = co_await askLayout(ask, "Enter layout to rename");
        if (layout == nullptr) co_return;
        const Name from = layout->name;
        for (;;) {
            const Answer answer = co_await ask.text("Enter new layout name:");
            if (answer.isEnter()) co_return;
            const doc::GroupScope group(document(), "LAYOUT");
            const std::string error =
                document().renameSymbol(engine::SymbolKind::Layout, from, Name(typedName(answer.text)));
            if (error.empty()) co_return;
            message(error);
        }
    }

    Dialogue saveAs(Ask& ask) {
        const Layout* layout = co_await askLayout(ask, "Enter layout to save to template");
        if (layout == nullptr) co_return;
        const Name name = layout->name;
        const Answer file = co_await ask.text("Enter name of template file:");
        std::filesystem::path path(typedPath(file.text));
        layout = drawing().findLayout(name);
        AppServices* services = host()->services();
        if (path.empty() || layout == nullptr || services == nullptr) co_return;
        if (!path.has_extension()) path += ".kvcad";
        std::error_code code;
        if (std::filesystem::exists(path, code) && engine::sysVarInt(drawing(), "EXPERT") < 2) {
            const bool replace = co_await askYesNo(
                ask, "A drawing with this name already exists. Do you want to replace it? [Yes/No] <N>:", false);
            layout = drawing().findLayout(name);
            if (!replace || layout == nullptr) co_return;
        }
        const doc::EditPause pause(document());
        message(pause.line());
        const std::unique_ptr<doc::Document> part = extractLayout(drawing(), *layout);
        const std::string error = services->writeDrawing(part->drawing(), path.string());
        message(error.empty() ? "Saved: " + path.string() : error);
    }

    Dialogue makeCurrent(Ask& ask) {
        for (;;) {
            std::string prompt = withDefault("Enter layout to make current", current().view());
            const Answer answer = co_await ask.text(std::move(prompt));
            const std::string name = answer.isEnter() ? current().str() : typedName(answer.text);
            const doc::GroupScope group(document(), "LAYOUT");
            const std::string error = document().setVariable("CTAB", name);
            if (error.empty() || answer.isEnter()) co_return message(error);
            message(error);
        }
    }
};

}  // namespace

KOVA_TOOL_COMMAND(Layout, "LAYOUT", "Layout", "Insert", {"LO"})

}  // namespace kova::cmd::commands
