#pragma once

#include <cstdint>
#include <optional>

#include "engine/model/drawing.hpp"
#include "script/lisp/machine.hpp"

namespace kova::script::lisp {

/// An entity name: the handle of an entity, and the part of it that is meant. Parts are the attributes of a block
/// reference and the vertices (and faces) of an old-style polyline, from 1; the one behind the last is the SEQEND.
struct SubName {
    std::uint64_t handle = 0;
    std::size_t part = 0;

    static constexpr int kShift = 40;
    static SubName of(std::uint64_t name) {
        return {name & ((std::uint64_t{1} << kShift) - 1), static_cast<std::size_t>((name >> kShift) & 0x7FFFFF)};
    }
    std::uint64_t encoded() const { return handle | (static_cast<std::uint64_t>(part) << kShift); }
};
/// Number of parts without the SEQEND; 0 for entities that have none.
std::size_t partCount(const engine::Entity& entity);

/// The tables that TBLSEARCH and its kin know.
enum class RecordKind : std::uint8_t {
    None,
    Layer,
    Linetype,
    TextStyle,
    Block,
    DimStyle,
    Ucs,
    View,
    Application,
    MLeaderStyle,
    TableStyle,
    Dictionary
};

/// Names of table records: they have no handle of their own, so they are told by table and name.
std::uint64_t recordName(RecordKind kind, engine::Name name);
inline bool isRecordName(std::uint64_t name) { return (name >> 63) != 0; }
/// The table's record that a name stands for; nothing for other names.
std::optional<engine::Name> recordOf(std::uint64_t name, RecordKind kind);
/// Reads a group that refers to a record: its name as ENTGET and TBLOBJNAME give it, or as a text.
void readReference(int code, const Value& given, RecordKind kind, engine::Name& name);
/// The record's groups; nil when it is gone.
Value recordGroups(Machine& machine, std::uint64_t name);

}  // namespace kova::script::lisp
