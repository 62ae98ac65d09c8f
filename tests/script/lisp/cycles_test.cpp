// Random webs of values: a collection leaves exactly what can be reached from those that are held.

#include <gtest/gtest.h>

#include <random>
#include <unordered_set>

#include "script/lisp/cycles.hpp"

namespace kova::script::lisp {
namespace {

constexpr std::uint32_t kSlots = 4;

class Web {
public:
    explicit Web(std::uint32_t seed) : random_(seed), code_(Value::object(new Code)) {
        code_.as<Code>()->variables.resize(kSlots);
        code_.as<Code>()->bound = kSlots;
        const std::size_t count = 5 + below(200);
        for (std::size_t i = 0; i < count; ++i) all_.push_back(made());
        // Only scopes change once they are made: that closes rings.
        for (std::size_t i = 0; i < count; ++i)
            if (const Value v = any(); v.kind() == Kind::Environment) v.as<Environment>()->slots()[below(kSlots)] = any();
        for (std::size_t i = 0; i < count / 10; ++i) held.push_back(any());
        all_.clear();
    }
    std::vector<Value> held;

private:
    std::size_t below(std::size_t n) { return random_() % n; }
    Value any() { return all_.empty() ? Value() : all_[below(all_.size())]; }
    Value scopeOrNil() {
        Value v = any();
        return v.kind() == Kind::Environment ? v : Value();
    }
    Value made() {
        switch (below(4)) {
            case 0:
                return Value::cons(any(), any());
            case 1: {
                const Value outer = scopeOrNil();
                Environment* scope =
                    Environment::make(code_.as<Code>(), outer.isNil() ? nullptr : outer.as<Environment>());
                const Value v = Value::object(scope);
                for (std::uint32_t i = 0; i < kSlots; ++i)
                    if (below(2) == 0) scope->slots()[i] = any();
                Cycles::suspect(scope);
                return v;
            }
            case 2: {
                Value code = code_;
                if (below(3) == 0) {
                    code = Value::object(new Code);
                    code.as<Code>()->constants.push_back(any());
                }
                Heap::charge(sizeof(FunctionObject));
                return Value::object(new FunctionObject(code, scopeOrNil()));
            }
            default:
                return Value::string("abc");
        }
    }

    std::mt19937 random_;
    Value code_;
    std::vector<Value> all_;
};

/// Bytes of all that the values hold, as the heap counts them; each object's marks must be gone.
std::size_t reachableBytes(const std::vector<Value>& held) {
    std::size_t bytes = 0;
    std::unordered_set<Object*> seen;
    std::vector<Object*> waiting;
    const auto push = [&](Object* object) {
        if (seen.insert(object).second) waiting.push_back(object);
    };
    const auto look = [&](const Value& v) {
        if (v.kind() >= Kind::String) push(v.object());
    };
    for (const Value& v : held) look(v);
    while (!waiting.empty()) {
        Object* const object = waiting.back();
        waiting.pop_back();
        EXPECT_EQ(object->mark, 0);
        EXPECT_GT(object->refs, 0u);
        if (object->kind == Kind::Cons) {
            bytes += sizeof(Cons);
            look(static_cast<Cons*>(object)->head);
            look(static_cast<Cons*>(object)->tail);
        } else if (object->kind == Kind::Function) {
            bytes += sizeof(FunctionObject);
            look(static_cast<FunctionObject*>(object)->code);
            look(static_cast<FunctionObject*>(object)->environment);
        } else if (object->kind == Kind::Code) {
            for (const Value& v : static_cast<Code*>(object)->constants) look(v);
        } else if (object->kind == Kind::Environment) {
            auto* const scope = static_cast<Environment*>(object);
            bytes += sizeof(Environment) + scope->size() * sizeof(Value);
            for (std::uint32_t i = 0; i < scope->size(); ++i) look(scope->slots()[i]);
            if (scope->parent() != nullptr) push(scope->parent());
        } else {
            bytes += sizeof(StringObject) + 3;
        }
    }
    return bytes;
}

TEST(Cycles, LeaveWhatCanBeReached) {
    Cycles::collect();
    for (std::uint32_t seed = 0; seed < 300; ++seed) {
        const std::size_t before = Heap::bytes;
        {
            Web web(seed);
            Cycles::collect();
            ASSERT_EQ(Heap::bytes - before, reachableBytes(web.held)) << seed;
            // Counts are as they were: a second look changes nothing, and letting go frees all.
            Cycles::collect();
            ASSERT_EQ(Heap::bytes - before, reachableBytes(web.held)) << seed;
        }
        Cycles::collect();
        ASSERT_EQ(Heap::bytes, before) << seed;
    }
}

}  // namespace
}  // namespace kova::script::lisp
