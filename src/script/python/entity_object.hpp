#pragma once

#include <array>
#include <functional>
#include <memory>

#include "engine/model/entity.hpp"
#include "script/python/fields.hpp"

namespace kova::script::python {

/// A Python object that stands for an entity: it owns one that is in no drawing yet, or knows the id of one that was
/// put in a drawing. The entity of an id may be gone (deleted, undone, its drawing closed) and come back (undo, redo).
struct EntityObject {
    PyObject_HEAD engine::Entity* owned;
    std::uint64_t id;
    PyObject* weakReferences;
    engine::EntityType kind;
    std::uint8_t given;  ///< GivenProperty bits: what adding to a drawing leaves as it is
};

inline EntityObject* objectOf(PyObject* object) { return reinterpret_cast<EntityObject*>(object); }

/// Properties that a new entity takes from the drawing's current settings unless they were given.
enum GivenProperty : std::uint8_t {
    kGivenLayer = 1,
    kGivenColor = 2,
    kGivenLinetype = 4,
    kGivenLinetypeScale = 8,
    kGivenLineweight = 16,
    kGivenTransparency = 32,
    kGivenAll = 63
};

/// A descriptor of a kind's class: one described field.
struct FieldObject {
    PyObject_HEAD const FieldInfo* info;
    std::string* name;  ///< as this attribute is called; an alias differs from the field's own name
    engine::EntityType kind;
    PyObject* doc;
};

/// The base class `kova.ent.Entity`, and the class of a kind; borrowed.
PyTypeObject* entityBase();
PyTypeObject* entityClass(engine::EntityType kind);
/// The error that is raised for entities that are gone; borrowed.
PyObject* goneError();
/// Makes all classes as members of a module; PythonError on failure.
void addEntityClasses(PyObject* module);

bool isEntityObject(PyObject* object);
/// The object of an entity that stands in the drawing. A new reference.
PyObject* entityObject(const engine::Entity& entity);
/// The entity that an object stands for; fails when it is gone.
engine::Entity& entityOf(PyObject* object);
/// Changes the entity: through the document when it stands in a drawing. When `change` throws, nothing is changed.
void changeEntity(PyObject* object, const std::function<void(engine::Entity&)>& change);
/// The object as "Line 2F" for errors.
std::string entityText(PyObject* object);

/// Attributes of the base class; see entity_properties.cpp.
extern PyGetSetDef kEntityProperties[];
extern PyMethodDef kEntityMethods[];

/// Names that a class has besides those of its fields, and the order of positional arguments.
struct KindNames {
    engine::EntityType kind;
    std::vector<std::pair<const char*, const char*>> aliases;  ///< alias, field
    std::vector<const char*> positional;                       ///< empty: the fields in their order
};
const KindNames& kindNames(engine::EntityType kind);
/// The described fields of a kind, in order.
const std::vector<FieldInfo>& kindFields(engine::EntityType kind);

}  // namespace kova::script::python
