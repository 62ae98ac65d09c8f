#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iterator>

#include "cmd/script_lines.hpp"
#include "headless/session.hpp"

namespace kova::cli {
namespace {

namespace fs = std::filesystem;

// Every script among the examples runs to its end without a refusal, leaves nothing waiting and draws something.
TEST(Examples, ScriptsRunWithoutRefusals) {
    int scripts = 0;
    for (const auto& entry : fs::directory_iterator(fs::path(KOVA_SOURCE_DIR) / "examples")) {
        if (entry.path().extension() != ".scr") continue;
        ++scripts;
        SCOPED_TRACE(entry.path().string());
        std::ifstream file(entry.path());
        const std::string text((std::istreambuf_iterator<char>(file)), std::istreambuf_iterator<char>());
        headless::Session session;
        for (const std::string& line : cmd::scriptLines(text))
            for (const std::string& out : session.feed(line))
                for (const char* refusal : {"Unknown command", "Invalid", "not available", "not found", "No object",
                                            "does not", "error:", "annot ", "failed"})
                    EXPECT_EQ(out.find(refusal), std::string::npos) << out;
        EXPECT_FALSE(session.isWaiting()) << session.currentPrompt();
        EXPECT_GT(session.document().drawing().entityCount(), 0u);
    }
    EXPECT_GT(scripts, 0);
}

}  // namespace
}  // namespace kova::cli
