#include <cmath>

#include "engine/entities/dimensions/dimension_builder.hpp"
#include "math/curves/curves.hpp"

namespace kova::engine {

using math::Vector2;

namespace {

constexpr double kUnbounded = std::numeric_limits<double>::infinity();

/// Lines of a linear dimension, as places along the dimension line from its first end.
class LinearLayout {
public:
    explicit LinearLayout(DimensionBuilder& builder) : b(builder), f(linearFrame(builder.dim)) {}

    void build() {
        if (!f.p1.is_finite() || !f.p2.is_finite() || !std::isfinite(f.length)) return;
        angle = f.dir.angle();
        up = math::unitAt(readableAngle(angle) + math::kPi / 2);
        placeText();
        b.addExtension(DimPart::ExtLine1, b.dim.def1, f.p1);
        b.addExtension(DimPart::ExtLine2, b.dim.def2, f.p2);
        addDimensionLine();
        if (wantsLeader) b.addTextLeader(at(f.length / 2.0));
    }

private:
    Vector2 at(double t) const { return f.p1 + f.dir * t; }
    double along(const Vector2& p) const { return (p - f.p1).dot(f.dir); }

    void placeText() {
        const double inside = b.textRotation(angle, true);
        extent = 2.0 * b.halfExtent(angle, inside);
        const bool aboveExtension = b.style().textJustify == 3 || b.style().textJustify == 4;
        const bool user = b.hasText() && b.dim.hasUserText();
        const double need = user || aboveExtension || !b.hasText() ? 0.0 : extent + 2.0 * b.gap;
        const DimensionBuilder::Fit fit = b.fit(f.length, need);
        b.picture.arrowsInside = fit.arrows;
        suppressed = fit.suppressed;
        b.picture.textInside = fit.text;
        if (user) {
            placeUserText();
        } else if (aboveExtension) {
            placeAboveExtension(b.style().textJustify == 4);
        } else if (fit.text) {
            placeInside(inside);
        } else if (b.style().textMovement == 0) {
            placeBeside();
        } else {
            placeOver(inside);
        }
    }

    void placeInside(double rotation) {
        double t = f.length / 2.0;
        const double edge = b.arrowSize + b.gap + extent / 2.0;
        if (b.style().textJustify == 1) t = std::min(t, edge);
        if (b.style().textJustify == 2) t = std::max(t, f.length - edge);
        const int side = b.textSide(angle, rotation);
        b.placeText(at(t) + outward(side) * b.textOffset(side, angle, rotation), rotation);
    }

    /// The direction in which the text is lifted off the line: up as read, or away from the measured points.
    Vector2 outward(int side) const {
        if (side != 2) return up;
        const Vector2 origin = (b.dim.def1 + b.dim.def2) / 2.0;
        return (at(f.length / 2.0) - origin).dot(up) < 0.0 ? -up : up;
    }

    /// Beyond the second end, the dimension line drawn out to it.
    void placeBeside() {
        const double rotation = b.textRotation(angle, false);
        const double half = b.halfExtent(angle, rotation);
        const int side = b.textSide(angle, rotation);
        const double start = f.length + b.arrowSize * (b.picture.arrowsInside ? 1.0 : 2.0);
        reach = side == 0 ? start : start + b.gap + 2.0 * half;
        if (b.textSplit()) reach = start + b.gap + 2.0 * half;
        b.placeText(at(start + b.gap + half) + outward(side) * b.textOffset(side, angle, rotation), rotation);
    }

    /// Over the middle of the dimension line, with a leader when DIMTMOVE is 1.
    void placeOver(double rotation) {
        const bool leader = b.style().textMovement == 1;
        const double lift = b.gap + b.halfExtent(angle + math::kPi / 2, rotation) + (leader ? 2.0 * b.arrowSize : 0.0);
        const double shift = leader ? b.halfExtent(angle, rotation) + b.arrowSize : 0.0;
        b.placeText(at(f.length / 2.0 + shift) + outward(2) * lift, rotation);
        wantsLeader = leader;
    }

    void placeAboveExtension(bool second) {
        const Vector2 end = second ? f.p2 : f.p1;
        const Vector2 origin = second ? b.dim.def2 : b.dim.def1;
        const Vector2 out = (end - origin).dot(f.extension) < 0.0 ? -f.extension : f.extension;
        const double outAngle = out.angle();
        const double rotation = b.textRotation(outAngle, false);
        const double half = b.halfExtent(outAngle, rotation);
        const int side = b.textSide(outAngle, rotation);
        const Vector2 lift = math::unitAt(readableAngle(outAngle) + math::kPi / 2);
        // Above: beside the extension line, which runs on under the text; else the text stands on its end.
        const double start = side == 0 ? b.extExtension + b.gap : b.gap;
        b.placeText(end + out * (start + half) + lift * b.textOffset(side, outAngle, rotation), rotation);
        if (side != 0)
            b.addLine(second ? DimPart::ExtLine2 : DimPart::ExtLine1, end + out * b.extExtension,
                      end + out * (start + 2.0 * half));
    }

    void placeUserText() {
        const Vector2 middle = b.dim.userText;
        const double t = along(middle);
        b.picture.textInside = t >= 0.0 && t <= f.length;
        const double rotation = b.textRotation(angle, b.picture.textInside);
        b.placeText(middle, rotation);
        const double half = b.halfExtent(angle, rotation);
        const double off = std::abs((middle - f.p1).dot(up));
        const double rise = b.halfExtent(angle + math::kPi / 2, rotation);
        if (b.style().textMovement == 1) {
            wantsLeader = off > rise + 2.0 * b.gap || t + half < 0.0 || t - half > f.length;
            return;
        }
        if (b.style().textMovement != 0 || b.picture.textInside) return;
        // The dimension line follows the text: up to a text in line, all along below one above it.
        const double far = off < rise && !b.textSplit() ? -(half + b.gap) : half;
        if (t > f.length) reach = std::max(f.length, t + far);
        if (t < 0.0) reachBack = std::min(0.0, t - far);
    }

    /// The dimension line's piece from `from` to `to` without what DIMSD1 and DIMSD2 leave out.
    void piece(double from, double to) {
        const double middle = std::clamp(b.placedText() ? along(b.picture.textMiddle) : f.length / 2.0, 0.0, f.length);
        const double split = middle > 0.0 && middle < f.length ? middle : f.length / 2.0;
        if (b.style().suppressDimLine1) from = std::max(from, split);
        if (b.style().suppressDimLine2) to = std::min(to, split);
        if (from < to) cutAtJog(from, to);
    }

    void cutAtJog(double from, double to) {
        const double t = along(b.dim.jogPoint);
        const double height = 1.5 * b.textHeight;
        const double half = height / 4.0;
        if (!b.dim.jogged || t - half <= from || t + half >= to) {
            b.addCutLine(DimPart::DimLine, at(from), at(to));
            return;
        }
        b.addCutLine(DimPart::DimLine, at(from), at(t - half));
        b.addPath(DimPart::DimLine, Path()
                                        .moveTo(at(t - half))
                                        .lineTo(at(t - half / 3.0) + up * (height / 2.0))
                                        .lineTo(at(t + half / 3.0) - up * (height / 2.0))
                                        .lineTo(at(t + half)));
        b.addCutLine(DimPart::DimLine, at(t + half), at(to));
    }

    void addDimensionLine() {
        const bool first = !b.style().suppressDimLine1;
        const bool second = !b.style().suppressDimLine2;
        if (b.picture.arrowsInside) {
            const double from = b.ticks1 ? -b.lineExtension : b.arrowGap1();
            const double to = b.ticks2 ? f.length + b.lineExtension : f.length - b.arrowGap2();
            piece(std::min(from, reachBack), std::max(to, reach));
            if (first) b.addArrow(f.p1, -f.dir, false);
            if (second) b.addArrow(f.p2, f.dir, true);
            return;
        }
        if (b.style().forceDimLineInside) piece(0.0, f.length);
        if (suppressed) return;
        if (first) {
            b.addArrow(f.p1, f.dir, false);
            b.addCutLine(DimPart::DimLine, at(std::min(reachBack, -2.0 * b.arrowSize)), at(-b.arrowGap1()));
        }
        if (second) {
            b.addArrow(f.p2, -f.dir, true);
            b.addCutLine(DimPart::DimLine, at(f.length + b.arrowGap2()),
                         at(std::max(reach, f.length + 2.0 * b.arrowSize)));
        }
    }

    DimensionBuilder& b;
    LinearFrame f;
    double angle = 0.0;
    Vector2 up;
    double extent = 0.0;          ///< of the text along the line
    double reach = -kUnbounded;     ///< the line is drawn out to here beyond its second end
    double reachBack = kUnbounded;  ///< and beyond its first
    bool wantsLeader = false;
    bool suppressed = false;
};

}  // namespace

void buildLinear(DimensionBuilder& b) { LinearLayout(b).build(); }

void buildOrdinate(DimensionBuilder& b) {
    const Vector2 feature = b.dim.def1;
    const Vector2 end = b.dim.def2;
    Vector2 axis = ordinateAxis(b.dim);
    double length = (end - feature).dot(axis);
    if (!std::isfinite(length)) return;
    if (length < 0.0) {
        axis = -axis;
        length = -length;
    }
    const double angle = axis.angle();
    const double rotation = b.textRotation(angle, false) == 0.0 && b.dim.textRotation == 0.0
                                ? readableAngle(angle)  // the text always runs along the leader
                                : b.textRotation(angle, false);
    const double half = b.halfExtent(angle, rotation);
    const int side = b.textSide(angle, rotation);
    const Vector2 up = math::unitAt(readableAngle(angle) + math::kPi / 2);

    Vector2 lineEnd = end;
    if (b.hasText()) {
        Vector2 middle = end + axis * (b.gap + half) + up * b.textOffset(side, angle, rotation);
        if (side != 0 || b.textSplit()) lineEnd = end + axis * (b.gap + 2.0 * half);
        if (b.dim.hasUserText()) {
            middle = b.dim.userText;
            lineEnd = end;
        }
        b.placeText(middle, rotation);
        if (b.dim.hasUserText() && b.style().textMovement == 1) b.addTextLeader(end);
    } else {
        b.placeText(end, rotation);
    }

    if (b.style().suppressExtLine1) return;
    // The leader leaves the feature and reaches the text along the axis; between them it steps over.
    const double step = (end - feature).dot(axis.perpendicular());
    const Vector2 start = feature + axis * std::min(b.extGap, length);
    if (std::abs(step) <= 1e-9) {
        b.addLine(DimPart::ExtLine1, start, lineEnd);
        return;
    }
    const double knee = std::min(2.0 * b.arrowSize, length / 3.0);
    Path path;
    path.moveTo(start);
    const Vector2 first = feature + axis * (length - 2.0 * knee);
    if ((first - start).dot(axis) > 1e-9) path.lineTo(first);
    path.lineTo(end - axis * knee).lineTo(lineEnd);
    b.addPath(DimPart::ExtLine1, std::move(path));
}

}  // namespace kova::engine
