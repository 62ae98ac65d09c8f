#include "engine/entities/dimensions/arrowheads.hpp"

#include <array>

#include "engine/model/drawing.hpp"
#include "engine/entities/block_reference.hpp"
#include "math/angles.hpp"

namespace kova::engine {

using math::Matrix4;
using math::Vector2;

namespace {

struct Arrow {
    std::string_view name;  ///< without underscore
    std::string_view block;
    double lineGap;
    bool tick;
};

// In the order of ArrowKind.
constexpr std::array<Arrow, kStandardArrowCount> kArrows{{
    {"CLOSEDFILLED", "", 1.0, false},
    {"CLOSED", "_CLOSED", 0.0, false},
    {"CLOSEDBLANK", "_CLOSEDBLANK", 1.0, false},
    {"DOT", "_DOT", 0.5, false},
    {"DOTSMALL", "_DOTSMALL", 0.0, true},
    {"DOTBLANK", "_DOTBLANK", 0.5, false},
    {"OPEN", "_OPEN", 0.0, false},
    {"OPEN30", "_OPEN30", 0.0, false},
    {"OPEN90", "_OPEN90", 0.0, false},
    {"ORIGIN", "_ORIGIN", 0.0, false},
    {"ORIGIN2", "_ORIGIN2", 0.5, false},
    {"OBLIQUE", "_OBLIQUE", 0.0, true},
    {"ARCHTICK", "_ARCHTICK", 0.0, true},
    {"INTEGRAL", "_INTEGRAL", 0.0, true},
    {"NONE", "_NONE", 0.0, true},
    {"BOXFILLED", "_BOXFILLED", 0.5, false},
    {"BOXBLANK", "_BOXBLANK", 0.5, false},
    {"DATUMFILLED", "_DATUMFILLED", 1.0, false},
    {"DATUMBLANK", "_DATUMBLANK", 1.0, false},
    {"SMALL", "_SMALL", 0.25, true},
}};

constexpr double kHalfWidth = 1.0 / 6.0;             // of the closed and open heads
constexpr double kHalfWidth30 = 0.2679491924311227;  // tan 15 degrees
constexpr double kDatumHalf = 0.5773502691896257;    // an equilateral triangle of height 1
constexpr double kSmallRadius = 0.25;
constexpr double kArchTickWidth = 0.15;

/// Draws in the arrow's own frame.
class Pen {
public:
    Pen(OutlineSink& sink, const OutlineStyle& style, const Matrix4& frame, double size)
        : sink_(sink), style_(style), frame_(frame), size_(size) {
        options_.continuous = true;
    }

    void stroke(const Path& path) {
        transformPath(path, frame_, scratch_);
        sink_.stroke(scratch_, style_, options_);
    }
    void line(const Vector2& a, const Vector2& b) { stroke(Path().moveTo(a).lineTo(b)); }
    void wideLine(const Vector2& a, const Vector2& b, double width) {
        const Vector2 widths[] = {{width * size_, width * size_}};
        StrokeOptions wide = options_;
        wide.widths = widths;
        transformPath(Path().moveTo(a).lineTo(b), frame_, scratch_);
        sink_.stroke(scratch_, style_, wide);
    }
    void fill(const Path& path) {
        transformPath(path, frame_, scratch_);
        sink_.fill(scratch_, style_, FillOptions{});
    }
    void outline(const Path& path, bool filled) { filled ? fill(path) : stroke(path); }

private:
    OutlineSink& sink_;
    const OutlineStyle& style_;
    const Matrix4& frame_;
    double size_;
    StrokeOptions options_;
    Path scratch_;
};

Path triangle() { return Path().moveTo({0, 0}).lineTo({-1, kHalfWidth}).lineTo({-1, -kHalfWidth}).close(); }
Path circle(double radius) { return Path().arc({0, 0}, radius, 0.0, math::kTwoPi).close(); }
Path box() { return Path().moveTo({-0.5, -0.5}).lineTo({0.5, -0.5}).lineTo({0.5, 0.5}).lineTo({-0.5, 0.5}).close(); }
Path datum() { return Path().moveTo({0, kDatumHalf}).lineTo({-1, 0}).lineTo({0, -kDatumHalf}).close(); }
Path openHead(double back, double half) { return Path().moveTo({-back, half}).lineTo({0, 0}).lineTo({-back, -half}); }

/// Two arcs that meet at the tip: a slender S.
Path integral() {
    constexpr double kRadius = 0.4545;
    constexpr double kCenterAngle = 11.5 * math::kDegree;  // of the upper arc's centre, below the axis
    constexpr double kTurn = 66.0 * math::kDegree;
    const Vector2 upper = Vector2::from_angle(-kCenterAngle) * kRadius;
    const double atTip = math::kPi - kCenterAngle;
    return Path().arc(upper, kRadius, atTip - kTurn, atTip).arc(-upper, kRadius, -kCenterAngle, -kCenterAngle - kTurn);
}

void drawStandard(Pen& pen, ArrowKind kind) {
    switch (kind) {
        case ArrowKind::ClosedFilled:
            pen.fill(triangle());
            break;
        case ArrowKind::Closed:
        case ArrowKind::ClosedBlank:
            pen.stroke(triangle());
            break;
        case ArrowKind::Dot:
        case ArrowKind::DotBlank:
            pen.outline(circle(0.5), kind == ArrowKind::Dot);
            break;
        case ArrowKind::DotSmall:
        case ArrowKind::Small:
            pen.outline(circle(kSmallRadius), kind == ArrowKind::DotSmall);
            break;
        case ArrowKind::Open:
            pen.stroke(openHead(1.0, kHalfWidth));
            break;
        case ArrowKind::Open30:
            pen.stroke(openHead(1.0, kHalfWidth30));
            break;
        case ArrowKind::Open90:
            pen.stroke(openHead(0.5, 0.5));
            break;
        case ArrowKind::Origin:
            pen.stroke(circle(0.5));
            break;
        case ArrowKind::Origin2:
            pen.stroke(circle(0.5));
            pen.stroke(circle(0.25));
            break;
        case ArrowKind::Oblique:
            pen.line({-0.5, -0.5}, {0.5, 0.5});
            break;
        case ArrowKind::ArchTick:
            pen.wideLine({-0.5, -0.5}, {0.5, 0.5}, kArchTickWidth);
            break;
        case ArrowKind::Integral:
            pen.stroke(integral());
            break;
        case ArrowKind::BoxFilled:
        case ArrowKind::BoxBlank:
            pen.outline(box(), kind == ArrowKind::BoxFilled);
            break;
        case ArrowKind::DatumFilled:
        case ArrowKind::DatumBlank:
            pen.outline(datum(), kind == ArrowKind::DatumFilled);
            break;
        case ArrowKind::None:
        case ArrowKind::User:
            break;
    }
}

}  // namespace

ArrowKind arrowKind(std::string_view blockName) {
    if (blockName.empty() || blockName == ".") return ArrowKind::ClosedFilled;
    if (blockName.front() == '_') blockName.remove_prefix(1);
    for (std::size_t i = 0; i < kArrows.size(); ++i)
        if (blockName.size() == kArrows[i].name.size() && equalNoCase(blockName, kArrows[i].name))
            return static_cast<ArrowKind>(i);
    return ArrowKind::User;
}

std::string_view arrowBlockName(ArrowKind kind) {
    const auto i = static_cast<std::size_t>(kind);
    return i < kArrows.size() ? kArrows[i].block : std::string_view{};
}

double arrowLineGap(ArrowKind kind) {
    const auto i = static_cast<std::size_t>(kind);
    return i < kArrows.size() ? kArrows[i].lineGap : 1.0;
}

bool arrowIsTick(ArrowKind kind) {
    const auto i = static_cast<std::size_t>(kind);
    return i < kArrows.size() && kArrows[i].tick;
}

void emitArrow(OutlineSink& sink, const OutlineStyle& style, const Drawing* drawing, Name blockName, const Vector2& tip,
               const Vector2& direction, double size) {
    if (!tip.is_finite() || !direction.is_finite() || !(size > 0.0) || !std::isfinite(size)) return;
    const Vector2 x = direction * size;
    const Vector2 y = x.perpendicular();
    Matrix4 frame;
    frame(0, 0) = x.x;
    frame(1, 0) = x.y;
    frame(0, 1) = y.x;
    frame(1, 1) = y.y;
    frame(2, 2) = size;
    frame(0, 3) = tip.x;
    frame(1, 3) = tip.y;

    ArrowKind kind = arrowKind(blockName);
    const bool ownName = kind == ArrowKind::User || blockName.view().substr(0, 1) != "_";
    const Block* block = drawing != nullptr && !blockName.empty() && ownName ? drawing->findBlock(blockName) : nullptr;
    if (block != nullptr) {
        emitBlock(*block, frame * Matrix4::translation(-block->base), sink, style);
        return;
    }
    if (kind == ArrowKind::User) kind = ArrowKind::ClosedFilled;
    Pen pen(sink, style, frame, size);
    drawStandard(pen, kind);
}

}  // namespace kova::engine
