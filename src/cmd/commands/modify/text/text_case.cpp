#include "cmd/dialogue.hpp"
#include "edit/new_entities.hpp"
#include "engine/inquiry/value_text.hpp"
#include "cmd/registry.hpp"
#include "engine/kinds/all.hpp"
#include "engine/modify/text_content.hpp"
#include "engine/modify/text_placing.hpp"
#include "strings/numbers.hpp"

// TCASE and TCOUNT: the letters of many texts.

namespace kova::cmd::commands {

namespace {

using engine::Entity;
using engine::LetterCase;

class TCaseTool final : public DialogueTool {
protected:
    Dialogue dialogue(Ask& ask) override {
        const Answer selected = co_await ask.selection();
        if (selected.ids.empty()) co_return;
        const Answer answer = co_await ask.keyword("Select case [Sentence/Lower/Upper/Title/tOggle] <Upper>:",
                                                   "Sentence Lower Upper Title tOggle");
        const LetterCase wanted = answer.is("SENTENCE") ? LetterCase::Sentence
                                  : answer.is("LOWER")  ? LetterCase::Lower
                                  : answer.is("TITLE")  ? LetterCase::Title
                                  : answer.is("TOGGLE") ? LetterCase::Toggle
                                                        : LetterCase::Upper;
        std::size_t count = 0;
        {
            const doc::GroupScope group(document(), "TCASE");
            for (const std::uint64_t id : selected.ids) {
                Entity* entity = drawing().findById(id);
                if (entity == nullptr) continue;
                bool changes = false;
                engine::eachText(*entity, [&](std::string& text, bool codes) {
                    changes = changes || engine::withCase(text, codes, wanted) != text;
                });
                if (!changes) continue;
                document().modifyEntity(*entity, [&](Entity& e) {
                    engine::eachText(
                        e, [&](std::string& text, bool codes) { text = engine::withCase(text, codes, wanted); });
                });
                ++count;
            }
        }
        message(counted(count, "object") + " changed.");
    }
};

/// TCOUNT: numbers go into texts, one after the other.
class TCountTool final : public DialogueTool {
protected:
    Dialogue dialogue(Ask& ask) override {
        const Answer selected = co_await ask.selection();
        std::vector<std::uint64_t> ids;
        for (const std::uint64_t id : selected.ids)
            if (content(id) != nullptr) ids.push_back(id);
        if (ids.empty()) co_return;
        message(counted(ids.size(), "text object") + " selected.");
        const Answer order =
            co_await ask.keyword("Sort selected objects by [X/Y/Select-order] <Select-order>:", "X Y Select-order");
        double start = 1.0;
        double increment = 1.0;
        for (;;) {
            const Answer typed = co_await ask.text("Specify starting number and increment (Start,increment) <1,1>:");
            if (typed.isEnter() || readNumbers(typed.text, start, increment)) break;
            message("Invalid value.");
        }
        const Answer placing =
            co_await ask.keyword("Placement of numbers in text [Overwrite/Prefix/Suffix/Find&replace] <Prefix>:",
                                 "Overwrite Prefix Suffix Find&replace");
        std::string wanted;
        if (placing.is("FIND&REPLACE")) {
            const Answer search = co_await ask.text("Enter search string:");
            if (!search.isText()) co_return;
            wanted = search.text;
        }
        sort(ids, order);
        std::size_t count = 0;
        const doc::GroupScope group(document(), "TCOUNT");
        for (const std::uint64_t id : ids) {
            Entity* entity = drawing().findById(id);
            if (entity == nullptr) continue;
            const std::string number = strings::shortest(start + increment * static_cast<double>(count));
            const bool codes = entity->type() == engine::EntityType::MText;
            if (!wanted.empty() && engine::countOccurrences(*content(id), codes, wanted) == 0) continue;
            document().modifyEntity(*entity, [&](Entity&) {
                std::string& text = *content(id);
                if (placing.is("OVERWRITE"))
                    text = number;
                else if (placing.is("SUFFIX"))
                    text += " " + number;
                else if (!wanted.empty())
                    engine::replaceOccurrences(text, codes, wanted, number);
                else
                    text.insert(0, number + " ");
            });
            ++count;
        }
        message(counted(count, "text object") + " numbered.");
    }

private:
    std::string* content(std::uint64_t id) const {
        Entity* entity = drawing().findById(id);
        if (auto* text = dynamic_cast<engine::TextEntity*>(entity)) return &text->content;
        if (auto* text = dynamic_cast<engine::MTextEntity*>(entity)) return &text->content;
        return nullptr;
    }

    static bool readNumbers(std::string_view text, double& start, double& increment) {
        const std::size_t comma = text.find(',');
        const auto first = parseNumber(text.substr(0, comma));
        const auto second = comma == std::string_view::npos ? increment : parseNumber(text.substr(comma + 1));
        if (!first || !second) return false;
        start = *first;
        increment = *second;
        return true;
    }

    /// From left to right, from the top down, or as selected.
    void sort(std::vector<std::uint64_t>& ids, const Answer& order) const {
        if (!order.is("X") && !order.is("Y")) return;
        const bool byX = order.is("X");
        const math::Vector2 axis = byX ? drawing().ucs.xAxis : -drawing().ucs.yAxis;
        std::stable_sort(ids.begin(), ids.end(), [&](std::uint64_t a, std::uint64_t b) {
            return engine::textAnchor(*drawing().findById(a)).dot(axis) <
                   engine::textAnchor(*drawing().findById(b)).dot(axis);
        });
    }
};

}  // namespace

KOVA_TOOL_COMMAND(TCase, "TCASE", "Change Text Case", "Modify")
KOVA_TOOL_COMMAND(TCount, "TCOUNT", "Number Texts", "Modify")

}  // namespace kova::cmd::commands
