#include "script/python/entity_object.hpp"

#include <structmember.h>

#include <cstddef>

#include "engine/model/drawing.hpp"
#include "script/python/binding.hpp"
#include "script/python/references.hpp"

namespace kova::script::python {

namespace {

PyTypeObject* baseType = nullptr;
PyTypeObject* fieldType = nullptr;
std::array<PyTypeObject*, engine::kEntityTypeCount> kindTypes{};
PyObject* goneErrorType = nullptr;

FieldObject* field(PyObject* object) { return reinterpret_cast<FieldObject*>(object); }
std::size_t indexOf(engine::EntityType kind) { return static_cast<std::size_t>(kind); }

/// The kind whose class this is or derives from.
std::optional<engine::EntityType> kindOfClass(PyTypeObject* type) {
    for (; type != nullptr && type != baseType; type = type->tp_base)
        for (std::size_t i = 0; i < kindTypes.size(); ++i)
            if (kindTypes[i] == type) return static_cast<engine::EntityType>(i);
    return std::nullopt;
}

/// A transform may have made another kind of the entity (a circle an ellipse): its object then is of that class.
void followKind(PyObject* object, engine::EntityType kind) {
    EntityObject* e = objectOf(object);
    if (e->kind == kind) return;
    if (Py_TYPE(object) == kindTypes[indexOf(e->kind)]) {
        PyTypeObject* old = Py_TYPE(object);
        Py_INCREF(kindTypes[indexOf(kind)]);
        Py_SET_TYPE(object, kindTypes[indexOf(kind)]);
        Py_DECREF(old);
    }
    e->kind = kind;
}

// The base class -----------------------------------------------------------------------------------------

PyObject* newObject(PyTypeObject* type, PyObject*, PyObject*) {
    return guarded([&]() -> PyObject* {
        const auto kind = kindOfClass(type);
        if (!kind) fail(PyExc_TypeError, "Entity is the base of all kinds; make a Line, a Circle ...");
        PyObject* object = checked(type->tp_alloc(type, 0));
        EntityObject* e = objectOf(object);
        e->owned = engine::makeEntity(*kind).release();
        e->id = e->owned->id();
        e->kind = *kind;
        return object;
    });
}

int initObject(PyObject* object, PyObject* arguments, PyObject* keywords) {
    return guarded(
        [&] {
            const Py_ssize_t count = PyTuple_GET_SIZE(arguments);
            if (count > 0) {
                const engine::EntityType kind = objectOf(object)->kind;
                const auto& names = kindNames(kind).positional;
                const auto& fields = kindFields(kind);
                const std::size_t most = names.empty() ? fields.size() : names.size();
                if (static_cast<std::size_t>(count) > most)
                    fail(PyExc_TypeError, std::string(engine::nativeName(kind)) + "() takes at most " +
                                              std::to_string(most) + " positional arguments, but " +
                                              std::to_string(count) + " were given");
                for (Py_ssize_t i = 0; i < count; ++i) {
                    const auto n = static_cast<std::size_t>(i);
                    PyObject* name = pyKnownText(names.empty() ? fields[n].name : std::string(names[n]));
                    if (keywords != nullptr && PyDict_Contains(keywords, name) == 1)
                        fail(PyExc_TypeError, "argument '" + textFrom(name, "name") + "' was given twice");
                    if (PyObject_SetAttr(object, name, PyTuple_GET_ITEM(arguments, i)) != 0) throw PythonError{};
                }
            }
            PyObject* key = nullptr;
            PyObject* value = nullptr;
            Py_ssize_t position = 0;
            while (keywords != nullptr && PyDict_Next(keywords, &position, &key, &value)) {
                if (PyObject_SetAttr(object, key, value) == 0) continue;
                if (!PyErr_ExceptionMatches(PyExc_AttributeError)) throw PythonError{};
                PyErr_Clear();
                fail(PyExc_TypeError, std::string(engine::nativeName(objectOf(object)->kind)) +
                                          "() got an unexpected keyword argument '" + textFrom(key, "name") + "'");
            }
            return 0;
        },
        -1);
}

void freeObject(PyObject* object) {
    PyTypeObject* type = Py_TYPE(object);
    if (objectOf(object)->weakReferences != nullptr) PyObject_ClearWeakRefs(object);
    delete objectOf(object)->owned;
    type->tp_free(object);
    Py_DECREF(type);
}

PyObject* compareObjects(PyObject* a, PyObject* b, int operation) {
    if ((operation != Py_EQ && operation != Py_NE) || !isEntityObject(b)) Py_RETURN_NOTIMPLEMENTED;
    return PyBool_FromLong((objectOf(a)->id == objectOf(b)->id) == (operation == Py_EQ));
}

Py_hash_t hashObject(PyObject* object) {
    const auto hash = static_cast<Py_hash_t>(objectOf(object)->id);
    return hash == -1 ? -2 : hash;
}

PyObject* showObject(PyObject* object) {
    return guarded([&] { return pyText("<" + entityText(object) + ">"); });
}

PyMemberDef kMembers[] = {
    {"__weaklistoffset__", T_PYSSIZET, offsetof(EntityObject, weakReferences), READONLY, nullptr},
    {nullptr, 0, 0, 0, nullptr},
};

PyTypeObject* makeBase() {
    PyType_Slot slots[] = {
        {Py_tp_doc, const_cast<char*>("An entity: a new one that is in no drawing yet, or one of the drawing.\n\n"
                                      "Two objects are equal when they stand for the same entity.")},
        {Py_tp_new, reinterpret_cast<void*>(newObject)},
        {Py_tp_init, reinterpret_cast<void*>(initObject)},
        {Py_tp_dealloc, reinterpret_cast<void*>(freeObject)},
        {Py_tp_richcompare, reinterpret_cast<void*>(compareObjects)},
        {Py_tp_hash, reinterpret_cast<void*>(hashObject)},
        {Py_tp_repr, reinterpret_cast<void*>(showObject)},
        {Py_tp_members, kMembers},
        {Py_tp_getset, kEntityProperties},
        {Py_tp_methods, kEntityMethods},
        {0, nullptr},
    };
    PyType_Spec spec = {"kova.ent.Entity", sizeof(EntityObject), 0, Py_TPFLAGS_DEFAULT | Py_TPFLAGS_BASETYPE, slots};
    return reinterpret_cast<PyTypeObject*>(checked(PyType_FromSpec(&spec)));
}

// Fields -------------------------------------------------------------------------------------------------

void requireKind(const engine::Entity& entity, FieldObject* f) {
    if (entity.type() != f->kind)
        fail(PyExc_AttributeError, std::string("'") + std::string(engine::nativeName(entity.type())) +
                                       "' object has no attribute '" + *f->name + "'");
}

PyObject* getField(PyObject* descriptor, PyObject* object, PyObject*) {
    if (object == nullptr || object == Py_None) return Py_NewRef(descriptor);
    return guarded([&] {
        FieldObject* f = field(descriptor);
        engine::Entity& entity = entityOf(object);
        requireKind(entity, f);
        FieldGetter getter(f->info->key);
        entity.describe(getter);
        if (getter.found()) return getter.take().release();
        // A field that counts only under a condition which is not met.
        const std::unique_ptr<engine::Entity> copy = entity.clone();
        FieldGetter further(f->info->key);
        further.lookEverywhere();
        copy->describe(further);
        return further.found() ? further.take().release() : Py_NewRef(Py_None);
    });
}

/// Fails when the value would name records that the drawing does not have. A new entity is looked at as a whole when it
/// is added.
void requireNamed(PyObject* object, FieldObject* f, PyObject* value) {
    Binding* binding = Binding::current();
    if (binding == nullptr || (objectOf(object)->owned != nullptr && objectOf(object)->given != kGivenAll)) return;
    const engine::Entity& entity = entityOf(object);
    if (!mayName(entity.type(), *f->info)) return;
    const std::unique_ptr<engine::Entity> trial = entity.clone();
    const NamedRecords before = NamedRecords::of(*trial);
    FieldSetter setter(f->info->key, *f->name, value);
    setter.apply(*trial);
    NamedRecords::of(*trial).require(*binding, before);
}

int setField(PyObject* descriptor, PyObject* object, PyObject* value) {
    return guarded(
        [&] {
            FieldObject* f = field(descriptor);
            if (value == nullptr) fail(PyExc_AttributeError, "'" + *f->name + "' cannot be deleted");
            requireKind(entityOf(object), f);
            requireNamed(object, f, value);
            changeEntity(object, [&](engine::Entity& entity) {
                FieldSetter setter(f->info->key, *f->name, value);
                setter.apply(entity);
            });
            return 0;
        },
        -1);
}

void freeField(PyObject* object) {
    PyTypeObject* type = Py_TYPE(object);
    delete field(object)->name;
    Py_XDECREF(field(object)->doc);
    type->tp_free(object);
    Py_DECREF(type);
}

PyObject* fieldAttribute(PyObject* object, void* which) {
    return guarded([&] {
        const FieldObject* f = field(object);
        switch (reinterpret_cast<std::intptr_t>(which)) {
            case 0:
                return pyText(*f->name);
            case 1:
                return Py_NewRef(f->doc);
            case 2:
                return pyText(pythonType(f->info->kind));
            default:
                return pyText(f->info->key);
        }
    });
}

PyGetSetDef kFieldAttributes[] = {
    {"__name__", fieldAttribute, nullptr, nullptr, reinterpret_cast<void*>(0)},
    {"__doc__", fieldAttribute, nullptr, nullptr, reinterpret_cast<void*>(1)},
    {"annotation", fieldAttribute, nullptr, "The type of the value, as stubs write it.", reinterpret_cast<void*>(2)},
    {"key", fieldAttribute, nullptr, "The field's name in the drawing file.", reinterpret_cast<void*>(3)},
    {nullptr, nullptr, nullptr, nullptr, nullptr},
};

PyTypeObject* makeFieldType() {
    PyType_Slot slots[] = {
        {Py_tp_dealloc, reinterpret_cast<void*>(freeField)},
        {Py_tp_descr_get, reinterpret_cast<void*>(getField)},
        {Py_tp_descr_set, reinterpret_cast<void*>(setField)},
        {Py_tp_getset, kFieldAttributes},
        {0, nullptr},
    };
    PyType_Spec spec = {"kova.ent.Field", sizeof(FieldObject), 0,
                        Py_TPFLAGS_DEFAULT | Py_TPFLAGS_DISALLOW_INSTANTIATION, slots};
    return reinterpret_cast<PyTypeObject*>(checked(PyType_FromSpec(&spec)));
}

std::string fieldDoc(const FieldInfo& info) {
    std::string doc = info.kind == FieldKind::Record    ? "A dict of fields, or None"
                      : info.kind == FieldKind::Records ? "A list of dicts of fields"
                                                        : "";
    const char* unit = info.unit == engine::Unit::Length  ? "drawing units"
                       : info.unit == engine::Unit::Angle ? "radians"
                                                          : "";
    if (doc.empty()) doc = pythonType(info.kind);
    if (*unit != '\0') doc += std::string(", ") + unit;
    return doc + ".";
}

Ref makeField(const FieldInfo& info, const std::string& name, engine::EntityType kind) {
    Ref object(checked(fieldType->tp_alloc(fieldType, 0)));
    FieldObject* f = field(object.get());
    f->info = &info;
    f->name = new std::string(name);
    f->kind = kind;
    f->doc = pyText(fieldDoc(info) + (name != info.name ? " The same as `" + info.name + "`." : ""));
    return object;
}

PyTypeObject* makeKind(engine::EntityType kind) {
    const std::string name(engine::nativeName(kind));
    const Ref members(checked(PyDict_New()));
    const auto set = [&](const char* key, Ref value) {
        if (PyDict_SetItemString(members.get(), key, value.get()) != 0) throw PythonError{};
    };
    for (const FieldInfo& info : kindFields(kind)) set(info.name.c_str(), makeField(info, info.name, kind));
    std::string doc = "The kind \"" + std::string(engine::displayName(kind)) + "\".\n\nPositional arguments: ";
    bool first = true;
    const KindNames& names = kindNames(kind);
    for (const auto& [alias, fieldName] : names.aliases)
        for (const FieldInfo& info : kindFields(kind))
            if (info.name == fieldName) set(alias, makeField(info, alias, kind));
    const auto add = [&](const std::string& argument) { doc += (std::exchange(first, false) ? "" : ", ") + argument; };
    if (names.positional.empty())
        for (const FieldInfo& info : kindFields(kind)) add(info.name);
    else
        for (const char* argument : names.positional) add(argument);
    set("__slots__", Ref(checked(PyTuple_New(0))));
    set("__module__", Ref(pyText("kova.ent")));
    set("__doc__", Ref(pyText(doc + ".")));
    return reinterpret_cast<PyTypeObject*>(checked(PyObject_CallFunction(
        reinterpret_cast<PyObject*>(&PyType_Type), "s(O)O", name.c_str(), baseType, members.get())));
}

}  // namespace

PyTypeObject* entityBase() { return baseType; }
PyTypeObject* entityClass(engine::EntityType kind) { return kindTypes[indexOf(kind)]; }
PyObject* goneError() { return goneErrorType; }
bool isEntityObject(PyObject* object) { return PyObject_TypeCheck(object, baseType) != 0; }

void addEntityClasses(PyObject* module) {
    const auto add = [&](const char* name, PyObject* object) {
        if (PyModule_AddObjectRef(module, name, object) != 0) throw PythonError{};
    };
    goneErrorType = checked(PyErr_NewExceptionWithDoc(
        "kova.ent.EntityGoneError", "The entity is in no drawing any more: deleted, undone, or its drawing was closed.",
        PyExc_RuntimeError, nullptr));
    add("EntityGoneError", goneErrorType);
    fieldType = makeFieldType();
    add("Field", reinterpret_cast<PyObject*>(fieldType));
    baseType = makeBase();
    add("Entity", reinterpret_cast<PyObject*>(baseType));
    for (std::size_t i = 0; i < kindTypes.size(); ++i) {
        const auto kind = static_cast<engine::EntityType>(i);
        kindTypes[i] = makeKind(kind);
        add(std::string(engine::nativeName(kind)).c_str(), reinterpret_cast<PyObject*>(kindTypes[i]));
    }
}

PyObject* entityObject(const engine::Entity& entity) {
    PyTypeObject* type = kindTypes[indexOf(entity.type())];
    PyObject* object = checked(type->tp_alloc(type, 0));
    EntityObject* e = objectOf(object);
    e->id = entity.id();
    e->kind = entity.type();
    e->given = kGivenAll;
    return object;
}

engine::Entity& entityOf(PyObject* object) {
    if (!isEntityObject(object))
        fail(PyExc_TypeError, std::string("an entity is wanted, not ") + Py_TYPE(object)->tp_name);
    EntityObject* e = objectOf(object);
    if (e->owned != nullptr) return *e->owned;
    engine::Entity* found = Binding::get().drawing().findById(e->id);
    if (found == nullptr)
        fail(goneErrorType, "this " + std::string(engine::nativeName(e->kind)) +
                                " is gone: it was deleted or undone, or its drawing was closed");
    followKind(object, found->type());
    return *found;
}

void changeEntity(PyObject* object, const std::function<void(engine::Entity&)>& change) {
    engine::Entity& entity = entityOf(object);
    if (objectOf(object)->owned != nullptr) return change(entity);
    // What fails on a copy would leave half a change, and an entry in the history, on the entity itself.
    const std::unique_ptr<engine::Entity> changed = entity.clone();
    change(*changed);
    Binding& binding = Binding::get();
    binding.prepareChange();
    // Conversions may run Python code, which may delete the entity.
    binding.document().modifyEntity(entityOf(object), change);
}

std::string entityText(PyObject* object) {
    EntityObject* e = objectOf(object);
    const std::string name(engine::nativeName(e->kind));
    if (e->owned != nullptr) return name + ", in no drawing";
    const Binding* binding = Binding::current();
    const engine::Entity* found = binding != nullptr ? binding->drawing().findById(e->id) : nullptr;
    if (found == nullptr) return name + ", gone";
    const Ref handle(pyHandle(found->handle()));
    return std::string(engine::nativeName(found->type())) + " " + textFrom(handle.get(), "handle");
}

}  // namespace kova::script::python
