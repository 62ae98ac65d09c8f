// The sections beside the drawing itself: properties, preview, save counters. Most readers ignore them, but a file is
// not complete without them.
#pragma once

#include <string>
#include <string_view>

#include "kdraw/container/container.hpp"

namespace kdraw {

/// The bytes of one of the small sections from the container's version and facts; empty for the name of any other.
std::string makeSmallSection(std::string_view name, const Container& container);

/// The maintenance release that a written file states: the container's own where it goes with the version.
int writtenMaintenance(const Container& container);

/// Sets the file addresses in a preview section for a section that will start at `address`. A section of another form
/// stays as it is.
void relocatePreview(std::string& bytes, std::uint64_t address);

}  // namespace kdraw
