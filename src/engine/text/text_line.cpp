#include "engine/text/text_line.hpp"

#include "engine/model/drawing.hpp"
#include "engine/text/mtext_layout.hpp"
#include "engine/text/text_codes.hpp"
#include "engine/fonts/fonts.hpp"
#include "math/angles.hpp"

namespace kova::engine {

using math::Bounds2;
using math::Matrix4;
using math::Vector2;

namespace {

constexpr double kMaxOblique = 85.0 * math::kDegree;

const TextStyle& styleOf(Name name, const Drawing* drawing) {
    static const TextStyle standard;
    return drawing != nullptr ? drawing->textStyleOrStandard(name) : standard;
}

/// The runs of a line: one in nearly all cases, without a copy.
class LineRuns {
public:
    LineRuns(const TextLine& line, const TextStyle& style) {
        base_.font = style.fontFile;
        base_.bigFont = style.bigFontFile;
        base_.vertical = style.vertical;
        if (hasCodes(line.content))
            resolved_ = resolveCodes(line.content);
        else
            plain_ = line.content;
    }

    /// Calls use(run, pen) for every run with its start in capital heights from the line's start.
    template <class Use>
    void each(Use use) const {
        TextRun run = base_;
        if (!plain_.empty()) {
            run.text = plain_;
            use(run, 0.0);
            return;
        }
        double pen = 0.0;
        for (const CodeRun& r : resolved_) {
            run.text = r.text;
            run.underline = r.underline;
            run.overline = r.overline;
            run.strikeThrough = r.strikeThrough;
            use(run, pen);
            pen += textAdvance(run);
        }
    }
    const Font& font() const { return fontFor(base_.font, base_.bigFont); }
    bool vertical() const { return base_.vertical; }

private:
    TextRun base_;
    std::string_view plain_;
    std::vector<CodeRun> resolved_;
};

TextLinePlacement place(const TextLine& line, const LineRuns& runs) {
    TextLinePlacement p;
    p.origin = line.position;
    p.vertical = runs.vertical();
    p.descent = runs.font().descent();
    bool first = true;
    runs.each([&](const TextRun& run, double pen) {
        const TextSpan span = textSpan(run);
        if (first) p.start = span.start;
        p.end = first ? pen + span.end : std::max(p.end, pen + span.end);
        first = false;
    });

    double height = std::abs(line.height);
    double widthFactor = std::abs(line.widthFactor);
    if (!(widthFactor > 0.0) || !std::isfinite(widthFactor)) widthFactor = 1.0;
    double rotation = line.rotation;
    Vector2 anchor = line.position;

    const double natural = p.end - p.start;
    const bool backward = (line.generation & kTextBackward) != 0;
    const bool upsideDown = (line.generation & kTextUpsideDown) != 0;
    const Vector2 across = line.secondPoint - line.position;
    const bool between =
        line.hasSecondPoint && !p.vertical && natural > 0.0 && across.length() > math::kTolerance && across.is_finite();
    if (between) {
        rotation = across.angle();
        if (line.hAlign == kHAlignAligned)
            height = across.length() / (natural * widthFactor);
        else if (height > 0.0)
            widthFactor = across.length() / (natural * height);
        if (backward) anchor = line.secondPoint;
    }

    p.valid = !first && height > 0.0 && std::isfinite(height) && std::isfinite(widthFactor) &&
              std::isfinite(rotation) && anchor.is_finite();
    if (!p.valid) return p;

    const double slant =
        std::isfinite(line.oblique) ? std::tan(std::clamp(line.oblique, -kMaxOblique, kMaxOblique)) : 0;
    const Vector2 along = Vector2::from_angle(rotation);
    const Vector2 up = along.perpendicular();
    const Vector2 right = backward ? -along : along;
    p.xAxis = right * (height * widthFactor);
    p.yAxis = (right * slant + (upsideDown ? -up : up)) * height;

    // The point of the text that lies at the anchor, in capital heights.
    Vector2 at;
    if (p.vertical) {
        if (line.hAlign == kHAlignRight) at.y = -p.end;
        if (line.hAlign == kHAlignCenter || line.hAlign == kHAlignMiddle) at.y = -p.end / 2.0;
    } else {
        at.x = p.start;
        if (!between) {
            if (line.hAlign == kHAlignRight) at.x = p.end;
            if (line.hAlign == kHAlignCenter || line.hAlign == kHAlignMiddle) at.x = (p.start + p.end) / 2.0;
            if (line.vAlign == kVAlignBottom) at.y = -p.descent;
            if (line.vAlign == kVAlignMiddle || line.hAlign == kHAlignMiddle) at.y = 0.5;
            if (line.vAlign == kVAlignTop && line.hAlign != kHAlignMiddle) at.y = 1.0;
        }
    }
    p.origin = anchor - p.xAxis * at.x - p.yAxis * at.y;
    p.valid = p.origin.is_finite() && p.xAxis.is_finite() && p.yAxis.is_finite();
    return p;
}

template <class Use>
void eachPlaced(const TextLine& line, const Drawing* drawing, Use use) {
    const LineRuns runs(line, styleOf(line.textStyle, drawing));
    const TextLinePlacement p = place(line, runs);
    if (!p.valid) return;
    runs.each([&](TextRun run, double pen) {
        run.origin = p.vertical ? p.origin - p.yAxis * pen : p.origin + p.xAxis * pen;
        run.xAxis = p.xAxis;
        run.yAxis = p.yAxis;
        use(run);
    });
}

TextLinePlacement placeParagraphs(const TextLine& line, const Drawing* drawing) {
    TextLinePlacement p;
    p.paragraphs = true;
    const MTextBlock block = paragraphBlock(line, drawing);
    p.origin = block.position;
    if (!block.position.is_finite() || !std::isfinite(block.height) || !std::isfinite(block.rotation)) return p;
    const MTextLayout layout = layoutMText(block, drawing);
    if (layout.lineCount == 0 || layout.box.is_empty()) return p;
    const Matrix4 m = mtextMatrix(block);
    p.xAxis = m.transform_direction(Vector2{1, 0});
    p.yAxis = m.transform_direction(Vector2{0, 1});
    p.start = layout.box.min.x;
    p.end = layout.box.max.x;
    p.descent = -layout.box.min.y;
    p.ascent = layout.box.max.y;
    p.valid = p.xAxis.is_finite() && p.yAxis.is_finite();
    return p;
}

}  // namespace

MTextBlock paragraphBlock(const TextLine& line, const Drawing* drawing) {
    MTextBlock block;
    block.content = line.content;
    block.position = line.position;
    block.height = std::abs(line.height);
    block.width = std::isfinite(line.wrapWidth) ? std::max(0.0, line.wrapWidth) : 0.0;
    block.rotation = line.rotation;
    block.textStyle = line.textStyle;
    // The layout applies what the style says, and the line holds that already.
    const TextStyle& style = styleOf(line.textStyle, drawing);
    block.widthFactor = style.widthFactor > 0.0 ? line.widthFactor / style.widthFactor : line.widthFactor;
    block.oblique = line.oblique - style.obliqueAngle;
    block.backward = (line.generation & kTextBackward) != 0;
    // Upside down is a half turn of the mirror image.
    if ((line.generation & kTextUpsideDown) != 0) {
        block.rotation += math::kPi;
        block.backward = !block.backward;
    }
    std::int32_t column = 0;
    const Vector2 across = line.secondPoint - line.position;
    if (line.hasSecondPoint && across.length() > math::kTolerance && across.is_finite()) {
        block.rotation = across.angle();
        block.width = across.length();
    } else if (line.hAlign == kHAlignCenter || line.hAlign == kHAlignMiddle) {
        column = 1;
    } else if (line.hAlign == kHAlignRight) {
        column = 2;
    }
    const bool middle = line.hAlign == kHAlignMiddle || line.vAlign == kVAlignMiddle;
    const std::int32_t row = middle ? 1 : line.vAlign == kVAlignBottom ? 2 : 0;
    block.attachment = 1 + column + 3 * row;
    return block;
}

std::array<Vector2, 4> TextLinePlacement::box() const {
    const double left = vertical ? -0.5 : start;
    const double right = vertical ? 0.5 : end;
    const double bottom = vertical ? -end : -descent;
    const double top = vertical ? 0.0 : ascent;
    const auto at = [&](double x, double y) { return origin + xAxis * x + yAxis * y; };
    return {at(left, bottom), at(right, bottom), at(right, top), at(left, top)};
}

TextLinePlacement placeTextLine(const TextLine& line, const Drawing* drawing) {
    if (line.paragraphs) return placeParagraphs(line, drawing);
    return place(line, LineRuns(line, styleOf(line.textStyle, drawing)));
}

void emitTextLine(const TextLine& line, const Drawing* drawing, OutlineSink& sink, const OutlineStyle& style) {
    if (line.paragraphs) return emitMText(paragraphBlock(line, drawing), drawing, sink, style);
    eachPlaced(line, drawing, [&](const TextRun& run) { sink.text(run, style); });
}

Bounds2 textLineBounds(const TextLine& line, const Drawing* drawing) {
    Bounds2 bounds;
    if (line.paragraphs) {
        const MTextBlock block = paragraphBlock(line, drawing);
        bounds = layoutMText(block, drawing).ink(mtextMatrix(block));
        if (bounds.is_empty() && line.position.is_finite()) bounds.expand(line.position);
        return bounds;
    }
    eachPlaced(line, drawing, [&](const TextRun& run) { bounds.expand(textRunBounds(run)); });
    if (bounds.is_empty() && line.position.is_finite()) bounds.expand(line.position);
    return bounds;
}

Vector2 nearestInQuad(const std::array<Vector2, 4>& box, const Vector2& p) {
    bool left = true;
    bool right = true;
    Vector2 best = box[0];
    double bestDistance = std::numeric_limits<double>::infinity();
    for (std::size_t i = 0; i < 4; ++i) {
        const Vector2& a = box[i];
        const Vector2 edge = box[(i + 1) % 4] - a;
        const double side = edge.cross(p - a);
        left = left && side >= 0.0;
        right = right && side <= 0.0;
        const double square = edge.length_squared();
        const double t = square > 0.0 ? std::clamp((p - a).dot(edge) / square, 0.0, 1.0) : 0.0;
        const Vector2 candidate = a + edge * t;
        const double distance = (candidate - p).length_squared();
        if (distance < bestDistance) {
            bestDistance = distance;
            best = candidate;
        }
    }
    return left || right ? (bestDistance < std::numeric_limits<double>::infinity() ? p : best) : best;
}

Vector2 nearestOnTextLine(const TextLine& line, const Drawing* drawing, const Vector2& p) {
    const TextLinePlacement placement = placeTextLine(line, drawing);
    return placement.valid ? nearestInQuad(placement.box(), p) : line.position;
}

Vector2 textLineBaselineStart(const TextLine& line, const Drawing* drawing) {
    const TextLinePlacement p = placeTextLine(line, drawing);
    return p.valid && !p.vertical && !p.paragraphs ? p.origin + p.xAxis * p.start : p.origin;
}

void transformTextFrame(TextFrame& frame, const Matrix4& m) {
    // Similarities leave what they do not touch exactly as it was.
    const math::PlaneParts parts = math::planeParts(m);
    if (parts.uniform) {
        if (!(parts.scaleX > 0.0) || !std::isfinite(parts.scaleX)) return;
        if (std::abs(parts.scaleX - 1.0) > 1e-12) frame.height *= parts.scaleX;
        if (parts.mirrored) {
            frame.rotation = math::normalizeAngle(parts.rotation - frame.rotation + math::kPi);
            frame.generation ^= kTextBackward;
        } else if (parts.rotation != 0.0) {
            frame.rotation = math::normalizeAngle(frame.rotation + parts.rotation);
        }
        return;
    }
    const double sx = (frame.generation & kTextBackward) != 0 ? -1.0 : 1.0;
    const double sy = (frame.generation & kTextUpsideDown) != 0 ? -1.0 : 1.0;
    const double slant = std::tan(std::clamp(frame.oblique, -kMaxOblique, kMaxOblique));
    const Vector2 along = Vector2::from_angle(frame.rotation) * sx;
    const Vector2 up = Vector2::from_angle(frame.rotation).perpendicular() * sy;
    const Vector2 x = m.transform_direction(along * (frame.height * frame.widthFactor));
    const Vector2 y = m.transform_direction((along * slant + up) * frame.height);
    const double length = x.length();
    if (!(length > 0.0) || !std::isfinite(length) || !y.is_finite()) return;

    const bool mirrored = m.plane_determinant() < 0.0;
    const double newSx = mirrored ? -sx : sx;
    const Vector2 right = x / length;         // as the glyphs run
    const Vector2 direction = right * newSx;  // the direction of the rotation angle
    const double height = std::abs(y.dot(direction.perpendicular()));
    if (!(height > 0.0) || !std::isfinite(height)) return;
    const bool squareOn = std::abs(y.dot(right)) <= 1e-12 * height;
    frame.rotation = direction.angle();
    frame.oblique = squareOn ? 0.0 : std::clamp(std::atan2(y.dot(right), height), -kMaxOblique, kMaxOblique);
    frame.widthFactor = length / height;
    frame.height = height;
    if (mirrored) frame.generation ^= kTextBackward;
}

void transformTextLine(const TextLineFields& f, const Matrix4& m) {
    f.position = m.transform_point(f.position);
    f.secondPoint = m.transform_point(f.secondPoint);
    if (f.hasSecondPoint && m.plane_determinant() < 0.0) std::swap(f.position, f.secondPoint);
    TextFrame frame{f.rotation, f.height, f.widthFactor, f.oblique, f.generation};
    const double along = frame.height * frame.widthFactor;
    transformTextFrame(frame, m);
    if (f.wrapWidth != nullptr && along > 0.0) *f.wrapWidth *= frame.height * frame.widthFactor / along;
    f.rotation = frame.rotation;
    f.height = frame.height;
    f.widthFactor = frame.widthFactor;
    f.oblique = frame.oblique;
    f.generation = frame.generation;
}

std::vector<Vector2> textLineGrips(const TextLine& line, const Drawing* drawing) {
    if (line.hasSecondPoint) return {line.position, line.secondPoint};
    if (line.hAlign == kHAlignLeft && line.vAlign == kVAlignBaseline) return {line.position};
    return {line.position, textLineBaselineStart(line, drawing)};
}

void moveTextLineGrip(const TextLineFields& f, const TextLine& line, const Drawing* drawing, std::size_t index,
                      const Vector2& to) {
    const std::vector<Vector2> grips = textLineGrips(line, drawing);
    if (index >= grips.size() || !to.is_finite()) return;
    if (line.hasSecondPoint) {
        (index == 0 ? f.position : f.secondPoint) = to;
        return;
    }
    const Vector2 by = to - grips[index];
    f.position += by;
    f.secondPoint += by;
}

}  // namespace kova::engine
