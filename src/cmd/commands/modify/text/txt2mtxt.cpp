#include "engine/inquiry/value_text.hpp"
#include "cmd/registry.hpp"
#include "cmd/selection_command.hpp"
#include "engine/entities/mtext.hpp"
#include "engine/entities/text.hpp"
#include "engine/text/text_codes.hpp"
#include "engine/modify/text_placing.hpp"
#include "math/angles.hpp"
#include "strings/numbers.hpp"

namespace kova::cmd::commands {

namespace {

using engine::MTextEntity;
using engine::TextEntity;
using math::Vector2;

/// A line of text as multiline content; what differs from the first line is written as inline codes.
std::string contentOf(const TextEntity& line, const TextEntity& first, const engine::Drawing& drawing) {
    std::string content;
    for (const engine::CodeRun& run : engine::resolveCodes(line.content)) {
        const std::pair<bool, char> toggles[] = {{run.underline, 'L'}, {run.overline, 'O'}, {run.strikeThrough, 'K'}};
        for (const auto& [on, code] : toggles)
            if (on) content += std::string("\\") + code;
        content += engine::mtextFromPlain(run.text);
        for (const auto& [on, code] : toggles)
            if (on) content += std::string("\\") + static_cast<char>(code - 'A' + 'a');
    }
    const engine::TextStyle& style = drawing.textStyleOrStandard(line.textStyle);
    std::string codes;
    const double height = engine::letterHeight(line);
    if (height != engine::letterHeight(first)) codes += "\\H" + strings::shortest(height) + ";";
    if (line.hAlign != engine::kHAlignFit && line.widthFactor != style.widthFactor)
        codes += "\\W" + strings::shortest(line.widthFactor) + ";";
    if (line.oblique != style.obliqueAngle) codes += "\\Q" + strings::shortest(math::toDegrees(line.oblique)) + ";";
    if (line.color != first.color) codes += "\\C" + std::to_string(line.color.bareIndex()) + ";";
    return codes.empty() ? content : "{" + codes + content + "}";
}

/// TXT2MTXT: the selected texts become one paragraph, from the top down.
class Txt2MtxtCommand final : public SelectionCommand {
public:
    Txt2MtxtCommand() : SelectionCommand("TXT2MTXT", "Text to Multiline Text", "Modify") {}

    void work(doc::Document& document, ToolHost& host) override {
        struct Item {
            const engine::Entity* text;
            std::array<Vector2, 4> box;
        };
        std::vector<Item> items;
        for (const std::uint64_t id : document.selection().ids()) {
            const engine::Entity* e = document.drawing().findById(id);
            if (e == nullptr || (e->type() != engine::EntityType::Text && e->type() != engine::EntityType::MText))
                continue;
            if (const auto box = engine::letterBox(*e)) items.push_back({e, *box});
        }
        if (items.empty()) return host.message("No texts selected.");
        // Lines stand below each other as the first one selected is read.
        const Vector2 along = Vector2::from_angle(engine::readingAngle(*items.front().text));
        const Vector2 up = along.perpendicular();
        const auto level = [&](const Item& item) { return (item.box[0] + item.box[2]).dot(up) / 2.0; };
        const double same = 0.5 * engine::letterHeight(*items.front().text);
        std::stable_sort(items.begin(), items.end(), [&](const Item& a, const Item& b) { return level(a) > level(b); });
        // What stands on one level is read from left to right.
        for (std::size_t i = 0; i < items.size();) {
            std::size_t end = i + 1;
            while (end < items.size() && level(items[i]) - level(items[end]) < same) ++end;
            std::stable_sort(items.begin() + static_cast<std::ptrdiff_t>(i),
                             items.begin() + static_cast<std::ptrdiff_t>(end),
                             [&](const Item& a, const Item& b) { return a.box[0].dot(along) < b.box[0].dot(along); });
            i = end;
        }

        auto text = std::make_unique<MTextEntity>();
        const engine::Entity& first = *items.front().text;
        text->copyCommonFrom(first);
        text->setXdata({});
        const auto* line = dynamic_cast<const TextEntity*>(&first);
        text->textStyle = line != nullptr ? line->textStyle : static_cast<const MTextEntity&>(first).textStyle;
        text->height = engine::letterHeight(first);
        text->rotation = along.angle();
        double left = 1e300, right = -1e300, top = -1e300;
        std::vector<std::uint64_t> ids;
        for (const Item& item : items) {
            for (const Vector2& corner : item.box) {
                left = std::min(left, corner.dot(along));
                right = std::max(right, corner.dot(along));
                top = std::max(top, corner.dot(up));
            }
            ids.push_back(item.text->id());
            if (!text->content.empty()) text->content += ' ';
            const auto* single = dynamic_cast<const TextEntity*>(item.text);
            if (single == nullptr)
                text->content += static_cast<const MTextEntity*>(item.text)->content;
            else
                text->content += contentOf(*single, line != nullptr ? *line : *single, document.drawing());
        }
        text->position = along * left + up * top;
        // A little more than the widest line, so that rounding does not break it.
        text->width = (right - left) * (1.0 + 1e-6) + 0.1 * text->height;
        {
            const doc::GroupScope group(document, "TXT2MTXT");
            document.addEntity(std::move(text));
            document.removeEntities(ids);
        }
        host.message(counted(ids.size(), "text object") + " combined into one.");
    }
};

}  // namespace

KOVA_REGISTER_COMMAND(Txt2MtxtCommand)

}  // namespace kova::cmd::commands
