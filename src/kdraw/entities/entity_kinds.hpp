#pragma once

#include <string_view>

#include "kdraw/fields/object.hpp"

namespace kdraw {

class DxfInput;

/// The kind of a record of groups. Several kinds share the names POLYLINE, VERTEX, DIMENSION and INSERT: their groups
/// tell. Null: no entity kind has the name. The record's cursor stands at its beginning afterwards.
const ObjectKind* entityKindOf(std::string_view dxfType, DxfInput& record);

}  // namespace kdraw
