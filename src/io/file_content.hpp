#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace kova::io {

/// A file read whole, as one piece of memory. It is not mapped: another program that cuts a mapped file off while it is
/// read kills the reader. The view is valid as long as the object is.
class FileContent {
public:
    FileContent() = default;
    ~FileContent();
    FileContent(const FileContent&) = delete;
    FileContent& operator=(const FileContent&) = delete;

    /// Error text ("Cannot open file: " + path), empty on success. A folder cannot be opened; what comes out of
    /// a pipe is refused beyond 4 GB. A file that shrinks meanwhile ends where it was cut off.
    std::string open(const std::string& path);
    std::string_view view() const { return {data_, size_}; }

private:
    void close();
    bool reserve(std::size_t size);

    const char* data_ = "";
    std::size_t size_ = 0;
    std::size_t reserved_ = 0;  ///< bytes of memory of its own at data_; 0: `stream_` holds the content
    std::string stream_;        ///< of what has no size beforehand
};

/// Reads a file whole, or its first `limit` bytes. Error text, empty on success.
std::string readFile(const std::string& path, std::string& content, std::size_t limit = std::string::npos);

}  // namespace kova::io
