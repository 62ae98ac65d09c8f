// A short run of the fuzz target over its seeds and broken forms of them.

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <random>

#include "../../../fuzz/lisp_line.hpp"

namespace kova::fuzz {
namespace {

std::vector<std::string> seeds() {
    std::vector<std::string> out;
    for (const auto& file : std::filesystem::directory_iterator(KOVA_SOURCE_DIR "/fuzz/corpus/lisp_line")) {
        std::ifstream in(file.path(), std::ios::binary);
        out.emplace_back((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
    }
    std::sort(out.begin(), out.end());
    return out;
}

TEST(LispFuzz, SeedsAndTheirRuinsDoNoHarm) {
    const std::vector<std::string> texts = seeds();
    ASSERT_GE(texts.size(), 10u);
    const std::size_t before = script::lisp::Heap::bytes;
    for (const std::string& text : texts) lispLine(text);
    // Pieces of the language put where they do not belong.
    static const char* const pieces[] = {"(",
                                         ")",
                                         "'",
                                         "\"",
                                         ".",
                                         " nil ",
                                         " T ",
                                         " -1 ",
                                         " 1e308 ",
                                         "1e999",
                                         " '(1 . 2) ",
                                         "(entlast)",
                                         "(ssget \"A\")",
                                         "(getpoint)",
                                         "(lambda (x) x)",
                                         " 9223372036854775807 ",
                                         "(entget (entlast))",
                                         " (quote (10 0 0)) ",
                                         "(repeat 99999 (list 1))",
                                         "\\"};
    std::mt19937 random(7);
    for (int i = 0; i < 3000; ++i) {
        std::string text = texts[random() % texts.size()];
        for (std::uint32_t k = random() % 4 + 1; k > 0; --k) {
            const std::size_t at = random() % (text.size() + 1);
            switch (random() % 4) {
                case 0:
                    text.erase(at, random() % 8);
                    break;
                case 1:
                    text.insert(at, pieces[random() % std::size(pieces)]);
                    break;
                case 2:
                    text.insert(at, texts[random() % texts.size()]);
                    break;
                default:
                    if (at < text.size()) text[at] = static_cast<char>(random());
            }
        }
        lispLine(text);
    }
    EXPECT_LT(script::lisp::Heap::bytes, before + 10'000'000);
}

}  // namespace
}  // namespace kova::fuzz
