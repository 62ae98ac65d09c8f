#include "cmd/commands/format/layerstate.hpp"

#include <filesystem>

#include "cmd/prompts/file_names.hpp"
#include "engine/inquiry/value_text.hpp"
#include "edit/layer_state_file.hpp"
#include "cmd/prompts/name_prompts.hpp"
#include "cmd/registry.hpp"
#include "io/text_file.hpp"
#include "strings/wildcards.hpp"
#include "doc/table_edits.hpp"
#include "engine/symbols/symbols.hpp"
#include "io/save.hpp"

namespace kova::cmd::commands {

namespace {

using engine::Layer;
using engine::LayerState;
using engine::LayerStateEntry;
using engine::LayerStateMask;
using engine::Name;

LayerStateEntry entryOf(const Layer& layer) {
    LayerStateEntry e;
    e.on = layer.on;
    e.frozen = layer.frozen;
    e.locked = layer.locked;
    e.plottable = layer.plottable;
    e.color = layer.color;
    e.lineweight = layer.lineweight;
    e.transparency = layer.transparency;
    e.linetype = layer.linetype;
    e.description = layer.description;
    e.plotStyle = layer.plotStyleName;
    return e;
}

void apply(const LayerStateEntry& e, const LayerStateMask& mask, Layer& layer) {
    if (mask.on) layer.on = e.on;
    if (mask.frozen) layer.frozen = e.frozen;
    if (mask.locked) layer.locked = e.locked;
    if (mask.plottable) layer.plottable = e.plottable;
    if (mask.color) layer.color = e.color;
    if (mask.lineweight) layer.lineweight = e.lineweight;
    if (mask.transparency) layer.transparency = e.transparency;
    if (mask.linetype) layer.linetype = e.linetype;
    if (mask.description) layer.description = e.description;
    if (mask.plotStyle) layer.plotStyleName = e.plotStyle;
}

constexpr LayerStateMask kNothing{false, false, false, false, false, false, false, false, false, false};

/// Which properties a state keeps: all for Enter, else those that are named one by one.
Task<LayerStateMask> askMask(Ask& ask) {
    static const std::string options = "[On/Frozen/Lock/Plot/Color/lineType/lineWeight/plotStyle/tRansparency]";
    Answer answer = co_await ask.keyword("Enter states to change " + options + " <all>:",
                                         "On Frozen Lock Plot Color lineType lineWeight plotStyle tRansparency");
    if (answer.isEnter()) co_return LayerStateMask{};
    LayerStateMask mask = kNothing;
    while (!answer.isEnter()) {
        if (answer.is("ON")) mask.on = true;
        if (answer.is("FROZEN")) mask.frozen = true;
        if (answer.is("LOCK")) mask.locked = true;
        if (answer.is("PLOT")) mask.plottable = true;
        if (answer.is("COLOR")) mask.color = true;
        if (answer.is("LINETYPE")) mask.linetype = true;
        if (answer.is("LINEWEIGHT")) mask.lineweight = true;
        if (answer.is("PLOTSTYLE")) mask.plotStyle = true;
        if (answer.is("TRANSPARENCY")) mask.transparency = true;
        answer = co_await ask.keyword("Enter states to change " + options + " <done>:",
                                      "On Frozen Lock Plot Color lineType lineWeight plotStyle tRansparency");
    }
    co_return mask;
}

void save(doc::Document& document, Name name, const LayerStateMask& mask) {
    LayerState state;
    state.name = name;
    state.mask = mask;
    for (const Layer& layer : document.drawing().layers) state.layers.emplace_back(layer.name, entryOf(layer));
    document.editTable<doc::LayerStateTraits>([&](engine::Table<LayerState>& table) { table.add(std::move(state)); });
}

/// Gives the number of layers that the state knows and the drawing still has.
std::size_t restore(doc::Document& document, Ask& ask, const LayerState& state) {
    std::size_t count = 0;
    const Name current = document.drawing().currentLayer;
    document.editTable<doc::LayerTraits>([&](engine::Table<Layer>& layers) {
        for (const auto& [name, entry] : state.layers) {
            Layer* layer = layers.find(name);
            if (layer == nullptr) continue;
            ++count;
            apply(entry, state.mask, *layer);
            if (!layer->frozen || !(layer->name == current)) continue;
            layer->frozen = false;
            ask.message("Cannot freeze layer " + cmd::inQuotes(current) + ". It is the CURRENT layer.");
        }
    });
    return count;
}

/// A state that the drawing has; nothing: Enter.
Task<std::optional<LayerState>> askState(Ask& ask, doc::Document& document, std::string prompt) {
    for (;;) {
        const Answer answer = co_await ask.text(prompt);
        const std::vector<std::string> names = splitNames(answer.text);
        if (answer.isEnter() || names.empty()) co_return std::nullopt;
        if (const LayerState* state = document.drawing().layerStates.find(Name(names.front()))) co_return *state;
        ask.message("Unknown layer state " + cmd::inQuotes(names.front()) + ".");
    }
}

/// A valid name that no state has yet; empty: Enter.
Task<std::string> askNewName(Ask& ask, doc::Document& document, std::string prompt) {
    for (;;) {
        const Answer answer = co_await ask.text(prompt);
        const std::vector<std::string> names = splitNames(answer.text);
        if (answer.isEnter() || names.empty()) co_return std::string();
        const std::string& name = names.front();
        if (names.size() > 1 || !engine::isValidSymbolName(name))
            ask.message("Invalid layer state name.");
        else if (document.drawing().layerStates.contains(Name(name)))
            ask.message("Layer state " + cmd::inQuotes(name) + " already exists.");
        else
            co_return name;
    }
}

/// Path of a layer state file; empty: given up.
Task<std::string> askPath(Ask& ask, std::string prompt) {
    const Answer answer = co_await ask.text(std::move(prompt));
    std::string path = answer.isEnter() ? std::string() : typedPath(answer.text);
    if (!path.empty() && std::filesystem::path(path).extension().empty()) path += ".las";
    co_return path;
}

Task<void> exportState(Ask& ask, LayerState state) {
    const std::string path = co_await askPath(ask, "Enter file name for export:");
    if (path.empty()) co_return;
    const std::string error = io::saveFile(path, layerStateText(state));
    ask.message(error.empty() ? "Layer state " + cmd::inQuotes(state.name) + " exported to " + cmd::inQuotes(path) + "."
                              : error);
}

Task<void> importState(Ask& ask, doc::Document& document, std::function<void()> changing) {
    const std::string path = co_await askPath(ask, "Enter file name to import:");
    if (path.empty()) co_return;
    const std::optional<std::string> text = readTextFile(path, codePageOf(document.drawing()));
    if (!text) co_return ask.message("Cannot open " + cmd::inQuotes(path) + ".");
    const std::vector<LayerState> states = parseLayerStates(*text);
    if (states.empty()) co_return ask.message("There is no layer state in " + cmd::inQuotes(path) + ".");
    for (const LayerState& state : states) {
        if (document.drawing().layerStates.contains(state.name)) {
            std::string prompt =
                "Layer state " + cmd::inQuotes(state.name) + " already exists. Replace it? [Yes/No] <No>:";
            const bool replace = co_await askYesNo(ask, std::move(prompt), false);
            if (!replace) continue;
        }
        changing();
        document.editTable<doc::LayerStateTraits>([&](engine::Table<LayerState>& table) { table.add(state); });
        ask.message("Layer state " + cmd::inQuotes(state.name) + " imported, " + counted(state.layers.size(), "layer") +
                    ".");
    }
}

}  // namespace

Task<void> layerStateDialogue(Ask& ask, doc::Document& document, std::function<void()> changing) {
    const Answer option = co_await ask.keyword("Enter an option [?/Save/Restore/Edit/Name/Delete/Import/EXport]:",
                                               "? Save Restore Edit Name Delete Import EXport");
    if (option.isEnter()) co_return;
    if (option.is("?")) {
        const std::string filter = co_await askNamesToList(ask, "Enter named layer state(s) to list <*>:");
        if (document.drawing().layerStates.empty()) ask.message("There are no layer states.");
        for (const LayerState& state : document.drawing().layerStates)
            if (matchesWildcards(state.name.view(), filter))
                ask.message(cmd::inQuotes(state.name) + ", " + counted(state.layers.size(), "layer"));
        co_return;
    }
    if (option.is("SAVE")) {
        const std::string name = co_await askNewName(ask, document, "Enter new layer state name:");
        if (name.empty()) co_return;
        const LayerStateMask mask = co_await askMask(ask);
        changing();
        save(document, Name(name), mask);
        co_return;
    }
    if (option.is("IMPORT")) co_return co_await importState(ask, document, std::move(changing));
    std::string what = "export";
    for (const char* word : {"Restore", "Edit", "Delete"})
        if (option.is(word)) what = engine::foldCase(word);
    if (option.is("NAME")) what = "rename";
    const std::optional<LayerState> state =
        co_await askState(ask, document, "Enter name of layer state to " + what + ":");
    if (!state) co_return;
    const auto editStates = [&](const std::function<void(engine::Table<LayerState>&)>& change) {
        changing();
        document.editTable<doc::LayerStateTraits>(change);
    };
    if (option.is("RESTORE")) {
        changing();
        ask.message(counted(restore(document, ask, *state), "layer") + " restored.");
    } else if (option.is("EDIT")) {
        const LayerStateMask mask = co_await askMask(ask);
        editStates([&](engine::Table<LayerState>& table) { table.find(state->name)->mask = mask; });
    } else if (option.is("DELETE")) {
        editStates([&](engine::Table<LayerState>& table) { table.erase(state->name); });
    } else if (option.is("NAME")) {
        const std::string name = co_await askNewName(ask, document, "Enter new layer state name:");
        if (!name.empty()) editStates([&](engine::Table<LayerState>& table) { table.rename(state->name, Name(name)); });
    } else {
        co_await exportState(ask, *state);
    }
}

namespace {

/// LAYERSTATE: the layer states alone, without LAYER around them.
class LayerStateTool final : public DialogueTool {
protected:
    Dialogue dialogue(Ask& ask) override {
        co_await layerStateDialogue(ask, document(), [this] {
            if (!group_) group_.emplace(document(), "LAYERSTATE");
        });
    }

public:
    void end() override { group_.reset(); }

private:
    std::optional<doc::GroupScope> group_;
};

}  // namespace

KOVA_TOOL_COMMAND(LayerState, "LAYERSTATE", "Layer States", "Format", {"LAS", "LMAN"})

}  // namespace kova::cmd::commands
