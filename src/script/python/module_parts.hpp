#pragma once

#include <Python.h>

namespace kova::script::python {

// The parts of the native module `_kova`, on which the package in kova/ stands. They throw pybind11's exceptions.

/// Files, undo, transactions, variables, the selection, entities by handle.
void addDocumentFunctions(PyObject* module);
/// Symbol tables, blocks and layouts.
void addTableFunctions(PyObject* module);
/// Command lines, and commands written in Python.
void addCommandFunctions(PyObject* module);

}  // namespace kova::script::python
