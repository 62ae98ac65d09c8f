#include "engine/entities/dimensions/dimension.hpp"

#include <cmath>

#include "engine/model/drawing.hpp"
#include "engine/entities/dimensions/dimension_geometry.hpp"
#include "engine/entities/dimensions/dimension_layout.hpp"
#include "engine/entities/dimensions/dimension_text.hpp"
#include "engine/text/mtext_layout.hpp"
#include "engine/model/object_plane.hpp"
#include "engine/text/text_line.hpp"
#include "engine/model/outline.hpp"
#include "math/curves/curves.hpp"

namespace kova::engine {

using math::Vector2;

namespace {

/// True in a layout: what stands in model space or a block is measured in model units.
bool inPaperSpace(const DimensionEntity& d) {
    const Drawing* drawing = d.drawing();
    if (drawing == nullptr) return false;
    for (const auto& layout : drawing->layouts())
        if (&layout->entities == d.owner()) return true;
    return false;
}

/// The image of a direction that is stored only when it is not 0.
double transformedAngle(double angle, const math::Matrix4& m) {
    const double turned = m.transform_direction(math::unitAt(angle)).angle();
    return std::abs(turned) < 1e-12 ? 0.0 : turned;
}
double keptFromZero(double angle, double sameAs) { return angle == 0.0 ? sameAs : angle; }

/// What a grip moves.
enum class Grip : std::uint8_t { Def1, Def2, DimLine, Def3, Def4, JogCenter, JogPoint, Text };

/// The grips of a dimension, in the order of its fields, the text last.
std::vector<Grip> gripsOf(const DimensionEntity& d) {
    std::vector<Grip> grips{Grip::Def1, Grip::Def2};
    switch (d.kind()) {
        case DimensionType::Angular2Line:
            grips.insert(grips.end(), {Grip::DimLine, Grip::Def3, Grip::Def4});
            break;
        case DimensionType::Angular3Point:
            grips.insert(grips.end(), {Grip::DimLine, Grip::Def3});
            break;
        case DimensionType::ArcLength:
            grips.insert(grips.end(), {Grip::DimLine, Grip::Def3});
            if (d.def4 != Vector2{}) grips.push_back(Grip::Def4);
            break;
        case DimensionType::Ordinate:
        case DimensionType::OrdinateX:
            grips.push_back(Grip::Def3);
            break;
        case DimensionType::Diameter:
            break;
        case DimensionType::Radius:
            if (d.jogged) grips.insert(grips.end(), {Grip::JogCenter, Grip::JogPoint});
            break;
        default:
            grips.push_back(Grip::DimLine);
            if (d.jogged) grips.push_back(Grip::JogPoint);
            break;
    }
    grips.push_back(Grip::Text);
    return grips;
}

}  // namespace

// What it measures -------------------------------------------------------------------------------------------------

DimensionType DimensionEntity::kind() const {
    if (subType > DimensionType::ArcLength) return DimensionType::Rotated;
    if (subType == DimensionType::Angular3Point && angularLines) return DimensionType::Angular2Line;
    return subType;
}

bool DimensionEntity::isAngular() const {
    const DimensionType k = kind();
    return k == DimensionType::Angular2Line || k == DimensionType::Angular3Point;
}

bool DimensionEntity::hasUserText() const {
    return userText != Vector2{} ? userText.is_finite() : textAtOrigin;
}

void DimensionEntity::setUserText(const Vector2& p) {
    if (!p.is_finite()) return;
    userText = p;
    textAtOrigin = p == Vector2{};
}

void DimensionEntity::clearUserText() {
    userText = {};
    textAtOrigin = false;
}

DimStyle DimensionEntity::style() const {
    static const DimStyle plain;
    const Drawing* owner = drawing();
    DimStyle s = owner != nullptr ? owner->dimStyleOrStandard(dimStyleName) : plain;
    const auto own = [](double& member, double value) {
        if (value > 0.0 && std::isfinite(value)) member = value;
    };
    own(s.textHeight, textHeight);
    own(s.arrowSize, arrowSize);
    own(s.extGap, extGap);
    own(s.extExtension, extExtension);
    overrideDimStyle(s, styleOverrides, nameOverrides);
    return s;
}

double DimensionEntity::measurement() const {
    if (!dimensionIsFinite(*this)) return 0.0;
    switch (kind()) {
        case DimensionType::Angular2Line:
        case DimensionType::Angular3Point: {
            const auto frame = angularFrame(*this);
            return frame ? frame->sweep : 0.0;
        }
        case DimensionType::ArcLength: {
            const auto frame = angularFrame(*this);
            return frame ? frame->sweep * def1.distance_to(def3) : 0.0;
        }
        case DimensionType::Diameter:
        case DimensionType::Radius:
            return def1.distance_to(def2);
        case DimensionType::Ordinate:
        case DimensionType::OrdinateX:
            return std::abs((def1 - def3).dot(ordinateAxis(*this).perpendicular()));
        default:
            return linearFrame(*this).length;
    }
}

std::string DimensionEntity::textContent() const { return textContent(style(), inPaperSpace(*this)); }

std::string DimensionEntity::textContent(const DimStyle& style, bool paperSpace) const {
    DimTextInput input;
    input.value = measurement();
    input.measure = isAngular() ? DimMeasure::Angle : DimMeasure::Length;
    if (kind() == DimensionType::Radius) input.prefix = "R";
    if (kind() == DimensionType::Diameter) input.prefix = "%%c";
    input.textOverride = textOverride;
    input.paperSpace = paperSpace;
    return dimTextContent(style, input);
}

std::string DimensionEntity::text() const {
    // Stacked fractions would run into the whole number.
    constexpr std::int32_t kInLine = 2;
    DimStyle inLine = style();
    inLine.fractionFormat = kInLine;
    return plainText(textContent(inLine, inPaperSpace(*this)));
}

// Entity -----------------------------------------------------------------------------------------------------------

math::Bounds2 DimensionEntity::bounds() const { return outlineBounds(*this); }

void DimensionEntity::transform(const math::Matrix4& m) {
    const math::PlaneParts parts = math::planeParts(m);
    const DimensionType type = kind();
    // Points that the kind does not use stay at (0, 0).
    const auto move = [&](Vector2& p) { p = m.transform_point(p); };
    for (const Grip grip : gripsOf(*this)) {
        switch (grip) {
            case Grip::Def1:
                move(def1);
                break;
            case Grip::Def2:
                move(def2);
                break;
            case Grip::DimLine:
                move(dimLine);
                break;
            case Grip::Def3:
                move(def3);
                break;
            case Grip::Def4:
                move(def4);
                break;
            case Grip::JogCenter:
                move(jogCenter);
                break;
            case Grip::JogPoint:
                move(jogPoint);
                break;
            case Grip::Text:
                break;
        }
    }
    if (type == DimensionType::Radius || type == DimensionType::Diameter) move(dimLine);
    if (hasUserText()) setUserText(m.transform_point(userText));
    elevation = m.transform_point(math::Vector3(Vector2{}, elevation)).z;
    if (type == DimensionType::ArcLength && parts.mirrored) std::swap(def1, def2);

    const bool ordinate = type == DimensionType::Ordinate || type == DimensionType::OrdinateX;
    if (type == DimensionType::Rotated || ordinate) linearRotation = transformedAngle(linearRotation, m);
    if (obliqueAngle != 0.0) obliqueAngle = keptFromZero(transformedAngle(obliqueAngle, m), math::kPi);
    if (textRotation != 0.0) {
        double turned = transformedAngle(textRotation, m);
        if (parts.mirrored) turned = readableAngle(turned);
        textRotation = keptFromZero(turned, math::kTwoPi);
    }
    const double factor = std::sqrt(std::abs(m.plane_determinant()));
    if (factor > 0.0 && std::isfinite(factor))
        for (double* size : {&textHeight, &arrowSize, &extGap, &extExtension}) *size *= factor;
    transformExtrusion(*this, m);
}

double DimensionEntity::distanceTo(const Vector2& p) const { return p.distance_to(nearestPoint(p)); }

Vector2 DimensionEntity::nearestPoint(const Vector2& p) const {
    const DimensionPicture picture = layoutDimension(*this);
    if (picture.hasText && nearestInQuad(picture.textBox(), p) == p) return p;
    return nearestOnOutline(*this, p);
}

std::vector<Vector2> DimensionEntity::gripPoints() const {
    std::vector<Vector2> points;
    for (const Grip grip : gripsOf(*this)) {
        switch (grip) {
            case Grip::Def1:
                points.push_back(def1);
                break;
            case Grip::Def2:
                points.push_back(def2);
                break;
            case Grip::DimLine:
                points.push_back(dimLine);
                break;
            case Grip::Def3:
                points.push_back(def3);
                break;
            case Grip::Def4:
                points.push_back(def4);
                break;
            case Grip::JogCenter:
                points.push_back(jogCenter);
                break;
            case Grip::JogPoint:
                points.push_back(jogPoint);
                break;
            case Grip::Text:
                points.push_back(layoutDimension(*this).textMiddle);
                break;
        }
    }
    return points;
}

void DimensionEntity::moveGrip(std::size_t index, const Vector2& to) {
    const std::vector<Grip> grips = gripsOf(*this);
    if (index >= grips.size() || !to.is_finite()) return;
    switch (grips[index]) {
        case Grip::Def1:
            moveOrigin(def1, to);
            break;
        case Grip::Def2:
            moveOrigin(def2, to);
            break;
        case Grip::DimLine:
            moveDimLine(to);
            break;
        case Grip::Def3:
            def3 = to;
            break;
        case Grip::Def4:
            def4 = to;
            break;
        case Grip::JogCenter:
            jogCenter = to;
            break;
        case Grip::JogPoint:
            jogPoint = to;
            break;
        case Grip::Text:
            moveText(to);
            break;
    }
}

void DimensionEntity::moveOrigin(Vector2& origin, const Vector2& to) {
    switch (kind()) {
        case DimensionType::Aligned: {
            // The dimension line turns with the measured line and keeps its distance.
            const Vector2 n = linearFrame(*this).dir.perpendicular();
            const double distance = (dimLine - def1).dot(n);
            origin = to;
            const Vector2 dir = (def2 - def1).normalized();
            if (dir != Vector2{}) dimLine = (def1 + def2) / 2.0 + dir.perpendicular() * distance;
            break;
        }
        case DimensionType::ArcLength: {
            const Vector2 direction = (to - def3).normalized();
            if (direction != Vector2{}) origin = def3 + direction * def1.distance_to(def3);
            break;
        }
        default:
            origin = to;
            break;
    }
}

void DimensionEntity::moveDimLine(const Vector2& to) {
    if (hasUserText()) {
        // A text that was put by hand goes with its line.
        Vector2 step = to - dimLine;
        if (kind() == DimensionType::Rotated || kind() == DimensionType::Aligned) {
            const Vector2 n = linearFrame(*this).dir.perpendicular();
            step = n * step.dot(n);
        }
        setUserText(userText + step);
    }
    dimLine = to;
}

void DimensionEntity::moveText(const Vector2& to) {
    const DimStyle inForce = style();
    const Vector2 from = layoutDimension(*this).textMiddle;
    const bool lineFollows = inForce.textMovement == 0;
    switch (kind()) {
        case DimensionType::Ordinate:
        case DimensionType::OrdinateX:
            if (lineFollows)
                def2 += to - from;
            else
                setUserText(to);
            break;
        case DimensionType::Radius:
        case DimensionType::Diameter: {
            if (!lineFollows || isJoggedRadius()) {
                setUserText(to);
                break;
            }
            // The dimension turns about its centre towards the text.
            const RadialFrame frame = radialFrame(*this);
            const Vector2 direction = (to - frame.center).normalized();
            clearUserText();
            dimLine = to;
            if (direction == Vector2{}) break;
            const Vector2 arm = direction * frame.radius;
            if (kind() == DimensionType::Radius) {
                def2 = frame.center + arm;
            } else {
                def1 = frame.center + arm;
                def2 = frame.center - arm;
            }
            break;
        }
        case DimensionType::Angular2Line:
        case DimensionType::Angular3Point:
        case DimensionType::ArcLength:
            if (const auto frame = angularFrame(*this); frame && lineFollows) {
                const double step = to.distance_to(frame->center) - from.distance_to(frame->center);
                const Vector2 direction = (dimLine - frame->center).normalized();
                if (frame->radius + step > math::kTolerance) dimLine += direction * step;
            }
            setUserText(to);
            break;
        default:
            if (lineFollows) {
                const Vector2 n = linearFrame(*this).dir.perpendicular();
                dimLine += n * (to - from).dot(n);
            }
            setUserText(to);
            break;
    }
}

void DimensionEntity::describe(FieldVisitor& v) {
    v.integer("subType", subType);
    v.point("def1", def1);
    v.point("def2", def2);
    v.point("dimLine", dimLine);
    v.point("def3", def3);
    v.point("def4", def4);
    v.length("textHeight", textHeight);
    v.text("textOverride", textOverride);
    v.angle("textRotation", textRotation);
    v.point("userText", userText);
    v.boolean("textAtOrigin", textAtOrigin, false);
    v.angle("linearRotation", linearRotation);
    v.angle("obliqueAngle", obliqueAngle);
    v.length("arrowSize", arrowSize);
    v.length("extGap", extGap);
    v.length("extExtension", extExtension);
    v.name("dimStyleName", dimStyleName);
    v.numberMap("styleOverrides", styleOverrides);
    v.textMap("nameOverrides", nameOverrides);
    v.boolean("jogged", jogged, false);
    // The jog's points count only while there is a jog.
    if (jogged || v.reading()) {
        v.point("jogCenter", jogCenter);
        v.point("jogPoint", jogPoint);
    }
    v.boolean("partialArc", partialArc, false);
    v.boolean("angularLines", angularLines, false);
    v.integer("inspectShape", inspectShape, InspectionShape::Off);
    v.text("inspectLabel", inspectLabel, "");
    v.text("inspectRate", inspectRate, "");
}

void DimensionEntity::emit(OutlineSink& sink, const OutlineStyle& style) const {
    emitDimensionPicture(layoutDimension(*this), drawing(), sink, style);
}

std::size_t DimensionEntity::sizeInBytes() const {
    std::size_t size =
        sizeof *this + extrasSize() + textOverride.capacity() + inspectLabel.capacity() + inspectRate.capacity();
    // A node of a map: its key, its value and three links.
    for (const auto& [name, value] : styleOverrides) size += name.capacity() + 96;
    for (const auto& [name, value] : nameOverrides) size += name.capacity() + value.capacity() + 128;
    return size;
}

}  // namespace kova::engine
