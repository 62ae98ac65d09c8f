// The object map and the frames of the header variables and the classes.
#include <gtest/gtest.h>

#include "kdraw/container/object_map.hpp"
#include "kdraw/container/section_frame.hpp"

using namespace kdraw;

namespace {

std::string bytes(std::initializer_list<int> values) {
    std::string out;
    for (const int value : values) out += static_cast<char>(value);
    return out;
}

const std::string endOfMap = bytes({0, 2, 0x01, 0xD0});

}  // namespace

TEST(DwgObjectMap, KnownBytes) {
    EXPECT_EQ(writeObjectMap({}), endOfMap);
    const std::vector<ObjectMapEntry> one = {{1, 4}};
    EXPECT_EQ(writeObjectMap(one), bytes({0, 4, 1, 4, 0x52, 0x7C}) + endOfMap);
    // Modular numbers at the limits of their bytes, and a negative step.
    const std::vector<ObjectMapEntry> steps = {{127, 63}, {255, 0}, {4865, 8191}, {117688, 16383}};
    const std::string map = writeObjectMap(steps);
    EXPECT_EQ(map.substr(2, 15),
              bytes({0x7F, 0x3F, 0x80, 0x01, 0x7F, 0x82, 0x24, 0xFF, 0x3F, 0xB7, 0xF1, 0x06, 0x80, 0xC0, 0x00}));
}

TEST(DwgObjectMap, RoundTripOverManyPages) {
    std::vector<ObjectMapEntry> entries;
    for (std::uint64_t i = 0; i < 20000; ++i) entries.push_back({1 + i * 300 + i % 5, (i * 7919) % 1'000'003});
    entries.push_back({0xFFFF'FFFF'FFFF'FFFF, 0x3FFF'FFFF'FFFF'FFFF});
    const std::string map = writeObjectMap(entries);
    for (std::size_t at = 0; at < map.size();) {
        const std::size_t size = static_cast<unsigned char>(map[at]) * 256u + static_cast<unsigned char>(map[at + 1]);
        ASSERT_LE(size, 2034u);
        at += size + 2;
    }
    std::vector<std::string> notes;
    EXPECT_EQ(readObjectMap(map, notes), entries);
    EXPECT_TRUE(notes.empty());
}

TEST(DwgObjectMap, DamageIsNoted) {
    const std::vector<ObjectMapEntry> entries = {{1, 4}, {2, 40}, {9, 80}};
    const std::string map = writeObjectMap(entries);
    std::vector<std::string> notes;

    std::string wrongSum = map;
    wrongSum[8] = static_cast<char>(wrongSum[8] ^ 1);
    EXPECT_EQ(readObjectMap(wrongSum, notes).size(), 3u);
    EXPECT_EQ(notes, std::vector<std::string>{"wrong CRC in 1 pages of the object map"});

    for (std::size_t cut = 0; cut < map.size(); ++cut) {
        notes.clear();
        EXPECT_LE(readObjectMap(std::string_view(map).substr(0, cut), notes).size(), 3u);
        EXPECT_FALSE(notes.empty()) << cut;
    }

    notes.clear();
    const std::string twice = bytes({0, 8, 5, 10, 0, 10, 1, 10, 0, 0}) + bytes({0, 4, 2, 9, 0, 0}) + endOfMap;
    EXPECT_EQ(readObjectMap(twice, notes), (std::vector<ObjectMapEntry>{{2, 9}, {5, 10}, {6, 30}}));

    notes.clear();
    readObjectMap(bytes({0, 14}) + std::string(12, '\xFF') + bytes({0, 0}) + endOfMap, notes);
    EXPECT_EQ(notes.at(0), "a page of the object map is damaged");
}

TEST(DwgSectionFrame, RoundTrip) {
    for (const Version version :
         {Version::R2000, Version::R2004, Version::R2007, Version::R2010, Version::R2013, Version::R2018})
        for (const FramedSection kind : {FramedSection::Header, FramedSection::Classes}) {
            const std::string framed = writeFrame(kind, version, "the body");
            // The layout that goes with the maintenance release, and the other one, which its CRC gives away.
            for (const int maintenance : {0, 0x7D}) {
                std::string_view body;
                std::vector<std::string> notes;
                EXPECT_EQ(readFrame(kind, version, maintenance, framed, body, notes), "");
                EXPECT_EQ(body, "the body");
                EXPECT_TRUE(notes.empty());
            }
        }
}

TEST(DwgSectionFrame, Damage) {
    const std::string framed = writeFrame(FramedSection::Header, Version::R2018, "the body");
    std::string_view body;
    for (const auto& [place, note] :
         {std::pair{3u, "wrong begin mark of the header section"}, std::pair{26u, "wrong CRC of the header section"},
          std::pair{40u, "wrong end mark of the header section"}}) {
        std::string damaged = framed;
        damaged[place] = static_cast<char>(damaged[place] ^ 0x10);
        std::vector<std::string> notes;
        EXPECT_EQ(readFrame(FramedSection::Header, Version::R2018, 4, damaged, body, notes), "");
        EXPECT_EQ(body.size(), 8u);
        EXPECT_EQ(notes, std::vector<std::string>{note});
    }
    std::vector<std::string> notes;
    for (const std::size_t cut : {0u, 10u, 19u, 25u, 30u})
        EXPECT_EQ(readFrame(FramedSection::Header, Version::R2018, 4, framed.substr(0, cut), body, notes),
                  "the header section is damaged");
}
