#pragma once

#include <string>
#include <string_view>

#include "io/byte_sink.hpp"

namespace kova::io {

/// A file being saved: the bytes go to a temporary file beside the target, which takes the target's place only
/// when everything is on disk. A save that fails, or is given up, leaves the old file whole and no temporary.
///
/// A symbolic link is followed, so that the file it names is replaced and not the link; a replaced file keeps its
/// permissions, and its owner where that is allowed. A target that is no regular file (a terminal, a pipe), or one
/// whose folder takes no new file, is written in place.
///
///     AtomicFile file;
///     if (std::string error = file.open(path); !error.empty()) return error;
///     file.write(data, size);      // as often as needed; the first failure is kept
///     return file.commit();
class AtomicFile final : public ByteSink {
public:
    AtomicFile() = default;
    ~AtomicFile() override;
    AtomicFile(const AtomicFile&) = delete;
    AtomicFile& operator=(const AtomicFile&) = delete;

    /// Error text ("Cannot open file for writing: " + path), empty on success.
    std::string open(const std::string& path);
    /// Writes through to the file: callers gather bytes into large pieces.
    bool write(const char* data, std::size_t size) override;
    bool write(std::string_view bytes) { return write(bytes.data(), bytes.size()); }
    /// Brings the file to disk and puts it in the target's place. Error text, empty on success.
    std::string commit();
    /// Gives the save up; also done by the destructor.
    void discard();

private:
    bool openTemporary(bool targetExists, unsigned mode, unsigned owner, unsigned group);
    std::string copyOverTarget();
    std::string failed(int code) const;

    std::string path_;       ///< as the caller gave it, for messages
    std::string target_;     ///< links followed
    std::string temporary_;  ///< empty: written in place
    int descriptor_ = -1;
    int error_ = 0;  ///< errno of the first failed write
};

/// Saves a whole text at once. Error text, empty on success.
std::string saveFile(const std::string& path, std::string_view content);

}  // namespace kova::io
