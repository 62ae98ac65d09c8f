#include <map>

#include "cmd/dialogue.hpp"
#include "edit/new_entities.hpp"
#include "cmd/pick_request.hpp"
#include "doc/pick/picking.hpp"
#include "cmd/registry.hpp"
#include "engine/kinds/all.hpp"

namespace kova::cmd::commands {

namespace {

using engine::Entity;
using engine::Name;

/// The command that draws a kind; empty: none does.
std::string_view commandFor(const Entity& entity) {
    using engine::EntityType;
    switch (entity.type()) {
        case EntityType::Line:
            return "LINE";
        case EntityType::Circle:
            return "CIRCLE";
        case EntityType::Arc:
            return "ARC";
        case EntityType::Polyline:
            return "PLINE";
        case EntityType::Point:
            return "POINT";
        case EntityType::Text:
            return "TEXT";
        case EntityType::MText:
            return "MTEXT";
        case EntityType::Hatch:
            return "HATCH";
        case EntityType::BlockReference:
            return "INSERT";
        case EntityType::Spline:
            return "SPLINE";
        case EntityType::Ellipse:
            return "ELLIPSE";
        case EntityType::Xline:
            return "XLINE";
        case EntityType::Ray:
            return "RAY";
        case EntityType::Leader:
            return "LEADER";
        case EntityType::MLine:
            return "MLINE";
        case EntityType::MLeader:
            return "MLEADER";
        case EntityType::Table:
            return "TABLE";
        case EntityType::Wipeout:
            return "WIPEOUT";
        case EntityType::Region:
            return "REGION";
        case EntityType::Tolerance:
            return "TOLERANCE";
        case EntityType::AttributeDefinition:
            return "ATTDEF";
        case EntityType::Face3D:
            return "3DFACE";
        case EntityType::Polyline3D:
            return "3DPOLY";
        case EntityType::Solid2D:
            return "SOLID";
        case EntityType::Dimension:
            switch (static_cast<const engine::DimensionEntity&>(entity).kind()) {
                case engine::DimensionType::Rotated:
                    return "DIMLINEAR";
                case engine::DimensionType::Aligned:
                    return "DIMALIGNED";
                case engine::DimensionType::Diameter:
                    return "DIMDIAMETER";
                case engine::DimensionType::Radius:
                    return "DIMRADIUS";
                case engine::DimensionType::ArcLength:
                    return "DIMARC";
                case engine::DimensionType::Ordinate:
                case engine::DimensionType::OrdinateX:
                    return "DIMORDINATE";
                default:
                    return "DIMANGULAR";
            }
        default:
            return {};
    }
}

/// The current values that new objects take.
struct CurrentValues {
    Name layer;
    Name linetype;
    engine::Color color;
    Name textStyle;
    Name dimStyle;
    Name mleaderStyle;
    Name tableStyle;
    std::map<std::string, engine::SysVarValue> variables;

    static CurrentValues of(const engine::Drawing& drawing) {
        CurrentValues v{drawing.currentLayer,     drawing.currentLinetype, drawing.currentColor,
                        drawing.currentTextStyle, drawing.currentDimStyle, drawing.currentMLeaderStyle,
                        drawing.currentTableStyle};
        for (const char* name : {"CELTSCALE", "CELWEIGHT", "CETRANSPARENCY", "ELEVATION", "THICKNESS", "HPNAME",
                                 "HPSCALE", "HPANG", "INSNAME"})
            if (auto value = engine::getSysVar(drawing, name)) v.variables.emplace(name, std::move(*value));
        return v;
    }
    void putInto(engine::Drawing& drawing) const {
        drawing.currentLayer = layer;
        drawing.currentLinetype = linetype;
        drawing.currentColor = color;
        drawing.currentTextStyle = textStyle;
        drawing.currentDimStyle = dimStyle;
        drawing.currentMLeaderStyle = mleaderStyle;
        drawing.currentTableStyle = tableStyle;
        for (const auto& [name, value] : variables) engine::setSysVar(drawing, name, value);
    }
    /// Those that make a new object look as an existing one.
    void takeFrom(const Entity& entity) {
        layer = entity.layer;
        linetype = entity.linetype;
        color = entity.color;
        variables["CELTSCALE"] = entity.linetypeScale();
        variables["CELWEIGHT"] = entity.lineweight;
        variables["CETRANSPARENCY"] =
            entity.transparency == 0 ? std::string("ByLayer") : std::to_string(entity.transparency);
        variables["ELEVATION"] = entity.elevation;
        if (takesThickness(entity.type())) variables["THICKNESS"] = entity.thickness();
        if (const auto* e = dynamic_cast<const engine::TextEntity*>(&entity)) textStyle = e->textStyle;
        if (const auto* e = dynamic_cast<const engine::MTextEntity*>(&entity)) textStyle = e->textStyle;
        if (const auto* e = dynamic_cast<const engine::DimensionEntity*>(&entity)) dimStyle = e->dimStyleName;
        if (const auto* e = dynamic_cast<const engine::LeaderEntity*>(&entity)) dimStyle = e->dimStyleName;
        if (const auto* e = dynamic_cast<const engine::BlockReferenceEntity*>(&entity))
            variables["INSNAME"] = e->blockName.str();
        if (const auto* e = dynamic_cast<const engine::HatchEntity*>(&entity)) {
            variables["HPNAME"] = e->patternName.str();
            variables["HPSCALE"] = e->patternScale;
            variables["HPANG"] = e->patternAngle;
        }
        if (const auto* e = dynamic_cast<const engine::MLeaderEntity*>(&entity)) mleaderStyle = e->styleName;
        if (const auto* e = dynamic_cast<const engine::TableEntity*>(&entity)) tableStyle = e->styleName;
    }
};

/// ADDSELECTED: runs the command that draws the kind of a picked object, with the object's properties in force while
/// that command works. Afterwards the current ones stand as before.
class AddSelectedTool final : public DialogueTool, private ToolHost {
public:
    void textInput(const std::string& line) override {
        if (!inner_) return DialogueTool::textInput(line);
        within([&] { inner_->textInput(line); });
    }
    void mouseMove(const math::Vector2& point) override {
        inner_ ? inner_->mouseMove(point) : DialogueTool::mouseMove(point);
    }
    void mousePress(const math::Vector2& point, int button) override {
        if (!inner_) return DialogueTool::mousePress(point, button);
        within([&] { inner_->mousePress(point, button); });
    }
    void cancel() override {
        if (inner_) within([&] { inner_->cancel(); });
        if (isActive()) DialogueTool::cancel();
    }
    bool isSelectingObjects() const override {
        return inner_ ? inner_->isSelectingObjects() : DialogueTool::isSelectingObjects();
    }
    void selectionChanged() override { inner_ ? inner_->selectionChanged() : DialogueTool::selectionChanged(); }
    bool takesRestOfLine() const override {
        return inner_ ? inner_->takesRestOfLine() : DialogueTool::takesRestOfLine();
    }
    void crossingSelected(std::span<const math::Vector2> polygon) override {
        if (inner_) inner_->crossingSelected(polygon);
    }

protected:
    Dialogue dialogue(Ask& ask) override {
        const auto isDrawn = [this](const Entity& entity) { return drawingCommand(entity) != nullptr; };
        const Answer picked = co_await askSource(ask, "Select object:", {}, isDrawn);
        const Entity* entity = picked.isObject() ? drawing().findById(picked.id) : nullptr;
        if (entity == nullptr) co_return;
        if (!startCommand(*entity)) co_return;
        // From here on the lines are the command's.
        co_await std::suspend_always{};
    }

private:
    /// The command that draws the object's kind; null: none does.
    Command* drawingCommand(const Entity& entity) const {
        const std::string_view name = commandFor(entity);
        Command* command =
            name.empty() || host()->registry() == nullptr ? nullptr : host()->registry()->find(name);
        return command != nullptr && command->isInteractive() ? command : nullptr;
    }

    bool startCommand(const Entity& entity) {
        std::unique_ptr<Tool> tool = drawingCommand(entity)->createTool();
        if (!tool) return false;
        inner_ = std::move(tool);
        values_ = CurrentValues::of(drawing());
        values_.takeFrom(entity);
        inner_->attach(&document(), viewport(), this);
        inner_->activate();
        within([&] { inner_->begin(); });
        return true;
    }

    /// Lets the command work under the object's values.
    void within(const std::function<void()>& work) {
        const CurrentValues before = CurrentValues::of(drawing());
        values_.putInto(drawing());
        try {
            work();
        } catch (...) {
            before.putInto(drawing());
            throw;
        }
        before.putInto(drawing());
        if (!done_) return;
        inner_->end();
        finish();
    }

    void promptChanged(const std::string& text) override { setPrompt(text); }
    void finished() override { done_ = true; }
    void message(const std::string& text) override { host()->message(text); }
    AppServices* services() override { return host()->services(); }
    CommandRegistry* registry() override { return host()->registry(); }

    std::unique_ptr<Tool> inner_;
    CurrentValues values_;
    bool done_ = false;
};

}  // namespace

KOVA_TOOL_COMMAND(AddSelected, "ADDSELECTED", "Add Selected", "Draw")

}  // namespace kova::cmd::commands
