#include "edit/boundary_shapes.hpp"

#include <map>

#include "doc/spatial_index.hpp"
#include "engine/entities/line.hpp"
#include "math/kernels/end_loops.hpp"
#include "math/curves/polygon.hpp"

namespace kova::cmd {

using math::BoundaryLoop;
using math::BoundaryPiece;
using math::Vector2;

namespace {

engine::LineWork lineWork(doc::Document& document) {
    return engine::LineWork(document.drawing(), [&document] { return document.spatialIndex().extents(); });
}

}  // namespace

BoundaryWork boundaryWork(doc::Document& document, const std::vector<std::uint64_t>* only) {
    const engine::Drawing& drawing = document.drawing();
    engine::LineWork lines = lineWork(document);
    BoundaryWork work;
    const auto take = [&](const engine::Entity& entity) {
        if (!lines.shows(entity)) return;
        if (auto box = engine::textIsland(entity)) {
            box->sources.push_back(static_cast<int>(work.ids.size()));
            work.ids.push_back(entity.id());
            work.texts.push_back(std::move(*box));
        }
        if (!engine::boundsAreas(entity.type())) return;
        const std::size_t before = work.pieces.size();
        engine::addPieces(lines.of(entity), static_cast<int>(work.ids.size()), work.pieces);
        if (work.pieces.size() > before) work.ids.push_back(entity.id());
    };
    if (only != nullptr) {
        for (const std::uint64_t id : *only)
            if (const engine::Entity* entity = drawing.findById(id)) take(*entity);
    } else {
        for (const engine::Entity& entity : drawing.currentSpace()) take(entity);
    }
    return work;
}

ClosedFigures closedFigures(doc::Document& document, std::span<const std::uint64_t> ids, double gap) {
    const engine::Drawing& drawing = document.drawing();
    engine::LineWork lines = lineWork(document);
    ClosedFigures result;
    std::vector<BoundaryPiece> open;
    std::vector<std::uint64_t> openIds;
    for (const std::uint64_t id : ids) {
        const engine::Entity* entity = drawing.findById(id);
        if (entity == nullptr || !engine::boundsAreas(entity->type()) || entity->type() == engine::EntityType::Xline)
            continue;
        const engine::PathView path = lines.of(*entity);
        const std::size_t before = result.loops.size();
        const std::size_t openBefore = open.size();
        for (std::size_t i = 0; i < path.size();) {
            const engine::PathView figure = engine::nextFigure(path, i);
            if (engine::isClosedFigure(figure)) {
                engine::HatchLoop loop = engine::figureLoop(figure);
                if (loop.edges.empty() && loop.vertices.size() < 2) continue;
                loop.sources.push_back(entity->handle());
                result.loops.push_back(std::move(loop));
                continue;
            }
            engine::addPieces(figure, static_cast<int>(openIds.size()), open);
        }
        if (result.loops.size() > before) result.used.push_back(id);
        if (open.size() > openBefore) openIds.push_back(id);
    }
    if (!open.empty()) {
        math::BoundarySearch search(open, gap);
        for (const BoundaryLoop& loop : search.outlines()) {
            engine::HatchLoop area = engine::hatchLoop(loop, false);
            for (const int source : loop.sources) {
                result.used.push_back(openIds[static_cast<std::size_t>(source)]);
                area.sources.push_back(drawing.findById(result.used.back())->handle());
            }
            result.loops.push_back(std::move(area));
        }
        result.gaveUp = search.gaveUp();
    }
    std::sort(result.used.begin(), result.used.end());
    result.used.erase(std::unique(result.used.begin(), result.used.end()), result.used.end());
    return result;
}

namespace {

/// What REGION takes.
bool isRegionEdge(const engine::Entity& entity) {
    using engine::EntityType;
    switch (entity.type()) {
        case EntityType::Line: {
            const auto& line = static_cast<const engine::LineEntity&>(entity);
            return line.start3().z == line.end3().z;
        }
        case EntityType::Arc:
        case EntityType::Circle:
        case EntityType::Ellipse:
        case EntityType::Polyline:
        case EntityType::Spline:
        case EntityType::Solid2D:
        case EntityType::Face3D:
            return true;
        default:
            return false;
    }
}

/// Ends this near to each other, as part of the coordinates, are one.
constexpr double kSameEnds = 1e-9;

/// A closed figure as lines and arcs, counter-clockwise; false when it has no area or crosses itself.
bool figureOutline(engine::PathView figure, BoundaryLoop& out) {
    out = engine::polylineLoop(engine::figureLoop(figure));
    double size = 0.0;
    for (const Vector2& p : out.points) size = std::max({size, std::abs(p.x), std::abs(p.y)});
    const double area = math::signedArea(out.points, out.bulges);
    if (!(std::abs(area) > 0.0) || math::crossesItself(out, kSameEnds * size)) return false;
    if (area < 0.0) {
        std::reverse(out.points.begin(), out.points.end());
        std::reverse(out.bulges.begin(), out.bulges.end());
        // The bulge belongs to the vertex where its segment starts.
        std::rotate(out.bulges.begin(), out.bulges.begin() + 1, out.bulges.end());
        for (double& bulge : out.bulges) bulge = -bulge;
    }
    return true;
}

}  // namespace

ClosedLoops closedLoops(doc::Document& document, std::span<const std::uint64_t> ids) {
    const engine::Drawing& drawing = document.drawing();
    engine::LineWork lines = lineWork(document);
    ClosedLoops result;
    std::map<double, std::vector<BoundaryPiece>> open;  // by elevation
    for (std::size_t i = 0; i < ids.size(); ++i) {
        const engine::Entity* entity = drawing.findById(ids[i]);
        if (entity == nullptr || !isRegionEdge(*entity)) continue;
        const engine::PathView path = lines.of(*entity);
        bool used = false;
        for (std::size_t k = 0; k < path.size();) {
            const engine::PathView figure = engine::nextFigure(path, k);
            if (engine::isClosedFigure(figure)) {
                BoundaryLoop outline;
                if (figureOutline(figure, outline)) {
                    result.loops.push_back({std::move(outline), entity->elevation});
                    used = true;
                } else {
                    ++result.rejected;
                }
                continue;
            }
            engine::addPieces(figure, static_cast<int>(i), open[entity->elevation]);
        }
        if (used) result.used.push_back(ids[i]);
    }
    for (const auto& [elevation, pieces] : open) {
        double size = 0.0;
        for (const BoundaryPiece& piece : pieces)
            for (const Vector2& p : {piece.a, piece.b}) size = std::max({size, std::abs(p.x), std::abs(p.y)});
        math::EndLoops found = math::endLoops(pieces, kSameEnds * size);
        result.rejected += found.crossing;
        for (BoundaryLoop& loop : found.loops) {
            for (const int source : loop.sources) result.used.push_back(ids[static_cast<std::size_t>(source)]);
            result.loops.push_back({std::move(loop), elevation});
        }
    }
    std::sort(result.used.begin(), result.used.end());
    result.used.erase(std::unique(result.used.begin(), result.used.end()), result.used.end());
    return result;
}

std::unique_ptr<engine::PolylineEntity> polylineOf(const BoundaryLoop& loop) {
    auto polyline = std::make_unique<engine::PolylineEntity>(loop.points, true);
    if (std::any_of(loop.bulges.begin(), loop.bulges.end(), [](double b) { return b != 0.0; }))
        polyline->bulges = loop.bulges;
    return polyline;
}

}  // namespace kova::cmd
