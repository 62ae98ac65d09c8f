#pragma once

#include <cstdint>
#include <string>

#include "doc/undoable_action.hpp"
#include "engine/model/sysvar.hpp"

namespace kova::doc {

/// Sets a variable to a value that it had before: one that its row would refuse is put straight into the drawing.
void restoreVariable(engine::Drawing& drawing, const std::string& name, const engine::SysVarValue& value);

/// A system variable took on another value.
template <class Value>
class SetSysVarAction final : public IUndoableAction {
public:
    SetSysVarAction(std::string name, Value before, Value after)
        : name_(std::move(name)), before_(std::move(before)), after_(std::move(after)) {}
    void undo(engine::Drawing& drawing) override { restoreVariable(drawing, name_, before_); }
    void redo(engine::Drawing& drawing) override { restoreVariable(drawing, name_, after_); }
    std::string description() const override { return "Set " + name_; }
    std::size_t sizeInBytes() const override {
        if constexpr (std::is_same_v<Value, std::string>)
            return sizeof *this + name_.capacity() + before_.capacity() + after_.capacity();
        return sizeof(Value) <= sizeof(double) ? 64 : sizeof *this;
    }
    std::int32_t changes() const override { return changed::kVariables; }
    const std::string& name() const { return name_; }
    const Value& before() const { return before_; }

private:
    std::string name_;
    Value before_;
    Value after_;
};

using SetSysVarIntAction = SetSysVarAction<std::int32_t>;
using SetSysVarRealAction = SetSysVarAction<double>;
using SetSysVarStringAction = SetSysVarAction<std::string>;
using SetSysVarPointAction = SetSysVarAction<math::Vector3>;

/// The action of the value's type. Both values are of the same type.
std::unique_ptr<IUndoableAction> sysVarAction(std::string_view name, engine::SysVarValue before,
                                              engine::SysVarValue after);

}  // namespace kova::doc
