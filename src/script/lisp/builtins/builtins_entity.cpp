// Entities: ENTGET, ENTMAKE and their kin.

#include <charconv>
#include <cmath>

#include "engine/kinds/all.hpp"
#include "engine/model/making_order.hpp"
#include "engine/symbols/symbols.hpp"
#include "script/lisp/function_table.hpp"
#include "script/lisp/entities/entity_codes.hpp"
#include "script/lisp/entities/entity_making.hpp"
#include "script/lisp/entities/entity_names.hpp"

namespace kova::script::lisp {

using namespace engine;

namespace {

Value entLast(Machine& m, Value*, int) {
    const Entity* e = newestEntity(m.drawing().currentSpace());
    return e != nullptr ? Value::entity(e->handle()) : Value();
}

Value entNext(Machine& m, Value* v, int n) {
    const Drawing& d = m.drawing();
    if (n == 0 || v[0].isNil()) {
        const Entity* e = oldestEntity(d.currentSpace());
        return e != nullptr ? Value::entity(e->handle()) : Value();
    }
    const SubName name = SubName::of(entityArgument("ENTNEXT", v[0]));
    const Entity* e = d.findByHandle(name.handle);
    if (e == nullptr || e->owner() == nullptr) return {};
    const std::size_t parts = partCount(*e);
    // The parts follow their entity, and the end of its sequence follows them.
    if (parts > 0 && name.part <= parts) return Value::entity(SubName{name.handle, name.part + 1}.encoded());
    const Entity* next = madeAfter(*e);
    return next != nullptr ? Value::entity(next->handle()) : Value();
}

Value handEnt(Machine& m, Value* v, int) {
    const std::string& text = stringArgument("HANDENT", v[0]);
    std::uint64_t handle = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), handle, 16);
    if (error != std::errc{} || end != text.data() + text.size()) return {};
    return m.drawing().findByHandle(handle) != nullptr ? Value::entity(handle) : Value();
}

Value entGet(Machine& m, Value* v, int n) {
    const std::uint64_t name = entityArgument("ENTGET", v[0]);
    if (isRecordName(name)) return recordGroups(m, name);
    const SubName sub = SubName::of(name);
    Entity* e = m.drawing().findByHandle(sub.handle);
    if (e == nullptr) return {};
    return entityGroups(*e, sub, n > 1 ? listArgument("ENTGET", v[1]) : Value());
}

Value entMake(Machine& m, Value* v, int) {
    std::uint64_t handle = 0;
    std::string block;
    if (!makeFromGroups(m, listArgument("ENTMAKE", v[0]), handle, block)) return {};
    return block.empty() ? v[0] : Value::string(block);
}

Value entMakeX(Machine& m, Value* v, int) {
    std::uint64_t handle = 0;
    std::string block;
    if (!makeFromGroups(m, listArgument("ENTMAKEX", v[0]), handle, block)) return {};
    if (!block.empty()) return Value::string(block);
    return handle != 0 ? Value::entity(handle) : Value();
}

Value entMod(Machine& m, Value* v, int) { return modifyFromGroups(m, listArgument("ENTMOD", v[0])) ? v[0] : Value(); }

Value entDel(Machine& m, Value* v, int) {
    const std::uint64_t name = entityArgument("ENTDEL", v[0]);
    if (isRecordName(name)) return {};
    const SubName sub = SubName::of(name);
    Entity* e = m.drawing().findByHandle(sub.handle);
    if (sub.part != 0) return {};
    if (e == nullptr) return restoreDeleted(m, name) ? v[0] : Value();
    doc::GroupScope group(m.document(), "LISP entdel");
    m.deleted.insert_or_assign(name, std::make_pair(std::shared_ptr<Entity>(e->clone().release()), e->owner()));
    if (m.deleted.size() > 10'000) m.deleted.erase(m.deleted.begin());
    m.document().removeEntity(*e);
    return v[0];
}

Value entUpd(Machine& m, Value* v, int) {
    const SubName sub = SubName::of(entityArgument("ENTUPD", v[0]));
    return m.drawing().findByHandle(sub.handle) != nullptr ? v[0] : Value();
}

}  // namespace

std::span<const BuiltinDef> entityBuiltins() {
    static constexpr BuiltinDef rows[] = {
        {"ENTLAST", 0, 0, entLast, "", "The newest entity of the current space; nil when it is empty.", "(entlast)"},
        {"ENTNEXT", 0, 1, entNext, "[entity]",
         "The oldest entity, or the one made after another: attributes of an insert and vertices of a polyline follow "
         "it, then its SEQEND.",
         "(entnext (entlast)) -> nil"},
        {"ENTGET", 1, 2, entGet, "entity [applications]",
         "The entity as a list of DXF groups; with the extended data of the applications named (wildcards allowed) "
         "under -3.",
         "(entget (entlast) '(\"*\"))"},
        {"ENTMAKE", 1, 1, entMake, "list",
         "Makes an entity from DXF groups, or a layer, text style, linetype, dimension style or application; nil when "
         "it cannot be made. Group 8 makes a layer "
         "that "
         "is not there. INSERT with attributes (66 . 1), POLYLINE and BLOCK go on over several calls, up to SEQEND or "
         "ENDBLK.",
         "(entmake '((0 . \"LINE\") (10 0 0) (11 5 0)))"},
        {"ENTMAKEX", 1, 1, entMakeX, "list", "As ENTMAKE; gives the entity's name.",
         "(entmakex '((0 . \"POINT\") (10 1 1)))"},
        {"ENTMOD", 1, 1, entMod, "list",
         "Changes the entity of group -1 to what the list says, or a layer, text style, linetype or dimension style by "
         "the "
         "name that TBLOBJNAME gives.",
         "(entmod (subst '(8 . \"0\") (assoc 8 l) l))"},
        {"ENTDEL", 1, 1, entDel, "entity", "Deletes an entity, or brings one back that ENTDEL has deleted.",
         "(entdel (entlast))"},
        {"ENTUPD", 1, 1, entUpd, "entity", "Gives the entity: changes are seen at once.", "(entupd (entlast))"},
        {"HANDENT", 1, 1, handEnt, "handle", "The entity of a handle.", "(handent \"FFFFFF\") -> nil"},
    };
    return rows;
}

}  // namespace kova::script::lisp
