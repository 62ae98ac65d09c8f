#include "cmd/dialogue.hpp"
#include "engine/inquiry/value_text.hpp"
#include "cmd/prompts/name_prompts.hpp"
#include "cmd/prompts/named_views.hpp"
#include "cmd/registry.hpp"
#include "strings/wildcards.hpp"
#include "doc/table_edits.hpp"

namespace kova::cmd::commands {

namespace {

using engine::Name;
using engine::NamedView;
using math::Vector2;

struct Direction {
    const char* word;
    math::Vector3 direction;
};
const Direction kDirections[] = {{"TOP", {0, 0, 1}},  {"BOTTOM", {0, 0, -1}}, {"FRONT", {0, -1, 0}},
                                 {"BACK", {0, 1, 0}}, {"LEFT", {-1, 0, 0}},   {"RIGHT", {1, 0, 0}}};

/// VIEW: views that are kept under names.
class ViewTool final : public DialogueTool {
protected:
    Dialogue dialogue(Ask& ask) override {
        const Answer option =
            co_await ask.keyword("Enter an option [?/Delete/Orthographic/Restore/Save/sEttings/Window]:",
                                 "? Delete Orthographic Restore Save sEttings Window");
        if (option.is("?")) co_await list(ask);
        if (option.is("DELETE")) co_await remove(ask);
        if (option.is("ORTHOGRAPHIC")) co_await orthographic(ask);
        if (option.is("RESTORE")) co_await restore(ask);
        if (option.is("SAVE")) co_await save(ask, false);
        if (option.is("WINDOW")) co_await save(ask, true);
        if (option.is("SETTINGS")) message("Views keep neither backgrounds, layer states nor visual styles here.");
    }

private:
    Dialogue list(Ask& ask) {
        const std::string filter = co_await askNamesToList(ask, "Enter view name(s) to list <*>:");
        listViews(drawing(), filter, ask);
    }

    Dialogue remove(Ask& ask) {
        for (;;) {
            const Answer answer = co_await ask.text("Enter view name(s) to delete:");
            if (answer.isEnter()) co_return;
            std::vector<Name> names;
            for (const NamedView& view : drawing().namedViews)
                if (matchesWildcards(view.name.view(), answer.text)) names.push_back(view.name);
            if (names.empty()) {
                message("No matching names found.");
                continue;
            }
            const doc::GroupScope group(document(), "VIEW");
            document().editTable<doc::NamedViewTraits>([&](engine::Table<NamedView>& views) {
                for (const Name name : names) views.erase(name);
            });
            message(counted(names.size(), "view") + " deleted.");
            co_return;
        }
    }

    Dialogue restore(Ask& ask) {
        const std::optional<NamedView> view = co_await askKnownView(ask, drawing(), "Enter view name to restore:");
        if (!view) co_return;
        const doc::GroupScope group(document(), "VIEW");
        message(restoreView(document(), *view));
        repaint();
    }

    Dialogue save(Ask& ask, bool window) {
        const std::optional<Name> name = co_await askNewView(ask, document(), "Enter view name to save:");
        if (!name) co_return;
        ViewState shown = viewState(drawing());
        if (window) {
            const Answer first = co_await ask.point("Specify first corner:");
            if (!first.isPoint()) co_return;
            const Answer second = co_await ask.point("Specify opposite corner:", {}, first.point);
            if (!second.isPoint()) co_return;
            const math::Matrix4 toView = shown.toView();
            const Vector2 a = toView.transform_point(first.point);
            const Vector2 b = toView.transform_point(second.point);
            shown.center = (a + b) / 2.0;
            shown.width = std::abs(a.x - b.x);
            shown.height = std::abs(a.y - b.y);
            if (!(shown.width > 0.0) || !(shown.height > 0.0)) {
                message("Invalid window.");
                co_return;
            }
        }
        NamedView view = namedView(shown);
        if (drawing().tileMode) view.upHint = drawing().currentView.upHint;
        view.name = *name;
        const doc::GroupScope group(document(), "VIEW");
        storeView(document(), std::move(view));
    }

    Dialogue orthographic(Ask& ask) {
        const Answer side = co_await ask.keyword("Enter an option [Top/Bottom/Front/BAck/Left/Right] <Top>:",
                                                 "Top Bottom Front BAck Left Right");
        const doc::GroupScope group(document(), "VIEW");
        for (const Direction& row : kDirections)
            if (side.is(row.word) || (side.isEnter() && &row == &kDirections[0]))
                message(lookFrom(document(), row.direction, 0.0));
        repaint();
    }
};

}  // namespace

KOVA_TOOL_COMMAND(View, "VIEW", "Named Views", "View", {"V"})

}  // namespace kova::cmd::commands
