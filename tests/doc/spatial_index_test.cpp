#include "doc/spatial_index.hpp"

#include <limits>
#include <random>

#include "doc_tools.hpp"
#include "engine/entities/xline.hpp"

namespace kova::doc {
namespace {

using test::idsOf;
using test::makeLine;

constexpr double kInfinity = std::numeric_limits<double>::infinity();
constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

bool isUnbounded(const engine::Entity& entity) {
    return entity.type() == engine::EntityType::Xline || entity.type() == engine::EntityType::Ray;
}

std::vector<std::uint64_t> bruteForce(const engine::EntityList& list, const math::Bounds2& box) {
    std::vector<std::uint64_t> ids;
    for (const engine::Entity& entity : list)
        if (isUnbounded(entity) || entity.bounds().intersects(box)) ids.push_back(entity.id());
    return ids;
}

std::vector<std::uint64_t> found(Document& document, const math::Bounds2& box) {
    std::vector<std::uint64_t> ids;
    for (const engine::Entity* entity : document.spatialIndex().query(box)) ids.push_back(entity->id());
    return ids;
}

class Index : public ::testing::Test {
protected:
    double random(double from, double to) { return std::uniform_real_distribution<double>(from, to)(generator); }
    math::Bounds2 randomBox(double size) {
        const math::Vector2 corner{random(-100, 100), random(-100, 100)};
        return {corner, corner + math::Vector2{random(0, size), random(0, size)}};
    }
    std::unique_ptr<engine::Entity> randomEntity() {
        const math::Bounds2 box = randomBox(20);
        switch (generator() % 12) {
            case 0:
                return std::make_unique<engine::XlineEntity>(box.min, math::Vector2{1, 1});
            case 1:
            case 2:
                return std::make_unique<engine::CircleEntity>(box.center(), box.width());
            case 3:
                return std::make_unique<engine::LineEntity>(box.min, box.min);
            default:
                return makeLine(box.min.x, box.max.y, box.max.x, box.min.y);
        }
    }
    void compare(int queries) {
        for (int i = 0; i < queries; ++i) {
            // Among small boxes one that meets everything, so that no stale entry stays hidden.
            const math::Bounds2 box = i == 0 ? math::Bounds2{{-1e6, -1e6}, {1e6, 1e6}} : randomBox(60);
            ASSERT_EQ(found(document, box), bruteForce(document.drawing().modelSpace(), box));
        }
    }
    engine::Entity& any() {
        const auto all = document.drawing().modelSpace().entities();
        return *all[generator() % all.size()];
    }
    std::mt19937 generator{20240917};
    Document document;
};

TEST_F(Index, AgreesWithBruteForceThroughEdits) {
    for (int i = 0; i < 2000; ++i) document.addEntity(randomEntity());
    compare(100);
    ASSERT_TRUE(document.spatialIndex().isBuilt());
    for (int round = 0; round < 40; ++round) {
        for (int i = 0; i < 25; ++i) {
            switch (generator() % 6) {
                case 0:
                    document.addEntity(randomEntity());
                    break;
                case 1:
                    document.removeEntity(any());
                    break;
                case 2:
                    document.replaceEntity(any(), randomEntity());
                    break;
                case 3:
                    document.undo();
                    break;
                case 4:
                    document.redo();
                    break;
                default:
                    document.transformEntities({any().id(), any().id()},
                                               math::Matrix4::translation(random(-30, 30), random(-30, 30)));
            }
        }
        EXPECT_TRUE(document.spatialIndex().isBuilt());  // kept up, not built again
        compare(10);
    }
    auto order = document.drawing().modelSpace().entities();
    std::shuffle(order.begin(), order.end(), generator);
    ASSERT_TRUE(document.setDrawOrder(document.drawing().modelSpace(), order));
    compare(20);
    document.history().clear();  // entities move to other slots
    compare(20);
    document.addEntity(randomEntity());
    document.removeEntity(any());
    compare(20);
}

TEST_F(Index, WaveOfChangesDropsIt) {
    std::vector<std::uint64_t> ids;
    for (int i = 0; i < 3000; ++i) ids.push_back(document.addEntity(randomEntity()).id());
    compare(1);
    ids.resize(1000);
    document.transformEntities(ids, math::Matrix4::translation(5, 5));
    EXPECT_TRUE(document.spatialIndex().isBuilt());
    document.transformEntities(ids, math::Matrix4::translation(5, 5));
    EXPECT_FALSE(document.spatialIndex().isBuilt());
    compare(20);
    // The count starts anew with every query.
    document.transformEntities(ids, math::Matrix4::translation(-5, 5));
    compare(20);
    document.transformEntities(ids, math::Matrix4::translation(-5, 5));
    EXPECT_TRUE(document.spatialIndex().isBuilt());
    compare(20);
}

TEST_F(Index, ExtremeCoordinates) {
    const math::Bounds2 everything{{-kInfinity, -kInfinity}, {kInfinity, kInfinity}};
    EXPECT_TRUE(found(document, everything).empty());
    const auto normal = document.addEntity(makeLine(0, 0, 1, 1)).id();
    const auto far = document.addEntity(makeLine(1e200, 1e200, 1e300, 1e300)).id();
    const auto endless = document.addEntity(makeLine(0, 0, kInfinity, 0)).id();
    const auto huge = document.addEntity(makeLine(-1.7e308, 5, 1.7e308, 5)).id();
    const auto guide =
        document.addEntity(std::make_unique<engine::XlineEntity>(math::Vector2{50, 50}, math::Vector2{1, 0})).id();
    document.addEntity(std::make_unique<engine::CircleEntity>(math::Vector2{kNaN, kNaN}, 1.0));
    EXPECT_EQ(found(document, everything), (std::vector{normal, far, endless, huge, guide}));
    EXPECT_EQ(found(document, {{-1, -1}, {2, 2}}), (std::vector{normal, endless, guide}));
    EXPECT_EQ(found(document, {{7, 4}, {8, 6}}), (std::vector{huge, guide}));
    EXPECT_EQ(found(document, math::Bounds2{}), (std::vector{guide}));
    EXPECT_EQ(found(document, {{kNaN, 0}, {1, 1}}), (std::vector{guide}));
    document.removeEntities({far, endless, huge, guide});
    EXPECT_EQ(found(document, everything), (std::vector{normal}));
}

TEST_F(Index, NearestPrefersTheLastDrawn) {
    const auto below = document.addEntity(makeLine(0, 0, 10, 0)).id();
    const auto above = document.addEntity(makeLine(0, 0, 10, 0)).id();
    const auto away = document.addEntity(makeLine(0, 1, 10, 1)).id();
    SpatialIndex& index = document.spatialIndex();
    ASSERT_NE(index.nearest({5, 0.4}, 1), nullptr);
    EXPECT_EQ(index.nearest({5, 0.4}, 1)->id(), above);
    EXPECT_EQ(index.nearest({5, 0.6}, 1)->id(), away);
    EXPECT_EQ(index.nearest({5, -0.4}, 0.3), nullptr);
    EXPECT_EQ(index.nearest({5, 0}, 0)->id(), above);
    const auto accept = [&](const engine::Entity& e) { return e.id() == below; };
    EXPECT_EQ(index.nearest({5, 0.6}, 1, accept)->id(), below);
    EXPECT_EQ(index.nearest({5, 0}, -1), nullptr);
    EXPECT_EQ(index.nearest({kNaN, 0}, 1), nullptr);
    EXPECT_EQ(index.nearest({5, 0}, kNaN), nullptr);
    EXPECT_EQ(index.nearest({500, 500}, kInfinity)->id(), away);
}

TEST_F(Index, EverySpaceHasItsOwn) {
    engine::EntityList& paper = document.drawing().findLayout("Layout1")->entities;
    document.addEntity(makeLine(0, 0, 1, 1));
    const auto onPaper = document.addEntity(makeLine(0, 0, 1, 1), paper).id();
    const auto hits = document.spatialIndex(paper).query({{0, 0}, {2, 2}});
    ASSERT_EQ(hits.size(), 1U);
    EXPECT_EQ(hits.front()->id(), onPaper);
    EXPECT_NE(&document.spatialIndex(paper), &document.spatialIndex());
    EXPECT_TRUE(document.deleteLayout("Layout1"));
    EXPECT_EQ(found(document, {{0, 0}, {2, 2}}).size(), 1U);
    document.undo();
    EXPECT_EQ(document.spatialIndex(document.drawing().findLayout("Layout1")->entities).query({{0, 0}, {2, 2}}).size(),
              1U);
}

}  // namespace
}  // namespace kova::doc
