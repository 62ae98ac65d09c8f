#pragma once

#include <array>
#include <vector>

#include "engine/model/describe.hpp"
#include "engine/model/entity.hpp"
#include "io/json/json_tree.hpp"

namespace kova::io::native {

/// Reads the fields of a record from the members of an object. A field whose member is missing stays as it is; a
/// member of the wrong type, or a number that does not fit, throws. Members are looked for behind the one found last,
/// so that a record in the order of writing costs one comparison a field.
class RecordReader final : public engine::FieldVisitor {
public:
    using Index = JsonTree::Index;

    /// The tree gives long texts away to the fields that they are read into.
    explicit RecordReader(JsonTree& tree) : tree_(tree) {}

    bool reading() const override { return true; }

    /// Enters an object; fails when the value is none. Leave it before entering another record.
    void enter(Index object);
    void leave() { frames_.pop_back(); }
    /// A member of the object entered last; kNone when it is missing.
    Index find(std::string_view key);

    /// Reads a whole record of any described type.
    template <class Record>
    void read(Index object, Record& record) {
        const std::size_t depth = frames_.size();
        try {
            enter(object);
            record.describe(*this);
            leave();
        } catch (...) {
            frames_.resize(depth);
            throw;
        }
    }
    /// The common and own members of an entity of the right kind.
    void readEntity(Index object, engine::Entity& entity);

    // Single values; each fails for another type or a number out of range.
    std::int64_t integerAt(Index i, std::string_view key) const;
    std::int32_t smallIntegerAt(Index i, std::string_view key) const;
    std::uint64_t handleAt(Index i, std::string_view key) const;
    bool booleanAt(Index i) const;
    engine::Name nameAt(Index i);
    engine::Color colorAt(Index i) const;
    math::Vector2 pointAt(Index i) const;
    math::Vector3 point3At(Index i) const;

protected:
    void onNumber(const engine::Field& f, double& v) override;
    void onInteger(const engine::Field& f, std::int64_t& v) override;
    void onBoolean(const engine::Field& f, bool& v) override;
    void onText(const engine::Field& f, std::string& v) override;
    void onName(const engine::Field& f, engine::Name& v) override;
    void onHandle(const engine::Field& f, std::uint64_t& v) override;
    void onColor(const engine::Field& f, engine::Color& v) override;
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
    void endObject() override { leave(); }
    bool beginList(const engine::Field& f, std::size_t& count) override;
    void beginItem(std::size_t index) override;
    void endItem() override;
    void endList() override { frames_.pop_back(); }

private:
    /// An object being read, or a list whose items are (then `cursor` is the item).
    struct Frame {
        Index first;
        Index end;
        Index cursor;
        std::uint64_t mask;
    };
    struct CachedName {
        std::string_view text;
        engine::Name name;
    };

    /// Runs over the items of an array.
    template <class Each>
    void eachItem(Index array, Each&& each) const;
    /// The array of a list field; kNone when it is missing.
    Index findArray(std::string_view key);

    JsonTree& tree_;
    std::vector<Frame> frames_;
    std::array<CachedName, 64> names_{};
};

/// The extended data of an entity record's "xdata" member.
engine::XData readXdata(JsonTree& tree, JsonTree::Index object, RecordReader& reader);

}  // namespace kova::io::native
