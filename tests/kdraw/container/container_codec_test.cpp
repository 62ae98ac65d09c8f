// Checksums and the two compressions.
#include <gtest/gtest.h>

#include <random>

#include "kdraw/container/checksums.hpp"
#include "kdraw/container/lz2004.hpp"
#include "kdraw/container/lz2007.hpp"

using namespace kdraw;

namespace {

std::string bytes(std::initializer_list<int> values) {
    std::string out;
    for (const int value : values) out += static_cast<char>(value);
    return out;
}

std::string compressed(std::string_view source) {
    std::string out;
    compress2004(source, out);
    return out;
}

struct Outcome {
    std::string text;
    bool sound;
};

Outcome decompressed(Decompressed (*codec)(std::string_view, char*, std::size_t), std::string_view source,
                     std::size_t capacity) {
    std::string out(capacity, '?');
    const Decompressed result = codec(source, out.data(), capacity);
    out.resize(result.size);
    return {out, result.sound};
}

}  // namespace

TEST(DwgChecksums, KnownValues) {
    const std::string_view digits = "123456789";
    EXPECT_EQ(crc16(0, digits), 0xBB3D);
    EXPECT_EQ(crc16(crcSeed, digits), 0x7E6C);
    EXPECT_EQ(crc16(crcSeed, bytes({0, 2})), 0x01D0);
    EXPECT_EQ(crc32(0, digits), 0xCBF43926u);
    EXPECT_EQ(pageSum(0, digits), 0x091501DDu);
    EXPECT_EQ(pageSum(1, digits), 0x091E01DEu);
    EXPECT_EQ(std::string(randomBytes().data(), 8), bytes({0x29, 0x23, 0xBE, 0x84, 0xE1, 0x6C, 0xD6, 0xAE}));
    EXPECT_EQ(std::string(randomBytes().data() + 236, 4), bytes({0xF8, 0x46, 0x6A, 0x04}));
}

TEST(DwgChecksums, ContinueOverPieces) {
    std::string text;
    for (int i = 0; i < 20000; ++i) text += static_cast<char>(0xFF - i % 3);
    for (const std::size_t cut : {1u, 7u, 9u, 5552u, 12345u}) {
        const std::string_view whole = text;
        EXPECT_EQ(crc16(crc16(crcSeed, whole.substr(0, cut)), whole.substr(cut)), crc16(crcSeed, text));
        EXPECT_EQ(crc32(crc32(0, whole.substr(0, cut)), whole.substr(cut)), crc32(0, text));
        EXPECT_EQ(pageSum(pageSum(5, whole.substr(0, cut)), whole.substr(cut)), pageSum(5, text));
    }
}

TEST(DwgLz2004, KnownStreams) {
    const std::string zeros = "ABCD" + std::string(28, '\0');
    const std::string literal = [] {
        std::string text = bytes({0, 0x16});
        for (int i = 0; i < 40; ++i) text += static_cast<char>(i);
        return text + bytes({0x11, 0, 0});
    }();
    for (const auto& [stream, text] : {std::pair{bytes({2, 'A', 'B', 'C', 'D', 0, 0x39, 0, 0, 0x11, 0, 0}), zeros},
                                       std::pair{bytes({1, 'A', 'B', 'C', 'D', 0x9E, 0, 'x', 'y', 0x54, 1, 0x11, 0, 0}),
                                                 std::string("ABCDABCDABCDxyABCD")},
                                       std::pair{literal, literal.substr(2, 40)}}) {
        const Outcome outcome = decompressed(decompress2004, stream, text.size());
        EXPECT_TRUE(outcome.sound);
        EXPECT_EQ(outcome.text, text);
        EXPECT_LE(compressed(text).size(), stream.size());
    }
}

TEST(DwgLz2004, CompressionIsReversible) {
    std::mt19937 random(7);
    const auto check = [](const std::string& text) {
        const Outcome outcome = decompressed(decompress2004, compressed(text), text.size());
        ASSERT_TRUE(outcome.sound) << text.size();
        ASSERT_EQ(outcome.text, text);
    };
    // Run lengths around every limit of the literal counts and of the three kinds of matches.
    for (const std::size_t literals : {4u, 5u, 18u, 19u, 272u, 273u, 274u, 528u})
        for (const std::size_t distance : {4u, 0x400u, 0x401u, 0x4000u, 0x4001u, 0x8000u, 0x8001u, 0xBFFFu, 0xC000u})
            for (const std::size_t length : {3u, 4u, 9u, 10u, 14u, 15u, 33u, 34u, 264u, 265u, 288u, 289u, 600u}) {
                std::string text(std::max<std::size_t>(literals, distance), '\0');
                for (char& c : text) c = static_cast<char>(random());
                for (std::size_t i = 0; i < length; ++i) text += text[text.size() - distance];
                for (int i = 0; i < 3; ++i) text += static_cast<char>(random());
                check(text);
            }
    for (const std::size_t size : {4u, 5u, 6u, 100u, 0x7400u, 60000u})
        for (const unsigned alphabet : {1u, 2u, 5u, 40u, 256u}) {
            std::string text(size, '\0');
            for (char& c : text) c = static_cast<char>(random() % alphabet);
            check(text);
        }
}

TEST(DwgLz2004, CompressesWell) {
    EXPECT_LT(compressed(std::string(0x7400, '\0')).size(), 140u);
    std::string table;
    for (int i = 0; i < 900; ++i) table += "record " + std::to_string(i * 7919 % 1000) + " of a table of styles;";
    EXPECT_LT(compressed(table).size() * 5, table.size());
    std::mt19937 random(3);
    std::string noise(0x7400, '\0');
    for (char& c : noise) c = static_cast<char>(random());
    EXPECT_LE(compressed(noise).size(), noise.size() + 200);
}

TEST(DwgLz2004, RefusesUnsoundStreams) {
    EXPECT_FALSE(decompressed(decompress2004, "", 100).sound);
    EXPECT_FALSE(decompressed(decompress2004, bytes({1, 'A', 'B'}), 100).sound);  // ends early
    EXPECT_FALSE(
        decompressed(decompress2004, bytes({1, 'A', 'B', 'C', 'D', 0x50, 1, 0x11}), 100).sound);  // 5 back of 4
    EXPECT_FALSE(decompressed(decompress2004, bytes({0x40, 0}), 100).sound);                      // nothing to repeat
    const Outcome bomb = decompressed(decompress2004, bytes({1, 'A', 'B', 'C', 'D', 0x20, 0, 0, 0, 0, 9, 0, 0}), 100);
    EXPECT_FALSE(bomb.sound);
    EXPECT_EQ(bomb.text.size(), 100u);
    const std::string whole = compressed("a drawing, a drawing, a drawing and some other words");
    for (std::size_t cut = 0; cut + 2 < whole.size(); ++cut)
        EXPECT_FALSE(decompressed(decompress2004, std::string_view(whole).substr(0, cut), 1000).sound) << cut;
}

TEST(DwgLz2007, KnownStreams) {
    EXPECT_EQ(decompressed(decompress2007, bytes({0, 'A', 'B', 'C', 'D', 'E', 'F', 'G', 'H', 0x37, 0}), 11).text,
              "ABCDEFGHABC");
    EXPECT_EQ(decompressed(decompress2007, bytes({2}) + "0123456789" + bytes({0x37, 0}), 13).text, "9123456780234");
    // A match of each class over a history of 40 bytes, then the long literal run of 0x17 + 1 bytes.
    std::string start = bytes({0x0F, 17});
    for (int i = 0; i < 40; ++i) start += static_cast<char>('a' + i % 26);
    const std::string history = decompressed(decompress2007, start, 40).text;
    ASSERT_EQ(history.size(), 40u);
    for (const auto& [stream, distance, length] :
         {std::tuple{bytes({0x00, 7, 0}), 8, 0x13}, std::tuple{bytes({0x12, 9, 0}), 10, 5},
          std::tuple{bytes({0x23, 12, 0, 0x08}), 12, 11}, std::tuple{bytes({0x29, 5, 0, 1, 0x00}), 6, 0x109},
          std::tuple{bytes({0x95, 0x08}), 22, 9}}) {
        std::string expected = history;
        for (int i = 0; i < length; ++i) expected += expected[expected.size() - static_cast<std::size_t>(distance)];
        const Outcome outcome = decompressed(decompress2007, start + stream, expected.size());
        EXPECT_TRUE(outcome.sound) << distance;
        EXPECT_EQ(outcome.text, expected) << distance;
    }
}

TEST(DwgLz2007, RefusesUnsoundStreams) {
    EXPECT_FALSE(decompressed(decompress2007, "", 100).sound);
    EXPECT_FALSE(decompressed(decompress2007, bytes({0, 'A', 'B'}), 100).sound);
    EXPECT_FALSE(decompressed(decompress2007, bytes({0, 1, 2, 3, 4, 5, 6, 7, 8, 0x38, 0}), 100).sound);  // 9 back of 8
    EXPECT_FALSE(decompressed(decompress2007, bytes({0, 1, 2, 3, 4, 5, 6, 7, 8, 0x37, 0}), 10).sound);   // no room
    EXPECT_FALSE(decompressed(decompress2007, bytes({0x0F, 0xFF, 0xFF, 0xFF}), 100).sound);
}

TEST(DwgReedSolomon, DeinterleavesDataBytes) {
    std::string source(2 * 255 + 2, '-');
    for (int i = 0; i < 2 * 255; ++i) source[static_cast<std::size_t>(i)] = i % 2 == 0 ? 'a' : 'b';
    EXPECT_EQ(deinterleave(source, 2, 251), std::string(251, 'a') + std::string(251, 'b'));
    EXPECT_EQ(deinterleave(source, 3, 239), "");
}
