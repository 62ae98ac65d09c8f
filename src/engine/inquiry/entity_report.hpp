#pragma once

#include <optional>
#include <string>
#include <vector>

#include "engine/model/drawing.hpp"

namespace kova::cmd {

/// What LIST tells of an entity: type, layer, space, handle, properties that are its own, then geometry; all lengths in
/// the drawing's units and all points in its current coordinate system.
std::vector<std::string> entityReport(const engine::Drawing& drawing, const engine::Entity& entity);

/// An area as reports show it: in feet and inches as "100.00 square in. (0.69 square ft.)", else like a length.
std::string areaText(const engine::Drawing& drawing, double area);
/// A volume in the same manner.
std::string volumeText(const engine::Drawing& drawing, double volume);

/// Area and outline of what encloses one; open curves are closed by a straight line for the area alone.
struct EntityArea {
    double area = 0.0;
    double perimeter = 0.0;
    bool circle = false;  ///< its outline is called a circumference
    bool open = false;    ///< its perimeter is a length
};
/// Nothing for kinds without an area (lines, texts, dimensions ...).
std::optional<EntityArea> entityArea(const engine::Entity& entity);

/// The length of a line, arc, polyline or other curve; nothing for other kinds.
std::optional<double> entityLength(const engine::Entity& entity);

}  // namespace kova::cmd
