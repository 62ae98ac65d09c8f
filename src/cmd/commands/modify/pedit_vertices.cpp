#include "cmd/commands/modify/pedit.hpp"
#include "edit/new_entities.hpp"
#include "engine/inquiry/value_text.hpp"
#include "cmd/prompts/space_point.hpp"
#include "engine/curves/edit_curve.hpp"
#include "engine/model/object_plane.hpp"
#include "engine/curves/polyline_fit.hpp"
#include "engine/curves/space_fit.hpp"

namespace kova::cmd::commands {

using engine::Polyline3DEntity;
using engine::PolylineEntity;
using math::Vector2;
using math::Vector3;

PolylineEntity* VertexEditor::polyline() const {
    return dynamic_cast<PolylineEntity*>(document_.drawing().findById(id_));
}

Polyline3DEntity* VertexEditor::spacePolyline() const {
    return dynamic_cast<Polyline3DEntity*>(document_.drawing().findById(id_));
}

std::size_t VertexEditor::count() const {
    if (const PolylineEntity* p = polyline()) return p->fit.empty() ? p->vertices.size() : p->fit.size();
    const Polyline3DEntity* space = spacePolyline();
    if (space == nullptr) return 0;
    return space->frame.empty() ? space->vertices.size() : space->frame.size();
}

bool VertexEditor::closed() const {
    if (const PolylineEntity* p = polyline()) return p->closed;
    return spacePolyline() != nullptr && spacePolyline()->closed;
}

Vector3 VertexEditor::place(std::size_t index) const {
    if (index >= count()) return {};
    if (const PolylineEntity* p = polyline())
        return Vector3(engine::planFromObject(*p, p->fit.empty() ? p->vertices[index] : p->fit[index]), p->elevation);
    const Polyline3DEntity* space = spacePolyline();
    return space->frame.empty() ? space->vertices[index] : space->frame[index];
}

void VertexEditor::change(const std::function<void(PolylineEntity&)>& edit) {
    PolylineEntity* p = polyline();
    if (p == nullptr) return;
    const int segments = engine::sysVarInt(document_.drawing(), "SPLINESEGS");
    group_.begin();
    document_.modifyEntity(
        *p, [&](engine::Entity& e) { engine::editFrame(static_cast<PolylineEntity&>(e), segments, edit); });
}

void VertexEditor::changeSpace(const std::function<void(Polyline3DEntity&)>& edit) {
    Polyline3DEntity* p = spacePolyline();
    if (p == nullptr) return;
    const int segments = engine::sysVarInt(document_.drawing(), "SPLINESEGS");
    group_.begin();
    document_.modifyEntity(
        *p, [&](engine::Entity& e) { engine::editFrame(static_cast<Polyline3DEntity&>(e), segments, edit); });
}

void VertexEditor::step(std::size_t& index, int by) const {
    const std::size_t n = count();
    if (n == 0) return;
    if (by > 0 && (closed() || index + 1 < n)) index = (index + 1) % n;
    if (by < 0 && (closed() || index > 0)) index = (index + n - 1) % n;
}

void VertexEditor::tell(Ask& ask, std::size_t index) const {
    const Vector3 p = place(index);
    std::string text = "Vertex " + std::to_string(index + 1) + " at " + pointDefault(document_.drawing(), p.xy());
    if (spacePolyline() != nullptr) text += "," + lengthDefault(document_.drawing(), p.z);
    ask.message(text);
}

Dialogue VertexEditor::run(Ask& ask) {
    const bool space = spacePolyline() != nullptr;
    std::string question = "Enter a vertex editing option [Next/Previous/Break/Insert/Move/Regen/Straighten/";
    question += space ? "eXit]" : "Tangent/Width/eXit]";
    const char* keywords = space ? "Next Previous Break Insert Move Regen Straighten eXit"
                                 : "Next Previous Break Insert Move Regen Straighten Tangent Width eXit";
    bool forward = true;
    tell(ask, marker_);
    for (;;) {
        if (count() == 0) co_return;
        marker_ = std::min(marker_, count() - 1);
        const Answer answer = co_await ask.keyword(withDefault(question, forward ? "N" : "P"), keywords);
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
    const Vector3 from = place(marker_);
    const Answer answer = co_await ask.point("Specify location for new vertex:", {}, from.xy());
    if (!answer.isPoint()) co_return;
    const Vector3 p = spacePoint(answer, from.z, document_.drawing());
    changeSpace([&](Polyline3DEntity& target) {
        const std::size_t at = std::min(marker_ + 1, target.vertices.size());
        target.vertices.insert(target.vertices.begin() + static_cast<std::ptrdiff_t>(at), p);
    });
    if (polyline() == nullptr) co_return;
    const auto local = engine::objectFromPlan(*polyline(), answer.point);
    if (!local) co_return;
    change([&](PolylineEntity& target) {
        const double width = target.startWidth(marker_);
        const double end = target.endWidth(marker_);
        target.setBulge(marker_, 0.0);
        if (target.hasWidths()) target.setWidths(marker_, width, width);
        target.insertVertex(marker_ + 1, *local, 0.0, width, end);
    });
}

Dialogue VertexEditor::move(Ask& ask) {
    const Vector3 from = place(marker_);
    const Answer answer = co_await ask.point("Specify new location for marked vertex:", {}, from.xy());
    if (!answer.isPoint()) co_return;
    const Vector3 p = spacePoint(answer, from.z, document_.drawing());
    changeSpace([&](Polyline3DEntity& target) {
        if (marker_ < target.vertices.size()) target.vertices[marker_] = p;
    });
    if (polyline() == nullptr) co_return;
    const auto local = engine::objectFromPlan(*polyline(), answer.point);
    if (!local) co_return;
    change([&](PolylineEntity& target) {
        if (marker_ < target.vertices.size()) target.vertices[marker_] = *local;
    });
}

Dialogue VertexEditor::tangent(Ask& ask) {
    const Answer answer = co_await ask.angle("Specify direction of vertex tangent:", {}, place(marker_).xy());
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
                              place(marker_).xy(), kNotNegative);
    const double from = start.numberOr(now);
    const Answer end =
        co_await ask.distance(withDefault("Specify ending width for next segment", lengthDefault(drawing, from)), {},
                              place(marker_).xy(), kNotNegative);
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
        if (answer.is("eXit") || count() == 0) co_return;
        if (answer.is("Go")) break;
        if (answer.is("Next")) forward = true;
        if (answer.is("Previous")) forward = false;
        step(second, forward ? 1 : -1);
        tell(ask, second);
    }
    const std::size_t first = std::min(marker_, second);
    const std::size_t last = std::max(marker_, second);
    marker_ = first;
    if (!breaks)
        straighten(first, last);
    else if (spacePolyline() != nullptr)
        breakInSpace(first, last);
    else
        breakBetween(first, last);
}

void VertexEditor::straighten(std::size_t first, std::size_t last) {
    change([&](PolylineEntity& p) {
        for (std::size_t i = last; i-- > first + 1;) p.eraseVertex(i);
        p.setBulge(first, 0.0);
    });
    if (last < first + 2) return;
    changeSpace([&](Polyline3DEntity& p) {
        const auto begin = p.vertices.begin();
        if (last < p.vertices.size())
            p.vertices.erase(begin + static_cast<std::ptrdiff_t>(first + 1), begin + static_cast<std::ptrdiff_t>(last));
    });
}

void VertexEditor::breakBetween(std::size_t first, std::size_t last) {
    PolylineEntity* p = polyline();
    const auto curve = p != nullptr ? engine::EditCurve::of(*p) : std::nullopt;
    if (!curve) return;
    // Vertices of a frame: between two of them stand two arcs; a spline passes them by.
    const auto along = [&](std::size_t vertex) {
        if (p->fit.empty()) return static_cast<double>(vertex);
        if (!p->spline) return std::min(2.0 * static_cast<double>(vertex), curve->end());
        return vertex == 0 && !p->closed             ? curve->start()
               : vertex + 1 == count() && !p->closed ? curve->end()
                                                     : curve->nearest(place(vertex).xy());
    };
    const double from = along(first);
    const double to = along(last);
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

void VertexEditor::breakInSpace(std::size_t first, std::size_t last) {
    const Polyline3DEntity* p = spacePolyline();
    const std::vector<Vector3> all = p->frame.empty() ? p->vertices : p->frame;
    const auto at = [&](std::size_t i) { return all.begin() + static_cast<std::ptrdiff_t>(i); };
    std::vector<std::vector<Vector3>> parts;
    if (p->closed) {
        parts.emplace_back(at(last), all.end());
        parts.back().insert(parts.back().end(), all.begin(), at(first + 1));
    } else {
        parts.emplace_back(all.begin(), at(first + 1));
        parts.emplace_back(at(last), all.end());
    }
    std::erase_if(parts, [](const std::vector<Vector3>& part) { return part.size() < 2; });
    if (parts.empty()) return;
    const int segments = engine::sysVarInt(document_.drawing(), "SPLINESEGS");
    const auto shape = [&](Polyline3DEntity& target, const std::vector<Vector3>& part) {
        engine::editFrame(target, segments, [&](Polyline3DEntity& t) {
            t.vertices = part;
            t.closed = false;
        });
    };
    group_.begin();
    std::unique_ptr<engine::Entity> rest = p->clone();
    rest->setHandle(0);
    document_.modifyEntity(*spacePolyline(),
                           [&](engine::Entity& e) { shape(static_cast<Polyline3DEntity&>(e), parts.front()); });
    if (parts.size() < 2) return;
    shape(static_cast<Polyline3DEntity&>(*rest), parts.back());
    document_.addEntity(std::move(rest));
}

}  // namespace kova::cmd::commands
