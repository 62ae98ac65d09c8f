#include "engine/model/describe.hpp"

namespace kova::engine {

namespace {

/// A key with an axis behind it, on the stack: "center" + 'X', or "x" when there is no prefix.
class AxisKey {
public:
    AxisKey(std::string_view prefix, char axis) {
        if (prefix.size() >= sizeof text_) throw std::length_error("field name too long");
        prefix.copy(text_, prefix.size());
        text_[prefix.size()] = prefix.empty() ? static_cast<char>(axis + ('a' - 'A')) : axis;
        size_ = prefix.size() + 1;
    }
    operator std::string_view() const { return {text_, size_}; }  // NOLINT

private:
    char text_[48];
    std::size_t size_;
};

}  // namespace

void FieldVisitor::onPoint(const Field& f, math::Vector2& v) {
    const AxisKey x(f.key, 'X');
    const AxisKey y(f.key, 'Y');
    onNumber({x, f.unit}, v.x);
    onNumber({y, f.unit}, v.y);
}

void FieldVisitor::onPoint3(const Field& f, math::Vector3& v) {
    const AxisKey x(f.key, 'X');
    const AxisKey y(f.key, 'Y');
    const AxisKey z(f.key, 'Z');
    onNumber({x, f.unit}, v.x);
    onNumber({y, f.unit}, v.y);
    onNumber({z, f.unit}, v.z);
}

}  // namespace kova::engine
