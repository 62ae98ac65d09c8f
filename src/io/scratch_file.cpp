#include "io/scratch_file.hpp"

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <filesystem>

namespace kova::io {

bool writeAll(int descriptor, const char* data, std::size_t size) {
    constexpr std::size_t kLargestWrite = std::size_t{1} << 30;
    while (size > 0) {
        const ssize_t n = ::write(descriptor, data, std::min(size, kLargestWrite));
        if (n < 0 && errno == EINTR) continue;
        if (n < 0) return false;
        data += n;
        size -= static_cast<std::size_t>(n);
    }
    return true;
}

ScratchFile::~ScratchFile() { close(); }

void ScratchFile::close() {
    if (size_ > 0) ::munmap(const_cast<char*>(data_), size_);
    data_ = "";
    size_ = 0;
    if (descriptor_ >= 0) ::close(descriptor_);
    descriptor_ = -1;
}

bool ScratchFile::create(const std::string& prefix, const std::string& extension, bool keep) {
    close();
    error_ = 0;
    std::error_code error;
    std::filesystem::path folder = std::filesystem::temp_directory_path(error);
    if (error) folder = "/tmp";
    path_ = (folder / (prefix + "XXXXXX" + extension)).string();
    // Made for its owner alone.
    descriptor_ = ::mkostemps(path_.data(), static_cast<int>(extension.size()), O_CLOEXEC);
    if (descriptor_ < 0) {
        error_ = errno;
        return false;
    }
    if (!keep) ::unlink(path_.c_str());
    return true;
}

bool ScratchFile::write(const char* data, std::size_t size) {
    if (!good()) return false;
    if (!writeAll(descriptor_, data, size)) error_ = errno;
    return error_ == 0;
}

bool ScratchFile::map() {
    struct stat info {};
    if (!good() || ::fstat(descriptor_, &info) != 0) return false;
    if (size_ > 0) ::munmap(const_cast<char*>(data_), size_);
    data_ = "";
    size_ = 0;
    if (info.st_size == 0) return true;
    const auto size = static_cast<std::size_t>(info.st_size);
    void* memory = ::mmap(nullptr, size, PROT_READ, MAP_PRIVATE, descriptor_, 0);
    if (memory == MAP_FAILED) {
        error_ = errno;
        return false;
    }
    ::madvise(memory, size, MADV_SEQUENTIAL);
    data_ = static_cast<const char*>(memory);
    size_ = size;
    return true;
}

}  // namespace kova::io
