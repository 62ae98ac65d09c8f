#pragma once

#include <cstdint>
#include <cstdio>
#include <memory>
#include <stdexcept>
#include <string>
#include <string_view>
#include <unordered_map>
#include <unordered_set>
#include <utility>
#include <vector>

#include "math/vector2.hpp"

namespace kova::script::lisp {

/// What ends an evaluation: its text follows "; error: ".
class LispError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

struct BuiltinDef;
struct Cons;
struct Symbol;
class Environment;

/// Kinds of values. Those from String on are counted objects, the others stand in the value itself.
enum class Kind : std::uint8_t {
    Nil,
    Integer,
    Real,
    Symbol,
    Builtin,
    Entity,
    Quiet,
    Unbound,
    String,
    Cons,
    Function,
    Selection,
    File,
    Error,
    Code,
    Environment
};

/// Head of every counted object.
struct Object {
    explicit Object(Kind k) : kind(k) {}
    std::uint32_t refs = 0;
    Kind kind;
    std::uint8_t mark = 0;  ///< during a collection of rings only
};

/// A LISP value in 16 bytes. Lists are never changed once they are made, so values are shared freely. Objects are
/// counted; the last release of a long list works in a loop. Rings of scopes and functions are left to Cycles.
class Value {
public:
    Value() noexcept : kind_(Kind::Nil) { data_.integer = 0; }
    Value(const Value& o) noexcept : data_(o.data_), kind_(o.kind_) {
        if (counted()) ++data_.object->refs;
    }
    Value(Value&& o) noexcept : data_(o.data_), kind_(std::exchange(o.kind_, Kind::Nil)) {}
    Value& operator=(const Value& o) noexcept {
        Value copy(o);
        swap(copy);
        return *this;
    }
    Value& operator=(Value&& o) noexcept {
        if (this != &o) {
            Value old(std::move(*this));
            data_ = o.data_;
            kind_ = std::exchange(o.kind_, Kind::Nil);
        }
        return *this;
    }
    ~Value() {
        if (counted() && --data_.object->refs == 0) destroy(data_.object);
    }
    void swap(Value& o) noexcept {
        std::swap(data_, o.data_);
        std::swap(kind_, o.kind_);
    }

    static Value integer(std::int64_t v) noexcept { return {Kind::Integer, Data{.integer = v}}; }
    static Value real(double v) noexcept { return {Kind::Real, Data{.real = v}}; }
    static Value symbol(Symbol* s) noexcept { return {Kind::Symbol, Data{.symbol = s}}; }
    static Value builtin(const BuiltinDef* b) noexcept { return {Kind::Builtin, Data{.builtin = b}}; }
    /// An entity name: the handle of an entity, or of an attribute or vertex of one.
    static Value entity(std::uint64_t handle) noexcept { return {Kind::Entity, Data{.handle = handle}}; }
    /// What PRINC without arguments gives: it prints as nothing.
    static Value quiet() noexcept { return {Kind::Quiet, Data{.integer = 0}}; }
    /// Marks a variable that is bound to nothing; never seen by programs.
    static Value unbound() noexcept { return {Kind::Unbound, Data{.integer = 0}}; }
    static Value object(Object* o) noexcept {
        ++o->refs;
        return {o->kind, Data{.object = o}};
    }
    static Value string(std::string text);
    static Value error(std::string message);
    static Value cons(Value head, Value tail);
    static Value list(std::initializer_list<Value> items);
    static Value list(const Value* items, std::size_t count, Value tail = {});
    static Value list(const std::vector<Value>& items) { return list(items.data(), items.size()); }

    Kind kind() const noexcept { return kind_; }
    bool isNil() const noexcept { return kind_ == Kind::Nil; }
    bool isTrue() const noexcept { return kind_ != Kind::Nil; }
    bool isInteger() const noexcept { return kind_ == Kind::Integer; }
    bool isReal() const noexcept { return kind_ == Kind::Real; }
    bool isNumber() const noexcept { return kind_ == Kind::Integer || kind_ == Kind::Real; }
    bool isSymbol() const noexcept { return kind_ == Kind::Symbol; }
    bool isString() const noexcept { return kind_ == Kind::String; }
    bool isCons() const noexcept { return kind_ == Kind::Cons; }
    bool isList() const noexcept { return kind_ == Kind::Cons || kind_ == Kind::Nil; }
    bool isEntity() const noexcept { return kind_ == Kind::Entity; }
    bool isCallable() const noexcept { return kind_ == Kind::Builtin || kind_ == Kind::Function; }

    std::int64_t asInteger() const noexcept { return data_.integer; }
    double asReal() const noexcept { return data_.real; }
    /// Of an integer or a real.
    double number() const noexcept { return kind_ == Kind::Integer ? static_cast<double>(data_.integer) : data_.real; }
    Symbol* asSymbol() const noexcept { return data_.symbol; }
    const BuiltinDef* asBuiltin() const noexcept { return data_.builtin; }
    std::uint64_t handle() const noexcept { return data_.handle; }
    Object* object() const noexcept { return data_.object; }
    const std::string& text() const noexcept;
    /// Parts of a pair; nil for everything else.
    const Value& car() const noexcept;
    const Value& cdr() const noexcept;
    template <class T>
    T* as() const noexcept {
        return static_cast<T*>(data_.object);
    }

private:
    union Data {
        std::int64_t integer;
        double real;
        Symbol* symbol;
        const BuiltinDef* builtin;
        std::uint64_t handle;
        Object* object;
    };
    Value(Kind kind, Data data) noexcept : data_(data), kind_(kind) {}
    friend class Cycles;
    bool counted() const noexcept { return kind_ >= Kind::String; }
    static void destroy(Object* object) noexcept;
    /// Gives back the memory of an object that has let go of its parts.
    static void dispose(Object* object) noexcept;
    static void disposeAs(Kind kind, Object* object) noexcept;

    Data data_;
    Kind kind_;
};
static_assert(sizeof(Value) == 16);

struct Cons final : Object {
    Cons(Value h, Value t) : Object(Kind::Cons), head(std::move(h)), tail(std::move(t)) {}
    Value head;
    Value tail;
};
struct StringObject final : Object {
    explicit StringObject(std::string t) : Object(Kind::String), text(std::move(t)) {}
    std::string text;
};
struct ErrorObject final : Object {
    explicit ErrorObject(std::string t) : Object(Kind::Error), message(std::move(t)) {}
    std::string message;
};
/// A selection set: handles in the order they were added. Erased entities stay in it, as in a user's program.
struct SelectionObject final : Object {
    SelectionObject() : Object(Kind::Selection) {}
    bool add(std::uint64_t handle);
    bool remove(std::uint64_t handle);
    std::vector<std::uint64_t> handles;
    std::unordered_set<std::uint64_t> members;
    std::vector<std::vector<math::Vector2>> crossings;  ///< windows that selected them, for STRETCH
};
/// An open text file; closed with the last value that names it.
struct FileObject final : Object {
    FileObject(std::FILE* f, std::string p) : Object(Kind::File), file(f), path(std::move(p)) {}
    ~FileObject() { close(); }
    void close();
    std::FILE* file;
    std::string path;
};

/// What the compiler treats a list by, when its head is this symbol.
enum class Form : std::uint8_t {
    None,
    Quote,
    Setq,
    Defun,
    Lambda,
    Function,
    If,
    Cond,
    While,
    Repeat,
    Foreach,
    Progn,
    And,
    Or
};

/// A symbol, one for each name in an engine; it lives as long as the engine.
struct Symbol {
    std::string name;  ///< upper case
    Value value = Value::unbound();
    Form form = Form::None;
    bool constant = false;  ///< T, NIL, PI's kin: SETQ refuses them
};

/// One step of compiled code.
struct Instruction {
    std::uint8_t op;
    std::uint16_t depth = 0;
    std::int32_t index = 0;
};

/// Compiled code of a function or of an expression. Its variables are parameters, locals and loop variables.
struct Code final : Object {
    Code() : Object(Kind::Code) {}
    std::string name = "LAMBDA";
    std::uint32_t parameters = 0;
    std::uint32_t bound = 0;  ///< parameters and locals; loop variables follow
    std::vector<Symbol*> variables;
    std::vector<Instruction> code;
    std::vector<Value> constants;
    /// Notes the memory it takes, once it is complete.
    void charge();
    std::size_t charged = 0;
};

/// A scope: values of one code's variables, and the scope around it.
class Environment final : public Object {
public:
    static Environment* make(Code* code, Environment* parent);
    Code* code() const { return code_; }
    Environment* parent() const { return parent_; }
    std::uint32_t size() const { return size_; }
    Value* slots() { return reinterpret_cast<Value*>(this + 1); }
    /// The innermost variable of that name that is bound; null: none.
    Value* find(const Symbol* symbol);

private:
    friend class Value;
    friend class Cycles;
    Environment() : Object(Kind::Environment) {}
    Code* code_ = nullptr;
    Environment* parent_ = nullptr;
    std::uint32_t size_ = 0;
    std::uint32_t suspect_ = 0;  ///< its place among those that Cycles looks at, from 1; 0: it is none
};

/// A user function: code and the scope that it was made in.
struct FunctionObject final : Object {
    FunctionObject(Value c, Value e) : Object(Kind::Function), code(std::move(c)), environment(std::move(e)) {}
    Value code;
    Value environment;  ///< nil: the global one
};

/// Memory that LISP objects of the process take, and its limit; LispError beyond it.
struct Heap {
    static std::size_t bytes;
    static std::size_t limit;
    static constexpr std::size_t kDefaultLimit = std::size_t{1} << 30;
    /// Notes bytes before they are taken.
    static void charge(std::size_t size) {
        if (bytes + size > limit) [[unlikely]]
            makeRoom(size);
        bytes += size;
    }
    static void release(std::size_t size) { bytes -= size; }
    /// Collects rings; throws when that is not enough.
    [[gnu::cold]] static void makeRoom(std::size_t size);
};

/// The symbols of an engine by name.
class SymbolTable {
public:
    SymbolTable();
    ~SymbolTable();
    SymbolTable(const SymbolTable&) = delete;
    SymbolTable& operator=(const SymbolTable&) = delete;
    /// The symbol of that name, which is put in upper case.
    Symbol* intern(std::string_view name);
    /// All symbols, for lists of what is defined.
    const std::unordered_map<std::string_view, std::unique_ptr<Symbol>>& all() const { return symbols_; }
    Symbol* t = nullptr;
    Symbol* quote = nullptr;
    Symbol* lambda = nullptr;
    Symbol* error = nullptr;  ///< *ERROR*
    Symbol* pause = nullptr;

private:
    std::unordered_map<std::string_view, std::unique_ptr<Symbol>> symbols_;
};

/// Equal as EQ says: the same object, or equal atoms.
bool eqValues(const Value& a, const Value& b);
/// Equal in structure; reals (and integers with reals) within `fuzz`.
bool equalValues(const Value& a, const Value& b, double fuzz = 0.0);

inline const std::string& Value::text() const noexcept { return static_cast<StringObject*>(data_.object)->text; }

/// Walks over a proper list: for (ListView v(list); v; ++v) *v.
class ListView {
public:
    explicit ListView(const Value& list) : at_(&list) {}
    explicit operator bool() const { return at_->isCons(); }
    const Value& operator*() const { return at_->car(); }
    const Value* operator->() const { return &at_->car(); }
    ListView& operator++() {
        at_ = &at_->cdr();
        return *this;
    }
    /// What is left, from the present item on.
    const Value& rest() const { return *at_; }

private:
    const Value* at_;
};

/// Collects values into a list.
class ListBuilder {
public:
    void add(Value v) { items_.push_back(std::move(v)); }
    std::size_t size() const { return items_.size(); }
    Value finish() const { return Value::list(items_); }

private:
    std::vector<Value> items_;
};

}  // namespace kova::script::lisp
