#pragma once

#include <string>

#include "engine/model/entity.hpp"
#include "math/curves/path.hpp"

namespace kova::engine {

struct ModelerEdges;

/// A solid-modeller body: its data are kept as read. Its edges are found from the modeller's records, text or binary
/// (straight, elliptic and spline curves); the silhouettes of curved faces are not drawn, so a sphere shows nothing.
/// A transform goes to the body's transform record; data that are not understood stay as they are.
class Solid3DEntity final : public Entity {
    KOVA_ENTITY(Solid3DEntity, Solid3D)

    enum class BodyKind : std::uint8_t { Solid, Region, Body };

    BodyKind kind = BodyKind::Solid;
    std::int32_t modelerVersion = 1;  ///< 1: text, 2: binary in the interchange formats
    std::string sat;                  ///< modeller text, decoded
    std::string sab;                  ///< modeller binary, as bytes

    bool hasBody() const { return !sat.empty() || !sab.empty(); }
    /// True when a transform by `m` really places the body anew.
    bool canTransform(const math::Matrix4& m) const;
    /// The edges in space; kept until the data change.
    const ModelerEdges& edges() const;

private:
    mutable std::shared_ptr<const ModelerEdges> edges_;
    mutable std::size_t edgesKey_ = 0;
};

/// "Solid3D", "Region" or "Body".
std::string_view bodyKindName(Solid3DEntity::BodyKind kind);

}  // namespace kova::engine
