#pragma once

#include <string>

namespace testsupport {

// A real wave file of a 440 Hz test tone at half scale (1000 Hz on the right channel of a
// stereo file), written with libsndfile.
struct WaveOptions {
    int sampleRate = 44100;
    int channels = 2;
    int bits = 16;   // 8, 16, 24 or 32 bit PCM
    double seconds = 2.0;
};

// False when the file can't be written.
bool makeWave(const std::string &path, const WaveOptions &options);

} // namespace testsupport
