#include "cli/mcp_server.hpp"

#include <unistd.h>

#include <QCoreApplication>
#include <QMetaObject>
#include <deque>
#include <nlohmann/json.hpp>
#include <thread>

namespace kova::cli {

namespace {

using nlohmann::json;
using nlohmann::ordered_json;

constexpr const char* kVersions[] = {"2025-06-18", "2025-03-26", "2024-11-05"};

constexpr const char* kInstructions =
    R"(KovaCAD is a 2D/3D CAD application compatible with AutoCAD drawings (DWG, DXF). This server drives one KovaCAD drawing without its user interface.
- run_commands takes lines exactly as typed at AutoCAD's command line: a command name, then one line per answer to its prompts. Points are "x,y" (absolute), "@dx,dy" (relative) or "@dist<angle"; an empty string is Enter (ends LINE, PLINE and selections, or repeats the last command). The reply is the transcript and the prompt still waiting, if any.
- Most commands and their options are AutoCAD's (LINE, PLINE, CIRCLE, ARC, RECTANG, TEXT, MTEXT, DIMLINEAR, HATCH, LAYER, INSERT, MOVE, COPY, ROTATE, TRIM, FILLET, ZOOM, -LAYER style options...). Objects to select can be given as W / C then two corner points, L (last), P (previous) or ALL where offered. File names are asked on the prompt.
- run_python runs Python with the `kova` module bound to the drawing, for bulk or exact work: from kova.doc import current, transaction; from kova.ent import Line, Circle, Arc, Polyline, Text, MText; ms = current().model_space; with transaction('name'): ms.add(Line(start=(0, 0), end=(10, 0))). Constructors: Circle(center, radius), Arc(center, radius, start_angle, end_angle) in radians, Polyline(vertices=[(x, y), ...], closed=False), Text(insertion_point, height, rotation, content), MText(insertion_point, width, height, content). Every entity has layer_name, color_index (256 = ByLayer) and linetype_name; current().drawing.layers manages layers; kova.cmd.run('NAME') runs a command. print() output is returned.
- A command still waiting for input takes the next line as its answer: send [""] or call cancel_command (or set cancel_first) before starting another command.
- Check results with drawing_info, list_entities and render_image. Save with save_drawing (.dwg, .dxf or .kvcad); nothing is saved unless you save it. Units are the drawing's (INSUNITS).)";

std::string dump(const ordered_json& reply) {
    return reply.dump(-1, ' ', false, ordered_json::error_handler_t::replace);
}

std::string success(const json& id, ordered_json result) {
    return dump({{"jsonrpc", "2.0"}, {"id", ordered_json(id)}, {"result", std::move(result)}});
}

std::string failure(const json& id, int code, const std::string& message) {
    return dump({{"jsonrpc", "2.0"}, {"id", ordered_json(id)}, {"error", {{"code", code}, {"message", message}}}});
}

ordered_json initializeResult(const json& params) {
    std::string version = kVersions[0];
    if (params.is_object() && params.contains("protocolVersion"))
        for (const char* known : kVersions)
            if (params["protocolVersion"] == known) version = known;
    return {{"protocolVersion", version},
            {"capabilities", {{"tools", {{"listChanged", false}}}}},
            {"serverInfo", {{"name", "kovacad"}, {"title", "KovaCAD"}, {"version", "1.1.7"}}},
            {"instructions", kInstructions}};
}

/// Values nested deeper than this are no message: what handles them works recursively.
constexpr int kMaxDepth = 500;

bool nestedTooDeeply(const std::string& line) {
    int depth = 0;
    bool quoted = false;
    for (std::size_t i = 0; i < line.size(); ++i) {
        const char c = line[i];
        if (quoted) {
            if (c == '\\')
                ++i;
            else if (c == '"')
                quoted = false;
        } else if (c == '"') {
            quoted = true;
        } else if (c == '[' || c == '{') {
            if (++depth > kMaxDepth) return true;
        } else if (c == ']' || c == '}') {
            --depth;
        }
    }
    return false;
}

ordered_json failedTool(const std::string& text) {
    return {{"content", ordered_json::array({{{"type", "text"}, {"text", text}}})}, {"isError", true}};
}

/// Reads descriptor `in` line by line and posts each line to the application's thread.
void readLines(int in, const std::function<void(std::string)>& post) {
    std::string buffer;
    std::vector<char> chunk(1 << 16);
    const auto deliver = [&](std::string line) {
        if (!line.empty() && line.back() == '\r') line.pop_back();
        if (!line.empty()) post(std::move(line));
    };
    for (;;) {
        const ssize_t got = ::read(in, chunk.data(), chunk.size());
        if (got < 0 && errno == EINTR) continue;
        if (got <= 0) break;
        std::size_t scanned = buffer.size();
        buffer.append(chunk.data(), static_cast<std::size_t>(got));
        std::size_t begin = 0;
        for (std::size_t end; (end = buffer.find('\n', std::max(begin, scanned))) != std::string::npos; begin = end + 1)
            deliver(buffer.substr(begin, end - begin));
        buffer.erase(0, begin);
    }
    if (!buffer.empty()) deliver(std::move(buffer));
}

void writeAll(int out, std::string_view text) {
    while (!text.empty()) {
        const ssize_t sent = ::write(out, text.data(), text.size());
        if (sent < 0 && errno == EINTR) continue;
        if (sent <= 0) return;
        text.remove_prefix(static_cast<std::size_t>(sent));
    }
}

}  // namespace

std::string McpServer::handle(const std::string& line) {
    const json message = nestedTooDeeply(line) ? json() : json::parse(line, nullptr, false);
    if (!message.is_object()) return failure(nullptr, -32700, "Parse error");
    const auto member = [&](const char* key) { return message.contains(key) ? message[key] : json(); };
    const bool notification = !message.contains("id");
    const json id = member("id");
    const json methodValue = member("method");
    const std::string method = methodValue.is_string() ? methodValue.get<std::string>() : std::string();
    const json params = message.contains("params") ? message["params"] : json::object();

    if (method == "initialize") return success(id, initializeResult(params));
    if (notification) return {};
    if (method == "ping") return success(id, ordered_json::object());
    if (method == "tools/list") return success(id, {{"tools", McpTools::descriptions()}});
    if (method == "tools/call") {
        try {
            const std::string name = params.value("name", std::string());
            const json arguments = params.contains("arguments") ? params["arguments"] : json();
            return success(id, tools_.call(name, arguments.is_null() ? json::object() : arguments));
        } catch (const std::exception& error) {
            return success(id, failedTool(error.what()));
        }
    }
    return failure(id, -32601, "Method not found: " + method);
}

namespace {

/// Handles posted lines one after another. A tool may let the event loop run, which delivers further lines: they wait
/// until the one being handled has its reply.
class LineQueue {
public:
    LineQueue(McpServer& server, int out) : server_(server), out_(out) {}

    void post(std::string line) {
        waiting_.push_back(std::move(line));
        work();
    }
    /// Quits the application when all lines have their replies.
    void end() {
        ended_ = true;
        work();
    }

private:
    void work() {
        if (busy_) return;
        busy_ = true;
        while (!waiting_.empty()) {
            const std::string line = std::move(waiting_.front());
            waiting_.pop_front();
            std::string reply = server_.handle(line);
            if (!reply.empty()) writeAll(out_, reply += '\n');
        }
        busy_ = false;
        if (ended_) QCoreApplication::quit();
    }

    McpServer& server_;
    int out_;
    std::deque<std::string> waiting_;
    bool busy_ = false;
    bool ended_ = false;
};

}  // namespace

int serveMcp(McpServer& server, int in, int out) {
    QCoreApplication* application = QCoreApplication::instance();
    LineQueue queue(server, out);
    std::thread reader([&queue, application, in] {
        readLines(in, [&](std::string line) {
            QMetaObject::invokeMethod(
                application, [&queue, line = std::move(line)] { queue.post(line); }, Qt::QueuedConnection);
        });
        QMetaObject::invokeMethod(
            application, [&queue] { queue.end(); }, Qt::QueuedConnection);
    });
    const int result = QCoreApplication::exec();
    reader.join();
    return result;
}

}  // namespace kova::cli
