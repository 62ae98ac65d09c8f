#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "engine/model/color.hpp"
#include "engine/model/describe.hpp"

namespace kova::engine {

struct Layer {
    Name name;
    Color color = Color::index(7);
    std::int32_t lineweight = -3;  ///< hundredths of a millimetre; -3 default
    bool on = true;
    bool frozen = false;
    bool locked = false;
    bool plottable = true;
    std::int32_t transparency = 0;  ///< percent 0..90
    std::string description;
    Name linetype = commonNames().continuous;
    Name plotStyleName = commonNames().normal;

    /// Of the layers on which other programs keep what nobody is to see: the dimensions and backups of parametric
    /// constraints ("*ADSK_CONSTRAINTS"), system lights.
    bool isInternal() const;
    /// Shown and plotted at all: on and thawed, and not internal.
    bool isVisible() const { return on && !frozen && !isInternal(); }
    void describe(FieldVisitor& v);
};

enum class LayerFilterKind : std::uint8_t { Property, Group };

struct LayerFilter {
    Name name;
    LayerFilterKind kind = LayerFilterKind::Property;
    std::string parent;
    std::string expression;
    std::string namePattern;
    std::string onFilter;
    std::string frozenFilter;
    std::string lockedFilter;
    std::string colorFilter;
    std::vector<Name> members;

    void describe(FieldVisitor& v);
};

/// What a layer state keeps of one layer.
struct LayerStateEntry {
    bool on = true;
    bool frozen = false;
    bool locked = false;
    bool plottable = true;
    Color color = Color::index(7);
    std::int32_t lineweight = -3;
    std::int32_t transparency = 0;
    Name linetype = commonNames().continuous;
    std::string description;
    Name plotStyle = commonNames().normal;

    void describe(FieldVisitor& v);
};

/// Which properties a layer state restores.
struct LayerStateMask {
    bool on = true;
    bool frozen = true;
    bool locked = true;
    bool plottable = true;
    bool color = true;
    bool lineweight = true;
    bool transparency = true;
    bool linetype = true;
    bool description = true;
    bool plotStyle = true;

    void describe(FieldVisitor& v);
};

struct LayerState {
    Name name;
    std::string description;
    std::vector<std::pair<Name, LayerStateEntry>> layers;
    LayerStateMask mask;
};

}  // namespace kova::engine
