#pragma once

#include <pybind11/pybind11.h>

#include "script/python/convert.hpp"

namespace kova::script::python {

/// A text as an object of pybind11.
inline pybind11::object textObject(std::string_view text) {
    return pybind11::reinterpret_steal<pybind11::object>(pyText(text));
}

// The parts of the native module `_kova`, on which the package in kova/ stands. They throw pybind11's exceptions.

/// Files, undo, transactions, variables, the selection, entities by handle.
void addDocumentFunctions(PyObject* module);
/// Symbol tables, blocks and layouts.
void addTableFunctions(PyObject* module);
/// Command lines, and commands written in Python.
void addCommandFunctions(PyObject* module);

}  // namespace kova::script::python
