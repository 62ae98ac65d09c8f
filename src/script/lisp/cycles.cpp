#include "script/lisp/cycles.hpp"

#include <algorithm>

namespace kova::script::lisp {

namespace {

/// Marks of objects during a collection; all are kLive outside of one.
constexpr std::uint8_t kLive = 0;
constexpr std::uint8_t kUncounted = 1;  ///< the counts from within were taken away
constexpr std::uint8_t kDead = 2;       ///< nothing else holds it, as far as is known
constexpr std::uint8_t kGathered = 3;

bool hasParts(Kind kind) {
    return kind == Kind::Cons || kind == Kind::Function || kind == Kind::Code || kind == Kind::Environment;
}

}  // namespace

std::vector<Environment*> Cycles::suspects_;
std::vector<Object*> Cycles::work_;
std::vector<Object*> Cycles::dead_;
std::size_t Cycles::due_ = Cycles::kSlack;
std::uint64_t Cycles::looked_ = 0;
bool Cycles::noted_ = false;

void Cycles::suspect(Environment* scope) {
    noted_ = true;
    if (scope->suspect_ != 0) return;
    suspects_.push_back(scope);
    scope->suspect_ = static_cast<std::uint32_t>(suspects_.size());
}

void Cycles::forget(Environment* scope) {
    Environment* const last = suspects_.back();
    suspects_[scope->suspect_ - 1] = last;
    last->suspect_ = scope->suspect_;
    suspects_.pop_back();
    scope->suspect_ = 0;
}

/// Parts that have no parts themselves cannot lie on a ring and are left to counting.
template <class Visit>
void Cycles::eachPart(Object* object, Visit&& visit) {
    const auto value = [&](const Value& v) {
        if (hasParts(v.kind_)) visit(v.data_.object);
    };
    switch (object->kind) {
        case Kind::Cons: {
            // The head comes last, and so is looked at first: the depth of the work is that of the nesting, not the
            // length of the list.
            const auto* cons = static_cast<Cons*>(object);
            value(cons->tail);
            value(cons->head);
            break;
        }
        case Kind::Function: {
            const auto* function = static_cast<FunctionObject*>(object);
            value(function->code);
            value(function->environment);
            break;
        }
        case Kind::Code:
            for (const Value& v : static_cast<Code*>(object)->constants) value(v);
            break;
        case Kind::Environment: {
            auto* scope = static_cast<Environment*>(object);
            visit(scope->code_);
            if (scope->parent_ != nullptr) visit(scope->parent_);
            for (std::uint32_t i = 0; i < scope->size_; ++i) value(scope->slots()[i]);
            break;
        }
        default:
            break;
    }
}

void Cycles::uncount(Object* first) {
    if (first->mark == kUncounted) return;
    first->mark = kUncounted;
    work_.push_back(first);
    while (!work_.empty()) {
        Object* const object = work_.back();
        work_.pop_back();
        ++looked_;
        eachPart(object, [](Object* part) {
            --part->refs;
            if (part->mark == kUncounted) return;
            part->mark = kUncounted;
            work_.push_back(part);
        });
    }
}

void Cycles::separate(Object* first) {
    work_.push_back(first);
    while (!work_.empty()) {
        Object* const object = work_.back();
        work_.pop_back();
        if (object->mark != kUncounted) continue;
        if (object->refs > 0) {
            revive(object);
            continue;
        }
        object->mark = kDead;
        eachPart(object, [](Object* part) {
            if (part->mark == kUncounted) work_.push_back(part);
        });
    }
}

void Cycles::revive(Object* first) {
    // On top of what waits already, which stays.
    const std::size_t bottom = work_.size();
    first->mark = kLive;
    work_.push_back(first);
    while (work_.size() > bottom) {
        Object* const object = work_.back();
        work_.pop_back();
        eachPart(object, [](Object* part) {
            ++part->refs;
            if (part->mark == kLive) return;
            part->mark = kLive;
            work_.push_back(part);
        });
    }
}

void Cycles::gather(Object* first) {
    const auto take = [](Object* object) {
        if (object->mark != kDead) return;
        object->mark = kGathered;
        work_.push_back(object);
        dead_.push_back(object);
    };
    take(first);
    while (!work_.empty()) {
        Object* const object = work_.back();
        work_.pop_back();
        eachPart(object, take);
    }
}

void Cycles::detach(Object* object) {
    const auto drop = [](Value& v) {
        // Counts of what has parts were taken away already.
        if (hasParts(v.kind_))
            v.kind_ = Kind::Nil;
        else
            v = Value();
    };
    switch (object->kind) {
        case Kind::Cons:
            drop(static_cast<Cons*>(object)->head);
            drop(static_cast<Cons*>(object)->tail);
            break;
        case Kind::Function:
            drop(static_cast<FunctionObject*>(object)->code);
            drop(static_cast<FunctionObject*>(object)->environment);
            break;
        case Kind::Code:
            for (Value& v : static_cast<Code*>(object)->constants) drop(v);
            break;
        case Kind::Environment: {
            auto* scope = static_cast<Environment*>(object);
            for (std::uint32_t i = 0; i < scope->size_; ++i) drop(scope->slots()[i]);
            break;
        }
        default:
            break;
    }
}

std::size_t Cycles::collect() noexcept {
    const std::size_t before = Heap::bytes;
    for (Environment* scope : suspects_) uncount(scope);
    for (Environment* scope : suspects_) separate(scope);
    for (Environment* scope : suspects_) gather(scope);
    for (Object* object : dead_) detach(object);
    for (Object* object : dead_) Value::dispose(object);
    dead_.clear();
    if (dead_.capacity() > (1U << 20)) std::vector<Object*>().swap(dead_);
    if (work_.capacity() > (1U << 20)) std::vector<Object*>().swap(work_);
    noted_ = false;
    due_ = Heap::bytes + std::max(Heap::bytes, kSlack);
    return before - Heap::bytes;
}

}  // namespace kova::script::lisp
