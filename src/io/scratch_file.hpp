#pragma once

#include <string>
#include <string_view>

#include "io/byte_sink.hpp"

namespace kova::io {

/// A file in the temporary folder for what is needed for a moment only. Nobody else may read it, it is not brought to
/// disk, and it loses its name at once, so that it is gone with the process however that ends; unless it is to be kept.
class ScratchFile final : public ByteSink {
public:
    ScratchFile() = default;
    ~ScratchFile() override;
    ScratchFile(const ScratchFile&) = delete;
    ScratchFile& operator=(const ScratchFile&) = delete;

    /// Makes the file; the name is `prefix`, a part that makes it unique, and `extension`. `keep`: under that name it
    /// stays. False when it cannot be made.
    bool create(const std::string& prefix, const std::string& extension, bool keep = false);
    /// The first failure is kept.
    bool write(const char* data, std::size_t size) override;
    /// True while all that was written was taken.
    bool good() const { return descriptor_ >= 0 && error_ == 0; }
    /// errno of what failed; 0: nothing.
    int error() const { return error_; }
    /// The name that it had, or was to have.
    const std::string& path() const { return path_; }
    /// Makes what was written so far readable as one piece of memory, which lasts as long as the object. False when
    /// there is not enough of it.
    bool map();
    std::string_view view() const { return {data_, size_}; }

private:
    void close();

    std::string path_;
    int descriptor_ = -1;
    int error_ = 0;
    const char* data_ = "";
    std::size_t size_ = 0;
};

/// Writes all of it to a descriptor, however many calls that takes. False with errno set on a failure.
bool writeAll(int descriptor, const char* data, std::size_t size);

}  // namespace kova::io
