#include "script/lisp/machine.hpp"

#include "script/lisp/function_table.hpp"
#include "script/lisp/compiler.hpp"
#include "script/lisp/cycles.hpp"
#include "script/lisp/entities/entity_making.hpp"
#include "script/lisp/printer.hpp"

namespace kova::script::lisp {

namespace {

constexpr std::uint64_t kInterruptInterval = 1U << 16;

[[noreturn]] void arityError(std::string_view name, bool few, std::int64_t expected, std::int64_t got) {
    throw LispError(std::string(name) + (few ? ": too few arguments (expected " : ": too many arguments (expected ") +
                    std::to_string(expected) + ", got " + std::to_string(got) + ")");
}

/// Calls *ERROR* with the message of an error that ended an evaluation.
class HandlerCall final : public Continuation {
public:
    HandlerCall(Value handler, std::string message) : handler_(std::move(handler)), message_(std::move(message)) {}
    Value step(Machine& machine, Value) override {
        if (std::exchange(called_, true)) return Value::quiet();
        return machine.call(handler_, {Value::string(message_)});
    }

private:
    Value handler_;
    std::string message_;
    bool called_ = false;
};

/// What stands at the head of a list and is no function may be a (LAMBDA ...) list.
Value functionHead(Machine& machine, const Value& v) {
    if (v.isCons() && v.car().isSymbol() && v.car().asSymbol() == machine.symbols().lambda)
        return functionArgument(machine, v);
    throw LispError("Cannot apply non-function");
}

void releaseEnvironment(Environment* e) {
    --e->refs;                      // the frame's own count ...
    Value last = Value::object(e);  // ... goes with this one
}

/// Functions defined among a function's own locals hold its scope, and the scope holds them: when nobody does besides
/// `others`, they go. True when they did, or there were none and nobody else holds the scope.
bool dropOwnFunctions(Environment* e, std::uint32_t others) {
    if (e->refs <= others) return true;
    std::uint32_t own = 0;
    const auto isOwn = [e](const Value& v) {
        return v.kind() == Kind::Function && v.object()->refs == 1 && v.as<FunctionObject>()->environment.isTrue() &&
               v.as<FunctionObject>()->environment.object() == e;
    };
    for (std::uint32_t i = 0; i < e->size(); ++i) own += isOwn(e->slots()[i]) ? 1 : 0;
    if (own == 0 || e->refs - others != own) return false;
    for (std::uint32_t i = 0; i < e->size(); ++i)
        if (isOwn(e->slots()[i])) e->slots()[i] = Value();
    return true;
}

/// Lets go of a frame's scope that others hold, or that holds another one.
[[gnu::noinline]] void leaveHeld(Environment* e) {
    dropOwnFunctions(e, 1);
    // A tail call has left the scope around this one with nobody but its own functions to hold it.
    Value outer;
    if (e->refs == 1 && e->parent() != nullptr) outer = Value::object(e->parent());
    const bool outlives = e->refs > 1;
    if (outlives) Cycles::suspect(e);
    releaseEnvironment(e);
    while (outer.isTrue()) {
        auto* scope = outer.as<Environment>();
        if (!dropOwnFunctions(scope, 1)) break;
        outer = scope->refs == 1 && scope->parent() != nullptr ? Value::object(scope->parent()) : Value();
    }
    if (outlives) Cycles::collectWhenDue();
}

}  // namespace

Machine::Machine(LispHost& host, SymbolTable& symbols) : host_(host), symbols_(symbols) {}
Machine::~Machine() { reset(); }

void Machine::outOfSteps() const { throw LispError("The evaluation takes too long"); }

void Machine::checkInterrupt() {
    if (interrupted_.exchange(false, std::memory_order_relaxed)) throw LispError("Function cancelled");
}

Value Machine::call(Value function, std::vector<Value> arguments) {
    request_ = Request::Call;
    pendingFunction_ = std::move(function);
    pendingArguments_ = std::move(arguments);
    return {};
}

Value Machine::start(Machine&, std::unique_ptr<Continuation> continuation) {
    request_ = Request::Start;
    pendingNative_ = std::move(continuation);
    return {};
}

Value Machine::wait(std::unique_ptr<Question> question) {
    request_ = Request::Wait;
    question_ = std::move(question);
    return {};
}

Environment* Machine::scope() const {
    for (std::size_t i = frames_.size(); i-- > 0;)
        if (frames_[i].environment != nullptr) return frames_[i].environment;
    return nullptr;
}

Value& Machine::variable(Symbol* symbol) {
    if (Environment* e = scope()) {
        if (Value* place = e->find(symbol)) return *place;
    }
    return symbol->value;
}

void Machine::print(std::string_view text) {
    for (std::size_t end = 0; (end = text.find('\n')) != std::string_view::npos; text.remove_prefix(end + 1)) {
        partial_ += text.substr(0, end);
        flush();
    }
    if (partial_.size() + text.size() > (std::size_t{1} << 24)) flush();
    partial_ += text;
}

void Machine::flush() {
    if (partial_.empty()) return;
    std::erase(partial_, '\r');
    host_.print(std::exchange(partial_, {}));
}

void Machine::reset() {
    unwindTo(0);
    stack_.clear();
    question_.reset();
    request_ = Request::None;
    pendingArguments_.clear();
    pendingFunction_ = {};
    pendingNative_.reset();
    value_ = {};
    inHandler_ = false;
}

void Machine::leave() {
    Frame& frame = frames_.back();
    Environment* const e = frame.environment;
    stack_.resize(frame.base);
    frames_.pop_back();
    if (e == nullptr) return;
    // Nearly always nobody else holds it, and more hold the one around it than its own functions can be.
    if (e->refs == 1 && (e->parent() == nullptr || e->parent()->refs > e->parent()->size() + 1)) [[likely]]
        releaseEnvironment(e);
    else
        leaveHeld(e);
}

void Machine::unwindTo(std::size_t count) {
    while (frames_.size() > count) leave();
}

void Machine::pushNative(std::unique_ptr<Continuation> native) {
    if (frames_.size() >= depthLimit_) throw LispError("Recursion is too deep");
    Frame frame;
    frame.base = static_cast<std::uint32_t>(stack_.size());
    frame.native = std::move(native);
    frames_.push_back(std::move(frame));
}

void Machine::enter(FunctionObject* function, std::uint32_t count, bool tail) {
    Code* code = function->code.as<Code>();
    if (count != code->parameters) arityError(code->name, count < code->parameters, code->parameters, count);
    if (!tail && frames_.size() >= depthLimit_) throw LispError("Recursion is too deep");
    Environment* parent = function->environment.isNil() ? nullptr : function->environment.as<Environment>();
    Environment* e = Environment::make(code, parent);
    e->refs = 1;
    Value* arguments = stack_.data() + stack_.size() - count;
    for (std::uint32_t i = 0; i < count; ++i) e->slots()[i] = std::move(arguments[i]);
    if (tail)
        leave();
    else
        stack_.resize(stack_.size() - count - 1);
    Frame frame;
    frame.code = code;  // held by the environment
    frame.environment = e;
    frame.next = code->code.data();
    frame.base = static_cast<std::uint32_t>(stack_.size());
    frames_.push_back(std::move(frame));
}

Machine::After Machine::fulfil(Request request) {
    switch (request) {
        case Request::None:
            return After::Value;
        case Request::Start:
            pushNative(std::move(pendingNative_));
            value_ = Value::quiet();
            return After::Native;
        case Request::Wait:
            return After::Wait;
        case Request::Call:
            break;
    }
    const auto count = static_cast<std::uint32_t>(pendingArguments_.size());
    stack_.push_back(std::move(pendingFunction_));
    for (Value& v : pendingArguments_) stack_.push_back(std::move(v));
    pendingArguments_.clear();
    return invoke(count, false);
}

Machine::After Machine::invoke(std::uint32_t count, bool tail) {
    if ((++steps_ & (kInterruptInterval - 1)) == 0) checkInterrupt();
    if (steps_ > stepLimit_) outOfSteps();
    const Value& function = stack_[stack_.size() - count - 1];
    if (function.kind() == Kind::Function) {
        enter(function.as<FunctionObject>(), count, tail);
        return After::Code;
    }
    if (function.kind() != Kind::Builtin) throw LispError("Cannot apply non-function");
    const BuiltinDef& def = *function.asBuiltin();
    const int given = static_cast<int>(count);
    if (given < def.minimum) arityError(def.name, true, def.minimum, given);
    if (def.maximum >= 0 && given > def.maximum) arityError(def.name, false, def.maximum, given);
    value_ = def.call(*this, stack_.data() + stack_.size() - count, given);
    stack_.resize(stack_.size() - count - 1);
    const Request request = std::exchange(request_, Request::None);
    return request == Request::None ? After::Value : fulfil(request);
}

Machine::After Machine::execute() {
    const auto environmentAt = [](Environment* e, std::uint16_t depth) {
        for (; depth > 0; --depth) e = e->parent();
        return e;
    };
    for (;;) {
        Frame& frame = frames_.back();
        const Instruction* next = frame.next;
        const Value* constants = frame.code->constants.data();
        Environment* const environment = frame.environment;
        const Instruction* const code = frame.code->code.data();
        bool same = true;
        while (same) {
            const Instruction in = *next++;
            switch (static_cast<Op>(in.op)) {
                case Op::Constant:
                    stack_.push_back(constants[in.index]);
                    break;
                case Op::Nil:
                    stack_.emplace_back();
                    break;
                case Op::Local:
                    stack_.push_back(environment->slots()[in.index]);
                    break;
                case Op::Outer: {
                    const Value& v = environmentAt(environment, in.depth)->slots()[in.index];
                    if (v.kind() == Kind::Unbound)
                        stack_.emplace_back();
                    else
                        stack_.push_back(v);
                    break;
                }
                case Op::Global: {
                    const Value& v = constants[in.index].asSymbol()->value;
                    if (v.kind() == Kind::Unbound)
                        stack_.emplace_back();
                    else
                        stack_.push_back(v);
                    break;
                }
                case Op::SetLocal:
                    environment->slots()[in.index] = stack_.back();
                    break;
                case Op::SetOuter:
                    environmentAt(environment, in.depth)->slots()[in.index] = stack_.back();
                    break;
                case Op::SetGlobal: {
                    Symbol* symbol = constants[in.index].asSymbol();
                    if (symbol->constant) throw LispError("SETQ: cannot change " + symbol->name);
                    symbol->value = stack_.back();
                    break;
                }
                case Op::Pop:
                    stack_.pop_back();
                    break;
                case Op::Jump:
                    if (next > code + in.index) {
                        if ((++steps_ & (kInterruptInterval - 1)) == 0) checkInterrupt();
                        if (steps_ > stepLimit_) outOfSteps();
                    }
                    next = code + in.index;
                    break;
                case Op::JumpNil:
                    if (stack_.back().isNil()) next = code + in.index;
                    stack_.pop_back();
                    break;
                case Op::JumpNilKeep:
                    if (stack_.back().isNil())
                        next = code + in.index;
                    else
                        stack_.pop_back();
                    break;
                case Op::JumpTrueKeep:
                    if (stack_.back().isTrue())
                        next = code + in.index;
                    else
                        stack_.pop_back();
                    break;
                case Op::ToTrue:
                    if (stack_.back().isTrue()) stack_.back() = Value::symbol(symbols_.t);
                    break;
                case Op::Function:
                    if (!stack_.back().isCallable()) stack_.back() = functionHead(*this, stack_.back());
                    break;
                case Op::GlobalFunction: {
                    const Symbol* symbol = constants[in.index].asSymbol();
                    const Value& v = symbol->value;
                    if (v.isCallable()) {
                        stack_.push_back(v);
                    } else if (v.kind() == Kind::Unbound || v.isNil()) {
                        throw LispError("Not a function: " + symbol->name);
                    } else {
                        stack_.push_back(functionHead(*this, v));
                    }
                    break;
                }
                case Op::Closure: {
                    Heap::charge(sizeof(FunctionObject));
                    stack_.push_back(
                        Value::object(new FunctionObject(constants[in.index], Value::object(environment))));
                    break;
                }
                case Op::RepeatStart: {
                    const Value& count = stack_.back();
                    const std::int64_t n = integerArgument("REPEAT", count);
                    stack_.back() = Value();
                    stack_.push_back(Value::integer(n));
                    break;
                }
                case Op::RepeatNext: {
                    const std::int64_t left = stack_.back().asInteger();
                    if (left > 0) {
                        stack_.back() = Value::integer(left - 1);
                    } else {
                        stack_.pop_back();
                        next = code + in.index;
                    }
                    break;
                }
                case Op::ForeachStart: {
                    Value list = std::move(stack_.back());
                    if (!list.isList()) badArgument("FOREACH", "a list", list);
                    stack_.back() = Value();
                    stack_.push_back(std::move(list));
                    break;
                }
                case Op::ForeachNext: {
                    Value& list = stack_.back();
                    if (list.isCons()) {
                        environment->slots()[in.depth] = list.car();
                        list = Value(list.cdr());
                    } else {
                        stack_.pop_back();
                        next = code + in.index;
                    }
                    break;
                }
                case Op::LoopEnd: {
                    Value result = std::move(stack_.back());
                    stack_.pop_back();
                    stack_[stack_.size() - 2] = std::move(result);
                    break;
                }
                case Op::Swap1: {
                    Value result = std::move(stack_.back());
                    stack_.pop_back();
                    stack_.back() = std::move(result);
                    break;
                }
                case Op::SetUnbound:
                    environment->slots()[in.index] = Value::unbound();
                    break;
                case Op::Raise:
                    throw LispError(constants[in.index].text());
                case Op::Call:
                case Op::TailCall: {
                    frame.next = next;
                    const bool tail = static_cast<Op>(in.op) == Op::TailCall;
                    switch (invoke(static_cast<std::uint32_t>(in.index), tail)) {
                        case After::Value:
                            stack_.push_back(std::move(value_));
                            break;
                        case After::Code:
                            same = false;
                            break;
                        case After::Native:
                            return After::Native;
                        case After::Wait:
                            return After::Wait;
                    }
                    break;
                }
                case Op::Return: {
                    value_ = std::move(stack_.back());
                    leave();
                    if (frames_.empty() || frames_.back().native) return After::Value;
                    stack_.push_back(std::move(value_));
                    same = false;
                    break;
                }
            }
        }
    }
}

bool Machine::deliver() {
    for (;;) {
        if (frames_.empty()) return true;
        After after;
        if (frames_.back().native) {
            Continuation* native = frames_.back().native.get();
            if ((++steps_ & (kInterruptInterval - 1)) == 0) checkInterrupt();
            if (steps_ > stepLimit_) outOfSteps();
            Value result = native->step(*this, std::move(value_));
            const Request request = std::exchange(request_, Request::None);
            if (request == Request::None) {
                leave();
                value_ = std::move(result);
                continue;
            }
            after = fulfil(request);
        } else {
            stack_.push_back(std::move(value_));
            after = execute();
        }
        while (after == After::Code) after = execute();
        if (after == After::Wait) return false;
    }
}

Machine::Outcome Machine::run(Value value, std::string message) {
    running_ = true;
    value_ = std::move(value);
    for (;;) {
        try {
            if (message.empty()) {
                const bool done = deliver();
                running_ = false;
                if (!done) return {State::Waiting, {}, {}};
                return finish(State::Done);
            }
        } catch (const std::bad_alloc&) {
            message = "Insufficient memory";
        } catch (const std::exception& error) {
            message = error.what();
        }
        if (message.empty()) message = "unknown error";
        const bool handled = recover(message);
        if (!handled) {
            running_ = false;
            value_ = {};
            return finish(State::Failed, std::move(message));
        }
        message.clear();
    }
}

Value Machine::errorHandler() const {
    // Who called sees its own *ERROR* first: that of a function's locals, then the global one.
    for (std::size_t i = frames_.size(); i-- > 0;) {
        if (frames_[i].environment == nullptr) continue;
        Value* place = frames_[i].environment->find(symbols_.error);
        if (place != nullptr && place->isCallable()) return *place;
    }
    return symbols_.error->value;
}

bool Machine::recover(const std::string& message) {
    request_ = Request::None;
    question_.reset();
    pendingNative_.reset();
    pendingArguments_.clear();
    for (std::size_t i = frames_.size(); i-- > 0;) {
        if (!frames_[i].native || !frames_[i].native->catches()) continue;
        value_ = frames_[i].native->caught(message);
        unwindTo(i);
        return true;
    }
    const Value handler = inHandler_ ? Value() : errorHandler();
    unwindTo(0);
    stack_.clear();
    if (inHandler_ || handler.kind() != Kind::Function) return false;
    // The handler speaks for the error; its value is not shown.
    inHandler_ = true;
    steps_ = 0;
    pushNative(std::make_unique<HandlerCall>(handler, message));
    value_ = Value::quiet();
    return true;
}

Machine::Outcome Machine::finish(State state, std::string error) {
    inHandler_ = false;
    unwindTo(0);
    stack_.clear();
    // Room that a deep recursion took is not kept.
    if (stack_.capacity() > (1U << 16)) std::vector<Value>().swap(stack_);
    if (frames_.capacity() > (1U << 14)) std::vector<Frame>().swap(frames_);
    if (state == State::Failed && usedCommand_ && host_.processor().isActive()) host_.processor().cancel();
    flush();
    return {state, std::move(value_), std::move(error)};
}

Machine::Outcome Machine::start(std::unique_ptr<Continuation> program) {
    if (!isIdle()) return {State::Failed, {}, "LISP is at work already"};
    steps_ = 0;
    usedCommand_ = false;
    interrupted_.store(false, std::memory_order_relaxed);
    pushNative(std::move(program));
    return run(Value::quiet(), {});
}

Machine::Outcome Machine::feed(const std::string& line) {
    if (!isWaiting()) return {};
    steps_ = 0;
    // The question stays alive while it takes the line, whatever that sets off.
    std::unique_ptr<Question> question = std::move(question_);
    running_ = true;
    Value result;
    std::string error;
    bool accepted = false;
    try {
        accepted = question->accept(*this, line, result);
    } catch (const std::exception& failure) {
        error = failure.what();
    }
    running_ = false;
    if (!accepted && error.empty()) {
        flush();
        question_ = std::move(question);
        return {State::Waiting, {}, {}};
    }
    return run(std::move(result), error);
}

Machine::Outcome Machine::cancel(const std::string& reason) {
    if (!isWaiting()) return {};
    steps_ = 0;
    return run({}, reason);
}

}  // namespace kova::script::lisp
