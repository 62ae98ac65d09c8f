#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <unordered_map>
#include <vector>

#include "engine/model/name.hpp"

namespace kova::engine {

class Drawing;

/// The tables whose records have names that other things refer to.
enum class SymbolKind : std::uint8_t {
    Block, DimStyle, Layer, Layout, Linetype, MLeaderStyle, TextStyle, TableStyle, Ucs, View, Group
};
inline constexpr std::size_t kSymbolKindCount = 11;
/// "block", "layer" ... as messages name the kind.
std::string_view symbolKindName(SymbolKind kind);

/// A name that a table may hold: not empty, at most 255 characters, none of <>/\":;?*|,=` and no control character.
bool isValidSymbolName(std::string_view name);

/// The name of a record as its table holds it; nothing when there is no such record.
std::optional<Name> findSymbol(const Drawing& drawing, SymbolKind kind, Name name);
/// True for a record that always exists and keeps its name: layer "0", the linetypes ByLayer, ByBlock and Continuous,
/// the styles "Standard", anonymous blocks, and what comes from an external reference ("xref|name").
bool isFixedSymbol(SymbolKind kind, Name name);

/// Renames a record and everything in the drawing that refers to it. Error text, empty on success.
std::string renameSymbol(Drawing& drawing, SymbolKind kind, Name from, Name to);

/// The same without a look at the new name's form; how undo gives back a name that a file brought in.
/// False when the record is unknown or the new name is taken.
bool renameSymbolUnchecked(Drawing& drawing, SymbolKind kind, Name from, Name to);

/// One record's new name.
struct SymbolRename {
    SymbolKind kind;
    Name from;
    Name to;
};
/// Renames many records and what refers to them in one pass over the drawing, without a look at the names' form. Those
/// that cannot be renamed (unknown, name taken) are dropped from the list.
void renameSymbolsUnchecked(Drawing& drawing, std::vector<SymbolRename>& renames);

/// Number of entities, styles and records that refer to a record; 0: it may be purged.
std::size_t countReferences(const Drawing& drawing, SymbolKind kind, Name name);

/// The references to all records of all tables, counted in one pass over the drawing.
class ReferenceCounts {
public:
    explicit ReferenceCounts(const Drawing& drawing);
    std::size_t of(SymbolKind kind, Name name) const;

private:
    std::array<std::unordered_map<const void*, std::size_t>, kSymbolKindCount> counts_;
};

}  // namespace kova::engine
