#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "doc/document.hpp"

namespace kova::cmd {

// Fields: parts of a text that show a value which may change. A text keeps, as extended data "KOVA_TEXTFIELDS", its
// content with codes in place of the values and what they last gave. The codes:
//
//   %<Date>%  %<Date yyyy-MM-dd hh:mm>%  %<Filename>%  %<Author>%  %<Title>%  %<Subject>%  %<Keywords>%
//   %<PlotScale>%  %<PageSetup>%  %<SheetName>%  %<SysVar NAME>%  %<Object HANDLE Property>%

/// What a code says now (without its brackets): "----" for an empty value, "####" for one that cannot be had.
std::string fieldValue(const engine::Drawing& drawing, std::string_view code);

/// An object's property by its name: one of the names that `objectProperties` gives. Nothing for any other.
std::optional<std::string> objectProperty(const engine::Drawing& drawing, const engine::Entity& entity,
                                          std::string_view name);
/// All properties of an object that a field can show, with their values.
std::vector<std::pair<std::string, std::string>> objectProperties(const engine::Drawing& drawing,
                                                                  const engine::Entity& entity);

/// A content with its codes replaced by their values.
std::string resolveFields(const engine::Drawing& drawing, std::string_view codes);

/// The content with codes that a text or multiline text keeps; nothing when it has no field, or was edited since the
/// field was last brought up to date and so has become plain text.
std::optional<std::string> textFields(const engine::Entity& entity);
/// Makes a text show the codes' present values and keep the codes. False: it is no text.
bool setTextFields(const engine::Drawing& drawing, engine::Entity& entity, std::string_view codes);

/// Brings the fields of a text up to date, as part of the open group.
enum class FieldUpdate { None, Same, Changed };
FieldUpdate updateFields(doc::Document& document, engine::Entity& entity);

/// The entities of a drawing that may keep fields: of its spaces and of its own blocks, those on locked layers too, as
/// their value is the drawing's and not the user's.
std::vector<engine::Entity*> possibleFields(engine::Drawing& drawing);

/// When fields come up to date by themselves: bits of FIELDEVAL.
enum class FieldMoment { Open = 1, Save = 2, Plot = 4, Transmit = 8, Regenerate = 16 };
/// Brings the fields up to date if FIELDEVAL wants it now, as a step of its own when one changes. Dates wait for
/// UPDATEFIELD.
void updateFieldsAt(FieldMoment moment, doc::Document& document);
/// The same for a drawing that was just read, before it is anybody's document.
void updateFieldsOnOpening(engine::Drawing& drawing);

}  // namespace kova::cmd
