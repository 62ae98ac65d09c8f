#include "cmd/dialogue.hpp"
#include "edit/new_entities.hpp"
#include "edit/duplicates.hpp"
#include "engine/inquiry/value_text.hpp"
#include "cmd/registry.hpp"
#include "strings/numbers.hpp"

namespace kova::cmd::commands {

namespace {

/// A number without an exponent.
std::string plainNumber(double value) {
    std::string out = strings::fixed(value, value < 1e-12 ? 20 : 12);
    while (out.back() == '0') out.pop_back();
    if (out.back() == '.') out.pop_back();
    return out;
}

/// OVERKILL: removes duplicates and puts overlapping lines and arcs together.
class OverkillTool final : public DialogueTool {
protected:
    Dialogue dialogue(Ask& ask) override {
        const Answer selected = co_await ask.selection();
        if (selected.ids.empty()) co_return;
        for (;;) {
            const Answer option = co_await ask.keyword(
                "Enter an option to change [Done/Ignore/tOlerance/optimize Plines/combine parTial overlap/combine "
                "Endtoend/Associativity] <Done>:",
                "Done Ignore tOlerance optimizePlines combineparTial combineEndtoend Associativity");
            if (option.isEnter() || option.is("DONE")) break;
            if (option.is("IGNORE")) {
                co_await askIgnore(ask);
            } else if (option.is("TOLERANCE")) {
                std::string prompt =
                    withDefault("Specify tolerance for numeric comparisons", plainNumber(rules_.tolerance));
                const Answer answer = co_await ask.number(std::move(prompt), {}, kNotNegative);
                rules_.tolerance = answer.numberOr(rules_.tolerance);
            } else if (option.is("OPTIMIZEPLINES")) {
                co_await askPolylines(ask);
            } else if (option.is("COMBINEPARTIAL")) {
                rules_.partialOverlap =
                    co_await askYesNo(ask, "Combine collinear objects that partially overlap [Yes/No] <Yes>:", true);
            } else if (option.is("COMBINEENDTOEND")) {
                rules_.endToEnd =
                    co_await askYesNo(ask, "Combine collinear objects when aligned end to end [Yes/No] <Yes>:", true);
            } else {
                rules_.keepAssociated = co_await askYesNo(ask, "Maintain associative objects [Yes/No] <Yes>:", true);
            }
        }
        DuplicateCounts counts;
        {
            const doc::GroupScope group(document(), "OVERKILL");
            counts = removeDuplicates(document(), selected.ids, rules_);
        }
        message(std::to_string(counts.duplicates) + " duplicate(s) deleted.");
        message(std::to_string(counts.overlaps) + " overlapping object(s) or segment(s) deleted.");
    }

private:
    Dialogue askPolylines(Ask& ask) {
        for (;;) {
            const Answer option =
                co_await ask.keyword("Optimize segments within plines [segment wiDth/Break polyline/Yes/No] <Yes>:",
                                     "segmentwiDth Breakpolyline Yes No");
            if (option.is("SEGMENTWIDTH")) {
                rules_.ignoreWidths = co_await askYesNo(ask, "Ignore polyline segment widths [Yes/No] <No>:", false);
            } else if (option.is("BREAKPOLYLINE")) {
                rules_.breakPolylines = co_await askYesNo(ask, "Break polylines [Yes/No] <Yes>:", true);
            } else {
                rules_.optimizePolylines = !option.is("NO");
                co_return;
            }
        }
    }
    Dialogue askIgnore(Ask& ask) {
        const Answer answer = co_await ask.keyword(
            "Enter object properties to ignore "
            "[None/All/Color/LAyer/Ltype/ltScale/LWeight/Thickness/TRansparency/plotSTyle/Material] <None>:",
            "None All Color LAyer Ltype ltScale LWeight Thickness TRansparency plotSTyle Material");
        struct Row {
            const char* keyword;
            unsigned bits;
        };
        static constexpr Row kRows[] = {
            {"ALL", DuplicateRules::kAllProperties},     {"COLOR", DuplicateRules::kColor},
            {"LAYER", DuplicateRules::kLayer},           {"LTYPE", DuplicateRules::kLinetype},
            {"LTSCALE", DuplicateRules::kLinetypeScale}, {"LWEIGHT", DuplicateRules::kLineweight},
            {"THICKNESS", DuplicateRules::kThickness},   {"TRANSPARENCY", DuplicateRules::kTransparency},
            {"PLOTSTYLE", DuplicateRules::kPlotStyle}};
        if (answer.isEnter() || answer.is("NONE")) rules_.ignore = 0;
        for (const Row& row : kRows)
            if (answer.is(row.keyword)) rules_.ignore |= row.bits;
    }

    DuplicateRules rules_;
};

}  // namespace

KOVA_TOOL_COMMAND(Overkill, "OVERKILL", "Remove Duplicates", "Modify")

}  // namespace kova::cmd::commands
