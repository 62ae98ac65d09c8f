#include <pybind11/pybind11.h>

#include <memory>

#include "cmd/registry.hpp"
#include "script/python/binding.hpp"
#include "script/python/convert.hpp"
#include "script/python/module_parts.hpp"
#include "script/python/runner.hpp"

namespace py = pybind11;

namespace kova::script::python {

namespace {

py::object text(std::string_view s) { return py::reinterpret_steal<py::object>(pyText(s)); }

/// A command whose work is a Python function, found by the command's name. Lives as long as the program; without
/// Python it says so.
class PythonCommand final : public cmd::Command {
public:
    using Command::Command;
    bool isInteractive() const override { return false; }
    void execute(cmd::CommandContext& context) override {
        cmd::AppServices* services = context.host.services();
        const Binding* binding = Binding::current();
        if (services == nullptr || binding == nullptr) return context.message("Python is not available.");
        services->afterLine([name = name(), arguments = std::exchange(context.arguments, {})] {
            if (Runner* runner = Runner::current()) runner->runCommand(name, arguments);
        });
    }
};

/// Feeds lines; gives the transcript lines that they produced, which stay in the transcript too.
py::list feed(const py::list& lines) {
    Binding& b = Binding::get();
    headless::Session& session = b.session();
    b.settle();
    const std::size_t before = session.output().size();
    for (const py::handle line : lines) session.feedQuietly(textFrom(line.ptr(), "a command line"));
    py::list out;
    const std::vector<std::string>& all = session.output();
    for (std::size_t i = std::min(before, all.size()); i < all.size(); ++i) out.append(text(all[i]));
    return out;
}

void defineCommand(const std::string& name, const std::string& title, const std::vector<std::string>& aliases) {
    cmd::CommandRegistry& registry = Binding::get().session().registry();
    if (cmd::Command* known = registry.find(name)) {
        if (dynamic_cast<PythonCommand*>(known) != nullptr && known->name() == name) return;
        fail(PyExc_ValueError, name + " is a command or an alias already");
    }
    if (!registry.add(std::make_unique<PythonCommand>(name, title, "Tools", aliases)))
        fail(PyExc_ValueError, "'" + name + "' is no name for a command");
}

}  // namespace

void addCommandFunctions(PyObject* module) {
    auto m = py::reinterpret_borrow<py::module_>(module);
    m.def("feed", feed);
    m.def("cancel", [] { Binding::get().session().cancel(); });
    m.def("is_waiting", [] { return Binding::get().session().isWaiting(); });
    m.def("prompt", [] { return text(Binding::get().session().currentPrompt()); });
    m.def("command_names", [] {
        py::list out;
        for (const cmd::Command* command : Binding::get().session().registry().commands())
            out.append(text(command->name()));
        return out;
    });
    m.def("aliases", [] {
        py::dict out;
        for (const auto& [alias, name] : Binding::get().session().registry().aliases()) out[text(alias)] = text(name);
        return out;
    });
    m.def("define_command", [](const std::string& name, const std::string& title, const py::list& aliases) {
        std::vector<std::string> words;
        for (const py::handle alias : aliases) words.push_back(textFrom(alias.ptr(), "alias"));
        defineCommand(name, title, words);
    });
}

}  // namespace kova::script::python
