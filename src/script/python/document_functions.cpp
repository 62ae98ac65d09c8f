#include <pybind11/pybind11.h>

#include "engine/model/drawing.hpp"
#include "engine/model/sysvar.hpp"
#include "script/python/binding.hpp"
#include "script/python/entity_object.hpp"
#include "script/python/module_parts.hpp"

namespace py = pybind11;

namespace kova::script::python {

namespace {

py::object entity(const engine::Entity* e) {
    return e != nullptr ? py::reinterpret_steal<py::object>(entityObject(*e)) : py::none();
}

[[noreturn]] void raiseOsError(const std::string& error) { fail(PyExc_OSError, error); }

// Files --------------------------------------------------------------------------------------------------

void openFile(const std::string& path) {
    Binding& b = Binding::get();
    b.requireNoTransaction("opening a drawing");
    b.requireNoDialogue("opening a drawing");
    b.settle();
    if (const std::string error = b.session().open(path); !error.empty()) raiseOsError(error);
}

void newDrawing(const std::string& name) {
    Binding& b = Binding::get();
    b.requireNoTransaction("a new drawing");
    b.requireNoDialogue("a new drawing");
    b.settle();
    if (name.empty()) return b.session().newDrawing();
    if (const std::string error = b.session().newFromTemplate(name); !error.empty()) raiseOsError(error);
}

void saveFile(const std::string& path) {
    Binding& b = Binding::get();
    b.settle();
    if (const std::string error = b.session().save(path); !error.empty()) raiseOsError(error);
}

// Undo ---------------------------------------------------------------------------------------------------

py::object undo(bool back) {
    Binding& b = Binding::get();
    b.requireNoTransaction(back ? "undo" : "redo");
    b.settle();
    const std::string label = back ? b.document().history().undoLabel() : b.document().history().redoLabel();
    const bool done = back ? b.document().undo() : b.document().redo();
    return done ? textObject(label) : py::none();
}

// Variables ----------------------------------------------------------------------------------------------

py::object getVariable(const std::string& name) {
    const auto value = engine::getSysVar(Binding::get().drawing(), name);
    if (!value) fail(PyExc_KeyError, "there is no system variable named " + name);
    if (const auto* i = std::get_if<std::int32_t>(&*value)) return py::int_(*i);
    if (const auto* d = std::get_if<double>(&*value)) return py::float_(*d);
    if (const auto* s = std::get_if<std::string>(&*value)) return textObject(*s);
    return py::reinterpret_steal<py::object>(pyVector3(std::get<math::Vector3>(*value)));
}

void setVariable(const std::string& name, py::handle value) {
    Binding& b = Binding::get();
    if (engine::findSysVar(name) == nullptr && !engine::getSysVar(b.drawing(), name))
        fail(PyExc_KeyError, "there is no system variable named " + name);
    engine::SysVarValue converted;
    if (PyUnicode_Check(value.ptr())) {
        converted = textFrom(value.ptr(), name);
    } else if (PyFloat_Check(value.ptr())) {
        converted = numberFrom(value.ptr(), name);
    } else if (PyIndex_Check(value.ptr())) {
        const std::int64_t i = integerFrom(value.ptr(), name);
        if (i != static_cast<std::int32_t>(i)) fail(PyExc_ValueError, name + " is out of range");
        converted = static_cast<std::int32_t>(i);
    } else {
        converted = vector3From(value.ptr(), name);
    }
    b.prepareChange();
    if (const std::string error = b.document().setVariable(name, converted); !error.empty())
        fail(PyExc_ValueError, name + ": " + error);
}

py::list variableNames() {
    py::list names;
    for (const engine::SysVarDef& def : engine::sysVarTable()) names.append(textObject(def.name));
    return names;
}

// Selection ----------------------------------------------------------------------------------------------

py::list selection() {
    Binding& b = Binding::get();
    py::list out;
    for (const std::uint64_t id : b.document().selection().ids())
        if (const engine::Entity* e = b.drawing().findById(id)) out.append(entity(e));
    return out;
}

void select(py::handle entities) {
    std::vector<std::uint64_t> ids;
    for (const py::handle e : py::iter(entities)) {
        const engine::Entity& found = entityOf(e.ptr());
        if (found.owner() == nullptr) fail(PyExc_ValueError, "the " + entityText(e.ptr()) + ", cannot be selected");
        ids.push_back(found.id());
    }
    doc::SelectionSet& set = Binding::get().document().selection();
    set.clear();
    set.add(ids);
}

}  // namespace

void addDocumentFunctions(PyObject* module) {
    auto m = py::reinterpret_borrow<py::module_>(module);
    m.def("open_file", [](py::handle path) { openFile(textFrom(path.ptr(), "path")); });
    m.def("new_drawing", newDrawing);
    m.def("save_file", [](py::handle path) { saveFile(textFrom(path.ptr(), "path")); });
    m.def("path", [] { return py::reinterpret_steal<py::object>(pyPath(Binding::get().drawing().fileName)); });
    m.def("is_modified", [] {
        Binding::get().settle();
        return Binding::get().document().isModified();
    });
    m.def("undo", [] { return undo(true); });
    m.def("redo", [] { return undo(false); });
    m.def("undo_label", [] {
        Binding::get().settle();
        return textObject(Binding::get().document().history().undoLabel());
    });
    m.def("redo_label", [] { return textObject(Binding::get().document().history().redoLabel()); });
    m.def("begin_transaction", [](const std::string& name) { return Binding::get().beginTransaction(name); });
    m.def("end_transaction", [](std::uint64_t number, bool commit) {
        // The session may have ended before a forgotten generator closes its transaction.
        if (Binding* b = Binding::current()) b->endTransaction(number, commit);
    });
    m.def("get_variable", getVariable);
    m.def("set_variable", setVariable);
    m.def("variable_names", variableNames);
    m.def("variable_description", [](const std::string& name) {
        const engine::SysVarDef* def = engine::findSysVar(name);
        return def != nullptr ? textObject(def->description) : py::none();
    });
    m.def("selection", selection);
    m.def("select", select);
    m.def("by_handle", [](py::handle handle) {
        return entity(Binding::get().drawing().findByHandle(handleFrom(handle.ptr(), "handle")));
    });
    m.def("is_model_current", [] { return Binding::get().drawing().currentSpaceIsModel(); });
    m.def("message", [](const std::string& line) {
        if (Binding* b = Binding::current()) b->session().append(line);
    });
    m.def("color_text", [](py::handle color) { return textObject(engine::colorText(colorFrom(color.ptr(), "color"))); });
}

}  // namespace kova::script::python
