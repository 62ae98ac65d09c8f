#include "engine/modify/outline_parts.hpp"

#include "engine/kinds/all.hpp"
#include "engine/fonts/fonts.hpp"
#include "engine/outline/hatch_lines.hpp"
#include "math/curves/ring_nesting.hpp"
#include "math/curves/curves.hpp"

namespace kova::cmd {

using engine::PathElement;
using math::Vector2;

namespace {

/// The most lines and dots that one hatch falls into.
constexpr engine::HatchLineLimits kHatchLimits{200'000, 200'000};

/// How far curves of a boundary may be off, as a share of its size.
constexpr double kFlatness = 1e-6;

bool isCircular(const PathElement& e) {
    const double radius = e.a.length();
    return radius > 0.0 && e.b.near_equal(e.a.perpendicular() * (e.a.cross(e.b) < 0.0 ? -1.0 : 1.0), 1e-9 * radius);
}

/// The bulge of an element of a polyline; nothing for a curve that no arc follows.
std::optional<double> bulgeOf(const PathElement& e, const Vector2& from) {
    switch (e.kind) {
        case PathElement::Kind::Line:
        case PathElement::Kind::Close:
            return 0.0;
        case PathElement::Kind::Arc:
            if (!isCircular(e) || std::abs(e.t1 - e.t0) > math::kTwoPi - 1e-6) return std::nullopt;
            return math::bulgeThrough(from, engine::elementPoint(e, from, 0.5), e.p);
        default:
            return std::nullopt;
    }
}

/// The only figure of a path as a polygon of at most four corners; empty for any other shape.
std::vector<Vector2> fewCorners(engine::PathView rings) {
    std::vector<Vector2> corners;
    for (std::size_t i = 0; i < rings.size(); ++i) {
        const PathElement& e = rings[i];
        if (e.kind == PathElement::Kind::Move ? i > 0
                                              : e.kind != PathElement::Kind::Line && e.kind != PathElement::Kind::Close)
            return {};
        if (e.kind != PathElement::Kind::Close) corners.push_back(e.p);
        if (corners.size() > 5) return {};
    }
    if (corners.size() > 1 && corners.front() == corners.back()) corners.pop_back();
    if (corners.size() < 3 || corners.size() > 4) return {};
    return corners;
}

}  // namespace

void PartsSink::add(std::unique_ptr<engine::Entity> entity, const engine::OutlineStyle& style) {
    entity->layer = style.layer;
    entity->color = style.color;
    entity->linetype = style.linetype;
    entity->setLinetypeScale(style.linetypeScale);
    entity->lineweight = style.lineweight;
    entity->transparency = style.transparency;
    entity->elevation = elevation_;
    parts_.push_back(std::move(entity));
}

void PartsSink::line(const Vector2& a, const Vector2& b, const engine::OutlineStyle& style) {
    if (a == b || !a.is_finite() || !b.is_finite()) return;
    add(std::make_unique<engine::LineEntity>(a, b), style);
}

void PartsSink::point(const Vector2& p, const engine::OutlineStyle& style) {
    if (p.is_finite()) add(std::make_unique<engine::PointEntity>(p), style);
}

void PartsSink::unbounded(const Vector2& base, const Vector2& direction, bool bothWays,
                          const engine::OutlineStyle& style) {
    if (bothWays)
        add(std::make_unique<engine::XlineEntity>(base, direction), style);
    else
        add(std::make_unique<engine::RayEntity>(base, direction), style);
}

void PartsSink::stroke(engine::PathView path, const engine::OutlineStyle& given, const engine::StrokeOptions& options) {
    engine::OutlineStyle style = given;
    if (options.continuous) style.linetype = engine::commonNames().continuous;
    const bool wide = std::any_of(options.widths.begin(), options.widths.end(),
                                  [](const Vector2& w) { return w.x > 0.0 || w.y > 0.0; });
    if (wide) return addWide(path, style, options.widths);
    Vector2 from;
    for (std::size_t i = 0; i < path.size(); ++i) {
        const PathElement& e = path[i];
        if (e.kind == PathElement::Kind::Cubic) {
            // A run of cubics is one curve.
            std::size_t end = i + 1;
            while (end < path.size() && path[end].kind == PathElement::Kind::Cubic) ++end;
            addCubics(path.subspan(i, end - i), from, style);
            i = end - 1;
        } else if (e.kind != PathElement::Kind::Move) {
            addElement(e, from, style);
        }
        from = path[i].p;
    }
}

void PartsSink::addElement(const PathElement& e, const Vector2& from, const engine::OutlineStyle& style) {
    if (e.kind != PathElement::Kind::Arc) return line(from, e.p, style);
    const bool ccw = e.t1 >= e.t0;
    const double sweep = std::abs(e.t1 - e.t0);
    if (!e.center.is_finite() || !(sweep > 0.0) || !std::isfinite(sweep)) return;
    const bool full = sweep >= math::kTwoPi - 1e-9;
    const double t0 = ccw ? e.t0 : e.t1;
    const double t1 = ccw ? e.t1 : e.t0;
    if (isCircular(e)) {
        const double radius = e.a.length();
        if (full) return add(std::make_unique<engine::CircleEntity>(e.center, radius), style);
        // Turned over, the arc runs the other way round.
        const bool turned = e.a.cross(e.b) < 0.0;
        const double start = (e.a * std::cos(turned ? t1 : t0) + e.b * std::sin(turned ? t1 : t0)).angle();
        const double end = (e.a * std::cos(turned ? t0 : t1) + e.b * std::sin(turned ? t0 : t1)).angle();
        return add(std::make_unique<engine::ArcEntity>(e.center, radius, start, end), style);
    }
    auto ellipse = std::make_unique<engine::EllipseEntity>();
    ellipse->center = e.center;
    ellipse->startParam = t0;
    ellipse->endParam = full ? t0 + math::kTwoPi : t1;
    Vector2 v = e.b;
    if (e.a.cross(e.b) < 0.0) {
        v = -v;
        ellipse->startParam = -t1;
        ellipse->endParam = full ? math::kTwoPi - t1 : -t0;
    }
    ellipse->setConjugate(math::Vector3(e.a, 0.0), math::Vector3(v, 0.0), {0, 0, 1});
    add(std::move(ellipse), style);
}

void PartsSink::addCubics(engine::PathView cubics, const Vector2& from, const engine::OutlineStyle& style) {
    auto spline = std::make_unique<engine::SplineEntity>();
    spline->degree = 3;
    spline->controlPoints.reserve(cubics.size() * 3 + 1);
    spline->knots.assign(4, 0.0);
    spline->controlPoints.push_back(from);
    for (std::size_t i = 0; i < cubics.size(); ++i) {
        spline->controlPoints.insert(spline->controlPoints.end(), {cubics[i].a, cubics[i].b, cubics[i].p});
        spline->knots.insert(spline->knots.end(), i + 1 < cubics.size() ? 3 : 4, static_cast<double>(i + 1));
    }
    for (const Vector2& p : spline->controlPoints)
        if (!p.is_finite()) return;
    add(std::move(spline), style);
}

void PartsSink::addWide(engine::PathView path, const engine::OutlineStyle& style, std::span<const Vector2> widths) {
    std::unique_ptr<engine::PolylineEntity> polyline;
    const auto finish = [&] {
        if (polyline && polyline->vertices.size() > 1) add(std::move(polyline), style);
        polyline.reset();
    };
    Vector2 from;
    std::size_t width = 0;
    for (const PathElement& e : path) {
        if (e.kind == PathElement::Kind::Move) {
            finish();
        } else {
            const Vector2 w = width < widths.size() ? widths[width] : Vector2{};
            ++width;
            if (!polyline) {
                polyline = std::make_unique<engine::PolylineEntity>();
                polyline->addVertex(from);
            }
            const std::size_t last = polyline->vertices.size() - 1;
            if (const auto bulge = bulgeOf(e, from)) {
                polyline->setBulge(last, *bulge);
                polyline->setWidths(last, w.x, w.y);
                polyline->addVertex(e.p);
            } else {
                // What is no arc is followed by short arcs through points of it.
                constexpr int kPieces = 16;
                for (int i = 1; i <= kPieces; ++i) {
                    const std::size_t at = polyline->vertices.size() - 1;
                    const Vector2 to = engine::elementPoint(e, from, static_cast<double>(i) / kPieces);
                    polyline->setBulge(at, math::bulgeThrough(polyline->vertices[at],
                                                              engine::elementPoint(e, from, (i - 0.5) / kPieces), to));
                    polyline->setWidths(at, w.x + (w.y - w.x) * (i - 1) / kPieces, w.x + (w.y - w.x) * i / kPieces);
                    polyline->addVertex(to);
                }
            }
            if (e.kind == PathElement::Kind::Close) {
                polyline->eraseVertex(polyline->vertices.size() - 1);
                polyline->closed = true;
                finish();
            }
        }
        from = e.p;
    }
    finish();
}

void PartsSink::fill(engine::PathView rings, const engine::OutlineStyle& style, const engine::FillOptions& options) {
    if (options.background) {
        auto polygons = engine::ringsOf(rings);
        for (engine::Ring& ring : polygons) {
            if (ring.size() < 3) continue;
            auto wipeout = std::make_unique<engine::WipeoutEntity>(std::move(ring));
            wipeout->showFrame = false;
            add(std::move(wipeout), style);
        }
        return;
    }
    const std::vector<Vector2> corners = fewCorners(rings);
    if (!corners.empty()) {
        auto solid = std::make_unique<engine::Solid2DEntity>();
        // The corners of a 2-D solid go zig-zag.
        const Vector2 last = corners.size() == 4 ? corners[3] : corners[2];
        solid->corners = {corners[0], corners[1], last, corners[2]};
        return add(std::move(solid), style);
    }
    auto hatch = std::make_unique<engine::HatchEntity>();
    hatch->islandStyle = options.evenOdd ? engine::HatchEntity::kNormal : engine::HatchEntity::kIgnore;
    engine::HatchLoop loop;
    loop.type = engine::HatchLoop::kExternal | engine::HatchLoop::kPolyline;
    const auto finish = [&] {
        if (loop.vertices.size() > 1 && loop.vertices.front() == loop.vertices.back()) {
            loop.vertices.pop_back();
            if (loop.bulges.size() > loop.vertices.size()) loop.bulges.pop_back();
        }
        if (loop.vertices.size() > 1) hatch->loops.push_back(loop);
        loop.vertices.clear();
        loop.bulges.clear();
    };
    Vector2 from;
    for (const PathElement& e : rings) {
        if (e.kind == PathElement::Kind::Move) {
            finish();
            loop.vertices.push_back(e.p);
            loop.bulges.push_back(0.0);
        } else if (e.kind != PathElement::Kind::Close) {
            if (loop.vertices.empty()) {
                loop.vertices.push_back(from);
                loop.bulges.push_back(0.0);
            }
            const auto bulge = bulgeOf(e, from);
            const int pieces = bulge ? 1 : 16;
            for (int i = 1; i <= pieces; ++i) {
                const Vector2 to = i == pieces ? e.p : engine::elementPoint(e, from, static_cast<double>(i) / pieces);
                loop.bulges.back() = bulge ? *bulge
                                           : math::bulgeThrough(loop.vertices.back(),
                                                                engine::elementPoint(e, from, (i - 0.5) / pieces), to);
                loop.vertices.push_back(to);
                loop.bulges.push_back(0.0);
            }
        }
        from = e.p;
    }
    finish();
    if (!hatch->loops.empty()) add(std::move(hatch), style);
}

void PartsSink::text(const engine::TextRun& run, const engine::OutlineStyle& style) {
    if (!textOutline_) textOutline_ = style;
    const Vector2 x = run.xAxis;
    const double length = x.length();
    if (!takeTexts_ || run.text.find_first_not_of(' ') == std::string_view::npos || !(length > 0.0)) return;
    const Vector2 along = x / length;
    const double up = along.cross(run.yAxis);
    const double height = std::abs(up);
    if (!(height > 0.0) || !std::isfinite(height) || !run.origin.is_finite()) return;

    engine::Name textStyle = textStyle_;
    if (drawing_ != nullptr && drawing_->textStyleOrStandard(textStyle_).fontFile != run.font) {
        for (const engine::TextStyle& candidate : drawing_->textStyles) {
            if (candidate.fontFile != run.font || candidate.vertical != run.vertical) continue;
            textStyle = candidate.name;
            break;
        }
    }
    if (drawing_ != nullptr && drawing_->textStyleOrStandard(textStyle).fontFile != run.font && !run.vertical) {
        // No style has this font: a paragraph text can name it.
        auto paragraphs = std::make_unique<engine::MTextEntity>();
        paragraphs->position = run.origin;
        paragraphs->attachment = engine::kAttachBottomLeft;
        paragraphs->position = run.origin - run.yAxis * engine::fontFor(run.font, run.bigFont).descent();
        paragraphs->height = height;
        paragraphs->rotation = along.angle();
        paragraphs->textStyle = textStyle_;
        paragraphs->content = "{\\F" + run.font.str() + ";" + engine::mtextFromPlain(run.text) + "}";
        return add(std::move(paragraphs), style);
    }
    auto text = std::make_unique<engine::TextEntity>();
    text->position = run.vertical ? run.origin : run.origin + x * engine::textSpan(run).start;
    text->height = height;
    text->rotation = along.angle();
    text->widthFactor = length / height;
    text->oblique = std::atan2(along.dot(run.yAxis), height);
    if (up < 0.0) text->generation = engine::kTextUpsideDown;
    if (run.underline) text->content += "%%u";
    if (run.overline) text->content += "%%o";
    if (run.strikeThrough) text->content += "%%k";
    text->content += run.text;
    text->textStyle = textStyle;
    add(std::move(text), style);
}

void PartsSink::pattern(engine::PathView rings, std::span<const engine::HatchFamily> families,
                        const engine::OutlineStyle& style) {
    const math::Bounds2 box = engine::pathBounds(rings);
    if (box.is_empty()) return;
    const double size = std::max(box.width(), box.height());
    const double tolerance = std::max(size * kFlatness, 1e-12);
    const engine::HatchLines lines = engine::hatchLines(rings, families, tolerance, nullptr, kHatchLimits);
    overflow_ = overflow_ || lines.overflow;
    for (const engine::HatchSegment2& s : lines.segments) line(s.a, s.b, style);
    for (const Vector2& dot : lines.dots) point(dot, style);
}

void PartsSink::addParagraphs(const engine::MTextBlock& block, const engine::OutlineStyle& style) {
    if (block.content.empty() || !block.position.is_finite()) return;
    auto text = std::make_unique<engine::MTextEntity>();
    text->position = block.position;
    text->content = block.content;
    text->width = block.width;
    text->height = block.height;
    text->rotation = block.rotation;
    text->attachment = block.attachment;
    text->lineSpacingFactor = block.lineSpacingFactor;
    text->lineSpacingExact = block.lineSpacingExact;
    text->textStyle = block.textStyle;
    add(std::move(text), style);
}

}  // namespace kova::cmd
