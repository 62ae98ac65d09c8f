// Geometry of points.

#include <cmath>

#include "doc/pick/object_snap.hpp"
#include "engine/model/object_plane.hpp"
#include "engine/text/text_line.hpp"
#include "math/angles.hpp"
#include "math/curves/intersect.hpp"
#include "script/lisp/function_table.hpp"
#include "script/lisp/cad.hpp"
#include "script/lisp/entities/group_list.hpp"

namespace kova::script::lisp {

using math::Matrix4;
using math::Vector2;
using math::Vector3;

namespace {

bool has3(const Value& point) { return point.cdr().cdr().isCons(); }

Value distance(Machine&, Value* v, int) {
    const Vector3 a = pointArgument("DISTANCE", v[0]);
    const Vector3 b = pointArgument("DISTANCE", v[1]);
    // A point without a z puts both into the plane.
    if (!has3(v[0]) || !has3(v[1])) return Value::real((b.xy() - a.xy()).length());
    return Value::real((b - a).length());
}

Value angle(Machine&, Value* v, int) {
    const Vector2 d = pointArgument("ANGLE", v[1]).xy() - pointArgument("ANGLE", v[0]).xy();
    return Value::real(math::normalizeAngle(d.angle()));
}

Value polar(Machine&, Value* v, int) {
    const Vector3 p = pointArgument("POLAR", v[0]);
    const double direction = numberArgument("POLAR", v[1]);
    const double length = numberArgument("POLAR", v[2]);
    const Vector2 at = p.xy() + Vector2::from_angle(direction) * length;
    if (has3(v[0])) return pointValue(Vector3(at, p.z));
    return Value::list({Value::real(at.x), Value::real(at.y)});
}

Value inters(Machine&, Value* v, int n) {
    Vector3 p[4];
    bool space = true;
    for (int i = 0; i < 4; ++i) {
        p[i] = pointArgument("INTERS", v[i]);
        space = space && has3(v[i]);
    }
    const bool segments = n < 5 || v[4].isTrue();
    const Vector2 a = p[0].xy();
    const Vector2 b = p[1].xy();
    const auto at =
        segments ? math::segmentSegment(a, b, p[2].xy(), p[3].xy(), 1e-9) : math::lineLine(a, b, p[2].xy(), p[3].xy());
    if (!at) return {};
    if (!space) return Value::list({Value::real(at->x), Value::real(at->y)});
    const auto height = [&](const Vector3& from, const Vector3& to) {
        const Vector2 d = to.xy() - from.xy();
        const double t = d.length_squared() > 0.0 ? (*at - from.xy()).dot(d) / d.length_squared() : 0.0;
        return from.z + (to.z - from.z) * t;
    };
    const double z = height(p[0], p[1]);
    if (std::abs(z - height(p[2], p[3])) > 1e-8 * (1.0 + std::abs(z))) return {};
    return pointValue(Vector3(*at, z));
}

/// A coordinate system as TRANS names it, as a map to world coordinates.
struct System {
    enum class Kind { World, User, Plane } kind = Kind::World;
    Vector3 x{1, 0, 0};
    Vector3 y{0, 1, 0};
    Vector3 z{0, 0, 1};

    static System of(Machine& m, const Value& v) {
        System s;
        if (v.isNumber()) {
            const std::int64_t code = integerArgument("TRANS", v);
            if (code < 0 || code > 3) badArgument("TRANS", "a coordinate system 0 to 3", v);
            if (code == 1) s.kind = Kind::User;
            return s;
        }
        Vector3 normal;
        if (v.isEntity()) {
            const engine::Entity* e = m.drawing().findByHandle(v.handle());
            if (e == nullptr) badArgument("TRANS", "an entity of the drawing", v);
            normal = e->normal();
        } else {
            normal = pointArgument("TRANS", v);
        }
        s.kind = Kind::Plane;
        s.z = normal.normalized();
        if (s.z.length_squared() == 0.0) s.z = {0, 0, 1};
        // The arbitrary axis rule.
        constexpr double kNear = 1.0 / 64.0;
        const Vector3 up = std::abs(s.z.x) < kNear && std::abs(s.z.y) < kNear ? Vector3{0, 1, 0} : Vector3{0, 0, 1};
        s.x = up.cross(s.z).normalized();
        s.y = s.z.cross(s.x).normalized();
        return s;
    }
    Vector3 toWorld(const engine::Drawing& d, const Vector3& p, bool direction) const {
        if (kind == Kind::User) {
            const Vector2 q = direction ? d.ucs.directionToWorld(p.xy()) : d.ucs.toWorld(p.xy());
            return Vector3(q, p.z);
        }
        return kind == Kind::World ? p : x * p.x + y * p.y + z * p.z;
    }
    Vector3 fromWorld(const engine::Drawing& d, const Vector3& p, bool direction) const {
        if (kind == Kind::User) {
            const Vector2 q = d.ucs.fromWorld(direction ? p.xy() + d.ucs.origin : p.xy());
            return Vector3(q, p.z);
        }
        return kind == Kind::World ? p : Vector3{p.dot(x), p.dot(y), p.dot(z)};
    }
};

Value trans(Machine& m, Value* v, int n) {
    const Vector3 p = pointArgument("TRANS", v[0]);
    const bool direction = n > 3 && v[3].isTrue();
    const System from = System::of(m, v[1]);
    const System to = System::of(m, v[2]);
    return pointValue(to.fromWorld(m.drawing(), from.toWorld(m.drawing(), p, direction), direction));
}

Value textBox(Machine& m, Value* v, int) {
    const GroupList groups(listArgument("TEXTBOX", v[0]));
    const std::string type = engine::upperCase(groups.text(0));
    if (type != "TEXT" && type != "ATTRIB" && type != "ATTDEF" && type != "MTEXT")
        throw LispError("TEXTBOX: expected the list of a text");
    engine::TextLine line;
    const std::string content = groups.text(type == "ATTDEF" ? 2 : 1);
    line.content = content;
    line.textStyle = engine::Name(groups.text(7, "Standard"));
    const engine::TextStyle& style = m.drawing().textStyleOrStandard(line.textStyle);
    const double usual = style.height > 0.0 ? style.height : engine::sysVarReal(m.drawing(), "TEXTSIZE", 2.5);
    line.height = groups.real(40, usual);
    line.widthFactor = groups.real(type == "MTEXT" ? 0 : 41, style.widthFactor);
    line.oblique = groups.real(51, style.obliqueAngle);
    if (content.empty()) return {};
    const math::Bounds2 box = engine::textLineBounds(line, &m.drawing());
    if (box.is_empty()) return {};
    return Value::list({pointValue(Vector3(box.min)), pointValue(Vector3(box.max))});
}

Value osnap(Machine& m, Value* v, int) {
    engine::Drawing& d = m.drawing();
    const Vector2 pick = worldPoint(d, pointArgument("OSNAP", v[0]));
    const auto words = cmd::parseSnapWords(stringArgument("OSNAP", v[1]));
    if (!words) return {};
    const auto found = cmd::snapTo(m.document(), words->kinds, pick, d.lastPoint);
    return found ? pointValue(userPoint(d, *found, 0.0)) : Value();
}

}  // namespace

std::span<const BuiltinDef> geometryBuiltins() {
    static constexpr BuiltinDef rows[] = {
        {"DISTANCE", 2, 2, distance, "point point", "The distance of two points.", "(distance '(0 0) '(3 4)) -> 5.0"},
        {"ANGLE", 2, 2, angle, "from to", "The direction from one point to another in the plane, radians.",
         "(angle '(0 0) '(0 1)) -> 1.5708"},
        {"POLAR", 3, 3, polar, "point angle distance", "The point in a direction and at a distance.",
         "(polar '(1 1) 0.0 2) -> (3.0 1.0)"},
        {"INTERS", 4, 5, inters, "a1 a2 b1 b2 [within]",
         "Where two lines meet; nil: nowhere. With nil as fifth argument the lines are unbounded.",
         "(inters '(0 0) '(2 2) '(0 2) '(2 0)) -> (1.0 1.0)"},
        {"TRANS", 3, 4, trans, "point from to [direction]",
         "A point, or a direction, in another coordinate system: 0 world, 1 UCS, 2 view, or an entity or a normal for "
         "its "
         "object coordinate system.",
         "(trans '(1 2 3) 0 1) -> (1.0 2.0 3.0)"},
        {"OSNAP", 2, 2, osnap, "point modes",
         "The point that object snap words mean near a point: END MID CEN GCEN NOD QUA INT INS PER TAN NEA, several "
         "with commas between; PER and TAN from the last point. nil: there is none.",
         "(osnap '(5 5) \"end,mid\") -> nil"},
        {"TEXTBOX", 1, 1, textBox, "list", "Two corners of the box of a text, seen from its start and not turned.",
         "(textbox '((0 . \"TEXT\") (1 . \"\"))) -> nil"},
    };
    return rows;
}

}  // namespace kova::script::lisp
