#include "io/save.hpp"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>

namespace kova::io {

namespace {

constexpr int kMaxLinks = 40;
constexpr int kSlots = 64;

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

/// Pipes and terminals have nothing to bring to disk; that is no failure.
bool sync(int descriptor) { return ::fsync(descriptor) == 0 || errno == EINVAL || errno == ENOTSUP || errno == EROFS; }

std::string descriptorPath(int descriptor) { return "/proc/self/fd/" + std::to_string(descriptor); }

/// A lock tells others that the process that made a hidden file lives; the kernel drops it with the process. False when
/// somebody else holds it. File systems without locks let everybody have it, and clear nothing.
bool lock(int descriptor) { return ::flock(descriptor, LOCK_EX | LOCK_NB) == 0 || errno != EWOULDBLOCK; }

/// Removes a hidden file that no living process holds.
void clearLeftover(const std::string& name) {
    const int descriptor = ::open(name.c_str(), O_RDWR | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC);
    if (descriptor < 0) return;
    struct stat held {}, named {};
    // Who has the lock on the file that has the name is the only one who may take the name away.
    if (::flock(descriptor, LOCK_EX | LOCK_NB) == 0 && ::fstat(descriptor, &held) == 0 &&
        ::lstat(name.c_str(), &named) == 0 && held.st_ino == named.st_ino && held.st_dev == named.st_dev &&
        S_ISREG(held.st_mode))
        ::unlink(name.c_str());
    ::close(descriptor);
}

/// Copies what a descriptor holds from its beginning. 0 or errno.
int copyAll(int from, int to) {
    std::string buffer(std::size_t{1} << 20, '\0');
    if (::lseek(from, 0, SEEK_SET) < 0) return errno;
    for (;;) {
        const ssize_t n = ::read(from, buffer.data(), buffer.size());
        if (n == 0) return 0;
        if (n < 0 && errno == EINTR) continue;
        if (n < 0 || !writeAll(to, buffer.data(), static_cast<std::size_t>(n))) return errno;
    }
}

/// Copies a file under a new name, to disk, with its permissions. 0 or errno; then there is no copy.
int copyFile(const std::string& from, const std::string& to) {
    const int in = ::open(from.c_str(), O_RDONLY | O_CLOEXEC);
    if (in < 0) return errno;
    const int out = ::open(to.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0600);
    int code = out < 0 ? errno : copyAll(in, out);
    struct stat info {};
    if (code == 0 && ::fstat(in, &info) == 0) static_cast<void>(::fchmod(out, info.st_mode & 0777U) == 0);
    if (code == 0 && !sync(out)) code = errno;
    if (out >= 0) ::close(out);
    ::close(in);
    if (code != 0 && out >= 0) ::unlink(to.c_str());
    return code;
}

/// Exchanges two names in one step. False with errno set where that cannot be done.
bool exchangeNames(const std::string& a, const std::string& b) {
    if (!Save::probe().exchange) {
        errno = EINVAL;
        return false;
    }
    return ::renameat2(AT_FDCWD, a.c_str(), AT_FDCWD, b.c_str(), RENAME_EXCHANGE) == 0;
}

void syncFolder(const std::string& folder) {
    const int handle = ::open(folder.empty() ? "." : folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (handle < 0) return;
    static_cast<void>(sync(handle));
    ::close(handle);
}

void reached(Save::Step step) {
    if (Save::probe().step) Save::probe().step(step);
}

}  // namespace

Save::Probe& Save::probe() {
    static Probe probe;
    return probe;
}

std::string Save::slot(int number) const {
    // The longest file name is 255 bytes on the usual file systems.
    return folder_ + "." + target_.substr(folder_.size(), 200) + ".save" + std::to_string(number) + ".tmp";
}

std::string Save::open() {
    discard();
    error_ = 0;
    exists_ = damaged_ = false;
    keptAs_.clear();
    trouble_.clear();
    const std::string refusal = "Cannot open file for writing: " + path_;
    target_ = followLinks(path_);
    folder_ = folderOf(target_);
    if (target_.empty()) return refusal;

    struct stat info {};
    const bool there = ::stat(target_.c_str(), &info) == 0;
    if (there && S_ISDIR(info.st_mode)) return refusal;
    // Replacing needs no permission on the file itself, but who protected it means it.
    if (there && ::access(target_.c_str(), W_OK) != 0) return refusal;

    if (there && (!S_ISREG(info.st_mode) || namesOpenFile(target_))) {
        // A pipe that nobody comes to read is refused after two seconds.
        for (int waits = 0; waits < 200; ++waits) {
            descriptor_ = ::open(target_.c_str(), O_WRONLY | O_TRUNC | O_CLOEXEC | O_NOCTTY | O_NONBLOCK);
            if (descriptor_ >= 0 || errno != ENXIO) break;
            ::usleep(10'000);
        }
        if (descriptor_ < 0) return refusal;
        ::fcntl(descriptor_, F_SETFL, ::fcntl(descriptor_, F_GETFL) & ~O_NONBLOCK);
        mode_ = Mode::Special;
        return {};
    }
    exists_ = there;
    if (openBeside()) {
        if (exists_) takeOver(info);
    } else {
        const bool closed = errno == EACCES || errno == EPERM || errno == EROFS;
        if (!exists_ || !closed || !scratch_.create("kovacad_save_", ".tmp")) return refusal;
        mode_ = Mode::Scratch;
    }
    reached(Step::Opened);
    return {};
}

bool Save::openBeside() {
    for (int i = 0; i < kSlots; ++i) {
        struct stat info {};
        if (::lstat(slot(i).c_str(), &info) != 0) break;
        clearLeftover(slot(i));
    }
    if (probe().unnamedFiles) {
        descriptor_ =
            ::open(folder_.empty() ? "." : folder_.c_str(), O_TMPFILE | O_RDWR | O_CLOEXEC, 0666);
        // It gets its name by way of this path.
        if (descriptor_ >= 0 && ::access(descriptorPath(descriptor_).c_str(), F_OK) == 0 && lock(descriptor_)) {
            mode_ = Mode::Unnamed;
            return true;
        }
        if (descriptor_ >= 0) ::close(descriptor_);
        descriptor_ = -1;
    }
    return openNamed();
}

bool Save::openNamed() {
    for (int i = 0; i < kSlots; ++i) {
        const std::string name = slot(i);
        descriptor_ = ::open(name.c_str(), O_RDWR | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, 0666);
        if (descriptor_ < 0 && errno == EEXIST) continue;
        if (descriptor_ < 0) return false;
        struct stat info {};
        // Somebody may take it for a leftover before it is locked.
        if (lock(descriptor_) && ::fstat(descriptor_, &info) == 0 && info.st_nlink > 0) {
            name_ = name;
            mode_ = Mode::Named;
            return true;
        }
        ::close(descriptor_);
        descriptor_ = -1;
    }
    errno = EEXIST;
    return false;
}

void Save::takeOver(const struct ::stat& old) {
    struct stat own {};
    unsigned mode = old.st_mode & 07777U;
    // The owner first: changing it may clear permission bits.
    if (::fstat(descriptor_, &own) == 0 && (own.st_uid != old.st_uid || own.st_gid != old.st_gid) &&
        ::fchown(descriptor_, old.st_uid, old.st_gid) != 0)
        mode &= 0777U;
    // A file system without permissions refuses this; the file is still good.
    static_cast<void>(::fchmod(descriptor_, mode) == 0);
}

bool Save::write(const char* data, std::size_t size) {
    if (mode_ == Mode::Closed || error_ != 0) return false;
    if (mode_ == Mode::Scratch) {
        if (!scratch_.write(data, size)) error_ = scratch_.error();
    } else if (!writeAll(descriptor_, data, size)) {
        error_ = errno;
    }
    return error_ == 0;
}

std::string Save::commit() {
    if (mode_ == Mode::Closed) return failed(error_ != 0 ? error_ : EBADF);
    if (error_ == 0 && mode_ != Mode::Scratch && !sync(descriptor_)) error_ = errno;
    reached(Step::Synced);
    if (error_ == 0 && mode_ == Mode::Scratch) {
        if (backup_ == Backup::Keep) trouble_ = "its folder takes no new file";
        error_ = writeOver();
    } else if (error_ == 0 && mode_ != Mode::Special) {
        error_ = replace();
    }
    if (mode_ == Mode::Special) {
        // What buffers between here and there may report a failure only now.
        if (::close(descriptor_) != 0 && error_ == 0) error_ = errno;
        descriptor_ = -1;
    }
    if (!trouble_.empty()) trouble_ = "No backup of " + target_ + " was kept: " + trouble_ + ".";
    const std::string message = error_ != 0 ? failed(error_) : std::string();
    discard();
    if (message.empty()) reached(Step::Done);
    return message;
}

bool Save::giveName() {
    const std::string own = descriptorPath(descriptor_);
    const auto link = [&](const std::string& name) {
        return ::linkat(AT_FDCWD, own.c_str(), AT_FDCWD, name.c_str(), AT_SYMLINK_FOLLOW) == 0;
    };
    for (int i = 0; i < kSlots; ++i) {
        clearLeftover(slot(i));
        if (link(slot(i))) {
            name_ = slot(i);
            return true;
        }
        if (errno != EEXIST) return false;
    }
    return false;
}

int Save::replace() {
    if (mode_ == Mode::Unnamed && !giveName()) return errno;
    reached(Step::Named);
    // Nobody else uses this name while the new file has its own, which is locked: what stands there was left behind.
    aside_ = name_ + "~";
    ::unlink(aside_.c_str());
    if (backup_ == Backup::Keep) keepBackup(false);
    if (::rename(name_.c_str(), target_.c_str()) == 0) {
        name_.clear();
        reached(Step::Replaced);
        finishBackup();
        syncFolder(folder_);
        return 0;
    }
    const int reason = errno;
    undoBackup();
    // A mount point, or somebody else's file in a folder that all may write to: it can perhaps be written over. The
    // backup must then be a file of its own.
    if (reason != EBUSY && reason != EPERM && reason != EACCES && reason != EXDEV) return reason;
    if (backup_ == Backup::Keep) keepBackup(true);
    const int code = writeOver();
    if (code == 0 || damaged_)
        finishBackup();
    else
        undoBackup();
    return code;
}

int Save::writeOver() {
    const int source = descriptor_;
    const int out = ::open(target_.c_str(), O_WRONLY | O_CLOEXEC);
    if (out < 0) return errno;
    struct stat old {};
    int code = ::fstat(out, &old) == 0 ? 0 : errno;
    std::string_view bytes;
    off_t size = 0;
    if (mode_ == Mode::Scratch) {
        if (!scratch_.map()) code = scratch_.error();
        bytes = scratch_.view();
        size = static_cast<off_t>(bytes.size());
    } else {
        struct stat own {};
        if (::fstat(source, &own) != 0) code = errno;
        size = own.st_size;
    }
    // With the room reserved, a full disk is found out before a byte of the old file is gone.
    if (code == 0 && size > old.st_size) {
        const int reserved = ::posix_fallocate(out, old.st_size, size - old.st_size);
        if (reserved != 0 && reserved != EOPNOTSUPP && reserved != EINVAL) {
            code = reserved;
            static_cast<void>(::ftruncate(out, old.st_size) == 0);
        }
    }
    if (code == 0) {
        if (mode_ == Mode::Scratch)
            code = writeAll(out, bytes.data(), bytes.size()) ? 0 : errno;
        else
            code = copyAll(source, out);
        if (code == 0 && ::ftruncate(out, size) != 0) code = errno;
        if (code == 0 && !sync(out)) code = errno;
        damaged_ = code != 0;
    }
    ::close(out);
    return code;
}

// The backup ------------------------------------------------------------------------------------------------------

void Save::troubleWith(int code) { trouble_ = std::strerror(code); }

void Save::keepBackup(bool byCopy) {
    kept_ = Kept::No;
    trouble_.clear();
    struct stat old {}, before {};
    if (::lstat(target_.c_str(), &old) != 0 || !S_ISREG(old.st_mode)) return;
    const std::size_t dot = target_.rfind('.');
    // A leading dot hides a file and begins no extension.
    const bool extension = dot != std::string::npos && dot > folder_.size();
    backupFile_ = (extension ? target_.substr(0, dot) : target_) + ".bak";
    if (backupFile_ == target_) return;
    const bool taken = ::lstat(backupFile_.c_str(), &before) == 0;
    if (taken && S_ISDIR(before.st_mode)) return troubleWith(EISDIR);

    const bool linked = !byCopy && probe().hardLinks && ::link(target_.c_str(), aside_.c_str()) == 0;
    if (!linked)
        if (const int code = copyFile(target_, aside_); code != 0) return troubleWith(code);
    kept_ = Kept::Aside;
    reached(Step::BackupMade);
    if (taken) {
        // Where names cannot be exchanged, the older backup stays until the new file has its place.
        if (exchangeNames(aside_, backupFile_)) kept_ = Kept::Exchanged;
    } else if (::rename(aside_.c_str(), backupFile_.c_str()) == 0) {
        kept_ = Kept::Placed;
    }
    reached(Step::BackupPlaced);
}

void Save::undoBackup() {
    // An older backup that cannot go back stays under its hidden name.
    if (kept_ == Kept::Aside || (kept_ == Kept::Exchanged && exchangeNames(aside_, backupFile_))) ::unlink(aside_.c_str());
    if (kept_ == Kept::Placed) ::unlink(backupFile_.c_str());
    kept_ = Kept::No;
}

void Save::finishBackup() {
    if (kept_ == Kept::No) return;
    if (kept_ == Kept::Exchanged) ::unlink(aside_.c_str());
    if (kept_ == Kept::Aside && ::rename(aside_.c_str(), backupFile_.c_str()) != 0) {
        troubleWith(errno);
        ::unlink(aside_.c_str());
    } else {
        keptAs_ = backupFile_;
    }
    kept_ = Kept::No;
}

void Save::discard() {
    if (descriptor_ >= 0 && !name_.empty()) ::unlink(name_.c_str());
    name_.clear();
    if (descriptor_ >= 0) ::close(descriptor_);
    descriptor_ = -1;
    mode_ = Mode::Closed;
}

std::string Save::failed(int code) const { return "Cannot write file: " + path_ + ": " + std::strerror(code); }

std::string saveFile(const std::string& path, std::string_view content, Backup backup) {
    Save save(path, backup);
    if (std::string error = save.open(); !error.empty()) return error;
    save.bytes().write(content.data(), content.size());
    return save.commit();
}

}  // namespace kova::io
