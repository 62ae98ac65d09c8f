// Dimensions, leaders, multileaders.
#include "engine/entities/dimensions/dimension_layout.hpp"
#include "io/dxf/writing/writer.hpp"

namespace kova::io::dxf {

using namespace engine;
using math::Vector2;
using math::Vector3;

namespace {


/// Group 70 of a kind, without the bits.
int kindCode(const DimensionEntity& e, DimensionType kind) {
    switch (kind) {
        case DimensionType::Rotated:
            return 0;
        case DimensionType::Aligned:
            return 1;
        case DimensionType::Angular2Line:
            return 2;
        case DimensionType::Diameter:
            return 3;
        case DimensionType::Radius:
            return e.isJoggedRadius() ? 9 : 4;
        case DimensionType::Angular3Point:
            return 5;
        case DimensionType::Ordinate:
            return 6;
        case DimensionType::OrdinateX:
            return 6 | 64;
        case DimensionType::ArcLength:
            return 8;
    }
    return 0;
}

/// The points that a kind's record does not hold.
void unusedPoints(const DimensionEntity& e, DimensionType kind, FieldKeys& keys) {
    bool def3 = false;
    bool def4 = false;
    bool dimLine = true;
    switch (kind) {
        case DimensionType::Angular2Line:
        case DimensionType::ArcLength:
            def3 = def4 = true;
            break;
        case DimensionType::Angular3Point:
            def3 = true;
            break;
        case DimensionType::Ordinate:
        case DimensionType::OrdinateX:
            def3 = true;
            dimLine = false;
            break;
        default:
            break;
    }
    if (!def3 && !(e.def3 == Vector2{})) keys.push_back("def3");
    if (!def4 && !(e.def4 == Vector2{})) keys.push_back("def4");
    if (!dimLine && !(e.dimLine == Vector2{})) keys.push_back("dimLine");
}

}  // namespace

bool Writer::write(const DimensionEntity& e, const Target& t) {
    for (const Vector2& p : {e.def1, e.def2, e.def3, e.def4, e.dimLine})
        if (!finite(p)) return false;
    const DimensionType kind = e.kind();
    FieldKeys keys;
    if (kind != e.subType) keys.push_back("subType");
    unusedPoints(e, kind, keys);
    for (const auto& [key, value] : {std::pair<std::string_view, double>{"textHeight", e.textHeight},
                                     {"arrowSize", e.arrowSize},
                                     {"extGap", e.extGap},
                                     {"extExtension", e.extExtension}})
        if (value != 0.0) keys.push_back(key);
    // These four, then, stand beside the overrides that a reader finds in the DSTYLE list.
    if (!keys.empty() || !e.styleOverrides.empty() || !e.nameOverrides.empty())
        keys.insert(keys.end(), {"styleOverrides", "nameOverrides"});
    if (!(e.userText == Vector2{}) && !e.hasUserText()) keys.push_back("userText");
    const bool rotates = kind == DimensionType::Rotated;
    const bool ordinate = kind == DimensionType::Ordinate || kind == DimensionType::OrdinateX;
    if (e.linearRotation != 0.0 && !rotates && !ordinate) keys.push_back("linearRotation");
    if (e.obliqueAngle != 0.0 && !rotates && kind != DimensionType::Aligned) keys.push_back("obliqueAngle");
    if (e.jogged) keys.insert(keys.end(), {"jogged", "jogCenter", "jogPoint"});
    if (e.partialArc && kind != DimensionType::ArcLength) keys.push_back("partialArc");
    if (e.angularLines) keys.push_back("angularLines");
    if (e.inspectShape != InspectionShape::Off) keys.push_back("inspectShape");
    if (!e.inspectLabel.empty()) keys.push_back("inspectLabel");
    if (!e.inspectRate.empty()) keys.push_back("inspectRate");
    if (!isPlain(e.dimStyleName)) keys.push_back("dimStyleName");

    Vector2 middle = e.hasUserText() ? e.userText : layoutDimension(e).textMiddle;
    if (!finite(middle)) middle = e.dimLine;
    // A reader takes the place of the text for that of the line.
    const bool round = kind == DimensionType::Diameter || kind == DimensionType::Radius;
    const bool tilted = !(e.normal() == Vector3{0, 0, 1});
    if (round && (tilted || !(middle == e.dimLine))) keys.push_back("dimLine");
    if (tilted && e.hasUserText()) keys.insert(keys.end(), {"userText", "textAtOrigin"});

    std::uint64_t blockRecord = 0;
    const std::string block = picture(e, "*D", blockRecord);
    const OwnData own = gather(e, kElevation | kNormal, keys);
    const bool arcLength = kind == DimensionType::ArcLength;
    const bool jog = e.isJoggedRadius();
    const std::string_view type = arcLength ? "ARC_DIMENSION" : jog ? "LARGE_RADIAL_DIMENSION" : "DIMENSION";
    if (arcLength || jog) ++classCounts_[type];
    head(type, e, t, own);
    GroupWriter& out = *out_;
    const double z = e.elevation;
    out.subclass("AcDbDimension");
    out.integer(280, 0);
    out.text(2, block);
    Vector2 base = e.dimLine;
    switch (kind) {
        case DimensionType::Angular2Line:
            base = e.def4;
            break;
        case DimensionType::Diameter:
            base = e.def2;
            break;
        case DimensionType::Radius:
            base = e.def1;
            break;
        case DimensionType::Ordinate:
        case DimensionType::OrdinateX:
            base = e.def3;
            break;
        default:
            break;
    }
    out.point(10, base, z);
    // The only point in the coordinates of the object plane.
    Vector3 text{middle, z};
    if (tilted && e.normal().length_squared() > 0.0)
        if (const auto toPlane = math::Matrix4::object_to_world(e.normal().normalized()).inverse())
            text = toPlane->transform_point(text);
    out.point(11, text);
    out.integer(70, kindCode(e, kind) | 32 | (e.hasUserText() ? 128 : 0));
    if (!e.textOverride.empty()) out.text(1, e.textOverride);
    out.integer(71, 5);
    out.integer(72, 1);
    out.real(41, 1.0);
    const double measured = e.measurement();
    out.real(42, std::isfinite(measured) ? measured : 0.0);
    if (e.textRotation != 0.0) out.angle(53, e.textRotation);
    if (ordinate && e.linearRotation != 0.0) out.angle(51, -e.linearRotation);
    normal(e);
    dimStyleName(3, e.dimStyleName);

    switch (kind) {
        case DimensionType::Rotated:
        case DimensionType::Aligned:
            out.subclass("AcDbAlignedDimension");
            out.point(13, e.def1, z);
            out.point(14, e.def2, z);
            if (rotates) out.angle(50, e.linearRotation);
            if (e.obliqueAngle != 0.0) out.angle(52, e.obliqueAngle);
            if (rotates) out.subclass("AcDbRotatedDimension");
            break;
        case DimensionType::Angular2Line:
            out.subclass("AcDb2LineAngularDimension");
            out.point(13, e.def1, z);
            out.point(14, e.def2, z);
            out.point(15, e.def3, z);
            out.point(16, e.dimLine, z);
            break;
        case DimensionType::Angular3Point:
            out.subclass("AcDb3PointAngularDimension");
            out.point(13, e.def1, z);
            out.point(14, e.def2, z);
            out.point(15, e.def3, z);
            break;
        case DimensionType::Diameter:
            out.subclass("AcDbDiametricDimension");
            out.point(15, e.def1, z);
            out.real(40, 0.0);
            break;
        case DimensionType::Radius:
            if (jog) {
                out.subclass("AcDbRadialDimensionLarge");
                out.point(13, e.jogCenter, z);
                out.point(14, e.jogPoint, z);
                out.point(15, e.def2, z);
                out.real(40, 0.0);
            } else {
                out.subclass("AcDbRadialDimension");
                out.point(15, e.def2, z);
                out.real(40, 0.0);
            }
            break;
        case DimensionType::Ordinate:
        case DimensionType::OrdinateX:
            out.subclass("AcDbOrdinateDimension");
            out.point(13, e.def1, z);
            out.point(14, e.def2, z);
            break;
        case DimensionType::ArcLength: {
            const auto angleOf = [&](const Vector2& p) {
                return math::normalizeAngle(std::atan2(p.y - e.def3.y, p.x - e.def3.x));
            };
            const bool leader = !(e.def4 == Vector2{});
            out.subclass("AcDbArcDimension");
            out.point(13, e.def1, z);
            out.point(14, e.def2, z);
            out.point(15, e.def3, z);
            out.flag(70, e.partialArc);
            out.real(40, angleOf(e.def1));
            out.real(41, angleOf(e.def2));
            out.flag(71, leader);
            out.point(16, leader ? e.def4 : Vector2{}, leader ? z : 0.0);
            out.point(17, Vector2{}, 0.0);
            break;
        }
    }
    if (e.xdata() == nullptr || e.xdata()->find(Name("ACAD")) == nullptr) dimensionOverrides(e);
    tail(e, own);
    return true;
}

bool Writer::write(const LeaderEntity& e, const Target& t) {
    if (e.vertices.size() < 2) return false;
    if (!std::all_of(e.vertices.begin(), e.vertices.end(), [](const Vector2& p) { return finite(p); })) return false;
    FieldKeys keys;
    const Entity* annotation = e.annotationHandle != 0 ? drawing_.findByHandle(e.annotationHandle) : nullptr;
    if (!e.annotation.empty()) keys.push_back("annotation");
    if (e.arrowSize != 0.0) keys.push_back("arrowSize");
    if (e.textHeight != 0.0) keys.push_back("textHeight");
    if (!e.arrowBlock.empty()) keys.push_back("arrowBlock");
    if (e.annotationHandle != 0 && annotation == nullptr) keys.push_back("annotationHandle");
    if (e.annotationWidth != 0.0) keys.push_back("annotationWidth");
    if (e.hookDir != 0 && e.hookDir != 1) keys.push_back("hookDir");
    if (forDwg_ && e.hookLine) keys.push_back("hookLine");
    if (!isPlain(e.dimStyleName)) keys.push_back("dimStyleName");
    const OwnData own = gather(e, kElevation | kNormal, keys);
    head("LEADER", e, t, own);
    GroupWriter& out = *out_;
    int kind = 3;
    if (annotation != nullptr) {
        if (annotation->type() == EntityType::MText) kind = 0;
        if (annotation->type() == EntityType::Tolerance) kind = 1;
        if (annotation->type() == EntityType::BlockReference) kind = 2;
    }
    out.subclass("AcDbLeader");
    dimStyleName(3, e.dimStyleName);
    out.flag(71, e.hasArrow);
    out.flag(72, e.splined);
    out.integer(73, kind);
    out.integer(74, e.hookDir != 0 ? 1 : 0);
    out.flag(75, e.hookLine);
    out.real(40, e.effectiveTextHeight());
    out.real(41, e.annotationWidth);
    // Other programs have the end of the hook line among the vertices.
    out.integer(76, static_cast<std::int64_t>(e.vertices.size() + (e.hookLine ? 1 : 0)));
    for (const Vector2& p : e.vertices) out.point(10, p, e.elevation);
    if (e.hookLine) out.point(10, finite(e.endPoint()) ? e.endPoint() : e.vertices.back(), e.elevation);
    if (annotation != nullptr) out.handle(340, e.annotationHandle);
    normal(e);
    out.point(211, Vector3{1, 0, 0});
    const bool overrides = e.arrowSize > 0.0 || e.textHeight > 0.0 || !e.arrowBlock.empty();
    if (overrides && (e.xdata() == nullptr || e.xdata()->find(Name("ACAD")) == nullptr)) {
        out.word(1001, "ACAD");
        out.word(1000, "DSTYLE");
        out.word(1002, "{");
        if (e.arrowSize > 0.0) {
            out.integer(1070, 41);
            out.real(1040, e.arrowSize);
        }
        if (e.textHeight > 0.0) {
            out.integer(1070, 140);
            out.real(1040, e.textHeight);
        }
        if (!e.arrowBlock.empty()) {
            out.integer(1070, 341);
            out.handle(1005, arrowHandle(e.arrowBlock));
        }
        out.word(1002, "}");
    }
    tail(e, own);
    return true;
}

}  // namespace kova::io::dxf
