#include "engine/model/entity_type.hpp"

#include "engine/model/name.hpp"

namespace kova::engine {

namespace {

struct TypeRow {
    std::string_view display;
    std::string_view native;
    std::string_view dxf;
};

constexpr TypeRow kRows[kEntityTypeCount] = {
    {"Line", "Line", "LINE"},
    {"Circle", "Circle", "CIRCLE"},
    {"Arc", "Arc", "ARC"},
    {"Polyline", "Polyline", "LWPOLYLINE"},
    {"Point", "Point", "POINT"},
    {"Text", "Text", "TEXT"},
    {"MText", "MText", "MTEXT"},
    {"Hatch", "Hatch", "HATCH"},
    {"Dimension", "Dimension", "DIMENSION"},
    {"Block Reference", "BlockReference", "INSERT"},
    {"Image", "Image", "IMAGE"},
    {"Spline", "Spline", "SPLINE"},
    {"Ellipse", "Ellipse", "ELLIPSE"},
    {"Xline", "Xline", "XLINE"},
    {"Ray", "Ray", "RAY"},
    {"Leader", "Leader", "LEADER"},
    {"MLine", "MLine", "MLINE"},
    {"MLeader", "MLeader", "MULTILEADER"},
    {"Table", "Table", "ACAD_TABLE"},
    {"Wipeout", "Wipeout", "WIPEOUT"},
    {"Region", "Region", "REGION"},
    {"Tolerance", "Tolerance", "TOLERANCE"},
    {"Attribute Definition", "AttributeDefinition", "ATTDEF"},
    {"Viewport", "Viewport", "VIEWPORT"},
    {"3D Face", "Face3D", "3DFACE"},
    {"3D Polyline", "Polyline3D", "POLYLINE"},
    {"Mesh", "Mesh", "MESH"},
    {"3D Solid", "Solid3D", "3DSOLID"},
    {"2D Solid", "Solid2D", "SOLID"},
    {"Polyface Mesh", "Polyface", "POLYLINE"},
    {"Shape", "Shape", "SHAPE"},
};

const TypeRow* row(EntityType type) {
    const auto index = static_cast<int>(type);
    return index < kEntityTypeCount ? &kRows[index] : nullptr;
}

}  // namespace

std::string_view displayName(EntityType type) { return row(type) != nullptr ? row(type)->display : "Unknown"; }
std::string_view nativeName(EntityType type) { return row(type) != nullptr ? row(type)->native : "Unknown"; }
std::string_view dxfName(EntityType type) { return row(type) != nullptr ? row(type)->dxf : "ENTITY"; }

std::optional<EntityType> entityTypeFromNativeName(std::string_view name) {
    for (int i = 0; i < kEntityTypeCount; ++i)
        if (kRows[i].native == name) return static_cast<EntityType>(i);
    return std::nullopt;
}

std::optional<EntityType> entityTypeFromAnyName(std::string_view name) {
    for (int i = 0; i < kEntityTypeCount; ++i)
        if (equalNoCase(kRows[i].dxf, name) || equalNoCase(kRows[i].native, name) ||
            equalNoCase(kRows[i].display, name))
            return static_cast<EntityType>(i);
    // Other words for the same kinds.
    if (equalNoCase(name, "POLYLINE") || equalNoCase(name, "PLINE")) return EntityType::Polyline;
    if (equalNoCase(name, "MLEADER")) return EntityType::MLeader;
    if (equalNoCase(name, "TRACE")) return EntityType::Solid2D;
    if (equalNoCase(name, "BODY")) return EntityType::Solid3D;
    return std::nullopt;
}

}  // namespace kova::engine
