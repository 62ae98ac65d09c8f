#pragma once

#include "engine/model/drawing.hpp"
#include "math/vector3.hpp"
#include "script/lisp/value.hpp"

namespace kova::script::lisp {

/// A point of the current UCS in world coordinates, in plan.
inline math::Vector2 worldPoint(const engine::Drawing& drawing, const math::Vector3& p) {
    return drawing.ucs.isWorld() ? p.xy() : drawing.ucs.toWorld(p.xy());
}
/// A world point in the current UCS, at the height z.
inline math::Vector3 userPoint(const engine::Drawing& drawing, const math::Vector2& p, double z) {
    return math::Vector3(drawing.ucs.isWorld() ? p : drawing.ucs.fromWorld(p), z);
}

/// A system variable's value as LISP has it, and back; `value` holds a number, text or point.
Value fromSysVar(const engine::SysVarValue& value);
engine::SysVarValue toSysVar(const char* function, const Value& value);

}  // namespace kova::script::lisp
