#pragma once

#include <sys/stat.h>

#include <functional>
#include <string>
#include <string_view>

#include "io/byte_sink.hpp"
#include "io/scratch_file.hpp"

namespace kova::io {

/// Whether the file that a save replaces stays beside the new one as NAME.bak.
enum class Backup : bool { None, Keep };

/// A file being saved, as one transaction: until the new file is whole and on disk nothing of the old one and of its
/// backup is touched, and a save that fails, or is given up, leaves both as they were. A process that dies in between
/// leaves each of them whole; where NAME is new already, NAME.bak is what it was before.
///
/// A symbolic link is followed once, at the beginning, so that the file it names is replaced and not the link; the
/// backup stands beside that file. A replaced file keeps its permissions, and its owner where that is allowed. The new
/// file has no name until it takes its place, or, where the file system cannot do that, a hidden one; what dead
/// processes left under such names goes with the next save. A target that is no regular file (a terminal, a pipe) is
/// written as the bytes come; one that cannot be replaced (its folder takes no new file, it is a mount point) is written
/// over at the end, its room reserved first.
///
///     Save save(path, Backup::Keep);
///     if (std::string error = save.open(); !error.empty()) return error;
///     save.bytes().write(data, size);  // as often as needed; the first failure is kept
///     return save.commit();
class Save final : private ByteSink {
public:
    explicit Save(std::string path, Backup backup = Backup::None) : path_(std::move(path)), backup_(backup) {}
    ~Save() override { discard(); }
    Save(const Save&) = delete;
    Save& operator=(const Save&) = delete;

    /// Error text ("Cannot open file for writing: " + path), empty on success.
    std::string open();
    /// Takes the file's bytes and writes them through: callers gather them into large pieces.
    ByteSink& bytes() { return *this; }
    /// Brings the file to disk and puts it in the target's place. Error text, empty on success.
    std::string commit();
    /// Gives the save up; also done by the destructor.
    void discard();

    const std::string& path() const { return path_; }
    /// Known after open(): a regular file stands there, which the save replaces.
    bool replaces() const { return exists_; }
    /// Known after commit(): the file as which the replaced one is kept; empty: it is not. After a failure it is set
    /// only when the old file had to be written over and is damaged.
    const std::string& backupPath() const { return keptAs_; }
    /// Known after commit(): one line when a backup was wanted and could not be kept; the save went on without.
    const std::string& backupTrouble() const { return trouble_; }

    /// The moments of a save, for tests that end one there.
    enum class Step { Opened, Synced, Named, BackupMade, BackupPlaced, Replaced, Done };
    /// What tests may watch and turn off. `step` is called at each step; the others stand for what file systems lack.
    struct Probe {
        std::function<void(Step)> step;
        bool unnamedFiles = true;
        bool hardLinks = true;
        bool exchange = true;
    };
    static Probe& probe();

private:
    enum class Mode { Closed, Unnamed, Named, Scratch, Special };
    /// How far the backup is.
    enum class Kept { No, Aside, Exchanged, Placed };

    bool write(const char* data, std::size_t size) override;
    bool openBeside();
    bool openNamed();
    bool giveName();
    void takeOver(const struct ::stat& old);
    /// 0 or errno.
    int replace();
    int writeOver();
    void keepBackup(bool byCopy);
    void undoBackup();
    void finishBackup();
    void troubleWith(int code);
    std::string slot(int number) const;
    std::string failed(int code) const;

    std::string path_;  ///< as the caller gave it
    Backup backup_;
    std::string target_;  ///< links followed
    std::string folder_;  ///< of the target, with its slash; empty: the current one
    Mode mode_ = Mode::Closed;
    bool exists_ = false;
    int descriptor_ = -1;
    ScratchFile scratch_;
    std::string name_;  ///< hidden name of the new file, while it has one
    int error_ = 0;     ///< errno of the first failed write

    Kept kept_ = Kept::No;
    std::string aside_;  ///< hidden name of the old file, on its way to the backup's name
    std::string backupFile_;
    std::string keptAs_;
    std::string trouble_;
    bool damaged_ = false;  ///< writing over the target failed halfway
};

/// Saves a whole text at once. Error text, empty on success.
std::string saveFile(const std::string& path, std::string_view content, Backup backup = Backup::None);

}  // namespace kova::io
