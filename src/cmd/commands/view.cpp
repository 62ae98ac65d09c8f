#include "cmd/dialogue.hpp"
#include "cmd/format.hpp"
#include "cmd/name_prompts.hpp"
#include "cmd/registry.hpp"
#include "cmd/view_state.hpp"
#include "cmd/wildcards.hpp"
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
        const Answer filter = co_await ask.text("Enter view name(s) to list <*>:");
        const std::string pattern(filter.isText() ? filter.text : "*");
        std::vector<Name> names;
        for (const NamedView& view : drawing().namedViews) names.push_back(view.name);
        names = matchingNames(drawing(), std::move(names), pattern);
        if (names.empty()) message("No matching names found.");
        for (const Name name : names) {
            const NamedView& view = *drawing().namedViews.find(name);
            message("  " + quoted(name) + "  center " + pointDefault(drawing(), view.center) + "  height " +
                    lengthDefault(drawing(), view.height));
        }
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
        for (;;) {
            const Answer answer = co_await ask.text("Enter view name to restore:");
            if (answer.isEnter()) co_return;
            const NamedView* known = drawing().namedViews.find(Name(typedName(answer.text)));
            if (known == nullptr) {
                message("Cannot find view " + quoted(typedName(answer.text)) + ".");
                continue;
            }
            const NamedView view = *known;
            const doc::GroupScope group(document(), "VIEW");
            const ViewWindow now = viewWindow(drawing());
            const double ratio = now.width > 0.0 && now.height > 0.0 ? now.width / now.height : 1.0;
            message(showWindow(document(), view.center, std::max(view.height, view.width / ratio)));
            if (drawing().tileMode)
                document().editSettings([&](engine::Drawing& d) {
                    d.currentView.name = view.name;
                    d.currentView.viewDirection = view.viewDirection;
                    d.currentView.target = view.target;
                    d.currentView.upHint = view.upHint;
                });
            repaint();
            co_return;
        }
    }

    Dialogue save(Ask& ask, bool window) {
        for (;;) {
            const Answer answer = co_await ask.text("Enter view name to save:");
            if (answer.isEnter()) co_return;
            const std::string name = typedName(answer.text);
            if (!engine::isValidSymbolName(name)) {
                message("Invalid view name " + quoted(name) + ".");
                continue;
            }
            if (drawing().namedViews.contains(Name(name)) && engine::sysVarInt(drawing(), "EXPERT") < 2) {
                std::string question = "View " + quoted(name) + " already exists. Replace it? [Yes/No] <N>:";
                const bool replace = co_await askYesNo(ask, std::move(question), false);
                if (!replace) continue;
            }
            ViewWindow shown = viewWindow(drawing());
            if (window) {
                const Answer first = co_await ask.point("Specify first corner:");
                if (!first.isPoint()) co_return;
                const Answer second = co_await ask.point("Specify opposite corner:", {}, first.point);
                if (!second.isPoint()) co_return;
                shown.center = (first.point + second.point) / 2.0;
                shown.width = std::abs(first.point.x - second.point.x);
                shown.height = std::abs(first.point.y - second.point.y);
                if (!(shown.width > 0.0) || !(shown.height > 0.0)) {
                    message("Invalid window.");
                    co_return;
                }
            }
            NamedView view;
            if (drawing().tileMode) view = drawing().currentView;
            view.name = Name(name);
            view.center = shown.center;
            view.width = shown.width;
            view.height = shown.height;
            const doc::GroupScope group(document(), "VIEW");
            document().editTable<doc::NamedViewTraits>(
                [&](engine::Table<NamedView>& views) { views.add(std::move(view)); });
            co_return;
        }
    }

    Dialogue orthographic(Ask& ask) {
        const Answer side = co_await ask.keyword("Enter an option [Top/Bottom/Front/BAck/Left/Right] <Top>:",
                                                 "Top Bottom Front BAck Left Right");
        const doc::GroupScope group(document(), "VIEW");
        for (const Direction& row : kDirections) {
            if (!side.is(row.word) && !(side.isEnter() && &row == &kDirections[0])) continue;
            document().editSettings([&](engine::Drawing& d) {
                d.currentView.viewDirection = row.direction;
                d.currentView.upHint = row.direction.z != 0.0 ? math::Vector3{0, 1, 0} : math::Vector3{0, 0, 1};
            });
            if (&row != &kDirections[0]) message("The view's direction is kept; pictures show the plan.");
        }
    }
};

}  // namespace

KOVA_TOOL_COMMAND(View, "VIEW", "Named Views", "View", {"V"})

}  // namespace kova::cmd::commands
