#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <string_view>

#include "io/dxf/groups/lexer.hpp"
#include "io/dxf/groups/text_decoder.hpp"

namespace kova::io::dxf {

/// What the plain groups of a record say, as numbers that stand beside own data. When another program has changed the
/// record they differ, and own data that says otherwise no longer counts.
///
/// Only groups count that own data may contradict, and values, not their texts: reals up to about 1e-9 of their size,
/// texts decoded. The order of groups does not count, nor do groups that are 0, empty or what a missing one means,
/// which programs add and leave out as they like. So the numbers are the same in a DXF file, behind a DWG file, and
/// after another program has loaded and saved the file.
struct Fingerprint {
    std::uint64_t head = 0;   ///< the common part of an entity: layer, linetype ...
    std::uint64_t body = 0;   ///< the groups of the kind, and its extended data under ACAD
    std::uint64_t parts = 0;  ///< the records that belong to it: attributes, vertices

    /// What counts of a record that is a part of another one.
    std::uint64_t groups() const { return body + parts; }
};

/// `groups` are all of a record without its group 0, extended data included.
Fingerprint fingerprintOf(std::string_view type, std::span<const Tag> groups, const TextDecoder& decoder);
/// The same of a record as it stands in a file's text; of several the others are its parts. `decoder` as a reader of
/// the file has it.
Fingerprint fingerprintOf(std::string_view text, const TextDecoder& decoder);

}  // namespace kova::io::dxf
