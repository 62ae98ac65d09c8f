#pragma once

#include <functional>
#include <string>
#include <string_view>

#include "cmd/dialogue.hpp"
#include "doc/pick/picking.hpp"

namespace kova::cmd {

/// A question for one object, which takes a point near it with all that point prompts know (snap words, M2P, FROM,
/// filters ...), L for the newest object, or a handle.
struct PickRequest : PickRules {
    std::string prompt;
    std::string_view options = {};
    /// Where names may be typed as well: true for a line that is one, which then is an answer even when it could be
    /// read as a pick. Other lines that are no pick become answers, too (Kind::Text).
    std::function<bool(std::string_view)> isName = {};
    std::string refusal = {};  ///< of an object that is of no use, instead of the shared text
};

/// To co_await: an Object, a Keyword, Enter, or with isName a Text.
Ask::Awaiter askPick(Ask& ask, PickRequest request);
/// The same for an object that is only looked at (measured, copied from): those on locked layers do as well.
Ask::Awaiter askSource(Ask& ask, std::string prompt, std::string_view options = {},
                       std::function<bool(const engine::Entity&)> usable = {});

/// How the rules of a pick travel in Ask::Request::filter.
struct PickFilter {
    PickRules rules;
    std::function<bool(std::string_view)> isName;
    bool operator()(const engine::Entity& entity) const { return !rules.usable || rules.usable(entity); }
};

}  // namespace kova::cmd
