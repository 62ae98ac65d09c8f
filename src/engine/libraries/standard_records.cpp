#include "engine/libraries/standard_records.hpp"

namespace kova::engine {

void ensureStandardRecords(Drawing& drawing, std::span<const Name> layers) {
    const CommonNames& names = commonNames();
    drawing.layers.ensure(names.layerZero);
    for (const Name& layer : layers)
        if (!layer.empty()) drawing.layers.ensure(layer);
    for (const Name& special : {names.byBlock, names.byLayer, names.continuous}) {
        if (drawing.linetypes.contains(special)) continue;
        Linetype linetype;
        linetype.name = special;
        linetype.standard = true;
        if (special == names.continuous) linetype.description = "Solid line";
        drawing.linetypes.add(std::move(linetype));
    }
    drawing.textStyles.ensure(names.standard);
    drawing.dimStyles.ensure(names.standard);
    drawing.mleaderStyles.ensure(names.standard);
    drawing.tableStyles.ensure(names.standard);
    if (!drawing.layers.contains(drawing.currentLayer)) drawing.currentLayer = names.layerZero;
    if (!drawing.linetypes.contains(drawing.currentLinetype)) drawing.currentLinetype = names.byLayer;
    if (!drawing.textStyles.contains(drawing.currentTextStyle)) drawing.currentTextStyle = names.standard;
    if (!drawing.dimStyles.contains(drawing.currentDimStyle)) drawing.currentDimStyle = names.standard;
    if (!drawing.mleaderStyles.contains(drawing.currentMLeaderStyle)) drawing.currentMLeaderStyle = names.standard;
    if (!drawing.tableStyles.contains(drawing.currentTableStyle)) drawing.currentTableStyle = names.standard;
}

}  // namespace kova::engine
