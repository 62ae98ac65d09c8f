#pragma once

#include <string>
#include <vector>

#include "doc/document.hpp"

namespace kova::cmd {

/// The next unused name of an unnamed group: "*A1", "*A2" ...
engine::Name nextGroupName(const engine::Drawing& drawing);

/// Adds a selectable group of entities, as part of the open group of actions. The name must be free.
void addGroup(doc::Document& document, engine::Name name, const std::string& description,
              const std::vector<std::uint64_t>& ids);

/// Handles of the entities that still stand, each once, in the order of the ids.
std::vector<std::uint64_t> handlesOf(const engine::Drawing& drawing, const std::vector<std::uint64_t>& ids);

/// Names of the groups that hold one of the entities.
std::vector<engine::Name> groupsOf(const engine::Drawing& drawing, const std::vector<std::uint64_t>& ids);

}  // namespace kova::cmd
