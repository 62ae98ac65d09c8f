#include "python_fixture.hpp"

#include <QDir>
#include <QFile>

#include "engine/model/drawing.hpp"

namespace kova::script::python {
namespace {

using ::testing::Contains;

TEST_F(PythonTest, TheExamplesRun) {
    const std::string folder = KOVA_SOURCE_DIR "/examples/";
    EXPECT_THAT(session.feed("PYSCRIPT " + folder + "staircase.py"), Contains("14 steps, 31 entities"));
    EXPECT_EQ(document().history().undoLabel(), "Staircase");
    EXPECT_THAT(session.feed("PYSCRIPT " + folder + "layer_report.py"),
                Contains("Stairs (on): 1 Arc, 1 Circle, 15 Line"));
    EXPECT_THAT(session.feed("PYLOAD " + folder + "commands.py"), Contains("Loaded: " + folder + "commands.py"));
    session.feed("UNDO");
    EXPECT_THAT(session.feed("GRIDLINES 2 10"), Contains("6 lines drawn."));
    EXPECT_THAT(session.feed("TOTALLENGTH"), Contains("Total length: 120"));
    session.feed("UNDO");
    EXPECT_TRUE(model().empty());
}

// The stubs in resources/stubs are what the program writes of itself:
// kova._stubs.write("resources/stubs/kova") makes them anew.
TEST_F(PythonTest, TheStubsAreUpToDate) {
    good(
        "import kova._stubs, ast\nstubs = kova._stubs.stubs()\nfor name, text in stubs.items(): ast.parse(text, name)");
    // They name types that every supported version of Python shows alike, but are made with one.
    if (good("import sys; print(sys.version_info[:2] == (3, 11))") != "True") GTEST_SKIP() << "made with Python 3.11";
    if (qEnvironmentVariableIsSet("KOVA_WRITE_STUBS"))
        good("kova._stubs.write('" KOVA_SOURCE_DIR "/resources/stubs/kova')");
    EXPECT_EQ(good("import os\nfor name, text in stubs.items():\n    path = os.path.join('" KOVA_SOURCE_DIR
                   "/resources/stubs/kova', name)\n    if not os.path.exists(path) or open(path, "
                   "encoding='utf-8').read() != text: "
                   "print(name)"),
              "");
}

TEST_F(PythonTest, Geometry) {
    EXPECT_EQ(
        show("(geom.Vector2(3, 4).normalized(), geom.Vector2(1, 0).perpendicular() == geom.Vector2(0, 1), geom.Vector2(1, 0).cross((0, 1)))"),
        "(Vector2(0.6, 0.8), True, 1.0)");
    EXPECT_EQ(
        show("(geom.Vector2(0, 0).angle_to((1, 0)), geom.Vector2(1, 2) == geom.Vector2(1, 2 + 1e-15), "
             "geom.Vector2(1, 2).near_equal((1, 2 + 1e-15)), list(geom.Vector2(1, 2)), (1, 2) + geom.Vector2(1, 1))"),
        "(0.0, False, True, [1.0, 2.0], Vector2(2, 3))");
    EXPECT_EQ(bad("geom.Vector2(1, 2)[2]"), "IndexError: Vector2 index out of range");
    EXPECT_EQ(bad("geom.Vector3(1, 2, 3)[-4]"), "IndexError: Vector3 index out of range");
    EXPECT_EQ(bad("geom.Vector2(1, 2).x = 5").substr(0, 14), "AttributeError");
    EXPECT_EQ(show("len({geom.Vector2(1, 2), geom.Vector2(1, 2)})"), "1");
    good("b = geom.BoundingBox2()\nb.expand((1, 2))");
    EXPECT_EQ(show("(b, b.is_empty(), b.area(), geom.BoundingBox2().area())"),
              "(BoundingBox2(min=(1, 2), max=(1, 2)), False, 0.0, 0.0)");
    good("m = geom.Matrix4.translation(5, 0) @ geom.Matrix4.scaling(2, 2)");
    EXPECT_EQ(
        show(
            "(m.transform_point((1, 1)), m.transform_direction((1, 1)), m.inverse().transform_point((7, 2)), m[0, 3])"),
        "(Vector2(7, 2), Vector2(2, 2), Vector2(1, 1), 5.0)");
    EXPECT_EQ(bad("geom.Matrix4.scaling(0, 0).inverse()"), "ValueError: the matrix has no inverse");
    EXPECT_EQ(
        show("(geom.line_line((0, 0), (2, 2), (0, 2), (2, 0)), geom.segment_segment((0, 0), (1, 0), (0, 5), (1, 5)), "
             "geom.line_circle((-9, 0), (9, 0), (0, 0), 2), geom.circle_circle((0, 0), 1, (2, 0), 1))"),
        "(Vector2(1, 1), None, [Vector2(-2, 0), Vector2(2, 0)], [Vector2(1, 0)])");
    EXPECT_EQ(show("(geom.area([(0, 0), (4, 0), (4, 3)]), geom.signed_area([(0, 0), (4, 3), (4, 0)]), "
                   "round(geom.area([(-1, 0), (1, 0)], [1, 1]), 12), geom.point_in_polygon((1, 1), [(0, 0), (3, 0), "
                   "(3, 3), (0, 3)]))"),
              "(6.0, -6.0, 3.14159265359, True)");
    EXPECT_EQ(show("geom.offset_points([(0, 0), (10, 0), (10, 10), (0, 10)], 1, closed=True)"),
              "[Vector2(1, 1), Vector2(9, 1), Vector2(9, 9), Vector2(1, 9)]");
    EXPECT_EQ(show("(geom.offset_points([(0, 0), (10, 0), (10, 10)], -1), geom.offset_line((0, 0), (5, 0), 2))"),
              "([Vector2(0, -1), Vector2(11, -1), Vector2(11, 10)], (Vector2(0, 2), Vector2(5, 2)))");
    EXPECT_EQ(bad("geom.offset_points([(1, 1), (1, 1)], 2)"), "ValueError: an offset needs two different points");
}

}  // namespace
}  // namespace kova::script::python
