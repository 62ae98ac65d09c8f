#include "engine/entities/block_reference.hpp"

#include <gtest/gtest.h>

#include <chrono>

#include "engine/model/drawing.hpp"
#include "engine/kinds/all.hpp"
#include "engine/entities/shape_sink.hpp"
#include "io/native/native_file.hpp"
#include "math/angles.hpp"

namespace kova::engine {
namespace {

using math::Bounds2;
using math::kPi;
using math::Matrix4;
using math::Vector2;
using Kind = ShapeSink::Shape::Kind;

void expectBox(const Bounds2& box, double x0, double y0, double x1, double y1, double eps = 1e-9) {
    EXPECT_NEAR(box.min.x, x0, eps);
    EXPECT_NEAR(box.min.y, y0, eps);
    EXPECT_NEAR(box.max.x, x1, eps);
    EXPECT_NEAR(box.max.y, y1, eps);
}

std::unique_ptr<LineEntity> line(const Vector2& a, const Vector2& b) {
    auto l = std::make_unique<LineEntity>();
    l->start = a;
    l->end = b;
    return l;
}

BlockReferenceEntity& place(EntityList& list, Name block, const Vector2& at) {
    return static_cast<BlockReferenceEntity&>(list.append(std::make_unique<BlockReferenceEntity>(block, at)));
}

class BlockReferences : public testing::Test {
protected:
    void SetUp() override {
        // A flag: a mast from (1,1) to (1,4) and a sail to (3,3); its base point is the foot of the mast.
        Block& flag = *drawing.addBlock("Flag");
        flag.base = {1, 1};
        flag.entities.append(line({1, 1}, {1, 4}));
        flag.entities.append(line({1, 4}, {3, 3}));
    }
    Drawing drawing;
    EntityList& space = drawing.modelSpace();
};

TEST_F(BlockReferences, BoundsFollowScaleRotationMirrorAndGrid) {
    BlockReferenceEntity& r = place(space, "flag", {10, 20});
    expectBox(r.bounds(), 10, 20, 12, 23);
    r.scaleX = -2;  // mirrored
    r.scaleY = 0.5;
    expectBox(r.bounds(), 6, 20, 10, 21.5);
    r.scaleX = r.scaleY = 1;
    r.rotation = kPi / 2;
    expectBox(r.bounds(), 7, 20, 10, 22);
    r.rotation = kPi / 4;
    // Points relative to the base: (0,0), (0,3), (2,2); the last one lies on the diagonal.
    const double h = std::sqrt(0.5);
    expectBox(r.bounds(), 10 - 3 * h, 20, 10, 20 + 4 * h);

    r.rotation = kPi / 2;
    r.columns = 3;
    r.columnSpacing = 10;  // along the turned axis: upwards
    r.rows = 2;
    r.rowSpacing = 5;  // to the left
    r.scaleX = r.scaleY = 2;
    expectBox(r.bounds(), 4 - 5, 20, 10, 24 + 20);
    EXPECT_EQ(shapesOf(r).count(Kind::Stroke), 12u);
    const Vector2 foot = r.blockMatrix(1, 2).transform_point(Vector2{1, 1});
    EXPECT_TRUE(foot.near_equal({5, 40}, 1e-12)) << foot.text();
}

TEST_F(BlockReferences, TurnedCurvesAreMeasuredExactly) {
    Block& b = *drawing.addBlock("Ring");
    auto circle = std::make_unique<CircleEntity>();
    circle->center = {3, 0};
    circle->radius = 1;
    b.entities.append(std::move(circle));
    BlockReferenceEntity& r = place(space, "Ring", {0, 0});
    r.rotation = kPi / 4;
    const double c = 3 * std::sqrt(0.5);
    expectBox(r.bounds(), c - 1, c - 1, c + 1, c + 1);  // the box of the turned box would be wider
    r.scaleY = 0.5;                                     // an ellipse at 45 degrees
    const double e = std::sqrt((1 + 0.25) / 2);
    expectBox(r.bounds(), c - e, c - e, c + e, c + e);

    // The same through one more level, and after a change inside the block.
    Block& outer = *drawing.addBlock("Outer");
    place(outer.entities, "Ring", {0, 0}).rotation = kPi / 4;
    BlockReferenceEntity& o = place(space, "Outer", {0, 0});
    expectBox(o.bounds(), c - 1, c - 1, c + 1, c + 1);
    o.rotation = -kPi / 4;
    expectBox(o.bounds(), 2, -1, 4, 1);
    b.entities.append(line({0, 0}, {-5, 0}));
    expectBox(o.bounds(), -5, -1, 4, 1);
}

TEST_F(BlockReferences, StylesComeFromTheReferenceWhereTheContentsSaySo) {
    Block& b = *drawing.addBlock("Styled");
    auto byBlock = line({0, 0}, {1, 0});
    byBlock->color = Color::byBlock();
    byBlock->linetype = "ByBlock";
    byBlock->lineweight = -2;
    auto own = line({0, 1}, {1, 1});
    own->layer = "Walls";
    own->color = Color::index(3);
    auto byLayer = line({0, 2}, {1, 2});
    b.entities.append(std::move(byBlock));
    b.entities.append(std::move(own));
    b.entities.append(std::move(byLayer));
    Block& outer = *drawing.addBlock("Middle");
    BlockReferenceEntity& inner = place(outer.entities, "Styled", {0, 0});
    inner.color = Color::byBlock();
    BlockReferenceEntity& r = place(space, "Middle", {0, 0});
    r.layer = "Furniture";
    r.color = Color::index(5);
    r.linetype = "Hidden";
    r.lineweight = 50;

    const ShapeSink sink = shapesOf(r);
    ASSERT_EQ(sink.shapes.size(), 3u);
    EXPECT_EQ(sink.shapes[0].style.color, Color::index(5));  // through two levels
    EXPECT_EQ(sink.shapes[0].style.layer, "Furniture");
    EXPECT_EQ(sink.shapes[0].style.linetype, "ByLayer");  // of the inner reference
    EXPECT_EQ(sink.shapes[0].style.lineweight, -1);
    EXPECT_EQ(sink.shapes[1].style.layer, "Walls");
    EXPECT_EQ(sink.shapes[1].style.color, Color::index(3));
    EXPECT_EQ(sink.shapes[2].style.layer, "Furniture");
    EXPECT_EQ(sink.shapes[2].style.color, Color::byLayer());

    ShapeSink some;
    some.hiddenLayers = {"Walls"};
    r.emit(some, outlineStyle(r));
    EXPECT_EQ(some.shapes.size(), 2u);
    some.shapes.clear();
    some.hiddenLayers.clear();
    some.window = {{100, 100}, {200, 200}};
    r.emit(some, outlineStyle(r));
    EXPECT_TRUE(some.shapes.empty());
}

TEST_F(BlockReferences, SelfContainingAndMultiplyingBlocksComeToAnEnd) {
    Block& a = *drawing.addBlock("A");
    Block& b = *drawing.addBlock("B");
    a.entities.append(line({0, 0}, {1, 0}));
    b.entities.append(line({0, 0}, {0, 1}));
    place(a.entities, "B", {0, 0});
    place(b.entities, "A", {0, 0});
    BlockReferenceEntity& r = place(space, "A", {0, 0});
    EXPECT_EQ(shapesOf(r).count(Kind::Stroke), 2u);
    expectBox(r.bounds(), 0, 0, 1, 1);
    r.rotation = 0.3;
    EXPECT_TRUE(r.bounds().min.is_finite());
    r.nearestPoint({5, 5});

    // Ten references on each of a hundred levels, each turned by an angle of its own.
    for (int level = 0; level < 100; ++level) {
        Block& block = *drawing.addBlock("L" + std::to_string(level));
        if (level == 0) block.entities.append(line({0, 0}, {1, 0}));
        for (int i = 0; level > 0 && i < 10; ++i)
            place(block.entities, "L" + std::to_string(level - 1), {0, 0}).rotation = level * 0.1 + i * 0.01;
    }
    BlockReferenceEntity& deep = place(space, "L99", {0, 0});
    deep.rotation = 0.1;
    const auto begin = std::chrono::steady_clock::now();
    static_cast<void>(deep.bounds());
    ShapeSink sink;
    sink.window = {{1e9, 1e9}, {2e9, 2e9}};
    deep.emit(sink, outlineStyle(deep));
    BlockReferenceEntity& grid = place(space, "Flag", {0, 0});
    grid.rows = grid.columns = 2'000'000'000;
    grid.rowSpacing = grid.columnSpacing = 1;
    grid.emit(sink, outlineStyle(grid));
    EXPECT_TRUE(sink.shapes.empty());
    expectBox(grid.bounds(), 0, 0, 2 + 1999999999.0, 3 + 1999999999.0);
    EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(60));
}

TEST_F(BlockReferences, ClipBoundsAndOrder) {
    BlockReferenceEntity& r = place(space, "Flag", {11, 1});
    r.clipBoundary = {{0, 0}, {2, 2}};  // a rectangle in block coordinates
    expectBox(r.bounds(), 11, 1, 12, 2);
    ShapeSink sink = shapesOf(r);
    ASSERT_EQ(sink.shapes.size(), 4u);
    EXPECT_EQ(sink.shapes.front().kind, Kind::PushClip);
    expectBox(sink.shapes.front().box(), 10, 0, 12, 2);
    EXPECT_EQ(sink.shapes.back().kind, Kind::PopClip);
    r.clipInverted = true;
    expectBox(r.bounds(), 11, 1, 13, 4);
    EXPECT_TRUE(shapesOf(r).shapes.front().inverted);
    r.clipEnabled = false;
    EXPECT_EQ(shapesOf(r).count(Kind::PushClip), 0u);
}

TEST_F(BlockReferences, AttributesAndAttributeDefinitions) {
    Block& flag = *drawing.findBlock("Flag");
    for (const bool constant : {false, true}) {
        auto definition = std::make_unique<AttributeDefinitionEntity>();
        definition->tag = constant ? "MAKER" : "NO";
        definition->defaultValue = constant ? "Smith" : "0";
        definition->constant = constant;
        flag.entities.append(std::move(definition));
    }
    BlockReferenceEntity& r = place(space, "Flag", {0, 0});
    r.layer = "Marks";
    BlockAttribute shown;
    shown.tag = "NO";
    shown.value = "17";
    shown.position = {0, 10};
    shown.textHeight = 2;
    shown.color = Color::byBlock();
    BlockAttribute hidden = shown;
    hidden.tag = "PRICE";
    hidden.value = "99";
    hidden.invisible = true;
    r.attributes = {shown, hidden};
    r.color = Color::index(2);

    const auto texts = [&] {
        std::string all;
        for (const auto& s : shapesOf(r).shapes)
            if (s.kind == Kind::Text) all += s.text + "/" + s.style.layer.str() + " ";
        return all;
    };
    EXPECT_EQ(texts(), "Smith/Marks 17/Marks ");
    drawing.integerVariables["ATTMODE"] = 2;
    EXPECT_EQ(texts(), "Smith/Marks 17/Marks 99/Marks ");
    drawing.integerVariables["ATTMODE"] = 0;
    EXPECT_EQ(texts(), "Smith/Marks ");
    drawing.integerVariables["ATTMODE"] = 1;
    EXPECT_EQ(shapesOf(r).shapes.back().style.color, Color::index(2));
    EXPECT_NEAR(r.bounds().max.y, 12, 1e-6);
    EXPECT_EQ(r.findAttribute("price"), &r.attributes[1]);

    r.moveGrip(0, {100, 0});  // carries the attributes along
    EXPECT_TRUE(r.attributes[0].position.near_equal({100, 10}));
    r.moveGrip(1, {90, 9});
    EXPECT_TRUE(r.attributes[0].position.near_equal({90, 9}));
    EXPECT_TRUE(r.insert.near_equal({100, 0}));
    r.moveGrip(7, {1, 1});
    r.transform(Matrix4::scaling_about({0, 0}, 3));
    EXPECT_DOUBLE_EQ(r.attributes[0].textHeight, 6);
    EXPECT_TRUE(r.attributes[0].position.near_equal({270, 27}));
}

TEST_F(BlockReferences, TransformsKeepThePlaceOfEveryCopy) {
    const Matrix4 maps[] = {
        Matrix4::translation(3, -2),     Matrix4::rotation_about({4, 4}, 2.0), Matrix4::scaling_about({1, 2}, 2.5),
        Matrix4::mirror({0, 0}, {0, 1}), Matrix4::mirror({2, 0}, {5, 1}),      Matrix4::scaling(3, 0.5),
        Matrix4::scaling(-1, -1),        Matrix4::translation(0, 0, 7)};
    for (const Matrix4& m : maps) {
        BlockReferenceEntity& r = place(space, "Flag", {10, 20});
        r.scaleX = 2;
        r.scaleY = -1;
        r.rotation = m == Matrix4::scaling(3, 0.5) ? kPi / 2 : 0.7;
        r.rows = 2;
        r.columns = 3;
        r.rowSpacing = 4;
        r.columnSpacing = -6;
        const Matrix4 before = r.blockMatrix(1, 2);
        r.transform(m);
        const Matrix4 after = r.blockMatrix(1, 2);
        for (const Vector2& p : {Vector2{1, 1}, Vector2{3, 3}, Vector2{1, 4}}) {
            const Vector2 want = m.transform_point(before.transform_point(p));
            EXPECT_TRUE(after.transform_point(p).near_equal(want, 1e-9))
                << after.transform_point(p).text() << " instead of " << want.text();
        }
    }
    BlockReferenceEntity& r = place(space, "Flag", {1, 0});
    r.transform(Matrix4::mirror({0, 0}, {0, 1}));
    EXPECT_DOUBLE_EQ(r.scaleX, -1);  // and not a half turn with a mirrored y axis
    EXPECT_DOUBLE_EQ(r.rotation, 0);
    EXPECT_FALSE(r.scaleZ.has_value());
    // Out of the plane: a quarter turn about the x axis stands the block on edge.
    Matrix4 up;
    up(1, 1) = up(2, 2) = 0;
    up(1, 2) = -1;
    up(2, 1) = 1;
    BlockReferenceEntity& tilted = place(space, "Flag", {5, 0});
    tilted.transform(up);
    expectBox(tilted.bounds(), 5, 0, 7, 0, 1e-9);
    const math::Vector3 tip = tilted.blockMatrix().transform_point(math::Vector3{1, 4, 0});
    EXPECT_TRUE(tip.near_equal({5, 0, 3}, 1e-9)) << tip.text();
}

TEST_F(BlockReferences, VisibilityStatesAndOddInput) {
    Block& flag = *drawing.findBlock("Flag");
    flag.isDynamic = true;
    flag.visibilityStates = {{"Mast only", {0, 99, -3}}, {"All", {0, 1}}};
    BlockReferenceEntity& r = place(space, "Flag", {0, 0});
    EXPECT_EQ(shapesOf(r).count(Kind::Stroke), 2u);
    r.activeVisibilityState = "MAST ONLY";
    EXPECT_EQ(shapesOf(r).count(Kind::Stroke), 1u);
    expectBox(r.bounds(), 0, 0, 0, 3);
    r.activeVisibilityState = "";
    flag.dynParams.emplace_back().activeVisibility = "Mast only";
    EXPECT_EQ(shapesOf(r).count(Kind::Stroke), 1u);

    // A reference without a definition shows nothing, and is found at its insertion point.
    BlockReferenceEntity& lost = place(space, "Nowhere", {3, 4});
    EXPECT_TRUE(lost.bounds().is_empty());
    EXPECT_DOUBLE_EQ(lost.distanceTo({0, 0}), 5);
    EXPECT_EQ(BlockReferenceEntity("Flag", {0, 0}).block(), nullptr);  // outside any drawing
    const double nan = std::nan("");
    BlockReferenceEntity& bad = place(space, "Flag", {nan, 0});
    bad.scaleX = 0;
    bad.scaleY = nan;
    bad.rotation = std::numeric_limits<double>::infinity();
    bad.columnSpacing = nan;
    bad.columns = 5;
    bad.rows = -4;
    static_cast<void>(bad.bounds());
    shapesOf(bad);
    bad.nearestPoint({1, 1});
    bad.transform(Matrix4::scaling(0, 0, 0));
    EXPECT_EQ(bad.rowCount(), 1);
    EXPECT_DOUBLE_EQ(place(space, "Flag", {0, 0}).blockMatrix()(0, 0), 1);
}

TEST_F(BlockReferences, FilesKeepEveryField) {
    Block& flag = *drawing.findBlock("Flag");
    flag.isDynamic = true;
    flag.explodable = false;
    flag.xrefType = XrefType::Overlay;
    flag.xrefPath = "other.kvcad";
    DynParameter& parameter = flag.dynParams.emplace_back();
    parameter.name = "Length";
    parameter.base = {7, 8};
    parameter.valueList = {1, 2};
    flag.dynActions.emplace_back().stretchFrame = {{0, 0}, {1, 1}};
    flag.visibilityStates = {{"S", {1}}};
    flag.lookupTable = LookupTable{{{"Size", true}}, {{"a", "b"}}, true};
    BlockReferenceEntity& r = place(space, "Flag", {1, 2});
    r.scaleX = -2;
    r.scaleZ = 5;
    r.attributes.emplace_back().tag = "T";
    r.clipBoundary = {{0, 0}, {1, 1}, {0, 1}};
    r.clipInverted = true;
    r.clipEnabled = false;
    r.dynParamValues["Length"] = 4;
    r.dynFlipValues["Flip"] = 1;
    r.activeVisibilityState = "S";
    const std::string text = io::native::nativeText(drawing);
    Drawing copy;
    ASSERT_EQ(io::native::loadNativeText(text, copy), "");
    EXPECT_EQ(io::native::nativeText(copy), text);
    const auto& back = static_cast<const BlockReferenceEntity&>(*copy.modelSpace().first());
    EXPECT_EQ(back.scaleZ, 5);
    EXPECT_FALSE(back.clipEnabled);
    EXPECT_EQ(back.dynFlipValues.at("Flip"), 1);
    ASSERT_EQ(copy.findBlock("Flag")->dynParams.size(), 1u);
    EXPECT_TRUE(copy.findBlock("Flag")->lookupTable->allowReverseLookup);

    // The other spelling of a parameter's base point.
    std::string other = text;
    for (const char* axis : {"\"baseX\": 7", "\"baseY\": 8"}) {
        const std::size_t at = other.find(axis);
        ASSERT_NE(at, std::string::npos);
        other.replace(at, 6, std::string("\"basePoint") + axis[5]);
    }
    Drawing again;
    ASSERT_EQ(io::native::loadNativeText(other, again), "");
    EXPECT_EQ(again.findBlock("Flag")->dynParams[0].base, (Vector2{7, 8}));
}

}  // namespace
}  // namespace kova::engine
