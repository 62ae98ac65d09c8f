#include "script/python/geom_module.hpp"

#include <pybind11/pybind11.h>

#include "math/curves/intersect.hpp"
#include "math/curves/polygon.hpp"
#include "script/python/convert.hpp"
#include "strings/numbers.hpp"

namespace py = pybind11;

namespace kova::script::python {

using math::Bounds2;
using math::Matrix4;
using math::Vector2;
using math::Vector3;

PyObject* pyVector2(const Vector2& v) { return py::cast(v).release().ptr(); }
PyObject* pyVector3(const Vector3& v) { return py::cast(v).release().ptr(); }
PyObject* pyBounds(const Bounds2& b) { return py::cast(b).release().ptr(); }

bool isVector2(PyObject* value, Vector2& v) {
    if (!py::isinstance<Vector2>(value)) return false;
    v = py::handle(value).cast<Vector2>();
    return true;
}

bool isVector3(PyObject* value, Vector3& v) {
    if (!py::isinstance<Vector3>(value)) return false;
    v = py::handle(value).cast<Vector3>();
    return true;
}

Matrix4 matrixFrom(PyObject* value) {
    if (!py::isinstance<Matrix4>(value)) fail(PyExc_TypeError, "a kova.geom.Matrix4 is wanted");
    return py::handle(value).cast<Matrix4>();
}

Bounds2 boundsFrom(PyObject* value) {
    if (!py::isinstance<Bounds2>(value)) fail(PyExc_TypeError, "a kova.geom.BoundingBox2 is wanted");
    return py::handle(value).cast<Bounds2>();
}

namespace {

Vector2 point(py::handle value) { return vector2From(value.ptr(), "a point"); }
double number(py::handle value) { return numberFrom(value.ptr(), "a number"); }

std::size_t index(std::ptrdiff_t i, std::ptrdiff_t size) { return static_cast<std::size_t>(i < 0 ? i + size : i); }

template <class V>
double component(const V& v, std::ptrdiff_t i) {
    try {
        return v[index(i, static_cast<std::ptrdiff_t>(V::size()))];
    } catch (const std::out_of_range& error) {
        throw py::index_error(error.what());
    }
}

std::vector<Vector2> points(py::handle value) {
    const Ref items = sequenceFrom(value.ptr(), "points");
    std::vector<Vector2> out;
    for (Py_ssize_t i = 0; i < PySequence_Fast_GET_SIZE(items.get()); ++i)
        out.push_back(point(PySequence_Fast_GET_ITEM(items.get(), i)));
    return out;
}

std::vector<double> numbers(py::handle value) {
    const Ref items = sequenceFrom(value.ptr(), "bulges");
    std::vector<double> out;
    for (Py_ssize_t i = 0; i < PySequence_Fast_GET_SIZE(items.get()); ++i)
        out.push_back(number(PySequence_Fast_GET_ITEM(items.get(), i)));
    return out;
}

py::list listOf(const math::Hits& hits) {
    py::list out;
    for (const Vector2& p : hits) out.append(p);
    return out;
}

py::object orNone(const std::optional<Vector2>& p) { return p ? py::cast(*p) : py::none(); }

math::CircularArc arc(py::handle center, double radius, double start, double end) {
    return {point(center), radius, start, math::sweepAngle(start, end)};
}

/// Operations that Vector2 and Vector3 share. Operands may be tuples.
template <class V>
py::class_<V> defineVector(py::module_& m, const char* name, V (*from)(PyObject*, std::string_view), const char* doc) {
    py::class_<V> c(m, name, doc);
    const auto other = [from](py::handle value) -> std::optional<V> {
        if (!py::isinstance<V>(value) && !PyTuple_Check(value.ptr()) && !PyList_Check(value.ptr())) return std::nullopt;
        return from(value.ptr(), "operand");
    };
    const auto notImplemented = [] { return py::reinterpret_borrow<py::object>(Py_NotImplemented); };
    const auto isNumber = [](py::handle v) { return PyFloat_Check(v.ptr()) || PyLong_Check(v.ptr()); };
    c.def(
        "__add__",
        [=](const V& a, py::handle b) {
            const auto o = other(b);
            return o ? py::cast(a + *o) : notImplemented();
        },
        py::is_operator());
    c.def(
        "__radd__",
        [=](const V& a, py::handle b) {
            const auto o = other(b);
            return o ? py::cast(*o + a) : notImplemented();
        },
        py::is_operator());
    c.def(
        "__sub__",
        [=](const V& a, py::handle b) {
            const auto o = other(b);
            return o ? py::cast(a - *o) : notImplemented();
        },
        py::is_operator());
    c.def(
        "__rsub__",
        [=](const V& a, py::handle b) {
            const auto o = other(b);
            return o ? py::cast(*o - a) : notImplemented();
        },
        py::is_operator());
    c.def(
        "__mul__",
        [=](const V& a, py::handle b) { return isNumber(b) ? py::cast(a * py::cast<double>(b)) : notImplemented(); },
        py::is_operator());
    c.def(
        "__rmul__",
        [=](const V& a, py::handle b) { return isNumber(b) ? py::cast(a * py::cast<double>(b)) : notImplemented(); },
        py::is_operator());
    c.def(
        "__truediv__",
        [=](const V& a, py::handle b) { return isNumber(b) ? py::cast(a / py::cast<double>(b)) : notImplemented(); },
        py::is_operator());
    c.def("__neg__", [](const V& a) { return -a; });
    c.def(
        "__eq__",
        [=](const V& a, py::handle b) -> py::object {
            return py::isinstance<V>(b) ? py::bool_(a == b.cast<V>()) : notImplemented();
        },
        py::is_operator());
    c.def("__hash__", [](const V& a) { return py::hash(py::cast(a).attr("__reduce__")().attr("__getitem__")(1)); });
    c.def("__len__", [](const V&) { return V::size(); });
    c.def(
        "__getitem__", [](const V& a, std::ptrdiff_t i) { return component(a, i); }, py::arg("index"));
    c.def("__repr__", [](const V& a) { return a.text(); });
    c.def("length", &V::length, "The length, drawing units.");
    c.def("length_squared", &V::length_squared);
    c.def("normalized", &V::normalized, "This vector with length 1; the zero vector when its length is below 1e-10.");
    c.def(
        "dot", [=](const V& a, py::handle b) { return a.dot(from(b.ptr(), "other")); }, py::arg("other"));
    c.def(
        "near_equal", [=](const V& a, py::handle b, double eps) { return a.near_equal(from(b.ptr(), "other"), eps); },
        py::arg("other"), py::arg("eps") = math::kTolerance, "True when no component differs by more than eps.");
    return c;
}

void defineVectors(py::module_& m) {
    auto v2 = defineVector<Vector2>(m, "Vector2", vector2From,
                                    "A point or direction in the plane, drawing units. Immutable.");
    v2.def(py::init([](double x, double y) {
               return Vector2{x, y};
           }),
           py::arg("x") = 0.0, py::arg("y") = 0.0)
        .def_readonly("x", &Vector2::x)
        .def_readonly("y", &Vector2::y)
        .def("__iter__", [](const Vector2& v) { return py::iter(py::make_tuple(v.x, v.y)); })
        .def("__reduce__",
             [](const Vector2& v) { return py::make_tuple(py::type::of<Vector2>(), py::make_tuple(v.x, v.y)); })
        .def(
            "distance_to", [](const Vector2& v, py::handle o) { return v.distance_to(point(o)); }, py::arg("other"))
        .def(
            "cross", [](const Vector2& v, py::handle o) { return v.cross(point(o)); }, py::arg("other"),
            "z of the 3-D cross product; positive when the other lies counter-clockwise of this.")
        .def("angle", &Vector2::angle, "The direction in (-pi, pi], radians.")
        .def(
            "angle_to", [](const Vector2& v, py::handle o) { return v.angle_to(point(o)); }, py::arg("other"),
            "The unsigned angle between the two in [0, pi], radians.")
        .def(
            "lerp", [](const Vector2& v, py::handle o, double t) { return v.lerp(point(o), t); }, py::arg("other"),
            py::arg("t"))
        .def("perpendicular", &Vector2::perpendicular, "Turned a quarter turn counter-clockwise.")
        .def_static("zero", &Vector2::zero)
        .def_static("unit_x", &Vector2::unit_x)
        .def_static("unit_y", &Vector2::unit_y)
        .def_static("from_angle", &Vector2::from_angle, py::arg("radians"));
    auto v3 =
        defineVector<Vector3>(m, "Vector3", vector3From, "A point or direction in space, drawing units. Immutable.");
    v3.def(py::init([](double x, double y, double z) {
               return Vector3{x, y, z};
           }),
           py::arg("x") = 0.0, py::arg("y") = 0.0, py::arg("z") = 0.0)
        .def_readonly("x", &Vector3::x)
        .def_readonly("y", &Vector3::y)
        .def_readonly("z", &Vector3::z)
        .def("__iter__", [](const Vector3& v) { return py::iter(py::make_tuple(v.x, v.y, v.z)); })
        .def("__reduce__",
             [](const Vector3& v) { return py::make_tuple(py::type::of<Vector3>(), py::make_tuple(v.x, v.y, v.z)); })
        .def("xy", &Vector3::xy)
        .def(
            "cross", [](const Vector3& v, py::handle o) { return v.cross(vector3From(o.ptr(), "other")); },
            py::arg("other"));
}

void defineBox(py::module_& m) {
    py::class_<Bounds2>(m, "BoundingBox2",
                        "An axis-aligned box in the plane; empty until a point is added. Touching counts.")
        .def(py::init<>())
        .def(py::init([](py::handle lo, py::handle hi) {
                 return Bounds2{point(lo), point(hi)};
             }),
             py::arg("min"), py::arg("max"))
        .def_readonly("min", &Bounds2::min)
        .def_readonly("max", &Bounds2::max)
        .def(
            "expand",
            [](Bounds2& b, py::handle o) {
                if (py::isinstance<Bounds2>(o))
                    b.expand(o.cast<Bounds2>());
                else
                    b.expand(point(o));
            },
            py::arg("other"), "Grows to hold a point or another box.")
        .def("is_empty", &Bounds2::is_empty)
        .def("center", &Bounds2::center)
        .def("width", &Bounds2::width)
        .def("height", &Bounds2::height)
        .def("area", &Bounds2::area)
        .def(
            "contains_point", [](const Bounds2& b, py::handle p) { return b.contains_point(point(p)); },
            py::arg("point"))
        .def("contains_box", &Bounds2::contains_box, py::arg("box"))
        .def("intersects", &Bounds2::intersects, py::arg("box"))
        .def(
            "__eq__", [](const Bounds2& a, const Bounds2& b) { return a == b; }, py::is_operator())
        .def("__repr__", &Bounds2::text);
}

void defineMatrix(py::module_& m) {
    py::class_<Matrix4>(m, "Matrix4",
                        "A transform of points in space, applied to column vectors: (a @ b) applies b first.")
        .def(py::init<>())
        .def_static("identity", &Matrix4::identity)
        .def_static(
            "translation", [](double x, double y, double z) { return Matrix4::translation(x, y, z); }, py::arg("x"),
            py::arg("y"), py::arg("z") = 0.0)
        .def_static("scaling", &Matrix4::scaling, py::arg("x"), py::arg("y"), py::arg("z") = 1.0)
        .def_static("rotation_z", &Matrix4::rotation_z, py::arg("radians"))
        .def_static(
            "rotation_about", [](py::handle c, double a) { return Matrix4::rotation_about(point(c), a); },
            py::arg("center"), py::arg("radians"))
        .def_static(
            "scaling_about", [](py::handle c, double f) { return Matrix4::scaling_about(point(c), f); },
            py::arg("center"), py::arg("factor"))
        .def_static(
            "mirror", [](py::handle a, py::handle b) { return Matrix4::mirror(point(a), point(b)); }, py::arg("a"),
            py::arg("b"))
        .def(
            "__matmul__", [](const Matrix4& a, const Matrix4& b) { return a * b; }, py::is_operator())
        .def(
            "__mul__", [](const Matrix4& a, const Matrix4& b) { return a * b; }, py::is_operator())
        .def(
            "__eq__", [](const Matrix4& a, const Matrix4& b) { return a == b; }, py::is_operator())
        .def(
            "__getitem__",
            [](const Matrix4& a, std::pair<std::ptrdiff_t, std::ptrdiff_t> at) {
                if (at.first < 0 || at.first > 3 || at.second < 0 || at.second > 3)
                    throw py::index_error("Matrix4 index out of range");
                return a(static_cast<int>(at.first), static_cast<int>(at.second));
            },
            py::arg("row_and_column"))
        .def("inverse",
             [](const Matrix4& a) {
                 const auto inverse = a.inverse();
                 if (!inverse) throw py::value_error("the matrix has no inverse");
                 return *inverse;
             })
        .def(
            "transform_point",
            [](const Matrix4& a, py::handle p) -> py::object {
                if (py::isinstance<Vector3>(p) || py::len(p) == 3)
                    return py::cast(a.transform_point(vector3From(p.ptr(), "point")));
                return py::cast(a.transform_point(point(p)));
            },
            py::arg("point"))
        .def(
            "transform_direction",
            [](const Matrix4& a, py::handle p) -> py::object {
                if (py::isinstance<Vector3>(p) || py::len(p) == 3)
                    return py::cast(a.transform_direction(vector3From(p.ptr(), "direction")));
                return py::cast(a.transform_direction(point(p)));
            },
            py::arg("direction"))
        .def("__repr__", [](const Matrix4& a) {
            std::string text = "Matrix4(";
            for (int r = 0; r < 4; ++r) {
                text += r == 0 ? "[" : ", [";
                for (int c = 0; c < 4; ++c) text += (c == 0 ? "" : ", ") + strings::shortest(a(r, c));
                text += "]";
            }
            return text + ")";
        });
}

void defineFunctions(py::module_& m) {
    m.def(
        "line_line",
        [](py::handle a, py::handle b, py::handle c, py::handle d) {
            return orNone(math::lineLine(point(a), point(b), point(c), point(d)));
        },
        py::arg("a"), py::arg("b"), py::arg("c"), py::arg("d"),
        "Where the unbounded lines a-b and c-d meet; None when they are parallel.");
    m.def(
        "segment_segment",
        [](py::handle a, py::handle b, py::handle c, py::handle d) {
            return orNone(math::segmentSegment(point(a), point(b), point(c), point(d)));
        },
        py::arg("a"), py::arg("b"), py::arg("c"), py::arg("d"),
        "Where the segments a-b and c-d meet, ends included; else None.");
    m.def(
        "line_circle",
        [](py::handle a, py::handle b, py::handle c, double r) {
            return listOf(math::lineCircle(point(a), point(b), point(c), r));
        },
        py::arg("a"), py::arg("b"), py::arg("center"), py::arg("radius"),
        "Where an unbounded line meets a circle: a list of up to two points.");
    m.def(
        "segment_circle",
        [](py::handle a, py::handle b, py::handle c, double r) {
            return listOf(math::segmentCircle(point(a), point(b), point(c), r));
        },
        py::arg("a"), py::arg("b"), py::arg("center"), py::arg("radius"));
    m.def(
        "circle_circle",
        [](py::handle a, double r, py::handle b, double s) {
            return listOf(math::circleCircle(point(a), r, point(b), s));
        },
        py::arg("center1"), py::arg("radius1"), py::arg("center2"), py::arg("radius2"));
    m.def(
        "segment_arc",
        [](py::handle a, py::handle b, py::handle c, double r, double s, double e) {
            return listOf(math::segmentArc(point(a), point(b), arc(c, r, s, e)));
        },
        py::arg("a"), py::arg("b"), py::arg("center"), py::arg("radius"), py::arg("start_angle"), py::arg("end_angle"),
        "Where a segment meets an arc that runs counter-clockwise; radians.");
    m.def(
        "arc_arc",
        [](py::handle c1, double r1, double s1, double e1, py::handle c2, double r2, double s2, double e2) {
            return listOf(math::arcArc(arc(c1, r1, s1, e1), arc(c2, r2, s2, e2)));
        },
        py::arg("center1"), py::arg("radius1"), py::arg("start1"), py::arg("end1"), py::arg("center2"),
        py::arg("radius2"), py::arg("start2"), py::arg("end2"));
    m.def(
        "area", [](py::handle p, py::handle b) { return std::abs(math::signedArea(points(p), numbers(b))); },
        py::arg("points"), py::arg("bulges") = py::tuple(),
        "Area inside a closed outline; bulges make arcs of its segments.");
    m.def(
        "signed_area", [](py::handle p, py::handle b) { return math::signedArea(points(p), numbers(b)); },
        py::arg("points"), py::arg("bulges") = py::tuple(), "The same, negative for a clockwise outline.");
    m.def(
        "perimeter", [](py::handle p, py::handle b) { return math::perimeter(points(p), numbers(b)); },
        py::arg("points"), py::arg("bulges") = py::tuple(), "Length of a closed outline.");
    m.def(
        "centroid", [](py::handle p, py::handle b) { return math::centroid(points(p), numbers(b)); }, py::arg("points"),
        py::arg("bulges") = py::tuple());
    m.def(
        "point_in_polygon",
        [](py::handle p, py::handle q, py::handle b) { return math::pointInPolygon(point(p), points(q), numbers(b)); },
        py::arg("point"), py::arg("points"), py::arg("bulges") = py::tuple());
    m.def(
        "closest_on_segment",
        [](py::handle p, py::handle a, py::handle b) { return math::closestOnSegment(point(p), point(a), point(b)); },
        py::arg("point"), py::arg("a"), py::arg("b"));
    m.def(
        "circumcenter",
        [](py::handle a, py::handle b, py::handle c) {
            return orNone(math::circumcenter(point(a), point(b), point(c)));
        },
        py::arg("a"), py::arg("b"), py::arg("c"),
        "Centre of the circle through three points; None when they are in line.");
}

}  // namespace

void addGeometry(PyObject* module) {
    py::register_exception_translator([](std::exception_ptr error) {
        try {
            if (error) std::rethrow_exception(error);
        } catch (const PythonError&) {
            // Python's error is set already.
        }
    });
    auto m = py::reinterpret_borrow<py::module_>(module);
    defineVectors(m);
    defineBox(m);
    defineMatrix(m);
    defineFunctions(m);
}

}  // namespace kova::script::python
