#pragma once

#include <span>
#include <string>
#include <vector>

#include "doc/document.hpp"
#include "engine/symbols/symbols.hpp"

namespace kova::cmd {

/// What can be purged from a drawing: unused records of a table, and a few things besides.
enum class PurgeKind {
    Block,
    DimStyle,
    Group,  ///< groups none of whose members stands any more
    Layer,
    Linetype,
    MLeaderStyle,
    TextStyle,
    TableStyle,
    ShapeFile,
    RegApp
};
inline constexpr PurgeKind kPurgeKinds[] = {
    PurgeKind::Block,        PurgeKind::DimStyle,  PurgeKind::Group,      PurgeKind::Layer,     PurgeKind::Linetype,
    PurgeKind::MLeaderStyle, PurgeKind::TextStyle, PurgeKind::TableStyle, PurgeKind::ShapeFile, PurgeKind::RegApp};
/// "block", "layer" ... as questions name the kind.
std::string purgeKindName(PurgeKind kind);

/// For each kind the names of what nothing uses, in table order. What always exists, what is current and what comes from
/// an external reference is not among them. One pass over the drawing for all kinds.
std::vector<std::vector<engine::Name>> unusedRecords(const doc::Document& document, std::span<const PurgeKind> kinds);
/// Deletes these records, which must be unused, as part of the open group. Gives the number deleted.
std::size_t purgeRecords(doc::Document& document, PurgeKind kind, const std::vector<engine::Name>& names);
/// Deletes whatever is unused, also what becomes so by that.
std::size_t purgeAll(doc::Document& document);

/// Lines, arcs, circles and polylines without length, on unlocked layers, in model space and the layouts.
std::vector<std::uint64_t> zeroLengthGeometry(const engine::Drawing& drawing);
/// Texts that hold nothing but blanks, likewise.
std::vector<std::uint64_t> emptyTexts(const engine::Drawing& drawing);

}  // namespace kova::cmd
