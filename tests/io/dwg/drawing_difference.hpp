#pragma once

#include <initializer_list>
#include <string>
#include <vector>

#include "engine/model/drawing.hpp"

namespace kova::test {

/// What differs between two drawings as their native files would hold them, a line each; numbers may differ by 1e-9 of
/// their size. Lists of things with handles or names are compared by these. `ignored` members of the file are left out.
std::vector<std::string> differences(const engine::Drawing& a, const engine::Drawing& b,
                                     std::initializer_list<const char*> ignored = {});
/// The first of them, a line each.
std::string listed(const std::vector<std::string>& differences, std::size_t limit = 60);

}  // namespace kova::test
