#include "script/python/adding.hpp"

#include "doc/table_edits.hpp"
#include "engine/model/drawing.hpp"
#include "engine/kinds/all.hpp"
#include "engine/symbols/symbols.hpp"
#include "script/python/entity_object.hpp"
#include "script/python/references.hpp"

namespace kova::script::python {

void requireLayer(Binding& binding, engine::Name name) {
    if (binding.drawing().layers.contains(name)) return;
    if (!engine::isValidSymbolName(name.view())) fail(PyExc_ValueError, "'" + name.str() + "' is no name for a layer");
    binding.prepareChange();
    binding.document().editTable<doc::LayerTraits>([&](engine::Table<engine::Layer>& layers) { layers.ensure(name); });
}

void requireLinetype(Binding& binding, engine::Name name) {
    const engine::CommonNames& names = engine::commonNames();
    if (name == names.byLayer || name == names.byBlock || binding.drawing().linetypes.contains(name)) return;
    if (binding.drawing().loadLinetype(name) == nullptr)
        fail(PyExc_ValueError, "there is no linetype named '" + name.str() + "'");
}

namespace {

/// The current settings that a new entity takes where nothing was given.
void applyCurrent(const Binding& binding, engine::Entity& entity, std::uint8_t given) {
    if (given == kGivenAll) return;
    engine::PointEntity current;
    binding.document().applyCurrentProperties(current);
    if ((given & kGivenLayer) == 0) entity.layer = current.layer;
    if ((given & kGivenColor) == 0) entity.color = current.color;
    if ((given & kGivenLinetype) == 0) entity.linetype = current.linetype;
    if ((given & kGivenLinetypeScale) == 0) entity.setLinetypeScale(current.linetypeScale());
    if ((given & kGivenLineweight) == 0) entity.lineweight = current.lineweight;
    if ((given & kGivenTransparency) == 0) entity.transparency = current.transparency;
}

/// The block whose contents the space is; null for model space and layouts.
const engine::Block* blockOf(const engine::Drawing& drawing, const engine::EntityList& space) {
    for (const auto& block : drawing.blocks())
        if (&block->entities == &space) return block.get();
    return nullptr;
}

void checkReference(const Binding& binding, const engine::Entity& entity, const engine::EntityList& space) {
    const auto& reference = static_cast<const engine::BlockReferenceEntity&>(entity);
    const engine::Drawing& drawing = binding.drawing();
    const engine::Block* block = drawing.findBlock(reference.blockName);
    if (block == nullptr) fail(PyExc_ValueError, "there is no block named '" + reference.blockName.str() + "'");
    const engine::Block* into = blockOf(drawing, space);
    if (into == nullptr) return;
    // Every block that the definition reaches, each looked at once.
    std::vector<const engine::Block*> reached{block};
    for (std::size_t i = 0; i < reached.size(); ++i) {
        if (reached[i] == into) fail(PyExc_ValueError, "the block '" + into->name.str() + "' would contain itself");
        for (const engine::Entity& e : reached[i]->entities) {
            if (e.type() != engine::EntityType::BlockReference) continue;
            const engine::Block* next =
                drawing.findBlock(static_cast<const engine::BlockReferenceEntity&>(e).blockName);
            if (next != nullptr && std::find(reached.begin(), reached.end(), next) == reached.end())
                reached.push_back(next);
        }
    }
}

}  // namespace

void registerApplications(engine::Drawing& drawing, const engine::XData& data) {
    for (const auto& application : data.applications)
        if (std::find(drawing.appIds.begin(), drawing.appIds.end(), application.name) == drawing.appIds.end())
            drawing.appIds.push_back(application.name);
}

void addToSpace(Binding& binding, PyObject* object, engine::EntityList& space) {
    if (!isEntityObject(object))
        fail(PyExc_TypeError, std::string("an entity is wanted, not ") + Py_TYPE(object)->tp_name);
    auto* o = reinterpret_cast<EntityObject*>(object);
    if (o->owned == nullptr) {
        entityOf(object);
        fail(PyExc_ValueError, "the " + entityText(object) + " is in a drawing already: add a copy()");
    }
    engine::Entity& entity = *o->owned;
    if (entity.type() == engine::EntityType::BlockReference) checkReference(binding, entity, space);
    requireLayer(binding, (o->given & kGivenLayer) != 0 ? entity.layer : binding.drawing().currentLayer);
    requireLinetype(binding, entity.linetype);
    // What a copy names was checked when it was set.
    if (o->given != kGivenAll && mayName(entity.type())) {
        const std::unique_ptr<engine::Entity> fresh = engine::makeEntity(entity.type());
        NamedRecords::of(entity).require(binding, NamedRecords::of(*fresh));
    }
    applyCurrent(binding, entity, o->given);
    if (entity.xdata() != nullptr) registerApplications(binding.drawing(), *entity.xdata());
    binding.prepareChange();
    std::unique_ptr<engine::Entity> owned(std::exchange(o->owned, nullptr));
    o->id = owned->id();
    o->given = kGivenAll;
    binding.document().addEntity(std::move(owned), space);
}

}  // namespace kova::script::python
