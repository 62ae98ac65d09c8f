// Block references with their attributes, images, wipeouts, viewports.
#include <algorithm>
#include <cmath>

#include "engine/entities/block_reference.hpp"
#include "engine/entities/image.hpp"
#include "engine/entities/viewport.hpp"
#include "engine/entities/wipeout.hpp"
#include "engine/model/view_frame.hpp"
#include "io/dxf/reading/reader.hpp"
#include "math/angles.hpp"

namespace kova::io::dxf {

using engine::Entity;
using math::Vector2;
using math::Vector3;

std::unique_ptr<Entity> Reader::buildInsert(const EntityTags& tags) {
    auto out = std::make_unique<engine::BlockReferenceEntity>();
    Vector3 position;
    Vector3 normal{0, 0, 1};
    double scaleZ = 1.0;
    bool hasZ = false;
    bool follow = tags.attributesFollow;
    for (const Tag& tag : tags.body) {
        if (axis(tag, 10, position) || axis(tag, 210, normal)) continue;
        switch (tag.code) {
            case 2:
                out->blockName = name(tag);
                break;
            case 38:
                position.z = real(tag);
                break;
            case 41:
                out->scaleX = real(tag);
                break;
            case 42:
                out->scaleY = real(tag);
                break;
            case 43:
                scaleZ = real(tag);
                hasZ = true;
                break;
            case 44:
                out->columnSpacing = real(tag);
                break;
            case 45:
                out->rowSpacing = real(tag);
                break;
            case 50:
                out->rotation = angle(tag);
                break;
            case 66:
                follow = tag.integer() != 0;
                break;
            case 70:
                out->columns = std::max(1, small(tag));
                break;
            case 71:
                out->rows = std::max(1, small(tag));
                break;
            default:
                break;
        }
    }
    // A missing group means 1; the model's own default is the size of the x scale.
    if (!hasZ) scaleZ = 1.0;
    if (scaleZ != std::abs(out->scaleX)) out->scaleZ = scaleZ;
    if (out->scaleX == 0.0) out->scaleX = 1.0;
    if (out->scaleY == 0.0) out->scaleY = 1.0;
    out->insert = position.xy();
    setPlane(*out, normal, 0.0, position.z);
    if (follow) {
        const bool sound = !unusable_;
        while (reader_.next(subRecord_)) {
            if (subRecord_.type == "SEQEND") break;
            if (subRecord_.type != "ATTRIB") {
                reader_.unread();
                break;
            }
            engine::BlockAttribute attribute;
            unusable_ = false;
            const EntityTags parts = partTags(subRecord_);
            notePart(tags);
            noteHandle(parts.handle);
            if (readAttribute(parts, *out, attribute))
                out->attributes.push_back(std::move(attribute));
            else
                skip("ATTRIB");
        }
        unusable_ = !sound;
    }
    if (out->blockName.empty()) return nullptr;
    return out;
}

namespace {

/// The groups that images and wipeouts share.
struct ImageGroups {
    Vector3 origin;
    Vector3 u{1, 0, 0};
    Vector3 v{0, 1, 0};
    Vector2 size{1, 1};
    std::vector<Vector2> clip;
    bool clipping = false;
    bool rectangle = true;
};

}  // namespace

std::unique_ptr<Entity> Reader::buildImage(const EntityTags& tags) {
    auto out = std::make_unique<engine::ImageEntity>();
    ImageGroups g;
    Vector2 point;
    for (const Tag& tag : tags.body) {
        if (axis(tag, 10, g.origin) || axis(tag, 11, g.u) || axis(tag, 12, g.v) || axis(tag, 13, g.size)) continue;
        switch (tag.code) {
            case 14:
                g.clip.push_back({real(tag), 0.0});
                break;
            case 24:
                if (!g.clip.empty()) g.clip.back().y = real(tag);
                break;
            case 70:
                out->imageTransparency = (tag.integer() & 8) != 0 ? 1 : 0;
                out->showFrame = (tag.integer() & 1) != 0;
                break;
            case 71:
                g.rectangle = tag.integer() != 2;
                break;
            case 280:
                g.clipping = tag.integer() != 0;
                break;
            case 281:
                out->brightness = std::clamp(small(tag), 0, 100);
                break;
            case 282:
                out->contrast = std::clamp(small(tag), 0, 100);
                break;
            case 283:
                out->fade = std::clamp(small(tag), 0, 100);
                break;
            case 340:
                pendingImage_ = tag.handle();
                break;
            default:
                break;
        }
    }
    const Vector2 u = g.u.xy();
    const Vector2 v = g.v.xy();
    out->insertion = g.origin.xy();
    out->elevation = g.origin.z;
    out->pixelWidth = static_cast<std::int32_t>(std::clamp(g.size.x, 0.0, 1e9));
    out->pixelHeight = static_cast<std::int32_t>(std::clamp(g.size.y, 0.0, 1e9));
    out->width = g.u.length() * g.size.x;
    out->height = g.v.length() * g.size.y * (u.cross(v) < 0.0 ? -1.0 : 1.0);
    if (u.y != 0.0 || u.x < 0.0) out->rotation = std::atan2(u.y, u.x);
    // Pixel rows run downwards from the upper left corner.
    const auto world = [&](const Vector2& p) { return out->insertion + u * (p.x + 0.5) + v * (g.size.y - 0.5 - p.y); };
    const auto isFrame = [&] {
        if (!g.rectangle || g.clip.size() != 2) return false;
        const Vector2 low{std::min(g.clip[0].x, g.clip[1].x), std::min(g.clip[0].y, g.clip[1].y)};
        const Vector2 high{std::max(g.clip[0].x, g.clip[1].x), std::max(g.clip[0].y, g.clip[1].y)};
        return low.near_equal({-0.5, -0.5}, 1e-6) && high.near_equal(g.size - Vector2{0.5, 0.5}, 1e-6);
    };
    if (!isFrame()) {
        if (!g.rectangle && g.clip.size() > 1 && g.clip.front() == g.clip.back()) g.clip.pop_back();
        for (const Vector2& p : g.clip) out->clipBoundary.push_back(world(p));
        out->clipEnabled = g.clipping && !out->clipBoundary.empty();
    }
    return out;
}

std::unique_ptr<Entity> Reader::buildWipeout(const EntityTags& tags) {
    auto out = std::make_unique<engine::WipeoutEntity>();
    ImageGroups g;
    for (const Tag& tag : tags.body) {
        if (axis(tag, 10, g.origin) || axis(tag, 11, g.u) || axis(tag, 12, g.v)) continue;
        switch (tag.code) {
            case 14:
                g.clip.push_back({real(tag), 0.0});
                break;
            case 24:
                if (!g.clip.empty()) g.clip.back().y = real(tag);
                break;
            case 70:
                out->showFrame = (tag.integer() & 1) != 0;
                break;
            case 71:
                g.rectangle = tag.integer() != 2;
                break;
            default:
                break;
        }
    }
    if (g.clip.size() == 2) g.clip = {g.clip[0], {g.clip[1].x, g.clip[0].y}, g.clip[1], {g.clip[0].x, g.clip[1].y}};
    if (g.clip.empty()) g.clip = {{-0.5, -0.5}, {0.5, -0.5}, {0.5, 0.5}, {-0.5, 0.5}};
    if (g.clip.size() > 1 && g.clip.front() == g.clip.back()) g.clip.pop_back();
    const Vector2 u = g.u.xy();
    const Vector2 v = g.v.xy();
    for (const Vector2& p : g.clip) out->vertices.push_back(g.origin.xy() + u * (p.x + 0.5) + v * (0.5 - p.y));
    out->elevation = g.origin.z;
    return out;
}

std::unique_ptr<Entity> Reader::buildViewport(const EntityTags& tags) {
    auto out = std::make_unique<engine::ViewportEntity>();
    Vector3 center;
    Vector2 viewCenter;
    Vector3 target;
    double viewHeight = 0.0;
    std::int64_t status = 1;
    bool hasFlags = false;
    for (const Tag& tag : tags.body) {
        if (axis(tag, 10, center) || axis(tag, 12, viewCenter) || axis(tag, 13, out->snapBase) ||
            axis(tag, 14, out->snapSpacing) || axis(tag, 15, out->gridSpacing) ||
            axis(tag, 16, out->viewDirection) || axis(tag, 17, target))
            continue;
        switch (tag.code) {
            case 40:
                out->width = real(tag);
                break;
            case 41:
                out->height = real(tag);
                break;
            case 45:
                viewHeight = real(tag);
                break;
            case 50:
                out->snapAngle = angle(tag);
                break;
            case 51:
                out->viewTwist = angle(tag);
                break;
            case 68:
                status = tag.integer();
                break;
            case 69:
                out->vpId = small(tag);
                break;
            case 90:
                out->statusFlags = small(tag);
                hasFlags = true;
                break;
            case 340:
                out->clipHandle = tag.handle();
                break;
            case 331:
            case 341:
                if (const engine::Name layer = recordName(tag.handle()); !layer.empty())
                    out->vpFrozenLayers.push_back(layer);
                break;
            default:
                break;
        }
    }
    out->center = center.xy();
    out->elevation = center.z;
    out->viewTarget = target.xy() + Vector2::from_angle(-out->viewTwist) * viewCenter.x +
                      Vector2::from_angle(-out->viewTwist + math::kPi / 2) * viewCenter.y;
    if (out->viewTwist == 0.0) out->viewTarget = target.xy() + viewCenter;
    out->viewTargetZ = target.z;
    if (!out->viewDirection.is_finite() || out->viewDirection == Vector3{}) out->viewDirection = {0, 0, 1};
    if (!out->showsPlan()) {
        // The centre lies along the axes of the view, turned with it.
        const Vector2 way = math::Matrix4::rotation_z(-out->viewTwist).transform_direction(viewCenter);
        const Vector3 middle = target + math::Matrix4::object_to_world(engine::usableDirection(out->viewDirection))
                                            .transform_direction(Vector3(way));
        out->viewTarget = middle.xy();
        out->viewTargetZ = middle.z;
    }
    if (viewHeight > 0.0) out->viewScale = out->height / viewHeight;
    out->locked = (out->statusFlags & engine::ViewportEntity::kLocked) != 0;
    // The status of a layout that nobody has looked at is 0 whether its viewports are on or off.
    if (hasFlags && !own_) status = 1;
    out->on = status != 0 && (out->statusFlags & engine::ViewportEntity::kOff) == 0;
    return out;
}

/// Releases before 13 keep a viewport's view in extended data: MVIEW { version target direction twist height
/// centerX centerY ... }.
void Reader::readOldViewport(const engine::XData& data, Entity& entity) {
    const auto& items = data.applications.front().items;
    std::size_t i = 0;
    while (i < items.size() && !(items[i].code == 1000 && std::get<std::string>(items[i].value) == "MVIEW")) ++i;
    if (i == items.size()) return;
    auto& out = static_cast<engine::ViewportEntity&>(entity);
    std::vector<double> reals;
    Vector2 target;
    bool targetSeen = false;
    for (; i < items.size(); ++i) {
        if (const auto* p = std::get_if<Vector3>(&items[i].value)) {
            if (!targetSeen) target = p->xy();
            targetSeen = true;
        } else if (const auto* d = std::get_if<double>(&items[i].value)) {
            reals.push_back(*d);
        }
    }
    if (reals.size() < 4 || !(reals[1] > 0.0)) return;
    out.viewTwist = math::toRadians(reals[0]);
    out.viewScale = out.height / reals[1];
    const Vector2 middle{reals[2], reals[3]};
    out.viewTarget = target + Vector2::from_angle(-out.viewTwist) * middle.x +
                     Vector2::from_angle(-out.viewTwist + math::kPi / 2) * middle.y;
}

}  // namespace kova::io::dxf
