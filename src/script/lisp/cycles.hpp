#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "script/lisp/value.hpp"

namespace kova::script::lisp {

/// Frees what only holds itself, which counting cannot see: a scope that holds a function that was made in it.
///
/// Only a scope can close such a ring, as everything else is complete when it is made. And only one that somebody
/// else held when its function ended: these are noted, and nothing else costs anything. A collection takes away, for
/// all that can be reached from them, the counts that come from within; what is then left without any is held from
/// nowhere. So values that the program keeps in its own variables need not be known, and a collection may run wherever
/// memory is taken.
class Cycles {
public:
    /// Notes a scope that outlived its function.
    static void suspect(Environment* scope);
    /// The scope goes.
    static void forget(Environment* scope);
    /// Collects when memory has doubled since the last time: over a run the work stays in proportion to what was made.
    static void collectWhenDue() {
        if (Heap::bytes >= due_) collect();
    }
    /// Collects now. Gives the bytes that were freed.
    static std::size_t collect() noexcept;
    /// True when scopes were noted since the last collection.
    static bool mayHelp() { return noted_; }
    /// Objects that collections have looked at since the process began.
    static std::uint64_t looked() { return looked_; }

private:
    /// Memory that may grow unlooked at; below it a collection is not worth its while.
    static constexpr std::size_t kSlack = std::size_t{8} << 20;

    template <class Visit>
    static void eachPart(Object* object, Visit&& visit);
    static void uncount(Object* first);
    static void separate(Object* first);
    static void revive(Object* first);
    static void gather(Object* first);
    static void detach(Object* object);

    static std::vector<Environment*> suspects_;
    static std::vector<Object*> work_;
    static std::vector<Object*> dead_;
    static std::size_t due_;
    static std::uint64_t looked_;
    static bool noted_;
};

}  // namespace kova::script::lisp
