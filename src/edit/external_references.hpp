#pragma once

#include <string>
#include <vector>

#include "cmd/command.hpp"
#include "doc/document.hpp"

namespace kova::cmd {

// External references as commands change them, as part of the open group. Error texts, empty on success.

/// The drawing's own references (not those that came with one), whose names match a list of patterns with commas.
std::vector<engine::Name> referencesMatching(const engine::Drawing& drawing, std::string_view patterns);

/// "Loaded", "Unloaded", "Not found", "Unresolved".
std::string_view referenceStatusName(engine::XrefStatus status);

/// Reads the file of a reference (again) and shows it. Gives the unit of the file (INSUNITS) where it is asked for.
std::string reloadReference(doc::Document& document, AppServices& services, engine::Name name, int* units = nullptr);
/// Takes a reference's contents out of sight; where it is placed, and its layers, stay.
void unloadReference(doc::Document& document, engine::Name name);
/// Deletes a reference with all its placements and what came with it.
std::string detachReference(doc::Document& document, engine::Name name);
/// Makes a loaded reference a block of the drawing. Its layers, styles and blocks become "name$0$layer", or with
/// `merge` records under their own names, where the drawing's own win.
std::string bindReference(doc::Document& document, AppServices& services, engine::Name name, bool merge);
/// "reference$0$name" for "reference|name", with a number that leaves the name free.
engine::Name boundName(const engine::Drawing& drawing, engine::SymbolKind kind, engine::Name name);

}  // namespace kova::cmd
