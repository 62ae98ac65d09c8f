#pragma once

#include <Python.h>

#include <cstdint>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "engine/model/color.hpp"
#include "engine/model/name.hpp"
#include "math/bounds2.hpp"
#include "math/matrix4.hpp"
#include "math/vector2.hpp"
#include "math/vector3.hpp"

namespace kova::script::python {

/// Thrown when Python's error is set already; what calls from Python gives null back then.
struct PythonError {};

/// Sets a Python error and throws PythonError.
[[noreturn]] void fail(PyObject* kind, const std::string& text);

/// A reference that is given up at the end of its scope.
class Ref {
public:
    Ref() = default;
    explicit Ref(PyObject* owned) : object_(owned) {}
    Ref(Ref&& o) noexcept : object_(o.release()) {}
    Ref& operator=(Ref&& o) noexcept {
        if (this != &o) {
            Py_XDECREF(object_);
            object_ = o.release();
        }
        return *this;
    }
    ~Ref() { Py_XDECREF(object_); }
    PyObject* get() const { return object_; }
    PyObject* release() { return std::exchange(object_, nullptr); }
    explicit operator bool() const { return object_ != nullptr; }

private:
    PyObject* object_ = nullptr;
};

/// The object, or PythonError when there is none.
inline PyObject* checked(PyObject* object) {
    if (object == nullptr) throw PythonError{};
    return object;
}

/// Sets the Python error of the C++ exception that is being handled.
void translateException() noexcept;

/// Runs `work` for a slot that gives null (or -1) on an error.
template <class Work>
auto guarded(Work&& work, decltype(work()) onError) noexcept -> decltype(work()) {
    try {
        return work();
    } catch (...) {
        translateException();
        return onError;
    }
}
template <class Work>
PyObject* guarded(Work&& work) noexcept {
    return guarded(std::forward<Work>(work), static_cast<PyObject*>(nullptr));
}

// To Python: new references; PythonError on failure ---------------------------------------------------------

PyObject* pyText(std::string_view text);
PyObject* pyFloat(double value);
PyObject* pyInteger(std::int64_t value);
/// A path as Python has paths: bytes that are no UTF-8 are escaped, so that it can be opened again.
PyObject* pyPath(const std::string& path);
/// The same, kept for the next time; for names of fields and layers. A borrowed reference.
PyObject* pyKnownText(const std::string& text);
PyObject* pyHandle(std::uint64_t handle);
/// "ByLayer", "ByBlock", a colour index or (red, green, blue).
PyObject* pyColor(const engine::Color& color);
PyObject* pyVector2(const math::Vector2& v);
PyObject* pyVector3(const math::Vector3& v);
PyObject* pyBounds(const math::Bounds2& b);

// From Python; `what` names the value in errors ------------------------------------------------------------

double numberFrom(PyObject* value, std::string_view what);
std::int64_t integerFrom(PyObject* value, std::string_view what);
bool booleanFrom(PyObject* value, std::string_view what);
std::string textFrom(PyObject* value, std::string_view what);
std::uint64_t handleFrom(PyObject* value, std::string_view what);
engine::Color colorFrom(PyObject* value, std::string_view what);
/// From a Vector2, a Vector3 or any sequence of two numbers (a third one must be 0).
math::Vector2 vector2From(PyObject* value, std::string_view what);
/// From a Vector3, a Vector2 (z = 0) or any sequence of two or three numbers.
math::Vector3 vector3From(PyObject* value, std::string_view what);
/// The items of any iterable that is no text.
Ref sequenceFrom(PyObject* value, std::string_view what);

// What the geometry module knows of its own types; see geom_module.cpp.
bool isVector2(PyObject* value, math::Vector2& v);
bool isVector3(PyObject* value, math::Vector3& v);
math::Matrix4 matrixFrom(PyObject* value);
math::Bounds2 boundsFrom(PyObject* value);

/// "startAngle" as Python writes names: "start_angle".
std::string pythonName(std::string_view key);

}  // namespace kova::script::python
