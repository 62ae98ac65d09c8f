#pragma once

#include <span>
#include <string_view>
#include <vector>

#include "engine/model/records.hpp"
#include "engine/model/styles.hpp"

namespace kova::engine {

/// The 24 linetypes that a drawing can load, without "Continuous"; metric or imperial dash lengths.
const std::vector<Linetype>& builtinLinetypes(bool metric);
/// The text of the built-in hatch pattern library in .pat form (metric lengths).
std::string_view builtinPatternText();
/// The 58 built-in patterns in library order, metric or imperial lengths.
const std::vector<HatchPattern>& builtinHatchPatterns(bool metric);
/// Reads a pattern library in .pat form. Lines that are no pattern are passed over and counted in `skipped`.
std::vector<HatchPattern> parsePatternLibrary(std::string_view text, int* skipped = nullptr);
/// Reads linetypes in .lin form.
std::vector<Linetype> parseLinetypeLibrary(std::string_view text, int* skipped = nullptr);
/// The program's annotation scale names with their units.
std::vector<AnnotationScale> builtinAnnotationScales();

}  // namespace kova::engine
