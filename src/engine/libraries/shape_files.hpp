#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "math/curves/path.hpp"

namespace kova::engine {

/// One shape of a shape file: a drawing for a pen, as bytes.
struct ShapeDefinition {
    std::int32_t number = 0;
    std::string name;  ///< upper case
    std::vector<std::uint8_t> code;
};

/// The shapes of one file.
struct ShapeSet {
    std::vector<ShapeDefinition> shapes;
    const ShapeDefinition* find(std::int32_t number) const;
    const ShapeDefinition* find(std::string_view name) const;
};

/// Reads shape source text ("*131,3,ZIG" and lines of bytes: hexadecimal with a leading 0, decimal otherwise).
/// Definitions that make no sense are left out.
ShapeSet parseShapeText(std::string_view text);
/// Reads a compiled shape file (its header ends in "shapes 1.0" or "shapes 1.1" and byte 26). Empty for other files.
ShapeSet parseCompiledShapes(std::string_view bytes);
/// The shapes that the standard complex linetypes use: TRACK1, ZIG, BOX, CIRC1, BAT, AMZIGZAG.
const ShapeSet& builtInShapes();
/// A shape file by the name that drawings give it, as a path, beside the drawing (folder), as .shx or as .shp source;
/// read once. Null when there is none.
const ShapeSet* loadShapeFile(std::string_view file, const std::string& folder);

/// What the pen draws, in shape units from its start. Bounded in steps and depth, whatever the bytes say.
Path shapeOutline(const ShapeSet& set, const ShapeDefinition& shape);
/// A shape of a file by number, or by name when the number is 0; the built-in shapes stand in for files that are not
/// there. Empty when nobody knows it.
Path findShape(std::string_view file, const std::string& folder, std::int32_t number, std::string_view name);

}  // namespace kova::engine
