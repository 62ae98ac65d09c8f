#include "cmd/dialogue.hpp"

#include <gtest/gtest.h>

#include "cmd/console.hpp"
#include "math/angles.hpp"

namespace kova::cmd {
namespace {

using math::Vector2;

/// A command whose conversation a test writes as a lambda.
class ScriptedTool final : public DialogueTool {
public:
    using Body = std::function<Dialogue(Ask&, ScriptedTool&)>;
    explicit ScriptedTool(const Body& body) : body_(body) {}
    using DialogueTool::document;
    using DialogueTool::message;

protected:
    Dialogue dialogue(Ask& ask) override { return body_(ask, *this); }

private:
    const Body& body_;
};

class ScriptedCommand final : public Command {
public:
    ScriptedCommand() : Command("SCRIPTED", "Scripted", "Draw") {}
    std::unique_ptr<Tool> createTool() override { return std::make_unique<ScriptedTool>(body); }
    ScriptedTool::Body body;
};

class Scripted : public ::testing::Test {
protected:
    Scripted() : processor(document, registry, [this](const std::string& text) { lines.push_back(text); }) {
        auto made = std::make_unique<ScriptedCommand>();
        command = made.get();
        registry.add(std::move(made));
    }
    Lines feed(const std::string& line) {
        lines.clear();
        if (processor.isActive())
            processor.input(line);
        else
            processor.startLine(line);
        return lines;
    }
    void expectOnlyAnswer(const std::string& line, const std::string& refusal) {
        const std::string prompt = processor.prompt();
        EXPECT_EQ(feed(line), Lines{refusal}) << line;
        EXPECT_TRUE(processor.isActive()) << line;
        EXPECT_EQ(processor.prompt(), prompt) << line;
    }

    doc::Document document;
    CommandRegistry registry;
    CommandProcessor processor;
    ScriptedCommand* command = nullptr;
    Lines lines;
    Answer got;
};

TEST_F(Scripted, PointsRememberTheLastOne) {
    Answer second;
    command->body = [&](Ask& ask, ScriptedTool&) -> Dialogue {
        got = co_await ask.point("Specify point or [Other thing]:", "Other");
        second = co_await ask.point("Next point:");
    };
    feed("SCRIPTED");
    EXPECT_EQ(processor.prompt(), "Specify point or [Other thing]:");
    expectOnlyAnswer("abc", "Invalid point or option keyword.");
    expectOnlyAnswer("1,2,x", "Invalid point or option keyword.");
    feed("10,20");
    EXPECT_TRUE(got.isPoint());
    expectOnlyAnswer("@", "Invalid input.");
    feed("@1,1");
    EXPECT_EQ(second.point, Vector2(11, 21));
    EXPECT_FALSE(processor.isActive());
    EXPECT_EQ(processor.prompt(), "Command:");
    feed("SCRIPTED o");
    EXPECT_TRUE(got.is("other"));
    EXPECT_EQ(got.word, "OTHER");
    feed("");
    EXPECT_TRUE(second.isEnter());
}

TEST_F(Scripted, NumbersAndMeasures) {
    std::optional<Vector2> base;
    Range range = kPositive;
    command->body = [&](Ask& ask, ScriptedTool&) -> Dialogue {
        got = co_await ask.distance("Distance:", "", base, range);
    };
    feed("SCRIPTED");
    for (const char* text : {"0", "-1", "abc", "1e400", "nan"}) expectOnlyAnswer(text, "Invalid value.");
    feed("2.5");
    EXPECT_DOUBLE_EQ(got.number, 2.5);
    base = Vector2{1, 1};
    feed("SCRIPTED 4,5");
    EXPECT_DOUBLE_EQ(got.number, 5.0);
    // The distance of the base from itself is refused as any other 0.
    feed("SCRIPTED");
    expectOnlyAnswer("1,1", "Invalid value.");
    feed("@0,2");
    EXPECT_DOUBLE_EQ(got.number, 2.0);
    // Without a base two points make the distance.
    base.reset();
    feed("SCRIPTED 10,10");
    EXPECT_EQ(processor.prompt(), "Specify second point:");
    feed("@3,4");
    EXPECT_DOUBLE_EQ(got.number, 5.0);

    command->body = [&](Ask& ask, ScriptedTool&) -> Dialogue {
        got = co_await ask.integer("Count [Few]:", 2, 5, "Few");
    };
    feed("SCRIPTED");
    for (const char* text : {"1", "6", "2.5", "x", "-3"}) expectOnlyAnswer(text, "Invalid value.");
    feed("5");
    EXPECT_EQ(got.integer(), 5);
    feed("SCRIPTED F");
    EXPECT_TRUE(got.is("Few"));
}

TEST_F(Scripted, AnglesObeyTheDrawingsSettings) {
    command->body = [&](Ask& ask, ScriptedTool&) -> Dialogue { got = co_await ask.angle("Angle:", "", Vector2{0, 0}); };
    feed("SCRIPTED 30");
    EXPECT_NEAR(got.number, math::kPi / 6.0, 1e-12);
    feed("SCRIPTED 0,5");
    EXPECT_NEAR(got.number, math::kPi / 2.0, 1e-12);
    engine::setSysVar(document.drawing(), "ANGDIR", 1);
    engine::setSysVar(document.drawing(), "ANGBASE", math::kPi / 2.0);
    feed("SCRIPTED 30");
    EXPECT_NEAR(got.number, math::kPi / 3.0, 1e-12);
}

TEST_F(Scripted, KeywordsTextsAndYesNo) {
    bool yes = false;
    Answer text;
    command->body = [&](Ask& ask, ScriptedTool&) -> Dialogue {
        got = co_await ask.keyword("Enter an option [Add/rEmove]:", "Add rEmove");
        text = co_await ask.text("Name:", "?");
        yes = co_await askYesNo(ask, "Sure? [Yes/No] <Yes>:", true);
    };
    feed("SCRIPTED");
    expectOnlyAnswer("ad", "Invalid option keyword.");
    expectOnlyAnswer("1,2", "Invalid option keyword.");
    feed("e");
    EXPECT_TRUE(got.is("REMOVE"));
    feed("  a name, with blanks ");
    EXPECT_EQ(text.text, "  a name, with blanks ");
    expectOnlyAnswer("maybe", "Invalid option keyword.");
    feed("");
    EXPECT_TRUE(yes);
    feed("SCRIPTED A ? n");
    EXPECT_TRUE(text.is("?"));
    EXPECT_FALSE(yes);
}

TEST_F(Scripted, ObjectsArePickedByPointOrLast) {
    engine::Drawing& drawing = document.drawing();
    drawing.modelSpace().append(std::make_unique<engine::LineEntity>(Vector2{0, 0}, Vector2{100, 0}));
    const auto last =
        drawing.modelSpace().append(std::make_unique<engine::LineEntity>(Vector2{0, 50}, Vector2{100, 50})).id();
    command->body = [&](Ask& ask, ScriptedTool&) -> Dialogue {
        got = co_await ask.object("Select object:", "", [&](const engine::Entity& e) { return e.id() == last; });
    };
    feed("SCRIPTED");
    expectOnlyAnswer("50,25", "No object found.");
    expectOnlyAnswer("50,0", "Object cannot be used here.");
    expectOnlyAnswer("xx", "Invalid input.");
    feed("50,50.1");
    EXPECT_EQ(got.id, last);
    EXPECT_EQ(got.point, Vector2(50, 50.1));
    feed("SCRIPTED L");
    EXPECT_EQ(got.id, last);
}

TEST_F(Scripted, TwoSelectionsInOneCommandAreSeparate) {
    engine::EntityList& space = document.drawing().modelSpace();
    const auto a = space.append(std::make_unique<engine::LineEntity>(Vector2{0, 0}, Vector2{100, 0})).id();
    const auto b = space.append(std::make_unique<engine::LineEntity>(Vector2{0, 50}, Vector2{100, 50})).id();
    Answer other;
    command->body = [&](Ask& ask, ScriptedTool& tool) -> Dialogue {
        got = co_await ask.selection("Select cutting edges:");
        tool.document().selection().clear();
        other = co_await ask.selection("Select objects to cut:");
    };
    feed("SCRIPTED");
    EXPECT_EQ(processor.prompt(), "Select cutting edges:");
    feed("50,0");
    feed("R");
    EXPECT_EQ(processor.prompt(), "Remove objects:");
    feed("");
    EXPECT_EQ(got.ids, std::vector{a});
    EXPECT_EQ(processor.prompt(), "Select objects to cut:");
    // Neither the remove mode nor the answers of the first selection are left.
    feed("50,50");
    feed("");
    EXPECT_EQ(other.ids, std::vector{b});
    EXPECT_FALSE(processor.isActive());
}

// Compilers have lost what such expressions hold while they wait; the token tells of every copy.
TEST_F(Scripted, ConditionsWait) {
    const auto token = std::make_shared<int>(0);
    std::string log;
    const auto yes = [](Ask& ask, std::string prompt, std::shared_ptr<int> held) -> Task<bool> {
        const Answer answer = co_await ask.text(std::move(prompt));
        co_return held && answer.text == "y";
    };
    command->body = [&](Ask& ask, ScriptedTool&) -> Dialogue {
        if (co_await yes(ask, "A question that is too long for a short string:", token)) log += 'a';
        if (!co_await yes(ask, "Another one that is too long for a short string:", token)) log += 'b';
        while (co_await yes(ask, "Again and again, until somebody has had enough:", token)) log += 'c';
        if (const Answer answer = co_await ask.text("Word:"); answer.isText()) log += answer.text;
        if (co_await yes(ask, "Left:", token) && co_await yes(ask, "Right:", token)) log += 'd';
        const bool other = log.empty() ? co_await yes(ask, "One:", token) : !co_await yes(ask, "Other:", token);
        if (other) log += 'e';
        switch ((co_await ask.text("Case:")).text.size()) {
            case 3:
                log += 'f';
                break;
            default:
                break;
        }
        const std::function<bool(const engine::Entity&)> any = [token](const engine::Entity&) { return true; };
        if (!(co_await ask.object("Pick:", "", any)).isObject()) log += 'g';
        if (!co_await yes(ask, "Last:", token)) co_return;
        log += 'h';
    };
    for (const char* line : {"SCRIPTED", "y", "n", "y", "y", "n", "word", "y", "y", "n", "abc", ""}) feed(line);
    EXPECT_EQ(processor.prompt(), "Last:");
    feed("n");
    EXPECT_FALSE(processor.isActive());
    EXPECT_EQ(log, "abccworddefg");
    EXPECT_EQ(token.use_count(), 1);
    for (const char* line : {"SCRIPTED", "y", "y"}) feed(line);
    processor.cancel();
    EXPECT_EQ(token.use_count(), 1);
}

TEST_F(Scripted, CancelClosesGroupsAndRunsWhatWasAskedFor) {
    bool committed = false;
    command->body = [&](Ask& ask, ScriptedTool& tool) -> Dialogue {
        const doc::GroupScope group(tool.document(), "SCRIPTED");
        tool.document().addEntity(std::make_unique<engine::LineEntity>());
        ask.onCancel([&] { committed = true; });
        const bool never = co_await askYesNo(ask, "Sure?", false);
        ADD_FAILURE() << never;
    };
    feed("SCRIPTED");
    EXPECT_TRUE(document.isGroupOpen());
    EXPECT_TRUE(processor.cancel());
    EXPECT_TRUE(committed);
    EXPECT_FALSE(document.isGroupOpen());
    EXPECT_FALSE(processor.isActive());
    EXPECT_EQ(document.history().undoLabel(), "SCRIPTED");
}

TEST_F(Scripted, WhatIsThrownEndsTheCommandWithALine) {
    command->body = [&](Ask& ask, ScriptedTool& tool) -> Dialogue {
        const doc::GroupScope group(tool.document(), "SCRIPTED");
        co_await ask.text("Text:");
        static_cast<void>(std::stod("x"));
    };
    feed("SCRIPTED");
    EXPECT_EQ(feed("go"), Lines{"Command failed: stod"});
    EXPECT_FALSE(processor.isActive());
    EXPECT_FALSE(document.isGroupOpen());
    // Thrown before the first question, and in a dialogue within the dialogue.
    command->body = [](Ask&, ScriptedTool&) -> Dialogue {
        static_cast<void>(std::stoi(""));
        co_return;
    };
    EXPECT_EQ(feed("SCRIPTED"), Lines{"Command failed: stoi"});
    command->body = [](Ask& ask, ScriptedTool& tool) -> Dialogue {
        try {
            co_await [](Ask& inner) -> Dialogue {
                co_await inner.text("Inner:");
                throw std::runtime_error("inner");
            }(ask);
        } catch (const std::runtime_error& error) {
            tool.message(std::string("caught ") + error.what());
        }
        co_await ask.text("Outer:");
    };
    feed("SCRIPTED");
    EXPECT_EQ(feed("x"), Lines{"caught inner"});
    EXPECT_EQ(processor.prompt(), "Outer:");
    feed("");
    EXPECT_FALSE(processor.isActive());
}

/// A hand-written tool that throws, and one that replaces itself while it runs.
class ThrowingTool final : public Tool {
public:
    void begin() override { setPrompt("Throw:"); }
    void textInput(const std::string&) override { throw std::out_of_range("stod argument out of range"); }
};
class ThrowingCommand final : public Command {
public:
    ThrowingCommand() : Command("THROW", "", "Draw") {}
    std::unique_ptr<Tool> createTool() override { return std::make_unique<ThrowingTool>(); }
};
class ThrowingOneShot final : public OneShotCommand {
public:
    ThrowingOneShot() : OneShotCommand("THROWNOW", "", "Draw") {}
    void execute(CommandContext&) override { throw std::runtime_error("no"); }
};

TEST_F(Scripted, HandWrittenToolsAreGuardedToo) {
    registry.add(std::make_unique<ThrowingCommand>());
    registry.add(std::make_unique<ThrowingOneShot>());
    feed("THROW");
    EXPECT_EQ(feed("x"), Lines{"Command failed: stod argument out of range"});
    EXPECT_FALSE(processor.isActive());
    EXPECT_EQ(feed("THROWNOW"), Lines{"Command failed: no"});
    EXPECT_EQ(processor.prompt(), "Command:");
}

TEST_F(Scripted, ResetEndsACommandButNotTheOneThatAsksForIt) {
    command->body = [&](Ask& ask, ScriptedTool& tool) -> Dialogue {
        co_await ask.text("File:");
        processor.reset();
        tool.message("still here");
        co_await ask.text("More:");
    };
    feed("SCRIPTED");
    EXPECT_EQ(feed("x"), Lines{"still here"});
    EXPECT_EQ(processor.prompt(), "More:");
    processor.reset();
    EXPECT_FALSE(processor.isActive());
}

}  // namespace
}  // namespace kova::cmd
