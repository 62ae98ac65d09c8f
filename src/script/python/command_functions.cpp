#include <pybind11/pybind11.h>

#include <memory>

#include "cmd/dialogue.hpp"
#include "cmd/registry.hpp"
#include "script/python/binding.hpp"
#include "script/python/convert.hpp"
#include "script/python/module_parts.hpp"
#include "script/python/runner.hpp"

namespace py = pybind11;

namespace kova::script::python {

namespace {

/// A command whose function is a generator: it asks, and waits for the next line, wherever the function yields.
class PythonTool final : public cmd::DialogueTool {
public:
    explicit PythonTool(std::string name) : name_(std::move(name)) {}
    ~PythonTool() override {
        Runner* runner = Runner::current();
        if (number_ != 0 && runner != nullptr) runner->endDialogue(number_, name_);
    }

protected:
    cmd::Dialogue dialogue(cmd::Ask& ask) override {
        Runner* runner = Runner::current();
        if (runner == nullptr) {
            message("Python is not available.");
            co_return;
        }
        static std::uint64_t last = 0;
        number_ = ++last;
        std::optional<cmd::Ask::Request> request = runner->beginDialogue(number_, name_);
        while (request) {
            const cmd::Answer answer = co_await ask.request(std::move(*request));
            request = runner->answerDialogue(number_, name_, answer);
        }
        number_ = 0;
    }

private:
    std::string name_;
    std::uint64_t number_ = 0;  ///< 0: the function has ended
};

/// A command whose work is a Python function, found by the command's name. Lives as long as the program; without
/// Python it says so.
class PythonCommand final : public cmd::Command {
public:
    using Command::Command;
    bool isInteractive() const override { return asks_; }
    std::unique_ptr<cmd::Tool> createTool() override { return std::make_unique<PythonTool>(name()); }
    void setAsks(bool on) { asks_ = on; }
    void execute(cmd::CommandContext& context) override {
        cmd::AppServices* services = context.host.services();
        const Binding* binding = Binding::current();
        if (services == nullptr || binding == nullptr) return context.message("Python is not available.");
        services->afterLine([name = name(), arguments = std::exchange(context.arguments, {})] {
            if (Runner* runner = Runner::current()) runner->runCommand(name, arguments);
        });
    }

private:
    bool asks_ = false;
};

/// Feeds lines; gives the transcript lines that they produced, which stay in the transcript too.
py::list feed(const py::list& lines) {
    Binding& b = Binding::get();
    b.requireNoDialogue("running a command");
    headless::Session& session = b.session();
    b.settle();
    const std::size_t before = session.output().size();
    for (const py::handle line : lines) session.feedQuietly(textFrom(line.ptr(), "a command line"));
    py::list out;
    const std::vector<std::string>& all = session.output();
    for (std::size_t i = std::min(before, all.size()); i < all.size(); ++i) out.append(textObject(all[i]));
    return out;
}

void defineCommand(const std::string& name, const std::string& title, const std::vector<std::string>& aliases,
                   bool asks) {
    cmd::CommandRegistry& registry = Binding::get().session().registry();
    if (cmd::Command* known = registry.find(name)) {
        if (auto* own = dynamic_cast<PythonCommand*>(known); own != nullptr && known->name() == name)
            return own->setAsks(asks);
        fail(PyExc_ValueError, name + " is a command or an alias already");
    }
    auto command = std::make_unique<PythonCommand>(name, title, "Tools", aliases);
    command->setAsks(asks);
    if (!registry.add(std::move(command))) fail(PyExc_ValueError, "'" + name + "' is no name for a command");
}

}  // namespace

void addCommandFunctions(PyObject* module) {
    auto m = py::reinterpret_borrow<py::module_>(module);
    m.def("feed", feed);
    m.def("in_transaction", [] { return Binding::get().inTransaction(); });
    m.def("cancel", [] {
        Binding::get().requireNoDialogue("cancelling a command");
        Binding::get().session().cancel();
    });
    m.def("is_waiting", [] { return Binding::get().session().isWaiting(); });
    m.def("prompt", [] { return textObject(Binding::get().session().currentPrompt()); });
    m.def("command_names", [] {
        py::list out;
        for (const cmd::Command* command : Binding::get().session().registry().commands())
            out.append(textObject(command->name()));
        return out;
    });
    m.def("aliases", [] {
        py::dict out;
        for (const auto& [alias, name] : Binding::get().session().registry().aliases()) out[textObject(alias)] = textObject(name);
        return out;
    });
    m.def("define_command", [](const std::string& name, const std::string& title, const py::list& aliases, bool asks) {
        std::vector<std::string> words;
        for (const py::handle alias : aliases) words.push_back(textFrom(alias.ptr(), "alias"));
        defineCommand(name, title, words, asks);
    });
}

}  // namespace kova::script::python
