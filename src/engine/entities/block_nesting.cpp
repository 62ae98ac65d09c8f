#include "engine/entities/block_nesting.hpp"

#include "engine/entities/attribute_definition.hpp"
#include "engine/entities/block_reference.hpp"

namespace kova::engine {

bool hiddenInReferences(const Entity& entity) {
    if (!entity.visible) return true;
    if (entity.type() != EntityType::AttributeDefinition) return false;
    const auto& definition = static_cast<const AttributeDefinitionEntity&>(entity);
    return !definition.constant || definition.invisible;
}

struct BlockNesting::State {
    std::vector<const Block*> open;
    std::size_t spans = 0;
    std::size_t entities = 0;
    std::size_t placements = 0;
    bool truncated = false;
};

BlockNesting::State& BlockNesting::state(Purpose purpose) {
    thread_local State states[2];
    return states[purpose == Purpose::Emit ? 0 : 1];
}

BlockNesting::BlockNesting(Purpose purpose) : state_(state(purpose)) {
    if (state_.spans++ == 0) {
        state_.entities = state_.placements = 0;
        state_.truncated = false;
    }
}

BlockNesting::BlockNesting(Purpose purpose, const Block& block) : BlockNesting(purpose) {
    entered_ = state_.open.size() < static_cast<std::size_t>(kMaxBlockNesting) &&
               std::find(state_.open.begin(), state_.open.end(), &block) == state_.open.end();
    if (entered_)
        state_.open.push_back(&block);
    else
        state_.truncated = true;
}

BlockNesting::~BlockNesting() {
    if (entered_) state_.open.pop_back();
    --state_.spans;
}

bool BlockNesting::outermost() const { return state_.spans == 1; }
bool BlockNesting::truncated() const { return state_.truncated; }

bool BlockNesting::takeEntity() {
    if (state_.entities < kMaxNestedEntities) {
        ++state_.entities;
        return true;
    }
    state_.truncated = true;
    return false;
}

bool BlockNesting::takePlacement() {
    if (state_.placements < kMaxBlockPlacements) {
        ++state_.placements;
        return true;
    }
    state_.truncated = true;
    return false;
}

}  // namespace kova::engine
