// One line of the MCP server: any bytes must get an answer (or none, for a notification), and the server must go on.
#include <QApplication>
#include <cstdint>
#include <cstdlib>
#include <string>

#include "cli/mcp_server.hpp"
#include "headless/session.hpp"

namespace {

struct Server {
    Server() {
        qputenv("QT_QPA_PLATFORM", "offscreen");
        static int count = 1;
        static char name[] = "fuzz";
        static char* arguments[] = {name, nullptr};
        application = new QApplication(count, arguments);
        session = new kova::headless::Session;
    }
    QApplication* application;
    kova::headless::Session* session;
};

/// Tools that reach files and programs outside are no game for random lines.
bool harmless(const std::string& line) {
    for (const char* word : {"save_drawing", "open_drawing", "save_to", "run_commands", "template"})
        if (line.find(word) != std::string::npos) return false;
    return line.find('\\') == std::string::npos || line.find("\\u") == std::string::npos;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static Server server;
    const std::string line(reinterpret_cast<const char*>(data), size);
    if (!harmless(line)) return 0;
    kova::cli::McpTools tools(*server.session);
    kova::cli::McpServer mcp(tools);
    const std::string reply = mcp.handle(line);
    if (reply.find('\n') != std::string::npos) std::abort();
    if (!reply.empty() && reply.rfind("{\"jsonrpc\":\"2.0\",\"id\":", 0) != 0) std::abort();
    if (mcp.handle(R"({"id":1,"method":"ping"})") != R"({"jsonrpc":"2.0","id":1,"result":{}})") std::abort();
    return 0;
}
