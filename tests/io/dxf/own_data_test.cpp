// The program's own data beside a record counts only while the record's plain groups are those that it wrote.
#include <fstream>
#include <functional>
#include <iomanip>
#include <sstream>

#include "engine/model/drawing.hpp"
#include "engine/entities/block_reference.hpp"
#include "engine/entities/dimensions/dimension.hpp"
#include "engine/entities/hatch.hpp"
#include "engine/entities/text.hpp"
#include "engine/model/sysvar.hpp"
#include "io/dxf/dxf_load.hpp"
#include "io/native/native_file.hpp"
#include "io/dxf/edited_drawing.hpp"
#include "io/dxf/rich_drawing.hpp"

namespace kova::test {

using namespace engine;
using math::Vector2;

namespace {

std::string withHeader(const std::string& text, const std::string& name, const std::string& value) {
    std::vector<DxfGroup> groups = dxfGroups(text);
    for (std::size_t i = 0; i + 1 < groups.size(); ++i)
        if (groups[i].code == 9 && groups[i].value == name) groups[i + 1].value = value;
    return joined(groups);
}

bool isReal(int code) {
    return (code >= 10 && code < 60) || (code >= 110 && code < 150) || (code >= 210 && code < 240) ||
           (code >= 460 && code < 470);
}

void load(const std::string& text, Drawing& drawing) {
    ASSERT_EQ(io::dxf::loadDxfText(text, drawing), "");
}

template <class Kind>
const Kind* firstOf(const Drawing& drawing, const std::function<bool(const Kind&)>& wanted = nullptr) {
    for (const Entity& e : drawing.modelSpace())
        if (const auto* found = dynamic_cast<const Kind*>(&e); found != nullptr && (!wanted || wanted(*found)))
            return found;
    return nullptr;
}

}  // namespace

TEST(DxfOwnData, HeaderVariablesOfAnotherProgramComeLast) {
    Drawing drawing;
    for (const auto& [name, value] : {std::pair{"LTSCALE", 2.0}, {"TEXTSIZE", 3.0}}) setSysVar(drawing, name, value);
    setSysVar(drawing, "DIMSCALE", 4.0);
    drawing.currentColor = Color::rgb(1, 2, 3);
    Layer slashed;
    slashed.name = "A/B";
    drawing.layers.add(slashed);
    drawing.currentLayer = "A/B";
    const std::string text = io::dxf::dxfText(drawing);
    struct Row {
        const char* name;
        const char* value;
    };
    constexpr Row kRows[] = {{"LTSCALE", "7.5"}, {"INSUNITS", "6"},  {"TEXTSIZE", "8.25"}, {"PDMODE", "34"},
                             {"DIMSCALE", "12"}, {"LUPREC", "1"},    {"MEASUREMENT", "0"}, {"ANGDIR", "1"},
                             {"FILLMODE", "0"},  {"MIRRTEXT", "1"}};
    for (const Row& row : kRows) {
        Drawing again;
        load(withHeader(text, std::string("$") + row.name, row.value), again);
        EXPECT_NEAR(sysVarReal(again, row.name), std::stod(row.value), 1e-12) << row.name;
        // What was not touched is what it was, to the last digit and to names and colours that DXF cannot hold.
        EXPECT_EQ(again.currentColor, Color::rgb(1, 2, 3)) << row.name;
        EXPECT_EQ(again.currentLayer.view(), "A/B") << row.name;
        if (row.name != std::string_view("DIMSCALE")) EXPECT_EQ(sysVarReal(again, "DIMSCALE"), 4.0) << row.name;
    }
    Drawing again;
    load(withHeader(withHeader(text, "$CLAYER", "0"), "$CECOLOR", "3"), again);
    EXPECT_EQ(again.currentLayer, "0");
    EXPECT_EQ(again.currentColor, Color::index(3));
}

TEST(DxfOwnData, WhatAnotherProgramMovesStaysThere) {
    Drawing drawing;
    addMovables(drawing);
    const std::string text = io::dxf::dxfText(drawing);
    Drawing again;
    load(movedElsewhere(text), again);
    const auto* hatch = firstOf<HatchEntity>(again);
    ASSERT_NE(hatch, nullptr);
    EXPECT_NEAR(hatch->bounds().min.x, 101.0, 1e-6);
    EXPECT_NEAR(hatch->bounds().max.y, 57.0, 1e-6);
    const auto* diameter = firstOf<DimensionEntity>(again);
    ASSERT_NE(diameter, nullptr);
    EXPECT_TRUE(diameter->def1.near_equal({110, 50}, 1e-9));
    EXPECT_GT(diameter->dimLine.x, 100.0);
    // What no plain group says anything about is still there.
    EXPECT_EQ(diameter->inspectLabel, "A");

    Drawing unmoved;
    load(text, unmoved);
    EXPECT_EQ(firstOf<DimensionEntity>(unmoved)->dimLine, (Vector2{15, 3}));
}

TEST(DxfOwnData, OtherWaysToWriteTheSameDoNotCount) {
    Drawing drawing;
    fillRichDrawing(drawing);
    addMovables(drawing);
    const std::string text = io::dxf::dxfText(drawing);
    const std::string reformatted = changedEntities(text, [](const std::string&, DxfGroup& g) {
        if (!isReal(g.code)) return;
        // Sixteen digits with an exponent, as some programs write; one unit in the last place may go.
        std::ostringstream out;
        out << std::scientific << std::setprecision(15) << std::stod(g.value);
        g.value = out.str();
    });
    std::vector<DxfGroup> groups = dxfGroups(reformatted);
    for (std::size_t i = 0; i < groups.size(); ++i)
        if (groups[i].code == 100 && groups[i].value == "AcDbHatch")
            groups.insert(groups.begin() + static_cast<std::ptrdiff_t>(i) + 1, {47, "0.0"});
    Drawing again;
    load(joined(groups), again);
    Drawing plain;
    load(text, plain);
    std::size_t checked = 0;
    for (const Entity& e : plain.modelSpace()) {
        const Entity* other = again.findByHandle(e.handle());
        ASSERT_NE(other, nullptr);
        if (const auto* hatch = dynamic_cast<const HatchEntity*>(&e)) {
            EXPECT_EQ(hatch->ownPattern.size(), static_cast<const HatchEntity*>(other)->ownPattern.size());
            ++checked;
        }
        if (const auto* dimension = dynamic_cast<const DimensionEntity*>(&e)) {
            EXPECT_TRUE(dimension->dimLine == static_cast<const DimensionEntity*>(other)->dimLine);
            EXPECT_EQ(dimension->inspectLabel, static_cast<const DimensionEntity*>(other)->inspectLabel);
            ++checked;
        }
    }
    EXPECT_GT(checked, 3U);
}

// A reference keeps its attributes in own data as soon as one of them has several lines; an edit of another one counts.
TEST(DxfOwnData, EditedAttributesCount) {
    Drawing drawing;
    drawing.addBlock("B");
    auto reference = std::make_unique<BlockReferenceEntity>(Name("B"), Vector2{});
    BlockAttribute a;
    a.tag = "LINES";
    a.value = "one\\Ptwo";
    a.multiline = true;
    reference->attributes.push_back(a);
    a.tag = "NO";
    a.value = "17";
    a.multiline = false;
    reference->attributes.push_back(a);
    reference->dynParamValues["Width"] = 3.0;
    drawing.modelSpace().append(std::move(reference));
    const std::string text = io::dxf::dxfText(drawing);
    Drawing same;
    load(text, same);
    ASSERT_NE(firstOf<BlockReferenceEntity>(same), nullptr);
    EXPECT_TRUE(firstOf<BlockReferenceEntity>(same)->attributes[0].multiline);
    Drawing again;
    load(changedEntities(text, [](const std::string& type, DxfGroup& g) {
             if (type == "ATTRIB" && g.code == 1 && g.value == "17") g.value = "18";
         }), again);
    const auto* edited = firstOf<BlockReferenceEntity>(again);
    ASSERT_NE(edited, nullptr);
    ASSERT_EQ(edited->attributes.size(), 2U);
    EXPECT_EQ(edited->attributes[1].value, "18");
    EXPECT_EQ(edited->dynParamValues.at("Width"), 3.0);
}

// Files from before there were fingerprints: nothing tells whether another program was at them, so own data counts.
TEST(DxfOwnData, WithoutAFingerprintOwnDataCounts) {
    Drawing drawing;
    addMovables(drawing);
    std::string text = io::dxf::dxfText(drawing);
    const std::string mark = ",\"plain\":\"";
    std::size_t removed = 0;
    for (std::size_t at = 0; (at = text.find(mark, at)) != std::string::npos; ++removed)
        text.erase(at, text.find('}', at) - at);
    EXPECT_GE(removed, 2U);
    Drawing again;
    load(text, again);
    EXPECT_EQ(firstOf<DimensionEntity>(again)->dimLine, (Vector2{15, 3}));
}

TEST(DxfOwnData, AfterAnotherProgram) {
    Drawing drawing;
    fillRichDrawing(drawing);
    addMovables(drawing);
    setSysVar(drawing, "LTSCALE", 2.0);
    const DxfFolder folder;
    std::ofstream(folder.file("ours.dxf"), std::ios::binary) << io::dxf::dxfText(drawing);
    const auto edited = [&](const char* how, Drawing& result) {
        QProcess process;
        process.start("/usr/bin/python3", {QString::fromUtf8(KOVA_SOURCE_DIR "/tests/io/dxf/edit.py"), how,
                                           QString::fromStdString(folder.file("ours.dxf")),
                                           QString::fromStdString(folder.file("theirs.dxf"))});
        if (!process.waitForStarted() || !process.waitForFinished(120000) || process.exitCode() == 77) return false;
        EXPECT_EQ(process.exitCode(), 0) << process.readAllStandardError().toStdString();
        EXPECT_EQ(io::dxf::loadDxf(folder.file("theirs.dxf"), result), "");
        return true;
    };
    Drawing kept;
    Drawing changed;
    if (!edited("keep", kept) || !edited("change", changed)) GTEST_SKIP() << "no ezdxf";
    EXPECT_EQ(sysVarReal(kept, "LTSCALE"), 2.0);
    EXPECT_EQ(sysVarReal(changed, "LTSCALE"), 7.5);
    EXPECT_EQ(sysVarInt(changed, "INSUNITS"), 6);
    EXPECT_EQ(sysVarInt(changed, "PDMODE"), 34);
    EXPECT_EQ(sysVarReal(changed, "DIMSCALE"), 12.0);
    Drawing before;
    load(io::dxf::dxfText(drawing), before);
    std::size_t moved = 0;
    for (const Entity& e : before.modelSpace()) {
        if (e.type() != EntityType::Hatch && e.type() != EntityType::Dimension) continue;
        const Entity* same = kept.findByHandle(e.handle());
        const Entity* other = changed.findByHandle(e.handle());
        ASSERT_TRUE(same != nullptr && other != nullptr);
        // Two kinds have records of their own, which are not moved.
        const auto* measure = dynamic_cast<const DimensionEntity*>(&e);
        if (measure != nullptr && (measure->subType == DimensionType::ArcLength || measure->isJoggedRadius())) continue;
        // Loading and saving elsewhere loses nothing of what is ours.
        if (const auto* dimension = dynamic_cast<const DimensionEntity*>(&e)) {
            EXPECT_EQ(dimension->dimLine, static_cast<const DimensionEntity*>(same)->dimLine) << e.handle();
            EXPECT_EQ(dimension->styleOverrides, static_cast<const DimensionEntity*>(same)->styleOverrides);
            const Vector2 by = static_cast<const DimensionEntity*>(other)->def1 - dimension->def1;
            EXPECT_TRUE(by.near_equal({100, 50}, 1e-6)) << e.handle() << ' ' << by.x << ' ' << by.y;
        } else {
            EXPECT_EQ(static_cast<const HatchEntity&>(e).ownPattern.size(),
                      static_cast<const HatchEntity*>(same)->ownPattern.size());
            const Vector2 by = other->bounds().min - e.bounds().min;
            EXPECT_TRUE(by.near_equal({100, 50}, 1e-3)) << e.handle() << ' ' << by.x << ' ' << by.y;
        }
        ++moved;
    }
    EXPECT_GT(moved, 5U);
}

}  // namespace kova::test
