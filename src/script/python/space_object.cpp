#include "script/python/space_object.hpp"

#include <vector>

#include "doc/spatial_index.hpp"
#include "engine/model/drawing.hpp"
#include "script/python/adding.hpp"
#include "script/python/entity_object.hpp"

namespace kova::script::python {

namespace {

enum class Which : std::uint8_t { Model, Layout, Block, Current };

/// A space is found anew by its name whenever it is used, so that its object never points to what is gone.
struct SpaceObject {
    PyObject_HEAD Which which;
    engine::Name name;
    std::uint64_t revision;             ///< of the list when the slots were counted
    const engine::EntityList* counted;  ///< the list whose slots stand below
    std::vector<std::uint32_t>* slots;  ///< of the live entities, while there are empty slots between them
};

/// Passes over the live entities, which may be added and deleted meanwhile.
struct IteratorObject {
    PyObject_HEAD PyObject* space;
    std::uint32_t slot;
};

PyTypeObject* spaceType = nullptr;
PyTypeObject* iteratorType = nullptr;

SpaceObject* spaceOf(PyObject* object) { return reinterpret_cast<SpaceObject*>(object); }

engine::EntityList& listOf(PyObject* object) {
    const SpaceObject* s = spaceOf(object);
    engine::Drawing& drawing = Binding::get().drawing();
    switch (s->which) {
        case Which::Model:
            return drawing.modelSpace();
        case Which::Current:
            return drawing.currentSpace();
        case Which::Layout:
            if (engine::Layout* layout = drawing.findLayout(s->name)) return layout->entities;
            fail(PyExc_KeyError, "there is no layout named '" + s->name.str() + "'");
        case Which::Block:
            if (engine::Block* block = drawing.findBlock(s->name)) return block->entities;
            fail(PyExc_KeyError, "there is no block named '" + s->name.str() + "'");
    }
    throw std::logic_error("no such space");
}

/// The entity at a position below the list's size.
engine::Entity& entityAt(PyObject* object, engine::EntityList& list, std::size_t position) {
    if (list.slotCount() == list.size()) return *list.atSlot(static_cast<std::uint32_t>(position));
    SpaceObject* s = spaceOf(object);
    if (s->slots == nullptr) s->slots = new std::vector<std::uint32_t>;
    if (s->counted != &list || s->revision != list.revision() || s->slots->size() != list.size()) {
        s->slots->clear();
        for (std::uint32_t i = 0; i < list.slotCount(); ++i)
            if (list.atSlot(i) != nullptr) s->slots->push_back(i);
        s->counted = &list;
        s->revision = list.revision();
    }
    return *list.atSlot((*s->slots)[position]);
}

PyObject* newSpace(PyTypeObject* type, PyObject* arguments, PyObject*) {
    return guarded([&] {
        const char* which = nullptr;
        const char* name = "";
        if (!PyArg_ParseTuple(arguments, "s|s", &which, &name)) throw PythonError{};
        const std::string_view word(which);
        const auto kind = word == "model"     ? Which::Model
                          : word == "layout"  ? Which::Layout
                          : word == "block"   ? Which::Block
                          : word == "current" ? Which::Current
                                              : throw std::invalid_argument("no such space");
        PyObject* object = checked(type->tp_alloc(type, 0));
        spaceOf(object)->which = kind;
        new (&spaceOf(object)->name) engine::Name(name);
        return object;
    });
}

void freeSpace(PyObject* object) {
    PyTypeObject* type = Py_TYPE(object);
    PyObject_GC_UnTrack(object);
    delete spaceOf(object)->slots;
    type->tp_free(object);
    Py_DECREF(type);
}

int visitSpace(PyObject* object, visitproc visit, void* arg) {
    Py_VISIT(Py_TYPE(object));
    return 0;
}

Py_ssize_t length(PyObject* object) {
    return guarded([&] { return static_cast<Py_ssize_t>(listOf(object).size()); }, Py_ssize_t{-1});
}

PyObject* item(PyObject* object, PyObject* key) {
    return guarded([&]() -> PyObject* {
        engine::EntityList& list = listOf(object);
        const auto size = static_cast<Py_ssize_t>(list.size());
        if (PySlice_Check(key)) {
            Py_ssize_t start = 0, stop = 0, step = 0;
            if (PySlice_Unpack(key, &start, &stop, &step) != 0) throw PythonError{};
            const Py_ssize_t count = PySlice_AdjustIndices(size, &start, &stop, step);
            Ref out(checked(PyList_New(count)));
            for (Py_ssize_t i = 0; i < count; ++i)
                PyList_SET_ITEM(out.get(), i,
                                entityObject(entityAt(object, list, static_cast<std::size_t>(start + i * step))));
            return out.release();
        }
        const std::int64_t index = integerFrom(key, "an index");
        const std::int64_t position = index < 0 ? index + size : index;
        if (position < 0 || position >= size) fail(PyExc_IndexError, "entity index out of range");
        return entityObject(entityAt(object, list, static_cast<std::size_t>(position)));
    });
}

int contains(PyObject* object, PyObject* entity) {
    return guarded(
        [&] {
            if (!isEntityObject(entity)) return 0;
            const auto* e = reinterpret_cast<EntityObject*>(entity);
            if (e->owned != nullptr) return 0;
            const engine::Entity* found = Binding::get().drawing().findById(e->id);
            return found != nullptr && found->owner() == &listOf(object) ? 1 : 0;
        },
        -1);
}

PyObject* iterate(PyObject* object) {
    return guarded([&] {
        listOf(object);
        PyObject* iterator = checked(iteratorType->tp_alloc(iteratorType, 0));
        reinterpret_cast<IteratorObject*>(iterator)->space = Py_NewRef(object);
        return iterator;
    });
}

PyObject* nextEntity(PyObject* object) {
    return guarded([&]() -> PyObject* {
        auto* it = reinterpret_cast<IteratorObject*>(object);
        const engine::EntityList& list = listOf(it->space);
        while (it->slot < list.slotCount())
            if (const engine::Entity* e = list.atSlot(it->slot++)) return entityObject(*e);
        return nullptr;
    });
}

void freeIterator(PyObject* object) {
    PyTypeObject* type = Py_TYPE(object);
    Py_XDECREF(reinterpret_cast<IteratorObject*>(object)->space);
    type->tp_free(object);
    Py_DECREF(type);
}

PyObject* addMethod(PyObject* object, PyObject* entity) {
    return guarded([&] {
        addToSpace(Binding::get(), entity, listOf(object));
        return Py_NewRef(entity);
    });
}

PyObject* extendMethod(PyObject* object, PyObject* entities) {
    return guarded([&] {
        const Ref items(checked(PyObject_GetIter(entities)));
        Binding& binding = Binding::get();
        binding.prepareChange();
        const doc::GroupScope group(binding.document(), "Add entities");
        long long count = 0;
        while (const Ref entity{PyIter_Next(items.get())}) {
            addToSpace(binding, entity.get(), listOf(object));
            ++count;
        }
        if (PyErr_Occurred()) throw PythonError{};
        return checked(PyLong_FromLongLong(count));
    });
}

/// The kind that a class or a name means.
engine::EntityType kindFrom(PyObject* value) {
    if (PyType_Check(value))
        for (int i = 0; i < engine::kEntityTypeCount; ++i)
            if (entityClass(static_cast<engine::EntityType>(i)) == reinterpret_cast<PyTypeObject*>(value))
                return static_cast<engine::EntityType>(i);
    const std::string name = textFrom(value, "kind");
    const auto kind = engine::entityTypeFromAnyName(name);
    if (!kind) fail(PyExc_ValueError, "Unknown entity type: " + name);
    return *kind;
}

PyObject* filterMethod(PyObject* object, PyObject* arguments, PyObject* keywords) {
    return guarded([&] {
        const char* names[] = {"kind", "layer", nullptr};
        PyObject *kind = Py_None, *layer = Py_None;
        if (!PyArg_ParseTupleAndKeywords(arguments, keywords, "|OO", const_cast<char**>(names), &kind, &layer))
            throw PythonError{};
        std::uint64_t kinds = kind == Py_None ? ~std::uint64_t{0} : 0;
        if (PyTuple_Check(kind) || PyList_Check(kind)) {
            const Ref items = sequenceFrom(kind, "kind");
            for (Py_ssize_t i = 0; i < PySequence_Fast_GET_SIZE(items.get()); ++i)
                kinds |= std::uint64_t{1} << static_cast<int>(kindFrom(PySequence_Fast_GET_ITEM(items.get(), i)));
        } else if (kind != Py_None) {
            kinds = std::uint64_t{1} << static_cast<int>(kindFrom(kind));
        }
        std::optional<engine::Name> wanted;
        if (layer != Py_None) wanted = engine::Name(textFrom(layer, "layer"));
        const Ref out(checked(PyList_New(0)));
        for (const engine::Entity& e : listOf(object)) {
            if ((kinds >> static_cast<int>(e.type()) & 1) == 0 || (wanted && !(e.layer == *wanted))) continue;
            const Ref made(entityObject(e));
            if (PyList_Append(out.get(), made.get()) != 0) throw PythonError{};
        }
        return Py_NewRef(out.get());
    });
}

PyObject* inBoxMethod(PyObject* object, PyObject* box) {
    return guarded([&] {
        const math::Bounds2 bounds = boundsFrom(box);
        const auto found = Binding::get().document().spatialIndex(listOf(object)).query(bounds);
        Ref out(checked(PyList_New(static_cast<Py_ssize_t>(found.size()))));
        for (std::size_t i = 0; i < found.size(); ++i)
            PyList_SET_ITEM(out.get(), static_cast<Py_ssize_t>(i), entityObject(*found[i]));
        return out.release();
    });
}

PyObject* nearestMethod(PyObject* object, PyObject* arguments, PyObject* keywords) {
    return guarded([&] {
        const char* names[] = {"point", "tolerance", nullptr};
        PyObject *point = nullptr, *tolerance = nullptr;
        if (!PyArg_ParseTupleAndKeywords(arguments, keywords, "O|O", const_cast<char**>(names), &point, &tolerance))
            throw PythonError{};
        const math::Vector2 p = vector2From(point, "point");
        const double reach = tolerance != nullptr ? numberFrom(tolerance, "tolerance") : 1e12;
        const engine::Entity* found = Binding::get().document().spatialIndex(listOf(object)).nearest(p, reach);
        return found != nullptr ? entityObject(*found) : Py_NewRef(Py_None);
    });
}

PyObject* getName(PyObject* object, void*) {
    return guarded([&] {
        switch (spaceOf(object)->which) {
            case Which::Model:
                return pyText("Model");
            case Which::Current: {
                const engine::Drawing& drawing = Binding::get().drawing();
                return pyText(drawing.currentSpaceIsModel() ? "Model" : drawing.activeLayoutName.view());
            }
            default:
                return pyText(spaceOf(object)->name.view());
        }
    });
}

PyObject* getExtents(PyObject* object, void*) {
    return guarded([&] { return pyBounds(Binding::get().drawing().extents(listOf(object))); });
}

PyMethodDef kMethods[] = {
    {"add", addMethod, METH_O,
     "add(entity: E) -> E\n\nPuts a new entity at the end of the drawing order and gives it back. What was not given "
     "to it "
     "(layer, colour, linetype ...) it takes from the drawing's current settings."},
    {"extend", extendMethod, METH_O,
     "extend(entities: Iterable[Entity]) -> int\n\nAdds all, as one change; gives their number."},
    {"filter", reinterpret_cast<PyCFunction>(reinterpret_cast<void*>(filterMethod)), METH_VARARGS | METH_KEYWORDS,
     "filter(kind: KindLike | Sequence[KindLike] | None = None, layer: str | None = None) -> list[Entity]\n\nThe "
     "entities of a "
     "kind (a class, or any of its names such as \"INSERT\") and on a layer, in drawing order."},
    {"in_box", inBoxMethod, METH_O,
     "in_box(box: BoundingBox2) -> list[Entity]\n\nThe entities whose bounds meet the box, in drawing order."},
    {"nearest", reinterpret_cast<PyCFunction>(reinterpret_cast<void*>(nearestMethod)), METH_VARARGS | METH_KEYWORDS,
     "nearest(point: Point, tolerance: float = 1e12) -> Entity | None\n\nThe entity nearest to the point."},
    {nullptr, nullptr, 0, nullptr},
};

PyGetSetDef kProperties[] = {
    {"name", getName, nullptr, "str. \"Model\", or the name of the layout or block.", nullptr},
    {"extents", getExtents, nullptr, "BoundingBox2. What is visible, drawing units.", nullptr},
    {nullptr, nullptr, nullptr, nullptr, nullptr},
};

}  // namespace

void addSpaceClass(PyObject* module) {
    PyType_Slot spaceSlots[] = {
        {Py_tp_doc, const_cast<char*>("The entities of model space, a layout or a block, in drawing order.")},
        {Py_tp_new, reinterpret_cast<void*>(newSpace)},
        {Py_tp_dealloc, reinterpret_cast<void*>(freeSpace)},
        {Py_tp_traverse, reinterpret_cast<void*>(visitSpace)},
        {Py_tp_iter, reinterpret_cast<void*>(iterate)},
        {Py_mp_length, reinterpret_cast<void*>(length)},
        {Py_sq_length, reinterpret_cast<void*>(length)},
        {Py_mp_subscript, reinterpret_cast<void*>(item)},
        {Py_sq_contains, reinterpret_cast<void*>(contains)},
        {Py_tp_methods, kMethods},
        {Py_tp_getset, kProperties},
        {0, nullptr},
    };
    PyType_Spec spaceSpec = {"kova.doc.SpaceBase", sizeof(SpaceObject), 0,
                             Py_TPFLAGS_DEFAULT | Py_TPFLAGS_BASETYPE | Py_TPFLAGS_HAVE_GC, spaceSlots};
    spaceType = reinterpret_cast<PyTypeObject*>(checked(PyType_FromSpec(&spaceSpec)));
    PyType_Slot iteratorSlots[] = {
        {Py_tp_dealloc, reinterpret_cast<void*>(freeIterator)},
        {Py_tp_iter, reinterpret_cast<void*>(PyObject_SelfIter)},
        {Py_tp_iternext, reinterpret_cast<void*>(nextEntity)},
        {0, nullptr},
    };
    PyType_Spec iteratorSpec = {"kova.doc.EntityIterator", sizeof(IteratorObject), 0,
                                Py_TPFLAGS_DEFAULT | Py_TPFLAGS_DISALLOW_INSTANTIATION, iteratorSlots};
    iteratorType = reinterpret_cast<PyTypeObject*>(checked(PyType_FromSpec(&iteratorSpec)));
    if (PyModule_AddObjectRef(module, "SpaceBase", reinterpret_cast<PyObject*>(spaceType)) != 0) throw PythonError{};
}

}  // namespace kova::script::python
