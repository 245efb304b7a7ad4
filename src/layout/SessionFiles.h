#pragma once

#include <string>

namespace ui {
class ListBox;
}

namespace layout {

// The session record the layout builder leaves in LocalJ. Nothing reads these back.

// "<LastLocal>" + folder + "</LastLocal>" in programFolder + "/LocalJ/lastlocal.vel".
void writeLastLocal(const std::string &programFolder, const std::string &folder);

// The list's count as the print statement writes a number, then every row from 0 up to and
// including the count: the round past the last row writes the empty text a list gives there.
void writeListFile(const std::string &path, const ui::ListBox &list);

} // namespace layout
