#include <gtest/gtest.h>

#include <chrono>
#include <random>

#include "../../../fuzz/native_loader.cpp"
#include "io/native/sample_drawing.hpp"

namespace kova::io::native {
namespace {

using namespace engine;

std::string fullText() {
    Drawing drawing;
    test::fillDrawing(drawing);
    return nativeText(drawing);
}

void feed(std::string_view text) {
    LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t*>(text.data()), text.size());
}

TEST(Hostile, CutFilesAreRefused) {
    const std::string text = fullText();
    std::mt19937 random(1);
    for (int i = 0; i < 150; ++i) {
        const std::size_t size = i < 20 ? static_cast<std::size_t>(i) : random() % (text.size() - 1);
        Drawing drawing;
        const std::string error = loadNativeText(std::string_view(text).substr(0, size), drawing);
        EXPECT_TRUE(error.starts_with("JSON parse error: ")) << size << ": " << error;
        // What was read up to there is still a sound drawing.
        for (const Entity& e : drawing.modelSpace()) ASSERT_EQ(drawing.findById(e.id()), &e);
    }
}

TEST(Hostile, DeepNestingIsBounded) {
    constexpr std::size_t kDeep = 1'000'000;
    const std::string open(kDeep, '[');
    const std::string close(kDeep, ']');
    Drawing drawing;
    EXPECT_TRUE(loadNativeText(open, drawing).starts_with("JSON parse error: "));
    EXPECT_TRUE(loadNativeText(open + close, drawing).starts_with("Load error: "));
    const auto document = [&](std::string_view key) {
        return "{\"format\":\"kovacad\",\"" + std::string(key) + "\":" + open + close + "}";
    };
    EXPECT_EQ(loadNativeText(document("unknown"), drawing), "");
    for (const char* key : {"layers", "entities", "blocks", "objectDictionary"}) {
        Drawing other;
        EXPECT_TRUE(loadNativeText(document(key), other).starts_with("Load error: ")) << key;
    }
    std::string objects;
    for (std::size_t i = 0; i < kDeep; ++i) objects += "{\"entities\":[";
    EXPECT_TRUE(loadNativeText("{\"blocks\":[" + objects, drawing).starts_with("JSON parse error: "));
    // A dictionary that is too deep for the file is cut, not lost with the file.
    Drawing nested;
    DictionaryEntry* entry = &nested.objectDictionary.emplace_back();
    for (int i = 0; i < 2000; ++i) entry = &entry->entries.emplace_back();
    feed(nativeText(nested));
    Drawing back;
    EXPECT_EQ(loadNativeText(nativeText(nested), back), "");
    EXPECT_FALSE(back.objectDictionary.at(0).entries.at(0).entries.empty());
}

TEST(Hostile, ChangedFilesDoNoHarm) {
    const std::string text = fullText();
    static const std::string kTokens[] = {"null",
                                          "true",
                                          "-1",
                                          "1e308",
                                          "18446744073709551615",
                                          "\"\"",
                                          "[]",
                                          "{}",
                                          "0.5",
                                          "\"x\"",
                                          "-9223372036854775808",
                                          "[[1]]",
                                          ",",
                                          "\"*\"",
                                          "{",
                                          "}",
                                          "{\"x\":1}",
                                          "4294967296"};
    std::mt19937 random(2);
    const auto stop = std::chrono::steady_clock::now() + std::chrono::milliseconds(1200);
    // The number of rounds depends on the machine; each of them does not.
    for (int round = 0; std::chrono::steady_clock::now() < stop || round < 20; ++round) {
        std::string changed = text;
        for (unsigned i = 1 + random() % 4; i > 0; --i) {
            const std::size_t at = random() % changed.size();
            if (random() % 4 == 0) {
                changed[at] = static_cast<char>(random());
                continue;
            }
            // Another value in place of one: the text stays a document, and the loader is reached.
            const std::size_t colon = changed.find(": ", at);
            if (colon == std::string::npos) continue;
            const std::size_t end = changed.find_first_of(",\n", colon);
            if (end != std::string::npos)
                changed.replace(colon + 2, end - colon - 2, kTokens[random() % std::size(kTokens)]);
        }
        feed(changed);
    }
}

TEST(Hostile, PartsThatComeTwiceAndByTheThousand) {
    Drawing drawing;
    EXPECT_EQ(loadNativeText(R"({"format":"kovacad","layouts":[{"entities":[{"type":"Line"},{"type":"Line"}]}],
        "layouts":[{"entities":[{"type":"Line"}]}],"blocks":[{"name":"A","entities":[{"type":"Line"}]}],
        "blocks":[{"name":"A","entities":[{"type":"Line"}]},{"name":"B"}],
        "entities":[{"type":"Line"}],"entities":[{"type":"Line"}]})",
                             drawing),
              "");
    EXPECT_EQ(drawing.layouts().size(), 2U);
    EXPECT_EQ(drawing.blocks().size(), 2U);
    EXPECT_EQ(drawing.entityCount(), 6U);
    for (const char* part : {"layouts", "blocks", "layers", "groups", "textStyles", "entities"}) {
        std::string many = "{\"format\":\"kovacad\",\"" + std::string(part) + "\":[{}";
        for (int i = 0; i < 30'000; ++i) many += i % 2 == 0 ? ",{}" : ",{\"name\":\"n" + std::to_string(i) + "\"}";
        feed(many + "]}");
    }
}

TEST(Hostile, EndlessListsAndWideObjects) {
    std::string list = "{\"format\":\"kovacad\",\"entities\":[{\"type\":\"Polyline\",\"vertices\":[";
    for (int i = 0; i < 200'000; ++i) list += "{\"x\":1,\"y\":2},";
    list.back() = ']';
    list += ",\"bulges\":[";
    for (int i = 0; i < 200'000; ++i) list += "0,";
    list.back() = ']';
    feed(list + "}]}");
    std::string wide = "{\"format\":\"kovacad\",\"layerStates\":{";
    for (int i = 0; i < 20'000; ++i) wide += "\"s" + std::to_string(i) + "\":{},";
    wide.back() = '}';
    feed(wide + "}");
}

}  // namespace
}  // namespace kova::io::native
