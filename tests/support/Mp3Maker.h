#pragma once

#include <optional>
#include <string>

namespace testsupport {

// A real MP3 of a 440 Hz test tone, encoded with libmp3lame.
struct Mp3Options {
    int sampleRate = 44100;
    int kbps = 128;          // constant bit rate; not used for a variable-rate file
    double seconds = 2.0;
    int channels = 2;        // 1 or 2 (2 is joint stereo, as the encoder chooses by default)
    bool vbr = false;        // variable bit rate with a Xing header at the start
    // When set, a 128-byte ID3v1 tag with this title (Windows-1252) is appended: the other text
    // fields blank, genre 12. Fields are padded with blanks.
    std::optional<std::string> id3v1Title;
    // When above 0, an ID3v2.3 tag of exactly this many bytes comes first: a 10-byte header with
    // its sync-safe size, one TIT2 frame and zero padding (at least 21 bytes).
    int id3v2Bytes = 0;
};

// Writes the file; the path may use "\" between folders as the logic's paths do. False when
// the encoder refuses the settings or the file can't be written. The encoder's Info/Xing tag
// frame is put in place at the start of the audio, as the lame tool does.
bool makeMp3(const std::string &path, const Mp3Options &options);

} // namespace testsupport
