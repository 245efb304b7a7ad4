#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "PlayPosition.h"
#include "SampleRing.h"
#include "StreamMarks.h"

namespace platform::audio {

class FirConvolver;
class SoundAnalyser;

// The device's side of the chain, run on the audio thread: takes the decoded sound from the
// ring, carries out the seeks and loops the decoder marked in it, runs the equaliser, feeds the
// analyser and tells the position. The equaliser's delay is made up for: what comes out is the
// sound from the position on, sample for sample, and at the end its tail is played out. An empty
// ring before the end plays silence and goes on where it was: nothing is skipped or repeated.
class PlayerRenderer {
public:
    // `equalizer` and `analyser` may be null. Frames are interleaved stereo.
    PlayerRenderer(SampleRing &ring, StreamMarks &marks, PlayPosition &position, FirConvolver *equalizer,
                   SoundAnalyser *analyser);

    struct Result {
        size_t sound = 0;      // frames of sound before the end; the rest of the buffer is silence
        bool finished = false; // the end has been played into this buffer (or before)
    };
    Result render(float *out, size_t frames);

    // Frames of silence played because the decoder was late.
    uint64_t underrunFrames() const { return m_underrun; }

private:
    void applySeeks(size_t frames);
    void restart(int64_t position);
    void advancePosition(size_t frames);

    SampleRing &m_ring;
    StreamMarks &m_marks;
    PlayPosition &m_position;
    FirConvolver *m_equalizer;
    SoundAnalyser *m_analyser;
    const size_t m_delay;
    std::vector<float> m_scratch;

    size_t m_primeLeft = 0; // outputs still to drop after a restart: the equaliser's delay
    size_t m_tailLeft = 0;  // silence still to feed at the end to play the delay out
    bool m_finished = false;

    // Outputs since the last restart and the position they stand for; loops wait here until the
    // output reaches them.
    struct Base {
        uint64_t output = 0;
        int64_t position = 0;
    };
    uint64_t m_inputs = 0;
    uint64_t m_outputs = 0;
    Base m_base;
    std::array<Base, 4> m_loops{};
    size_t m_loopCount = 0;
    uint64_t m_underrun = 0;
};

} // namespace platform::audio
