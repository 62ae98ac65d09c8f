#include "engine/model/drawing.hpp"
#include "script/python/adding.hpp"
#include "script/python/entity_object.hpp"

namespace kova::script::python {

namespace {

/// A property whose value `read` makes.
template <auto read>
PyObject* get(PyObject* object, void*) {
    return guarded([&] { return read(entityOf(object)); });
}

/// A property that `write` sets. What it notes as given is kept when a new entity is added to a drawing.
template <auto write, std::uint8_t given = 0>
int set(PyObject* object, PyObject* value, void*) {
    return guarded(
        [&] {
            if (value == nullptr) fail(PyExc_AttributeError, "this property cannot be deleted");
            changeEntity(object, [&](engine::Entity& entity) { write(entity, value); });
            objectOf(object)->given |= given;
            return 0;
        },
        -1);
}

std::int32_t integerIn(PyObject* value, std::string_view what, std::int64_t minimum, std::int64_t maximum) {
    const std::int64_t v = integerFrom(value, what);
    if (v < minimum || v > maximum)
        fail(PyExc_ValueError,
             std::string(what) + " must be " + std::to_string(minimum) + " to " + std::to_string(maximum));
    return static_cast<std::int32_t>(v);
}

PyObject* kindName(const engine::Entity& e) { return pyText(engine::displayName(e.type())); }
PyObject* handle(const engine::Entity& e) { return e.handle() == 0 ? Py_NewRef(Py_None) : pyHandle(e.handle()); }
PyObject* inDrawing(PyObject* object, void*) {
    return guarded([&]() -> PyObject* {
        if (objectOf(object)->owned != nullptr) return PyBool_FromLong(0);
        const Binding* binding = Binding::current();
        return PyBool_FromLong(binding != nullptr && binding->drawing().findById(objectOf(object)->id) != nullptr);
    });
}

PyObject* layer(const engine::Entity& e) { return Py_NewRef(pyKnownText(e.layer.str())); }
void setLayer(engine::Entity& e, PyObject* value) {
    const engine::Name name(textFrom(value, "layer_name"));
    if (name.empty()) fail(PyExc_ValueError, "layer_name must not be empty");
    if (e.drawing() != nullptr) requireLayer(Binding::get(), name);
    e.layer = name;
}
PyObject* linetype(const engine::Entity& e) { return Py_NewRef(pyKnownText(e.linetype.str())); }
void setLinetype(engine::Entity& e, PyObject* value) {
    const engine::Name name(textFrom(value, "linetype_name"));
    if (name.empty()) fail(PyExc_ValueError, "linetype_name must not be empty");
    if (e.drawing() != nullptr) requireLinetype(Binding::get(), name);
    e.linetype = name;
}
PyObject* color(const engine::Entity& e) { return pyColor(e.color); }
void setColor(engine::Entity& e, PyObject* value) { e.color = colorFrom(value, "color"); }
PyObject* colorIndex(const engine::Entity& e) { return pyInteger(e.color.bareIndex()); }
void setColorIndex(engine::Entity& e, PyObject* value) {
    e.color = *engine::Color::fromBareIndex(integerIn(value, "color_index", 0, 256));
}
PyObject* linetypeScale(const engine::Entity& e) { return pyFloat(e.linetypeScale()); }
void setLinetypeScale(engine::Entity& e, PyObject* value) {
    const double v = numberFrom(value, "linetype_scale");
    if (!(v > 0.0)) fail(PyExc_ValueError, "linetype_scale must be above 0");
    e.setLinetypeScale(v);
}
PyObject* lineweight(const engine::Entity& e) { return pyInteger(e.lineweight); }
void setLineweight(engine::Entity& e, PyObject* value) { e.lineweight = integerIn(value, "lineweight", -3, 211); }
PyObject* transparency(const engine::Entity& e) { return pyInteger(e.transparency); }
void setTransparency(engine::Entity& e, PyObject* value) { e.transparency = integerIn(value, "transparency", 0, 90); }
PyObject* visible(const engine::Entity& e) { return PyBool_FromLong(e.visible); }
void setVisible(engine::Entity& e, PyObject* value) { e.visible = booleanFrom(value, "visible"); }
PyObject* elevation(const engine::Entity& e) { return pyFloat(e.elevation); }
void setElevation(engine::Entity& e, PyObject* value) { e.elevation = numberFrom(value, "elevation"); }
PyObject* thickness(const engine::Entity& e) { return pyFloat(e.thickness()); }
void setThickness(engine::Entity& e, PyObject* value) { e.setThickness(numberFrom(value, "thickness")); }
PyObject* normal(const engine::Entity& e) { return pyVector3(e.normal()); }
void setNormal(engine::Entity& e, PyObject* value) {
    const math::Vector3 unit = vector3From(value, "normal").normalized();
    if (unit == math::Vector3{}) fail(PyExc_ValueError, "normal must have a direction");
    e.setNormal(unit);
}
PyObject* plotStyle(const engine::Entity& e) { return pyText(e.plotStyleName().view()); }
void setPlotStyle(engine::Entity& e, PyObject* value) { e.setPlotStyleName(textFrom(value, "plot_style_name")); }
PyObject* annotative(const engine::Entity& e) { return PyBool_FromLong(e.annotative()); }
void setAnnotative(engine::Entity& e, PyObject* value) { e.setAnnotative(booleanFrom(value, "annotative")); }
PyObject* annotationScale(const engine::Entity& e) { return pyFloat(e.annotationScale()); }
void setAnnotationScale(engine::Entity& e, PyObject* value) {
    e.setAnnotationScale(numberFrom(value, "annotation_scale"));
}
PyObject* objectScales(const engine::Entity& e) { return pythonValue(FieldKind::Names, &e.objectScales()).release(); }
void setObjectScales(engine::Entity& e, PyObject* value) {
    std::vector<engine::Name> names;
    assignValue(FieldKind::Names, &names, value, "object_scales");
    if (const Binding* binding = Binding::current())
        for (const engine::Name name : names)
            if (!binding->drawing().annotationScales.contains(name))
                fail(PyExc_ValueError, "there is no annotation scale named '" + name.str() + "'");
    e.setObjectScales(std::move(names));
}
PyObject* bounds(const engine::Entity& e) { return pyBounds(e.bounds()); }

// Extended data: a dict from application name to a list of (group code, value).
PyObject* xdata(const engine::Entity& e) {
    Ref dict(checked(PyDict_New()));
    if (e.xdata() == nullptr) return dict.release();
    for (const auto& application : e.xdata()->applications) {
        const Ref list(checked(PyList_New(0)));
        for (const engine::XDataItem& item : application.items) {
            Ref value(std::visit(
                [](const auto& v) -> PyObject* {
                    using T = std::decay_t<decltype(v)>;
                    if constexpr (std::is_same_v<T, std::string>)
                        return pyText(v);
                    else if constexpr (std::is_same_v<T, double>)
                        return pyFloat(v);
                    else if constexpr (std::is_same_v<T, std::int64_t>)
                        return checked(PyLong_FromLongLong(v));
                    else
                        return pyVector3(v);
                },
                item.value));
            const Ref pair(checked(Py_BuildValue("(iO)", item.code, value.get())));
            if (PyList_Append(list.get(), pair.get()) != 0) throw PythonError{};
        }
        const Ref name(pyText(application.name.view()));
        if (PyDict_SetItem(dict.get(), name.get(), list.get()) != 0) throw PythonError{};
    }
    return dict.release();
}

engine::XDataItem xdataItem(PyObject* pair) {
    const Ref parts = sequenceFrom(pair, "an item of xdata");
    if (PySequence_Fast_GET_SIZE(parts.get()) != 2) fail(PyExc_ValueError, "an item of xdata is (group code, value)");
    const std::int32_t code = integerIn(PySequence_Fast_GET_ITEM(parts.get(), 0), "group code", 1000, 1071);
    PyObject* value = PySequence_Fast_GET_ITEM(parts.get(), 1);
    if (code <= 1005) return {code, textFrom(value, "xdata")};
    if (code >= 1010 && code <= 1013) return {code, vector3From(value, "xdata")};
    if (code >= 1040 && code <= 1042) return {code, numberFrom(value, "xdata")};
    if (code == 1070 || code == 1071) return {code, integerFrom(value, "xdata")};
    fail(PyExc_ValueError, "no extended data has the group code " + std::to_string(code));
}

void setXdata(engine::Entity& e, PyObject* value) {
    if (!PyDict_Check(value)) fail(PyExc_TypeError, "xdata must be a dict from application name to items");
    const Ref own(checked(PyDict_Copy(value)));  // conversions may run code that changes the one given
    engine::XData data;
    PyObject *key = nullptr, *items = nullptr;
    Py_ssize_t position = 0;
    while (PyDict_Next(own.get(), &position, &key, &items)) {
        const std::string name = textFrom(key, "an application name");
        if (name.empty()) fail(PyExc_ValueError, "an application name must not be empty");
        const Ref list = sequenceFrom(items, "xdata");
        std::vector<engine::XDataItem> made;
        for (Py_ssize_t i = 0; i < PySequence_Fast_GET_SIZE(list.get()); ++i)
            made.push_back(xdataItem(PySequence_Fast_GET_ITEM(list.get(), i)));
        data.set(name, std::move(made));
    }
    if (engine::Drawing* drawing = e.drawing()) registerApplications(*drawing, data);
    e.setXdata(std::move(data));
}

}  // namespace

PyGetSetDef kEntityProperties[] = {
    {"kind", get<kindName>, nullptr, "str. The kind's display name: \"Line\", \"Block Reference\" ...", nullptr},
    {"handle", get<handle>, nullptr, "str | None. The handle in hexadecimal; None while the entity is in no drawing.",
     nullptr},
    {"in_drawing", inDrawing, nullptr, "bool. True while the entity stands in the drawing.", nullptr},
    {"layer_name", get<layer>, set<setLayer, kGivenLayer>, "str. The layer; one that is missing is made.", nullptr},
    {"color", get<color>, set<setColor, kGivenColor>,
     "Color. \"ByLayer\", \"ByBlock\", an index 1..255 or (red, green, blue); names such as \"red\" are accepted.",
     nullptr},
    {"color_index", get<colorIndex>, set<setColorIndex, kGivenColor>, "int. 256 ByLayer, 0 ByBlock, 1..255.", nullptr},
    {"linetype_name", get<linetype>, set<setLinetype, kGivenLinetype>,
     "str. The linetype, loaded from the program's library when the drawing does not have it.", nullptr},
    {"linetype_scale", get<linetypeScale>, set<setLinetypeScale, kGivenLinetypeScale>, "float.", nullptr},
    {"lineweight", get<lineweight>, set<setLineweight, kGivenLineweight>,
     "int, hundredths of a millimetre. -1 ByLayer, -2 ByBlock, -3 default.", nullptr},
    {"transparency", get<transparency>, set<setTransparency, kGivenTransparency>,
     "int, percent 0..90. 0 takes the layer's.", nullptr},
    {"visible", get<visible>, set<setVisible>, "bool.", nullptr},
    {"elevation", get<elevation>, set<setElevation>, "float, drawing units. The z of the entity's plane.", nullptr},
    {"thickness", get<thickness>, set<setThickness>, "float, drawing units. Extrusion thickness.", nullptr},
    {"normal", get<normal>, set<setNormal>, "Vector3. The extrusion direction, of length 1.", nullptr},
    {"plot_style_name", get<plotStyle>, set<setPlotStyle>, "str.", nullptr},
    {"annotative", get<annotative>, set<setAnnotative>, "bool.", nullptr},
    {"annotation_scale", get<annotationScale>, set<setAnnotationScale>, "float.", nullptr},
    {"object_scales", get<objectScales>, set<setObjectScales>, "list[str]. The annotation scales it supports.",
     nullptr},
    {"xdata", get<xdata>, set<setXdata>,
     "dict[str, list[tuple[int, Any]]]. Extended data: group codes and values by application name.", nullptr},
    {"bounds", get<bounds>, nullptr, "BoundingBox2. The extents in the plane, drawing units.", nullptr},
    {nullptr, nullptr, nullptr, nullptr, nullptr},
};

}  // namespace kova::script::python
