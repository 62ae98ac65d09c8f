#include "kdraw/database/encoder.hpp"

#include <algorithm>

#include "kdraw/fields/bit_fields.hpp"
#include "kdraw/container/container.hpp"
#include "kdraw/container/object_map.hpp"
#include "kdraw/container/section_frame.hpp"
#include "kdraw/database/database.hpp"
#include "kdraw/entities/solids.hpp"
#include "kdraw/database/completion.hpp"
#include "kdraw/database/record_codec.hpp"
#include "kdraw/database/solid_store.hpp"

namespace kdraw {

namespace {

/// What the objects' section begins with.
constexpr std::uint32_t kObjectsMark = 0xDCA;

/// A section's body: its size in bits up to the handles, data, strings, handles.
std::string bodyOf(BitEncoder& f, bool header) {
    f.joinStrings();
    BitWriter body;
    body.rl(static_cast<std::uint32_t>(f.data.size() + 32));
    body.append(f.data);
    body.append(f.handlesPart);
    if (header) writeHeaderTail(body);
    body.align(header);
    return body.view();
}

/// Solids keep their binary data in the record before R2013, in a section of their own from then on.
void placeSolids(Database& database, Version version) {
    for (auto& [handle, bytes] : database.modelerData) {
        auto* body = database.as<ModelerEntity>(handle);
        if (body == nullptr) continue;
        body->hasBinaryData = version >= Version::R2013;
        body->binary = version >= Version::R2013 ? std::string() : bytes;
    }
}

}  // namespace

std::string encode(Database& database, std::string& file) {
    const Version version = database.version;
    if (!isWritten(version)) return "this version cannot be written";
    completeGraph(database);
    placeSolids(database, version);
    database.header.handseed = database.nextHandle();

    std::vector<std::pair<Handle, Object*>> order;
    order.reserve(database.objects.size());
    for (const auto& object : database.objects)
        // Those of unknown classes came without what they hold: there is nothing to write.
        if (!object->isOpaque()) order.emplace_back(object->handle, object.get());
    std::sort(order.begin(), order.end());

    Section objects{std::string(section::objects), {}};
    objects.bytes.reserve(order.size() * 64 + 4096);
    for (unsigned i = 0; i < 4; ++i) objects.bytes += static_cast<char>(kObjectsMark >> (8 * i));
    std::vector<ObjectMapEntry> map;
    map.reserve(order.size());
    RecordEncoder encoder(version);
    for (const auto& [handle, object] : order) {
        map.push_back({handle, objects.bytes.size()});
        encoder.encode(*object, objects.bytes);
    }

    Container container;
    container.version = version;
    BitEncoder header(version);
    database.header.describe(header);
    BitEncoder classes(version);
    describeClasses(classes, database.classes);
    // The section has strings even when there are no classes.
    classes.hasStrings = true;
    container.sections.push_back(
        {std::string(section::header), writeFrame(FramedSection::Header, version, bodyOf(header, true))});
    container.sections.push_back(
        {std::string(section::classes), writeFrame(FramedSection::Classes, version, bodyOf(classes, false))});
    container.sections.push_back({std::string(section::handles), writeObjectMap(map)});
    container.sections.push_back(std::move(objects));
    if (version >= Version::R2013 && !database.modelerData.empty())
        container.sections.push_back({std::string(section::solids), writeSolidStore(database.modelerData)});

    const HeaderVariables& h = database.header;
    FileFacts& facts = container.facts;
    facts.createdDay = static_cast<std::uint32_t>(h.tdcreate.day);
    facts.createdMs = static_cast<std::uint32_t>(h.tdcreate.milliseconds);
    facts.updatedDay = static_cast<std::uint32_t>(h.tdupdate.day);
    facts.updatedMs = static_cast<std::uint32_t>(h.tdupdate.milliseconds);
    facts.editingDays = static_cast<std::uint32_t>(h.tdindwg.day);
    facts.editingMs = static_cast<std::uint32_t>(h.tdindwg.milliseconds);
    facts.handSeed = h.handseed;
    facts.objectCount = map.size();
    facts.metric = h.measurement != 0;
    return writeContainer(container, file);
}

}  // namespace kdraw
