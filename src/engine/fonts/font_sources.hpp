#pragma once

#include <memory>
#include <string>

#include "engine/fonts/fonts.hpp"

namespace kova::engine {

/// A stroke font with its characters slanted, for italic text.
const Font& slantedStrokeFont();
/// The symbols of geometric tolerancing under the letters of the GDT font; other characters as in the stroke font.
const Font& gdtFont();

/// True for characters that are rightly drawn as nothing: blanks, controls, invisible formatting marks.
bool isBlank(char32_t c);

/// An installed outline font for a family or the file name of a font; null when there is no font system (a program
/// without a GUI application) or it has no font at all.
std::unique_ptr<Font> makeOutlineFont(const std::string& name, bool bold, bool italic);
/// The character in whatever installed font has it; false when none has.
bool systemGlyph(char32_t c, Glyph& out);

}  // namespace kova::engine
