#pragma once

#include <functional>
#include <string>
#include <vector>

#include "engine/symbols/external_reference.hpp"

namespace kova::headless {

/// Reads a drawing file of any format without its external references: error text, empty on success; what the reader
/// has to tell goes to the lines.
using DrawingReader =
    std::function<std::string(const std::string& path, engine::Drawing& drawing, std::vector<std::string>& lines)>;

/// Loads external references, those inside referenced drawings included. Overlays count in the drawing itself only, a
/// file that would show itself is refused, and unloaded references stay so. What is missing or cannot be read is said
/// in a line and leaves the rest as it is.
class ReferenceLoader {
public:
    explicit ReferenceLoader(DrawingReader reader) : reader_(std::move(reader)) {}

    /// Loads the references of a drawing that was read from a file.
    void loadAll(engine::Drawing& host, const std::string& hostFile);
    /// Reads the drawing of one reference of a host, with what that refers to. Error text, empty on success.
    std::string loadOne(const std::string& path, const std::string& hostFile, engine::Drawing& drawing);
    std::vector<std::string>& lines() { return lines_; }

private:
    void load(engine::Drawing& drawing, const std::string& file, bool nested);
    std::string readFile(const std::string& file, bool nestedInDwg, engine::Drawing& drawing);
    void tell(std::string line);
    void tellAsWanted(const engine::Drawing& host);

    DrawingReader reader_;
    std::vector<std::string> lines_;
    std::vector<std::string> chain_;  ///< the files that show each other, from the host on
    std::size_t count_ = 0;
};

using engine::findReferencedFile;

}  // namespace kova::headless
