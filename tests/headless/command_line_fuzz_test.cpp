// The command-line fuzz target over lines of a fixed generator: the seed of a long search, and what a test run affords.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <random>
#include <sstream>

#include "../../fuzz/command_line.cpp"

namespace kova {
namespace {

int feedText(const std::string& text) {
    return LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t*>(text.data()), text.size());
}

TEST(CommandLineFuzz, SeedsRunThrough) {
    int count = 0;
    for (const auto& entry :
         std::filesystem::directory_iterator(std::string(KOVA_SOURCE_DIR) + "/fuzz/corpus/command_line")) {
        std::ifstream file(entry.path(), std::ios::binary);
        std::stringstream text;
        text << file.rdbuf();
        EXPECT_EQ(feedText(text.str()), 0) << entry.path();
        ++count;
    }
    EXPECT_GE(count, 4);
}

std::string randomLine(std::mt19937& random, const std::vector<cmd::Command*>& commands) {
    static const char* const answers[] = {"",
                                          "",
                                          "",
                                          "0,0",
                                          "10,0",
                                          "5,5",
                                          "@3,4",
                                          "@5<45",
                                          "-7.5,2e3",
                                          "1<2",
                                          "1,2,3",
                                          "5",
                                          "-1",
                                          "0",
                                          "1e308",
                                          "1e308,-1e308",
                                          "nan",
                                          "@",
                                          "U",
                                          "C",
                                          "ALL",
                                          "L",
                                          "P",
                                          "W",
                                          "WP",
                                          "CP",
                                          "F",
                                          "R",
                                          "A",
                                          "Y",
                                          "N",
                                          "ON",
                                          "OFF",
                                          "?",
                                          "*",
                                          "S",
                                          "M",
                                          "D",
                                          "T",
                                          "E",
                                          "B",
                                          "G",
                                          "X",
                                          "3P",
                                          "2P",
                                          "TTT",
                                          "red",
                                          "255",
                                          "0.25",
                                          "Walls",
                                          "a,b*",
                                          "\"q r\"",
                                          "Standard",
                                          "Hidden",
                                          "'UNDO",
                                          "'REGEN",
                                          "'ERASE",
                                          "'SELECTALL",
                                          "'NEW",
                                          "UNDO 2",
                                          "REDO",
                                          "LINE 0,0 9,9",
                                          "CIRCLE 5,5 2",
                                          "_.-LAYER",
                                          "(list 1 2)",
                                          "SELECT ALL",
                                          "1000000",
                                          "20"};
    switch (random() % 8) {
        case 0:
        case 1:
            return commands[random() % commands.size()]->name();
        case 2: {
            std::string junk;
            for (std::size_t n = random() % 12; n > 0; --n) junk += static_cast<char>(random() % 256);
            return junk;
        }
        case 3:
            return std::to_string(static_cast<int>(random() % 400) - 200) + "," + std::to_string(random() % 200);
        default:
            return answers[random() % std::size(answers)];
    }
}

TEST(CommandLineFuzz, RandomLinesDoNoHarm) {
    std::mt19937 random(4711);
    const std::vector<cmd::Command*> commands = cmd::CommandRegistry::instance().commands();
    for (int round = 0; round < 250; ++round) {
        std::string text;
        for (int line = 0; line < 150; ++line) text += randomLine(random, commands) + "\n";
        EXPECT_EQ(feedText(text), 0) << "round " << round;
    }
    engine::resetProfileVariables();
    cmd::CommandRegistry::instance().resetAliases();
}

// Every command is started in an empty drawing and in one with a line, and gets the same row of answers.
TEST(CommandLineFuzz, EveryCommandTakesAnyAnswer) {
    for (const cmd::Command* command : cmd::CommandRegistry::instance().commands()) {
        const std::string answers = command->name() + "\nALL\n\n1,1\n@2,2\nx\n5\n-5\nU\n\n\nY\n*\n\n\n";
        EXPECT_EQ(feedText(answers), 0) << command->name();
        EXPECT_EQ(feedText("LINE 0,0 10,10\n\n" + answers + command->name() + "\nL\n\n0,0\n3,3\n1\n\n\n\n"), 0)
            << command->name();
    }
    engine::resetProfileVariables();
    cmd::CommandRegistry::instance().resetAliases();
}

}  // namespace
}  // namespace kova
