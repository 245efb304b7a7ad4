#pragma once

#include <array>
#include <atomic>
#include <cstddef>
#include <memory>
#include <mutex>
#include <vector>

#include "FftwPlans.h"

namespace platform::audio {

// A long FIR run as fast convolution (overlap-save, FFTW) on interleaved frames. A new filter
// replaces the old one by a cross-fade over one block, so a change of gain never clicks.
// setKernel runs on one thread (the window's), process on another (the audio's); the hand-over
// never makes the audio wait.
class FirConvolver {
public:
    // `taps` odd; `channels` interleaved. The FFT is the power of two that holds the filter and a
    // block of at least `minBlock` frames, and at least `minFftSize` points. The first filter
    // is `initial` (empty: a pure delay of half the length).
    FirConvolver(int taps, int channels, int minBlock, int minFftSize = 0, const std::vector<float> &initial = {});
    ~FirConvolver();
    FirConvolver(const FirConvolver &) = delete;
    FirConvolver &operator=(const FirConvolver &) = delete;

    int taps() const { return m_taps; }
    int delay() const { return (m_taps - 1) / 2; }
    int fftSize() const { return m_fftSize; }
    // Frames one transform handles; also the length of a cross-fade.
    int blockFrames() const { return m_block; }

    // The filter from now on (taps values; shorter is padded, longer is cut); it fades in.
    void setKernel(const std::vector<float> &kernel);

    // Filters `frames` frames in place. Audio thread only.
    void process(float *frames, size_t count);
    // Forgets the signal so far (a jump in the sound). Audio thread only.
    void reset();

private:
    struct Kernel {
        ComplexBuffer spectrum;
        bool delayOnly = false;
    };
    // Window side: the spectrum of a filter into a slot.
    void fillKernel(Kernel &k, const std::vector<float> &kernel);
    void takeNewKernel();
    void releaseOldKernel();
    void processBlock(float *frames, size_t count);

    const int m_taps;
    const int m_channels;
    int m_fftSize = 0;
    int m_block = 0;

    // Three kernels: the audio uses at most two (during a fade), one is free for the next.
    std::array<Kernel, 3> m_kernels;
    std::mutex m_handOver;
    int m_pending = -1;            // under m_handOver
    std::array<bool, 3> m_inUse{}; // under m_handOver: what the audio may read
    std::atomic<bool> m_hasPending{false};

    // Window side.
    RealFft m_designFft;

    // Audio side.
    int m_active = -1;
    int m_fadingFrom = -1;
    size_t m_fadeDone = 0;
    bool m_releaseDue = false;
    RealFft m_forward;
    InverseRealFft m_inverse;
    InverseRealFft m_inverseOld;
    std::vector<std::vector<float>> m_history; // per channel, taps - 1 samples
    std::vector<float> m_fadeCurve;
};

} // namespace platform::audio
