#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "io/left_out.hpp"

namespace kova::engine {
class Drawing;
}

namespace kova::io {
class Progress;
class Save;
}  // namespace kova::io

namespace kova::io::native {

/// What a save had to change so that the file loads again.
struct SaveNotes {
    std::size_t replacedNumbers = 0;  ///< infinite numbers and such that are none, written as 0
};

/// Saves a drawing as a native drawing file, in a save that is not open yet. Error text, empty on success; after a
/// failure an older file of that name stands as it was.
std::string saveNative(const engine::Drawing& drawing, Save& save, SaveNotes* notes = nullptr,
                       Progress* progress = nullptr);
std::string saveNative(const engine::Drawing& drawing, const std::string& path, SaveNotes* notes = nullptr,
                       Progress* progress = nullptr);

/// What a load has to tell besides an error.
struct LoadNotes {
    LeftOut skipped;  ///< entities of kinds that are not known
    LeftOut leftOut;  ///< sections and members that are not known, blocks of a name that is taken
    std::vector<std::string> lines;  ///< the same as the user is told
};

/// Fills a new drawing from a native drawing file. Error text, empty on success; after a failure the drawing holds a
/// part of the file and should be thrown away.
std::string loadNative(const std::string& path, engine::Drawing& drawing, Progress* progress = nullptr,
                       LoadNotes* notes = nullptr);

/// The same from and to memory.
std::string loadNativeText(std::string_view text, engine::Drawing& drawing, Progress* progress = nullptr,
                           LoadNotes* notes = nullptr);
std::string nativeText(const engine::Drawing& drawing);

}  // namespace kova::io::native
