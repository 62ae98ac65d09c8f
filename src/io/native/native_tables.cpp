#include "io/native/native_sections.hpp"

namespace kova::io::native {

using engine::Drawing;
using Index = JsonTree::Index;

namespace {

/// Calls `each` with the items of a top-level array; false when the file has no such member.
template <class Each>
bool eachRecord(JsonTree& tree, Index root, std::string_view key, Each&& each) {
    const Index array = tree.find(root, key);
    if (array == JsonTree::kNone) return false;
    if (tree.type(array) != JsonType::Array) throwTypeError(JsonType::Array, tree.type(array));
    for (Index i = JsonTree::first(array), last = tree.end(array); i != last; i = tree.next(i)) each(i);
    return true;
}

/// Calls `each` with the members of an object.
template <class Each>
void eachMember(const JsonTree& tree, Index object, Each&& each) {
    if (tree.type(object) != JsonType::Object) throwTypeError(JsonType::Object, tree.type(object));
    for (Index i = JsonTree::first(object), last = tree.end(object); i != last; i = tree.next(i))
        if (tree.isMember(i)) each(i);
}

/// Replaces a table's records by those of the file. Records without a name cannot be referred to and are left out.
template <class Record>
void readTable(JsonTree& tree, Index root, RecordReader& reader, std::string_view key, engine::Table<Record>& table) {
    engine::Table<Record> fresh;
    const bool present = eachRecord(tree, root, key, [&](Index i) {
        Record record;
        reader.read(i, record);
        if (!record.name.empty()) fresh.add(std::move(record));
    });
    if (present) table = std::move(fresh);
}

void readGroups(JsonTree& tree, Index root, RecordReader& reader, Drawing& drawing) {
    engine::Table<engine::Group> fresh;
    const bool present = eachRecord(tree, root, "groups", [&](Index i) {
        engine::Group group;
        reader.read(i, group);
        if (tree.find(i, "memberHandles") == JsonTree::kNone) {
            reader.enter(i);
            reader.handles("members", group.memberHandles);
            reader.leave();
        }
        if (!group.name.empty()) fresh.add(std::move(group));
    });
    if (present) drawing.groups = std::move(fresh);
}

void readLayerStates(JsonTree& tree, Index root, RecordReader& reader, Drawing& drawing) {
    if (const Index states = tree.find(root, "layerStates"); states != JsonTree::kNone) {
        drawing.layerStates.clear();
        eachMember(tree, states, [&](Index i) {
            engine::LayerState state;
            state.name = engine::Name(tree.keyOf(i));
            eachMember(tree, i, [&](Index layer) {
                auto& [name, entry] = state.layers.emplace_back();
                name = engine::Name(tree.keyOf(layer));
                reader.read(layer, entry);
            });
            drawing.layerStates.add(std::move(state));
        });
    }
    if (const Index masks = tree.find(root, "layerStateMasks"); masks != JsonTree::kNone)
        eachMember(tree, masks, [&](Index i) {
            engine::LayerState* state = drawing.layerStates.find(engine::Name(tree.keyOf(i)));
            if (state == nullptr) return;
            LayerStateMaskRecord record{*state};
            reader.read(i, record);
        });
}

void readStyles(JsonTree& tree, Index root, RecordReader& reader, Drawing& drawing) {
    readTable(tree, root, reader, "textStyles", drawing.textStyles);
    reader.name("currentTextStyle", drawing.currentTextStyle);
    readTable(tree, root, reader, "linetypes", drawing.linetypes);
    reader.name("currentLinetype", drawing.currentLinetype);
    readTable(tree, root, reader, "dimStyles", drawing.dimStyles);
    reader.name("currentDimStyle", drawing.currentDimStyle);
    reader.numberMap("dimStyleOverrides", drawing.dimStyleOverrides);
    reader.textMap("dimStyleNameOverrides", drawing.dimStyleNameOverrides);
    readTable(tree, root, reader, "mleaderStyles", drawing.mleaderStyles);
    reader.name("currentMLeaderStyle", drawing.currentMLeaderStyle);
    readTable(tree, root, reader, "tableStyles", drawing.tableStyles);
    reader.name("currentTableStyle", drawing.currentTableStyle);
}

void readUcs(JsonTree& tree, Index root, RecordReader& reader, Drawing& drawing) {
    readTable(tree, root, reader, "ucsList", drawing.ucsList);
    reader.name("currentUcs", drawing.currentUcs);
    const engine::Ucs* named = drawing.ucsList.find(drawing.currentUcs);
    if (named == nullptr) drawing.currentUcs = engine::Name();
    drawing.ucs = named != nullptr ? *named : engine::Ucs{};
    UcsAxesRecord axes{drawing.ucs};
    reader.object(kUcsInForceKey, axes);
}

}  // namespace

void readLeadingSections(JsonTree& tree, Index root, RecordReader& reader, Drawing& drawing) {
    PropertiesRecord properties{drawing.properties};
    reader.object("properties", properties);
    readTable(tree, root, reader, "layers", drawing.layers);
    reader.name("currentLayer", drawing.currentLayer);
    readTable(tree, root, reader, "layerFilters", drawing.layerFilters);
    reader.texts("shapeFiles", drawing.shapeFiles);
    reader.point("basePoint", drawing.basePoint);
    LimitsRecord limits{drawing.limits};
    reader.object("limits", limits);
    reader.pointObject("snapBase", drawing.snapBase);
}

void readTrailingSections(JsonTree& tree, Index root, RecordReader& reader, Drawing& drawing) {
    const bool spaceIsGiven =
        tree.find(root, "activeLayout") != JsonTree::kNone || tree.find(root, "tilemode") != JsonTree::kNone;
    reader.name("activeLayout", drawing.activeLayoutName);
    std::int32_t tilemode = drawing.tileMode ? 1 : 0;
    if (const Index i = tree.find(root, "tilemode"); i != JsonTree::kNone && tree.type(i) == JsonType::Boolean)
        tilemode = tree.boolean(i) ? 1 : 0;
    else
        reader.integer("tilemode", tilemode);
    drawing.tileMode = tilemode != 0;
    if (const Index i = tree.find(root, "systemVariables"); i != JsonTree::kNone)
        readSystemVariables(tree, i, reader, spaceIsGiven, drawing);
    reader.color("currentColor", drawing.currentColor);
    readLayerStates(tree, root, reader, drawing);
    readTable(tree, root, reader, "namedViews", drawing.namedViews);
    readTable(tree, root, reader, "annotationScales", drawing.annotationScales);
    readTable(tree, root, reader, "namedPageSetups", drawing.namedPageSetups);
    readGroups(tree, root, reader, drawing);
    readStyles(tree, root, reader, drawing);
    // "nextHandle" is the loader's.
    if (const Index i = tree.find(root, "hatchPatterns"); i != JsonTree::kNone && tree.type(i) == JsonType::Array)
        readTable(tree, root, reader, "hatchPatterns", drawing.hatchPatterns);
    DictionaryRecord dictionary{drawing.objectDictionary};
    reader.object("objectDictionary", dictionary);
    reader.names("appIds", drawing.appIds);
    readUcs(tree, root, reader, drawing);
}

}  // namespace kova::io::native
