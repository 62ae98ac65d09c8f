#include "script/python/convert.hpp"

#include <charconv>
#include <cmath>
#include <stdexcept>
#include <unordered_map>

namespace kova::script::python {

void fail(PyObject* kind, const std::string& text) {
    PyErr_SetString(kind, text.c_str());
    throw PythonError{};
}

void translateException() noexcept {
    try {
        throw;
    } catch (const PythonError&) {
        if (!PyErr_Occurred()) PyErr_SetString(PyExc_SystemError, "error without a text");
    } catch (const std::bad_alloc&) {
        PyErr_NoMemory();
    } catch (const std::out_of_range& error) {
        PyErr_SetString(PyExc_ValueError, error.what());
    } catch (const std::invalid_argument& error) {
        PyErr_SetString(PyExc_ValueError, error.what());
    } catch (const std::exception& error) {
        PyErr_SetString(PyExc_RuntimeError, error.what());
    } catch (...) {
        PyErr_SetString(PyExc_RuntimeError, "unknown error");
    }
}

namespace {

std::string typeName(PyObject* value) { return Py_TYPE(value)->tp_name; }

[[noreturn]] void wrongType(std::string_view what, const char* wanted, PyObject* value) {
    fail(PyExc_TypeError, std::string(what) + " must be " + wanted + ", not " + typeName(value));
}

/// The components of a sequence of two or three numbers.
int components(PyObject* value, std::string_view what, double (&out)[3]) {
    if (PyUnicode_Check(value) || PyBytes_Check(value) || !PySequence_Check(value))
        wrongType(what, "a point such as (x, y)", value);
    const Ref items(checked(PySequence_Tuple(value)));
    const Py_ssize_t count = PySequence_Fast_GET_SIZE(items.get());
    if (count != 2 && count != 3)
        fail(PyExc_ValueError, std::string(what) + " must have two or three coordinates, not " + std::to_string(count));
    for (Py_ssize_t i = 0; i < count; ++i) out[i] = numberFrom(PySequence_Fast_GET_ITEM(items.get(), i), what);
    return static_cast<int>(count);
}

void requireFinite(double v, std::string_view what) {
    if (!std::isfinite(v)) fail(PyExc_ValueError, std::string(what) + " must be finite");
}

}  // namespace

PyObject* pyFloat(double value) { return checked(PyFloat_FromDouble(value)); }
PyObject* pyInteger(std::int64_t value) { return checked(PyLong_FromLongLong(value)); }

PyObject* pyText(std::string_view text) {
    // Texts of old files may hold anything; what is no UTF-8 shows as replacement characters.
    return checked(PyUnicode_DecodeUTF8(text.data(), static_cast<Py_ssize_t>(text.size()), "replace"));
}

PyObject* pyPath(const std::string& path) {
    return checked(PyUnicode_DecodeUTF8(path.data(), static_cast<Py_ssize_t>(path.size()), "surrogateescape"));
}

PyObject* pyKnownText(const std::string& text) {
    static auto* const known = new std::unordered_map<std::string, PyObject*>;
    const auto it = known->find(text);
    if (it != known->end()) return it->second;
    PyObject* made = pyText(text);
    if (known->size() > 100'000) return known->begin()->second = made;  // never reached by a usual drawing
    PyUnicode_InternInPlace(&made);
    known->emplace(text, made);
    return made;
}

PyObject* pyHandle(std::uint64_t handle) {
    char text[24];
    const int size = std::snprintf(text, sizeof text, "%llX", static_cast<unsigned long long>(handle));
    return pyText({text, static_cast<std::size_t>(size)});
}

PyObject* pyColor(const engine::Color& color) {
    switch (color.method) {
        case engine::ColorMethod::ByLayer:
            return pyText("ByLayer");
        case engine::ColorMethod::ByBlock:
            return pyText("ByBlock");
        case engine::ColorMethod::ACI:
            return checked(PyLong_FromLong(color.aci));
        case engine::ColorMethod::RGB:
            break;
    }
    return checked(Py_BuildValue("(iii)", color.red, color.green, color.blue));
}

double numberFrom(PyObject* value, std::string_view what) {
    double v = 0.0;
    if (PyFloat_CheckExact(value)) {
        v = PyFloat_AS_DOUBLE(value);
    } else {
        if (PyUnicode_Check(value)) wrongType(what, "a number", value);
        v = PyFloat_AsDouble(value);
        if (v == -1.0 && PyErr_Occurred()) {
            if (!PyErr_ExceptionMatches(PyExc_TypeError)) throw PythonError{};
            PyErr_Clear();
            wrongType(what, "a number", value);
        }
    }
    requireFinite(v, what);
    return v;
}

std::int64_t integerFrom(PyObject* value, std::string_view what) {
    if (!PyIndex_Check(value)) wrongType(what, "a whole number", value);
    const Ref index(checked(PyNumber_Index(value)));
    const long long v = PyLong_AsLongLong(index.get());
    if (v == -1 && PyErr_Occurred()) {
        PyErr_Clear();
        fail(PyExc_ValueError, std::string(what) + " is out of range");
    }
    return v;
}

bool booleanFrom(PyObject* value, std::string_view what) {
    if (PyBool_Check(value)) return value == Py_True;
    if (PyLong_Check(value)) return integerFrom(value, what) != 0;
    wrongType(what, "True or False", value);
}

std::string textFrom(PyObject* value, std::string_view what) {
    if (!PyUnicode_Check(value)) wrongType(what, "a text", value);
    Py_ssize_t size = 0;
    if (const char* text = PyUnicode_AsUTF8AndSize(value, &size)) return {text, static_cast<std::size_t>(size)};
    // Paths that are no UTF-8 come from Python with their odd bytes escaped.
    PyErr_Clear();
    const Ref bytes(checked(PyUnicode_AsEncodedString(value, "utf-8", "surrogateescape")));
    return {PyBytes_AS_STRING(bytes.get()), static_cast<std::size_t>(PyBytes_GET_SIZE(bytes.get()))};
}

std::uint64_t handleFrom(PyObject* value, std::string_view what) {
    if (PyLong_Check(value)) {
        const std::int64_t v = integerFrom(value, what);
        if (v < 0) fail(PyExc_ValueError, std::string(what) + " is out of range");
        return static_cast<std::uint64_t>(v);
    }
    const std::string text = textFrom(value, what);
    std::uint64_t handle = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), handle, 16);
    if (error != std::errc{} || end != text.data() + text.size())
        fail(PyExc_ValueError, std::string(what) + " must be a handle in hexadecimal, not '" + text + "'");
    return handle;
}

engine::Color colorFrom(PyObject* value, std::string_view what) {
    if (PyLong_Check(value)) {
        const std::int64_t index = integerFrom(value, what);
        const auto color =
            index >= 0 && index <= 256 ? engine::Color::fromBareIndex(static_cast<int>(index)) : std::nullopt;
        if (!color) fail(PyExc_ValueError, std::string(what) + " must be 0 (ByBlock) to 256 (ByLayer)");
        return *color;
    }
    if (PyUnicode_Check(value)) {
        const std::string text = textFrom(value, what);
        const auto color = engine::parseColor(text);
        if (!color) fail(PyExc_ValueError, std::string(what) + " is no colour: '" + text + "'");
        return *color;
    }
    const Ref items = sequenceFrom(value, what);
    if (PySequence_Fast_GET_SIZE(items.get()) != 3)
        fail(PyExc_ValueError, std::string(what) + " must be an index, a name or (red, green, blue)");
    std::uint8_t bytes[3];
    for (int i = 0; i < 3; ++i) {
        const std::int64_t v = integerFrom(PySequence_Fast_GET_ITEM(items.get(), i), what);
        if (v < 0 || v > 255) fail(PyExc_ValueError, std::string(what) + " must have parts of 0 to 255");
        bytes[i] = static_cast<std::uint8_t>(v);
    }
    return engine::Color::rgb(bytes[0], bytes[1], bytes[2]);
}

math::Vector2 vector2From(PyObject* value, std::string_view what) {
    if (PyTuple_CheckExact(value) && PyTuple_GET_SIZE(value) == 2)
        return {numberFrom(PyTuple_GET_ITEM(value, 0), what), numberFrom(PyTuple_GET_ITEM(value, 1), what)};
    math::Vector2 v;
    if (isVector2(value, v)) {
        requireFinite(v.x, what);
        requireFinite(v.y, what);
        return v;
    }
    double parts[3] = {0, 0, 0};
    components(value, what, parts);
    if (parts[2] != 0.0)
        fail(PyExc_ValueError, std::string(what) + " lies in the plane: give (x, y), the z is the elevation");
    return {parts[0], parts[1]};
}

math::Vector3 vector3From(PyObject* value, std::string_view what) {
    double parts[3] = {0, 0, 0};
    components(value, what, parts);
    return {parts[0], parts[1], parts[2]};
}

Ref sequenceFrom(PyObject* value, std::string_view what) {
    if (PyUnicode_Check(value) || PyBytes_Check(value) || PyDict_Check(value)) wrongType(what, "a list", value);
    // A list of its own: conversions may run code that changes the one given.
    Ref items(PySequence_Tuple(value));
    if (!items) {
        if (!PyErr_ExceptionMatches(PyExc_TypeError)) throw PythonError{};
        PyErr_Clear();
        wrongType(what, "a list", value);
    }
    return items;
}

std::string pythonName(std::string_view key) {
    if (key.empty()) return "position";
    const auto upper = [](char c) { return c >= 'A' && c <= 'Z'; };
    std::string name;
    for (std::size_t i = 0; i < key.size(); ++i) {
        const bool next = i + 1 < key.size() && !upper(key[i + 1]) && !(key[i + 1] >= '0' && key[i + 1] <= '9');
        if (upper(key[i]) && i > 0 && (!upper(key[i - 1]) || next)) name += '_';
        name += upper(key[i]) ? static_cast<char>(key[i] + ('a' - 'A')) : key[i];
    }
    return name;
}

}  // namespace kova::script::python
