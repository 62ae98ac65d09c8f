#pragma once

#include <optional>
#include <string>
#include <vector>

#include "doc/document.hpp"

namespace kova::cmd {

// Macros: the lines that a user typed between ACTRECORD and ACTSTOP, kept as script files.

/// Lines that one macro may have.
inline constexpr std::size_t kMaxMacroLines = 1'000'000;

bool isRecordingMacro(const doc::Document& document);
/// Begins to record what is typed to the session of this document; false while it records already
/// (the line that asked for it is then no part of the macro).
bool startMacro(doc::Document& document);
/// Takes note of a typed line while a macro is recorded; costs nothing else.
void noteMacroLine(doc::Document& document, const std::string& line);
/// Ends the recording and gives its lines. The line that ends it is taken out: it was typed while it ran.
std::vector<std::string> stopMacro(doc::Document& document);

/// The folder of macros: KOVACAD_MACROS, else kovacad/macros in the user's configuration folder; empty: there is none.
std::string macroFolder();
/// True for a name that a macro may have: one that a symbol table would take, and no folder.
bool isMacroName(std::string_view name);
/// Names of all macros in alphabetical order.
std::vector<std::string> macroNames();
/// ActMacro001 ..., the first that is free.
std::string freeMacroName();
/// Error texts, empty on success.
std::string saveMacro(const std::string& name, const std::vector<std::string>& lines);
/// Nothing when there is no such macro.
std::optional<std::vector<std::string>> loadMacro(const std::string& name);

}  // namespace kova::cmd
