// The sections beside the drawing itself: properties, preview, save counters. Most readers ignore them, but a file is
// not complete without them.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "kdraw/container/container.hpp"
#include "kdraw/fields/text_codec.hpp"

namespace kdraw {

/// The bytes of one of the small sections from the container's version and facts; empty for the name of any other.
std::string makeSmallSection(std::string_view name, const Container& container);

/// A property of the drawing as file browsers show it: the name of the header variable that DXF has for it, without "$",
/// and its text.
struct SummaryProperty {
    std::string name;
    std::string text;
};
/// The properties of a summary section that are not empty; those of the user's own as "CUSTOMPROPERTY". What is damaged
/// is left out.
std::vector<SummaryProperty> readSummary(std::string_view bytes, Version version, const TextCodec& codec);

/// The maintenance release that a written file states: the container's own where it goes with the version.
int writtenMaintenance(const Container& container);

/// Sets the file addresses in a preview section for a section that will start at `address`. A section of another form
/// stays as it is.
void relocatePreview(std::string& bytes, std::uint64_t address);

}  // namespace kdraw
