#include "io/file_content.hpp"

#include <fcntl.h>
#include <poll.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <optional>

namespace kova::io {

namespace {

constexpr std::size_t kLargestStream = std::size_t{4} << 30;
constexpr std::size_t kLargestRead = std::size_t{1} << 30;

constexpr int kPipeWait = 2000;  ///< milliseconds
constexpr int kPipeStep = 50;

/// Closes the descriptor on every way out.
struct Descriptor {
    /// A pipe that nobody writes to does not stop the program: after kPipeWait it counts as one that cannot be opened.
    explicit Descriptor(const std::string& path)
        : number(::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NOCTTY | O_NONBLOCK)) {
        if (number < 0) return;
        struct stat info {};
        if (::fstat(number, &info) == 0 && S_ISFIFO(info.st_mode) && !isServed()) {
            ::close(number);
            number = -1;
            return;
        }
        ::fcntl(number, F_SETFL, ::fcntl(number, F_GETFL) & ~O_NONBLOCK);
    }
    ~Descriptor() {
        if (number >= 0) ::close(number);
    }
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;

    int number;
    std::string early;  ///< what came while it was found out whether somebody writes

private:
    /// Waits until a writer is there, who may then take his time.
    bool isServed() {
        for (int waited = 0; waited < kPipeWait; waited += kPipeStep) {
            pollfd ready{number, POLLIN, 0};
            if (::poll(&ready, 1, kPipeStep) > 0 && (ready.revents & POLLIN) != 0) return true;
            char first = 0;
            const ssize_t n = ::read(number, &first, 1);
            if (n > 0) early.push_back(first);
            if (n > 0 || (n < 0 && errno == EAGAIN)) return true;
        }
        return false;
    }
};

/// Reads until `size` bytes have come or the file ends; gives how many, or nothing on a read error.
std::optional<std::size_t> readBytes(int descriptor, char* to, std::size_t size) {
    std::size_t filled = 0;
    while (filled < size) {
        const ssize_t n = ::read(descriptor, to + filled, std::min(size - filled, kLargestRead));
        if (n < 0 && errno == EINTR) continue;
        if (n < 0) return std::nullopt;
        if (n == 0) break;
        filled += static_cast<std::size_t>(n);
    }
    return filled;
}

/// Reads up to `limit` bytes; false on a read error.
bool readUpTo(const Descriptor& file, std::string& content, std::size_t limit) {
    constexpr std::size_t kStep = std::size_t{1} << 18;
    content = file.early.substr(0, limit);
    std::size_t filled = content.size();
    while (filled < limit) {
        content.resize(std::min(limit, std::max(filled + kStep, filled * 2)));
        const auto n = readBytes(file.number, content.data() + filled, content.size() - filled);
        if (!n) return false;
        filled += *n;
        if (filled < content.size()) break;
    }
    content.resize(filled);
    return true;
}

}  // namespace

FileContent::~FileContent() { close(); }

void FileContent::close() {
    if (reserved_ != 0) ::munmap(const_cast<char*>(data_), reserved_);
    data_ = "";
    size_ = reserved_ = 0;
    stream_.clear();
}

/// Memory that need not be cleared before it is filled, and goes back to the system when it is given up.
bool FileContent::reserve(std::size_t size) {
    void* memory = ::mmap(nullptr, size, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (memory == MAP_FAILED) return false;
    data_ = static_cast<char*>(memory);
    reserved_ = size;
    return true;
}

std::string FileContent::open(const std::string& path) {
    close();
    const std::string refusal = "Cannot open file: " + path;
    const Descriptor file(path);
    struct stat info {};
    if (file.number < 0 || ::fstat(file.number, &info) != 0 || S_ISDIR(info.st_mode)) return refusal;
    // Files of the kernel's own file systems say that they are empty, and are not.
    if (S_ISREG(info.st_mode) && info.st_size > 0) {
        const auto size = static_cast<std::size_t>(info.st_size);
        if (!reserve(size)) return refusal;
        const auto filled = readBytes(file.number, const_cast<char*>(data_), size);
        if (!filled) {
            close();
            return refusal;
        }
        size_ = *filled;
        return {};
    }
    if (!readUpTo(file, stream_, kLargestStream) || stream_.size() >= kLargestStream) {
        stream_.clear();
        return refusal;
    }
    data_ = stream_.data();
    size_ = stream_.size();
    return {};
}

std::string readFile(const std::string& path, std::string& content, std::size_t limit) {
    const Descriptor file(path);
    struct stat info {};
    if (file.number < 0 || ::fstat(file.number, &info) != 0 || S_ISDIR(info.st_mode) ||
        !readUpTo(file, content, limit))
        return "Cannot open file: " + path;
    return {};
}

}  // namespace kova::io
