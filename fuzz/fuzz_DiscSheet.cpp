// The text beside a disc image as the CD reader reads it: the same bytes once as a CUE sheet
// (scanned, and joined with the files it names) and once as a cdrdao TOC. Nothing may crash, and
// what comes out keeps to what the reader promises.
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <string>
#include <system_error>
#include <unistd.h>

#include "ScratchFolder.h"
#include "platform/cdrom/ImageSheet.h"

namespace {

namespace fs = std::filesystem;

void check(bool condition)
{
    if (!condition)
        __builtin_trap();
}

// Relative names in a sheet resolve into the sheet's folder, so a sheet can name the input
// itself as a sound file. The joined BIN lies outside it: a sheet naming the BIN being written
// would grow it to the size limit.
struct Scratch {
    fs::path folder = fuzzing::scratchFolder() / "sheets";
    fs::path bin = fuzzing::scratchFolder() / "joined.bin";
    Scratch() { fs::create_directories(folder); }
};

const Scratch &scratch()
{
    static const Scratch files;
    return files;
}

void writeFile(const fs::path &path, const char *data, size_t size)
{
    std::ofstream out(path, std::ios::binary | std::ios::trunc);
    out.write(data, static_cast<std::streamsize>(size));
}

void checkFacts(const platform::cdrom::SheetFacts &facts)
{
    for (const fs::path &file : facts.files)
        check(file.is_absolute());
    check(!facts.lastTrackSectors || *facts.lastTrackSectors > 0);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const fs::path &folder = scratch().folder;
    const char *bytes = reinterpret_cast<const char *>(data);

    const fs::path cue = folder / "image.cue";
    writeFile(cue, bytes, size);
    const auto facts = platform::cdrom::scanCue(cue);
    check(facts.has_value()); // a small readable file is always scanned
    checkFacts(*facts);
    (void)platform::cdrom::cueReadsAsItStands(cue);
    if (const auto joined = platform::cdrom::joinCue(cue, scratch().bin)) {
        checkFacts(joined->facts);
        std::error_code ec;
        check(fs::file_size(scratch().bin, ec) % 2352 == 0 && !ec); // whole sectors only
    }

    const fs::path toc = folder / "image.toc";
    writeFile(toc, bytes, size);
    if (const auto rewritten = platform::cdrom::rewriteToc(toc)) {
        checkFacts(rewritten->facts);
        // Swapped or not is only known for tracks that came after a TRACK line.
        for (const auto &[track, big] : rewritten->facts.bigEndian)
            check(track >= 1);
        // The rewritten text is a TOC too; read once more, it may be refused but must not crash.
        const fs::path again = folder / "rewritten.toc";
        writeFile(again, rewritten->text.data(), rewritten->text.size());
        if (const auto second = platform::cdrom::rewriteToc(again))
            checkFacts(second->facts);
    }
    return 0;
}
