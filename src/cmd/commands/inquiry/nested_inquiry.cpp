#include "cmd/dialogue.hpp"
#include "engine/inquiry/value_text.hpp"
#include "cmd/prompts/name_prompts.hpp"
#include "engine/pick/nested_picking.hpp"
#include "cmd/pick_request.hpp"
#include "cmd/registry.hpp"
#include "strings/wildcards.hpp"
#include "strings/numbers.hpp"

namespace kova::cmd::commands {

namespace {

using engine::BlockReferenceEntity;
using engine::XData;
using engine::XDataItem;

bool isReference(const engine::Entity& entity) { return entity.type() == engine::EntityType::BlockReference; }

/// XLIST: what an object within a block or external reference is.
class XlistTool final : public DialogueTool {
protected:
    Dialogue dialogue(Ask& ask) override {
        const Answer pick = co_await askSource(ask, "Select nested xref or block object to list:", {}, isReference);
        const auto* reference =
            pick.isObject() ? dynamic_cast<const BlockReferenceEntity*>(drawing().findById(pick.id)) : nullptr;
        if (reference == nullptr) co_return;
        const std::optional<NestedPick> found = pickNested(*reference, pick.point);
        if (!found) co_return message("The reference shows no objects.");
        const engine::Entity& entity = *found->entity;
        // From the inside outwards.
        std::string blocks;
        for (std::size_t i = found->chain.size(); i-- > 0;)
            blocks += (blocks.empty() ? "" : " in ") + inQuotes(found->chain[i]->blockName.view());
        const engine::Block* block = found->chain.back()->block();
        const bool external = block != nullptr && block->xrefType != engine::XrefType::None;
        message("Object:      " + std::string(engine::displayName(entity.type())));
        message(std::string(external ? "Xref name:   " : "Block name:  ") + blocks);
        message("Layer:       " + entity.layer.str());
        message("Color:       " + engine::colorText(entity.color));
        message("Linetype:    " + entity.linetype.str());
    }
};

const char* kindName(int code) {
    switch (code) {
        case 1000:
            return "ASCII string";
        case 1002:
            return "Starting or ending brace";
        case 1003:
            return "Layer name";
        case 1004:
            return "Binary data";
        case 1005:
            return "Database handle";
        case 1010:
            return "3 real numbers";
        case 1011:
            return "World space position";
        case 1012:
            return "World space displacement";
        case 1013:
            return "World space direction";
        case 1040:
            return "Real number";
        case 1041:
            return "Distance";
        case 1042:
            return "Scale factor";
        case 1070:
            return "16-bit integer";
        case 1071:
            return "32-bit signed long integer";
        default:
            return "Unknown";
    }
}

std::string valueText(const XDataItem& item) {
    if (const auto* text = std::get_if<std::string>(&item.value)) return *text;
    if (const auto* real = std::get_if<double>(&item.value)) return strings::shortest(*real);
    if (const auto* integer = std::get_if<std::int64_t>(&item.value)) return std::to_string(*integer);
    const auto& p = std::get<math::Vector3>(item.value);
    return strings::shortest(p.x) + "," + strings::shortest(p.y) + "," + strings::shortest(p.z);
}

/// Bytes of an item as files hold it: its code and its value.
std::size_t bytesOf(const XDataItem& item) {
    if (const auto* text = std::get_if<std::string>(&item.value)) return 2 + text->size() + 1;
    if (std::holds_alternative<math::Vector3>(item.value)) return 2 + 24;
    if (std::holds_alternative<double>(item.value)) return 2 + 8;
    return 2 + (item.code == 1070 ? 2 : 4);
}

/// XDLIST: the extended data of an object.
class XdlistTool final : public DialogueTool {
protected:
    Dialogue dialogue(Ask& ask) override {
        const Answer pick = co_await askSource(ask, "Select object:");
        if (!pick.isObject()) co_return;
        const Answer answer = co_await ask.text("Application name <*>:");
        const std::string pattern = answer.isText() ? typedName(answer.text) : "*";
        const engine::Entity* entity = drawing().findById(pick.id);
        if (entity == nullptr) co_return;
        std::size_t bytes = 0;
        std::size_t shown = 0;
        const XData* data = entity->xdata();
        if (data != nullptr)
            for (const XData::Application& application : data->applications) {
                if (!matchesWildcards(application.name.view(), pattern)) continue;
                ++shown;
                bytes += 2 + application.name.view().size() + 1;
                message("* Registered Application Name: " + application.name.str());
                for (const XDataItem& item : application.items) {
                    bytes += bytesOf(item);
                    message("* Code " + std::to_string(item.code) + ", " + kindName(item.code) + ": " +
                            valueText(item));
                }
            }
        if (shown == 0)
            message(data == nullptr ? std::string("No extended data associated with the object.")
                                    : "No extended data for application name " + inQuotes(pattern) + ".");
        else
            message("Extended data uses " + std::to_string(bytes) + " bytes.");
    }
};

}  // namespace

KOVA_TOOL_COMMAND(Xlist, "XLIST", "List Nested Object", "Inquiry")
KOVA_TOOL_COMMAND(Xdlist, "XDLIST", "List Extended Data", "Inquiry")

}  // namespace kova::cmd::commands
