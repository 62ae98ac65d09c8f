#pragma once

#include <cstdint>
#include <string_view>

#include "engine/model/describe.hpp"
#include "engine/model/entity.hpp"
#include "io/json/json_writer.hpp"

namespace kova::io::native {

/// Lists and records nested deeper than this are left out on writing, since reading refuses them. Only a tree of
/// dictionaries can come near it.
inline constexpr int kMaxWriteDepth = 400;

/// Writes the fields of a record as members of the object that is open in the writer.
///
/// A number that is not finite is left out where it is optional, and is 0 otherwise: the file loads again.
class RecordWriter : public engine::FieldVisitor {
public:
    explicit RecordWriter(JsonWriter& out) : out_(out) {}

    /// Writes a field of this key under another one; for a key that is already taken in the object that is about to
    /// be opened. Nested records are not concerned.
    void setAlias(std::string_view key, std::string_view writtenAs) {
        aliasedKey_ = key;
        alias_ = writtenAs;
        aliasDepth_ = out_.depth() + 1;
    }

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
    void beginItem(std::size_t index) override;
    void endItem() override;
    void endList() override;

private:
    void key(std::string_view key) { out_.key(aliasDepth_ == out_.depth() && key == aliasedKey_ ? alias_ : key); }

    JsonWriter& out_;
    std::string_view aliasedKey_;
    std::string_view alias_;
    int aliasDepth_ = -1;
};

/// A colour, point or vector as an object.
void writeColor(JsonWriter& out, const engine::Color& color);
void writePoint(JsonWriter& out, const math::Vector2& p);
void writePoint(JsonWriter& out, const math::Vector3& p);

/// A record of any described type as an object of its own.
template <class Record>
void writeRecord(JsonWriter& out, const Record& record) {
    RecordWriter writer(out);
    out.beginObject();
    // describe() serves readers too and is not const; a writer leaves the record as it is.
    const_cast<Record&>(record).describe(writer);
    out.endObject();
}

/// The entity record of the drawing file: common members, "type", the kind's own members. An entity of a kind
/// outside the table is written as "Unknown" with its common members only.
void writeEntity(JsonWriter& out, const engine::Entity& entity);
/// The record as listings show it: "kind" (the display name) and "handle" (upper-case hexadecimal text) in front,
/// then the members of the file except the numeric handle. A member of the kind that is itself named "kind" is listed
/// as "bodyKind".
void writeListedEntity(JsonWriter& out, const engine::Entity& entity);

}  // namespace kova::io::native
