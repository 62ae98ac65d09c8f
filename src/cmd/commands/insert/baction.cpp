#include "edit/block_editing.hpp"
#include "cmd/dialogue.hpp"
#include "edit/new_entities.hpp"
#include "engine/inquiry/value_text.hpp"
#include "cmd/prompts/name_prompts.hpp"
#include "cmd/point_input.hpp"
#include "cmd/registry.hpp"
#include "cmd/prompts/text_or_point.hpp"
#include "engine/entities/dynamic_block.hpp"
#include "math/angles.hpp"

namespace kova::cmd::commands {

namespace {

using engine::DynAction;
using engine::DynActionKind;
using engine::DynParameter;
using engine::DynParameterKind;
using math::Vector2;

constexpr std::size_t kMostActions = 1000;

/// How the prompts name the kinds, with their short forms.
constexpr std::pair<DynActionKind, const char*> kWords[] = {
    {DynActionKind::Array, "Array"},     {DynActionKind::Flip, "Flip"},
    {DynActionKind::Lookup, "Lookup"},   {DynActionKind::Move, "Move"},
    {DynActionKind::Rotate, "Rotate"},   {DynActionKind::Scale, "Scale"},
    {DynActionKind::Stretch, "sTretch"}, {DynActionKind::PolarStretch, "Polar stretch"},
};

/// BACTION and BACTIONTOOL: what parameters do to the objects of the block in the editor.
class BactionTool : public DialogueTool {
public:
    explicit BactionTool(bool typeFirst = false) : typeFirst_(typeFirst) {}

protected:
    Dialogue dialogue(Ask& ask) override {
        const std::string refusal = editorRefusal(document(), label());
        if (!refusal.empty()) co_return message(refusal);
        if (typeFirst_) {
            co_await askType(ask, DynParameterKind::Unknown);
            if (kind_ == DynActionKind::Unknown) co_return;
        }
        const bool chosen = co_await askParameter(ask);
        if (!chosen) co_return;
        if (!typeFirst_) co_await askType(ask, parameterKind());
        if (kind_ == DynActionKind::Unknown) co_return;
        const bool given = co_await askDetails(ask);
        if (given) commit();
    }

private:
    const char* label() const { return typeFirst_ ? "BACTIONTOOL" : "BACTION"; }
    const engine::Block& block() const { return *drawing().editedBlock(); }
    bool isOpen() const { return drawing().editedBlock() != nullptr && index_ < block().dynParams.size(); }
    const DynParameter& parameter() const { return block().dynParams[index_]; }
    DynParameterKind parameterKind() const { return isOpen() ? kindOf(parameter()) : DynParameterKind::Unknown; }

    bool takesActions(DynParameterKind parameter) const {
        return std::any_of(std::begin(kWords), std::end(kWords), [&](const auto& row) {
            return (kind_ == DynActionKind::Unknown || kind_ == row.first) && fits(row.first, parameter);
        });
    }

    /// The parameter of a name, else the one nearest to a typed point.
    Task<bool> askParameter(Ask& ask) {
        for (;;) {
            const Answer answer = co_await ask.text("Select parameter:", "?");
            if (answer.isEnter() || drawing().editedBlock() == nullptr) co_return false;
            if (answer.is("?")) {
                list();
                continue;
            }
            std::optional<std::size_t> found = findParameter(typedName(answer.text));
            bool told = false;
            if (!found && !parseNumber(answer.text)) {
                const PointOfText at = co_await pointOfText(ask, document(), answer.text, ask.lastPoint());
                if (drawing().editedBlock() == nullptr) co_return false;
                if (at.point) found = nearestParameter(*at.point);
                told = at.told;
            }
            if (told) continue;
            if (!found) {
                message("Parameter " + inQuotes(typedName(answer.text)) + " not found.");
            } else if (!takesActions(kindOf(block().dynParams[*found]))) {
                message("Parameter " + inQuotes(block().dynParams[*found].name) + " cannot have such an action.");
            } else {
                index_ = *found;
                co_return true;
            }
        }
    }

    /// The parameter of a name.
    std::optional<std::size_t> findParameter(const std::string& text) const {
        const auto& all = block().dynParams;
        for (std::size_t i = 0; i < all.size(); ++i)
            if (engine::equalNoCase(all[i].name, text)) return i;
        return std::nullopt;
    }

    /// The one nearest to a point, of those that can have such an action.
    std::optional<std::size_t> nearestParameter(const math::Vector2& point) const {
        const auto& all = block().dynParams;
        std::optional<std::size_t> best;
        double least = std::numeric_limits<double>::infinity();
        for (std::size_t i = 0; i < all.size(); ++i) {
            const double d = std::min(all[i].base.distance_to(point), all[i].endPoint.distance_to(point));
            if (!(d < least) || !takesActions(kindOf(all[i]))) continue;
            least = d;
            best = i;
        }
        return best;
    }

    void list() const {
        if (block().dynActions.empty()) message("The block has no actions.");
        for (const DynParameter& p : block().dynParams) message("  " + inQuotes(p.name) + "  " + p.type);
        for (const DynAction& action : block().dynActions) {
            const auto of = static_cast<std::size_t>(action.parameterIndex);
            message("    " + inQuotes(action.name) + "  " + action.type + " of " +
                    inQuotes(of < block().dynParams.size() ? block().dynParams[of].name : std::string()) + ", " +
                    counted(action.affectedEntityIndices.size(), "object"));
        }
    }

    /// The kind of action; Unknown parameter: any.
    Dialogue askType(Ask& ask, DynParameterKind of) {
        std::string shown;
        std::string words;
        std::size_t count = 0;
        for (const auto& [kind, word] : kWords) {
            if (of != DynParameterKind::Unknown && !fits(kind, of)) continue;
            shown += (count == 0 ? "" : "/") + std::string(word);
            words += (count++ == 0 ? "" : " ") + std::string(kind == DynActionKind::PolarStretch ? "Polar" : word);
            kind_ = kind;
        }
        if (count <= 1) co_return;
        const Answer answer = co_await ask.keyword("Enter action type [" + shown + "]:", words);
        kind_ = DynActionKind::Unknown;
        for (const auto& [kind, word] : kWords)
            if (answer.is(kind == DynActionKind::PolarStretch ? "POLAR" : word)) kind_ = kind;
    }

    // What the action needs ------------------------------------------------------------------------------------

    Task<bool> askDetails(Ask& ask) {
        const DynParameterKind of = parameterKind();
        const bool moves =
            kind_ == DynActionKind::Move || kind_ == DynActionKind::Stretch || kind_ == DynActionKind::PolarStretch;
        if (moves && of != DynParameterKind::Point) {
            const Answer at = co_await ask.point(
                "Specify parameter point to associate with action or enter [sTart point/Second point] <Second>:",
                "sTart Second");
            if (!isOpen()) co_return false;
            made_.atStartPoint = at.is("START");
            if (at.isPoint())
                made_.atStartPoint =
                    at.point.distance_to(parameter().base) < at.point.distance_to(parameter().endPoint);
        }
        if (kind_ == DynActionKind::Stretch || kind_ == DynActionKind::PolarStretch) {
            const bool framed = co_await askFrame(ask);
            if (!framed) co_return false;
        }
        if (kind_ != DynActionKind::Lookup) {
            if (!made_.stretchFrame.empty()) message("Specify objects to stretch");
            const Answer objects = co_await ask.selection();
            if (objects.ids.empty()) {
                message("No objects selected.");
                co_return false;
            }
            chosen_ = objects.ids;
        }
        if (kind_ == DynActionKind::Array) {
            const bool spaced = co_await askSpacing(ask, of == DynParameterKind::XY);
            if (!spaced) co_return false;
        }
        if (kind_ == DynActionKind::Scale) {
            if (!isOpen()) co_return false;
            made_.scaleBase = parameter().base;
            const Answer base = co_await ask.keyword("Specify action base type [Dependent/Independent] <Dependent>:",
                                                     "Dependent Independent");
            if (base.is("INDEPENDENT")) {
                const Answer at = co_await ask.point("Specify base point location:");
                if (at.isPoint()) made_.scaleBase = at.point;
            }
        }
        if (of == DynParameterKind::XY && kind_ != DynActionKind::Array) {
            const Answer axis = co_await ask.keyword("Enter XY distance type [X/Y/XY] <XY>:", "X Y XY");
            made_.constrainToAxis = axis.is("X") || axis.is("Y");
            made_.axisAngle = axis.is("Y") ? math::kPi / 2.0 : 0.0;
        }
        co_return true;
    }

    Task<bool> askFrame(Ask& ask) {
        const Answer first = co_await ask.point("Specify first corner of stretch frame or [CPolygon]:", "CPolygon");
        if (first.isPoint()) {
            const Answer other = co_await ask.point("Specify opposite corner:", {}, first.point);
            if (!other.isPoint()) co_return false;
            made_.stretchFrame.push_back(first.point);
            made_.stretchFrame.push_back({other.point.x, first.point.y});
            made_.stretchFrame.push_back(other.point);
            made_.stretchFrame.push_back({first.point.x, other.point.y});
            co_return true;
        }
        if (first.isEnter()) co_return false;
        for (;;) {
            const char* prompt =
                made_.stretchFrame.empty() ? "Specify first polygon point:" : "Specify endpoint of line or [Undo]:";
            const char* words = made_.stretchFrame.empty() ? "" : "Undo";
            const Answer next = co_await ask.point(prompt, words);
            if (next.isPoint()) {
                if (made_.stretchFrame.size() < 10'000) made_.stretchFrame.push_back(next.point);
            } else if (next.is("UNDO")) {
                made_.stretchFrame.pop_back();
            } else {
                co_return made_.stretchFrame.size() >= 3;
            }
        }
    }

    Task<bool> askSpacing(Ask& ask, bool rows) {
        if (rows) {
            const Answer between =
                co_await ask.distance("Enter the distance between rows (---):", {}, std::nullopt, kPositive);
            if (!between.isNumber()) co_return false;
            made_.arrayRowSpacing = between.number;
        }
        const Answer between =
            co_await ask.distance("Enter the distance between columns (|||):", {}, std::nullopt, kPositive);
        made_.arraySpacing = between.numberOr(0.0);
        co_return between.isNumber();
    }

    // The change -----------------------------------------------------------------------------------------------

    void commit() {
        if (!isOpen() || !fits(kind_, kindOf(parameter()))) return;
        if (block().dynActions.size() >= kMostActions) return message("The block has too many actions.");
        made_.type = wordOf(kind_);
        made_.parameterIndex = static_cast<std::int32_t>(index_);
        for (std::size_t n = 1; made_.name.empty(); ++n) {
            const std::string name = made_.type + std::to_string(n);
            if (std::none_of(block().dynActions.begin(), block().dynActions.end(),
                             [&](const DynAction& action) { return engine::equalNoCase(action.name, name); }))
                made_.name = name;
        }
        changeEditedBlock(document(), label(), [&](engine::Block& b, doc::BlockEdit& edit) {
            made_.affectedEntityIndices = numbersOf(edit, chosen_);
            b.isDynamic = true;
            b.dynActions.push_back(made_);
        });
        message("Action " + inQuotes(made_.name) + " added to " + inQuotes(parameter().name) + ".");
    }

    bool typeFirst_;
    std::size_t index_ = 0;
    DynActionKind kind_ = DynActionKind::Unknown;
    DynAction made_;
    std::vector<std::uint64_t> chosen_;
};

class BactiontoolTool final : public BactionTool {
public:
    BactiontoolTool() : BactionTool(true) {}
};

}  // namespace

KOVA_TOOL_COMMAND(Baction, "BACTION", "Block Action", "Insert", {"AC"})
KOVA_TOOL_COMMAND(Bactiontool, "BACTIONTOOL", "Block Action Tool", "Insert")

}  // namespace kova::cmd::commands
