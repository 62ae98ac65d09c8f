#include "engine/modify/flattened.hpp"

#include <cmath>

#include "engine/kinds/all.hpp"
#include "engine/model/object_plane.hpp"

namespace kova::engine {

namespace {

using math::Vector3;

bool isSolid(const Entity& entity) {
    return entity.type() == EntityType::Solid3D || entity.type() == EntityType::Viewport;
}

/// In a plane z = const, seen from either side.
bool isLevel(const Entity& entity) {
    const Vector3 n = entity.normal();
    return inWorldPlane(entity) || (std::abs(n.x) <= 1e-9 && std::abs(n.y) <= 1e-9 && n.z != 0.0);
}

template <class Points>
bool dropZ(Points& points) {
    bool any = false;
    for (Vector3& p : points) {
        any = any || p.z != 0.0;
        p.z = 0.0;
    }
    return any;
}

std::unique_ptr<Entity> polylineOf(const Polyline3DEntity& source) {
    auto made = std::make_unique<PolylineEntity>();
    made->copyCommonFrom(source);
    made->closed = source.closed;
    made->vertices.reserve(source.vertices.size());
    for (const Vector3& p : source.vertices)
        if (made->vertices.empty() || made->vertices.back() != p.xy()) made->vertices.push_back(p.xy());
    return made;
}

/// Sets z of what is kept in world coordinates; true when something changed.
bool dropHeights(Entity& entity) {
    switch (entity.type()) {
        case EntityType::Line: {
            auto& line = static_cast<LineEntity&>(entity);
            return std::exchange(line.hasZ, false);
        }
        case EntityType::Spline: {
            auto& spline = static_cast<SplineEntity&>(entity);
            const bool any = !spline.controlZ.empty() || spline.helix;
            spline.controlZ.clear();
            spline.helix.reset();
            return any;
        }
        case EntityType::Face3D:
            return dropZ(static_cast<Face3DEntity&>(entity).corners);
        case EntityType::Mesh:
            return dropZ(static_cast<MeshEntity&>(entity).vertices);
        case EntityType::Polyface:
            return dropZ(static_cast<PolyfaceEntity&>(entity).vertices);
        default:
            return false;
    }
}

}  // namespace

std::unique_ptr<Entity> flattened(const Entity& entity) {
    if (isSolid(entity)) return nullptr;
    std::unique_ptr<Entity> made;
    bool changed = false;
    if (entity.type() == EntityType::Polyline3D) {
        made = polylineOf(static_cast<const Polyline3DEntity&>(entity));
        changed = true;
    } else if (!isLevel(entity)) {
        made = transformedEntity(entity, math::Matrix4::scaling(1.0, 1.0, 0.0));
        if (!made || !inWorldPlane(*made)) return nullptr;
        changed = true;
    } else {
        made = entity.clone();
    }
    if (entity.type() == EntityType::Line) {
        const auto& line = static_cast<const LineEntity&>(entity);
        if (line.start == line.end && line.start3().z != line.end3().z) {
            auto point = std::make_unique<PointEntity>();
            point->position = line.start;
            point->copyCommonFrom(entity);
            made = std::move(point);
            changed = true;
        }
    }
    changed = dropHeights(*made) || changed;
    changed = std::exchange(made->elevation, 0.0) != 0.0 || changed;
    if (made->thickness() != 0.0) {
        made->setThickness(0.0);
        changed = true;
    }
    return changed ? std::move(made) : nullptr;
}

}  // namespace kova::engine
