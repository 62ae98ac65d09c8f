#include "cmd/annotation_prompts.hpp"

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

}  // namespace

Task<bool> askTolerance(Ask& ask, engine::ToleranceEntity& tolerance) {
    const Answer symbol = co_await ask.keyword(
        "Enter geometric symbol [POsition/Concentricity/SYmmetry/PArallelism/PErpendicularity/ANgularity/CYlindricity/"
        "FLatness/CIrcularity/STraightness/PSurface/PLine/CRunout/TRunout/teXt]:",
        "POsition Concentricity SYmmetry PArallelism PErpendicularity ANgularity CYlindricity FLatness CIrcularity "
        "STraightness PSurface PLine CRunout TRunout teXt");
    if (symbol.is("TEXT")) {
        const Answer text = co_await ask.text("Enter tolerance text:");
        if (text.isText()) tolerance.setContentText(text.text);
        co_return text.isText();
    }
    engine::ToleranceRow row;
    for (const Symbol& known : kSymbols)
        if (symbol.is(known.word)) row.symbol = known.letter;
    const Answer value = co_await ask.text("Enter tolerance value 1:");
    row.toleranceValue = trimmed(value.text);
    const Answer condition = co_await ask.keyword("Enter material condition [Max/Least/Regardless/None] <None>:",
                                                  "Max Least Regardless None");
    row.toleranceMC = conditionLetter(condition);
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
    tolerance.first = row;
    co_return !row.empty();
}

Task<std::string> askParagraphs(Ask& ask, std::string first, std::string next) {
    std::string content;
    std::string prompt = std::move(first);
    for (;;) {
        const Answer line = co_await ask.text(prompt);
        if (!line.isText()) co_return content;
        if (!content.empty()) content += "\\P";
        content += line.text;
        prompt = next;
    }
}

}  // namespace kova::cmd
