#pragma once

#include <QString>

namespace rehearsal {

/// "1:05.250", and "2:01:05.250" from one hour on.
/// @param ms not negative
/// @param decimals of the seconds, 0 ... 3; what lies behind them is cut off
QString timeText(qint64 ms, int decimals = 3);

/// A length of time in seconds, as short as it goes: "0.25 s".
QString secondsText(double ms);

} // namespace rehearsal
