#include "script/lisp/value.hpp"

#include <cmath>
#include <cstdlib>
#include <new>

#include "engine/model/name.hpp"
#include "script/lisp/cycles.hpp"

namespace kova::script::lisp {

namespace {

/// Free blocks of one size, taken in large pieces and never given back.
class Pool {
public:
    explicit Pool(std::size_t size) : size_(size) {}
    void* take() {
        if (free_ == nullptr) refill();
        Block* block = free_;
        free_ = block->next;
        return block;
    }
    void give(void* memory) {
        auto* block = static_cast<Block*>(memory);
        block->next = free_;
        free_ = block;
    }

private:
    struct Block {
        Block* next;
    };
    void refill() {
        constexpr std::size_t kBlocks = 512;
        auto* piece = static_cast<char*>(std::malloc(kBlocks * size_));
        if (piece == nullptr) throw std::bad_alloc();
        for (std::size_t i = kBlocks; i-- > 0;) give(piece + i * size_);
    }
    std::size_t size_;
    Block* free_ = nullptr;
};

Pool& consPool() {
    static Pool pool(sizeof(Cons));
    return pool;
}
constexpr std::uint32_t kPooledSlots = 8;
Pool& environmentPool(std::uint32_t slots) {
    static Pool pools[kPooledSlots + 1] = {
        Pool(sizeof(Environment)),      Pool(sizeof(Environment) + 16),  Pool(sizeof(Environment) + 32),
        Pool(sizeof(Environment) + 48), Pool(sizeof(Environment) + 64),  Pool(sizeof(Environment) + 80),
        Pool(sizeof(Environment) + 96), Pool(sizeof(Environment) + 112), Pool(sizeof(Environment) + 128),
    };
    return pools[slots];
}

std::size_t environmentBytes(std::uint32_t slots) { return sizeof(Environment) + slots * sizeof(Value); }

template <class T, class... Args>
T* make(std::size_t extra, Args&&... args) {
    Heap::charge(sizeof(T) + extra);
    return new T(std::forward<Args>(args)...);
}

}  // namespace

std::size_t Heap::bytes = 0;
std::size_t Heap::limit = Heap::kDefaultLimit;
void Heap::makeRoom(std::size_t size) {
    if (Cycles::mayHelp()) Cycles::collect();
    if (bytes + size > limit) throw LispError("Insufficient memory");
}

void Code::charge() {
    const std::size_t size = sizeof(Code) + variables.capacity() * sizeof(Symbol*) +
                             code.capacity() * sizeof(Instruction) + constants.capacity() * sizeof(Value);
    Heap::charge(size);
    charged = size;
}

Value Value::string(std::string text) {
    const std::size_t extra = text.size();
    return object(make<StringObject>(extra, std::move(text)));
}

Value Value::error(std::string message) {
    const std::size_t extra = message.size();
    return object(make<ErrorObject>(extra, std::move(message)));
}

Value Value::cons(Value head, Value tail) {
    Heap::charge(sizeof(Cons));
    return object(new (consPool().take()) Cons(std::move(head), std::move(tail)));
}

Value Value::list(std::initializer_list<Value> items) { return list(items.begin(), items.size()); }

Value Value::list(const Value* items, std::size_t count, Value tail) {
    while (count > 0) tail = cons(items[--count], std::move(tail));
    return tail;
}

namespace {
const Value kNil;
}

const Value& Value::car() const noexcept { return isCons() ? as<Cons>()->head : kNil; }
const Value& Value::cdr() const noexcept { return isCons() ? as<Cons>()->tail : kNil; }

/// With a kind that is known where it is called, only that kind's part of it remains.
[[gnu::always_inline]] inline void Value::disposeAs(Kind kind, Object* o) noexcept {
    switch (kind) {
        case Kind::Cons:
            Heap::release(sizeof(Cons));
            consPool().give(o);
            break;
        case Kind::String: {
            auto* s = static_cast<StringObject*>(o);
            Heap::release(sizeof(StringObject) + s->text.size());
            delete s;
            break;
        }
        case Kind::Error: {
            auto* e = static_cast<ErrorObject*>(o);
            Heap::release(sizeof(ErrorObject) + e->message.size());
            delete e;
            break;
        }
        case Kind::Function:
            Heap::release(sizeof(FunctionObject));
            delete static_cast<FunctionObject*>(o);
            break;
        case Kind::Selection: {
            auto* s = static_cast<SelectionObject*>(o);
            Heap::release(sizeof(SelectionObject) + s->handles.size() * 48);
            delete s;
            break;
        }
        case Kind::File:
            Heap::release(sizeof(FileObject));
            delete static_cast<FileObject*>(o);
            break;
        case Kind::Code: {
            auto* code = static_cast<Code*>(o);
            Heap::release(code->charged);
            delete code;
            break;
        }
        case Kind::Environment: {
            auto* e = static_cast<Environment*>(o);
            if (e->suspect_ != 0) Cycles::forget(e);
            const std::uint32_t slots = e->size_;
            Heap::release(environmentBytes(slots));
            if (slots <= kPooledSlots)
                environmentPool(slots).give(e);
            else
                std::free(e);
            break;
        }
        default:
            break;
    }
}

void Value::dispose(Object* o) noexcept { disposeAs(o->kind, o); }

void Value::destroy(Object* first) noexcept {
    // Parts that die with their owner wait here, so that the depth of a structure costs no stack.
    static std::vector<Object*> waiting;
    static bool working = false;
    waiting.push_back(first);
    if (working) return;
    working = true;
    const auto drop = [](Value& part) {
        if (part.counted() && --part.data_.object->refs == 0) waiting.push_back(part.data_.object);
        part.kind_ = Kind::Nil;
    };
    while (!waiting.empty()) {
        Object* o = waiting.back();
        waiting.pop_back();
        switch (o->kind) {
            case Kind::Cons:
                drop(static_cast<Cons*>(o)->head);
                drop(static_cast<Cons*>(o)->tail);
                disposeAs(Kind::Cons, o);
                break;
            case Kind::Function:
                drop(static_cast<FunctionObject*>(o)->code);
                drop(static_cast<FunctionObject*>(o)->environment);
                disposeAs(Kind::Function, o);
                break;
            case Kind::Code:
                for (Value& v : static_cast<Code*>(o)->constants) drop(v);
                disposeAs(Kind::Code, o);
                break;
            case Kind::Environment: {
                auto* e = static_cast<Environment*>(o);
                for (std::uint32_t i = 0; i < e->size_; ++i) drop(e->slots()[i]);
                if (--e->code_->refs == 0) waiting.push_back(e->code_);
                if (e->parent_ != nullptr && --e->parent_->refs == 0) waiting.push_back(e->parent_);
                disposeAs(Kind::Environment, o);
                break;
            }
            default:
                disposeAs(o->kind, o);
                break;
        }
    }
    working = false;
}

Environment* Environment::make(Code* code, Environment* parent) {
    const auto slots = static_cast<std::uint32_t>(code->variables.size());
    Heap::charge(environmentBytes(slots));
    void* memory = slots <= kPooledSlots ? environmentPool(slots).take() : std::malloc(environmentBytes(slots));
    if (memory == nullptr) throw std::bad_alloc();
    auto* made = new (memory) Environment;
    made->code_ = code;
    ++code->refs;
    made->parent_ = parent;
    if (parent != nullptr) ++parent->refs;
    made->size_ = slots;
    for (std::uint32_t i = 0; i < slots; ++i)
        new (made->slots() + i) Value(i < code->bound ? Value() : Value::unbound());
    return made;
}

Value* Environment::find(const Symbol* symbol) {
    for (Environment* e = this; e != nullptr; e = e->parent_) {
        for (std::uint32_t i = e->size_; i-- > 0;)
            if (e->code_->variables[i] == symbol && e->slots()[i].kind() != Kind::Unbound) return e->slots() + i;
    }
    return nullptr;
}

bool SelectionObject::add(std::uint64_t handle) {
    if (!members.insert(handle).second) return false;
    Heap::charge(48);
    handles.push_back(handle);
    return true;
}

bool SelectionObject::remove(std::uint64_t handle) {
    if (members.erase(handle) == 0) return false;
    // Programs take a set apart from its ends; there it is found at once.
    if (handles.back() == handle)
        handles.pop_back();
    else
        handles.erase(std::find(handles.begin(), handles.end(), handle));
    Heap::release(48);
    return true;
}

void FileObject::close() {
    if (file != nullptr) std::fclose(std::exchange(file, nullptr));
}

SymbolTable::SymbolTable() {
    t = intern("T");
    t->value = Value::symbol(t);
    t->constant = true;
    Symbol* nil = intern("NIL");
    nil->value = Value();
    nil->constant = true;
    quote = intern("QUOTE");
    lambda = intern("LAMBDA");
    error = intern("*ERROR*");
    pause = intern("PAUSE");
    const std::pair<const char*, Form> forms[] = {
        {"QUOTE", Form::Quote},       {"SETQ", Form::Setq},     {"DEFUN", Form::Defun}, {"DEFUN-Q", Form::Defun},
        {"LAMBDA", Form::Lambda},     {"IF", Form::If},         {"COND", Form::Cond},   {"WHILE", Form::While},
        {"FUNCTION", Form::Function}, {"REPEAT", Form::Repeat}, {"AND", Form::And},     {"FOREACH", Form::Foreach},
        {"PROGN", Form::Progn},       {"OR", Form::Or}};
    for (const auto& [name, form] : forms) intern(name)->form = form;
}

SymbolTable::~SymbolTable() {
    // Values may hold code that names other symbols: let go of all values while every symbol stands.
    for (auto& [name, symbol] : symbols_) symbol->value = Value();
    Cycles::collect();
    for (auto& [name, symbol] : symbols_) Heap::release(sizeof(Symbol) + name.size());
}

Symbol* SymbolTable::intern(std::string_view name) {
    std::string upper = engine::upperCase(name);
    if (const auto it = symbols_.find(upper); it != symbols_.end()) return it->second.get();
    Heap::charge(sizeof(Symbol) + upper.size());
    auto made = std::make_unique<Symbol>();
    made->name = std::move(upper);
    Symbol* symbol = made.get();
    symbols_.emplace(symbol->name, std::move(made));
    return symbol;
}

bool eqValues(const Value& a, const Value& b) {
    if (a.kind() != b.kind()) return false;
    switch (a.kind()) {
        case Kind::Nil:
        case Kind::Quiet:
        case Kind::Unbound:
            return true;
        case Kind::Integer:
            return a.asInteger() == b.asInteger();
        case Kind::Real:
            return a.asReal() == b.asReal();
        case Kind::String:
            return a.object() == b.object() || a.text() == b.text();
        case Kind::Symbol:
            return a.asSymbol() == b.asSymbol();
        case Kind::Builtin:
            return a.asBuiltin() == b.asBuiltin();
        case Kind::Entity:
            return a.handle() == b.handle();
        default:
            return a.object() == b.object();
    }
}

bool equalValues(const Value& a, const Value& b, double fuzz) {
    const auto near = [fuzz](double x, double y) { return x == y || std::abs(x - y) <= fuzz; };
    if (!a.isCons() || !b.isCons()) return a.isNumber() && b.isNumber() ? near(a.number(), b.number()) : eqValues(a, b);
    // Structures that share their parts can be far larger than their memory.
    constexpr std::size_t kMaxPairs = 100'000'000;
    std::size_t pairs = 0;
    std::vector<std::pair<const Value*, const Value*>> waiting{{&a, &b}};
    while (!waiting.empty()) {
        auto [x, y] = waiting.back();
        waiting.pop_back();
        while (x->isCons() && y->isCons()) {
            if (x->object() == y->object()) break;
            if (++pairs > kMaxPairs) throw LispError("EQUAL: the lists are too large");
            const Value& hx = x->car();
            const Value& hy = y->car();
            if (hx.isCons() && hy.isCons()) {
                waiting.emplace_back(&hx, &hy);
            } else if (hx.isNumber() && hy.isNumber()) {
                if (!near(hx.number(), hy.number())) return false;
            } else if (!eqValues(hx, hy)) {
                return false;
            }
            x = &x->cdr();
            y = &y->cdr();
        }
        if (x->isCons() && y->isCons()) continue;
        if (x->isNumber() && y->isNumber()) {
            if (!near(x->number(), y->number())) return false;
        } else if (!eqValues(*x, *y)) {
            return false;
        }
    }
    return true;
}

}  // namespace kova::script::lisp
