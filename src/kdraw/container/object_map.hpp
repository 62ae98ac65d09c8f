// The object map: which handle's record lies where.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace kdraw {

/// An object's handle and the place of its record: a file address in R2000, else an offset in the objects section.
struct ObjectMapEntry {
    std::uint64_t handle = 0;
    std::uint64_t offset = 0;

    bool operator==(const ObjectMapEntry&) const = default;
};

/// Reads the section of handles. Entries come in ascending order of handles; of entries with the same handle the first
/// one counts. A damaged map gives the entries before the damage, and a note for each kind of fault.
std::vector<ObjectMapEntry> readObjectMap(std::string_view bytes, std::vector<std::string>& notes);

/// The bytes of the section of handles. The entries must have ascending handles; offsets must be below 2^62.
std::string writeObjectMap(std::span<const ObjectMapEntry> entries);

}  // namespace kdraw
