#pragma once

#include <cstdlib>
#include <memory>
#include <random>
#include <string>
#include <string_view>
#include <vector>

#include "kdraw/database.hpp"
#include "kdraw/object.hpp"
#include "kdraw/version.hpp"

// Entities with all members set, and ways to see what one holds.

namespace kdraw::test {

/// A database with one record of each table, so that groups can name them.
struct NamedRecords {
    NamedRecords();
    Database database;
    std::vector<Handle> handles;  ///< by Table
};

/// An entity of a kind whose description was given arbitrary values, small numbers among them.
std::unique_ptr<Object> arbitrary(const ObjectKind& kind, Version version, unsigned seed, const NamedRecords& records);

/// Everything that the description names, exactly.
std::string listing(Object& object, Version version);

/// Through bits and back. Null when it was damaged; `left` gets the bits that nobody read.
std::unique_ptr<Object> throughBits(Object& object, const ObjectKind& kind, Version version, std::size_t& left);

/// The groups of a description.
std::string groupsOf(Object& object, const Database& database);
/// An entity from groups.
std::unique_ptr<Object> fromGroups(std::string_view text, const ObjectKind& kind, const Database& database);

template <class T>
std::unique_ptr<T> as(std::unique_ptr<Object> object) {
    T* typed = dynamic_cast<T*>(object.get());
    if (typed != nullptr) object.release();
    return std::unique_ptr<T>(typed);
}

}  // namespace kdraw::test
