#pragma once

#include <cstdint>
#include <string>

#include "platform/MediaChain.h"

namespace platform {

// The text and file helper of the media components (`MMHelperX`). Positions count characters
// from 1, as the logic's own text routines do.
class MMHelper {
public:
    // The extension of a path with its dot ("" when the name has none).
    std::string ExtractExt(const std::string &path) const;
    // 1-based position of the first occurrence of needle in text; 0 when absent or empty.
    int PosText(const std::string &needle, const std::string &text) const;
    // count characters from start (1-based); what lies outside the text is left out.
    std::string CopyText(const std::string &text, int start, int count) const;
    // Clears the way for a new file of that name: an existing file is removed. A file that
    // can't be removed, or a name that is a folder, is left as it is.
    void DeleteTarget(const std::string &path) const;
    // A player position in milliseconds as minutes, seconds and milliseconds: "0:00.000",
    // "12:34.567". The format handle is the output's; positions are kept in milliseconds
    // whatever the format, so it only has to be open. With `withMs` false the ".mmm" is left
    // off. A negative position shows as "0:00.000".
    std::string FormatPosition(int64_t positionMs, int formatHandle, bool withMs) const;
    // Milliseconds as hours, minutes and seconds: "00:00:00", "01:02:03"; whole seconds, cut
    // off. A negative time shows its size after a minus sign: "-00:00:01".
    std::string TimeText(int64_t ms) const;
};

// The system's multiply-then-divide (`MulDiv`): a * b / c through 64 bits, rounded half away
// from zero; -1 when c is 0 or the result doesn't fit in 32 bits.
int32_t MulDiv(int32_t a, int32_t b, int32_t c);

// The wave helper (`MMWaveHelperX`).
class MMWaveHelper {
public:
    // Bytes of the wave format record of a format (WAVEFORMATEX with its extra bytes).
    int32_t FormatSize(const WaveFormat &format) const;
};

} // namespace platform
