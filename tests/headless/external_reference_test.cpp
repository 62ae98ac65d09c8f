#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QTemporaryDir>
#include <fstream>
#include <sstream>
#include <regex>

#include "engine/kinds/all.hpp"
#include "headless/session.hpp"
#include "math/angles.hpp"

namespace kova::headless {
namespace {

using ::testing::Contains;
using ::testing::HasSubstr;
using ::testing::Not;

using Lines = std::vector<std::string>;

/// A host that shows a part, which shows a detail; the formats are given by the extensions.
struct ExternalReferenceTest : ::testing::Test {
    QTemporaryDir directory;

    std::string path(const std::string& name) const {
        return directory.filePath(QString::fromStdString(name)).toStdString();
    }
    static Lines run(Session& session, const Lines& lines) {
        Lines out;
        for (const std::string& line : lines)
            for (std::string& text : session.feed(line)) out.push_back(std::move(text));
        return out;
    }
    static std::string text(const std::string& file) {
        std::ostringstream out;
        out << std::ifstream(file, std::ios::binary).rdbuf();
        return out.str();
    }
    static engine::Block* block(Session& session, const char* name) {
        return session.document().drawing().findBlock(name);
    }
    void draw(const std::string& name, const Lines& lines) const {
        Session session;
        run(session, lines);
        ASSERT_EQ(session.save(path(name)), "");
    }
    void makeFiles(const std::string& extension) const {
        draw("detail" + extension, {"-LAYER M FINE C 3 FINE ", "", "CIRCLE 0,0 1"});
        draw("part" + extension,
             {"-LAYER M WALLS C 1 WALLS L DASHED WALLS ", "", "LINE 0,0 10,0", "", "TEXT 1,1", "2", "0", "Hello", ""});
        Session part;
        ASSERT_EQ(part.open(path("part" + extension)), "");
        run(part, {"XATTACH", path("detail" + extension), "A", "20,0", "1", "1", "0"});
        ASSERT_EQ(part.save({}), "");
        Session host;
        ASSERT_EQ(host.save(path("host" + extension)), "");
        run(host, {"-XREF A", path("part" + extension), "100,0", "2", "2", "0"});
        run(host, {"LINE 0,0 0,5", ""});
        ASSERT_EQ(host.save({}), "");
    }
};

TEST_F(ExternalReferenceTest, HostsOfEveryFormatShowWhatTheyReferTo) {
    for (const std::string extension : {".kvcad", ".dxf", ".dwg"}) {
        SCOPED_TRACE(extension);
        makeFiles(extension);
        Session session;
        ASSERT_EQ(session.open(path("host" + extension)), "");
        engine::Drawing& drawing = session.document().drawing();
        ASSERT_NE(block(session, "part"), nullptr);
        EXPECT_EQ(block(session, "part")->xrefStatus, engine::XrefStatus::Loaded);
        EXPECT_EQ(block(session, "part")->xrefPath, "part" + extension);
        EXPECT_GE(block(session, "part")->entities.size(), 3u);
        EXPECT_TRUE(drawing.layers.contains("part|WALLS"));
        EXPECT_TRUE(drawing.linetypes.contains("part|DASHED"));
        ASSERT_NE(block(session, "part|detail"), nullptr);
        EXPECT_EQ(block(session, "part|detail")->entities.size(), 1u);
        EXPECT_TRUE(drawing.layers.contains("part|detail|FINE"));
        // The circle of the detail, placed at (20, 0) of the part, which stands twice as large at (100, 0).
        EXPECT_NEAR(drawing.extents(drawing.modelSpace()).max.x, 100 + 2 * 21, 1e-9);
        const engine::Entity* line = block(session, "part")->entities.first();
        EXPECT_EQ(line->layer, "part|WALLS");

        // What was shown is not written: neither entities nor blocks, and a second save is the same file.
        const std::string before = text(path("host" + extension));
        EXPECT_THAT(before, Not(HasSubstr("Hello")));
        EXPECT_THAT(before, Not(HasSubstr("part|detail\n")));
        ASSERT_EQ(session.save(path("again" + extension)), "");
        if (extension == ".kvcad") {
            Session third;
            ASSERT_EQ(third.open(path("again" + extension)), "");
            ASSERT_EQ(third.save(path("third" + extension)), "");
            // But for the times, which go on.
            const auto withoutTimes = [&](const std::string& name) {
                return std::regex_replace(text(path(name + extension)), std::regex("\"TD[A-Z]+\": [^,]*"), "");
            };
            EXPECT_EQ(withoutTimes("third"), withoutTimes("again"));
        }
    }
}

TEST_F(ExternalReferenceTest, LayersKeepWhatTheHostMadeOfThem) {
    makeFiles(".kvcad");
    Session session;
    ASSERT_EQ(session.open(path("host.kvcad")), "");
    run(session, {"-LAYER C 5 part|WALLS F part|WALLS", ""});
    ASSERT_EQ(session.save({}), "");
    Session again;
    ASSERT_EQ(again.open(path("host.kvcad")), "");
    const engine::Layer* layer = again.document().drawing().layers.find("part|WALLS");
    ASSERT_NE(layer, nullptr);
    EXPECT_EQ(layer->color.bareIndex(), 5);
    run(again, {"VISRETAIN 0"});
    ASSERT_EQ(again.save({}), "");
    EXPECT_THAT(text(path("host.kvcad")), Not(HasSubstr("part|WALLS")));
    Session third;
    ASSERT_EQ(third.open(path("host.kvcad")), "");
    EXPECT_EQ(third.document().drawing().layers.find("part|WALLS")->color.bareIndex(), 1);
}

TEST_F(ExternalReferenceTest, TroubleIsTold) {
    makeFiles(".kvcad");
    // Missing: a line, and the rest opens.
    std::filesystem::remove(path("detail.kvcad"));
    Session session;
    ASSERT_EQ(session.open(path("host.kvcad")), "");
    EXPECT_THAT(session.takeOutput(), Contains("Xref not found: detail.kvcad"));
    // XREFNOTIFY: told one by one, as a number, or not at all.
    run(session, {"XREFNOTIFY 1"});
    ASSERT_EQ(session.open(path("host.kvcad")), "");
    EXPECT_THAT(session.takeOutput(), AllOf(Not(Contains("Xref not found: detail.kvcad")),
                                            Contains(HasSubstr("1 external reference(s) could not be loaded"))));
    run(session, {"XREFNOTIFY 0"});
    ASSERT_EQ(session.open(path("host.kvcad")), "");
    EXPECT_THAT(session.takeOutput(), Not(Contains(HasSubstr("ref"))));
    engine::resetProfileVariables();
    EXPECT_EQ(block(session, "part")->xrefStatus, engine::XrefStatus::Loaded);
    std::ofstream(path("detail.kvcad")) << "{";
    ASSERT_EQ(session.open(path("host.kvcad")), "");
    EXPECT_THAT(session.takeOutput(), Contains(HasSubstr("Error loading xref: " + path("detail.kvcad"))));

    // A circle of references ends where it would begin again.
    Session detail;
    ASSERT_EQ(detail.save(path("detail.kvcad")), "");
    run(detail, {"XATTACH", path("host.kvcad"), "A", "0,0", "1", "1", "0"});
    ASSERT_EQ(detail.save({}), "");
    ASSERT_EQ(session.open(path("host.kvcad")), "");
    EXPECT_THAT(session.takeOutput(), Contains(HasSubstr("circular reference")));

    // DWG has texts of its own.
    makeFiles(".dwg");
    std::ofstream(path("detail.dwg")) << "AC1032 and no more";
    ASSERT_EQ(session.open(path("host.dwg")), "");
    EXPECT_THAT(session.takeOutput(),
                Contains(HasSubstr("Could not open nested DWG xref (" + path("detail.dwg") + "): ")));
    std::ofstream(path("part.dwg")) << "";
    ASSERT_EQ(session.open(path("host.dwg")), "");
    EXPECT_THAT(session.takeOutput(), Contains(HasSubstr("Could not open DWG xref (" + path("part.dwg") + "): ")));
    EXPECT_THAT(run(session, {"XATTACH nowhere.dxf"}), Contains("File not found: nowhere.dxf"));
    EXPECT_FALSE(session.isWaiting());
}

// As INSERT does: by the units of the two drawings, and with a scale for each axis.
TEST_F(ExternalReferenceTest, ArePlacedToScale) {
    draw("inch.kvcad", {"INSUNITS 1", "LINE 0,0 10,0", ""});
    const auto newest = [](Session& session) {
        return static_cast<const engine::BlockReferenceEntity&>(*session.document().drawing().modelSpace().last());
    };
    for (const char* command : {"XATTACH", "-XREF A"}) {
        SCOPED_TRACE(command);
        const bool asksType = std::string_view(command) == "XATTACH";
        Session host;
        run(host, {"INSUNITS 4"});
        Lines lines = {command, path("inch.kvcad")};
        if (asksType) lines.push_back("A");
        lines.insert(lines.end(), {"100,0", "", "", ""});
        EXPECT_THAT(run(host, lines), Contains("Units of the file converted, factor 25.4."));
        EXPECT_FALSE(host.isWaiting());
        EXPECT_DOUBLE_EQ(newest(host).scaleX, 25.4);
        EXPECT_NEAR(host.document().drawing().extents(host.document().drawing().modelSpace()).max.x, 354.0, 1e-9);
        // Attached again it is placed the same way; XYZ asks for X, too.
        lines.resize(asksType ? 3 : 2);
        lines.push_back("0,0");
        run(host, lines);
        run(host, {"XYZ"});
        EXPECT_EQ(host.currentPrompt(), "Specify X scale factor or [Corner] <1>:");
        run(host, {"2"});
        EXPECT_EQ(host.currentPrompt(), "Enter Y scale factor <use X scale factor>:");
        run(host, {"3"});
        EXPECT_EQ(host.currentPrompt(), "Specify Z scale factor or <use X scale factor>:");
        run(host, {"4"});
        EXPECT_EQ(host.currentPrompt(), "Specify rotation angle <0>:");
        run(host, {"90"});
        EXPECT_FALSE(host.isWaiting());
        EXPECT_DOUBLE_EQ(newest(host).scaleX, 2 * 25.4);
        EXPECT_DOUBLE_EQ(newest(host).scaleY, 3 * 25.4);
        EXPECT_DOUBLE_EQ(newest(host).effectiveScaleZ(), 4 * 25.4);
        EXPECT_DOUBLE_EQ(newest(host).rotation, math::kPi / 2);
        // Options before the point; those of the preview count as well.
        lines.back() = "PS";
        lines.insert(lines.end(), {"2", "Rotate", "90", "0,0"});
        run(host, lines);
        EXPECT_FALSE(host.isWaiting());
        EXPECT_DOUBLE_EQ(newest(host).scaleY, 2 * 25.4);
        EXPECT_DOUBLE_EQ(newest(host).rotation, math::kPi / 2);
    }
    // Without a unit on one side nothing is converted.
    Session host;
    run(host, {"INSUNITS 0", "XATTACH", path("inch.kvcad"), "A", "0,0", "2", "", "0"});
    EXPECT_DOUBLE_EQ(newest(host).scaleX, 2.0);
}

TEST_F(ExternalReferenceTest, OverlaysStayInTheirOwnHost) {
    draw("over.kvcad", {"CIRCLE 0,0 7"});
    Session part;
    ASSERT_EQ(part.save(path("part.kvcad")), "");
    run(part, {"-XREF O", path("over.kvcad"), "0,0", "1", "1", "0"});
    EXPECT_EQ(block(part, "over")->entities.size(), 1u);
    ASSERT_EQ(part.save({}), "");
    Session host;
    run(host, {"XATTACH", path("part.kvcad"), "A", "0,0", "1", "1", "0"});
    ASSERT_NE(block(host, "part|over"), nullptr);
    EXPECT_TRUE(block(host, "part|over")->entities.empty());
}

TEST_F(ExternalReferenceTest, CommandsChangeReferencesAndUndoBringsThemBack) {
    makeFiles(".kvcad");
    Session session;
    ASSERT_EQ(session.open(path("host.kvcad")), "");
    engine::Drawing& drawing = session.document().drawing();
    const std::size_t shown = block(session, "part")->entities.size();

    run(session, {"-XREF U part"});
    EXPECT_TRUE(block(session, "part")->entities.empty());
    EXPECT_EQ(block(session, "part|detail"), nullptr);
    run(session, {"U"});
    EXPECT_EQ(block(session, "part")->entities.size(), shown);
    run(session, {"-XREF U *", "-XREF R part"});
    EXPECT_EQ(block(session, "part")->entities.size(), shown);
    EXPECT_NE(block(session, "part|detail"), nullptr);

    EXPECT_THAT(run(session, {"-XREF D part"}), Contains("Xref \"part\" detached."));
    EXPECT_EQ(block(session, "part"), nullptr);
    EXPECT_EQ(drawing.modelSpace().size(), 1u);
    EXPECT_FALSE(drawing.layers.contains("part|WALLS"));
    EXPECT_FALSE(drawing.linetypes.contains("part|DASHED"));
    run(session, {"U"});
    ASSERT_NE(block(session, "part"), nullptr);
    EXPECT_TRUE(drawing.layers.contains("part|WALLS"));
    EXPECT_EQ(drawing.modelSpace().size(), 2u);

    run(session, {"-XREF B part"});
    EXPECT_EQ(block(session, "part")->xrefType, engine::XrefType::None);
    EXPECT_EQ(block(session, "part")->entities.first()->layer, "part$0$WALLS");
    EXPECT_EQ(drawing.layers.find("part$0$WALLS")->linetype, "part$0$DASHED");
    EXPECT_NE(block(session, "part$0$detail"), nullptr);
    run(session, {"U"});
    EXPECT_EQ(block(session, "part")->entities.first()->layer, "part|WALLS");
    EXPECT_EQ(block(session, "part")->xrefType, engine::XrefType::Attach);

    run(session, {"BINDTYPE 1", "-XREF B part"});
    EXPECT_EQ(block(session, "part")->xrefType, engine::XrefType::None);
    EXPECT_EQ(block(session, "part")->entities.first()->layer, "WALLS");
    EXPECT_TRUE(drawing.layers.contains("WALLS"));
    EXPECT_FALSE(drawing.layers.contains("part|WALLS"));
    ASSERT_EQ(session.save(path("bound.kvcad")), "");
    EXPECT_THAT(text(path("bound.kvcad")), HasSubstr("Hello"));
    run(session, {"BINDTYPE 0"});
}

}  // namespace
}  // namespace kova::headless
