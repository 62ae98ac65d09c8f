#pragma once

#include <string>
#include <string_view>

#include "kdraw/fields/object.hpp"

namespace kdraw {

class Dictionary : public Object {
public:
    struct Entry {
        std::string key;
        Handle value = 0;
    };

    std::int16_t cloning = 1;
    bool hardOwner = false;
    std::vector<Entry> entries;

    void describe(Fields& f) override;

    /// The entry of a key, without regard to the case of ASCII letters; 0 when there is none.
    Handle find(std::string_view key) const;
    /// Adds an entry, or gives an existing one another value.
    void set(std::string_view key, Handle value);
};

/// A dictionary that answers unknown keys with one object.
class DictionaryWithDefault : public Dictionary {
public:
    Handle fallback = 0;

    void describe(Fields& f) override;
};

/// A value of the variable dictionary; its name is the key.
class DictionaryVariable : public Object {
public:
    std::uint8_t schema = 0;
    std::string value;

    void describe(Fields& f) override;
};

/// An object without fields: a plot style's name.
class Placeholder : public Object {
public:
    void describe(Fields&) override {}
};

}  // namespace kdraw
