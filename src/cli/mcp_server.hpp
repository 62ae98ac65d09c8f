#pragma once

#include <functional>
#include <memory>
#include <string>

#include "cli/mcp_tools.hpp"

namespace kova::cli {

/// The Model Context Protocol over lines of JSON-RPC 2.0: one request in, at most one reply out. Keeps no protocol
/// state; the drawing lives in the session that the tools work on.
class McpServer {
public:
    explicit McpServer(McpTools& tools) : tools_(tools) {}

    /// Handles one message. The reply without its line end; empty when the message gets none.
    std::string handle(const std::string& line);

private:
    McpTools& tools_;
};

/// Serves the lines of descriptor `in` until it ends, writing replies to descriptor `out`, on the application's event
/// loop. Gives the event loop's result.
int serveMcp(McpServer& server, int in, int out);

}  // namespace kova::cli
