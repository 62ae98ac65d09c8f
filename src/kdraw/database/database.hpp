#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <type_traits>
#include <unordered_map>
#include <utility>
#include <vector>

#include "kdraw/database/classes.hpp"
#include "kdraw/database/header_variables.hpp"
#include "kdraw/fields/object.hpp"

namespace kdraw {

/// A drawing as objects of the binary format: what a decoder fills and an encoder writes.
class Database {
public:
    Database() = default;
    Database(const Database&) = delete;
    Database& operator=(const Database&) = delete;
    Database(Database&&) = default;
    Database& operator=(Database&&) = default;

    Version version = Version::R2018;
    int codePage = 30;
    HeaderVariables header;
    /// Properties of the drawing that stand beside it: name of the header variable in DXF, and text.
    std::vector<std::pair<std::string, std::string>> properties;
    std::vector<ClassRecord> classes;
    /// In the order in which they were added: of their handles after decoding.
    std::vector<std::unique_ptr<Object>> objects;
    /// Binary modeller data (SAB) that stands in the data storage section, by the handle of its object.
    std::unordered_map<Handle, std::string> modelerData;

    /// The object of a handle; null: none.
    Object* find(Handle handle) const;
    template <class T>
    T* as(Handle handle) const {
        Object* const object = find(handle);
        if constexpr (std::is_same_v<T, Entity> || std::is_same_v<T, const Entity>)
            return object != nullptr && object->isEntity() ? static_cast<T*>(object) : nullptr;
        else
            return dynamic_cast<T*>(object);
    }
    /// Adds an object under the handle wanted, or under a new one when it is 0 or taken.
    Object& add(std::unique_ptr<Object> object, Handle wanted = 0);
    /// The next free handle.
    Handle nextHandle() const { return next_; }
    void reserveHandles(Handle upTo) {
        if (upTo >= next_) next_ = upTo + 1;
    }

    // Table records by name, without regard to case.
    void nameRecord(Table table, std::string_view name, Handle handle);
    Handle recordNamed(Table table, std::string_view name) const;
    /// Name of a table record; empty: none.
    std::string_view recordName(Handle handle) const;

    /// Records that could not be decoded or read, by type code and by handle.
    struct Skipped {
        Handle handle = 0;
        std::uint16_t type = 0;
        bool entity = false;
        std::string name = {};  ///< of the record in DXF; empty where it is not known
    };
    std::vector<Skipped> skipped;
    /// Records whose fields did not fill their data exactly: signs of fields that this library does not know.
    std::vector<Skipped> uneven;
    /// Sections with contents of other programs, which are not kept.
    std::vector<std::string> foreignSections;
    /// Things that were wrong and did not matter: checksums.
    std::vector<std::string> notes;

private:
    std::vector<std::uint32_t> direct_;                   ///< by small handle: place in objects + 1
    std::unordered_map<Handle, std::uint32_t> indirect_;  ///< by any other handle
    std::unordered_map<std::string, Handle> names_;
    Handle next_ = 1;
};

}  // namespace kdraw
