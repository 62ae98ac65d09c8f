#pragma once

namespace kova::script::python {

/// Makes the native module and the package `kova` known to the running interpreter, once. PythonError on failure.
void installPackage();

}  // namespace kova::script::python
