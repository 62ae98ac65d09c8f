#include "io/atomic_file.hpp"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <random>

namespace kova::io {

namespace {

constexpr int kMaxLinks = 40;
constexpr std::size_t kLargestWrite = std::size_t{1} << 30;

std::string folderOf(const std::string& path) {
    const std::size_t slash = path.rfind('/');
    return slash == std::string::npos ? std::string() : path.substr(0, slash + 1);
}

bool isBelow(const std::string& path, std::string_view folder) { return path.compare(0, folder.size(), folder) == 0; }

/// The links in these folders stand for open files, which may have no name of their own.
bool namesOpenFile(const std::string& path) { return isBelow(path, "/proc/") || isBelow(path, "/dev/fd/"); }

/// The path with links in its last part followed; the target need not exist. Empty when the links run in a circle.
std::string followLinks(std::string path) {
    for (int i = 0; i < kMaxLinks; ++i) {
        struct stat info {};
        if (::lstat(path.c_str(), &info) != 0 || !S_ISLNK(info.st_mode)) return path;
        char text[4096];
        const ssize_t length = ::readlink(path.c_str(), text, sizeof text);
        if (length <= 0 || length == static_cast<ssize_t>(sizeof text)) return {};
        const std::string link(text, static_cast<std::size_t>(length));
        if (namesOpenFile(path)) return path;
        path = link.front() == '/' ? link : folderOf(path) + link;
    }
    return {};
}

bool writeAll(int descriptor, const char* data, std::size_t size) {
    while (size > 0) {
        const ssize_t n = ::write(descriptor, data, std::min(size, kLargestWrite));
        if (n < 0) {
            if (errno == EINTR) continue;
            return false;
        }
        data += n;
        size -= static_cast<std::size_t>(n);
    }
    return true;
}

/// Pipes and terminals have nothing to bring to disk; that is no failure.
bool sync(int descriptor) { return ::fsync(descriptor) == 0 || errno == EINVAL || errno == ENOTSUP || errno == EROFS; }

std::string temporaryName(const std::string& target) {
    static std::atomic<std::uint32_t> serial{0};
    static const std::uint64_t seed =
        (static_cast<std::uint64_t>(std::random_device{}()) << 32) ^ std::random_device{}();
    const std::string folder = folderOf(target);
    char tail[64];
    std::snprintf(tail, sizeof tail, ".%llx-%x.tmp",
                  static_cast<unsigned long long>(seed ^ (static_cast<std::uint64_t>(::getpid()) << 20)), ++serial);
    // The longest file name is 255 bytes on the usual file systems.
    return folder + "." + target.substr(folder.size(), 200) + tail;
}

}  // namespace

AtomicFile::~AtomicFile() { discard(); }

std::string AtomicFile::open(const std::string& path) {
    discard();
    path_ = path;
    error_ = 0;
    const std::string refusal = "Cannot open file for writing: " + path;
    target_ = followLinks(path);
    if (target_.empty()) return refusal;

    struct stat info {};
    const bool exists = ::stat(target_.c_str(), &info) == 0;
    if (exists && S_ISDIR(info.st_mode)) return refusal;
    // Replacing needs no permission on the file itself, but who protected it means it.
    if (exists && ::access(target_.c_str(), W_OK) != 0) return refusal;

    const bool special = exists && (!S_ISREG(info.st_mode) || namesOpenFile(target_));
    if (!special) {
        if (openTemporary(exists, info.st_mode, info.st_uid, info.st_gid)) return {};
        if (errno != EACCES && errno != EPERM && errno != EROFS) return refusal;
    }
    descriptor_ = ::open(target_.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC | O_NOCTTY, 0666);
    return descriptor_ < 0 ? refusal : std::string();
}

bool AtomicFile::openTemporary(bool targetExists, unsigned mode, unsigned owner, unsigned group) {
    for (int attempt = 0; attempt < 16; ++attempt) {
        temporary_ = temporaryName(target_);
        descriptor_ = ::open(temporary_.c_str(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
        if (descriptor_ >= 0) break;
        if (errno != EEXIST) break;
    }
    if (descriptor_ < 0) {
        const int reason = errno;
        temporary_.clear();
        errno = reason;
        return false;
    }
    if (targetExists) {
        struct stat own {};
        // The owner first: changing it may clear permission bits.
        if (::fstat(descriptor_, &own) == 0 && (own.st_uid != owner || own.st_gid != group) &&
            ::fchown(descriptor_, owner, group) != 0)
            mode &= 0777U;
        // A file system without permissions refuses this; the file is still good.
        static_cast<void>(::fchmod(descriptor_, mode & 07777U) == 0);
    }
    return true;
}

bool AtomicFile::write(const char* data, std::size_t size) {
    if (descriptor_ < 0 || error_ != 0) return false;
    if (writeAll(descriptor_, data, size)) return true;
    error_ = errno;
    return false;
}

std::string AtomicFile::commit() {
    if (descriptor_ < 0) return failed(error_ != 0 ? error_ : EBADF);
    if (error_ == 0 && !sync(descriptor_)) error_ = errno;
    std::string message;
    if (error_ == 0 && !temporary_.empty() && ::rename(temporary_.c_str(), target_.c_str()) != 0) {
        // The target cannot be replaced (a mount point, a sticky folder) but perhaps overwritten.
        message = copyOverTarget();
    } else if (error_ == 0 && !temporary_.empty()) {
        temporary_.clear();
        const std::string folder = folderOf(target_);
        const int handle = ::open(folder.empty() ? "." : folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
        if (handle >= 0) {
            static_cast<void>(sync(handle));
            ::close(handle);
        }
    }
    // Network file systems report a full disk only here.
    const bool closed = ::close(descriptor_) == 0;
    const int reason = errno;
    descriptor_ = -1;
    if (error_ == 0 && !closed) error_ = reason;
    if (error_ != 0 && message.empty()) message = failed(error_);
    discard();
    return message;
}

std::string AtomicFile::copyOverTarget() {
    const int out = ::open(target_.c_str(), O_WRONLY | O_TRUNC | O_CLOEXEC);
    if (out < 0) return failed(errno);
    std::string buffer(std::size_t{1} << 20, '\0');
    bool good = ::lseek(descriptor_, 0, SEEK_SET) == 0;
    while (good) {
        const ssize_t n = ::read(descriptor_, buffer.data(), buffer.size());
        if (n == 0) break;
        if (n < 0 && errno == EINTR) continue;
        good = n > 0 && writeAll(out, buffer.data(), static_cast<std::size_t>(n));
    }
    good = good && sync(out);
    const int reason = errno;
    ::close(out);
    return good ? std::string() : failed(reason);
}

void AtomicFile::discard() {
    if (descriptor_ >= 0) ::close(descriptor_);
    descriptor_ = -1;
    if (!temporary_.empty()) ::unlink(temporary_.c_str());
    temporary_.clear();
}

std::string AtomicFile::failed(int code) const { return "Cannot write file: " + path_ + ": " + std::strerror(code); }

std::string saveFile(const std::string& path, std::string_view content) {
    AtomicFile file;
    if (std::string error = file.open(path); !error.empty()) return error;
    file.write(content);
    return file.commit();
}

}  // namespace kova::io
