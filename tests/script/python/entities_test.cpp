#include "python_fixture.hpp"

#include "engine/model/drawing.hpp"
#include "engine/entities/line.hpp"

namespace kova::script::python {
namespace {

using ::testing::HasSubstr;
using ::testing::StartsWith;

TEST_F(PythonTest, TheConstructorsOfTheInstructions) {
    good(
        "with transaction('first'):\n"
        "    ms.add(Line(start=(0, 0), end=(10, 0)))\n"
        "    ms.add(Circle((1, 2), 3))\n"
        "    ms.add(Arc(center=(1, 2), radius=3, start_angle=0.5, end_angle=1.5))\n"
        "    ms.add(Polyline(vertices=[(0, 0), (5, 0), (5, 5)], closed=True))\n"
        "    ms.add(Text((1, 1), 2.5, 0.25, 'single'))\n"
        "    ms.add(MText((1, 1), 40, 3, 'multi'))\n");
    ASSERT_EQ(model().size(), 6u);
    EXPECT_EQ(document().history().undoLabel(), "first");
    EXPECT_EQ(show("[(e.kind, e.layer_name, e.color_index, e.linetype_name) for e in ms][:2]"),
              "[('Line', '0', 256, 'ByLayer'), ('Circle', '0', 256, 'ByLayer')]");
    EXPECT_EQ(show("(ms[2].end_angle, ms[3].vertices[2], ms[3].closed, ms[4].content, ms[4].rotation, ms[5].width)"),
              "(1.5, Vector2(5, 5), True, 'single', 0.25, 40.0)");
    session.feed("UNDO");
    EXPECT_TRUE(model().empty());
}

// Whatever a kind describes can be read, and set to what was read; the entity stays the same.
TEST_F(PythonTest, EveryFieldOfEveryKindIsAnAttribute) {
    EXPECT_EQ(good("count = 0\n"
                   "for kind in ent.kinds():\n"
                   "    e = kind()\n"
                   "    before = e.fields()\n"
                   "    for name, field in vars(kind).items():\n"
                   "        if isinstance(field, __import__('_kova').Field):\n"
                   "            value = getattr(e, name)\n"
                   "            assert name.isidentifier() and name not in dir(Entity), (kind, name)\n"
                   "            if value is not None: setattr(e, name, value)\n"
                   "            assert field.__doc__, name\n"
                   "            count += 1\n"
                   "    assert e.fields().keys() >= before.keys(), (kind, before, e.fields())\n"
                   "    assert all(e.fields()[k] == v for k, v in before.items()), (kind, before, e.fields())\n"
                   "print(len(ent.kinds()), count > 200)"),
              "31 True");
}

TEST_F(PythonTest, FieldsKeepEachOther) {
    // A line's end z is derived while a record is read; setting another field must not lose it.
    good("l = ms.add(Line((0, 0), (10, 0), end_z=7))\nl.start = (1, 1)");
    const auto& line = static_cast<const engine::LineEntity&>(*model().first());
    EXPECT_TRUE(line.hasZ);
    EXPECT_EQ(line.endZ, 7.0);
    EXPECT_EQ(line.start, (math::Vector2{1, 1}));
    good(
        "t = ms.add(MText((0, 0), 10, 2.5, 'x'))\nt.set(bg_flags=1, bg_color=(1, 2, 3))\nt.columns = {'type': 1, "
        "'count': 2}\n"
        "t.height = 5");
    EXPECT_EQ(show("(t.bg_color, t.columns['count'], t.height, t.content)"), "((1, 2, 3), 2, 5.0, 'x')");
    EXPECT_EQ(bad("t.columns = {'nonsense': 1}"), "TypeError: unknown field among ['nonsense']");
    EXPECT_EQ(show("t.columns['count']"), "2");
}

TEST_F(PythonTest, CommonPropertiesAndTheirErrors) {
    good("c = ms.add(Circle((0, 0), 1, layer_name='Walls', color='red', linetype_name='Dashed', lineweight=35))");
    EXPECT_EQ(show("(c.layer_name, c.color, c.linetype_name, c.lineweight, 'Walls' in d.layers)"),
              "('Walls', 1, 'Dashed', 35, True)");
    good("c.color = (10, 20, 30); c.visible = False; c.normal = (0, 0, 2); c.thickness = 4; c.transparency = 50");
    EXPECT_EQ(show("(c.color, c.visible, c.normal, c.thickness, c.transparency)"),
              "((10, 20, 30), False, Vector3(0, 0, 1), 4.0, 50)");
    good("c.xdata = {'APP': [(1000, 'text'), (1040, 2.5), (1070, 7), (1010, (1, 2, 3))]}");
    EXPECT_EQ(show("c.xdata"), "{'APP': [(1000, 'text'), (1040, 2.5), (1070, 7), (1010, Vector3(1, 2, 3))]}");
    EXPECT_EQ(bad("c.radius = float('inf')"), "ValueError: radius must be finite");
    EXPECT_EQ(bad("c.radius = 'wide'"), "TypeError: radius must be a number, not str");
    EXPECT_EQ(bad("c.center = (1, 2, 3)"), "ValueError: center lies in the plane: give (x, y), the z is the elevation");
    EXPECT_EQ(bad("c.center = 5"), "TypeError: center must be a point such as (x, y), not int");
    EXPECT_EQ(bad("c.color_index = 300"), "ValueError: color_index must be 0 to 256");
    EXPECT_EQ(bad("c.linetype_name = 'Zigzag9'"), "ValueError: there is no linetype named 'Zigzag9'");
    EXPECT_EQ(bad("c.layer_name = 'a/b'"), "ValueError: 'a/b' is no name for a layer");
    EXPECT_EQ(bad("c.xdata = {'APP': [(1, 'x')]}"), "ValueError: group code must be 1000 to 1071");
    EXPECT_EQ(bad("Circle(centre=(0, 0))"), "TypeError: Circle() got an unexpected keyword argument 'centre'");
    EXPECT_EQ(bad("Circle((0, 0), center=(1, 1))"), "TypeError: argument 'center' was given twice");
    EXPECT_EQ(bad("c.colour = 3"), "AttributeError: 'Circle' object has no attribute 'colour'");
    EXPECT_EQ(bad("Entity()"), "TypeError: Entity is the base of all kinds; make a Line, a Circle ...");
    // What failed changed nothing.
    EXPECT_EQ(show("(c.center, c.radius, c.layer_name)"), "(Vector2(0, 0), 1.0, 'Walls')");
}

TEST_F(PythonTest, NewEntitiesTakeTheCurrentSettings) {
    good(
        "d.layers.add('Now'); d.layers.current = 'Now'; d.variables['CECOLOR'] = '3'\n"
        "a = ms.add(Line((0, 0), (1, 1))); b = ms.add(Line((0, 0), (1, 1), layer_name='0', color_index=256))");
    EXPECT_EQ(show("(a.layer_name, a.color_index, b.layer_name, b.color_index)"), "('Now', 3, '0', 256)");
    EXPECT_EQ(show("ms.add(b.copy()).layer_name"), "'0'");
}

TEST_F(PythonTest, ObjectsAreEqualWhenTheirEntityIs) {
    good("l = ms.add(Line((0, 0), (1, 1)))");
    EXPECT_EQ(show("(l == ms[0], l is ms[0], l != ms[0], len({l, ms[0], ms[-1]}), l == l.copy(), l == 5, l in ms)"),
              "(True, False, False, 1, False, False, True)");
    EXPECT_EQ(show("d.entity(l.handle) == l and d.entity('FFFFFF') is None"), "True");
}

TEST_F(PythonTest, EntitiesThatAreGoneSaySoAndComeBack) {
    good("l = ms.add(Line((0, 0), (1, 1)))");
    good("l.delete()");
    EXPECT_EQ(bad("l.start"),
              "kova.ent.EntityGoneError: this Line is gone: it was deleted or undone, or its drawing was closed");
    EXPECT_EQ(bad("l.delete()"),
              "kova.ent.EntityGoneError: this Line is gone: it was deleted or undone, or its drawing was closed");
    EXPECT_EQ(show("(l, l.in_drawing)"), "(<Line, gone>, False)");
    EXPECT_EQ(show("(doc.undo(), l.in_drawing, l.end)"), "('Python', True, Vector2(1, 1))");
    EXPECT_EQ(bad("ms.add(l)"), "ValueError: the Line 1 is in a drawing already: add a copy()");
    good("doc.new()");
    EXPECT_THAT(bad("l.start"), StartsWith("kova.ent.EntityGoneError"));
    EXPECT_EQ(show("len(ms)"), "0");
}

TEST_F(PythonTest, TransformsFollowTheKind) {
    good("c = ms.add(Circle((1, 0), 2))\nc.move((1, 1)); c.rotate(3.141592653589793, center=(0, 0)); c.scale(2)");
    EXPECT_EQ(show("c.center.near_equal((-4, -2), 1e-9) and c.radius == 4"), "True");
    good("c.transform(geom.Matrix4.scaling(2, 1))");
    EXPECT_EQ(show("(type(c).__name__, c.kind, c.minor_ratio)"), "('Ellipse', 'Ellipse', 0.5)");
    EXPECT_THAT(bad("c.radius"), HasSubstr("'Ellipse' object has no attribute 'radius'"));
    EXPECT_EQ(show("(doc.undo(), c.kind)"), "('Python', 'Circle')");
    EXPECT_EQ(bad("c.mirror((0, 0), (0, 0))"), "ValueError: the mirror line needs two different points");
    EXPECT_EQ(show("(c.distance_to(c.center) == c.radius, len(c.grip_points()) > 1, c.bounds.width() == 2 * c.radius)"),
              "(True, True, True)");
}

TEST_F(PythonTest, SpacesAreSequences) {
    good("ms.extend([Line((i, 0), (i, 1), layer_name='AB'[i % 2]) for i in range(10)]); ms.add(Circle((100, 0), 1))");
    EXPECT_EQ(
        show("(len(ms), ms[-1].kind, [e.start.x for e in ms[2:8:3]], len(ms.filter(Line)), len(ms.filter('CIRCLE')),"
             " len(ms.filter(layer='a')), len(ms.filter((Line, Circle), layer='B')))"),
        "(11, 'Circle', [2.0, 5.0], 10, 1, 5, 5)");
    EXPECT_EQ(bad("ms[11]"), "IndexError: entity index out of range");
    EXPECT_EQ(bad("ms.filter('FROB')"), "ValueError: Unknown entity type: FROB");
    EXPECT_EQ(bad("ms.add('line')"), "TypeError: an entity is wanted, not str");
    // Gaps that deleting leaves do not show; deleting while passing over all is fine.
    good("for e in ms:\n    if e.kind == 'Line' and e.start.x % 3 == 0: e.delete()");
    EXPECT_EQ(show("([e.start.x for e in ms.filter(Line)], ms[1].start.x, ms[-2].start.x, len(ms))"),
              "([1.0, 2.0, 4.0, 5.0, 7.0, 8.0], 2.0, 8.0, 7)");
    EXPECT_EQ(show("[e.kind for e in ms.in_box(geom.BoundingBox2((90, -5), (120, 5)))]"), "['Circle']");
    EXPECT_EQ(show("ms.nearest((99, 3)).kind"), "'Circle'");
    EXPECT_EQ(show("(ms.clear(), len(ms))"), "(7, 0)");
}

}  // namespace
}  // namespace kova::script::python
