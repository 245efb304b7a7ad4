#pragma once
// The texts a disc or a drive gives: blank-padded, in whatever encoding the sheet was written in.
#include <string>

namespace platform::cdrom {

// Without the blanks and NULs around it.
std::string trimmed(std::string s);
// CD-Text of a sheet comes as its bytes; ours and most others' are ISO 8859-1, so text that is
// not UTF-8 is taken as Latin-1.
std::string asUtf8(const char *text);
// Twelve letters and digits, as an ISRC is.
bool validIsrc(const std::string &s);

} // namespace platform::cdrom
