#pragma once

#include <array>
#include <atomic>
#include <chrono>
#include <cstddef>
#include <memory>
#include <mutex>
#include <vector>

namespace platform::audio {

class RealFft;

// What the level meters and the spectrum show of the sound being played. The audio thread feeds
// it; the views read it at the screen's pace through the connector's feeds, which keep it alive
// whoever goes first. Neither side waits for the other.
class SoundAnalyser {
public:
    static constexpr int FftPoints = 256;
    static constexpr int Bins = FftPoints / 2;
    // The spectrum's scale: FloorDb and below read 0, full scale (0 dB) reads 1.
    static constexpr double FloorDb = -60.0;

    SoundAnalyser();
    ~SoundAnalyser();

    // Audio thread: interleaved stereo frames as they are played.
    void feed(const float *frames, size_t count);
    // Playing starts or ends; while nothing plays the spectrum is empty and the meters read 0.
    void setPlaying(bool playing);

    // The peak of a channel (0 left, 1 right) since its last read, 0 to 1 of full scale.
    double takePeak(int channel);
    // The magnitudes of the latest 256 frames (the two channels mixed, Hann window), one per
    // bin from 0 Hz up to half the rate, each 0 to 1 on the dB scale above. A new analysis is
    // made at most `refreshes` times a second; between them the last one is returned.
    std::vector<float> spectrum();
    void setRefreshesPerSecond(int refreshes);

private:
    std::array<std::atomic<float>, 2> m_peak{};
    std::atomic<bool> m_playing{false};
    std::atomic<int> m_refreshes{25};

    // The newest samples, oldest first from m_historyAt; the audio side only tries the lock.
    std::mutex m_historyLock;
    std::array<float, FftPoints> m_history{};
    size_t m_historyAt = 0;

    // View side.
    std::mutex m_viewLock;
    std::unique_ptr<RealFft> m_fft;
    std::array<float, FftPoints> m_window{};
    std::vector<float> m_bins;
    std::chrono::steady_clock::time_point m_lastAnalysis{};
};

} // namespace platform::audio
