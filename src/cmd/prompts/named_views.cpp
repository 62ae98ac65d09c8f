#include "cmd/prompts/named_views.hpp"

#include "engine/inquiry/value_text.hpp"
#include "cmd/prompts/name_prompts.hpp"
#include "doc/table_edits.hpp"

namespace kova::cmd {

using engine::Name;
using engine::NamedView;

Task<std::optional<Name>> askNewView(Ask& ask, doc::Document& document, std::string prompt, std::string fallback) {
    for (;;) {
        const Answer answer = co_await ask.text(prompt);
        if (answer.isEnter() && fallback.empty()) co_return std::nullopt;
        const std::string name = answer.isEnter() ? fallback : typedName(answer.text);
        if (!engine::isValidSymbolName(name)) {
            ask.message("Invalid view name " + inQuotes(name) + ".");
            continue;
        }
        if (document.drawing().namedViews.contains(Name(name)) && engine::sysVarInt(document.drawing(), "EXPERT") < 2) {
            std::string question = "View " + inQuotes(name) + " already exists. Replace it? [Yes/No] <N>:";
            const bool replace = co_await askYesNo(ask, std::move(question), false);
            if (!replace) continue;
        }
        co_return Name(name);
    }
}

Task<std::optional<NamedView>> askKnownView(Ask& ask, const engine::Drawing& drawing, std::string prompt) {
    for (;;) {
        const Answer answer = co_await ask.text(prompt);
        if (answer.isEnter()) co_return std::nullopt;
        const NamedView* known = drawing.namedViews.find(Name(typedName(answer.text)));
        if (known != nullptr) co_return *known;
        ask.message("Cannot find view " + inQuotes(typedName(answer.text)) + ".");
    }
}

void storeView(doc::Document& document, NamedView view) {
    document.editTable<doc::NamedViewTraits>([&](engine::Table<NamedView>& views) { views.add(std::move(view)); });
}

std::string restoreView(doc::Document& document, const NamedView& view) {
    ViewState state = stateOf(view);
    const ViewState now = viewState(document.drawing());
    const double ratio = now.width > 0.0 && now.height > 0.0 ? now.width / now.height : 1.0;
    state.height = std::max(state.height, state.width / ratio);
    std::string error = setViewState(document, state);
    if (error.empty() && document.drawing().tileMode)
        document.editSettings([&](engine::Drawing& d) {
            d.currentView.name = view.name;
            d.currentView.upHint = view.upHint;
        });
    return error;
}

void listViews(const engine::Drawing& drawing, std::string_view pattern, const Ask& ask) {
    std::vector<Name> names;
    for (const NamedView& view : drawing.namedViews) names.push_back(view.name);
    names = matchingNames(drawing, std::move(names), pattern);
    if (names.empty()) ask.message("No matching names found.");
    for (const Name name : names) {
        const NamedView& view = *drawing.namedViews.find(name);
        ask.message("  " + inQuotes(name) + "  center " + pointDefault(drawing, view.center) + "  height " +
                    lengthDefault(drawing, view.height));
    }
}

}  // namespace kova::cmd
