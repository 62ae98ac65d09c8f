#include "cmd/prompts/annotation_prompts.hpp"

#include "cmd/point_input.hpp"

namespace kova::cmd {

namespace {

struct Symbol {
    const char* word;
    const char* letter;
};
constexpr Symbol kSymbols[] = {
    {"POSITION", "j"},   {"CONCENTRICITY", "r"}, {"SYMMETRY", "i"}, {"PARALLELISM", "f"}, {"PERPENDICULARITY", "b"},
    {"ANGULARITY", "a"}, {"CYLINDRICITY", "g"},  {"FLATNESS", "c"}, {"CIRCULARITY", "e"}, {"STRAIGHTNESS", "u"},
    {"PSURFACE", "d"},   {"PLINE", "k"},         {"CRUNOUT", "h"},  {"TRUNOUT", "t"},
};

std::string conditionLetter(const Answer& answer) {
    return answer.is("MAX") ? "m" : answer.is("LEAST") ? "l" : answer.is("REGARDLESS") ? "s" : "";
}

/// A datum as typed: "A", or with its material condition "A(M)".
void takeDatum(std::string_view typed, std::string& datum, std::string& condition) {
    typed = trimmed(typed);
    if (typed.size() >= 4 && typed.back() == ')' && typed[typed.size() - 3] == '(') {
        const std::string letter = engine::foldCase(typed.substr(typed.size() - 2, 1));
        if (letter == "m" || letter == "l" || letter == "s") {
            condition = letter;
            typed = trimmed(typed.substr(0, typed.size() - 3));
        }
    }
    datum = typed;
}

/// The geometric symbol, or with `text` the whole content.
Ask::Awaiter askSymbol(Ask& ask, bool text) {
    std::string prompt =
        "Enter geometric symbol [POsition/Concentricity/SYmmetry/PArallelism/PErpendicularity/ANgularity/CYlindricity/"
        "FLatness/CIrcularity/STraightness/PSurface/PLine/CRunout/TRunout";
    std::string words =
        "POsition Concentricity SYmmetry PArallelism PErpendicularity ANgularity CYlindricity FLatness CIrcularity "
        "STraightness PSurface PLine CRunout TRunout";
    if (text) {
        prompt += "/teXt";
        words += " teXt";
    }
    return ask.keyword(prompt + "]:", words);
}

/// The further rows that have cells stand before the projected zone and the datum identifier.
std::ptrdiff_t countOfCellRows(const engine::ToleranceEntity& tolerance) {
    return std::count_if(tolerance.rows.begin(), tolerance.rows.end(),
                         [](const engine::ToleranceRow& row) { return !row.whole; });
}

}  // namespace

Task<bool> askTolerance(Ask& ask, engine::ToleranceEntity& tolerance) {
    const Answer symbol = co_await askSymbol(ask, true);
    if (symbol.is("TEXT")) {
        const Answer text = co_await ask.text("Enter tolerance text:");
        if (text.isText()) tolerance.setContentText(text.text);
        co_return text.isText();
    }
    engine::ToleranceRow row;
    for (const Symbol& known : kSymbols)
        if (symbol.is(known.word)) row.symbol = known.letter;
    co_await askToleranceRow(ask, row);
    tolerance.first = row;
    co_return !row.empty();
}

Dialogue askToleranceRow(Ask& ask, engine::ToleranceRow& row) {
    co_await askToleranceValue(ask, "Enter tolerance value 1:", row.toleranceValue, row.toleranceMC);
    const Answer first = co_await ask.text("Enter datum 1 <none>:");
    takeDatum(first.text, row.datum1, row.datum1MC);
    if (!first.isEnter()) {
        const Answer second = co_await ask.text("Enter datum 2 <none>:");
        takeDatum(second.text, row.datum2, row.datum2MC);
        if (!second.isEnter()) {
            const Answer third = co_await ask.text("Enter datum 3 <none>:");
            takeDatum(third.text, row.datum3, row.datum3MC);
        }
    }
}

Dialogue askSecondToleranceRow(Ask& ask, engine::ToleranceEntity& tolerance) {
    const Answer symbol = co_await askSymbol(ask, false);
    engine::ToleranceRow row;
    for (const Symbol& known : kSymbols)
        if (symbol.is(known.word)) row.symbol = known.letter;
    co_await askToleranceRow(ask, row);
    if (!row.empty()) tolerance.rows.insert(tolerance.rows.begin() + countOfCellRows(tolerance), row);
}

Dialogue askToleranceValue(Ask& ask, std::string prompt, std::string& value, std::string& condition) {
    const Answer typed = co_await ask.text(std::move(prompt));
    value = trimmed(typed.text);
    const Answer material = co_await ask.keyword("Enter material condition [Max/Least/Regardless/None] <None>:",
                                                 "Max Least Regardless None");
    condition = conditionLetter(material);
}

Task<std::string> askParagraphs(Ask& ask, std::string first, std::string next) {
    std::string content;
    std::string prompt = std::move(first);
    for (;;) {
        const Answer line = co_await ask.line(prompt);
        if (!line.isText()) co_return content;
        if (!content.empty()) content += "\\P";
        content += line.text;
        prompt = next;
    }
}

}  // namespace kova::cmd
