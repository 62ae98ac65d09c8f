#pragma once

#include <map>
#include <optional>
#include <string>

#include "engine/text/text_line.hpp"
#include "engine/model/entity.hpp"
#include "math/curves/path.hpp"

namespace kova::engine {

struct Block;

/// A plane that its normal and the height along it span, after the arbitrary axis rule.
struct AttributePlane {
    math::Vector3 normal{0, 0, 1};  ///< of the world
    double elevation = 0.0;

    void describe(FieldVisitor& v);
};

/// The value of an attribute as it stands at a block reference. Its place is that of a text in the reference's object
/// plane: the start of the baseline for left / baseline alignment, else the alignment point.
struct BlockAttribute {
    std::string tag;
    std::string value;
    math::Vector2 position;
    double textHeight = 2.5;
    double rotation = 0.0;  ///< radians
    Name textStyle = commonNames().standard;
    bool invisible = false;
    Name layer = commonNames().layerZero;
    Color color;
    std::int32_t hAlign = kHAlignLeft;      ///< TextHAlign
    std::int32_t vAlign = kVAlignBaseline;  ///< TextVAlign
    std::int32_t generation = 0;            ///< TextGeneration bits
    double widthFactor = 1.0;
    double oblique = 0.0;  ///< radians
    bool locked = false;     ///< stays where it is in the reference
    bool multiline = false;  ///< the value is content of multiline text
    double width = 0.0;      ///< where its lines are wrapped; 0: nowhere
    /// None: the reference's. Place and angles are those of this plane, so that a text seen from behind stays so.
    std::optional<AttributePlane> plane;

    /// The value as a reader sees it; lines are parted by '\n'.
    std::string plainValue() const;
    /// The view of it that measuring and drawing take; valid while it stands unchanged.
    TextLine line() const;
    void describe(FieldVisitor& v);
};

/// True when ATTMODE and the attribute itself let it be seen.
bool isAttributeShown(const BlockAttribute& attribute, const Drawing* drawing);
/// Emits the value of an attribute in the object plane that the sink stands for; `style` is that of what holds it.
void emitAttribute(const BlockAttribute& attribute, const Drawing* drawing, OutlineSink& sink,
                   const OutlineStyle& style);

/// A block definition placed in the drawing, singly or as a grid of copies.
class BlockReferenceEntity final : public Entity {
    KOVA_ENTITY(BlockReferenceEntity, BlockReference)

    BlockReferenceEntity(Name block, const math::Vector2& at) : blockName(block), insert(at) {}

    Name blockName;
    math::Vector2 insert;  ///< in the object plane of the normal
    double scaleX = 1.0;   ///< negative: mirrored; 0 is drawn as 1
    double scaleY = 1.0;
    std::optional<double> scaleZ;  ///< none: the size of scaleX
    double rotation = 0.0;         ///< radians
    std::int32_t rows = 1;
    std::int32_t columns = 1;
    double rowSpacing = 0.0;     ///< drawing units along the turned y axis, not scaled
    double columnSpacing = 0.0;  ///< along the turned x axis
    std::vector<BlockAttribute> attributes;
    /// Clip polygon in block coordinates (those of the definition's entities), applied to the copy at row 0, column 0
    /// and, for a grid, to the whole of it; two points are opposite corners of a rectangle.
    std::vector<math::Vector2> clipBoundary;
    bool clipInverted = false;                     ///< hides the inside of the boundary
    bool clipEnabled = true;                       ///< counts only while there is a boundary
    std::map<std::string, double> dynParamValues;  ///< by parameter name
    std::map<std::string, double> dynFlipValues;   ///< by parameter name; 0 or 1
    std::string activeVisibilityState;             ///< empty: the block's own default

    /// The definition of that name in the drawing that holds the reference; null when there is none.
    const Block* block() const;
    /// From block coordinates to world coordinates for one copy of the grid.
    math::Matrix4 blockMatrix(std::int32_t row = 0, std::int32_t column = 0) const;
    /// The same for a given definition (a reference that stands outside the drawing finds none by name).
    math::Matrix4 blockMatrix(const Block& definition, std::int32_t row = 0, std::int32_t column = 0) const;
    /// Copies in the grid's directions, at least 1.
    std::int32_t rowCount() const { return rows > 1 ? rows : 1; }
    std::int32_t columnCount() const { return columns > 1 ? columns : 1; }
    double effectiveScaleZ() const { return scaleZ.value_or(std::abs(scaleX)); }
    bool isClipped() const { return clipEnabled && clipBoundary.size() >= 2; }
    /// The clip polygon in block coordinates, a rectangle written out as four points; empty when there is none.
    std::vector<math::Vector2> clipPolygon() const;
    /// The attribute of that tag (without regard to case); null when there is none.
    BlockAttribute* findAttribute(std::string_view tag);
    const BlockAttribute* findAttribute(std::string_view tag) const {
        return const_cast<BlockReferenceEntity*>(this)->findAttribute(tag);
    }
    /// Carries coordinates of an attribute to the world: its own plane, or the reference's.
    math::Matrix4 attributePlane(const BlockAttribute& attribute) const;
    /// A point of that plane in plan, and the other way (nothing when the plane stands on edge).
    math::Vector2 planFromAttribute(const BlockAttribute& attribute, const math::Vector2& p) const;
    std::optional<math::Vector2> attributeFromPlan(const BlockAttribute& attribute, const math::Vector2& p) const;

    /// Extents under a further map, as they are needed inside another block.
    math::Bounds2 boundsUnder(const math::Matrix4& m) const;

private:
    /// Calls place(matrix) for the copies of the grid that differ; ends early when place gives false.
    template <class Place>
    void forEachCopy(const Block& definition, const Place& place) const;
    void emitAttributes(OutlineSink& sink, const OutlineStyle& style) const;
    bool showsAttribute(const BlockAttribute& attribute) const { return isAttributeShown(attribute, drawing()); }
};

// Limits of what one reference may draw, so that hostile or damaged drawings stay usable.
inline constexpr int kMaxBlockNesting = 64;                    ///< references within references
inline constexpr std::size_t kMaxBlockPlacements = 1'000'000;  ///< copies of definitions, grids included
inline constexpr std::size_t kMaxNestedEntities = 20'000'000;  ///< entities emitted through references

/// Emits the entities of a block under `placement` (block coordinates, the base point not taken off, to those of the
/// sink), drawn as the contents of a reference in style `outer`: ByBlock properties and layer "0" take those of
/// `outer`. `visible` (null: all) tells by position among the block's live entities which are shown. A block that is
/// being emitted already, nesting beyond kMaxBlockNesting and what exceeds the limits above emit nothing.
void emitBlock(const Block& block, const math::Matrix4& placement, OutlineSink& sink, const OutlineStyle& outer,
               const std::vector<bool>* visible = nullptr);

}  // namespace kova::engine
