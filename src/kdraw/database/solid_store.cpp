#include "kdraw/database/solid_store.hpp"

#include <algorithm>


namespace kdraw {

namespace {

constexpr std::uint32_t kSignature = 0x6472616A;
constexpr std::uint16_t kSegmentMark = 0xD5AC;
constexpr std::size_t kFileHead = 0x80, kSegmentHead = 48, kSegmentUnit = 0x80;
constexpr std::uint32_t kBlobMark = 0xBB106BB1;

std::uint64_t little(std::string_view bytes, std::uint64_t at, unsigned n) {
    if (at > bytes.size() || bytes.size() - at < n) return 0;
    std::uint64_t v = 0;
    for (unsigned i = 0; i < n; ++i)
        v |= static_cast<std::uint64_t>(static_cast<unsigned char>(bytes[static_cast<std::size_t>(at) + i])) << (8 * i);
    return v;
}
std::uint32_t word(std::string_view bytes, std::uint64_t at) { return static_cast<std::uint32_t>(little(bytes, at, 4)); }

void put(std::string& out, std::uint64_t v, unsigned n) {
    for (unsigned i = 0; i < n; ++i) out += i < 8 ? static_cast<char>(v >> (8 * i)) : '\0';
}

/// Places and sizes of the segments by their number.
struct Segment {
    std::uint64_t offset = 0;
    std::uint64_t size = 0;
};

/// The data of one entity in pieces of their own. `room` is what may still be looked at, of all entities together.
std::string blobData(std::string_view section, std::uint64_t at, const std::vector<Segment>& segments,
                     std::uint64_t& room) {
    const std::uint64_t total = little(section, at + 4, 8);
    const std::uint64_t pages = word(section, at + 12);
    std::string data;
    if (total > section.size() || pages > segments.size()) return data;
    for (std::uint64_t i = 0; i < pages; ++i) {
        const std::uint32_t number = word(section, at + 32 + i * 8);
        if (number >= segments.size()) return {};
        const std::uint64_t page = segments[number].offset + kSegmentHead;
        const std::uint64_t size = little(section, page + 24, 8);
        if (page > section.size() || section.size() - page < 32 || size > section.size() - page - 32) return {};
        const std::uint64_t cost = size + 8;  // a piece has a place in a list, too
        if (cost > room) return {};
        room -= cost;
        data += section.substr(static_cast<std::size_t>(page + 32), static_cast<std::size_t>(size));
        if (data.size() > total) return {};
    }
    return data;
}

}  // namespace

std::unordered_map<Handle, std::string> readSolidStore(std::string_view section, std::vector<std::string>& notes) {
    std::unordered_map<Handle, std::string> solids;
    if (section.size() < kFileHead || word(section, 0) != kSignature) {
        if (!section.empty()) notes.push_back("the section of solids is damaged");
        return solids;
    }
    const std::uint64_t index = word(section, 0x18);
    const std::uint64_t count = word(section, 0x20);
    const std::uint32_t dataIndex = word(section, 0x28);
    if (index > section.size() || count > section.size() / 12) return solids;
    std::vector<Segment> segments(static_cast<std::size_t>(count));
    for (std::size_t i = 0; i < segments.size(); ++i)
        segments[i] = {little(section, index + kSegmentHead + i * 12, 8), word(section, index + kSegmentHead + i * 12 + 8)};
    if (dataIndex >= segments.size()) return solids;

    const std::uint64_t list = segments[dataIndex].offset + kSegmentHead;
    if (list > section.size()) return solids;
    const std::uint64_t entries = std::min<std::uint64_t>(word(section, list), section.size() / 12);
    // Every byte belongs to one entity: overlapping entries cannot make more of them than there are.
    std::uint64_t room = section.size();
    for (std::uint64_t i = 0; i < entries; ++i) {
        const std::uint64_t at = list + 8 + i * 12;
        const std::uint32_t number = word(section, at);
        if (number == 0 || number >= segments.size()) continue;
        const std::uint64_t segment = segments[number].offset;
        if (segment > section.size() || section.size() - segment < kSegmentHead) continue;
        const std::uint64_t record = segment + kSegmentHead + word(section, at + 4);
        if (record > section.size() || section.size() - record < 20) continue;
        const Handle handle = little(section, record + 8, 8);
        const std::uint64_t data = segment + 16ULL * word(section, segment + 0x24) + word(section, record + 16);
        if (data > section.size() || section.size() - data < 4) continue;
        const std::uint32_t length = word(section, data);
        std::string bytes;
        if (length == kBlobMark) {
            bytes = blobData(section, data, segments, room);
        } else if (length <= section.size() - data - 4 && length <= room) {
            bytes = section.substr(static_cast<std::size_t>(data) + 4, length);
            room -= length;
        }
        if (handle != 0 && (bytes.starts_with("ACIS BinaryFile") || bytes.starts_with("ASM BinaryFile")))
            solids[handle] = std::move(bytes);
    }
    return solids;
}

std::string writeSolidStore(const std::unordered_map<Handle, std::string>& solids) {
    std::vector<Handle> handles;
    for (const auto& [handle, bytes] : solids) handles.push_back(handle);
    std::sort(handles.begin(), handles.end());

    std::string out(kFileHead, '\0');
    std::vector<Segment> segments(1);
    const auto begin = [&](std::string_view name) {
        segments.push_back({out.size(), 0});
        put(out, kSegmentMark, 2);
        std::string padded(name);
        padded.resize(6, '\0');
        out += padded;
        put(out, segments.size() - 1, 4);
        put(out, 0, 4);   // no blob
        put(out, 0, 4);   // size, set at the end
        put(out, 0, 4);
        put(out, 1, 4);   // revision
        put(out, 0, 12);  // offsets of system and object data
        out.append(8, '\x55');
    };
    const auto set = [&](std::uint64_t at, std::uint64_t v) {
        for (unsigned i = 0; i < 4; ++i) out[static_cast<std::size_t>(at) + i] = static_cast<char>(v >> (8 * i));
    };
    const auto end = [&] {
        Segment& segment = segments.back();
        while ((out.size() - segment.offset) % kSegmentUnit != 0) out += '\x70';
        segment.size = out.size() - segment.offset;
        set(segment.offset + 16, segment.size);
    };

    // Segments are small in files: each entity gets one of its own.
    std::vector<std::uint32_t> dataSegments;
    for (const Handle handle : handles) {
        begin("_data_");
        dataSegments.push_back(static_cast<std::uint32_t>(segments.size() - 1));
        const std::uint64_t start = segments.back().offset;
        put(out, 20, 4);
        put(out, 1, 4);
        put(out, handle, 8);
        put(out, 0, 4);
        while ((out.size() - start) % 16 != 0) out += '\x70';
        set(start + 0x24, (out.size() - start) / 16);
        const std::string& bytes = solids.at(handle);
        put(out, bytes.size(), 4);
        out += bytes;
        end();
    }
    begin("datidx");
    const std::size_t dataIndex = segments.size() - 1;
    put(out, dataSegments.size(), 4);
    put(out, 0, 4);
    for (const std::uint32_t number : dataSegments) {
        put(out, number, 4);
        put(out, 0, 4);
        put(out, 0, 4);  // the only schema
    }
    end();
    begin("schidx");
    const std::size_t schemaIndex = segments.size() - 1;
    put(out, 0, 4);  // no properties of schemas
    put(out, 0, 4);
    put(out, 0, 8);
    put(out, 1, 4);
    out += "AcDb3DSolid_ASM_Data";
    out += '\0';
    end();
    begin("segidx");
    const std::uint64_t index = segments.back().offset;
    const std::size_t count = segments.size();
    // The index tells its own size, too.
    const std::size_t own = kSegmentHead + count * 12;
    segments.back().size = (own + kSegmentUnit - 1) / kSegmentUnit * kSegmentUnit;
    for (const Segment& segment : segments) {
        put(out, segment.offset, 8);
        put(out, segment.size, 4);
    }
    end();

    set(0x00, kSignature);
    set(0x04, kFileHead | 1 << 16);
    set(0x08, 8);
    set(0x0C, 2);
    set(0x14, 1);
    set(0x18, index);
    set(0x20, count);
    set(0x24, schemaIndex);
    set(0x28, dataIndex);
    set(0x34, out.size());
    return out;
}

}  // namespace kdraw
