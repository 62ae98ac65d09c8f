#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QProcess>
#include <QTemporaryDir>
#include <nlohmann/json.hpp>

#include "cli/mcp_server.hpp"

namespace kova::cli {
namespace {

using nlohmann::json;
using nlohmann::ordered_json;
using ::testing::EndsWith;
using ::testing::HasSubstr;
using ::testing::StartsWith;

struct FakePython : PythonRunner {
    Result next;
    Result run(const std::string&) override { return next; }
};

struct McpTest : ::testing::Test {
    headless::Session session;
    FakePython python;
    McpTools tools{session, &python};
    McpServer server{tools};
    QTemporaryDir directory;

    McpTest() { session.takeOutput(); }
    ordered_json ask(const std::string& line) { return ordered_json::parse(server.handle(line)); }
    ordered_json call(const std::string& tool, const json& arguments = json::object()) {
        const json request = {{"jsonrpc", "2.0"}, {"id", 7}, {"method", "tools/call"},
                              {"params", {{"name", tool}, {"arguments", arguments}}}};
        return ask(request.dump())["result"];
    }
    std::string text(const ordered_json& result) { return result["content"][0]["text"]; }
    std::string run(const json& lines, bool cancelFirst = false) {
        return text(call("run_commands", {{"commands", lines}, {"cancel_first", cancelFirst}}));
    }
};

TEST_F(McpTest, InitializeNegotiatesTheVersion) {
    const auto version = [&](const std::string& params) {
        return ask(R"({"id":1,"method":"initialize","params":)" + params + "}")["result"]["protocolVersion"];
    };
    EXPECT_EQ(version(R"({"protocolVersion":"2025-03-26"})"), "2025-03-26");
    EXPECT_EQ(version(R"({"protocolVersion":"1999-01-01"})"), "2025-06-18");
    EXPECT_EQ(version(R"({"protocolVersion":5})"), "2025-06-18");
    EXPECT_EQ(version("[]"), "2025-06-18");
    const std::string reply = server.handle(R"({"method":"initialize"})");
    EXPECT_THAT(reply, StartsWith(R"({"jsonrpc":"2.0","id":null,"result":{"protocolVersion":"2025-06-18",)"
                                  R"("capabilities":{"tools":{"listChanged":false}},"serverInfo":{"name":"kovacad",)"
                                  R"("title":"KovaCAD","version":"1.1.7"},"instructions":"KovaCAD is a 2D/3D CAD)"));
}

TEST_F(McpTest, EnvelopeAndErrors) {
    EXPECT_EQ(server.handle(R"({"id":"a","method":"ping"})"), R"({"jsonrpc":"2.0","id":"a","result":{}})");
    EXPECT_EQ(server.handle(R"({"id":null,"method":"ping"})"), R"({"jsonrpc":"2.0","id":null,"result":{}})");
    EXPECT_EQ(server.handle(R"({"method":"ping"})"), "");
    EXPECT_EQ(server.handle(R"({"method":"notifications/initialized"})"), "");
    const std::string parseError = R"({"jsonrpc":"2.0","id":null,"error":{"code":-32700,"message":"Parse error"}})";
    for (const char* bad : {"not json", "[]", "5", "\"x\"", "{\"id\":1", "\xff\xfe"})
        EXPECT_EQ(server.handle(bad), parseError) << bad;
    EXPECT_EQ(server.handle(R"({"id":2,"method":"no/such"})"),
              R"({"jsonrpc":"2.0","id":2,"error":{"code":-32601,"message":"Method not found: no/such"}})");
    EXPECT_EQ(server.handle(R"({"id":2,"method":5})"),
              R"({"jsonrpc":"2.0","id":2,"error":{"code":-32601,"message":"Method not found: "}})");
    EXPECT_EQ(text(call("frob")), "Unknown tool: frob");
    EXPECT_EQ(call("frob")["isError"], true);
    const ordered_json wrong = ask(R"({"id":1,"method":"tools/call","params":{"name":"open_drawing","arguments":{"path":5}}})");
    EXPECT_EQ(wrong["result"]["isError"], true);
    EXPECT_THAT(text(wrong["result"]), HasSubstr("type must be string, but is number"));
    EXPECT_EQ(ask(R"({"id":1,"method":"tools/call","params":7})")["result"]["isError"], true);
}

TEST_F(McpTest, ToolListHasTheSchemas) {
    const ordered_json tools = ask(R"({"id":1,"method":"tools/list"})")["result"]["tools"];
    std::vector<std::string> names;
    for (const auto& tool : tools) names.push_back(tool["name"]);
    EXPECT_THAT(names, ::testing::ElementsAre("drawing_info", "new_drawing", "open_drawing", "save_drawing",
                                              "run_commands", "cancel_command", "run_python", "list_entities",
                                              "render_image", "list_commands"));
    EXPECT_EQ(tools[0]["inputSchema"].dump(), R"({"type":"object","properties":{}})");
    EXPECT_EQ(tools[4]["inputSchema"].dump(),
              R"({"type":"object","properties":{"commands":{"type":"array","description":"e.g. [\"LINE\", \"0,0\", \"100,0\", )"
              R"(\"100,50\", \"\"]","items":{"type":"string"}},"cancel_first":{"type":"boolean","description":"End any )"
              R"(command still waiting first (Escape)."}},"required":["commands"]})");
    EXPECT_EQ(tools[7]["inputSchema"]["properties"]["limit"].dump(),
              R"({"type":"integer","description":"At most this many (default 200).","minimum":1,"maximum":2000})");
}

TEST_F(McpTest, CommandsRunAndWait) {
    EXPECT_EQ(run(json::array()), "\n[ready] Command:");
    EXPECT_EQ(run({"LINE", "0,0", "10,0"}),
              "Command: LINE\nSpecify first point: 0,0\nSpecify next point or [Close/Undo]: 10,0\n"
              "[waiting] Specify next point or [Close/Undo]:");
    EXPECT_EQ(run({"10,5", ""}), "Specify next point or [Close/Undo]: 10,5\nSpecify next point or [Close/Undo]: \n"
                                 "[ready] Command:");
    run({"LINE"});
    EXPECT_THAT(run({5}, true), StartsWith("*Cancel*\nCommand: 5\nUnknown command: 5\n[ready]"));
    run({"LINE"});
    EXPECT_EQ(text(call("cancel_command")), "*Cancel*\n[ready] Command:");
    EXPECT_EQ(text(call("cancel_command")), "\n[ready] Command:");
    // What waits ends also when the rest of the call is refused.
    run({"LINE"});
    EXPECT_EQ(text(call("run_commands", {{"cancel_first", true}})), "commands must be an array of strings");
    EXPECT_FALSE(session.isWaiting());
    EXPECT_EQ(run(json::array()), "*Cancel*\n[ready] Command:");
    EXPECT_EQ(text(call("run_commands")), "commands must be an array of strings");
    EXPECT_EQ(call("run_commands", {{"commands", "LINE"}})["isError"], true);
}

TEST_F(McpTest, DrawingsAreDescribedListedSavedAndOpened) {
    run({"LINE", "0,0", "10,0", "10,5", "", "CIRCLE", "50,50", "10"});
    const ordered_json info = ordered_json::parse(text(call("drawing_info")));
    EXPECT_EQ(info["file"], "");
    EXPECT_EQ(info["unsaved_changes"], true);
    EXPECT_EQ(info["space"], "model");
    EXPECT_EQ(info["model_entities_by_type"].dump(), R"({"Line":2,"Circle":1})");
    EXPECT_EQ(info["model_extents"].dump(), R"({"min":[0.0,0.0],"max":[60.0,60.0]})");
    EXPECT_EQ(info["command_waiting"], false);

    const auto space = [&] { return std::string(ordered_json::parse(text(call("drawing_info")))["space"]); };
    run({"LAYOUT", "S", "Layout1", "MVIEW", "0,0", "100,100"});
    EXPECT_EQ(space(), "paper:Layout1");
    run({"MSPACE"});
    EXPECT_EQ(space(), "model");
    run({"PSPACE", "LAYOUT", "S", "Model"});
    EXPECT_EQ(space(), "model");

    const ordered_json all = ordered_json::parse(text(call("list_entities")));
    EXPECT_EQ(all["total_matching"], 3);
    EXPECT_EQ(all["entities"][2]["kind"], "Circle");
    EXPECT_EQ(all["entities"][2]["radius"], 10.0);
    const std::string firstKeys = all["entities"][0].dump();
    EXPECT_THAT(firstKeys, StartsWith("{\"kind\":\"Line\",\"handle\":\""));
    EXPECT_THAT(text(call("list_entities")), StartsWith("{\n \"total_matching\": 3,\n \"returned\": 3,\n \"entities\": [\n"));
    const ordered_json one = ordered_json::parse(text(call("list_entities", {{"limit", 0}, {"offset", 1}, {"type", "line"}})));
    EXPECT_EQ(one["total_matching"], 2);
    EXPECT_EQ(one["returned"], 1);
    EXPECT_EQ(one["entities"][0]["endY"], 5.0);
    EXPECT_EQ(ordered_json::parse(text(call("list_entities", {{"layer", "none"}})))["entities"].dump(), "[]");
    EXPECT_EQ(text(call("list_entities", {{"space", "Attic"}})), "No layout named Attic");
    EXPECT_EQ(text(call("list_entities", {{"type", "FROB"}})), "Unknown entity type: FROB");

    const std::string path = directory.filePath("a.kvcad").toStdString();
    EXPECT_EQ(text(call("save_drawing")), "The drawing has no file name yet: give one.");
    EXPECT_EQ(text(call("save_drawing", {{"path", path}})), "Saved: " + path);
    run({"LINE", "0,0"});
    EXPECT_EQ(text(call("new_drawing", {{"template", "none"}})), "Template not found: none");
    EXPECT_TRUE(session.isWaiting());
    EXPECT_EQ(text(call("new_drawing")), "New drawing started.");
    EXPECT_EQ(run(json::array()), "\n[ready] Command:");
    run({"LINE", "0,0"});
    EXPECT_EQ(text(call("open_drawing", {{"path", path}})), "Opened " + path);
    EXPECT_EQ(run({"5,5"}), "Command: 5,5\nUnknown command: 5,5\n[ready] Command:");
    EXPECT_EQ(session.document().drawing().modelSpace().size(), 3u);
    EXPECT_EQ(call("open_drawing", {{"path", path + "x"}})["isError"], true);

    // What is discarded or replaced is told behind the text that callers wait for, and only then.
    run({"LINE", "0,0", "10,0", ""});
    const ordered_json opened = call("open_drawing", {{"path", path}});
    EXPECT_EQ(text(opened), "Opened " + path);
    ASSERT_EQ(opened["content"].size(), 2u);
    EXPECT_EQ(opened["content"][1]["text"], "Changes to " + path + " were not saved.");
    run({"LINE", "0,0", "10,0", ""});
    EXPECT_EQ(call("new_drawing")["content"].size(), 2u);
    EXPECT_EQ(call("new_drawing")["content"].size(), 1u);
    const std::string dwg = directory.filePath("a.dwg").toStdString();
    EXPECT_EQ(text(call("save_drawing", {{"path", dwg}, {"dwg_version", "R2000"}})),
              "DWG R2000 is not written, this is R2018. The versions written are 2010, 2013 and 2018.\nSaved: " + dwg);
    EXPECT_EQ(text(call("save_drawing", {{"path", path}, {"dwg_version", "R2013"}})),
              "Replaced: " + path + ", kept as " + directory.filePath("a.bak").toStdString() + "\nSaved: " + path);
}

TEST_F(McpTest, PicturesAndCommandWords) {
    run({"LINE", "0,0", "10,0", ""});
    const ordered_json picture = call("render_image", {{"width", 100}, {"height", 80}, {"save_to", "/no/such/x.png"}});
    EXPECT_EQ(picture["content"][0]["type"], "image");
    EXPECT_EQ(picture["content"][0]["mimeType"], "image/png");
    const QByteArray png = QByteArray::fromBase64(picture["content"][0]["data"].get<std::string>().c_str());
    EXPECT_TRUE(png.startsWith("\x89PNG"));
    EXPECT_EQ(picture["content"][1]["text"], "Could not write /no/such/x.png");
    EXPECT_EQ(picture["isError"], false);

    const std::string words = text(call("list_commands", {{"contains", "circ"}}));
    EXPECT_EQ(words, "CIRCLE\nCIRCLERAD\nTCIRCLE");
    EXPECT_THAT("\n" + text(call("list_commands")) + "\n", HasSubstr("\nL\n"));
}

TEST_F(McpTest, PythonResultsAreJoined) {
    python.next = {"3\n", "", false};
    EXPECT_EQ(text(call("run_python", {{"code", "print(3)"}})), "3\n");
    python.next = {"", "", false};
    EXPECT_EQ(text(call("run_python")), "(no output)");
    python.next = {"half", "NameError: x", true};
    const ordered_json failed = call("run_python");
    EXPECT_EQ(text(failed), "half\nNameError: x");
    EXPECT_EQ(failed["isError"], true);
    McpTools without(session);
    EXPECT_EQ(without.call("run_python", json::object())["content"][0]["text"],
              "Python is not available in this installation.");
}

TEST(McpProcess, OnlyProtocolLinesOnStandardOutput) {
    QProcess process;
    process.start(QStringLiteral(KOVA_PROGRAM), {"mcp"});
    process.write("{\"id\":1,\"method\":\"ping\"}\r\n\n\nnonsense\n"
                  "{\"id\":2,\"method\":\"tools/call\",\"params\":{\"name\":\"run_commands\",\"arguments\":{\"commands\":[\"LINE\"]}}}");
    process.closeWriteChannel();
    ASSERT_TRUE(process.waitForFinished(60000));
    EXPECT_EQ(process.exitCode(), 0);
    const QList<QByteArray> lines = process.readAllStandardOutput().split('\n');
    ASSERT_EQ(lines.size(), 4);
    EXPECT_EQ(lines[0], R"({"jsonrpc":"2.0","id":1,"result":{}})");
    EXPECT_THAT(lines[1].toStdString(), HasSubstr("-32700"));
    EXPECT_THAT(lines[2].toStdString(), HasSubstr("[waiting] Specify first point:"));
    EXPECT_TRUE(lines[3].isEmpty());
    EXPECT_THAT(process.readAllStandardError().toStdString(), HasSubstr("kovacad-cli 1.1.7 MCP server ready.\n"));
}

}  // namespace
}  // namespace kova::cli
