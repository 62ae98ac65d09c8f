#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "engine/entities/block_reference.hpp"
#include "engine/model/block.hpp"

namespace kova::engine {

// Dynamic blocks: a definition has parameters, references give them values, and the definition's actions make of the
// values what the references show.

enum class DynParameterKind { Unknown, Alignment, Base, Point, Linear, Polar, XY, Rotation, Flip, Visibility, Lookup };
enum class DynActionKind { Unknown, Array, Flip, Lookup, Move, Rotate, Scale, Stretch, PolarStretch };

DynParameterKind kindOf(const DynParameter& parameter);
DynActionKind kindOf(const DynAction& action);
/// The words of the records ("Linear", "Polar Stretch"); empty for Unknown.
std::string_view wordOf(DynParameterKind kind);
std::string_view wordOf(DynActionKind kind);
/// True when an action of the kind may follow a parameter of the other.
bool fits(DynActionKind action, DynParameterKind parameter);

/// One value that a reference can have; parameters in two directions have two.
struct DynProperty {
    enum class Kind { Length, Angle, Flip, Visibility, Lookup };
    std::string name;  ///< unique in the block when its parameters' names are
    Kind kind = Kind::Length;
    std::size_t parameter = 0;
    double fallback = 0.0;  ///< the definition's own value; angles in radians, flips 0 or 1
    bool mayBeNegative = false;
};
std::vector<DynProperty> dynProperties(const Block& block);

/// The value as a number (Length, Angle, Flip) in force at a reference.
double dynValue(const BlockReferenceEntity& reference, const DynProperty& property);
/// The value as users read it: lengths with a point, angles in degrees, "Flipped" or "Not flipped", the name of the
/// visibility state, the lookup value ("Custom" when no row of the table fits).
std::string dynValueText(const BlockReferenceEntity& reference, const Block& block, const DynProperty& property);
/// Sets a value from such a text; lengths and angles go to the nearest that the parameter allows. Error text, empty on
/// success.
std::string setDynValue(BlockReferenceEntity& reference, const Block& block, const DynProperty& property,
                        std::string_view text);
/// The definition's own values again.
void resetDynValues(BlockReferenceEntity& reference);

/// What a reference shows of its definition.
struct ShownBlock {
    const Block* block = nullptr;              ///< the definition, or its shape under the reference's values
    std::optional<std::vector<bool>> visible;  ///< by position among the entities of `block`; none: all
    std::shared_ptr<const Block> own;          ///< keeps the shape while it is used

    const std::vector<bool>* mask() const { return visible ? &*visible : nullptr; }
};
/// The shapes are kept with the definition until it changes.
ShownBlock shownBlock(const Block& definition, const BlockReferenceEntity& reference);

}  // namespace kova::engine
