#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/mount.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <filesystem>
#include <functional>

#include "io/file_content.hpp"
#include "io/save.hpp"

namespace kova::io {
namespace {

namespace fs = std::filesystem;

/// A folder with a drawing ("one") and its backup ("zero").
class SaveTransaction : public testing::Test {
protected:
    SaveTransaction() {
        char name[] = "/tmp/kova_save_XXXXXX";
        folder_ = ::mkdtemp(name);
    }
    ~SaveTransaction() override {
        Save::probe() = {};
        for (const std::string& mounted : mounted_) ::umount2(mounted.c_str(), MNT_DETACH);
        fs::remove_all(folder_);
    }

    std::string at(std::string_view name) const { return (folder_ / name).string(); }
    std::string content(std::string_view name) const {
        std::string text;
        EXPECT_EQ(readFile(at(name), text), "");
        return text;
    }
    void fill() const {
        for (const auto& entry : fs::directory_iterator(folder_)) fs::remove_all(entry);
        ASSERT_EQ(saveFile(at("a.dwg"), "one"), "");
        ASSERT_EQ(saveFile(at("a.bak"), "zero"), "");
    }
    std::size_t fileCount() const {
        return static_cast<std::size_t>(std::distance(fs::directory_iterator(folder_), fs::directory_iterator()));
    }
    /// Saves in a process of its own, which `before` prepares. What waitpid says; exit status 0: saved.
    int saveElsewhere(const std::string& text, const std::function<void()>& before) const {
        const pid_t child = ::fork();
        if (child == 0) {
            before();
            ::_exit(saveFile(at("a.dwg"), text, Backup::Keep).empty() ? 0 : 1);
        }
        int status = 0;
        ::waitpid(child, &status, 0);
        return status;
    }
    bool mount(const char* source, const std::string& target, const char* type, unsigned long flags, const char* data) {
        if (::mount(source, target.c_str(), type, flags, data) != 0) return false;
        mounted_.push_back(target);
        return true;
    }

    fs::path folder_;
    std::vector<std::string> mounted_;
};

/// What file systems may lack.
const Save::Probe kWorlds[] = {{},
                               {nullptr, false, true, true},
                               {nullptr, true, false, true},
                               {nullptr, true, true, false},
                               {nullptr, false, false, false}};

TEST_F(SaveTransaction, KilledAtAnyStepLeavesWholeFiles) {
    const std::string text(300'000, '2');
    for (const Save::Probe& world : kWorlds)
        for (int step = 0; step <= static_cast<int>(Save::Step::Done); ++step) {
            SCOPED_TRACE(testing::Message() << "step " << step << ", world " << &world - kWorlds);
            Save::probe() = world;
            fill();
            const int status = saveElsewhere(text, [&] {
                Save::probe().step = [&](Save::Step reached) {
                    if (static_cast<int>(reached) == step) ::kill(::getpid(), SIGKILL);
                };
            });
            ASSERT_TRUE(WIFSIGNALED(status));
            const std::string now = content("a.dwg"), backup = content("a.bak");
            EXPECT_TRUE(now == "one" || now == text);
            EXPECT_TRUE(backup == "zero" || backup == "one");
            EXPECT_EQ(now == text, step >= static_cast<int>(Save::Step::Replaced));
            if (now == text && world.exchange) {
                EXPECT_EQ(backup, "one");
            }
            // What it left behind goes with the next save, and that saves.
            EXPECT_EQ(saveFile(at("a.dwg"), "three", Backup::Keep), "");
            EXPECT_EQ(content("a.dwg"), "three");
            EXPECT_EQ(content("a.bak"), now);
            EXPECT_EQ(fileCount(), 2U);
        }
}

TEST_F(SaveTransaction, AnUnfinishedFileHasNoNameWhereThatCanBe) {
    fill();
    Save save(at("a.dwg"));
    ASSERT_EQ(save.open(), "");
    if (fileCount() != 2U) GTEST_SKIP() << "this file system gives every file a name";
    save.bytes().write("new", 3);
    EXPECT_EQ(save.commit(), "");
    EXPECT_EQ(content("a.dwg"), "new");
}

TEST_F(SaveTransaction, LivingSavesOfOneFileDoNotMeet) {
    for (const Save::Probe& world : kWorlds) {
        Save::probe() = world;
        fill();
        Save first(at("a.dwg"), Backup::Keep), second(at("a.dwg"), Backup::Keep);
        ASSERT_EQ(first.open(), "");
        ASSERT_EQ(second.open(), "");
        EXPECT_TRUE(first.bytes().write("first", 5));
        EXPECT_TRUE(second.bytes().write("second", 6));
        EXPECT_EQ(first.commit(), "");
        EXPECT_EQ(content("a.dwg"), "first");
        EXPECT_EQ(content("a.bak"), "one");
        EXPECT_EQ(second.commit(), "");
        EXPECT_EQ(content("a.dwg"), "second");
        EXPECT_EQ(content("a.bak"), "first");
        EXPECT_EQ(fileCount(), 2U);
    }
}

TEST_F(SaveTransaction, AFullDiskChangesNothing) {
    for (const Save::Probe& world : kWorlds) {
        Save::probe() = world;
        fill();
        const int status = saveElsewhere(std::string(200'000, '2'), [] {
            std::signal(SIGXFSZ, SIG_IGN);
            const rlimit most{100'000, 100'000};
            ::setrlimit(RLIMIT_FSIZE, &most);
        });
        EXPECT_EQ(WEXITSTATUS(status), 1);
        EXPECT_EQ(content("a.dwg"), "one");
        EXPECT_EQ(content("a.bak"), "zero");
        EXPECT_EQ(fileCount(), 2U);
    }
    if (!mount("tmpfs", folder_.string(), "tmpfs", 0, "size=400k")) GTEST_SKIP() << "no file system can be mounted";
    for (const Save::Probe& world : kWorlds) {
        Save::probe() = world;
        fill();
        const std::string old(200'000, '1');
        ASSERT_EQ(saveFile(at("a.dwg"), old), "");
        EXPECT_EQ(saveFile(at("a.dwg"), std::string(300'000, '2'), Backup::Keep),
                  "Cannot write file: " + at("a.dwg") + ": No space left on device");
        EXPECT_EQ(content("a.dwg"), old);
        EXPECT_EQ(content("a.bak"), "zero");
        EXPECT_EQ(fileCount(), 2U);
    }
}

TEST_F(SaveTransaction, AFailureAtTheLastStepPutsTheBackupBack) {
    for (const Save::Probe& world : kWorlds) {
        fill();
        Save::probe() = world;
        Save::probe().step = [&](Save::Step step) {
            if (step != Save::Step::BackupPlaced) return;
            fs::rename(at("a.dwg"), at("moved"));
            fs::create_directory(at("a.dwg"));
        };
        EXPECT_NE(saveFile(at("a.dwg"), "two", Backup::Keep), "");
        EXPECT_EQ(content("a.bak"), "zero");
        EXPECT_EQ(content("moved"), "one");
        EXPECT_EQ(fileCount(), 3U);
    }
}

TEST_F(SaveTransaction, BackupsStandBesideTheFileThatALinkNames) {
    fs::create_directory(at("sub"));
    ASSERT_EQ(saveFile(at("sub/real.dwg"), "old"), "");
    fs::create_symlink("sub/real.dwg", at("link.dwg"));
    Save save(at("link.dwg"), Backup::Keep);
    ASSERT_EQ(save.open(), "");
    EXPECT_TRUE(save.replaces());
    save.bytes().write("new", 3);
    EXPECT_EQ(save.commit(), "");
    EXPECT_TRUE(fs::is_symlink(at("link.dwg")));
    EXPECT_EQ(content("sub/real.dwg"), "new");
    EXPECT_EQ(content("sub/real.bak"), "old");
    EXPECT_EQ(save.backupPath(), at("sub/real.bak"));
    // A hidden file has no extension, and a backup keeps none of itself.
    ASSERT_EQ(saveFile(at(".hidden"), "x"), "");
    ASSERT_EQ(saveFile(at(".hidden"), "y", Backup::Keep), "");
    EXPECT_EQ(content(".hidden.bak"), "x");
    ASSERT_EQ(saveFile(at("sub/real.bak"), "newer", Backup::Keep), "");
    EXPECT_EQ(content("sub/real.bak"), "newer");
}

TEST_F(SaveTransaction, ABackupThatCannotBeKeptIsTold) {
    ASSERT_EQ(saveFile(at("a.dwg"), "one"), "");
    fs::create_directory(at("a.bak"));
    Save save(at("a.dwg"), Backup::Keep);
    ASSERT_EQ(save.open(), "");
    save.bytes().write("two", 3);
    EXPECT_EQ(save.commit(), "");
    EXPECT_EQ(content("a.dwg"), "two");
    EXPECT_EQ(save.backupTrouble(), "No backup of " + at("a.dwg") + " was kept: Is a directory.");
    EXPECT_EQ(save.backupPath(), "");
    EXPECT_EQ(fileCount(), 2U);
}

TEST_F(SaveTransaction, AMountPointIsWrittenOverAndItsBackupIsACopy) {
    fill();
    ASSERT_EQ(saveFile(at("elsewhere"), "one, and longer"), "");
    if (!mount(at("elsewhere").c_str(), at("a.dwg"), nullptr, MS_BIND, nullptr))
        GTEST_SKIP() << "no file can be mounted";
    EXPECT_EQ(saveFile(at("a.dwg"), "two", Backup::Keep), "");
    EXPECT_EQ(content("a.dwg"), "two");
    EXPECT_EQ(content("elsewhere"), "two");
    EXPECT_EQ(content("a.bak"), "one, and longer");
    EXPECT_EQ(fileCount(), 3U);
}

TEST_F(SaveTransaction, AClosedFolder) {
    fill();
    ::chmod(folder_.c_str(), 0555);
    for (const char* name : {"a.dwg", "a.bak"}) {
        ::chmod(at(name).c_str(), 0666);
    }
    const auto asAnybody = [] {
        ::setenv("TMPDIR", "/tmp", 1);
        if (::geteuid() == 0 && ::setresuid(65534, 65534, 65534) != 0) ::_exit(9);
    };
    EXPECT_EQ(WEXITSTATUS(saveElsewhere(std::string(100'000, '2'), asAnybody)), 0);
    EXPECT_EQ(content("a.dwg"), std::string(100'000, '2'));
    EXPECT_EQ(content("a.bak"), "zero");
    // Given up before the end it is as it was, although it is the file itself that will be written.
    const auto dying = [&] {
        asAnybody();
        Save::probe().step = [](Save::Step step) {
            if (step == Save::Step::Synced) ::kill(::getpid(), SIGKILL);
        };
    };
    EXPECT_TRUE(WIFSIGNALED(saveElsewhere("three", dying)));
    EXPECT_EQ(content("a.dwg"), std::string(100'000, '2'));
    // A protected file stays, whoever owns the folder.
    ::chmod(at("a.dwg").c_str(), 0444);
    EXPECT_EQ(WEXITSTATUS(saveElsewhere("three", asAnybody)), 1);
    EXPECT_EQ(content("a.dwg"), std::string(100'000, '2'));
    ::chmod(folder_.c_str(), 0755);
    EXPECT_EQ(fileCount(), 2U);
}

}  // namespace
}  // namespace kova::io
