// The Image Recorder reading back a CUE sheet of an image it may or may not have written: any
// bytes give a sheet or nothing. A sheet it accepts keeps its tracks in order, and written out
// again it reads back the same.
#include <cstddef>
#include <cstdint>
#include <string_view>

#include "platform/writer/CueSheet.h"

namespace {

using platform::writer::ImageSheet;
using platform::writer::ImageTrack;

void check(bool condition)
{
    if (!condition)
        __builtin_trap();
}

bool sameTrack(const ImageTrack &a, const ImageTrack &b)
{
    return a.title == b.title && a.performer == b.performer && a.pauseStart == b.pauseStart && a.start == b.start
        && a.length == b.length;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const std::string_view text(reinterpret_cast<const char *>(data), size);
    const auto sheet = platform::writer::parseCue(text);
    if (!sheet)
        return 0;

    check(!sheet->binName.empty() && !sheet->tracks.empty());
    check(sheet->tracks.front().start == 0);
    int64_t previousEnd = 0;
    for (const ImageTrack &t : sheet->tracks) {
        check(t.length > 0 && t.pauseStart <= t.start && t.pauseStart >= previousEnd);
        previousEnd = t.start + t.length;
    }
    check(sheet->sectors() == previousEnd);

    const auto again = platform::writer::parseCue(platform::writer::renderCue(*sheet));
    check(again.has_value());
    check(again->binName == sheet->binName && again->finalised == sheet->finalised);
    check(again->tracks.size() == sheet->tracks.size());
    for (size_t i = 0; i < sheet->tracks.size(); ++i)
        check(sameTrack(again->tracks[i], sheet->tracks[i]));
    return 0;
}
