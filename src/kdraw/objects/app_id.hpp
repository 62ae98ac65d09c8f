#pragma once

#include "kdraw/objects/table_record.hpp"

namespace kdraw {

/// An application that extended data names.
class AppIdRecord : public TableRecord {
public:
    std::uint8_t unknown = 0;

    void describe(Fields& f) override;
};

}  // namespace kdraw
