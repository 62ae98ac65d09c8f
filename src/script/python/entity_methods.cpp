#include "engine/model/drawing.hpp"
#include "script/python/binding.hpp"
#include "script/python/entity_object.hpp"

namespace kova::script::python {

namespace {

/// The entity under a matrix; it may become one of another kind.
void transform(PyObject* object, const math::Matrix4& m) {
    for (const double v : m.m)
        if (!std::isfinite(v)) fail(PyExc_ValueError, "the transform must be finite");
    engine::Entity& entity = entityOf(object);
    EntityObject* o = objectOf(object);
    if (o->owned != nullptr) {
        std::unique_ptr<engine::Entity> image = engine::transformedEntity(entity, m);
        if (image->type() == o->kind) return entity.transform(m);
        delete std::exchange(o->owned, image.release());
        PyTypeObject* old = Py_TYPE(object);
        if (old == entityClass(o->kind)) {
            Py_INCREF(entityClass(o->owned->type()));
            Py_SET_TYPE(object, entityClass(o->owned->type()));
            Py_DECREF(old);
        }
        o->kind = o->owned->type();
        return;
    }
    Binding& binding = Binding::get();
    binding.prepareChange();
    binding.document().transformEntities({entity.id()}, m);
    entityOf(object);  // which lets the object follow its entity's kind
}

PyObject* transformMethod(PyObject* object, PyObject* matrix) {
    return guarded([&] {
        transform(object, matrixFrom(matrix));
        return Py_NewRef(Py_None);
    });
}

PyObject* moveMethod(PyObject* object, PyObject* by) {
    return guarded([&] {
        const math::Vector3 d = vector3From(by, "by");
        transform(object, math::Matrix4::translation(d.x, d.y, d.z));
        return Py_NewRef(Py_None);
    });
}

PyObject* turn(PyObject* object, PyObject* arguments, PyObject* keywords, const char* what,
               math::Matrix4 (*make)(const math::Vector2&, double)) {
    return guarded([&] {
        const char* names[] = {what, "center", nullptr};
        PyObject *amount = nullptr, *center = nullptr;
        if (!PyArg_ParseTupleAndKeywords(arguments, keywords, "O|O", const_cast<char**>(names), &amount, &center))
            throw PythonError{};
        const double value = numberFrom(amount, what);
        transform(object, make(center != nullptr ? vector2From(center, "center") : math::Vector2{}, value));
        return Py_NewRef(Py_None);
    });
}

PyObject* rotateMethod(PyObject* object, PyObject* arguments, PyObject* keywords) {
    return turn(object, arguments, keywords, "angle", math::Matrix4::rotation_about);
}

PyObject* scaleMethod(PyObject* object, PyObject* arguments, PyObject* keywords) {
    return turn(object, arguments, keywords, "factor", [](const math::Vector2& center, double factor) {
        if (factor == 0.0) fail(PyExc_ValueError, "factor must not be 0");
        return math::Matrix4::scaling_about(center, factor);
    });
}

PyObject* mirrorMethod(PyObject* object, PyObject* arguments) {
    return guarded([&] {
        PyObject *a = nullptr, *b = nullptr;
        if (!PyArg_ParseTuple(arguments, "OO", &a, &b)) throw PythonError{};
        const math::Vector2 from = vector2From(a, "a");
        const math::Vector2 to = vector2From(b, "b");
        if (from.near_equal(to)) fail(PyExc_ValueError, "the mirror line needs two different points");
        transform(object, math::Matrix4::mirror(from, to));
        return Py_NewRef(Py_None);
    });
}

PyObject* copyMethod(PyObject* object, PyObject*) {
    return guarded([&] {
        engine::Entity& entity = entityOf(object);
        std::unique_ptr<engine::Entity> copy = entity.clone();
        copy->setHandle(0);
        PyTypeObject* type = entityClass(entity.type());
        PyObject* made = checked(type->tp_alloc(type, 0));
        EntityObject* o = objectOf(made);
        o->id = copy->id();
        o->kind = copy->type();
        o->given = objectOf(object)->given;
        o->owned = copy.release();
        return made;
    });
}

PyObject* copyHook(PyObject* object, PyObject*) { return copyMethod(object, nullptr); }

PyObject* deleteMethod(PyObject* object, PyObject*) {
    return guarded([&] {
        engine::Entity& entity = entityOf(object);
        if (objectOf(object)->owned != nullptr)
            fail(PyExc_ValueError, "the " + entityText(object) + ": there is nothing to delete");
        Binding& binding = Binding::get();
        binding.prepareChange();
        binding.document().removeEntity(entity);
        return Py_NewRef(Py_None);
    });
}

PyObject* nearestMethod(PyObject* object, PyObject* point) {
    return guarded([&] { return pyVector2(entityOf(object).nearestPoint(vector2From(point, "point"))); });
}

PyObject* distanceMethod(PyObject* object, PyObject* point) {
    return guarded(
        [&] { return checked(PyFloat_FromDouble(entityOf(object).distanceTo(vector2From(point, "point")))); });
}

PyObject* gripsMethod(PyObject* object, PyObject*) {
    return guarded([&] {
        const std::vector<math::Vector2> grips = entityOf(object).gripPoints();
        return pythonValue(FieldKind::Points, &grips).release();
    });
}

PyObject* moveGripMethod(PyObject* object, PyObject* arguments) {
    return guarded([&] {
        PyObject *index = nullptr, *to = nullptr;
        if (!PyArg_ParseTuple(arguments, "OO", &index, &to)) throw PythonError{};
        const std::int64_t i = integerFrom(index, "index");
        const math::Vector2 point = vector2From(to, "to");
        if (i < 0 || static_cast<std::size_t>(i) >= entityOf(object).gripPoints().size())
            fail(PyExc_IndexError, "grip index out of range");
        changeEntity(object, [&](engine::Entity& e) { e.moveGrip(static_cast<std::size_t>(i), point); });
        return Py_NewRef(Py_None);
    });
}

PyObject* setMethod(PyObject* object, PyObject* arguments, PyObject* keywords) {
    return guarded([&] {
        if (PyTuple_GET_SIZE(arguments) != 0) fail(PyExc_TypeError, "set() takes keyword arguments only");
        if (keywords == nullptr) return Py_NewRef(Py_None);
        // Tried on a copy first, so that either all properties are set or none.
        const Ref copy(copyMethod(object, nullptr));
        if (!copy) throw PythonError{};
        PyObject *key = nullptr, *value = nullptr;
        Py_ssize_t position = 0;
        while (PyDict_Next(keywords, &position, &key, &value))
            if (PyObject_SetAttr(copy.get(), key, value) != 0) throw PythonError{};
        const bool attached = objectOf(object)->owned == nullptr;
        if (attached) {
            Binding::get().prepareChange();
            Binding::get().document().beginGroup("Set properties");
        }
        bool good = true;
        for (position = 0; good && PyDict_Next(keywords, &position, &key, &value);)
            good = PyObject_SetAttr(object, key, value) == 0;
        if (attached) Binding::get().document().endGroup();
        if (!good) throw PythonError{};
        return Py_NewRef(Py_None);
    });
}

PyObject* fieldsMethod(PyObject* object, PyObject*) {
    return guarded([&] {
        FieldGetter getter;
        entityOf(object).describe(getter);
        return getter.take().release();
    });
}

}  // namespace

PyMethodDef kEntityMethods[] = {
    {"transform", transformMethod, METH_O,
     "transform(matrix: Matrix4) -> None\n\nApplies the matrix. A circle or arc under unequal scales becomes an "
     "Ellipse."},
    {"move", moveMethod, METH_O, "move(by: Point) -> None\n\nMoves by a vector, drawing units."},
    {"rotate", reinterpret_cast<PyCFunction>(reinterpret_cast<void*>(rotateMethod)), METH_VARARGS | METH_KEYWORDS,
     "rotate(angle: float, center: Point = (0, 0)) -> None\n\nTurns by an angle in radians, counter-clockwise."},
    {"scale", reinterpret_cast<PyCFunction>(reinterpret_cast<void*>(scaleMethod)), METH_VARARGS | METH_KEYWORDS,
     "scale(factor: float, center: Point = (0, 0)) -> None"},
    {"mirror", mirrorMethod, METH_VARARGS,
     "mirror(a: Point, b: Point) -> None\n\nReplaces the entity by its mirror image in the line through a and b."},
    {"copy", copyMethod, METH_NOARGS, "copy() -> Self\n\nA new entity with the same properties, in no drawing yet."},
    {"__copy__", copyHook, METH_NOARGS, nullptr},
    {"__deepcopy__", copyHook, METH_O, nullptr},
    {"delete", deleteMethod, METH_NOARGS, "delete() -> None\n\nTakes the entity out of the drawing."},
    {"nearest_point", nearestMethod, METH_O, "nearest_point(point: Point) -> Vector2"},
    {"distance_to", distanceMethod, METH_O, "distance_to(point: Point) -> float"},
    {"grip_points", gripsMethod, METH_NOARGS, "grip_points() -> list[Vector2]\n\nThe points that a user can drag."},
    {"move_grip", moveGripMethod, METH_VARARGS, "move_grip(index: int, to: Point) -> None"},
    {"set", reinterpret_cast<PyCFunction>(reinterpret_cast<void*>(setMethod)), METH_VARARGS | METH_KEYWORDS,
     "set(**properties: Any) -> None\n\nSets several properties as one change: all of them, or none."},
    {"fields", fieldsMethod, METH_NOARGS, "fields() -> dict[str, Any]\n\nThe kind's own fields as a dict."},
    {nullptr, nullptr, 0, nullptr},
};

}  // namespace kova::script::python
