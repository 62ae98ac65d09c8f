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

std::string oneOf(std::mt19937& random, const std::vector<std::string>& texts) {
    return texts[random() % texts.size()];
}

/// Answers that some prompt or other understands, and some that none does.
std::string anyAnswer(std::mt19937& random) {
    static const std::vector<std::string> answers = {"",
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
                                                     "20",
                                                     "<> mm",
                                                     "%%c<>",
                                                     "B1",
                                                     "B2",
                                                     "*B1",
                                                     "B1=part",
                                                     "part.dxf",
                                                     "Layout1",
                                                     "Model",
                                                     "ISO A4",
                                                     "1:50",
                                                     "0.02XP",
                                                     "2X",
                                                     "Fit",
                                                     "ANSI31",
                                                     "Center",
                                                     "DIMTXT",
                                                     "DIMSCALE",
                                                     "2.5",
                                                     "TAG",
                                                     "45",
                                                     "4",
                                                     "3x",
                                                     "A(M)",
                                                     "PDF",
                                                     "0.2",
                                                     "10",
                                                     "-5,-5",
                                                     "20,20",
                                                     "100,0",
                                                     "7,3"};
    return oneOf(random, answers);
}

std::string anyPoint(std::mt19937& random) {
    // Often a place where something was drawn.
    if (random() % 2 == 0) return oneOf(random, {"0,0", "10,0", "10,10", "5,5", "0,10", "5,0", "20,5", "8,5", "5,8"});
    return std::to_string(static_cast<int>(random() % 60) - 20) + "," +
           std::to_string(static_cast<int>(random() % 60) - 20);
}

std::string randomLine(std::mt19937& random, const std::vector<cmd::Command*>& commands) {
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
            return anyPoint(random);
        default:
            return anyAnswer(random);
    }
}

/// The short forms of the options that a prompt offers in square brackets.
std::vector<std::string> optionsOf(const std::string& prompt) {
    std::vector<std::string> options;
    const std::size_t open = prompt.find('[');
    const std::size_t close = prompt.find(']', open);
    if (open == std::string::npos || close == std::string::npos) return options;
    std::string option;
    for (std::size_t i = open + 1; i <= close; ++i) {
        const char c = prompt[i];
        if (c == '/' || c == ']') {
            if (!option.empty()) options.push_back(option);
            option.clear();
        } else if ((c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '?') {
            option += c;
        }
    }
    return options;
}

/// A line that the prompt is likely to take, so that conversations get far.
std::string fittingLine(std::mt19937& random, const std::string& prompt, const std::vector<cmd::Command*>& commands) {
    if (random() % 16 == 0) return anyAnswer(random);
    if (prompt == "Command:") {
        if (random() % 8 == 0)
            return oneOf(random, {"UNDO", "UNDO 3", "REDO", "OOPS", "SELECT ALL", "LAYOUT Set Layout1"});
        return commands[random() % commands.size()]->name();
    }
    const std::vector<std::string> options = optionsOf(prompt);
    if (!options.empty() && random() % 3 == 0) return oneOf(random, options);
    if (random() % 6 == 0) return "";
    const auto has = [&](const char* word) { return prompt.find(word) != std::string::npos; };
    if (has("Select") || has("elect obj"))
        return random() % 3 == 0 ? anyPoint(random) : oneOf(random, {"ALL", "L", "P", "", "", "C", "W"});
    if (has("name") || has("tyle") || has("ayer"))
        return oneOf(random, {"B1", "B2", "B3", "Walls", "0", "Standard", "Other", "Layout1", "*", "Center"});
    if (has("point") || has("ocation") || has("corner") || has("enter of") || has("origin")) return anyPoint(random);
    return random() % 2 == 0 ? oneOf(random, {"1", "2", "5", "3", "0.5", "45", "90", "-1", "12"}) : anyPoint(random);
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

// Conversations that answer what is asked, on a drawing with something of everything in it.
TEST(CommandLineFuzz, ConversationsDoNoHarm) {
    const std::vector<std::string> start = {"LINE 0,0 10,0 10,10",
                                            "",
                                            "CIRCLE 5,5 3",
                                            "RECTANGLE 0,0 20,10",
                                            "PLINE 0,10 5,0 A 10,10",
                                            "",
                                            "ARC 0,0 5,5 10,0",
                                            "-HATCH 5,5",
                                            "",
                                            "TEXT 1,1 2 0",
                                            "text",
                                            "",
                                            "DIMLINEAR 0,0 10,0 5,-5",
                                            "ATTDEF",
                                            "",
                                            "TAG",
                                            "Prompt",
                                            "v",
                                            "1,1",
                                            "1",
                                            "0",
                                            "BLOCK B1 0,0 L",
                                            "",
                                            "INSERT B1 20,20 1 1 0 w",
                                            "SPLINE 0,0 5,9 10,0 20,5",
                                            "",
                                            "MTEXT 0,20 10,10 a",
                                            "",
                                            "LEADER 0,0 5,5",
                                            "",
                                            "note",
                                            "",
                                            "-LAYER Make Walls Color 1",
                                            "",
                                            "Set 0",
                                            "",
                                            "LAYOUT Set Layout1",
                                            "MVIEW Fit",
                                            "LAYOUT Set Model"};
    const char* rounds = std::getenv("KOVA_FUZZ_ROUNDS");
    const char* seed = std::getenv("KOVA_FUZZ_SEED");
    const unsigned first = seed != nullptr ? static_cast<unsigned>(std::atoi(seed)) : 1;
    const unsigned count = rounds != nullptr ? static_cast<unsigned>(std::atoi(rounds)) : 150;
    const std::vector<cmd::Command*> commands = cmd::CommandRegistry::instance().commands();
    for (unsigned round = first; round < first + count; ++round) {
        std::mt19937 random(round);
        fuzzing::CommandSession session;
        if (seed != nullptr) std::fprintf(stderr, "round %u\n", round);
        for (const std::string& line : start) session.feed(line);
        EXPECT_GE(session.entityCount(), 10u);
        for (int i = 0; i < 120 && session.entityCount() < 3000; ++i) {
            const std::string line = fittingLine(random, session.prompt(), commands);
            if (std::getenv("KOVA_FUZZ_ECHO") != nullptr)
                std::fprintf(stderr, "%s %s\n", session.prompt().c_str(), line.c_str());
            session.feed(line);
        }
        session.finish();
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
