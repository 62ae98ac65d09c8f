#include "cmd/limits_check.hpp"

#include "cmd/processor.hpp"
#include "cmd/registry.hpp"

namespace kova::cmd {

const char* limitsRefusal(const engine::Drawing& drawing, const math::Vector2& p) {
    const engine::Limits& limits = drawing.limits;
    if (!limits.check || drawing.editedBlock() != nullptr) return "";
    if (!drawing.tileMode && drawing.activeViewport() == nullptr) return "";
    return math::Bounds2{limits.lower, limits.upper}.contains_point(p) ? "" : "**Outside limits";
}

const char* limitsRefusal(ToolHost* host, const engine::Drawing& drawing, const math::Vector2& p) {
    if (!drawing.limits.check) return "";
    const auto* processor = dynamic_cast<const CommandProcessor*>(host);
    CommandRegistry* registry = host != nullptr ? host->registry() : nullptr;
    if (processor == nullptr || registry == nullptr) return "";
    const Command* command = registry->find(processor->activeCommand());
    if (command == nullptr) return "";
    const std::string& category = command->category();
    const bool makesObjects =
        category == "Draw" || category == "Modify" || category == "Annotate" || category == "Insert";
    return makesObjects ? limitsRefusal(drawing, p) : "";
}

}  // namespace kova::cmd
