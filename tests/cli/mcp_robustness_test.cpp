#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QDir>
#include <QFile>
#include <QProcess>
#include <nlohmann/json.hpp>
#include <random>

#include "cli/mcp_server.hpp"

namespace kova::cli {
namespace {

using nlohmann::json;
using ::testing::HasSubstr;
using ::testing::StartsWith;

struct McpRobustness : ::testing::Test {
    headless::Session session;
    McpTools tools{session};
    McpServer server{tools};

    std::string toolCall(const std::string& name, const std::string& arguments) {
        return server.handle(R"({"id":1,"method":"tools/call","params":{"name":")" + name + R"(","arguments":)" +
                             arguments + "}}");
    }
    void stillAlive() {
        EXPECT_EQ(server.handle(R"({"id":1,"method":"ping"})"), R"({"jsonrpc":"2.0","id":1,"result":{}})");
    }
};

constexpr const char* kParseError = R"({"jsonrpc":"2.0","id":null,"error":{"code":-32700,"message":"Parse error"}})";

TEST_F(McpRobustness, LongAndDeepLines) {
    const std::string big(8'000'000, 'x');
    EXPECT_EQ(server.handle(big), kParseError);
    EXPECT_THAT(toolCall("run_commands", R"({"commands":[")" + big + R"("]})"), HasSubstr("Unknown command: xxx"));
    EXPECT_THAT(server.handle(R"({"id":1,"method":")" + big + "\"}"), HasSubstr("-32601"));
    for (const int levels : {10'000, 4'000'000}) {
        const std::string deep = std::string(levels, '[') + std::string(levels, ']');
        EXPECT_EQ(server.handle(deep), kParseError);
        EXPECT_EQ(server.handle(R"({"method":"ping","id":)" + deep + "}"), kParseError);
        EXPECT_EQ(server.handle(std::string(levels, '[')), kParseError);
    }
    // Brackets within texts are no nesting.
    EXPECT_THAT(toolCall("list_commands", R"({"contains":")" + std::string(2000, '[') + "\"}"),
                HasSubstr(R"("isError":false)"));
    stillAlive();
}

TEST_F(McpRobustness, TextsThatAreNoUtf8) {
    for (const char* bad :
         {"{\"id\":1,\"method\":\"\xff\"}", "{\"id\":1,\"method\":\"\xc0\xaf\"}",
          "{\"id\":1,\"method\":\"\xed\xa0\x80\"}", R"({"id":1,"method":"\ud800"})", "{\"id\":\"\xe2\x82\"}"})
        EXPECT_EQ(server.handle(bad), kParseError) << bad;
    EXPECT_EQ(server.handle(std::string("{\"id\":1,\0\"method\":\"ping\"}", 25)), kParseError);
    stillAlive();
}

TEST_F(McpRobustness, WrongTypesInEveryArgument) {
    const auto descriptions = McpTools::descriptions();
    for (const auto& tool : descriptions) {
        const std::string name = tool["name"];
        for (const auto& [property, schema] : tool["inputSchema"]["properties"].items()) {
            const std::string type = schema["type"];
            for (const char* value : {"5", "\"x\"", "true", "[]", "{}", "[{}]", "null", "1e300", "-1"}) {
                const bool fits = (type == "string" && value[0] == '"') || (type == "boolean" && value[0] == 't') ||
                                  (type == "array" && value[0] == '[') ||
                                  (type == "integer" && (value[0] == '5' || value[0] == '-' || value[0] == '1'));
                if (fits || name == "run_python") continue;
                const std::string reply = toolCall(name, "{\"" + property + "\":" + value + "}");
                EXPECT_THAT(reply, HasSubstr(R"("isError":true)")) << name << " " << property << " " << value << "\n"
                                                                   << reply;
            }
        }
        EXPECT_THAT(toolCall(name, "5"), HasSubstr(R"("jsonrpc":"2.0")"));
    }
    stillAlive();
}

TEST_F(McpRobustness, HugePictures) {
    for (const char* size : {"2147483647", "1000000", "0", "-5"}) {
        const std::string reply =
            toolCall("render_image", std::string(R"({"width":)") + size + R"(,"height":)" + size + "}");
        EXPECT_THAT(reply, HasSubstr("\"isError\":")) << size;
    }
    stillAlive();
}

// A short run of what the fuzz target does at length: the seeds, and the seeds with bytes changed at random.
TEST_F(McpRobustness, ChangedSeedsGetAnswers) {
    const QDir seeds(QStringLiteral(KOVA_SOURCE_DIR "/fuzz/corpus/mcp_line"));
    std::mt19937 random(7);
    int lines = 0;
    for (const QString& name : seeds.entryList(QDir::Files)) {
        QFile file(seeds.filePath(name));
        ASSERT_TRUE(file.open(QIODevice::ReadOnly));
        const std::string seed = file.readAll().toStdString();
        for (int i = 0; i < 150; ++i, ++lines) {
            std::string line = seed;
            for (int changes = i == 0 ? 0 : 1 + i % 4; changes > 0 && !line.empty(); --changes) {
                const std::size_t at = random() % line.size();
                switch (random() % 3) {
                    case 0:
                        line[at] = static_cast<char>(random());
                        break;
                    case 1:
                        line.erase(at, 1 + random() % 5);
                        break;
                    default:
                        line.insert(at, line.substr(random() % line.size(), random() % 20));
                        break;
                }
            }
            if (line.find("render_image") != std::string::npos && i > 3) continue;
            const std::string reply = server.handle(line);
            ASSERT_EQ(reply.find('\n'), std::string::npos) << line;
            if (!reply.empty()) ASSERT_THAT(reply, StartsWith("{\"jsonrpc\":\"2.0\",\"id\":")) << line;
        }
    }
    EXPECT_GT(lines, 1000);
    stillAlive();
}

std::vector<json> askProcess(const std::vector<json>& requests) {
    QProcess process;
    process.start(QStringLiteral(KOVA_PROGRAM), {"mcp"});
    for (const json& request : requests) process.write(QByteArray::fromStdString(request.dump() + "\n"));
    process.closeWriteChannel();
    EXPECT_TRUE(process.waitForFinished(120000));
    EXPECT_EQ(process.exitCode(), 0);
    std::vector<json> replies;
    for (const QByteArray& line : process.readAllStandardOutput().split('\n'))
        if (!line.isEmpty()) replies.push_back(json::parse(line.toStdString()));
    return replies;
}

json python(int id, const std::string& code) {
    return {{"jsonrpc", "2.0"},
            {"id", id},
            {"method", "tools/call"},
            {"params", {{"name", "run_python"}, {"arguments", {{"code", code}}}}}};
}

TEST(McpProcess, PythonWorksAndNothingItDoesBreaksTheProtocol) {
    const std::vector<std::string> codes = {
        "from kova.doc import current\nfrom kova.ent import Line\nprint(current().model_space.add(Line((0, 0), (1, "
        "1))).kind)",
        "import os, sys, subprocess\nos.write(1, b'raw\\n')\nsys.__stdout__.write('dunder\\n'); "
        "sys.__stdout__.flush()\n"
        "subprocess.run(['sh', '-c', 'echo child; cat'])",
        "def f(): f()\nf()",
        "import sys; sys.exit(7)",
        "kova.cmd.run('LINE', (0, 0), (1, 1), '')\nkova.cmd.run('CIRCLE', (0, 0), 5)",
        "print(len(current().model_space))",
    };
    std::vector<json> requests;
    for (std::size_t i = 0; i < codes.size(); ++i) requests.push_back(python(static_cast<int>(i), codes[i]));
    const std::vector<json> replies = askProcess(requests);
    ASSERT_EQ(replies.size(), codes.size());
    for (std::size_t i = 0; i < replies.size(); ++i) EXPECT_EQ(replies[i]["id"], i);
    const auto text = [&](std::size_t i) { return replies[i]["result"]["content"][0]["text"].get<std::string>(); };
    EXPECT_EQ(text(0), "Line\n");
    EXPECT_EQ(text(1), "(no output)");
    EXPECT_THAT(text(2), HasSubstr("RecursionError"));
    EXPECT_EQ(replies[2]["result"]["isError"], true);
    EXPECT_THAT(text(3), ::testing::EndsWith("SystemExit: 7"));
    EXPECT_THAT(text(4), StartsWith("Command: LINE\nSpecify first point: 0,0\n"));
    EXPECT_EQ(text(5), "3\n");
}

// Each example line must get a reply without an error.
TEST(McpProcess, TheExampleSessionRuns) {
    QFile file(QStringLiteral(KOVA_SOURCE_DIR "/examples/mcp-session.jsonl"));
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    std::vector<json> requests;
    std::size_t answered = 0;
    for (const QByteArray& line : file.readAll().split('\n')) {
        if (line.isEmpty()) continue;
        requests.push_back(json::parse(line.toStdString()));
        answered += requests.back().contains("id") ? 1 : 0;
    }
    const std::vector<json> replies = askProcess(requests);
    ASSERT_EQ(replies.size(), answered);
    for (const json& reply : replies) {
        ASSERT_TRUE(reply.contains("result")) << reply;
        EXPECT_FALSE(reply["result"].value("isError", false)) << reply["result"]["content"][0]["text"];
    }
}

}  // namespace
}  // namespace kova::cli
