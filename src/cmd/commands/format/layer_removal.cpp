#include <unordered_set>

#include "cmd/prompts/file_names.hpp"
#include "engine/inquiry/value_text.hpp"
#include "edit/layer_changes.hpp"
#include "cmd/registry.hpp"
#include "io/text_file.hpp"
#include "strings/wildcards.hpp"
#include "doc/table_edits.hpp"
#include "engine/symbols/symbols.hpp"

// Layers that go, with or without what is on them.

namespace kova::cmd::commands {

namespace {

using engine::Layer;
using engine::Name;

/// Collects layers by objects or names, with a way back.
class LayerCollector : public DialogueTool {
protected:
    /// Until Enter; those that cannot go are refused.
    Dialogue collect(Ask& ask, std::string what) {
        for (;;) {
            const bool any = !steps_.empty();
            std::string prompt = "Select object on layer to " + what + (any ? " or [Name/Undo]:" : " or [Name]:");
            LayerAnswer answer =
                co_await askLayerOf(ask, document(), std::move(prompt), any ? "Name Undo" : "Name", true);
            if (answer.kind == Answer::Kind::Enter) co_return;
            if (answer.is("UNDO")) {
                steps_.pop_back();
                list();
                continue;
            }
            if (answer.is("NAME")) answer.layers = co_await askLayerNames(ask, document(), "Enter layer name(s):");
            take(std::move(answer.layers));
        }
    }
    LayerNames collected() const {
        LayerNames all;
        for (const LayerNames& step : steps_) all.insert(all.end(), step.begin(), step.end());
        return all;
    }
    void list() const {
        std::string line;
        for (const Name name : collected()) line += (line.empty() ? "" : ",") + name.str();
        message(line.empty() ? "No layers selected." : "Selected layers: " + line + ".");
    }
    /// Blocks that hold objects of these layers.
    std::size_t blocksWith(const LayerNames& names) const {
        std::unordered_set<const void*> keys;
        for (const Name name : names) keys.insert(name.key());
        std::size_t count = 0;
        for (const auto& block : drawing().blocks())
            for (const engine::Entity& entity : block->entities)
                if (keys.contains(entity.layer.key())) {
                    ++count;
                    break;
                }
        return count;
    }
    void deleteLayers(const LayerNames& names) {
        std::size_t count = 0;
        for (const Name name : names) {
            message("Deleting layer " + inQuotes(name) + ".");
            if (document().deleteLayer(name)) ++count;
        }
        message(counted(count, "layer") + " deleted.");
    }

private:
    void take(LayerNames names) {
        const LayerNames before = collected();
        LayerNames step;
        for (const Name name : names) {
            const std::string refusal = whyLayerStays(drawing(), name);
            if (!refusal.empty())
                message(refusal);
            else if (std::find(before.begin(), before.end(), name) == before.end())
                step.push_back(name);
        }
        if (step.empty()) return;
        steps_.push_back(std::move(step));
        list();
    }

    std::vector<LayerNames> steps_;
};

/// LAYDEL: deletes layers with all that is on them, in blocks, too.
class LaydelTool final : public LayerCollector {
protected:
    Dialogue dialogue(Ask& ask) override {
        co_await collect(ask, "delete");
        const LayerNames names = collected();
        if (names.empty()) co_return;
        message("******** WARNING ********");
        if (const std::size_t blocks = blocksWith(names))
            message("The layers are used in " + counted(blocks, "block definition") +
                    ": the objects on them will be removed there as well.");
        for (const Name name : names) message("You are about to delete layer " + inQuotes(name) + " from this drawing.");
        const bool sure = co_await askYesNo(ask, "Do you wish to continue? [Yes/No] <No>:", false);
        if (!sure) co_return;
        const doc::GroupScope group(document(), "LAYDEL");
        eraseOnLayers(document(), names);
        deleteLayers(names);
    }
};

/// LAYMRG: puts all that is on some layers onto another one and deletes them.
class LaymrgTool final : public LayerCollector {
protected:
    Dialogue dialogue(Ask& ask) override {
        co_await collect(ask, "merge");
        const LayerNames names = collected();
        if (names.empty()) co_return;
        Name target;
        while (target.empty()) {
            LayerAnswer answer =
                co_await askLayerOf(ask, document(), "Select object on target layer or [Name]:", "Name", true);
            if (answer.kind == Answer::Kind::Enter) co_return;
            if (answer.is("NAME")) answer.layers = co_await askLayerNames(ask, document(), "Enter layer name:");
            if (answer.layers.empty()) continue;
            if (std::find(names.begin(), names.end(), answer.layers.front()) != names.end())
                message("Layer " + inQuotes(answer.layers.front()) + " is one of those to be merged.");
            else
                target = answer.layers.front();
        }
        message("******** WARNING ********");
        message("You are about to merge " + counted(names.size(), "layer") + " into layer " + inQuotes(target) + ".");
        const bool sure = co_await askYesNo(ask, "Do you wish to continue? [Yes/No] <No>:", false);
        if (!sure) co_return;
        const doc::GroupScope group(document(), "LAYMRG");
        mergeLayers(document(), names, target);
        deleteLayers(names);
    }
};

/// LAYTRANS: brings layers to the names of another set, given pair by pair or by a file of lines "old=new".
class LaytransTool final : public DialogueTool {
protected:
    Dialogue dialogue(Ask& ask) override {
        for (;;) {
            const Answer from = co_await ask.text("Enter layer(s) to translate from:");
            if (from.isEnter()) break;
            LayerNames sources;
            std::string refusal;
            auto matched = matchLayers(drawing(), from.text, [&](const std::string& text) { refusal = text; });
            if (matched) sources = std::move(*matched);
            if (sources.empty()) {
                const std::string path = typedPath(from.text);
                const auto map = path.empty() ? std::optional<std::string>() : readTextFile(path, codePageOf(drawing()));
                if (map)
                    readMap(*map);
                else
                    message(refusal);
                continue;
            }
            for (;;) {
                const Answer to = co_await ask.text("Enter layer to translate to:");
                if (to.isEnter()) break;
                const std::vector<std::string> names = splitNames(to.text);
                if (names.size() == 1 && engine::isValidSymbolName(names.front())) {
                    for (const Name source : sources) pairs_.emplace_back(source, Name(names.front()));
                    break;
                }
                message("Invalid layer name " + inQuotes(to.text) + ".");
            }
        }
        if (!pairs_.empty()) translate();
    }

private:
    void readMap(const std::string& text) {
        std::size_t count = 0;
        for (std::size_t at = 0; at < text.size();) {
            const std::size_t end = std::min(text.find('\n', at), text.size());
            std::string_view line = trimmed(std::string_view(text).substr(at, end - at));
            if (!line.empty() && line.back() == '\r') line = trimmed(line.substr(0, line.size() - 1));
            at = end + 1;
            const std::size_t equals = line.find('=');
            if (line.empty() || line.front() == ';' || equals == std::string_view::npos) continue;
            const std::string to(trimmed(line.substr(equals + 1)));
            if (!engine::isValidSymbolName(to)) {
                message("Invalid layer name " + inQuotes(to) + ".");
                continue;
            }
            // A map serves many drawings: what this one does not have is passed over.
            const auto sources = matchLayers(drawing(), line.substr(0, equals), [](const std::string&) {});
            if (!sources) continue;
            for (const Name source : *sources) pairs_.emplace_back(source, Name(to));
            count += sources->size();
        }
        message(counted(count, "layer") + " mapped.");
    }

    void translate() {
        const doc::GroupScope group(document(), "LAYTRANS");
        std::size_t objects = 0;
        // The first target given for a layer counts; what goes to one target goes together.
        std::unordered_set<const void*> mapped;
        std::vector<std::pair<Name, LayerNames>> targets;
        for (const auto& [from, to] : pairs_) {
            if (from == to || !mapped.insert(from.key()).second) continue;
            const auto known =
                std::find_if(targets.begin(), targets.end(), [&](const auto& t) { return t.first == to; });
            if (known == targets.end())
                targets.emplace_back(to, LayerNames(1, from));
            else
                known->second.push_back(from);
        }
        // Where a layer is both left and gone to (names exchanged), its objects are to be told apart: all leave for
        // names of their own first.
        for (std::size_t i = 0; i < targets.size(); ++i) {
            auto& [to, sources] = targets[i];
            const bool known = drawing().layers.contains(to);
            if (!known || mapped.contains(to.key())) {
                const Name between = known ? freeName(i) : to;
                const Layer* model = drawing().layers.find(sources.front());
                if (model == nullptr) continue;
                Layer fresh = *model;
                fresh.name = between;
                document().editTable<doc::LayerTraits>([&](engine::Table<Layer>& layers) { layers.add(fresh); });
                objects += mergeLayers(document(), sources, between);
            } else {
                objects += mergeLayers(document(), sources, to);
            }
        }
        for (std::size_t i = 0; i < targets.size(); ++i) {
            const Name between = freeNames_.contains(i) ? freeNames_[i] : Name();
            if (between.empty()) continue;
            mergeLayers(document(), LayerNames(1, between), targets[i].first);
            document().deleteLayer(between);
        }
        for (const auto& [to, sources] : targets)
            for (const Name from : sources) {
                const bool isTarget = std::any_of(targets.begin(), targets.end(),
                                                  [&, f = from](const auto& target) { return target.first == f; });
                if (isTarget) continue;
                if (from == drawing().currentLayer) document().setVariable("CLAYER", to.str());
                if (whyLayerStays(drawing(), from).empty()) document().deleteLayer(from);
            }
        message(counted(objects, "object") + " translated.");
    }

    Name freeName(std::size_t index) {
        for (std::size_t i = 1;; ++i) {
            const Name name("$translate" + std::to_string(i));
            if (drawing().layers.contains(name)) continue;
            freeNames_[index] = name;
            return name;
        }
    }

    std::vector<std::pair<Name, Name>> pairs_;
    std::map<std::size_t, Name> freeNames_;
};

}  // namespace

KOVA_TOOL_COMMAND(Laydel, "LAYDEL", "Delete Layer", "Format")
KOVA_TOOL_COMMAND(Laymrg, "LAYMRG", "Merge Layers", "Format")
KOVA_TOOL_COMMAND(Laytrans, "LAYTRANS", "Translate Layers", "Format")

}  // namespace kova::cmd::commands
