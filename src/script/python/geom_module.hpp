#pragma once

#include <Python.h>

namespace kova::script::python {

/// Adds the geometry types and functions to a module. Throws pybind11's exceptions.
void addGeometry(PyObject* module);

}  // namespace kova::script::python
