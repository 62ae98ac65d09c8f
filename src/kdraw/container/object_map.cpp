#include "kdraw/container/object_map.hpp"

#include <algorithm>

#include "kdraw/container/bytes.hpp"
#include "kdraw/container/checksums.hpp"

namespace kdraw {

namespace {

constexpr std::size_t maxReadChunk = 0x1000;
constexpr std::size_t maxWrittenChunk = 2034;
constexpr std::size_t longestNumber = 10;  // bytes of a modular number of 64 bits

std::size_t bigEndian16(std::string_view bytes, std::size_t at) {
    return static_cast<std::size_t>(static_cast<unsigned char>(bytes[at])) << 8 |
           static_cast<unsigned char>(bytes[at + 1]);
}

/// Reads a modular number: seven bits a byte, the lowest first. Of a signed one the last byte holds the sign and six
/// bits. False when the bytes end before the number does.
bool readModular(std::string_view bytes, std::size_t& at, bool isSigned, std::uint64_t& value) {
    value = 0;
    for (unsigned i = 0; i < longestNumber && at < bytes.size(); ++i) {
        const auto byte = static_cast<unsigned char>(bytes[at++]);
        const bool last = (byte & 0x80) == 0;
        value |= static_cast<std::uint64_t>(byte & (last && isSigned ? 0x3F : 0x7F)) << (7 * i);
        if (!last) continue;
        if (isSigned && (byte & 0x40)) value = ~value + 1;
        return true;
    }
    return false;
}

void appendModular(std::string& out, std::uint64_t value) {
    for (; value >= 0x80; value >>= 7) out += static_cast<char>((value & 0x7F) | 0x80);
    out += static_cast<char>(value);
}

void appendSignedModular(std::string& out, std::int64_t value) {
    std::uint64_t rest = value < 0 ? ~static_cast<std::uint64_t>(value) + 1 : static_cast<std::uint64_t>(value);
    for (; rest >= 0x40; rest >>= 7) out += static_cast<char>((rest & 0x7F) | 0x80);
    out += static_cast<char>(rest | (value < 0 ? 0x40 : 0));
}

/// Sets the size at the start of the chunk that begins at `start` and adds its CRC.
void closeChunk(std::string& out, std::size_t start) {
    const std::size_t size = out.size() - start;
    out[start] = static_cast<char>(size >> 8);
    out[start + 1] = static_cast<char>(size);
    const std::uint16_t crc = crc16(crcSeed, std::string_view(out).substr(start));
    out += static_cast<char>(crc >> 8);
    out += static_cast<char>(crc);
}

}  // namespace

std::vector<ObjectMapEntry> readObjectMap(std::string_view bytes, std::vector<std::string>& notes) {
    std::vector<ObjectMapEntry> entries;
    entries.reserve(bytes.size() / 4);
    std::size_t wrongSums = 0;
    bool ascending = true;
    std::size_t at = 0;
    for (;;) {
        if (!holds(bytes, at, 2)) {
            notes.emplace_back("the object map has no end mark");
            break;
        }
        const std::size_t size = bigEndian16(bytes, at);
        if (size < 2 || size > maxReadChunk || !holds(bytes, at, size)) {
            notes.emplace_back("the object map is damaged");
            break;
        }
        const std::string_view chunk = bytes.substr(at, size);
        at += size;
        if (holds(bytes, at, 2)) {
            if (crc16(crcSeed, chunk) != bigEndian16(bytes, at)) ++wrongSums;
            at += 2;
        } else {
            ++wrongSums;
        }
        if (size == 2) break;
        ObjectMapEntry entry;
        for (std::size_t in = 2; in < chunk.size();) {
            std::uint64_t handle = 0;
            std::uint64_t offset = 0;
            if (!readModular(chunk, in, false, handle) || !readModular(chunk, in, true, offset)) {
                notes.emplace_back("a page of the object map is damaged");
                break;
            }
            entry.handle += handle;
            entry.offset += offset;
            ascending = ascending && (entries.empty() || entries.back().handle < entry.handle);
            entries.push_back(entry);
        }
    }
    if (wrongSums > 0) notes.push_back("wrong CRC in " + std::to_string(wrongSums) + " pages of the object map");
    if (!ascending) {
        notes.emplace_back("the handles of the object map do not ascend");
        std::stable_sort(entries.begin(), entries.end(),
                         [](const ObjectMapEntry& a, const ObjectMapEntry& b) { return a.handle < b.handle; });
        const auto sameHandle = [](const ObjectMapEntry& a, const ObjectMapEntry& b) { return a.handle == b.handle; };
        entries.erase(std::unique(entries.begin(), entries.end(), sameHandle), entries.end());
    }
    return entries;
}

std::string writeObjectMap(std::span<const ObjectMapEntry> entries) {
    std::string out;
    out.reserve(entries.size() * 3 + 16);
    std::string pair;
    std::size_t start = 0;
    out.append(2, '\0');
    ObjectMapEntry last;
    for (const ObjectMapEntry& entry : entries) {
        for (;;) {
            pair.clear();
            appendModular(pair, entry.handle - last.handle);
            appendSignedModular(pair, static_cast<std::int64_t>(entry.offset - last.offset));
            if (out.size() - start + pair.size() <= maxWrittenChunk) break;
            closeChunk(out, start);
            start = out.size();
            out.append(2, '\0');
            last = {};
        }
        out += pair;
        last = entry;
    }
    if (out.size() - start > 2) {
        closeChunk(out, start);
        start = out.size();
        out.append(2, '\0');
    }
    closeChunk(out, start);
    return out;
}

}  // namespace kdraw
