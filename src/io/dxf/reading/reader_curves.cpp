// Polylines of both forms, splines and helices, multilines, subdivision meshes.
#include <algorithm>
#include <cmath>

#include "engine/entities/mesh.hpp"
#include "engine/entities/mline.hpp"
#include "engine/entities/polyface.hpp"
#include "engine/entities/polyline.hpp"
#include "engine/entities/polyline3d.hpp"
#include "engine/entities/spline.hpp"
#include "io/dxf/reading/reader.hpp"
#include "math/curves/nurbs.hpp"

namespace kova::io::dxf {

using engine::Entity;
using math::Vector2;
using math::Vector3;

std::unique_ptr<Entity> Reader::buildLwPolyline(const EntityTags& tags) {
    auto line = std::make_unique<engine::PolylineEntity>();
    Vector3 normal{0, 0, 1};
    double thickness = 0.0;
    double elevation = 0.0;
    double constantWidth = 0.0;
    bool ownWidths = false;
    // One group 10 a vertex: the count that the file gives is not trusted.
    std::size_t count = 0;
    bool bulged = false;
    for (const Tag& tag : tags.body) {
        if (tag.code == 10) ++count;
        if (tag.code == 42 && tag.real() != 0.0) bulged = true;
        if (tag.code == 40 || tag.code == 41) ownWidths = true;
    }
    line->vertices.reserve(count);
    if (bulged) line->bulges.reserve(count);
    const auto grow = [&](std::vector<double>& list, double value) {
        if (line->vertices.empty()) return;
        list.resize(line->vertices.size(), 0.0);
        list.back() = value;
    };
    for (const Tag& tag : tags.body) {
        switch (tag.code) {
            case 10:
                line->vertices.push_back({real(tag), 0.0});
                break;
            case 20:
                if (!line->vertices.empty()) line->vertices.back().y = real(tag);
                break;
            case 40:
                grow(line->startWidths, real(tag));
                break;
            case 41:
                grow(line->endWidths, real(tag));
                break;
            case 42:
                if (bulged) grow(line->bulges, real(tag));
                break;
            case 91:
                if (!line->vertices.empty() && tag.integer() != 0) {
                    engine::PolylineRecord record;
                    record.vertex = static_cast<std::int32_t>(line->vertices.size() - 1);
                    record.id = small(tag);
                    line->records.push_back(record);
                }
                break;
            case 43:
                constantWidth = real(tag);
                break;
            case 38:
                elevation = real(tag);
                break;
            case 39:
                thickness = real(tag);
                break;
            case 70: {
                const std::int64_t flags = tag.integer();
                line->closed = (flags & 1) != 0;
                line->ltgen = (flags & 128) != 0;
                break;
            }
            default:
                axis(tag, 210, normal);
                break;
        }
    }
    if (line->vertices.empty()) return nullptr;
    if (!line->bulges.empty()) line->bulges.resize(count, 0.0);
    if (ownWidths) {
        line->startWidths.resize(count, 0.0);
        line->endWidths.resize(count, 0.0);
    } else if (constantWidth != 0.0) {
        line->startWidths.assign(count, constantWidth);
        line->endWidths.assign(count, constantWidth);
    }
    setPlane(*line, normal, thickness, elevation);
    return line;
}

namespace {

/// A vertex of an old-style polyline.
struct Vertex {
    Vector3 p;
    std::int64_t flags = 0;
    double bulge = 0.0;
    double startWidth = 0.0;
    double endWidth = 0.0;
    double tangent = 0.0;
    bool hasStartWidth = false;
    bool hasEndWidth = false;
    std::int32_t id = 0;
    std::array<std::int32_t, 4> corners{};
};

constexpr std::int64_t kPolyline3d = 8;
constexpr std::int64_t kMesh = 16;
constexpr std::int64_t kPolyface = 64;

}  // namespace

std::unique_ptr<Entity> Reader::buildPolyline(const EntityTags& tags) {
    std::int64_t flags = 0;
    PlaneGroups plane;
    double startWidth = 0.0;
    double endWidth = 0.0;
    std::int32_t m = 0;
    std::int32_t n = 0;
    std::int32_t smoothM = 0;
    std::int32_t smoothN = 0;
    std::int32_t curve = 0;
    for (const Tag& tag : tags.body) {
        if (planeGroup(tag, plane)) continue;
        switch (tag.code) {
            case 40:
                startWidth = real(tag);
                break;
            case 41:
                endWidth = real(tag);
                break;
            case 70:
                flags = tag.integer();
                break;
            case 71:
                m = small(tag);
                break;
            case 72:
                n = small(tag);
                break;
            case 73:
                smoothM = small(tag);
                break;
            case 74:
                smoothN = small(tag);
                break;
            case 75:
                curve = small(tag);
                break;
            default:
                break;
        }
    }

    std::unique_ptr<engine::PolylineEntity> flat;
    std::unique_ptr<engine::Polyline3DEntity> spatial;
    std::unique_ptr<engine::MeshEntity> mesh;
    std::unique_ptr<engine::PolyfaceEntity> faces;
    if ((flags & kPolyface) != 0)
        faces = std::make_unique<engine::PolyfaceEntity>();
    else if ((flags & kMesh) != 0)
        mesh = std::make_unique<engine::MeshEntity>();
    else if ((flags & kPolyline3d) != 0)
        spatial = std::make_unique<engine::Polyline3DEntity>();
    else
        flat = std::make_unique<engine::PolylineEntity>();

    // Frame points and the curve through them stand in one run of vertices.
    std::vector<Vector3> frame;
    bool firstFlat = true;
    while (reader_.next(subRecord_)) {
        if (subRecord_.type == "SEQEND") break;
        if (subRecord_.type != "VERTEX") {
            // The end mark is missing.
            reader_.unread();
            break;
        }
        Vertex vertex;
        notePart(tags);
        for (const Tag& tag : subRecord_.tags) {
            if (tag.code >= 1000) break;
            switch (tag.code) {
                case 5:
                    noteHandle(tag.handle());
                    break;
                case 10:
                    vertex.p.x = real(tag);
                    break;
                case 20:
                    vertex.p.y = real(tag);
                    break;
                case 30:
                    vertex.p.z = real(tag);
                    break;
                case 40:
                    vertex.startWidth = real(tag);
                    vertex.hasStartWidth = true;
                    break;
                case 41:
                    vertex.endWidth = real(tag);
                    vertex.hasEndWidth = true;
                    break;
                case 42:
                    vertex.bulge = real(tag);
                    break;
                case 50:
                    vertex.tangent = angle(tag);
                    break;
                case 70:
                    vertex.flags = tag.integer();
                    break;
                case 71:
                    vertex.corners[0] = small(tag);
                    break;
                case 72:
                    vertex.corners[1] = small(tag);
                    break;
                case 73:
                    vertex.corners[2] = small(tag);
                    break;
                case 74:
                    vertex.corners[3] = small(tag);
                    break;
                case 91:
                    vertex.id = small(tag);
                    break;
                default:
                    break;
            }
        }
        if (faces) {
            if ((vertex.flags & 128) != 0 && (vertex.flags & 64) == 0) {
                std::vector<std::int32_t> corners;
                for (const std::int32_t corner : vertex.corners)
                    if (corner != 0) corners.push_back(corner);
                if (!corners.empty()) faces->faces.push_back(std::move(corners));
            } else {
                faces->vertices.push_back(vertex.p);
            }
        } else if (mesh || spatial) {
            if ((vertex.flags & 16) != 0)
                frame.push_back(vertex.p);
            else if (mesh)
                mesh->vertices.push_back(vertex.p);
            else
                spatial->vertices.push_back(vertex.p);
        } else {
            if (firstFlat && plane.point.z == 0.0) plane.point.z = vertex.p.z;
            firstFlat = false;
            if ((vertex.flags & 16) != 0) {
                flat->fit.push_back(vertex.p.xy());
                continue;
            }
            // Points of the frame that the curve runs through stand in it as curve vertices too.
            if ((flags & 2) != 0 && (vertex.flags & 1) == 0) flat->fit.push_back(vertex.p.xy());
            const std::size_t at = flat->vertices.size();
            flat->addVertex(vertex.p.xy());
            if (vertex.bulge != 0.0) flat->setBulge(at, vertex.bulge);
            const double from = vertex.hasStartWidth ? vertex.startWidth : startWidth;
            const double to = vertex.hasEndWidth ? vertex.endWidth : endWidth;
            if (from != 0.0 || to != 0.0) flat->setWidths(at, from, to);
            const std::int64_t kept = vertex.flags & 15;
            if (kept != 0 || vertex.id != 0) {
                engine::PolylineRecord record;
                record.vertex = static_cast<std::int32_t>(at);
                record.flags = static_cast<std::int32_t>(kept);
                record.tangent = vertex.tangent;
                record.id = vertex.id;
                flat->records.push_back(record);
            }
        }
    }
    if (faces) {
        if (faces->vertices.empty()) return nullptr;
        setPlane(*faces, plane);
        return faces;
    }
    if (mesh) {
        // A smoothed mesh keeps its frame before the surface; the surface is what is shown.
        if (mesh->vertices.empty()) mesh->vertices = std::move(frame);
        const bool smooth =
            curve != 0 && smoothM > 0 && smoothN > 0 &&
            mesh->vertices.size() == static_cast<std::size_t>(smoothM) * static_cast<std::size_t>(smoothN);
        mesh->rows = smooth ? smoothM : m;
        mesh->cols = smooth ? smoothN : n;
        mesh->closedM = (flags & 1) != 0;
        mesh->closedN = (flags & 32) != 0;
        if (mesh->vertices.empty()) return nullptr;
        if (smooth && m > 0 && n > 0 && frame.size() == static_cast<std::size_t>(m) * static_cast<std::size_t>(n)) {
            mesh->surfaceType = curve;
            mesh->frameRows = m;
            mesh->frameCols = n;
            mesh->frame = std::move(frame);
        }
        setPlane(*mesh, plane);
        return mesh;
    }
    if (spatial) {
        if (spatial->vertices.empty()) spatial->vertices = std::move(frame);
        if (spatial->vertices.empty()) return nullptr;
        spatial->closed = (flags & 1) != 0;
        if (curve != 0 && !frame.empty()) {
            spatial->curveType = curve;
            spatial->frame = std::move(frame);
        }
        setPlane(*spatial, plane);
        return spatial;
    }
    // A frame alone is drawn as it stands.
    if (flat->vertices.empty()) flat->vertices.swap(flat->fit);
    if (flat->vertices.empty()) return nullptr;
    flat->closed = (flags & 1) != 0;
    flat->ltgen = (flags & 128) != 0;
    flat->spline = (flags & 4) != 0;
    flat->curveType = curve;
    setPlane(*flat, plane);
    return flat;
}

std::unique_ptr<Entity> Reader::buildSpline(const EntityTags& tags) {
    auto spline = std::make_unique<engine::SplineEntity>();
    engine::HelixData helix;
    bool inHelix = false;
    Vector3 normal{0, 0, 1};
    Vector3 startTangent;
    Vector3 endTangent;
    double fitZ = 0.0;
    bool tilted = false;
    for (const Tag& tag : tags.body) {
        if (tag.code == 100) {
            inHelix = tag.trimmed() == "AcDbHelix";
            continue;
        }
        if (inHelix) {
            if (axis(tag, 10, helix.axisBase) || axis(tag, 11, helix.start) || axis(tag, 12, helix.axis)) continue;
            switch (tag.code) {
                case 40:
                    helix.topRadius = real(tag);
                    break;
                case 41:
                    helix.turns = real(tag);
                    break;
                case 42:
                    helix.turnHeight = real(tag);
                    break;
                case 290:
                    helix.ccw = tag.integer() != 0;
                    break;
                case 280:
                    helix.constraint = small(tag);
                    break;
                default:
                    break;
            }
            continue;
        }
        switch (tag.code) {
            case 10:
                spline->controlPoints.push_back({real(tag), 0.0});
                break;
            case 20:
                if (!spline->controlPoints.empty()) spline->controlPoints.back().y = real(tag);
                break;
            case 30: {
                const double z = real(tag);
                if (spline->controlPoints.empty()) break;
                spline->controlZ.resize(spline->controlPoints.size(), 0.0);
                spline->controlZ.back() = z;
                tilted = tilted || z != spline->controlZ.front();
                break;
            }
            case 11:
                spline->fitPoints.push_back({real(tag), 0.0});
                break;
            case 21:
                if (!spline->fitPoints.empty()) spline->fitPoints.back().y = real(tag);
                break;
            case 31:
                fitZ = real(tag);
                break;
            case 40:
                spline->knots.push_back(real(tag));
                break;
            case 41:
                spline->weights.push_back(real(tag));
                break;
            case 70:
                spline->closed = (tag.integer() & 1) != 0;
                break;
            case 71:
                spline->degree = small(tag);
                break;
            default:
                if (!axis(tag, 210, normal) && !axis(tag, 12, startTangent)) axis(tag, 13, endTangent);
                break;
        }
    }
    if (spline->controlPoints.empty() && spline->fitPoints.empty()) return nullptr;
    // Other programs may leave it to the reader to put the curve through its fit points. It has tangents then that
    // only control points can keep.
    if (!own_ && spline->controlPoints.empty() && spline->degree == 3) {
        math::CubicSpline cubic =
            math::interpolateCubic(spline->fitPoints, spline->closed, startTangent.xy(), endTangent.xy());
        spline->controlPoints = std::move(cubic.points);
        spline->knots = std::move(cubic.knots);
    }
    if (spline->controlZ.empty()) spline->elevation = fitZ;
    if (!spline->controlZ.empty() && !tilted) {
        spline->elevation = spline->controlZ.front();
        spline->controlZ.clear();
    }
    if (!spline->controlZ.empty()) spline->controlZ.resize(spline->controlPoints.size(), 0.0);
    if (!spline->weights.empty()) {
        spline->weights.resize(spline->controlPoints.size(), 1.0);
        if (std::all_of(spline->weights.begin(), spline->weights.end(), [](double w) { return w == 1.0; }))
            spline->weights.clear();
    }
    setPlane(*spline, normal, 0.0, spline->elevation);
    if (tags.type == "HELIX") spline->helix = helix;
    return spline;
}

std::unique_ptr<Entity> Reader::buildMLine(const EntityTags& tags) {
    auto line = std::make_unique<engine::MLineEntity>();
    Vector3 start;
    Vector3 normal{0, 0, 1};
    std::vector<double> offsets;  // of the first vertex's elements, along the miter
    std::int64_t flags = 0;
    bool firstOfElement = false;
    bool drawn = false;
    double elevation = 0.0;
    for (const Tag& tag : tags.body) {
        switch (tag.code) {
            case 2:
                line->styleName = name(tag);
                break;
            case 340:
                pendingMLineStyle_ = tag.handle();
                break;
            case 40:
                line->scale = real(tag);
                break;
            case 70:
                line->justification =
                    static_cast<engine::MLineJustification>(std::clamp<std::int64_t>(tag.integer(), 0, 2));
                break;
            case 71:
                flags = tag.integer();
                break;
            case 10:
                start.x = real(tag);
                break;
            case 20:
                start.y = real(tag);
                break;
            case 30:
                elevation = real(tag);
                break;
            case 11:
                line->vertices.push_back({real(tag), 0.0});
                break;
            case 21:
                if (!line->vertices.empty()) line->vertices.back().y = real(tag);
                break;
            case 74:
                firstOfElement = true;
                drawn = tag.integer() > 0;
                break;
            case 41:
                if (firstOfElement && drawn && line->vertices.size() == 1) offsets.push_back(real(tag));
                firstOfElement = false;
                break;
            default:
                axis(tag, 210, normal);
                break;
        }
    }
    if (line->vertices.empty()) return nullptr;
    line->closed = (flags & 2) != 0;
    line->elements.clear();
    // Offsets along the miter of the first vertex, which stands square to the first segment of an open line: scaled
    // and shifted by the justification. The style's own ones replace them when there is a style.
    double shift = 0.0;
    if (!offsets.empty()) {
        const auto [low, high] = std::minmax_element(offsets.begin(), offsets.end());
        if (line->justification == engine::MLineJustification::Zero)
            shift = 0.0;
        else
            shift = line->justification == engine::MLineJustification::Top ? -(*low + *high) / 2 : -(*low + *high) / 2;
    }
    const double scale = line->scale != 0.0 ? line->scale : 1.0;
    for (const double offset : offsets) {
        engine::MLineElement element;
        element.offset = (offset + shift) / scale;
        line->elements.push_back(element);
    }
    if (line->elements.empty()) line->elements = {{0.5}, {-0.5}};
    setPlane(*line, normal, 0.0, elevation);
    return line;
}

std::unique_ptr<Entity> Reader::buildSubdivisionMesh(const EntityTags& tags) {
    auto faces = std::make_unique<engine::PolyfaceEntity>();
    enum class Part { Head, Vertices, Faces, Rest } part = Part::Head;
    std::int64_t corners = 0;  // of the face being read, still to come
    for (const Tag& tag : tags.body) {
        switch (tag.code) {
            case 92:
                part = Part::Vertices;
                break;
            case 93:
                part = Part::Faces;
                corners = 0;
                break;
            case 94:
            case 95:
                part = Part::Rest;
                break;
            case 10:
                if (part == Part::Vertices) faces->vertices.push_back({real(tag), 0, 0});
                break;
            case 20:
                if (!faces->vertices.empty()) faces->vertices.back().y = real(tag);
                break;
            case 30:
                if (!faces->vertices.empty()) faces->vertices.back().z = real(tag);
                break;
            case 90:
                if (part != Part::Faces) break;
                if (corners == 0) {
                    corners = std::max<std::int64_t>(tag.integer(), 0);
                    if (corners > 0) faces->faces.emplace_back();
                } else {
                    faces->faces.back().push_back(
                        static_cast<std::int32_t>(std::clamp<std::int64_t>(tag.integer(), -1, INT32_MAX - 1) + 1));
                    --corners;
                }
                break;
            default:
                break;
        }
    }
    if (faces->vertices.empty()) return nullptr;
    return faces;
}

}  // namespace kova::io::dxf
