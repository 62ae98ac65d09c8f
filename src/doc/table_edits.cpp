#include "doc/table_edits.hpp"

#include "doc/document.hpp"

namespace kova::doc {

namespace {

/// What the memory of a record takes besides the record.
constexpr std::size_t kPlaceBytes = 16;

template <class Traits>
void noteEdit(engine::Drawing& drawing) {
    if constexpr (Traits::changesShapes) ++drawing.styleRevision;
}

}  // namespace

std::size_t LayerTraits::heldBytes(const Record& r) { return r.description.capacity(); }
std::size_t LayerFilterTraits::heldBytes(const Record& r) {
    return r.parent.capacity() + r.expression.capacity() + r.namePattern.capacity() + r.onFilter.capacity() +
           r.frozenFilter.capacity() + r.lockedFilter.capacity() + r.colorFilter.capacity() +
           r.members.capacity() * sizeof(engine::Name);
}
std::size_t LayerStateTraits::heldBytes(const Record& r) {
    std::size_t bytes = r.description.capacity() + r.layers.capacity() * sizeof r.layers[0];
    for (const auto& [layer, entry] : r.layers) bytes += entry.description.capacity();
    return bytes;
}
std::size_t LineTypeTraits::heldBytes(const Record& r) {
    std::size_t bytes = r.description.capacity() + r.pattern.capacity() * sizeof(double) +
                        r.elements.capacity() * sizeof(engine::LinetypeElement);
    for (const engine::LinetypeElement& element : r.elements) bytes += element.text.capacity();
    return bytes;
}
std::size_t TextStyleTraits::heldBytes(const Record&) { return 0; }
std::size_t DimStyleTraits::heldBytes(const Record& r) { return r.postfix.capacity() + r.altPostfix.capacity(); }
std::size_t MLeaderStyleTraits::heldBytes(const Record& r) { return r.defaultText.capacity(); }
std::size_t TableStyleTraits::heldBytes(const Record&) { return 0; }
std::size_t GroupTraits::heldBytes(const Record& r) {
    return r.description.capacity() + r.memberHandles.capacity() * sizeof(std::uint64_t);
}
std::size_t NamedViewTraits::heldBytes(const Record&) { return 0; }
std::size_t UcsTraits::heldBytes(const Record&) { return 0; }
std::size_t AnnotationScaleTraits::heldBytes(const Record&) { return 0; }
std::size_t PageSetupTraits::heldBytes(const Record& r) {
    return r.plotDevice.capacity() + r.paperSizeName.capacity() + r.plotStyleTable.capacity();
}
std::size_t HatchPatternTraits::heldBytes(const Record& r) {
    std::size_t bytes = r.description.capacity() + r.families.capacity() * sizeof(engine::HatchFamily);
    for (const engine::HatchFamily& family : r.families) bytes += family.dashes.capacity() * sizeof(double);
    return bytes;
}

template <class Traits>
void TableEditAction<Traits>::undo(engine::Drawing& drawing) {
    changes_.undo(Traits::table(drawing));
    noteEdit<Traits>(drawing);
}

template <class Traits>
void TableEditAction<Traits>::redo(engine::Drawing& drawing) {
    changes_.redo(Traits::table(drawing));
    noteEdit<Traits>(drawing);
}

template <class Traits>
std::size_t TableEditAction<Traits>::sizeInBytes() const {
    std::size_t bytes = sizeof *this;
    for (const auto& change : changes_.list()) {
        // A record that was added will be here when the edit is undone.
        bytes += sizeof change + sizeof(typename Traits::Record) + kPlaceBytes;
        if (change.other) bytes += Traits::heldBytes(*change.other);
    }
    return bytes;
}

template <class Style>
void DeleteStyleAction<Style>::undo(engine::Drawing& drawing) {
    TraitsOfStyle<Style>::table(drawing).insertBefore(next_, style_);
    noteEdit<TraitsOfStyle<Style>>(drawing);
}

template <class Style>
void DeleteStyleAction<Style>::redo(engine::Drawing& drawing) {
    TraitsOfStyle<Style>::table(drawing).erase(style_.name);
    noteEdit<TraitsOfStyle<Style>>(drawing);
}

template <class Style>
std::string DeleteStyleAction<Style>::description() const {
    return std::string("Delete ") + TraitsOfStyle<Style>::noun + " " + style_.name.str();
}

template <class Style>
std::size_t DeleteStyleAction<Style>::sizeInBytes() const {
    return sizeof *this + TraitsOfStyle<Style>::heldBytes(style_);
}

template <class Traits>
void Document::editTable(const std::function<void(engine::Table<typename Traits::Record>&)>& change) {
    using Changes = engine::TableChanges<typename Traits::Record>;
    engine::Table<typename Traits::Record>& table = Traits::table(*drawing_);
    Changes changes;
    try {
        const typename Changes::Watch watch(table, changes);
        change(table);
    } catch (...) {
        changes.undo(table);
        throw;
    }
    changes.close();
    noteEdit<Traits>(*drawing_);
    record(std::make_unique<TableEditAction<Traits>>(std::move(changes)));
}

template <class Style>
bool Document::deleteStyle(engine::Name name) {
    using Traits = TraitsOfStyle<Style>;
    engine::Table<Style>& table = Traits::table(*drawing_);
    const Style* style = table.find(name);
    if (style == nullptr || name == engine::commonNames().standard || name == Traits::current(*drawing_)) return false;
    auto action = std::make_unique<DeleteStyleAction<Style>>(*style, table.after(name));
    action->redo(*drawing_);
    record(std::move(action));
    return true;
}

#define KOVA_TABLE(Traits)                  \
    template class TableEditAction<Traits>; \
    template void Document::editTable<Traits>(const std::function<void(engine::Table<Traits::Record>&)>&);
KOVA_TABLE(LayerTraits)
KOVA_TABLE(LayerFilterTraits)
KOVA_TABLE(LayerStateTraits)
KOVA_TABLE(LineTypeTraits)
KOVA_TABLE(TextStyleTraits)
KOVA_TABLE(DimStyleTraits)
KOVA_TABLE(MLeaderStyleTraits)
KOVA_TABLE(TableStyleTraits)
KOVA_TABLE(GroupTraits)
KOVA_TABLE(NamedViewTraits)
KOVA_TABLE(UcsTraits)
KOVA_TABLE(AnnotationScaleTraits)
KOVA_TABLE(PageSetupTraits)
KOVA_TABLE(HatchPatternTraits)
#undef KOVA_TABLE

#define KOVA_STYLE(Style)                    \
    template class DeleteStyleAction<Style>; \
    template bool Document::deleteStyle<Style>(engine::Name);
KOVA_STYLE(engine::TextStyle)
KOVA_STYLE(engine::DimStyle)
KOVA_STYLE(engine::MLeaderStyle)
KOVA_STYLE(engine::TableStyle)
#undef KOVA_STYLE

}  // namespace kova::doc
