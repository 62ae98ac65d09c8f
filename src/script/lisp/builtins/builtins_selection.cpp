// Selection sets.

#include "doc/pick/picking.hpp"
#include "cmd/selection.hpp"
#include "script/lisp/function_table.hpp"
#include "script/lisp/cad.hpp"
#include "script/lisp/entities/entity_filter.hpp"
#include "script/lisp/entities/entity_names.hpp"

namespace kova::script::lisp {

using math::Vector2;

namespace {

Value newSelection() {
    Heap::charge(sizeof(SelectionObject));
    return Value::object(new SelectionObject);
}

/// The entities that pass the filter as a set; nil when there are none.
Value selectionOf(Machine& m, const std::vector<std::uint64_t>& ids, const EntityFilter& filter, bool unlocked,
                  bool remember, cmd::CrossingWindows crossings = {}) {
    Value set = newSelection();
    auto* selection = set.as<SelectionObject>();
    std::vector<std::uint64_t> kept;
    const engine::Drawing& d = m.drawing();
    for (const std::uint64_t id : ids) {
        engine::Entity* e = d.findById(id);
        if (e == nullptr || !filter.passes(*e)) continue;
        if (unlocked) {
            const engine::Layer* layer = d.layers.find(e->layer);
            if (layer != nullptr && layer->locked) continue;
        }
        if (selection->add(e->handle())) kept.push_back(id);
    }
    if (selection->handles.empty()) return {};
    if (remember) m.host().processor().setPreviousSelection(std::move(kept), crossings);
    selection->crossings = std::move(crossings);
    return set;
}

struct Modes {
    std::string method;     ///< "X", "W" ...; empty: ask
    bool unlocked = false;  ///< :L
    bool single = false;    ///< :S
};

Modes modesOf(const std::string& text) {
    Modes modes;
    const std::string upper = engine::upperCase(text);
    for (std::size_t i = 0; i < upper.size(); ++i) {
        const char c = upper[i];
        if (c == '_' || c == '+' || c == '.' || c == '-') continue;
        if (c == ':') {
            ++i;
            if (i < upper.size() && upper[i] == 'L') modes.unlocked = true;
            if (i < upper.size() && upper[i] == 'S') modes.single = true;
            continue;
        }
        modes.method += c;
    }
    return modes;
}

/// Asks for objects with the selection dialogue that all commands share.
class SelectionQuestion final : public Question {
public:
    SelectionQuestion(Machine& m, EntityFilter filter, Modes modes)
        : document_(m.document()),
          filter_(std::move(filter)),
          modes_(std::move(modes)),
          dialogue_(document_, {[&m](const std::string& text) { m.host().print(text); },
                                [this](const std::string& text) { override_ = text; }}) {
        document_.selection().clear();
        dialogue_.setPrevious(m.host().processor().previousSelection());
    }
    ~SelectionQuestion() override {
        if (!done_) document_.selection().clear();
    }

    bool accept(Machine& m, const std::string& line, Value& result) override {
        if (!dialogue_.take(line)) {
            if (line.empty()) return finish(m, result);
            m.host().print("Invalid selection.");
            return false;
        }
        return (dialogue_.wantsEnd() || (modes_.single && !document_.selection().empty())) && finish(m, result);
    }
    std::string prompt(const Machine&) const override {
        return override_.empty() ? cmd::selectionPrompt(document_.selection().size()) : override_;
    }

private:
    bool finish(Machine& m, Value& result) {
        const std::vector<std::uint64_t> ids = document_.selection().ids();
        document_.selection().clear();
        done_ = true;
        result = selectionOf(m, ids, filter_, modes_.unlocked, true, dialogue_.crossings());
        return true;
    }

    doc::Document& document_;
    EntityFilter filter_;
    Modes modes_;
    std::string override_;
    cmd::SelectionDialogue dialogue_;
    bool done_ = false;
};

Vector2 worldArgument(Machine& m, const Value& v) { return worldPoint(m.drawing(), pointArgument("SSGET", v)); }

std::vector<Vector2> pointsArgument(Machine& m, const Value& v) {
    std::vector<Vector2> points;
    for (ListView item(listArgument("SSGET", v)); item; ++item) points.push_back(worldArgument(m, *item));
    return points;
}

bool isFilter(const Value& v) {
    return v.isCons() && v.car().isCons() && v.car().car().isInteger() && !isPoint(v.car());
}

Value ssGet(Machine& m, Value* v, int n) {
    int at = 0;
    Modes modes;
    bool pick = false;
    if (n > 0 && v[0].isString()) {
        modes = modesOf(v[0].text());
        at = 1;
    } else if (n > 0 && isPoint(v[0])) {
        pick = true;
    }
    const std::string& method = modes.method;
    doc::Document& document = m.document();
    const auto argument = [&]() -> const Value& {
        if (at >= n) throw LispError("SSGET: too few arguments for mode " + method);
        return v[at++];
    };
    std::vector<std::uint64_t> ids;
    std::vector<Vector2> points;
    cmd::CrossingWindows crossings;
    bool twoPoints = method == "W" || method == "C" || method == "B";
    bool manyPoints = method == "WP" || method == "CP" || method == "F";
    if (twoPoints) {
        points = {worldArgument(m, argument()), {}};
        points[1] = worldArgument(m, argument());
    } else if (manyPoints) {
        points = pointsArgument(m, argument());
    } else if (pick) {
        points = {worldArgument(m, v[at++])};
    }
    if (at < n && v[at].isTrue() && !isFilter(v[at])) badArgument("SSGET", "a filter list", v[at]);
    EntityFilter filter(at < n ? v[at] : Value());
    if (method.empty() && !pick) {
        m.flush();
        return m.wait(std::make_unique<SelectionQuestion>(m, std::move(filter), std::move(modes)));
    }
    if (pick) {
        if (const engine::Entity* e = cmd::pickEntity(document, points[0])) ids = {e->id()};
    } else if (method == "X") {
        // All of the drawing, whatever is shown: model space first, then the layouts.
        engine::Drawing& d = m.drawing();
        for (const engine::Entity& e : d.modelSpace()) ids.push_back(e.id());
        for (const auto& layout : d.layouts())
            for (const engine::Entity& e : layout->entities) ids.push_back(e.id());
    } else if (method == "A") {
        for (engine::Entity& e : m.drawing().currentSpace())
            if (const engine::Layer* l = m.drawing().layers.find(e.layer); l == nullptr || (!l->frozen && !l->locked))
                ids.push_back(e.id());
    } else if (method == "L") {
        if (const std::uint64_t id = cmd::lastEntity(document)) ids = {id};
    } else if (method == "P") {
        ids = m.host().processor().previousSelection();
    } else if (method == "I") {
        ids = document.selection().ids();
    } else if (twoPoints) {
        const bool crossing = method == "C" || (method == "B" && points[1].x < points[0].x);
        ids = cmd::selectBox(document, points[0], points[1], crossing);
        if (crossing)
            crossings.push_back({points[0], {points[1].x, points[0].y}, points[1], {points[0].x, points[1].y}});
    } else if (method == "F") {
        if (points.size() >= 2) ids = cmd::selectFence(document, points);
    } else if (manyPoints) {
        if (points.size() >= 3) ids = cmd::selectPolygon(document, points, method == "CP");
        if (points.size() >= 3 && method == "CP") crossings.push_back(points);
    } else {
        badArgument("SSGET", "a selection mode", v[0]);
    }
    return selectionOf(m, ids, filter, modes.unlocked, method != "X", std::move(crossings));
}

Value ssLength(Machine&, Value* v, int) {
    return Value::integer(static_cast<std::int64_t>(selectionArgument("SSLENGTH", v[0])->handles.size()));
}

Value ssName(Machine&, Value* v, int) {
    const auto& handles = selectionArgument("SSNAME", v[0])->handles;
    const std::int64_t index = integerArgument("SSNAME", v[1]);
    if (index < 0 || static_cast<std::size_t>(index) >= handles.size()) return {};
    return Value::entity(handles[static_cast<std::size_t>(index)]);
}

Value ssAdd(Machine&, Value* v, int n) {
    Value set = n > 1 && v[1].isTrue() ? v[1] : newSelection();
    SelectionObject* selection = selectionArgument("SSADD", set);
    if (n > 0) selection->add(SubName::of(entityArgument("SSADD", v[0])).handle);
    return set;
}

Value ssDel(Machine&, Value* v, int) {
    const std::uint64_t handle = entityArgument("SSDEL", v[0]);
    return selectionArgument("SSDEL", v[1])->remove(handle) ? v[1] : Value();
}

Value ssMemb(Machine&, Value* v, int) {
    const std::uint64_t handle = entityArgument("SSMEMB", v[0]);
    return selectionArgument("SSMEMB", v[1])->members.contains(handle) ? v[0] : Value();
}

Value ssSetFirst(Machine& m, Value* v, int n) {
    std::vector<std::uint64_t> ids;
    if (n > 1 && v[1].isTrue())
        for (const std::uint64_t handle : selectionArgument("SSSETFIRST", v[1])->handles)
            if (const engine::Entity* e = m.drawing().findByHandle(handle);
                e != nullptr && m.document().isSelectable(*e))
                ids.push_back(e->id());
    m.document().selection().set(std::move(ids));
    return Value::list(v, static_cast<std::size_t>(n));
}

Value ssGetFirst(Machine& m, Value*, int) {
    Value set = newSelection();
    auto* selection = set.as<SelectionObject>();
    for (const std::uint64_t id : m.document().selection().ids())
        if (const engine::Entity* e = m.drawing().findById(id)) selection->add(e->handle());
    return Value::list({Value(), selection->handles.empty() ? Value() : set});
}

}  // namespace

std::span<const BuiltinDef> selectionBuiltins() {
    static constexpr BuiltinDef rows[] = {
        {"SSGET", 0, 4, ssGet, "[mode] [points] [filter]",
         "A selection set; nil when nothing is found. Without a mode the user is asked. Modes: X all of the drawing, A "
         "all that "
         "is thawed and unlocked, L last, P previous, I selected before, W and C with two corners, WP, CP and F with a "
         "list of "
         "points; a point alone picks. The filter lists groups that must match, texts with wildcards, with relations "
         "((-4 . \">=\") before a group) and brackets ((-4 . \"<OR\") ... (-4 . \"OR>\")).",
         "(ssget \"X\" '((0 . \"CIRCLE\") (-4 . \">\") (40 . 2.0))) -> nil"},
        {"SSLENGTH", 1, 1, ssLength, "set", "The number of entities.", "(sslength (ssadd)) -> 0"},
        {"SSNAME", 2, 2, ssName, "set index", "The entity at a position, from 0; nil beyond the end.",
         "(ssname (ssadd) 0) -> nil"},
        {"SSADD", 0, 2, ssAdd, "[entity [set]]", "A new set, or one with an entity added.",
         "(type (ssadd)) -> PICKSET"},
        {"SSDEL", 2, 2, ssDel, "entity set", "Takes an entity out of a set; nil when it is not in it.",
         "(ssdel (entlast) set)"},
        {"SSMEMB", 2, 2, ssMemb, "entity set", "The entity when it is in the set, else nil.", "(ssmemb (entlast) set)"},
        {"SSSETFIRST", 1, 2, ssSetFirst, "nil [set]", "Selects the set's entities for the next command.",
         "(sssetfirst nil set)"},
        {"SSGETFIRST", 0, 0, ssGetFirst, "", "(nil set) with what is selected now; (nil nil) for nothing.",
         "(ssgetfirst) -> (nil nil)"},
    };
    return rows;
}

}  // namespace kova::script::lisp
