#pragma once

#include <memory>
#include <string>
#include <string_view>

#include "kdraw/fields/bit_fields.hpp"
#include "kdraw/fields/object.hpp"

namespace kdraw {

class Database;

/// Decodes object records of one file.
class RecordDecoder {
public:
    /// The database gives the version and the classes; it is not changed.
    RecordDecoder(const Database& database, const TextCodec& codec);

    struct Result {
        std::unique_ptr<Object> object;  ///< null: damaged
        std::uint16_t type = 0;
        bool entity = false;
        bool uneven = false;       ///< its fields did not use up its data
        bool wrongChecksum = false;
        std::uint64_t size = 0;  ///< bytes of the record
    };
    /// The record that begins at `offset` of the objects' section. `handle` is what the object map says: a record that
    /// carries another one counts as damaged.
    Result decode(std::string_view section, std::uint64_t offset, Handle handle) const;

private:
    const ObjectKind* kindOf(std::uint16_t type, bool& entity, const char*& className) const;

    const Database& database_;
    const TextCodec& codec_;
    std::vector<const ObjectKind*> fixed_;
    std::vector<const ObjectKind*> byClass_;  ///< by class number - 500
};

/// Encodes object records, R2010 and later.
class RecordEncoder {
public:
    explicit RecordEncoder(Version version) : fields_(version), version_(version) {}
    /// Appends the record of an object, frame and checksum included.
    void encode(Object& object, std::string& section);

private:
    BitEncoder fields_;
    BitWriter frame_;
    Version version_;
};

/// What all entities have, behind a record's head. Multi-line attributes hold a second one inside their body.
void describeEntityCommon(Fields& f, Entity& e);

/// The kind of a class or DXF name; null: none. For names that several kinds share the first one.
const ObjectKind* kindNamed(std::string_view dxfName);

}  // namespace kdraw
