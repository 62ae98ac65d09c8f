#pragma once

#include <optional>
#include <vector>

#include "cmd/dialogue.hpp"

namespace kova::cmd {

/// New values of the properties that all entities have; what is absent stays.
struct PropertyChanges {
    std::optional<engine::Color> color;
    std::optional<engine::Name> layer;
    std::optional<engine::Name> linetype;
    std::optional<double> linetypeScale;
    std::optional<int> lineweight;
    std::optional<double> thickness;
    std::optional<int> transparency;
    std::optional<double> elevation;
    std::optional<bool> annotative;

    bool empty() const;
    void applyTo(engine::Entity& entity) const;
};

/// The dialogue of CHPROP: asks for one property after the other until Enter. `elevation`: that of CHANGE, with Elev.
/// Defaults are the values that all of the entities share.
Task<PropertyChanges> askPropertyChanges(Ask& ask, doc::Document& document, std::vector<std::uint64_t> ids,
                                         bool elevation);

/// Applies the changes as part of the open group.
void applyPropertyChanges(doc::Document& document, const std::vector<std::uint64_t>& ids,
                          const PropertyChanges& changes);

}  // namespace kova::cmd
