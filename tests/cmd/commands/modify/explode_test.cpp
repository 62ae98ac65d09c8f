#include <chrono>

#include "cmd/draw_harness.hpp"
#include "engine/kinds/all.hpp"
#include "math/angles.hpp"

namespace kova::cmd {
namespace {

using engine::EntityType;
using math::Vector2;

std::size_t countOf(Console& c, EntityType type) {
    std::size_t n = 0;
    for (const engine::Entity* e : c.entities()) n += e->type() == type;
    return n;
}

template <class Kind>
Kind* at(Console& c, std::size_t index) {
    const auto all = c.entities();
    return index < all.size() ? dynamic_cast<Kind*>(all[index]) : nullptr;
}

TEST(Explode, PolylinesBecomeLinesAndArcsAndLoseTheirWidth) {
    DrawConsole c;
    engine::PolylineEntity polyline({{0, 0}, {10, 0}, {10, 4}}, true);
    polyline.setBulge(1, -1.0);  // a half circle to the right of the way, clockwise
    polyline.setWidths(0, 1, 1);
    polyline.layer = "WALLS";
    polyline.elevation = 3;
    c.add(polyline);
    const auto lines = c.run({"EXPLODE", "ALL", ""});
    EXPECT_EQ(lines, (Lines{"1 object exploded.", "Exploding this polyline has lost width information."}));
    ASSERT_EQ(c.count(), 3u);
    const auto* line = at<engine::LineEntity>(c, 0);
    ASSERT_NE(line, nullptr);
    EXPECT_EQ(line->end, Vector2(10, 0));
    EXPECT_EQ(line->elevation, 3.0);
    EXPECT_EQ(line->layer, "WALLS");
    const auto* arc = at<engine::ArcEntity>(c, 1);
    ASSERT_NE(arc, nullptr);
    expectNear(arc->center, {10, 2});
    expectNear(arc->midPoint(), {8, 2});
    EXPECT_EQ(c.lastStep(), "EXPLODE");
    // P selects the parts.
    c.run({"MOVE", "P", "", "0,0", "0,100"});
    EXPECT_EQ(at<engine::LineEntity>(c, 0)->start, Vector2(0, 100));
    c.run({"UNDO", "UNDO"});
    EXPECT_EQ(countOf(c, EntityType::Polyline), 1u);
}

TEST(Explode, WorksOnTheSelectionAtOnceAndTellsWhatStays) {
    Console c;
    c.addLine(0, 0, 1, 0);
    EXPECT_EQ(c.run({"X", "ALL", ""}), Lines{"1 object could not be exploded."});
    EXPECT_EQ(c.document.history().undoCount(), 0u);
    c.feed("LINE");
    EXPECT_EQ(c.feed("'EXPLODE"), Lines{"No objects selected."});
    c.feed("");
    c.add(engine::PolylineEntity({{0, 0}, {1, 0}, {1, 1}}));
    EXPECT_EQ(c.run({"SELECTALL", "X"}).back(), "1 object could not be exploded.");
    EXPECT_EQ(c.count(), 3u);
    EXPECT_TRUE(c.selected().empty());
    // Locked layers are not selected in the first place.
    c.drawing().layers.ensure("LOCKED").locked = true;
    c.add(engine::PolylineEntity({{0, 0}, {5, 5}})).layer = "LOCKED";
    c.run({"X", "ALL", ""});
    EXPECT_EQ(c.count(), 4u);
}

/// A block with a line on layer 0, a circle on a layer of its own, and an attribute.
void defineBlock(Console& c, const char* name) {
    engine::Block* block = c.drawing().addBlock(name);
    block->base = {1, 1};
    auto line = std::make_unique<engine::LineEntity>(Vector2{1, 1}, Vector2{3, 1});
    line->color = engine::Color::byBlock();
    block->entities.append(std::move(line));
    auto circle = std::make_unique<engine::CircleEntity>(Vector2{2, 1}, 1.0);
    circle->layer = "OWN";
    block->entities.append(std::move(circle));
    auto definition = std::make_unique<engine::AttributeDefinitionEntity>();
    definition->tag = "NO";
    definition->insertion = {1, 2};
    block->entities.append(std::move(definition));
}

TEST(Explode, ReferencesGiveTheirContentsWithTheirOwnProperties) {
    Console c;
    defineBlock(c, "B");
    engine::BlockReferenceEntity reference(engine::Name("B"), Vector2{10, 10});
    reference.scaleX = 2;
    reference.scaleY = 3;
    reference.rotation = math::kPi / 2;
    reference.layer = "PLACE";
    reference.color = engine::Color::index(1);
    engine::BlockAttribute attribute;
    attribute.tag = "NO";
    attribute.value = "17";
    reference.attributes.push_back(attribute);
    c.add(reference);
    c.run({"X", "ALL", ""});
    ASSERT_EQ(c.count(), 3u);
    const auto* line = at<engine::LineEntity>(c, 0);
    ASSERT_NE(line, nullptr);
    EXPECT_TRUE(line->start.near_equal({10, 10}, 1e-9));
    EXPECT_TRUE(line->end.near_equal({10, 14}, 1e-9));
    EXPECT_EQ(line->layer, "0");
    EXPECT_EQ(line->color, engine::Color::byBlock());
    const auto* ellipse = at<engine::EllipseEntity>(c, 1);
    ASSERT_NE(ellipse, nullptr);
    EXPECT_EQ(ellipse->layer, "OWN");
    EXPECT_NEAR(ellipse->major.length(), 3.0, 1e-9);
    EXPECT_NEAR(std::abs(ellipse->major.x), 3.0, 1e-9);
    const auto* definition = at<engine::AttributeDefinitionEntity>(c, 2);
    ASSERT_NE(definition, nullptr);
    EXPECT_EQ(definition->tag, "NO");
    // New handles: the block keeps its own entities.
    EXPECT_NE(line->handle(), c.drawing().findBlock("B")->entities.first()->handle());
    c.feed("UNDO");
    EXPECT_EQ(countOf(c, EntityType::BlockReference), 1u);
}

TEST(Explode, GridsAndNestedReferencesFallOneLevel) {
    Console c;
    defineBlock(c, "INNER");
    engine::Block* outer = c.drawing().addBlock("OUTER");
    auto nested = std::make_unique<engine::BlockReferenceEntity>(engine::Name("INNER"), Vector2{0, 0});
    nested->rotation = math::kPi / 6;
    outer->entities.append(std::move(nested));
    engine::BlockReferenceEntity grid(engine::Name("OUTER"), Vector2{0, 0});
    grid.columns = 3;
    grid.rows = 2;
    grid.columnSpacing = 10;
    grid.rowSpacing = 20;
    c.add(grid);
    c.run({"X", "ALL", ""});
    ASSERT_EQ(countOf(c, EntityType::BlockReference), 6u);
    EXPECT_EQ(at<engine::BlockReferenceEntity>(c, 5)->insert, Vector2(20, 20));
    c.feed("UNDO");
    // Stretched, the turned inner reference would be slanted: its parts keep the shape.
    c.document.modifyEntity(*c.entities()[0], [](engine::Entity& e) {
        auto& r = static_cast<engine::BlockReferenceEntity&>(e);
        r.rows = r.columns = 1;
        r.scaleX = 2;
    });
    const math::Bounds2 before = c.entities()[0]->bounds();
    c.run({"X", "ALL", ""});
    EXPECT_EQ(countOf(c, EntityType::BlockReference), 0u);
    EXPECT_EQ(countOf(c, EntityType::Line), 1u);
    math::Bounds2 after;
    for (const engine::Entity* e : c.entities())
        if (e->type() != EntityType::AttributeDefinition) after.expand(e->bounds());
    EXPECT_TRUE(after.min.near_equal(before.min, 1e-9));
    EXPECT_TRUE(after.max.near_equal(before.max, 1e-9));
}

TEST(Explode, RefusesWhatMustStayOrCannotEnd) {
    Console c;
    defineBlock(c, "WHOLE");
    c.drawing().findBlock("WHOLE")->explodable = false;
    c.add(engine::BlockReferenceEntity(engine::Name("WHOLE"), Vector2{0, 0}));
    c.add(engine::BlockReferenceEntity(engine::Name("MISSING"), Vector2{0, 0}));
    engine::Block* cycle = c.drawing().addBlock("CYCLE");
    auto self = std::make_unique<engine::BlockReferenceEntity>(engine::Name("CYCLE"), Vector2{0, 0});
    self->rotation = 0.3;
    cycle->entities.append(std::move(self));
    auto& loop = c.add(engine::BlockReferenceEntity(engine::Name("CYCLE"), Vector2{0, 0}));
    loop.scaleX = 3;
    defineBlock(c, "MANY");
    auto& huge = c.add(engine::BlockReferenceEntity(engine::Name("MANY"), Vector2{0, 0}));
    huge.rows = huge.columns = 2000000000;
    EXPECT_EQ(c.run({"SELECTALL", "X"}).back(), "4 objects could not be exploded.");
    EXPECT_EQ(c.count(), 4u);
}

TEST(Explode, AnnotationsKeepTheirPicture) {
    Console c;
    engine::DimensionEntity dimension;
    dimension.def1 = {0, 0};
    dimension.def2 = {50, 0};
    dimension.dimLine = {50, 20};
    dimension.color = engine::Color::index(3);
    c.add(dimension);
    const math::Bounds2 before = c.entities()[0]->bounds();
    c.run({"X", "ALL", ""});
    EXPECT_EQ(countOf(c, EntityType::Line), 3u);     // the dimension line in one piece, two extension lines
    EXPECT_EQ(countOf(c, EntityType::Solid2D), 2u);  // arrows
    ASSERT_EQ(countOf(c, EntityType::MText), 1u);
    math::Bounds2 after;
    for (const engine::Entity* e : c.entities()) {
        EXPECT_EQ(e->color, engine::Color::index(3));
        after.expand(e->bounds());
        if (e->type() == EntityType::MText) {
            EXPECT_EQ(static_cast<const engine::MTextEntity*>(e)->content, "50");
        }
    }
    EXPECT_TRUE(after.min.near_equal(before.min, 1e-6));
    EXPECT_TRUE(after.max.near_equal(before.max, 1e-6));

    Console t;
    engine::MTextEntity text;
    text.position = {5, 5};
    text.content = "One\\PTwo";
    t.add(text);
    const math::Bounds2 whole = t.entities()[0]->bounds();
    t.run({"X", "ALL", ""});
    ASSERT_EQ(countOf(t, EntityType::Text), 2u);
    EXPECT_EQ(at<engine::TextEntity>(t, 1)->content, "Two");
    math::Bounds2 lines;
    for (const engine::Entity* e : t.entities()) lines.expand(e->bounds());
    EXPECT_TRUE(lines.min.near_equal(whole.min, 1e-6));
    EXPECT_TRUE(lines.max.near_equal(whole.max, 1e-6));
}

TEST(Explode, TablesLeadersMultilinesHatchesAndMeshes) {
    Console c;
    engine::TableEntity table;
    table.resize(2, 2);
    table.ensureCell(1, 1).content = "cell";
    c.add(table);
    c.run({"X", "ALL", ""});
    EXPECT_EQ(countOf(c, EntityType::MText), 1u);
    EXPECT_GE(countOf(c, EntityType::Line), 6u);
    c.run({"ERASE", "ALL", ""});

    engine::LeaderEntity leader;
    leader.vertices = {{0, 0}, {20, 10}, {30, 10}};
    leader.annotation = "note";
    c.add(leader);
    c.run({"X", "ALL", ""});
    EXPECT_EQ(countOf(c, EntityType::Line), 3u);  // the third below the text
    EXPECT_EQ(countOf(c, EntityType::Solid2D), 1u);
    EXPECT_EQ(countOf(c, EntityType::MText), 1u);
    c.run({"ERASE", "ALL", ""});

    engine::MLineEntity mline;
    mline.vertices = {{0, 0}, {10, 0}, {10, 10}};
    mline.flags = engine::kMLineStartRound;
    c.add(mline);
    c.run({"X", "ALL", ""});
    EXPECT_EQ(countOf(c, EntityType::Line), 4u);
    EXPECT_EQ(countOf(c, EntityType::Arc), 1u);
    c.run({"ERASE", "ALL", ""});

    engine::HatchEntity hatch;
    engine::HatchLoop loop;
    loop.vertices = {{0, 0}, {10, 0}, {10, 10}, {0, 10}};
    hatch.loops.push_back(loop);
    c.add(hatch);
    EXPECT_EQ(c.run({"X", "ALL", ""}).back(), "1 object could not be exploded.");  // a solid fill
    c.document.modifyEntity(*c.entities()[0], [](engine::Entity& e) {
        auto& h = static_cast<engine::HatchEntity&>(e);
        h.patternType = engine::HatchEntity::kUserDefined;
        h.patternName = "_USER";
        h.ownPattern = {engine::HatchFamily{0.0, {0, 0.5}, {0, 1}, {}}};
    });
    c.run({"X", "ALL", ""});
    ASSERT_EQ(countOf(c, EntityType::Line), 10u);
    EXPECT_NEAR(at<engine::LineEntity>(c, 0)->bounds().width(), 10.0, 1e-9);
    c.run({"ERASE", "ALL", ""});

    engine::MeshEntity mesh;
    mesh.rows = mesh.cols = 3;
    mesh.closedM = true;
    for (int i = 0; i < 9; ++i) mesh.vertices.push_back({i / 3 * 1.0, i % 3 * 1.0, i * 1.0});
    c.add(mesh);
    c.run({"X", "ALL", ""});
    ASSERT_EQ(countOf(c, EntityType::Face3D), 6u);
    EXPECT_EQ(at<engine::Face3DEntity>(c, 4)->corners[2].x, 0.0);  // round to the first row
    c.run({"ERASE", "ALL", ""});

    c.add(engine::Polyline3DEntity({{0, 0, 0}, {1, 0, 5}, {1, 1, 5}}, true));
    c.run({"X", "ALL", ""});
    ASSERT_EQ(countOf(c, EntityType::Line), 3u);
    EXPECT_EQ(at<engine::LineEntity>(c, 0)->end3(), math::Vector3(1, 0, 5));
}

/// Explodes the only entity and compares what is seen before and after.
void expectSamePicture(Console& c, std::size_t parts) {
    const math::Bounds2 before = c.entities().at(0)->bounds();
    EXPECT_EQ(c.run({"X", "ALL", ""}).front(), "1 object exploded.");
    EXPECT_EQ(c.count(), parts);
    math::Bounds2 after;
    for (const engine::Entity* e : c.entities()) after.expand(e->bounds());
    EXPECT_TRUE(after.min.near_equal(before.min, 1e-6));
    EXPECT_TRUE(after.max.near_equal(before.max, 1e-6));
    c.run({"ERASE", "ALL", ""});
}

TEST(Explode, RegionsTolerancesMultileadersAndFaces) {
    Console c;
    engine::RegionEntity region;
    region.vertices = {{0, 0}, {10, 0}, {10, 10}};
    region.bulges = {0, 1, 0};
    engine::RegionLoop hole;
    hole.vertices = {{8, 2}, {9, 2}};
    hole.bulges = {1, 1};
    region.loops.push_back(hole);
    c.add(region);
    expectSamePicture(c, 5);

    engine::ToleranceEntity tolerance;
    tolerance.insertion = {5, 5};
    tolerance.first.symbol = "j";
    tolerance.first.toleranceValue = "0.1";
    c.add(tolerance);
    const math::Bounds2 frame = c.entities()[0]->bounds();
    c.run({"X", "ALL", ""});
    EXPECT_EQ(countOf(c, EntityType::Line), 5u);
    EXPECT_EQ(countOf(c, EntityType::Text), 1u);   // the value
    EXPECT_EQ(countOf(c, EntityType::MText), 1u);  // the symbol, whose font no style has
    for (const engine::Entity* e : c.entities()) EXPECT_TRUE(frame.inflated(1e-6).contains_box(e->bounds()));
    c.run({"ERASE", "ALL", ""});

    defineBlock(c, "TAG");
    engine::MLeaderEntity mleader;
    mleader.heads = {{{{0, 0}, {20, 20}}}};
    mleader.contentType = engine::MLeaderContent::Block;
    mleader.blockName = "TAG";
    mleader.contentPos = {30, 20};
    c.add(mleader);
    c.run({"X", "ALL", ""});
    ASSERT_EQ(countOf(c, EntityType::BlockReference), 1u);
    EXPECT_EQ(countOf(c, EntityType::Circle), 0u);  // the block's contents come once
    EXPECT_EQ(at<engine::BlockReferenceEntity>(c, c.count() - 1)->insert, Vector2(30, 20));
    c.run({"ERASE", "ALL", ""});

    engine::PolyfaceEntity faces;
    faces.vertices = {{0, 0, 0}, {10, 0, 0}, {10, 10, 5}, {0, 10, 5}, {-5, 5, 2}};
    faces.faces = {{1, 2, 3, -4}, {1, 2, 3, 4, 5}, {1, 2}, {99, 1, 2}};
    c.add(faces);
    c.run({"X", "ALL", ""});
    EXPECT_EQ(countOf(c, EntityType::Face3D), 4u);  // one of four corners, and a fan of three
    EXPECT_EQ(countOf(c, EntityType::Line), 2u);
    EXPECT_EQ(at<engine::Face3DEntity>(c, 0)->edgeFlags, 8);
}

TEST(Explode, AndStretchEndureDamagedEntities) {
    const double nan = std::numeric_limits<double>::quiet_NaN();
    for (int kind = 0; kind < engine::kEntityTypeCount; ++kind) {
        for (const double value : {nan, 1e308, -1e308}) {
            SCOPED_TRACE(kind);
            Console c;
            auto fresh = engine::makeEntity(static_cast<EntityType>(kind));
            if (auto* p = dynamic_cast<engine::PolylineEntity*>(fresh.get())) {
                p->vertices = {{0, 0}, {value, 0}, {5, value}};
                p->bulges = {value, 1};
            }
            if (auto* p = dynamic_cast<engine::MLineEntity*>(fresh.get())) p->vertices = {{0, 0}, {value, 0}, {5, 5}};
            if (auto* p = dynamic_cast<engine::LeaderEntity*>(fresh.get())) p->vertices = {{0, 0}, {value, value}};
            if (auto* p = dynamic_cast<engine::DimensionEntity*>(fresh.get())) p->def2 = {value, 3};
            if (auto* p = dynamic_cast<engine::MTextEntity*>(fresh.get())) {
                p->content = "text";
                p->height = value;
            }
            if (auto* p = dynamic_cast<engine::MeshEntity*>(fresh.get())) p->rows = p->cols = 2000000000;
            fresh->elevation = value;
            engine::Entity& entity = c.drawing().currentSpace().append(std::move(fresh));
            c.document.selection().set({entity.id()});
            c.feed("COPYCLIP");
            c.feed("PASTEORIG");
            c.run({"SELECTALL", "STRETCH", "C", "-1,-1", "1,1", "", "0,0", "1,1"});
            c.run({"OVERKILL", "ALL", "", "", "X", "ALL", ""});
            EXPECT_TRUE(c.idle());
        }
    }
}

TEST(Explode, TenThousandReferencesAtOnce) {
    Console c;
    defineBlock(c, "B");
    for (int i = 0; i < 10000; ++i)
        c.add(engine::BlockReferenceEntity(engine::Name("B"), Vector2{i % 100 * 10.0, i / 100 * 10.0}));
    const auto start = std::chrono::steady_clock::now();
    c.run({"SELECTALL", "X"});
    const double seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    EXPECT_EQ(c.count(), 30000u);
    EXPECT_LT(seconds, 60.0);
    RecordProperty("seconds", std::to_string(seconds));
}

}  // namespace
}  // namespace kova::cmd
