#pragma once

#include <optional>
#include <string>

#include "runtime/Integer.h"

namespace layout {

// The texts every title and time of the layout passes through. Each routine runs with errors
// resumed at the next statement: a step that fails is skipped and its target keeps what it had
// (locals start as 0 and ""), so none of them raises for any input.

// Display title of an MP3 path: "_" and "." become blanks, the title runs from behind the last
// "\" up to the last dot among the last five characters (or to the end), a two-digit track number
// ("07-" or "07 -") is stripped when the title's value is above 0, leading blanks are trimmed.
// Positions count characters. A title whose end lies before its start ("C:\a.b\c") fails to be
// cut and comes out empty.
std::string pFormatSongTitle(const std::string &path);

// Track time "MM:SS", or "HH-MM:SS" from one hour up. The argument is a single: it is taken at
// single precision (a value beyond a single's range is error 6 at the call, as passing it was).
// From ten hours up h * 3600 overflows, so minutes and seconds stay 0: 36000 gives "10-00:00".
std::string FormatTrackTime(double seconds);

// A millisecond count (as text) as "MM:SS", or "MM:SS:hh" with hundredths. The hundredths are
// the text of ms / 1000 behind its first "." less its last character, with a "0" appended when
// one character is left: "61500" gives "" ("01:01:"), "61250" gives "20", "61234" gives "23".
// A text of ms / 1000 without "." gives its own digits less the last: "61000" gives "60".
std::string pMilliToMinutes(const std::string &milliseconds, bool withHundredths);

// Which of the three displays of the time left applies.
enum class TimeLeftState {
    Plenty,       // more than 60 s: meter shown, Label3 hidden, Timer1 off, OvertimeFlag 0
    ExactlySixty, // the gap between the tests: no text, OvertimeFlag 0, Timer1 and Label3 untouched
    Overtime,     // below 60 s, negative too: meter value 0, OvertimeFlag -1, Timer1 on
};
TimeLeftState timeLeftState(rt::Integer seconds);

// The text part of ConvertTime: "H:MM:SS" above 60 s ("1:13:20" for 4400); below 60 s
// "00.00." + the seconds formatted as "HH.MM.SS", which shows a valid time in two digits
// ("00.00.05" for 5, "00.00.00" for 0) and leaves anything else as it is ("00.00.-95");
// nothing for exactly 60, so the caption ends at its dash.
std::optional<std::string> convertTimeText(rt::Integer seconds);

} // namespace layout
