#include <exception>

#include "engine/symbols/external_reference.hpp"
#include "io/native/native_file.hpp"
#include "io/native/native_sections.hpp"
#include "io/json/record_writer.hpp"
#include "io/progress.hpp"
#include "io/save.hpp"

namespace kova::io::native {

namespace {

using engine::Drawing;

constexpr int kFileIndent = 2;

template <class Records>
void writeList(JsonWriter& out, std::string_view key, const Records& records) {
    out.key(key);
    out.beginArray();
    for (const auto& record : records) {
        if constexpr (std::is_pointer_v<std::decay_t<decltype(record)>>)
            writeRecord(out, *record);
        else
            writeRecord(out, record);
    }
    out.endArray();
}

/// A list that is left out while it is empty.
template <class Records>
void writeListIfAny(JsonWriter& out, std::string_view key, const Records& records) {
    if (!records.empty()) writeList(out, key, records);
}

void writeText(JsonWriter& out, std::string_view key, std::string_view text) {
    out.key(key);
    out.text(text);
}

/// How far the file is.
struct Stage {
    ProgressCounter progress;
    std::size_t total = 0;
};

void writeEntities(JsonWriter& out, const engine::EntityList& entities, Stage& stage) {
    out.key("entities");
    out.beginArray();
    for (const engine::Entity& entity : entities) {
        stage.progress.count([&](std::size_t done) { return std::pair(done, stage.total); });
        writeEntity(out, entity);
    }
    out.endArray();
}

void writeBlocks(JsonWriter& out, const engine::SavedRecords& saved, Stage& stage) {
    static const engine::EntityList nothing;
    out.key("blocks");
    out.beginArray();
    for (const engine::Block* each : saved.blocks) {
        // The visitor only looks.
        auto& block = const_cast<engine::Block&>(*each);
        RecordWriter writer(out);
        out.beginObject();
        block.describeHead(writer);
        writeEntities(out, engine::hasOwnContents(block) ? block.entities : nothing, stage);
        block.describeDynamic(writer);
        out.endObject();
    }
    out.endArray();
}

void writeLayouts(JsonWriter& out, const Drawing& drawing, Stage& stage) {
    if (drawing.layouts().empty()) return;
    out.key("layouts");
    out.beginArray();
    for (const auto& layout : drawing.layouts()) {
        RecordWriter writer(out);
        out.beginObject();
        LayoutRecord{*layout}.describe(writer);
        writeEntities(out, layout->entities, stage);
        out.endObject();
    }
    out.endArray();
}

void writeUcs(JsonWriter& out, const Drawing& drawing) {
    writeList(out, "ucsList", drawing.ucsList);
    writeText(out, "currentUcs", drawing.currentUcs.view());
    const engine::Ucs* named = drawing.currentUcs.empty() ? nullptr : drawing.ucsList.find(drawing.currentUcs);
    const engine::Ucs expected = named != nullptr ? *named : engine::Ucs{};
    const bool same = drawing.ucs.origin == expected.origin && drawing.ucs.xAxis == expected.xAxis &&
                      drawing.ucs.yAxis == expected.yAxis;
    if (!same) writeMembers(out, kUcsInForceKey, UcsAxesRecord{const_cast<Drawing&>(drawing).ucs});
}

void writeLayerStates(JsonWriter& out, const Drawing& drawing) {
    if (drawing.layerStates.empty()) return;
    out.key("layerStates");
    out.beginObject();
    for (const engine::LayerState& state : drawing.layerStates) {
        out.key(state.name.view());
        out.beginObject();
        for (const auto& [layer, entry] : state.layers) {
            out.key(layer.view());
            writeRecord(out, entry);
        }
        out.endObject();
    }
    out.endObject();
    out.key("layerStateMasks");
    out.beginObject();
    for (const engine::LayerState& state : drawing.layerStates)
        writeMembers(out, state.name.view(), LayerStateMaskRecord{const_cast<engine::LayerState&>(state)});
    out.endObject();
}

void writeStyles(JsonWriter& out, const Drawing& drawing, const engine::SavedRecords& saved) {
    RecordWriter writer(out);
    auto& d = const_cast<Drawing&>(drawing);  // the visitor only looks
    writeList(out, "textStyles", saved.textStyles);
    writeText(out, "currentTextStyle", drawing.currentTextStyle.view());
    writeList(out, "linetypes", saved.linetypes);
    writeText(out, "currentLinetype", drawing.currentLinetype.view());
    writeList(out, "dimStyles", saved.dimStyles);
    writeText(out, "currentDimStyle", drawing.currentDimStyle.view());
    writer.numberMap("dimStyleOverrides", d.dimStyleOverrides);
    writer.textMap("dimStyleNameOverrides", d.dimStyleNameOverrides);
    writeList(out, "mleaderStyles", saved.mleaderStyles);
    writeText(out, "currentMLeaderStyle", drawing.currentMLeaderStyle.view());
    writeList(out, "tableStyles", saved.tableStyles);
    writeText(out, "currentTableStyle", drawing.currentTableStyle.view());
}

}  // namespace

void writeDrawing(JsonWriter& out, const Drawing& drawing, Progress* progress) {
    Stage stage{ProgressCounter(progress), drawing.entityCount()};
    RecordWriter writer(out);
    auto& d = const_cast<Drawing&>(drawing);  // the visitor only looks
    out.beginObject();
    writeText(out, "format", "kovacad");
    out.key("version");
    out.integer(2);
    if (const PropertiesRecord properties{d.properties}; !properties.empty())
        writeMembers(out, "properties", properties);
    const engine::SavedRecords saved(drawing);
    writeList(out, "layers", saved.layers);
    writeText(out, "currentLayer", drawing.currentLayer.view());
    writeListIfAny(out, "layerFilters", drawing.layerFilters);
    writer.texts("shapeFiles", d.shapeFiles, true);
    writer.point("basePoint", d.basePoint);
    writeMembers(out, "limits", LimitsRecord{d.limits});
    writer.pointObject("snapBase", d.snapBase);
    writeBlocks(out, saved, stage);
    writeList(out, "groups", drawing.groups);
    writeStyles(out, drawing, saved);
    out.key("nextHandle");
    out.unsignedInteger(drawing.nextHandle);
    writeListIfAny(out, "hatchPatterns", drawing.hatchPatterns);
    if (!drawing.objectDictionary.empty()) writeMembers(out, "objectDictionary", DictionaryRecord{d.objectDictionary});
    writer.names("appIds", d.appIds, true);
    writeUcs(out, drawing);
    writeEntities(out, drawing.modelSpace(), stage);
    writeLayouts(out, drawing, stage);
    writeText(out, "activeLayout", drawing.activeLayoutName.view());
    out.key("tilemode");
    out.integer(drawing.tileMode ? 1 : 0);
    out.key("currentColor");
    writeColor(out, drawing.currentColor);
    writeSystemVariables(out, drawing);
    writeLayerStates(out, drawing);
    writeList(out, "namedViews", drawing.namedViews);
    writeList(out, "annotationScales", drawing.annotationScales);
    writeList(out, "namedPageSetups", drawing.namedPageSetups);
    out.endObject();
}

std::string saveNative(const Drawing& drawing, Save& save, SaveNotes* notes, Progress* progress) {
    try {
        if (std::string error = save.open(); !error.empty()) return error;
        JsonWriter out(kFileIndent, &save.bytes());
        writeDrawing(out, drawing, progress);
        out.flush();
        if (notes != nullptr) notes->replacedNumbers = out.replacedNumbers();
        return save.commit();
    } catch (const std::exception& problem) {
        return "Cannot write file: " + save.path() + ": " + problem.what();
    }
}

std::string saveNative(const Drawing& drawing, const std::string& path, SaveNotes* notes, Progress* progress) {
    Save save(path);
    return saveNative(drawing, save, notes, progress);
}

std::string nativeText(const Drawing& drawing) {
    JsonWriter out(kFileIndent);
    writeDrawing(out, drawing);
    return out.take();
}

}  // namespace kova::io::native
