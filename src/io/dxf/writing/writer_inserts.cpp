// Block references, their attributes and clips.
#include "io/dxf/writing/writer.hpp"

namespace kova::io::dxf {

using namespace engine;
using math::Vector2;
using math::Vector3;

namespace {

/// True when an ATTRIB record says everything.
bool isExactAttribute(const BlockAttribute& a) {
    return !a.tag.empty() && a.tag.find(' ') == std::string::npos && a.hAlign >= 0 && a.hAlign <= 5 && a.vAlign >= 0 &&
           a.vAlign <= 3 && (a.generation & ~6) == 0 && !a.textStyle.empty() && !a.multiline && a.width == 0.0 &&
           (!a.plane || std::abs(a.plane->normal.length() - 1.0) < 1e-12);
}

/// Corners of a frame that encloses everything an inverted clip may have to show.
std::array<Vector2, 4> outerFrame(const math::Bounds2& box, const std::vector<Vector2>& hole) {
    math::Bounds2 all = box;
    for (const Vector2& p : hole) all.expand(p);
    const double margin = std::max({1.0, all.max.x - all.min.x, all.max.y - all.min.y});
    return {Vector2{all.min.x - margin, all.min.y - margin}, Vector2{all.max.x + margin, all.min.y - margin},
            Vector2{all.max.x + margin, all.max.y + margin}, Vector2{all.min.x - margin, all.max.y + margin}};
}

}  // namespace

bool Writer::write(const BlockReferenceEntity& e, const Target& t) {
    if (e.blockName.empty() || !std::isfinite(e.insert.x) || !std::isfinite(e.insert.y)) return false;
    FieldKeys keys;
    if (!e.dynParamValues.empty()) keys.push_back("dynParamValues");
    if (!e.dynFlipValues.empty()) keys.push_back("dynFlipValues");
    if (!e.activeVisibilityState.empty()) keys.push_back("activeVisibilityState");
    if (!isPlain(e.blockName)) keys.push_back("blockName");
    if (!std::all_of(e.attributes.begin(), e.attributes.end(), isExactAttribute)) keys.push_back("attributes");
    const bool clipped = e.clipBoundary.size() >= 2;
    if (!clipped && !e.clipBoundary.empty()) keys.push_back("clipBoundary");
    if (!clipped && e.clipInverted) keys.push_back("clipInverted");
    if (!clipped && !e.clipEnabled) keys.push_back("clipEnabled");
    // A file whose numbers of rows and columns are 1 has no grid, and no spacing.
    const bool grid = e.rows > 1 || e.columns > 1;
    if (e.rows < 1 || e.columns < 1 || e.rows > 32767 || e.columns > 32767)
        keys.insert(keys.end(), {"rows", "columns"});
    if (!grid && (e.rowSpacing != 0.0 || e.columnSpacing != 0.0))
        keys.insert(keys.end(), {"rowSpacing", "columnSpacing"});
    if (!keys.empty() && e.scaleZ) keys.push_back("scaleZ");
    OwnData own = gather(e, kElevation | kNormal, keys);
    if (clipped) {
        const std::uint64_t dictionary = extensionDictionary(own, e.handle());
        extensions_[extensionIndex_.at(dictionary)].clip = &e;
    }
    blockHandle(e.blockName);
    head("INSERT", e, t, own);
    GroupWriter& out = *out_;
    out.subclass(grid ? "AcDbMInsertBlock" : "AcDbBlockReference");
    if (!e.attributes.empty()) out.integer(66, 1);
    out.text(2, symbol(e.blockName));
    out.point(10, e.insert, e.elevation);
    if (e.scaleX != 1.0) out.real(41, e.scaleX);
    if (e.scaleY != 1.0) out.real(42, e.scaleY);
    if (const double z = e.effectiveScaleZ(); z != 1.0) out.real(43, z);
    if (e.rotation != 0.0) out.angle(50, e.rotation);
    if (grid) {
        out.integer(70, std::clamp(e.columns, 1, 32767));
        out.integer(71, std::clamp(e.rows, 1, 32767));
        out.real(44, e.columnSpacing);
        out.real(45, e.rowSpacing);
    }
    normal(e);
    tailAndParts(e, own, [&] {
        if (e.attributes.empty()) return;
        for (const BlockAttribute& a : e.attributes) attribute(a, e, t);
        sequenceEnd(e.handle(), e, t);
    });
    return true;
}

void Writer::clipObjects(const BlockReferenceEntity& e, std::uint64_t filter, std::uint64_t owner) {
    GroupWriter& out = *out_;
    const std::uint64_t spatial = newHandle();
    dictionary(filter, owner, {{"SPATIAL", spatial}}, true);

    // An inverted clip is a ring: the outer frame, then the hole, joined by a seam.
    std::vector<Vector2> ring = e.clipBoundary;
    std::uint64_t roundTrip = 0;
    std::uint64_t record = 0;
    if (e.clipInverted) {
        const Block* block = e.block();
        std::vector<Vector2> hole = e.clipBoundary;
        if (hole.size() == 2) hole = {hole[0], {hole[1].x, hole[0].y}, hole[1], {hole[0].x, hole[1].y}};
        const auto frame = outerFrame(block != nullptr ? block->extents() : math::Bounds2(), hole);
        ring.assign(frame.begin(), frame.end());
        ring.push_back(frame[0]);
        ring.insert(ring.end(), hole.begin(), hole.end());
        ring.push_back(hole[0]);
        roundTrip = newHandle();
        record = newHandle();
    }
    objectHead("SPATIAL_FILTER", spatial, filter, roundTrip);
    out.subclass("AcDbFilter");
    out.subclass("AcDbSpatialFilter");
    out.integer(70, static_cast<std::int64_t>(std::min<std::size_t>(ring.size(), 32767)));
    for (std::size_t i = 0; i < ring.size() && i < 32767; ++i) out.point(10, ring[i]);
    out.point(210, Vector3{0, 0, 1});
    out.point(11, Vector3{});
    out.flag(71, e.clipEnabled);
    out.integer(72, 0);
    out.integer(73, 0);
    // The points are those of the block: both matrices are the identity, three rows of four.
    for (int matrix = 0; matrix < 2; ++matrix)
        for (int i = 0; i < 12; ++i) out.real(40, i % 5 == 0 ? 1.0 : 0.0);
    ++classCounts_["SPATIAL_FILTER"];
    if (roundTrip == 0) return;
    dictionary(roundTrip, spatial, {{"ACAD_XREC_ROUNDTRIP", record}}, true);
    objectHead("XRECORD", record, roundTrip);
    out.subclass("AcDbXrecord");
    out.integer(280, 1);
    out.word(102, "ACAD_INVERTEDCLIP_ROUNDTRIP");
    for (const Vector2& p : e.clipBoundary) out.point(10, p, 0.0);
    out.word(102, "ACAD_INVERTEDCLIP_ROUNDTRIP_COMPARE");
    for (const Vector2& p : ring) out.point(10, p, 0.0);
}

}  // namespace kova::io::dxf
