#pragma once

#include <cstdlib>
#include <memory>
#include <random>
#include <string>
#include <string_view>
#include <vector>

#include "kdraw/database/database.hpp"
#include "kdraw/groups/dxf_fields.hpp"
#include "kdraw/fields/object.hpp"
#include "kdraw/fields/version.hpp"

// Entities and other objects with all members set, and ways to see what one holds.

namespace kdraw::test {

/// A database with one record of each table, so that groups can name them.
struct NamedRecords {
    NamedRecords();
    Database database;
    std::vector<Handle> handles;  ///< by Table
};

/// What arbitrary values may be.
struct Values {
    bool colorNames = false;  ///< colours of books, too
    bool zeroBytes = false;   ///< in binary data
    std::size_t fewest = 0;   ///< items of a list
};
inline constexpr Values kObjectValues{true, true, 1};

/// An object of a kind whose description was given arbitrary values, small numbers among them.
std::unique_ptr<Object> arbitrary(const ObjectKind& kind, Version version, unsigned seed, const NamedRecords& records,
                                  Values values = {});

/// Everything that the description names, exactly.
std::string listing(Object& object, Version version);

/// Through bits and back. Null when it was damaged; `left` gets the bits that nobody read.
std::unique_ptr<Object> throughBits(Object& object, const ObjectKind& kind, Version version, std::size_t& left);

/// The groups of a description.
std::string groupsOf(Object& object, const Database& database);
/// Groups of a text: the values stay in it.
void readGroups(std::string_view text, DxfInput& in);
/// An object from groups.
std::unique_ptr<Object> fromGroups(std::string_view text, const ObjectKind& kind, const Database& database);

template <class T>
std::unique_ptr<T> as(std::unique_ptr<Object> object) {
    T* typed = dynamic_cast<T*>(object.get());
    if (typed != nullptr) object.release();
    return std::unique_ptr<T>(typed);
}

}  // namespace kdraw::test
