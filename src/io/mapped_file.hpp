#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace kova::io {

/// A file for reading as one piece of memory. A regular file is mapped; anything else (a pipe, a terminal) is read
/// to its end. The view is valid as long as the object is.
class MappedFile {
public:
    MappedFile() = default;
    ~MappedFile();
    MappedFile(const MappedFile&) = delete;
    MappedFile& operator=(const MappedFile&) = delete;

    /// Error text ("Cannot open file: " + path), empty on success. A folder cannot be opened; what comes out of
    /// a pipe is refused beyond 4 GB.
    std::string open(const std::string& path);
    std::string_view view() const { return {data_, size_}; }

private:
    void close();

    const char* data_ = "";
    std::size_t size_ = 0;
    bool mapped_ = false;
    std::string content_;  ///< of what cannot be mapped
};

/// Reads a file whole, or its first `limit` bytes. Error text, empty on success.
std::string readFile(const std::string& path, std::string& content, std::size_t limit = std::string::npos);

}  // namespace kova::io
