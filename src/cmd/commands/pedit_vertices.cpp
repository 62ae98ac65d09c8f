#include "cmd/commands/pedit.hpp"
#include "cmd/drawing_aids.hpp"
#include "cmd/format.hpp"
#include "engine/edit_curve.hpp"
#include "engine/entities/object_plane.hpp"

namespace kova::cmd::commands {

using engine::PolylineEntity;
using math::Vector2;

PolylineEntity* VertexEditor::polyline() const {
    return dynamic_cast<PolylineEntity*>(document_.drawing().findById(id_));
}

void VertexEditor::change(const std::function<void(PolylineEntity&)>& edit) {
    PolylineEntity* p = polyline();
    if (p == nullptr) return;
    group_.begin();
    document_.modifyEntity(*p, [&](engine::Entity& e) { edit(static_cast<PolylineEntity&>(e)); });
}

Vector2 VertexEditor::place(std::size_t index) const {
    const PolylineEntity* p = polyline();
    return p != nullptr && index < p->vertices.size() ? engine::planFromObject(*p, p->vertices[index]) : Vector2{};
}

void VertexEditor::step(std::size_t& index, int by) const {
    const PolylineEntity* p = polyline();
    if (p == nullptr || p->vertices.empty()) return;
    const std::size_t n = p->vertices.size();
    if (by > 0 && (p->closed || index + 1 < n)) index = (index + 1) % n;
    if (by < 0 && (p->closed || index > 0)) index = (index + n - 1) % n;
}

void VertexEditor::tell(Ask& ask, std::size_t index) const {
    ask.message("Vertex " + std::to_string(index + 1) + " at " + pointDefault(document_.drawing(), place(index)));
}

Dialogue VertexEditor::run(Ask& ask) {
    bool forward = true;
    for (;;) {
        if (polyline() == nullptr || polyline()->vertices.empty()) co_return;
        marker_ = std::min(marker_, polyline()->vertices.size() - 1);
        const char* prompt = forward ? "Enter a vertex editing option "
                                       "[Next/Previous/Break/Insert/Move/Regen/Straighten/Tangent/Width/eXit] <N>:"
                                     : "Enter a vertex editing option "
                                       "[Next/Previous/Break/Insert/Move/Regen/Straighten/Tangent/Width/eXit] <P>:";
        const Answer answer =
            co_await ask.keyword(prompt, "Next Previous Break Insert Move Regen Straighten Tangent Width eXit");
        if (answer.is("eXit")) co_return;
        if (answer.is("Next")) forward = true;
        if (answer.is("Previous")) forward = false;
        if (answer.isEnter() || answer.is("Next") || answer.is("Previous")) {
            step(marker_, forward ? 1 : -1);
            tell(ask, marker_);
        } else if (answer.is("Insert")) {
            co_await insert(ask);
        } else if (answer.is("Move")) {
            co_await move(ask);
        } else if (answer.is("Tangent")) {
            co_await tangent(ask);
        } else if (answer.is("Width")) {
            co_await width(ask);
        } else if (answer.is("Break")) {
            co_await stretch(ask, true);
        } else if (answer.is("Straighten")) {
            co_await stretch(ask, false);
        }
    }
}

Dialogue VertexEditor::insert(Ask& ask) {
    const Answer answer = co_await ask.point("Specify location for new vertex:", {}, place(marker_));
    if (!answer.isPoint() || polyline() == nullptr) co_return;
    const auto local = engine::objectFromPlan(*polyline(), answer.point);
    if (!local) co_return;
    change([&](PolylineEntity& p) {
        const double width = p.startWidth(marker_);
        const double end = p.endWidth(marker_);
        p.setBulge(marker_, 0.0);
        if (p.hasWidths()) p.setWidths(marker_, width, width);
        p.insertVertex(marker_ + 1, *local, 0.0, width, end);
    });
}

Dialogue VertexEditor::move(Ask& ask) {
    const Answer answer = co_await ask.point("Specify new location for marked vertex:", {}, place(marker_));
    if (!answer.isPoint() || polyline() == nullptr) co_return;
    const auto local = engine::objectFromPlan(*polyline(), answer.point);
    if (local) change([&](PolylineEntity& p) { p.vertices[marker_] = *local; });
}

Dialogue VertexEditor::tangent(Ask& ask) {
    const Answer answer = co_await ask.angle("Specify direction of vertex tangent:", {}, place(marker_));
    if (!answer.isNumber()) co_return;
    const double direction = math::normalizeAngle(worldDirection(answer, document_.drawing()));
    change([&](PolylineEntity& p) {
        const auto vertex = static_cast<std::int32_t>(marker_);
        auto it = std::find_if(p.records.begin(), p.records.end(),
                               [&](const engine::PolylineRecord& r) { return r.vertex == vertex; });
        if (it == p.records.end()) {
            p.records.emplace_back();
            it = std::prev(p.records.end());
            it->vertex = vertex;
        }
        it->flags |= engine::PolylineRecord::kTangent;
        it->tangent = direction;
    });
}

Dialogue VertexEditor::width(Ask& ask) {
    if (polyline() == nullptr) co_return;
    const engine::Drawing& drawing = document_.drawing();
    const double now = polyline()->startWidth(marker_);
    const Answer start =
        co_await ask.distance(withDefault("Specify starting width for next segment", lengthDefault(drawing, now)), {},
                              place(marker_), kNotNegative);
    const double from = start.numberOr(now);
    const Answer end =
        co_await ask.distance(withDefault("Specify ending width for next segment", lengthDefault(drawing, from)), {},
                              place(marker_), kNotNegative);
    const double to = end.numberOr(from);
    change([&](PolylineEntity& p) { p.setWidths(marker_, from, to); });
}

Dialogue VertexEditor::stretch(Ask& ask, bool breaks) {
    std::size_t second = marker_;
    bool forward = true;
    for (;;) {
        const char* prompt =
            forward ? "Enter an option [Next/Previous/Go/eXit] <N>:" : "Enter an option [Next/Previous/Go/eXit] <P>:";
        const Answer answer = co_await ask.keyword(prompt, "Next Previous Go eXit");
        if (answer.is("eXit") || polyline() == nullptr) co_return;
        if (answer.is("Go")) break;
        if (answer.is("Next")) forward = true;
        if (answer.is("Previous")) forward = false;
        step(second, forward ? 1 : -1);
        tell(ask, second);
    }
    const std::size_t first = std::min(marker_, second);
    const std::size_t last = std::max(marker_, second);
    marker_ = first;
    if (breaks) co_return breakBetween(first, last);
    change([&](PolylineEntity& p) {
        for (std::size_t i = last; i-- > first + 1;) p.eraseVertex(i);
        p.setBulge(first, 0.0);
    });
}

void VertexEditor::breakBetween(std::size_t first, std::size_t last) {
    PolylineEntity* p = polyline();
    const auto curve = p != nullptr ? engine::EditCurve::of(*p) : std::nullopt;
    if (!curve) return;
    const double from = static_cast<double>(first);
    const double to = static_cast<double>(last);
    std::vector<std::unique_ptr<engine::Entity>> left;
    if (curve->closed()) {
        left.push_back(curve->part(to, from));
    } else {
        left.push_back(curve->part(0.0, from));
        left.push_back(curve->part(to, curve->end()));
    }
    std::erase(left, nullptr);
    if (left.empty()) return;
    group_.begin();
    document_.replaceEntity(*p, std::move(left.front()));
    if (left.size() > 1) document_.addEntity(std::move(left.back()));
}

}  // namespace kova::cmd::commands
