// Python.h comes first, as its documentation asks.
#include <Python.h>

#include <unistd.h>

#include <string_view>

#include "script/python/interpreter.hpp"

namespace kova::script::python {

Interpreter::~Interpreter() {
    if (running_) Py_FinalizeEx();
}

std::string Interpreter::check() {
    for (char** variable = environ; variable != nullptr && *variable != nullptr; ++variable)
        if (std::string_view(*variable).starts_with("PYTHON")) return start();
    for (const char* file :
         {KOVA_PYTHON_STDLIB "/encodings/__init__.py", KOVA_PYTHON_STDLIB "/os.py", KOVA_PYTHON_STDLIB "/io.py"})
        if (::access(file, R_OK) != 0) return start();
    return {};
}

std::string Interpreter::start() {
    if (running_ || !failure_.empty()) return failure_;
    // The native types are made once in a process.
    if (Py_IsInitialized() != 0) return failure_ = "it runs already";
    static bool wasRunning = false;
    if (wasRunning) return failure_ = "it was shut down";
    PyConfig config;
    PyConfig_InitPythonConfig(&config);
    config.parse_argv = 0;
    config.install_signal_handlers = 0;
    config.write_bytecode = 0;
    config.pathconfig_warnings = 0;
    // The interpreter that the library belongs to; a search on PATH might find the files of another version.
    PyStatus status = PyConfig_SetBytesString(&config, &config.program_name, KOVA_PYTHON_EXECUTABLE);
    if (!PyStatus_Exception(status)) status = Py_InitializeFromConfig(&config);
    PyConfig_Clear(&config);
    if (PyStatus_Exception(status))
        return failure_ = status.err_msg != nullptr ? status.err_msg : "exit status " + std::to_string(status.exitcode);
    running_ = true;
    wasRunning = true;
    // Standard input belongs to the protocol, or to nobody.
    PyRun_SimpleString("import sys, io; sys.stdout = sys.stderr; sys.stdin = io.StringIO()");
    return {};
}

}  // namespace kova::script::python
