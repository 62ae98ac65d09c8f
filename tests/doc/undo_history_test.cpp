#include "doc_tools.hpp"

namespace kova::doc {
namespace {

using test::addLine;

/// Writes what is done to it into a log.
class LoggedAction final : public IUndoableAction {
public:
    LoggedAction(std::string name, std::vector<std::string>& log, std::size_t bytes = 100)
        : name_(std::move(name)), log_(log), bytes_(bytes) {}
    ~LoggedAction() override { log_.push_back("drop " + name_); }
    void undo(engine::Drawing&) override {
        if (throws) throw std::runtime_error("broken");
        log_.push_back("undo " + name_);
    }
    void redo(engine::Drawing&) override { log_.push_back("redo " + name_); }
    std::string description() const override { return name_; }
    std::size_t sizeInBytes() const override { return bytes_; }
    bool throws = false;

private:
    std::string name_;
    std::vector<std::string>& log_;
    std::size_t bytes_;
};

class History : public ::testing::Test {
protected:
    std::unique_ptr<UndoGroup> group(const std::string& label, std::size_t bytes = 100) {
        auto made = std::make_unique<UndoGroup>();
        made->label = label;
        made->actions.push_back(std::make_unique<LoggedAction>(label, log, bytes));
        return made;
    }
    std::vector<std::string> log;  // outlives the history, whose actions write to it
    UndoHistory history;
};

TEST_F(History, CountsWhatItHolds) {
    EXPECT_FALSE(history.canUndo());
    EXPECT_EQ(history.undoLabel(), "");
    EXPECT_EQ(history.topSequence(), 0U);
    int changes = 0;
    QObject::connect(&history, &UndoHistory::historyChanged, &history, [&] { ++changes; });

    history.push(std::make_unique<UndoGroup>());
    history.push(nullptr);
    EXPECT_EQ(changes, 0);
    EXPECT_FALSE(history.canUndo());

    auto first = group("first", 1000);
    first->actions.reserve(5);
    const std::size_t expected = 64 + first->label.capacity() + 8 * first->actions.capacity() + 1000;
    history.push(std::move(first));
    EXPECT_EQ(changes, 1);
    EXPECT_EQ(history.topSequence(), 1U);
    EXPECT_EQ(history.estimatedBytes(), expected);

    history.push(group("second"));
    EXPECT_EQ(history.undoLabel(), "second");
    EXPECT_EQ(history.topSequence(), 2U);
    history.putRedo(history.takeUndo());
    EXPECT_EQ(history.redoLabel(), "second");
    EXPECT_GT(history.estimatedBytes(), expected);
    // A new group empties the redo stack and its share of the total; sequence numbers go on.
    history.push(group("third"));
    EXPECT_FALSE(history.canRedo());
    EXPECT_EQ(history.topSequence(), 3U);
    EXPECT_EQ(log.back(), "drop second");
    history.takeUndo();
    EXPECT_EQ(history.estimatedBytes(), expected);
    history.clear();
    EXPECT_EQ(history.estimatedBytes(), 0U);
    EXPECT_EQ(history.lastSequence(), 3U);
}

TEST_F(History, LevelLimitDropsTheOldest) {
    for (int i = 0; i < 1025; ++i) history.push(group(std::to_string(i), 1));
    EXPECT_EQ(history.undoCount(), 1024U);
    EXPECT_EQ(log, (std::vector<std::string>{"drop 0"}));
    history.setLimits(2, UndoHistory::kDefaultMaxBytes);
    EXPECT_EQ(history.undoCount(), 2U);
    EXPECT_EQ(history.undoLabel(), "1024");
}

TEST_F(History, ByteLimitMayEmptyTheStack) {
    history.setLimits(UndoHistory::kDefaultMaxGroups, 10'000);
    history.push(group("a", 4000));
    history.push(group("b", 4000));
    history.push(group("c", 4000));
    EXPECT_EQ(history.undoCount(), 2U);
    EXPECT_LE(history.estimatedBytes(), 10'000U);
    history.push(group("huge", 20'000));
    EXPECT_FALSE(history.canUndo());
    EXPECT_EQ(history.estimatedBytes(), 0U);
    EXPECT_EQ(history.lastSequence(), 4U);
}

class DocumentGroups : public History {
protected:
    void act(const std::string& name) { document.record(std::make_unique<LoggedAction>(name, log)); }
    Document document;
};

TEST_F(DocumentGroups, NestedPairsMakeOneEntry) {
    int modified = 0;
    QObject::connect(&document, &Document::documentModified, &document, [&] { ++modified; });
    document.endGroup();  // nothing open: nothing happens
    EXPECT_EQ(modified, 0);

    UndoGroup& outer = document.beginGroup("TRIM");
    EXPECT_EQ(&document.beginGroup("inner"), &outer);
    act("a");
    document.endGroup();
    EXPECT_TRUE(document.isGroupOpen());
    act("b");
    EXPECT_FALSE(document.undo());
    EXPECT_FALSE(document.redo());
    document.undoTo(0);
    EXPECT_EQ(log.size(), 0U);
    EXPECT_FALSE(document.isModified());
    document.endGroup();
    EXPECT_FALSE(document.isGroupOpen());
    EXPECT_EQ(document.history().undoCount(), 1U);
    EXPECT_EQ(document.history().undoLabel(), "TRIM");
    EXPECT_TRUE(document.isModified());
    EXPECT_EQ(modified, 1);

    document.setModified(false);
    EXPECT_TRUE(document.undo());
    EXPECT_EQ(log, (std::vector<std::string>{"undo b", "undo a"}));
    EXPECT_TRUE(document.isModified());
    EXPECT_EQ(modified, 2);
    EXPECT_FALSE(document.undo());
    EXPECT_TRUE(document.redo());
    EXPECT_EQ(log, (std::vector<std::string>{"undo b", "undo a", "redo a", "redo b"}));
    EXPECT_EQ(document.history().undoLabel(), "TRIM");
}

TEST_F(DocumentGroups, EmptyGroupLeavesNoEntry) {
    act("LINE");
    document.beginGroup("LIST");
    document.endGroup();
    EXPECT_EQ(document.history().undoLabel(), "LINE");
    EXPECT_EQ(document.history().lastSequence(), 1U);
}

TEST_F(DocumentGroups, UndoToSequence) {
    for (const char* name : {"a", "b", "c", "d"}) act(name);
    document.undoTo(2);
    EXPECT_EQ(document.history().undoLabel(), "b");
    EXPECT_EQ(document.history().redoCount(), 2U);
    document.undoTo(2);
    EXPECT_EQ(log, (std::vector<std::string>{"undo d", "undo c"}));
    document.redo();
    EXPECT_EQ(document.history().topSequence(), 3U);  // a group keeps its number
    act("e");
    EXPECT_FALSE(document.history().canRedo());
    EXPECT_EQ(document.history().topSequence(), 5U);
    document.undoTo(0);
    EXPECT_FALSE(document.history().canUndo());
}

TEST_F(DocumentGroups, RollbackTakesBackTheInnermostLevel) {
    document.beginGroup("outer");
    act("a");
    {
        GroupScope scope(document, "inner");
        act("b");
        act("c");
        scope.rollback();
    }
    EXPECT_EQ(log, (std::vector<std::string>{"undo c", "drop c", "undo b", "drop b"}));
    EXPECT_TRUE(document.isGroupOpen());
    document.endGroup();
    EXPECT_EQ(document.history().undoCount(), 1U);

    document.beginGroup("second");
    act("d");
    document.rollbackGroup();
    EXPECT_FALSE(document.isGroupOpen());
    EXPECT_EQ(document.history().undoLabel(), "outer");
    document.rollbackGroup();  // nothing open: nothing happens
    EXPECT_EQ(log.back(), "drop d");
}

TEST_F(DocumentGroups, ThrowingActionDestroysItsGroup) {
    act("kept");
    document.beginGroup("bad");
    act("a");
    auto broken = std::make_unique<LoggedAction>("broken", log);
    broken->throws = true;
    document.record(std::move(broken));
    act("b");
    document.endGroup();
    const std::size_t total = document.history().estimatedBytes();
    document.setModified(false);
    EXPECT_THROW(document.undo(), std::runtime_error);
    EXPECT_EQ(log.front(), "undo b");
    EXPECT_EQ(std::count(log.begin(), log.end(), "undo a"), 0);
    EXPECT_EQ(std::count(log.begin(), log.end(), "drop a"), 1);
    EXPECT_FALSE(document.history().canRedo());
    EXPECT_LT(document.history().estimatedBytes(), total);
    EXPECT_TRUE(document.isModified());
    EXPECT_TRUE(document.undo());  // the history still works
    EXPECT_EQ(log.back(), "undo kept");
}

/// Answers every added entity by a further one when the group closes, and counts.
class Reactor final : public engine::IDocumentReactor {
public:
    explicit Reactor(Document& document) : document_(document) { document.addReactor(this); }
    ~Reactor() override { document_.removeReactor(this); }
    void entityAdded(engine::Drawing&, engine::Entity&) override { ++added; }
    void entityModified(engine::Drawing&, engine::Entity&) override { ++modified; }
    void entityErased(engine::Drawing& drawing, engine::Entity& entity) override {
        ++erased;
        EXPECT_EQ(drawing.findById(entity.id()), &entity);
    }
    void groupClosing(engine::Drawing&) override {
        ++closings;
        if (!follow) return;
        follow = false;
        GroupScope scope(document_, "derived");
        addLine(document_, 50);
    }
    void documentRestored(engine::Drawing&) override {
        ++restored;
        EXPECT_FALSE(document_.undo());  // refused while an undo is at work
        addLine(document_, 99);          // derived data: not recorded
    }
    int added = 0, modified = 0, erased = 0, closings = 0, restored = 0;
    bool follow = false;

private:
    Document& document_;
};

TEST_F(DocumentGroups, ReactorsHearOfChangesAndMayAnswerWithinTheGroup) {
    Reactor reactor(document);
    document.addReactor(&reactor);  // twice is once
    reactor.follow = true;
    const std::uint64_t id = addLine(document);
    EXPECT_EQ(reactor.added, 2);
    EXPECT_EQ(reactor.closings, 1);
    EXPECT_EQ(document.history().undoCount(), 1U);
    EXPECT_EQ(document.history().undoLabel(), "Add entity");
    document.modifyEntity(*document.drawing().findById(id), [](engine::Entity& e) { e.visible = false; });
    document.transformEntities({id}, math::Matrix4::translation(1, 1));
    EXPECT_EQ(reactor.modified, 2);
    document.removeEntities({id});
    EXPECT_EQ(reactor.erased, 1);

    document.undoTo(0);
    EXPECT_EQ(reactor.restored, 4);
    EXPECT_EQ(document.history().redoCount(), 4U);
    EXPECT_EQ(document.drawing().entityCount(), 4U);  // what the reactor drew, and nothing else
}

TEST_F(DocumentGroups, NewDrawingStartsAfresh) {
    const std::uint64_t id = addLine(document);
    document.selection().add(id);
    document.beginGroup("left open");
    int spaces = 0;
    QObject::connect(&document, &Document::spaceChanged, &document, [&] { ++spaces; });
    document.setDrawing(std::make_unique<engine::Drawing>());
    EXPECT_EQ(document.drawing().entityCount(), 0U);
    EXPECT_TRUE(document.selection().empty());
    EXPECT_FALSE(document.history().canUndo());
    EXPECT_FALSE(document.isGroupOpen());
    EXPECT_FALSE(document.isModified());
    EXPECT_EQ(spaces, 1);
    addLine(document);
    EXPECT_TRUE(document.isModified());
    EXPECT_TRUE(document.undo());
}

TEST(Document, AGroupWithoutActionsLeavesNoTrace) {
    Document document;
    addLine(document);
    document.undo();
    document.setModified(false);
    int signals = 0;
    QObject::connect(&document, &Document::documentModified, &document, [&] { ++signals; });
    document.beginGroup("LIST");
    document.beginGroup("nested");
    document.endGroup();
    document.endGroup();
    EXPECT_FALSE(document.isGroupOpen());
    EXPECT_FALSE(document.isModified());
    EXPECT_FALSE(document.history().canUndo());
    EXPECT_TRUE(document.history().canRedo());
    EXPECT_EQ(signals, 0);
}

}  // namespace
}  // namespace kova::doc
