#include "kdraw/objects/app_id.hpp"
#include "kdraw/objects/block_header.hpp"
#include "kdraw/objects/control.hpp"
#include "kdraw/objects/dictionary.hpp"
#include "kdraw/objects/dim_style.hpp"
#include "kdraw/objects/group.hpp"
#include "kdraw/objects/image_definition.hpp"
#include "kdraw/objects/layer.hpp"
#include "kdraw/objects/layout.hpp"
#include "kdraw/objects/linetype.hpp"
#include "kdraw/objects/material.hpp"
#include "kdraw/objects/mleader_style.hpp"
#include "kdraw/objects/mline_style.hpp"
#include "kdraw/objects/small_objects.hpp"
#include "kdraw/objects/spatial_filter.hpp"
#include "kdraw/objects/table_style.hpp"
#include "kdraw/objects/text_style.hpp"
#include "kdraw/objects/views.hpp"
#include "kdraw/objects/visual_style.hpp"
#include "kdraw/objects/xrecord.hpp"

namespace kdraw {

namespace {

constexpr const char* kCommon = "ObjectDBX Classes";
constexpr const char* kImages = "ISM";
constexpr const char* kWipeout = "WipeOut";

template <class T>
constexpr ObjectKind fixed(std::uint16_t type, const char* name, const char* cppClass) {
    return {type, name, cppClass, nullptr, 0, false, &makeObject<T>};
}
template <class T>
constexpr ObjectKind byClass(const char* name, const char* cppClass, const char* application, std::uint16_t flags) {
    return {0, name, cppClass, application, flags, false, &makeObject<T>};
}

constexpr ObjectKind kKinds[] = {
    fixed<BlockControl>(0x30, "BLOCK_CONTROL", "AcDbBlockTable"),
    fixed<BlockHeader>(0x31, "BLOCK_RECORD", "AcDbBlockTableRecord"),
    fixed<LayerControl>(0x32, "LAYER_CONTROL", "AcDbLayerTable"),
    fixed<LayerRecord>(0x33, "LAYER", "AcDbLayerTableRecord"),
    fixed<StyleControl>(0x34, "STYLE_CONTROL", "AcDbTextStyleTable"),
    fixed<StyleRecord>(0x35, "STYLE", "AcDbTextStyleTableRecord"),
    fixed<LinetypeControl>(0x38, "LTYPE_CONTROL", "AcDbLinetypeTable"),
    fixed<LinetypeRecord>(0x39, "LTYPE", "AcDbLinetypeTableRecord"),
    fixed<ViewControl>(0x3C, "VIEW_CONTROL", "AcDbViewTable"),
    fixed<ViewRecord>(0x3D, "VIEW", "AcDbViewTableRecord"),
    fixed<UcsControl>(0x3E, "UCS_CONTROL", "AcDbUCSTable"),
    fixed<UcsRecord>(0x3F, "UCS", "AcDbUCSTableRecord"),
    fixed<ViewportControl>(0x40, "VPORT_CONTROL", "AcDbViewportTable"),
    fixed<ViewportRecord>(0x41, "VPORT", "AcDbViewportTableRecord"),
    fixed<AppIdControl>(0x42, "APPID_CONTROL", "AcDbRegAppTable"),
    fixed<AppIdRecord>(0x43, "APPID", "AcDbRegAppTableRecord"),
    fixed<DimStyleControl>(0x44, "DIMSTYLE_CONTROL", "AcDbDimStyleTable"),
    fixed<DimStyleRecord>(0x45, "DIMSTYLE", "AcDbDimStyleTableRecord"),
    fixed<ViewportHeaderControl>(0x46, "VP_ENT_HDR_CONTROL", "AcDbVXTable"),
    fixed<ViewportHeader>(0x47, "VX", "AcDbVXTableRecord"),
    fixed<Dictionary>(0x2A, "DICTIONARY", "AcDbDictionary"),
    fixed<Group>(0x48, "GROUP", "AcDbGroup"),
    fixed<MLineStyle>(0x49, "MLINESTYLE", "AcDbMlineStyle"),
    fixed<XRecord>(0x4F, "XRECORD", "AcDbXrecord"),
    fixed<Placeholder>(0x50, "ACDBPLACEHOLDER", "AcDbPlaceHolder"),
    fixed<Layout>(0x52, "LAYOUT", "AcDbLayout"),
    byClass<DictionaryWithDefault>("ACDBDICTIONARYWDFLT", "AcDbDictionaryWithDefault", kCommon, 0),
    byClass<DictionaryVariable>("DICTIONARYVAR", "AcDbDictionaryVar", kCommon, 0),
    byClass<PlotSettings>("PLOTSETTINGS", "AcDbPlotSettings", kCommon, 0),
    byClass<ImageDefinition>("IMAGEDEF", "AcDbRasterImageDef", kImages, 0),
    byClass<ImageReactor>("IMAGEDEF_REACTOR", "AcDbRasterImageDefReactor", kImages, 1),
    byClass<RasterVariables>("RASTERVARIABLES", "AcDbRasterVariables", kImages, 0),
    byClass<WipeoutVariables>("WIPEOUTVARIABLES", "AcDbWipeoutVariables", kWipeout, 0),
    byClass<UnderlayDefinition>("PDFDEFINITION", "AcDbPdfDefinition", kCommon, 1153),
    byClass<UnderlayDefinition>("DWFDEFINITION", "AcDbDwfDefinition", kCommon, 1153),
    byClass<UnderlayDefinition>("DGNDEFINITION", "AcDbDgnDefinition", kCommon, 1153),
    byClass<SpatialFilter>("SPATIAL_FILTER", "AcDbSpatialFilter", kCommon, 0),
    byClass<Scale>("SCALE", "AcDbScale", kCommon, 1153),
    byClass<MLeaderStyle>("MLEADERSTYLE", "AcDbMLeaderStyle", "ACDB_MLEADERSTYLE_CLASS", 4095),
    byClass<TableStyle>("TABLESTYLE", "AcDbTableStyle", kCommon, 4095),
    byClass<CellStyleMap>("CELLSTYLEMAP", "AcDbCellStyleMap", kCommon, 1152),
    byClass<SortEntities>("SORTENTSTABLE", "AcDbSortentsTable", kCommon, 0),
    byClass<VisualStyle>("VISUALSTYLE", "AcDbVisualStyle", kCommon, 4095),
    byClass<Material>("MATERIAL", "AcDbMaterial", kCommon, 1153),
    byClass<BookColor>("DBCOLOR", "AcDbColor", kCommon, 0),
    byClass<FieldList>("FIELDLIST", "AcDbFieldList", kCommon, 1152),
};

}  // namespace

std::span<const ObjectKind> objectKinds() { return kKinds; }

}  // namespace kdraw
