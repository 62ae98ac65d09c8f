#include "kdraw/fields/bit_fields.hpp"

#include <algorithm>

namespace kdraw {

namespace {

const Vector3 kUp{0.0, 0.0, 1.0};

bool isUp(const Vector3& v) { return v.x == 0.0 && v.y == 0.0 && v.z == 1.0; }

}  // namespace

Color Color::fromIndex(int index) {
    Color color;
    color.raw = index == 256 ? kByLayer : index == 0 ? kByBlock : kIndexed | static_cast<std::uint32_t>(index & 0xFF);
    return color;
}

int Color::index() const {
    switch (raw & 0xFF000000) {
        case kByLayer: return 256;
        case kByBlock: return 0;
        case kIndexed: return static_cast<int>(raw & 0xFF);
        default: return 7;
    }
}

void BitDecoder::partStreams(std::string_view file, std::size_t begin, std::size_t handleStart, std::size_t end) {
    handlesPart = BitReader(file, handleStart, end);
    std::size_t dataEnd = handleStart;
    strings = BitReader();
    if (since(Version::R2007) && handleStart > begin) {
        dataEnd = handleStart - 1;
        BitReader look(file, dataEnd, handleStart);
        if (look.b() && dataEnd >= begin + 16) {
            std::size_t at = dataEnd - 16;
            look = BitReader(file, at, dataEnd);
            std::size_t size = look.rs();
            if ((size & 0x8000) != 0 && at >= begin + 16) {
                at -= 16;
                look = BitReader(file, at, at + 16);
                size = (size & 0x7FFF) | static_cast<std::size_t>(look.rs()) << 15;
            }
            if (size > at - begin) {
                fail();
                size = 0;
            }
            strings = BitReader(file, at - size, at);
            dataEnd = at - size;
        }
    }
    data = BitReader(file, begin, dataEnd);
}

void BitDecoder::whole(Width width, int, std::int64_t& v) {
    switch (width) {
        case Width::B: v = data.b() ? 1 : 0; break;
        case Width::BB: v = data.bb(); break;
        case Width::RC: v = data.rc(); break;
        case Width::RS: v = static_cast<std::int16_t>(data.rs()); break;
        case Width::RL: v = static_cast<std::int32_t>(data.rl()); break;
        case Width::BS: v = data.bs(); break;
        case Width::BL: v = data.bl(); break;
        case Width::BLL: v = static_cast<std::int64_t>(data.bll()); break;
    }
    if (data.failed()) fail();
}

void BitDecoder::extrusion(int, Vector3& v) {
    v = kUp;
    if (!data.b()) v.x = data.bd(), v.y = data.bd(), v.z = data.bd();
}

void BitDecoder::text(int, std::string& v) {
    if (before(Version::R2007)) {
        const std::size_t size = static_cast<std::uint16_t>(data.bs());
        std::string raw;
        bytes(0, raw, size);
        v = codec_.toUtf8(raw);
        return;
    }
    const std::size_t size = static_cast<std::uint16_t>(strings.bs());
    if (size * 16 > strings.left()) {
        fail();
        v.clear();
        return;
    }
    std::string raw(size * 2, '\0');
    bool ascii = true;
    for (std::size_t i = 0; i < size; ++i) {
        const std::uint16_t unit = strings.rs();
        raw[2 * i] = static_cast<char>(unit & 0xFF);
        raw[2 * i + 1] = static_cast<char>(unit >> 8);
        ascii = ascii && unit < 0x80 && unit != 0;
    }
    if (!ascii) {
        v = utf8OfUtf16(raw);
        return;
    }
    v.resize(size);
    for (std::size_t i = 0; i < size; ++i) v[i] = raw[2 * i];
}

void BitDecoder::bytes(int, std::string& v, std::size_t size) {
    v.clear();
    if (size * 8 > data.left()) {
        fail();
        return;
    }
    v.resize(size);
    for (char& c : v) c = static_cast<char>(data.rc());
}

void BitDecoder::color(int, int, Color& v) {
    if (before(Version::R2004)) {
        v = Color::fromIndex(data.bs());
        return;
    }
    longColor(0, v);
}

void BitDecoder::longColor(int, Color& v) {
    data.bs();
    v.raw = static_cast<std::uint32_t>(data.bl());
    const unsigned flags = data.rc();
    v.name.clear();
    v.book.clear();
    if ((flags & 1) != 0) text(0, v.name);
    if ((flags & 2) != 0) text(0, v.book);
}

std::size_t BitDecoder::count(Width width, int code, std::size_t, unsigned bits) {
    std::int64_t n = 0;
    whole(width, code, n);
    if (width == Width::BS || width == Width::RS) n &= 0xFFFF;
    const std::size_t left = std::max({data.left(), strings.left(), handlesPart.left()});
    if (n < 0 || static_cast<std::uint64_t>(n) > left / std::max(bits, 1U)) {
        fail();
        return 0;
    }
    return static_cast<std::size_t>(n);
}

void BitEncoder::clear() {
    data.clear();
    strings.clear();
    handlesPart.clear();
    hasStrings = false;
}

void BitEncoder::joinStrings() {
    if (!hasStrings) {
        data.b(false);
        return;
    }
    const std::size_t size = strings.size();
    data.append(strings);
    if (size >= 0x8000) {
        data.rs(static_cast<std::uint16_t>(size >> 15));
        data.rs(static_cast<std::uint16_t>((size & 0x7FFF) | 0x8000));
    } else {
        data.rs(static_cast<std::uint16_t>(size));
    }
    data.b(true);
}

void BitEncoder::whole(Width width, int, std::int64_t& v) {
    switch (width) {
        case Width::B: data.b(v != 0); break;
        case Width::BB: data.bb(static_cast<unsigned>(v & 3)); break;
        case Width::RC: data.rc(static_cast<unsigned>(v & 0xFF)); break;
        case Width::RS: data.rs(static_cast<std::uint16_t>(v)); break;
        case Width::RL: data.rl(static_cast<std::uint32_t>(v)); break;
        case Width::BS: data.bs(static_cast<std::int16_t>(v)); break;
        case Width::BL: data.bl(static_cast<std::int32_t>(v)); break;
        case Width::BLL: data.bll(static_cast<std::uint64_t>(v)); break;
    }
}

void BitEncoder::thickness(int, double& v) {
    data.b(v == 0.0);
    if (v != 0.0) data.bd(v);
}

void BitEncoder::extrusion(int, Vector3& v) {
    data.b(isUp(v));
    if (!isUp(v)) data.bd(v.x), data.bd(v.y), data.bd(v.z);
}

void BitEncoder::text(int, std::string& v) {
    hasStrings = true;
    // The count has 16 bits: what is longer is cut off at a whole character.
    std::u16string units = utf16OfUtf8(v);
    if (units.size() > 0xFFFF) {
        units.resize(0xFFFF);
        if (units.back() >= 0xD800 && units.back() < 0xDC00) units.pop_back();
    }
    strings.bs(static_cast<std::int16_t>(units.size()));
    for (const char16_t unit : units) strings.rs(unit);
}

void BitEncoder::bytes(int, std::string& v, std::size_t) { data.bytes(v); }

void BitEncoder::longColor(int, Color& v) {
    data.bs(0);
    data.bl(static_cast<std::int32_t>(v.raw));
    const unsigned flags = (v.name.empty() ? 0U : 1U) | (v.book.empty() ? 0U : 2U);
    data.rc(flags);
    if (!v.name.empty()) text(0, v.name);
    if (!v.book.empty()) text(0, v.book);
}

std::size_t BitEncoder::count(Width width, int code, std::size_t current, unsigned) {
    auto wide = static_cast<std::int64_t>(current);
    whole(width, code, wide);
    return current;
}

}  // namespace kdraw
