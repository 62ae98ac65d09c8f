#pragma once

#include <vector>

#include "engine/symbols/symbol_references.hpp"
#include "script/python/binding.hpp"
#include "script/python/fields.hpp"

namespace kova::script::python {

/// The names of other records that a record or an entity gives, by kind.
class NamedRecords final : public engine::ReferenceSink {
public:
    /// What kinds of records have no names of others in them gives none.
    template <class Record>
    static NamedRecords of(Record& record) {
        NamedRecords found;
        if constexpr (requires { engine::visitReferences(record, found); }) engine::visitReferences(record, found);
        return found;
    }
    void name(engine::SymbolKind kind, engine::Name& name, engine::ReferenceStrength strength) override {
        names_.push_back({kind, name, strength});
    }
    void text(engine::SymbolKind kind, std::string& text, engine::ReferenceStrength strength) override {
        names_.push_back({kind, engine::Name(text), strength});
    }
    /// Fails for a name that is not among those `before` and that no record has. A layer that is missing is made, and a
    /// linetype comes from the program's library, as with the layer and linetype of an entity.
    void require(Binding& binding, const NamedRecords& before) const;

private:
    struct Entry {
        engine::SymbolKind kind;
        engine::Name name;
        engine::ReferenceStrength strength;
    };
    bool has(const Entry& entry) const;

    std::vector<Entry> names_;
};

/// True when a field, or any field of a kind of entity, may hold names of records.
bool mayName(engine::EntityType type, const FieldInfo& field);
bool mayName(engine::EntityType type);

}  // namespace kova::script::python
