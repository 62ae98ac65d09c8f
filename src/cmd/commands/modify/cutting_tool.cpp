#include "cmd/commands/modify/cutting_tool.hpp"

#include "edit/new_entities.hpp"
#include "cmd/pick_request.hpp"
#include "doc/pick/picking.hpp"
#include "doc/spatial_index.hpp"
#include "engine/curves/self_meetings.hpp"

namespace kova::cmd::commands {

using engine::EdgeSink;
using engine::EditCurve;
using math::Bounds2;
using math::Vector2;

namespace {

constexpr const char* kQuickMode = "trimQuickMode";
/// The first stretch around a pick that is searched for edges, as part of the whole; then four times as much, and so
/// on. The more there is, the nearer the next edge may be: few are looked at for a pick whatever the drawing's size.
double firstWindow(const engine::EntityList& space) {
    return 1.0 / static_cast<double>(std::max<std::size_t>(space.size(), 64));
}

bool isCurve(const engine::Entity& entity) { return EditCurve::of(entity).has_value(); }

/// Box of the stretch between two places.
Bounds2 boxOf(const EditCurve& curve, double u0, double u1) {
    Bounds2 box;
    box.expand(curve.pointAt(u0));
    box.expand(curve.pointAt(u1));
    if (curve.isUnbounded()) return box;
    const auto& pieces = curve.pieces();
    const auto last = static_cast<double>(pieces.size() - 1);
    const auto first = static_cast<std::size_t>(std::clamp(std::floor(u0), 0.0, last));
    const auto end = static_cast<std::size_t>(std::clamp(std::floor(u1), 0.0, last));
    for (std::size_t i = first; i <= end; ++i)
        if (!pieces[i].isStraight() || (i > first && i < end))
            box.expand(pieces[i].bounds());
        else if (i > first)
            box.expand(pieces[i].from);
        else if (i < end)
            box.expand(pieces[i].element.p);
    return box;
}

}  // namespace

Dialogue CuttingTool::dialogue(Ask& ask) {
    co_await askEdges(ask);
    StepGroup group(document(), trims_ ? "TRIM" : "EXTEND");
    for (;;) {
        PickRequest request;
        request.prompt =
            trims_ ? "Select object to trim or shift-select to extend or "
                     "[Fence/Crossing/mOde/Project/Edge/eRase/Undo]:"
                   : "Select object to extend or shift-select to trim or [Fence/Crossing/mOde/Project/Edge/Undo]:";
        request.options = trims_ ? "Fence Crossing mOde Project Edge eRase Undo"
                                                : "Fence Crossing mOde Project Edge Undo";
        const Answer answer = co_await askPick(ask, std::move(request));
        if (answer.isEnter()) co_return;
        if (answer.isObject()) {
            engine::Entity* entity = drawing().findById(answer.id);
            if (entity == nullptr) continue;
            if (!isCurve(*entity)) {
                message(trims_ ? "Cannot trim that object." : "Cannot extend that object.");
                continue;
            }
            group.begin();
            std::vector<std::uint64_t> parts;
            if (!changeOne(*entity, answer.point, true, parts)) group.drop();
            continue;
        }
        if (answer.is("Undo")) {
            if (!group.drop()) message("Command has been completely undone.");
            continue;
        }
        co_await askOption(ask, answer, group);
    }
}

Task<bool> CuttingTool::askOption(Ask& ask, const Answer& answer, StepGroup& group) {
    // The answer goes with the caller's next question: what it says is looked at first.
    const std::string word = answer.word;
    if (word == "FENCE") co_await askFence(ask, group);
    if (word == "CROSSING") co_await askCrossing(ask, group);
    if (word == "MODE") co_await askMode(ask);
    if (word == "PROJECT") co_await askProjection(ask);
    if (word == "EDGE") co_await askEdgeMode(ask);
    if (word == "ERASE") co_await askErase(ask, group);
    co_return true;
}

Dialogue CuttingTool::askEdges(Ask& ask) {
    static constexpr const char* kProjections[] = {"None", "UCS", "View"};
    std::string settings = "Current settings: Projection=";
    settings += kProjections[std::clamp(engine::sysVarInt(drawing(), "PROJMODE"), 0, 2)];
    settings += implied() ? ", Edge=Extend" : ", Edge=None";
    settings += quick() ? ", Mode=Quick" : ", Mode=Standard";
    message(settings);
    if (quick()) {
        allEdges_ = true;
        co_return;
    }
    message(trims_ ? "Select cutting edges ..." : "Select boundary edges ...");
    const Answer selected = co_await ask.selection("Select objects or <select all>:");
    allEdges_ = selected.ids.empty();
    edges_.insert(selected.ids.begin(), selected.ids.end());
}

bool CuttingTool::implied() const { return engine::sysVarInt(drawing(), "EDGEMODE") == 1; }

bool CuttingTool::quick() const { return remembered(document(), kQuickMode, 0.0) != 0.0; }

Dialogue CuttingTool::askProjection(Ask& ask) {
    const int mode = std::clamp(engine::sysVarInt(drawing(), "PROJMODE"), 0, 2);
    static constexpr const char* kNames[] = {"None", "Ucs", "View"};
    const Answer answer =
        co_await ask.keyword(withDefault("Enter a projection option [None/Ucs/View]", kNames[mode]), "None Ucs View");
    if (answer.isEnter()) co_return;
    const int chosen = answer.is("None") ? 0 : answer.is("Ucs") ? 1 : 2;
    document().setVariable("PROJMODE", engine::SysVarValue(std::int32_t{chosen}));
}

Dialogue CuttingTool::askEdgeMode(Ask& ask) {
    const Answer answer = co_await ask.keyword(
        withDefault("Enter an implied edge extension mode [Extend/No extend]", implied() ? "Extend" : "No extend"),
        "Extend No");
    if (answer.isEnter()) co_return;
    document().setVariable("EDGEMODE", engine::SysVarValue(std::int32_t{answer.is("Extend") ? 1 : 0}));
}

Dialogue CuttingTool::askMode(Ask& ask) {
    const std::string question =
        trims_ ? "Enter a trim mode option [Quick/Standard]" : "Enter an extend mode option [Quick/Standard]";
    const Answer answer = co_await ask.keyword(withDefault(question, quick() ? "Quick" : "Standard"), "Quick Standard");
    if (answer.isEnter()) co_return;
    remember(document(), kQuickMode, answer.is("Quick") ? 1.0 : 0.0);
    if (answer.is("Quick")) allEdges_ = true;
}

Dialogue CuttingTool::askErase(Ask& ask, StepGroup& group) {
    document().selection().clear();
    const Answer selected = co_await ask.selection("Select objects to erase or <exit>:");
    if (selected.ids.empty()) co_return;
    group.begin();
    document().removeEntities(selected.ids);
}

Dialogue CuttingTool::askFence(Ask& ask, StepGroup& group) {
    std::vector<Vector2> fence;
    for (;;) {
        const char* prompt = fence.empty()       ? "Specify first fence point:"
                             : fence.size() == 1 ? "Specify next fence point or [Undo]:"
                                                 : "Specify next fence point or [Undo]:";
        const Answer answer = co_await ask.point(prompt, fence.empty() ? "" : "Undo");
        if (answer.isEnter()) break;
        if (answer.is("Undo"))
            fence.pop_back();
        else
            fence.push_back(answer.point);
    }
    if (fence.size() < 2) co_return;
    // Each place where the fence crosses an object counts as a pick.
    EdgeSink sink;
    engine::Path path;
    path.polygon(fence, false);
    sink.stroke(path, {}, {});
    std::vector<std::pair<std::uint64_t, std::vector<Vector2>>> picks;
    for (const std::uint64_t id : selectFence(document(), fence)) {
        const engine::Entity* entity = drawing().findById(id);
        const auto curve = entity != nullptr ? EditCurve::of(*entity) : std::nullopt;
        if (!curve) continue;
        std::vector<double> places;
        for (const EdgeSink::Edge& edge : sink.edges())
            engine::cutsWith(*curve, curve->start(), curve->end(), edge, false, places);
        std::vector<Vector2> points;
        for (const double u : places) points.push_back(curve->pointAt(u));
        picks.emplace_back(id, std::move(points));
    }
    change(group, picks);
}

Dialogue CuttingTool::askCrossing(Ask& ask, StepGroup& group) {
    const Answer first = co_await ask.point("Specify first corner:");
    if (!first.isPoint()) co_return;
    const Answer second = co_await ask.point("Specify opposite corner:");
    if (!second.isPoint()) co_return;
    Bounds2 box;
    box.expand(first.point);
    box.expand(second.point);
    std::vector<std::pair<std::uint64_t, std::vector<Vector2>>> picks;
    for (const std::uint64_t id : selectBox(document(), first.point, second.point, true)) {
        const engine::Entity* entity = drawing().findById(id);
        const auto curve = entity != nullptr ? EditCurve::of(*entity) : std::nullopt;
        if (!curve) continue;
        std::vector<Vector2> points;
        points.push_back(curve->pointAt(curve->nearest(box.center())));
        picks.emplace_back(id, std::move(points));
    }
    change(group, picks);
}

void CuttingTool::change(StepGroup& group, const std::vector<std::pair<std::uint64_t, std::vector<Vector2>>>& picks) {
    group.begin();
    bool any = false;
    for (const auto& [id, points] : picks) {
        std::vector<std::uint64_t> parts{id};
        for (const Vector2& point : points) {
            // The pick belongs to whichever part lies there by now.
            engine::Entity* nearest = nullptr;
            for (const std::uint64_t part : parts)
                if (engine::Entity* e = drawing().findById(part))
                    if (nearest == nullptr || e->distanceTo(point) < nearest->distanceTo(point)) nearest = e;
            if (nearest == nullptr || nearest->distanceTo(point) > 1e-6 * (1.0 + point.length())) continue;
            any = changeOne(*nearest, point, false, parts) || any;
        }
    }
    if (any) return;
    group.drop();
    message("Object does not intersect an edge.");
}

bool CuttingTool::changeOne(engine::Entity& entity, const Vector2& pick, bool speaks,
                            std::vector<std::uint64_t>& parts) {
    return trims_ ? trim(entity, pick, speaks, parts) : extend(entity, pick, speaks, parts);
}

bool CuttingTool::isEdge(const engine::Entity& entity) const {
    if (!allEdges_ && !edges_.contains(entity.id())) return false;
    if (!entity.visible || !engine::canBeEdge(entity)) return false;
    const engine::Layer* layer = drawing().layers.find(entity.layer);
    return layer == nullptr || layer->isVisible();
}

template <class Use>
void CuttingTool::forEdges(const Bounds2& window, const engine::Entity* but, const Use& use) {
    EdgeSink sink(window);
    const auto offer = [&](const engine::Entity& entity) {
        if (&entity == but || !isEdge(entity)) return;
        sink.clear();
        sink.add(entity);
        for (const EdgeSink::Edge& edge : sink.edges()) use(edge);
    };
    if (!window.is_empty()) {
        for (const engine::Entity* entity : document().spatialIndex().query(window)) offer(*entity);
    } else if (allEdges_) {
        for (const engine::Entity& entity : drawing().currentSpace()) offer(entity);
    } else {
        for (const std::uint64_t id : edges_)
            if (const engine::Entity* entity = drawing().findById(id)) offer(*entity);
    }
}

std::vector<double> CuttingTool::cutsAround(const EditCurve& curve, double pick) {
    std::vector<double> cuts;
    const bool longer = implied();
    // Among the edges it cuts itself where it crosses itself.
    std::optional<engine::SelfMeetings> self;
    if (!curve.isUnbounded() && engine::SelfMeetings::possible(curve) && isEdge(curve.entity())) self.emplace(curve);
    const auto everywhere = [&] {
        cuts.clear();
        forEdges({}, &curve.entity(), [&](const EdgeSink::Edge& edge) {
            engine::cutsWith(curve, curve.start(), curve.end(), edge, longer, cuts);
        });
        if (self) self->cuts(curve.start(), curve.end(), cuts);
        return cuts;
    };
    if (longer) return everywhere();
    // Mostly the nearest edges are near: a long object among many edges is not cut at all of them.
    const auto search = [&](double lo, double hi) {
        if (lo > hi) return;
        forEdges(boxOf(curve, lo, hi).inflated(1e-9 * curve.scale()), &curve.entity(),
                 [&](const EdgeSink::Edge& edge) { engine::cutsWith(curve, lo, hi, edge, false, cuts); });
        if (self) self->cuts(lo, hi, cuts);
    };
    double whole = static_cast<double>(curve.pieces().size());
    if (curve.isUnbounded()) {
        const Bounds2 extents = document().spatialIndex().extents();
        whole = 2.0 * (extents.width() + extents.height() + curve.pointAt(pick).distance_to(extents.center()));
        if (extents.is_empty() || !std::isfinite(whole) || !(whole > 0.0)) return everywhere();
    }
    for (double reach = whole * firstWindow(drawing().currentSpace());; reach *= 4.0) {
        const double lo = std::max(pick - reach, curve.start());
        const double hi = std::min(pick + reach, curve.end());
        const bool all = curve.closed()        ? reach >= whole / 2.0
                         : curve.isUnbounded() ? reach >= whole
                                               : lo <= 0.0 && hi >= whole;
        // Other construction lines may cross an unbounded one anywhere.
        if (all && curve.isUnbounded()) return everywhere();
        cuts.clear();
        if (all) {
            search(0.0, whole);
            return cuts;
        }
        search(lo, hi);
        bool below = lo <= curve.start() && !curve.closed();
        bool above = hi >= curve.end() && !curve.closed();
        if (curve.closed()) {
            // What reaches over the start goes on at the other end.
            search(pick - reach + whole, whole);
            search(0.0, pick + reach - whole);
        }
        for (const double u : cuts) {
            double ahead = u - pick;
            if (curve.closed() && ahead > whole / 2.0) ahead -= whole;
            if (curve.closed() && ahead < -whole / 2.0) ahead += whole;
            (ahead > 0.0 ? above : below) = true;
        }
        if (below && above) return cuts;
    }
}

std::vector<double> CuttingTool::cutsBeyond(const EditCurve& curve, bool atEnd) {
    std::vector<double> cuts;
    const std::size_t index = atEnd ? curve.pieces().size() - 1 : 0;
    const engine::CurvePiece& piece = curve.pieces()[index];
    // A curve of several pieces may be extended to another one of them.
    const engine::Entity* but = curve.pieces().size() > 1 ? nullptr : &curve.entity();
    const Bounds2 extents = document().spatialIndex().extents();
    const bool longer = implied();
    if (longer || !piece.isStraight() || !(extents.width() + extents.height() > 0.0)) {
        forEdges({}, but, [&](const EdgeSink::Edge& edge) { engine::extensionCuts(curve, atEnd, edge, longer, cuts); });
        return cuts;
    }
    const double u = atEnd ? curve.end() : curve.start();
    const Vector2 from = curve.pointAt(u);
    const Vector2 way = curve.tangentAt(u).normalized() * (atEnd ? 1.0 : -1.0);
    const double size = extents.width() + extents.height();
    const double most = size + from.distance_to(extents.center());
    const double speed = curve.tangentAt(u).length();
    for (double reach = size * firstWindow(drawing().currentSpace());; reach *= 4.0) {
        Bounds2 window(from, from);
        window.expand(from + way * reach);
        cuts.clear();
        // The last round takes all edges: construction lines may cross anywhere.
        const bool last = reach > most;
        forEdges(last ? Bounds2{} : window.inflated(1e-9 * curve.scale()), but,
                 [&](const EdgeSink::Edge& edge) { engine::extensionCuts(curve, atEnd, edge, false, cuts); });
        if (last) return cuts;
        if (std::any_of(cuts.begin(), cuts.end(), [&](double v) { return std::abs(v - u) * speed <= reach; }))
            return cuts;
    }
}

bool CuttingTool::trim(engine::Entity& entity, const Vector2& pick, bool speaks, std::vector<std::uint64_t>& parts) {
    const auto curve = EditCurve::of(entity);
    if (!curve) return false;
    const double at = curve->nearest(pick);
    const std::vector<double> cuts = cutsAround(*curve, at);
    auto left = engine::trimmedCurve(*curve, at, cuts);
    if (!left) {
        if (quick()) {
            document().removeEntity(entity);
            return true;
        }
        if (!speaks) return false;
        const bool once = curve->closed() && !cuts.empty();
        if (once && entity.type() == engine::EntityType::Circle)
            message("Circle must intersect twice.");
        else if (once)
            message("Closed object must intersect twice.");
        else
            message("Object does not intersect an edge.");
        return false;
    }
    const bool edge = edges_.contains(entity.id());
    if (left->empty()) {
        document().removeEntity(entity);
        return true;
    }
    document().replaceEntity(entity, std::move(left->front()));
    for (std::size_t i = 1; i < left->size(); ++i) {
        const std::uint64_t id = document().addEntity(std::move((*left)[i])).id();
        parts.push_back(id);
        if (edge) edges_.insert(id);
    }
    return true;
}

bool CuttingTool::extend(engine::Entity& entity, const Vector2& pick, bool speaks, std::vector<std::uint64_t>&) {
    const auto curve = EditCurve::of(entity);
    if (!curve) return false;
    const double at = curve->nearest(pick);
    const bool atEnd = !curve->isUnbounded() && curve->length(curve->start(), at) > curve->length(at, curve->end());
    if (!curve->extendable(atEnd)) {
        if (speaks) message("Cannot extend that object.");
        return false;
    }
    auto longer = engine::extendedCurve(*curve, atEnd, cutsBeyond(*curve, atEnd));
    if (!longer) {
        if (speaks) message("Object does not intersect an edge.");
        return false;
    }
    document().replaceEntity(entity, std::move(longer));
    return true;
}

}  // namespace kova::cmd::commands
