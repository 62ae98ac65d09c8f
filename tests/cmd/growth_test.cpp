// Scripts that make many of one thing, one command after the other.
#include <ctime>
#include <functional>

#include "console.hpp"

namespace kova::cmd {
namespace {

double secondsOf(std::size_t count, const std::function<std::vector<std::string>(std::size_t)>& linesOf) {
    double best = 1e9;
    for (int i = 0; i < 2; ++i) {
        Console console;
        const std::clock_t start = std::clock();
        for (std::size_t k = 0; k < count; ++k) {
            console.run(linesOf(k));
            console.lines.clear();
        }
        best = std::min(best, static_cast<double>(std::clock() - start) / CLOCKS_PER_SEC);
    }
    return best;
}

/// Eight times as many may cost three times eight times the time; what grows with the square costs 64 times.
void expectSteadyGrowth(std::size_t count, const std::function<std::vector<std::string>(std::size_t)>& linesOf) {
    const double small = secondsOf(count, linesOf);
    const double large = secondsOf(8 * count, linesOf);
    EXPECT_LT(large, 24 * small + 0.05);
}

TEST(CommandGrowth, LayersOneByOne) {
    expectSteadyGrowth(400, [](std::size_t k) {
        const std::string name = "L" + std::to_string(k);
        return std::vector<std::string>{"-LAYER", "New", name, "Color", "1", name, ""};
    });
}

TEST(CommandGrowth, UnnamedGroupsOneByOne) {
    expectSteadyGrowth(300, [](std::size_t k) {
        const std::string x = std::to_string(k);
        return std::vector<std::string>{"LINE", x + ",0", x + ",1", "", "GROUP", "Last", ""};
    });
    Console console;
    for (int i = 0; i < 3; ++i)
        console.run({"LINE", std::to_string(i) + ",0", std::to_string(i) + ",1", "", "GROUP", "Last", ""});
    EXPECT_EQ(console.drawing().groups.size(), 3U);
    EXPECT_NE(console.drawing().groups.find("*A3"), nullptr);
}

TEST(CommandGrowth, BlocksOneByOne) {
    expectSteadyGrowth(200, [](std::size_t k) {
        const std::string x = std::to_string(k);
        return std::vector<std::string>{"LINE", x + ",0", x + ",1", "", "-BLOCK", "B" + x, x + ",0", "Last", "",
                                        "-INSERT", "B" + x, x + ",5", "1", "1", "0"};
    });
}

}  // namespace
}  // namespace kova::cmd
