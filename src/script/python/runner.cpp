#include "script/python/convert.hpp"

#include "script/python/entity_object.hpp"
#include "script/python/package.hpp"
#include "script/python/runner.hpp"

namespace kova::script::python {

namespace {

Runner* theRunner = nullptr;

/// The text of the Python error that is set, which is cleared.
std::string takeErrorText() {
    PyObject *type = nullptr, *value = nullptr, *trace = nullptr;
    PyErr_Fetch(&type, &value, &trace);
    PyErr_NormalizeException(&type, &value, &trace);
    const Ref kind(type), object(value), frames(trace);
    const Ref shown(object ? PyObject_Str(object.get()) : nullptr);
    const char* text = shown ? PyUnicode_AsUTF8(shown.get()) : nullptr;
    PyErr_Clear();
    return text != nullptr ? text : "unknown error";
}

/// The answer as Python gets it: None, a text, a number, a pair of coordinates, an entity or a list of entities.
PyObject* answerObject(const cmd::Answer& answer, const engine::Drawing& drawing) {
    using Kind = cmd::Answer::Kind;
    const auto entity = [&](std::uint64_t id) -> PyObject* {
        const engine::Entity* e = drawing.findById(id);
        return e != nullptr ? entityObject(*e) : Py_NewRef(Py_None);
    };
    switch (answer.kind) {
        case Kind::Keyword:
            return pyText(answer.word);
        case Kind::Point:
            return Py_BuildValue("(dd)", answer.point.x, answer.point.y);
        case Kind::Number:
            return PyFloat_FromDouble(answer.number);
        case Kind::Text:
            return pyText(answer.text);
        case Kind::Object:
            return entity(answer.id);
        case Kind::Selection: {
            Ref list(PyList_New(0));
            for (const std::uint64_t id : answer.ids)
                if (const Ref item{entity(id)}; item && item.get() != Py_None) PyList_Append(list.get(), item.get());
            return list.release();
        }
        case Kind::Enter:
            break;
    }
    return Py_NewRef(Py_None);
}

/// The question that a tuple (kind, prompt, keywords, base, minimum, maximum) tells.
std::optional<cmd::Ask::Request> requestOf(PyObject* question) {
    static constexpr std::pair<std::string_view, cmd::Ask::Kind> kKinds[] = {
        {"point", cmd::Ask::Kind::Point},        {"number", cmd::Ask::Kind::Number},
        {"integer", cmd::Ask::Kind::Integer},    {"distance", cmd::Ask::Kind::Distance},
        {"angle", cmd::Ask::Kind::Angle},        {"keyword", cmd::Ask::Kind::Keyword},
        {"text", cmd::Ask::Kind::Text},          {"entity", cmd::Ask::Kind::Object},
        {"selection", cmd::Ask::Kind::Selection}};
    const char* kind = nullptr;
    const char* prompt = nullptr;
    const char* keywords = nullptr;
    PyObject* base = nullptr;
    cmd::Ask::Request request;
    if (!PyArg_ParseTuple(question, "sssOdd", &kind, &prompt, &keywords, &base, &request.range.minimum,
                          &request.range.maximum))
        return {};
    const auto* found =
        std::find_if(std::begin(kKinds), std::end(kKinds), [&](const auto& k) { return k.first == kind; });
    if (found == std::end(kKinds)) return {};
    request.kind = found->second;
    request.prompt = prompt;
    request.keywords = cmd::parseKeywords(keywords);
    math::Vector2 at;
    if (base != Py_None) {
        if (!PyArg_ParseTuple(base, "dd", &at.x, &at.y)) return {};
        request.base = at;
    }
    return request;
}

}  // namespace

Runner::Runner(Interpreter& interpreter, headless::Session& session) : interpreter_(interpreter), binding_(session) {
    theRunner = this;
    session.setPython(this);
}

Runner::~Runner() {
    binding_.session().setPython(nullptr);
    theRunner = nullptr;
}

Runner* Runner::current() { return theRunner; }

std::string Runner::start() {
    if (std::string reason = interpreter_.start(); !reason.empty()) return reason;
    try {
        installPackage();
        return {};
    } catch (const PythonError&) {
        return takeErrorText();
    }
}

PyObject* Runner::call(const char* function, const std::string& label, PyObject* arguments, std::string& error) {
    const Ref owned(arguments);
    PyObject* result = nullptr;
    try {
        binding_.beginRun(label);
    } catch (const std::exception& refusal) {
        error = refusal.what();
        return nullptr;
    }
    if (const Ref harness{PyImport_ImportModule("kova._harness")})
        if (const Ref callee{PyObject_GetAttrString(harness.get(), function)})
            result = PyObject_CallObject(callee.get(), owned.get());
    if (result == nullptr) error = takeErrorText();
    binding_.endRun();
    return result;
}

Runner::Result Runner::run(const std::string& code) {
    if (const std::string reason = start(); !reason.empty()) return {{}, "Python is not available: " + reason, true};
    Result result;
    const Ref arguments(
        Py_BuildValue("(N)", PyUnicode_DecodeUTF8(code.data(), static_cast<Py_ssize_t>(code.size()), "replace")));
    const Ref answer(call("run_code", "Python", Py_XNewRef(arguments.get()), result.error));
    const char* error = nullptr;
    if (answer && PyTuple_Check(answer.get()) && PyTuple_GET_SIZE(answer.get()) == 2) {
        PyObject* text = PyTuple_GET_ITEM(answer.get(), 1);
        // Paths that are no UTF-8 come out as the bytes they are.
        for (const char* odd : {"surrogateescape", "replace"}) {
            const Ref bytes(PyUnicode_AsEncodedString(PyTuple_GET_ITEM(answer.get(), 0), "utf-8", odd));
            if (!bytes) {
                PyErr_Clear();
                continue;
            }
            result.output.assign(PyBytes_AS_STRING(bytes.get()), static_cast<std::size_t>(PyBytes_GET_SIZE(bytes.get())));
            break;
        }
        result.failed = text != Py_None;
        if (result.failed) error = PyUnicode_AsUTF8(text);
        if (error != nullptr) result.error = error;
    } else {
        result.failed = true;
        if (result.error.empty()) result.error = "unknown error";
    }
    PyErr_Clear();
    return result;
}

void Runner::callForCommand(const char* function, const std::string& label, PyObject* arguments) {
    std::string error;
    const Ref done(call(function, label, arguments, error));
    if (!done) binding_.session().append(error);
}

void Runner::runFile(const std::string& path) {
    if (const std::string reason = start(); !reason.empty())
        return binding_.session().append("Python is not available: " + reason);
    callForCommand("run_file", "PYSCRIPT", Py_BuildValue("(N)", pyPath(path)));
}

void Runner::loadFile(const std::string& path) {
    if (const std::string reason = start(); !reason.empty())
        return binding_.session().append("Python is not available: " + reason);
    callForCommand("load_file", "PYLOAD", Py_BuildValue("(N)", pyPath(path)));
}

void Runner::reloadFiles() {
    if (const std::string reason = start(); !reason.empty())
        return binding_.session().append("Python is not available: " + reason);
    callForCommand("reload_files", "PYRELOAD", PyTuple_New(0));
}

void Runner::runCommand(const std::string& name, const std::vector<std::string>& arguments) {
    if (const std::string reason = start(); !reason.empty())
        return binding_.session().append("Python is not available: " + reason);
    Ref words(PyList_New(0));
    for (const std::string& argument : arguments) {
        const Ref word(PyUnicode_DecodeUTF8(argument.data(), static_cast<Py_ssize_t>(argument.size()), "replace"));
        if (word) PyList_Append(words.get(), word.get());
    }
    callForCommand("run_command", name, Py_BuildValue("(sN)", name.c_str(), words.release()));
}

std::optional<cmd::Ask::Request> Runner::askForCommand(const char* function, const std::string& label,
                                                       PyObject* arguments) {
    std::string error;
    binding_.setInDialogue(true);
    const Ref question(call(function, label, arguments, error));
    binding_.setInDialogue(false);
    if (!question) {
        binding_.session().append(error);
        return {};
    }
    if (question.get() == Py_None) return {};
    std::optional<cmd::Ask::Request> request = requestOf(question.get());
    if (!request) binding_.session().append(takeErrorText());
    return request;
}

std::optional<cmd::Ask::Request> Runner::beginDialogue(std::uint64_t number, const std::string& name) {
    if (const std::string reason = start(); !reason.empty()) {
        binding_.session().append("Python is not available: " + reason);
        return {};
    }
    return askForCommand("begin_dialogue", name,
                         Py_BuildValue("(Ks)", static_cast<unsigned long long>(number), name.c_str()));
}

std::optional<cmd::Ask::Request> Runner::answerDialogue(std::uint64_t number, const std::string& name,
                                                        const cmd::Answer& answer) {
    PyObject* value = nullptr;
    try {
        value = answerObject(answer, binding_.drawing());
    } catch (const PythonError&) {
    }
    if (value == nullptr) {
        binding_.session().append(takeErrorText());
        return {};
    }
    return askForCommand("answer_dialogue", name,
                         Py_BuildValue("(KN)", static_cast<unsigned long long>(number), value));
}

void Runner::endDialogue(std::uint64_t number, const std::string& name) {
    callForCommand("end_dialogue", name, Py_BuildValue("(K)", static_cast<unsigned long long>(number)));
}

}  // namespace kova::script::python
