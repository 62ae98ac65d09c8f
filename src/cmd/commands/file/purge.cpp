#include "edit/purging.hpp"

#include <unordered_set>

#include "cmd/dialogue.hpp"
#include "engine/inquiry/value_text.hpp"
#include "cmd/registry.hpp"
#include "strings/wildcards.hpp"

namespace kova::cmd::commands {

namespace {

using engine::Name;

struct KindRow {
    const char* word;
    PurgeKind kind;
};
constexpr KindRow kRows[] = {
    {"BLOCKS", PurgeKind::Block},           {"DIMSTYLES", PurgeKind::DimStyle},
    {"GROUPS", PurgeKind::Group},           {"LAYERS", PurgeKind::Layer},
    {"LTYPES", PurgeKind::Linetype},        {"MULTILEADERSTYLES", PurgeKind::MLeaderStyle},
    {"SHAPES", PurgeKind::ShapeFile},       {"TEXTSTYLES", PurgeKind::TextStyle},
    {"TABLESTYLES", PurgeKind::TableStyle}, {"REGAPPS", PurgeKind::RegApp},
};

/// PURGE: deletes what nothing uses, also what becomes unused by that.
class PurgeTool final : public DialogueTool {
public:
    void end() override { group_.reset(); }

protected:
    Dialogue dialogue(Ask& ask) override {
        const Answer type = co_await ask.keyword(
            "Enter type of unused objects to purge "
            "[Blocks/Dimstyles/Groups/LAyers/LTypes/MAterials/MUltileaderstyles/Plotstyles/SHapes/textSTyles/"
            "Mlinestyles/Tablestyles/Visualstyles/Regapps/Zero-length geometry/Empty text objects/Orphaned data/All]:",
            "Blocks Dimstyles Groups LAyers LTypes MAterials MUltileaderstyles Plotstyles SHapes textSTyles "
            "Mlinestyles Tablestyles Visualstyles Regapps Zero Empty Orphaned All");
        if (type.isEnter()) co_return;
        if (type.is("ZERO") || type.is("EMPTY")) {
            const bool zero = type.is("ZERO");
            eraseObjects(zero ? zeroLengthGeometry(drawing()) : emptyTexts(drawing()),
                         zero ? "zero-length object" : "empty text object");
            co_return;
        }
        std::vector<PurgeKind> kinds;
        if (type.is("ALL")) kinds.assign(std::begin(kPurgeKinds), std::end(kPurgeKinds));
        for (const KindRow& row : kRows)
            if (type.is(row.word)) kinds.assign(1, row.kind);
        if (kinds.empty()) {
            // Materials, plot styles and the like are not kept by drawings here.
            message("No unreferenced " + engine::foldCase(type.word) + " found.");
            co_return;
        }
        const Answer names = co_await ask.text("Enter name(s) to purge <*>:");
        pattern_ = names.isText() ? names.text : "*";
        const bool verify = co_await askYesNo(ask, "Verify each name to be purged? [Yes/No] <Y>:", true);
        std::size_t total = 0;
        std::unordered_set<std::string> kept;
        for (bool more = true; more;) {
            more = false;
            const auto unused = unusedRecords(document(), kinds);
            for (std::size_t i = 0; i < kinds.size(); ++i) {
                const PurgeKind kind = kinds[i];
                std::vector<Name> chosen;
                for (const Name name : unused[i]) {
                    if (!matchesWildcards(name.view(), pattern_)) continue;
                    const std::string key = purgeKindName(kind) + "|" + name.folded();
                    if (kept.contains(key)) continue;
                    if (verify) {
                        std::string question = "Purge " + purgeKindName(kind) + " " + inQuotes(name) + "? <N>:";
                        const bool purge = co_await askYesNo(ask, std::move(question), false);
                        if (!purge) {
                            kept.insert(key);
                            continue;
                        }
                    }
                    chosen.push_back(name);
                }
                const std::size_t purged = purge(kind, chosen);
                total += purged;
                more = more || purged != 0;
            }
        }
        if (total == 0 && kept.empty()) message(nothing(kinds));
        if (total != 0) message(counted(total, "item") + " purged.");
    }

private:
    std::size_t purge(PurgeKind kind, const std::vector<Name>& names) {
        if (names.empty()) return 0;
        if (!group_) group_.emplace(document(), "PURGE");
        const std::size_t count = purgeRecords(document(), kind, names);
        for (const Name name : names) message("Deleting " + purgeKindName(kind) + " " + inQuotes(name) + ".");
        return count;
    }

    void eraseObjects(const std::vector<std::uint64_t>& ids, std::string_view noun) {
        if (ids.empty()) return message("No " + std::string(noun) + "s found.");
        const doc::GroupScope group(document(), "PURGE");
        message(counted(document().removeEntities(ids), noun) + " deleted.");
    }

    static std::string nothing(const std::vector<PurgeKind>& kinds) {
        if (kinds.size() > 1) return "No unreferenced items found.";
        return "No unreferenced " + purgeKindName(kinds.front()) + "s found.";
    }

    std::string pattern_;
    std::optional<doc::GroupScope> group_;
};

}  // namespace

KOVA_TOOL_COMMAND(Purge, "PURGE", "Purge", "File", {"PU"})

}  // namespace kova::cmd::commands
