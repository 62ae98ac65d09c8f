#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <sstream>

#include "engine/model/drawing.hpp"
#include "engine/kinds/all.hpp"
#include "engine/solids/sat_edges.hpp"
#include "engine/entities/shape_sink.hpp"
#include "io/native/native_file.hpp"
#include "math/angles.hpp"

namespace kova::engine {
namespace {

using math::Bounds2;
using math::kPi;
using math::Matrix4;
using math::Vector2;
using math::Vector3;
using Kind = ShapeSink::Shape::Kind;

/// A quarter turn about the x axis: y becomes z.
Matrix4 standUp() {
    Matrix4 m;
    m(1, 1) = m(2, 2) = 0;
    m(1, 2) = -1;
    m(2, 1) = 1;
    return m;
}

void expectBox(const Bounds2& box, double x0, double y0, double x1, double y1, double eps = 1e-9) {
    EXPECT_NEAR(box.min.x, x0, eps);
    EXPECT_NEAR(box.min.y, y0, eps);
    EXPECT_NEAR(box.max.x, x1, eps);
    EXPECT_NEAR(box.max.y, y1, eps);
}

std::size_t lineCount(PathView path) {
    return static_cast<std::size_t>(std::count_if(path.begin(), path.end(), [](const PathElement& e) {
        return e.kind == PathElement::Kind::Line || e.kind == PathElement::Kind::Close;
    }));
}

// A plate: an edge, half a circle back, a full ellipse and a spline, in the text of release 4.
const std::string kBody =
    "400 0 1 0\n@8 designer @3 any\n1 9.9999999999999995e-007 1e-010\n"
    "body $-1 $-1 $-1 $-1 #\n"                                                                                  // 0
    "vertex $-1 $4 $3 #\n"                                                                                      // 1
    "vertex $-1 $4 $5 #\n"                                                                                      // 2
    "point $-1 0 0 1 #\n"                                                                                       // 3
    "edge $-1 $1 $2 $-1 $6 forward #\n"                                                                         // 4
    "point $-1 10 0 1 #\n"                                                                                      // 5
    "straight-curve $-1 0 0 1 1 0 0 I I #\n"                                                                    // 6
    "edge $-1 $2 $1 $-1 $8 forward #\n"                                                                         // 7
    "ellipse-curve $-1 5 0 1 0 0 1 5 0 0 1 I I #\n"                                                             // 8
    "vertex $-1 $11 $10 #\n"                                                                                    // 9
    "point $-1 22 0 0 #\n"                                                                                      // 10
    "edge $-1 $9 $9 $-1 $12 reversed #\n"                                                                       // 11
    "ellipse-curve $-1 20 0 0\n0 0 1 2 0 0 0.5 I I #\n"                                                         // 12
    "edge $-1 $1 $2 $-1 $14 forward #\n"                                                                        // 13
    "intcurve-curve $-1 forward { exactcur full nubs 3 open 2 0 3 1 3 0 0 1 0 -8 1 10 -8 1 10 0 1 0 } I I #\n"  // 14
    "End-of-ACIS-data\n";

TEST(ModelerEdges, LinesArcsEllipsesAndSplines) {
    const ModelerEdges found = modelerEdges(kBody);
    ASSERT_EQ(found.edges.size(), 4u);
    EXPECT_EQ(found.edges[0].kind, ModelerEdge::Kind::Line);
    EXPECT_EQ(found.edges[0].end, (Vector3{10, 0, 1}));
    // From (10,0) counter-clockwise to (0,0): the upper half.
    EXPECT_NEAR(found.edges[1].t1 - found.edges[1].t0, kPi, 1e-12);
    EXPECT_NEAR(found.edges[2].t1 - found.edges[2].t0, 2 * kPi, 1e-12);
    EXPECT_EQ(found.edges[3].kind, ModelerEdge::Kind::Curve);
    expectBox(pathBounds(found.plan()), 0, -6, 22, 5);

    Solid3DEntity solid;
    solid.sat = kBody;
    expectBox(solid.bounds(), 0, -6, 22, 5);
    EXPECT_NEAR(solid.distanceTo({5, 7}), 2, 1e-9);
    solid.transform(Matrix4::translation(100, 0, 3) * Matrix4::scaling_about({0, 0}, 2));
    expectBox(solid.bounds(), 100, -12, 144, 10);
    EXPECT_DOUBLE_EQ(solid.edges().edges[0].start.z, 5);
    EXPECT_NE(solid.sat.find("body $-1 $-1 $-1 $15 #"), std::string::npos);
    solid.transform(Matrix4::rotation_z(kPi / 2));  // now the record is there already
    expectBox(solid.bounds(), -10, 100, 12, 144);
    solid.transform(Matrix4::rotation_z(-kPi / 2));
    solid.transform(standUp());  // seen from its edge
    expectBox(solid.bounds(), 100, -5, 144, -3);
    const std::string kept = solid.sat;
    solid.transform(Matrix4::scaling(0, 1));
    EXPECT_EQ(solid.sat, kept);
    solid.moveGrip(0, {0, 0});
    expectBox(solid.bounds(), -22, -1, 22, 1);
}

TEST(ModelerEdges, LaterTextAndDamagedData) {
    // Release 7 and on: longer heads, counted texts that may hold "#", records that begin with their number.
    const std::string late =
        "700 6 1 0\n@9 a # b@1 c\n1 1e-6 1e-10\n"
        "-0 body $-1 -1 $-1 $-1 $-1 $-1 #\n"
        "-1 vertex $-1 -1 $-1 $3 $4 #\n"
        "-2 vertex $-1 -1 $-1 $3 $5 #\n"
        "-3 edge $-1 -1 $-1 $1 0 $2 7 $-1 $6 forward @7 un # wn #\n"
        "-4 point $-1 -1 $-1 1 2 3 #\n-5 point $-1 -1 $-1 8 2 3 #\n"
        "-6 straight-curve $-1 -1 $-1 1 2 3 1 0 0 I I #\n"
        "End-of-ASM-data\n";
    ASSERT_EQ(modelerEdges(late).edges.size(), 1u);
    EXPECT_EQ(modelerEdges(late).edges[0].end, (Vector3{8, 2, 3}));
    std::string moved = late;
    ASSERT_TRUE(transformModelerData(moved, Matrix4::translation(1, 1, 1)));
    EXPECT_EQ(modelerEdges(moved).edges[0].end, (Vector3{9, 3, 4}));
    EXPECT_NE(moved.find("-7 transform $-1 -1 1 0 0"), std::string::npos);
    EXPECT_NE(moved.find("700 7 1 0"), std::string::npos);

    for (const std::string& bad :
         {std::string(), std::string("x"), std::string("400 0 1 0"), std::string("400 0 1 0\n\n\nedge $1 $2 #"),
          std::string("400 0 1 0\n\n\nedge $0 $0 $0 $0 #\n"), std::string("400 0 1 0\n\n\nvertex @99999999999 #"),
          std::string("ACIS BinaryFile"), std::string("ASM BinaryFile8") + std::string(30, '\x0c'),
          std::string("ACIS BinaryFile") + std::string(5000, '\xff')}) {
        std::string data = bad;
        EXPECT_TRUE(modelerEdges(data).edges.empty());
        EXPECT_FALSE(transformModelerData(data, Matrix4::translation(1, 0)));
        EXPECT_EQ(data, bad);
    }
    // Every truncation and some broken bytes.
    for (std::size_t n = 0; n < kBody.size(); n += 3) {
        modelerEdges(kBody.substr(0, n));
        std::string broken = kBody;
        broken[n] = static_cast<char>('$' + n % 30);
        modelerEdges(broken);
        transformModelerData(broken, Matrix4::scaling_about({1, 1}, 2));
    }
}

/// The same body in binary: built here record by record.
std::string binaryBody() {
    std::string out = "ACIS BinaryFile";
    const auto integer = [&](std::int32_t v) { out.append(reinterpret_cast<const char*>(&v), 4); };
    const auto number = [&](double v) { out.append(reinterpret_cast<const char*>(&v), 8); };
    const auto name = [&](char tag, std::string_view text) {
        out += tag;
        out += static_cast<char>(text.size());
        out += text;
    };
    const auto pointers = [&](std::initializer_list<int> list) {
        for (const int p : list) {
            out += '\x0c';
            integer(p);
        }
    };
    for (const int v : {400, 7, 1, 0}) integer(v);
    for (int i = 0; i < 3; ++i) name('\x07', "text");
    for (int i = 0; i < 3; ++i) {
        out += '\x06';
        number(1);
    }
    const auto point = [&](double x, double y, double z) {
        name('\x0d', "point");
        pointers({-1});
        out += '\x13';
        number(x), number(y), number(z);
        out += '\x11';
    };
    name('\x0d', "body");
    pointers({-1, -1, -1, -1});
    out += '\x11';
    for (const int p : {4, 5}) {
        name('\x0d', "vertex");
        pointers({-1, 3, p});
        out += '\x11';
    }
    name('\x0d', "edge");
    pointers({-1, 1, 2, -1, 6});
    out += "\x0b\x11";
    point(1, 2, 3);
    point(8, 2, 3);
    name('\x0e', "straight");
    name('\x0d', "curve");
    pointers({-1});
    out += '\x13';
    number(1), number(2), number(3);
    out += '\x14';
    number(1), number(0), number(0);
    out += "\x0b\x0b\x11";
    for (const char* part : {"End", "of", "ACIS"}) name('\x0e', part);
    name('\x0d', "data");
    return out;
}

TEST(ModelerEdges, BinaryData) {
    std::string data = binaryBody();
    ASSERT_EQ(modelerEdges(data).edges.size(), 1u);
    EXPECT_EQ(modelerEdges(data).edges[0].start, (Vector3{1, 2, 3}));
    ASSERT_TRUE(transformModelerData(data, Matrix4::rotation_z(kPi / 2)));
    ASSERT_TRUE(transformModelerData(data, Matrix4::translation(10, 0, 0)));
    EXPECT_TRUE(modelerEdges(data).edges[0].end.near_equal({8, 8, 3}, 1e-12));
    // The same in a late release: its transforms have a history number, which is not to be taken for a coordinate.
    std::string late = binaryBody();
    late.replace(15, 4, std::string("\xF4\x53\0\0", 4));  // 21492
    ASSERT_TRUE(transformModelerData(late, Matrix4::translation(5, 6, 7)));
    ASSERT_TRUE(transformModelerData(late, Matrix4::translation(10, 0, 0)));
    EXPECT_EQ(modelerEdges(late).edges[0].start, (Vector3{16, 8, 10}));
    EXPECT_NE(late.find(std::string("transform\x0c\xFF\xFF\xFF\xFF\x04\xFF\xFF\xFF\xFF\x14", 20)), std::string::npos);
    for (std::size_t n = 0; n < data.size(); ++n) modelerEdges(data.substr(0, n));
}

/// Later releases have one number more in the head of a transform: the placement is what stands behind it.
TEST(ModelerEdges, PlacedBodiesOfLaterReleases) {
    const std::string text =
        "21500 8 1 24\n@5 maker @7 version @1 t\n1 1e-6 1e-10\n"
        "body $-1 -1 $-1 $-1 $-1 $1 #\n"
        "transform $-1 -1 0 1 0 -1 0 0 0 0 1 500 70 3 1 rotate no_reflect no_shear #\n"
        "vertex $-1 -1 $-1 $4 $5 #\nvertex $-1 -1 $-1 $4 $6 #\n"
        "edge $-1 -1 $-1 $2 0 $3 7 $-1 $7 forward #\n"
        "point $-1 -1 $-1 1 2 3 #\npoint $-1 -1 $-1 8 2 3 #\n"
        "straight-curve $-1 -1 $-1 1 2 3 1 0 0 I I #\n"
        "End-of-ASM-data\n";
    Solid3DEntity solid;
    solid.sat = text;
    ASSERT_EQ(solid.edges().edges.size(), 1u);
    EXPECT_TRUE(solid.edges().edges[0].start.near_equal({498, 71, 6}, 1e-12));
    EXPECT_TRUE(solid.edges().edges[0].end.near_equal({498, 78, 6}, 1e-12));
    ASSERT_TRUE(solid.canTransform(Matrix4::translation(10, 20, 0)));
    solid.transform(Matrix4::translation(10, 20, 0));
    EXPECT_TRUE(solid.edges().edges[0].start.near_equal({508, 91, 6}, 1e-12));
    EXPECT_NE(solid.sat.find("transform $-1 -1 0 1 0 -1 0 0 0 0 1 510 90 3 1 rotate no_reflect no_shear #"),
              std::string::npos);
    // Squeezed flat it would be no body any more, and one without data has no place.
    EXPECT_FALSE(solid.canTransform(Matrix4::scaling(0, 1)));
    EXPECT_FALSE(Solid3DEntity().canTransform(Matrix4::translation(1, 0)));
}

TEST(ModelerEdges, SolidsOfRealDrawings) {
    const std::filesystem::path samples = std::filesystem::path(KOVA_SOURCE_DIR) / "../shared/samples/dxf";
    const std::filesystem::path file = samples / "example_2000.dxf";
    if (!std::filesystem::exists(file)) GTEST_SKIP() << "no sample drawings";
    std::ifstream in(file, std::ios::binary);
    std::string code;
    std::string value;
    std::string text;
    bool inside = false;
    const auto trim = [](std::string& s) {
        while (!s.empty() && (s.back() == '\r' || s.back() == '\n')) s.pop_back();
    };
    while (std::getline(in, code) && std::getline(in, value)) {
        trim(code);
        trim(value);
        code.erase(0, code.find_first_not_of(' '));
        if (code == "0") inside = value == "3DSOLID";
        if (!inside || (code != "1" && code != "3")) continue;
        if (code == "1" && !text.empty()) text += '\n';
        for (std::size_t i = 0; i < value.size(); ++i) {
            const char c = value[i];
            text += c == ' ' ? c : static_cast<char>(159 - c);
            if (c == '^' && i + 1 < value.size() && value[i + 1] == ' ') ++i;
        }
    }
    const ModelerEdges found = modelerEdges(text);
    EXPECT_EQ(found.edges.size(), 18u);  // a six-sided prism
    expectBox(pathBounds(found.plan()), 2229.63, 13562.3, 4237.1, 14169.1, 0.05);
}

TEST(WireKinds, HiddenEdgesAndClosing) {
    Face3DEntity face;
    face.corners = {Vector3{0, 0, 0}, Vector3{4, 0, 1}, Vector3{4, 3, 2}, Vector3{0, 3, 3}};
    EXPECT_EQ(lineCount(face.edges()), 4u);
    face.edgeFlags = 2 | 8;
    EXPECT_EQ(lineCount(face.edges()), 2u);
    EXPECT_NEAR(face.distanceTo({2, 1}), 1, 1e-12);  // the side edges do not count
    face.edgeFlags = 15;
    EXPECT_TRUE(shapesOf(face).shapes.empty());
    EXPECT_NEAR(face.distanceTo({5, 1}), 1, 1e-12);  // but it can still be picked
    face.corners[3] = face.corners[2];
    face.edgeFlags = 0;
    EXPECT_EQ(lineCount(face.edges()), 3u);
    face.moveGrip(3, {9, 9});
    EXPECT_TRUE(face.isTriangle());
    face.transform(standUp());
    EXPECT_EQ(face.corners[1], (Vector3{4, -1, 0}));

    PolyfaceEntity poly;
    poly.vertices = {{0, 0, 0}, {1, 0, 0}, {1, 1, 0}, {0, 1, 5}};
    poly.faces = {{1, 2, -3}, {1, 3, 4, 0}, {7, 1}, {}, {std::numeric_limits<std::int32_t>::min(), 2}};
    EXPECT_EQ(lineCount(poly.edges()), 2u + 2u);
    poly.transform(standUp());
    expectBox(poly.bounds(), 0, -5, 1, 0);

    MeshEntity mesh;
    mesh.rows = 3;
    mesh.cols = 3;
    for (int i = 0; i < 9; ++i) mesh.vertices.push_back({i % 3 * 1.0, i / 3 * 1.0, i * 1.0});
    EXPECT_EQ(lineCount(mesh.edges()), 12u);
    mesh.closedM = true;
    EXPECT_EQ(lineCount(mesh.edges()), 15u);
    mesh.closedN = true;
    EXPECT_EQ(lineCount(mesh.edges()), 18u);
    mesh.rows = 2'000'000'000;  // more than there are vertices
    EXPECT_EQ(mesh.filledRows(), 3u);
    mesh.cols = -1;
    EXPECT_TRUE(mesh.edges().empty());

    Polyline3DEntity wire({{0, 0, 0}, {3, 4, 12}, {3, 4, 0}}, true);
    EXPECT_DOUBLE_EQ(wire.length(), 13 + 12 + 5);
    wire.moveGrip(1, {6, 8});
    EXPECT_EQ(wire.vertices[1], (Vector3{6, 8, 12}));
    EXPECT_EQ(Polyline3DEntity().distanceTo({0, 0}), std::numeric_limits<double>::infinity());
}

TEST(Areas, SolidsWipeoutsAndRegions) {
    Solid2DEntity solid;
    solid.corners = {Vector2{0, 0}, Vector2{4, 0}, Vector2{0, 2}, Vector2{4, 2}};
    EXPECT_DOUBLE_EQ(solid.distanceTo({2, 1}), 0);  // zig-zag corners: a rectangle, not a bow tie
    EXPECT_DOUBLE_EQ(solid.distanceTo({2, 5}), 3);
    solid.setNormal({0, 0, -1});  // seen from below: x runs the other way
    expectBox(solid.bounds(), -4, 0, 0, 2);
    expectBox(shapesOf(solid).shapes.at(0).box(), -4, 0, 0, 2);
    solid.transform(Matrix4::translation(10, 0));
    expectBox(solid.bounds(), 6, 0, 10, 2);

    WipeoutEntity wipeout({{0, 0}, {4, 0}, {4, 4}});
    ShapeSink sink = shapesOf(wipeout);
    ASSERT_EQ(sink.shapes.size(), 2u);
    EXPECT_TRUE(sink.shapes[0].background);
    wipeout.showFrame = false;
    EXPECT_EQ(shapesOf(wipeout).shapes.size(), 1u);

    RegionEntity region;  // a disc of radius 10 with a square hole, and a bar beside it
    region.vertices = {{-10, 0}, {10, 0}};
    region.bulges = {1, 1};
    region.loops = {{{{20, 0}, {30, 0}, {30, 4}, {20, 4}}, {}}, {{{-2, -2}, {2, -2}, {2, 2}, {-2, 2}}, {}}};
    EXPECT_NEAR(region.area(), 100 * kPi - 16 + 40, 1e-9);
    EXPECT_NEAR(region.centroid().x, 25 * 40 / region.area(), 1e-9);
    EXPECT_NEAR(region.perimeter(), 20 * kPi + 16 + 28, 1e-9);
    expectBox(region.bounds(), -10, -10, 30, 10);
    region.transform(Matrix4::mirror({0, 0}, {0, 1}));
    EXPECT_NEAR(region.area(), 100 * kPi - 16 + 40, 1e-9);
    expectBox(region.bounds(), -30, -10, 10, 10);
    region.transform(Matrix4::scaling(2, 1));  // the disc becomes an ellipse
    EXPECT_NEAR(region.area(), 2 * (100 * kPi - 16 + 40), 0.01);
    expectBox(region.bounds(), -60, -10, 20, 10, 1e-4);
}

TEST(Pictures, ImageCornersClipAndTransforms) {
    ImageEntity image;
    image.insertion = {1, 2};
    image.width = 4;
    image.height = 3;
    image.rotation = kPi / 2;
    EXPECT_TRUE(image.corners()[2].near_equal({-2, 6}, 1e-12));
    expectBox(image.bounds(), -2, 2, 1, 6);
    image.clipBoundary = {{0, 3}, {-1, 5}};  // a rectangle along the turned edges
    expectBox(image.bounds(), -2, 2, 1, 6);
    image.clipEnabled = true;
    expectBox(image.bounds(), -1, 3, 0, 5);
    image.clipEnabled = false;
    const auto before = image.corners();
    for (const Matrix4& m :
         {Matrix4::mirror({0, 0}, {3, 1}), Matrix4::rotation_about({2, 2}, 0.4), Matrix4::scaling_about({1, 1}, 1.5)}) {
        ImageEntity moved = image;
        moved.transform(m);
        for (std::size_t i = 0; i < 4; ++i)
            EXPECT_TRUE(moved.corners()[i].near_equal(m.transform_point(before[i]), 1e-9)) << i;
    }
    image.moveGrip(2, before[0] + (before[2] - before[0]) * 2.0);
    EXPECT_NEAR(image.width, 8, 1e-9);
    EXPECT_NEAR(image.height, 6, 1e-9);
}

TEST(Pictures, ViewportMapsAndFrame) {
    ViewportEntity viewport;
    viewport.center = {100, 50};
    viewport.width = 40;
    viewport.height = 20;
    viewport.viewTarget = {1000, 2000};
    viewport.viewScale = 0.1;
    viewport.viewTwist = kPi / 2;
    EXPECT_TRUE(viewport.toPaper({1010, 2000}).near_equal({100, 51}, 1e-12));
    EXPECT_TRUE(viewport.toModel({100, 51}).near_equal({1010, 2000}, 1e-9));
    expectBox(viewport.modelWindow(), 900, 1800, 1100, 2200);
    // A larger window over the same sheet: what is seen stays where it is.
    const Vector2 seen = viewport.toPaper({1234, 2345});
    viewport.moveGrip(2, {200, 100});
    EXPECT_TRUE(viewport.toPaper({1234, 2345}).near_equal(seen, 1e-9));
    expectBox(viewport.bounds(), 80, 40, 200, 100);
    // Turned by a quarter with the sheet.
    const Vector2 turned = Matrix4::rotation_z(kPi / 2).transform_point(seen);
    viewport.transform(Matrix4::rotation_z(kPi / 2));
    expectBox(viewport.bounds(), -100, 80, -40, 200);
    EXPECT_TRUE(viewport.toPaper({1234, 2345}).near_equal(turned, 1e-9));
    EXPECT_EQ(shapesOf(viewport).count(Kind::Stroke), 1u);
    viewport.vpId = ViewportEntity::kSheetId;
    EXPECT_TRUE(viewport.bounds().is_empty());
    EXPECT_TRUE(shapesOf(viewport).shapes.empty());
}

TEST(OtherKinds, FilesKeepEveryField) {
    Drawing drawing;
    EntityList& space = drawing.modelSpace();
    const auto add = [&]<class T>(T entity) { space.append(std::make_unique<T>(std::move(entity))); };
    ImageEntity image;
    image.filePath = "a b/ü.png";
    image.pixelWidth = 640;
    image.clipBoundary = {{0, 0}, {1, 1}, {2, 0}};
    image.clipEnabled = true;
    add(image);
    ViewportEntity viewport;
    viewport.vpFrozenLayers = {"A", "b"};
    viewport.snapSpacing = {0.5, 0.25};
    viewport.on = false;
    add(viewport);
    RegionEntity region;
    region.vertices = {{0, 0}, {1, 0}};
    region.bulges = {1, 1};
    region.loops = {{{{0, 0}, {1, 1}, {2, 0}}, {0.5}}};
    add(region);
    Face3DEntity face;
    face.corners[2] = {1, 2, 3};
    face.edgeFlags = 5;
    add(face);
    PolyfaceEntity poly;
    poly.vertices = {{1, 2, 3}};
    poly.faces = {{1, -1, 1}, {}};
    add(poly);
    Solid3DEntity text;
    text.sat = kBody;
    text.kind = Solid3DEntity::BodyKind::Region;
    add(text);
    Solid3DEntity binary;
    binary.sab = binaryBody();
    binary.modelerVersion = 2;
    add(binary);
    Solid2DEntity trace;
    trace.trace = true;
    trace.corners[3] = {7, 8};
    add(trace);
    const std::string file = io::native::nativeText(drawing);
    Drawing copy;
    ASSERT_EQ(io::native::loadNativeText(file, copy), "");
    EXPECT_EQ(io::native::nativeText(copy), file);
    const std::vector<Entity*> back = copy.modelSpace().entities();
    ASSERT_EQ(back.size(), 8u);
    EXPECT_EQ(static_cast<const Solid3DEntity&>(*back[6]).sab, binary.sab);
    EXPECT_EQ(static_cast<const Solid3DEntity&>(*back[5]).kind, Solid3DEntity::BodyKind::Region);
    EXPECT_EQ(static_cast<const PolyfaceEntity&>(*back[4]).faces, poly.faces);
    EXPECT_EQ(static_cast<const Face3DEntity&>(*back[3]).corners[2], (Vector3{1, 2, 3}));

    // A face with three corners is a triangle.
    Drawing other;
    ASSERT_EQ(io::native::loadNativeText(
                  R"({"format": "kovacad", "entities": [{"type": "Face3D", "vertices": [{"x":0,"y":0,"z":0},
                  {"x":1,"y":0,"z":0}, {"x":1,"y":1,"z":4}]}]})",
                  other),
              "");
    EXPECT_TRUE(static_cast<const Face3DEntity&>(*other.modelSpace().first()).isTriangle());
}

TEST(OtherKinds, NumbersThatAreNone) {
    const double nan = std::nan("");
    const double inf = std::numeric_limits<double>::infinity();
    Matrix4 broken;
    broken(0, 0) = nan;
    broken(1, 3) = inf;
    for (int type = 0; type < kEntityTypeCount; ++type) {
        const auto kind = static_cast<EntityType>(type);
        switch (kind) {
            case EntityType::Hatch:
            case EntityType::BlockReference:
            case EntityType::Image:
            case EntityType::Wipeout:
            case EntityType::Region:
            case EntityType::Viewport:
            case EntityType::Face3D:
            case EntityType::Polyline3D:
            case EntityType::Mesh:
            case EntityType::Solid3D:
            case EntityType::Solid2D:
            case EntityType::Polyface:
                break;
            default:
                continue;
        }
        const std::unique_ptr<Entity> e = makeEntity(kind);
        ASSERT_EQ(e->type(), kind);
        for (const Matrix4& m : {broken, Matrix4::scaling(0, 0, 0), Matrix4::scaling(1e300, 1e300, 1e300)}) {
            e->transform(m);
            static_cast<void>(e->bounds());
            e->nearestPoint({nan, 1});
            static_cast<void>(e->distanceTo({1, inf}));
            for (std::size_t i = 0; i < 6; ++i) e->moveGrip(i, {nan, inf});
            shapesOf(*e);
            const std::unique_ptr<Entity> copy = e->clone();
            EXPECT_NE(copy->id(), e->id());
            EXPECT_GT(copy->sizeInBytes(), 100u);
        }
    }
}

}  // namespace
}  // namespace kova::engine
