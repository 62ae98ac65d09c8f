// What DWG files that cannot be read or written are told about, and what is left behind.
#include <gtest/gtest.h>

#include <sys/wait.h>
#include <unistd.h>

#include <QTemporaryDir>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>

#include "engine/model/drawing.hpp"
#include "engine/entities/line.hpp"
#include "engine/entities/solid3d.hpp"
#include "headless/files.hpp"
#include "io/dwg/dwg_load.hpp"
#include "io/dwg/dwg_save.hpp"
#include "io/dxf/dxf_load.hpp"
#include "io/progress.hpp"

namespace kova::test {

namespace fs = std::filesystem;

namespace {

constexpr const char* kUnsupported =
    "unsupported DWG version (decoder handles R2000 / R2004 / R2007 / R2010 / R2013 / R2018)";
constexpr const char* kOlder =
    ". Older DWG versions (R13 / R14 / R2000) are not supported in this release; Save As R2007+ or DXF.";

class DwgMessages : public ::testing::Test {
protected:
    std::string path(const char* name) const { return folder.filePath(name).toStdString(); }

    std::string write(const char* name, const std::string& bytes) const {
        std::ofstream(path(name), std::ios::binary) << bytes;
        return path(name);
    }
    static std::string read(const std::string& path) {
        std::ifstream in(path, std::ios::binary);
        return {std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>()};
    }
    /// What opening a file of these bytes says, behind what is always in front.
    std::string refusal(const std::string& bytes) const {
        const std::string file = write("refused.dwg", bytes);
        engine::Drawing drawing;
        headless::OpenReport report;
        std::string error = headless::openDrawing(file, drawing, report);
        const std::string front = "Could not open DWG (" + file + "): ";
        if (!error.starts_with(front)) return "not refused in the usual words: " + error;
        return error.substr(front.size());
    }
    static engine::Drawing& oneLine(engine::Drawing& drawing) {
        auto line = std::make_unique<engine::LineEntity>();
        line->end = {10.0, 5.0};
        drawing.modelSpace().append(std::move(line));
        return drawing;
    }
    std::vector<fs::path> intermediates() const {
        std::vector<fs::path> found;
        for (const auto& entry : fs::directory_iterator(folder.path().toStdString()))
            if (entry.path().filename().string().starts_with("kovacad_dwg_")) found.push_back(entry.path());
        return found;
    }

    QTemporaryDir folder;
};

/// Sets an environment variable as long as it lives.
class Environment {
public:
    Environment(const char* name, const std::string& value) : name_(name) {
        if (const char* old = std::getenv(name)) old_ = old, had_ = true;
        ::setenv(name, value.c_str(), 1);
    }
    ~Environment() { had_ ? ::setenv(name_, old_.c_str(), 1) : ::unsetenv(name_); }

private:
    const char* name_;
    std::string old_;
    bool had_ = false;
};

}  // namespace

TEST_F(DwgMessages, FilesThatAreNoDrawings) {
    EXPECT_EQ(refusal(""), "empty or too-small buffer");
    EXPECT_EQ(refusal("AC1032"), "empty or too-small buffer");
    EXPECT_EQ(refusal(std::string(4096, 'x')), kUnsupported);
    EXPECT_EQ(refusal("AC1099" + std::string(4096, '\0')), kUnsupported);
    engine::Drawing drawing;
    headless::OpenReport report;
    const std::string error = headless::openDrawing(path("missing.dwg"), drawing, report);
    EXPECT_TRUE(error.starts_with("Could not open DWG (" + path("missing.dwg") + "): ")) << error;
}

TEST_F(DwgMessages, OldFilesGetAnAdvice) {
    // Before R2007, whether the version is decoded or not, and whatever else is wrong.
    EXPECT_EQ(refusal("AC1014" + std::string(4096, '\0')), std::string(kUnsupported) + kOlder);
    EXPECT_EQ(refusal("AC1009" + std::string(4096, '\0')), std::string(kUnsupported) + kOlder);
    EXPECT_EQ(refusal("AC2.10" + std::string(4096, '\0')), std::string(kUnsupported) + kOlder);
    EXPECT_EQ(refusal("AC1015" + std::string(4096, '\0')), std::string("R2000 section locators are invalid") + kOlder);
    EXPECT_TRUE(refusal("AC1018" + std::string(4096, '\0')).ends_with(kOlder));
    for (const char* tag : {"AC1021", "AC1024", "AC1027", "AC1032"}) {
        const std::string said = refusal(tag + std::string(4096, '\0'));
        EXPECT_FALSE(said.ends_with(kOlder)) << tag << ": " << said;
    }
}

TEST_F(DwgMessages, LocatorsOfR2000) {
    std::string header = "AC1015";
    header.resize(0x15);
    header += std::string("\3\0\0\0", 4);
    const auto locator = [](char number, std::uint32_t address, std::uint32_t size) {
        std::string record(1, number);
        for (const std::uint32_t v : {address, size})
            for (int i = 0; i < 4; ++i) record += static_cast<char>(v >> (8 * i));
        return record;
    };
    const std::string said = std::string("R2000 section locators are invalid") + kOlder;
    // Outside the file, by far and by wrapping round.
    EXPECT_EQ(refusal(header + locator(0, 0x100, 16) + locator(1, 0x200, 16) + locator(2, 0x40000000, 16) +
                      std::string(2000, '\0')),
              said);
    EXPECT_EQ(refusal(header + locator(0, 0x100, 16) + locator(1, 0xFFFFFFF0, 0xFFFFFFFF) + locator(2, 0x300, 16) +
                      std::string(2000, '\0')),
              said);
    // More than there can be.
    header.replace(0x15, 4, "\xFF\xFF\xFF\xFF");
    EXPECT_EQ(refusal(header + std::string(2000, '\0')), said);
}

TEST_F(DwgMessages, RecordsThatAFormatCannotHoldAreCounted) {
    engine::Drawing drawing;
    oneLine(drawing);
    engine::DictionaryEntry odd;
    odd.name = "ODD";
    odd.type = "SOMETHING_ODD";
    odd.data = {"100", "AcDbOdd", "1", "x"};
    drawing.objectDictionary.push_back(odd);
    headless::SaveReport report;
    ASSERT_EQ(headless::saveDrawing(drawing, path("odd.dwg"), "", report), "");
    EXPECT_EQ(report.lines,
              (std::vector<std::string>{"DWG: not written, of kinds that are not known: 1 SOMETHING_ODD."}));
    report = {};
    ASSERT_EQ(headless::saveDrawing(drawing, path("odd.dxf"), "", report), "");
    EXPECT_TRUE(report.lines.empty());
}

TEST_F(DwgMessages, ADxfThatIsTooLargeToOpenAgainIsTold) {
    // What is written goes nowhere: only its size counts.
    fs::create_symlink("/dev/null", path("big.dxf"));
    engine::Drawing drawing;
    auto solid = std::make_unique<engine::Solid3DEntity>();
    solid->sab.assign(std::size_t{140} << 20, '\x55');
    drawing.modelSpace().append(std::move(solid));
    headless::SaveReport report;
    ASSERT_EQ(headless::saveDrawing(drawing, path("big.dxf"), "", report), "");
    ASSERT_EQ(report.lines.size(), 1U);
    EXPECT_TRUE(report.lines[0].starts_with("DXF: the file has 2")) << report.lines[0];
    EXPECT_NE(report.lines[0].find("none above 256 MB can be opened again"), std::string::npos);
    report = {};
    static_cast<engine::Solid3DEntity&>(*drawing.modelSpace().first()).sab.resize(1000);
    ASSERT_EQ(headless::saveDrawing(drawing, path("big.dxf"), "", report), "");
    EXPECT_TRUE(report.lines.empty());
}

TEST_F(DwgMessages, VersionOfASetting) {
    engine::Drawing drawing;
    oneLine(drawing);
    const std::pair<const char*, const char*> kSettings[] = {{"", "AC1032"},
                                                             {"R2018", "AC1032"},
                                                             {"2000", "AC1032"},
                                                             {"R2004", "AC1032"},
                                                             {"R2007", "AC1032"},
                                                             {"2013", "AC1027"},
                                                             {"as 2013 please", "AC1027"},
                                                             {"R2010", "AC1024"},
                                                             {"2013 or 2010", "AC1024"}};
    for (const auto& [setting, tag] : kSettings) {
        const std::string file = path("version.dwg");
        ASSERT_EQ(io::dwg::saveDwg(drawing, file, setting), "");
        EXPECT_EQ(read(file).substr(0, 6), tag) << setting;
        engine::Drawing again;
        EXPECT_TRUE(io::dwg::loadDwg(file, again).success);
        EXPECT_EQ(again.modelSpace().size(), 1u);
    }
}

TEST_F(DwgMessages, IntermediateFile) {
    const Environment temporary("TMPDIR", folder.path().toStdString());
    engine::Drawing drawing;
    oneLine(drawing);
    ASSERT_EQ(io::dwg::saveDwg(drawing, path("a.dwg"), ""), "");
    EXPECT_TRUE(intermediates().empty());
    {
        const Environment keep("KOVA_DWG_EXPORT_KEEP_DXF", "1");
        ASSERT_EQ(io::dwg::saveDwg(drawing, path("b.dwg"), ""), "");
    }
    ASSERT_EQ(intermediates().size(), 1u);
    EXPECT_EQ(intermediates()[0].extension(), ".dxf");
    // Nobody else may read it.
    EXPECT_EQ(fs::status(intermediates()[0]).permissions(), fs::perms::owner_read | fs::perms::owner_write);
    engine::Drawing kept;
    EXPECT_EQ(io::dxf::loadDxf(intermediates()[0].string(), kept), "");
    EXPECT_EQ(kept.modelSpace().size(), 1u);
    // A save that fails leaves none, either.
    fs::remove(intermediates()[0]);
    EXPECT_NE(io::dwg::saveDwg(drawing, path("no/such/folder.dwg"), ""), "");
    EXPECT_TRUE(intermediates().empty());
    // Nor does a process that dies in between.
    struct Killer final : io::Progress {
        void tell(std::size_t, std::size_t) override { ::kill(::getpid(), SIGKILL); }
    } killer;
    for (std::size_t i = 0; i < io::kProgressStep; ++i) oneLine(drawing);
    const pid_t child = ::fork();
    if (child == 0) {
        io::dwg::saveDwg(drawing, path("c.dwg"), "", nullptr, &killer);
        ::_exit(0);
    }
    int status = 0;
    ::waitpid(child, &status, 0);
    EXPECT_TRUE(WIFSIGNALED(status));
    EXPECT_TRUE(intermediates().empty());
}

TEST_F(DwgMessages, SavesThatFailKeepTheOldFile) {
    engine::Drawing drawing;
    oneLine(drawing);
    const std::string missing = path("no/such/folder.dwg");
    EXPECT_EQ(io::dwg::saveDwg(drawing, missing, ""), "DWG export failed: cannot open file for writing: " + missing);
    if (fs::exists("/dev/full")) {
        EXPECT_EQ(io::dwg::saveDwg(drawing, "/dev/full", ""), "DWG export failed: write failed: /dev/full");
    }

    const std::string old = write("old.dwg", "what was there before");
    // No file can be made in this folder, not even by root.
    const Environment temporary("TMPDIR", "/proc");
    const std::string error = io::dwg::saveDwg(drawing, old, "");
    EXPECT_TRUE(error.starts_with("DWG export: writing the intermediate DXF failed: ")) << error;
    EXPECT_EQ(read(old), "what was there before");
}

}  // namespace kova::test
