// The table of functions as a whole, and the manual made from it.

#include "script/lisp/function_table.hpp"

namespace kova::script::lisp {

std::span<const FormDef> specialForms() {
    static constexpr FormDef rows[] = {
        {"QUOTE", "expression", "The expression as it stands; written 'expression.", "'(a b) -> (A B)"},
        {"FUNCTION", "function", "A function as a value; a LAMBDA list is compiled.",
         "(apply (function (lambda (x) (* x x))) '(3)) -> 9"},
        {"SETQ", "symbol value [symbol value ...]",
         "Gives variables values: the innermost variables of these names, else the global ones.",
         "(setq a 1 b 2) -> 2"},
        {"DEFUN", "name (parameter ... [/ local ...]) expression ...",
         "Defines a function. A function named C:WORD is run by typing WORD.", "(defun twice (x) (* 2 x)) -> TWICE"},
        {"DEFUN-Q", "name (parameter ... [/ local ...]) expression ...", "As DEFUN.",
         "(defun-q half (x) (/ x 2)) -> HALF"},
        {"LAMBDA", "(parameter ... [/ local ...]) expression ...",
         "A function without a name. It sees the variables that stand around it.", "((lambda (x) (+ x 1)) 4) -> 5"},
        {"IF", "test then [else]", "The value of one of two expressions.", "(if (> 2 1) 'yes 'no) -> YES"},
        {"COND", "(test expression ...) ...", "The expressions of the first clause whose test is not nil.",
         "(cond ((= 1 2) 'a) (T 'b)) -> B"},
        {"AND", "expression ...", "T when no expression is nil; stops at the first that is.", "(and 1 2) -> T"},
        {"OR", "expression ...", "T when one expression is not nil; stops there.", "(or nil 2) -> T"},
        {"WHILE", "test expression ...", "Repeats while the test is not nil.",
         "(progn (setq n 0) (while (< n 3) (setq n (1+ n)))) -> 3"},
        {"REPEAT", "count expression ...", "Repeats a number of times.",
         "(progn (setq n 0) (repeat 4 (setq n (+ n 2)))) -> 8"},
        {"FOREACH", "symbol list expression ...", "Repeats for each item of a list.",
         "(foreach x '(1 2 3) (* x x)) -> 9"},
        {"PROGN", "expression ...", "Several expressions as one; the last one's value.", "(progn 1 2 3) -> 3"},
    };
    return rows;
}

std::span<const BuiltinGroup> builtinGroups() {
    static const BuiltinGroup groups[] = {
        {"Numbers", numberBuiltins()},
        {"Comparison", comparisonBuiltins()},
        {"Lists", listBuiltins()},
        {"Kinds of values", typeBuiltins()},
        {"Strings", stringBuiltins()},
        {"Conversion", conversionBuiltins()},
        {"Output", outputBuiltins()},
        {"Functions that call functions, errors, loading", controlBuiltins()},
        {"Files and surroundings", fileBuiltins()},
        {"Geometry", geometryBuiltins(), true},
        {"Asking the user", inputBuiltins(), true},
        {"Commands and system variables", commandBuiltins(), true},
        {"Entities", entityBuiltins(), true},
        {"Selection sets", selectionBuiltins(), true},
        {"Tables and dictionaries", tableBuiltins(), true},
    };
    return groups;
}

namespace {

void appendCell(std::string& out, std::string_view text, bool code) {
    out += code && !text.empty() ? " `" : " ";
    for (const char c : text) {
        if (c == '|') out += '\\';
        out += c;
    }
    out += code && !text.empty() ? "` |" : " |";
}

void appendRow(std::string& out, std::string_view name, std::string_view arguments, std::string_view doc,
               std::string_view example) {
    std::string call = "(" + std::string(name);
    if (!arguments.empty()) call += " " + std::string(arguments);
    out += "|";
    appendCell(out, call + ")", true);
    appendCell(out, doc, false);
    appendCell(out, example, true);
    out += '\n';
}

constexpr std::string_view kHead = "\n| Call | Meaning | Example |\n|---|---|---|\n";

}  // namespace

std::string manual() {
    std::string out = R"(# LISP

A line that begins with "(" is evaluated, and its value becomes a transcript line. A function named `C:WORD` runs when WORD
is typed and no command has that name. `(load "file")` evaluates a file; LISPRELOAD loads all loaded files again. At the
start the file that `KOVACAD_LISP` names is loaded, else `kovacad/startup.lsp` in the user's configuration folder; then
`(S::STARTUP)` is called when it is defined.

Symbols know no upper and lower case. An unbound symbol is nil. Functions see the variables that stand around them where they
are written. Integers have 64 bits and become reals when they overflow. A function that asks (`GETPOINT` ...) stops the
evaluation until the next line is typed; Escape ends it. An error calls the function `*ERROR*`, when one is defined,
with the message; else the line "; error: " and the message is shown.

This file is made from the table of functions; a test checks that it is up to date.

## Special forms
)";
    out += kHead;
    for (const FormDef& f : specialForms()) appendRow(out, f.name, f.arguments, f.doc, f.example);
    for (const BuiltinGroup& group : builtinGroups()) {
        out += "\n## " + std::string(group.title) + "\n";
        out += kHead;
        for (const BuiltinDef& f : group.rows) appendRow(out, f.name, f.arguments, f.doc, f.example);
    }
    return out;
}

}  // namespace kova::script::lisp
