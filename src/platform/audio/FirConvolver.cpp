#include "FirConvolver.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <numbers>

namespace platform::audio {

namespace {

int powerOfTwoAtLeast(int n)
{
    int p = 1;
    while (p < n)
        p *= 2;
    return p;
}

} // namespace

FirConvolver::FirConvolver(int taps, int channels, int minBlock, int minFftSize, const std::vector<float> &initial)
    : m_taps(std::max(1, taps | 1))
    , m_channels(std::max(1, channels))
    , m_fftSize(powerOfTwoAtLeast(std::max({m_taps - 1 + std::max(1, minBlock), minFftSize, 256})))
    , m_block(m_fftSize - m_taps + 1)
    , m_designFft(m_fftSize)
    , m_forward(m_fftSize)
    , m_inverse(m_fftSize)
    , m_inverseOld(m_fftSize)
{
    const size_t bins = static_cast<size_t>(m_fftSize / 2 + 1);
    for (Kernel &k : m_kernels)
        k.spectrum = allocComplex(bins);
    std::vector<float> first = initial;
    if (first.empty()) {
        // Until a filter is set, the sound passes delayed by the filter's half length.
        first.assign(static_cast<size_t>(m_taps), 0.0f);
        first[static_cast<size_t>(delay())] = 1.0f;
    }
    fillKernel(m_kernels[0], first);
    m_active = 0;
    m_inUse[0] = true;
    m_history.assign(static_cast<size_t>(m_channels), std::vector<float>(static_cast<size_t>(m_taps - 1), 0.0f));
    m_fadeCurve.resize(static_cast<size_t>(m_block));
    for (int i = 0; i < m_block; ++i)
        m_fadeCurve[static_cast<size_t>(i)] =
            static_cast<float>(0.5 - 0.5 * std::cos(std::numbers::pi * (i + 1) / m_block));
}

FirConvolver::~FirConvolver() = default;

void FirConvolver::fillKernel(Kernel &k, const std::vector<float> &kernel)
{
    float *in = m_designFft.input();
    std::fill(in, in + m_fftSize, 0.0f);
    const size_t n = std::min(kernel.size(), static_cast<size_t>(m_taps));
    std::copy(kernel.begin(), kernel.begin() + static_cast<std::ptrdiff_t>(n), in);
    bool delayOnly = true;
    for (int i = 0; i < m_taps && delayOnly; ++i)
        delayOnly = in[i] == (i == delay() ? 1.0f : 0.0f);
    m_designFft.run();
    // The inverse transform is unscaled: the kernel carries the 1/N.
    const float scale = 1.0f / static_cast<float>(m_fftSize);
    const fftwf_complex *spectrum = m_designFft.output();
    for (int b = 0; b < m_fftSize / 2 + 1; ++b) {
        k.spectrum[b][0] = spectrum[b][0] * scale;
        k.spectrum[b][1] = spectrum[b][1] * scale;
    }
    k.delayOnly = delayOnly;
}

void FirConvolver::setKernel(const std::vector<float> &kernel)
{
    // Made aside first, so the lock is held for a copy only.
    Kernel made;
    made.spectrum = allocComplex(static_cast<size_t>(m_fftSize / 2 + 1));
    fillKernel(made, kernel);

    std::lock_guard lock(m_handOver);
    int slot = -1;
    for (int s = 0; s < 3 && slot < 0; ++s) {
        if (!m_inUse[static_cast<size_t>(s)] && s != m_pending)
            slot = s;
    }
    if (slot < 0)
        slot = m_pending; // not yet taken by the audio: replaced by the newer one
    std::swap(m_kernels[static_cast<size_t>(slot)], made);
    m_pending = slot;
    m_hasPending.store(true, std::memory_order_release);
}

void FirConvolver::takeNewKernel()
{
    if (!m_hasPending.load(std::memory_order_acquire) || m_fadingFrom >= 0 || m_releaseDue)
        return;
    std::unique_lock lock(m_handOver, std::try_to_lock);
    if (!lock.owns_lock() || m_pending < 0)
        return;
    m_fadingFrom = m_active;
    m_active = m_pending;
    m_inUse[static_cast<size_t>(m_active)] = true;
    m_pending = -1;
    m_fadeDone = 0;
    m_hasPending.store(false, std::memory_order_relaxed);
}

void FirConvolver::releaseOldKernel()
{
    std::unique_lock lock(m_handOver, std::try_to_lock);
    if (!lock.owns_lock())
        return; // next block
    if (m_fadingFrom >= 0)
        m_inUse[static_cast<size_t>(m_fadingFrom)] = false;
    m_fadingFrom = -1;
    m_releaseDue = false;
}

void FirConvolver::reset()
{
    for (auto &h : m_history)
        std::fill(h.begin(), h.end(), 0.0f);
}

void FirConvolver::process(float *frames, size_t count)
{
    while (count > 0) {
        if (m_releaseDue)
            releaseOldKernel();
        takeNewKernel();
        const size_t n = std::min(count, static_cast<size_t>(m_block));
        processBlock(frames, n);
        frames += n * static_cast<size_t>(m_channels);
        count -= n;
    }
}

void FirConvolver::processBlock(float *frames, size_t count)
{
    const size_t ch = static_cast<size_t>(m_channels);
    const size_t keep = static_cast<size_t>(m_taps - 1);
    const size_t d = static_cast<size_t>(delay());
    const int bins = m_fftSize / 2 + 1;
    const bool fading = m_fadingFrom >= 0 && !m_releaseDue;
    const Kernel &active = m_kernels[static_cast<size_t>(m_active)];
    float *in = m_forward.input();

    for (size_t c = 0; c < ch; ++c) {
        std::vector<float> &history = m_history[c];
        std::copy(history.begin(), history.end(), in);
        for (size_t j = 0; j < count; ++j)
            in[keep + j] = frames[j * ch + c];
        std::fill(in + keep + count, in + m_fftSize, 0.0f);

        if (active.delayOnly && !fading) {
            for (size_t j = 0; j < count; ++j)
                frames[j * ch + c] = in[keep + j - d];
        } else {
            m_forward.run();
            const fftwf_complex *x = m_forward.output();
            auto multiply = [&](const Kernel &k, InverseRealFft &inverse) {
                fftwf_complex *y = inverse.input();
                for (int b = 0; b < bins; ++b) {
                    const float re = x[b][0] * k.spectrum[b][0] - x[b][1] * k.spectrum[b][1];
                    const float im = x[b][0] * k.spectrum[b][1] + x[b][1] * k.spectrum[b][0];
                    y[b][0] = re;
                    y[b][1] = im;
                }
                inverse.run();
            };
            multiply(active, m_inverse);
            const float *now = m_inverse.output() + keep;
            if (fading) {
                multiply(m_kernels[static_cast<size_t>(m_fadingFrom)], m_inverseOld);
                const float *before = m_inverseOld.output() + keep;
                for (size_t j = 0; j < count; ++j) {
                    const size_t at = std::min(m_fadeDone + j, m_fadeCurve.size() - 1);
                    frames[j * ch + c] = before[j] + (now[j] - before[j]) * m_fadeCurve[at];
                }
            } else {
                for (size_t j = 0; j < count; ++j)
                    frames[j * ch + c] = now[j];
            }
        }
        // The input is left as it was by the forward transform: the newest taps - 1 samples
        // are the history of the next block.
        std::copy(in + count, in + count + keep, history.begin());
    }

    if (fading) {
        m_fadeDone += count;
        if (m_fadeDone >= static_cast<size_t>(m_block)) {
            m_releaseDue = true;
            releaseOldKernel();
        }
    }
}

} // namespace platform::audio
