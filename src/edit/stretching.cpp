#include "edit/stretching.hpp"

namespace kova::cmd {

namespace {

engine::PointTest insideAny(const StretchRegions& regions) {
    return [&regions](const math::Vector2& p) {
        for (const SelectionRegion& region : regions)
            if (region.contains(p)) return true;
        return false;
    };
}

}  // namespace

StretchEffect stretchEffect(const engine::Entity& entity, const StretchRegions& regions) {
    return engine::stretchEffect(entity, insideAny(regions));
}

void stretchEntity(engine::Entity& entity, const StretchRegions& regions, const math::Vector2& by) {
    engine::stretchPoints(entity, insideAny(regions), by);
}

}  // namespace kova::cmd
