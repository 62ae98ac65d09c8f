#pragma once

#include <cstddef>

namespace kova::engine {

struct Block;
class Entity;

/// True for what stands in a block but is not shown by its references: hidden entities, and attribute definitions
/// (whose values the reference shows) unless they are constant and visible.
bool hiddenInReferences(const Entity& entity);

/// Keeps account of blocks within blocks while one is emitted or measured, so that self-containing definitions, deep
/// nesting and references that multiply at every level come to an end. The two purposes are counted apart: measuring
/// happens in the middle of emitting.
class BlockNesting {
public:
    enum class Purpose { Emit, Measure };

    /// Opens a span of work; the limits count anew with each outermost span.
    explicit BlockNesting(Purpose purpose);
    /// The same, and enters a block: `entered()` is false when it is open already or too deep.
    BlockNesting(Purpose purpose, const Block& block);
    ~BlockNesting();
    BlockNesting(const BlockNesting&) = delete;
    BlockNesting& operator=(const BlockNesting&) = delete;

    bool entered() const { return entered_; }
    bool outermost() const;
    /// Counts one entity or one copy of a block; false when there have been too many.
    bool takeEntity();
    bool takePlacement();
    /// Something was left out in this outermost span because of a limit or a cycle.
    bool truncated() const;

private:
    struct State;
    static State& state(Purpose purpose);
    State& state_;
    bool entered_ = false;
};

}  // namespace kova::engine
