#include "cmd/dialogue.hpp"
#include "cmd/point_input.hpp"
#include "cmd/registry.hpp"
#include "cmd/undo_marks.hpp"

namespace kova::cmd::commands {

namespace {

/// Does nothing: stands in the history so that UNDO Back knows where to stop.
class MarkAction final : public doc::IUndoableAction {
public:
    void undo(engine::Drawing&) override {}
    void redo(engine::Drawing&) override {}
    std::string description() const override { return kUndoMark; }
    std::size_t sizeInBytes() const override { return sizeof *this; }
    std::int32_t changes() const override { return 0; }
};

/// Takes back up to `count` groups, a line for each.
void undoSteps(const CommandContext& context, std::size_t count) {
    doc::UndoHistory& history = context.document.history();
    for (std::size_t i = 0; i < count; ++i) {
        const std::string label = history.undoLabel();
        if (!context.document.undo()) {
            if (i == 0) context.message("Nothing to undo.");
            return;
        }
        context.message("Undone: " + label);
    }
}

/// Makes up to `count` groups again, a line for each.
template <class Message>
void redoSteps(doc::Document& document, std::size_t count, const Message& message) {
    std::size_t done = 0;
    for (; done < count; ++done) {
        const std::string label = document.history().redoLabel();
        if (!document.redo()) break;
        message("Redone: " + label);
    }
    if (done == 0) message("Nothing to redo.");
}

/// UNDO: one group, as many as a number behind it says, or back to a mark. AUTO and CONTROL are read for the sake of
/// scripts that set them.
class UndoCommand final : public OneShotCommand {
public:
    UndoCommand() : OneShotCommand("UNDO", "Undo", "Edit", {"U"}) {}

    void execute(CommandContext& context) override {
        if (context.arguments.empty()) return undo(context, 1);
        const std::string& word = context.arguments.front();
        if (const auto count = parseInteger(word)) {
            if (*count < 1) return context.message("Invalid value.");
            return undo(context, static_cast<std::size_t>(*count));
        }
        static const std::vector<Keyword> options = parseKeywords("Auto Control BEgin End Mark Back");
        const std::string option = matchKeyword(word, options);
        if (option == "MARK") return mark(context);
        if (option == "BACK") return back(context);
        if (option == "BEGIN") return begin(context);
        if (option == "END") return end(context);
        if (option == "AUTO" && hasWord(context, 1, "ON OFF")) return;
        if (option == "CONTROL") return control(context);
        context.message("Invalid option.");
    }

private:
    static bool hasWord(const CommandContext& context, std::size_t index, std::string_view words) {
        return index < context.arguments.size() &&
               !matchKeyword(context.arguments[index], parseKeywords(words)).empty();
    }
    /// What concerns menus and the view has no effect: there are none. The history itself always keeps all.
    void control(const CommandContext& context) const {
        if (hasWord(context, 1, "None One")) return context.message("The history always keeps all steps.");
        const bool whole = hasWord(context, 1, "All");
        const bool combined = hasWord(context, 1, "Combine Layer") && hasWord(context, 2, "Yes No ON OFF");
        if (!whole && !combined) context.message("Invalid option.");
    }
    /// A group that BEgin opened and nobody closed yet.
    bool isBegun(const CommandContext& context) const {
        return begun_ == &context.document && context.document.isGroupOpen();
    }
    void undo(CommandContext& context, std::size_t count) {
        // Typed at the idle prompt it closes what BEgin left open; beside a running command it leaves it alone.
        if (isBegun(context) && !context.transparent) end(context);
        undoSteps(context, count);
    }
    void mark(CommandContext& context) { context.document.record(std::make_unique<MarkAction>()); }
    void back(CommandContext& context) {
        if (isBegun(context)) end(context);
        doc::UndoHistory& history = context.document.history();
        for (std::size_t count = 0;; ++count) {
            const std::string label = history.undoLabel();
            if (!context.document.undo()) {
                context.message(count == 0 ? "Nothing to undo." : "Everything has been undone.");
                return;
            }
            if (label == kUndoMark) return context.message("Mark encountered");
            context.message("Undone: " + label);
        }
    }
    void begin(CommandContext& context) {
        if (isBegun(context)) end(context);
        context.document.beginGroup("Group");
        begun_ = &context.document;
    }
    void end(CommandContext& context) {
        if (isBegun(context))
            context.document.endGroup();
        else
            context.message("No group is open.");
        begun_ = nullptr;
    }

    const doc::Document* begun_ = nullptr;
};

/// REDO: one group, or as many as a number behind it says.
class RedoCommand final : public OneShotCommand {
public:
    RedoCommand() : OneShotCommand("REDO", "Redo", "Edit") {}

    void execute(CommandContext& context) override {
        std::size_t count = 1;
        if (!context.arguments.empty()) {
            const auto typed = parseInteger(context.arguments.front());
            if (!typed || *typed < 1) return context.message("Invalid value.");
            count = static_cast<std::size_t>(*typed);
        }
        redoSteps(context.document, count, [&](const std::string& text) { context.message(text); });
    }
};

class MredoTool final : public DialogueTool {
protected:
    Dialogue dialogue(Ask& ask) override {
        const Answer answer = co_await ask.integer("Enter number of actions or [All/Last]:", 1, 1'000'000, "All Last");
        if (answer.isEnter()) co_return;
        const std::size_t count = answer.is("All")    ? document().history().redoCount()
                                  : answer.is("Last") ? 1
                                                      : static_cast<std::size_t>(answer.integer());
        redoSteps(document(), std::max<std::size_t>(count, 1), [this](const std::string& text) { message(text); });
    }
};

}  // namespace

KOVA_REGISTER_COMMAND(UndoCommand)
KOVA_REGISTER_COMMAND(RedoCommand)
KOVA_TOOL_COMMAND(Mredo, "MREDO", "Redo Several", "Edit")

}  // namespace kova::cmd::commands
