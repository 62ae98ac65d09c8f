#include <cmath>

#include "engine/entities/dimensions/arrowheads.hpp"
#include "engine/entities/dimensions/dimension_builder.hpp"
#include "math/curves/curves.hpp"

namespace kova::engine {

using math::Vector2;

namespace {

/// A leader this near to the horizontal goes straight to its horizontal text, without a hook.
constexpr double kHookSlope = 0.2679491924311227;  // tan 15 degrees

/// Radius and diameter dimensions. Places on the line are distances from the centre towards the near point.
class RadialLayout {
public:
    explicit RadialLayout(DimensionBuilder& builder) : b(builder), f(radialFrame(builder.dim)) {}

    void build() {
        if (!f.center.is_finite() || !(f.radius > 0.0) || !std::isfinite(f.radius)) return;
        diameter = b.dim.kind() == DimensionType::Diameter;
        angle = f.dir.angle();
        if (b.dim.isJoggedRadius()) {
            buildJogged();
            return;
        }
        place = b.hasText() && b.dim.hasUserText() ? b.dim.userText : b.dim.dimLine;
        const double t = (place - f.center).dot(f.dir);
        const double rotation = b.textRotation(angle, true);
        const double room = diameter ? 2.0 * f.radius : f.radius;
        const double need = b.hasText() ? 2.0 * b.halfExtent(angle, rotation) + 2.0 * b.gap : 0.0;
        const bool fits = need + (diameter ? b.arrowRoom() : b.arrowSize) <= room * (1.0 + 1e-9);
        const bool user = b.hasText() && b.dim.hasUserText();
        inside = b.style().textInsideForced || (t <= f.radius && (fits || user));
        b.picture.textInside = inside;
        if (inside)
            buildInside(t, rotation);
        else
            buildOutside(t);
    }

private:
    Vector2 at(double t) const { return f.center + f.dir * t; }

    void line(double from, double to) {
        if (from < to) b.addCutLine(DimPart::DimLine, at(from), at(to));
    }

    /// The line across the circle (or from its centre), its arrows within.
    void innerLine(bool arrows) {
        const double from = diameter ? -f.radius + (arrows ? b.arrowGap2() : 0.0) : 0.0;
        line(from, f.radius - (arrows ? b.arrowGap1() : 0.0));
        if (!arrows) return;
        b.addArrow(f.nearPoint, f.dir, false);
        if (diameter) b.addArrow(f.farPoint, -f.dir, true);
    }

    void buildInside(double t, double rotation) {
        const double half = b.halfExtent(angle, rotation);
        const double least = diameter ? -f.radius + b.arrowSize + b.gap + half : b.gap + half;
        const double most = f.radius - b.arrowSize - b.gap - half;
        const bool fits = least <= most;
        const int side = b.textSide(angle, rotation);
        const Vector2 up = math::unitAt(readableAngle(angle) + math::kPi / 2);
        if (b.hasText() && b.dim.hasUserText()) {
            b.placeText(b.dim.userText, rotation);
        } else {
            // Where the user put it as far as it stays clear of the arrows; forced inside, in the middle.
            const double middle = diameter ? 0.0 : f.radius / 2.0;
            const double s = fits ? std::clamp(t, least, most) : middle;
            b.placeText(at(s) + up * b.textOffset(side, angle, rotation), rotation);
        }
        const bool arrows = fits || !b.hasText() || b.dim.hasUserText();
        b.picture.arrowsInside = arrows;
        if (arrows || b.style().forceDimLineInside) innerLine(arrows);
        if (arrows || b.style().suppressOutsideDimLines) return;
        outsideArrow(f.radius + 2.0 * b.arrowSize);
        if (!diameter) return;
        b.addArrow(f.farPoint, f.dir, true);
        line(-f.radius - 2.0 * b.arrowSize, -f.radius - b.arrowGap2());
    }

    /// An arrow that points at the near point from outside, with its line out to `to`.
    void outsideArrow(double to) {
        b.addArrow(f.nearPoint, -f.dir, false);
        line(f.radius + b.arrowGap1(), to);
    }

    void buildOutside(double t) {
        const bool arrowsFit = (diameter ? b.arrowRoom() : b.arrowSize) <= (diameter ? 2.0 : 1.0) * f.radius;
        const bool tick = b.ticks1 && (!diameter || b.ticks2);
        const bool within = b.style().forceDimLineInside &&
                            (tick || (arrowsFit && b.style().fitOption != 0 && b.style().fitOption != 1));
        b.picture.arrowsInside = within;
        const double leave = f.radius + (within ? b.arrowSize : 2.0 * b.arrowSize);

        const double rotation = b.textRotation(angle, false);
        const bool along = std::abs(std::sin(rotation - angle)) < 1e-6;
        const bool hook =
            b.hasText() && !along && b.dim.textRotation == 0.0 && std::abs(f.dir.y) > kHookSlope * std::abs(f.dir.x);
        double end = leave;
        if (b.hasText() && b.dim.hasUserText() && b.style().textMovement != 0) {
            b.placeText(b.dim.userText, rotation);
            if (b.style().textMovement == 1) b.addTextLeader(at(leave));
        } else if (hook) {
            end = placeHooked(leave, rotation);
        } else {
            end = placeAlong(t, leave, rotation);
        }
        b.addCenterMark(f.center, f.radius);
        if (b.style().forceDimLineInside) innerLine(within);
        if (within)
            line(f.radius, end);
        else
            outsideArrow(end);
        if (hookLine) b.addCutLine(DimPart::DimLine, hookStart, hookEnd);
    }

    /// Text along the line (or horizontal text beside a nearly horizontal one); gives the end of the line.
    double placeAlong(double t, double leave, double rotation) {
        if (!b.hasText()) {
            b.placeText(at(std::max(t, leave)), rotation);
            return std::max(t, leave);
        }
        const double half = b.halfExtent(angle, rotation);
        const int side = b.textSide(angle, rotation);
        const Vector2 up = math::unitAt(readableAngle(angle) + math::kPi / 2);
        const double s = std::max(t, leave + b.gap + half);
        b.placeText(at(s) + up * b.textOffset(side, angle, rotation), rotation);
        return side != 0 || b.textSplit() ? s + half : s - half - b.gap;
    }

    /// Horizontal text at the end of a short horizontal line; gives the place of the bend.
    double placeHooked(double leave, double rotation) {
        const double bend = std::max(leave, (place - f.center).y / f.dir.y);
        const double right = place.x >= f.nearPoint.x ? 1.0 : -1.0;
        const double sense = std::abs(f.dir.x) > 1e-9 ? (f.dir.x > 0.0 ? 1.0 : -1.0) : right;
        const double half = b.halfExtent(0.0, rotation);
        hookStart = at(bend);
        const Vector2 near = hookStart + Vector2{sense * b.arrowSize, 0.0};
        const int side = b.style().textVertical == 0 ? 0 : b.textSide(0.0, rotation);
        const Vector2 middle = near + Vector2{sense * (b.gap + half), b.textOffset(side, 0.0, rotation)};
        hookEnd = side == 0 && !b.textSplit() ? near : near + Vector2{sense * (b.gap + 2.0 * half), 0.0};
        hookLine = true;
        b.placeText(middle, rotation);
        return bend;
    }

    /// From the override centre parallel to the radius, over the jog, and along the radius to the circle.
    void buildJogged() {
        const Vector2 n = f.dir.perpendicular();
        const Vector2 q = f.nearPoint;
        const Vector2 c = b.dim.jogCenter;
        const Vector2 j = b.dim.jogPoint;
        const double height = (q - c).dot(n);
        double jog = std::abs(b.style().jogAngle);
        if (!(jog >= 5.0 * math::kDegree)) jog = math::kPi / 4;
        jog = std::min(jog, math::kPi / 2);
        // The transverse part leans back, so that the line shows as broken. It is at least a text's height long.
        const double least = b.textHeight;
        const double lower = (c - j).dot(n);
        const double sign = height < 0.0 ? -1.0 : 1.0;
        const double lean = std::cos(jog) / std::sin(jog);
        Vector2 a = j + n * lower - f.dir * (lower * sign * lean);
        Vector2 e = j + n * (lower + height) - f.dir * ((lower + height) * sign * lean);
        const bool straight = std::abs(height) < 1e-9;
        if (straight) {
            a = e = j - n * (j - q).dot(n);
        }
        b.picture.arrowsInside = true;
        placeJoggedText(a, e);
        b.addCutLine(DimPart::DimLine, c, straight ? a - f.dir * (least / 2.0) : a);
        Path zigzag;
        if (straight)
            zigzag.moveTo(a - f.dir * (least / 2.0))
                .lineTo(a + f.dir * (least / 4.0) + n * (least / 2.0))
                .lineTo(a - f.dir * (least / 4.0) - n * (least / 2.0))
                .lineTo(a + f.dir * (least / 2.0));
        else
            zigzag.moveTo(a).lineTo(e);
        b.addPath(DimPart::DimLine, std::move(zigzag));
        b.addCutLine(DimPart::DimLine, straight ? a + f.dir * (least / 2.0) : e, q - f.dir * b.arrowGap1());
        b.addArrow(q, f.dir, false);
    }

    /// Text on the part of the line next to where the user put it, or beyond the circle.
    void placeJoggedText(const Vector2& a, const Vector2& e) {
        const Vector2 n = f.dir.perpendicular();
        const bool user = b.hasText() && b.dim.hasUserText();
        const Vector2 wish = user ? b.dim.userText : b.dim.dimLine;
        const double rotation = b.textRotation(angle, true);
        if (user) {
            b.placeText(wish, rotation);
            return;
        }
        const Vector2 q = f.nearPoint;
        const bool onFirst = (wish - a).dot(f.dir) < 0.0 && (wish - e).dot(f.dir) < 0.0;
        const Vector2 base = onFirst ? a : q;
        const Vector2 foot = wish - n * (wish - base).dot(n);
        const int side = b.textSide(angle, rotation);
        const Vector2 up = math::unitAt(readableAngle(angle) + math::kPi / 2);
        b.placeText(foot + up * b.textOffset(side, angle, rotation), rotation);
        const double beyond = (foot - q).dot(f.dir);
        b.picture.textInside = beyond <= 0.0;
        if (beyond <= 0.0) return;
        const double half = b.halfExtent(angle, rotation);
        b.addCutLine(DimPart::DimLine, q, foot + f.dir * (side != 0 ? half : -half - b.gap));
    }

    DimensionBuilder& b;
    RadialFrame f;
    double angle = 0.0;
    Vector2 place;  ///< where the user put the text
    bool diameter = false;
    bool inside = true;
    bool hookLine = false;
    Vector2 hookStart;
    Vector2 hookEnd;
};

}  // namespace

void buildRadial(DimensionBuilder& b) { RadialLayout(b).build(); }

}  // namespace kova::engine
