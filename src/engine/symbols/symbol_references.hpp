#pragma once

#include <optional>
#include <string>

#include "engine/model/entity_type.hpp"
#include "engine/symbols/symbols.hpp"

namespace kova::engine {

class Entity;
struct DimStyle;
struct Layer;
struct Linetype;
struct MLeaderStyle;
struct TableStyle;

/// Which places visitReferences looks at: one bit a kind of symbol.
using SymbolKinds = unsigned;
constexpr SymbolKinds symbolBit(SymbolKind kind) { return 1U << static_cast<unsigned>(kind); }
inline constexpr SymbolKinds kAllSymbolKinds = ~0U;

/// How a place refers to a record. Records that only soft references name may be purged.
enum class ReferenceStrength : std::uint8_t {
    Hard,
    Soft  ///< a list that may name what is gone: layer filters and states, layers frozen in a viewport
};

/// Is shown every place that refers to a table's record by its name. A place may be changed, unless the drawing
/// is visited to look only. Empty names are passed over.
class ReferenceSink {
public:
    virtual ~ReferenceSink() = default;
    virtual void name(SymbolKind kind, Name& name, ReferenceStrength strength) = 0;
    /// A name that stands as plain text: values of dimension overrides, extended data, system variables.
    virtual void text(SymbolKind kind, std::string& name, ReferenceStrength strength) = 0;
};

/// Visits the references of these kinds in entities of all spaces and blocks, in records and current settings.
/// Linear in the size of the drawing.
void visitReferences(Drawing& drawing, SymbolKinds kinds, ReferenceSink& sink);

/// Visits the references of one record or entity, which may stand outside any drawing.
void visitReferences(Layer& layer, ReferenceSink& sink);
void visitReferences(Linetype& linetype, ReferenceSink& sink);
void visitReferences(DimStyle& style, ReferenceSink& sink);
void visitReferences(MLeaderStyle& style, ReferenceSink& sink);
void visitReferences(TableStyle& style, ReferenceSink& sink);
void visitReferences(Entity& entity, ReferenceSink& sink);

/// The kind of record that a name-valued field of an entity refers to, by its key; nothing for other fields.
std::optional<SymbolKind> referencedKind(EntityType type, std::string_view key);

}  // namespace kova::engine
