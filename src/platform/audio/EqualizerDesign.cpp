#include "EqualizerDesign.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace platform::audio {

namespace {

// Between the points 100 Hz either side of an edge, the filter may move from one gain to the
// next; 180 Hz leaves a margin. 75 dB of side-lobe rejection keeps a 24 dB step's ripple below
// 0.2 dB at the smaller gain.
constexpr double TransitionHz = 180.0;
constexpr double RejectionDb = 75.0;
constexpr int MaxTaps = 16383;

double kaiserBeta()
{
    return 0.1102 * (RejectionDb - 8.7);
}

// The zeroth-order modified Bessel function of the first kind, by its series.
double besselI0(double x)
{
    double sum = 1.0;
    double term = 1.0;
    const double q = x * x / 4.0;
    for (int k = 1; k < 200; ++k) {
        term *= q / (static_cast<double>(k) * k);
        sum += term;
        if (term < sum * 1e-16)
            break;
    }
    return sum;
}

double gainOf(double db)
{
    if (!std::isfinite(db))
        db = 0;
    return std::pow(10.0, std::clamp(db, MinDesignGainDb, MaxDesignGainDb) / 20.0);
}

struct Step {
    double from;
    double to;
    double gain; // linear
};

// The wanted response as runs of constant gain covering 0 to half the rate.
std::vector<Step> staircase(const std::vector<EqBand> &bands, double nyquist)
{
    std::vector<double> edges{0.0, nyquist};
    for (const EqBand &b : bands) {
        for (double f : {b.low, b.high}) {
            if (std::isfinite(f))
                edges.push_back(std::clamp(f, 0.0, nyquist));
        }
    }
    std::sort(edges.begin(), edges.end());
    edges.erase(std::unique(edges.begin(), edges.end()), edges.end());

    std::vector<Step> steps;
    for (size_t i = 0; i + 1 < edges.size(); ++i) {
        const double mid = (edges[i] + edges[i + 1]) / 2;
        double gain = 1.0;
        for (const EqBand &b : bands) {
            const double lo = std::min(b.low, b.high);
            const double hi = std::max(b.low, b.high);
            if (mid >= lo && mid <= hi)
                gain = gainOf(b.gainDb);
        }
        if (!steps.empty() && steps.back().gain == gain)
            steps.back().to = edges[i + 1];
        else
            steps.push_back({edges[i], edges[i + 1], gain});
    }
    return steps;
}

} // namespace

int equalizerTaps(int sampleRate)
{
    const double rate = sampleRate > 0 ? sampleRate : 44100;
    const double width = 2 * std::numbers::pi * TransitionHz / rate;
    int taps = static_cast<int>(std::ceil((RejectionDb - 7.95) / (2.285 * width))) + 1;
    taps = std::clamp(taps, 3, MaxTaps);
    return taps | 1;
}

bool isFlat(const std::vector<EqBand> &bands)
{
    return std::all_of(bands.begin(), bands.end(), [](const EqBand &b) { return gainOf(b.gainDb) == 1.0; });
}

std::vector<float> designEqualizer(const std::vector<EqBand> &bands, int sampleRate, int taps)
{
    taps = std::max(1, taps | 1);
    const int delay = (taps - 1) / 2;
    std::vector<float> h(static_cast<size_t>(taps), 0.0f);
    if (isFlat(bands) || sampleRate <= 0) {
        h[static_cast<size_t>(delay)] = 1.0f;
        return h;
    }
    const double rate = sampleRate;
    const std::vector<Step> steps = staircase(bands, rate / 2);
    const double beta = kaiserBeta();
    const double norm = besselI0(beta);
    for (int k = 0; k < taps; ++k) {
        const int n = k - delay;
        double ideal = 0;
        for (const Step &s : steps) {
            if (n == 0) {
                ideal += s.gain * 2 * (s.to - s.from) / rate;
            } else {
                const double w = 2 * std::numbers::pi * n / rate;
                ideal += s.gain * (std::sin(w * s.to) - std::sin(w * s.from)) / (std::numbers::pi * n);
            }
        }
        const double r = delay > 0 ? static_cast<double>(n) / delay : 0.0;
        const double window = besselI0(beta * std::sqrt(std::max(0.0, 1 - r * r))) / norm;
        h[static_cast<size_t>(k)] = static_cast<float>(ideal * window);
    }
    return h;
}

double responseDb(const std::vector<float> &taps, double frequency, int sampleRate)
{
    double re = 0;
    double im = 0;
    const double w = 2 * std::numbers::pi * frequency / sampleRate;
    for (size_t k = 0; k < taps.size(); ++k) {
        re += taps[k] * std::cos(w * static_cast<double>(k));
        im -= taps[k] * std::sin(w * static_cast<double>(k));
    }
    return 20 * std::log10(std::max(std::hypot(re, im), 1e-30));
}

} // namespace platform::audio
