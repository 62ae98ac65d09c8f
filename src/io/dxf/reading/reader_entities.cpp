// What all entities have, extended data, and the kinds that are a handful of groups.
#include <algorithm>
#include <cmath>

#include "engine/entities/arc.hpp"
#include "engine/entities/attribute_definition.hpp"
#include "engine/entities/circle.hpp"
#include "engine/entities/dimensions/dimension.hpp"
#include "engine/entities/ellipse.hpp"
#include "engine/entities/face3d.hpp"
#include "engine/entities/hatch.hpp"
#include "engine/entities/dimensions/leader.hpp"
#include "engine/entities/line.hpp"
#include "engine/entities/mtext.hpp"
#include "engine/entities/point.hpp"
#include "engine/entities/ray.hpp"
#include "engine/entities/shape.hpp"
#include "engine/entities/solid2d.hpp"
#include "engine/entities/dimensions/tolerance.hpp"
#include "engine/entities/xline.hpp"
#include "io/dxf/dxf_facts.hpp"
#include "io/dxf/own_data.hpp"
#include "io/dxf/reading/reader.hpp"

namespace kova::io::dxf {

using engine::Entity;
using engine::XDataItem;
using math::Vector2;
using math::Vector3;

double Reader::angle(const Tag& tag) {
    const double degrees = real(tag);
    const std::string_view digits = tag.trimmed();
    double radians = 0.0;
    // Angles that a double of degrees cannot say have more digits than one has.
    if (digits.size() > 17 && radiansFromDegrees(digits, radians) && std::isfinite(radians)) return radians;
    return radiansFromDegrees(degrees);
}

std::int32_t Reader::small(const Tag& tag) const {
    return static_cast<std::int32_t>(std::clamp<std::int64_t>(tag.integer(), INT32_MIN, INT32_MAX));
}

void Reader::setPlane(Entity& entity, const Vector3& normal, double thickness, double elevation) {
    entity.elevation = elevation;
    if (thickness != 0.0) entity.setThickness(thickness);
    if (normal == Vector3{0, 0, 1}) return;
    const double length = normal.length();
    if (!(length > 1e-12) || !std::isfinite(length)) return;
    // A direction that is of length 1 already keeps its digits, and what this program wrote is given back as it was.
    entity.setNormal(own_ || std::abs(length - 1.0) < 1e-12 ? normal : normal / length);
}

EntityTags Reader::partTags(const Record& record) {
    EntityTags parts;
    parts.type = record.type;
    const Tags all(record.tags);
    std::size_t xdata = all.size();
    std::size_t embedded = all.size();
    std::size_t body = all.size();
    bool marked = false;
    bool ownerSeen = false;
    for (std::size_t i = 0; i < all.size(); ++i) {
        const Tag& tag = all[i];
        if (tag.code == 1001) {
            xdata = i;
            break;
        }
        if (tag.code == 100) {
            if (body == all.size() && tag.trimmed() != "AcDbEntity") body = i;
            marked = true;
        } else if (body != all.size() || embedded != all.size()) {
            // The common part is over.
            if (tag.code == 101 && embedded == all.size()) embedded = i + 1;
            continue;
        } else if (tag.code == 5) {
            parts.handle = tag.handle();
        } else if (tag.code == 330 && !ownerSeen) {
            parts.owner = tag.handle();
            ownerSeen = true;
        } else if (tag.code == 67) {
            parts.paper = tag.integer() != 0;
        } else if (tag.code == 101 && embedded == all.size()) {
            embedded = i + 1;
        } else if (tag.code == 102) {
            const bool dictionary = tag.trimmed() == "{ACAD_XDICTIONARY";
            if (!tag.trimmed().starts_with("{")) continue;
            for (++i; i < all.size() && all[i].code != 102 && all[i].code < 1000; ++i)
                if (dictionary && (all[i].code == 360 || all[i].code == 350)) parts.dictionary = all[i].handle();
            if (i < all.size() && all[i].code != 102) --i;
        }
    }
    if (!marked) body = 0;
    body = std::min(body, xdata);
    embedded = std::min(embedded, xdata);
    parts.all = all.first(xdata);
    const std::size_t bodyEnd = embedded < xdata && embedded > body ? embedded - 1 : xdata;
    parts.body = all.subspan(body, bodyEnd - body);
    parts.embedded = embedded < xdata ? all.subspan(embedded, xdata - embedded) : Tags();
    parts.xdata = all.subspan(xdata);
    return parts;
}

void Reader::readCommon(const EntityTags& tags, Entity& entity) {
    const bool marked = tags.body.data() != tags.all.data();
    const Tags head = marked ? tags.all.first(static_cast<std::size_t>(tags.body.data() - tags.all.data())) : tags.body;
    bool layerSeen = false;
    ColorGroups color;
    const auto take = [&](const Tag& tag) {
        switch (tag.code) {
            case 6:
                entity.linetype = name(tag);
                break;
            case 8:
                entity.layer = name(tag);
                layerSeen = true;
                break;
            case 48:
                entity.setLinetypeScale(real(tag));
                break;
            case 60:
                entity.visible = tag.integer() == 0;
                break;
            case 62:
                color.index = std::abs(small(tag));
                break;
            case 420:
                color.rgb = static_cast<std::uint32_t>(tag.integer());
                break;
            case 440:
                entity.transparency = transparencyPercent(small(tag));
                break;
            case 370:
                entity.lineweight = small(tag);
                break;
            case 38:
                if (!marked) entity.elevation = real(tag);
                break;
            default:
                noteCommonGroup(tag);
                break;
        }
    };
    for (std::size_t i = 0; i < head.size(); ++i) {
        const Tag& tag = head[i];
        if (tag.code == 102 && tag.trimmed().starts_with("{")) {
            while (i + 1 < head.size() && head[i + 1].code != 102) ++i;
            ++i;
            continue;
        }
        take(tag);
    }
    // Careless writers put the common groups behind the kind's marker.
    if (!layerSeen && marked) {
        const engine::EntityType type = entity.type();
        // These kinds have groups of their own under some of the codes.
        const bool ownCodes = type == engine::EntityType::Table || type == engine::EntityType::MLeader ||
                              type == engine::EntityType::Viewport;
        for (const Tag& tag : tags.body) {
            const std::int32_t c = tag.code;
            if (c == 8 || c == 6 || c == 62 ||
                (!ownCodes && (c == 48 || c == 60 || c == 370 || c == 420 || c == 440)))
                take(tag);
        }
    }
    // An unknown index leaves the colour ByLayer.
    entity.color = color.settled(entity.color, own_);
    if (entity.layer.empty()) entity.layer = engine::commonNames().layerZero;
    if (entity.linetype.empty()) entity.linetype = engine::commonNames().byLayer;
    if (entity.layer.key() != lastLayer_) {
        lastLayer_ = entity.layer.key();
        if (layersSeen_.insert(lastLayer_).second) usedLayers_.push_back(entity.layer);
    }
}

// Extended data -------------------------------------------------------------------------------------------------

engine::XData Reader::xdataOf(Tags tags) const {
    engine::XData data;
    for (std::size_t i = 0; i < tags.size();) {
        if (tags[i].code != 1001) {
            ++i;
            continue;
        }
        engine::XData::Application application;
        application.name = engine::Name(decoder_.decode(tags[i].trimmed()));
        for (++i; i < tags.size() && tags[i].code != 1001; ++i) {
            const Tag& tag = tags[i];
            XDataItem item;
            item.code = tag.code;
            const auto finite = [](double v) { return v == v ? v : 0.0; };
            switch (tag.code) {
                case 1000:
                case 1003:
                    item.value = decoder_.decode(tag.text());
                    break;
                case 1002:
                case 1004:
                case 1005:
                    item.value = std::string(tag.trimmed());
                    break;
                case 1010:
                case 1011:
                case 1012:
                case 1013: {
                    Vector3 p{finite(tag.real()), 0, 0};
                    if (i + 1 < tags.size() && tags[i + 1].code == tag.code + 10) p.y = finite(tags[++i].real());
                    if (i + 1 < tags.size() && tags[i + 1].code == tag.code + 20) p.z = finite(tags[++i].real());
                    item.value = p;
                    break;
                }
                case 1040:
                case 1041:
                case 1042:
                    item.value = finite(tag.real());
                    break;
                case 1070:
                case 1071:
                    item.value = tag.integer();
                    break;
                default:
                    continue;
            }
            application.items.push_back(std::move(item));
        }
        if (application.name.empty() || application.items.empty()) continue;
        data.applications.push_back(std::move(application));
    }
    return data;
}

namespace {

/// The own data in an application's items; empty when they are a user's.
std::string ownTextOf(const std::vector<XDataItem>& items) {
    std::string json;
    for (const XDataItem& item : items)
        if (const auto* piece = std::get_if<std::string>(&item.value); piece != nullptr && item.code == 1000)
            json += *piece;
    if (!json.starts_with('{')) json.clear();
    return json;
}

}  // namespace

OwnText Reader::ownData(const Record& record, std::string_view application) {
    OwnText own{ownTextIn(record.tags), {}};
    if (own.empty() && !application.empty()) {
        const std::uint64_t dictionary = partTags(record).dictionary;
        if (dictionary != 0) own.json = xrecordText(dictionaryEntry(dictionary, application));
    }
    if (!own.empty()) own.plain = dxf::fingerprintOf(record.type, record.tags, decoder_);
    return own;
}

/// The own data among the extended data of a record; empty when there is none.
std::string Reader::ownTextIn(Tags tags) const {
    for (std::size_t i = 0; i < tags.size(); ++i) {
        if (tags[i].code != 1001 || !isOwnApplication(tags[i].trimmed())) continue;
        const std::size_t from = i;
        while (i + 1 < tags.size() && tags[i + 1].code != 1001) ++i;
        const engine::XData data = xdataOf(tags.subspan(from, i + 1 - from));
        if (data.empty()) continue;
        std::string json = ownTextOf(data.applications.front().items);
        if (!json.empty()) return json;
    }
    return {};
}

void Reader::takeKnownXdata(engine::XData& data, const EntityTags&, Entity& entity) {
    const engine::EntityType type = entity.type();
    std::erase_if(data.applications, [&](engine::XData::Application& application) {
        if (application.name == "AcadAnnotative") {
            // AnnotativeData { version switch }
            std::int64_t last = 0;
            for (const XDataItem& item : application.items)
                if (const auto* n = std::get_if<std::int64_t>(&item.value)) last = *n;
            if (last != 0) entity.setAnnotative(true);
            return true;
        }
        if (!(application.name == "ACAD")) return false;
        auto& items = application.items;
        if (type == engine::EntityType::MText) {
            takeMTextXdata(items, static_cast<engine::MTextEntity&>(entity));
        } else if (type == engine::EntityType::Dimension || type == engine::EntityType::Leader ||
                   type == engine::EntityType::Tolerance) {
            takeDimensionOverrides(items, entity);
        } else if (type == engine::EntityType::Hatch) {
            auto& hatch = static_cast<engine::HatchEntity&>(entity);
            if (items.size() == 1 && items[0].code == 1010) {
                // The families are in final form: the origin is worked in, so the definitions are put right again.
                const auto families = hatch.families();
                hatch.patternOrigin = std::get<Vector3>(items[0].value).xy();
                if (!hatch.ownPattern.empty()) hatch.setFinalPattern(families);
                items.clear();
            }
        } else if (type == engine::EntityType::Viewport) {
            engine::XData one;
            one.applications.push_back(application);
            readOldViewport(one, entity);
        }
        return items.empty();
    });
}

void Reader::readXdata(const EntityTags& tags, Entity& entity) {
    const auto settle = [&] {
        if (entity.type() == engine::EntityType::Hatch) dropKnownPattern(static_cast<engine::HatchEntity&>(entity));
    };
    if (tags.xdata.empty()) {
        settle();
        return;
    }
    engine::XData data = xdataOf(tags.xdata);
    std::string own;
    std::erase_if(data.applications, [&](const engine::XData::Application& application) {
        if (!isOwnApplication(application.name.view())) return false;
        std::string json = ownTextOf(application.items);
        if (json.empty()) return false;
        own = std::move(json);
        return true;
    });
    takeKnownXdata(data, tags, entity);
    settle();
    entity.setXdata(std::move(data));
    if (own.empty()) return;
    const OwnText text{std::move(own), fingerprintOf(tags)};
    applyEntityData(text, entity);
    if (entity.type() == engine::EntityType::MLine) ownMLines_.emplace(entity.id(), text);
}

Fingerprint Reader::fingerprintOf(const EntityTags& tags) const {
    Fingerprint plain =
        dxf::fingerprintOf(tags.type, Tags(tags.all.data(), tags.all.size() + tags.xdata.size()), decoder_);
    plain.parts = partsPrint_;
    return plain;
}

// Kinds -----------------------------------------------------------------------------------------------------------

Reader::Builder Reader::builderOf(std::string_view type) {
    struct Row {
        std::string_view type;
        Builder builder;
    };
    static const Row kRows[] = {
        {"3DFACE", &Reader::buildFace},
        {"3DLINE", &Reader::buildLine},
        {"3DSOLID", &Reader::buildBody},
        {"ACAD_TABLE", &Reader::buildTable},
        {"ARC", &Reader::buildArc},
        {"ARC_DIMENSION", &Reader::buildDimension},
        {"ATTDEF", &Reader::buildAttDef},
        {"BODY", &Reader::buildBody},
        {"CIRCLE", &Reader::buildCircle},
        {"DIMENSION", &Reader::buildDimension},
        {"ELLIPSE", &Reader::buildEllipse},
        {"HATCH", &Reader::buildHatch},
        {"HELIX", &Reader::buildSpline},
        {"IMAGE", &Reader::buildImage},
        {"INSERT", &Reader::buildInsert},
        {"LARGE_RADIAL_DIMENSION", &Reader::buildDimension},
        {"LEADER", &Reader::buildLeader},
        {"LINE", &Reader::buildLine},
        {"LWPOLYLINE", &Reader::buildLwPolyline},
        {"MESH", &Reader::buildSubdivisionMesh},
        {"MLEADER", &Reader::buildMLeader},
        {"MLINE", &Reader::buildMLine},
        {"MTEXT", &Reader::buildMText},
        {"MULTILEADER", &Reader::buildMLeader},
        {"POINT", &Reader::buildPoint},
        {"POLYLINE", &Reader::buildPolyline},
        {"RAY", &Reader::buildRay},
        {"REGION", &Reader::buildBody},
        {"SHAPE", &Reader::buildShape},
        {"SOLID", &Reader::buildSolid},
        {"SPLINE", &Reader::buildSpline},
        {"TEXT", &Reader::buildText},
        {"TOLERANCE", &Reader::buildTolerance},
        {"TRACE", &Reader::buildSolid},
        {"VIEWPORT", &Reader::buildViewport},
        {"WIPEOUT", &Reader::buildWipeout},
        {"XLINE", &Reader::buildXline},
    };
    const auto* row = std::lower_bound(std::begin(kRows), std::end(kRows), type,
                                       [](const Row& r, std::string_view t) { return r.type < t; });
    return row != std::end(kRows) && row->type == type ? row->builder : nullptr;
}

std::unique_ptr<Entity> Reader::buildLine(const EntityTags& tags) {
    Vector3 start;
    Vector3 end;
    Vector3 normal{0, 0, 1};
    double thickness = 0.0;
    double elevation = 0.0;
    bool hasZ = false;
    for (const Tag& tag : tags.body) {
        switch (tag.code) {
            case 10:
                start.x = real(tag);
                break;
            case 20:
                start.y = real(tag);
                break;
            case 30:
                start.z = real(tag);
                hasZ = true;
                break;
            case 11:
                end.x = real(tag);
                break;
            case 21:
                end.y = real(tag);
                break;
            case 31:
                end.z = real(tag);
                hasZ = true;
                break;
            case 38:
                elevation = real(tag);
                break;
            case 39:
                thickness = real(tag);
                break;
            default:
                axis(tag, 210, normal);
                break;
        }
    }
    if (!hasZ) start.z = end.z = elevation;
    auto line = std::make_unique<engine::LineEntity>();
    line->setEnds(start, end);
    setPlane(*line, normal, thickness, line->elevation);
    return line;
}

std::unique_ptr<Entity> Reader::buildPoint(const EntityTags& tags) {
    PlaneGroups plane;
    for (const Tag& tag : tags.body) planeGroup(tag, plane);
    auto point = std::make_unique<engine::PointEntity>(plane.point.xy());
    setPlane(*point, plane);
    return point;
}

std::unique_ptr<Entity> Reader::buildCircle(const EntityTags& tags) {
    PlaneGroups plane;
    double radius = 0.0;
    for (const Tag& tag : tags.body)
        if (!planeGroup(tag, plane) && tag.code == 40) radius = real(tag);
    auto circle = std::make_unique<engine::CircleEntity>(plane.point.xy(), radius);
    setPlane(*circle, plane);
    return circle;
}

std::unique_ptr<Entity> Reader::buildArc(const EntityTags& tags) {
    PlaneGroups plane;
    auto arc = std::make_unique<engine::ArcEntity>(Vector2{}, 0.0, 0.0, 0.0);
    for (const Tag& tag : tags.body) {
        if (planeGroup(tag, plane)) continue;
        switch (tag.code) {
            case 40:
                arc->radius = real(tag);
                break;
            case 50:
                arc->startAngle = angle(tag);
                break;
            case 51:
                arc->endAngle = angle(tag);
                break;
            default:
                break;
        }
    }
    arc->center = plane.point.xy();
    setPlane(*arc, plane);
    return arc;
}

std::unique_ptr<Entity> Reader::buildEllipse(const EntityTags& tags) {
    Vector3 center;
    Vector3 major{1, 0, 0};
    Vector3 normal{0, 0, 1};
    double thickness = 0.0;
    auto ellipse = std::make_unique<engine::EllipseEntity>(Vector2{}, Vector2{1, 0}, 1.0);
    for (const Tag& tag : tags.body) {
        if (axis(tag, 10, center) || axis(tag, 11, major) || axis(tag, 210, normal)) continue;
        switch (tag.code) {
            case 39:
                thickness = real(tag);
                break;
            case 40:
                ellipse->minorRatio = real(tag);
                break;
            case 41:
                ellipse->startParam = real(tag);
                break;
            case 42:
                ellipse->endParam = real(tag);
                break;
            default:
                break;
        }
    }
    if (!(major.length_squared() > 0.0)) return nullptr;
    ellipse->center = center.xy();
    ellipse->major = major.xy();
    setPlane(*ellipse, normal, thickness, center.z);
    if (ellipse->minorRatio > 1.0 + 1e-9 && !own_) {
        // Axes the wrong way round: the parameters turn with them.
        const Vector3 minor = ellipse->minor3();
        ellipse->major = minor.xy();
        ellipse->minorRatio = 1.0 / ellipse->minorRatio;
        ellipse->startParam -= math::kPi / 2;
        ellipse->endParam -= math::kPi / 2;
    }
    return ellipse;
}

std::unique_ptr<Entity> Reader::buildRay(const EntityTags& tags) {
    Vector3 base;
    Vector3 dir{1, 0, 0};
    for (const Tag& tag : tags.body)
        if (!axis(tag, 10, base)) axis(tag, 11, dir);
    auto ray = std::make_unique<engine::RayEntity>(base.xy(), dir.xy());
    ray->elevation = base.z;
    return ray;
}

std::unique_ptr<Entity> Reader::buildXline(const EntityTags& tags) {
    Vector3 base;
    Vector3 dir{1, 0, 0};
    for (const Tag& tag : tags.body)
        if (!axis(tag, 10, base)) axis(tag, 11, dir);
    auto line = std::make_unique<engine::XlineEntity>(base.xy(), dir.xy());
    line->elevation = base.z;
    return line;
}

std::unique_ptr<Entity> Reader::buildSolid(const EntityTags& tags) {
    std::array<Vector3, 4> corners;
    Vector3 normal{0, 0, 1};
    double thickness = 0.0;
    double elevation = 0.0;
    bool fourth = false;
    for (const Tag& tag : tags.body) {
        if (axis(tag, 10, corners[0]) || axis(tag, 11, corners[1]) || axis(tag, 12, corners[2])) continue;
        if (axis(tag, 13, corners[3])) {
            fourth = true;
            continue;
        }
        if (axis(tag, 210, normal)) continue;
        if (tag.code == 38) elevation = real(tag);
        if (tag.code == 39) thickness = real(tag);
    }
    if (!fourth) corners[3] = corners[2];
    auto solid = std::make_unique<engine::Solid2DEntity>();
    for (std::size_t i = 0; i < 4; ++i) solid->corners[i] = corners[i].xy();
    solid->trace = tags.type == "TRACE";
    setPlane(*solid, normal, thickness, corners[0].z != 0.0 ? corners[0].z : elevation);
    return solid;
}

std::unique_ptr<Entity> Reader::buildFace(const EntityTags& tags) {
    auto face = std::make_unique<engine::Face3DEntity>();
    bool fourth = false;
    for (const Tag& tag : tags.body) {
        if (axis(tag, 10, face->corners[0]) || axis(tag, 11, face->corners[1]) || axis(tag, 12, face->corners[2]))
            continue;
        if (axis(tag, 13, face->corners[3])) {
            fourth = true;
            continue;
        }
        if (tag.code == 70) face->edgeFlags = small(tag);
    }
    if (!fourth) face->corners[3] = face->corners[2];
    return face;
}

std::unique_ptr<Entity> Reader::buildShape(const EntityTags& tags) {
    auto shape = std::make_unique<engine::ShapeEntity>();
    PlaneGroups plane;
    for (const Tag& tag : tags.body) {
        if (planeGroup(tag, plane)) continue;
        switch (tag.code) {
            case 2:
                shape->name = text(tag);
                break;
            case 40:
                shape->size = real(tag);
                break;
            case 41:
                shape->widthFactor = real(tag);
                break;
            case 50:
                shape->rotation = angle(tag);
                break;
            case 51:
                shape->oblique = angle(tag);
                break;
            default:
                break;
        }
    }
    shape->position = plane.point.xy();
    setPlane(*shape, plane);
    return shape;
}

}  // namespace kova::io::dxf
