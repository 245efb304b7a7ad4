#include "SoundAnalyser.h"

#include <algorithm>
#include <cmath>
#include <numbers>

#include "FftwPlans.h"

namespace platform::audio {

namespace {

void raisePeak(std::atomic<float> &peak, float value)
{
    float seen = peak.load(std::memory_order_relaxed);
    while (value > seen && !peak.compare_exchange_weak(seen, value, std::memory_order_relaxed)) {
    }
}

} // namespace

SoundAnalyser::SoundAnalyser()
{
    for (int i = 0; i < FftPoints; ++i)
        m_window[static_cast<size_t>(i)] = static_cast<float>(0.5 - 0.5 * std::cos(2 * std::numbers::pi * i / FftPoints));
}

SoundAnalyser::~SoundAnalyser() = default;

void SoundAnalyser::feed(const float *frames, size_t count)
{
    float left = 0;
    float right = 0;
    for (size_t i = 0; i < count; ++i) {
        left = std::max(left, std::fabs(frames[2 * i]));
        right = std::max(right, std::fabs(frames[2 * i + 1]));
    }
    raisePeak(m_peak[0], std::min(left, 1.0f));
    raisePeak(m_peak[1], std::min(right, 1.0f));

    std::unique_lock lock(m_historyLock, std::try_to_lock);
    if (!lock.owns_lock())
        return; // the view is copying: it gets these next time
    const size_t from = count > FftPoints ? count - FftPoints : 0;
    for (size_t i = from; i < count; ++i) {
        m_history[m_historyAt] = 0.5f * (frames[2 * i] + frames[2 * i + 1]);
        m_historyAt = (m_historyAt + 1) % FftPoints;
    }
}

void SoundAnalyser::setPlaying(bool playing)
{
    m_playing.store(playing, std::memory_order_release);
    if (!playing) {
        m_peak[0].store(0);
        m_peak[1].store(0);
    }
}

double SoundAnalyser::takePeak(int channel)
{
    if (channel < 0 || channel > 1)
        return 0;
    const float peak = m_peak[static_cast<size_t>(channel)].exchange(0.0f, std::memory_order_relaxed);
    return m_playing.load(std::memory_order_acquire) ? peak : 0.0;
}

void SoundAnalyser::setRefreshesPerSecond(int refreshes)
{
    m_refreshes.store(refreshes > 0 ? std::min(refreshes, 1000) : 25);
}

std::vector<float> SoundAnalyser::spectrum()
{
    std::lock_guard view(m_viewLock);
    if (!m_playing.load(std::memory_order_acquire)) {
        m_bins.clear();
        return {};
    }
    const auto now = std::chrono::steady_clock::now();
    const auto interval = std::chrono::microseconds(1000000 / m_refreshes.load());
    if (!m_bins.empty() && now - m_lastAnalysis < interval)
        return m_bins;
    m_lastAnalysis = now;

    if (!m_fft)
        m_fft = std::make_unique<RealFft>(FftPoints);
    float *in = m_fft->input();
    {
        std::lock_guard lock(m_historyLock);
        for (size_t i = 0; i < FftPoints; ++i)
            in[i] = m_history[(m_historyAt + i) % FftPoints];
    }
    for (size_t i = 0; i < FftPoints; ++i)
        in[i] *= m_window[i];
    m_fft->run();
    const fftwf_complex *out = m_fft->output();
    m_bins.resize(Bins);
    // A full-scale sine reads 1 at its bin: the Hann window passes half of its amplitude.
    const double scale = 4.0 / FftPoints;
    for (int k = 0; k < Bins; ++k) {
        const double magnitude = std::hypot(out[k][0], out[k][1]) * scale;
        const double db = 20 * std::log10(std::max(magnitude, 1e-12));
        m_bins[static_cast<size_t>(k)] = static_cast<float>(std::clamp((db - FloorDb) / -FloorDb, 0.0, 1.0));
    }
    return m_bins;
}

} // namespace platform::audio
