#pragma once

#include <atomic>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "cmd/processor.hpp"
#include "doc/document.hpp"
#include "script/lisp/value.hpp"

namespace kova::script::lisp {

class Machine;
struct Instruction;
struct PendingEntities;

/// What the program around the LISP engine gives it.
class LispHost {
public:
    virtual ~LispHost() = default;
    virtual doc::Document& document() = 0;
    virtual cmd::CommandProcessor& processor() = 0;
    /// A line for the transcript; an empty one is no line.
    virtual void print(const std::string& line) = 0;
    /// Folders that FINDFILE and LOAD look into besides the working one.
    virtual std::vector<std::string> searchFolders() { return {}; }
};

/// A function of the program that calls LISP functions: it stands on the machine's stack between their calls.
class Continuation {
public:
    virtual ~Continuation() = default;
    /// Goes on with the value of what it called (the first time with a quiet one). It gives its own value, or asks
    /// the machine to call something, to start another continuation or to wait, and is then stepped again.
    virtual Value step(Machine& machine, Value result) = 0;
    /// True for one that takes errors of what it called.
    virtual bool catches() const { return false; }
    /// The value that stands for the error.
    virtual Value caught(const std::string&) { return {}; }
};

/// What a waiting evaluation asks for.
class Question {
public:
    virtual ~Question() = default;
    /// Takes a fed line. True: `result` is the answer, and the evaluation goes on. False: it was refused, with a
    /// line, and the question stands.
    virtual bool accept(Machine& machine, const std::string& line, Value& result) = 0;
    virtual std::string prompt(const Machine&) const { return prompt_; }
    void setPrompt(std::string text) { prompt_ = std::move(text); }

private:
    std::string prompt_;
};

/// Flags and keywords that the next asking function obeys.
struct InitgetState {
    std::int64_t bits = 0;
    std::string keywords;
    static constexpr std::int64_t kNoEnter = 1;
    static constexpr std::int64_t kNoZero = 2;
    static constexpr std::int64_t kNoNegative = 4;
    static constexpr std::int64_t kAnyInput = 128;
};

/// Runs compiled code over a stack of its own, so that an evaluation can stop anywhere and go on later, and deep
/// recursion ends in an error. All functions of the table get the machine that calls them.
class Machine {
public:
    Machine(LispHost& host, SymbolTable& symbols);
    ~Machine();
    Machine(const Machine&) = delete;
    Machine& operator=(const Machine&) = delete;

    enum class State { Done, Waiting, Failed };
    struct Outcome {
        State state = State::Done;
        Value value;
        std::string error;
    };
    /// Runs a continuation from an empty stack.
    Outcome start(std::unique_ptr<Continuation> program);
    /// Answers the question that the evaluation waits for.
    Outcome feed(const std::string& line);
    /// Ends a waiting evaluation with an error: its *ERROR* function runs.
    Outcome cancel(const std::string& reason);
    /// Drops whatever is under way without a word.
    void reset();
    bool isWaiting() const { return question_ != nullptr && !running_; }
    bool isIdle() const { return frames_.empty() && !running_; }
    std::string prompt() const { return question_ ? question_->prompt(*this) : std::string(); }

    // For functions and continuations ----------------------------------------------------------------------
    /// The value of the function that returns now is that of this call. In a continuation: its next step's.
    Value call(Value function, std::vector<Value> arguments);
    Value start(Machine&, std::unique_ptr<Continuation> continuation);
    /// Stops until a line answers the question.
    Value wait(std::unique_ptr<Question> question);
    /// The scope of the code that called; null: the global one.
    Environment* scope() const;
    /// The variable's place as seen from there; a global one's symbol value.
    Value& variable(Symbol* symbol);

    LispHost& host() const { return host_; }
    doc::Document& document() const { return host_.document(); }
    engine::Drawing& drawing() const { return host_.document().drawing(); }
    SymbolTable& symbols() const { return symbols_; }
    InitgetState& initget() { return initget_; }
    /// Writes text to the transcript; a line is complete with its line end.
    void print(std::string_view text);
    /// Completes the line that is being written.
    void flush();
    bool hasPartialLine() const { return !partial_.empty(); }
    /// The start of the line being written, for a prompt; it is then no line.
    std::string takePartialLine() { return std::exchange(partial_, {}); }
    /// COMMAND has started or fed a command in this evaluation.
    void noteCommand() { usedCommand_ = true; }
    /// Counts work of long built-in loops against the step limit.
    void spend(std::uint64_t steps) {
        steps_ += steps;
        if (steps_ > stepLimit_) outOfSteps();
    }

    /// Where TBLNEXT stands, by table.
    std::unordered_map<std::string, std::size_t> tablePositions;
    /// What ENTDEL has deleted, by handle, with the list that it stood in.
    std::map<std::uint64_t, std::pair<std::shared_ptr<engine::Entity>, const engine::EntityList*>> deleted;
    /// What ENTMAKE has begun.
    std::unique_ptr<PendingEntities> pending;
    /// What LOAD has read, each path once.
    std::vector<std::string> loadedFiles;

    static constexpr std::size_t kMaxDepth = 200'000;
    static constexpr std::uint64_t kDefaultSteps = 4'000'000'000;
    void setStepLimit(std::uint64_t steps) { stepLimit_ = steps; }
    void setDepthLimit(std::size_t depth) { depthLimit_ = depth; }
    /// Ends a running evaluation soon, from a signal handler or another thread.
    void interrupt() { interrupted_.store(true, std::memory_order_relaxed); }

private:
    struct Frame {
        Code* code = nullptr;
        Environment* environment = nullptr;  ///< counted
        const Instruction* next = nullptr;
        std::uint32_t base = 0;
        std::unique_ptr<Continuation> native;
    };
    enum class Request : std::uint8_t { None, Call, Start, Wait };
    enum class After : std::uint8_t { Code, Value, Native, Wait };

    /// Goes on with a value, or with an error when there is a text.
    Outcome run(Value value, std::string message);
    /// Gives value_ to the frame on top, until the stack is empty (true) or the evaluation waits (false).
    bool deliver();
    After execute();
    /// Calls the function below `count` arguments on the stack.
    After invoke(std::uint32_t count, bool tail);
    After fulfil(Request request);
    void enter(FunctionObject* function, std::uint32_t count, bool tail);
    void pushNative(std::unique_ptr<Continuation> native);
    void leave();
    void unwindTo(std::size_t frames);
    /// Deals with an error; false: the evaluation has failed.
    bool recover(const std::string& message);
    Value errorHandler() const;
    Outcome finish(State state, std::string error = {});
    [[noreturn]] void outOfSteps() const;
    void checkInterrupt();

    LispHost& host_;
    SymbolTable& symbols_;
    std::vector<Value> stack_;
    std::vector<Frame> frames_;
    Value value_;
    Request request_ = Request::None;
    Value pendingFunction_;
    std::vector<Value> pendingArguments_;
    std::unique_ptr<Continuation> pendingNative_;
    std::unique_ptr<Question> question_;
    InitgetState initget_;
    std::string partial_;
    bool running_ = false;
    bool inHandler_ = false;
    bool usedCommand_ = false;
    std::uint64_t steps_ = 0;
    std::uint64_t stepLimit_ = kDefaultSteps;
    std::size_t depthLimit_ = kMaxDepth;
    std::atomic<bool> interrupted_{false};
};

}  // namespace kova::script::lisp
