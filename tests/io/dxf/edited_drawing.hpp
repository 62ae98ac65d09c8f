#pragma once

#include <functional>
#include <iomanip>
#include <sstream>

#include "engine/model/drawing.hpp"
#include "engine/entities/dimensions/dimension.hpp"
#include "engine/entities/hatch.hpp"
#include "io/dxf/dxf_tools.hpp"
#include "math/angles.hpp"

// Drawings with own data, and what another program does to their files.

namespace kova::test {

inline std::string joined(const std::vector<DxfGroup>& groups) {
    std::string text;
    for (const DxfGroup& g : groups) text += std::to_string(g.code) + "\n" + g.value + "\n";
    return text;
}

/// Calls change(type, group) for the groups of the ENTITIES section that stand before extended data.
inline std::string changedEntities(const std::string& text,
                            const std::function<void(const std::string& type, DxfGroup& group)>& change) {
    std::vector<DxfGroup> groups = dxfGroups(text);
    bool inside = false;
    bool xdata = false;
    std::string type;
    for (DxfGroup& g : groups) {
        if (g.code == 0) {
            type = g.value;
            xdata = false;
        }
        if (g.code == 2 && g.value == "ENTITIES" && type == "SECTION") inside = true;
        if (type == "ENDSEC") inside = false;
        xdata = xdata || g.code == 1001;
        if (inside && !xdata) change(type, g);
    }
    return joined(groups);
}

inline std::string shifted(const std::string& value, double by) {
    std::ostringstream out;
    out << std::setprecision(17) << std::stod(value) + by;
    return out.str();
}

/// A hatch whose loops need own data (an elliptic edge) and a diameter dimension whose line does.
inline void addMovables(engine::Drawing& drawing) {
    using namespace engine;
    auto hatch = std::make_unique<HatchEntity>();
    HatchLoop loop;
    HatchEllipseEdge edge;
    edge.center = {5, 5};
    edge.u = {4, 0};
    edge.v = {0, 2};
    edge.t0 = 0.0;
    edge.t1 = 2.0 * math::kPi;
    loop.edges.push_back(edge);
    hatch->loops.push_back(loop);
    drawing.modelSpace().append(std::move(hatch));
    auto diameter = std::make_unique<DimensionEntity>();
    diameter->subType = DimensionType::Diameter;
    diameter->def1 = {10, 0};
    diameter->def2 = {20, 0};
    diameter->dimLine = {15, 3};
    diameter->inspectLabel = "A";
    drawing.modelSpace().append(std::move(diameter));
}

/// The file with that hatch and dimension moved by (100, 50).
inline std::string movedElsewhere(const std::string& text) {
    return changedEntities(text, [](const std::string& type, DxfGroup& g) {
        const bool hatch = type == "HATCH" && (g.code == 10 || g.code == 20);
        const bool dimension = type == "DIMENSION" && g.code >= 10 && g.code < 27;
        // The ellipse's axis and the normal are directions; the point of the elevation stays.
        if ((hatch && g.value != "0.0") || dimension) g.value = shifted(g.value, g.code < 20 ? 100.0 : 50.0);
    });
}

}  // namespace kova::test
