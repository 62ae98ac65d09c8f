#pragma once

namespace kdraw {

class Database;

/// Adds the objects that a written drawing must hold and that are missing: the tables with their first records, the
/// dictionaries of named objects, both spaces with their layouts. Makes what belongs together point to each other,
/// gives every object the type number under which it is written, and sets the header's references.
void completeGraph(Database& database);

/// After decoding: linetypes of multiline styles, which files up to R2013 number.
void resolveNumbers(Database& database);

}  // namespace kdraw
