// Small DWG files of all layouts, made for tests.
#pragma once

#include <string>

#include "kdraw/container/container.hpp"

namespace kdraw::testing {

/// A container with a few hundred object-like bytes, an object map that leads to them and framed header and classes.
Container smallContainer(Version version);

/// A file of any decoded version that holds the sections of a small container; of R2004 one that is written as R2010
/// under the older version's name.
std::string smallFile(Version version);

}  // namespace kdraw::testing
