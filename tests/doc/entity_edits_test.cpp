#include <limits>

#include "doc/entity_actions.hpp"
#include "doc_tools.hpp"

namespace kova::doc {
namespace {

using test::addLine;
using test::idsOf;
using test::makeLine;
using test::setStartX;
using test::startX;

class EntityEdits : public ::testing::Test {
protected:
    engine::Drawing& drawing() { return document.drawing(); }
    engine::Entity& entity(std::uint64_t id) { return *drawing().findById(id); }
    Document document;
};

TEST_F(EntityEdits, ModifyAfterAddIsUndoneFirst) {
    document.beginGroup("LINE");
    const std::uint64_t id = addLine(document, 1);
    const std::uint64_t handle = entity(id).handle();
    document.modifyEntity(entity(id), [](engine::Entity& e) { setStartX(e, 5); });
    document.endGroup();
    document.modifyEntity(entity(id), [](engine::Entity& e) { setStartX(e, 7); });
    document.undo();
    EXPECT_EQ(startX(document, id), 5);
    EXPECT_EQ(entity(id).handle(), handle);
    document.undo();
    EXPECT_EQ(drawing().findById(id), nullptr);
    EXPECT_EQ(drawing().findByHandle(handle), nullptr);
    document.redo();
    document.redo();
    EXPECT_EQ(startX(document, id), 7);
    EXPECT_EQ(entity(id).handle(), handle);
    EXPECT_EQ(drawing().findByHandle(handle), &entity(id));
    // Back and forth as often as one likes.
    for (int i = 0; i < 3; ++i) {
        document.undoTo(0);
        while (document.redo()) {
        }
    }
    EXPECT_EQ(startX(document, id), 7);
}

TEST_F(EntityEdits, EraseAndUndoKeepsDrawOrderAndSelection) {
    std::vector<std::uint64_t> ids;
    for (int i = 0; i < 6; ++i) ids.push_back(addLine(document, i));
    document.selection().set({ids[4], ids[1], ids[0]});
    int signals = 0;
    QObject::connect(&document.selection(), &SelectionSet::selectionChanged, &document, [&] { ++signals; });
    const std::vector<std::uint64_t> erase{ids[1], ids[4], 999999, ids[1], ids[3]};
    EXPECT_EQ(document.removeEntities(erase), 3U);
    EXPECT_EQ(idsOf(drawing().modelSpace()), (std::vector{ids[0], ids[2], ids[5]}));
    EXPECT_EQ(document.selection().ids(), (std::vector{ids[0]}));
    EXPECT_EQ(signals, 1);
    EXPECT_EQ(document.history().undoLabel(), "Remove entity");
    const std::uint64_t late = addLine(document, 9);
    document.undo();
    document.undo();
    EXPECT_EQ(idsOf(drawing().modelSpace()), ids);
    document.redo();
    document.redo();
    EXPECT_EQ(idsOf(drawing().modelSpace()), (std::vector{ids[0], ids[2], ids[5], late}));

    // An entity that an undo takes away leaves the selection too.
    document.selection().add(late);
    document.undo();
    EXPECT_FALSE(document.selection().contains(late));
    EXPECT_EQ(document.selection().ids(), (std::vector{ids[0]}));
}

TEST_F(EntityEdits, RemovingTheSelectionByItsOwnList) {
    for (int i = 0; i < 5; ++i) document.selection().add(addLine(document, i));
    EXPECT_EQ(document.removeEntities(document.selection().ids()), 5U);
    EXPECT_TRUE(document.selection().empty());
    EXPECT_EQ(drawing().entityCount(), 0U);
}

TEST_F(EntityEdits, OperationsThatChangeNothingLeaveNoTrace) {
    EXPECT_EQ(document.removeEntities({1234567, 7654321}), 0U);
    document.transformEntities({1234567}, math::Matrix4::translation(1, 0));
    EXPECT_FALSE(document.history().canUndo());
    EXPECT_FALSE(document.isModified());
    const std::uint64_t id = addLine(document, 3);
    math::Matrix4 bad;
    bad(0, 3) = std::numeric_limits<double>::quiet_NaN();
    document.transformEntities({id}, bad);
    EXPECT_EQ(startX(document, id), 3);
    EXPECT_EQ(document.history().undoCount(), 1U);
}

TEST_F(EntityEdits, ChangeThatThrowsCanStillBeUndone) {
    const std::uint64_t id = addLine(document, 1);
    EXPECT_THROW(document.modifyEntity(entity(id),
                                       [](engine::Entity& e) {
                                           setStartX(e, 8);
                                           throw std::runtime_error("half way");
                                       }),
                 std::runtime_error);
    EXPECT_EQ(startX(document, id), 8);
    document.undo();
    EXPECT_EQ(startX(document, id), 1);
}

TEST_F(EntityEdits, TransformKeepsTheObjectUnlessItsKindChanges) {
    const std::uint64_t line = addLine(document, 1);
    const std::uint64_t circle =
        document.addEntity(std::make_unique<engine::CircleEntity>(math::Vector2{0, 0}, 2.0), drawing().modelSpace())
            .id();
    const engine::Entity* object = &entity(line);
    const std::uint64_t handle = entity(circle).handle();
    document.transformEntities({line, circle, line}, math::Matrix4::translation(10, 0));
    EXPECT_EQ(&entity(line), object);
    EXPECT_EQ(startX(document, line), 11);  // once, though named twice
    document.transformEntities({line, circle}, math::Matrix4::scaling(2, 1));
    EXPECT_EQ(&entity(line), object);
    EXPECT_EQ(startX(document, line), 22);
    EXPECT_EQ(entity(circle).type(), engine::EntityType::Ellipse);
    EXPECT_EQ(entity(circle).handle(), handle);
    document.undo();
    EXPECT_EQ(entity(circle).type(), engine::EntityType::Circle);
    document.undo();
    EXPECT_EQ(static_cast<engine::CircleEntity&>(entity(circle)).center, (math::Vector2{0, 0}));
    EXPECT_EQ(startX(document, line), 1);
    EXPECT_EQ(idsOf(drawing().modelSpace()), (std::vector{line, circle}));
}

TEST_F(EntityEdits, ReplaceTakesOverIdHandleAndPlace) {
    const std::uint64_t first = addLine(document);
    const std::uint64_t second = addLine(document);
    const std::uint64_t handle = entity(first).handle();
    engine::Entity& fresh = document.replaceEntity(entity(first), std::make_unique<engine::CircleEntity>());
    EXPECT_EQ(fresh.id(), first);
    EXPECT_EQ(fresh.handle(), handle);
    EXPECT_EQ(idsOf(drawing().modelSpace()), (std::vector{first, second}));
    document.undo();
    EXPECT_EQ(entity(first).type(), engine::EntityType::Line);
    EXPECT_EQ(idsOf(drawing().modelSpace()), (std::vector{first, second}));
}

TEST_F(EntityEdits, DrawOrder) {
    std::vector<std::uint64_t> ids;
    for (int i = 0; i < 6; ++i) ids.push_back(addLine(document, i));
    document.removeEntities({ids[2]});
    auto order = drawing().modelSpace().entities();
    std::swap(order[1], order[3]);
    EXPECT_TRUE(document.setDrawOrder(drawing().modelSpace(), order));
    const std::vector<std::uint64_t> changed{ids[0], ids[4], ids[3], ids[1], ids[5]};
    EXPECT_EQ(idsOf(drawing().modelSpace()), changed);
    EXPECT_EQ(document.history().undoLabel(), "Draw order");
    const std::size_t entries = document.history().undoCount();
    EXPECT_TRUE(document.setDrawOrder(drawing().modelSpace(), drawing().modelSpace().entities()));
    order.pop_back();
    EXPECT_FALSE(document.setDrawOrder(drawing().modelSpace(), order));
    order.push_back(order.front());
    EXPECT_FALSE(document.setDrawOrder(drawing().modelSpace(), order));
    EXPECT_EQ(document.history().undoCount(), entries);
    document.undo();
    document.undo();
    EXPECT_EQ(idsOf(drawing().modelSpace()), ids);
    document.redo();
    document.redo();
    EXPECT_EQ(idsOf(drawing().modelSpace()), changed);
}

TEST_F(EntityEdits, LayoutAndBlockEntitiesHaveActionsOfTheirOwn) {
    engine::Block* block = document.addBlock(std::make_unique<engine::Block>("DOOR"));
    ASSERT_NE(block, nullptr);
    struct Case {
        engine::EntityList* list;
        std::string noun;
    };
    for (const Case& c : {Case{&drawing().findLayout("Layout2")->entities, "layout entity"},
                          Case{&block->entities, "block entity"}, Case{&drawing().modelSpace(), "entity"}}) {
        const std::uint64_t id = document.addEntity(makeLine(0, 0, 1, 1), *c.list).id();
        EXPECT_EQ(document.history().undoLabel(), "Add " + c.noun);
        document.modifyEntity(entity(id), [](engine::Entity& e) { setStartX(e, 4); });
        EXPECT_EQ(document.history().undoLabel(), "Modify " + c.noun);
        document.removeEntity(entity(id));
        EXPECT_EQ(document.history().undoLabel(), "Remove " + c.noun);
        EXPECT_TRUE(c.list->empty());
        document.undo();
        EXPECT_EQ(idsOf(*c.list), (std::vector{id}));
        EXPECT_EQ(startX(document, id), 4);
        document.undo();
        EXPECT_EQ(startX(document, id), 0);
        document.undo();
        EXPECT_TRUE(c.list->empty());
        document.redo();
        document.redo();
        EXPECT_EQ(idsOf(*c.list), (std::vector{id}));
        EXPECT_EQ(startX(document, id), 4);
    }
}

TEST_F(EntityEdits, HundredThousandErasedComeBackWithinTheLimits) {
    constexpr std::size_t count = 100'000;
    {
        GroupScope scope(document, "FILL");
        for (std::size_t i = 0; i < count; ++i) addLine(document, static_cast<double>(i));
    }
    const std::vector<std::uint64_t> ids = idsOf(drawing().modelSpace());
    ASSERT_EQ(ids.size(), count);
    document.history().clear();
    document.removeEntities(ids);
    ASSERT_EQ(document.history().undoCount(), 1U);
    // Ten times as many must stay below the default limit of the history.
    EXPECT_LT(document.history().estimatedBytes() * 10, UndoHistory::kDefaultMaxBytes);
    EXPECT_GT(document.history().estimatedBytes(), count * sizeof(engine::LineEntity));
    document.undo();
    EXPECT_EQ(idsOf(drawing().modelSpace()), ids);
    // Each came back to its own slot: nothing was appended.
    EXPECT_EQ(drawing().modelSpace().slotCount(), count);
}

TEST_F(EntityEdits, ClearedHistoryGivesUpEmptySlots) {
    std::vector<std::uint64_t> ids;
    for (int i = 0; i < 10; ++i) ids.push_back(addLine(document, i));
    document.removeEntities({ids[0], ids[5], ids[9]});
    EXPECT_EQ(drawing().modelSpace().slotCount(), 10U);
    document.beginGroup("open");
    document.removeEntities({ids[1]});
    document.history().clear();  // the open group still holds an entity that may come back
    EXPECT_EQ(drawing().modelSpace().slotCount(), 10U);
    document.rollbackGroup();
    EXPECT_NE(drawing().findById(ids[1]), nullptr);
    document.history().clear();
    EXPECT_EQ(drawing().modelSpace().slotCount(), 7U);
    EXPECT_EQ(idsOf(drawing().modelSpace()), (std::vector{ids[1], ids[2], ids[3], ids[4], ids[6], ids[7], ids[8]}));
}

TEST_F(EntityEdits, CurrentPropertiesAndSelectability) {
    drawing().layers.ensure("WALLS");
    drawing().currentLayer = "WALLS";
    drawing().currentColor = engine::Color::index(3);
    drawing().currentLinetype = "Continuous";
    EXPECT_EQ(document.setVariable("CELTSCALE", 2.5), "");
    EXPECT_EQ(document.setVariable("CELWEIGHT", 50), "");
    EXPECT_EQ(document.setVariable("CETRANSPARENCY", std::string("30")), "");
    auto line = makeLine(0, 0, 1, 0);
    document.applyCurrentProperties(*line);
    EXPECT_EQ(line->layer, "WALLS");
    EXPECT_EQ(line->color, engine::Color::index(3));
    EXPECT_EQ(line->linetype, "Continuous");
    EXPECT_EQ(line->linetypeScale(), 2.5);
    EXPECT_EQ(line->lineweight, 50);
    EXPECT_EQ(line->transparency, 30);

    EXPECT_FALSE(document.isSelectable(*line));  // not in the drawing
    engine::Entity& added = document.addEntity(std::move(line));
    EXPECT_TRUE(document.isSelectable(added));
    for (bool engine::Layer::*flag : {&engine::Layer::frozen, &engine::Layer::locked, &engine::Layer::on}) {
        engine::Layer& layer = *drawing().layers.find("WALLS");
        layer.*flag = !(layer.*flag);
        EXPECT_FALSE(document.isSelectable(added));
        layer.*flag = !(layer.*flag);
    }
    added.visible = false;
    EXPECT_FALSE(document.isSelectable(added));
    added.visible = true;
    added.layer = "unknown layer";
    EXPECT_TRUE(document.isSelectable(added));
    engine::Entity& paper = document.addEntity(makeLine(0, 0, 1, 0), drawing().findLayout("Layout1")->entities);
    EXPECT_FALSE(document.isSelectable(paper));
    drawing().tileMode = false;
    EXPECT_TRUE(document.isSelectable(paper));
    EXPECT_FALSE(document.isSelectable(added));
}

TEST(Selection, KeepsOrderAndSignalsOnce) {
    SelectionSet selection;
    int signals = 0;
    QObject::connect(&selection, &SelectionSet::selectionChanged, &selection, [&] { ++signals; });
    EXPECT_EQ(selection.add({5, 3, 9, 3}), 3U);
    EXPECT_EQ(selection.ids(), (std::vector<std::uint64_t>{5, 3, 9}));
    EXPECT_EQ(signals, 1);
    EXPECT_FALSE(selection.add(3));
    EXPECT_EQ(selection.add({5, 9}), 0U);
    EXPECT_FALSE(selection.remove(4));
    EXPECT_EQ(signals, 1);
    EXPECT_TRUE(selection.remove(3));
    EXPECT_EQ(selection.size(), 2U);
    EXPECT_TRUE(selection.add(3));  // again, and now last
    EXPECT_EQ(selection.ids(), (std::vector<std::uint64_t>{5, 9, 3}));
    EXPECT_EQ(selection.remove({3, 5, 77}), 2U);
    EXPECT_EQ(signals, 4);
    EXPECT_EQ(selection.ids(), (std::vector<std::uint64_t>{9}));
    EXPECT_TRUE(selection.contains(9));
    EXPECT_FALSE(selection.contains(5));
    selection.set({9});
    EXPECT_EQ(signals, 4);
    selection.set({2, 1, 2});
    EXPECT_EQ(selection.ids(), (std::vector<std::uint64_t>{2, 1}));
    selection.remove(selection.ids());
    EXPECT_TRUE(selection.empty());
    selection.clear();
    EXPECT_EQ(signals, 6);
}

}  // namespace
}  // namespace kova::doc
