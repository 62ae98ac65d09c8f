#include "engine/model/drawing.hpp"
#include "engine/entities/hatch.hpp"
#include "engine/libraries/libraries.hpp"
#include "math/curves/curves.hpp"

namespace kova::engine {

using math::Vector2;

namespace {

double usableScale(double scale) { return scale == 0.0 || !std::isfinite(scale) ? 1.0 : std::abs(scale); }

Vector2 turned(const Vector2& p, double angle) {
    const Vector2 d = math::unitAt(angle);
    return d * p.x + d.perpendicular() * p.y;
}

/// Parallel lines at a distance of 1: the pattern of user-defined hatches.
const std::vector<HatchFamily>& plainLines() {
    static const std::vector<HatchFamily> lines{{0.0, {}, {0.0, 1.0}, {}}};
    return lines;
}

/// What stands in for a pattern that nothing knows: lines at 45 degrees.
const std::vector<HatchFamily>& substitute(bool metric) {
    static const std::vector<HatchFamily> millimetres{{math::kPi / 4.0, {}, {0.0, 3.175}, {}}};
    static const std::vector<HatchFamily> inches{{math::kPi / 4.0, {}, {0.0, 0.125}, {}}};
    return metric ? millimetres : inches;
}

}  // namespace

HatchFamily placedFamily(const HatchFamily& definition, double scale, double angle, const Vector2& origin,
                         bool mirrored) {
    const double s = usableScale(scale);
    const double side = mirrored ? -1.0 : 1.0;
    HatchFamily placed = definition;
    placed.angle = angle + side * definition.angle;
    placed.origin = origin + turned({definition.origin.x, side * definition.origin.y}, angle) * s;
    placed.shift = {definition.shift.x * s, side * definition.shift.y * s};
    for (double& dash : placed.dashes) dash *= s;
    return placed;
}

HatchFamily definitionFamily(const HatchFamily& placed, double scale, double angle, const Vector2& origin,
                             bool mirrored) {
    const double s = usableScale(scale);
    const double side = mirrored ? -1.0 : 1.0;
    HatchFamily definition = placed;
    definition.angle = side * (placed.angle - angle);
    const Vector2 local = turned(placed.origin - origin, -angle) / s;
    definition.origin = {local.x, side * local.y};
    definition.shift = {placed.shift.x / s, side * placed.shift.y / s};
    for (double& dash : definition.dashes) dash /= s;
    return definition;
}

HatchFamily transformedFamily(const HatchFamily& placed, const math::Matrix4& m) {
    HatchFamily out = placed;
    const Vector2 along = math::unitAt(placed.angle);
    const Vector2 image = m.transform_direction(along);
    const double stretch = image.length();
    out.origin = m.transform_point(placed.origin);
    if (!(stretch > 0.0) || !std::isfinite(stretch)) return out;
    const Vector2 axis = image / stretch;
    const Vector2 step = m.transform_direction(along * placed.shift.x + along.perpendicular() * placed.shift.y);
    out.angle = image.angle();
    out.shift = {step.dot(axis), step.dot(axis.perpendicular())};
    for (double& dash : out.dashes) dash *= stretch;
    return out;
}

const std::vector<HatchFamily>* HatchEntity::definition() const {
    if (!ownPattern.empty()) return &ownPattern;
    if (patternType == kUserDefined) return &plainLines();
    if (const Drawing* d = drawing()) {
        const HatchPattern* pattern = d->findHatchPattern(patternName);
        return pattern != nullptr && !pattern->families.empty() ? &pattern->families : &substitute(d->isMetric());
    }
    for (const HatchPattern& pattern : builtinHatchPatterns(true))
        if (pattern.name == patternName && !pattern.families.empty()) return &pattern.families;
    return &substitute(true);
}

std::vector<HatchFamily> HatchEntity::families() const {
    std::vector<HatchFamily> placed;
    if (isSolid()) return placed;
    const std::vector<HatchFamily>& known = *definition();
    // Families of its own already hold the crossing lines.
    const bool crossed = doubled && ownPattern.empty();
    placed.reserve(known.size() * (crossed ? 2 : 1));
    for (const HatchFamily& f : known)
        placed.push_back(placedFamily(f, patternScale, patternAngle, patternOrigin, patternMirrored));
    if (crossed)
        for (const HatchFamily& f : known)
            placed.push_back(
                placedFamily(f, patternScale, patternAngle + math::kPi / 2.0, patternOrigin, patternMirrored));
    return placed;
}

void HatchEntity::setFinalPattern(const std::vector<HatchFamily>& families) {
    std::vector<HatchFamily> own;
    own.reserve(families.size());
    for (const HatchFamily& f : families)
        own.push_back(definitionFamily(f, patternScale, patternAngle, patternOrigin, patternMirrored));
    ownPattern = std::move(own);
}

}  // namespace kova::engine
