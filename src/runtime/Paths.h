#pragma once

#include <cstdint>
#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

namespace rt {

// A path as the logic builds it ("C:\x", "/prog\LocalJ\a.wav") turned into a path of this
// system: every "\" is a directory separator. A part of the path that is not on disc as
// written but is there in Windows-1252 bytes (a name listed by nameText below) is taken in
// those bytes, so that a name the logic got from a listing opens the file it came from.
std::filesystem::path nativePath(std::string_view logicPath);

// The text the logic keeps for a name (or a path, name by name) as the file system holds it:
// the name itself when it is UTF-8, else its bytes read as Windows-1252, as names copied from
// old Windows discs are.
std::string nameText(std::string_view bytes);

bool fileExists(std::string_view logicPath);
// FileLen: the size in bytes; a missing file is error 53.
int64_t FileLen(std::string_view logicPath);
// Kill: delete a file; a missing file is error 53.
void Kill(std::string_view logicPath);
// Dir(pattern) with one "*"-style pattern in its last component: matching file names as
// nameText gives them, sorted case-insensitively (the order a file list box shows). Empty when
// the folder is missing.
std::vector<std::string> listFiles(std::string_view folder, std::string_view pattern);
// SetAttr read-only / normal.
void setReadOnly(std::string_view logicPath, bool readOnly);
bool isReadOnly(std::string_view logicPath);

// Write a whole file through a temporary file in the same folder and a rename, so that a crash
// never leaves a half-written file. Returns false and leaves the old file when that fails.
bool writeFileAtomically(const std::filesystem::path &path, std::string_view bytes);
// The two halves of such a write for a writer of its own: a new empty file beside `path` with
// `path`'s permissions, open for writing (-1 when it can't be made; `tmpName` gets its name),
// and the rename over `path` once it is complete and closed (false, and the new file removed,
// when that fails).
int createFileBeside(const std::filesystem::path &path, std::string &tmpName);
bool replaceWithFile(const std::string &tmpName, const std::filesystem::path &path);

} // namespace rt
