#include "cmd/prompts/dimension_tool.hpp"
#include "edit/new_entities.hpp"
#include "engine/inquiry/value_text.hpp"
#include "cmd/registry.hpp"
#include "engine/entities/dimensions/dimension_geometry.hpp"

namespace kova::cmd::commands {

namespace {

using engine::DimensionEntity;
using math::Vector2;

/// Changes dimensions in place as one step.
void change(doc::Document& document, const char* label, const std::vector<std::uint64_t>& ids,
            const std::function<void(DimensionEntity&)>& edit) {
    const doc::GroupScope group(document, label);
    for (const std::uint64_t id : ids)
        if (engine::Entity* entity = document.drawing().findById(id); entity != nullptr && isDimension(*entity))
            document.modifyEntity(*entity, [&](engine::Entity& e) { edit(static_cast<DimensionEntity&>(e)); });
}

/// Puts a text back where its style has it.
void bringHome(DimensionEntity& dimension) {
    dimension.clearUserText();
    dimension.textRotation = 0.0;
}

/// DIMEDIT: the texts and extension lines of several dimensions at once.
class DimEditTool final : public DialogueTool {
protected:
    Dialogue dialogue(Ask& ask) override {
        const Answer kind = co_await ask.keyword("Enter type of dimension editing [Home/New/Rotate/Oblique] <Home>:",
                                                 "Home New Rotate Oblique");
        std::string text;
        double angle = 0.0;
        if (kind.is("NEW")) {
            const Answer typed = co_await ask.line("Enter new dimension text <>:");
            text = typed.text;
        } else if (kind.is("ROTATE")) {
            const Answer typed = co_await ask.angle("Specify angle for dimension text:");
            if (!typed.isNumber()) co_return;
            angle = dimensionTextAngle(typed, drawing());
        }
        const Answer selected = co_await ask.selection();
        const std::vector<std::uint64_t> ids = dimensionsOf(document(), selected.ids);
        if (ids.empty()) co_return message("No dimensions selected.");
        if (kind.is("OBLIQUE")) {
            const Answer typed = co_await ask.angle("Enter obliquing angle (press ENTER for none):");
            const double oblique = typed.isNumber() ? worldDirection(typed, drawing()) : 0.0;
            change(document(), "DIMEDIT", ids, [&](DimensionEntity& d) { d.obliqueAngle = oblique; });
        } else if (kind.is("NEW")) {
            change(document(), "DIMEDIT", ids, [&](DimensionEntity& d) { d.textOverride = text; });
        } else if (kind.is("ROTATE")) {
            change(document(), "DIMEDIT", ids, [&](DimensionEntity& d) { d.textRotation = angle; });
        } else {
            change(document(), "DIMEDIT", ids, bringHome);
        }
    }
};

/// DIMTEDIT: the text of one dimension.
class DimTEditTool final : public DialogueTool {
protected:
    Dialogue dialogue(Ask& ask) override {
        const Answer picked = co_await ask.object("Select dimension:", {}, isDimension);
        if (!picked.isObject()) co_return;
        const std::vector<std::uint64_t> ids{picked.id};
        const Answer place =
            co_await ask.point("Specify new location for dimension text or [Left/Right/Center/Home/Angle]:",
                               "Left Right Center Home Angle");
        if (place.isEnter()) co_return;
        if (place.isPoint()) {
            change(document(), "DIMTEDIT", ids,
                   [&](DimensionEntity& d) { d.moveGrip(d.gripPoints().size() - 1, place.point); });
        } else if (place.is("HOME")) {
            change(document(), "DIMTEDIT", ids, bringHome);
        } else if (place.is("ANGLE")) {
            const Answer angle = co_await ask.angle("Specify angle for dimension text:");
            if (!angle.isNumber()) co_return;
            const double radians = dimensionTextAngle(angle, drawing());
            change(document(), "DIMTEDIT", ids, [&](DimensionEntity& d) { d.textRotation = radians; });
        } else {
            const double justify = place.is("LEFT") ? 1.0 : place.is("RIGHT") ? 2.0 : 0.0;
            change(document(), "DIMTEDIT", ids, [&](DimensionEntity& d) {
                d.clearUserText();
                d.styleOverrides["DIMJUST"] = justify;
            });
        }
    }
};

/// DIMSPACE: lays the lines of parallel dimensions at even distances from a base, or in one line with it.
class DimSpaceTool final : public DialogueTool {
protected:
    Dialogue dialogue(Ask& ask) override {
        const Answer picked = co_await ask.object("Select base dimension:", {}, isLine);
        if (!picked.isObject()) co_return;
        const Answer selected = co_await ask.selection("Select dimensions to space:");
        const std::vector<std::uint64_t> ids = dimensionsOf(document(), selected.ids);
        const Answer value = co_await ask.distance("Enter value or [Auto] <Auto>:", "Auto", {}, kNotNegative);
        const auto* base = dynamic_cast<const DimensionEntity*>(drawing().findById(picked.id));
        if (base == nullptr) co_return;
        const engine::DimStyle style = base->style();
        const double step = value.isNumber() ? value.number : 2.0 * style.textHeight * dimensionScale(drawing(), style);
        spread(*base, ids, step);
    }

private:
    static bool isLine(const engine::Entity& entity) {
        const auto* d = dynamic_cast<const DimensionEntity*>(&entity);
        return d != nullptr &&
               (d->kind() == engine::DimensionType::Rotated || d->kind() == engine::DimensionType::Aligned);
    }

    void spread(const DimensionEntity& base, const std::vector<std::uint64_t>& ids, double step) {
        const engine::LinearFrame frame = engine::linearFrame(base);
        Vector2 normal = frame.dir.perpendicular();
        if ((base.dimLine - base.def1).dot(normal) < 0.0) normal = -normal;
        struct Row {
            std::uint64_t id;
            double height;
        };
        std::vector<Row> rows;
        std::size_t skipped = 0;
        for (const std::uint64_t id : ids) {
            const auto* d = dynamic_cast<const DimensionEntity*>(drawing().findById(id));
            if (d == nullptr || d == &base) continue;
            if (!isLine(*d) || std::abs(engine::linearFrame(*d).dir.cross(frame.dir)) > 1e-9)
                ++skipped;
            else
                rows.push_back({id, (d->dimLine - base.dimLine).dot(normal)});
        }
        if (skipped > 0) message(counted(skipped, "dimension") + " not parallel to the base.");
        std::stable_sort(rows.begin(), rows.end(),
                         [](const Row& a, const Row& b) { return std::abs(a.height) < std::abs(b.height); });
        const Vector2 from = base.dimLine;
        const doc::GroupScope group(document(), "DIMSPACE");
        int above = 0;
        int below = 0;
        for (const Row& row : rows) {
            const double wanted = row.height < 0.0 ? -step * ++below : step * ++above;
            document().modifyEntity(*drawing().findById(row.id), [&](engine::Entity& e) {
                auto& d = static_cast<DimensionEntity&>(e);
                const Vector2 shift = normal * (wanted - (d.dimLine - from).dot(normal));
                d.dimLine += shift;
                if (d.hasUserText()) d.setUserText(d.userText + shift);
            });
        }
    }
};

}  // namespace

KOVA_TOOL_COMMAND(DimEdit, "DIMEDIT", "Edit Dimensions", "Annotate", {"DED", "DIMED"})
KOVA_TOOL_COMMAND(DimTEdit, "DIMTEDIT", "Move Dimension Text", "Annotate", {"DIMTED"})
KOVA_TOOL_COMMAND(DimSpace, "DIMSPACE", "Space Dimensions", "Annotate")

}  // namespace kova::cmd::commands
