// Associative hatches through files.
#include <gtest/gtest.h>

#include <QTemporaryDir>
#include <fstream>

#include "engine/entities/hatch.hpp"
#include "engine/model/sysvar.hpp"
#include "headless/session.hpp"

namespace kova::headless {
namespace {

using engine::HatchEntity;

struct HatchFiles : ::testing::TestWithParam<const char*> {
    Session session;
    QTemporaryDir directory;

    void SetUp() override { engine::resetProfileVariables(); }
    void TearDown() override { engine::resetProfileVariables(); }
    void feed(const std::vector<std::string>& lines) {
        for (const std::string& line : lines) session.feed(line);
    }
    std::vector<HatchEntity*> hatches() {
        std::vector<HatchEntity*> found;
        for (engine::Entity& entity : session.document().drawing().modelSpace())
            if (auto* hatch = dynamic_cast<HatchEntity*>(&entity)) found.push_back(hatch);
        return found;
    }
};

TEST_P(HatchFiles, FollowTheirBoundaryAfterReading) {
    feed({"LINE", "0,0",     "10,0", "10,6",   "0,6",  "C", "HATCH", "1,1",  "",     "CIRCLE", "30,0",
          "5",    "ELLIPSE", "C",    "30,0",   "33,0", "1", "HATCH", "S",    "35,0", "33,0",   "",
          "",     "HPASSOC", "0",    "CIRCLE", "60,0", "5", "HATCH", "60,0", ""});
    ASSERT_EQ(hatches().size(), 3u);
    const std::string path = directory.filePath(GetParam()).toStdString();
    ASSERT_EQ(session.save(path), "");
    session.newDrawing();
    ASSERT_EQ(session.open(path), "");
    std::vector<HatchEntity*> found = hatches();
    ASSERT_EQ(found.size(), 3u);
    int tied = 0;
    std::size_t sources = 0;
    double before = 0;
    for (const HatchEntity* h : found) {
        tied += h->isAssociative();
        before += h->area();
        for (const engine::HatchLoop& loop : h->loops) sources += loop.sources.size();
    }
    EXPECT_EQ(tied, 2);
    EXPECT_EQ(sources, 6u);
    feed({"STRETCH", "C", "9,-1", "11,7", "", "0,0", "4,0", "SCALE", "33,0", "", "30,0", "0.5", "SCALE", "65,0", "",
          "60,0", "0.5"});
    double after = 0;
    for (const HatchEntity* h : hatches()) after += h->area();
    EXPECT_NEAR(after - before, 24 + 3 * 3.14159265 * 0.75, 1e-3);
    feed({"U", "U", "U"});
    after = 0;
    for (const HatchEntity* h : hatches()) after += h->area();
    EXPECT_NEAR(after, before, 1e-9);
}

INSTANTIATE_TEST_SUITE_P(Formats, HatchFiles, ::testing::Values("hatch.kvcad", "hatch.dxf", "hatch.dwg"));

TEST(HatchFile, NamesBothSidesInDxf) {
    Session session;
    QTemporaryDir directory;
    for (const char* line : {"CIRCLE", "0,0", "5", "HATCH", "0,0", ""}) session.feed(line);
    const std::string path = directory.filePath("a.dxf").toStdString();
    ASSERT_EQ(session.save(path), "");
    std::ifstream in(path);
    const std::string text(std::istreambuf_iterator<char>(in), {});
    // The circle names the hatch as a reactor, the hatch the circle as its source.
    EXPECT_NE(text.find("{ACAD_REACTORS"), std::string::npos);
    const std::size_t flag = text.find("AcDbHatch");
    ASSERT_NE(flag, std::string::npos);
    EXPECT_NE(text.find("330", text.find("97", flag)), std::string::npos);
}

}  // namespace
}  // namespace kova::headless
