#pragma once

#include <string>
#include <string_view>

namespace rt {

// Text is UTF-8; every length and position here counts characters, positions from 1.
long Len(std::string_view s);
// Mid(s, start[, length]): start below 1 or a negative length is error 5; start past the end
// gives "". Without a length the rest of the text is taken.
std::string Mid(std::string_view s, long start);
std::string Mid(std::string_view s, long start, long length);
std::string Left(std::string_view s, long length);
std::string Right(std::string_view s, long length);
// InStr([start,] haystack, needle): 1-based position or 0; an empty needle gives start.
long InStr(std::string_view haystack, std::string_view needle);
long InStr(long start, std::string_view haystack, std::string_view needle);
std::string Trim(std::string_view s);
std::string LTrim(std::string_view s);
std::string RTrim(std::string_view s);
std::string UCase(std::string_view s);
std::string LCase(std::string_view s);
std::string Space(long n);
// Chr of a code 0..255 as the character of the system's code page (Windows-1252), in UTF-8.
std::string Chr(int code);
// Asc of the first character, its Windows-1252 code where it has one; "" is error 5.
int Asc(std::string_view s);
// Replace all occurrences.
std::string Replace(std::string_view s, std::string_view find, std::string_view with);

// Windows-1252 bytes to UTF-8 text and back (characters with no code become "?").
std::string fromAnsi(std::string_view bytes);
std::string toAnsi(std::string_view text);
// True when the bytes are well-formed UTF-8 throughout.
bool isUtf8(std::string_view bytes);

} // namespace rt
