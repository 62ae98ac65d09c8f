#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "kdraw/fields/fields.hpp"

namespace kdraw {

class Database;

/// Writes the groups of a database's records as DXF text.
class DxfOutput {
public:
    explicit DxfOutput(const Database& database) : database_(database) {}

    /// UTF-8; control characters in caret notation.
    void text(int code, std::string_view value);
    /// A value of harmless characters.
    void word(int code, std::string_view value);
    void integer(int code, std::int64_t value);
    /// Shortest form that reads back the same; what is not finite becomes 0.
    void real(int code, double value);
    void handle(int code, Handle value);
    /// The name of a table record; an empty name when there is none.
    void record(int code, Table table, Handle handle);
    void point(int code, const Vector2& p) { real(code, p.x), real(code + 10, p.y); }
    void point(int code, const Vector3& p) { real(code, p.x), real(code + 10, p.y), real(code + 20, p.z); }
    /// Hexadecimal digits, at most 127 bytes a group.
    void bytes(int code, std::string_view data);
    void subclass(std::string_view marker) { word(100, marker); }

    const Database& database() const { return database_; }
    std::string& out() { return out_; }

private:
    void code(int code);

    const Database& database_;
    std::string out_;
};

}  // namespace kdraw
