#include "engine/audit/audit.hpp"

#include <gtest/gtest.h>

#include <limits>

#include "engine/kinds/all.hpp"
#include "engine/model/idle_visitor.hpp"

namespace kova::engine {
namespace {

constexpr double kNan = std::numeric_limits<double>::quiet_NaN();

template <class Kind>
Kind& add(Drawing& d, Kind entity) {
    return static_cast<Kind&>(d.modelSpace().append(std::make_unique<Kind>(std::move(entity))));
}

std::string listed(const AuditReport& report) {
    std::string all;
    for (const AuditFault& fault : report.listed) all += fault.text + "; " + fault.remedy + "\n";
    return all;
}

TEST(Audit, AFreshDrawingIsInOrder) {
    Drawing d;
    add(d, LineEntity({0, 0}, {1, 1}));
    add(d, PolylineEntity({{0, 0}, {1, 0}, {1, 1}}));
    d.addBlock(Name("A"))->entities.append(std::make_unique<CircleEntity>(math::Vector2{0, 0}, 1.0));
    add(d, BlockReferenceEntity(Name("A"), {5, 5}));
    const AuditReport report = auditDrawing(d);
    EXPECT_EQ(report.faults, 0u) << listed(report);
    EXPECT_EQ(report.objects, 4u);
    EXPECT_EQ(report.blocks, 1u);
}

TEST(Audit, ReferencesToMissingRecordsAreMended) {
    Drawing d;
    LineEntity& line = add(d, LineEntity({0, 0}, {1, 1}));
    line.layer = Name("gone");
    line.linetype = Name("gone too");
    TextEntity text;
    text.textStyle = Name("no style");
    text.height = 0.0;
    TextEntity& bad = add(d, text);
    DimensionEntity dimension;
    dimension.dimStyleName = Name("no dimstyle");
    DimensionEntity& dim = add(d, dimension);
    d.layers.ensure(Name("L")).linetype = Name("no linetype");
    d.currentLayer = Name("nowhere");
    const AuditReport report = auditDrawing(d);
    EXPECT_EQ(report.faults, 7u) << listed(report);
    EXPECT_TRUE(report.erase.empty());
    for (const std::uint64_t id : report.mend) mendEntity(d, *d.findById(id));
    EXPECT_NE(report.tables & auditBit(AuditTable::Layers), 0u);
    mendRecords(d, d.layers);
    mendSettings(d);
    EXPECT_EQ(line.layer, "0");
    EXPECT_EQ(line.linetype, "ByLayer");
    EXPECT_EQ(bad.textStyle, "Standard");
    EXPECT_GT(bad.height, 0.0);
    EXPECT_EQ(dim.dimStyleName, "Standard");
    EXPECT_EQ(d.layers.find(Name("L"))->linetype, "Continuous");
    EXPECT_EQ(d.currentLayer, "0");
    EXPECT_EQ(auditDrawing(d).faults, 0u);
}

TEST(Audit, WhatHasNoShapeIsErased) {
    Drawing d;
    add(d, CircleEntity({0, 0}, 0.0));
    add(d, CircleEntity({kNan, 0}, 1.0));
    add(d, PolylineEntity({{0, 0}}));
    add(d, PolylineEntity({{0, 0}, {1, kNan}}));
    add(d, HatchEntity());
    add(d, BlockReferenceEntity(Name("missing"), {0, 0}));
    add(d, EllipseEntity({0, 0}, {0, 0}, 0.5));
    add(d, RayEntity()).dir = {0, 0};
    LineEntity& good = add(d, LineEntity({0, 0}, {0, 0}));
    good.setLinetypeScale(kNan);
    good.setNormal({0, 0, 0});
    const AuditReport report = auditDrawing(d);
    EXPECT_EQ(report.erase.size(), 8u) << listed(report);
    ASSERT_EQ(report.mend.size(), 1u);
    mendEntity(d, good);
    EXPECT_EQ(good.linetypeScale(), 1.0);
    EXPECT_EQ(good.normal(), (math::Vector3{0, 0, 1}));
}

TEST(Audit, CyclesOfBlocksAreOpened) {
    Drawing d;
    for (const char* name : {"A", "B", "C", "Self"}) d.addBlock(Name(name));
    const auto refer = [&](const char* from, const char* to) {
        d.findBlock(Name(from))->entities.append(std::make_unique<BlockReferenceEntity>(Name(to), math::Vector2{}));
    };
    refer("A", "B");
    refer("B", "C");
    refer("C", "A");
    refer("A", "C");  // a second way to the same block is no cycle
    refer("Self", "Self");
    const AuditReport report = auditDrawing(d);
    EXPECT_EQ(report.erase.size(), 2u) << listed(report);
    for (const std::uint64_t id : report.erase) {
        Entity* entity = d.findById(id);
        entity->owner()->take(*entity);
    }
    for (const char* name : {"A", "B", "C", "Self"}) EXPECT_FALSE(d.blockContainsItself(Name(name))) << name;
    EXPECT_EQ(auditDrawing(d).faults, 0u);
}

TEST(Audit, RecordsHandlesAndDictionary) {
    Drawing d;
    const LineEntity& line = add(d, LineEntity({0, 0}, {1, 1}));
    Group group;
    group.name = Name("G");
    group.memberHandles = {line.handle(), 0xFFFF};
    d.groups.add(group);
    d.textStyles.find(Name("Standard"))->widthFactor = kNan;
    d.dimStyles.find(Name("Standard"))->textHeight = kNan;
    d.dimStyles.find(Name("Standard"))->arrowBlock = Name("NO_SUCH_ARROW");
    d.layers.ensure(Name("bad<name"));
    d.addBlock(Name("A"))->handle = line.handle();
    d.nextHandle = 1;
    DictionaryEntry entry;
    entry.name = Name("E");
    entry.type = "XRECORD";
    entry.data = {"1"};
    d.objectDictionary = {entry, entry};
    const AuditReport report = auditDrawing(d);
    EXPECT_TRUE(report.dictionary && report.handles) << listed(report);
    ASSERT_EQ(report.rename.size(), 1u);
    EXPECT_EQ(report.rename[0].to, "bad_name");

    mendRecords(d, d.groups);
    mendRecords(d, d.textStyles);
    mendRecords(d, d.dimStyles);
    std::vector<SymbolRename> names = report.rename;
    renameSymbolsUnchecked(d, names);
    mendDictionary(d.objectDictionary);
    mendHandles(d);
    EXPECT_EQ(d.groups.find(Name("G"))->memberHandles.size(), 1u);
    EXPECT_EQ(d.textStyles.find(Name("Standard"))->widthFactor, 1.0);
    EXPECT_EQ(d.dimStyles.find(Name("Standard"))->textHeight, DimStyle().textHeight);
    EXPECT_TRUE(d.dimStyles.find(Name("Standard"))->arrowBlock.empty());
    EXPECT_EQ(d.objectDictionary.size(), 1u);
    EXPECT_GT(d.nextHandle, line.handle());
    const AuditReport after = auditDrawing(d);
    EXPECT_EQ(after.faults, 0u) << listed(after);
}

/// Spoils the n-th number of an entity.
class Poison final : public IdleVisitor {
public:
    explicit Poison(int n) : left_(n) {}
    bool done() const { return left_ < 0; }

protected:
    void onNumber(const Field&, double& v) override { spoil(v); }
    void onPoint(const Field&, math::Vector2& v) override { spoil(v.y); }
    void onPoint3(const Field&, math::Vector3& v) override { spoil(v.z); }
    void onPointObject(const Field& f, math::Vector2& v) override { onPoint(f, v); }
    void onPointObject3(const Field& f, math::Vector3& v) override { onPoint3(f, v); }

private:
    void spoil(double& v) {
        if (left_-- == 0) v = kNan;
    }
    int left_;
};

TEST(Audit, OneRoundOfRepairSufficesForEveryNumberOfEveryKind) {
    for (int type = 0; type < kEntityTypeCount; ++type)
        for (int n = 0; n < 200; ++n) {
            Drawing d;
            Entity& entity = d.modelSpace().append(makeEntity(static_cast<EntityType>(type)));
            Poison poison(n);
            entity.describe(poison);
            if (!poison.done()) break;
            const AuditReport report = auditDrawing(d);
            if (!report.erase.empty()) continue;
            for (const std::uint64_t id : report.mend) mendEntity(d, *d.findById(id));
            const AuditReport after = auditDrawing(d);
            EXPECT_EQ(after.faults, 0u) << displayName(entity.type()) << " " << n << "\n" << listed(after);
        }
}

TEST(Audit, ListsThatDoNotFitTheirCurve) {
    Drawing d;
    SplineEntity spline;
    spline.controlPoints = {{0, 0}, {1, 2}, {3, 2}, {4, 0}};
    spline.knots = {0, 1, 2};
    spline.weights = {1, 1};
    SplineEntity& s = add(d, spline);
    PolyfaceEntity faces;
    faces.vertices = {{0, 0, 0}, {1, 0, 0}, {0, 1, 0}};
    faces.faces = {{1, 2, 3}, {1, 2, 9}};
    PolyfaceEntity& f = add(d, faces);
    PolylineEntity& p = add(d, PolylineEntity({{0, 0}, {1, 0}}));
    p.bulges = {0.0, 0.0, 1.0};
    const AuditReport report = auditDrawing(d);
    EXPECT_EQ(report.faults, 4u) << listed(report);
    for (const std::uint64_t id : report.mend) mendEntity(d, *d.findById(id));
    EXPECT_TRUE(s.knots.empty() && s.weights.empty());
    EXPECT_EQ(f.faces.size(), 1u);
    EXPECT_EQ(p.bulges.size(), 2u);
}

}  // namespace
}  // namespace kova::engine
