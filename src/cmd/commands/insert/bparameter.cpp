#include "edit/block_editing.hpp"
#include "cmd/dialogue.hpp"
#include "edit/new_entities.hpp"
#include "engine/inquiry/value_text.hpp"
#include "cmd/prompts/name_prompts.hpp"
#include "cmd/point_input.hpp"
#include "cmd/registry.hpp"
#include "engine/entities/dynamic_block.hpp"
#include "math/angles.hpp"

namespace kova::cmd::commands {

namespace {

using engine::DynParameter;
using engine::DynParameterKind;
using math::Vector2;

constexpr std::size_t kMostParameters = 1000;

/// BPARAMETER: the parameters of the block in the editor.
class BparameterTool final : public DialogueTool {
protected:
    Dialogue dialogue(Ask& ask) override {
        const std::string refusal = editorRefusal(document(), "BPARAMETER");
        if (!refusal.empty()) co_return message(refusal);
        const Answer type = co_await ask.keyword(
            "Enter parameter type [Alignment/Base/pOint/Linear/Polar/XY/Rotation/Flip/Visibility/looKup/Delete/?]:",
            "Alignment Base pOint Linear Polar XY Rotation Flip Visibility looKup Delete ?");
        if (type.isEnter()) co_return;
        if (type.is("?")) co_return list();
        if (type.is("DELETE")) {
            co_await askDelete(ask);
            co_return;
        }
        made_.type = type.word;
        kind_ = engine::kindOf(made_);
        made_.type = engine::wordOf(kind_);
        const std::string once = onlyOnce();
        if (!once.empty()) co_return message(once);
        made_.name = freshName();
        const bool given = co_await askGeometry(ask);
        if (given) commit();
    }

private:
    const engine::Block& block() const { return *drawing().editedBlock(); }

    // Names ----------------------------------------------------------------------------------------------------

    bool isTaken(const std::string& name) const {
        for (const DynParameter& p : block().dynParams)
            if (engine::equalNoCase(p.name, name)) return true;
        for (const engine::DynProperty& property : engine::dynProperties(block()))
            if (engine::equalNoCase(property.name, name)) return true;
        return false;
    }

    /// No value of the parameter would have a name that is in use.
    bool isFree(const std::string& name) const {
        for (const char* part : {"", " X", " Y", " angle"})
            if (isTaken(name + part)) return false;
        return true;
    }

    std::string freshName() const {
        static constexpr const char* kStems[] = {"",           "Alignment",  "Base Point", "Position",
                                                 "Distance",   "Distance",   "Distance",   "Angle",
                                                 "Flip state", "Visibility", "Lookup"};
        const std::string stem = kStems[static_cast<std::size_t>(kind_)];
        for (std::size_t n = 1;; ++n)
            if (std::string name = stem + std::to_string(n); isFree(name)) return name;
    }

    std::string onlyOnce() const {
        if (block().dynParams.size() >= kMostParameters) return "The block has too many parameters.";
        if (kind_ != DynParameterKind::Visibility && kind_ != DynParameterKind::Base) return {};
        for (const DynParameter& p : block().dynParams)
            if (engine::kindOf(p) == kind_)
                return kind_ == DynParameterKind::Base ? "The block has a base point parameter already."
                                                       : "The block has a visibility parameter already.";
        return {};
    }

    // Geometry -------------------------------------------------------------------------------------------------

    bool hasValueSet() const {
        return kind_ == DynParameterKind::Linear || kind_ == DynParameterKind::Polar || kind_ == DynParameterKind::XY ||
               kind_ == DynParameterKind::Rotation;
    }
    bool hasMidpoint() const { return kind_ == DynParameterKind::Linear || kind_ == DynParameterKind::XY; }

    /// The first point, behind the options; false: ended.
    Task<bool> askStart(Ask& ask, const char* what) {
        std::string options = "Name/Label/Palette";
        if (hasMidpoint()) options += "/Base";
        if (hasValueSet()) options += "/Value set";
        const std::string prompt = std::string("Specify ") + what + " or [" + options + "]:";
        std::string words = "Name Label Palette";
        if (hasMidpoint()) words += " Base";
        if (hasValueSet()) words += " Value";
        for (;;) {
            const Answer answer = co_await ask.point(prompt, words);
            if (answer.isEnter()) co_return false;
            if (answer.isPoint()) {
                made_.base = answer.point;
                co_return true;
            }
            if (answer.is("PALETTE")) {
                made_.showProperties =
                    co_await askYesNo(ask, "Display property in Properties palette? [Yes/No] <Yes>:", true);
            } else if (answer.is("BASE")) {
                const Answer base = co_await ask.keyword("Enter base location [Startpoint/Midpoint] <Startpoint>:",
                                                         "Startpoint Midpoint");
                made_.baseAtMidpoint = base.is("MIDPOINT");
            } else if (answer.is("VALUE")) {
                co_await askValueSet(ask);
            } else {
                // One name serves for both: it is what references show.
                std::string question =
                    withDefault("Enter parameter " + std::string(answer.is("NAME") ? "name" : "label"), made_.name);
                const Answer name = co_await ask.text(std::move(question));
                const std::string text = name.isEnter() ? made_.name : typedName(name.text);
                if (text.empty() || !isFree(text))
                    message("The name " + inQuotes(text) + " is in use.");
                else
                    made_.name = text;
            }
        }
    }

    Dialogue askValueSet(Ask& ask) {
        const bool angles = kind_ == DynParameterKind::Rotation;
        const std::string noun(angles ? "angle" : "distance");
        const Answer set = co_await ask.keyword("Enter " + noun + " value set type [None/List/Increment] <None>:",
                                                "None List Increment");
        made_.constraint = 0;
        made_.increment = 0.0;
        made_.valueList.clear();
        const double unit = angles ? math::kDegree : 1.0;
        if (set.is("LIST")) {
            for (;;) {
                const Answer answer = co_await ask.text("Enter list of " + noun + " values (separated by commas):");
                if (answer.isEnter()) co_return;
                const std::vector<double> values = numbers(answer.text, unit);
                if (values.empty()) {
                    message("Invalid value.");
                    continue;
                }
                made_.constraint = 2;
                made_.valueList = values;
                co_return;
            }
        }
        if (!set.is("INCREMENT")) co_return;
        const Answer step = co_await ask.number("Enter " + noun + " increment:", {}, kPositive);
        if (!step.isNumber()) co_return;
        made_.constraint = 1;
        made_.increment = step.number * unit;
        const Answer least = co_await ask.number("Enter minimum " + noun + ":");
        if (!least.isNumber()) co_return;
        Range range;
        range.minimum = least.number;
        const Answer most = co_await ask.number("Enter maximum " + noun + ":", {}, range);
        if (!most.isNumber()) co_return;
        made_.valueList.push_back(least.number * unit);
        made_.valueList.push_back(most.number * unit);
    }

    static std::vector<double> numbers(std::string_view text, double unit) {
        std::vector<double> values;
        while (!text.empty()) {
            const std::size_t comma = std::min(text.find(','), text.size());
            const std::optional<double> value = parseNumber(text.substr(0, comma));
            if (!value || values.size() >= 1000) return {};
            values.push_back(*value * unit);
            text.remove_prefix(std::min(comma + 1, text.size()));
        }
        std::sort(values.begin(), values.end());
        return values;
    }

    Task<bool> askEnd(Ask& ask, const char* prompt) {
        for (;;) {
            const Answer end = co_await ask.point(prompt, {}, made_.base);
            if (!end.isPoint()) co_return false;
            made_.endPoint = end.point;
            if (made_.endPoint != made_.base) co_return true;
            message("The points must be different.");
        }
    }

    Task<bool> askGeometry(Ask& ask) {
        const bool placed = co_await askStart(ask, startNoun());
        if (!placed) co_return false;
        made_.endPoint = made_.base;
        bool whole = true;
        if (kind_ == DynParameterKind::Alignment)
            whole = co_await askAlignment(ask);
        else if (kind_ == DynParameterKind::Rotation)
            whole = co_await askRotation(ask);
        else if (kind_ == DynParameterKind::Flip)
            whole = co_await askEnd(ask, "Specify endpoint of reflection line:");
        else if (isDistance())
            whole = co_await askEnd(ask, "Specify endpoint:");
        if (!whole) co_return false;
        if (isDistance()) {
            made_.value = made_.base.distance_to(made_.endPoint);
            made_.angle = (made_.endPoint - made_.base).angle();
        }
        const bool labelled = kind_ == DynParameterKind::Point || kind_ == DynParameterKind::Linear ||
                              kind_ == DynParameterKind::Polar || kind_ == DynParameterKind::Rotation ||
                              kind_ == DynParameterKind::Flip;
        // Labels are not drawn; the question keeps its place.
        if (labelled) co_await ask.point("Specify label location:", {}, made_.endPoint);
        co_return true;
    }

    bool isDistance() const {
        return kind_ == DynParameterKind::Linear || kind_ == DynParameterKind::Polar || kind_ == DynParameterKind::XY;
    }

    const char* startNoun() const {
        switch (kind_) {
            case DynParameterKind::Linear:
                return "start point";
            case DynParameterKind::Polar:
            case DynParameterKind::XY:
            case DynParameterKind::Rotation:
                return "base point";
            case DynParameterKind::Flip:
                return "base point of reflection line";
            case DynParameterKind::Alignment:
                return "base point of alignment";
            default:
                return "parameter location";
        }
    }

    Task<bool> askRotation(Ask& ask) {
        const Answer radius = co_await ask.distance("Specify radius of parameter:", {}, made_.base, kPositive);
        if (!radius.isNumber()) co_return false;
        Answer angle = co_await ask.angle("Specify default rotation angle or [Base angle] <0>:", "Base", made_.base);
        if (angle.is("BASE")) {
            const Answer base = co_await ask.angle("Specify base angle <0>:", {}, made_.base);
            made_.angle = base.numberOr(0.0);
            angle = co_await ask.angle("Specify default rotation angle <0>:", {}, made_.base);
        }
        made_.value = angle.numberOr(0.0);
        made_.endPoint = made_.base + Vector2::from_angle(made_.angle + made_.value) * radius.number;
        co_return true;
    }

    Task<bool> askAlignment(Ask& ask) {
        for (;;) {
            const Answer to =
                co_await ask.point("Specify alignment direction or alignment type [Type] <Type>:", "Type", made_.base);
            if (to.isPoint()) {
                made_.endPoint = to.point;
                made_.angle = (made_.endPoint - made_.base).angle();
                co_return made_.endPoint != made_.base;
            }
            const Answer way = co_await ask.keyword("Enter alignment type [Perpendicular/Tangent] <Perpendicular>:",
                                                    "Perpendicular Tangent");
            made_.constraint = way.is("TANGENT") ? 1 : 0;
        }
    }

    // The change -----------------------------------------------------------------------------------------------

    void commit() {
        if (!editorRefusal(document(), {}).empty()) return;
        if (!made_.base.is_finite() || !made_.endPoint.is_finite() || !std::isfinite(made_.value))
            return message("Invalid value.");
        changeEditedBlock(document(), "BPARAMETER", [&](engine::Block& b, doc::BlockEdit& edit) {
            b.isDynamic = true;
            if (kind_ == DynParameterKind::Visibility) {
                if (b.visibilityStates.empty()) {
                    engine::VisibilityState& state = b.visibilityStates.emplace_back();
                    state.name = "VisibilityState0";
                    for (std::size_t i = 0; i < edit.ids.size(); ++i)
                        state.visibleEntityIndices.push_back(static_cast<std::int32_t>(i));
                    for (const engine::Entity& entity : b.entities)
                        if (!entity.visible) edit.hidden.insert(entity.id());
                }
                made_.activeVisibility = b.visibilityStates.front().name;
                edit.state = made_.activeVisibility;
            }
            b.dynParams.push_back(made_);
        });
        message("Parameter " + inQuotes(made_.name) + " added.");
    }

    void list() const {
        if (block().dynParams.empty()) return message("The block has no parameters.");
        for (std::size_t i = 0; i < block().dynParams.size(); ++i) {
            const DynParameter& p = block().dynParams[i];
            std::size_t actions = 0;
            for (const engine::DynAction& action : block().dynActions)
                if (action.parameterIndex == static_cast<std::int32_t>(i)) ++actions;
            message("  " + inQuotes(p.name) + "  " + p.type + " at " + pointDefault(drawing(), p.base) + ", " +
                    counted(actions, "action"));
        }
    }

    /// Takes a parameter out, and its actions with it.
    Dialogue askDelete(Ask& ask) {
        for (;;) {
            const Answer answer = co_await ask.text("Enter parameter name:");
            if (answer.isEnter() || !editorRefusal(document(), {}).empty()) co_return;
            const std::string name = typedName(answer.text);
            const auto& all = block().dynParams;
            const auto it = std::find_if(all.begin(), all.end(),
                                         [&](const DynParameter& p) { return engine::equalNoCase(p.name, name); });
            if (it == all.end()) {
                message("Parameter " + inQuotes(name) + " not found.");
                continue;
            }
            const auto index = static_cast<std::int32_t>(it - all.begin());
            changeEditedBlock(document(), "BPARAMETER", [&](engine::Block& b, doc::BlockEdit& edit) {
                if (engine::kindOf(b.dynParams[static_cast<std::size_t>(index)]) == DynParameterKind::Visibility) {
                    // Everything is shown again, since nothing chooses a state any more.
                    for (engine::VisibilityState& state : b.visibilityStates) {
                        state.visibleEntityIndices.clear();
                        for (std::size_t i = 0; i < edit.ids.size(); ++i)
                            state.visibleEntityIndices.push_back(static_cast<std::int32_t>(i));
                    }
                    showState(document(), b, edit);
                    b.visibilityStates.clear();
                    edit.state.clear();
                }
                b.dynParams.erase(b.dynParams.begin() + index);
                std::erase_if(b.dynActions, [&](const auto& action) { return action.parameterIndex == index; });
                for (engine::DynAction& action : b.dynActions)
                    if (action.parameterIndex > index) --action.parameterIndex;
                b.isDynamic = !b.dynParams.empty();
            });
            co_return message("Parameter " + inQuotes(name) + " deleted.");
        }
    }

    DynParameter made_;
    DynParameterKind kind_ = DynParameterKind::Unknown;
};

}  // namespace

KOVA_TOOL_COMMAND(Bparameter, "BPARAMETER", "Block Parameter", "Insert", {"PARAM"})

}  // namespace kova::cmd::commands
