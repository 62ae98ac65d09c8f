#include <map>

#include "script/python/fields.hpp"

namespace kova::script::python {

using math::Vector2;
using math::Vector3;

namespace {

template <class T>
const T& as(const void* value) {
    return *static_cast<const T*>(value);
}
template <class T>
T& as(void* value) {
    return *static_cast<T*>(value);
}

template <class Items, class Make>
Ref listOf(const Items& items, Make&& make) {
    Ref list(checked(PyList_New(static_cast<Py_ssize_t>(items.size()))));
    Py_ssize_t i = 0;
    for (const auto& item : items) PyList_SET_ITEM(list.get(), i++, make(item));
    return list;
}

template <class T>
Ref mapOf(const std::map<std::string, T>& map, PyObject* (*make)(const T&)) {
    Ref dict(checked(PyDict_New()));
    for (const auto& [key, value] : map) {
        const Ref name(pyText(key));
        const Ref made(make(value));
        if (PyDict_SetItem(dict.get(), name.get(), made.get()) != 0) throw PythonError{};
    }
    return dict;
}

std::int32_t smallIntegerFrom(PyObject* value, std::string_view what) {
    const std::int64_t v = integerFrom(value, what);
    if (v != static_cast<std::int32_t>(v)) fail(PyExc_ValueError, std::string(what) + " is out of range");
    return static_cast<std::int32_t>(v);
}

template <class T, class Make>
std::vector<T> vectorFrom(PyObject* from, std::string_view what, Make&& make) {
    const Ref items = sequenceFrom(from, what);
    std::vector<T> out;
    out.reserve(static_cast<std::size_t>(PySequence_Fast_GET_SIZE(items.get())));
    for (Py_ssize_t i = 0; i < PySequence_Fast_GET_SIZE(items.get()); ++i)
        out.push_back(make(PySequence_Fast_GET_ITEM(items.get(), i), what));
    return out;
}

template <class T, class Make>
std::map<std::string, T> dictFrom(PyObject* from, std::string_view what, Make&& make) {
    if (!PyDict_Check(from)) fail(PyExc_TypeError, std::string(what) + " must be a dict");
    const Ref items(checked(PyDict_Items(from)));
    std::map<std::string, T> out;
    for (Py_ssize_t i = 0; i < PyList_GET_SIZE(items.get()); ++i) {
        PyObject* pair = PyList_GET_ITEM(items.get(), i);
        out[textFrom(PyTuple_GET_ITEM(pair, 0), what)] = make(PyTuple_GET_ITEM(pair, 1), what);
    }
    return out;
}

engine::Name nameFrom(PyObject* value, std::string_view what) { return engine::Name(textFrom(value, what)); }

}  // namespace

const char* pythonType(FieldKind kind) {
    switch (kind) {
        case FieldKind::Number:
            return "float";
        case FieldKind::Integer:
            return "int";
        case FieldKind::Boolean:
            return "bool";
        case FieldKind::Text:
        case FieldKind::Name:
        case FieldKind::Handle:
            return "str";
        case FieldKind::Color:
            return "Color";
        case FieldKind::Point:
            return "Vector2";
        case FieldKind::Point3:
            return "Vector3";
        case FieldKind::Points:
            return "list[Vector2]";
        case FieldKind::Points3:
            return "list[Vector3]";
        case FieldKind::Numbers:
            return "list[float]";
        case FieldKind::Integers:
            return "list[int]";
        case FieldKind::Booleans:
            return "list[bool]";
        case FieldKind::Handles:
        case FieldKind::Texts:
        case FieldKind::Names:
            return "list[str]";
        case FieldKind::IntegerLists:
            return "list[list[int]]";
        case FieldKind::TextLists:
            return "list[list[str]]";
        case FieldKind::NumberMap:
            return "dict[str, float]";
        case FieldKind::TextMap:
            return "dict[str, str]";
        case FieldKind::Record:
            return "dict[str, Any] | None";
        case FieldKind::Records:
            return "list[dict[str, Any]]";
    }
    return "Any";
}

Ref pythonValue(FieldKind kind, const void* value) {
    using Strings = std::vector<std::string>;
    switch (kind) {
        case FieldKind::Number:
            return Ref(pyFloat(as<double>(value)));
        case FieldKind::Integer:
            return Ref(pyInteger(as<std::int64_t>(value)));
        case FieldKind::Boolean:
            return Ref(PyBool_FromLong(as<bool>(value)));
        case FieldKind::Text:
            return Ref(pyText(as<std::string>(value)));
        case FieldKind::Name:
            return Ref(Py_NewRef(pyKnownText(as<engine::Name>(value).str())));
        case FieldKind::Handle:
            return Ref(pyHandle(as<std::uint64_t>(value)));
        case FieldKind::Color:
            return Ref(pyColor(as<engine::Color>(value)));
        case FieldKind::Point:
            return Ref(pyVector2(as<Vector2>(value)));
        case FieldKind::Point3:
            return Ref(pyVector3(as<Vector3>(value)));
        case FieldKind::Points:
            return listOf(as<std::vector<Vector2>>(value), pyVector2);
        case FieldKind::Points3:
            return listOf(as<std::vector<Vector3>>(value), pyVector3);
        case FieldKind::Numbers:
            return listOf(as<std::vector<double>>(value), pyFloat);
        case FieldKind::Integers:
            return listOf(as<std::vector<std::int32_t>>(value), pyInteger);
        case FieldKind::Booleans:
            return listOf(as<std::vector<bool>>(value), [](bool v) { return PyBool_FromLong(v); });
        case FieldKind::Handles:
            return listOf(as<std::vector<std::uint64_t>>(value), pyHandle);
        case FieldKind::Texts:
            return listOf(as<Strings>(value), [](const std::string& v) { return pyText(v); });
        case FieldKind::Names:
            return listOf(as<std::vector<engine::Name>>(value), [](engine::Name v) { return pyText(v.view()); });
        case FieldKind::IntegerLists:
            return listOf(as<std::vector<std::vector<std::int32_t>>>(value),
                          [](const std::vector<std::int32_t>& v) { return listOf(v, pyInteger).release(); });
        case FieldKind::TextLists:
            return listOf(as<std::vector<Strings>>(value), [](const Strings& v) {
                return listOf(v, [](const std::string& s) { return pyText(s); }).release();
            });
        case FieldKind::NumberMap:
            return mapOf<double>(as<std::map<std::string, double>>(value), [](const double& v) { return pyFloat(v); });
        case FieldKind::TextMap:
            return mapOf<std::string>(as<std::map<std::string, std::string>>(value),
                                      [](const std::string& v) { return pyText(v); });
        case FieldKind::Record:
        case FieldKind::Records:
            break;
    }
    return Ref(Py_NewRef(Py_None));
}

void assignValue(FieldKind kind, void* value, PyObject* from, std::string_view what) {
    using Strings = std::vector<std::string>;
    switch (kind) {
        case FieldKind::Number:
            as<double>(value) = numberFrom(from, what);
            break;
        case FieldKind::Integer:
            as<std::int64_t>(value) = integerFrom(from, what);
            break;
        case FieldKind::Boolean:
            as<bool>(value) = booleanFrom(from, what);
            break;
        case FieldKind::Text:
            as<std::string>(value) = textFrom(from, what);
            break;
        case FieldKind::Name:
            as<engine::Name>(value) = nameFrom(from, what);
            break;
        case FieldKind::Handle:
            as<std::uint64_t>(value) = handleFrom(from, what);
            break;
        case FieldKind::Color:
            as<engine::Color>(value) = colorFrom(from, what);
            break;
        case FieldKind::Point:
            as<Vector2>(value) = vector2From(from, what);
            break;
        case FieldKind::Point3:
            as<Vector3>(value) = vector3From(from, what);
            break;
        case FieldKind::Points:
            as<std::vector<Vector2>>(value) = vectorFrom<Vector2>(from, what, vector2From);
            break;
        case FieldKind::Points3:
            as<std::vector<Vector3>>(value) = vectorFrom<Vector3>(from, what, vector3From);
            break;
        case FieldKind::Numbers:
            as<std::vector<double>>(value) = vectorFrom<double>(from, what, numberFrom);
            break;
        case FieldKind::Integers:
            as<std::vector<std::int32_t>>(value) = vectorFrom<std::int32_t>(from, what, smallIntegerFrom);
            break;
        case FieldKind::Booleans:
            as<std::vector<bool>>(value) = vectorFrom<bool>(from, what, booleanFrom);
            break;
        case FieldKind::Handles:
            as<std::vector<std::uint64_t>>(value) = vectorFrom<std::uint64_t>(from, what, handleFrom);
            break;
        case FieldKind::Texts:
            as<Strings>(value) = vectorFrom<std::string>(from, what, textFrom);
            break;
        case FieldKind::Names:
            as<std::vector<engine::Name>>(value) = vectorFrom<engine::Name>(from, what, nameFrom);
            break;
        case FieldKind::IntegerLists:
            as<std::vector<std::vector<std::int32_t>>>(value) = vectorFrom<std::vector<std::int32_t>>(
                from, what,
                [](PyObject* item, std::string_view w) { return vectorFrom<std::int32_t>(item, w, smallIntegerFrom); });
            break;
        case FieldKind::TextLists:
            as<std::vector<Strings>>(value) = vectorFrom<Strings>(from, what, [](PyObject* item, std::string_view w) {
                return vectorFrom<std::string>(item, w, textFrom);
            });
            break;
        case FieldKind::NumberMap:
            as<std::map<std::string, double>>(value) = dictFrom<double>(from, what, numberFrom);
            break;
        case FieldKind::TextMap:
            as<std::map<std::string, std::string>>(value) = dictFrom<std::string>(from, what, textFrom);
            break;
        case FieldKind::Record:
        case FieldKind::Records:
            break;
    }
}

}  // namespace kova::script::python
