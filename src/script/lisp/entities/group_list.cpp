#include "script/lisp/entities/group_list.hpp"

#include <charconv>
#include <cmath>

#include "script/lisp/function_table.hpp"
#include "script/lisp/printer.hpp"

namespace kova::script::lisp {

namespace {

[[noreturn]] void badGroup(int code, const char* expected, const Value& v) {
    std::string text = printed(v);
    if (text.size() > 60) text = text.substr(0, 57) + "...";
    throw LispError("group " + std::to_string(code) + ": expected " + expected + ", got " + text);
}

}  // namespace

GroupList::GroupList(const Value& list) : list_(list) {
    for (ListView item(list_); item; ++item) {
        if (!item->isCons() || !item->car().isInteger())
            throw LispError("bad DXF group: " + printed(*item).substr(0, 60));
        const std::int64_t code = item->car().asInteger();
        if (code == -3) {
            extended_ = item->cdr();
            hasExtended_ = true;
            continue;
        }
        if (code < -4 || code > 1071) throw LispError("bad DXF group: " + printed(*item).substr(0, 60));
        groups_.push_back({static_cast<int>(code), &item->cdr()});
    }
}

const Value* GroupList::find(int code) const {
    for (const Group& g : groups_)
        if (g.code == code) return g.value;
    return nullptr;
}

double GroupList::realOf(int code, const Value& v) {
    // (40 . 2.5), and (40 2.5) as some programs have it.
    const Value& n = v.isCons() && v.cdr().isNil() ? v.car() : v;
    if (!n.isNumber() || !std::isfinite(n.number())) badGroup(code, "a finite number", v);
    return n.number();
}

std::int64_t GroupList::integerOf(int code, const Value& v) {
    const double n = realOf(code, v);
    if (n != std::trunc(n) || std::abs(n) > 9e15) badGroup(code, "an integer", v);
    return static_cast<std::int64_t>(n);
}

const std::string& GroupList::textOf(int code, const Value& v) {
    const Value& s = v.isCons() && v.cdr().isNil() ? v.car() : v;
    if (!s.isString()) badGroup(code, "a string", v);
    return s.text();
}

math::Vector3 GroupList::pointOf(int code, const Value& v) {
    if (!isPoint(v)) badGroup(code, "a point", v);
    math::Vector3 p(v.car().number(), v.cdr().car().number(), 0.0);
    if (v.cdr().cdr().isCons()) p.z = v.cdr().cdr().car().number();
    if (!p.is_finite()) badGroup(code, "a point", v);
    return p;
}

std::string GroupList::text(int code, std::string_view fallback) const {
    const Value* v = find(code);
    return v != nullptr ? textOf(code, *v) : std::string(fallback);
}

double GroupList::real(int code, double fallback) const {
    const Value* v = find(code);
    return v != nullptr ? realOf(code, *v) : fallback;
}

std::int64_t GroupList::integer(int code, std::int64_t fallback) const {
    const Value* v = find(code);
    return v != nullptr ? integerOf(code, *v) : fallback;
}

std::uint64_t GroupList::handle(int code) const {
    const Value* v = find(code);
    if (v == nullptr) return 0;
    if (v->isEntity()) return v->handle();
    if (!v->isString()) return 0;
    std::uint64_t handle = 0;
    std::from_chars(v->text().data(), v->text().data() + v->text().size(), handle, 16);
    return handle;
}

math::Vector3 GroupList::point(int code, const math::Vector3& fallback) const {
    const Value* v = find(code);
    return v != nullptr ? pointOf(code, *v) : fallback;
}

std::vector<math::Vector3> GroupList::points(int code) const {
    std::vector<math::Vector3> out;
    for (const Group& g : groups_)
        if (g.code == code) out.push_back(pointOf(code, *g.value));
    return out;
}

std::vector<double> GroupList::reals(int code) const {
    std::vector<double> out;
    for (const Group& g : groups_)
        if (g.code == code) out.push_back(realOf(code, *g.value));
    return out;
}

void GroupWriter::point(int code, const math::Vector3& p) { add(code, pointValue(p)); }
void GroupWriter::point(int code, const math::Vector2& p) {
    add(code, Value::list({Value::real(p.x), Value::real(p.y)}));
}

}  // namespace kova::script::lisp
