// Table records from groups, as programs make and change them with ENTMAKE and ENTMOD.

#include "script/lisp/entities/record_making.hpp"

#include "doc/table_edits.hpp"
#include "engine/symbols/symbols.hpp"
#include "script/lisp/entities/entity_names.hpp"

namespace kova::script::lisp {

using namespace engine;

namespace {

constexpr std::size_t kMaxDashes = 1000;

/// What groups that are given say; the record keeps what they leave out. Each gives false for what cannot be.
bool readInto(Machine& m, const GroupList& in, Layer& layer) {
    if (in.has(62)) {
        const std::int64_t color = in.integer(62);
        if (color == 0 || std::abs(color) > 255) return false;
        const bool same = std::abs(color) == layer.color.bareIndex();
        if (!same) layer.color = Color::index(static_cast<std::uint8_t>(std::abs(color)));
        layer.on = color > 0;
    }
    if (in.has(420)) {
        const std::int64_t rgb = in.integer(420);
        layer.color = Color::rgb(static_cast<std::uint8_t>(rgb >> 16), static_cast<std::uint8_t>(rgb >> 8),
                                 static_cast<std::uint8_t>(rgb));
    }
    if (in.has(70)) {
        const std::int64_t flags = in.integer(70);
        layer.frozen = (flags & 1) != 0;
        layer.locked = (flags & 4) != 0;
    }
    layer.plottable = in.integer(290, layer.plottable ? 1 : 0) != 0;
    if (in.has(370)) layer.lineweight = static_cast<std::int32_t>(std::clamp<std::int64_t>(in.integer(370), -3, 211));
    if (in.has(6)) {
        layer.linetype = Name(in.text(6));
        if (m.drawing().loadLinetype(layer.linetype) == nullptr) return false;
    }
    // The current layer cannot be frozen.
    return !(layer.frozen && layer.name == m.drawing().currentLayer);
}

bool readInto(Machine&, const GroupList& in, TextStyle& style) {
    if (in.has(3)) style.fontFile = Name(in.text(3));
    if (in.has(4)) style.bigFontFile = Name(in.text(4));
    style.height = std::max(0.0, in.real(40, style.height));
    style.widthFactor = in.real(41, style.widthFactor);
    style.obliqueAngle = in.real(50, style.obliqueAngle);
    if (in.has(70)) style.vertical = (in.integer(70) & 4) != 0;
    if (in.has(71)) {
        const std::int64_t flags = in.integer(71);
        style.backward = (flags & 2) != 0;
        style.upsideDown = (flags & 4) != 0;
    }
    return style.widthFactor > 0.0 && !style.fontFile.empty();
}

bool readInto(Machine&, const GroupList& in, Linetype& linetype) {
    if (in.has(3)) linetype.description = in.text(3);
    if (in.has(49)) {
        const std::vector<double> pattern = in.reals(49);
        if (pattern.size() > kMaxDashes) return false;
        if (pattern != linetype.pattern) linetype.elements.clear();
        linetype.pattern = pattern;
    }
    return true;
}

bool readInto(Machine&, const GroupList& in, DimStyle& style) {
    for (const DimVariable& variable : dimVariables()) {
        const Value* given = variable.dxfCode > 0 ? in.find(variable.dxfCode) : nullptr;
        if (given == nullptr) continue;
        const bool text = std::holds_alternative<std::string>(dimValue(style, variable));
        const DimValue value = text ? DimValue(GroupList::textOf(variable.dxfCode, *given))
                                    : DimValue(GroupList::realOf(variable.dxfCode, *given));
        if (!(value == dimValue(style, variable)) && !setDimValue(style, variable, value)) return false;
    }
    return true;
}

template <class Traits>
bool make(Machine& m, const GroupList& groups, Name name) {
    if (Traits::table(m.drawing()).contains(name)) return false;
    typename Traits::Record record;
    record.name = name;
    if (!readInto(m, groups, record)) return false;
    doc::GroupScope scope(m.document(), "LISP entmake");
    m.document().editTable<Traits>([&](auto& table) { table.add(record); });
    return true;
}

template <class Traits>
bool modify(Machine& m, const GroupList& groups, Name name, SymbolKind kind) {
    const auto* standing = Traits::table(m.drawing()).find(name);
    if (standing == nullptr) return false;
    typename Traits::Record record = *standing;
    doc::GroupScope scope(m.document(), "LISP entmod");
    if (!readInto(m, groups, record)) {
        scope.rollback();
        return false;
    }
    m.document().editTable<Traits>([&](auto& table) {
        if (auto* own = table.find(name)) *own = record;
    });
    const Name wanted(groups.text(2, name.view()));
    if (wanted.view() != name.view() && !m.document().renameSymbol(kind, name, wanted).empty()) {
        scope.rollback();
        return false;
    }
    return true;
}

bool makeApplication(Machine& m, Name name) {
    const auto& known = m.drawing().appIds;
    if (std::find(known.begin(), known.end(), name) != known.end()) return false;
    doc::GroupScope scope(m.document(), "LISP entmake");
    m.document().editSettings([&](Drawing& d) { d.appIds.push_back(name); });
    return true;
}

}  // namespace

bool isRecordType(std::string_view type) {
    return type == "LAYER" || type == "STYLE" || type == "LTYPE" || type == "DIMSTYLE" || type == "APPID";
}

bool makeRecord(Machine& m, std::string_view type, const GroupList& groups) {
    const Name name(groups.text(2));
    if (!isValidSymbolName(name.view())) return false;
    if (type == "APPID") return makeApplication(m, name);
    if (type == "LAYER") return make<doc::LayerTraits>(m, groups, name);
    if (type == "LTYPE") return make<doc::LineTypeTraits>(m, groups, name);
    if (type == "DIMSTYLE") return make<doc::DimStyleTraits>(m, groups, name);
    return make<doc::TextStyleTraits>(m, groups, name);
}

bool modifyRecord(Machine& m, std::uint64_t record, const GroupList& groups) {
    if (const auto name = recordOf(record, RecordKind::Layer))
        return modify<doc::LayerTraits>(m, groups, *name, SymbolKind::Layer);
    if (const auto name = recordOf(record, RecordKind::TextStyle))
        return modify<doc::TextStyleTraits>(m, groups, *name, SymbolKind::TextStyle);
    if (const auto name = recordOf(record, RecordKind::Linetype))
        return modify<doc::LineTypeTraits>(m, groups, *name, SymbolKind::Linetype);
    if (const auto name = recordOf(record, RecordKind::DimStyle))
        return modify<doc::DimStyleTraits>(m, groups, *name, SymbolKind::DimStyle);
    return false;
}

}  // namespace kova::script::lisp
