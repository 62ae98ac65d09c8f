#pragma once

#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "kdraw/fields/values.hpp"

namespace kdraw {

/// The section that holds the binary data of solids from R2013 on: a small file system of segments. Gives the data by
/// the handle of their entities. What is damaged is left out, with a note.
std::unordered_map<Handle, std::string> readSolidStore(std::string_view section, std::vector<std::string>& notes);

/// The section for these data; they are written in the order of their handles.
std::string writeSolidStore(const std::unordered_map<Handle, std::string>& solids);

}  // namespace kdraw
