#pragma once

#include <string>
#include <vector>

#include "engine/model/drawing.hpp"

namespace kova::cmd {

/// A file that a drawing needs besides its own.
struct NeededFile {
    std::string kind;   ///< "Xref", "Image", "Shape file", "Font", "Plot style table"
    std::string named;  ///< as the drawing names it
    std::string found;  ///< where it lies; empty: it is missing
};

/// All files that a drawing needs, each once: external references (with those of the referenced drawings that came
/// with them), images, shape files, fonts and plot style tables.
std::vector<NeededFile> neededFiles(const engine::Drawing& drawing);

/// Copies files into a folder, by their names alone; two of one name but from different places get a number. Gives the
/// lines to print.
std::vector<std::string> copyFiles(const std::vector<NeededFile>& files, const std::string& folder);

}  // namespace kova::cmd
