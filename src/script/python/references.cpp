#include "script/python/references.hpp"

#include <algorithm>
#include <array>

#include "engine/model/drawing.hpp"
#include "engine/entities/dimensions/arrowheads.hpp"
#include "engine/symbols/symbols.hpp"
#include "script/python/adding.hpp"
#include "script/python/convert.hpp"
#include "script/python/entity_object.hpp"

namespace kova::script::python {

namespace {

using engine::Name;
using engine::SymbolKind;

bool isThere(const engine::Drawing& drawing, SymbolKind kind, Name name) {
    if (engine::findSymbol(drawing, kind, name)) return true;
    // The program draws the usual arrow heads itself, and shapes in linetypes name their file.
    if (kind == SymbolKind::Block) return engine::arrowKind(name.view()) != engine::ArrowKind::User;
    return kind == SymbolKind::TextStyle &&
           std::find(drawing.shapeFiles.begin(), drawing.shapeFiles.end(), name.view()) != drawing.shapeFiles.end();
}

}  // namespace

bool NamedRecords::has(const Entry& entry) const {
    return std::any_of(names_.begin(), names_.end(),
                       [&](const Entry& own) { return own.kind == entry.kind && own.name == entry.name; });
}

void NamedRecords::require(Binding& binding, const NamedRecords& before) const {
    for (const Entry& entry : names_) {
        if (before.has(entry)) continue;
        if (entry.kind == SymbolKind::Linetype) {
            requireLinetype(binding, entry.name);
        } else if (entry.kind == SymbolKind::Layer && entry.strength == engine::ReferenceStrength::Hard) {
            requireLayer(binding, entry.name);
        } else if (!isThere(binding.drawing(), entry.kind, entry.name)) {
            fail(PyExc_ValueError, "there is no " + std::string(engine::symbolKindName(entry.kind)) + " named '" +
                                       entry.name.str() + "'");
        }
    }
}

bool mayName(engine::EntityType type, const FieldInfo& field) {
    switch (field.kind) {
        case FieldKind::Names:
        case FieldKind::TextMap:
        case FieldKind::Record:
        case FieldKind::Records:
            return true;
        default:
            return engine::referencedKind(type, field.key).has_value();
    }
}

bool mayName(engine::EntityType type) {
    static const auto all = [] {
        std::array<bool, engine::kEntityTypeCount> out{};
        for (int i = 0; i < engine::kEntityTypeCount; ++i) {
            const auto kind = static_cast<engine::EntityType>(i);
            out[static_cast<std::size_t>(i)] = std::ranges::any_of(
                kindFields(kind), [kind](const FieldInfo& field) { return mayName(kind, field); });
        }
        return out;
    }();
    const auto i = static_cast<std::size_t>(type);
    return i < all.size() && all[i];
}

}  // namespace kova::script::python
