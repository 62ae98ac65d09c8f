#pragma once

#include <string>

namespace kova::script::python {

/// The embedded Python interpreter, one for the process, alive as long as this object.
class Interpreter {
public:
    Interpreter() = default;
    ~Interpreter();
    Interpreter(const Interpreter&) = delete;
    Interpreter& operator=(const Interpreter&) = delete;

    /// Finds out whether Python can start, without the time that starting takes: in a usual environment (no PYTHON...
    /// variable, the standard library in its place) nothing stands against it; in any other one it is started.
    /// Empty when it can, else the reason.
    std::string check();
    /// Starts it, or leaves it running. Empty on success, else the reason; a broken Python set-up (a wrong PYTHONHOME,
    /// say) never ends the process. Standard output stays the program's own: what Python prints goes to standard error.
    std::string start();
    bool isRunning() const { return running_; }

private:
    bool running_ = false;
    std::string failure_;
};

}  // namespace kova::script::python
