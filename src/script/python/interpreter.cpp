// Python.h comes first, as its documentation asks.
#include <Python.h>

#include "script/python/interpreter.hpp"

namespace kova::script::python {

Interpreter::~Interpreter() {
    if (running_) Py_FinalizeEx();
}

std::string Interpreter::start() {
    if (running_) return {};
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
    if (PyStatus_Exception(status)) {
        if (status.err_msg == nullptr) return "exit status " + std::to_string(status.exitcode);
        return status.err_msg;
    }
    running_ = true;
    PyRun_SimpleString("import sys; sys.stdout = sys.stderr");
    return {};
}

}  // namespace kova::script::python
