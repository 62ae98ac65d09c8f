#pragma once

// What system variables ask of the machine.

#include <string>

namespace kova::engine {

class Drawing;

/// The present moment as Julian date with its fraction, in local time or in universal time.
double julianNow(bool universal = false);
/// The present local moment as a number YYYYMMDD.HHMMSSmmm.
double calendarNow();
/// The folder of temporary files, with a slash at its end.
std::string temporaryFolder();

/// What saving does to a drawing's times: TDUPDATE is now, and what has been counted since the drawing was opened or
/// last saved goes over into what files hold of TDINDWG and of the user's timer.
void noteSaveTime(Drawing& drawing);

}  // namespace kova::engine
