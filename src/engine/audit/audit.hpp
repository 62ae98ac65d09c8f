#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <vector>

#include "engine/model/drawing.hpp"
#include "engine/symbols/symbols.hpp"

namespace kova::engine {

/// The tables that an audit looks through; one bit of AuditReport::tables each.
enum class AuditTable : std::uint8_t {
    Layers,
    LayerFilters,
    LayerStates,
    Linetypes,
    TextStyles,
    DimStyles,
    MLeaderStyles,
    TableStyles,
    Groups,
    Views,
    UcsList,
    AnnotationScales,
    PageSetups,
    HatchPatterns
};
constexpr std::uint32_t auditBit(AuditTable table) { return 1U << static_cast<unsigned>(table); }

/// One error of a drawing.
struct AuditFault {
    std::string text;    ///< "Circle 2F: radius is not above 0"
    std::string remedy;  ///< what a repair does: "erased", "layer set to 0"
};

/// The errors that are listed; more are only counted.
inline constexpr std::size_t kMaxListedFaults = 1000;

/// What is wrong with a drawing, and where a repair has to work.
struct AuditReport {
    std::size_t objects = 0;  ///< entities looked at, those of blocks included
    std::size_t blocks = 0;
    std::size_t faults = 0;
    std::vector<AuditFault> listed;
    std::vector<std::uint64_t> erase;  ///< ids of entities that cannot be kept
    std::vector<std::uint64_t> mend;   ///< ids of entities for mendEntity
    std::vector<SymbolRename> rename;  ///< records whose names no table may hold
    std::uint32_t tables = 0;          ///< tables for mendRecords, by auditBit
    bool settings = false;             ///< mendSettings has work
    bool dictionary = false;           ///< mendDictionary has work
    bool handles = false;              ///< mendHandles has work
};

/// Looks a drawing through: references of entities, records and settings to records that are missing; numbers that are
/// not finite; degenerate geometry; references to missing blocks, and blocks that contain themselves; handles used
/// twice or beyond the counter; names that no table may hold; the named-object dictionary. Linear in its size; contents
/// of loaded external references are left to their own file.
AuditReport auditDrawing(const Drawing& drawing);

/// Repairs what an audit noted of an entity that can be kept: missing names become standard ones, numbers usable ones.
void mendEntity(const Drawing& drawing, Entity& entity);
/// Repairs the records of one of the drawing's tables (a copy, or the table itself); adds standard records it lacks.
template <class Record>
void mendRecords(const Drawing& drawing, Table<Record>& table);
/// Makes current names that lead nowhere standard ones. The tables must be in order.
void mendSettings(Drawing& drawing);
void mendDictionary(std::vector<DictionaryEntry>& entries);
/// Takes handles from blocks, layouts and dictionary entries that share them (they get new ones when they are saved)
/// and lifts the counter above all handles in use.
void mendHandles(Drawing& drawing);

/// Notes faults of an entity or a record, and repairs them in place on the way when it is told to.
class Auditor {
public:
    /// `report` may be null.
    Auditor(const Drawing& drawing, AuditReport* report, bool mending)
        : drawing_(drawing), report_(report), mending_(mending) {}

    const Drawing& drawing() const { return drawing_; }
    bool mending() const { return mending_; }
    /// What the next faults belong to, as lines name it.
    void setSubject(std::string text) {
        subject_ = std::move(text);
        entity_ = nullptr;
    }
    void setEntity(const Entity& entity) { entity_ = &entity; }
    /// Counts a fault of the subject; `remedy` tells what becomes of it.
    void note(std::string_view fault, std::string_view remedy);
    std::size_t count() const { return count_; }
    /// A number that must be finite.
    void finite(double& v, double fallback, std::string_view what);
    /// A reference by name, which becomes `fallback` when the drawing has no such record.
    void reference(SymbolKind kind, Name& name, Name fallback, std::string_view what);

private:
    const Drawing& drawing_;
    AuditReport* report_;
    bool mending_;
    std::string subject_;
    const Entity* entity_ = nullptr;
    std::array<Name, kSymbolKindCount> known_;
    std::size_t count_ = 0;
};

/// Faults of one entity; true when it cannot be kept.
bool auditEntity(Auditor& auditor, Entity& entity);
/// Faults of all tables, for auditDrawing.
void auditTables(const Drawing& drawing, AuditReport& report);

}  // namespace kova::engine
