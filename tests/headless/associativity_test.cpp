// Associative dimensions through files and across drawings.
#include <gtest/gtest.h>

#include <QTemporaryDir>

#include "engine/associativity/associativity.hpp"
#include "headless/session.hpp"

namespace kova::headless {
namespace {

struct AssociativityTest : ::testing::TestWithParam<const char*> {
    Session session;
    QTemporaryDir directory;

    void feed(const std::vector<std::string>& lines) {
        for (const std::string& line : lines) session.feed(line);
    }
    /// The dimensions of model space in drawing order.
    std::vector<engine::DimensionEntity*> dimensions() {
        std::vector<engine::DimensionEntity*> found;
        for (engine::Entity& entity : session.document().drawing().modelSpace())
            if (auto* dimension = dynamic_cast<engine::DimensionEntity*>(&entity)) found.push_back(dimension);
        return found;
    }
};

TEST_P(AssociativityTest, LinksLiveOnInFiles) {
    feed({"LINE", "0,0", "40,0", "", "DLI", "0,0", "40,0", "20,10", "CIRCLE", "100,0", "10", "DRA", "110,0", "120,5"});
    const std::string path = directory.filePath(GetParam()).toStdString();
    ASSERT_EQ(session.save(path), "");
    // Another drawing in between: the first one's links mean nothing there.
    session.newDrawing();
    feed({"LINE", "0,0", "40,0", "", "SCALE", "20,0", "", "0,0", "3"});
    ASSERT_EQ(session.open(path), "");
    ASSERT_EQ(dimensions().size(), 2u);
    feed({"SCALE", "20,0", "", "0,0", "2", "MOVE", "110,0", "", "0,0", "0,7"});
    EXPECT_NEAR(dimensions()[0]->measurement(), 80, 1e-9);
    EXPECT_NEAR(dimensions()[1]->def1.y, 7, 1e-9);
    feed({"U", "U"});
    EXPECT_NEAR(dimensions()[0]->measurement(), 40, 1e-9);
    EXPECT_NEAR(dimensions()[1]->def1.y, 0, 1e-9);
}

INSTANTIATE_TEST_SUITE_P(Formats, AssociativityTest, ::testing::Values("links.kvcad", "links.dxf"));

}  // namespace
}  // namespace kova::headless
