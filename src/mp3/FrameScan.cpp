#include "FrameScan.h"

#include <cstdint>
#include <optional>

#include "runtime/Conversions.h"
#include "runtime/ResumeNext.h"
#include "runtime/RuntimeError.h"
#include "runtime/Strings.h"
#include "runtime/TextFile.h"

namespace mp3 {

namespace {

// Six three-digit fields a row, for columns 7, 6, 5 (MPEG-1 Layer I, II, III) and 3, 2, 1
// (MPEG-2 Layer I, II, III); the row is the bit rate index from 1 to 14.
constexpr const char *BitrateRows[14] = {
    "032,032,032,032,008,008,", //
    "064,048,040,048,016,016,", //
    "096,056,048,056,024,024,", //
    "128,064,056,064,032,032,", //
    "160,080,064,080,040,040,", //
    "192,096,080,096,048,048,", //
    "224,112,096,112,056,056,", //
    "256,128,112,128,064,064,", //
    "288,160,128,144,080,080,", //
    "320,192,160,160,096,096,", //
    "352,224,192,176,112,112,", //
    "384,256,224,192,128,128,", //
    "416,320,256,224,144,144,", //
    "448,384,320,256,160,160,", //
};

// The buffer holds one character a byte, so the character functions work on bytes here.
int asc(std::string_view s)
{
    if (s.empty())
        rt::raise(rt::ErrInvalidCall);
    return static_cast<unsigned char>(s[0]);
}

std::string_view mid(std::string_view s, size_t start, size_t length)
{
    if (start > s.size())
        return {};
    return s.substr(start - 1, length);
}

// A division of the platform: by zero is error 11, and 0 / 0 is an overflow.
double divide(double a, double b)
{
    if (b == 0)
        rt::raise(a == 0 ? rt::ErrOverflow : rt::ErrDivisionByZero);
    return a / b;
}

} // namespace

void BitrateTable::fill()
{
    std::string s;
    for (const char *row : BitrateRows)
        s += row;
    static constexpr int columns[6] = {7, 6, 5, 3, 2, 1};
    for (int row = 1; row <= 14; ++row) {
        for (int column : columns) {
            m_cells[column][row] = static_cast<long long>(rt::Val(rt::Left(s, 3)));
            s = rt::Mid(s, 5);
        }
    }
}

rt::Integer BitrateTable::cell(int column, int row) const
{
    if (column < 0 || column > 7 || row < 0 || row > 15)
        rt::raise(rt::ErrSubscript);
    return m_cells[column][row];
}

std::string shift_those_bits(std::string_view s)
{
    const int a = asc(mid(s, 1, 1));
    const int b = asc(mid(s, 2, 1));
    const int c = asc(mid(s, 3, 1));
    std::string out(2, '\0');
    out[0] = static_cast<char>(((a & 15) * 16) | ((b & 240) / 16));
    out[1] = static_cast<char>(((b & 15) * 16) | ((c & 240) / 16));
    return out;
}

std::string FrameScanResult::sampleRateCaption() const { return "Sample Rate:" + rt::Str(sampleRate.value()); }

std::string FrameScanResult::framesCaption() const { return "Calculated Frames:" + rt::Str(frames); }

namespace detail {

std::string frameHeaderText(std::string_view block, rt::ResumeNext &next, bool statementByStatement)
{
    // Find twelve set bits, on a byte boundary or half a byte later. A failing step keeps its
    // target's old value, and a condition that fails lets the If's body run.
    std::string h;
    std::string t;
    int b1 = 0;
    int b2 = 0;
    size_t first = 1;

    // In a full buffer nothing can fail before position 4093, so up to there the two tests are
    // made on the bytes directly: a byte-aligned sync is FF Fx, a half-byte one xF FF.
    if (!statementByStatement && block.size() == 4096) {
        const auto byte = [&](size_t position) { return static_cast<unsigned char>(block[position - 1]); };
        for (size_t i = 1; i <= 4092; ++i) {
            if (byte(i) == 255 && (byte(i + 1) & 240) == 240)
                return shift_those_bits(block.substr(i, 3));
            if ((byte(i) & 15) == 15 && byte(i + 1) == 255)
                return std::string(block.substr(i + 1, 3));
        }
        b1 = byte(4092);
        b2 = byte(4093);
        t = shift_those_bits(block.substr(4091, 3));
        first = 4093;
    }

    for (size_t i = first; i <= 4095; ++i) {
        bool found = false;
        next([&] { b1 = asc(mid(block, i, 1)); });
        next([&] { b2 = asc(mid(block, i + 1, 1)); });
        next.IfElse([&] { return b1 == 255 && (b2 & 240) == 240; },
                    [&] {
                        next([&] { h = shift_those_bits(mid(block, i + 1, 3)); });
                        found = true;
                    },
                    [&] {
                        next([&] { t = shift_those_bits(mid(block, i, 3)); });
                        next.If(
                            [&] {
                                // Both sides are evaluated, as the platform's And does.
                                const bool first = asc(mid(t, 1, 1)) == 255;
                                const bool second = (asc(mid(t, 2, 1)) & 240) == 240;
                                return first && second;
                            },
                            [&] {
                                next([&] { h = std::string(mid(block, i + 2, 3)); });
                                found = true;
                            });
                    });
        if (found)
            break;
    }

    return h;
}

} // namespace detail

FrameScanResult scanMp3File(std::string_view path, const BitrateTable &table)
{
    rt::ResumeNext next;
    std::optional<rt::BinaryFile> file;
    auto opened = [&]() -> rt::BinaryFile & {
        if (!file)
            rt::raise(rt::ErrBadFileNameOrNumber);
        return *file;
    };
    std::string block;
    double fileLength = 0;
    std::optional<int64_t> length; // asked once; the read needs it to know that it runs short
    next([&] { file.emplace(path, rt::BinaryFile::Mode::Read); });
    // Reading 4096 characters from a shorter file runs past its end and fails as a whole.
    next([&] {
        length = opened().length();
        if (*length < 4096)
            rt::raise(rt::ErrInputPastEnd);
        block = opened().get(1, 4096);
    });
    next([&] { fileLength = rt::Long(length ? *length : opened().length()).value(); });
    file.reset();
    return scanMp3Block(block, fileLength, table, next.lastError() != 0);
}

FrameScanResult scanMp3Block(std::string_view block, double fileLength, const BitrateTable &table, bool errorsSoFar)
{
    rt::ResumeNext next;
    FrameScanResult result;

    std::string h = detail::frameHeaderText(block, next, false);

    // h is the header without its sync: version, layer, protection, bit rate index; then
    // sample rate, padding, private bit and the channel mode.
    int p = 0;
    int q = 0;
    next([&] { p = asc(mid(h, 1, 1)); });
    next([&] { q = asc(mid(h, 2, 1)); });
    const int version = (p & 128) / 128;
    const int layer = (p & 96) / 32;
    [[maybe_unused]] const int protection = p & 16;
    const int bitrateIndex = p & 15;
    // Left at bits 6 and 7, never shifted down: only 44100 and 22050 Hz come through below.
    const int sampleRateField = q & 192;
    const int padding = (q & 32) / 2;

    next([&] { result.LastBitrate = rt::Long(table.cell(layer | (version * 4), bitrateIndex)) * rt::Long(1000); });

    switch (sampleRateField | (version * 4)) {
    case 0: result.sampleRate = 22050; result.sampleRateSet = true; break;
    case 1: result.sampleRate = 24000; result.sampleRateSet = true; break;
    case 2: result.sampleRate = 16000; result.sampleRateSet = true; break;
    case 4: result.sampleRate = 44100; result.sampleRateSet = true; break;
    case 5: result.sampleRate = 48000; result.sampleRateSet = true; break;
    case 6: result.sampleRate = 32000; result.sampleRateSet = true; break;
    default: break;
    }

    // 144 for every version and layer, a padded first frame counts 16 bytes longer, and a
    // second has 38.5 frames whatever the sample rate.
    double frameLength = 0;
    double frames = 0;
    next([&] {
        frameLength = divide(144.0 * result.LastBitrate.value(), result.sampleRate.value()) + padding;
    });
    next([&] { frames = divide(fileLength, frameLength); });
    const double seconds = frames / 38.5;

    result.frames = rt::Int(frames);
    result.seconds = seconds;
    result.secondsText = rt::Str(rt::Int(seconds));

    std::string versionWord;
    if (version == 0)
        versionWord = "MPEG-2";
    else if (version == 1)
        versionWord = "MPEG-1";
    std::string layerWord;
    if (layer == 1)
        layerWord = "Layer III";
    else if (layer == 2)
        layerWord = "Layer II";
    else if (layer == 3)
        layerWord = "Layer I";
    result.report = "ID: " + versionWord + "\n" //
        + "Layer: " + layerWord + "\n" //
        + "Bitrate: " + rt::Str(result.LastBitrate.value()) + "\n" //
        + "Sample rate: " + rt::Str(result.sampleRate.value()) + "\n" //
        + "Frames: " + rt::Str(rt::Int(frames)) + "\n" //
        + "Duration: " + rt::Str(rt::Int(seconds)) + "secs";

    if (errorsSoFar || next.lastError() != 0)
        result.ScanErrorMark = "yes";
    return result;
}

} // namespace mp3
