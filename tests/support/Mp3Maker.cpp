#include "Mp3Maker.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <fstream>
#include <memory>
#include <numbers>
#include <vector>

#include <lame/lame.h>

#include "runtime/Paths.h"
#include "runtime/Strings.h"

namespace testsupport {

namespace {

struct LameCloser {
    void operator()(lame_global_flags *gfp) const { lame_close(gfp); }
};
using Lame = std::unique_ptr<lame_global_flags, LameCloser>;

std::string id3v2Tag(int totalBytes)
{
    if (totalBytes < 21 || totalBytes - 10 >= (1 << 28))
        return {};
    std::string tag = "ID3";
    tag += '\x03';
    tag += '\x00';
    tag += '\x00'; // no flags
    const uint32_t size = static_cast<uint32_t>(totalBytes - 10);
    for (int shift = 21; shift >= 0; shift -= 7)
        tag += static_cast<char>((size >> shift) & 0x7F);
    // TIT2: encoding byte 0 (Latin-1) and the text, shortened to fit a small tag.
    std::string text = "Test tone";
    const size_t room = static_cast<size_t>(totalBytes - 10 - 10 - 1);
    if (text.size() > room)
        text.resize(room);
    const uint32_t frameSize = static_cast<uint32_t>(text.size() + 1);
    tag += "TIT2";
    for (int shift = 24; shift >= 0; shift -= 8)
        tag += static_cast<char>((frameSize >> shift) & 0xFF);
    tag += '\x00';
    tag += '\x00';
    tag += '\x00';
    tag += text;
    tag.resize(static_cast<size_t>(totalBytes), '\0');
    return tag;
}

std::string id3v1Tag(const std::string &title)
{
    std::string tag = "TAG";
    std::string field = rt::toAnsi(title);
    field.resize(30, ' ');
    tag += field;
    tag += std::string(30 + 30 + 4 + 30, ' '); // artist, album, year, comment
    tag += static_cast<char>(12);
    return tag;
}

} // namespace

bool makeMp3(const std::string &path, const Mp3Options &options)
{
    if (options.channels != 1 && options.channels != 2)
        return false;
    if (options.sampleRate <= 0 || options.seconds < 0)
        return false;
    std::string leading;
    if (options.id3v2Bytes > 0) {
        leading = id3v2Tag(options.id3v2Bytes);
        if (leading.empty())
            return false;
    }

    Lame lame(lame_init());
    if (!lame)
        return false;
    lame_global_flags *gfp = lame.get();
    lame_set_in_samplerate(gfp, options.sampleRate);
    lame_set_out_samplerate(gfp, options.sampleRate);
    lame_set_num_channels(gfp, options.channels);
    lame_set_mode(gfp, options.channels == 1 ? MONO : JOINT_STEREO);
    lame_set_quality(gfp, 7);
    lame_set_bWriteVbrTag(gfp, 1);
    lame_set_write_id3tag_automatic(gfp, 0);
    if (options.vbr) {
        lame_set_VBR(gfp, vbr_default);
        lame_set_VBR_quality(gfp, 4);
    } else {
        lame_set_VBR(gfp, vbr_off);
        lame_set_brate(gfp, options.kbps);
    }
    if (lame_init_params(gfp) < 0)
        return false;

    // The tone, half scale, the same on both channels.
    const size_t total = static_cast<size_t>(std::llround(options.seconds * options.sampleRate));
    const size_t chunk = 1152 * 8;
    std::vector<float> samples(chunk);
    std::vector<unsigned char> out(chunk + chunk / 4 + 7200);
    std::vector<unsigned char> stream;
    const double step = 2.0 * std::numbers::pi * 440.0 / options.sampleRate;
    for (size_t done = 0; done < total;) {
        const size_t n = std::min(chunk, total - done);
        for (size_t k = 0; k < n; ++k)
            samples[k] = static_cast<float>(0.5 * std::sin(step * static_cast<double>(done + k)));
        const int bytes = lame_encode_buffer_ieee_float(gfp, samples.data(), samples.data(), static_cast<int>(n),
                                                         out.data(), static_cast<int>(out.size()));
        if (bytes < 0)
            return false;
        stream.insert(stream.end(), out.begin(), out.begin() + bytes);
        done += n;
    }
    const int flushed = lame_encode_flush(gfp, out.data(), static_cast<int>(out.size()));
    if (flushed < 0)
        return false;
    stream.insert(stream.end(), out.begin(), out.begin() + flushed);

    // The encoder left room for its tag frame at the start of the audio; fill it in.
    std::vector<unsigned char> tagFrame(2880);
    const size_t tagBytes = lame_get_lametag_frame(gfp, tagFrame.data(), tagFrame.size());
    if (tagBytes > tagFrame.size() || tagBytes > stream.size())
        return false;
    std::copy(tagFrame.begin(), tagFrame.begin() + static_cast<std::ptrdiff_t>(tagBytes), stream.begin());

    std::ofstream file(rt::nativePath(path), std::ios::binary | std::ios::trunc);
    if (!file)
        return false;
    file.write(leading.data(), static_cast<std::streamsize>(leading.size()));
    file.write(reinterpret_cast<const char *>(stream.data()), static_cast<std::streamsize>(stream.size()));
    if (options.id3v1Title) {
        const std::string tag = id3v1Tag(*options.id3v1Title);
        file.write(tag.data(), static_cast<std::streamsize>(tag.size()));
    }
    file.close();
    return static_cast<bool>(file);
}

} // namespace testsupport
