#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <unordered_map>
#include <unordered_set>
#include <vector>

#include "io/dxf/groups/lexer.hpp"

namespace kova::io::dxf {

/// An entry of a dictionary: its key as the file has it, and the handle of the object.
struct DictionaryItem {
    std::string_view key;
    std::uint64_t handle = 0;
};

/// Where the objects of a file stand, found by handle and read again when they are wanted. A dictionary is parsed once,
/// however many objects refer to it.
class RecordIndex {
public:
    /// Reads from where `reader` reads, and leaves it at another place.
    explicit RecordIndex(RecordReader& reader) : reader_(reader) {}

    /// False for a handle that an earlier object has: that one counts.
    bool add(std::uint64_t handle, const Record& record);
    /// Reads an object, and notes that it was; false when there is none of that handle.
    bool object(std::uint64_t handle, Record& record);
    /// The same for an object of a type; any other one is not read.
    bool object(std::uint64_t handle, std::string_view type, Record& record);
    /// The entries of a dictionary object; empty when it is none. They keep standing.
    std::span<const DictionaryItem> dictionary(std::uint64_t handle);
    /// The object under a key of a dictionary, without regard to case; 0: none.
    std::uint64_t entry(std::uint64_t dictionary, std::string_view key);
    /// The same for an object that belongs to one other; false for the second who asks.
    bool ownedObject(std::uint64_t handle, std::string_view type, Record& record) {
        return !claimed_.contains(handle) && object(handle, type, record) && claim(handle);
    }
    /// True for the first who asks for a handle. What has one owner (an extension dictionary, a filter, a record of own
    /// data) is read for that one: a file may name one object a hundred thousand times.
    bool claim(std::uint64_t handle) { return claimed_.insert(handle).second; }

    /// Calls `each(record)` for the objects that nobody read, in the order of the file.
    template <class Each>
    void eachUnread(const Each& each) {
        for (const Place& place : places_) {
            Record record;
            if (!place.read && reader_.at(place.position, record)) each(record);
        }
    }

private:
    struct Place {
        std::size_t position = 0;
        std::string_view type;
        bool read = false;
    };
    struct Dictionary {
        std::vector<DictionaryItem> items;
        std::unordered_map<std::string, std::uint64_t> byKey;  ///< folded; made when a long one is asked for a key
    };

    Dictionary& parsed(std::uint64_t handle);

    RecordReader& reader_;
    std::vector<Place> places_;  ///< in the order of the file
    std::unordered_map<std::uint64_t, std::size_t> byHandle_;
    std::unordered_map<std::uint64_t, std::unique_ptr<Dictionary>> dictionaries_;
    std::unordered_set<std::uint64_t> claimed_;
};

}  // namespace kova::io::dxf
