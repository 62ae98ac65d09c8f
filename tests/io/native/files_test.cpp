#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <thread>

#include "io/content.hpp"
#include "io/file_content.hpp"
#include "io/save.hpp"

namespace kova::io {
namespace {

namespace fs = std::filesystem;

/// A folder of its own for each test.
class Files : public testing::Test {
protected:
    Files() {
        std::string name = (fs::temp_directory_path() / "kova_files_XXXXXX").string();
        folder_ = ::mkdtemp(name.data());
    }
    ~Files() override { fs::remove_all(folder_); }

    std::string at(std::string_view name) const { return (folder_ / name).string(); }
    std::string content(std::string_view name) const {
        std::string text;
        EXPECT_EQ(readFile(at(name), text), "");
        return text;
    }
    std::size_t fileCount() const {
        return static_cast<std::size_t>(std::distance(fs::directory_iterator(folder_), fs::directory_iterator()));
    }

    fs::path folder_;
};

TEST_F(Files, ReplacesAFileAndKeepsItsPermissions) {
    ASSERT_EQ(saveFile(at("a.kvcad"), "old"), "");
    ::chmod(at("a.kvcad").c_str(), 0640);
    {
        Save file(at("a.kvcad"));
        ASSERT_EQ(file.open(), "");
        EXPECT_TRUE(file.bytes().write("new ", 4));
        EXPECT_EQ(content("a.kvcad"), "old");
        EXPECT_TRUE(file.bytes().write("text", 4));
        EXPECT_EQ(file.commit(), "");
    }
    EXPECT_EQ(content("a.kvcad"), "new text");
    struct stat info {};
    ::stat(at("a.kvcad").c_str(), &info);
    EXPECT_EQ(info.st_mode & 0777U, 0640U);
    EXPECT_EQ(fileCount(), 1U);

    const mode_t mask = ::umask(0);
    ::umask(mask);
    ASSERT_EQ(saveFile(at("fresh"), "x"), "");
    ::stat(at("fresh").c_str(), &info);
    EXPECT_EQ(info.st_mode & 0777U, 0666U & ~mask);
}

TEST_F(Files, AGivenUpSaveLeavesNothing) {
    ASSERT_EQ(saveFile(at("a"), "old"), "");
    {
        Save file(at("a"));
        ASSERT_EQ(file.open(), "");
        file.bytes().write("half", 4);
    }
    EXPECT_EQ(content("a"), "old");
    EXPECT_EQ(fileCount(), 1U);
}

TEST_F(Files, AFullDiskIsReported) {
    if (::access("/dev/full", W_OK) != 0) GTEST_SKIP() << "no /dev/full here";
    const std::string error = saveFile("/dev/full", std::string(100'000, 'x'));
    EXPECT_TRUE(error.starts_with("Cannot write file: /dev/full: ")) << error;
}

TEST_F(Files, FollowsLinks) {
    fs::create_directory(at("sub"));
    ASSERT_EQ(saveFile(at("sub/real"), "old"), "");
    fs::create_symlink("sub/real", at("link"));
    fs::create_symlink("link", at("link2"));
    EXPECT_EQ(saveFile(at("link2"), "new"), "");
    EXPECT_TRUE(fs::is_symlink(at("link")));
    EXPECT_TRUE(fs::is_symlink(at("link2")));
    EXPECT_EQ(content("sub/real"), "new");

    fs::create_symlink("sub/later", at("dangling"));
    EXPECT_EQ(saveFile(at("dangling"), "made"), "");
    EXPECT_EQ(content("sub/later"), "made");

    fs::create_symlink("ring", at("ring"));
    EXPECT_EQ(saveFile(at("ring"), "x"), "Cannot open file for writing: " + at("ring"));
}

TEST_F(Files, WritesPipesInPlaceAndReadsThem) {
    ASSERT_EQ(::mkfifo(at("pipe").c_str(), 0600), 0);
    const std::string sent(300'000, 'p');
    std::string received;
    std::thread reader([&] {
        FileContent file;
        EXPECT_EQ(file.open(at("pipe")), "");
        received = file.view();
    });
    EXPECT_EQ(saveFile(at("pipe"), sent), "");
    reader.join();
    EXPECT_EQ(received, sent);
    EXPECT_TRUE(fs::is_fifo(at("pipe")));
}

TEST_F(Files, APipeThatNobodyServesIsRefused) {
    const std::string pipe = at("pipe");
    ASSERT_EQ(::mkfifo(pipe.c_str(), 0600), 0);
    FileContent file;
    EXPECT_EQ(file.open(pipe), "Cannot open file: " + pipe);
    EXPECT_NE(saveFile(pipe, "x"), "");
}

TEST_F(Files, RefusesWhatCannotBeWritten) {
    EXPECT_EQ(saveFile(at("no/such/folder"), "x"), "Cannot open file for writing: " + at("no/such/folder"));
    EXPECT_EQ(saveFile(folder_.string(), "x"), "Cannot open file for writing: " + folder_.string());
    EXPECT_EQ(saveFile("", "x"), "Cannot open file for writing: ");
}

TEST_F(Files, ReadsWholeFilesAndBeginnings) {
    ASSERT_EQ(saveFile(at("a"), "0123456789"), "");
    FileContent file;
    EXPECT_EQ(file.open(at("a")), "");
    EXPECT_EQ(file.view(), "0123456789");
    EXPECT_EQ(file.open(at("missing")), "Cannot open file: " + at("missing"));
    EXPECT_EQ(file.view(), "");
    EXPECT_EQ(file.open(folder_.string()), "Cannot open file: " + folder_.string());
    ASSERT_EQ(saveFile(at("empty"), ""), "");
    EXPECT_EQ(file.open(at("empty")), "");
    EXPECT_EQ(file.view(), "");
    std::string head;
    EXPECT_EQ(readFile(at("a"), head, 4), "");
    EXPECT_EQ(head, "0123");
    // A file of the kernel's says that it is empty.
    EXPECT_EQ(file.open("/proc/self/status"), "");
    EXPECT_FALSE(file.view().empty());
}

TEST_F(Files, AFileThatIsCutOffWhileItIsReadDoesNoHarm) {
    const std::string text(3'000'000, 'x');
    ASSERT_EQ(saveFile(at("a"), text), "");
    FileContent file;
    ASSERT_EQ(file.open(at("a")), "");
    fs::resize_file(at("a"), 10);
    EXPECT_EQ(file.view(), text);
}

TEST_F(Files, RecognisesKinds) {
    EXPECT_EQ(kindByContent("{\"format\""), FileKind::Native);
    EXPECT_EQ(kindByContent("\xEF\xBB\xBF \r\n\t{"), FileKind::Native);
    EXPECT_EQ(kindByContent("  0\r\nSECTION\r\n"), FileKind::Dxf);
    EXPECT_EQ(kindByContent("\xEF\xBB\xBF"
                            "999\nwritten by hand"),
              FileKind::Dxf);
    EXPECT_EQ(kindByContent("0\rSECTION"), FileKind::Dxf);
    EXPECT_EQ(kindByContent("0"), FileKind::Native);
    EXPECT_EQ(kindByContent("0 \nSECTION"), FileKind::Native);
    EXPECT_EQ(kindByContent("12a\n"), FileKind::Native);
    EXPECT_EQ(kindByContent("-1\n"), FileKind::Native);
    EXPECT_EQ(kindByContent(""), FileKind::Native);
    EXPECT_EQ(kindByContent("AC1032"), FileKind::Native);
    // Only 63 bytes count: the line break is the 63rd or comes too late.
    EXPECT_EQ(kindByContent(std::string(61, ' ') + "0\n"), FileKind::Dxf);
    EXPECT_EQ(kindByContent(std::string(62, ' ') + "0\n"), FileKind::Native);

    ASSERT_EQ(saveFile(at("t.dwt"), "  0\nSECTION\n"), "");
    ASSERT_EQ(saveFile(at("t.bak"), " { }"), "");
    ASSERT_EQ(saveFile(at("t.kvcad"), "0\nSECTION\n"), "");
    EXPECT_EQ(recognise(at("t.dwt")), FileKind::Dxf);
    EXPECT_EQ(recognise(at("t.bak")), FileKind::Native);
    EXPECT_EQ(recognise(at("t.kvcad")), FileKind::Dxf);
    EXPECT_EQ(recognise(at("missing.sv$")), FileKind::Native);
    EXPECT_EQ(recognise("x/PLAN.DXF"), FileKind::Dxf);
    EXPECT_EQ(recognise("plan.Dwg"), FileKind::Dwg);
}

}  // namespace
}  // namespace kova::io
