#include "engine/entities/block_reference.hpp"

#include "engine/model/drawing.hpp"
#include "engine/entities/dynamic_block.hpp"
#include "engine/entities/attribute_definition.hpp"
#include "engine/text/mtext_layout.hpp"
#include "engine/entities/block_nesting.hpp"
#include "engine/model/object_plane.hpp"
#include "engine/model/outline.hpp"
#include "engine/model/frame_lines.hpp"
#include "engine/outline/spatial_sink.hpp"
#include "math/curves/curves.hpp"

namespace kova::engine {

using math::Bounds2;
using math::Matrix4;
using math::Vector2;
using math::Vector3;

namespace {

/// A scale that can be drawn: nothing is gained by collapsing the block to a line.
double drawnScale(double scale) { return scale == 0.0 || !std::isfinite(scale) ? 1.0 : scale; }

double finiteOr(double value, double fallback) { return std::isfinite(value) ? value : fallback; }

/// From the first copy of a grid to another one, in the object plane.
Vector2 gridStep(const BlockReferenceEntity& reference, std::int32_t row, std::int32_t column) {
    const Vector2 x = math::unitAt(finiteOr(reference.rotation, 0.0));
    return x * (finiteOr(reference.columnSpacing, 0.0) * column) +
           x.perpendicular() * (finiteOr(reference.rowSpacing, 0.0) * row);
}

}  // namespace

void AttributePlane::describe(FieldVisitor& v) {
    v.point("normal", normal);
    v.length("elevation", elevation, 0.0);
}

void BlockAttribute::describe(FieldVisitor& v) {
    v.text("tag", tag);
    v.text("value", value);
    v.point("pos", position);
    v.length("textHeight", textHeight);
    v.angle("rotation", rotation);
    v.name("textStyle", textStyle);
    v.boolean("invisible", invisible);
    v.name("layer", layer);
    v.color("color", color);
    v.integer("hAlign", hAlign);
    v.integer("vAlign", vAlign);
    v.integer("generation", generation);
    v.number("widthFactor", widthFactor);
    v.angle("oblique", oblique);
    v.boolean("locked", locked, false);
    v.boolean("multiline", multiline, false);
    v.length("width", width, 0.0);
    v.object("plane", plane);
}

std::string BlockAttribute::plainValue() const { return multiline ? plainText(value) : value; }

TextLine BlockAttribute::line() const {
    TextLine l;
    l.content = value;
    l.position = position;
    l.height = textHeight;
    l.rotation = rotation;
    l.hAlign = hAlign;
    l.vAlign = vAlign;
    l.textStyle = textStyle;
    l.widthFactor = widthFactor;
    l.oblique = oblique;
    l.generation = generation;
    l.paragraphs = multiline;
    l.wrapWidth = width;
    return l;
}

void BlockReferenceEntity::describe(FieldVisitor& v) {
    v.name("blockName", blockName);
    v.point("insert", insert);
    v.number("scaleX", scaleX);
    v.number("scaleY", scaleY);
    // Written only when it differs from what it would be by itself.
    double z = v.reading() ? std::numeric_limits<double>::quiet_NaN() : effectiveScaleZ();
    v.number("scaleZ", z, std::abs(scaleX));
    if (v.reading()) scaleZ = std::isnan(z) ? std::nullopt : std::optional<double>(z);
    v.angle("rotation", rotation);
    v.integer("rows", rows);
    v.integer("columns", columns);
    v.length("rowSpacing", rowSpacing);
    v.length("columnSpacing", columnSpacing);
    v.objects("attributes", attributes, true);
    v.points("clipBoundary", clipBoundary, true);
    v.boolean("clipInverted", clipInverted, false);
    v.boolean("clipEnabled", clipEnabled, true);
    v.numberMap("dynParamValues", dynParamValues);
    v.numberMap("dynFlipValues", dynFlipValues);
    v.text("activeVisibilityState", activeVisibilityState, "");
}

const Block* BlockReferenceEntity::block() const {
    const Drawing* d = drawing();
    return d != nullptr ? d->findBlock(blockName) : nullptr;
}

Matrix4 BlockReferenceEntity::blockMatrix(const Block& definition, std::int32_t row, std::int32_t column) const {
    // Written out, since drawings have many references: move to the insertion point and the place in the grid, turn,
    // scale, take off the base point.
    const Vector2 x = math::unitAt(finiteOr(rotation, 0.0));
    const Vector2 y = x.perpendicular();
    const Vector2 u = x * drawnScale(scaleX);
    const Vector2 v = y * drawnScale(scaleY);
    const Vector2 origin = insert + x * (finiteOr(columnSpacing, 0.0) * column) +
                           y * (finiteOr(rowSpacing, 0.0) * row) - u * definition.base.x - v * definition.base.y;
    Matrix4 m;
    m.m = {u.x, v.x, 0, origin.x, u.y, v.y, 0, origin.y, 0, 0, drawnScale(effectiveScaleZ()), elevation, 0, 0, 0, 1};
    return inWorldPlane(*this) ? m : Matrix4::object_to_world(normal()) * m;
}

Matrix4 BlockReferenceEntity::blockMatrix(std::int32_t row, std::int32_t column) const {
    if (const Block* definition = block()) return blockMatrix(*definition, row, column);
    return blockMatrix(Block(blockName), row, column);
}

std::vector<Vector2> BlockReferenceEntity::clipPolygon() const {
    if (!isClipped()) return {};
    if (clipBoundary.size() > 2) return clipBoundary;
    const Vector2 a = clipBoundary[0];
    const Vector2 b = clipBoundary[1];
    return {a, {b.x, a.y}, b, {a.x, b.y}};
}

BlockAttribute* BlockReferenceEntity::findAttribute(std::string_view tag) {
    for (BlockAttribute& a : attributes)
        if (equalNoCase(a.tag, tag)) return &a;
    return nullptr;
}

Matrix4 BlockReferenceEntity::attributePlane(const BlockAttribute& attribute) const {
    if (!attribute.plane) return objectPlane(*this);
    return Matrix4::object_to_world(attribute.plane->normal) *
           Matrix4::translation(0.0, 0.0, attribute.plane->elevation);
}

Vector2 BlockReferenceEntity::planFromAttribute(const BlockAttribute& attribute, const Vector2& p) const {
    return attribute.plane ? attributePlane(attribute).transform_point(p) : planFromObject(*this, p);
}

std::optional<Vector2> BlockReferenceEntity::attributeFromPlan(const BlockAttribute& attribute,
                                                              const Vector2& p) const {
    return attribute.plane ? planePoint(attributePlane(attribute), p) : objectFromPlan(*this, p);
}

bool isAttributeShown(const BlockAttribute& attribute, const Drawing* drawing) {
    std::int32_t mode = 1;  // ATTMODE: 0 none is shown, 1 as they say themselves, 2 all are shown
    if (drawing != nullptr) {
        const auto it = drawing->integerVariables.find(std::string_view("ATTMODE"));
        if (it != drawing->integerVariables.end()) mode = it->second;
    }
    return mode == 2 || (mode != 0 && !attribute.invisible);
}

void emitAttribute(const BlockAttribute& attribute, const Drawing* drawing, OutlineSink& sink,
                   const OutlineStyle& style) {
    if (attribute.value.empty() || !isAttributeShown(attribute, drawing)) return;
    OutlineStyle own = style;
    if (attribute.layer != commonNames().layerZero) own.layer = attribute.layer;
    if (attribute.color.method != ColorMethod::ByBlock) own.color = attribute.color;
    if (sink.wantsLayer(own.layer)) emitTextLine(attribute.line(), drawing, sink, own);
}

// Extents ---------------------------------------------------------------------------------------------------

Bounds2 BlockReferenceEntity::boundsUnder(const Matrix4& m) const {
    Bounds2 box;
    if (const Block* definition = block()) {
        const ShownBlock shown = shownBlock(*definition, *this);
        const bool plain = m == Matrix4{};
        const auto placement = [&](std::int32_t row, std::int32_t column) {
            const Matrix4 own = blockMatrix(*definition, row, column);
            return plain ? own : m * own;
        };
        const Matrix4 first = placement(0, 0);
        const Bounds2 copy = shown.block->extents(first, shown.mask());
        if (!copy.is_empty()) {
            // Copies differ by a translation, so the corners of the grid tell the extents of all of it.
            box = copy;
            for (const auto& [row, column] : {std::pair{rowCount() - 1, 0}, std::pair{0, columnCount() - 1},
                                              std::pair{rowCount() - 1, columnCount() - 1}}) {
                if (row == 0 && column == 0) continue;
                const Matrix4 other = placement(row, column);
                const Vector2 shift{other(0, 3) - first(0, 3), other(1, 3) - first(1, 3)};
                if (shift.is_finite()) box.expand(Bounds2{copy.min + shift, copy.max + shift});
            }
        }
        if (isClipped() && !clipInverted && !box.is_empty()) {
            Bounds2 clip;
            for (const Vector2& p : clipPolygon()) clip.expand(first.transform_point(p));
            box = Bounds2{{std::max(box.min.x, clip.min.x), std::max(box.min.y, clip.min.y)},
                          {std::min(box.max.x, clip.max.x), std::min(box.max.y, clip.max.y)}};
            if (box.is_empty()) box = {};
        }
    }
    if (attributes.empty()) return box;
    const Matrix4 shared = m * objectPlane(*this);
    Bounds2 texts;
    for (const BlockAttribute& a : attributes) {
        if (!showsAttribute(a) || a.value.empty()) continue;
        const Matrix4 plane = a.plane ? m * attributePlane(a) : shared;
        const bool straight = plane(0, 1) == 0.0 && plane(1, 0) == 0.0;
        if (straight) {
            texts.expand(engine::boundsUnder(textLineBounds(a.line(), drawing()), plane));
        } else {
            const TextLinePlacement placement = placeTextLine(a.line(), drawing());
            if (!placement.valid) continue;
            for (const Vector2& corner : placement.box()) texts.expand(plane.transform_point(corner));
        }
    }
    if (texts.is_empty()) return box;
    for (const std::int32_t row : {0, rowCount() - 1})
        for (const std::int32_t column : {0, columnCount() - 1}) {
            const Vector2 shift = shared.transform_direction(gridStep(*this, row, column));
            if (shift.is_finite()) box.expand(Bounds2{texts.min + shift, texts.max + shift});
        }
    return box;
}

Bounds2 BlockReferenceEntity::bounds() const { return boundsUnder({}); }

Vector2 BlockReferenceEntity::nearestPoint(const Vector2& p) const {
    // Without anything to see, the insertion point stands for the reference.
    if (bounds().is_empty()) return planFromObject(*this, insert);
    return nearestOnOutline(*this, p);
}

double BlockReferenceEntity::distanceTo(const Vector2& p) const { return p.distance_to(nearestPoint(p)); }

// Editing ---------------------------------------------------------------------------------------------------

namespace {

/// An attribute in a plane of its own goes as a text of that plane does.
void transformInOwnPlane(BlockAttribute& a, const Matrix4& m) {
    AttributeDefinitionEntity text;
    text.setNormal(a.plane->normal);
    text.elevation = a.plane->elevation;
    text.insertion = a.position;
    text.textHeight = a.textHeight;
    text.rotation = a.rotation;
    text.widthFactor = a.widthFactor;
    text.oblique = a.oblique;
    text.generation = a.generation;
    text.width = a.width;
    text.transform(m);
    a.plane = AttributePlane{text.normal(), text.elevation};
    a.position = text.insertion;
    a.textHeight = text.textHeight;
    a.rotation = text.rotation;
    a.widthFactor = text.widthFactor;
    a.oblique = text.oblique;
    a.generation = text.generation;
    a.width = text.width;
}

}  // namespace

void BlockReferenceEntity::transform(const Matrix4& m) {
    for (BlockAttribute& a : attributes)
        if (a.plane) transformInOwnPlane(a, m);
    const double alongNormal = m.transform_direction(normal()).length();
    const double oldScaleZ = effectiveScaleZ();
    const Matrix4 plane = transformObjectPlane(*this, m);

    const Vector2 oldX = Vector2::from_angle(rotation);
    const Vector2 oldY = oldX.perpendicular();
    const Vector2 newX = plane.transform_direction(oldX);
    const Vector2 newY = plane.transform_direction(oldY);
    const double sx = drawnScale(scaleX);
    const double sy = drawnScale(scaleY);
    const double stretch = newX.length();
    insert = plane.transform_point(insert);
    for (BlockAttribute& a : attributes) {
        if (a.plane) continue;
        a.position = plane.transform_point(a.position);
        TextFrame frame{a.rotation, a.textHeight, a.widthFactor, a.oblique, a.generation};
        const double along = frame.height * frame.widthFactor;
        transformTextFrame(frame, plane);
        if (along > 0.0) a.width *= frame.height * frame.widthFactor / along;
        a.rotation = frame.rotation;
        a.textHeight = frame.height;
        a.widthFactor = frame.widthFactor;
        a.oblique = frame.oblique;
        a.generation = frame.generation;
    }
    if (stretch < math::kTolerance || !newX.is_finite() || !newY.is_finite()) return;

    // A slant cannot be held; the y scale then keeps the area.
    const double signedArea = newX.cross(newY);
    double turnedX = sx * stretch;
    double turnedY = sy * signedArea / stretch;
    const Vector2 axis = newX / stretch;
    const double turn = std::atan2(oldX.cross(axis), oldX.dot(axis));
    double angle = turn != 0.0 ? math::normalizeAngle(rotation + turn) : rotation;
    if (signedArea < 0.0) {
        // Of the two ways to write a mirror image, the one that turns the block less.
        const Vector2 direction = Vector2::from_angle(angle);
        const bool left = direction.x < -1e-12 || (std::abs(direction.x) <= 1e-12 && direction.y < 0.0);
        if (left) {
            turnedX = -turnedX;
            turnedY = -turnedY;
            angle = math::normalizeAngle(angle + math::kPi);
        }
    }
    const Vector2 gridX = Vector2::from_angle(angle);
    columnSpacing = (newX * columnSpacing).dot(gridX);
    rowSpacing = (newY * rowSpacing).dot(gridX.perpendicular());
    rotation = angle;
    scaleX = turnedX;
    scaleY = turnedY;
    const double newScaleZ = oldScaleZ * alongNormal;
    scaleZ = std::abs(newScaleZ - std::abs(scaleX)) <= 1e-9 * std::abs(scaleX) ? std::nullopt
                                                                               : std::optional<double>(newScaleZ);
}

std::vector<Vector2> BlockReferenceEntity::gripPoints() const {
    std::vector<Vector2> grips{planFromObject(*this, insert)};
    for (const BlockAttribute& a : attributes) grips.push_back(planFromAttribute(a, a.position));
    return grips;
}

void BlockReferenceEntity::moveGrip(std::size_t index, const Vector2& to) {
    if (index > attributes.size()) return;
    if (index > 0) {
        BlockAttribute& a = attributes[index - 1];
        if (const auto target = attributeFromPlan(a, to); target && !a.locked) a.position = *target;
        return;
    }
    const std::optional<Vector2> target = objectFromPlan(*this, to);
    if (!target) return;
    const Vector2 shift = *target - insert;
    const Vector2 seen = to - planFromObject(*this, insert);
    insert = *target;
    for (BlockAttribute& a : attributes) {
        if (!a.plane)
            a.position += shift;
        else if (const auto moved = attributeFromPlan(a, planFromAttribute(a, a.position) + seen))
            a.position = *moved;
    }
}

std::size_t BlockReferenceEntity::sizeInBytes() const {
    std::size_t size = sizeof *this + extrasSize() + attributes.capacity() * sizeof(BlockAttribute) +
                       clipBoundary.capacity() * sizeof(Vector2) + (dynParamValues.size() + dynFlipValues.size()) * 96 +
                       activeVisibilityState.capacity();
    for (const BlockAttribute& a : attributes) size += a.tag.capacity() + a.value.capacity();
    return size;
}

// Emission --------------------------------------------------------------------------------------------------

void emitBlock(const Block& block, const Matrix4& placement, OutlineSink& sink, const OutlineStyle& outer,
               const std::vector<bool>* visible) {
    BlockNesting nesting(BlockNesting::Purpose::Emit, block);
    if (!nesting.entered()) return;
    TransformSink placed(sink, placement);
    // Seen from a direction, what stands in the block has its height.
    auto* const spatial = dynamic_cast<SpatialSink*>(&sink);
    std::size_t position = 0;
    for (const Entity& e : block.entities) {
        const std::size_t at = position++;
        if (hiddenInReferences(e) || (visible != nullptr && (at >= visible->size() || !(*visible)[at]))) continue;
        if (!nesting.takeEntity()) return;
        const OutlineStyle style = nestedStyle(e, outer);
        if (!placed.wantsLayer(style.layer)) continue;
        if (spatial != nullptr)
            spatial->drawPlaced(e, placement, style);
        else
            e.emit(placed, style);
    }
}

template <class Place>
void BlockReferenceEntity::forEachCopy(const Block& definition, const Place& place) const {
    // Copies that fall on each other are one.
    const std::int32_t lastRow = rowSpacing != 0.0 ? rowCount() : 1;
    const std::int32_t lastColumn = columnSpacing != 0.0 ? columnCount() : 1;
    for (std::int32_t row = 0; row < lastRow; ++row)
        for (std::int32_t column = 0; column < lastColumn; ++column)
            if (!place(blockMatrix(definition, row, column))) return;
}

void BlockReferenceEntity::emitAttributes(OutlineSink& sink, const OutlineStyle& style) const {
    if (attributes.empty()) return;
    // Those of the reference's plane go through the sink of that plane, the others through one of their own.
    const auto emitAll = [&](OutlineSink& to, bool ownPlanes) {
        for (const BlockAttribute& a : attributes) {
            if (a.plane.has_value() != ownPlanes) continue;
            if (ownPlanes) {
                TransformSink plane(to, attributePlane(a));
                emitAttribute(a, drawing(), plane, style);
            } else {
                emitAttribute(a, drawing(), to, style);
            }
        }
    };
    const auto emitCopies = [&](OutlineSink& to, bool ownPlanes) {
        emitAll(to, ownPlanes);
        // Each copy of a grid shows them.
        BlockNesting nesting(BlockNesting::Purpose::Emit);
        const std::int32_t lastRow = rowSpacing != 0.0 ? rowCount() : 1;
        const std::int32_t lastColumn = columnSpacing != 0.0 ? columnCount() : 1;
        for (std::int32_t row = 0; row < lastRow; ++row)
            for (std::int32_t column = 0; column < lastColumn; ++column) {
                if (row == 0 && column == 0) continue;
                if (!nesting.takePlacement()) return;
                const Vector2 step = gridStep(*this, row, column);
                const Vector2 shift = ownPlanes ? planFromObject(*this, step) - planFromObject(*this, {}) : step;
                TransformSink shifted(to, Matrix4::translation(shift));
                emitAll(shifted, ownPlanes);
            }
    };
    emitFromObjectPlane(*this, sink, [&](OutlineSink& plane) { emitCopies(plane, false); });
    if (std::any_of(attributes.begin(), attributes.end(), [](const BlockAttribute& a) { return a.plane.has_value(); }))
        emitCopies(sink, true);
}

void BlockReferenceEntity::emit(OutlineSink& sink, const OutlineStyle& style) const {
    const Block* definition = block();
    if (definition == nullptr) {
        emitAttributes(sink, style);
        return;
    }
    BlockNesting nesting(BlockNesting::Purpose::Emit);
    const bool clipped = isClipped();
    Path boundary;
    if (clipped) {
        const Matrix4 first = blockMatrix(*definition);
        std::vector<Vector2> polygon = clipPolygon();
        for (Vector2& p : polygon) p = first.transform_point(p);
        boundary.polygon(polygon);
        sink.pushClip(boundary, clipInverted);
    }
    const ShownBlock shown = shownBlock(*definition, *this);
    const bool unbounded = shown.block->hasUnbounded();
    const Bounds2 box = shown.block->extents();
    if (!box.is_empty() || unbounded) {
        forEachCopy(*definition, [&](const Matrix4& m) {
            if (!nesting.takePlacement()) return false;
            if (unbounded || sink.wants(engine::boundsUnder(box, m)))
                emitBlock(*shown.block, m, sink, style, shown.mask());
            return true;
        });
    }
    emitAttributes(sink, style);
    if (!clipped) return;
    sink.popClip();
    if (!FrameLines::emitted(FrameKind::Clip)) return;
    StrokeOptions frame;
    frame.continuous = true;
    sink.stroke(boundary, style, frame);
}

}  // namespace kova::engine
