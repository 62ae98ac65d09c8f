// Tables, dictionaries, REGAPP.

#include <cmath>
#include <unordered_set>

#include "engine/symbols/symbols.hpp"
#include "script/lisp/function_table.hpp"
#include "script/lisp/entities/entity_names.hpp"
#include "script/lisp/entities/group_list.hpp"
#include "strings/numbers.hpp"

namespace kova::script::lisp {

using namespace engine;
using math::Vector2;
using math::Vector3;

namespace {

// A record's name holds the table in bits 56..62 and a number below.
constexpr int kKindShift = 56;

constexpr std::pair<std::string_view, RecordKind> kTables[] = {
    {"LAYER", RecordKind::Layer}, {"LTYPE", RecordKind::Linetype},    {"STYLE", RecordKind::TextStyle},
    {"BLOCK", RecordKind::Block}, {"DIMSTYLE", RecordKind::DimStyle}, {"UCS", RecordKind::Ucs},
    {"VIEW", RecordKind::View},   {"APPID", RecordKind::Application},
};

RecordKind tableArgument(const char* function, const Value& v) {
    const std::string name = upperCase(stringArgument(function, v));
    for (const auto& [table, kind] : kTables)
        if (table == name) return kind;
    badArgument(function, "a table name", v);
}

template <class Records>
std::vector<Name> namesOf(const Records& records) {
    std::vector<Name> names;
    for (const auto& r : records) names.push_back(r.name);
    return names;
}

std::vector<Name> recordNames(const Drawing& d, RecordKind kind) {
    switch (kind) {
        case RecordKind::Layer:
            return namesOf(d.layers);
        case RecordKind::Linetype:
            return namesOf(d.linetypes);
        case RecordKind::TextStyle:
            return namesOf(d.textStyles);
        case RecordKind::DimStyle:
            return namesOf(d.dimStyles);
        case RecordKind::Ucs:
            return namesOf(d.ucsList);
        case RecordKind::View:
            return namesOf(d.namedViews);
        case RecordKind::Application:
            return d.appIds;
        case RecordKind::Block: {
            std::vector<Name> names;
            for (const auto& b : d.blocks()) names.push_back(b->name);
            return names;
        }
        default:
            return {};
    }
}

void dimStyleGroups(GroupWriter& out, const DimStyle& style) {
    for (const DimVariable& variable : dimVariables()) {
        const int code = variable.dxfCode;
        if (code <= 0) continue;
        const DimValue value = dimValue(style, variable);
        if (const auto* text = std::get_if<std::string>(&value)) {
            out.text(code, *text);
        } else {
            const double number = std::get<double>(value);
            if ((code >= 40 && code < 60) || (code >= 140 && code < 150))
                out.real(code, number);
            else
                out.integer(code, std::lround(number));
        }
    }
}

/// The groups of a record behind its type; false when there is none.
bool recordInto(GroupWriter& out, const Drawing& d, RecordKind kind, Name name) {
    const auto head = [&](std::string_view type, Name own, std::int64_t flags) {
        out.text(0, type);
        out.text(2, own.view());
        out.integer(70, flags);
    };
    switch (kind) {
        case RecordKind::Layer: {
            const Layer* l = d.layers.find(name);
            if (l == nullptr) return false;
            head("LAYER", l->name, (l->frozen ? 1 : 0) | (l->locked ? 4 : 0));
            out.integer(62, l->on ? l->color.bareIndex() : -l->color.bareIndex());
            if (l->color.method == ColorMethod::RGB)
                out.integer(420, (l->color.red << 16) | (l->color.green << 8) | l->color.blue);
            out.text(6, l->linetype.view());
            out.integer(290, l->plottable ? 1 : 0);
            out.integer(370, l->lineweight);
            return true;
        }
        case RecordKind::Linetype: {
            const Linetype* l = d.linetypes.find(name);
            if (l == nullptr) return false;
            head("LTYPE", l->name, 0);
            out.text(3, l->description);
            out.integer(72, 65);
            out.integer(73, static_cast<std::int64_t>(l->pattern.size()));
            out.real(40, l->patternLength());
            for (const double dash : l->pattern) out.real(49, dash);
            return true;
        }
        case RecordKind::TextStyle: {
            const TextStyle* s = d.textStyles.find(name);
            if (s == nullptr) return false;
            head("STYLE", s->name, s->vertical ? 4 : 0);
            out.real(40, s->height);
            out.real(41, s->widthFactor);
            out.real(50, s->obliqueAngle);
            out.integer(71, (s->backward ? 2 : 0) | (s->upsideDown ? 4 : 0));
            out.real(42, s->height > 0.0 ? s->height : 2.5);
            out.text(3, s->fontFile.view());
            out.text(4, s->bigFontFile.view());
            return true;
        }
        case RecordKind::Block: {
            const Block* b = d.findBlock(name);
            if (b == nullptr) return false;
            const bool attributes = std::any_of(b->entities.begin(), b->entities.end(), [](const Entity& e) {
                return e.type() == EntityType::AttributeDefinition;
            });
            head("BLOCK", b->name,
                 (b->isAnonymous() ? 1 : 0) | (attributes ? 2 : 0) | (b->xrefType != XrefType::None ? 4 : 0));
            out.point(10, Vector3(b->base));
            if (!b->xrefPath.empty()) out.text(1, b->xrefPath);
            if (const Entity* first = b->entities.first()) out.entity(-2, first->handle());
            return true;
        }
        case RecordKind::DimStyle: {
            const DimStyle* s = d.dimStyles.find(name);
            if (s == nullptr) return false;
            head("DIMSTYLE", s->name, 0);
            dimStyleGroups(out, *s);
            return true;
        }
        case RecordKind::Ucs: {
            const Ucs* u = d.ucsList.find(name);
            if (u == nullptr) return false;
            head("UCS", u->name, 0);
            out.point(10, Vector3(u->origin));
            out.point(11, Vector3(u->xAxis));
            out.point(12, Vector3(u->yAxis));
            return true;
        }
        case RecordKind::View: {
            const NamedView* v = d.namedViews.find(name);
            if (v == nullptr) return false;
            head("VIEW", v->name, 0);
            out.real(40, v->height);
            out.point(10, v->center);
            out.real(41, v->width);
            out.point(11, v->viewDirection);
            out.point(12, v->target);
            return true;
        }
        case RecordKind::MLeaderStyle: {
            const MLeaderStyle* s = d.mleaderStyles.find(name);
            if (s == nullptr) return false;
            out.text(0, "MLEADERSTYLE");
            out.text(3, s->name.view());
            out.integer(170, s->contentType);
            out.integer(173, s->leaderLineType);
            out.integer(90, s->maxLeaderPoints);
            out.integer(290, s->hasLanding ? 1 : 0);
            out.real(42, s->landingGap);
            out.integer(291, s->hasDogleg ? 1 : 0);
            out.real(43, s->landingDistance);
            out.real(44, s->arrowSize);
            out.text(300, s->defaultText);
            out.real(45, s->textHeight);
            out.real(142, s->scaleFactor);
            return true;
        }
        case RecordKind::TableStyle: {
            const TableStyle* s = d.tableStyles.find(name);
            if (s == nullptr) return false;
            out.text(0, "TABLESTYLE");
            out.text(3, s->name.view());
            out.integer(70, s->flowUp ? 1 : 0);
            out.real(40, s->cellMargin);
            out.real(41, s->verticalMargin);
            out.integer(280, s->hasTitle ? 0 : 1);
            out.integer(281, s->hasHeader ? 0 : 1);
            for (const double height : {s->textHeight, s->titleTextHeight, s->headerTextHeight}) {
                out.text(7, s->textStyle.view());
                out.real(140, height);
            }
            return true;
        }
        case RecordKind::Application: {
            const auto it = std::find(d.appIds.begin(), d.appIds.end(), name);
            if (it == d.appIds.end()) return false;
            head("APPID", *it, 0);
            return true;
        }
        default:
            return false;
    }
}

Value record(const Drawing& d, RecordKind kind, Name name, bool named) {
    GroupWriter out;
    if (named) out.entity(-1, recordName(kind, name));
    return recordInto(out, d, kind, name) ? out.finish() : Value();
}

// Dictionaries: an entry is told by its path from the root, parted by a character that no key holds. --------------

constexpr char kStep = '\x1f';

/// The entries below a path; null: no dictionary.
const std::vector<DictionaryEntry>* dictionaryAt(const Drawing& d, std::string_view path,
                                                 const DictionaryEntry*& entry) {
    const std::vector<DictionaryEntry>* at = &d.objectDictionary;
    entry = nullptr;
    while (!path.empty()) {
        const std::size_t end = std::min(path.find(kStep), path.size());
        const std::string_view key = path.substr(0, end);
        path.remove_prefix(std::min(end + 1, path.size()));
        const auto found =
            std::find_if(at->begin(), at->end(), [&](const DictionaryEntry& e) { return e.name == key; });
        if (found == at->end()) {
            entry = nullptr;
            return nullptr;
        }
        entry = &*found;
        at = &found->entries;
    }
    return at;
}

std::string stepTo(const std::string& path, Name key) { return path.empty() ? key.str() : path + kStep + key.str(); }

Value dataGroup(int code, const std::string& text) {
    const auto number = [&] {
        double value = 0.0;
        const std::size_t first = std::min(text.find_first_not_of(" \t+"), text.size());
        strings::readReal(text.data() + first, text.data() + text.size(), value);
        return value;
    };
    if ((code >= 10 && code < 60) || (code >= 110 && code < 150) || (code >= 210 && code < 240) ||
        (code >= 460 && code < 470) || (code >= 1010 && code < 1060))
        return Value::real(number());
    if ((code >= 60 && code < 100) || (code >= 160 && code < 180) || (code >= 270 && code < 300) ||
        (code >= 370 && code < 390) || (code >= 400 && code < 410) || (code >= 420 && code < 430) ||
        (code >= 440 && code < 460) || code == 1070 || code == 1071)
        return Value::integer(static_cast<std::int64_t>(std::clamp(number(), -9e15, 9e15)));
    return Value::string(text);
}

/// The groups of an entry (null: the root) with these entries below it.
Value groupsOfEntry(const std::string& path, const DictionaryEntry* entry,
                    const std::vector<DictionaryEntry>& entries) {
    GroupWriter out;
    out.entity(-1, recordName(RecordKind::Dictionary, Name(path)));
    out.text(0, entry != nullptr && !entry->type.empty() ? std::string_view(entry->type) : "DICTIONARY");
    if (entry != nullptr)
        for (std::size_t i = 0; i + 1 < entry->data.size(); i += 2) {
            const int code = std::atoi(entry->data[i].c_str());
            out.add(code, dataGroup(code, entry->data[i + 1]));
        }
    for (const DictionaryEntry& e : entries) {
        out.text(3, e.name.view());
        out.entity(350, recordName(RecordKind::Dictionary, Name(stepTo(path, e.name))));
    }
    return out.finish();
}

Value dictionaryGroups(const Drawing& d, const std::string& path) {
    const DictionaryEntry* entry = nullptr;
    const std::vector<DictionaryEntry>* entries = dictionaryAt(d, path, entry);
    return entries != nullptr ? groupsOfEntry(path, entry, *entries) : Value();
}

/// The records that have been named: what a name holds is a number by this list, so that it is the same in every run.
struct NamedRecords {
    std::map<std::pair<RecordKind, const void*>, std::uint64_t> numbers;
    std::vector<Name> names;
};
NamedRecords& namedRecords() {
    static NamedRecords records;
    return records;
}

std::optional<Name> nameOf(std::uint64_t record) {
    const std::uint64_t number = record & ((std::uint64_t{1} << kKindShift) - 1);
    const std::vector<Name>& names = namedRecords().names;
    return number < names.size() ? std::optional<Name>(names[number]) : std::nullopt;
}

RecordKind kindOf(std::uint64_t record) { return static_cast<RecordKind>((record >> kKindShift) & 0x7F); }

Value tblSearch(Machine& m, Value* v, int n) {
    const RecordKind kind = tableArgument("TBLSEARCH", v[0]);
    const Name name(stringArgument("TBLSEARCH", v[1]));
    Value found = record(m.drawing(), kind, name, false);
    if (n > 2 && v[2].isTrue() && found.isTrue()) {
        TablePlace& place = m.tablePlaces[upperCase(v[0].text())];
        place.names = recordNames(m.drawing(), kind);
        const auto at = std::find(place.names.begin(), place.names.end(), name);
        place.next = std::min(static_cast<std::size_t>(at - place.names.begin()) + 1, place.names.size());
    }
    return found;
}

Value tblNext(Machine& m, Value* v, int n) {
    const RecordKind kind = tableArgument("TBLNEXT", v[0]);
    TablePlace& place = m.tablePlaces[upperCase(v[0].text())];
    if (n > 1 && v[1].isTrue()) place = {};
    for (;;) {
        // Records that went since the list was made are passed over.
        while (place.next < place.names.size())
            if (const Value found = record(m.drawing(), kind, place.names[place.next++], false); found.isTrue())
                return found;
        // Those that came stand behind it.
        std::unordered_set<const void*> listed;
        for (const Name name : place.names) listed.insert(name.key());
        for (const Name name : recordNames(m.drawing(), kind))
            if (listed.insert(name.key()).second) place.names.push_back(name);
        if (place.next == place.names.size()) return {};
    }
}

Value tblObjName(Machine& m, Value* v, int) {
    const RecordKind kind = tableArgument("TBLOBJNAME", v[0]);
    const Name name(stringArgument("TBLOBJNAME", v[1]));
    if (record(m.drawing(), kind, name, false).isNil()) return {};
    return Value::entity(recordName(kind, name));
}

Value namedObjDict(Machine&, Value*, int) { return Value::entity(recordName(RecordKind::Dictionary, Name())); }

std::string dictionaryArgument(const char* function, const Value& v) {
    const std::uint64_t handle = entityArgument(function, v);
    const auto path = isRecordName(handle) && kindOf(handle) == RecordKind::Dictionary ? nameOf(handle) : std::nullopt;
    if (!path) badArgument(function, "a dictionary", v);
    return path->str();
}

Value dictSearch(Machine& m, Value* v, int) {
    const std::string path = dictionaryArgument("DICTSEARCH", v[0]);
    const std::string& key = stringArgument("DICTSEARCH", v[1]);
    if (key.empty() || key.find(kStep) != std::string::npos) return {};
    return dictionaryGroups(m.drawing(), stepTo(path, Name(key)));
}

Value dictNext(Machine& m, Value* v, int n) {
    const std::string path = dictionaryArgument("DICTNEXT", v[0]);
    const DictionaryEntry* entry = nullptr;
    const std::vector<DictionaryEntry>* entries = dictionaryAt(m.drawing(), path, entry);
    std::size_t& position = m.dictionaryPositions[path];
    if (n > 1 && v[1].isTrue()) position = 0;
    if (entries == nullptr || position >= entries->size()) return {};
    const DictionaryEntry& next = (*entries)[position++];
    return groupsOfEntry(stepTo(path, next.name), &next, next.entries);
}

Value layoutList(Machine& m, Value*, int) {
    ListBuilder names;
    for (const auto& layout : m.drawing().layouts()) names.add(Value::string(layout->name.str()));
    return names.finish();
}

Value symbolNameValid(Machine& m, Value* v, int n) {
    std::string_view name = stringArgument("SNVALID", v[0]);
    // The flag admits the bar that parts the names of external references.
    std::string plain(name);
    if (n > 1 && v[1].isTrue() && v[1].isInteger() && v[1].asInteger() != 0) std::erase(plain, '|');
    return boolean(m, !plain.empty() && isValidSymbolName(plain));
}

Value regApp(Machine& m, Value* v, int) {
    const Name name(stringArgument("REGAPP", v[0]));
    if (!isValidSymbolName(name.view())) badArgument("REGAPP", "a valid name", v[0]);
    const auto& known = m.drawing().appIds;
    if (std::find(known.begin(), known.end(), name) != known.end()) return {};
    m.document().editSettings([&](Drawing& d) { d.appIds.push_back(name); });
    return v[0];
}

}  // namespace

std::uint64_t recordName(RecordKind kind, Name name) {
    NamedRecords& records = namedRecords();
    const auto [it, fresh] = records.numbers.try_emplace({kind, name.key()}, records.names.size());
    if (fresh) records.names.push_back(name);
    return (std::uint64_t{1} << 63) | (static_cast<std::uint64_t>(kind) << kKindShift) | it->second;
}

std::optional<Name> recordOf(std::uint64_t name, RecordKind kind) {
    return isRecordName(name) && kindOf(name) == kind ? nameOf(name) : std::nullopt;
}

void readReference(int code, const Value& given, RecordKind kind, Name& name) {
    std::optional<Name> found;
    if (given.isString())
        found = Name(given.text());
    else if (given.isEntity())
        found = recordOf(given.handle(), kind);
    if (!found || found->empty()) throw LispError("group " + std::to_string(code) + ": expected a record's name");
    name = *found;
}

Value recordGroups(Machine& m, std::uint64_t handle) {
    const auto name = nameOf(handle);
    if (!name) return {};
    if (kindOf(handle) == RecordKind::Dictionary) return dictionaryGroups(m.drawing(), name->str());
    return record(m.drawing(), kindOf(handle), *name, true);
}

std::span<const BuiltinDef> tableBuiltins() {
    static constexpr BuiltinDef rows[] = {
        {"TBLSEARCH", 2, 3, tblSearch, "table name [go-on]",
         "A record of the table LAYER, LTYPE, STYLE, BLOCK, DIMSTYLE, UCS, VIEW or APPID as a list of groups; with a "
         "third "
         "argument TBLNEXT goes on behind it.",
         "(cdr (assoc 2 (tblsearch \"LAYER\" \"0\"))) -> \"0\""},
        {"TBLNEXT", 1, 2, tblNext, "table [first]", "The next record of a table, or the first one; nil at the end.",
         "(cdr (assoc 2 (tblnext \"LAYER\" T))) -> \"0\""},
        {"TBLOBJNAME", 2, 2, tblObjName, "table name", "The name of a record, for ENTGET.",
         "(cdr (assoc 0 (entget (tblobjname \"LAYER\" \"0\")))) -> \"LAYER\""},
        {"NAMEDOBJDICT", 0, 0, namedObjDict, "", "The drawing's dictionary of named objects.",
         "(type (namedobjdict)) -> ENAME"},
        {"DICTSEARCH", 2, 2, dictSearch, "dictionary key", "An entry of a dictionary as a list of groups.",
         "(dictsearch (namedobjdict) \"NOTHING\") -> nil"},
        {"DICTNEXT", 1, 2, dictNext, "dictionary [first]", "The next entry of a dictionary, or the first one.",
         "(dictnext (namedobjdict) T)"},
        {"LAYOUTLIST", 0, 0, layoutList, "", "The names of the paper layouts.", "(type (layoutlist)) -> LIST"},
        {"SNVALID", 1, 2, symbolNameValid, "name [flag]",
         "T when a record may have that name; with the flag 1 the name may hold |.", "(snvalid \"Wall/2\") -> nil"},
        {"REGAPP", 1, 1, regApp, "name", "Registers an application for extended data; nil when it is known already.",
         "(regapp \"MYAPP\") -> \"MYAPP\""},
    };
    return rows;
}

}  // namespace kova::script::lisp
