#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "math/vector3.hpp"
#include "script/lisp/value.hpp"

namespace kova::script::lisp {

/// A list of DXF groups as ENTGET gives and ENTMAKE takes them, made ready for look-ups: ((0 . "LINE") (10 x y z) ...).
/// Throws LispError for what is no such list, and for values of the wrong kind or not finite.
class GroupList {
public:
    struct Group {
        int code;
        const Value* value;  ///< what stands behind the code
    };

    explicit GroupList(const Value& list);

    const std::vector<Group>& groups() const { return groups_; }
    /// The first group of a code; null: none.
    const Value* find(int code) const;
    bool has(int code) const { return find(code) != nullptr; }
    std::string text(int code, std::string_view fallback = {}) const;
    double real(int code, double fallback = 0.0) const;
    std::int64_t integer(int code, std::int64_t fallback = 0) const;
    /// An entity name, or a handle as text; 0: none.
    std::uint64_t handle(int code) const;
    math::Vector3 point(int code, const math::Vector3& fallback = {}) const;
    std::vector<math::Vector3> points(int code) const;
    std::vector<double> reals(int code) const;
    /// The group -3: extended data by application; nil: none.
    const Value& extended() const { return extended_; }
    bool hasExtended() const { return hasExtended_; }

    static double realOf(int code, const Value& v);
    static std::int64_t integerOf(int code, const Value& v);
    static const std::string& textOf(int code, const Value& v);
    static math::Vector3 pointOf(int code, const Value& v);

private:
    std::vector<Group> groups_;
    Value list_;
    Value extended_;
    bool hasExtended_ = false;
};

/// Collects groups into such a list.
class GroupWriter {
public:
    void text(int code, std::string_view v) { add(code, Value::string(std::string(v))); }
    void real(int code, double v) { add(code, Value::real(v)); }
    void integer(int code, std::int64_t v) { add(code, Value::integer(v)); }
    void entity(int code, std::uint64_t handle) { add(code, Value::entity(handle)); }
    void point(int code, const math::Vector3& p);
    void point(int code, const math::Vector2& p);
    void add(int code, Value v) { items_.push_back(Value::cons(Value::integer(code), std::move(v))); }
    void addItem(Value v) { items_.push_back(std::move(v)); }
    Value finish() const { return Value::list(items_); }

private:
    std::vector<Value> items_;
};

}  // namespace kova::script::lisp
