#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "engine/model/color.hpp"
#include "engine/model/name.hpp"
#include "math/vector2.hpp"
#include "math/vector3.hpp"

namespace kova::engine {

/// What a number measures; shown in listings and scripting help.
enum class Unit : std::uint8_t { None, Length, Angle };

/// One field as a visitor sees it.
struct Field {
    std::string_view key;      ///< the field's name in the native file, LIST and scripting
    Unit unit = Unit::None;
    bool optional = false;     ///< written only when the value differs from the default below
    double fallback = 0.0;     ///< default of an optional number, integer or boolean
    std::string_view fallbackText{};  ///< default of an optional text or name
};

/// Names every field of a record, in file order, each with its key and its condition for being written.
///
/// Every entity kind and table record has one `void describe(FieldVisitor&)` that calls these functions;
/// the native file, listings, comparison and scripting are visitors. A visitor that only looks leaves the
/// references as they are. A reader leaves a field that it does not find as it is, so a record's own
/// initialisers are the defaults of missing members.
///
///     void describe(FieldVisitor& v) { v.point("center", center); v.length("radius", radius); }
///
/// An optional field takes its default as third argument (`v.boolean("ltgen", ltgen, false)`): it is not
/// written while it equals that (numbers: within 1e-9). Optional lists are left out while they are empty.
class FieldVisitor {
public:
    virtual ~FieldVisitor() = default;

    /// True when the visitor assigns fields.
    virtual bool reading() const { return false; }

    // Scalars --------------------------------------------------------------------------------------------
    void number(std::string_view key, double& v) { onNumber({key}, v); }
    void number(std::string_view key, double& v, double fallback) { onNumber({key, Unit::None, true, fallback}, v); }
    void length(std::string_view key, double& v) { onNumber({key, Unit::Length}, v); }
    void length(std::string_view key, double& v, double fallback) { onNumber({key, Unit::Length, true, fallback}, v); }
    void angle(std::string_view key, double& v) { onNumber({key, Unit::Angle}, v); }
    void angle(std::string_view key, double& v, double fallback) { onNumber({key, Unit::Angle, true, fallback}, v); }

    /// Integers and enumerations. A value from outside the type's range throws std::out_of_range.
    template <class T>
    void integer(std::string_view key, T& v) {
        integerField({key}, v);
    }
    template <class T>
    void integer(std::string_view key, T& v, std::type_identity_t<T> fallback) {
        integerField({key, Unit::None, true, static_cast<double>(fallback)}, v);
    }
    void boolean(std::string_view key, bool& v) { onBoolean({key}, v); }
    void boolean(std::string_view key, bool& v, bool fallback) {
        onBoolean({key, Unit::None, true, fallback ? 1.0 : 0.0}, v);
    }
    void text(std::string_view key, std::string& v) { onText({key}, v); }
    void text(std::string_view key, std::string& v, std::string_view fallback) {
        onText({key, Unit::None, true, 0.0, fallback}, v);
    }
    void name(std::string_view key, Name& v) { onName({key}, v); }
    void name(std::string_view key, Name& v, std::string_view fallback) {
        onName({key, Unit::None, true, 0.0, fallback}, v);
    }
    void handle(std::string_view key, std::uint64_t& v) { onHandle({key}, v); }
    /// A handle that is written only when it is not 0.
    void optionalHandle(std::string_view key, std::uint64_t& v) { onHandle({key, Unit::None, true}, v); }
    void color(std::string_view key, Color& v) { onColor({key}, v); }
    /// A colour that is written only when it is not ByLayer.
    void optionalColor(std::string_view key, Color& v) { onColor({key, Unit::None, true}, v); }

    // Points ---------------------------------------------------------------------------------------------
    /// A point as members of its own per axis: prefix "center" gives centerX and centerY, an empty prefix x and y.
    void point(std::string_view prefix, math::Vector2& v) { onPoint({prefix, Unit::Length}, v); }
    void point(std::string_view prefix, math::Vector3& v) { onPoint3({prefix, Unit::Length}, v); }
    /// A point as an object with the members x and y (and z).
    void pointObject(std::string_view key, math::Vector2& v) { onPointObject({key, Unit::Length}, v); }
    void pointObject(std::string_view key, math::Vector3& v) { onPointObject3({key, Unit::Length}, v); }
    /// The same, written only when the point is not the origin (within 1e-9).
    void optionalPointObject(std::string_view key, math::Vector2& v) { onPointObject({key, Unit::Length, true}, v); }

    // Lists ----------------------------------------------------------------------------------------------
    void points(std::string_view key, std::vector<math::Vector2>& v, bool optional = false) {
        onPoints({key, Unit::Length, optional}, v);
    }
    void points(std::string_view key, std::vector<math::Vector3>& v, bool optional = false) {
        onPoints3({key, Unit::Length, optional}, v);
    }
    void numbers(std::string_view key, std::vector<double>& v, bool optional = false) {
        onNumbers({key, Unit::None, optional}, v);
    }
    void integers(std::string_view key, std::vector<std::int32_t>& v, bool optional = false) {
        onIntegers({key, Unit::None, optional}, v);
    }
    void booleans(std::string_view key, std::vector<bool>& v, bool optional = false) {
        onBooleans({key, Unit::None, optional}, v);
    }
    void handles(std::string_view key, std::vector<std::uint64_t>& v, bool optional = false) {
        onHandles({key, Unit::None, optional}, v);
    }
    void texts(std::string_view key, std::vector<std::string>& v, bool optional = false) {
        onTexts({key, Unit::None, optional}, v);
    }
    void names(std::string_view key, std::vector<Name>& v, bool optional = false) {
        onNames({key, Unit::None, optional}, v);
    }
    /// A list of lists: face indices, rows of a lookup table.
    void integerLists(std::string_view key, std::vector<std::vector<std::int32_t>>& v, bool optional = false) {
        onIntegerLists({key, Unit::None, optional}, v);
    }
    void textLists(std::string_view key, std::vector<std::vector<std::string>>& v, bool optional = false) {
        onTextLists({key, Unit::None, optional}, v);
    }

    // Maps: an object whose member names are data ----------------------------------------------------------
    void numberMap(std::string_view key, std::map<std::string, double>& v, bool optional = true) {
        onNumberMap({key, Unit::None, optional}, v);
    }
    void textMap(std::string_view key, std::map<std::string, std::string>& v, bool optional = true) {
        onTextMap({key, Unit::None, optional}, v);
    }

    // Nested records -------------------------------------------------------------------------------------
    /// A nested record, always written.
    template <class T>
    void object(std::string_view key, T& v) {
        if (!beginObject({key}, true)) return;
        v.describe(*this);
        endObject();
    }
    /// A nested record that is there or not.
    template <class T>
    void object(std::string_view key, std::optional<T>& v) {
        if (!beginObject({key, Unit::None, true}, v.has_value())) return;
        if (!v) v.emplace();
        v->describe(*this);
        endObject();
    }
    /// A list of nested records.
    template <class T>
    void objects(std::string_view key, std::vector<T>& v, bool optional = false) {
        std::size_t count = v.size();
        if (!beginList({key, Unit::None, optional}, count)) return;
        if (reading()) {
            v.clear();
            v.resize(count);
        }
        for (std::size_t i = 0; i < v.size(); ++i) {
            beginItem(i);
            v[i].describe(*this);
            endItem();
        }
        endList();
    }

protected:
    virtual void onNumber(const Field& f, double& v) = 0;
    virtual void onInteger(const Field& f, std::int64_t& v) = 0;
    virtual void onBoolean(const Field& f, bool& v) = 0;
    virtual void onText(const Field& f, std::string& v) = 0;
    virtual void onName(const Field& f, Name& v) = 0;
    virtual void onHandle(const Field& f, std::uint64_t& v) = 0;
    virtual void onColor(const Field& f, Color& v) = 0;
    /// Default: two calls of onNumber, with the axis behind the key.
    virtual void onPoint(const Field& f, math::Vector2& v);
    virtual void onPoint3(const Field& f, math::Vector3& v);
    virtual void onPointObject(const Field& f, math::Vector2& v) = 0;
    virtual void onPointObject3(const Field& f, math::Vector3& v) = 0;
    virtual void onPoints(const Field& f, std::vector<math::Vector2>& v) = 0;
    virtual void onPoints3(const Field& f, std::vector<math::Vector3>& v) = 0;
    virtual void onNumbers(const Field& f, std::vector<double>& v) = 0;
    virtual void onIntegers(const Field& f, std::vector<std::int32_t>& v) = 0;
    virtual void onBooleans(const Field& f, std::vector<bool>& v) = 0;
    virtual void onHandles(const Field& f, std::vector<std::uint64_t>& v) = 0;
    virtual void onTexts(const Field& f, std::vector<std::string>& v) = 0;
    virtual void onNames(const Field& f, std::vector<Name>& v) = 0;
    virtual void onIntegerLists(const Field& f, std::vector<std::vector<std::int32_t>>& v) = 0;
    virtual void onTextLists(const Field& f, std::vector<std::vector<std::string>>& v) = 0;
    virtual void onNumberMap(const Field& f, std::map<std::string, double>& v) = 0;
    virtual void onTextMap(const Field& f, std::map<std::string, std::string>& v) = 0;
    /// Enters a nested record; false skips it. `present` tells whether the record exists (when looking);
    /// a reader answers whether the file has it.
    virtual bool beginObject(const Field& f, bool present) = 0;
    virtual void endObject() = 0;
    /// Enters a list of `count` records; a reader replaces count by the file's. False skips the list.
    virtual bool beginList(const Field& f, std::size_t& count) = 0;
    virtual void beginItem(std::size_t index) = 0;
    virtual void endItem() = 0;
    virtual void endList() = 0;

private:
    template <class T>
    void integerField(const Field& f, T& v) {
        auto wide = static_cast<std::int64_t>(v);
        onInteger(f, wide);
        if (!reading()) return;
        const T narrow = static_cast<T>(wide);
        if (static_cast<std::int64_t>(narrow) != wide)
            throw std::out_of_range("value of \"" + std::string(f.key) + "\" is out of range");
        v = narrow;
    }
};

}  // namespace kova::engine
