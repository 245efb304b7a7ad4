#include "SpectrumBands.h"

#include <algorithm>
#include <cmath>

namespace ui {

std::vector<double> spectrumBars(const std::vector<float> &bins, int frequencyScale, int maxBars)
{
    const int tones = static_cast<int>(bins.size()) - 1;
    if (tones <= 0 || maxBars <= 0)
        return {};
    const int scale = std::max(frequencyScale, 1);
    const int shown = std::max(1, (tones + scale - 1) / scale);
    const int bars = std::min(shown, maxBars);
    std::vector<double> out(bars, 0.0);
    for (int bar = 0; bar < bars; ++bar) {
        // Bins [first, last) of the shown ones; every bin lands in exactly one bar.
        const long long first = static_cast<long long>(bar) * shown / bars;
        const long long last = static_cast<long long>(bar + 1) * shown / bars;
        double loudest = 0.0;
        for (long long b = first; b < last; ++b) {
            const float v = bins[static_cast<size_t>(b) + 1];
            if (!std::isnan(v))
                loudest = std::max(loudest, static_cast<double>(v));
        }
        out[bar] = std::clamp(loudest, 0.0, 1.0);
    }
    return out;
}

int spectrumBarRoom(int width, int space)
{
    const int gap = std::max(space, 0);
    if (width <= 0)
        return 0;
    return (width + gap) / (1 + gap);
}

} // namespace ui
