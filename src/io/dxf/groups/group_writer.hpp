#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string_view>

#include "math/vector2.hpp"
#include "math/vector3.hpp"

namespace kova::io::dxf {

/// A growing text of DXF groups: the code in three columns, the value on the next line. Nothing is allocated for a
/// value; the text is one block that grows in place where the system can do that.
class GroupWriter {
public:
    GroupWriter() = default;
    ~GroupWriter() { std::free(begin_); }
    GroupWriter(const GroupWriter&) = delete;
    GroupWriter& operator=(const GroupWriter&) = delete;

    /// A text value: control characters and carets in caret notation, wrong UTF-8 as U+FFFD.
    void text(int code, std::string_view value);
    /// A value of known harmless characters.
    void word(int code, std::string_view value);
    void integer(int code, std::int64_t value);
    void flag(int code, bool value) { word(code, value ? "1" : "0"); }
    /// Shortest form that reads back the same, always with a point or an exponent. Infinite numbers and such that are
    /// none become 0.0 and are counted.
    void real(int code, double value);
    /// Radians, written as degrees.
    void angle(int code, double radians);
    void handle(int code, std::uint64_t value);
    /// Groups code, code + 10 (and code + 20).
    void point(int code, const math::Vector2& p) {
        real(code, p.x);
        real(code + 10, p.y);
    }
    void point(int code, const math::Vector2& p, double z) {
        point(code, p);
        real(code + 20, z);
    }
    void point(int code, const math::Vector3& p) {
        real(code, p.x);
        real(code + 10, p.y);
        real(code + 20, p.z);
    }
    /// Bytes as hexadecimal digits (at most 127 bytes a group).
    void bytes(int code, std::string_view data);

    void record(std::string_view type) { word(0, type); }
    void subclass(std::string_view marker) { word(100, marker); }

    std::string_view view() const { return {begin_, static_cast<std::size_t>(at_ - begin_)}; }
    std::size_t size() const { return static_cast<std::size_t>(at_ - begin_); }
    void append(std::string_view raw);
    std::size_t replacedNumbers() const { return replaced_; }
    /// Cuts the text off behind `size` bytes.
    void truncate(std::size_t size) { at_ = begin_ + size; }
    /// Gives the memory back.
    void clear();

private:
    void room(std::size_t size) {
        if (static_cast<std::size_t>(end_ - at_) < size) grow(size);
    }
    void grow(std::size_t size);
    void code(int code);

    char* begin_ = nullptr;
    char* at_ = nullptr;
    char* end_ = nullptr;
    std::size_t replaced_ = 0;
};

}  // namespace kova::io::dxf
