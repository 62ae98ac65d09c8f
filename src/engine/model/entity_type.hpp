#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

namespace kova::engine {

/// The entity kinds. The numbers are part of the program's interface and never change.
enum class EntityType : std::uint8_t {
    Line = 0,
    Circle = 1,
    Arc = 2,
    Polyline = 3,
    Point = 4,
    Text = 5,
    MText = 6,
    Hatch = 7,
    Dimension = 8,
    BlockReference = 9,
    Image = 10,
    Spline = 11,
    Ellipse = 12,
    Xline = 13,
    Ray = 14,
    Leader = 15,
    MLine = 16,
    MLeader = 17,
    Table = 18,
    Wipeout = 19,
    Region = 20,
    Tolerance = 21,
    AttributeDefinition = 22,
    Viewport = 23,
    Face3D = 24,
    Polyline3D = 25,
    Mesh = 26,
    Solid3D = 27,
    Solid2D = 28,
    Polyface = 29,
    Shape = 30,
};
inline constexpr int kEntityTypeCount = 31;

/// "Line", "Block Reference", "3D Face" ...; "Unknown" for a value outside the table.
std::string_view displayName(EntityType type);
/// The kind's name in the native file: "Line", "BlockReference", "Face3D" ...; "Unknown" outside the table.
std::string_view nativeName(EntityType type);
std::optional<EntityType> entityTypeFromNativeName(std::string_view name);
/// The record name in DXF: "LINE", "LWPOLYLINE", "INSERT", "ACAD_TABLE" ...; "ENTITY" outside the table.
std::string_view dxfName(EntityType type);
/// The kind that a user means by a name: DXF names, native names and display names, without regard to case.
std::optional<EntityType> entityTypeFromAnyName(std::string_view name);

}  // namespace kova::engine
