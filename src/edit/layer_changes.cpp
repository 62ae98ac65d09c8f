#include "edit/layer_changes.hpp"

#include <unordered_set>

#include "engine/inquiry/value_text.hpp"
#include "cmd/prompts/name_prompts.hpp"
#include "cmd/pick_request.hpp"
#include "strings/wildcards.hpp"
#include "doc/table_edits.hpp"
#include "engine/entities/block_reference.hpp"
#include "engine/entities/viewport.hpp"

namespace kova::cmd {

using engine::Entity;
using engine::EntityList;
using engine::Layer;
using engine::Name;

namespace {

/// Layers by identity of their names, for quick looks.
class NameSet {
public:
    explicit NameSet(const LayerNames& names) {
        for (const Name name : names) keys_.insert(name.key());
    }
    bool contains(Name name) const { return keys_.contains(name.key()); }

private:
    std::unordered_set<const void*> keys_;
};

std::vector<EntityList*> allLists(engine::Drawing& drawing) {
    std::vector<EntityList*> lists{&drawing.modelSpace()};
    for (const auto& layout : drawing.layouts()) lists.push_back(&layout->entities);
    for (const auto& block : drawing.blocks()) lists.push_back(&block->entities);
    return lists;
}

bool namesLayer(const engine::XDataItem& item, const NameSet& names) {
    if (item.code != 1003) return false;
    const auto* text = std::get_if<std::string>(&item.value);
    return text != nullptr && names.contains(Name(*text));
}

/// Refers to one of the layers besides being on it.
bool mentionsLayer(const Entity& entity, const NameSet& names) {
    if (entity.type() == engine::EntityType::BlockReference) {
        const auto& attributes = static_cast<const engine::BlockReferenceEntity&>(entity).attributes;
        if (std::any_of(attributes.begin(), attributes.end(), [&](const auto& a) { return names.contains(a.layer); }))
            return true;
    }
    if (entity.type() == engine::EntityType::Viewport) {
        const auto& frozen = static_cast<const engine::ViewportEntity&>(entity).vpFrozenLayers;
        if (std::any_of(frozen.begin(), frozen.end(), [&](Name n) { return names.contains(n); })) return true;
    }
    if (const engine::XData* data = entity.xdata())
        for (const auto& application : data->applications)
            for (const auto& item : application.items)
                if (namesLayer(item, names)) return true;
    return false;
}

void renameMentions(Entity& entity, const NameSet& names, Name to) {
    if (names.contains(entity.layer)) entity.layer = to;
    if (auto* reference = dynamic_cast<engine::BlockReferenceEntity*>(&entity))
        for (engine::BlockAttribute& attribute : reference->attributes)
            if (names.contains(attribute.layer)) attribute.layer = to;
    // The layer that stays is not frozen there because another one was.
    if (auto* viewport = dynamic_cast<engine::ViewportEntity*>(&entity))
        std::erase_if(viewport->vpFrozenLayers, [&](Name n) { return names.contains(n); });
    if (entity.xdata() == nullptr) return;
    for (auto& application : entity.ensureXdata().applications)
        for (auto& item : application.items)
            if (namesLayer(item, names)) item.value = to.str();
}

/// Numbers of a dynamic block's entities after some are gone.
void renumber(std::vector<std::int32_t>& indices, const std::vector<std::int32_t>& now) {
    std::vector<std::int32_t> kept;
    for (const std::int32_t i : indices)
        if (i >= 0 && static_cast<std::size_t>(i) < now.size() && now[static_cast<std::size_t>(i)] >= 0)
            kept.push_back(now[static_cast<std::size_t>(i)]);
    indices = std::move(kept);
}

void renumberDynamics(doc::Document& document, engine::Block& block, const NameSet& names) {
    std::vector<std::int32_t> now;
    std::int32_t next = 0;
    for (const Entity& entity : block.entities) now.push_back(names.contains(entity.layer) ? -1 : next++);
    if (static_cast<std::size_t>(next) == now.size()) return;
    document.editBlock(block, [&](engine::Block& b) {
        for (engine::DynAction& action : b.dynActions) renumber(action.affectedEntityIndices, now);
        for (engine::VisibilityState& state : b.visibilityStates) renumber(state.visibleEntityIndices, now);
    });
}

}  // namespace

std::optional<LayerNames> matchLayers(const engine::Drawing& drawing, std::string_view list,
                                      const std::function<void(const std::string&)>& message) {
    LayerNames found;
    std::unordered_set<const void*> taken;
    for (const std::string& item : splitNames(list)) {
        bool any = false;
        const auto take = [&](Name name) {
            any = true;
            if (taken.insert(name.key()).second) found.push_back(name);
        };
        if (const Layer* layer = drawing.layers.find(Name(item))) {
            take(layer->name);
        } else if (hasWildcards(item)) {
            for (const Layer& candidate : drawing.layers)
                if (matchesWildcards(candidate.name, item)) take(candidate.name);
        }
        if (any) continue;
        message(hasWildcards(item) ? "No matching names found." : "Unknown layer " + inQuotes(item) + ".");
        return std::nullopt;
    }
    return found;
}

void editLayers(doc::Document& document, const LayerNames& names, const std::function<void(Layer&)>& change) {
    if (names.empty()) return;
    document.editTable<doc::LayerTraits>([&](engine::Table<Layer>& layers) {
        for (const Name name : names)
            if (Layer* layer = layers.find(name)) change(*layer);
    });
}

Task<LayerAnswer> askLayerOf(Ask& ask, doc::Document& document, std::string prompt, std::string keywords, bool names) {
    for (;;) {
        PickRequest request;
        request.prompt = prompt;
        request.options = keywords;
        request.locked = Locked::Taken;
        if (names)
            request.isName = [&document](std::string_view line) {
                return document.drawing().layers.contains(Name(typedName(line)));
            };
        const Answer answer = co_await askPick(ask, std::move(request));
        LayerAnswer out;
        out.kind = answer.kind;
        out.word = answer.word;
        if (const Entity* entity = answer.isObject() ? document.drawing().findById(answer.id) : nullptr) {
            out.layers.assign(1, entity->layer);
            out.id = answer.id;
            out.point = answer.point;
        }
        if (!answer.isText()) co_return out;
        auto matched =
            matchLayers(document.drawing(), answer.text, [&](const std::string& text) { ask.message(text); });
        if (!matched || matched->empty()) continue;
        out.layers = std::move(*matched);
        co_return out;
    }
}

Task<LayerNames> askLayerNames(Ask& ask, doc::Document& document, std::string prompt) {
    for (;;) {
        const Answer answer = co_await ask.text(prompt);
        if (answer.isEnter()) co_return LayerNames();
        auto matched =
            matchLayers(document.drawing(), answer.text, [&](const std::string& text) { ask.message(text); });
        if (matched && !matched->empty()) co_return std::move(*matched);
    }
}

LayerNames layersOf(const engine::Drawing& drawing, const std::vector<std::uint64_t>& ids) {
    LayerNames names;
    std::unordered_set<const void*> taken;
    for (const std::uint64_t id : ids)
        if (const Entity* entity = drawing.findById(id); entity != nullptr && taken.insert(entity->layer.key()).second)
            names.push_back(entity->layer);
    return names;
}

std::unordered_map<const void*, std::size_t> objectsByLayer(const engine::Drawing& drawing) {
    std::unordered_map<const void*, std::size_t> counts;
    // Only looked at.
    for (const EntityList* list : allLists(const_cast<engine::Drawing&>(drawing)))
        for (const Entity& entity : *list) ++counts[entity.layer.key()];
    return counts;
}

std::string whyLayerStays(const engine::Drawing& drawing, Name name) {
    static const Name defpoints("Defpoints");
    if (name == engine::commonNames().layerZero || name == defpoints || name.view().find('|') != std::string_view::npos)
        return "Cannot delete layer " + inQuotes(name) + ".";
    if (name == drawing.currentLayer) return "Cannot delete layer " + inQuotes(name) + ". It is the CURRENT layer.";
    return {};
}

std::size_t putOnLayer(doc::Document& document, const std::vector<std::uint64_t>& ids, Name layer) {
    std::size_t count = 0;
    for (const std::uint64_t id : ids) {
        Entity* entity = document.drawing().findById(id);
        if (entity == nullptr || entity->layer == layer) continue;
        document.modifyEntity(*entity, [&](Entity& e) { e.layer = layer; });
        ++count;
    }
    return count;
}

std::size_t mergeLayers(doc::Document& document, const LayerNames& from, Name to) {
    const NameSet names(from);
    std::size_t count = 0;
    for (EntityList* list : allLists(document.drawing())) {
        for (Entity* entity : list->entities()) {
            const bool on = names.contains(entity->layer);
            if (!on && !mentionsLayer(*entity, names)) continue;
            document.modifyEntity(*entity, [&](Entity& e) { renameMentions(e, names, to); });
            if (on) ++count;
        }
    }
    return count;
}

std::size_t eraseOnLayers(doc::Document& document, const LayerNames& from) {
    const NameSet names(from);
    std::size_t count = 0;
    for (const auto& block : document.drawing().blocks())
        if (!block->dynActions.empty() || !block->visibilityStates.empty()) renumberDynamics(document, *block, names);
    for (EntityList* list : allLists(document.drawing())) {
        for (Entity* entity : list->entities()) {
            if (names.contains(entity->layer)) {
                document.removeEntity(*entity);
                ++count;
            } else if (entity->type() == engine::EntityType::BlockReference && mentionsLayer(*entity, names)) {
                document.modifyEntity(*entity, [&](Entity& e) {
                    std::erase_if(static_cast<engine::BlockReferenceEntity&>(e).attributes,
                                  [&](const engine::BlockAttribute& a) { return names.contains(a.layer); });
                });
            }
        }
    }
    return count;
}

}  // namespace kova::cmd
