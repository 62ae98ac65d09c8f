#pragma once

#include <string>

#include "kdraw/fields/object.hpp"

namespace kdraw {

/// A record of one of the tables: what all of them begin with.
class TableRecord : public Object {
public:
    std::string_view recordName() const override { return name; }

    std::string name;
    bool referenced = true;      ///< only stored before R2007
    bool xrefDependent = false;  ///< came with an external reference
    int xrefIndex = 0;           ///< index + 1 of the external reference, 0: none
    Handle xrefBlock = 0;        ///< BLOCK_HEADER of the external reference

protected:
    /// The head, with the subclass markers before it. `flags` are the record's own bits of group 70: written from it
    /// and read to it with groups; the binary formats have such bits in places of their own.
    void describeHead(Fields& f, std::string_view marker, int& flags);
    /// For kinds without bits of their own.
    void describeHead(Fields& f, std::string_view marker) {
        int none = 0;
        describeHead(f, marker, none);
    }
    /// The same with another name in the file than in memory.
    void describeHead(Fields& f, std::string_view marker, int& flags, std::string& stored);
};

}  // namespace kdraw
