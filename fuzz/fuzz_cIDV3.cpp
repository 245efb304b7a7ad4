// Tag and header analysis of whatever bytes a file holds: both tag classes read it, cIDV3 also
// writes and clears its tag. Nothing may crash, and the properties stay within what they can be.
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <fstream>
#include <string>
#include <unistd.h>

#include "ScratchFolder.h"
#include "mp3/cIDV3.h"
#include "mp3/cMP3Info.h"
#include "runtime/RuntimeError.h"

namespace {

void check(bool condition)
{
    if (!condition)
        __builtin_trap();
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    static const std::string path = (fuzzing::scratchFolder() / "track.mp3").string();
    ::unlink(path.c_str()); // a read-only file from the last run goes too
    {
        std::ofstream out(path, std::ios::binary);
        out.write(reinterpret_cast<const char *>(data), static_cast<std::streamsize>(size));
    }

    mp3::cIDV3 id;
    id.setFileName(path);
    check(id.FileName() == path);
    check(id.FileBytes().value() == static_cast<int32_t>(size));
    const int version = id.MpegVersion().value();
    check(version == 0 || version == 1 || version == 2 || version == 25);
    check(id.LayerVersion().value() >= 0 && id.LayerVersion().value() <= 3);
    check(id.Channels().value() >= 0 && id.Channels().value() <= 2);
    check(id.Seconds().value() >= 0);
    check(id.InfoString().empty() || id.InfoString().rfind("Size: ", 0) == 0);
    check(id.Title().size() <= 90 && id.Year().size() <= 12); // 30 and 4 characters of up to 3 bytes
    (void)mp3::cIDV3::GenreText(id.Genre());
    const bool tagged = id.HasTag();
    check(!tagged || size >= 128);

    mp3::cMP3Info info;
    try {
        info.setFileName(path);
        (void)info.pGetGenre(info.Genre());
    } catch (const rt::RuntimeError &) {
        // a short file, or a genre byte beyond the table: the caller's error
    }

    if (size > 0 && (data[0] & 1)) {
        id.setTitle("Fuzz");
        const bool written = id.WriteTag();
        check(written == (size >= 128));
        check(!written || id.HasTag());
        const bool cleared = id.ClearTag();
        check(cleared == (size >= 128));
        check(!cleared || !id.HasTag());
        std::ifstream in(path, std::ios::binary | std::ios::ate);
        check(static_cast<size_t>(in.tellg()) == size); // the file never grows
    }
    return 0;
}
