// Functions that ask the user, and INITGET.

#include <cmath>

#include "doc/pick/picking.hpp"
#include "cmd/limits_check.hpp"
#include "cmd/point_entry.hpp"
#include "engine/entities/block_reference.hpp"
#include "engine/model/object_plane.hpp"
#include "engine/model/units.hpp"
#include "math/angles.hpp"
#include "script/lisp/function_table.hpp"
#include "script/lisp/cad.hpp"
#include "script/lisp/entities/entity_names.hpp"
#include "script/lisp/entities/nested_pick.hpp"

namespace kova::script::lisp {

using math::Vector2;
using math::Vector3;

namespace {

bool isUpper(char c) { return c >= 'A' && c <= 'Z'; }
bool isMark(char c) { return isUpper(c) || (c >= '0' && c <= '9') || c == '-'; }

/// The keyword that an input names: any beginning of the word that holds its capitals, or the capitals and what
/// follows them. "LTYPE,LT" gives the short form behind the comma. Words behind one that begins with "_" are what the
/// program gets for those before it.
std::string matchInitget(const std::string& keywords, std::string_view line) {
    if (line.starts_with('_')) line.remove_prefix(1);
    const std::string input = engine::upperCase(cmd::trimmed(line));
    if (input.empty()) return {};
    std::vector<std::string> words = cmd::splitWords(keywords);
    std::vector<std::string> results;
    const auto global =
        std::find_if(words.begin(), words.end(), [](const std::string& w) { return w.starts_with('_'); });
    if (global != words.end()) {
        results.assign(global, words.end());
        words.erase(global, words.end());
        results.front().erase(0, 1);
    }
    for (std::size_t i = 0; i < words.size(); ++i) {
        std::string word = words[i];
        std::string shortForm;
        if (const std::size_t comma = word.find(','); comma != std::string::npos) {
            shortForm = word.substr(comma + 1);
            word.resize(comma);
        }
        const std::string upper = engine::upperCase(word);
        std::size_t from = 0;
        while (from < word.size() && !isMark(word[from])) ++from;
        std::size_t to = from;
        while (to < word.size() && isMark(word[to])) ++to;
        if (from == word.size()) from = 0, to = 1;
        bool found = !shortForm.empty() && input == engine::upperCase(shortForm);
        if (shortForm.empty()) {
            found = (input.size() >= to && upper.starts_with(input)) ||
                    (input.size() >= to - from && std::string_view(upper).substr(from).starts_with(input));
        } else {
            found = found || upper == input;
        }
        if (found) return i < results.size() ? results[i] : word;
    }
    return {};
}

enum class Ask { Real, Integer, Text, Point, Keyword, Angle, Orientation, Distance, Corner };

/// One line's worth of an asking function.
class ValueQuestion final : public Question {
public:
    ValueQuestion(Ask kind, InitgetState state, std::optional<Vector2> base)
        : kind_(kind), state_(std::move(state)), base_(base) {}

    bool accept(Machine& m, const std::string& line, Value& result) override {
        const std::string text(cmd::trimmed(line));
        if (text.empty() && !entry_.waiting()) {
            if (kind_ == Ask::Text) {
                result = Value::string({});
                return true;
            }
            if ((state_.bits & InitgetState::kNoEnter) != 0) return refuse(m, "Invalid input.");
            return true;
        }
        if (kind_ == Ask::Text) {
            // Keywords do not count for strings.
            result = Value::string(line);
            return true;
        }
        if (const std::string keyword = matchInitget(state_.keywords, text); !keyword.empty()) {
            result = Value::string(keyword);
            return true;
        }
        told_ = false;
        if (read(m, text, result)) return !waiting_;
        if (told_) return false;
        if ((state_.bits & InitgetState::kAnyInput) != 0) {
            result = Value::string(line);
            return true;
        }
        if (!refused_) refuse(m, refusal());
        refused_ = false;
        return false;
    }
    std::string prompt(const Machine& m) const override {
        return entry_.waiting() ? entry_.prompt() : Question::prompt(m);
    }

private:
    bool refuse(Machine& m, const char* text) {
        m.host().print(text);
        refused_ = true;
        return false;
    }
    const char* refusal() const {
        if (kind_ == Ask::Keyword) return "Invalid option keyword.";
        if (kind_ == Ask::Point || kind_ == Ask::Corner)
            return state_.keywords.empty() ? "Invalid point." : "Invalid point or option keyword.";
        return state_.keywords.empty() ? "Invalid value." : "Invalid option.";
    }
    bool number(Machine& m, double v, Value made, Value& result) {
        if (((state_.bits & InitgetState::kNoZero) != 0 && v == 0.0) ||
            ((state_.bits & InitgetState::kNoNegative) != 0 && v < 0.0))
            return refuse(m, v == 0.0 ? "Value must not be zero." : "Value must not be negative.");
        result = std::move(made);
        return true;
    }
    /// The point of a line, by snap words, too; nothing (told_) when it only is a part of one.
    std::optional<Vector2> point(Machine& m, const std::string& text) {
        const Vector2 base = first_ ? *first_ : base_.value_or(m.drawing().lastPoint);
        const auto result = entry_.feed(m.document(), text, base, first_ ? first_ : base_, base);
        if (result == cmd::PointEntry::Result::Point) return entry_.point();
        told_ = result != cmd::PointEntry::Result::NotMine;
        if (!entry_.refusal().empty()) m.host().print(entry_.refusal());
        return std::nullopt;
    }

    bool read(Machine& m, const std::string& text, Value& result) {
        engine::Drawing& d = m.drawing();
        // Among the points of a snap word a number is no answer of its own.
        const bool within = entry_.waiting();
        const bool isPlainNumber = !within && cmd::parseNumber(text).has_value();
        switch (kind_) {
            case Ask::Real: {
                auto v = cmd::parseNumber(text);
                if (!v) v = engine::parseDistance(text);
                return v && number(m, *v, Value::real(*v), result);
            }
            case Ask::Integer: {
                const auto v = cmd::parseInteger(text);
                return v && number(m, *v, Value::integer(*v), result);
            }
            case Ask::Distance: {
                if (within) return measure(m, text, result, false);
                auto v = cmd::parseNumber(text);
                if (!v) v = engine::parseDistance(text);
                if (v) return number(m, *v, Value::real(*v), result);
                return measure(m, text, result, false);
            }
            case Ask::Angle:
            case Ask::Orientation: {
                if (within) return measure(m, text, result, true);
                const cmd::PointContext context = cmd::PointContext::of(d);
                auto v = cmd::parseAngleInput(text, context);
                if (!v)
                    v = engine::parseAngle(text, engine::sysVarInt(d, "AUNITS"), context.angleBase, context.clockwise);
                if (!v) return measure(m, text, result, true);
                // GETANGLE tells the angle from the direction of angle 0.
                const double angle = kind_ == Ask::Angle ? *v - context.angleBase : *v;
                return number(m, angle, Value::real(math::normalizeAngle(angle)), result);
            }
            case Ask::Point:
            case Ask::Corner: {
                if (isPlainNumber && !base_) return refuse(m, refusal());
                const auto p = point(m, text);
                if (!p) return false;
                constexpr std::int64_t kNoLimits = 8;
                if (const char* outside = cmd::limitsRefusal(d, *p);
                    *outside != '\0' && (state_.bits & kNoLimits) == 0)
                    return refuse(m, outside);
                d.lastPoint = *p;
                const bool plain = !within && cmd::parsePointInput(text, {}, {}).has_value();
                const double height = plain ? typedHeight(d, text) : engine::sysVarReal(d, "ELEVATION");
                result = pointValue(userPoint(d, *p, height));
                return true;
            }
            case Ask::Keyword:
            case Ask::Text:
                return false;
        }
        return false;
    }

    /// A distance or direction shown by points: from the base, or from a first point that is then asked for.
    bool measure(Machine& m, const std::string& text, Value& result, bool direction) {
        const auto p = point(m, text);
        if (!p) return false;
        engine::Drawing& d = m.drawing();
        d.lastPoint = *p;
        if (!base_ && !first_) {
            first_ = *p;
            setPrompt("Specify second point:");
            waiting_ = true;
            return true;
        }
        waiting_ = false;
        const Vector2 step = *p - (first_ ? *first_ : *base_);
        if (!direction) return number(m, step.length(), Value::real(step.length()), result);
        double angle = step.angle();
        if (kind_ == Ask::Angle) angle -= cmd::PointContext::of(d).angleBase;
        result = Value::real(math::normalizeAngle(angle));
        return true;
    }

    /// A third coordinate as typed, else the current elevation.
    static double typedHeight(const engine::Drawing& d, const std::string& text) {
        const std::size_t first = text.find(',');
        const std::size_t second = first == std::string::npos ? first : text.find(',', first + 1);
        if (second != std::string::npos && !text.starts_with('@'))
            if (const auto z = cmd::parseNumber(std::string_view(text).substr(second + 1))) return *z;
        return engine::sysVarReal(d, "ELEVATION");
    }

    Ask kind_;
    InitgetState state_;
    std::optional<Vector2> base_;  ///< world
    std::optional<Vector2> first_;
    cmd::PointEntry entry_;
    bool waiting_ = false;
    bool refused_ = false;
    bool told_ = false;
};

/// Shows a prompt: lines before its last one go to the transcript, and blanks behind it are dropped.
std::string showPrompt(Machine& m, const Value* given, const char* usual) {
    std::string text = given != nullptr ? given->text() : std::string(usual);
    if (const std::size_t end = text.rfind('\n'); end != std::string::npos) {
        m.print(std::string_view(text).substr(0, end + 1));
        text.erase(0, end + 1);
    }
    // What was written on the line before belongs to the prompt only when there is none of its own.
    m.flush();
    while (!text.empty() && (text.back() == ' ' || text.back() == '\t' || text.back() == '\r')) text.pop_back();
    return text;
}

Value ask(Machine& m, const char* function, Ask kind, const char* usual, Value* v, int n) {
    std::optional<Vector2> base;
    const Value* prompt = nullptr;
    for (int i = 0; i < n; ++i) {
        if (v[i].isNil()) continue;
        if (v[i].isString())
            prompt = &v[i];
        else if (v[i].isCons())
            base = worldPoint(m.drawing(), pointArgument(function, v[i]));
        else if (kind != Ask::Text)
            badArgument(function, "a point or a prompt", v[i]);
    }
    if (kind == Ask::Corner && !base) throw LispError("GETCORNER: expected a base point");
    auto question = std::make_unique<ValueQuestion>(kind, std::exchange(m.initget(), {}), base);
    question->setPrompt(showPrompt(m, prompt, usual));
    return m.wait(std::move(question));
}

Value getReal(Machine& m, Value* v, int n) { return ask(m, "GETREAL", Ask::Real, "Enter real: ", v, n); }
Value getInt(Machine& m, Value* v, int n) { return ask(m, "GETINT", Ask::Integer, "Enter integer: ", v, n); }
Value getString(Machine& m, Value* v, int n) {
    // The first argument, unless it is the prompt, only tells whether blanks count; here they always do.
    if (n == 2) return ask(m, "GETSTRING", Ask::Text, "Enter string: ", v + 1, 1);
    return ask(m, "GETSTRING", Ask::Text, "Enter string: ", v, n);
}
Value getPoint(Machine& m, Value* v, int n) { return ask(m, "GETPOINT", Ask::Point, "Pick point: ", v, n); }
Value getCorner(Machine& m, Value* v, int n) { return ask(m, "GETCORNER", Ask::Corner, "Pick corner: ", v, n); }
Value getDist(Machine& m, Value* v, int n) { return ask(m, "GETDIST", Ask::Distance, "Enter distance: ", v, n); }
Value getAngle(Machine& m, Value* v, int n) { return ask(m, "GETANGLE", Ask::Angle, "Enter angle: ", v, n); }
Value getOrient(Machine& m, Value* v, int n) { return ask(m, "GETORIENT", Ask::Orientation, "Enter angle: ", v, n); }
Value getKeyword(Machine& m, Value* v, int n) { return ask(m, "GETKWORD", Ask::Keyword, "Enter keyword: ", v, n); }

Value initget(Machine& m, Value* v, int n) {
    InitgetState state;
    for (int i = 0; i < n; ++i) {
        if (v[i].isString())
            state.keywords = v[i].text();
        else if (v[i].isTrue())
            state.bits = integerArgument("INITGET", v[i]);
    }
    m.initget() = std::move(state);
    return {};
}

/// How an entity that was picked is told.
enum class Picking {
    Whole,         ///< (entity point)
    Nested,        ///< within a block the entity of its definition: (entity point matrix containers), the matrix 4 x 3
    NestedSquare,  ///< the same with a matrix of 4 x 4
};

Value matrixValue(const math::Matrix4& m, bool square) {
    ListBuilder rows;
    if (square) {
        for (int row = 0; row < 4; ++row)
            rows.add(Value::list(
                {Value::real(m(row, 0)), Value::real(m(row, 1)), Value::real(m(row, 2)), Value::real(m(row, 3))}));
    } else {
        // The images of the axes, then the shift.
        for (int column = 0; column < 4; ++column)
            rows.add(pointValue(Vector3(m(0, column), m(1, column), m(2, column))));
    }
    return rows.finish();
}

Value pickedValue(Machine& m, const engine::Entity& entity, const Vector2& at, Picking picking) {
    const Value point = pointValue(userPoint(m.drawing(), at, 0.0));
    const auto* reference = dynamic_cast<const engine::BlockReferenceEntity*>(&entity);
    if (picking == Picking::Whole || reference == nullptr) return Value::list({Value::entity(entity.handle()), point});
    const NestedPick pick = pickNested(*reference, at);
    if (pick.entity == nullptr) return Value::list({Value::entity(entity.handle()), point});
    const Value name = Value::entity(SubName{pick.entity->handle(), pick.attribute}.encoded());
    if (pick.containers.empty()) return Value::list({name, point});
    ListBuilder containers;
    for (const std::uint64_t handle : pick.containers) containers.add(Value::entity(handle));
    return Value::list({name, point, matrixValue(pick.toWorld, picking == Picking::NestedSquare), containers.finish()});
}

class EntityQuestion final : public Question {
public:
    EntityQuestion(InitgetState state, Picking picking) : state_(std::move(state)), picking_(picking) {}
    bool accept(Machine& m, const std::string& line, Value& result) override {
        const std::string text(cmd::trimmed(line));
        if (text.empty() && !entry_.waiting()) {
            m.document().setVariable("ERRNO", 52);
            return true;
        }
        if (const std::string keyword = matchInitget(state_.keywords, text); !keyword.empty()) {
            result = Value::string(keyword);
            return true;
        }
        const cmd::PickRules rules{{}, cmd::Locked::Taken, cmd::Reach::Space};
        std::optional<cmd::Picked> picked;
        if (!entry_.waiting()) picked = cmd::pickByWord(m.document(), text, rules);
        if (!picked) {
            const auto p = point(m, text);
            if (!p) return false;
            picked = cmd::pickAt(m.document(), *p, rules);
        }
        if (picked->entity == nullptr) {
            m.document().setVariable("ERRNO", 7);
            return true;
        }
        result = pickedValue(m, *picked->entity, picked->point, picking_);
        return true;
    }
    std::string prompt(const Machine& m) const override {
        return entry_.waiting() ? entry_.prompt() : Question::prompt(m);
    }

private:
    /// The point of a line; nothing, after a line that says why not, or when it only is a part of one.
    std::optional<Vector2> point(Machine& m, const std::string& text) {
        const Vector2 base = m.drawing().lastPoint;
        const auto result = entry_.feed(m.document(), text, base, {}, base);
        if (result == cmd::PointEntry::Result::Point) return entry_.point();
        if (result == cmd::PointEntry::Result::NotMine) m.host().print("Invalid point.");
        if (!entry_.refusal().empty()) m.host().print(entry_.refusal());
        return std::nullopt;
    }

    InitgetState state_;
    Picking picking_;
    cmd::PointEntry entry_;
};

template <Picking How>
Value entSel(Machine& m, Value* v, int n) {
    // A point picks without a question.
    const char* function = How == Picking::Whole ? "ENTSEL" : How == Picking::Nested ? "NENTSEL" : "NENTSELP";
    if (How == Picking::NestedSquare && n > 0 && v[n - 1].isCons()) {
        m.initget() = {};
        const Vector2 at = worldPoint(m.drawing(), pointArgument(function, v[n - 1]));
        const engine::Entity* entity = cmd::pickAt(m.document(), at, {{}, cmd::Locked::Taken, cmd::Reach::Space}).entity;
        return entity != nullptr ? pickedValue(m, *entity, at, How) : Value();
    }
    if (n > 0 && v[0].isTrue()) stringArgument(function, v[0]);
    auto question = std::make_unique<EntityQuestion>(std::exchange(m.initget(), {}), How);
    question->setPrompt(showPrompt(m, n > 0 && v[0].isTrue() ? v : nullptr, "Select object:"));
    return m.wait(std::move(question));
}

}  // namespace

std::span<const BuiltinDef> inputBuiltins() {
    static constexpr BuiltinDef rows[] = {
        {"GETREAL", 0, 1, getReal, "[prompt]", "Asks for a number.", "(getreal \"Radius: \")"},
        {"GETINT", 0, 1, getInt, "[prompt]", "Asks for a whole number.", "(getint \"How many? \")"},
        {"GETSTRING", 0, 2, getString, "[blanks] [prompt]", "Asks for a text: the whole line.",
         "(getstring T \"Title: \")"},
        {"GETPOINT", 0, 2, getPoint, "[base] [prompt]",
         "Asks for a point, in the current UCS; typed relative to the base, or to the last point.",
         "(getpoint \"Insertion point: \")"},
        {"GETCORNER", 1, 2, getCorner, "base [prompt]", "Asks for the opposite corner of a box.",
         "(getcorner p1 \"Other corner: \")"},
        {"GETDIST", 0, 2, getDist, "[base] [prompt]",
         "Asks for a distance: a number, a point from the base, or two points.", "(getdist \"Width: \")"},
        {"GETANGLE", 0, 2, getAngle, "[base] [prompt]",
         "Asks for an angle in degrees or by points; radians, from the direction of angle 0.",
         "(getangle \"Rotation: \")"},
        {"GETORIENT", 0, 2, getOrient, "[base] [prompt]", "The same, counter-clockwise from the x axis.",
         "(getorient \"Direction: \")"},
        {"GETKWORD", 0, 1, getKeyword, "[prompt]", "Asks for one of INITGET's keywords.",
         "(getkword \"Go on? [Yes/No]: \")"},
        {"INITGET", 0, 2, initget, "[bits] [keywords]",
         "Rules for the next asking function. Bits: 1 Enter is refused, 2 zero, 4 negative numbers, 128 any input is "
         "taken as text. Keywords are parted by blanks; their capitals suffice as an answer.",
         "(initget 1 \"Yes No\") -> nil"},
        {"ENTSEL", 0, 1, entSel<Picking::Whole>, "[prompt]",
         "Asks for an entity by a point on it; gives (entity point), or nil.", "(entsel \"Wall: \")"},
        {"NENTSEL", 0, 1, entSel<Picking::Nested>, "[prompt]",
         "As ENTSEL; in a block it gives the attribute at the point, or (entity point matrix containers): the entity "
         "of "
         "the definition, the images of its axes and origin, and the references that it stands in, the innermost "
         "first.",
         "(nentsel)"},
        {"NENTSELP", 0, 2, entSel<Picking::NestedSquare>, "[prompt] [point]",
         "As NENTSEL with a matrix of four rows of four numbers; a point picks without a question.",
         "(nentselp '(0 0)) -> nil"},
    };
    return rows;
}

}  // namespace kova::script::lisp
