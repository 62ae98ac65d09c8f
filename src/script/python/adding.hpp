#pragma once

#include "engine/model/entity.hpp"
#include "script/python/binding.hpp"
#include "script/python/convert.hpp"

namespace kova::script::python {

/// Makes sure that the drawing has a layer of that name: one that is missing is made. Fails for a name that no layer
/// may have.
void requireLayer(Binding& binding, engine::Name name);
/// The same for linetypes, which come from the program's library; fails for an unknown one.
void requireLinetype(Binding& binding, engine::Name name);
/// Notes the applications of extended data in the drawing.
void registerApplications(engine::Drawing& drawing, const engine::XData& data);
/// Puts a new entity, given by its Python object, at the end of a space.
void addToSpace(Binding& binding, PyObject* object, engine::EntityList& space);

}  // namespace kova::script::python
