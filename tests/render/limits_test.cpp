// No entity takes a picture longer than a second or more than 256 MB, whatever its data say.
#include <gtest/gtest.h>

#include <sys/resource.h>

#include <ctime>
#include <limits>

#include "engine/kinds/all.hpp"
#include "picture.hpp"
#include "render/plot.hpp"

namespace kova::render {
namespace {

using namespace engine;
using math::Vector2;

constexpr double kNan = std::numeric_limits<double>::quiet_NaN();
constexpr double kInf = std::numeric_limits<double>::infinity();

double megabytes() {
    rusage usage{};
    getrusage(RUSAGE_SELF, &usage);
    return static_cast<double>(usage.ru_maxrss) / 1024.0;
}

/// Paints what the drawing holds as a picture, a PDF and an SVG, and holds the costs against the limits.
void expectBounded(Picture& picture, const char* what, double limit = 1.0, int ways = 3) {
    SCOPED_TRACE(what);
    std::vector<PlotPage> pages{plotPage(picture.drawing, {})};
    pages.front().setup.plotArea = static_cast<std::int32_t>(PlotArea::Window);
    pages.front().window = {{0, 0}, {400, 400}};
    const double before = megabytes();
    for (int way = 0; way < ways; ++way) {
        const std::clock_t start = std::clock();
        if (way == 0) picture.paint();
        if (way == 1) plot(picture.drawing, pages, PlotFormat::Pdf);
        if (way == 2) plot(picture.drawing, pages, PlotFormat::Svg);
        const double seconds = static_cast<double>(std::clock() - start) / CLOCKS_PER_SEC;
        // A wide margin over the limit: what has no bound takes minutes, and machines are shared.
        EXPECT_LT(seconds, 10.0 * limit) << "way " << way;
    }
    EXPECT_LT(megabytes() - before, 256.0);
}

template <class T>
void check(T entity, const char* what) {
    Picture picture;
    picture.add(std::move(entity));
    expectBounded(picture, what);
}

Linetype linetype(std::vector<double> pattern) {
    Linetype l;
    l.name = "Evil";
    l.pattern = std::move(pattern);
    return l;
}

PolylineEntity square(double reach) {
    PolylineEntity p;
    p.vertices = {{-reach, -reach}, {reach, -reach}, {reach, reach}, {-reach, reach}};
    p.bulges = {0, 0, 0, 0};
    p.startWidths = p.endWidths = {0, 0, 0, 0};
    p.closed = true;
    return p;
}

HatchEntity hatch(std::vector<Vector2> ring, std::vector<HatchFamily> families) {
    HatchEntity h;
    HatchLoop loop;
    loop.type = 2;
    loop.bulges.assign(ring.size(), 0.0);
    loop.vertices = std::move(ring);
    h.loops.push_back(std::move(loop));
    h.patternName = "OWN";
    h.ownPattern = std::move(families);
    return h;
}

TEST(Limits, DashesWithoutEnd) {
    for (const std::vector<double>& pattern : {std::vector<double>{1e-9, -1e-9},
                                               {4e-5, -4e-5},
                                               {2, -2},
                                               {0, -1e-300},
                                               {1e300, -1e300},
                                               {kNan, -1},
                                               {0, 0},
                                               {1.6, -1.6, 0, -1.6}}) {
        Picture picture;
        picture.drawing.linetypes.add(linetype(pattern));
        picture.add(LineEntity(Vector2{-1e8, 100}, Vector2{1e8, 100})).linetype = "Evil";
        auto& circle = picture.add(CircleEntity());
        circle.center = {200, 200 - 1e7};
        circle.radius = 1e7;
        circle.linetype = "Evil";
        expectBounded(picture, "line and circle");

        Picture dense;
        dense.drawing.linetypes.add(linetype(pattern));
        auto& line = dense.add(PolylineEntity());
        for (std::int64_t i = 0; i < 300'000; ++i)
            line.vertices.emplace_back(static_cast<double>(i % 400), static_cast<double>(i * 7919 % 400));
        line.bulges.assign(line.vertices.size(), 0.0);
        line.startWidths = line.endWidths = line.bulges;
        line.linetype = "Evil";
        line.ltgen = true;
        const std::clock_t start = std::clock();
        dense.paint();
        EXPECT_LT(static_cast<double>(std::clock() - start) / CLOCKS_PER_SEC, 10.0);
    }
}

TEST(Limits, ComplexLinetypes) {
    Linetype complex = linetype({5, -5});
    complex.elements.resize(2);
    complex.elements[1].flags = 2;
    complex.elements[1].text = std::string(100'000, 'W');
    for (const double scale : {1.0, 1e-9, 1e9, kInf}) {
        Picture picture;
        complex.elements[1].scale = scale;
        picture.drawing.linetypes.add(complex);
        picture.add(LineEntity(Vector2{0, 100}, Vector2{400, 100})).linetype = "Evil";
        expectBounded(picture, "text in a linetype");
    }
    complex.elements[1].flags = 4;
    complex.elements[1].shape = 134;
    complex.elements[1].style = "ltypeshp.shx";
    for (const double scale : {1.0, 1e5, 1e300}) {
        Picture picture;
        complex.pattern = {0.8, -0.8};
        complex.elements[1].scale = scale;
        picture.drawing.linetypes.add(complex);
        auto& circle = picture.add(CircleEntity());
        circle.center = {200, 200};
        circle.radius = 190;
        circle.linetype = "Evil";
        expectBounded(picture, "shape in a linetype");
    }
}

TEST(Limits, HatchesWithoutEnd) {
    const std::vector<Vector2> field{{0, 0}, {400, 0}, {400, 400}, {0, 400}};
    const std::vector<Vector2> far{{-1e15, -1e15}, {1e15, -1e15}, {1e15, 1e15}, {-1e15, 1e15}};
    std::vector<Vector2> ragged;
    for (std::int64_t i = 0; i < 100'000; ++i)
        ragged.emplace_back(static_cast<double>(i * 104'729 % 400), static_cast<double>(i * 7919 % 400));
    for (const double spacing : {1e-9, 1e-3, 0.5, 5.0, 1e300, 0.0, kNan}) {
        for (const std::vector<double>& dashes : {std::vector<double>{}, {1e-12, -1e-12}, {0, -1e-6}, {1, -1}}) {
            HatchFamily family;
            family.angle = 0.3;
            family.shift = {spacing / 3, spacing};
            family.dashes = dashes;
            check(hatch(field, {family}), "field");
            check(hatch(far, {family}), "far");
        }
    }
    HatchFamily plain;
    plain.shift = {0, 2};
    check(hatch(ragged, {plain}), "ragged");
    check(hatch(field, std::vector<HatchFamily>(5000, plain)), "many families");
}

TEST(Limits, TextsOfAllSizes) {
    for (const double height : {1e9, 1e-300, 1e300, kNan, 10.0}) {
        TextEntity text;
        text.height = height;
        text.content = "TEXT %%c %%u100%%u";
        check(TextEntity(text), "text");
        text.content = std::string(200'000, 'x');
        check(TextEntity(text), "long text");
        MTextEntity mtext;
        mtext.height = height;
        mtext.width = 100;
        mtext.content = "{\\H1e9x;A\\S1/2;\\P}";
        for (int i = 0; i < 5000; ++i) mtext.content += "{\\C1;word\\P";
        check(MTextEntity(mtext), "multiline text");
    }
}

TEST(Limits, CurvesOfAllSizes) {
    for (const double v : {1e15, 1e300, 1e-300, kInf, kNan}) {
        PolylineEntity wide = square(v);
        wide.startWidths = wide.endWidths = {v, 1, v, 1};
        wide.bulges = {v, 1, -v, 1e-12};
        check(std::move(wide), "wide polyline");
        EllipseEntity ellipse;
        ellipse.major = {v, 10};
        ellipse.minorRatio = 1e-12;
        check(std::move(ellipse), "ellipse");
        SplineEntity spline;
        spline.degree = 3;
        spline.controlPoints = {{0, 0}, {v, 100}, {100, v}, {400, 400}};
        spline.knots = {0, 0, 0, 0, 1, 1, 1, 1};
        check(std::move(spline), "spline");
        ImageEntity image;
        image.insertion = {0, 0};
        image.width = v;
        image.height = v;
        image.filePath = "missing.png";
        check(std::move(image), "image");
        DimensionEntity dimension;
        dimension.def1 = {0, 0};
        dimension.def2 = {v, 50};
        dimension.dimLine = {0, v};
        dimension.styleOverrides["DIMSCALE"] = v;
        check(std::move(dimension), "dimension");
        HatchEntity gradient = hatch({{0, 0}, {v, 0}, {v, v}}, {});
        gradient.patternName = "SOLID";
        gradient.gradient.emplace();
        gradient.gradient->name = "CURVED";
        gradient.gradient->angle = v;
        check(std::move(gradient), "gradient");
    }
}

TEST(Limits, BlocksWithinBlocks) {
    Picture picture;
    // Ten references to a block of ten references ... of a line: ten thousand million lines.
    picture.drawing.addBlock("B0")->entities.append(std::make_unique<LineEntity>(Vector2{0, 0}, Vector2{300, 300}));
    for (int level = 1; level <= 10; ++level) {
        Block* block = picture.drawing.addBlock(Name("B" + std::to_string(level)));
        for (int i = 0; i < 10; ++i) {
            auto reference = std::make_unique<BlockReferenceEntity>();
            reference->blockName = Name("B" + std::to_string(level - 1));
            reference->insert = {i * 1.0, 0};
            block->entities.append(std::move(reference));
        }
    }
    BlockReferenceEntity top;
    top.blockName = "B10";
    picture.add(std::move(top));
    // A block is as many entities as it places, up to the bound of nesting.
    expectBounded(picture, "nested", 4.0, 1);

    Picture array;
    array.drawing.addBlock("Cell")->entities.append(std::make_unique<LineEntity>(Vector2{0, 0}, Vector2{1, 1}));
    BlockReferenceEntity cells;
    cells.blockName = "Cell";
    cells.rows = cells.columns = 32'000;
    cells.rowSpacing = cells.columnSpacing = 1e-3;
    array.add(std::move(cells));
    expectBounded(array, "array", 4.0, 1);
}

}  // namespace
}  // namespace kova::render
