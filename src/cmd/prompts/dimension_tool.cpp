#include "cmd/prompts/dimension_tool.hpp"

#include "edit/new_entities.hpp"
#include "engine/modify/outline_parts.hpp"
#include "cmd/pick_request.hpp"
#include "doc/pick/picking.hpp"
#include "doc/pick/through_viewport.hpp"
#include "doc/spatial_index.hpp"
#include "engine/entities/dimensions/dimension_geometry.hpp"
#include "engine/entities/polyline.hpp"
#include "math/curves/curves.hpp"

namespace kova::cmd {

using engine::DimensionEntity;
using engine::DimensionLink;
using engine::LinkKind;
using math::Vector2;

namespace {

constexpr const char* kLastDimension = "lastDimension";
/// DIMFRAC of texts that are told in a line.
constexpr std::int32_t kFractionsInLine = 2;
/// Points of a sheet this near to what a viewport shows are meant to lie on it.
constexpr double kPaperReach = 1e-6;
/// Points at one place that are looked at; more of them are chance.
constexpr std::size_t kMaxCandidates = 64;

/// A line or circular arc as a piece; nothing for other elements and for what has no length.
std::optional<PickedPiece> pieceOf(const engine::PathElement& e, const Vector2& from) {
    using Kind = engine::PathElement::Kind;
    PickedPiece piece;
    piece.a = from;
    piece.b = e.p;
    if (e.kind == Kind::Line || e.kind == Kind::Close) {
        if (from == e.p) return std::nullopt;
        return piece;
    }
    if (e.kind != Kind::Arc) return std::nullopt;
    const double radius = e.a.length();
    const double turn = e.a.cross(e.b) < 0.0 ? -1.0 : 1.0;
    if (!(radius > 0.0) || !e.b.near_equal(e.a.perpendicular() * turn, 1e-9 * radius)) return std::nullopt;
    const double first = e.a.angle() + turn * e.t0;
    const double last = e.a.angle() + turn * e.t1;
    piece.round = true;
    piece.full = std::abs(last - first) >= math::kTwoPi - 1e-12;
    piece.arc = {e.center, radius, std::min(first, last), std::min(std::abs(last - first), math::kTwoPi)};
    piece.a = piece.arc.startPoint();
    piece.b = piece.arc.endPoint();
    return piece;
}

/// Finds the piece of an emitted shape that lies nearest to a point.
class PieceSink final : public engine::OutlineSink {
public:
    explicit PieceSink(const Vector2& p) : p_(p) {}
    using OutlineSink::fill;
    using OutlineSink::stroke;

    void stroke(engine::PathView path, const engine::OutlineStyle&, const engine::StrokeOptions&) override {
        for (std::size_t i = 1; i < path.size(); ++i) {
            const Vector2 from = path[i - 1].p;
            const auto piece = pieceOf(path[i], from);
            if (!piece) continue;
            engine::PathElement move;
            move.p = from;
            const engine::PathElement pair[2] = {move, path[i]};
            engine::PathElement straight = path[i];
            if (straight.kind == engine::PathElement::Kind::Close) straight.kind = engine::PathElement::Kind::Line;
            const engine::PathElement plain[2] = {move, straight};
            const auto place = engine::nearestPlace(piece->round ? pair : plain, p_);
            if (!place || (piece_ && !(place->distance < distance_))) continue;
            distance_ = place->distance;
            piece_ = piece;
            element_ = i;
        }
    }
    void fill(engine::PathView, const engine::OutlineStyle&, const engine::FillOptions&) override {}
    void text(const engine::TextRun&, const engine::OutlineStyle&) override {}

    const std::optional<PickedPiece>& piece() const { return piece_; }
    std::size_t element() const { return element_; }

private:
    Vector2 p_;
    double distance_ = 0.0;
    std::optional<PickedPiece> piece_;
    std::size_t element_ = 0;
};

}  // namespace

std::optional<PickedPiece> pickedPiece(const engine::Entity& entity, const Vector2& p) {
    PieceSink sink(p);
    const auto* polyline = dynamic_cast<const engine::PolylineEntity*>(&entity);
    const bool flat = entity.normal() == math::Vector3{0, 0, 1};
    if (polyline != nullptr && flat)
        sink.OutlineSink::stroke(polyline->path(), engine::outlineStyle(entity));
    else
        entity.emit(sink, engine::outlineStyle(entity));
    std::optional<PickedPiece> piece = sink.piece();
    if (!piece) return piece;
    const std::int32_t segment = polyline != nullptr && flat ? static_cast<std::int32_t>(sink.element()) - 1 : 0;
    if (piece->round && engine::measuredArc(entity, segment)) {
        piece->handle = entity.handle();
        piece->segment = segment;
    }
    return piece;
}

std::vector<DimensionLink> PickedPiece::arcLinks() const {
    if (handle == 0) return {};
    return {DimensionLink{0, LinkKind::Arc, handle, segment, 0.0, viewport, viewScale}};
}

Task<Answer> askDimensioned(Ask& ask, std::string prompt, std::function<bool(const engine::Entity&)> filter) {
    PickRequest request;
    request.prompt = std::move(prompt);
    request.usable = std::move(filter);
    request.locked = Locked::Taken;
    request.reach = Reach::ThroughViewports;
    Answer picked = co_await askPick(ask, std::move(request));
    co_return picked;
}

std::optional<PickedPiece> pieceAt(doc::Document& document, const Answer& picked) {
    engine::Drawing& drawing = document.drawing();
    const engine::Entity* entity = picked.isObject() ? drawing.findById(picked.id) : nullptr;
    if (entity == nullptr) return std::nullopt;
    const engine::ViewportEntity* viewport = nullptr;
    if (entity->owner() == &drawing.modelSpace() && entity->owner() != &drawing.currentSpace())
        viewport = viewportAt(document, picked.point);
    if (viewport == nullptr) return pickedPiece(*entity, picked.point);
    auto piece = pickedPiece(*entity, viewport->toModel(picked.point));
    if (!piece) return piece;
    piece->a = viewport->toPaper(piece->a);
    piece->b = viewport->toPaper(piece->b);
    if (piece->round) piece->arc = piece->arc.seenThrough(*viewport);
    piece->viewport = viewport->handle();
    piece->viewScale = viewport->viewScale;
    return piece;
}

namespace {

/// What notes and fills draw is not dimensioned, though lines are drawn there.
bool isAnnotation(const engine::Entity& entity) {
    using engine::EntityType;
    switch (entity.type()) {
        case EntityType::Dimension:
        case EntityType::Leader:
        case EntityType::MLeader:
        case EntityType::Tolerance:
        case EntityType::Hatch:
            return true;
        default:
            return false;
    }
}

}  // namespace

bool hasPiece(const engine::Entity& entity) { return !isAnnotation(entity) && pickedPiece(entity, {}).has_value(); }

bool hasRoundPiece(const engine::Entity& entity) {
    if (isAnnotation(entity)) return false;
    class RoundSink final : public engine::OutlineSink {
    public:
        using OutlineSink::fill;
        using OutlineSink::stroke;
        void stroke(engine::PathView path, const engine::OutlineStyle&, const engine::StrokeOptions&) override {
            for (std::size_t i = 1; i < path.size() && !found; ++i)
                if (const auto piece = pieceOf(path[i], path[i - 1].p)) found = piece->round;
        }
        void fill(engine::PathView, const engine::OutlineStyle&, const engine::FillOptions&) override {}
        void text(const engine::TextRun&, const engine::OutlineStyle&) override {}
        bool found = false;
    } sink;
    entity.emit(sink, engine::outlineStyle(entity));
    return sink.found;
}

bool isDimension(const engine::Entity& entity) { return entity.type() == engine::EntityType::Dimension; }

// Links ----------------------------------------------------------------------------------------------------------

std::vector<DimensionLink> findLinks(doc::Document& document, const DimensionEntity& dimension,
                                     std::initializer_list<int> points) {
    DimensionEntity probe(dimension);
    std::vector<std::vector<DimensionLink>> candidates;
    for (const int point : points) {
        const Vector2 p = engine::definitionPoint(probe, point);
        const double reach = 1e-9 * std::max({1.0, std::abs(p.x), std::abs(p.y)});
        std::vector<DimensionLink>& list = candidates.emplace_back();
        const auto look = [&](doc::SpatialIndex& index, const Vector2& q, double within,
                              const engine::ViewportEntity* viewport) {
            math::Bounds2 box;
            box.expand(q);
            for (const engine::Entity* entity : index.query(box.inflated(within))) {
                if (list.size() >= kMaxCandidates) break;
                if (!isShown(document.drawing(), *entity)) continue;
                if (viewport != nullptr && viewport->isFrozenHere(entity->layer)) continue;
                engine::eachLinkablePoint(*entity, [&](DimensionLink link, const Vector2& at) {
                    if (!at.near_equal(q, within)) return;
                    link.point = point;
                    link.handle = entity->handle();
                    if (viewport != nullptr) {
                        link.viewport = viewport->handle();
                        link.viewScale = viewport->viewScale;
                    }
                    list.push_back(link);
                });
            }
        };
        look(document.spatialIndex(), p, reach, nullptr);
        if (!list.empty()) continue;
        if (const engine::ViewportEntity* viewport = viewportAt(document, p)) {
            const Vector2 q = viewport->toModel(p);
            const double within =
                kPaperReach / viewport->viewScale + 1e-9 * std::max({1.0, std::abs(q.x), std::abs(q.y)});
            if (std::isfinite(within))
                look(document.spatialIndex(document.drawing().modelSpace()), q, within, viewport);
        }
    }
    // The entity that stands at most of the points.
    std::uint64_t preferred = 0;
    std::size_t most = 0;
    for (const auto& list : candidates)
        for (const DimensionLink& link : list) {
            std::size_t count = 0;
            for (const auto& other : candidates)
                count += std::any_of(other.begin(), other.end(),
                                     [&](const DimensionLink& l) { return l.handle == link.handle; });
            if (count > most) preferred = link.handle;
            most = std::max(most, count);
        }
    std::vector<DimensionLink> links;
    for (const auto& list : candidates) {
        if (list.empty()) continue;
        const auto it =
            std::find_if(list.begin(), list.end(), [&](const DimensionLink& link) { return link.handle == preferred; });
        links.push_back(it != list.end() ? *it : list.front());
    }
    // A dimension measures through one viewport.
    const auto through =
        std::find_if(links.begin(), links.end(), [](const DimensionLink& link) { return link.viewport != 0; });
    if (through != links.end()) {
        const std::uint64_t viewport = through->viewport;
        std::erase_if(links,
                      [&](const DimensionLink& link) { return link.viewport != 0 && link.viewport != viewport; });
    }
    return links;
}

void relink(doc::Document& document, DimensionEntity& dimension, const std::vector<DimensionLink>& links) {
    document.modifyEntity(dimension, [&](engine::Entity& entity) {
        engine::setDimensionLinks(static_cast<DimensionEntity&>(entity), links);
    });
}

std::vector<std::uint64_t> dimensionsOf(doc::Document& document, const std::vector<std::uint64_t>& ids) {
    std::vector<std::uint64_t> found;
    for (const std::uint64_t id : ids)
        if (const engine::Entity* entity = document.drawing().findById(id); entity != nullptr && isDimension(*entity))
            found.push_back(id);
    return found;
}

DimensionEntity* lastDimension(doc::Document& document) {
    const double handle = remembered(document, kLastDimension, 0.0);
    return dynamic_cast<DimensionEntity*>(document.drawing().findByHandle(static_cast<std::uint64_t>(handle)));
}

double currentAnnotationScale(const engine::Drawing& drawing) {
    const double paper = engine::sysVarReal(drawing, "CANNOSCALEVALUE", 1.0);
    return paper > 0.0 && std::isfinite(1.0 / paper) ? 1.0 / paper : 1.0;
}

double dimensionScale(const engine::Drawing& drawing, const engine::DimStyle& style) {
    if (style.scaleFactor > 0.0 && std::isfinite(style.scaleFactor)) return style.scaleFactor;
    return style.annotative ? currentAnnotationScale(drawing) : 1.0;
}

void applyAnnotationScale(const engine::Drawing& drawing, bool annotativeStyle, engine::Entity& entity) {
    if (!annotativeStyle) return;
    entity.setAnnotative(true);
    entity.setAnnotationScale(currentAnnotationScale(drawing));
    entity.setObjectScales({engine::Name(engine::sysVarString(drawing, "CANNOSCALE", "1:1"))});
}

double dimensionTextAngle(const Answer& answer, const engine::Drawing& drawing) {
    if (isTyped(answer) && answer.number == 0.0) return 0.0;
    // 0 itself means "as the style says".
    const double angle = worldDirection(answer, drawing);
    return angle == 0.0 ? math::kTwoPi : angle;
}

// The tool -------------------------------------------------------------------------------------------------------

void DimensionTool::start(engine::DimensionType type) {
    dim_.subType = type;
    dim_.dimStyleName = drawing().dimStyleOrStandard(drawing().currentDimStyle).name;
    dim_.styleOverrides = drawing().dimStyleOverrides;
    dim_.nameOverrides = drawing().dimStyleNameOverrides;
    dim_.styleOverrides.erase("DIMUPT");
}

std::string DimensionTool::measuredText() const {
    DimensionEntity plain(dim_);
    plain.textOverride.clear();
    const bool paper = !drawing().currentSpaceIsModel();
    engine::DimStyle style = styleInForce();
    if (paper && engine::dimensionLinks(plain).empty() && associates()) {
        engine::measureThroughViewport(plain, style, findLinks(document(), plain, {1, 2}));
        engine::overrideDimStyle(style, plain.styleOverrides, plain.nameOverrides);
    }
    style.fractionFormat = kFractionsInLine;
    return engine::plainText(plain.textContent(style, paper));
}

engine::DimStyle DimensionTool::styleInForce() const {
    engine::DimStyle style = drawing().dimStyleOrStandard(dim_.dimStyleName);
    engine::overrideDimStyle(style, dim_.styleOverrides, dim_.nameOverrides);
    return style;
}

Task<bool> DimensionTool::takeTextOption(Ask& ask, Answer answer) {
    if (answer.is("MTEXT") || answer.is("TEXT")) {
        std::string prompt = withDefault("Enter dimension text", measuredText());
        const Answer text = co_await ask.text(std::move(prompt));
        if (text.isText()) dim_.textOverride = text.text;
        co_return true;
    }
    if (answer.is("ANGLE")) {
        const Answer angle = co_await ask.angle("Specify angle of dimension text:");
        if (angle.isNumber()) dim_.textRotation = dimensionTextAngle(angle, drawing());
        co_return true;
    }
    co_return false;
}

bool DimensionTool::associates() const { return engine::sysVarInt(drawing(), "DIMASSOC", 2) == 2; }

void DimensionTool::takeUserText(const Vector2& at) {
    if (engine::sysVarInt(drawing(), "DIMUPT") != 0) dim_.setUserText(at);
}

std::uint64_t DimensionTool::place(const char* label, std::initializer_list<int> points) {
    return placeLinked(label, associates() ? findLinks(document(), dim_, points) : std::vector<DimensionLink>{});
}

std::uint64_t DimensionTool::placeOnArc(const char* label, const PickedPiece& piece) {
    return placeLinked(label, piece.arcLinks());
}

std::uint64_t DimensionTool::placeLinked(const char* label, const std::vector<DimensionLink>& links) {
    if (!engine::dimensionIsFinite(dim_)) {
        message("Invalid input.");
        return 0;
    }
    engine::setDimensionLinks(dim_, {});
    if (associates() && !links.empty()) {
        engine::measureThroughViewport(dim_, styleInForce(), links);
        // Exactly onto what a viewport shows: typed points are near it only.
        engine::setDimensionLinks(dim_, links);
        engine::followLinks(dim_, drawing(), &drawing().currentSpace());
    }
    const std::string text = measuredText();
    auto dimension = std::make_unique<DimensionEntity>(dim_);
    applyCurrentValues(document(), *dimension);
    applyAnnotationScale(drawing(), styleInForce().annotative, *dimension);
    const engine::Name layer(engine::sysVarString(drawing(), "DIMLAYER"));
    if (drawing().layers.contains(layer)) dimension->layer = layer;
    const doc::GroupScope group(document(), label);
    std::uint64_t id = 0;
    if (engine::sysVarInt(drawing(), "DIMASSOC", 2) == 0) {
        // It stands in a list of its own while it is taken apart, so that it finds styles and blocks.
        engine::EntityList bench(&drawing());
        engine::Entity& whole = bench.append(std::move(dimension));
        PartsSink parts(&drawing(), whole.elevation, drawing().currentTextStyle);
        whole.emit(parts, engine::outlineStyle(whole));
        bench.take(whole);
        for (std::unique_ptr<engine::Entity>& part : parts.take()) id = document().addEntity(std::move(part)).id();
    } else {
        const engine::Entity& added = document().addEntity(std::move(dimension));
        id = added.id();
        remember(document(), kLastDimension, static_cast<double>(added.handle()));
    }
    repaint();
    if (!quiet_) message("Dimension text = " + text);
    return id;
}

}  // namespace kova::cmd
