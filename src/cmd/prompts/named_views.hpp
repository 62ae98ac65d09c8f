#pragma once

#include <optional>

#include "cmd/dialogue.hpp"
#include "edit/view_state.hpp"

namespace kova::cmd {

/// The name of a view to be saved; an existing one is asked about. Nothing: given up. Enter takes `fallback` unless
/// that is empty.
Task<std::optional<engine::Name>> askNewView(Ask& ask, doc::Document& document, std::string prompt,
                                             std::string fallback = {});
/// A view that the drawing keeps; nothing: given up.
Task<std::optional<engine::NamedView>> askKnownView(Ask& ask, const engine::Drawing& drawing, std::string prompt);

/// Keeps a view under its name, as part of the open group.
void storeView(doc::Document& document, engine::NamedView view);
/// Shows a named view in the current one, as part of the open group. Error text, empty on success.
std::string restoreView(doc::Document& document, const engine::NamedView& view);
/// Prints the views whose names match.
void listViews(const engine::Drawing& drawing, std::string_view pattern, const Ask& ask);

}  // namespace kova::cmd
