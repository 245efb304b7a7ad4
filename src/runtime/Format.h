#pragma once

#include <string>
#include <string_view>

namespace rt {

// Format(number, pattern) for the number patterns the program uses:
// "00", "0.0", "0.00 MB", "##00", "###.0", "#.0", "0:", "00:", "00.wav".
// "0" is a digit always shown, "#" a digit shown when significant, "." the decimal point;
// everything else is literal. Values are rounded half away from zero to the pattern's decimals.
std::string Format(double value, std::string_view pattern);

// Format(text, pattern) for the time patterns "H:MM:SS" and "HH.MM.SS": a text that reads as a
// time (hours, minutes and seconds separated by "." or ":") is shown in the pattern; any other
// text is returned as it stands.
std::string Format(std::string_view text, std::string_view pattern);

} // namespace rt
