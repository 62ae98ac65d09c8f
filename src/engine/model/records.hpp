#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "engine/model/describe.hpp"
#include "engine/model/entity_list.hpp"
#include "math/bounds2.hpp"

namespace kova::engine {

struct Group {
    Name name;
    std::string description;
    bool selectable = true;
    std::vector<std::uint64_t> memberHandles;

    void describe(FieldVisitor& v);
};

/// A named user coordinate system: origin and unit axes in world coordinates.
struct Ucs {
    Name name;
    math::Vector2 origin;
    math::Vector2 xAxis{1, 0};
    math::Vector2 yAxis{0, 1};

    bool isWorld() const { return origin == math::Vector2{} && xAxis == math::Vector2{1, 0} && yAxis == math::Vector2{0, 1}; }
    math::Vector2 toWorld(const math::Vector2& p) const { return origin + xAxis * p.x + yAxis * p.y; }
    math::Vector2 directionToWorld(const math::Vector2& d) const { return xAxis * d.x + yAxis * d.y; }
    /// World coordinates in this system (axes need not be orthogonal); the point itself for a degenerate frame.
    math::Vector2 fromWorld(const math::Vector2& p) const;
    void describe(FieldVisitor& v);
    friend bool operator==(const Ucs&, const Ucs&) = default;
};

struct NamedView {
    Name name;
    math::Vector2 center;
    double width = 0.0;
    double height = 0.0;
    double zoom = 1.0;
    math::Vector3 viewDirection{0, 0, 1};
    math::Vector3 target;
    math::Vector3 upHint{0, 1, 0};

    void describe(FieldVisitor& v);
    friend bool operator==(const NamedView&, const NamedView&) = default;
};

struct AnnotationScale {
    Name name;
    double paperUnits = 1.0;
    double drawingUnits = 1.0;

    void describe(FieldVisitor& v);
};

/// How a layout is plotted. Paper sizes, margins and offsets in millimetres.
struct PageSetup {
    Name name;
    double paperWidth = 420.0;
    double paperHeight = 297.0;
    bool landscape = true;
    /// What one unit of the sheet is, and what scalePaper counts: 0 inches, 1 millimetres, 2 pixels. All other sizes
    /// here are millimetres whatever the unit.
    std::int32_t paperUnits = 1;
    double marginLeft = 7.5;
    double marginRight = 7.5;
    double marginTop = 7.5;
    double marginBottom = 7.5;
    std::string plotDevice;
    std::string paperSizeName = "ISO A3";
    std::int32_t plotArea = 5;   ///< 0 display, 1 extents, 2 limits, 3 view, 4 window, 5 layout
    std::int32_t scaleType = 16;  ///< 0 fit, 16 one to one, else a standard scale; see scalePaper
    double scalePaper = 1.0;
    double scaleDrawing = 1.0;
    double offsetX = 0.0;
    double offsetY = 0.0;
    bool centerOnPage = false;
    std::string plotStyleTable;
    bool plotWithLineweights = true;
    bool plotTransparency = false;
    std::int32_t dpi = 300;

    /// Millimetres of a paper unit; a pixel, which has no size of its own, counts as one.
    double paperUnit() const { return paperUnits == 0 ? 25.4 : 1.0; }
    /// The sheet in units of the layout, its lower left corner at the origin.
    math::Bounds2 sheet() const { return {{0.0, 0.0}, math::Vector2{paperWidth, paperHeight} / paperUnit()}; }

    void describe(FieldVisitor& v);
};

/// A paper-space layout and its entities.
struct Layout {
    explicit Layout(Name n) : name(n) {}
    Name name;
    std::int32_t tabOrder = 1;
    PageSetup pageSetup;
    std::uint64_t handle = 0;  ///< of the layout's block record in DXF and DWG; 0: none yet
    EntityList entities;
};

/// One family of parallel lines of a hatch pattern. Angles radians, lengths drawing units; `shift` is along and
/// across the family's own direction, as in a .pat line.
struct HatchFamily {
    double angle = 0.0;
    math::Vector2 origin;
    math::Vector2 shift;
    std::vector<double> dashes;  ///< positive line, negative gap, 0 dot; empty: continuous

    void describe(FieldVisitor& v);
};

struct HatchPattern {
    Name name;
    std::string description;
    std::vector<HatchFamily> families;

    void describe(FieldVisitor& v);
};

/// A named entry of the named-object dictionary: a tree of dictionaries and opaque records.
struct DictionaryEntry {
    Name name;
    std::string type;                        ///< "DICTIONARY", "XRECORD", or the class of an opaque object
    std::uint64_t handle = 0;
    std::vector<std::string> data;           ///< group code and value alternating, as text
    std::vector<DictionaryEntry> entries;    ///< of a dictionary

    void describe(FieldVisitor& v);
};

}  // namespace kova::engine
