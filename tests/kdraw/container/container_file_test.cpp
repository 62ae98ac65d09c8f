// Whole files: real samples, written files and damaged ones.
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>

#include "kdraw/container/bytes.hpp"
#include "kdraw/container/checksums.hpp"
#include "kdraw/container/container.hpp"
#include "kdraw/container/object_map.hpp"
#include "kdraw/container/section_frame.hpp"
#include "small_files.hpp"

using namespace kdraw;
using kdraw::testing::smallContainer;
using kdraw::testing::smallFile;

namespace {

constexpr Version decodedVersions[] = {Version::R2000, Version::R2004, Version::R2007,
                                       Version::R2010, Version::R2013, Version::R2018};
constexpr Version writtenVersions[] = {Version::R2010, Version::R2013, Version::R2018};

std::vector<std::filesystem::path> samples() {
    std::vector<std::filesystem::path> paths;
    std::error_code error;
    for (const auto& entry : std::filesystem::directory_iterator(KOVA_SOURCE_DIR "/../shared/samples/dwg", error))
        if (entry.path().extension() == ".dwg") paths.push_back(entry.path());
    std::sort(paths.begin(), paths.end());
    return paths;
}

std::string fileText(const std::filesystem::path& path) {
    std::ifstream stream(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(stream), {}};
}

std::string errorOf(std::string_view file) {
    Container container;
    return readContainer(file, container);
}

/// The sections given that were read otherwise; of previews only the sizes count, because they hold addresses.
std::vector<std::string> differences(const Container& given, const Container& read) {
    std::vector<std::string> names;
    for (const Section& section : given.sections) {
        const Section* const other = read.find(section.name);
        if (other == nullptr || (section.name == section::preview ? other->bytes.size() != section.bytes.size()
                                                                  : other->bytes != section.bytes))
            names.push_back(section.name);
    }
    return names;
}

}  // namespace

TEST(DwgVersions, TagsAndNames) {
    EXPECT_EQ(versionOfTag("AC1032 and more"), Version::R2018);
    EXPECT_EQ(versionOfTag("AC1009"), Version::R11R12);
    EXPECT_EQ(versionName(Version::R11R12), "R11/R12");
    EXPECT_EQ(versionOfTag("AC1014"), Version::Unknown);
    EXPECT_EQ(versionOfTag("AC103"), Version::Unknown);
    EXPECT_EQ(versionName(versionOfTag("")), "Unknown");
    for (const Version version : decodedVersions) EXPECT_EQ(versionOfTag(versionTag(version)), version);
}

TEST(DwgContainer, RealFilesOpenWithoutANote) {
    const auto paths = samples();
    if (paths.empty()) GTEST_SKIP() << "no sample drawings beside the checkout";
    for (const auto& path : paths) {
        Container container;
        ASSERT_EQ(readContainer(fileText(path), container), "") << path;
        const auto map = readObjectMap(container.find(section::handles)->bytes, container.notes);
        EXPECT_GT(map.size(), 100u) << path;
        const Section& objects = *container.find(section::objects);
        for (const ObjectMapEntry& entry : map) ASSERT_LT(entry.offset - objects.base, objects.bytes.size()) << path;
        for (const auto& [name, kind] :
             {std::pair{section::header, FramedSection::Header}, std::pair{section::classes, FramedSection::Classes}}) {
            std::string_view body;
            ASSERT_NE(container.find(name), nullptr) << path;
            EXPECT_EQ(readFrame(kind, container.version, container.maintenance, container.find(name)->bytes, body,
                                container.notes),
                      "")
                << path;
        }
        std::vector<std::string> notes;
        EXPECT_EQ(readObjectMap(writeObjectMap(map), notes), map) << path;
        EXPECT_TRUE(container.notes.empty()) << path << ": " << container.notes.front();
    }
}

TEST(DwgContainer, RealSectionsSurviveWriting) {
    const auto paths = samples();
    if (paths.empty()) GTEST_SKIP() << "no sample drawings beside the checkout";
    for (const auto& path : paths) {
        const std::string file = fileText(path);
        Container given;
        ASSERT_EQ(readContainer(file, given), "") << path;
        if (!isWritten(given.version)) continue;
        std::string written;
        ASSERT_EQ(writeContainer(given, written), "") << path;
        Container read;
        ASSERT_EQ(readContainer(written, read), "") << path;
        EXPECT_TRUE(read.notes.empty()) << path;
        EXPECT_EQ(read.version, given.version);
        EXPECT_EQ(read.codepage, given.codepage);
        EXPECT_EQ(read.maintenance, given.maintenance);
        std::erase_if(given.sections, [](const Section& section) { return section.name == "AcDb:AppInfoHistory"; });
        EXPECT_EQ(differences(given, read), std::vector<std::string>()) << path;
        EXPECT_GE(read.sections.size(), 12u);
        EXPECT_LT(written.size(), file.size()) << path;
    }
}

TEST(DwgContainer, SmallFilesOfAllLayouts) {
    for (const Version version : decodedVersions) {
        Container container;
        ASSERT_EQ(readContainer(smallFile(version), container), "") << versionName(version);
        EXPECT_TRUE(container.notes.empty()) << versionName(version) << ": " << container.notes.front();
        EXPECT_EQ(container.version, version);
        std::string_view body;
        const Section& classes = *container.find(section::classes);
        EXPECT_EQ(
            readFrame(FramedSection::Classes, version, container.maintenance, classes.bytes, body, container.notes),
            "");
        EXPECT_EQ(body, "class records");
        const Section& objects = *container.find(section::objects);
        const auto map = readObjectMap(container.find(section::handles)->bytes, container.notes);
        ASSERT_EQ(map.size(), 30u);
        EXPECT_EQ(map[0].handle, 0x10u);
        for (std::size_t i = 0; i < map.size(); ++i)
            EXPECT_EQ(objects.bytes.at(map[i].offset - objects.base), static_cast<char>(0x40 + i * 20 % 7));
    }
}

TEST(DwgContainer, WrittenFileIsLaidOutAsItSays) {
    for (const Version version : writtenVersions) {
        Container given = smallContainer(version);
        given.codepage = 28;
        given.facts = {.createdDay = 2460000, .handSeed = 0x1234, .objectCount = 30, .metric = false};
        std::string preview(16, 'P');
        appendU32(preview, 10 + 5);
        preview += "\x01\x01";
        appendU32(preview, 777);
        appendU32(preview, 5);
        preview += "image" + std::string(16, 'p');
        given.sections.push_back({std::string(section::preview), preview});
        given.sections.push_back({"AcDb:SomethingElse", "left out"});
        std::string file;
        ASSERT_EQ(writeContainer(given, file), "");
        Container read;
        ASSERT_EQ(readContainer(file, read), "");
        EXPECT_EQ(read.codepage, 28);
        EXPECT_FALSE(read.facts.metric);
        EXPECT_EQ(read.find("AcDb:SomethingElse"), nullptr);
        EXPECT_EQ(read.find(section::solids), nullptr);
        EXPECT_EQ(read.find(section::auxHeader)->bytes.size(), version == Version::R2018 ? 129u : 123u);
        EXPECT_EQ(read.find(section::freeSpace)->bytes.size(), 89u);
        EXPECT_EQ(read.find(section::dependencies)->bytes, std::string(8, '\0'));
        EXPECT_NE(read.find(section::application)->bytes.find("k\0o\0v\0a\0", 0, 8), std::string::npos);

        // The plain header leads to the contents of three sections, and the preview's own address to its picture.
        const auto address = [&](std::size_t at) { return loadLittle<std::uint32_t>(file.data() + at); };
        EXPECT_EQ(file.substr(address(0x0D), 16), std::string(16, 'P'));
        EXPECT_EQ(file.substr(address(address(0x0D) + 16 + 4 + 2), 5), "image");
        const std::string& summary = read.find(section::summary)->bytes;
        EXPECT_EQ(file.substr(address(0x20), summary.size()), summary);
        EXPECT_EQ(file.substr(address(0x2C) + 6, 4), std::string("A\0p\0", 4));
        // The masked header stands at the end once more.
        EXPECT_EQ(file.substr(0x80, 0x6C), file.substr(file.size() - 0x6C));
    }
}

TEST(DwgContainer, ManyPagesAndEmptyOnes) {
    Container given = smallContainer(Version::R2018);
    std::string objects;
    for (int i = 0; i < 200'000; ++i) objects += "object " + std::to_string(i * 7919 % 100'000);
    objects.append(0x10000, '\0');
    objects += "end";
    given.sections.back().bytes = objects;
    given.sections.push_back({std::string(section::solids), std::string(0x7400, '\0') + "modeler data"});
    std::string file;
    ASSERT_EQ(writeContainer(given, file), "");
    EXPECT_LT(file.size() * 2, objects.size());
    Container read;
    ASSERT_EQ(readContainer(file, read), "");
    EXPECT_TRUE(read.notes.empty());
    EXPECT_EQ(read.find(section::objects)->bytes, objects);
    EXPECT_EQ(read.find(section::solids)->bytes, given.sections.back().bytes);
}

TEST(DwgContainer, ErrorTexts) {
    const std::string unsupported =
        "unsupported DWG version (decoder handles R2000 / R2004 / R2007 / R2010 / R2013 / R2018)";
    EXPECT_EQ(errorOf(""), "empty or too-small buffer");
    EXPECT_EQ(errorOf("AC1032"), "empty or too-small buffer");
    for (const char* tag : {"AC1009", "AC1014", "AC1033", "hello!"}) {
        std::string file = tag;
        file.resize(4096);
        EXPECT_EQ(errorOf(file), unsupported) << tag;
    }
    for (const char* tag : {"AC1018", "AC1021", "AC1032"}) {
        std::string file = tag;
        file.resize(0xF0);
        EXPECT_EQ(errorOf(file), "empty or too-small buffer") << tag;
        file.resize(4096);
        EXPECT_EQ(errorOf(file), "the file header is damaged") << tag;
    }

    const std::string sound = smallFile(Version::R2000);
    const auto broken = [&](std::size_t at, std::uint32_t value) {
        std::string file = sound;
        storeLittle(file.data() + at, value);
        return errorOf(file);
    };
    const std::string locators = "R2000 section locators are invalid";
    EXPECT_EQ(broken(0x15, 0), locators);
    EXPECT_EQ(broken(0x15, 65), locators);
    EXPECT_EQ(broken(0x15, 0xFFFF'FFFF), locators);
    EXPECT_EQ(broken(0x15, 2), locators);                // no object map
    EXPECT_EQ(broken(0x19 + 1, 0xFFFF'FFF0), locators);  // beyond the file
    EXPECT_EQ(broken(0x19 + 5, static_cast<std::uint32_t>(sound.size())), locators);

    std::string locked = smallFile(Version::R2018);
    locked[0x18] = 1;
    EXPECT_EQ(errorOf(locked), "the drawing is protected by a password");

    std::string out;
    EXPECT_EQ(writeContainer(smallContainer(Version::R2007), out), "DWG version R2007 cannot be written");
    Container incomplete = smallContainer(Version::R2018);
    incomplete.sections.erase(incomplete.sections.begin() + 1);
    EXPECT_EQ(writeContainer(incomplete, out), "section AcDb:Classes is missing");
}

TEST(DwgContainer, DamageThatIsSurvived) {
    for (const Version version : {Version::R2007, Version::R2018}) {
        std::string file = smallFile(version);
        std::fill_n(file.begin() + 0x80, 0x40, 'x');
        Container container;
        EXPECT_EQ(readContainer(file, container), "");
        EXPECT_EQ(container.notes, std::vector<std::string>{"the file header is damaged; its copy was used"});
        EXPECT_EQ(differences(smallContainer(version), container), std::vector<std::string>());
    }

    // One byte of each page in turn: nothing but notes, unless a map is hit.
    const std::string sound = smallFile(Version::R2018);
    std::size_t noted = 0;
    for (std::size_t at = 0x120; at < sound.size() - 0x6C; at += 0x10) {
        std::string file = sound;
        file[at] = static_cast<char>(file[at] ^ 0x55);
        Container container;
        const std::string error = readContainer(file, container);
        if (error.empty() && !container.notes.empty()) ++noted;
        if (error.empty() && container.notes.empty()) {
            EXPECT_EQ(differences(smallContainer(Version::R2018), container), std::vector<std::string>()) << at;
        }
    }
    EXPECT_GT(noted, 50u);

    std::string file = smallFile(Version::R2000);
    file[0x10] = 5;
    Container container;
    EXPECT_EQ(readContainer(file, container), "");
    EXPECT_EQ(container.notes, std::vector<std::string>{"wrong CRC of the file header"});
}

TEST(DwgContainer, CutFilesAreRefused) {
    for (const Version version : decodedVersions) {
        const std::string sound = smallFile(version);
        for (std::size_t size = 0; size < sound.size(); size += 37) {
            Container container;
            const std::string error = readContainer(std::string_view(sound).substr(0, size), container);
            EXPECT_TRUE(!error.empty() || !container.notes.empty() || size > sound.size() / 2)
                << versionName(version) << " " << size;
        }
    }
}
