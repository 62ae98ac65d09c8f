#include "engine/modify/exploded_parts.hpp"

#include "engine/entities/dynamic_block.hpp"
#include "engine/kinds/all.hpp"
#include "engine/entities/dimensions/dimension_builder.hpp"
#include "engine/entities/dimensions/dimension_layout.hpp"
#include "engine/model/object_plane.hpp"
#include "engine/entities/table_grid.hpp"
#include "engine/solids/sat_edges.hpp"
#include "math/curves/curves.hpp"

namespace kova::cmd {

using engine::Entity;
using math::Matrix4;
using math::Vector2;
using math::Vector3;

namespace {

/// A part that takes all properties of the whole.
template <class Kind>
std::unique_ptr<Kind> like(const Entity& whole, std::unique_ptr<Kind> part) {
    part->copyCommonFrom(whole);
    part->setXdata({});
    return part;
}

std::unique_ptr<engine::LineEntity> lineLike(const Entity& whole, const Vector3& a, const Vector3& b) {
    auto line = like(whole, std::make_unique<engine::LineEntity>());
    line->setEnds(a, b);
    return line;
}

EntityParts polylineParts(const engine::PolylineEntity& polyline) {
    EntityParts parts;
    const std::size_t count = polyline.segmentCount();
    parts.reserve(count);
    const bool level = engine::inWorldPlane(polyline);
    const Matrix4 plane = level ? Matrix4{} : engine::objectPlane(polyline);
    for (std::size_t i = 0; i < count; ++i) {
        const Vector2 a = polyline.vertices[i];
        const Vector2 b = polyline.segmentEnd(i);
        if (const auto arc = math::arcFromBulge(a, b, polyline.bulge(i))) {
            const double from = arc->sweep >= 0.0 ? arc->start : arc->end();
            const double to = arc->sweep >= 0.0 ? arc->end() : arc->start;
            parts.push_back(
                like(polyline, std::make_unique<engine::ArcEntity>(arc->center, arc->radius, math::normalizeAngle(from),
                                                                   math::normalizeAngle(to))));
        } else if (a != b && level) {
            parts.push_back(like(polyline, std::make_unique<engine::LineEntity>(a, b)));
        } else if (a != b) {
            parts.push_back(
                lineLike(polyline, plane.transform_point(Vector3(a, 0.0)), plane.transform_point(Vector3(b, 0.0))));
        }
    }
    return parts;
}

EntityParts polyline3dParts(const engine::Polyline3DEntity& polyline) {
    EntityParts parts;
    const std::size_t n = polyline.vertices.size();
    for (std::size_t i = 0; i < n; ++i) {
        if (i + 1 == n && (!polyline.closed || n < 3)) break;
        const Vector3& a = polyline.vertices[i];
        const Vector3& b = polyline.vertices[(i + 1) % n];
        if (a != b) parts.push_back(lineLike(polyline, a, b));
    }
    return parts;
}

std::unique_ptr<engine::Face3DEntity> faceLike(const Entity& whole, const std::array<Vector3, 4>& corners) {
    auto face = like(whole, std::make_unique<engine::Face3DEntity>());
    face->corners = corners;
    return face;
}

EntityParts meshParts(const engine::MeshEntity& mesh) {
    EntityParts parts;
    const std::size_t m = mesh.filledRows();
    const std::size_t n = mesh.filledColumns();
    if (m == 0 || n == 0 || mesh.vertices.size() < m * n) return parts;
    const std::size_t rows = mesh.closedM && m > 2 ? m : m - 1;
    const std::size_t columns = mesh.closedN && n > 2 ? n : n - 1;
    for (std::size_t i = 0; i < rows; ++i) {
        for (std::size_t j = 0; j < columns; ++j) {
            const auto at = [&](std::size_t row, std::size_t column) {
                return mesh.vertices[(row % m) * n + column % n];
            };
            parts.push_back(faceLike(mesh, {at(i, j), at(i, j + 1), at(i + 1, j + 1), at(i + 1, j)}));
        }
    }
    return parts;
}

EntityParts polyfaceParts(const engine::PolyfaceEntity& polyface) {
    EntityParts parts;
    for (const std::vector<std::int32_t>& corners : polyface.faces) {
        std::vector<Vector3> points;
        std::vector<bool> hidden;
        for (const std::int32_t corner : corners) {
            const auto index = polyface.vertexIndex(corner);
            if (!index) continue;
            points.push_back(polyface.vertices[*index]);
            hidden.push_back(corner < 0);
        }
        if (points.size() == 2) {
            parts.push_back(lineLike(polyface, points[0], points[1]));
        } else if (points.size() == 3 || points.size() == 4) {
            auto face = faceLike(polyface, {points[0], points[1], points[2], points.back()});
            for (std::size_t i = 0; i < hidden.size(); ++i)
                // The closing edge of a triangle runs from its repeated corner.
                if (hidden[i]) face->edgeFlags |= points.size() == 3 && i == 2 ? 4 | 8 : 1 << i;
            parts.push_back(std::move(face));
        } else {
            // A face of more corners is a fan of triangles with only its own edges shown.
            for (std::size_t i = 1; i + 1 < points.size(); ++i) {
                auto face = faceLike(polyface, {points[0], points[i], points[i + 1], points[i + 1]});
                if (i > 1 || hidden[0]) face->edgeFlags |= 1;
                if (hidden[i]) face->edgeFlags |= 2;
                if (i + 2 < points.size() || hidden.back()) face->edgeFlags |= 4 | 8;
                parts.push_back(std::move(face));
            }
        }
    }
    return parts;
}

EntityParts bodyParts(const engine::Solid3DEntity& body) {
    EntityParts parts;
    for (const engine::ModelerEdge& edge : body.edges().edges) {
        if (edge.kind == engine::ModelerEdge::Kind::Line) {
            if (edge.start != edge.end) parts.push_back(lineLike(body, edge.start, edge.end));
        } else if (edge.kind == engine::ModelerEdge::Kind::Curve) {
            if (edge.points.size() > 1)
                parts.push_back(like(body, std::make_unique<engine::Polyline3DEntity>(edge.points)));
        } else {
            auto ellipse = like(body, std::make_unique<engine::EllipseEntity>());
            const bool forward = edge.t1 >= edge.t0;
            ellipse->center = edge.center.xy();
            ellipse->elevation = edge.center.z;
            ellipse->startParam = forward ? edge.t0 : -edge.t0;
            ellipse->endParam = forward ? edge.t1 : -edge.t1;
            const Vector3 v = forward ? edge.v : -edge.v;
            ellipse->setConjugate(edge.u, v, edge.u.cross(v));
            parts.push_back(std::move(ellipse));
        }
    }
    return parts;
}

std::optional<EntityParts> hatchParts(const engine::HatchEntity& hatch) {
    if (hatch.isSolid()) return std::nullopt;
    PartsSink sink(hatch.drawing(), hatch.elevation, {});
    const engine::Path rings = hatch.rings();
    const std::vector<engine::HatchFamily> families = hatch.families();
    sink.pattern(rings, families, engine::outlineStyle(hatch));
    if (sink.overflowed()) return std::nullopt;
    EntityParts parts = sink.take();
    if (!engine::inWorldPlane(hatch)) {
        const Matrix4 world = Matrix4::object_to_world(hatch.normal());
        for (const auto& part : parts) part->transform(world);
    }
    return parts;
}

// What builds its own picture -----------------------------------------------------------------------------------------

EntityParts mtextParts(const engine::MTextEntity& text) {
    PartsSink sink(text.drawing(), text.elevation, text.textStyle);
    engine::emitMText(text.block(), text.drawing(), sink, engine::outlineStyle(text));
    return sink.take();
}

EntityParts dimensionParts(const engine::DimensionEntity& dimension) {
    engine::DimensionPicture picture = engine::layoutDimension(dimension);
    const engine::OutlineStyle style = engine::outlineStyle(dimension);
    // A text in one piece stays one; one parted by the dimension line falls into lines of text.
    const bool whole = picture.texts.size() == 1;
    if (whole) picture.texts.clear();
    PartsSink sink(dimension.drawing(), dimension.elevation, picture.style.textStyle);
    engine::emitDimensionPicture(picture, dimension.drawing(), sink, style);
    if (whole) {
        engine::MTextBlock block;
        block.content = picture.textContent;
        block.position = picture.textMiddle;
        block.rotation = picture.textRotation;
        block.height = engine::DimensionBuilder(dimension).textHeight;
        block.attachment = engine::kAttachMiddleCenter;
        block.textStyle = picture.style.textStyle;
        engine::OutlineStyle letters = style;
        if (picture.style.textColor.method != engine::ColorMethod::ByBlock) letters.color = picture.style.textColor;
        sink.addParagraphs(block, letters);
    }
    return sink.take();
}

EntityParts leaderParts(const engine::LeaderEntity& leader) {
    PartsSink sink(leader.drawing(), leader.elevation, {}, false);
    const engine::OutlineStyle style = engine::outlineStyle(leader);
    leader.emit(sink, style);
    if (leader.drawsText()) sink.addParagraphs(leader.textBlock(), sink.textOutline().value_or(style));
    return sink.take();
}

EntityParts mleaderParts(const engine::MLeaderEntity& mleader) {
    PartsSink sink(mleader.drawing(), mleader.elevation, {}, false);
    const engine::OutlineStyle style = engine::outlineStyle(mleader);
    const engine::Block* block =
        mleader.contentType == engine::MLeaderContent::Block ? mleader.contentBlock() : nullptr;
    if (block == nullptr) {
        mleader.emit(sink, style);
        if (mleader.hasText()) sink.addParagraphs(mleader.textBlock(), sink.textOutline().value_or(style));
        return sink.take();
    }
    // The block goes on as a reference. Without it the leader's lines keep their shape only as they are emitted, so
    // what follows the lines is dropped by number.
    mleader.emit(sink, style);
    EntityParts all = sink.take();
    PartsSink content(mleader.drawing(), mleader.elevation, {}, false);
    engine::OutlineStyle inner = style;
    if (mleader.style().blockColor.method != engine::ColorMethod::ByBlock) inner.color = mleader.style().blockColor;
    const Matrix4 place = mleader.blockMatrix();
    engine::emitBlock(*block, place, content, inner);
    const std::vector<engine::BlockAttribute> attributes = mleader.placedAttributes();
    for (const engine::BlockAttribute& attribute : attributes)
        engine::emitAttribute(attribute, mleader.drawing(), content, inner);
    const std::size_t drawn = content.take().size();
    all.resize(all.size() - std::min(drawn, all.size()));
    auto reference = like(mleader, std::make_unique<engine::BlockReferenceEntity>());
    reference->blockName = block->name;
    reference->insert = mleader.contentPos;
    const Vector2 along = place.transform_direction(Vector2{1, 0});
    reference->rotation = math::normalizeAngle(along.angle());
    reference->scaleX = reference->scaleY = along.length();
    reference->color = inner.color;
    reference->attributes = attributes;
    all.push_back(std::move(reference));
    return all;
}

EntityParts tableParts(const engine::TableEntity& table) {
    PartsSink sink(table.drawing(), table.elevation, {}, false);
    const engine::OutlineStyle style = engine::outlineStyle(table);
    table.emit(sink, style);
    table.eachText([&](const engine::MTextBlock& text, const engine::Color& color) {
        engine::OutlineStyle letters = style;
        if (color.method != engine::ColorMethod::ByBlock) letters.color = color;
        sink.addParagraphs(text, letters);
    });
    return sink.take();
}

/// Kinds whose shape as it is emitted says all.
EntityParts emittedParts(const Entity& entity, engine::Name textStyle = {}) {
    PartsSink sink(entity.drawing(), entity.elevation, textStyle);
    entity.emit(sink, engine::outlineStyle(entity));
    return sink.take();
}

// Block references
// ------------------------------------------------------------------------------------------------------

bool sameInPlan(const Matrix4& a, const Matrix4& b) {
    double size = 0.0;
    double off = 0.0;
    for (int row = 0; row < 2; ++row)
        for (int column = 0; column < 2; ++column) {
            size = std::max(size, std::abs(b(row, column)));
            off = std::max(off, std::abs(a(row, column) - b(row, column)));
        }
    return off <= 1e-9 * size;
}

/// Takes a reference apart under a further map.
class ReferenceParts {
public:
    explicit ReferenceParts(const engine::Drawing& drawing) : drawing_(drawing) {}

    /// False when the reference cannot be taken apart.
    bool take(const engine::BlockReferenceEntity& reference, const Matrix4* outer, int depth) {
        const engine::Block* block = drawing_.findBlock(reference.blockName);
        if (block == nullptr || depth > engine::kMaxBlockNesting) return false;
        if (block->xrefType != engine::XrefType::None || (!block->explodable && outer == nullptr)) return false;
        const double copies = static_cast<double>(reference.rowCount()) * reference.columnCount();
        const engine::ShownBlock shown = engine::shownBlock(*block, reference);
        if (copies * static_cast<double>(shown.block->entities.size()) > static_cast<double>(kMaxParts - parts_.size()))
            return false;
        parts_.reserve(parts_.size() + static_cast<std::size_t>(copies) * shown.block->entities.size());
        for (std::int32_t row = 0; row < reference.rowCount(); ++row) {
            for (std::int32_t column = 0; column < reference.columnCount(); ++column) {
                const Matrix4 own = reference.blockMatrix(*block, row, column);
                if (!takeCopy(*shown.block, outer != nullptr ? *outer * own : own, shown.mask(), depth)) return false;
            }
        }
        return true;
    }
    EntityParts parts() { return std::move(parts_); }

private:
    bool takeCopy(const engine::Block& block, const Matrix4& m, const std::vector<bool>* shown, int depth) {
        std::size_t index = 0;
        for (const Entity& entity : block.entities) {
            const std::size_t at = index++;
            if (shown != nullptr && at < shown->size() && !(*shown)[at]) continue;
            std::unique_ptr<Entity> part = engine::transformedEntity(entity, m);
            if (!part) continue;
            if (const auto* nested = dynamic_cast<const engine::BlockReferenceEntity*>(&entity)) {
                // A reference cannot hold a slant: then only its own parts can show the same.
                const engine::Block* definition = drawing_.findBlock(nested->blockName);
                const auto& placed = static_cast<const engine::BlockReferenceEntity&>(*part);
                if (definition != nullptr &&
                    !sameInPlan(placed.blockMatrix(*definition), m * nested->blockMatrix(*definition))) {
                    if (parts_.size() >= kMaxParts || !take(*nested, &m, depth + 1)) return false;
                    continue;
                }
            }
            if (parts_.size() >= kMaxParts) return false;
            part->setHandle(0);
            parts_.push_back(std::move(part));
        }
        return true;
    }

    const engine::Drawing& drawing_;
    EntityParts parts_;
};

std::optional<EntityParts> referenceParts(const engine::BlockReferenceEntity& reference) {
    if (reference.drawing() == nullptr) return std::nullopt;
    ReferenceParts parts(*reference.drawing());
    if (!parts.take(reference, nullptr, 0)) return std::nullopt;
    return parts.parts();
}

}  // namespace

std::optional<EntityParts> explodedParts(const Entity& entity) {
    using engine::EntityType;
    std::optional<EntityParts> parts;
    switch (entity.type()) {
        case EntityType::Polyline:
            parts = polylineParts(static_cast<const engine::PolylineEntity&>(entity));
            break;
        case EntityType::Polyline3D:
            parts = polyline3dParts(static_cast<const engine::Polyline3DEntity&>(entity));
            break;
        case EntityType::BlockReference:
            return referenceParts(static_cast<const engine::BlockReferenceEntity&>(entity));
        case EntityType::Hatch:
            parts = hatchParts(static_cast<const engine::HatchEntity&>(entity));
            break;
        case EntityType::MText:
            parts = mtextParts(static_cast<const engine::MTextEntity&>(entity));
            break;
        case EntityType::Dimension:
            parts = dimensionParts(static_cast<const engine::DimensionEntity&>(entity));
            break;
        case EntityType::Leader:
            parts = leaderParts(static_cast<const engine::LeaderEntity&>(entity));
            break;
        case EntityType::MLeader:
            parts = mleaderParts(static_cast<const engine::MLeaderEntity&>(entity));
            break;
        case EntityType::Table:
            parts = tableParts(static_cast<const engine::TableEntity&>(entity));
            break;
        case EntityType::MLine:
        case EntityType::Region:
        case EntityType::Tolerance:
            parts = emittedParts(entity, engine::commonNames().standard);
            break;
        case EntityType::Mesh:
            parts = meshParts(static_cast<const engine::MeshEntity&>(entity));
            break;
        case EntityType::Polyface:
            parts = polyfaceParts(static_cast<const engine::PolyfaceEntity&>(entity));
            break;
        case EntityType::Solid3D:
            parts = bodyParts(static_cast<const engine::Solid3DEntity&>(entity));
            break;
        default:
            return std::nullopt;
    }
    // What shows nothing stays: exploding it would only lose it.
    if (parts && parts->empty()) parts.reset();
    return parts;
}

}  // namespace kova::cmd
