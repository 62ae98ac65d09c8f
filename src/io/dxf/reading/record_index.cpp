#include "io/dxf/reading/record_index.hpp"

#include "engine/model/name.hpp"

namespace kova::io::dxf {

namespace {

/// Dictionaries up to this length are looked through.
constexpr std::size_t kShortDictionary = 16;

}  // namespace

bool RecordIndex::add(std::uint64_t handle, const Record& record) {
    if (!byHandle_.try_emplace(handle, places_.size()).second) return false;
    places_.push_back({record.position, record.type, false});
    return true;
}

bool RecordIndex::object(std::uint64_t handle, Record& record) {
    const auto found = byHandle_.find(handle);
    if (found == byHandle_.end()) return false;
    Place& place = places_[found->second];
    place.read = true;
    return reader_.at(place.position, record);
}

bool RecordIndex::object(std::uint64_t handle, std::string_view type, Record& record) {
    const auto found = byHandle_.find(handle);
    return found != byHandle_.end() && places_[found->second].type == type && object(handle, record);
}

RecordIndex::Dictionary& RecordIndex::parsed(std::uint64_t handle) {
    std::unique_ptr<Dictionary>& known = dictionaries_[handle];
    if (known) return *known;
    known = std::make_unique<Dictionary>();
    Record record;
    if (handle == 0 || (!object(handle, "DICTIONARY", record) && !object(handle, "ACDBDICTIONARYWDFLT", record)))
        return *known;
    bool inside = false;
    std::string_view key;
    for (const Tag& tag : record.tags) {
        if (tag.code == 1001) break;
        if (tag.code == 100) inside = true;
        if (!inside) continue;
        if (tag.code == 3) key = tag.text();
        if ((tag.code == 350 || tag.code == 360) && !key.empty()) {
            known->items.push_back({key, tag.handle()});
            key = {};
        }
    }
    return *known;
}

std::span<const DictionaryItem> RecordIndex::dictionary(std::uint64_t handle) { return parsed(handle).items; }

std::uint64_t RecordIndex::entry(std::uint64_t handle, std::string_view key) {
    Dictionary& dictionary = parsed(handle);
    if (dictionary.items.size() <= kShortDictionary) {
        for (const DictionaryItem& item : dictionary.items)
            if (engine::equalNoCase(trimmed(item.key), key)) return item.handle;
        return 0;
    }
    if (dictionary.byKey.empty())
        for (const DictionaryItem& item : dictionary.items)
            dictionary.byKey.try_emplace(engine::foldCase(trimmed(item.key)), item.handle);
    const auto found = dictionary.byKey.find(engine::foldCase(key));
    return found == dictionary.byKey.end() ? 0 : found->second;
}

}  // namespace kova::io::dxf
