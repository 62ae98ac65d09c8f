// Block references, pictures and viewports as groups.

#include <cmath>

#include "engine/entities/block_reference.hpp"
#include "engine/entities/image.hpp"
#include "engine/entities/viewport.hpp"
#include "script/lisp/entities/entity_codes.hpp"

namespace kova::script::lisp {

using namespace engine;
using math::Vector2;
using math::Vector3;

void insertGroups(const GroupIo& io, Entity& entity) {
    auto& e = static_cast<BlockReferenceEntity&>(entity);
    io.marker("AcDbBlockReference");
    if (!io.reading() && !e.attributes.empty()) io.out().integer(66, 1);
    io.name(2, e.blockName);
    io.point(10, e.insert, e.elevation);
    io.real(41, e.scaleX);
    io.real(42, e.scaleY);
    double z = e.effectiveScaleZ();
    if (!io.reading() || io.in().has(43)) {
        io.real(43, z);
        if (io.reading()) e.scaleZ = z;
    }
    io.real(50, e.rotation);
    io.integer(70, e.columns);
    io.integer(71, e.rows);
    io.real(44, e.columnSpacing);
    io.real(45, e.rowSpacing);
    normalGroup(io, e);
}

void imageGroups(const GroupIo& io, Entity& entity) {
    auto& e = static_cast<ImageEntity&>(entity);
    io.marker("AcDbRasterImage");
    io.text(1, e.filePath);
    io.point(10, e.insertion, e.elevation);
    const double pixelsX = e.pixelWidth > 0 ? e.pixelWidth : 1;
    const double pixelsY = e.pixelHeight > 0 ? e.pixelHeight : 1;
    if (!io.reading()) {
        const Vector2 x = Vector2::from_angle(e.rotation);
        io.out().point(11, Vector3(x * (e.width / pixelsX)));
        io.out().point(12, Vector3(x.perpendicular() * (e.height / pixelsY)));
        io.out().point(13, Vector2(pixelsX, pixelsY));
    } else {
        const Vector3 size = io.in().point(13, {pixelsX, pixelsY, 0});
        if (io.in().has(13)) {
            e.pixelWidth = static_cast<std::int32_t>(std::clamp(size.x, 0.0, 1e9));
            e.pixelHeight = static_cast<std::int32_t>(std::clamp(size.y, 0.0, 1e9));
        }
        if (io.in().has(11)) {
            const Vector2 u = io.in().point(11).xy();
            e.rotation = u.angle();
            e.width = u.length() * size.x;
        }
        if (io.in().has(12)) e.height = io.in().point(12).xy().length() * size.y;
    }
    io.boolean(280, e.clipEnabled);
    io.integer(281, e.brightness);
    io.integer(282, e.contrast);
    io.integer(283, e.fade);
    if (io.reading()) {
        e.brightness = std::clamp(e.brightness, 0, 100);
        e.contrast = std::clamp(e.contrast, 0, 100);
        e.fade = std::clamp(e.fade, 0, 100);
    }
}

void viewportGroups(const GroupIo& io, Entity& entity) {
    auto& e = static_cast<ViewportEntity&>(entity);
    io.marker("AcDbViewport");
    io.point(10, e.center, e.elevation);
    io.real(40, e.width);
    io.real(41, e.height);
    std::int32_t on = e.on ? 1 : 0;
    io.integer(68, on);
    e.on = on != 0;
    if (!io.reading()) io.integer(69, e.vpId);
    io.flat(12, e.viewTarget);
    double viewHeight = e.viewScale != 0.0 ? e.height / e.viewScale : e.height;
    io.real(45, viewHeight);
    if (io.reading() && viewHeight > 0.0) e.viewScale = e.height / viewHeight;
    io.real(51, e.viewTwist);
    std::int32_t flags = (e.statusFlags & ~ViewportEntity::kLocked) | (e.locked ? ViewportEntity::kLocked : 0);
    io.integer(90, flags);
    if (io.reading()) {
        e.statusFlags = flags;
        e.locked = (flags & ViewportEntity::kLocked) != 0;
    }
}

}  // namespace kova::script::lisp
