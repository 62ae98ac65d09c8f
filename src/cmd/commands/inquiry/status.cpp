#include <filesystem>

#include "cmd/dialogue.hpp"
#include "engine/inquiry/value_text.hpp"
#include "cmd/prompts/property_prompts.hpp"
#include "cmd/registry.hpp"

namespace kova::cmd::commands {

namespace {

using math::Bounds2;
using math::Vector2;

/// Object snap modes by bits of OSMODE.
constexpr const char* kSnaps[] = {"End",  "Mid",     "Center",  "Node",  "Quadrant", "Int",       "Insert",
                                  "Perp", "Tangent", "Nearest", "Quick", "App int",  "Extension", "Parallel"};

/// STATUS: what the drawing holds and how it is set.
class StatusTool final : public DialogueTool {
protected:
    Dialogue dialogue(Ask&) override {
        const engine::Drawing& d = drawing();
        const bool model = d.currentSpaceIsModel();
        message(counted(d.currentSpace().size(), "object") + " in " +
                (d.fileName.empty() ? std::string("Unnamed drawing") : d.fileName));
        const Bounds2 limits{d.limits.lower, d.limits.upper};
        box(model ? "Model space limits are  " : "Paper space limits are  ", limits,
            d.limits.check ? "  (On)" : "  (Off)");
        const Bounds2 extents = d.extents(d.currentSpace());
        const char* uses = model ? "Model space uses        " : "Paper space uses        ";
        if (extents.is_empty())
            message(std::string(uses) + "*Nothing*");
        else
            box(uses, extents, limits.contains_box(extents) ? "" : "  **Over");
        const Vector2 half{d.currentView.width / 2.0, d.currentView.height / 2.0};
        box("Display shows           ", {d.currentView.center - half, d.currentView.center + half}, "");
        message("Insertion base is       " + at(d.basePoint));
        message("Snap resolution is      " + pair("SNAPUNIT"));
        message("Grid spacing is         " + pair("GRIDUNIT"));
        message(std::string("Current space:          ") + (model ? "Model space" : "Paper space"));
        message("Current layout:         " + (d.tileMode ? std::string("Model") : d.activeLayoutName.str()));
        message("Current layer:          " + cmd::inQuotes(d.currentLayer.view()));
        message("Current color:          " + engine::colorText(d.currentColor));
        message("Current linetype:       " + cmd::inQuotes(d.currentLinetype.view()));
        message("Current lineweight:     " + lineweightText(engine::sysVarInt(d, "CELWEIGHT", -1)));
        message("Current elevation:      " + lengthText(d, engine::sysVarReal(d, "ELEVATION")) +
                "  thickness: " + lengthText(d, engine::sysVarReal(d, "THICKNESS")));
        message("Fill " + onOff("FILLMODE") + "  Grid " + onOff("GRIDMODE") + "  Ortho " + onOff("ORTHOMODE") +
                "  Qtext " + onOff("QTEXTMODE") + "  Snap " + onOff("SNAPMODE"));
        message("Object snap modes:      " + snaps());
        std::error_code error;
        const auto space = std::filesystem::space(std::filesystem::current_path(error), error);
        if (!error) message("Free disk space:        " + std::to_string(space.available / (1024 * 1024)) + " MB");
        co_return;
    }

private:
    std::string at(const Vector2& p) const {
        return "X: " + lengthText(drawing(), p.x) + "   Y: " + lengthText(drawing(), p.y);
    }
    void box(const std::string& title, const Bounds2& b, const std::string& note) const {
        message(title + at(b.min) + note);
        message(std::string(title.size(), ' ') + at(b.max));
    }
    std::string onOff(const char* name) const { return engine::sysVarInt(drawing(), name) != 0 ? "on" : "off"; }
    std::string pair(const char* name) const {
        const auto value = engine::getSysVar(drawing(), name);
        const auto* point = value ? std::get_if<math::Vector3>(&*value) : nullptr;
        return point != nullptr ? at(point->xy()) : std::string("-");
    }
    std::string snaps() const {
        const int mode = engine::sysVarInt(drawing(), "OSMODE");
        std::string text;
        if ((mode & 16384) == 0)
            for (std::size_t bit = 0; bit < std::size(kSnaps); ++bit)
                if ((mode & (1 << bit)) != 0) text += (text.empty() ? "" : ", ") + std::string(kSnaps[bit]);
        return text.empty() ? "None" : text;
    }
};

}  // namespace

KOVA_TOOL_COMMAND(Status, "STATUS", "Status", "Inquiry")

}  // namespace kova::cmd::commands
