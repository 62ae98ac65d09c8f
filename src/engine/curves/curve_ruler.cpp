#include "engine/curves/curve_ruler.hpp"

#include "engine/model/outline.hpp"

namespace kova::cmd {

using engine::PathElement;
using math::Vector2;
using Kind = PathElement::Kind;

namespace {

/// The first figure that an entity strokes.
class FigureSink final : public engine::OutlineSink {
public:
    using OutlineSink::fill;
    using OutlineSink::stroke;
    void stroke(engine::PathView path, const engine::OutlineStyle&, const engine::StrokeOptions&) override {
        if (!figure.empty()) return;
        for (const PathElement& e : path) {
            if (e.kind == Kind::Move && figure.size() > 1) return;
            figure.push_back(e);
        }
    }
    void fill(engine::PathView, const engine::OutlineStyle&, const engine::FillOptions&) override {}
    void text(const engine::TextRun&, const engine::OutlineStyle&) override {}
    std::vector<PathElement> figure;
};

}  // namespace

bool isCurve(const engine::Entity& entity) {
    using engine::EntityType;
    switch (entity.type()) {
        case EntityType::Line:
        case EntityType::Circle:
        case EntityType::Arc:
        case EntityType::Ellipse:
        case EntityType::Polyline:
        case EntityType::Polyline3D:
        case EntityType::Spline:
            return true;
        default:
            return false;
    }
}

CurveRuler::CurveRuler(const engine::Entity& entity) {
    FigureSink sink;
    entity.emit(sink, engine::outlineStyle(entity));
    figure_ = std::move(sink.figure);
    Vector2 from;
    for (std::size_t i = 0; i < figure_.size(); ++i) {
        if (i > 0) addElement(i, from);
        from = figure_[i].p;
    }
}

bool CurveRuler::closed() const {
    return figure_.size() > 1 && (figure_.back().kind == Kind::Close ||
                                  figure_.front().p.distance_to(figure_.back().p) <= 1e-9 * (1.0 + length()));
}

CurveRuler::Place CurveRuler::at(double length) const {
    if (marks_.empty()) return {};
    auto mark =
        std::lower_bound(marks_.begin(), marks_.end(), length, [](const Mark& m, double v) { return m.length < v; });
    if (mark == marks_.end()) --mark;
    const Mark& m = *mark;
    const Mark* before = mark == marks_.begin() ? nullptr : &*std::prev(mark);
    const double start = before != nullptr ? before->length : 0.0;
    const double t0 = before != nullptr && before->element == m.element ? before->t : 0.0;
    const double share = m.length > start ? std::clamp((length - start) / (m.length - start), 0.0, 1.0) : 0.0;
    const PathElement& e = figure_[m.element];
    const Vector2 from = figure_[m.element - 1].p;
    const double t = t0 + (m.t - t0) * share;
    return {engine::elementPoint(e, from, t), engine::elementTangent(e, from, t).normalized()};
}

void CurveRuler::addElement(std::size_t i, const Vector2& from) {
    const PathElement& e = figure_[i];
    const bool even = e.kind == Kind::Line || e.kind == Kind::Close ||
                      (e.kind == Kind::Arc && std::abs(e.a.length() - e.b.length()) <= 1e-12 * e.a.length());
    const int parts = even ? 1 : 256;
    double total = length();
    const auto speed = [&](double t) { return engine::elementTangent(e, from, t).length(); };
    for (int k = 0; k < parts; ++k) {
        const double t0 = static_cast<double>(k) / parts;
        const double t1 = static_cast<double>(k + 1) / parts;
        // Simpson's rule: the parts are short.
        total += even ? engine::elementLength(e, from)
                      : (t1 - t0) / 6.0 * (speed(t0) + 4.0 * speed((t0 + t1) / 2.0) + speed(t1));
        marks_.push_back({total, i, t1});
    }
}

}  // namespace kova::cmd
