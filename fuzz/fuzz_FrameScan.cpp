// The frame scan over any first 4096 bytes and any file length, and now and then over a real file.
#include <cstddef>
#include <cstdint>
#include <fstream>
#include <string>
#include <string_view>
#include <unistd.h>

#include "ScratchFolder.h"
#include "mp3/FrameScan.h"
#include "runtime/ResumeNext.h"

namespace {

void check(bool condition)
{
    if (!condition)
        __builtin_trap();
}

const mp3::BitrateTable &table()
{
    static const mp3::BitrateTable filled = [] {
        mp3::BitrateTable t;
        t.fill();
        return t;
    }();
    return filled;
}

void checkResult(const mp3::FrameScanResult &r)
{
    check(r.secondsText.size() >= 2 && r.secondsText[0] == ' ');
    check(r.ScanErrorMark.empty() || r.ScanErrorMark == "yes");
    check(r.seconds >= 0 && r.frames >= 0);
    check(r.LastBitrate.value() >= 0 && r.LastBitrate.value() <= 448000);
    const int rate = r.sampleRate.value();
    check(r.sampleRateSet ? (rate == 22050 || rate == 44100) : rate == 0);
    check(r.report.rfind("ID: ", 0) == 0);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const std::string_view bytes(reinterpret_cast<const char *>(data), size);
    // The reading hands over all 4096 bytes or, when the file is shorter, nothing at all.
    std::string block(bytes.substr(0, 4096));
    if (size < 4096) {
        if (size > 0 && (data[0] & 1))
            block.clear();
        else
            block.resize(4096, '\0');
    }
    // The length the file claims: its own size, or a far larger one from the input's last bytes.
    double length = static_cast<double>(size);
    if (size >= 4)
        length += static_cast<double>(data[size - 1] | (data[size - 2] << 8) | (data[size - 3] << 16)) * 1024;
    checkResult(mp3::scanMp3Block(block, length, table()));

    // The direct search and the statement-by-statement one agree, errors included.
    rt::ResumeNext direct;
    rt::ResumeNext literal;
    check(mp3::detail::frameHeaderText(block, direct, false) == mp3::detail::frameHeaderText(block, literal, true));
    check(direct.lastError() == literal.lastError());

    if (size >= 3)
        check(mp3::shift_those_bits(bytes.substr(0, 3)).size() == 2);

    if (size > 0 && (data[0] & 7) == 0) {
        static const std::string path = (fuzzing::scratchFolder() / "track.mp3").string();
        {
            std::ofstream out(path, std::ios::binary | std::ios::trunc);
            out.write(bytes.data(), static_cast<std::streamsize>(size));
        }
        checkResult(mp3::scanMp3File(path, table()));
    }
    return 0;
}
