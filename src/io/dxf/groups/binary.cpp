// Binary DXF: the same groups with their values in machine form.
#include <bit>
#include <charconv>
#include <cstring>

#include "io/content.hpp"
#include "io/dxf/groups/lexer.hpp"

namespace kova::io::dxf {

namespace {

constexpr std::size_t kMarkSize = 22;

enum class Form : std::uint8_t { Text, Real, Int16, Int32, Int64, Boolean, Bytes };

Form formOf(int code) {
    if (code < 10) return Form::Text;
    if (code < 60) return Form::Real;
    if (code < 80) return Form::Int16;
    if (code < 90) return Form::Text;
    if (code < 100) return Form::Int32;
    if (code < 110) return Form::Text;
    if (code < 150) return Form::Real;
    if (code < 160) return Form::Text;
    if (code < 170) return Form::Int64;
    if (code < 180) return Form::Int16;
    if (code < 210) return Form::Text;
    if (code < 240) return Form::Real;
    if (code < 270) return Form::Text;
    if (code < 290) return Form::Int16;
    if (code < 300) return Form::Boolean;
    if (code < 310) return Form::Text;
    if (code < 320) return Form::Bytes;
    if (code < 370) return Form::Text;
    if (code < 390) return Form::Int16;
    if (code < 400) return Form::Text;
    if (code < 410) return Form::Int16;
    if (code < 420) return Form::Text;
    if (code < 430) return Form::Int32;
    if (code < 440) return Form::Text;
    if (code < 460) return Form::Int32;
    if (code < 470) return Form::Real;
    if (code < 1000) return Form::Text;
    if (code == 1004) return Form::Bytes;
    if (code < 1010) return Form::Text;
    if (code < 1060) return Form::Real;
    if (code <= 1070) return Form::Int16;
    if (code == 1071) return Form::Int32;
    return Form::Text;
}

class Converter {
public:
    Converter(std::string_view bytes, std::string& text) : in_(bytes), out_(text) {}

    std::string run() {
        at_ = kMarkSize;
        // Releases before 13 have codes of one byte; every file begins with group 0, "SECTION".
        wide_ = in_.size() > at_ + 1 && in_[at_] == 0 && in_[at_ + 1] == 0;
        while (at_ < in_.size()) {
            int code = 0;
            if (!readCode(code)) return cutOff();
            const std::size_t before = out_.size();
            append(code);
            out_ += '\n';
            if (!value(code)) {
                out_.resize(before);
                return cutOff();
            }
            out_ += '\n';
            if (code == 0 && std::string_view(out_).substr(before) == "0\nEOF\n") break;
        }
        return {};
    }

private:
    std::string cutOff() const { return "the file ends at byte " + std::to_string(in_.size()) + " within a group"; }

    template <class T>
    bool take(T& v) {
        if (in_.size() - at_ < sizeof v) return false;
        std::memcpy(&v, in_.data() + at_, sizeof v);
        at_ += sizeof v;
        return true;
    }
    bool readCode(int& code) {
        std::uint16_t two = 0;
        if (wide_) {
            if (!take(two)) return false;
            code = two;
            return true;
        }
        std::uint8_t one = 0;
        if (!take(one)) return false;
        code = one;
        if (one != 255) return true;
        if (!take(two)) return false;
        code = two;
        return true;
    }
    template <class T>
    void append(T v) {
        char buffer[32];
        out_.append(buffer, std::to_chars(buffer, buffer + sizeof buffer, v).ptr);
    }
    template <class T>
    bool number() {
        T v{};
        if (!take(v)) return false;
        append(v);
        return true;
    }
    bool value(int code) {
        static_assert(std::endian::native == std::endian::little, "binary DXF is little-endian");
        switch (formOf(code)) {
            case Form::Real:
                return number<double>();
            case Form::Int16:
                return number<std::int16_t>();
            case Form::Int32:
                return number<std::int32_t>();
            case Form::Int64:
                return number<std::int64_t>();
            case Form::Boolean:
                return number<std::uint8_t>();
            case Form::Bytes: {
                std::uint8_t count = 0;
                if (!take(count) || in_.size() - at_ < count) return false;
                constexpr char kDigits[] = "0123456789ABCDEF";
                for (std::size_t i = 0; i < count; ++i) {
                    const auto byte = static_cast<std::uint8_t>(in_[at_ + i]);
                    out_ += kDigits[byte >> 4];
                    out_ += kDigits[byte & 15];
                }
                at_ += count;
                return true;
            }
            case Form::Text:
                break;
        }
        const std::size_t end = in_.find('\0', at_);
        if (end == in_.npos) return false;
        for (const char c : in_.substr(at_, end - at_)) {
            if (c == '\n')
                out_ += "^J";
            else if (c == '\r')
                out_ += "^M";
            else
                out_ += c;
        }
        at_ = end + 1;
        return true;
    }

    std::string_view in_;
    std::string& out_;
    std::size_t at_ = 0;
    bool wide_ = true;
};

}  // namespace

bool isBinaryDxf(std::string_view bytes) { return bytes.size() >= kMarkSize && bytes.starts_with(kBinaryDxfMark); }

std::string binaryToText(std::string_view bytes, std::string& text) {
    text.clear();
    if (!isBinaryDxf(bytes)) return "no binary DXF";
    text.reserve(bytes.size() + bytes.size() / 2);
    return Converter(bytes, text).run();
}

}  // namespace kova::io::dxf
