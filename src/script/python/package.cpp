#include "script/python/package.hpp"

#include <pybind11/pybind11.h>

#include "script/python/convert.hpp"
#include "script/python/entity_object.hpp"
#include "script/python/geom_module.hpp"
#include "script/python/module_parts.hpp"
#include "script/python/space_object.hpp"

// The package's sources, which the build compiles in; see kova/.
#define KOVA_PYTHON_SOURCE(name)          \
    namespace kova::resources {           \
    extern const unsigned char name[];    \
    extern const std::size_t name##_size; \
    }
KOVA_PYTHON_SOURCE(python_init)
KOVA_PYTHON_SOURCE(python_bootstrap)
KOVA_PYTHON_SOURCE(python_harness)
KOVA_PYTHON_SOURCE(python_doc)
KOVA_PYTHON_SOURCE(python_tables)
KOVA_PYTHON_SOURCE(python_ent)
KOVA_PYTHON_SOURCE(python_geom)
KOVA_PYTHON_SOURCE(python_cmd)
KOVA_PYTHON_SOURCE(python_stubs)

namespace kova::script::python {

namespace {

bool installed = false;

Ref sourceText(const unsigned char* text, std::size_t size) {
    return Ref(pyText({reinterpret_cast<const char*>(text), size}));
}

}  // namespace

void installPackage() {
    if (installed) return;
    try {
        PyObject* native = checked(PyImport_AddModule("_kova"));
        addGeometry(native);
        addEntityClasses(native);
        addSpaceClass(native);
        addDocumentFunctions(native);
        addTableFunctions(native);
        addCommandFunctions(native);

        const Ref sources(checked(PyDict_New()));
        const auto add = [&](const char* module, const unsigned char* text, std::size_t size) {
            if (PyDict_SetItemString(sources.get(), module, sourceText(text, size).get()) != 0) throw PythonError{};
        };
        namespace r = resources;
        add("kova", r::python_init, r::python_init_size);
        add("kova._harness", r::python_harness, r::python_harness_size);
        add("kova.doc", r::python_doc, r::python_doc_size);
        add("kova._tables", r::python_tables, r::python_tables_size);
        add("kova.ent", r::python_ent, r::python_ent_size);
        add("kova.geom", r::python_geom, r::python_geom_size);
        add("kova.cmd", r::python_cmd, r::python_cmd_size);
        add("kova._stubs", r::python_stubs, r::python_stubs_size);

        const Ref globals(checked(PyDict_New()));
        if (PyDict_SetItemString(globals.get(), "__builtins__", PyEval_GetBuiltins()) != 0 ||
            PyDict_SetItemString(globals.get(), "SOURCES", sources.get()) != 0)
            throw PythonError{};
        const std::string text(reinterpret_cast<const char*>(r::python_bootstrap), r::python_bootstrap_size);
        const Ref code(checked(Py_CompileString(text.c_str(), "<kova/_bootstrap.py>", Py_file_input)));
        const Ref done(checked(PyEval_EvalCode(code.get(), globals.get(), globals.get())));
        installed = true;
    } catch (pybind11::error_already_set& error) {
        error.restore();
        throw PythonError{};
    } catch (const PythonError&) {
        throw;
    } catch (...) {
        translateException();
        throw PythonError{};
    }
}

}  // namespace kova::script::python
