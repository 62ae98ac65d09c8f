#pragma once

#include <cstdint>
#include <string>

#include "engine/name.hpp"

namespace kova::engine {

class Drawing;

/// The tables whose records have names that other things refer to.
enum class SymbolKind : std::uint8_t {
    Block, DimStyle, Layer, Layout, Linetype, MLeaderStyle, TextStyle, TableStyle, Ucs, View, Group
};
/// "block", "layer" ... as messages name the kind.
std::string_view symbolKindName(SymbolKind kind);

/// A name that a table may hold: not empty, at most 255 characters, none of <>/\":;?*|,=` and no control character.
bool isValidSymbolName(std::string_view name);

/// Renames a record and everything in the drawing that refers to it. Error text, empty on success.
std::string renameSymbol(Drawing& drawing, SymbolKind kind, Name from, Name to);

/// Number of entities, styles and records that refer to a record; 0: it may be purged.
std::size_t countReferences(const Drawing& drawing, SymbolKind kind, Name name);

}  // namespace kova::engine
