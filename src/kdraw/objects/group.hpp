#pragma once

#include <string>

#include "kdraw/fields/object.hpp"

namespace kdraw {

/// A group of entities; its name is the key in the dictionary.
class Group : public Object {
public:
    std::string description;
    std::int16_t unnamed = 0;
    std::int16_t selectable = 1;
    std::vector<Handle> members;

    void describe(Fields& f) override;
};

}  // namespace kdraw
