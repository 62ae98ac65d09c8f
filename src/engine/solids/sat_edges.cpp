#include "engine/solids/sat_edges.hpp"

#include "engine/solids/sat_records.hpp"
#include "math/angles.hpp"

namespace kova::engine {

using math::Matrix4;
using math::Vector2;
using math::Vector3;
using Kind = ModelerToken::Kind;

namespace {

constexpr std::size_t kMaxControlPoints = 100'000;
constexpr std::size_t kSamplesPerSpan = 8;
constexpr std::size_t kMaxSamples = 1024;

Vector3 triple(const std::vector<double>& v, std::size_t at) { return {v[at], v[at + 1], v[at + 2]}; }

/// A B-spline of a modeller record, with its full knot list.
struct ModelerSpline {
    std::size_t degree = 0;
    std::vector<double> knots;
    std::vector<Vector3> points;
    std::vector<double> weights;

    /// De Boor's rule at parameter t in the knot span [knots[span], knots[span + 1]].
    Vector3 at(double t, std::size_t span) const {
        std::vector<Vector3> p(degree + 1);
        std::vector<double> w(degree + 1);
        for (std::size_t i = 0; i <= degree; ++i) {
            const std::size_t index = span - degree + i;
            w[i] = weights.empty() ? 1.0 : weights[index];
            p[i] = points[index] * w[i];
        }
        for (std::size_t level = 1; level <= degree; ++level) {
            for (std::size_t i = degree; i >= level; --i) {
                const double low = knots[span - degree + i];
                const double high = knots[span + 1 + i - level];
                const double share = high > low ? (t - low) / (high - low) : 0.0;
                p[i] = p[i - 1] * (1.0 - share) + p[i] * share;
                w[i] = w[i - 1] * (1.0 - share) + w[i] * share;
            }
        }
        return w[degree] != 0.0 ? p[degree] / w[degree] : p[degree];
    }

    std::vector<Vector3> samples() const {
        std::vector<Vector3> out;
        std::vector<std::size_t> spans;
        for (std::size_t i = degree; i + 1 < knots.size() - degree; ++i)
            if (knots[i + 1] > knots[i]) spans.push_back(i);
        if (spans.empty()) return out;
        const std::size_t each = std::clamp<std::size_t>(kMaxSamples / spans.size(), 1, kSamplesPerSpan);
        out.push_back(at(knots[spans.front()], spans.front()));
        for (const std::size_t span : spans)
            for (std::size_t k = 1; k <= each; ++k)
                out.push_back(at(
                    knots[span] + (knots[span + 1] - knots[span]) * static_cast<double>(k) / static_cast<double>(each),
                    span));
        return out;
    }
};

/// The first curve in a record: "nubs" or "nurbs", degree, closure, number of knots, knots with multiplicities, control
/// points. The multiplicity of the end knots is the degree, one less than a full knot list has.
std::optional<ModelerSpline> readSpline(std::span<const ModelerToken> tokens) {
    const auto start = std::find_if(tokens.begin(), tokens.end(), [](const ModelerToken& t) {
        return t.kind == Kind::Word && (t.word == "nubs" || t.word == "nurbs");
    });
    if (start == tokens.end()) return std::nullopt;
    const bool rational = start->word == "nurbs";
    auto at = start + 1;
    const auto next = [&](double& value) {
        if (at == tokens.end() || at->kind != Kind::Number || !std::isfinite(at->number)) return false;
        value = (at++)->number;
        return true;
    };
    double degree = 0.0;
    double count = 0.0;
    if (!next(degree)) return std::nullopt;
    if (at != tokens.end() && at->kind != Kind::Number) ++at;  // open, closed or periodic
    if (!next(count) || degree < 1.0 || degree > 25.0 || count < 2.0 || count > static_cast<double>(kMaxControlPoints))
        return std::nullopt;
    ModelerSpline spline;
    spline.degree = static_cast<std::size_t>(degree);
    const auto distinct = static_cast<std::size_t>(count);
    for (std::size_t i = 0; i < distinct; ++i) {
        double knot = 0.0;
        double times = 0.0;
        if (!next(knot) || !next(times) || times < 1.0 || times > degree + 1.0) return std::nullopt;
        if (!spline.knots.empty() && knot < spline.knots.back()) return std::nullopt;
        const bool end = i == 0 || i + 1 == distinct;
        const std::size_t copies = end ? spline.degree + 1 : static_cast<std::size_t>(times);
        spline.knots.insert(spline.knots.end(), copies, knot);
    }
    const std::size_t controls = spline.knots.size() - spline.degree - 1;
    if (controls > kMaxControlPoints) return std::nullopt;
    for (std::size_t i = 0; i < controls; ++i) {
        Vector3 p;
        double weight = 1.0;
        if (!next(p.x) || !next(p.y) || !next(p.z) || (rational && !next(weight))) return std::nullopt;
        spline.points.push_back(p);
        if (rational) spline.weights.push_back(weight);
    }
    return spline;
}

class Body {
public:
    explicit Body(const ModelerData& data) : data_(data) {}

    ModelerEdges edges() const {
        ModelerEdges out;
        const Matrix4 place = placement();
        for (const ModelerRecord& record : data_.records) {
            if (record.kind != ModelerRecordKind::Edge) continue;
            if (out.edges.size() >= kMaxModelerEdges) break;
            if (auto e = edge(record)) {
                apply(*e, place);
                out.edges.push_back(std::move(*e));
            }
        }
        return out;
    }

private:
    Matrix4 placement() const {
        for (const ModelerRecord& record : data_.records) {
            if (record.kind != ModelerRecordKind::Body) continue;
            for (const ModelerToken& t : data_.tokensOf(record)) {
                const ModelerRecord* target = data_.target(t);
                if (target == nullptr || target->kind != ModelerRecordKind::Transform) continue;
                if (const auto m = modelerMatrix(ownNumbers(data_, *target))) return *m;
            }
            break;
        }
        return {};
    }

    std::optional<Vector3> pointOf(const ModelerRecord& vertex) const {
        for (const ModelerToken& t : data_.tokensOf(vertex)) {
            const ModelerRecord* point = data_.target(t);
            if (point == nullptr || point->kind != ModelerRecordKind::Point) continue;
            const std::vector<double> v = ownNumbers(data_, *point);
            if (v.size() < 3) return std::nullopt;
            const Vector3 p = triple(v, 0);
            return p.is_finite() ? std::optional(p) : std::nullopt;
        }
        return std::nullopt;
    }

    std::optional<ModelerEdge> edge(const ModelerRecord& record) const {
        std::vector<Vector3> ends;
        const ModelerRecord* curve = nullptr;
        bool reversed = false;
        for (const ModelerToken& t : data_.tokensOf(record)) {
            const bool sense = t.kind == Kind::Flag || (data_.numericFlags() && t.kind == Kind::Number);
            if (sense && curve != nullptr) {
                reversed = t.number != 0.0;
                break;
            }
            const ModelerRecord* target = data_.target(t);
            if (target == nullptr) continue;
            if (target->kind == ModelerRecordKind::Vertex && ends.size() < 2) {
                if (const auto p = pointOf(*target)) ends.push_back(*p);
            } else if (target->kind == ModelerRecordKind::Straight || target->kind == ModelerRecordKind::Ellipse ||
                       target->kind == ModelerRecordKind::Spline) {
                curve = target;
            }
        }
        // An edge without a curve is a point (the apex of a cone).
        if (ends.empty() || curve == nullptr) return std::nullopt;
        if (ends.size() == 1) ends.push_back(ends[0]);
        if (reversed) std::swap(ends[0], ends[1]);
        ModelerEdge e;
        e.start = ends[0];
        e.end = ends[1];
        if (curve->kind == ModelerRecordKind::Ellipse) setArc(e, ownNumbers(data_, *curve));
        if (curve->kind == ModelerRecordKind::Spline) setCurve(e, data_.tokensOf(*curve));
        return e;
    }

    /// Centre, normal, major axis, ratio of the axes. Runs from start to end about the normal.
    static void setArc(ModelerEdge& e, const std::vector<double>& v) {
        if (v.size() < 10 || !std::all_of(v.begin(), v.begin() + 10, [](double x) { return std::isfinite(x); })) return;
        e.center = triple(v, 0);
        e.u = triple(v, 6);
        e.v = triple(v, 3).normalized().cross(e.u) * v[9];
        const double uu = e.u.length_squared();
        const double vv = e.v.length_squared();
        if (!(uu > 0.0) || !(vv > 0.0)) return;
        e.kind = ModelerEdge::Kind::Arc;
        const auto parameter = [&](const Vector3& p) {
            const Vector3 d = p - e.center;
            return std::atan2(d.dot(e.v) / vv, d.dot(e.u) / uu);
        };
        e.t0 = parameter(e.start);
        const bool full = (e.end - e.start).length_squared() <= 1e-18 * uu;
        e.t1 = e.t0 + (full ? math::kTwoPi : math::sweepAngle(e.t0, parameter(e.end)));
    }

    /// The stretch of the spline between the points nearest to the edge's ends.
    static void setCurve(ModelerEdge& e, std::span<const ModelerToken> tokens) {
        const auto spline = readSpline(tokens);
        std::vector<Vector3> points = spline ? spline->samples() : std::vector<Vector3>{};
        if (points.size() < 2) return;
        const auto nearest = [&](const Vector3& p) {
            const auto closer = [&](const Vector3& a, const Vector3& b) {
                return (a - p).length_squared() < (b - p).length_squared();
            };
            return std::min_element(points.begin(), points.end(), closer) - points.begin();
        };
        const bool full = (e.end - e.start).length_squared() == 0.0;
        auto first = full ? 0 : nearest(e.start);
        auto last = full ? static_cast<std::ptrdiff_t>(points.size()) - 1 : nearest(e.end);
        if (first > last) {
            std::reverse(points.begin(), points.end());
            const auto size = static_cast<std::ptrdiff_t>(points.size());
            first = size - 1 - first;
            last = size - 1 - last;
        }
        e.kind = ModelerEdge::Kind::Curve;
        e.points.assign(points.begin() + first, points.begin() + last + 1);
        e.points.front() = e.start;
        if (e.points.size() > 1)
            e.points.back() = e.end;
        else
            e.points.push_back(e.end);
    }

    static void apply(ModelerEdge& e, const Matrix4& m) {
        e.start = m.transform_point(e.start);
        e.end = m.transform_point(e.end);
        e.center = m.transform_point(e.center);
        e.u = m.transform_direction(e.u);
        e.v = m.transform_direction(e.v);
        for (Vector3& p : e.points) p = m.transform_point(p);
    }

    const ModelerData& data_;
};

}  // namespace

std::optional<Matrix4> modelerMatrix(const std::vector<double>& v) {
    if (v.size() < 13) return std::nullopt;
    Matrix4 m;
    for (int row = 0; row < 3; ++row) {
        for (int column = 0; column < 3; ++column)
            m(row, column) = v[static_cast<std::size_t>(column * 3 + row)] * v[12];
        m(row, 3) = v[static_cast<std::size_t>(9 + row)];
    }
    for (const double x : m.m)
        if (!std::isfinite(x)) return std::nullopt;
    return m;
}

Path ModelerEdges::plan() const {
    Path path;
    for (const ModelerEdge& e : edges) {
        if (e.kind == ModelerEdge::Kind::Arc) {
            const Vector2 d = Vector2::from_angle(e.t0);
            path.moveTo(e.center.xy() + e.u.xy() * d.x + e.v.xy() * d.y);
            path.ellipticArc(e.center.xy(), e.u.xy(), e.v.xy(), e.t0, e.t1);
        } else if (e.kind == ModelerEdge::Kind::Curve) {
            for (std::size_t i = 0; i < e.points.size(); ++i)
                if (i == 0)
                    path.moveTo(e.points[i].xy());
                else
                    path.lineTo(e.points[i].xy());
        } else if (!e.start.xy().near_equal(e.end.xy(), 1e-12)) {
            path.moveTo(e.start.xy()).lineTo(e.end.xy());
        }
    }
    return path;
}

ModelerEdges modelerEdges(std::string_view data) {
    const std::optional<ModelerData> parsed = readModelerData(data);
    return parsed ? Body(*parsed).edges() : ModelerEdges{};
}

}  // namespace kova::engine
