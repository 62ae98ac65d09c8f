#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "engine/model/entity.hpp"
#include "engine/model/records.hpp"
#include "io/dxf/fingerprint.hpp"
#include "io/json/record_reader.hpp"
#include "io/json/record_writer.hpp"

// Fields that DXF has no group for, as a JSON object: see dxf_facts.hpp.

namespace kova::io::dxf {

/// The fields of a record that are kept as own data. Keys are those of the record's describe function; a point given
/// by a prefix ("fitEnd") goes by that. Only fields of the record itself are chosen, nested ones come whole.
using FieldKeys = std::vector<std::string_view>;

/// Writes chosen fields only.
class OwnFieldWriter final : public native::RecordWriter {
public:
    OwnFieldWriter(native::JsonWriter& out, const FieldKeys& keys) : RecordWriter(out), keys_(keys) {}
    /// True when a field was written.
    bool any() const { return any_; }

protected:
    void onNumber(const engine::Field& f, double& v) override;
    void onInteger(const engine::Field& f, std::int64_t& v) override;
    void onBoolean(const engine::Field& f, bool& v) override;
    void onText(const engine::Field& f, std::string& v) override;
    void onName(const engine::Field& f, engine::Name& v) override;
    void onHandle(const engine::Field& f, std::uint64_t& v) override;
    void onColor(const engine::Field& f, engine::Color& v) override;
    void onPoint(const engine::Field& f, math::Vector2& v) override;
    void onPoint3(const engine::Field& f, math::Vector3& v) override;
    void onPointObject(const engine::Field& f, math::Vector2& v) override;
    void onPointObject3(const engine::Field& f, math::Vector3& v) override;
    void onPoints(const engine::Field& f, std::vector<math::Vector2>& v) override;
    void onPoints3(const engine::Field& f, std::vector<math::Vector3>& v) override;
    void onNumbers(const engine::Field& f, std::vector<double>& v) override;
    void onIntegers(const engine::Field& f, std::vector<std::int32_t>& v) override;
    void onBooleans(const engine::Field& f, std::vector<bool>& v) override;
    void onHandles(const engine::Field& f, std::vector<std::uint64_t>& v) override;
    void onTexts(const engine::Field& f, std::vector<std::string>& v) override;
    void onNames(const engine::Field& f, std::vector<engine::Name>& v) override;
    void onIntegerLists(const engine::Field& f, std::vector<std::vector<std::int32_t>>& v) override;
    void onTextLists(const engine::Field& f, std::vector<std::vector<std::string>>& v) override;
    void onNumberMap(const engine::Field& f, std::map<std::string, double>& v) override;
    void onTextMap(const engine::Field& f, std::map<std::string, std::string>& v) override;
    bool beginObject(const engine::Field& f, bool present) override;
    void endObject() override;
    bool beginList(const engine::Field& f, std::size_t& count) override;
    void endList() override;

private:
    bool wanted(const engine::Field& f);
    engine::Field always(const engine::Field& f) const;

    const FieldKeys& keys_;
    int depth_ = 0;
    bool any_ = false;
};

/// The chosen fields of an entity as own data; empty when there is none to write.
std::string ownDataOf(const engine::Entity& entity, const FieldKeys& common, const FieldKeys& own);
/// The same of a record.
template <class Record>
std::string ownDataOf(const Record& record, const FieldKeys& keys) {
    native::JsonWriter out(-1);
    OwnFieldWriter writer(out, keys);
    out.beginObject();
    const_cast<Record&>(record).describe(writer);
    out.endObject();
    return writer.any() ? out.take() : std::string();
}
/// Puts the JSON escape of U and M where a reader of DXF texts would find \U+ or \M+.
void protectEscapes(std::string& json);
/// Calls `each` with pieces of at most `limit` bytes, never cut within a character.
template <class Each>
void eachPiece(std::string_view text, std::size_t limit, Each&& each) {
    while (text.size() > limit) {
        std::size_t cut = limit;
        while (cut > 1 && (static_cast<unsigned char>(text[cut]) & 0xC0U) == 0x80U) --cut;
        each(text.substr(0, cut));
        text.remove_prefix(cut);
    }
    if (!text.empty()) each(text);
}

/// Own data as a file holds it, with what the plain groups beside it say now.
struct OwnText {
    std::string json;
    Fingerprint plain;
    bool empty() const { return json.empty(); }
};

/// The member that holds the fingerprint of the plain groups as they were written.
inline constexpr std::string_view kFingerprintKey = "plain";
/// What own data may contradict: it decides which groups the fingerprint stands for.
struct OwnScope {
    std::optional<engine::EntityType> kind;  ///< none: a table record or an object
    bool common = false;                     ///< common properties that have groups, too
    bool attributes = false;                 ///< of a block reference
    bool checked = true;                     ///< false: no group of the record says anything about it
};
/// Puts the fingerprint behind the other members of an own-data text.
void addFingerprint(std::string& json, const Fingerprint& plain, const OwnScope& scope);
/// True for the common properties that have groups of their own.
bool hasCommonGroup(std::string_view key);

/// A parsed own-data text, for records that are read piece by piece.
class OwnDataTree {
public:
    /// False for a text that is no JSON object.
    bool parse(std::string_view json);
    /// The same without what does not count: when the plain groups are no longer those that stood beside the text, only
    /// members that no plain group says anything about remain. A text without a fingerprint, from an earlier release of
    /// the program, counts whole.
    bool parse(const OwnText& text, std::optional<engine::EntityType> kind = {});
    native::JsonTree& tree() { return *tree_; }
    native::JsonTree::Index root() const { return root_; }

private:
    std::unique_ptr<native::JsonTree> tree_ = std::make_unique<native::JsonTree>();
    native::JsonTree::Index root_ = native::JsonTree::kNone;
};

/// Sets the fields that the own data holds, as far as it counts. False, with the entity possibly half set, for a text
/// that does not fit.
bool applyOwnData(const OwnText& text, engine::Entity& entity);
/// The same for a record with a describe function.
template <class Record>
bool applyOwnData(const OwnText& text, Record& record) requires(!std::is_base_of_v<engine::Entity, Record>) {
    OwnDataTree data;
    if (!data.parse(text)) return false;
    try {
        native::RecordReader reader(data.tree());
        reader.read(data.root(), record);
    } catch (const std::exception&) {
        return false;
    }
    return true;
}
/// True when the own data marks a record that the writer only added to be complete.
bool isPlaceholder(const OwnText& text);

/// The own data of a layout: its fields and those of its page setup side by side.
struct LayoutOwnFields {
    engine::Layout& layout;

    void describe(engine::FieldVisitor& v) {
        v.name("layoutName", layout.name);
        v.integer("tabOrder", layout.tabOrder);
        v.handle("handle", layout.handle);
        layout.pageSetup.describe(v);
    }
};

/// The view of the drawing's own record.
struct CurrentView {
    engine::NamedView& view;

    void describe(engine::FieldVisitor& v) { view.describe(v); }
};

}  // namespace kova::io::dxf
