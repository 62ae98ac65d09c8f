#pragma once

#include <cstdint>
#include <memory>
#include <string_view>
#include <utility>

#include "kdraw/fields/bit_writer.hpp"
#include "kdraw/database/database.hpp"
#include "kdraw/database/decoder.hpp"
#include "kdraw/database/completion.hpp"
#include "kdraw/objects/block_header.hpp"
#include "kdraw/database/record_codec.hpp"

namespace kdraw::fuzz {

/// Fills an empty database from any bytes. What begins as a DWG file is decoded as one, false when that fails. Anything
/// else is a version and a row of records, free of containers, packing and checksums, which are put into the model
/// space of a new drawing: a byte for the version, then for each record the type, the handle, the bits up to its
/// handles, all bits (16 bits each, little-endian) and the bits behind its own handle.
inline bool databaseOf(std::string_view bytes, Database& database) {
    if (bytes.starts_with("AC1")) return decode(bytes, database).empty();
    if (bytes.empty()) return false;
    completeGraph(database);
    constexpr std::pair<int, Version> kVersions[] = {{0, Version::R2000}, {1, Version::R2004}, {2, Version::R2007},
                                                     {3, Version::R2010}, {4, Version::R2013}, {5, Version::R2018}};
    database.version = kVersions[static_cast<unsigned char>(bytes[0]) % 6].second;
    bytes.remove_prefix(1);
    database.classes.clear();
    for (const auto list : {entityKinds(), objectKinds()})
        for (const ObjectKind& kind : list)
            if (kind.type == 0)
                database.classes.push_back(
                    classOf(kind, static_cast<std::uint16_t>(ClassRecord::kFirst + database.classes.size())));
    const TextCodec codec(database.codePage);
    const RecordDecoder decoder(database, codec);
    auto* space = dynamic_cast<BlockHeader*>(database.find(database.recordNamed(Table::Block, "*Model_Space")));
    const auto word = [&](std::size_t at) {
        return static_cast<std::uint16_t>(static_cast<unsigned char>(bytes[at]) |
                                          static_cast<unsigned char>(bytes[at + 1]) << 8);
    };
    while (bytes.size() >= 8) {
        const std::uint16_t type = word(0), handle = word(2), dataBits = word(4), allBits = word(6);
        bytes.remove_prefix(8);
        const std::string_view body = bytes.substr(0, (allBits + 7U) / 8);
        bytes.remove_prefix(body.size());
        const bool modern = database.version >= Version::R2010;
        BitWriter head, own;
        modern ? head.ot(type) : head.bs(static_cast<std::int16_t>(type));
        own.handle(0, handle);
        std::size_t handleStart = head.size() + (modern ? 0 : 32) + own.size() + dataBits;
        if (!modern) head.rl(static_cast<std::uint32_t>(handleStart));
        head.append(own);
        head.bytes(body);
        head.align();
        handleStart = std::min(handleStart, head.size());
        BitWriter record;
        record.ms(head.size() / 8);
        if (modern) record.umc(head.size() - handleStart);
        record.append(head);
        RecordDecoder::Result result = decoder.decode(record.view(), 0, handle);
        if (!result.object || handle == 0 || database.find(handle) != nullptr) continue;
        Object& object = database.add(std::move(result.object), handle);
        if (object.isEntity() && space != nullptr) {
            object.owner = space->handle;
            space->owned.push_back(object.handle);
        }
    }
    return true;
}

}  // namespace kdraw::fuzz
