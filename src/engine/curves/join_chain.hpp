#pragma once

#include <cstddef>
#include <memory>
#include <span>
#include <vector>

#include "engine/curves/join.hpp"
#include "math/vector3.hpp"

namespace kova::engine {

inline constexpr std::size_t kNoEnd = static_cast<std::size_t>(-1);

/// An object of a chain.
struct JoinMember {
    const Entity* entity = nullptr;
    math::Vector3 ends[2];
    std::size_t next[2] = {kNoEnd, kNoEnd};  ///< the end it is tied to: 2 * member + end
    std::size_t source = 0;                  ///< index of what it stands for
    EntityType type = EntityType::Line;      ///< the entity's
    bool used = false;
};

/// One member as it is run through: backwards when `turned`.
struct JoinStep {
    std::size_t member;
    bool turned;
};

/// What members that follow each other become, with the common properties of `like`. `same`: ends nearer to each other
/// than this are one. Null when no kind of object can hold it.
std::unique_ptr<Entity> buildChain(const std::vector<JoinMember>& members, std::span<const JoinStep> steps, bool closed,
                                   const JoinOptions& options, double same, const Entity& like);

}  // namespace kova::engine
