#include "doc/sysvar_actions.hpp"

#include "engine/model/drawing.hpp"

namespace kova::doc {

void restoreVariable(engine::Drawing& drawing, const std::string& name, const engine::SysVarValue& value) {
    if (engine::setSysVar(drawing, name, value).empty()) return;
    const engine::SysVarDef* def = engine::findSysVar(name);
    if (def == nullptr || def->set != nullptr) return;
    const std::string key(def->name);
    if (const auto* number = std::get_if<std::int32_t>(&value)) drawing.integerVariables[key] = *number;
    if (const auto* real = std::get_if<double>(&value)) drawing.realVariables[key] = *real;
    if (const auto* text = std::get_if<std::string>(&value)) drawing.stringVariables[key] = *text;
}

std::unique_ptr<IUndoableAction> sysVarAction(std::string_view name, engine::SysVarValue before,
                                              engine::SysVarValue after) {
    return std::visit(
        [&]<class Value>(Value& old) -> std::unique_ptr<IUndoableAction> {
            return std::make_unique<SetSysVarAction<Value>>(std::string(name), std::move(old),
                                                            std::get<Value>(std::move(after)));
        },
        before);
}

}  // namespace kova::doc
