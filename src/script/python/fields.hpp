#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "engine/model/describe.hpp"
#include "script/python/convert.hpp"

namespace kova::script::python {

/// What kind of value a described field holds.
enum class FieldKind : std::uint8_t {
    Number,
    Integer,
    Boolean,
    Text,
    Name,
    Handle,
    Color,
    Point,
    Point3,
    Points,
    Points3,
    Numbers,
    Integers,
    Booleans,
    Handles,
    Texts,
    Names,
    IntegerLists,
    TextLists,
    NumberMap,
    TextMap,
    Record,
    Records
};
/// As a Python annotation: "float", "list[Vector2]" ...
const char* pythonType(FieldKind kind);

/// One described field of an entity kind or a table's record.
struct FieldInfo {
    std::string key;   ///< as described
    std::string name;  ///< as Python writes it
    FieldKind kind = FieldKind::Number;
    engine::Unit unit = engine::Unit::None;
};

/// A visitor that deals with all kinds of fields in one function.
class AnyFieldVisitor : public engine::FieldVisitor {
protected:
    /// `value` points to the field's value, of the type that the kind tells.
    virtual void on(const engine::Field& f, FieldKind kind, void* value) = 0;

    void onNumber(const engine::Field& f, double& v) override { on(f, FieldKind::Number, &v); }
    void onInteger(const engine::Field& f, std::int64_t& v) override { on(f, FieldKind::Integer, &v); }
    void onBoolean(const engine::Field& f, bool& v) override { on(f, FieldKind::Boolean, &v); }
    void onText(const engine::Field& f, std::string& v) override { on(f, FieldKind::Text, &v); }
    void onName(const engine::Field& f, engine::Name& v) override { on(f, FieldKind::Name, &v); }
    void onHandle(const engine::Field& f, std::uint64_t& v) override { on(f, FieldKind::Handle, &v); }
    void onColor(const engine::Field& f, engine::Color& v) override { on(f, FieldKind::Color, &v); }
    void onPoint(const engine::Field& f, math::Vector2& v) override { on(f, FieldKind::Point, &v); }
    void onPoint3(const engine::Field& f, math::Vector3& v) override { on(f, FieldKind::Point3, &v); }
    void onPointObject(const engine::Field& f, math::Vector2& v) override { on(f, FieldKind::Point, &v); }
    void onPointObject3(const engine::Field& f, math::Vector3& v) override { on(f, FieldKind::Point3, &v); }
    void onPoints(const engine::Field& f, std::vector<math::Vector2>& v) override { on(f, FieldKind::Points, &v); }
    void onPoints3(const engine::Field& f, std::vector<math::Vector3>& v) override { on(f, FieldKind::Points3, &v); }
    void onNumbers(const engine::Field& f, std::vector<double>& v) override { on(f, FieldKind::Numbers, &v); }
    void onIntegers(const engine::Field& f, std::vector<std::int32_t>& v) override { on(f, FieldKind::Integers, &v); }
    void onBooleans(const engine::Field& f, std::vector<bool>& v) override { on(f, FieldKind::Booleans, &v); }
    void onHandles(const engine::Field& f, std::vector<std::uint64_t>& v) override { on(f, FieldKind::Handles, &v); }
    void onTexts(const engine::Field& f, std::vector<std::string>& v) override { on(f, FieldKind::Texts, &v); }
    void onNames(const engine::Field& f, std::vector<engine::Name>& v) override { on(f, FieldKind::Names, &v); }
    void onIntegerLists(const engine::Field& f, std::vector<std::vector<std::int32_t>>& v) override {
        on(f, FieldKind::IntegerLists, &v);
    }
    void onTextLists(const engine::Field& f, std::vector<std::vector<std::string>>& v) override {
        on(f, FieldKind::TextLists, &v);
    }
    void onNumberMap(const engine::Field& f, std::map<std::string, double>& v) override {
        on(f, FieldKind::NumberMap, &v);
    }
    void onTextMap(const engine::Field& f, std::map<std::string, std::string>& v) override {
        on(f, FieldKind::TextMap, &v);
    }
};

/// Collects the fields of a record, those included that are described only under some condition.
class FieldLister final : public AnyFieldVisitor {
public:
    std::vector<FieldInfo> fields;
    bool reading() const override { return true; }

protected:
    void on(const engine::Field& f, FieldKind kind, void* value) override;
    bool beginObject(const engine::Field& f, bool present) override;
    void endObject() override {}
    bool beginList(const engine::Field& f, std::size_t& count) override;
    void beginItem(std::size_t) override {}
    void endItem() override {}
    void endList() override {}
};

/// Reads one field, or all fields of a record as a dict; nested records become dicts and lists of dicts.
class FieldGetter final : public AnyFieldVisitor {
public:
    /// One field.
    explicit FieldGetter(std::string_view key) : key_(key), all_(false) {}
    /// All fields.
    FieldGetter();
    /// Describes also what counts only under a condition. The record's lists may be lost: give a copy.
    void lookEverywhere() { everywhere_ = true; }
    bool reading() const override { return everywhere_; }
    /// The value or the dict; empty when the field was not described.
    Ref take() { return std::move(result_); }
    bool found() const { return static_cast<bool>(result_); }

protected:
    void on(const engine::Field& f, FieldKind kind, void* value) override;
    bool beginObject(const engine::Field& f, bool present) override;
    void endObject() override;
    bool beginList(const engine::Field& f, std::size_t& count) override;
    void beginItem(std::size_t index) override;
    void endItem() override;
    void endList() override;

private:
    bool wanted(const engine::Field& f) const;
    void put(std::string_view key, Ref value);

    struct Level {
        Ref container;    ///< dict or list
        std::string key;  ///< under which it stands in its parent
    };
    std::string_view key_;
    bool all_;
    bool everywhere_ = false;
    std::vector<Level> levels_;
    Ref result_;
};

/// Sets one field of a record, or those that a dict names. What is not set keeps its value, derived fields too: run
/// it with apply().
class FieldSetter final : public AnyFieldVisitor {
public:
    /// One field; `name` names it in errors.
    FieldSetter(std::string_view key, std::string_view name, PyObject* value) : key_(key), name_(name), value_(value) {}
    /// All fields of a dict whose keys are Python names. A key that no field has fails with TypeError.
    explicit FieldSetter(PyObject* dict);

    template <class Record>
    void apply(Record& record) {
        keeping_ = true;
        record.describe(*this);
        keeping_ = false;
        record.describe(*this);
        finish();
    }
    bool reading() const override { return !keeping_; }

protected:
    void on(const engine::Field& f, FieldKind kind, void* value) override;
    bool beginObject(const engine::Field& f, bool present) override;
    void endObject() override;
    bool beginList(const engine::Field& f, std::size_t& count) override;
    void beginItem(std::size_t index) override;
    void endItem() override;
    void endList() override;

private:
    /// Borrowed; null when the field is not to be set.
    PyObject* find(const engine::Field& f);
    void enter(PyObject* dict);
    void leave();
    void finish();

    struct Level {
        PyObject* object;  ///< a dict, or the sequence of a list's items; borrowed
        Py_ssize_t used;   ///< members of a dict that fields took
    };
    struct Kept {
        std::string_view key;
        FieldKind kind;
        double number;
        std::int64_t integer;
    };
    std::string_view key_;
    std::string name_;
    PyObject* value_ = nullptr;
    std::vector<Level> levels_;
    std::vector<Kept> kept_;
    std::vector<Ref> alive_;
    bool keeping_ = false;
    bool all_ = false;
    bool done_ = false;
};

/// A value as Python has it; see FieldKind for the type that `value` points to.
Ref pythonValue(FieldKind kind, const void* value);
/// Sets the value from a Python object; `what` names it in errors. Nothing is assigned on an error.
void assignValue(FieldKind kind, void* value, PyObject* from, std::string_view what);

}  // namespace kova::script::python
