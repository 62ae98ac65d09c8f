#include <cmath>

#include "engine/entities/dimensions/dimension_builder.hpp"
#include "math/curves/curves.hpp"

namespace kova::engine {

using math::Vector2;

namespace {

constexpr double kNowhere = std::numeric_limits<double>::infinity();

/// Angular and arc length dimensions. Places on the arc are lengths from its start.
class AngularLayout {
public:
    AngularLayout(DimensionBuilder& builder, const AngularFrame& frame) : b(builder), f(frame) {}

    void build() {
        if (!f.center.is_finite() || !(f.radius > math::kTolerance) || !std::isfinite(f.radius)) return;
        if (b.dim.kind() == DimensionType::ArcLength) placeArcLengthFrame();
        length = f.radius * f.sweep;
        placeText();
        addExtensions();
        addDimensionArc();
        addLeaders();
    }

private:
    double angleAt(double t) const { return f.start + t / f.radius; }
    Vector2 at(double t) const { return f.pointAt(angleAt(t)); }
    /// Direction of an arrow with its tip at t and its body towards t + side: it is straight, so it points along a
    /// chord.
    Vector2 arrowDirection(double t, double side) const {
        const double turn = 2.0 * std::asin(std::min(1.0, b.arrowSize / (2.0 * f.radius)));
        const Vector2 tail = f.pointAt(angleAt(t) + side * turn);
        return (at(t) - tail).normalized();
    }

    /// The dimension arc of a short arc is the arc itself, moved outwards between parallel extension lines; that of a
    /// long one has the same centre.
    void placeArcLengthFrame() {
        const double measured = b.dim.def1.distance_to(b.dim.def3);
        if (f.sweep >= math::kPi / 2 - 1e-9) return;
        const Vector2 out = math::unitAt(f.start + f.sweep / 2.0);
        f.center = f.center + out * (f.radius - measured);
        f.radius = measured;
    }

    void placeText() {
        const double middle = f.start + f.sweep / 2.0;
        const double insideRotation = b.textRotation(middle + math::kPi / 2, true);
        const double extent = 2.0 * b.halfExtent(middle + math::kPi / 2, insideRotation);
        const bool user = b.hasText() && b.dim.hasUserText();
        const DimensionBuilder::Fit fit = b.fit(length, user || !b.hasText() ? 0.0 : extent + 2.0 * b.gap);
        b.picture.arrowsInside = fit.arrows;
        b.picture.textInside = fit.text;
        suppressed = fit.suppressed;
        if (user) {
            const Vector2 place = b.dim.userText;
            const double direction = (place - f.center).angle();
            b.picture.textInside = math::angleInSweep(direction, f.start, f.end());
            const double rotation = b.textRotation(direction + math::kPi / 2, b.picture.textInside);
            b.placeText(place, rotation);
            if (b.style().textMovement == 1)
                wantsLeader =
                    std::abs(place.distance_to(f.center) - f.radius) > 2.0 * b.gap + b.halfExtent(direction, rotation);
            else if (b.style().textMovement == 0 && !b.picture.textInside)
                reachTo(direction);
            return;
        }
        if (fit.text) {
            double t = length / 2.0;
            const double edge = b.arrowSize + b.gap + extent / 2.0;
            if (b.style().textJustify == 1) t = std::max(t, length - edge);  // the arc runs from right to left
            if (b.style().textJustify == 2) t = std::min(t, edge);
            place(t, true);
            return;
        }
        if (b.style().textMovement != 0) {
            const double rise = b.gap + b.halfExtent(middle, insideRotation);
            wantsLeader = b.style().textMovement == 1;
            const Vector2 out = math::unitAt(middle);
            b.placeText(at(length / 2.0) + out * (rise + (wantsLeader ? 2.0 * b.arrowSize : 0.0)), insideRotation);
            return;
        }
        // Beyond the end of the arc, which is drawn out to the text.
        const double start = length + b.arrowSize * (b.picture.arrowsInside ? 1.0 : 2.0);
        const double tangent = angleAt(start) + math::kPi / 2;
        const double half = b.halfExtent(tangent, b.textRotation(tangent, false));
        const bool inLine = place(start + b.gap + half, false);
        reach = inLine && !b.textSplit() ? start : start + b.gap + 2.0 * half;
    }

    /// True when the text stands in the line of the arc.
    bool place(double t, bool inside) {
        const double radial = angleAt(t);
        const double tangent = radial + math::kPi / 2;
        const double rotation = b.textRotation(tangent, inside);
        const int side = b.textSide(tangent, rotation);
        const Vector2 out = math::unitAt(radial);
        const Vector2 up = side == 2 ? out : math::unitAt(readableAngle(tangent) + math::kPi / 2);
        double offset = b.textOffset(side, tangent, rotation);
        if (side != 0 && (up * offset).dot(out) < 0.0) {
            // Within the arc, whose ends come towards the corners of the text.
            const double half = std::min(b.halfExtent(tangent, rotation) + b.gap, f.radius);
            const double rise = f.radius - std::sqrt(f.radius * f.radius - half * half);
            offset += offset < 0.0 ? -rise : rise;
        }
        b.placeText(at(t) + up * offset, rotation);
        return side == 0;
    }

    /// Draws the arc out to a text that the user has put beside it.
    void reachTo(double direction) {
        const double after = math::normalizeAngle(direction - f.end());
        const double before = math::normalizeAngle(f.start - direction);
        if (after <= before)
            reach = length + after * f.radius;
        else
            reachBack = -before * f.radius;
    }

    void addExtensions() {
        const DimPart start = f.swapped ? DimPart::ExtLine2 : DimPart::ExtLine1;
        const DimPart end = f.swapped ? DimPart::ExtLine1 : DimPart::ExtLine2;
        if (f.origin1) b.addExtension(start, *f.origin1, f.pointAt(f.start));
        if (f.origin2) b.addExtension(end, *f.origin2, f.pointAt(f.end()));
    }

    void addArc(double from, double to) {
        if (from < to) b.addCutArc(DimPart::DimLine, f.center, f.radius, angleAt(from), angleAt(to));
    }

    void addDimensionArc() {
        // The first half is the one at the first definition point.
        const bool startOff = f.swapped ? b.style().suppressDimLine2 : b.style().suppressDimLine1;
        const bool endOff = f.swapped ? b.style().suppressDimLine1 : b.style().suppressDimLine2;
        const bool startTick = f.swapped ? b.ticks2 : b.ticks1;
        const bool endTick = f.swapped ? b.ticks1 : b.ticks2;
        const double startGap = f.swapped ? b.arrowGap2() : b.arrowGap1();
        const double endGap = f.swapped ? b.arrowGap1() : b.arrowGap2();
        const double half = length / 2.0;
        if (b.picture.arrowsInside) {
            addArc(startOff ? half : std::min(reachBack, startTick ? 0.0 : startGap),
                   endOff ? half : std::max(reach, endTick ? length : length - endGap));
            if (!startOff) b.addArrow(at(0.0), arrowDirection(0.0, 1.0), f.swapped);
            if (!endOff) b.addArrow(at(length), arrowDirection(length, -1.0), !f.swapped);
            return;
        }
        if (b.style().forceDimLineInside) addArc(startOff ? half : 0.0, endOff ? half : length);
        if (suppressed) return;
        if (!startOff) {
            b.addArrow(at(0.0), arrowDirection(0.0, -1.0), f.swapped);
            addArc(std::min(reachBack, -2.0 * b.arrowSize), -startGap);
        }
        if (!endOff) {
            b.addArrow(at(length), arrowDirection(length, 1.0), !f.swapped);
            addArc(length + endGap, std::max(reach, length + 2.0 * b.arrowSize));
        }
    }

    void addLeaders() {
        if (wantsLeader) b.addTextLeader(at(length / 2.0));
        if (b.dim.kind() != DimensionType::ArcLength || b.dim.def4 == Vector2{}) return;
        // From the dimension arc straight to the arc that is measured.
        const Vector2 tip = b.dim.def4;
        const Vector2 from = f.center + (tip - f.center).normalized() * f.radius;
        const Vector2 direction = (tip - from).normalized();
        if (direction == Vector2{}) return;
        b.addLine(DimPart::Leader, from, tip - direction * b.arrowGap1());
        b.addArrow(tip, direction, false);
    }

    DimensionBuilder& b;
    AngularFrame f;
    double length = 0.0;
    double reach = -kNowhere;     ///< the arc is drawn out to here beyond its end
    double reachBack = kNowhere;  ///< and before its start
    bool wantsLeader = false;
    bool suppressed = false;
};

}  // namespace

void buildAngular(DimensionBuilder& b) {
    if (const auto frame = angularFrame(b.dim)) AngularLayout(b, *frame).build();
}

}  // namespace kova::engine
