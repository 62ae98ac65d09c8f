// Dimensions and leaders, and the overrides of dimension variables that both carry.
#include <algorithm>
#include <cmath>

#include "engine/entities/dimensions/dimension.hpp"
#include "engine/entities/dimensions/leader.hpp"
#include "engine/entities/dimensions/tolerance.hpp"
#include "io/dxf/dxf_facts.hpp"
#include "io/dxf/own_data.hpp"
#include "io/dxf/reading/reader.hpp"
#include "math/matrix4.hpp"

namespace kova::io::dxf {

using engine::DimensionEntity;
using engine::DimensionType;
using engine::Entity;
using engine::XDataItem;
using math::Vector2;
using math::Vector3;

std::unique_ptr<Entity> Reader::buildDimension(const EntityTags& tags) {
    auto out = std::make_unique<DimensionEntity>();
    Vector3 p10;
    Vector3 p11;
    Vector3 p13;
    Vector3 p14;
    Vector3 p15;
    Vector3 p16;
    Vector3 normal{0, 0, 1};
    std::int64_t flags = 0;
    bool kindSeen = false;
    bool partial = false;
    bool leader = false;
    double horizontal = 0.0;
    for (const Tag& tag : tags.body) {
        if (axis(tag, 10, p10) || axis(tag, 11, p11) || axis(tag, 13, p13) || axis(tag, 14, p14) ||
            axis(tag, 15, p15) || axis(tag, 16, p16) || axis(tag, 210, normal))
            continue;
        switch (tag.code) {
            case 1:
                out->textOverride = text(tag);
                break;
            case 2:
                out->blockName = name(tag);
                break;
            case 3:
                out->dimStyleName = name(tag);
                break;
            case 50:
                out->linearRotation = angle(tag);
                break;
            case 51:
                horizontal = angle(tag);
                break;
            case 52:
                out->obliqueAngle = angle(tag);
                break;
            case 53:
                out->textRotation = angle(tag);
                break;
            case 70:
                // An arc length dimension has a second one in its own part.
                if (kindSeen)
                    partial = tag.integer() != 0;
                else
                    flags = tag.integer();
                kindSeen = true;
                break;
            case 71:
                if (tags.type == "ARC_DIMENSION") leader = tag.integer() != 0 && kindSeen;
                break;
            default:
                break;
        }
    }
    // The text's place is in the object plane, the other points are in world coordinates.
    if (!(normal == Vector3{0, 0, 1}) && normal.length_squared() > 0.0)
        p11 = math::Matrix4::object_to_world(normal.normalized()).transform_point(p11);
    std::int64_t kind = flags & 15;
    if (tags.type == "ARC_DIMENSION") kind = 8;
    if (tags.type == "LARGE_RADIAL_DIMENSION") kind = 9;
    out->def1 = p13.xy();
    out->def2 = p14.xy();
    out->def3 = p15.xy();
    out->dimLine = p10.xy();
    switch (kind) {
        case 1:
            out->subType = DimensionType::Aligned;
            break;
        case 2:
            out->subType = DimensionType::Angular2Line;
            out->def4 = p10.xy();
            out->dimLine = p16.xy();
            break;
        case 3:
            out->subType = DimensionType::Diameter;
            out->def1 = p15.xy();
            out->def2 = p10.xy();
            out->def3 = {};
            out->dimLine = p11.xy();
            break;
        case 4:
        case 9:
            out->subType = DimensionType::Radius;
            out->def1 = p10.xy();
            out->def2 = p15.xy();
            out->def3 = {};
            out->dimLine = p11.xy();
            if (kind == 9) {
                out->jogged = true;
                out->jogCenter = p13.xy();
                out->jogPoint = p14.xy();
            }
            break;
        case 5:
            out->subType = DimensionType::Angular3Point;
            break;
        case 6:
            out->subType = (flags & 64) != 0 ? DimensionType::OrdinateX : DimensionType::Ordinate;
            out->def3 = p10.xy();
            out->dimLine = {};
            if (horizontal != 0.0) out->linearRotation = -horizontal;
            break;
        case 8:
            out->subType = DimensionType::ArcLength;
            out->partialArc = partial;
            if (leader) out->def4 = p16.xy();
            break;
        default:
            out->subType = DimensionType::Rotated;
            break;
    }
    if ((flags & 128) != 0) out->setUserText(p11.xy());
    pendingTextPlace_ = p11.xy();
    if (!out->blockName.empty()) pictures_.push_back(out->blockName);
    if (out->dimStyleName.empty()) out->dimStyleName = engine::commonNames().standard;
    setPlane(*out, normal, 0.0, p10.z);
    return out;
}

void Reader::takeDimensionOverrides(std::vector<XDataItem>& items, Entity& entity) {
    // DSTYLE { code value code value ... }
    std::size_t begin = 0;
    while (begin < items.size() &&
           !(items[begin].code == 1000 && std::get<std::string>(items[begin].value) == "DSTYLE"))
        ++begin;
    if (begin == items.size()) return;
    std::size_t i = begin + 1;
    if (i < items.size() && items[i].code == 1002) ++i;
    std::map<std::string, double> numbers;
    std::map<std::string, std::string> names;
    for (; i + 1 < items.size() && items[i].code == 1070; i += 2) {
        auto code = std::get<std::int64_t>(items[i].value);
        if (code == 5) code = 342;
        if (code == 6) code = 343;
        if (code == 7) code = 344;
        const auto variables = engine::dimVariables();
        const auto variable = std::find_if(variables.begin(), variables.end(),
                                           [&](const engine::DimVariable& v) { return v.dxfCode == code; });
        if (variable == variables.end()) continue;
        const std::string key(variable->name);
        const XDataItem& item = items[i + 1];
        const bool named = std::holds_alternative<engine::Name engine::DimStyle::*>(variable->member);
        const bool textual = std::holds_alternative<std::string engine::DimStyle::*>(variable->member);
        if (const auto* d = std::get_if<double>(&item.value))
            numbers[key] = code == kJogAngleCode && isJogInDegrees(*d) ? radiansFromDegrees(*d) : *d;
        else if (const auto* n = std::get_if<std::int64_t>(&item.value))
            numbers[key] = static_cast<double>(*n);
        else if (const auto* s = std::get_if<std::string>(&item.value)) {
            if (item.code == 1005)
                names[key] = recordName(parseHandle(*s)).str();
            else if (named || textual)
                names[key] = *s;
        }
    }
    if (i < items.size() && items[i].code == 1002) ++i;
    items.erase(items.begin() + static_cast<std::ptrdiff_t>(begin), items.begin() + static_cast<std::ptrdiff_t>(i));

    if (entity.type() == engine::EntityType::Dimension) {
        auto& dimension = static_cast<DimensionEntity&>(entity);
        dimension.styleOverrides.merge(numbers);
        dimension.nameOverrides.merge(names);
        // Some programs say only by this variable that the text stands where they have put it.
        const auto placed = dimension.styleOverrides.find("DIMUPT");
        const bool byVariable = placed != dimension.styleOverrides.end() && placed->second != 0.0;
        if (byVariable && !dimension.hasUserText() && pendingTextPlace_ != Vector2{})
            dimension.setUserText(pendingTextPlace_);
        return;
    }
    const auto number = [&](const char* key) {
        const auto found = numbers.find(key);
        return found == numbers.end() ? 0.0 : found->second;
    };
    if (entity.type() == engine::EntityType::Tolerance) {
        static_cast<engine::ToleranceEntity&>(entity).textHeight = number("DIMTXT");
        return;
    }
    auto& leader = static_cast<engine::LeaderEntity&>(entity);
    // The model's sizes are those that are drawn.
    const double scale = numbers.count("DIMSCALE") != 0 && number("DIMSCALE") > 0.0 ? number("DIMSCALE") : 1.0;
    if (numbers.count("DIMASZ") != 0) leader.arrowSize = number("DIMASZ") * scale;
    if (numbers.count("DIMTXT") != 0) leader.textHeight = number("DIMTXT") * scale;
    if (const auto block = names.find("DIMLDRBLK"); block != names.end())
        leader.arrowBlock = engine::Name(block->second);
}

namespace {

/// Files have the end of the hook line among the vertices.
void settleHook(engine::LeaderEntity& leader) {
    if (leader.hookLine && leader.vertices.size() >= 2) leader.vertices.pop_back();
}

}  // namespace

void Reader::applyEntityData(const OwnText& text, Entity& entity) {
    auto* leader = entity.type() == engine::EntityType::Leader ? static_cast<engine::LeaderEntity*>(&entity) : nullptr;
    const bool settled = leader == nullptr || leader->hookLine;
    applyOwnData(text, entity);
    if (!settled) settleHook(*leader);
}

std::unique_ptr<Entity> Reader::buildLeader(const EntityTags& tags) {
    auto out = std::make_unique<engine::LeaderEntity>();
    Vector3 normal{0, 0, 1};
    double elevation = 0.0;
    bool hook = false;
    for (const Tag& tag : tags.body) {
        if (axis(tag, 210, normal)) continue;
        switch (tag.code) {
            case 3:
                out->dimStyleName = name(tag);
                break;
            case 10:
                out->vertices.push_back({real(tag), 0.0});
                break;
            case 20:
                if (!out->vertices.empty()) out->vertices.back().y = real(tag);
                break;
            case 30:
                if (out->vertices.size() == 1) elevation = real(tag);
                break;
            case 41:
                out->annotationWidth = real(tag);
                break;
            case 71:
                out->hasArrow = tag.integer() != 0;
                break;
            case 72:
                out->splined = tag.integer() == 1;
                break;
            case 74:
                out->hookDir = tag.integer() != 0 ? 1 : 0;
                break;
            case 75:
                hook = tag.integer() != 0;
                break;
            case 340:
                out->annotationHandle = tag.handle();
                break;
            default:
                break;
        }
    }
    if (out->vertices.empty()) return nullptr;
    out->hookLine = hook;
    const std::size_t n = out->vertices.size();
    if (!own_ && n >= 2) {
        // Programs differ in what they call the direction of the hook line.
        const Vector2 last = out->vertices[n - 1] - out->vertices[n - 2];
        if (last.x != 0.0) out->hookDir = last.x > 0.0 ? 1 : 0;
        out->hookLine = hook && n >= 3 && std::abs(last.y) <= 1e-9 * std::abs(last.x);
    }
    settleHook(*out);
    setPlane(*out, normal, 0.0, elevation);
    return out;
}

}  // namespace kova::io::dxf
