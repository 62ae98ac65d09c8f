#include "cli/mcp_tools.hpp"

#include <QBuffer>
#include <QImage>
#include <QVariant>
#include <cmath>
#include <nlohmann/json.hpp>
#include <set>

#include "engine/model/sysvar.hpp"
#include "io/json/json_writer.hpp"
#include "io/json/record_writer.hpp"
#include "io/save.hpp"

namespace kova::cli {

namespace {

using nlohmann::json;
using nlohmann::ordered_json;

ordered_json textItem(const std::string& text) { return {{"type", "text"}, {"text", text}}; }

ordered_json result(const std::string& text, bool isError = false) {
    return {{"content", ordered_json::array({textItem(text)})}, {"isError", isError}};
}

std::string joined(const std::vector<std::string>& lines) {
    std::string text;
    for (const std::string& line : lines) {
        if (!text.empty()) text += '\n';
        text += line;
    }
    return text;
}

/// A colour as the drawing file holds it.
ordered_json colorObject(const engine::Color& color) {
    io::native::JsonWriter out(-1);
    io::native::writeColor(out, color);
    return ordered_json::parse(out.take());
}

/// An argument that is a whole number, which JSON may also write as 2.0. Any other type fails as the JSON library's own
/// conversions do, which would take true for 1.
std::int64_t integerArgument(const json& arguments, const char* name, std::int64_t fallback) {
    if (!arguments.is_object()) return arguments.value(name, fallback);  // which throws
    const auto it = arguments.find(name);
    if (it == arguments.end()) return fallback;
    if (it->is_number_integer()) {
        if (it->is_number_unsigned() && it->get<std::uint64_t>() > INT64_MAX) return INT64_MAX;
        return it->get<std::int64_t>();
    }
    if (it->is_number_float() && std::trunc(it->get<double>()) == it->get<double>())
        return static_cast<std::int64_t>(std::clamp(it->get<double>(), -9e15, 9e15));
    throw std::invalid_argument("[json.exception.type_error.302] type must be integer, but is " +
                                std::string(it->type_name()));
}

struct Property {
    const char* name;
    const char* type;
    const char* description = nullptr;
    std::optional<int> minimum{};
    std::optional<int> maximum{};
    bool required = false;
};

ordered_json describeTool(const char* name, const char* description, const std::vector<Property>& properties) {
    ordered_json schema = {{"type", "object"}, {"properties", ordered_json::object()}};
    ordered_json required = ordered_json::array();
    for (const Property& p : properties) {
        ordered_json property = {{"type", p.type}};
        if (p.description != nullptr) property["description"] = p.description;
        if (p.minimum) property["minimum"] = *p.minimum;
        if (p.maximum) property["maximum"] = *p.maximum;
        if (std::string_view(p.type) == "array") property["items"] = {{"type", "string"}};
        schema["properties"][p.name] = std::move(property);
        if (p.required) required.push_back(p.name);
    }
    if (!required.empty()) schema["required"] = std::move(required);
    return {{"name", name}, {"description", description}, {"inputSchema", std::move(schema)}};
}

}  // namespace

const ordered_json& McpTools::descriptions() {
    static const ordered_json all = ordered_json::array({
        describeTool("drawing_info",
                     "The open drawing: file, unsaved changes, units, current layer, layers, layouts, entity counts by "
                     "type, extents, and the command prompt waiting for input (if any).",
                     {}),
        describeTool(
            "new_drawing", "Start a new drawing, discarding the current one unless saved.",
            {{"template", "string",
              "\"metric\" (mm, A3), \"metric-a4\", \"imperial\" (inches), or the path of a .dwt / .kvcad / .dxf "
              "template. Blank if omitted."}}),
        describeTool("open_drawing", "Open a DWG, DXF or KovaCAD (.kvcad) file, replacing the current drawing.",
                     {{"path", "string", "Full path of the file.", {}, {}, true}}),
        describeTool("save_drawing",
                     "Save the drawing: as DWG, DXF or KovaCAD (.kvcad) by the path's extension, or to its own file.",
                     {{"path", "string", "Where to save. Omit to save to the drawing's file."},
                      {"dwg_version", "string", "For .dwg: R2018 (default), R2013, R2010, R2007, R2004 or R2000."}}),
        describeTool(
            "run_commands",
            "Run KovaCAD command-line input, one line per entry, as typed at AutoCAD's command line (a command, "
            "then each answer to its prompts; \"\" is Enter). Returns the transcript and the prompt still waiting.",
            {{"commands", "array", "e.g. [\"LINE\", \"0,0\", \"100,0\", \"100,50\", \"\"]", {}, {}, true},
             {"cancel_first", "boolean", "End any command still waiting first (Escape)."}}),
        describeTool("cancel_command", "End the command waiting for input (Escape).", {}),
        describeTool(
            "run_python",
            "Run Python with the `kova` module bound to the drawing (kova.doc.current(), kova.ent entity classes, "
            "kova.geom, kova.cmd.run(name)). Returns what it printed, or the error.",
            {{"code", "string", nullptr, {}, {}, true}}),
        describeTool("list_entities",
                     "Entities with their properties and geometry as JSON (type, layer, colour, points...).",
                     {{"space", "string", "\"model\" (default), or a layout name for its paper space."},
                      {"type", "string", "Only this kind, e.g. LINE, CIRCLE, TEXT, DIMENSION."},
                      {"layer", "string", "Only entities on this layer."},
                      {"offset", "integer", nullptr, 0},
                      {"limit", "integer", "At most this many (default 200).", 1, 2000}}),
        describeTool(
            "render_image",
            "A PNG picture of the drawing, fitted (model space, or the current layout in paper space), to look at "
            "what was drawn.",
            {{"width", "integer", nullptr, 64, 4096},
             {"height", "integer", nullptr, 64, 4096},
             {"save_to", "string", "Also write the PNG to this path."}}),
        describeTool("list_commands", "KovaCAD's command names (and aliases), optionally only those containing a text.",
                     {{"contains", "string"}}),
    });
    return all;
}

ordered_json McpTools::call(const std::string& name, const json& arguments) {
    if (name == "drawing_info") return drawingInfo();
    if (name == "new_drawing") return newDrawing(arguments);
    if (name == "open_drawing") return openDrawing(arguments);
    if (name == "save_drawing") return saveDrawing(arguments);
    if (name == "run_commands") return runCommands(arguments);
    if (name == "cancel_command") return cancelCommand();
    if (name == "run_python") return runPython(arguments);
    if (name == "list_entities") return listEntities(arguments);
    if (name == "render_image") return renderImage(arguments);
    if (name == "list_commands") return listCommands(arguments);
    return result("Unknown tool: " + name, true);
}

ordered_json McpTools::drawingInfo() {
    const engine::Drawing& drawing = session_.document().drawing();
    ordered_json info;
    info["file"] = drawing.fileName;
    info["unsaved_changes"] = session_.document().isModified();
    info["insunits"] = engine::sysVarInt(drawing, "INSUNITS");
    info["current_layer"] = drawing.currentLayer.str();
    info["space"] = drawing.currentSpaceIsModel() ? "model" : "paper:" + drawing.activeLayoutName.str();
    info["layers"] = ordered_json::array();
    for (const engine::Layer& layer : drawing.layers)
        info["layers"].push_back({{"name", layer.name.str()},
                                  {"color", colorObject(layer.color)},
                                  {"linetype", layer.linetype.str()},
                                  {"on", layer.on},
                                  {"frozen", layer.frozen},
                                  {"locked", layer.locked}});
    info["layouts"] = ordered_json::array();
    for (const auto& layout : drawing.layouts()) info["layouts"].push_back(layout->name.str());
    info["model_entities"] = drawing.modelSpace().size();
    std::array<std::size_t, engine::kEntityTypeCount> counts{};
    for (const engine::Entity& e : drawing.modelSpace()) ++counts[static_cast<std::size_t>(e.type())];
    info["model_entities_by_type"] = ordered_json::object();
    for (std::size_t i = 0; i < counts.size(); ++i)
        if (counts[i] > 0)
            info["model_entities_by_type"][engine::displayName(static_cast<engine::EntityType>(i))] = counts[i];
    const math::Bounds2 box = drawing.extents(drawing.modelSpace());
    if (!box.is_empty()) info["model_extents"] = {{"min", {box.min.x, box.min.y}}, {"max", {box.max.x, box.max.y}}};
    info["command_waiting"] = session_.isWaiting();
    info["prompt"] = session_.currentPrompt();
    return result(info.dump(2, ' ', false, ordered_json::error_handler_t::replace));
}

ordered_json McpTools::newDrawing(const json& arguments) {
    const std::string name = arguments.value("template", std::string());
    std::string error;
    if (name.empty())
        session_.newDrawing();
    else
        error = session_.newFromTemplate(name);
    return withNotes("New drawing started.", error);
}

ordered_json McpTools::openDrawing(const json& arguments) {
    const std::string path = arguments.value("path", std::string());
    const std::string error = session_.open(path);
    return withNotes("Opened " + path, error);
}

ordered_json McpTools::withNotes(const std::string& text, const std::string& error) {
    std::vector<std::string> lines = session_.takeOutput();
    if (!error.empty()) return result(error, true);
    ordered_json reply = result(text);
    std::erase(lines, "New drawing initialized.");
    // What was lost on the way is a text of its own behind the one that callers wait for.
    if (!lines.empty()) reply["content"].push_back(textItem(joined(lines)));
    return reply;
}

ordered_json McpTools::saveDrawing(const json& arguments) {
    if (arguments.contains("dwg_version"))
        session_.setProperty("kovaDwgVersion", QString::fromStdString(arguments["dwg_version"].get<std::string>()));
    const std::string error = session_.save(arguments.value("path", std::string()));
    const std::string lines = joined(session_.takeOutput());
    return error.empty() ? result(lines) : result(error, true);
}

ordered_json McpTools::runCommands(const json& arguments) {
    if (arguments.value("cancel_first", false)) session_.cancel();
    if (!arguments.contains("commands") || !arguments["commands"].is_array())
        return result("commands must be an array of strings", true);
    std::vector<std::string> lines = session_.takeOutput();
    for (const json& command : arguments["commands"])
        for (std::string& line : session_.feed(command.is_string() ? command.get<std::string>() : command.dump()))
            lines.push_back(std::move(line));
    return result(joined(lines) +
                  (session_.isWaiting() ? "\n[waiting] " + session_.currentPrompt() : "\n[ready] Command:"));
}

ordered_json McpTools::cancelCommand() {
    session_.cancel();
    return result(joined(session_.takeOutput()) + "\n[ready] Command:");
}

ordered_json McpTools::runPython(const json& arguments) {
    const std::string code = arguments.value("code", std::string());
    if (python_ == nullptr) return result("Python is not available in this installation.", true);
    PythonRunner::Result run = python_->run(code);
    const auto add = [&](const std::string& text) {
        if (text.empty()) return;
        if (!run.output.empty()) run.output += '\n';
        run.output += text;
    };
    if (run.failed) add(run.error);
    add(joined(session_.takeOutput()));
    if (!run.failed && run.output.empty()) run.output = "(no output)";
    return result(run.output, run.failed);
}

ordered_json McpTools::listEntities(const json& arguments) {
    const engine::Drawing& drawing = session_.document().drawing();
    const std::string space = arguments.value("space", std::string("model"));
    const engine::EntityList* list = &drawing.modelSpace();
    if (space != "model") {
        const engine::Layout* layout = drawing.findLayout(space);
        if (layout == nullptr) throw std::invalid_argument("No layout named " + space);
        list = &layout->entities;
    }
    std::optional<engine::EntityType> type;
    if (arguments.contains("type")) {
        const std::string name = arguments["type"].get<std::string>();
        type = engine::entityTypeFromAnyName(name);
        if (!type) throw std::invalid_argument("Unknown entity type: " + name);
    }
    std::optional<engine::Name> layer;
    if (arguments.contains("layer")) layer = engine::Name(arguments["layer"].get<std::string>());
    const std::int64_t offset = std::max<std::int64_t>(0, integerArgument(arguments, "offset", 0));
    const std::int64_t limit = std::clamp<std::int64_t>(integerArgument(arguments, "limit", 200), 1, 2000);

    std::int64_t matching = 0;
    std::vector<const engine::Entity*> listed;
    for (const engine::Entity& e : *list) {
        if ((type && e.type() != *type) || (layer && !(e.layer == *layer))) continue;
        if (matching >= offset && static_cast<std::int64_t>(listed.size()) < limit) listed.push_back(&e);
        ++matching;
    }
    io::native::JsonWriter out(1);
    out.beginObject();
    out.key("total_matching");
    out.integer(matching);
    out.key("returned");
    out.integer(static_cast<std::int64_t>(listed.size()));
    out.key("entities");
    out.beginArray();
    for (const engine::Entity* e : listed) io::native::writeListedEntity(out, *e);
    out.endArray();
    out.endObject();
    return result(out.take());
}

ordered_json McpTools::renderImage(const json& arguments) {
    const auto size = [&](const char* name, int fallback) {
        return static_cast<int>(
            std::clamp<std::int64_t>(integerArgument(arguments, name, fallback), INT32_MIN, INT32_MAX));
    };
    const int width = size("width", 1200);
    const int height = size("height", 800);
    const std::string path = arguments.value("save_to", std::string());
    const QImage image = session_.renderImage(width, height);
    if (image.isNull()) return result("The drawing cannot be rendered by this version of the program.", true);
    QByteArray png;
    QBuffer buffer(&png);
    buffer.open(QIODevice::WriteOnly);
    image.save(&buffer, "PNG");
    ordered_json reply = {
        {"content",
         ordered_json::array({{{"type", "image"}, {"data", png.toBase64().toStdString()}, {"mimeType", "image/png"}}})},
        {"isError", false}};
    if (arguments.contains("save_to")) {
        const bool saved = io::saveFile(path, {png.constData(), static_cast<std::size_t>(png.size())}).empty();
        reply["content"].push_back(textItem((saved ? "Saved " : "Could not write ") + path));
    }
    return reply;
}

ordered_json McpTools::listCommands(const json& arguments) {
    const std::string contains = engine::upperCase(arguments.value("contains", std::string()));
    std::set<std::string> words;
    const auto add = [&](const std::string& word) {
        if (word.find(contains) != std::string::npos) words.insert(word);
    };
    for (const cmd::Command* command : session_.registry().commands()) add(command->name());
    for (const auto& [alias, name] : session_.registry().aliases()) add(alias);
    return result(joined({words.begin(), words.end()}));
}

}  // namespace kova::cli
