#include "cmd/prompts/file_names.hpp"
#include "cmd/dialogue.hpp"
#include "engine/inquiry/value_text.hpp"
#include "cmd/refusals.hpp"
#include "cmd/registry.hpp"
#include "io/text_file.hpp"
#include "engine/model/entity.hpp"
#include "engine/modify/text_content.hpp"

#include <QChar>

#include <map>
#include <unordered_set>

#include "engine/text/mtext_layout.hpp"
#include "engine/text/text_codes.hpp"
#include "strings/case_fold.hpp"

// FIND and SPELL: what stands in the drawing's texts.

namespace kova::cmd::commands {

namespace {

using engine::Entity;

/// A text as one line of a report.
std::string shown(std::string_view content, bool codes) {
    std::string text = codes ? engine::plainText(content) : engine::resolveCodesPlain(content);
    std::replace(text.begin(), text.end(), '\n', ' ');
    std::replace(text.begin(), text.end(), '\t', ' ');
    return text;
}

/// The entities of model space and of all layouts, in this order.
std::vector<Entity*> wholeDrawing(engine::Drawing& drawing) {
    std::vector<Entity*> all = drawing.modelSpace().entities();
    for (const auto& layout : drawing.layouts()) {
        const std::vector<Entity*> more = layout->entities.entities();
        all.insert(all.end(), more.begin(), more.end());
    }
    return all;
}

class FindTool final : public DialogueTool {
protected:
    Dialogue dialogue(Ask& ask) override {
        const Answer what = co_await ask.text("Find what:");
        if (!what.isText()) co_return;
        const Answer with = co_await ask.text("Replace with <find only>:");
        const Answer where = co_await ask.keyword(
            "Search in [Entire drawing/current Space/SElected objects] <Entire drawing>:", "Entire Space SElected");
        std::vector<Entity*> entities;
        if (where.is("SELECTED")) {
            const Answer selected = co_await ask.selection();
            for (const std::uint64_t id : selected.ids)
                if (Entity* e = drawing().findById(id)) entities.push_back(e);
        } else {
            entities = where.is("SPACE") ? drawing().currentSpace().entities() : wholeDrawing(drawing());
        }
        if (with.isText())
            replace(entities, what.text, with.text);
        else
            list(entities, what.text);
    }

private:
    static std::size_t occurrences(Entity& entity, const std::string& what) {
        std::size_t count = 0;
        engine::eachText(entity,
                         [&](std::string& text, bool codes) { count += engine::countOccurrences(text, codes, what); });
        return count;
    }

    void list(const std::vector<Entity*>& entities, const std::string& what) {
        std::size_t hits = 0;
        std::size_t objects = 0;
        for (Entity* entity : entities) {
            std::size_t here = 0;
            engine::eachText(*entity, [&](std::string& text, bool codes) {
                const std::size_t count = engine::countOccurrences(text, codes, what);
                if (count == 0) return;
                here += count;
                message(entity->layer.str() + ", " + handleText(entity->handle()) + ", " + shown(text, codes));
            });
            hits += here;
            objects += here > 0 ? 1 : 0;
        }
        message("Found " + counted(hits, "occurrence") + " in " + counted(objects, "object") + ".");
    }

    void replace(const std::vector<Entity*>& entities, const std::string& what, const std::string& with) {
        std::size_t hits = 0;
        std::size_t objects = 0;
        std::size_t locked = 0;
        const doc::GroupScope group(document(), "FIND");
        for (Entity* entity : entities) {
            if (occurrences(*entity, what) == 0) continue;
            const engine::Layer* layer = drawing().layers.find(entity->layer);
            if (layer != nullptr && layer->locked) {
                ++locked;
                continue;
            }
            document().modifyEntity(*entity, [&](Entity& e) {
                engine::eachText(e, [&](std::string& text, bool codes) {
                    const std::size_t count = engine::replaceOccurrences(text, codes, what, with);
                    if (count > 0) message(e.layer.str() + ", " + handleText(e.handle()) + ", " + shown(text, codes));
                    hits += count;
                });
            });
            ++objects;
        }
        if (locked == 1) message("1 was on a locked layer.");
        if (locked > 1) message(std::to_string(locked) + " were on a locked layer.");
        message("Replaced " + counted(hits, "occurrence") + " in " + counted(objects, "object") + ".");
    }
};

/// Words of a text in lower case; numbers and single letters are none.
template <class Use>
void eachWord(std::string_view content, bool codes, Use use) {
    std::string word;
    std::size_t letters = 0;
    const auto flush = [&] {
        while (word.ends_with('\'')) word.pop_back();
        if (letters > 1) use(word);
        word.clear();
        letters = 0;
    };
    bool digits = false;  // "M8" and "4x" are no words
    for (const engine::TextLetter& letter : engine::textLetters(content, codes)) {
        const char32_t c = letter.value;
        if (QChar::isLetter(c)) {
            engine::appendUtf8(word, strings::lowerCase(c));
            ++letters;
        } else if ((c == U'\'' || c == U'\u2019') && letters > 0) {
            word += '\'';
        } else if (QChar::isDigit(c)) {
            digits = true;
        } else {
            if (digits) word.clear(), letters = 0;
            digits = false;
            flush();
        }
    }
    if (!digits) flush();
}

/// SPELL: there is no dictionary of its own; with a list of words it names those that are not in it.
class SpellTool final : public DialogueTool {
protected:
    Dialogue dialogue(Ask& ask) override {
        if (!hasInlineInput()) {
            message(needsDialog("Check Spelling"));
            message(typedInstead("SPELL and the name of a file with the known words behind it"));
            co_return;
        }
        const Answer answer = co_await ask.text("Enter word list file name:");
        if (!answer.isText()) co_return;
        const std::string path = typedPath(answer.text);
        const std::optional<std::string> list = readTextFile(path, codePageOf(drawing()));
        if (!list) co_return message("Cannot read " + inQuotes(path) + ".");
        std::unordered_set<std::string> known;
        eachWord(*list, false, [&](const std::string& word) { known.insert(word); });

        std::vector<Entity*> entities;
        for (const std::uint64_t id : document().selection().ids())
            if (Entity* e = drawing().findById(id)) entities.push_back(e);
        if (entities.empty()) entities = wholeDrawing(drawing());
        std::map<std::string, std::size_t> unknown;
        for (Entity* entity : entities)
            engine::eachText(*entity, [&](std::string& text, bool codes) {
                eachWord(text, codes, [&](const std::string& word) {
                    if (!known.contains(word)) ++unknown[word];
                });
            });
        for (const auto& [word, count] : unknown)
            message(count == 1 ? word : word + " (" + std::to_string(count) + " times)");
        message(counted(unknown.size(), "unknown word") + ".");
    }
};

}  // namespace

KOVA_TOOL_COMMAND(Find, "FIND", "Find and Replace", "Edit")
KOVA_TOOL_COMMAND(Spell, "SPELL", "Check Spelling", "Tools", {"SP"})

}  // namespace kova::cmd::commands
