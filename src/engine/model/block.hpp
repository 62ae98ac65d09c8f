#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "engine/model/describe.hpp"
#include "engine/model/entity_list.hpp"

namespace kova::engine {

enum class XrefType : std::uint8_t { None = 0, Attach = 1, Overlay = 2 };
enum class XrefStatus : std::uint8_t { Unloaded = 0, Loaded = 1, NotFound = 2, Unresolved = 3 };

/// A parameter of a dynamic block.
struct DynParameter {
    std::string type;  ///< see DynParameterKind
    std::string name;
    math::Vector2 base;
    math::Vector2 endPoint;
    double value = 0.0;
    double angle = 0.0;  ///< radians
    bool flipState = false;
    std::string activeVisibility;
    std::int32_t lookupRow = -1;
    std::int32_t gripShape = 0;
    bool showProperties = true;
    std::int32_t chainActionIndex = -1;
    std::int32_t constraint = 0;  ///< 0 any value, 1 steps of the increment, 2 those of the list
    double increment = 0.0;
    std::vector<double> valueList;  ///< of a stepped one: least and greatest value
    bool baseAtMidpoint = false;    ///< both ends move, and the midpoint stays

    void describe(FieldVisitor& v);
};

/// What a parameter does to entities of a dynamic block.
struct DynAction {
    std::string type;  ///< see DynActionKind
    std::string name;
    std::int32_t parameterIndex = -1;
    std::vector<std::int32_t> affectedEntityIndices;
    std::vector<math::Vector2> stretchFrame;
    std::int32_t arrayCount = 0;
    double arraySpacing = 0.0;     ///< between columns
    double arrayRowSpacing = 0.0;  ///< between rows, of a parameter in two directions
    math::Vector2 scaleBase;
    bool constrainToAxis = false;  ///< only the part along the axis counts
    double axisAngle = 0.0;        ///< radians
    bool atStartPoint = false;     ///< follows the parameter's first point instead of its second

    void describe(FieldVisitor& v);
};

struct VisibilityState {
    std::string name;
    std::vector<std::int32_t> visibleEntityIndices;

    void describe(FieldVisitor& v);
};

struct LookupColumn {
    std::string name;
    bool isInput = true;

    void describe(FieldVisitor& v);
};

struct LookupTable {
    std::vector<LookupColumn> columns;
    std::vector<std::vector<std::string>> rows;
    bool allowReverseLookup = false;

    void describe(FieldVisitor& v);
};

class ShownStates;

/// A block definition and its entities, in block coordinates.
struct Block {
    explicit Block(Name n) : name(n) {}
    /// A block that shows entities of a drawing without standing in it: EntityList::appendShown.
    Block(Name n, Drawing* shownIn) : name(n), entities(shownIn) {}
    Name name;
    std::string description;
    math::Vector2 base;
    bool explodable = true;
    bool scaleUniform = false;
    XrefType xrefType = XrefType::None;
    std::string xrefPath;
    XrefStatus xrefStatus = XrefStatus::Unloaded;
    bool isDynamic = false;
    std::vector<DynParameter> dynParams;
    std::vector<DynAction> dynActions;
    std::vector<VisibilityState> visibilityStates;
    std::optional<LookupTable> lookupTable;
    std::uint64_t handle = 0;  ///< of the block record in DXF and DWG; 0: none yet
    EntityList entities;

    /// Anonymous blocks ("*D12", "*U3") belong to dimensions, tables and dynamic references.
    bool isAnonymous() const { return !name.empty() && name.view().front() == '*'; }
    /// Extents of the contents as references show them (without attribute definitions), in block coordinates;
    /// kept until an entity changes.
    math::Bounds2 extents() const;
    /// The same under an affine map of block coordinates, exact also for turned contents. `visible` (null: all) tells
    /// by position among the live entities which count.
    math::Bounds2 extents(const math::Matrix4& m, const std::vector<bool>* visible = nullptr) const;
    /// Holds rays or construction lines, itself or through references: its shape reaches beyond its extents.
    bool hasUnbounded() const;
    /// Which entities a visibility state shows, by position among the live entities; nothing when all are shown. An
    /// empty or unknown name takes the state that the block's visibility parameter names.
    std::optional<std::vector<bool>> visibleEntities(std::string_view state) const;
    /// Fields before the entities, and those of the dynamic part behind them.
    void describeHead(FieldVisitor& v);
    void describeDynamic(FieldVisitor& v);

private:
    /// Extents under the linear part of a map, without its translation.
    struct Placed {
        double xx, xy, yx, yy;
        math::Bounds2 box;
    };
    void refreshCache() const;
    math::Bounds2 measure(const math::Matrix4* m, const std::vector<bool>* visible) const;

    mutable math::Bounds2 extents_;
    mutable const Drawing* cacheDrawing_ = nullptr;
    mutable std::uint64_t cacheRevision_ = 0;  ///< of the own list, or of the drawing when other blocks count too
    mutable bool selfContained_ = false;
    mutable bool measured_ = false;
    mutable bool unbounded_ = false;
    mutable std::vector<Placed> placed_;
    mutable std::size_t nextPlaced_ = 0;
    friend class ShownStates;
    mutable std::shared_ptr<ShownStates> shownStates_;  ///< shapes under parameter values, see dynamic_block.hpp
};

/// The box around the corners of a box under a map; empty for an empty box.
math::Bounds2 boundsUnder(const math::Bounds2& box, const math::Matrix4& m);

}  // namespace kova::engine
