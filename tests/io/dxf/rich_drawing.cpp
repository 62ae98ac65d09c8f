#include "io/dxf/rich_drawing.hpp"

#include "engine/kinds/all.hpp"
#include "engine/curves/space_fit.hpp"

namespace kova::test {

using namespace engine;
using math::Vector2;
using math::Vector3;

namespace {

template <class T, class... Args>
T& add(EntityList& list, Args&&... args) {
    return static_cast<T&>(list.append(std::make_unique<T>(std::forward<Args>(args)...)));
}

void fillTables(Drawing& d) {
    d.properties = {"Title", "Author", "Subject", "key words"};
    Layer walls;
    walls.name = "Walls \xC3\x84";
    walls.color = Color::rgb(10, 20, 30);
    walls.lineweight = 35;
    walls.transparency = 40;
    walls.description = "load bearing";
    walls.locked = true;
    d.layers.add(walls);
    Layer hidden;
    hidden.name = "Hidden";
    hidden.on = false;
    hidden.frozen = true;
    hidden.plottable = false;
    hidden.color = Color::index(3);
    d.layers.add(hidden);
    d.currentLayer = "Walls \xC3\x84";
    Linetype fence;
    fence.name = "FENCE";
    fence.description = "Fence ----0----";
    fence.pattern = {0.25, -0.1, -0.1, 1.0};
    fence.elements.resize(4);
    fence.elements[1].flags = 2;
    fence.elements[1].text = "GAS";
    fence.elements[1].style = "Standard";
    fence.elements[1].scale = 0.1;
    fence.elements[1].rotation = 0.3;
    fence.elements[1].offsetX = -0.05;
    d.linetypes.add(fence);
    d.loadLinetype("Dashed");
    TextStyle roman;
    roman.name = "Roman";
    roman.fontFile = "romans.shx";
    roman.bigFontFile = "bigfont.shx";
    roman.height = 3.5;
    roman.widthFactor = 0.8;
    roman.obliqueAngle = 0.2;
    roman.backward = roman.vertical = true;
    d.textStyles.add(roman);
    DimStyle dims;
    dims.name = "Precise";
    dims.arrowBlock = "_ARCHTICK";
    dims.arrowBlock1 = "_DOT";
    dims.leaderArrowBlock = "_OPEN30";
    dims.separateArrowBlocks = true;
    dims.textStyle = "Roman";
    dims.dimLineLinetype = "Dashed";
    dims.extLine2Linetype = "FENCE";
    dims.dimLineColor = Color::rgb(1, 2, 3);
    dims.textColor = Color::index(5);
    dims.showTolerance = true;
    dims.tolerancePlus = 0.1;
    dims.toleranceMinus = 0.2;
    dims.postfix = "<> mm";
    dims.setZeroSuppression(13);
    d.dimStyles.add(dims);
    d.dimStyleOverrides = {{"DIMASZ", 3.0}};
    MLeaderStyle leader;
    leader.name = "Callout";
    leader.arrowBlock = "_DOTBLANK";
    leader.textFrame = true;
    leader.leaderColor = Color::index(1);
    leader.textStyle = "Roman";
    leader.block = "Tag";
    d.mleaderStyles.add(leader);
    TableStyle table;
    table.name = "Schedule";
    table.flowUp = true;
    table.data.textColor = Color::rgb(5, 6, 7);
    table.title.fillEnabled = true;
    d.tableStyles.add(table);
    Ucs ucs;
    ucs.name = "Turned";
    ucs.origin = {5, 6};
    ucs.xAxis = {0.6, 0.8};
    ucs.yAxis = {-0.8, 0.6};
    d.ucsList.add(ucs);
    NamedView view;
    view.name = "Corner";
    view.center = {1, 2};
    view.width = 30;
    view.height = 20;
    d.namedViews.add(view);
    AnnotationScale scale;
    scale.name = "1:25";
    scale.drawingUnits = 25;
    d.annotationScales.add(scale);
    PageSetup setup;
    setup.name = "A1 plot";
    setup.paperWidth = 841;
    setup.paperHeight = 594;
    setup.scaleType = 0;
    d.namedPageSetups.add(setup);
    setup.name = "Inches";
    setup.paperUnits = 0;
    setup.marginTop = 12.5;
    setup.marginLeft = 3.25;
    setup.scaleType = 33;  // a scale that is in no list
    setup.scaleDrawing = 30;
    d.namedPageSetups.add(setup);
    d.appIds = {"ACAD", "MY_APP"};
    LayerState state;
    state.name = "Night";
    state.description = "all off";
    state.layers.emplace_back("0", LayerStateEntry());
    state.layers.emplace_back("Hidden", LayerStateEntry());
    state.mask.color = false;
    d.layerStates.add(state);
    LayerFilter filter;
    filter.name = "Locked ones";
    filter.lockedFilter = "true";
    d.layerFilters.add(filter);
    DictionaryEntry record;
    record.name = "THEIR_DATA";
    record.type = "XRECORD";
    record.data = {"280", "1", "1", "a text", "40", "2.5"};
    record.handle = 0x9001;
    DictionaryEntry folder;
    folder.name = "THEIR_FOLDER";
    folder.type = "DICTIONARY";
    folder.handle = 0x9002;
    folder.entries = {record};
    folder.entries[0].handle = 0x9003;
    d.objectDictionary = {record, folder};
}

void fillBlocks(Drawing& d) {
    Block& tag = *d.addBlock("Tag");
    tag.description = "a numbered bubble";
    tag.base = {1, 1};
    add<CircleEntity>(tag.entities, Vector2{0, 0}, 5.0);
    auto& definition = add<AttributeDefinitionEntity>(tag.entities);
    definition.tag = "NUMBER";
    definition.prompt = "Number:";
    definition.defaultValue = "1";
    definition.hAlign = kHAlignMiddle;
    definition.preset = true;
    Block& nested = *d.addBlock("Nested");
    auto& inner = add<BlockReferenceEntity>(nested.entities, Name("Tag"), Vector2{2, 3});
    inner.rotation = 0.5;
    nested.isDynamic = true;
    DynParameter parameter;
    parameter.type = "Linear";
    parameter.name = "Length";
    parameter.value = 12.5;
    nested.dynParams = {parameter};
}

void fillShapes(EntityList& list) {
    add<LineEntity>(list, Vector3{0, 0, 1}, Vector3{10, 5, 2});
    auto& circle = add<CircleEntity>(list, Vector2{5, 5}, 2.5);
    circle.setThickness(2.0);
    circle.setNormal({0, 0, -1});
    circle.elevation = 3.0;
    add<ArcEntity>(list, Vector2{1, 2}, 3.0, 0.3, 4.4);
    auto& wide = add<PolylineEntity>(list, std::vector<Vector2>{{0, 0}, {10, 0}, {10, 10}}, true);
    wide.bulges = {0.5, 0, -0.25};
    wide.startWidths = {1, 0, 2};
    wide.endWidths = {0.5, 0, 2};
    wide.ltgen = true;
    add<PointEntity>(list, Vector2{3, 4});
    auto& ellipse = add<EllipseEntity>(list, Vector2{0, 0}, Vector2{4, 3}, 0.4, 0.1, 3.0);
    ellipse.elevation = 1.0;
    auto& spline = add<SplineEntity>(list);
    spline.controlPoints = {{0, 0}, {1, 2}, {3, 2}, {4, 0}, {6, 1}};
    spline.knots = {0, 0, 0, 0, 1, 2, 2, 2, 2};
    spline.weights = {1, 0.5, 2, 1, 1};
    auto& fit = add<SplineEntity>(list);
    fit.fitPoints = {{0, 0}, {1, 1}, {2, 0}, {4, 4}};
    auto& helix = add<SplineEntity>(list);
    helix.controlPoints = {{1, 0}, {0, 1}, {-1, 0}, {0, -1}};
    helix.controlZ = {0, 1, 2, 3};
    helix.knots = {0, 0, 0, 0, 1, 1, 1, 1};
    helix.helix = HelixData{};
    helix.helix->start = {1, 0, 0};
    add<XlineEntity>(list, Vector2{1, 1}, Vector2{3, 4});
    add<RayEntity>(list, Vector2{1, 1}, Vector2{0, 2});
    auto& solid = add<Solid2DEntity>(list);
    solid.corners = {Vector2{0, 0}, {1, 0}, {0, 1}, {1, 1}};
    auto& trace = add<Solid2DEntity>(list);
    trace.corners = {Vector2{0, 0}, {5, 0}, {0, 1}, {5, 1}};
    trace.trace = true;
    auto& face = add<Face3DEntity>(list);
    face.corners = {Vector3{0, 0, 0}, {1, 0, 1}, {1, 1, 2}, {0, 1, 1}};
    face.edgeFlags = 5;
    add<Polyline3DEntity>(list, std::vector<Vector3>{{0, 0, 0}, {1, 1, 1}, {2, 0, 5}}, true);
    auto& mesh = add<MeshEntity>(list);
    mesh.rows = 2;
    mesh.cols = 3;
    mesh.closedN = true;
    for (int i = 0; i < 6; ++i) mesh.vertices.push_back({i % 3 * 1.0, i / 3 * 1.0, i * 0.5});
    auto& fitted = add<Polyline3DEntity>(list, std::vector<Vector3>{{0, 0, 0}, {5, 0, 1}, {5, 5, 3}, {0, 5, 4}});
    engine::fitWithSpline(fitted, 3, 4);
    auto& smooth = add<MeshEntity>(list);
    smooth.rows = 3;
    smooth.cols = 4;
    smooth.closedN = true;
    for (int i = 0; i < 12; ++i) smooth.vertices.push_back({i % 4 * 2.0, i / 4 * 1.5, i % 3 * 0.5});
    engine::smoothMesh(smooth, 5, 6, 5);
    auto& polyface = add<PolyfaceEntity>(list);
    polyface.vertices = {{0, 0, 0}, {1, 0, 0}, {1, 1, 0}, {0, 1, 0}, {0.5, 0.5, 1}};
    polyface.faces = {{1, 2, -3, 4}, {1, 2, 5}, {1, 2, 3, 4, 5}};
    auto& shape = add<ShapeEntity>(list);
    shape.position = {1, 2};
    shape.name = "BAT";
    shape.number = 134;
    shape.file = "ltypeshp.shx";
    shape.rotation = 0.7;
    auto& body = add<Solid3DEntity>(list);
    body.modelerVersion = 2;
    body.sab = std::string("ACIS BinaryFile") + std::string(300, '\x07') +
               "\x0E\x03"
               "End\x0E\x02of\x0E\x04"
               "ACIS\x0D\x04"
               "data";
    auto& region = add<RegionEntity>(list);
    region.vertices = {{0, 0}, {4, 0}, {4, 4}};
    region.bulges = {0, 1, 0};
    RegionLoop hole;
    hole.vertices = {{2, 1}, {3, 1}, {3, 2}};
    region.loops = {hole};
    auto& wipeout = add<WipeoutEntity>(list, std::vector<Vector2>{{0, 0}, {5, 0}, {2, 3}});
    wipeout.showFrame = false;
    auto& image = add<ImageEntity>(list);
    image.filePath = "plans/site.png";
    image.insertion = {1, 2};
    image.width = 40;
    image.height = 30;
    image.pixelWidth = 400;
    image.pixelHeight = 300;
    image.rotation = 0.25;
    image.fade = 20;
    image.clipBoundary = {{2, 3}, {20, 3}, {10, 20}};
    image.clipEnabled = true;
}

void fillHatches(EntityList& list) {
    auto& hatch = add<HatchEntity>(list);
    hatch.patternName = "ANSI31";
    hatch.patternScale = 2.0;
    hatch.patternAngle = 0.3;
    hatch.patternOrigin = {1, 1};
    hatch.seedPoints = {{1, 1}};
    HatchLoop outer;
    outer.type = HatchLoop::kExternal | HatchLoop::kPolyline;
    outer.vertices = {{0, 0}, {10, 0}, {10, 10}, {0, 10}};
    outer.bulges = {0, 0.5, 0, 0};
    HatchLoop inner;
    inner.type = HatchLoop::kDerived;
    inner.inner = true;
    HatchSplineEdge spline;
    spline.knots = {0, 0, 0, 0, 1, 1, 1, 1};
    spline.control = {{4, 4}, {5, 6}, {6, 6}, {7, 4}};
    spline.weights = {1, 0.5, 0.5, 1};
    inner.edges = {HatchLineEdge{{2, 2}, {7, 2}}, HatchArcEdge{{7, 3}, 1.0, -1.5707963267948966, 1.5707963267948966},
                   spline, HatchEllipseEdge{{3, 3}, {1, 0}, {0, 0.5}, 1.0, 4.0}, HatchArcEdge{{3, 3}, 1.0, 3.0, 1.0}};
    hatch.loops = {outer, inner};
    auto& gradient = add<HatchEntity>(list);
    gradient.gradient = HatchGradient{};
    gradient.gradient->name = "SPHERICAL";
    gradient.gradient->angle = 0.5;
    gradient.gradient->stops = {{0.0, Color::rgb(1, 2, 3)}, {1.0, Color::index(4)}};
    gradient.loops = {outer};
    auto& own = add<HatchEntity>(list);
    own.patternName = "MINE";
    own.patternType = HatchEntity::kCustom;
    HatchFamily family;
    family.angle = 0.4;
    family.shift = {0.5, 2.0};
    family.dashes = {1, -0.5};
    own.ownPattern = {family};
    own.loops = {outer};
}

void fillTexts(EntityList& list) {
    auto& text = add<TextEntity>(list);
    text.position = {1, 2};
    text.content = "A ^ caret, %%c20 and \xC3\x9F";
    text.rotation = 0.4;
    text.widthFactor = 0.9;
    text.oblique = 0.1;
    text.textStyle = "Roman";
    text.hAlign = kHAlignRight;
    text.vAlign = kVAlignTop;
    text.generation = kTextUpsideDown;
    auto& fit = add<TextEntity>(list);
    fit.content = "fitted";
    fit.hAlign = kHAlignFit;
    fit.fitEnd = {20, 0};
    auto& mtext = add<MTextEntity>(list);
    mtext.position = {0, 20};
    mtext.width = 50;
    for (int i = 0; i < 60; ++i) mtext.content += "{\\C1;W\xC3\xB6rter} \\P";
    mtext.attachment = kAttachMiddleCenter;
    mtext.bgFlags = kBackgroundColor | kBackgroundFrame;
    mtext.bgColor = Color::rgb(9, 8, 7);
    mtext.bgTransparency = 30;
    mtext.lineSpacingFactor = 1.5;
    mtext.lineSpacingExact = true;
    mtext.columns.type = 2;
    mtext.columns.count = 2;
    mtext.columns.width = 24;
    mtext.columns.gutter = 2;
    mtext.columns.heights = {10, 12};
    mtext.definedHeight = 12;
    auto& tolerance = add<ToleranceEntity>(list);
    tolerance.insertion = {3, 3};
    tolerance.styleName = "Precise";
    tolerance.textHeight = 3.0;
    tolerance.rotation = 0.3;
    tolerance.first.symbol = "j";
    tolerance.first.toleranceValue = "%%c0.1";
    tolerance.first.toleranceMC = "m";
    tolerance.first.datum1 = "A";
    tolerance.rows = {ToleranceRow{}};
    tolerance.rows[0].symbol = "b";
    tolerance.rows[0].toleranceValue = "0.2";
    auto& definition = add<AttributeDefinitionEntity>(list);
    definition.tag = "LOOSE";
    definition.defaultValue = "one\\Ptwo";
    definition.multiline = definition.locked = true;
    definition.prompt = "Loose one";
    definition.constant = true;
    auto& table = add<TableEntity>(list);
    table.insertion = {10, 60};
    table.resize(3, 2);
    table.ensureCell(0, 0).content = "Title";
    table.ensureCell(0, 0).mergeRight = 1;
    table.ensureCell(0, 1).isMerged = true;
    table.ensureCell(1, 1).content = "x\\Py";
    table.ensureCell(1, 1).alignment = 7;
    table.ensureCell(2, 0).textStyle = "Roman";
    table.rotation = 0.2;
}

void fillDimensions(EntityList& list) {
    for (int kind = 0; kind <= 8; ++kind) {
        auto& d = add<DimensionEntity>(list);
        d.subType = static_cast<DimensionType>(kind);
        d.def1 = {10, 0};
        d.def2 = {20, 5};
        d.def3 = {0, 0};
        d.def4 = {1, 12};
        d.dimLine = {15, 10};
        d.dimStyleName = kind % 2 == 0 ? "Precise" : "Standard";
        if (kind == 0) {
            d.linearRotation = 0.25;
            d.textOverride = "about <>";
            d.textHeight = 4.0;
            d.styleOverrides = {{"DIMTAD", 2.0}, {"DIMCLRD", 1.0}, {"DIMGAP", 1.25}};
            d.nameOverrides = {{"DIMBLK", "_OBLIQUE"}, {"DIMPOST", "<>!"}, {"DIMTXSTY", "Roman"}};
            d.setUserText({14, 14});
        }
        if (kind == 1) d.inspectLabel = "Q";
    }
    auto& jogged = add<DimensionEntity>(list);
    jogged.subType = DimensionType::Radius;
    jogged.jogged = true;
    jogged.def1 = {0, 0};
    jogged.def2 = {50, 0};
    jogged.jogCenter = {20, 5};
    jogged.jogPoint = {30, 4};
    auto& leader = add<LeaderEntity>(list);
    leader.vertices = {{0, 0}, {5, 5}, {9, 5}};
    leader.annotation = "look";
    leader.hookLine = true;
    leader.arrowBlock = "_DOT";
    leader.dimStyleName = "Precise";
    auto& mleader = add<MLeaderEntity>(list);
    mleader.heads.resize(2);
    mleader.heads[0].vertices = {{0, 0}, {3, 5}, {6, 6}};
    mleader.heads[1].vertices = {{0, 4}, {6, 6}};
    mleader.textContent = "two {\\C1;leaders}";
    mleader.contentPos = {12, 6};
    mleader.styleName = "Callout";
    auto& block = add<MLeaderEntity>(list);
    block.heads.resize(1);
    block.heads[0].vertices = {{0, 0}, {3, 5}};
    block.contentType = MLeaderContent::Block;
    block.blockName = "Tag";
    block.contentPos = {8, 5};
    auto& balloon = add<MLeaderEntity>(list);
    balloon.heads.resize(2);
    balloon.heads[0].vertices = {{0, 0}, {3, 5}};
    balloon.heads[1].vertices = {{0, 9}, {3, 5}};
    MLeaderLineLook line;
    line.members = MLeaderLineLook::kColor | MLeaderLineLook::kArrowSize | MLeaderLineLook::kArrow;
    line.color = Color::index(3);
    line.arrowSize = 1.25;
    line.arrowBlock = "_DOT";
    balloon.heads[1].look = line;
    balloon.contentType = MLeaderContent::Block;
    balloon.blockName = "Tag";
    balloon.contentPos = {8, 5};
    balloon.attributes = {{"NUMBER", "27", 1.0}};
    balloon.setOverride(MLeaderOverrides::kLeaderType, &MLeaderStyle::leaderLineType, 2);
    balloon.setOverride(MLeaderOverrides::kLeaderColor, &MLeaderStyle::leaderColor, Color::rgb(1, 2, 3));
    balloon.setOverride(MLeaderOverrides::kBlockScale, &MLeaderStyle::blockScale, 2.5);
    balloon.setOverride(MLeaderOverrides::kTextStyle, &MLeaderStyle::textStyle, Name("Roman"));
    auto& mline = add<MLineEntity>(list);
    mline.vertices = {{0, 0}, {10, 0}, {10, 10}};
    mline.scale = 2.0;
    mline.elements = {{0.5, Color::index(1), "Dashed"}, {0.0}, {-0.5, Color::rgb(4, 5, 6)}};
    mline.justification = MLineJustification::Zero;
    mline.flags = kMLineJoints | kMLineStartRound;
    add<MLineEntity>(list).vertices = {{0, 0}, {4, 4}};
}

void fillInserts(EntityList& list) {
    auto& insert = add<BlockReferenceEntity>(list, Name("Tag"), Vector2{30, 30});
    insert.scaleX = -2.0;
    insert.scaleY = 1.5;
    insert.rotation = 0.6;
    BlockAttribute attribute;
    attribute.tag = "NUMBER";
    attribute.value = "42";
    attribute.position = {30, 31};
    attribute.layer = "Walls \xC3\x84";
    attribute.hAlign = 4;
    BlockAttribute address = attribute;
    address.tag = "ADDRESS";
    address.value = "Main Street 1\\PTown";
    address.multiline = address.locked = true;
    address.width = 40.5;
    insert.attributes = {attribute, address};
    auto& grid = add<BlockReferenceEntity>(list, Name("Nested"), Vector2{0, 0});
    grid.rows = 2;
    grid.columns = 3;
    grid.rowSpacing = 10;
    grid.columnSpacing = 12;
    grid.dynParamValues = {{"Length", 20.0}};
    auto& clipped = add<BlockReferenceEntity>(list, Name("Tag"), Vector2{5, 5});
    clipped.clipBoundary = {{-1, -1}, {2, 3}};
    clipped.clipInverted = true;
    auto& polygon = add<BlockReferenceEntity>(list, Name("Tag"), Vector2{9, 5});
    polygon.clipBoundary = {{-1, -1}, {2, 3}, {0, 4}};
    polygon.clipEnabled = false;
    auto& missing = add<BlockReferenceEntity>(list, Name("Nowhere"), Vector2{5, 5});
    missing.linetype = "ALSO MISSING";
}

}  // namespace

void fillRichDrawing(Drawing& d) {
    fillTables(d);
    fillBlocks(d);
    EntityList& model = d.modelSpace();
    fillShapes(model);
    fillHatches(model);
    fillTexts(model);
    fillDimensions(model);
    fillInserts(model);
    Entity& first = *model.first();
    first.layer = "Walls \xC3\x84";
    first.color = Color::rgb(200, 100, 50);
    first.linetype = "FENCE";
    first.setLinetypeScale(2.5);
    first.lineweight = 50;
    first.transparency = 70;
    first.visible = false;
    first.setPlotStyleName("Heavy");
    XData xdata;
    xdata.set("MY_APP", {{1000, std::string("a text")},
                         {1002, std::string("{")},
                         {1010, Vector3{1, 2, 3}},
                         {1040, 0.1},
                         {1071, std::int64_t{70000}},
                         {1002, std::string("}")}});
    first.setXdata(xdata);
    model.last()->setAnnotative(true);
    model.last()->setObjectScales({"1:25"});
    Group group;
    group.name = "Pair";
    group.description = "two of them";
    group.memberHandles = {first.handle(), model.last()->handle()};
    d.groups.add(group);
    for (const auto& layout : d.layouts()) {
        auto& viewport = add<ViewportEntity>(layout->entities);
        viewport.center = {100, 80};
        viewport.viewScale = 0.5;
        viewport.vpId = 2;
        viewport.vpFrozenLayers = {"Hidden"};
        viewport.viewTwist = 0.3;
        // Seen from a side through a round window.
        const Entity& border = add<CircleEntity>(layout->entities, Vector2{200, 150}, 40.0);
        auto& round = add<ViewportEntity>(layout->entities);
        round.center = {200, 150};
        round.width = round.height = 80;
        round.viewScale = 0.25;
        round.vpId = 3;
        round.viewDirection = {1, -1, 0.5};
        round.viewTarget = {10, 20};
        round.viewTargetZ = 3.5;
        round.viewTwist = 0.4;
        round.clipHandle = border.handle();
        round.statusFlags = ViewportEntity::kNonRectangular;
        add<LineEntity>(layout->entities, Vector2{0, 0}, Vector2{100, 0});
    }
    Layout* third = d.addLayout("Details");
    third->tabOrder = 3;
    third->pageSetup.landscape = false;
    fillTexts(third->entities);
}

}  // namespace kova::test
