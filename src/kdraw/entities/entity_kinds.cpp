#include "kdraw/entities/entity_kinds.hpp"

#include <unordered_map>

#include "kdraw/groups/dxf_input.hpp"
#include "kdraw/entities/curves.hpp"
#include "kdraw/entities/dimensions.hpp"
#include "kdraw/entities/hatch.hpp"
#include "kdraw/entities/image.hpp"
#include "kdraw/entities/inserts.hpp"
#include "kdraw/entities/leader.hpp"
#include "kdraw/entities/lines.hpp"
#include "kdraw/entities/mesh.hpp"
#include "kdraw/entities/mline.hpp"
#include "kdraw/entities/multileader.hpp"
#include "kdraw/entities/others.hpp"
#include "kdraw/entities/polylines.hpp"
#include "kdraw/entities/solids.hpp"
#include "kdraw/entities/spline.hpp"
#include "kdraw/entities/table_entity.hpp"
#include "kdraw/entities/texts.hpp"
#include "kdraw/entities/viewport.hpp"

namespace kdraw {

namespace {

template <class T>
constexpr ObjectKind fixed(std::uint16_t type, const char* dxfName, const char* cppClass) {
    return {type, dxfName, cppClass, nullptr, 0, true, &makeObject<T>};
}

template <class T>
constexpr ObjectKind byClass(const char* dxfName, const char* cppClass, std::uint16_t proxyFlags,
                             const char* application = "ObjectDBX Classes") {
    return {0, dxfName, cppClass, application, proxyFlags, true, &makeObject<T>};
}

constexpr ObjectKind kKinds[] = {
    fixed<TextEntity>(1, "TEXT", "AcDbText"),
    fixed<AttributeEntity>(2, "ATTRIB", "AcDbAttribute"),
    fixed<AttributeDefinitionEntity>(3, "ATTDEF", "AcDbAttributeDefinition"),
    fixed<BlockBeginEntity>(4, "BLOCK", "AcDbBlockBegin"),
    fixed<BlockEndEntity>(5, "ENDBLK", "AcDbBlockEnd"),
    fixed<SequenceEndEntity>(6, "SEQEND", "AcDbSequenceEnd"),
    fixed<InsertEntity>(7, "INSERT", "AcDbBlockReference"),
    fixed<MInsertEntity>(8, "INSERT", "AcDbMInsertBlock"),
    fixed<Vertex2dEntity>(10, "VERTEX", "AcDb2dVertex"),
    fixed<Vertex3dEntity>(11, "VERTEX", "AcDb3dPolylineVertex"),
    fixed<MeshVertexEntity>(12, "VERTEX", "AcDbPolygonMeshVertex"),
    fixed<PolyfaceVertexEntity>(13, "VERTEX", "AcDbPolyFaceMeshVertex"),
    fixed<PolyfaceFaceEntity>(14, "VERTEX", "AcDbFaceRecord"),
    fixed<Polyline2dEntity>(15, "POLYLINE", "AcDb2dPolyline"),
    fixed<Polyline3dEntity>(16, "POLYLINE", "AcDb3dPolyline"),
    fixed<ArcEntity>(17, "ARC", "AcDbArc"),
    fixed<CircleEntity>(18, "CIRCLE", "AcDbCircle"),
    fixed<LineEntity>(19, "LINE", "AcDbLine"),
    fixed<OrdinateDimension>(20, "DIMENSION", "AcDbOrdinateDimension"),
    fixed<RotatedDimension>(21, "DIMENSION", "AcDbRotatedDimension"),
    fixed<AlignedDimension>(22, "DIMENSION", "AcDbAlignedDimension"),
    fixed<Angular3PointDimension>(23, "DIMENSION", "AcDb3PointAngularDimension"),
    fixed<Angular2LineDimension>(24, "DIMENSION", "AcDb2LineAngularDimension"),
    fixed<RadialDimension>(25, "DIMENSION", "AcDbRadialDimension"),
    fixed<DiametricDimension>(26, "DIMENSION", "AcDbDiametricDimension"),
    fixed<PointEntity>(27, "POINT", "AcDbPoint"),
    fixed<FaceEntity>(28, "3DFACE", "AcDbFace"),
    fixed<PolyfaceMeshEntity>(29, "POLYLINE", "AcDbPolyFaceMesh"),
    fixed<PolygonMeshEntity>(30, "POLYLINE", "AcDbPolygonMesh"),
    fixed<SolidEntity>(31, "SOLID", "AcDbTrace"),
    fixed<SolidEntity>(32, "TRACE", "AcDbTrace"),
    fixed<ShapeEntity>(33, "SHAPE", "AcDbShape"),
    fixed<ViewportEntity>(34, "VIEWPORT", "AcDbViewport"),
    fixed<EllipseEntity>(35, "ELLIPSE", "AcDbEllipse"),
    fixed<SplineEntity>(36, "SPLINE", "AcDbSpline"),
    fixed<RegionEntity>(37, "REGION", "AcDbRegion"),
    fixed<Solid3dEntity>(38, "3DSOLID", "AcDb3dSolid"),
    fixed<BodyEntity>(39, "BODY", "AcDbBody"),
    fixed<RayEntity>(40, "RAY", "AcDbRay"),
    fixed<XlineEntity>(41, "XLINE", "AcDbXline"),
    fixed<OleFrameEntity>(43, "OLEFRAME", "AcDbOleFrame"),
    fixed<MTextEntity>(44, "MTEXT", "AcDbMText"),
    fixed<LeaderEntity>(45, "LEADER", "AcDbLeader"),
    fixed<ToleranceEntity>(46, "TOLERANCE", "AcDbFcf"),
    fixed<MLineEntity>(47, "MLINE", "AcDbMline"),
    fixed<Ole2FrameEntity>(74, "OLE2FRAME", "AcDbOle2Frame"),
    fixed<LwPolylineEntity>(77, "LWPOLYLINE", "AcDbPolyline"),
    fixed<HatchEntity>(78, "HATCH", "AcDbHatch"),
    byClass<TableEntity>("ACAD_TABLE", "AcDbTable", 1025),
    byClass<ArcDimension>("ARC_DIMENSION", "AcDbArcDimension", 1025),
    byClass<LargeRadialDimension>("LARGE_RADIAL_DIMENSION", "AcDbRadialDimensionLarge", 1025),
    byClass<HelixEntity>("HELIX", "AcDbHelix", 4095),
    byClass<ImageEntity>("IMAGE", "AcDbRasterImage", 2175, "ISM"),
    byClass<WipeoutEntity>("WIPEOUT", "AcDbWipeout", 2175, "WipeOut"),
    byClass<MultiLeaderEntity>("MULTILEADER", "AcDbMLeader", 1025, "ACDB_MLEADER_CLASS"),
    byClass<MeshEntity>("MESH", "AcDbSubDMesh", 0),
    byClass<UnderlayEntity>("PDFUNDERLAY", "AcDbPdfReference", 4095),
    byClass<UnderlayEntity>("DWFUNDERLAY", "AcDbDwfReference", 1153),
    byClass<UnderlayEntity>("DGNUNDERLAY", "AcDbDgnReference", 1153),
};

const ObjectKind* kindOfType(std::uint16_t type) {
    for (const ObjectKind& kind : kKinds)
        if (kind.type == type) return &kind;
    return nullptr;
}

std::int64_t groupOf(DxfInput& record, int code, std::int64_t usual) {
    return record.findAnywhere(code) ? record.integer() : usual;
}

std::uint16_t polylineType(std::int64_t flags) {
    return (flags & 64) != 0 ? 29 : (flags & 16) != 0 ? 30 : (flags & 8) != 0 ? 16 : 15;
}

std::uint16_t vertexType(std::int64_t flags) {
    if ((flags & 128) != 0) return (flags & 64) != 0 ? 13 : 14;
    return (flags & 64) != 0 ? 12 : (flags & 32) != 0 ? 11 : 10;
}

std::uint16_t dimensionType(std::int64_t flags) {
    constexpr std::uint16_t kTypes[] = {21, 22, 24, 26, 25, 23, 20};
    const std::int64_t kind = flags & 15;
    return kind < 7 ? kTypes[kind] : std::uint16_t{21};
}

}  // namespace

std::span<const ObjectKind> entityKinds() { return kKinds; }

const ObjectKind* entityKindOf(std::string_view dxfType, DxfInput& record) {
    static const std::unordered_map<std::string_view, const ObjectKind*> names = [] {
        std::unordered_map<std::string_view, const ObjectKind*> map;
        for (const ObjectKind& kind : kKinds) map.emplace(kind.dxfName, &kind);
        map.emplace("MLEADER", map.at("MULTILEADER"));
        return map;
    }();
    const auto found = names.find(dxfType);
    if (found == names.end()) return nullptr;
    std::uint16_t type = found->second->type;
    if (dxfType == "POLYLINE")
        type = polylineType(groupOf(record, 70, 0));
    else if (dxfType == "VERTEX")
        type = vertexType(groupOf(record, 70, 0));
    else if (dxfType == "DIMENSION")
        type = dimensionType(groupOf(record, 70, 0));
    else if (dxfType == "INSERT" && (groupOf(record, 70, 1) > 1 || groupOf(record, 71, 1) > 1))
        type = 8;
    record.rewind();
    return type == 0 ? found->second : kindOfType(type);
}

}  // namespace kdraw
