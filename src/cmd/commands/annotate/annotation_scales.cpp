// The drawing's list of annotation scales, and the scales that annotative objects support.
#include "cmd/dialogue.hpp"
#include "edit/new_entities.hpp"
#include "edit/entity_copies.hpp"
#include "engine/inquiry/value_text.hpp"
#include "cmd/prompts/name_prompts.hpp"
#include "cmd/registry.hpp"
#include "doc/table_edits.hpp"
#include "engine/libraries/libraries.hpp"

namespace kova::cmd::commands {

namespace {

using engine::AnnotationScale;
using engine::Entity;
using engine::Name;

/// What the commands about scales share.
class ScaleTool : public DialogueTool {
protected:
    Name currentScale() const { return Name(engine::sysVarString(drawing(), "CANNOSCALE", "1:1")); }

    std::string scaleText(const AnnotationScale& scale) const {
        return scale.name.str() + " (" + lengthDefault(drawing(), scale.paperUnits) + ":" +
               lengthDefault(drawing(), scale.drawingUnits) + ")";
    }
    void listScales() {
        for (const AnnotationScale& scale : drawing().annotationScales) message(scaleText(scale));
    }

    /// A scale of the drawing; "?" lists them. Enter takes the fallback; empty: given up.
    Task<Name> askScale(Ask& ask, std::string question, Name fallback) {
        std::string prompt = fallback.empty() ? question + ":" : withDefault(question, fallback.view());
        for (;;) {
            const Answer answer = co_await ask.text(prompt, "?");
            if (answer.is("?")) {
                listScales();
                continue;
            }
            if (answer.isEnter()) co_return fallback;
            const Name name(typedName(answer.text));
            if (const AnnotationScale* scale = drawing().annotationScales.find(name)) co_return scale->name;
            message("Unknown annotation scale " + inQuotes(answer.text) + ".");
        }
    }

    /// Selected objects that are annotative, by id; the others are told of.
    Task<std::vector<std::uint64_t>> askAnnotative(Ask& ask) {
        const Answer selected = co_await ask.selection("Select annotative objects:");
        std::vector<std::uint64_t> ids;
        std::size_t others = 0;
        for (const Entity* entity : entitiesInOrder(document(), selected.ids)) {
            if (entity->annotative())
                ids.push_back(entity->id());
            else
                ++others;
        }
        if (others > 0) message(counted(others, "object") + " not annotative.");
        if (ids.empty() && others == 0) message("No objects selected.");
        co_return ids;
    }

    /// Shows an annotative object at a scale.
    void show(Entity& entity, Name scale) const {
        const AnnotationScale* record = drawing().annotationScales.find(scale);
        if (record == nullptr || !(record->paperUnits > 0.0)) return;
        const double factor = record->drawingUnits / record->paperUnits;
        if (factor > 0.0 && std::isfinite(factor)) entity.setAnnotationScale(factor);
    }
};

bool supports(const Entity& entity, Name scale) {
    const std::vector<Name>& scales = entity.objectScales();
    return std::find(scales.begin(), scales.end(), scale) != scales.end();
}

/// OBJECTSCALE: the scales at which annotative objects are shown.
class ObjectScaleTool final : public ScaleTool {
protected:
    Dialogue dialogue(Ask& ask) override {
        const std::vector<std::uint64_t> ids = co_await askAnnotative(ask);
        if (ids.empty()) co_return;
        for (;;) {
            const Answer option = co_await ask.keyword("Enter an option [Add/Delete/?] <Add>:", "Add Delete ?");
            if (option.is("?")) {
                listSupported(ids);
                continue;
            }
            const bool adds = !option.is("DELETE");
            std::string question = adds ? "Enter named scale to add or [?]" : "Enter named scale to delete or [?]";
            const Name fallback = adds ? currentScale() : Name();
            const Name scale = co_await askScale(ask, std::move(question), fallback);
            if (scale.empty()) co_return;
            if (adds)
                add(ids, scale);
            else
                remove(ids, scale);
            co_return;
        }
    }

private:
    void listSupported(const std::vector<std::uint64_t>& ids) {
        for (const AnnotationScale& scale : drawing().annotationScales) {
            const auto count = std::count_if(ids.begin(), ids.end(), [&](std::uint64_t id) {
                const Entity* entity = drawing().findById(id);
                return entity != nullptr && supports(*entity, scale.name);
            });
            if (count > 0) message(scale.name.str() + "  " + counted(static_cast<std::size_t>(count), "object"));
        }
    }

    void add(const std::vector<std::uint64_t>& ids, Name scale) {
        const doc::GroupScope group(document(), "OBJECTSCALE");
        std::size_t changed = 0;
        for (Entity* entity : entitiesInOrder(document(), ids)) {
            if (supports(*entity, scale)) continue;
            ++changed;
            document().modifyEntity(*entity, [&](Entity& e) {
                std::vector<Name> scales = e.objectScales();
                scales.push_back(scale);
                e.setObjectScales(std::move(scales));
                if (scale == currentScale()) show(e, scale);
            });
        }
        message(counted(changed, "object") + " updated.");
        repaint();
    }

    void remove(const std::vector<std::uint64_t>& ids, Name scale) {
        const doc::GroupScope group(document(), "OBJECTSCALE");
        std::size_t changed = 0;
        std::size_t last = 0;
        for (Entity* entity : entitiesInOrder(document(), ids)) {
            if (!supports(*entity, scale)) continue;
            if (entity->objectScales().size() < 2) {
                ++last;
                continue;
            }
            ++changed;
            document().modifyEntity(*entity, [&](Entity& e) {
                std::vector<Name> scales = e.objectScales();
                std::erase(scales, scale);
                e.setObjectScales(scales);
                show(e, supports(e, currentScale()) ? currentScale() : scales.front());
            });
        }
        if (last > 0) message(counted(last, "object") + " with no other scale left as it is.");
        message(counted(changed, "object") + " updated.");
        repaint();
    }
};

/// ANNORESET: annotative objects stand as their representation at the current scale does.
class AnnoResetTool final : public ScaleTool {
protected:
    Dialogue dialogue(Ask& ask) override {
        const std::vector<std::uint64_t> ids = co_await askAnnotative(ask);
        if (ids.empty()) co_return;
        const doc::GroupScope group(document(), "ANNORESET");
        std::size_t count = 0;
        for (Entity* entity : entitiesInOrder(document(), ids)) {
            ++count;
            if (!supports(*entity, currentScale())) continue;
            document().modifyEntity(*entity, [&](Entity& e) { show(e, currentScale()); });
        }
        message(counted(count, "object") + " reset.");
        repaint();
    }
};

/// SCALELISTEDIT: the scales that the drawing offers.
class ScaleListEditTool final : public ScaleTool {
protected:
    Dialogue dialogue(Ask& ask) override {
        for (;;) {
            const Answer option =
                co_await ask.keyword("Enter option [?/Add/Delete/Reset/Exit] <Add>:", "? Add Delete Reset Exit");
            if (option.is("EXIT")) co_return;
            if (option.is("?")) {
                listScales();
            } else if (option.is("DELETE")) {
                co_await remove(ask);
            } else if (option.is("RESET")) {
                const bool sure = co_await askYesNo(ask, "Reset scale list to defaults? [Yes/No] <No>:", false);
                if (sure) reset();
            } else {
                const bool added = co_await add(ask);
                if (!added) co_return;
            }
        }
    }

private:
    using Scales = engine::Table<AnnotationScale>;

    /// False: Enter ended the command.
    Task<bool> add(Ask& ask) {
        const Answer typed = co_await ask.text("Enter name for new scale:");
        const std::string name = typedName(typed.text);
        if (name.empty()) co_return false;
        if (drawing().annotationScales.contains(Name(name))) {
            message("The scale " + inQuotes(name) + " exists already.");
            co_return true;
        }
        for (;;) {
            const Answer ratio = co_await ask.text("Enter scale ratio (paper units:drawing units):");
            if (ratio.isEnter()) co_return false;
            AnnotationScale scale;
            scale.name = Name(name);
            if (!parseRatio(ratio.text, scale)) {
                message("Invalid value.");
                continue;
            }
            const doc::GroupScope group(document(), "SCALELISTEDIT");
            document().editTable<doc::AnnotationScaleTraits>([&](Scales& scales) { scales.add(scale); });
            co_return true;
        }
    }

    /// "1:50" or "1=50", both positive.
    static bool parseRatio(std::string_view text, AnnotationScale& scale) {
        const std::size_t at = text.find_first_of(":=");
        if (at == std::string_view::npos) return false;
        const auto paper = parseNumber(text.substr(0, at));
        const auto units = parseNumber(text.substr(at + 1));
        if (!paper || !units || !(*paper > 0.0) || !(*units > 0.0)) return false;
        const double factor = *units / *paper;
        if (!(factor > 0.0) || !std::isfinite(factor)) return false;
        scale.paperUnits = *paper;
        scale.drawingUnits = *units;
        return true;
    }

    bool inUse(Name scale) const {
        const auto uses = [&](const engine::EntityList& list) {
            return std::any_of(list.begin(), list.end(), [&](const Entity& e) { return supports(e, scale); });
        };
        if (uses(drawing().modelSpace())) return true;
        for (const auto& layout : drawing().layouts())
            if (uses(layout->entities)) return true;
        for (const auto& block : drawing().blocks())
            if (uses(block->entities)) return true;
        return false;
    }

    Dialogue remove(Ask& ask) {
        const Name scale = co_await askScale(ask, "Enter scale name to delete or [?]", Name());
        if (scale.empty()) co_return;
        if (scale == currentScale()) co_return message("The current scale cannot be deleted.");
        if (inUse(scale)) co_return message("The scale " + inQuotes(scale) + " is in use and stays.");
        const doc::GroupScope group(document(), "SCALELISTEDIT");
        document().editTable<doc::AnnotationScaleTraits>([&](Scales& scales) { scales.erase(scale); });
    }

    /// The scales of a new drawing; those in use stay, behind them.
    void reset() {
        Scales fresh;
        for (const AnnotationScale& scale : engine::builtinAnnotationScales()) fresh.add(scale);
        for (const AnnotationScale& scale : drawing().annotationScales)
            if (!fresh.contains(scale.name) && (scale.name == currentScale() || inUse(scale.name))) fresh.add(scale);
        const doc::GroupScope group(document(), "SCALELISTEDIT");
        document().editTable<doc::AnnotationScaleTraits>([&](Scales& scales) { scales = fresh; });
    }
};

}  // namespace

KOVA_TOOL_COMMAND(ObjectScale, "OBJECTSCALE", "Object Scales", "Annotate")
KOVA_TOOL_COMMAND(AnnoReset, "ANNORESET", "Reset Annotation Positions", "Annotate")
KOVA_TOOL_COMMAND(ScaleListEdit, "SCALELISTEDIT", "Edit Scale List", "Format")

}  // namespace kova::cmd::commands
