#pragma once

#include <string>
#include <vector>

namespace kova::cmd {

/// Names under which a second command registered itself, and which therefore is dead: there should be none.
const std::vector<std::string>& registeredTwice();

}  // namespace kova::cmd
