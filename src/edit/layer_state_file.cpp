#include "edit/layer_state_file.hpp"

#include <algorithm>

#include "cmd/point_input.hpp"
#include "engine/symbols/symbols.hpp"

namespace kova::cmd {

using engine::Color;
using engine::LayerState;
using engine::LayerStateEntry;
using engine::LayerStateMask;
using engine::Name;

namespace {

struct MaskRow {
    int bit;
    bool LayerStateMask::*member;
};
constexpr MaskRow kMask[] = {
    {1, &LayerStateMask::on},           {2, &LayerStateMask::frozen},      {4, &LayerStateMask::locked},
    {8, &LayerStateMask::plottable},    {32, &LayerStateMask::color},      {64, &LayerStateMask::linetype},
    {128, &LayerStateMask::lineweight}, {256, &LayerStateMask::plotStyle}, {1024, &LayerStateMask::transparency},
};

/// A value stands on one line.
std::string oneLine(std::string text) {
    for (char& c : text)
        if (static_cast<unsigned char>(c) < ' ') c = ' ';
    return text;
}

class Lines {
public:
    explicit Lines(std::string_view text) : text_(text) {}
    bool next(std::string_view& line) {
        if (at_ >= text_.size()) return false;
        const std::size_t end = std::min(text_.find('\n', at_), text_.size());
        line = text_.substr(at_, end - at_);
        if (!line.empty() && line.back() == '\r') line.remove_suffix(1);
        at_ = end + 1;
        return true;
    }

private:
    std::string_view text_;
    std::size_t at_ = 0;
};

void takeGroup(LayerState& state, int code, std::string_view value, bool& inLayers) {
    const int number = parseInteger(value).value_or(0);
    if (code == 8) {
        inLayers = engine::isValidSymbolName(value);
        if (inLayers) state.layers.emplace_back(Name(std::string(value)), LayerStateEntry());
        return;
    }
    if (state.layers.empty()) {
        if (code == 1) state.name = Name(std::string(value));
        if (code == 301) state.description = value;
        if (code != 91) return;
        for (const MaskRow& row : kMask) state.mask.*row.member = (number & row.bit) != 0;
        state.mask.description = false;
        return;
    }
    if (!inLayers) return;
    LayerStateEntry& entry = state.layers.back().second;
    switch (code) {
        case 90:
            entry.on = (number & 1) == 0;
            entry.frozen = (number & 2) != 0;
            entry.locked = (number & 4) != 0;
            entry.plottable = (number & 8) == 0;
            break;
        case 62:
            if (number >= 1 && number <= 255) entry.color = Color::index(static_cast<std::uint8_t>(number));
            break;
        case 420:
            if (number >= 0 && number <= 0xFFFFFF)
                entry.color = Color::rgb(static_cast<std::uint8_t>(number >> 16),
                                         static_cast<std::uint8_t>(number >> 8), static_cast<std::uint8_t>(number));
            break;
        case 370:
            if (number >= -3 && number <= 211) entry.lineweight = number;
            break;
        case 6:
            if (!value.empty()) entry.linetype = Name(std::string(value));
            break;
        case 2:
            if (!value.empty()) entry.plotStyle = Name(std::string(value));
            break;
        case 440:
            entry.transparency = std::clamp(number, 0, 90);
            break;
        default:
            break;
    }
}

}  // namespace

std::string layerStateText(const LayerState& state) {
    std::string out;
    const auto put = [&](int code, std::string value) {
        out += std::to_string(code) + "\n" + oneLine(std::move(value)) + "\n";
    };
    put(0, "LAYERSTATEDICTIONARY");
    put(0, "LAYERSTATE");
    put(1, state.name.str());
    int mask = 0;
    for (const MaskRow& row : kMask)
        if (state.mask.*row.member) mask |= row.bit;
    put(91, std::to_string(mask));
    put(301, state.description);
    for (const auto& [name, entry] : state.layers) {
        put(8, name.str());
        put(90, std::to_string((entry.on ? 0 : 1) | (entry.frozen ? 2 : 0) | (entry.locked ? 4 : 0) |
                               (entry.plottable ? 0 : 8)));
        put(62, std::to_string(std::clamp(entry.color.bareIndex(), 1, 255)));
        if (entry.color.method == engine::ColorMethod::RGB)
            put(420, std::to_string(entry.color.red << 16 | entry.color.green << 8 | entry.color.blue));
        put(370, std::to_string(entry.lineweight));
        put(6, entry.linetype.str());
        put(2, entry.plotStyle.str());
        put(440, std::to_string(entry.transparency));
    }
    return out;
}

std::vector<LayerState> parseLayerStates(std::string_view text) {
    std::vector<LayerState> states;
    bool reading = false;
    bool inLayers = false;
    Lines lines(text);
    std::string_view codeLine;
    std::string_view value;
    while (lines.next(codeLine) && lines.next(value)) {
        const auto code = parseInteger(codeLine);
        if (!code) return {};
        value = trimmed(value);
        if (*code == 0) {
            reading = value == "LAYERSTATE";
            inLayers = false;
            if (reading) states.emplace_back();
        } else if (reading) {
            takeGroup(states.back(), *code, value, inLayers);
        }
    }
    std::erase_if(states, [](const LayerState& s) { return !engine::isValidSymbolName(s.name.view()); });
    return states;
}

}  // namespace kova::cmd
