#include "cmd/prompts/array_prompts.hpp"
#include "edit/array_record.hpp"
#include "edit/new_entities.hpp"
#include "cmd/registry.hpp"

namespace kova::cmd::commands {

namespace {

using math::Vector2;

/// ARRAYEDIT: changes an associative array; every option takes effect at once.
class ArrayEditTool final : public DialogueTool {
public:
    void end() override { group_.reset(); }

protected:
    Dialogue dialogue(Ask& ask) override {
        for (;;) {
            const Answer picked = co_await ask.object("Select array:", {}, carriesArrayData);
            if (!picked.isObject()) co_return;
            const engine::Entity* entity = drawing().findById(picked.id);
            auto member = entity != nullptr ? arrayOf(document(), *entity) : std::nullopt;
            if (member) {
                array_ = std::move(member->array);
                break;
            }
            message("Object is not an associative array.");
        }
        for (;;) {
            const Answer option = co_await ask.keyword(prompt(), keywords());
            if (option.isEnter() || option.is("EXIT")) co_return;
            if (option.is("SOURCE"))
                co_await source(ask);
            else if (option.is("REPLACE"))
                co_await replace(ask);
            else if (option.is("RESET"))
                apply([&] { return resetArray(document(), array_); });
            else
                co_await change(ask, option);
        }
    }

private:
    const char* prompt() const {
        if (array_.definition.isPolar())
            return "Enter an option [Source/REPlace/Base point/Items/Angle between/Fill angle/Rows/Levels/ROTate "
                   "items/RESet/eXit] <eXit>:";
        if (array_.definition.isPath())
            return "Enter an option [Source/REPlace/Method/Base point/Items/Rows/Levels/Align items/Z "
                   "direction/RESet/eXit] <eXit>:";
        return "Enter an option [Source/REPlace/Base point/Rows/Columns/Levels/RESet/eXit] <eXit>:";
    }
    const char* keywords() const {
        if (array_.definition.isPolar()) return "Source REPlace Base Items Angle Fill Rows Levels ROTate RESet eXit";
        if (array_.definition.isPath()) return "Source REPlace Method Base Items Rows Levels Align Z RESet eXit";
        return "Source REPlace Base Rows Columns Levels RESet eXit";
    }

    template <class Change>
    void apply(const Change& change) {
        if (!group_) group_.emplace(document(), "ARRAYEDIT");
        doc::GroupScope step(document(), "ARRAYEDIT");
        const ArrayObject before = array_;
        const std::string error = change();
        if (error.empty()) return;
        message(error);
        array_ = before;
        step.rollback();
    }

    Dialogue change(Ask& ask, const Answer& option) {
        ArrayDefinition next = array_.definition;
        auto* rect = std::get_if<RectangularArray>(&next.shape);
        auto* polar = std::get_if<PolarArray>(&next.shape);
        auto* path = std::get_if<PathArray>(&next.shape);
        if (option.is("ROWS")) {
            co_await askArrayRows(ask, drawing(), next.rows());
        } else if (option.is("LEVELS")) {
            co_await askArrayLevels(ask, drawing(), next.rows());
        } else if (option.is("COLUMNS")) {
            co_await askArrayColumns(ask, drawing(), *rect);
        } else if (option.is("BASE")) {
            const Answer base = co_await ask.point("Specify base point:");
            if (!base.isPoint()) co_return;
            if (polar != nullptr) polar->base = base.point;
            if (path != nullptr) path->base = base.point;
        } else if (option.is("ITEMS") && polar != nullptr) {
            polar->count = co_await askArrayCount(ask, "Enter number of items in array", polar->count);
        } else if (option.is("ITEMS")) {
            const engine::Entity* curve = next.curve(drawing());
            if (curve == nullptr) co_return message("The path of the array cannot be used any more.");
            co_await askPathItems(ask, drawing(), *path, CurveRuler(*curve));
        } else if (option.is("ANGLE")) {
            co_await askAngleBetween(ask, drawing(), *polar);
        } else if (option.is("FILL")) {
            co_await askFillAngle(ask, drawing(), *polar);
        } else if (option.is("ROTATE")) {
            co_await askTurnItems(ask, *polar);
        } else if (option.is("METHOD")) {
            co_await askPathMethod(ask, *path);
        } else if (option.is("ALIGN")) {
            co_await askAlignItems(ask, *path);
        } else {
            // Paths are followed in plan, so items never tilt.
            co_await askYesNo(ask, "Maintain Z direction? [Yes/No] <Yes>:", true);
            co_return;
        }
        apply([&] { return rearrange(document(), array_, next); });
    }

    /// The place of an item of this array; nothing: Enter, or the keyword.
    struct Pick {
        std::optional<ArrayPlace> place;
        bool keyword = false;
    };
    Task<Pick> askItem(Ask& ask, std::string prompt, std::string keywords) {
        for (;;) {
            const Answer picked = co_await ask.object(prompt, keywords, carriesArrayData);
            Pick out;
            out.keyword = picked.kind == Answer::Kind::Keyword;
            if (!picked.isObject()) co_return out;
            for (const auto& [place, item] : array_.items)
                for (const auto& [part, id] : item.parts)
                    if (id == picked.id) out.place = place;
            if (out.place) co_return out;
            message("Object is not an item of this array.");
        }
    }

    /// Without an editor for the source alone, an item that was changed is taken for it.
    Dialogue source(Ask& ask) {
        const Pick item = co_await askItem(ask, "Select item in array that the others are to be like:", {});
        if (item.place) apply([&] { return takeAsSource(document(), array_, *item.place); });
    }

    Dialogue replace(Ask& ask) {
        document().selection().clear();
        const Answer selected = co_await ask.selection("Select replacement objects:");
        document().selection().clear();
        if (selected.ids.empty()) co_return;
        const math::Bounds2 box = boundsOf(drawing(), selected.ids);
        Vector2 base = box.is_empty() ? Vector2{} : box.center();
        const Answer point =
            co_await ask.point("Specify base point of replacement objects or [Key point] <centroid>:", "Key");
        if (point.isPoint()) base = point.point;
        if (point.is("KEY")) {
            const Answer key = co_await ask.point("Specify key point of replacement objects as base point:");
            if (key.isPoint()) base = key.point;
        }
        for (;;) {
            const Pick item =
                co_await askItem(ask, "Select an item in the array to replace or [Source objects]:", "Source");
            if (item.place) {
                apply([&] { return replaceItem(document(), array_, *item.place, selected.ids, base); });
                continue;
            }
            if (item.keyword) apply([&] { return replaceSource(selected.ids, base); });
            co_return;
        }
    }

    /// The first item that stands for the source gets the objects, and all others after it.
    std::string replaceSource(const std::vector<std::uint64_t>& ids, const Vector2& base) {
        for (const auto& [place, item] : array_.items) {
            if (item.replaced) continue;
            const ArrayPlace first = place;
            const std::string error = replaceItem(document(), array_, first, ids, base);
            return error.empty() ? takeAsSource(document(), array_, first) : error;
        }
        return "All items of the array are replaced.";
    }

    ArrayObject array_;
    std::optional<doc::GroupScope> group_;
};

}  // namespace

KOVA_TOOL_COMMAND(ArrayEdit, "ARRAYEDIT", "Edit Array", "Modify")

}  // namespace kova::cmd::commands
