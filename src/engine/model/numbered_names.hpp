#pragma once

#include <algorithm>
#include <charconv>
#include <cstddef>
#include <string>
#include <string_view>
#include <unordered_map>

#include "engine/model/name.hpp"

namespace kova::engine {

/// Finds free names that are counted up: "*A1", "*A2" ... It remembers below which number all are taken, so that names
/// that are made one after the other cost no walk over those before them.
class NumberedNames {
public:
    /// The prefix with the lowest number from 1 on whose name is not taken. `taken` must hold for every name that was
    /// given out and used, until released() or forget() is told otherwise.
    template <class Taken>
    Name next(std::string_view prefix, const Taken& taken) {
        std::size_t& number = free_.try_emplace(foldCase(prefix), 1).first->second;
        for (;; ++number) {
            const Name name(std::string(prefix) + std::to_string(number));
            if (!taken(name)) return name;
        }
    }
    /// A name is free again.
    void released(Name name) {
        const std::string_view text = name.folded();
        for (auto& [prefix, free] : free_) {
            if (!text.starts_with(prefix)) continue;
            const std::string_view digits = text.substr(prefix.size());
            std::size_t number = 0;
            const auto [rest, error] = std::from_chars(digits.data(), digits.data() + digits.size(), number);
            if (error == std::errc() && rest == digits.data() + digits.size() && number > 0)
                free = std::min(free, number);
        }
    }
    void forget() { free_.clear(); }

private:
    std::unordered_map<std::string, std::size_t> free_;  ///< by folded prefix: all below are taken
};

}  // namespace kova::engine
