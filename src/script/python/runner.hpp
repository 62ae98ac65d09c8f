#pragma once

#include <string>
#include <vector>

#include "cmd/command.hpp"
#include "cmd/dialogue.hpp"
#include "script/python/binding.hpp"
#include "script/python/interpreter.hpp"

struct _object;  // a Python object; Python.h is for sources only

namespace kova::script::python {

/// Runs Python code against a session's drawing. The interpreter starts with the first code; there is at most one
/// runner at a time. Give it up before the session and the interpreter.
class Runner final : public cmd::PythonHost {
public:
    struct Result {
        std::string output;  ///< what the code printed
        std::string error;   ///< the traceback, without the program's own frames
        bool failed = false;
    };

    Runner(Interpreter& interpreter, headless::Session& session);
    ~Runner() override;

    /// Null while there is none.
    static Runner* current();

    /// Runs code in the namespace that all such runs share; `kova` is bound in it. Nothing that the code does ends the
    /// program, short of ending the process itself.
    Result run(const std::string& code);

    // Of commands: what is printed and errors go to the session's transcript.
    void runFile(const std::string& path) override;
    void loadFile(const std::string& path) override;
    void reloadFiles() override;
    /// Runs the function of a command that was written in Python.
    void runCommand(const std::string& name, const std::vector<std::string>& arguments);

    // A command that asks: the generator of its function, told by a number of the caller's. Each gives the question
    // that the command then waits for; nothing at its end.
    std::optional<cmd::Ask::Request> beginDialogue(std::uint64_t number, const std::string& name);
    std::optional<cmd::Ask::Request> answerDialogue(std::uint64_t number, const std::string& name,
                                                    const cmd::Answer& answer);
    void endDialogue(std::uint64_t number, const std::string& name);

private:
    /// Starts Python and the package on first use. Empty on success, else the reason why there is none.
    std::string start();
    /// Calls a function of the package's harness within a run of that name. The result is a new reference, null after
    /// an error, whose text `error` then is.
    ::_object* call(const char* function, const std::string& label, ::_object* arguments, std::string& error);
    void callForCommand(const char* function, const std::string& label, ::_object* arguments);
    std::optional<cmd::Ask::Request> askForCommand(const char* function, const std::string& label,
                                                   ::_object* arguments);

    Interpreter& interpreter_;
    Binding binding_;
};

}  // namespace kova::script::python
