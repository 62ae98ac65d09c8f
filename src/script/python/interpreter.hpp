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

    /// Starts it. Empty on success, else the reason; a broken Python set-up (a wrong PYTHONHOME, say) never ends
    /// the process. Standard output stays the program's own: what Python prints goes to standard error.
    std::string start();
    bool isRunning() const { return running_; }

private:
    bool running_ = false;
};

}  // namespace kova::script::python
