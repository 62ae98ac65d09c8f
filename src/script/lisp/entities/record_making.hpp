#pragma once

#include <string_view>

#include "script/lisp/entities/group_list.hpp"
#include "script/lisp/machine.hpp"

namespace kova::script::lisp {

/// Table records that ENTMAKE makes: LAYER, STYLE, LTYPE, DIMSTYLE and APPID.
bool isRecordType(std::string_view type);
/// Makes one; false when there is one of that name, or when it cannot be made.
bool makeRecord(Machine& machine, std::string_view type, const GroupList& groups);
/// Changes the layer, text style, linetype or dimension style of a record's name to what the groups say; a different
/// group 2 renames it. False for other records, and when something cannot be.
bool modifyRecord(Machine& machine, std::uint64_t name, const GroupList& groups);

}  // namespace kova::script::lisp
