#pragma once

#include "engine/model/entity.hpp"

namespace kova::engine {

/// A window of a layout onto model space.
class ViewportEntity final : public Entity {
    KOVA_ENTITY(ViewportEntity, Viewport)

    // Bits of statusFlags, those of DXF group 90.
    static constexpr std::int32_t kPerspective = 1;
    static constexpr std::int32_t kLocked = 16384;
    static constexpr std::int32_t kNonRectangular = 65536;
    static constexpr std::int32_t kOff = 131072;
    /// vpId of the layout's own view of its sheet: not a window, never drawn and without extents.
    static constexpr std::int32_t kSheetId = 1;

    math::Vector2 center;  ///< in paper space
    double width = 100.0;
    double height = 100.0;
    math::Vector2 viewTarget;  ///< the point of model space shown at the centre
    double viewTargetZ = 0.0;
    math::Vector3 viewDirection{0, 0, 1};  ///< from what is seen to the viewer
    double viewScale = 1.0;                ///< paper units for one model unit
    double viewTwist = 0.0;                ///< radians; the view appears turned counter-clockwise by it
    bool on = true;
    bool locked = false;
    std::int32_t vpId = 0;
    math::Vector2 snapBase;
    math::Vector2 snapSpacing{10, 10};
    math::Vector2 gridSpacing{10, 10};
    double snapAngle = 0.0;  ///< radians
    std::int32_t statusFlags = 0;
    std::vector<Name> vpFrozenLayers;
    std::uint64_t clipHandle = 0;  ///< of the closed entity of the layout that bounds the window; 0: its own frame

    bool isSheet() const { return vpId == kSheetId; }
    /// A window that shows the model: neither the sheet's own view nor switched off.
    bool isOn() const { return !isSheet() && on && (statusFlags & kOff) == 0; }
    /// True when the window shows the model straight from above.
    bool showsPlan() const;
    bool isFrozenHere(Name layer) const;
    /// The frame on paper.
    math::Bounds2 frame() const;
    /// The entity that bounds the window; null when there is none in the same layout.
    const Entity* clipEntity() const;
    /// From model space to paper.
    math::Matrix4 modelToPaper() const;
    /// A point of model space, at its height, on paper.
    math::Vector2 toPaper(const math::Vector3& model) const { return modelToPaper().transform_point(model).xy(); }
    math::Vector2 toPaper(const math::Vector2& model) const { return modelToPaper().transform_point(model); }
    /// The point of model space, at the height of the target, that shows there; the target where that plane stands on
    /// edge.
    math::Vector2 toModel(const math::Vector2& paper) const;
    /// Moves the target along the plane of the view to what shows at a point of the sheet.
    void aimAt(const math::Vector2& paper);
    /// Extents in model space of what the window shows.
    math::Bounds2 modelWindow() const;
};

}  // namespace kova::engine
