#include "cmd/commands/layer_states.hpp"

#include "cmd/format.hpp"
#include "cmd/wildcards.hpp"
#include "doc/table_edits.hpp"
#include "engine/symbols.hpp"

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
            ask.message("Cannot freeze layer " + quoted(current) + ". It is the CURRENT layer.");
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
        ask.message("Unknown layer state " + quoted(names.front()) + ".");
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
            ask.message("Layer state " + quoted(name) + " already exists.");
        else
            co_return name;
    }
}

}  // namespace

Task<void> layerStateDialogue(Ask& ask, doc::Document& document, std::function<void()> changing) {
    const Answer option =
        co_await ask.keyword("Enter an option [?/Save/Restore/Name/Delete]:", "? Save Restore Name Delete");
    if (option.isEnter()) co_return;
    if (option.is("?")) {
        if (document.drawing().layerStates.empty()) ask.message("There are no layer states.");
        for (const LayerState& state : document.drawing().layerStates)
            ask.message(quoted(state.name) + ", " + counted(state.layers.size(), "layer"));
    } else if (option.is("SAVE")) {
        const std::string name = co_await askNewName(ask, document, "Enter new layer state name:");
        if (name.empty()) co_return;
        const LayerStateMask mask = co_await askMask(ask);
        changing();
        save(document, Name(name), mask);
    } else if (option.is("NAME")) {
        const std::optional<LayerState> state =
            co_await askState(ask, document, "Enter name of layer state to rename:");
        if (!state) co_return;
        const std::string name = co_await askNewName(ask, document, "Enter new layer state name:");
        if (name.empty()) co_return;
        changing();
        document.editTable<doc::LayerStateTraits>(
            [&](engine::Table<LayerState>& table) { table.rename(state->name, Name(name)); });
    } else {
        const bool restoring = option.is("RESTORE");
        const char* prompt =
            restoring ? "Enter name of layer state to restore:" : "Enter name of layer state to delete:";
        const std::optional<LayerState> state = co_await askState(ask, document, prompt);
        if (!state) co_return;
        changing();
        if (restoring)
            ask.message(counted(restore(document, ask, *state), "layer") + " restored.");
        else
            document.editTable<doc::LayerStateTraits>(
                [&](engine::Table<LayerState>& table) { table.erase(state->name); });
    }
}

}  // namespace kova::cmd::commands
