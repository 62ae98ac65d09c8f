#pragma once

#include <string_view>

#include "kdraw/object.hpp"

namespace kdraw {

class DxfInput;

/// The kind of a DXF entity record; for names that several kinds share its groups decide. Null: none.
const ObjectKind* entityKindOf(std::string_view dxfType, DxfInput& record);

}  // namespace kdraw
