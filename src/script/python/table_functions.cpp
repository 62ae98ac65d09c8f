#include <pybind11/pybind11.h>

#include "doc/table_edits.hpp"
#include "engine/model/drawing.hpp"
#include "engine/symbols/symbols.hpp"
#include "script/python/binding.hpp"
#include "script/python/fields.hpp"
#include "script/python/module_parts.hpp"
#include "script/python/references.hpp"

namespace py = pybind11;

namespace kova::script::python {

namespace {

template <class Record>
py::object fieldsOf(Record& record) {
    FieldGetter getter;
    record.describe(getter);
    return py::reinterpret_steal<py::object>(getter.take().release());
}

/// What Python may do with a table, whatever its records are.
struct TableAccess {
    std::string_view name;
    std::optional<engine::SymbolKind> symbol;  ///< how its records are renamed, when other things refer to them
    py::list (*names)(engine::Drawing&);
    py::object (*get)(engine::Drawing&, engine::Name);  ///< None: no such record
    py::object (*fresh)();
    void (*set)(Binding&, engine::Name, py::handle fields);  ///< changes a record, or adds one
    void (*remove)(Binding&, engine::Name);
    engine::Name engine::Drawing::*current;
};

template <class Traits>
py::list namesIn(engine::Drawing& drawing) {
    py::list out;
    for (const auto& record : Traits::table(drawing)) out.append(textObject(record.name.view()));
    return out;
}

template <class Traits>
py::object getIn(engine::Drawing& drawing, engine::Name name) {
    auto* record = Traits::table(drawing).find(name);
    return record != nullptr ? fieldsOf(*record) : py::none();
}

template <class Traits>
py::object freshRecord() {
    typename Traits::Record record;
    return fieldsOf(record);
}

template <class Traits>
void setIn(Binding& binding, engine::Name name, py::handle fields) {
    using Record = typename Traits::Record;
    // Tried on a copy: an error changes nothing.
    Record changed;
    if (const Record* known = Traits::table(binding.drawing()).find(name))
        changed = *known;
    else
        changed.name = name;
    const NamedRecords before = NamedRecords::of(changed);
    FieldSetter setter(fields.ptr());
    setter.apply(changed);
    if (!(changed.name == name)) fail(PyExc_ValueError, "a record keeps its name: use rename");
    NamedRecords::of(changed).require(binding, before);
    binding.prepareChange();
    binding.document().editTable<Traits>([&](engine::Table<Record>& table) { table.add(std::move(changed)); });
}

template <class Traits>
void removeIn(Binding& binding, engine::Name name) {
    binding.prepareChange();
    binding.document().editTable<Traits>([&](engine::Table<typename Traits::Record>& table) { table.erase(name); });
}

template <class Traits>
TableAccess access(std::string_view name, std::optional<engine::SymbolKind> symbol = {},
                   engine::Name engine::Drawing::*current = nullptr) {
    return {name,          symbol,           namesIn<Traits>, getIn<Traits>, freshRecord<Traits>,
            setIn<Traits>, removeIn<Traits>, current};
}

const TableAccess& tableNamed(const std::string& name) {
    using engine::Drawing;
    using engine::SymbolKind;
    static const TableAccess all[] = {
        access<doc::LayerTraits>("layers", SymbolKind::Layer, &Drawing::currentLayer),
        access<doc::LineTypeTraits>("linetypes", SymbolKind::Linetype, &Drawing::currentLinetype),
        access<doc::TextStyleTraits>("text_styles", SymbolKind::TextStyle, &Drawing::currentTextStyle),
        access<doc::DimStyleTraits>("dim_styles", SymbolKind::DimStyle, &Drawing::currentDimStyle),
        access<doc::MLeaderStyleTraits>("mleader_styles", SymbolKind::MLeaderStyle, &Drawing::currentMLeaderStyle),
        access<doc::TableStyleTraits>("table_styles", SymbolKind::TableStyle, &Drawing::currentTableStyle),
        access<doc::GroupTraits>("groups", SymbolKind::Group),
        access<doc::NamedViewTraits>("views", SymbolKind::View),
        access<doc::UcsTraits>("ucs", SymbolKind::Ucs),
        access<doc::AnnotationScaleTraits>("annotation_scales"),
        access<doc::PageSetupTraits>("page_setups"),
        access<doc::HatchPatternTraits>("hatch_patterns"),
    };
    for (const TableAccess& table : all)
        if (table.name == name) return table;
    throw std::invalid_argument("no such table: " + name);
}

engine::Name validName(const std::string& name) {
    if (!engine::isValidSymbolName(name)) fail(PyExc_ValueError, "'" + name + "' is no valid name");
    return engine::Name(name);
}

void requireUnused(const engine::Drawing& drawing, engine::SymbolKind kind, engine::Name name) {
    const std::string what = std::string(engine::symbolKindName(kind)) + " '" + name.str() + "'";
    if (engine::isFixedSymbol(kind, name)) fail(PyExc_ValueError, "the " + what + " always exists");
    if (const std::size_t uses = engine::countReferences(drawing, kind, name); uses > 0)
        fail(PyExc_ValueError, "the " + what + " is in use (" + std::to_string(uses) + " references)");
}

void removeRecord(const std::string& tableName, const std::string& record) {
    const TableAccess& table = tableNamed(tableName);
    Binding& b = Binding::get();
    const engine::Name name(record);
    if (table.get(b.drawing(), name).is_none()) fail(PyExc_KeyError, record);
    if (table.current != nullptr && b.drawing().*table.current == name)
        fail(PyExc_ValueError, "'" + record + "' is current");
    if (table.symbol) requireUnused(b.drawing(), *table.symbol, name);
    table.remove(b, name);
}

void rename(engine::SymbolKind kind, const std::string& from, const std::string& to) {
    Binding& b = Binding::get();
    b.prepareChange();
    if (const std::string error = b.document().renameSymbol(kind, from, to); !error.empty())
        fail(PyExc_ValueError, error);
}

void setCurrent(const std::string& tableName, const std::string& record) {
    const TableAccess& table = tableNamed(tableName);
    Binding& b = Binding::get();
    if (table.current == nullptr) fail(PyExc_AttributeError, tableName + " have no current one");
    const engine::Name name(record);
    const bool special = table.name == "linetypes" && (name == "ByLayer" || name == "ByBlock");
    if (!special && table.get(b.drawing(), name).is_none()) fail(PyExc_KeyError, record);
    b.prepareChange();
    b.document().editSettings([&](engine::Drawing& drawing) { drawing.*table.current = name; });
}

// Blocks and layouts --------------------------------------------------------------------------------------

/// What a block or layout holds besides its entities, as one record.
struct BlockHead {
    engine::Block& block;
    void describe(engine::FieldVisitor& v) { block.describeHead(v); }
};

engine::Block& blockNamed(const std::string& name) {
    engine::Block* block = Binding::get().drawing().findBlock(name);
    if (block == nullptr) fail(PyExc_KeyError, name);
    return *block;
}

engine::Layout& layoutNamed(const std::string& name) {
    engine::Layout* layout = Binding::get().drawing().findLayout(name);
    if (layout == nullptr) fail(PyExc_KeyError, name);
    return *layout;
}

void addBlock(const std::string& name) {
    Binding& b = Binding::get();
    if (b.drawing().findBlock(name) != nullptr) fail(PyExc_ValueError, "there is a block named '" + name + "' already");
    auto block = std::make_unique<engine::Block>(validName(name));
    b.prepareChange();
    if (b.document().addBlock(std::move(block)) == nullptr)
        fail(PyExc_ValueError, "'" + name + "' is no name for a block");
}

void setBlock(const std::string& name, py::handle fields) {
    Binding& b = Binding::get();
    engine::Block trial{engine::Name(name)};
    BlockHead head{trial};
    FieldSetter(fields.ptr()).apply(head);
    if (!(trial.name == engine::Name(name))) fail(PyExc_ValueError, "a block keeps its name: use rename");
    engine::Block& block = blockNamed(name);
    b.prepareChange();
    b.document().editBlock(block, [&](engine::Block& changed) {
        const engine::Name kept = changed.name;
        BlockHead real{changed};
        FieldSetter(fields.ptr()).apply(real);
        changed.name = kept;
    });
}

void removeBlock(const std::string& name) {
    Binding& b = Binding::get();
    blockNamed(name);
    requireUnused(b.drawing(), engine::SymbolKind::Block, name);
    b.prepareChange();
    b.document().deleteBlock(name);
}

void addLayout(const std::string& name) {
    Binding& b = Binding::get();
    b.prepareChange();
    if (b.document().addLayout(name) == nullptr)
        fail(PyExc_ValueError, "'" + name + "' is no name for a layout, or taken");
}

void removeLayout(const std::string& name) {
    Binding& b = Binding::get();
    layoutNamed(name);
    b.prepareChange();
    if (!b.document().deleteLayout(name)) fail(PyExc_ValueError, "the last layout stays");
}

void setLayout(const std::string& name, py::handle fields) {
    engine::PageSetup trial = layoutNamed(name).pageSetup;
    FieldSetter(fields.ptr()).apply(trial);
    Binding& b = Binding::get();
    b.prepareChange();
    b.document().editLayout(layoutNamed(name), [&](engine::Layout& layout) { layout.pageSetup = std::move(trial); });
}

template <class List>
py::list namesOf(const List& list) {
    py::list out;
    for (const auto& item : list) out.append(textObject(item->name.view()));
    return out;
}

}  // namespace

void addTableFunctions(PyObject* module) {
    auto m = py::reinterpret_borrow<py::module_>(module);
    m.def("record_names", [](const std::string& t) { return tableNamed(t).names(Binding::get().drawing()); });
    m.def("record", [](const std::string& t, const std::string& name) {
        return tableNamed(t).get(Binding::get().drawing(), name);
    });
    m.def("fresh_record", [](const std::string& t) { return tableNamed(t).fresh(); });
    m.def("set_record", [](const std::string& t, const std::string& name, py::handle fields) {
        tableNamed(t).set(Binding::get(), validName(name), fields);
    });
    m.def("load_linetype",
          [](const std::string& name) { return Binding::get().drawing().loadLinetype(name) != nullptr; });
    m.def("remove_record", removeRecord);
    m.def("rename_record", [](const std::string& t, const std::string& from, const std::string& to) {
        const TableAccess& table = tableNamed(t);
        if (!table.symbol) fail(PyExc_TypeError, t + " cannot be renamed");
        rename(*table.symbol, from, to);
    });
    m.def("current_record", [](const std::string& t) {
        const TableAccess& table = tableNamed(t);
        return table.current != nullptr ? textObject((Binding::get().drawing().*table.current).view()) : py::none();
    });
    m.def("set_current_record", setCurrent);

    m.def("block_names", [] { return namesOf(Binding::get().drawing().blocks()); });
    m.def("block", [](const std::string& name) {
        BlockHead head{blockNamed(name)};
        return fieldsOf(head);
    });
    m.def("add_block", addBlock);
    m.def("set_block", setBlock);
    m.def("remove_block", removeBlock);
    m.def("rename_block",
          [](const std::string& from, const std::string& to) { rename(engine::SymbolKind::Block, from, to); });

    m.def("layout_names", [] { return namesOf(Binding::get().drawing().layouts()); });
    m.def("layout", [](const std::string& name) { return fieldsOf(layoutNamed(name).pageSetup); });
    m.def("add_layout", addLayout);
    m.def("set_layout", setLayout);
    m.def("remove_layout", removeLayout);
    m.def("rename_layout",
          [](const std::string& from, const std::string& to) { rename(engine::SymbolKind::Layout, from, to); });
}

}  // namespace kova::script::python
