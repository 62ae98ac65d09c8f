// The generations of the DWG format.
#pragma once

#include <cstdint>
#include <string_view>

namespace kdraw {

/// A generation of the format, oldest first, so that versions compare by age. `R11R12` is only ever recognised.
enum class Version : std::uint8_t { Unknown, R11R12, R2000, R2004, R2007, R2010, R2013, R2018 };

/// The name shown to users: "R11/R12", "R2000" ... "R2018", or "Unknown".
std::string_view versionName(Version version);

/// The six characters that open a file of this generation, e.g. "AC1032"; empty for Unknown.
std::string_view versionTag(Version version);

/// The generation of a file from its first six bytes; Unknown for anything else, shorter text included.
Version versionOfTag(std::string_view tag);

/// The number that stands for the generation inside files, e.g. 33 for R2018; 0 where there is none.
int internalVersion(Version version);

/// True when files of the generation can be read.
constexpr bool isDecoded(Version version) { return version >= Version::R2000; }

/// True when files of the generation can be written.
constexpr bool isWritten(Version version) { return version >= Version::R2010; }

}  // namespace kdraw
