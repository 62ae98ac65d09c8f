#include "io/native/sample_drawing.hpp"

#include "engine/entities/hatch.hpp"
#include "engine/entities/mesh.hpp"
#include "engine/entities/solid3d.hpp"
#include "engine/entities/spline.hpp"
#include "io/native/field_visitors.hpp"

namespace kova::test {

using namespace engine;

namespace {

/// Two records of a table's sort.
template <class Record>
void fillTable(Table<Record>& table, int seed) {
    for (int i = 0; i < 2; ++i) {
        FillVisitor fill(seed + i * 50);
        Record record;
        record.describe(fill);
        table.add(record);
    }
}

/// What the general filling cannot know: edges of every sort.
void completeEntity(Entity& entity) {
    if (entity.type() == EntityType::Hatch) {
        HatchLoop polyline;
        polyline.vertices = {{0, 0}, {4, 0}, {4, 4}};
        polyline.bulges = {0.0, 0.5, -0.25};
        HatchLoop edges;
        edges.type = HatchLoop::kDerived;
        edges.inner = true;
        HatchSplineEdge spline;
        spline.knots = {0, 0, 0, 0, 1, 1, 1, 1};
        spline.control = {{0, 0}, {1, 2}, {3, 2}, {4, 0}};
        spline.weights = {1, 0.5, 0.5, 1};
        spline.fit = {{0, 0}, {4, 0}};
        spline.startTangent = {0.6, 0.8};
        spline.endTangent = {0.6, -0.8};
        edges.edges = {HatchLineEdge{{4, 0}, {5, 0}}, HatchArcEdge{{5, 1}, 1.0, 0.25, 2.5},
                       HatchEllipseEdge{{1, 1}, {2, 0}, {0, 1}, 0.5, 3.0}, spline, HatchLineEdge{{1, 2}, {0, 0}}};
        static_cast<HatchEntity&>(entity).loops = {polyline, edges};
    }
}

XData sampleXdata() {
    XData xdata;
    xdata.set("KOVA_TEST", {{1000, std::string("text \"\xC3\xA4\"")},
                            {1002, std::string("{")},
                            {1010, math::Vector3{1, 2.5, -3}},
                            {1040, 0.1},
                            {1040, 7.0},
                            {1070, std::int64_t{-7}},
                            {1071, std::int64_t{100000}},
                            {1004, std::string("00FF7E")},
                            {1002, std::string("}")}});
    xdata.set("OTHER", {{1005, std::string("2A")}});
    return xdata;
}

void fillEntities(EntityList& list, int seed) {
    for (int t = 0; t < kEntityTypeCount; ++t) addFilledEntity(list, static_cast<EntityType>(t), seed + t * 40);
}

void soundEntities(EntityList& list) {
    for (Entity& e : list) {
        if (auto* spline = dynamic_cast<SplineEntity*>(&e)) {
            spline->degree = 2;
            spline->knots = {0, 0, 0, 0.5, 1, 1};
        }
        if (auto* mesh = dynamic_cast<MeshEntity*>(&e)) {
            mesh->rows = mesh->cols = 2;
            mesh->vertices.push_back({1, 2, 3});
        }
        if (auto* solid = dynamic_cast<Solid3DEntity*>(&e))
            solid->sab = "ACIS BinaryFile" + solid->sab +
                         "\x0E\x03"
                         "End\x0E\x02of\x0E\x04"
                         "ACIS\x0D\x04"
                         "data";
    }
}

}  // namespace

void soundShapes(Drawing& drawing) {
    soundEntities(drawing.modelSpace());
    soundEntities(drawing.findBlock("Door")->entities);
    for (const auto& layout : drawing.layouts()) soundEntities(layout->entities);
}

std::unique_ptr<Entity> filledEntity(EntityType type, int seed) {
    FillVisitor fill(seed);
    std::unique_ptr<Entity> entity = makeEntity(type);
    entity->describeCommon(fill);
    entity->describe(fill);
    completeEntity(*entity);
    entity->setXdata(sampleXdata());
    return entity;
}

Entity& addFilledEntity(EntityList& list, EntityType type, int seed) {
    Entity& entity = list.append(filledEntity(type, seed));
    // Loading makes the layers that entities name.
    list.drawing()->layers.ensure(entity.layer);
    return entity;
}

void fillDrawing(Drawing& d) {
    d.properties = {"Title \"1\"", "\xC3\x84uthor", "a\nsubject", "key words"};
    fillTable(d.layers, 1000);
    d.currentLayer = d.layers[d.layers.size() - 1].name;
    fillTable(d.layerFilters, 1200);
    d.shapeFiles = {"ltypeshp.shx", "a b.shx"};
    d.basePoint = {1.5, -2.5};
    d.limits = {{-1, -2}, {300.5, 200}, true};
    d.snapBase = {0.25, 0.75};
    fillTable(d.groups, 1400);
    fillTable(d.textStyles, 1600);
    d.currentTextStyle = d.textStyles[1].name;
    fillTable(d.linetypes, 1800);
    d.currentLinetype = d.linetypes[d.linetypes.size() - 1].name;
    fillTable(d.dimStyles, 2000);
    d.currentDimStyle = d.dimStyles[2].name;
    d.dimStyleOverrides = {{"DIMASZ", 3.0}, {"DIMTXT", 0.125}};
    d.dimStyleNameOverrides = {{"DIMBLK", "_DOT"}};
    fillTable(d.mleaderStyles, 2200);
    d.currentMLeaderStyle = d.mleaderStyles[1].name;
    fillTable(d.tableStyles, 2400);
    d.currentTableStyle = d.tableStyles[1].name;
    fillTable(d.hatchPatterns, 2600);
    FillVisitor fill(2800);
    DictionaryEntry dictionary;
    dictionary.describe(fill);
    d.objectDictionary = {dictionary, dictionary};
    d.appIds = {"ACAD", "KOVA_TEST", "OTHER"};
    fillTable(d.ucsList, 3000);
    d.currentUcs = d.ucsList[1].name;
    d.ucs = d.ucsList[1];
    d.currentColor = Color::rgb(1, 2, 3);
    fillTable(d.namedViews, 3200);
    fillTable(d.annotationScales, 3400);
    fillTable(d.namedPageSetups, 3600);
    for (const char* name : {"State 1", "state \"2\""}) {
        LayerState state;
        state.name = name;
        state.description = std::string("about ") + name;
        state.mask.describe(fill);
        for (const char* layer : {"0", "Walls"}) {
            state.layers.emplace_back(layer, LayerStateEntry());
            state.layers.back().second.describe(fill);
        }
        d.layerStates.add(state);
    }

    for (const char* name : {"Door", "*U1"}) {
        Block& block = *d.addBlock(name);
        block.describeHead(fill);
        block.describeDynamic(fill);
        block.name = Name(name);
        // What an external reference holds stands in its own file; this one has entities.
        if (block.name == "Door") {
            block.xrefType = XrefType::None;
            block.xrefStatus = XrefStatus::Unloaded;
            block.xrefPath.clear();
        }
    }
    fillEntities(d.findBlock("Door")->entities, 4000);
    fillEntities(d.modelSpace(), 6000);
    Layout& layout = *d.addLayout("Sheet \xC3\x84");
    layout.tabOrder = 7;
    layout.handle = 0xABCDEF;
    layout.pageSetup.describe(fill);
    fillEntities(layout.entities, 8000);
    d.activeLayoutName = layout.name;
    d.tileMode = false;

    d.integerVariables["SORTENTS"] = 5;
    d.realVariables["LTSCALE"] = 2.5;
    d.stringVariables["CANNOSCALE"] = "1:50";
    d.integerVariables["A_NEW_VARIABLE"] = -3;
    d.realVariables["A_NEW_REAL"] = 4.0;
    d.stringVariables["A_NEW_TEXT"] = "x\ty";
    d.nextHandle += 100;
}

std::string firstDifference(const std::string& a, const std::string& b) {
    if (a == b) return {};
    const auto at = static_cast<std::size_t>(std::mismatch(a.begin(), a.end(), b.begin(), b.end()).first - a.begin());
    const std::size_t from = at < 200 ? 0 : at - 200;
    return "----\n" + a.substr(from, 400) + "\n---- against\n" + b.substr(from, 400);
}

}  // namespace kova::test
