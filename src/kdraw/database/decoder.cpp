#include "kdraw/database/decoder.hpp"

#include <algorithm>

#include "kdraw/fields/bit_fields.hpp"
#include "kdraw/container/container.hpp"
#include "kdraw/container/object_map.hpp"
#include "kdraw/container/section_frame.hpp"
#include "kdraw/container/small_sections.hpp"
#include "kdraw/database/database.hpp"
#include "kdraw/entities/inserts.hpp"
#include "kdraw/database/completion.hpp"
#include "kdraw/objects/block_header.hpp"
#include "kdraw/objects/control.hpp"
#include "kdraw/objects/table_record.hpp"
#include "kdraw/database/record_codec.hpp"
#include "kdraw/database/solid_store.hpp"

namespace kdraw {

namespace {

/// A million objects are asked: the type is looked at first.
BlockHeader* blockHeader(Object& object) {
    return object.type == 0x31 ? dynamic_cast<BlockHeader*>(&object) : nullptr;
}

/// The readers of a framed section's body: one stream before R2007, parted ones from then on.
void openBody(BitDecoder& f, std::string_view body) {
    if (f.before(Version::R2007)) {
        f.data = BitReader(body);
        f.inlineHandles = true;
        return;
    }
    BitReader head(body);
    const std::uint32_t bits = head.rl();
    const std::size_t end = body.size() * 8;
    f.partStreams(body, 0, std::min<std::size_t>(bits, end), end);
    f.data.seek(32);
}

void decodeHeader(const Container& container, const TextCodec& codec, Database& database) {
    const Section* section = container.find(section::header);
    std::string_view body;
    if (section == nullptr || !readFrame(FramedSection::Header, database.version, container.maintenance, section->bytes,
                                         body, database.notes)
                                   .empty()) {
        database.notes.push_back("the header variables cannot be read");
        return;
    }
    BitDecoder f(database.version, codec);
    openBody(f, body);
    HeaderVariables header;
    header.describe(f);
    if (f.damaged()) {
        database.notes.push_back("the header variables are damaged");
        // Handles come in front of what newer versions added: they are of use in any case.
        header.dim = {};
    }
    header.measurement = container.facts.metric ? 1 : 0;
    database.header = std::move(header);
}

void decodeClasses(const Container& container, const TextCodec& codec, Database& database) {
    const Section* section = container.find(section::classes);
    std::string_view body;
    if (section == nullptr || !readFrame(FramedSection::Classes, database.version, container.maintenance,
                                         section->bytes, body, database.notes)
                                   .empty()) {
        database.notes.push_back("the classes cannot be read");
        return;
    }
    BitDecoder f(database.version, codec);
    openBody(f, body);
    if (f.before(Version::R2004)) {
        while (f.data.left() >= 8 && readOldClass(f, database.classes)) {
        }
        return;
    }
    describeClasses(f, database.classes);
    if (f.damaged()) database.notes.push_back("the classes are damaged");
}

void decodeObjects(const Container& container, const TextCodec& codec, Database& database) {
    const Section* map = container.find(section::handles);
    const Section* objects = container.find(section::objects);
    if (map == nullptr || objects == nullptr) return;
    const std::vector<ObjectMapEntry> entries = readObjectMap(map->bytes, database.notes);
    const RecordDecoder decoder(database, codec);
    database.objects.reserve(entries.size());
    std::size_t wrong = 0;
    // A record that many entries share, or that is read over and over in pieces, must not cost more than its file.
    std::uint64_t work = 0;
    const std::uint64_t limit = 16 * static_cast<std::uint64_t>(objects->bytes.size()) + (1 << 20);
    for (const ObjectMapEntry& entry : entries) {
        RecordDecoder::Result result;
        if (entry.offset >= objects->base && work < limit)
            result = decoder.decode(objects->bytes, entry.offset - objects->base, entry.handle);
        work += result.size;
        if (result.wrongChecksum) ++wrong;
        if (!result.object) {
            database.skipped.push_back({entry.handle, result.type, result.entity});
            continue;
        }
        if (result.uneven) database.uneven.push_back({entry.handle, result.type, result.entity});
        database.add(std::move(result.object), entry.handle);
    }
    if (wrong > 0) database.notes.push_back("wrong checksums of " + std::to_string(wrong) + " object(s)");
}

/// Before R2004 nobody lists what he owns: blocks have a chain, sequences name their owner.
void linkOwners(Database& database) {
    const auto* control = database.as<BlockControl>(database.header.blockControl);
    const Handle spaces[3] = {0, control == nullptr ? database.header.paperSpace : control->paperSpace,
                              control == nullptr ? database.header.modelSpace : control->modelSpace};
    for (const auto& object : database.objects) {
        if (!object->isEntity()) continue;
        auto& entity = static_cast<Entity&>(*object);
        if (entity.mode == 1 || entity.mode == 2) entity.owner = spaces[entity.mode];
    }
    if (database.version >= Version::R2004) return;
    constexpr std::uint16_t kBlock = 4, kEndBlock = 5, kSeqEnd = 6;
    // What owns a sequence names its ends only.
    for (const auto& object : database.objects)
        if (object->isEntity())
            if (auto* owned = static_cast<Entity&>(*object).owned()) owned->clear();
    for (const auto& object : database.objects) {
        if (!object->isEntity()) continue;
        auto* entity = static_cast<Entity*>(object.get());
        Object* owner = database.find(entity->owner);
        if (owner == nullptr || entity->type == kBlock || entity->type == kEndBlock) continue;
        if (auto* block = blockHeader(*owner)) {
            block->owned.push_back(entity->handle);
        } else if (owner->isEntity()) {
            auto* parent = static_cast<Entity*>(owner);
            if (entity->type == kSeqEnd) {
                if (parent->seqEnd() != nullptr) *parent->seqEnd() = entity->handle;
            } else if (parent->owned() != nullptr) {
                parent->owned()->push_back(entity->handle);
            }
        }
    }
    // The chain gives the drawing order where it is whole.
    for (const auto& object : database.objects) {
        auto* block = blockHeader(*object);
        if (block == nullptr || block->firstEntity == 0) continue;
        std::vector<Handle> chain;
        Handle at = block->firstEntity;
        while (at != 0 && chain.size() < block->owned.size()) {
            const auto* entity = database.as<Entity>(at);
            if (entity == nullptr || entity->owner != block->handle) break;
            chain.push_back(at);
            if (at == block->lastEntity) break;
            at = entity->next;
        }
        if (chain.size() == block->owned.size()) block->owned = std::move(chain);
    }
}

/// Blocks carry their full names in their BLOCK entities.
void nameRecords(Database& database) {
    constexpr std::pair<std::uint16_t, Table> kRecords[] = {
        {0x31, Table::Block}, {0x33, Table::Layer}, {0x35, Table::Style},    {0x39, Table::Linetype}, {0x3D, Table::View},
        {0x3F, Table::Ucs},   {0x41, Table::Viewport}, {0x43, Table::AppId}, {0x45, Table::DimStyle}};
    for (const auto& object : database.objects) {
        if (auto* block = blockHeader(*object)) {
            const auto* begin = database.as<BlockBeginEntity>(block->block);
            if (begin != nullptr && !begin->name.empty()) block->name = begin->name;
        }
        for (const auto& [type, table] : kRecords)
            if (object->type == type) database.nameRecord(table, object->recordName(), object->handle);
    }
}

/// Before R2007 the material of an entity stands in its extended data.
void takeOldMaterials(Database& database) {
    if (database.version >= Version::R2007) return;
    for (const auto& object : database.objects) {
        if (!object->isEntity()) continue;
        auto& entity = static_cast<Entity&>(*object);
        for (XBlock& block : entity.xdata) {
            const auto mark = std::find_if(block.items.begin(), block.items.end(), [](const XItem& item) {
                return item.code == 1000 && item.text == "RTMaterial";
            });
            if (mark == block.items.end() || mark + 1 == block.items.end() || (mark + 1)->code != 1005) continue;
            entity.material = (mark + 1)->handle;
            entity.materialFlags = 3;
            block.items.erase(mark, mark + 2);
        }
        std::erase_if(entity.xdata, [](const XBlock& block) { return block.items.empty(); });
    }
}

}  // namespace

std::string decode(std::string_view file, Database& database) {
    Container container;
    if (std::string error = readContainer(file, container); !error.empty()) return error;
    database.version = container.version;
    database.codePage = container.codepage;
    database.notes = std::move(container.notes);
    const TextCodec codec(database.codePage);
    decodeHeader(container, codec, database);
    decodeClasses(container, codec, database);
    decodeObjects(container, codec, database);
    linkOwners(database);
    nameRecords(database);
    resolveNumbers(database);
    takeOldMaterials(database);
    if (const Section* solids = container.find(section::solids)) {
        database.modelerData = readSolidStore(solids->bytes, database.notes);
        std::erase_if(database.modelerData, [&](const auto& item) { return database.find(item.first) == nullptr; });
    }
    if (const Section* summary = container.find(section::summary))
        for (SummaryProperty& property : readSummary(summary->bytes, database.version, codec))
            database.properties.emplace_back(std::move(property.name), std::move(property.text));
    constexpr std::size_t kEmptySection = 64;  // some writers leave an empty frame
    for (const std::string_view name : {section::macros, section::security, section::signature})
        if (const Section* found = container.find(name); found != nullptr && found->bytes.size() > kEmptySection)
            database.foreignSections.emplace_back(name);
    return {};
}

}  // namespace kdraw
