#pragma once

#include <Python.h>

#include "engine/model/name.hpp"

namespace kova::script::python {

/// Makes the class `Space`: the entities of model space, a layout or a block as a sequence. PythonError on failure.
void addSpaceClass(PyObject* module);

}  // namespace kova::script::python
