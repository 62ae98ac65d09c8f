#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "kdraw/fields/object.hpp"

namespace kdraw {

/// A class of objects that has no type code of its own: objects carry its number.
struct ClassRecord {
    static constexpr std::uint16_t kFirst = 500;
    static constexpr std::uint16_t kEntities = 0x1F2, kObjects = 0x1F3;

    std::uint16_t number = 0;  ///< from 500 on without gaps
    std::uint16_t proxyFlags = 0;
    std::string application;
    std::string cppName;
    std::string dxfName;
    bool wasZombie = false;
    std::uint16_t itemClass = kObjects;
    std::int32_t instances = 0;
    std::int32_t dwgVersion = 0, maintenance = 0;  ///< of the program that introduced it
    std::int32_t unknown1 = 0, unknown2 = 0;

    /// The fields of the binary section; groups are those of a CLASS record.
    void describe(Fields& f);
};

/// The class of a kind that needs one.
ClassRecord classOf(const ObjectKind& kind, std::uint16_t number);

/// The body of the section of classes behind its sizes: R2004 and later with its count. Reading stops at the first
/// damage; what was read stays.
void describeClasses(Fields& f, std::vector<ClassRecord>& classes);
/// Before R2004 records follow one another without a count: reads one, false when it was damaged.
bool readOldClass(Fields& f, std::vector<ClassRecord>& classes);

/// The records of the CLASSES section of DXF. Reading: one record.
void writeClassGroups(std::vector<ClassRecord>& classes, DxfOutput& out);
void readClassGroups(std::vector<ClassRecord>& classes, DxfInput& in);

}  // namespace kdraw
