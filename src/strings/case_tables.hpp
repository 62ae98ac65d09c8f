#pragma once

#include <cstdint>
#include <span>

namespace kova::strings {

/// Every `step`-th code point from `first` to `last` goes to the one `shift` further on.
struct CaseRange {
    std::uint32_t first;
    std::uint32_t last;
    std::uint32_t step;
    std::int32_t shift;
};

/// Code points that change, in ascending order.
std::span<const CaseRange> foldTable();
std::span<const CaseRange> upperTable();
std::span<const CaseRange> lowerTable();
/// Version of Unicode that the tables were made from: major and minor.
struct UnicodeVersion {
    int major;
    int minor;
};
UnicodeVersion caseTableVersion();

}  // namespace kova::strings
