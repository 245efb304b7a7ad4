#include "EqualizerEngine.h"

#include <algorithm>
#include <cmath>

#include "FirConvolver.h"
#include "runtime/RuntimeError.h"

namespace platform::audio {

namespace {

// FFT lengths kept to what makes sense for a filter of about a thousand taps.
int fftHint(int points)
{
    return points > 0 ? std::min(points, 1 << 16) : 0;
}

} // namespace

EqualizerEngine::EqualizerEngine() = default;
EqualizerEngine::~EqualizerEngine() = default;

void EqualizerEngine::addBand(double low, double high, double gainDb)
{
    if (!std::isfinite(low))
        low = 0;
    if (!std::isfinite(high))
        high = 0;
    if (low > high)
        std::swap(low, high);
    m_bands.push_back({std::max(low, 0.0), std::max(high, 0.0), gainDb});
    redesign();
}

double EqualizerEngine::gain(int index) const
{
    if (index < 0 || index >= bandCount())
        rt::raise(rt::ErrSubscript);
    return m_bands[static_cast<size_t>(index)].gainDb;
}

void EqualizerEngine::setGain(int index, double gainDb)
{
    if (index < 0 || index >= bandCount())
        rt::raise(rt::ErrSubscript);
    if (m_bands[static_cast<size_t>(index)].gainDb == gainDb)
        return;
    m_bands[static_cast<size_t>(index)].gainDb = gainDb;
    redesign();
}

void EqualizerEngine::setGains(const std::map<int, double> &gains)
{
    bool changed = false;
    for (const auto &[index, gainDb] : gains) {
        if (index >= 0 && index < bandCount() && m_bands[static_cast<size_t>(index)].gainDb != gainDb) {
            m_bands[static_cast<size_t>(index)].gainDb = gainDb;
            changed = true;
        }
    }
    if (changed)
        redesign();
}

std::vector<double> EqualizerEngine::gains() const
{
    std::vector<double> g;
    for (const EqBand &b : m_bands)
        g.push_back(b.gainDb);
    return g;
}

void EqualizerEngine::redesign()
{
    if (m_convolver)
        m_convolver->setKernel(designEqualizer(m_bands, m_rate, m_convolver->taps()));
}

FirConvolver *EqualizerEngine::prepare(int sampleRate, int blockFrames)
{
    const int fft = fftHint(m_fftLength);
    if (!m_convolver || m_rate != sampleRate || m_block != blockFrames || m_fft != fft) {
        m_convolver.reset();
        const int taps = equalizerTaps(sampleRate);
        m_convolver = std::make_unique<FirConvolver>(taps, 2, blockFrames, fft,
                                                     designEqualizer(m_bands, sampleRate, taps));
        m_rate = sampleRate;
        m_block = blockFrames;
        m_fft = fft;
    }
    return m_convolver.get();
}

} // namespace platform::audio
