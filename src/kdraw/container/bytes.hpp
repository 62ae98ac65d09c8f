// Little-endian numbers in byte strings, read within bounds.
#pragma once

#include <cstdint>
#include <cstring>
#include <string>
#include <string_view>

namespace kdraw {

/// The unsigned little-endian number at `at`, which must have sizeof(T) bytes.
template <class T>
T loadLittle(const char* at) {
    T value = 0;
    for (std::size_t i = 0; i < sizeof(T); ++i)
        value |= static_cast<T>(static_cast<T>(static_cast<unsigned char>(at[i])) << (8 * i));
    return value;
}

template <class T>
void storeLittle(char* at, T value) {
    for (std::size_t i = 0; i < sizeof(T); ++i) at[i] = static_cast<char>(static_cast<std::uint64_t>(value) >> (8 * i));
}

template <class T>
void appendLittle(std::string& out, T value) {
    char bytes[sizeof(T)];
    storeLittle(bytes, value);
    out.append(bytes, sizeof(T));
}

inline void appendU16(std::string& out, std::uint16_t value) { appendLittle(out, value); }
inline void appendU32(std::string& out, std::uint32_t value) { appendLittle(out, value); }
inline void appendU64(std::string& out, std::uint64_t value) { appendLittle(out, value); }

constexpr std::uint64_t roundUp(std::uint64_t value, std::uint64_t multiple) {
    return (value + multiple - 1) / multiple * multiple;
}

/// True when [offset, offset + size) lies within `bytes`, whatever the two numbers are.
constexpr bool holds(std::string_view bytes, std::uint64_t offset, std::uint64_t size) {
    return offset <= bytes.size() && size <= bytes.size() - offset;
}

/// A cursor over bytes. Reading past the end gives zeros and makes `ok` false for good.
class ByteReader {
public:
    explicit ByteReader(std::string_view bytes) : m_bytes(bytes) {}

    bool ok() const { return m_ok; }
    bool atEnd() const { return m_at >= m_bytes.size(); }
    std::size_t position() const { return m_at; }
    std::size_t remaining() const { return m_bytes.size() - m_at; }

    std::uint8_t u8() { return number<std::uint8_t>(); }
    std::uint16_t u16() { return number<std::uint16_t>(); }
    std::uint32_t u32() { return number<std::uint32_t>(); }
    std::uint64_t u64() { return number<std::uint64_t>(); }
    std::int32_t i32() { return static_cast<std::int32_t>(u32()); }
    std::int64_t i64() { return static_cast<std::int64_t>(u64()); }

    std::string_view bytes(std::uint64_t count) {
        if (count > remaining()) {
            fail();
            return {};
        }
        const std::string_view result = m_bytes.substr(m_at, count);
        m_at += count;
        return result;
    }

    void skip(std::uint64_t count) { bytes(count); }

private:
    template <class T>
    T number() {
        if (remaining() < sizeof(T)) {
            fail();
            return 0;
        }
        const T value = loadLittle<T>(m_bytes.data() + m_at);
        m_at += sizeof(T);
        return value;
    }

    void fail() {
        m_ok = false;
        m_at = m_bytes.size();
    }

    std::string_view m_bytes;
    std::size_t m_at = 0;
    bool m_ok = true;
};

}  // namespace kdraw
