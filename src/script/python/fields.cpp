#include "script/python/fields.hpp"

namespace kova::script::python {

using engine::Field;

// Listing ------------------------------------------------------------------------------------------------

void FieldLister::on(const Field& f, FieldKind kind, void*) {
    fields.push_back({std::string(f.key), pythonName(f.key), kind, f.unit});
}

bool FieldLister::beginObject(const Field& f, bool) {
    fields.push_back({std::string(f.key), pythonName(f.key), FieldKind::Record, f.unit});
    return false;
}

bool FieldLister::beginList(const Field& f, std::size_t&) {
    fields.push_back({std::string(f.key), pythonName(f.key), FieldKind::Records, f.unit});
    return false;
}

// Reading fields into Python -----------------------------------------------------------------------------

FieldGetter::FieldGetter() : all_(true) { result_ = Ref(checked(PyDict_New())); }

bool FieldGetter::wanted(const Field& f) const { return all_ || !levels_.empty() || (!result_ && f.key == key_); }

void FieldGetter::put(std::string_view key, Ref value) {
    PyObject* container = !levels_.empty() ? levels_.back().container.get() : all_ ? result_.get() : nullptr;
    if (container == nullptr) {
        result_ = std::move(value);
    } else if (PyDict_SetItem(container, pyKnownText(pythonName(key)), value.get()) != 0) {
        throw PythonError{};
    }
}

void FieldGetter::on(const Field& f, FieldKind kind, void* value) {
    if (wanted(f)) put(f.key, pythonValue(kind, value));
}

bool FieldGetter::beginObject(const Field& f, bool present) {
    if (!wanted(f)) return false;
    if (!present) {
        put(f.key, Ref(Py_NewRef(Py_None)));
        return false;
    }
    levels_.push_back({Ref(checked(PyDict_New())), std::string(f.key)});
    return true;
}

void FieldGetter::endObject() {
    Level level = std::move(levels_.back());
    levels_.pop_back();
    put(level.key, std::move(level.container));
}

bool FieldGetter::beginList(const Field& f, std::size_t&) {
    if (!wanted(f)) return false;
    levels_.push_back({Ref(checked(PyList_New(0))), std::string(f.key)});
    return true;
}

void FieldGetter::beginItem(std::size_t) { levels_.push_back({Ref(checked(PyDict_New())), {}}); }

void FieldGetter::endItem() {
    const Level item = std::move(levels_.back());
    levels_.pop_back();
    if (PyList_Append(levels_.back().container.get(), item.container.get()) != 0) throw PythonError{};
}

void FieldGetter::endList() { endObject(); }

// Setting fields from Python -----------------------------------------------------------------------------

FieldSetter::FieldSetter(PyObject* dict) : all_(true) {
    if (!PyDict_Check(dict)) fail(PyExc_TypeError, "fields must be given as a dict");
    enter(dict);
}

PyObject* FieldSetter::find(const Field& f) {
    if (levels_.empty()) {
        if (done_ || f.key != key_) return nullptr;
        done_ = true;
        return value_;
    }
    PyObject* value = PyDict_GetItemWithError(levels_.back().object, pyKnownText(pythonName(f.key)));
    if (value == nullptr) {
        if (PyErr_Occurred()) throw PythonError{};
        return nullptr;
    }
    ++levels_.back().used;
    alive_.emplace_back(Py_NewRef(value));
    name_ = pythonName(f.key);
    return value;
}

void FieldSetter::on(const Field& f, FieldKind kind, void* value) {
    // Fields that a record derives while it is read (a line's end z) start from nothing then: they are kept first.
    if (keeping_) {
        if (!levels_.empty() && !all_) return;
        if (kind == FieldKind::Number) kept_.push_back({f.key, kind, *static_cast<double*>(value), 0});
        if (kind == FieldKind::Integer) kept_.push_back({f.key, kind, 0, *static_cast<std::int64_t*>(value)});
        return;
    }
    if (PyObject* from = find(f)) return assignValue(kind, value, from, name_);
    if (levels_.size() > (all_ ? 1U : 0U)) return;
    for (const Kept& k : kept_) {
        if (k.kind != kind || k.key != f.key) continue;
        if (kind == FieldKind::Number) *static_cast<double*>(value) = k.number;
        if (kind == FieldKind::Integer) *static_cast<std::int64_t*>(value) = k.integer;
    }
}

void FieldSetter::enter(PyObject* dict) { levels_.push_back({dict, 0}); }

void FieldSetter::leave() {
    const Level level = levels_.back();
    levels_.pop_back();
    if (level.used >= PyDict_Size(level.object)) return;
    // Which one is it? Fields took fewer than there are, so a second look may take its time.
    const Ref keys(checked(PyObject_Repr(Ref(checked(PyDict_Keys(level.object))).get())));
    fail(PyExc_TypeError, "unknown field among " + textFrom(keys.get(), "fields"));
}

bool FieldSetter::beginObject(const Field& f, bool) {
    if (keeping_) return false;
    PyObject* value = find(f);
    if (value == nullptr || value == Py_None) return false;
    if (!PyDict_Check(value)) fail(PyExc_TypeError, name_ + " must be a dict of its fields, or None");
    enter(value);
    return true;
}

void FieldSetter::endObject() { leave(); }

bool FieldSetter::beginList(const Field& f, std::size_t& count) {
    if (keeping_) return false;
    PyObject* value = find(f);
    if (value == nullptr) return false;
    Ref items = sequenceFrom(value, name_);
    count = static_cast<std::size_t>(PySequence_Fast_GET_SIZE(items.get()));
    levels_.push_back({items.get(), 0});
    alive_.push_back(std::move(items));
    return true;
}

void FieldSetter::beginItem(std::size_t index) {
    PyObject* list = levels_.back().object;
    // Conversions may run Python code, which may shorten the list.
    if (static_cast<Py_ssize_t>(index) >= PySequence_Fast_GET_SIZE(list)) fail(PyExc_RuntimeError, "list changed size");
    PyObject* item = PySequence_Fast_GET_ITEM(list, static_cast<Py_ssize_t>(index));
    if (!PyDict_Check(item)) fail(PyExc_TypeError, name_ + " must be a list of dicts");
    enter(item);
}

void FieldSetter::endItem() { leave(); }
void FieldSetter::endList() { levels_.pop_back(); }

void FieldSetter::finish() {
    if (all_) leave();
}

}  // namespace kova::script::python
