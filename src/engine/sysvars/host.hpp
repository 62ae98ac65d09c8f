#pragma once

// What system variables ask of the machine.

#include <string>

namespace kova::engine {

/// The present moment as Julian date with its fraction, in local time or in universal time.
double julianNow(bool universal = false);
/// The present local moment as a number YYYYMMDD.HHMMSSmmm.
double calendarNow();
/// The folder of temporary files, with a slash at its end.
std::string temporaryFolder();

}  // namespace kova::engine
