// Variables that decide what of a drawing is seen, and texts in linetypes.
#include <gtest/gtest.h>

#include <QGuiApplication>

#include "engine/kinds/all.hpp"
#include "engine/libraries/libraries.hpp"
#include "engine/sysvars/notes.hpp"
#include "math/angles.hpp"
#include "picture.hpp"
#include "render/plot.hpp"

namespace kova::render {
namespace {

using namespace engine;
using math::Vector2;

/// A picture on which the frames of a wipeout, an image and a clipped reference are looked for.
struct Framed : Picture {
    Framed() {
        add(WipeoutEntity(std::vector<Vector2>{{20, 20}, {120, 20}, {120, 120}, {20, 120}}));
        QImage file(4, 4, QImage::Format_RGB32);
        file.fill(Qt::white);
        const std::string path = testing::TempDir() + "white.png";
        file.save(QString::fromStdString(path));
        ImageEntity& image = add(ImageEntity());
        image.filePath = path;
        image.insertion = {200, 20};
        image.width = image.height = 100;
        Block* block = drawing.addBlock("B");
        block->entities.append(std::make_unique<LineEntity>(Vector2{0, 0}, Vector2{400, 0}));
        BlockReferenceEntity& reference = add(BlockReferenceEntity());
        reference.blockName = "B";
        reference.insert = {0, 300};
        reference.clipBoundary = {{20, -50}, {120, 50}};
        reference.clipEnabled = true;
    }
    void set(const char* name, int value) { EXPECT_EQ(setSysVar(drawing, name, value), ""); }

    /// Which of the three frames show: "WIC", a letter less for each that does not.
    std::string shown(bool plotted) {
        image = QImage(400, 400, QImage::Format_ARGB32_Premultiplied);
        image.fill(Qt::white);
        RenderRequest request;
        request.width = request.height = 400.0;
        request.dpi = 25.4;
        request.look.plotted = plotted;
        QPainter painter(&image);
        paintModel(painter, drawing, View::centred(400, 400, 1.0, {200, 200}), request, true);
        painter.end();
        std::string frames;
        if (ink(20, 70) > 0.3) frames += 'W';
        if (ink(200, 70) > 0.3) frames += 'I';
        if (ink(20, 330) > 0.3) frames += 'C';
        EXPECT_GT(ink(70, 300), 0.3) << "what a clip leaves is drawn";
        return frames;
    }
};

TEST(Settings, FramesObeyTheirVariables) {
    Framed picture;
    EXPECT_EQ(picture.shown(false), "WIC");
    EXPECT_EQ(picture.shown(true), "WI") << "XCLIPFRAME begins as 2: shown, not plotted";
    picture.set("WIPEOUTFRAME", 0);
    picture.set("IMAGEFRAME", 2);
    picture.set("XCLIPFRAME", 1);
    EXPECT_EQ(picture.shown(false), "IC");
    EXPECT_EQ(picture.shown(true), "C");
    picture.set("FRAME", 0);
    EXPECT_EQ(picture.shown(false), "");
    picture.set("FRAME", 1);
    EXPECT_EQ(picture.shown(true), "WIC");
    picture.set("FRAME", 2);
    EXPECT_EQ(picture.shown(false), "WIC");
    EXPECT_EQ(picture.shown(true), "");
    EXPECT_NE(sysVarNote(picture.drawing, *findSysVar("WIPEOUTFRAME")), "") << "FRAME overrides it";
    picture.set("FRAME", 3);
    EXPECT_EQ(sysVarNote(picture.drawing, *findSysVar("WIPEOUTFRAME")), "");
    EXPECT_EQ(picture.shown(true), "C");
}

TEST(Settings, PlotsLeaveFramesOutThatAreOnlyShown) {
    Framed picture;
    PlotPage page = plotPage(picture.drawing, {});
    const auto plotted = [&](int frame) {
        picture.set("FRAME", frame);
        return plot(picture.drawing, std::vector<PlotPage>{page}, PlotFormat::Svg);
    };
    EXPECT_EQ(plotted(2), plotted(0));
    EXPECT_GT(plotted(1).count("<path"), plotted(2).count("<path"));
}

TEST(Settings, SplineFramesAndHiddenEdgesAppearWithSplframe) {
    Picture picture;
    SplineEntity spline;
    spline.controlPoints = {{20, 20}, {20, 320}, {380, 320}, {380, 20}};
    picture.add(spline);
    Face3DEntity face;
    face.corners = {math::Vector3(100, 40, 0), math::Vector3(300, 40, 0), math::Vector3(300, 140, 0),
                    math::Vector3(100, 140, 0)};
    face.edgeFlags = 1;
    picture.add(face);
    const math::Bounds2 extents = outlineBounds(spline);
    EXPECT_LT(extents.max.y, 300.0) << "the frame is no part of the shape";
    picture.paint();
    EXPECT_LT(picture.ink(200, 320), 0.1);
    EXPECT_LT(picture.ink(200, 40), 0.1);
    picture.drawing.integerVariables["SPLFRAME"] = 1;
    picture.paint();
    EXPECT_GT(picture.ink(200, 320), 0.3);
    EXPECT_GT(picture.ink(200, 40), 0.3);
}

TEST(Settings, TextsBecomeBoxesOrHollow) {
    Picture picture;
    TextStyle style;
    style.name = "Solid";
    style.fontFile = "arial.ttf";
    picture.drawing.textStyles.add(style);
    TextEntity text;
    text.content = "MMMM";
    text.height = 60.0;
    text.position = {20, 200};
    text.textStyle = "Solid";
    picture.add(text);
    const math::Bounds2 box = outlineBounds(text);
    picture.paint();
    const double filled = picture.coverage(20, 200, 300, 260);
    resetProfileVariables();
    EXPECT_EQ(setProfileVariable("TEXTFILL", 0), "");
    picture.paint();
    const double hollow = picture.coverage(20, 200, 300, 260);
    resetProfileVariables();
    EXPECT_LT(hollow, 0.7 * filled);
    EXPECT_GT(hollow, 0.0);
    picture.drawing.integerVariables["QTEXTMODE"] = 1;
    picture.paint();
    // The sides of the box, and nothing between them.
    for (const double x : {60.0, 130.0, 200.0}) {
        EXPECT_GT(picture.ink(x, 200, 3), 0.3) << x;
        EXPECT_GT(picture.ink(x, 260, 4), 0.3) << x;
        EXPECT_LT(picture.ink(x, 230, 8), 0.1) << x;
    }
    EXPECT_GT(picture.ink(box.min.x + 0.02 * box.width(), 230, 12), 0.3);
}

TEST(Settings, SmallTextStaysText) {
    // A row of l and i: letters whose parts are thinner than a pixel.
    const auto covered = [](const char* font, double height) {
        Picture picture;
        TextStyle style;
        style.name = "S";
        style.fontFile = font;
        picture.drawing.textStyles.add(style);
        TextEntity text;
        text.content = "lililililililililililililili";
        text.height = height;
        text.position = {10, 200};
        text.textStyle = "S";
        picture.add(text);
        picture.paint();
        const double width = std::min(380.0, outlineBounds(text).width());
        return picture.coverage(11, 200, 10 + width, 200 + height);
    };
    // Outlines cover the same share at every size; strokes of a pixel cover more of a small letter, but not all of it.
    for (const auto& [font, most] : {std::pair{"arial.ttf", 1.3}, {"txt.shx", 2.5}}) {
        const double large = covered(font, 16.0);
        for (const double height : {3.0, 4.0, 5.0, 6.0}) {
            EXPECT_LT(covered(font, height), most * large) << font << ' ' << height;
            EXPECT_GT(covered(font, height), 0.5 * large) << font << ' ' << height;
        }
    }
}

TEST(Settings, ThinDashesKeepTheirGaps) {
    Picture picture;
    Linetype dashed;
    dashed.name = "D";
    dashed.pattern = {6, -2};
    picture.drawing.linetypes.add(dashed);
    picture.add(LineEntity(Vector2{20, 200.5}, Vector2{386, 200.5})).linetype = "D";
    picture.paint();
    // 366 long: 45 rounds and a dash, so a gap every 8 pixels, two pixels of it white.
    double light = 0.0;
    for (int x = 20; x < 380; ++x) light += picture.at(x + 0.5, 200).lightnessF() > 0.9 ? 1.0 : 0.0;
    EXPECT_NEAR(light, 90.0, 4.0);
}

/// Paints a line in a linetype of one text and gives the box of the ink beside the line.
math::Bounds2 inkOfText(const char* options, const Vector2& from, const Vector2& to, double fixedHeight = 0.0) {
    Picture picture;
    TextStyle* standard = picture.drawing.textStyles.find("Standard");
    standard->height = fixedHeight;
    standard->fontFile = "txt.shx";
    std::string library = "*G,Gas\nA,100,-40,[\"H\",STANDARD,";
    library += options;
    library += "],-60\n";
    for (Linetype& linetype : parseLinetypeLibrary(library)) picture.drawing.linetypes.add(std::move(linetype));
    picture.add(LineEntity(from, to)).linetype = "G";
    picture.paint();
    math::Bounds2 box;
    const Vector2 along = (to - from).normalized();
    for (int y = 0; y < 400; ++y)
        for (int x = 0; x < 400; ++x) {
            const Vector2 p{x + 0.5, y + 0.5};
            if (picture.at(p.x, p.y).lightnessF() > 0.6) continue;
            // Pieces of the line itself do not count: only the gap is looked at.
            const double s = (p - from).dot(along);
            if (s > 102.0 && s < 198.0) box.expand(p);
        }
    return box;
}

TEST(Settings, TextsInLinetypesCountFromTheEndOfTheEntryBeforeThem) {
    // The gap lies between 100 and 200 of 300; its first entry ends at 140.
    const math::Bounds2 plain = inkOfText("S=20,X=0,Y=0", {50, 200}, {350, 200});
    ASSERT_FALSE(plain.is_empty());
    EXPECT_NEAR(plain.min.x, 190.0, 4.5);
    EXPECT_NEAR(plain.min.y, 200.0, 2.0);
    EXPECT_NEAR(plain.height(), 20.0, 3.0);
    const math::Bounds2 moved = inkOfText("S=20,X=-10,Y=-10", {50, 200}, {350, 200});
    EXPECT_NEAR(moved.min.x, plain.min.x - 10.0, 2.0);
    EXPECT_NEAR(moved.min.y, plain.min.y - 10.0, 2.0);
    // The style's height is multiplied.
    EXPECT_NEAR(inkOfText("S=2,X=0,Y=0", {50, 200}, {350, 200}, 10.0).height(), plain.height(), 2.0);
    // On a line to the left: R stands on its head, to the left of its point; U reads, in the same place.
    const math::Bounds2 head = inkOfText("S=20,R=0,X=0,Y=0", {350, 200}, {50, 200});
    EXPECT_NEAR(head.max.x, 210.0, 4.5);
    EXPECT_NEAR(head.max.y, 200.0, 2.0);
    const math::Bounds2 upright = inkOfText("S=20,U=0,X=0,Y=0", {350, 200}, {50, 200});
    EXPECT_NEAR(upright.center().x, head.center().x, 2.0);
    EXPECT_NEAR(upright.center().y, head.center().y, 2.0);
    // A counts from the x axis whatever the line does.
    const math::Bounds2 absolute = inkOfText("S=20,A=0,X=0,Y=0", {200, 50}, {200, 350});
    EXPECT_NEAR(absolute.min.x, 200.0, 4.5);
    EXPECT_NEAR(absolute.min.y, 190.0, 3.0);
}

TEST(Settings, UprightTextsInLinetypesNeverStandOnTheirHeads) {
    // L is heavier at its foot: which half of its box holds more ink tells how it stands.
    const auto footIsBelow = [](const char* rotation) {
        Picture picture;
        std::string library = "*G,Gas\nA,100,-40,[\"L\",STANDARD,S=40,X=0,Y=0,";
        library += rotation;
        library += "],-60\n";
        for (Linetype& linetype : parseLinetypeLibrary(library)) picture.drawing.linetypes.add(std::move(linetype));
        picture.add(LineEntity(Vector2{350, 200}, Vector2{50, 200})).linetype = "G";
        picture.paint();
        return picture.coverage(160, 160, 215, 166) > picture.coverage(160, 193, 215, 199);
    };
    EXPECT_FALSE(footIsBelow("R=0"));
    EXPECT_TRUE(footIsBelow("U=0"));
}

TEST(Settings, PatternsBeyondHpmaxlinesAreSolid) {
    Picture picture;
    auto hatch = std::make_unique<HatchEntity>();
    hatch->patternName = "ANSI31";
    hatch->patternScale = 2.0;  // some 60 lines, 6.35 apart
    HatchLoop loop;
    loop.vertices = {{50, 50}, {350, 50}, {350, 350}, {50, 350}};
    hatch->loops.push_back(loop);
    // Lines enough for the least that the variable can be set to.
    auto dense = std::make_unique<HatchEntity>(*hatch);
    dense->patternScale = 0.9;
    resetProfileVariables();
    picture.add(std::move(dense));
    picture.paint();
    EXPECT_LT(picture.coverage(60, 60, 340, 340), 0.7);
    EXPECT_EQ(setProfileVariable("HPMAXLINES", 100.0), "");
    picture.paint();
    EXPECT_GT(picture.coverage(60, 60, 340, 340), 0.95);
    Picture sparse;
    sparse.add(std::move(hatch));
    sparse.paint();
    EXPECT_LT(sparse.coverage(60, 60, 340, 340), 0.4);
    resetProfileVariables();
}

}  // namespace
}  // namespace kova::render
