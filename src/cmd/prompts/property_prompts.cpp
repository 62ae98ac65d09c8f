#include "cmd/prompts/property_prompts.hpp"

#include "doc/table_edits.hpp"
#include "engine/libraries/libraries.hpp"
#include "engine/model/name.hpp"
#include "strings/numbers.hpp"

namespace kova::cmd {

namespace {

constexpr int kLineweights[] = {0,  5,  9,  13, 15, 18,  20,  25,  30,  35,  40,  50,
                                53, 60, 70, 80, 90, 100, 106, 120, 140, 158, 200, 211};

}  // namespace

Task<std::optional<engine::Color>> askColor(Ask& ask, std::string prompt, bool byValue) {
    for (;;) {
        Answer answer = co_await ask.text(prompt, "Truecolor COlorbook");
        if (answer.isEnter()) co_return std::nullopt;
        if (answer.is("COLORBOOK")) {
            ask.message("Color books are not available here.");
            continue;
        }
        if (answer.is("TRUECOLOR")) {
            answer = co_await ask.text("Red,Green,Blue:");
            if (answer.isEnter()) continue;
        }
        const std::optional<engine::Color> color = engine::parseColor(answer.text);
        const bool given =
            color && (color->method == engine::ColorMethod::ACI || color->method == engine::ColorMethod::RGB);
        if (given || (color && !byValue)) co_return color;
        const bool number = parseNumber(answer.text).has_value();
        if (color)
            ask.message("Invalid color. Enter 1-255:");
        else
            ask.message(number ? "Invalid color. Enter ByLayer/ByBlock/1-255:" : "Invalid color format. Enter color:");
    }
}

std::span<const int> lineweights() { return kLineweights; }

std::string lineweightText(int lineweight) {
    switch (lineweight) {
        case -1:
            return "ByLayer";
        case -2:
            return "ByBlock";
        case -3:
            return "Default";
        default:
            return strings::shortest(lineweight / 100.0) + " mm";
    }
}

std::optional<int> parseLineweight(std::string_view text) {
    text = trimmed(text);
    if (engine::equalNoCase(text, "ByLayer")) return -1;
    if (engine::equalNoCase(text, "ByBlock")) return -2;
    if (engine::equalNoCase(text, "Default")) return -3;
    if (text.size() > 2 && engine::equalNoCase(text.substr(text.size() - 2), "mm")) text.remove_suffix(2);
    const auto millimetres = parseNumber(text);
    if (!millimetres || !(*millimetres >= 0.0 && *millimetres <= 2.11)) return std::nullopt;
    const double wanted = *millimetres * 100.0;
    return *std::min_element(std::begin(kLineweights), std::end(kLineweights),
                             [&](int a, int b) { return std::abs(a - wanted) < std::abs(b - wanted); });
}

const engine::Linetype* useLinetype(doc::Document& document, engine::Name name) {
    engine::Drawing& drawing = document.drawing();
    if (const engine::Linetype* known = drawing.linetypes.find(name)) return known;
    for (const engine::Linetype& linetype : engine::builtinLinetypes(drawing.isMetric())) {
        if (!(linetype.name == name)) continue;
        document.editTable<doc::LineTypeTraits>([&](engine::Table<engine::Linetype>& table) { table.add(linetype); });
        return drawing.linetypes.find(name);
    }
    return nullptr;
}

}  // namespace kova::cmd
