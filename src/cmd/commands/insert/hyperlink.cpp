#include "cmd/dialogue.hpp"
#include "edit/new_entities.hpp"
#include "edit/entity_copies.hpp"
#include "engine/inquiry/value_text.hpp"
#include "cmd/registry.hpp"
#include "cmd/selection_command.hpp"
#include "doc/table_edits.hpp"
#include "engine/entities/polyline.hpp"

namespace kova::cmd::commands {

namespace {

using engine::Name;
using engine::XData;
using engine::XDataItem;
using math::Vector2;

Name linkApplication() { return Name("PE_URL"); }

/// A link as extended data holds it: the address, then in braces what it says and where in the target it leads.
struct Hyperlink {
    std::string address;
    std::string description;
    std::string location;

    bool empty() const { return address.empty() && location.empty(); }
    std::string text() const {
        std::string line = address.empty() ? "<current drawing>" : address;
        if (!location.empty()) line += "#" + location;
        if (!description.empty()) line += "  " + inQuotes(description);
        return line;
    }
};

std::optional<Hyperlink> hyperlinkOf(const engine::Entity& entity) {
    const XData* xdata = entity.xdata();
    const std::vector<XDataItem>* items = xdata != nullptr ? xdata->find(linkApplication()) : nullptr;
    if (items == nullptr) return std::nullopt;
    Hyperlink link;
    std::string* const fields[] = {&link.address, &link.description, &link.location};
    std::size_t at = 0;
    for (const XDataItem& item : *items)
        if (const auto* text = std::get_if<std::string>(&item.value); item.code == 1000 && text != nullptr && at < 3)
            *fields[at++] = *text;
    if (link.empty()) return std::nullopt;
    return link;
}

/// An empty link takes the entity's link away.
void setHyperlink(engine::Entity& entity, const Hyperlink& link) {
    std::vector<XDataItem> items;
    if (!link.empty()) {
        items.push_back({1000, link.address});
        if (!link.description.empty() || !link.location.empty()) {
            items.push_back({1002, std::string("{")});
            items.push_back({1000, link.description});
            if (!link.location.empty()) items.push_back({1000, link.location});
            items.push_back({1002, std::string("}")});
        }
    }
    XData data = entity.xdata() != nullptr ? *entity.xdata() : XData();
    data.set(linkApplication(), std::move(items));
    entity.setXdata(std::move(data));
}

std::string entityTitle(const engine::Entity& entity) {
    return std::string(engine::dxfName(entity.type())) + " " + handleText(entity.handle());
}

/// HYPERLINK: gives objects links, or takes them away.
class HyperlinkTool final : public DialogueTool {
protected:
    Dialogue dialogue(Ask& ask) override {
        const Answer option = co_await ask.keyword("Enter an option [Remove/Insert] <Insert>:", "Remove Insert");
        if (option.is("REMOVE")) co_return co_await remove(ask);
        const Answer how = co_await ask.keyword("Enter hyperlink insert option [Area/Object] <Object>:", "Area Object");
        std::vector<std::uint64_t> ids;
        Vector2 first;
        Vector2 second;
        const bool area = how.is("AREA");
        if (area) {
            const Answer a = co_await ask.point("Specify first corner:");
            if (!a.isPoint()) co_return;
            const Answer b = co_await ask.point("Specify opposite corner:", {}, a.point);
            if (!b.isPoint()) co_return;
            first = drawing().ucs.fromWorld(a.point);
            second = drawing().ucs.fromWorld(b.point);
            if (first.x == second.x || first.y == second.y) co_return message("The area needs a width and a height.");
        } else {
            const Answer selected = co_await ask.selection();
            ids = selected.ids;
            if (ids.empty()) co_return;
        }
        const Answer address = co_await ask.text("Enter hyperlink <current drawing>:");
        const Answer location = co_await ask.text("Enter named location <none>:");
        const Answer description = co_await ask.text("Enter description <none>:");
        const Hyperlink link{address.text, description.text, location.text};
        if (link.empty()) co_return message("A hyperlink needs an address or a named location.");
        const doc::GroupScope group(document(), "HYPERLINK");
        if (area) ids.assign(1, addArea(first, second));
        for (engine::Entity* entity : entitiesInOrder(document(), ids))
            document().modifyEntity(*entity, [&](engine::Entity& target) { setHyperlink(target, link); });
        message(counted(ids.size(), "hyperlink") + " inserted.");
    }

private:
    /// A frame on a layer of its own.
    std::uint64_t addArea(const Vector2& a, const Vector2& b) {
        const Name layer("URLLAYER");
        if (!drawing().layers.contains(layer))
            document().editTable<doc::LayerTraits>([&](auto& table) {
                engine::Layer fresh;
                fresh.name = layer;
                fresh.color = engine::Color::index(1);
                table.add(fresh);
            });
        const engine::Ucs& ucs = drawing().ucs;
        std::vector<Vector2> corners{ucs.toWorld(a), ucs.toWorld({b.x, a.y}), ucs.toWorld(b), ucs.toWorld({a.x, b.y})};
        auto frame = std::make_unique<engine::PolylineEntity>(std::move(corners), true);
        applyCurrentValues(document(), *frame);
        frame->layer = layer;
        return document().addEntity(std::move(frame)).id();
    }

    Dialogue remove(Ask& ask) {
        const Answer selected = co_await ask.selection();
        if (selected.ids.empty()) co_return;
        const doc::GroupScope group(document(), "HYPERLINK");
        std::size_t count = 0;
        for (engine::Entity* entity : entitiesInOrder(document(), selected.ids)) {
            if (!hyperlinkOf(*entity)) continue;
            document().modifyEntity(*entity, [](engine::Entity& target) { setHyperlink(target, {}); });
            ++count;
        }
        message(counted(count, "hyperlink") + " deleted.");
    }
};

/// HYPERLINKOPEN: tells the links of the selected objects. Nothing is opened.
class HyperlinkOpenCommand final : public SelectionCommand {
public:
    HyperlinkOpenCommand() : SelectionCommand("HYPERLINKOPEN", "Show Hyperlink", "Insert") {}
    void work(doc::Document& document, ToolHost& host) override {
        std::size_t count = 0;
        for (const engine::Entity* entity : entitiesInOrder(document, document.selection().ids()))
            if (const std::optional<Hyperlink> link = hyperlinkOf(*entity)) {
                host.message("Hyperlink: " + link->text());
                ++count;
            }
        if (count == 0) host.message("No hyperlink found.");
    }
};

/// SHOWURLS: lists all links of the drawing.
class ShowUrlsTool final : public DialogueTool {
protected:
    Dialogue dialogue(Ask&) override {
        std::size_t count = 0;
        const auto list = [&](const engine::EntityList& entities, const std::string& place) {
            for (const engine::Entity& entity : entities)
                if (const std::optional<Hyperlink> link = hyperlinkOf(entity)) {
                    message("  " + entityTitle(entity) + place + ": " + link->text());
                    ++count;
                }
        };
        list(drawing().modelSpace(), "");
        for (const auto& layout : drawing().layouts())
            list(layout->entities, " in layout " + inQuotes(layout->name.view()));
        for (const auto& block : drawing().blocks()) list(block->entities, " in block " + inQuotes(block->name.view()));
        message(count == 0 ? std::string("No hyperlinks in the drawing.") : counted(count, "hyperlink") + ".");
        co_return;
    }
};

}  // namespace

KOVA_TOOL_COMMAND(Hyperlink, "HYPERLINK", "Hyperlink", "Insert")
KOVA_REGISTER_COMMAND(HyperlinkOpenCommand)
KOVA_TOOL_COMMAND(ShowUrls, "SHOWURLS", "Show Hyperlinks", "Inquiry")

}  // namespace kova::cmd::commands
