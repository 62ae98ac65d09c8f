// COMMAND and system variables.

#include <cmath>

#include "cmd/calculator.hpp"
#include "doc/pick/picking.hpp"
#include "script/lisp/function_table.hpp"
#include "script/lisp/cad.hpp"
#include "script/lisp/printer.hpp"
#include "strings/numbers.hpp"

namespace kova::script::lisp {

using math::Vector2;
using math::Vector3;

Value fromSysVar(const engine::SysVarValue& value) {
    if (const auto* i = std::get_if<std::int32_t>(&value)) return Value::integer(*i);
    if (const auto* r = std::get_if<double>(&value)) return Value::real(*r);
    if (const auto* s = std::get_if<std::string>(&value)) return Value::string(*s);
    return pointValue(std::get<Vector3>(value));
}

engine::SysVarValue toSysVar(const char* function, const Value& value) {
    if (value.isInteger()) {
        if (value.asInteger() < std::numeric_limits<std::int32_t>::min() ||
            value.asInteger() > std::numeric_limits<std::int32_t>::max())
            badArgument(function, "a smaller number", value);
        return static_cast<std::int32_t>(value.asInteger());
    }
    if (value.isReal()) return value.asReal();
    if (value.isString()) return value.text();
    return pointArgument(function, value);
}

namespace {

/// The line that the user gives at a PAUSE goes to the running command.
class PauseQuestion final : public Question {
public:
    bool accept(Machine& m, const std::string& line, Value&) override {
        m.host().processor().input(line);
        return true;
    }
    std::string prompt(const Machine& m) const override { return m.host().processor().prompt(); }
};

/// Gives its arguments to the command line one by one.
class Commanding final : public Continuation {
public:
    Commanding(std::vector<Value> arguments, bool truth) : arguments_(std::move(arguments)), truth_(truth) {}

    Value step(Machine& m, Value) override {
        m.noteCommand();
        m.flush();
        while (next_ < arguments_.size()) {
            const Value& v = arguments_[next_++];
            if (v.isString() && v.text() == "\\") {
                if (!m.host().processor().isActive()) continue;
                return m.wait(std::make_unique<PauseQuestion>());
            }
            give(m, v);
        }
        return truth_ ? boolean(m, true) : Value();
    }

private:
    static std::string numberText(const Value& v) {
        if (v.isInteger()) return std::to_string(v.asInteger());
        if (!std::isfinite(v.asReal())) badArgument("COMMAND", "a finite number", v);
        return strings::shortest(v.asReal());
    }

    void give(Machine& m, const Value& v) {
        switch (v.kind()) {
            case Kind::Nil:
                cancelCommand(m);
                return;
            case Kind::String:
                line(m, v.text());
                return;
            case Kind::Integer:
            case Kind::Real:
                line(m, numberText(v));
                return;
            case Kind::Entity:
                line(m, cmd::namedPick(v.handle()));
                return;
            case Kind::Selection:
                selection(m, *v.as<SelectionObject>());
                return;
            case Kind::Symbol:
                if (v.asSymbol() == m.symbols().t) return line(m, "T");
                break;
            case Kind::Cons:
                if (isPoint(v)) {
                    std::string text;
                    for (ListView item(v); item; ++item) text += (text.empty() ? "" : ",") + numberText(*item);
                    return line(m, text);
                }
                if (v.car().isEntity() && isPoint(v.cdr().car())) {
                    const Vector2 at = worldPoint(m.drawing(), pointArgument("COMMAND", v.cdr().car()));
                    return line(m, cmd::namedPick(v.car().handle(), &at));
                }
                break;
            default:
                break;
        }
        badArgument("COMMAND", "text, a number, a point, an entity name or a selection set", v);
    }

    static void line(Machine& m, const std::string& text) {
        cmd::CommandProcessor& processor = m.host().processor();
        if (engine::sysVarInt(m.drawing(), "CMDECHO", 1) != 0) m.host().print(processor.prompt() + " " + text);
        if (text.size() >= 2 && text.front() == '\'') {
            const std::string name = text.substr(1);
            switch (processor.runTransparent(name)) {
                case cmd::CommandProcessor::Start::Unknown:
                    m.host().print("; Unknown command: " + name);
                    break;
                case cmd::CommandProcessor::Start::Refused:
                    m.host().print("'" + name + ": cannot be used transparently.");
                    break;
                case cmd::CommandProcessor::Start::Done:
                    break;
            }
        } else if (processor.isActive()) {
            processor.input(text);
        } else if (!text.empty() && processor.startLine(text) == cmd::CommandProcessor::Start::Unknown) {
            m.host().print("; Unknown command: " + text);
        }
    }

    static void selection(Machine& m, const SelectionObject& set) {
        cmd::CommandProcessor& processor = m.host().processor();
        if (!processor.isActive()) return;
        cmd::Tool* tool = processor.tool();
        const bool whole = tool->isSelectingObjects() && !processor.prompt().starts_with("Remove");
        std::vector<std::uint64_t> ids;
        for (const std::uint64_t handle : set.handles) {
            const engine::Entity* e = m.drawing().findByHandle(handle);
            if (e == nullptr || !m.document().isSelectable(*e)) continue;
            if (!whole) {
                if (!processor.isActive()) return;
                line(m, cmd::namedPick(handle));
                continue;
            }
            ids.push_back(e->id());
        }
        if (!whole) return;
        if (engine::sysVarInt(m.drawing(), "CMDECHO", 1) != 0)
            m.host().print(processor.prompt() + " <Selection set: " + std::to_string(set.handles.size()) + ">");
        for (const std::vector<Vector2>& window : set.crossings) tool->crossingSelected(window);
        m.document().selection().add(ids);
        tool->selectionChanged();
    }

    static void cancelCommand(Machine& m) {
        if (m.host().processor().cancel()) m.host().print("*Cancel*");
    }

    std::vector<Value> arguments_;
    std::size_t next_ = 0;
    bool truth_;
};

template <bool Truth>
Value command(Machine& m, Value* v, int n) {
    std::vector<Value> arguments(v, v + n);
    if (arguments.empty()) arguments.emplace_back();
    return m.start(m, std::make_unique<Commanding>(std::move(arguments), Truth));
}

Value getVariable(Machine& m, Value* v, int) {
    const std::string& name = v[0].isSymbol() ? v[0].asSymbol()->name : stringArgument("GETVAR", v[0]);
    if (engine::equalNoCase(name, "CLAYER")) return Value::string(m.drawing().currentLayer.str());
    const auto value = engine::getSysVar(m.drawing(), name);
    return value ? fromSysVar(*value) : Value();
}

Value cal(Machine& m, Value* v, int) {
    const math::ExpressionResult result = cmd::calculate(m.document(), stringArgument("CAL", v[0]));
    if (!result.ok()) throw LispError("CAL: " + result.error);
    if (const auto number = result.number()) return Value::real(*number);
    return pointValue(std::get<Vector3>(result.value));
}

Value setVariable(Machine& m, Value* v, int) {
    const std::string name =
        v[0].isSymbol() ? v[0].asSymbol()->name : engine::upperCase(stringArgument("SETVAR", v[0]));
    if (engine::findSysVar(name) == nullptr) throw LispError("SETVAR: unknown variable " + name);
    if (engine::equalNoCase(name, "CLAYER")) {
        const std::string& layer = stringArgument("SETVAR", v[1]);
        if (!m.drawing().layers.contains(layer)) throw LispError("SETVAR: there is no layer " + layer);
    }
    const std::string error = m.document().setVariable(name, toSysVar("SETVAR", v[1]));
    if (!error.empty()) throw LispError("SETVAR: " + error);
    return v[1];
}

Value registerCommand(Machine&, Value*, int) { return {}; }

}  // namespace

std::span<const BuiltinDef> commandBuiltins() {
    static constexpr BuiltinDef rows[] = {
        {"COMMAND", 0, kAny, command<false>, "[argument ...]",
         "Gives its arguments to the command line, one after the other, as if typed: strings, numbers, points, entity "
         "names "
         "and (entity point) as picks, selection sets; \"\" is Enter. PAUSE waits for one line of the user. Without "
         "arguments, or with nil, the running command is cancelled.",
         "(command \"LINE\" '(0 0) '(10 5) \"\") -> nil"},
        {"COMMAND-S", 0, kAny, command<false>, "[argument ...]", "As COMMAND.", "(command-s \"REGEN\") -> nil"},
        {"VL-CMDF", 0, kAny, command<true>, "[argument ...]", "As COMMAND; gives T.", "(vl-cmdf \"REGEN\") -> T"},
        {"GETVAR", 1, 1, getVariable, "name", "A system variable's value; nil for an unknown one.",
         "(getvar \"CLAYER\") -> \"0\""},
        {"CAL", 1, 1, cal, "expression", "What the calculator of the command CAL gives: a real or a point.",
         "(cal \"2*(3+4)\") -> 14.0"},
        {"SETVAR", 2, 2, setVariable, "name value", "Sets a system variable.", "(setvar \"OSMODE\" 0) -> 0"},
        {"GRAPHSCR", 0, 0, registerCommand, "", "Does nothing: there is one screen.", "(graphscr) -> nil"},
        {"TEXTSCR", 0, 0, registerCommand, "", "Does nothing: there is one screen.", "(textscr) -> nil"},
        {"GRDRAW", 3, 4, registerCommand, "from to color [highlight]", "Does nothing: there is no window.",
         "(grdraw '(0 0) '(5 5) 1) -> nil"},
        {"GRVECS", 1, 2, registerCommand, "vectors [transformation]", "Does nothing: there is no window.",
         "(grvecs '(1 (0 0) (5 5))) -> nil"},
        {"GRTEXT", 0, 3, registerCommand, "[box text [highlight]]", "Does nothing: there is no window.",
         "(grtext -1 \"Working\") -> nil"},
        {"REDRAW", 0, 2, registerCommand, "[entity [mode]]", "Does nothing: there is no window.", "(redraw) -> nil"},
    };
    return rows;
}

}  // namespace kova::script::lisp
