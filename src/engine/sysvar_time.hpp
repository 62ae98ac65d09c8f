#pragma once

namespace kova::engine {

/// The present moment as Julian date with its fraction, in local time or in universal time.
double julianNow(bool universal = false);
/// The present local moment as a number YYYYMMDD.HHMMSSmmm.
double calendarNow();

}  // namespace kova::engine
