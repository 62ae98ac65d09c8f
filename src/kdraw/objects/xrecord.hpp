#pragma once

#include <string>

#include "kdraw/fields/object.hpp"

namespace kdraw {

/// A list of groups of an application's own.
class XRecord : public Object {
public:
    struct Item {
        int code = 1;
        std::string text;  ///< texts (UTF-8), hexadecimal texts, bytes
        Vector3 point;
        double real = 0.0;  ///< angles (codes 50 to 58) in radians, in groups in degrees
        std::int64_t integer = 0;
        Handle handle = 0;
    };
    /// What an item of a code holds.
    enum class Kind : std::uint8_t { None, Text, Point, Real, Angle, Int8, Int16, Int32, Int64, Bytes, Handle };
    static Kind kindOf(int code);

    std::int16_t cloning = 1;
    std::vector<Item> items;

    void describe(Fields& f) override;

private:
    void parse(Fields& f, const std::string& raw);
    std::string packed() const;
    void describeGroups(Fields& f);
};

}  // namespace kdraw
