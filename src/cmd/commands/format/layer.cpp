#include "cmd/commands/format/layerstate.hpp"
#include "cmd/dialogue.hpp"
#include "engine/inquiry/value_text.hpp"
#include "edit/layer_changes.hpp"
#include "cmd/prompts/name_prompts.hpp"
#include "cmd/pick_request.hpp"
#include "cmd/prompts/property_prompts.hpp"
#include "cmd/registry.hpp"
#include "strings/wildcards.hpp"
#include "doc/table_edits.hpp"
#include "engine/symbols/symbols.hpp"
#include "strings/utf8.hpp"

namespace kova::cmd::commands {

namespace {

using engine::Layer;
using engine::Name;

std::string padded(std::string text, std::size_t width) {
    const std::size_t size = strings::countCharacters(text);
    if (size < width) text.append(width - size, ' ');
    return text + "  ";
}

std::string stateText(const Layer& layer) {
    std::string text = layer.frozen ? "Frozen" : layer.on ? "On" : "Off";
    if (layer.locked) text += ", locked";
    if (!layer.plottable) text += ", no plot";
    return text;
}

/// "1 (red)", "30", "10,20,30".
std::string colorLabel(const engine::Color& color) {
    if (color.method != engine::ColorMethod::ACI || color.aci > 7) return engine::colorText(color);
    return std::to_string(color.aci) + " (" + engine::colorText(color) + ")";
}

/// LAYER: all that the layer table's dialog would do, typed. Everything one call changes is one undo step.
class LayerTool final : public DialogueTool {
public:
    void end() override { group_.reset(); }

protected:
    Dialogue dialogue(Ask& ask) override {
        message("Current layer: " + inQuotes(drawing().currentLayer));
        for (;;) {
            const Answer option = co_await ask.keyword(
                "Enter an option "
                "[?/Make/Set/New/Rename/ON/OFF/Color/Ltype/LWeight/TRansparency/Plot/Freeze/Thaw/LOck/Unlock/stAte/"
                "Description]:",
                "? Make Set New Rename ON OFF Color Ltype LWeight TRansparency Plot Freeze Thaw LOck Unlock stAte "
                "Description MATerial rEconcile Xref");
            if (option.isEnter()) co_return;
            if (option.is("?")) co_await list(ask);
            if (option.is("MAKE")) co_await make(ask);
            if (option.is("SET")) co_await setCurrent(ask);
            if (option.is("NEW")) co_await makeNew(ask);
            if (option.is("RENAME")) co_await rename(ask);
            if (option.is("ON")) co_await flag(ask, "turn on", [](Layer& layer) { layer.on = true; });
            if (option.is("OFF")) co_await turnOff(ask);
            if (option.is("COLOR")) co_await color(ask);
            if (option.is("LTYPE")) co_await linetype(ask);
            if (option.is("LWEIGHT")) co_await lineweight(ask);
            if (option.is("TRANSPARENCY")) co_await transparency(ask);
            if (option.is("PLOT")) co_await plot(ask);
            if (option.is("FREEZE")) co_await freeze(ask);
            if (option.is("THAW")) co_await flag(ask, "thaw", [](Layer& layer) { layer.frozen = false; });
            if (option.is("LOCK")) co_await flag(ask, "lock", [](Layer& layer) { layer.locked = true; });
            if (option.is("UNLOCK")) co_await flag(ask, "unlock", [](Layer& layer) { layer.locked = false; });
            if (option.is("STATE")) co_await layerStateDialogue(ask, document(), [this] { changing(); });
            if (option.is("DESCRIPTION")) co_await describe(ask);
            if (option.is("MATERIAL")) message("Layers have no materials here.");
            if (option.is("RECONCILE")) message("New layers need no reconciling here.");
            if (option.is("XREF")) message("Layers of external references follow VISRETAIN.");
        }
    }

private:
    using Names = LayerNames;
    using Edit = std::function<void(Layer&)>;

    /// Opens the command's undo group before its first change.
    void changing() {
        if (!group_) group_.emplace(document(), "LAYER");
    }

    void edit(const Names& names, const Edit& change) {
        if (names.empty()) return;
        changing();
        editLayers(document(), names, change);
    }

    std::optional<Names> match(const std::string& list) const {
        return matchLayers(drawing(), list, [this](const std::string& text) { message(text); });
    }

    /// Existing layers by a name list; Enter gives the current layer, or none.
    Task<Names> askLayers(Ask& ask, std::string prompt, bool currentByDefault) {
        prompt += currentByDefault ? " <" + drawing().currentLayer.str() + ">:" : ":";
        for (;;) {
            const Answer answer = co_await ask.text(prompt);
            if (answer.isEnter() && !currentByDefault) co_return Names();
            if (answer.isEnter()) co_return Names(1, drawing().currentLayer);
            std::optional<Names> found = match(answer.text);
            if (found) co_return std::move(*found);
        }
    }

    /// One name, quotes round it taken off; empty: Enter.
    Task<std::string> askName(Ask& ask, std::string prompt) {
        const Answer answer = co_await ask.text(std::move(prompt));
        std::vector<std::string> names = splitNames(answer.text);
        // A comma belongs to no layer name: such an answer is refused as the one name it is.
        if (names.size() > 1) co_return answer.text;
        if (names.empty()) co_return std::string();
        co_return std::move(names.front());
    }

    bool isValid(const std::string& name) const {
        if (engine::isValidSymbolName(name)) return true;
        message("Invalid layer name " + inQuotes(name) + ".");
        return false;
    }

    void add(Name name) {
        Layer layer;
        layer.name = name;
        changing();
        document().editTable<doc::LayerTraits>([&](engine::Table<Layer>& layers) { layers.add(std::move(layer)); });
    }

    bool makeCurrent(Name name) {
        changing();
        const std::string error = document().setVariable("CLAYER", name.str());
        message(error);
        return error.empty();
    }

    Dialogue list(Ask& ask) {
        const std::string filter = co_await askNamesToList(ask, "Enter layer name(s) to list <*>:");
        const std::optional<Names> found = match(filter);
        if (!found) co_return;
        Names names = *found;
        // Above MAXSORT the table's own order has to do.
        if (names.size() <= static_cast<std::size_t>(std::max(0, engine::sysVarInt(drawing(), "MAXSORT", 1000))))
            std::sort(names.begin(), names.end(), [](Name a, Name b) { return a.folded() < b.folded(); });
        message(padded("Layer name", 24) + padded("State", 20) + padded("Color", 16) + padded("Linetype", 16) +
                "Lineweight");
        for (const Name name : names) {
            const Layer* layer = drawing().layers.find(name);
            if (layer == nullptr) continue;
            message(padded(inQuotes(layer->name), 24) + padded(stateText(*layer), 20) +
                    padded(colorLabel(layer->color), 16) + padded(layer->linetype.str(), 16) +
                    lineweightText(layer->lineweight));
        }
    }

    Dialogue make(Ask& ask) {
        for (;;) {
            std::string prompt =
                "Enter name for new layer (becomes the current layer) <" + drawing().currentLayer.str() + ">:";
            const std::string name = co_await askName(ask, std::move(prompt));
            if (name.empty()) co_return;
            if (!isValid(name)) continue;
            if (!drawing().layers.contains(Name(name)))
                add(Name(name));
            else
                edit({Name(name)}, [](Layer& layer) { layer.on = true; });
            if (makeCurrent(Name(name))) co_return;
        }
    }

    Dialogue setCurrent(Ask& ask) {
        for (;;) {
            const std::string name = co_await askName(ask, "Enter layer name to make current or <select object>:");
            if (!name.empty()) {
                if (makeCurrent(Name(name))) co_return;
                continue;
            }
            const Answer object = co_await askSource(ask, "Select object whose layer will become current:");
            const engine::Entity* entity = object.isObject() ? drawing().findById(object.id) : nullptr;
            if (entity != nullptr) makeCurrent(entity->layer);
            co_return;
        }
    }

    Dialogue makeNew(Ask& ask) {
        for (;;) {
            const Answer answer = co_await ask.text("Enter name list for new layer(s):");
            if (answer.isEnter()) co_return;
            const std::vector<std::string> names = splitNames(answer.text);
            if (!std::all_of(names.begin(), names.end(), [this](const std::string& n) { return isValid(n); })) continue;
            for (const std::string& name : names) {
                if (drawing().layers.contains(Name(name)))
                    message("Layer " + inQuotes(name) + " already exists.");
                else
                    add(Name(name));
            }
            co_return;
        }
    }

    Dialogue rename(Ask& ask) {
        const std::string from = co_await askName(ask, "Enter old layer name:");
        if (from.empty()) co_return;
        const Layer* layer = drawing().layers.find(Name(from));
        if (layer == nullptr) {
            message("Unknown layer " + inQuotes(from) + ".");
            co_return;
        }
        const Name old = layer->name;
        for (;;) {
            const std::string to = co_await askName(ask, "Enter new layer name:");
            if (to.empty()) co_return;
            changing();
            const std::string error = document().renameSymbol(engine::SymbolKind::Layer, old, Name(to));
            if (error.empty()) co_return;
            message(error);
            if (engine::isFixedSymbol(engine::SymbolKind::Layer, old)) co_return;
        }
    }

    Dialogue flag(Ask& ask, std::string_view what, Edit change) {
        const Names names = co_await askLayers(ask, "Enter name list of layer(s) to " + std::string(what), false);
        edit(names, change);
    }

    Dialogue turnOff(Ask& ask) {
        Names names = co_await askLayers(ask, "Enter name list of layer(s) to turn off", false);
        const Name current = drawing().currentLayer;
        if (std::find(names.begin(), names.end(), current) != names.end() &&
            engine::sysVarInt(drawing(), "EXPERT") < 1) {
            std::string prompt = "Really want layer " + inQuotes(current) + " (the CURRENT layer) off? [Yes/No] <No>:";
            const bool off = co_await askYesNo(ask, std::move(prompt), false);
            if (!off) std::erase(names, current);
        }
        edit(names, [](Layer& layer) { layer.on = false; });
    }

    Dialogue freeze(Ask& ask) {
        Names names = co_await askLayers(ask, "Enter name list of layer(s) to freeze", false);
        if (std::erase(names, drawing().currentLayer) > 0)
            message("Cannot freeze layer " + inQuotes(drawing().currentLayer) + ". It is the CURRENT layer.");
        edit(names, [](Layer& layer) { layer.frozen = true; });
    }

    Dialogue color(Ask& ask) {
        const std::optional<engine::Color> chosen = co_await askColor(ask, "New color [Truecolor/COlorbook]:", true);
        if (!chosen) co_return;
        const Names names =
            co_await askLayers(ask, "Enter name list of layer(s) for color " + colorLabel(*chosen), true);
        edit(names, [&](Layer& layer) { layer.color = *chosen; });
    }

    Dialogue linetype(Ask& ask) {
        Name chosen = engine::commonNames().continuous;
        for (;;) {
            const Answer answer = co_await ask.text("Enter loaded linetype name or [?] <Continuous>:", "?");
            if (answer.is("?")) {
                for (const engine::Linetype& known : drawing().linetypes)
                    message(padded(inQuotes(known.name), 24) + known.description);
                continue;
            }
            if (answer.isEnter()) break;
            const std::vector<std::string> names = splitNames(answer.text);
            const Name name(names.empty() ? std::string() : names.front());
            const bool special = name == engine::commonNames().byLayer || name == engine::commonNames().byBlock;
            if (!special && !drawing().linetypes.contains(name)) changing();
            const engine::Linetype* known = special ? nullptr : useLinetype(document(), name);
            if (known != nullptr) {
                chosen = known->name;
                break;
            }
            message("Unknown linetype " + inQuotes(name) + ".");
        }
        const Names names = co_await askLayers(ask, "Enter name list of layer(s) for linetype " + inQuotes(chosen), true);
        edit(names, [&](Layer& layer) { layer.linetype = chosen; });
    }

    Dialogue lineweight(Ask& ask) {
        std::optional<int> chosen;
        while (!chosen) {
            const Answer answer = co_await ask.text("Enter lineweight (0.0mm - 2.11mm):");
            if (answer.isEnter()) co_return;
            chosen = parseLineweight(answer.text);
            // A layer has nothing to take a lineweight from but the default.
            if (chosen && (*chosen == -1 || *chosen == -2)) chosen.reset();
            if (!chosen) message("Invalid value.");
        }
        const Names names =
            co_await askLayers(ask, "Enter name list of layer(s) for lineweight " + lineweightText(*chosen), true);
        edit(names, [&](Layer& layer) { layer.lineweight = *chosen; });
    }

    Dialogue transparency(Ask& ask) {
        Ask::Request request;
        request.kind = Ask::Kind::Integer;
        request.prompt = "Enter a transparency value (0-90):";
        request.range = {0.0, 90.0};
        request.refusal = "Invalid number. Enter 0-90:";
        const Answer answer = co_await ask.request(std::move(request));
        if (answer.isEnter()) co_return;
        const int percent = answer.integer();
        const Names names = co_await askLayers(
            ask, "Enter name list of layer(s) for transparency value " + std::to_string(percent), true);
        edit(names, [&](Layer& layer) { layer.transparency = percent; });
    }

    Dialogue plot(Ask& ask) {
        const Answer answer = co_await ask.keyword("Enter a plotting preference [Plot/No plot] <Plot>:", "Plot No");
        const bool plottable = !answer.is("NO");
        const Names names = co_await askLayers(ask, "Enter layer name(s) for this plot preference", true);
        edit(names, [&](Layer& layer) { layer.plottable = plottable; });
    }

    Dialogue describe(Ask& ask) {
        const Answer answer = co_await ask.line("Enter layer description:");
        const std::string text = answer.text;
        const Names names = co_await askLayers(ask, "Enter name list of layer(s) for description", true);
        edit(names, [&](Layer& layer) { layer.description = text; });
    }

    std::optional<doc::GroupScope> group_;
};

}  // namespace

KOVA_TOOL_COMMAND(Layer, "LAYER", "Layer", "Format", {"LA", "DDLMODES"})

}  // namespace kova::cmd::commands
