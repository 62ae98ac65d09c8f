#pragma once

#include "script/lisp/value.hpp"

namespace kova::script::lisp {

/// Operations of compiled code. They work on a stack of values; see Machine.
enum class Op : std::uint8_t {
    Constant,  ///< push constants[index]
    Nil,       ///< push nil
    Local,     ///< push variable `index` of this scope
    Outer,     ///< push variable `index` of the scope `depth` scopes out
    Global,    ///< push the value of the symbol constants[index]
    SetLocal,  ///< the top value into a variable; it stays on the stack
    SetOuter,
    SetGlobal,
    Pop,
    Jump,
    JumpNil,         ///< pops
    JumpNilKeep,     ///< AND: jumps with the value, else pops it
    JumpTrueKeep,    ///< OR, COND: jumps with the value, else pops it
    ToTrue,          ///< OR: the top value becomes T unless it is nil
    Function,        ///< the top value must be a function
    GlobalFunction,  ///< push the function that the symbol constants[index] names
    Call,            ///< index arguments above the function
    TailCall,
    Return,
    Closure,       ///< push a function of the code constants[index]
    RepeatStart,   ///< [count] becomes [result count]
    RepeatNext,    ///< counts down, or jumps with [result]
    ForeachStart,  ///< [list] becomes [result list]
    ForeachNext,   ///< variable `depth` takes the next item, or jumps with [result]
    LoopEnd,       ///< [result state value] becomes [value state]
    Swap1,         ///< [result value] becomes [value]
    SetUnbound,    ///< variable `index` is bound to nothing
    Raise          ///< an error with the text constants[index]
};

/// Compiles an expression for evaluation in a scope (null: the global one). Mistakes in special forms become code
/// that raises their error when it is reached. Throws LispError only for what nests too deeply.
Value compileExpression(const Value& expression, Environment* scope, SymbolTable& symbols);
/// Compiles (parameters body ...), the rest of a LAMBDA list.
Value compileFunction(const std::string& name, const Value& parametersAndBody, Environment* scope,
                      SymbolTable& symbols);

}  // namespace kova::script::lisp
