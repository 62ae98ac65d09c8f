#include "io/mapped_file.hpp"

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

namespace kova::io {

namespace {

constexpr std::size_t kLargestStream = std::size_t{4} << 30;

/// Closes the descriptor on every way out.
struct Descriptor {
    explicit Descriptor(const std::string& path) : number(::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NOCTTY)) {}
    ~Descriptor() {
        if (number >= 0) ::close(number);
    }
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;
    int number;
};

/// Reads up to `limit` bytes; false on a read error.
bool readUpTo(int descriptor, std::string& content, std::size_t limit) {
    constexpr std::size_t kStep = std::size_t{1} << 18;
    std::size_t filled = 0;
    content.clear();
    while (filled < limit) {
        if (content.size() - filled < kStep) content.resize(std::min(limit, std::max(filled + kStep, filled * 2)));
        const ssize_t n =
            ::read(descriptor, content.data() + filled, std::min(content.size() - filled, limit - filled));
        if (n < 0 && errno == EINTR) continue;
        if (n < 0) return false;
        if (n == 0) break;
        filled += static_cast<std::size_t>(n);
    }
    content.resize(filled);
    return true;
}

}  // namespace

MappedFile::~MappedFile() { close(); }

void MappedFile::close() {
    if (mapped_) ::munmap(const_cast<char*>(data_), size_);
    data_ = "";
    size_ = 0;
    mapped_ = false;
    content_.clear();
}

std::string MappedFile::open(const std::string& path) {
    close();
    const std::string refusal = "Cannot open file: " + path;
    const Descriptor file(path);
    struct stat info {};
    if (file.number < 0 || ::fstat(file.number, &info) != 0 || S_ISDIR(info.st_mode)) return refusal;
    // Files of the kernel's own file systems say that they are empty, and are not.
    if (S_ISREG(info.st_mode) && info.st_size > 0) {
        const auto size = static_cast<std::size_t>(info.st_size);
        void* memory = ::mmap(nullptr, size, PROT_READ, MAP_PRIVATE, file.number, 0);
        if (memory != MAP_FAILED) {
            ::madvise(memory, size, MADV_SEQUENTIAL);
            data_ = static_cast<const char*>(memory);
            size_ = size;
            mapped_ = true;
            return {};
        }
    }
    if (!readUpTo(file.number, content_, kLargestStream) || content_.size() >= kLargestStream) {
        content_.clear();
        return refusal;
    }
    data_ = content_.data();
    size_ = content_.size();
    return {};
}

std::string readFile(const std::string& path, std::string& content, std::size_t limit) {
    const Descriptor file(path);
    struct stat info {};
    if (file.number < 0 || ::fstat(file.number, &info) != 0 || S_ISDIR(info.st_mode) ||
        !readUpTo(file.number, content, limit))
        return "Cannot open file: " + path;
    return {};
}

}  // namespace kova::io
