#pragma once

#include <cstdint>
#include <functional>
#include <string>

namespace platform::media {

// A two-pass peak normaliser (`NormalizeFile`): the first pass finds the loudest sample, the
// second scales every sample so that it reaches `level` percent of full scale, written in the
// file's own format to a new file beside it that replaces it only when complete. progress gets
// (percent, phase): phase 0 while scanning, 1 while rewriting. A file libsndfile can't read, a
// silent file, or a rewrite that fails (a full disk) leaves the file as it was; the result says
// which: true when the file was rewritten.
bool normalizeWaveFile(const std::string &path, int32_t level, const std::function<void(int32_t, int32_t)> &progress);

} // namespace platform::media
