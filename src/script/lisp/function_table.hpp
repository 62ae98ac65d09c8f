#pragma once

#include <span>
#include <string_view>

#include "script/lisp/machine.hpp"
#include "script/lisp/value.hpp"

namespace kova::script::lisp {

/// Takes any number of arguments.
inline constexpr int kAny = -1;

/// One row of the table of functions: what registers a function and what docs/lisp.md lists.
struct BuiltinDef {
    std::string_view name;
    int minimum;
    int maximum;  ///< kAny: no limit
    Value (*call)(Machine& machine, Value* arguments, int count);
    std::string_view arguments;  ///< as the manual shows them: "number [number ...]"
    std::string_view doc;
    std::string_view example;  ///< an expression and, behind "->", what it gives
};

/// A chapter of the table.
struct BuiltinGroup {
    std::string_view title;
    std::span<const BuiltinDef> rows;
    bool cad = false;  ///< works on the drawing or the command line
};
/// Special forms: what the compiler knows. Listed in the manual before the functions.
struct FormDef {
    std::string_view name;
    std::string_view arguments;
    std::string_view doc;
    std::string_view example;
};
std::span<const FormDef> specialForms();
/// All functions, in the order in which they are registered.
std::span<const BuiltinGroup> builtinGroups();
/// docs/lisp.md.
std::string manual();

std::span<const BuiltinDef> numberBuiltins();
std::span<const BuiltinDef> comparisonBuiltins();
std::span<const BuiltinDef> listBuiltins();
std::span<const BuiltinDef> typeBuiltins();
std::span<const BuiltinDef> stringBuiltins();
std::span<const BuiltinDef> conversionBuiltins();
std::span<const BuiltinDef> outputBuiltins();
std::span<const BuiltinDef> controlBuiltins();
std::span<const BuiltinDef> fileBuiltins();
std::span<const BuiltinDef> geometryBuiltins();
std::span<const BuiltinDef> inputBuiltins();
std::span<const BuiltinDef> commandBuiltins();
std::span<const BuiltinDef> entityBuiltins();
std::span<const BuiltinDef> selectionBuiltins();
std::span<const BuiltinDef> tableBuiltins();

// Arguments ---------------------------------------------------------------------------------------------------
// Each checks one argument and throws LispError: NAME: expected ..., got ....

[[noreturn]] void badArgument(const char* function, const char* expected, const Value& got);
double numberArgument(const char* function, const Value& v);
/// An integer; a whole real counts as one.
std::int64_t integerArgument(const char* function, const Value& v);
const std::string& stringArgument(const char* function, const Value& v);
const Value& listArgument(const char* function, const Value& v);
Symbol* symbolArgument(const char* function, const Value& v);
std::uint64_t entityArgument(const char* function, const Value& v);
SelectionObject* selectionArgument(const char* function, const Value& v);
FileObject* fileArgument(const char* function, const Value& v);
/// A function: as it stands, a symbol's, or a (LAMBDA ...) list made into one. "Not a function: ..." else.
Value functionArgument(Machine& machine, const Value& v);
/// A list of two or three finite numbers; a missing z is 0.
math::Vector3 pointArgument(const char* function, const Value& v);
bool isPoint(const Value& v);
Value pointValue(const math::Vector3& p);
Value boolean(Machine& machine, bool on);

}  // namespace kova::script::lisp
