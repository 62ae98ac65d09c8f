#include <map>

#include "cmd/prompts/file_names.hpp"
#include "cmd/dialogue.hpp"
#include "edit/entity_copies.hpp"
#include "engine/inquiry/value_text.hpp"
#include "cmd/registry.hpp"
#include "io/save.hpp"
#include "io/text_file.hpp"
#include "engine/entities/block_reference.hpp"
#include "engine/model/name.hpp"
#include "math/angles.hpp"
#include "strings/numbers.hpp"

namespace kova::cmd::commands {

namespace {

using engine::BlockAttribute;
using engine::BlockReferenceEntity;

/// A field of comma-separated values: quoted where it needs to be.
std::string csv(std::string_view text) {
    if (text.find_first_of(",\"\r\n") == std::string_view::npos) return std::string(text);
    std::string quoted = "\"";
    for (const char c : text) {
        if (c == '"') quoted += '"';
        quoted += c;
    }
    return quoted + '"';
}

/// EXTRACTDATA: block references with their attributes, then counts by type and layer, as lines of comma-separated
/// values; of the selection, else of the current space.
class ExtractDataCommand final : public OneShotCommand {
public:
    ExtractDataCommand() : OneShotCommand("EXTRACTDATA", "Extract Data", "Tools", {"DATAEXTRACTION", "EATTEXT"}) {}

    void execute(CommandContext& context) override {
        std::vector<const engine::Entity*> entities;
        const doc::SelectionSet& selection = context.document.selection();
        if (selection.empty()) {
            for (const engine::Entity& entity : context.drawing().currentSpace()) entities.push_back(&entity);
        } else {
            for (const engine::Entity* entity : entitiesInOrder(context.document, selection.ids()))
                entities.push_back(entity);
        }
        context.message("Block,Layer,X,Y,Attributes");
        std::map<std::string, std::size_t> types;
        std::map<std::string, std::size_t> layers;
        for (const engine::Entity* entity : entities) {
            ++types[std::string(engine::displayName(entity->type()))];
            ++layers[entity->layer.str()];
            if (entity->type() != engine::EntityType::BlockReference) continue;
            const auto& reference = static_cast<const BlockReferenceEntity&>(*entity);
            std::string line = csv(reference.blockName.view()) + "," + csv(reference.layer.view()) + "," +
                               lengthDefault(context.drawing(), reference.insert.x) + "," +
                               lengthDefault(context.drawing(), reference.insert.y);
            for (const BlockAttribute& attribute : reference.attributes)
                line += "," + csv(attribute.tag + "=" + attribute.value);
            context.message(line);
        }
        context.message("Type,Count");
        for (const auto& [type, count] : types) context.message(csv(type) + "," + std::to_string(count));
        context.message("Layer,Count");
        for (const auto& [layer, count] : layers) context.message(csv(layer) + "," + std::to_string(count));
    }
};

/// One column of an attribute extract: "TAG C010000" or "BL:X N010003".
struct Column {
    std::string name;
    bool numeric = false;
    std::size_t width = 0;
    int decimals = 0;
};

/// The columns of a template; empty when one of its lines is none.
std::vector<Column> parseTemplate(const std::string& text) {
    std::vector<Column> columns;
    std::size_t at = 0;
    while (at < text.size()) {
        const std::size_t end = std::min(text.find('\n', at), text.size());
        const std::string_view line = trimmed(std::string_view(text).substr(at, end - at));
        at = end + 1;
        std::string clean(line);
        std::erase(clean, '\r');
        if (clean.empty()) continue;
        const std::size_t blank = clean.find_first_of(" \t");
        if (blank == std::string::npos) return {};
        Column column;
        column.name = engine::upperCase(clean.substr(0, blank));
        const std::string form = engine::upperCase(trimmed(std::string_view(clean).substr(blank)));
        if (form.size() != 7 || (form[0] != 'C' && form[0] != 'N') ||
            !std::all_of(form.begin() + 1, form.end(), [](char c) { return c >= '0' && c <= '9'; }))
            return {};
        column.numeric = form[0] == 'N';
        column.width = static_cast<std::size_t>(std::stoi(form.substr(1, 3)));
        column.decimals = std::stoi(form.substr(4, 3));
        columns.push_back(std::move(column));
    }
    return columns;
}

/// ATTEXT: writes attribute values to a text file, as a template says.
class AttextTool final : public DialogueTool {
protected:
    Dialogue dialogue(Ask& ask) override {
        bool spaced = false;
        bool chosen = false;
        std::vector<std::uint64_t> ids;
        for (;;) {
            const char* prompt = chosen ? "Enter extraction type [Cdf/Sdf/Dxf] <C>:"
                                        : "Enter extraction type or enable object selection [Cdf/Sdf/Dxf/Objects] <C>:";
            const char* keywords = chosen ? "Cdf Sdf Dxf" : "Cdf Sdf Dxf Objects";
            const Answer type = co_await ask.keyword(prompt, keywords);
            if (type.is("OBJECTS")) {
                const Answer selected = co_await ask.selection();
                ids = selected.ids;
                chosen = true;
                continue;
            }
            if (type.is("DXF")) {
                message("Attributes as DXF: write the objects with WBLOCK to a .dxf file.");
                co_return;
            }
            spaced = type.is("SDF");
            break;
        }
        const Answer templateFile = co_await ask.text("Enter template file name:");
        if (templateFile.isEnter()) co_return;
        std::optional<std::string> text = readTextFile(typedPath(templateFile.text), codePageOf(drawing()));
        if (!text) text = readTextFile(typedPath(templateFile.text) + ".txt", codePageOf(drawing()));
        const std::vector<Column> columns = text ? parseTemplate(*text) : std::vector<Column>();
        if (columns.empty()) {
            message(text ? "Invalid template file." : "Cannot read " + typedPath(templateFile.text) + ".");
            co_return;
        }
        const Answer output = co_await ask.text("Enter extract file name:");
        if (output.isEnter()) co_return;
        std::string path = typedPath(output.text);
        if (path.find('.', path.find_last_of('/') + 1) == std::string::npos) path += ".txt";
        if (!chosen)
            for (const engine::Entity& entity : drawing().currentSpace()) ids.push_back(entity.id());
        write(path, columns, ids, spaced);
    }

private:
    void write(const std::string& path, const std::vector<Column>& columns, const std::vector<std::uint64_t>& ids,
               bool spaced) const {
        std::string text;
        std::size_t records = 0;
        for (const std::uint64_t id : ids) {
            const auto* reference = dynamic_cast<const BlockReferenceEntity*>(drawing().findById(id));
            // A reference without any of the template's attributes is no record.
            if (reference == nullptr || !std::any_of(columns.begin(), columns.end(), [&](const Column& column) {
                    return reference->findAttribute(column.name) != nullptr;
                }))
                continue;
            ++records;
            std::string line;
            for (const Column& column : columns) {
                std::string value = field(*reference, column, records);
                if (value.size() > column.width) value.resize(column.width);
                if (spaced) {
                    const std::string padding(column.width - value.size(), ' ');
                    line += column.numeric ? padding + value : value + padding;
                } else {
                    line += line.empty() ? "" : ",";
                    line += column.numeric ? value : "'" + value + "'";
                }
            }
            text += line + "\r\n";
        }
        const std::string error = io::saveFile(path, text);
        message(error.empty() ? counted(records, "record") + " in extract file." : error);
    }

    static std::string number(double value, int decimals) {
        std::string text = strings::fixed(value, std::clamp(decimals, 0, 16));
        return text.size() < 64 ? text : std::string("0");
    }

    std::string field(const BlockReferenceEntity& r, const Column& column, std::size_t record) const {
        if (!column.name.starts_with("BL:")) {
            const BlockAttribute* attribute = r.findAttribute(column.name);
            const std::string value = attribute != nullptr ? attribute->value : std::string();
            const auto typed = column.numeric ? parseNumber(value) : std::nullopt;
            return typed ? number(*typed, column.decimals) : value;
        }
        const std::string_view what = std::string_view(column.name).substr(3);
        if (what == "NAME") return r.blockName.str();
        if (what == "LAYER") return r.layer.str();
        if (what == "HANDLE") return handleText(r.handle());
        if (what == "NUMBER") return std::to_string(record);
        if (what == "LEVEL") return "1";
        if (what == "X") return number(r.insert.x, column.decimals);
        if (what == "Y") return number(r.insert.y, column.decimals);
        if (what == "Z") return number(r.elevation, column.decimals);
        if (what == "ORIENT") return number(math::toDegrees(r.rotation), column.decimals);
        if (what == "XSCALE") return number(r.scaleX, column.decimals);
        if (what == "YSCALE") return number(r.scaleY, column.decimals);
        if (what == "ZSCALE") return number(r.effectiveScaleZ(), column.decimals);
        return {};
    }
};

/// BCOUNT: how often each block is inserted.
class BcountTool final : public DialogueTool {
protected:
    Dialogue dialogue(Ask& ask) override {
        message("Press ENTER to select all or select objects.");
        const Answer selected = co_await ask.selection();
        std::map<std::string, std::size_t> counts;
        std::size_t widest = 5;
        const auto note = [&](const engine::Entity* entity) {
            if (entity == nullptr || entity->type() != engine::EntityType::BlockReference) return;
            const auto& reference = static_cast<const BlockReferenceEntity&>(*entity);
            if (reference.blockName.view().starts_with('*')) return;
            ++counts[reference.blockName.str()];
            widest = std::max(widest, reference.blockName.view().size());
        };
        if (selected.ids.empty())
            for (const engine::Entity& entity : drawing().currentSpace()) note(&entity);
        for (const std::uint64_t id : selected.ids) note(drawing().findById(id));
        if (counts.empty()) {
            message("No blocks found.");
            co_return;
        }
        const auto dots = [&](const std::string& name) { return name + std::string(widest + 4 - name.size(), '.'); };
        message(dots("Block") + "Count");
        for (const auto& [name, count] : counts) message(dots(name) + std::to_string(count));
    }
};

}  // namespace

KOVA_REGISTER_COMMAND(ExtractDataCommand)
KOVA_TOOL_COMMAND(Attext, "ATTEXT", "Extract Attributes", "Tools", {"DDATTEXT"})
KOVA_TOOL_COMMAND(Bcount, "BCOUNT", "Count Blocks", "Inquiry")

}  // namespace kova::cmd::commands
