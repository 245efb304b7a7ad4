#include "BarDecay.h"

#include <algorithm>
#include <cmath>

namespace ui {

namespace {

double clampReading(double v)
{
    if (std::isnan(v))
        return 0.0;
    return std::clamp(v, 0.0, 1.0);
}

} // namespace

void BarDecay::advance(const std::vector<double> &readings, int elapsedMs)
{
    if (readings.size() != m_bars.size())
        m_bars.resize(readings.size());
    const int elapsed = std::max(elapsedMs, 0);
    for (size_t i = 0; i < readings.size(); ++i)
        advanceBar(m_bars[i], clampReading(readings[i]), elapsed);
}

void BarDecay::advanceBar(Bar &bar, double reading, int elapsedMs) const
{
    // Step up: a louder reading shows at once; a quieter one is approached at the decay speed.
    if (reading >= bar.level || m_settings.decay <= 0)
        bar.level = reading;
    else
        bar.level = std::max(reading, bar.level - elapsedMs / (m_settings.decay * 100.0));

    if (bar.level >= bar.peak) {
        bar.peak = bar.level;
        bar.holdLeftMs = std::max(m_settings.peakDelay, 0) * 100;
        return;
    }
    // What is left of the hold is spent first; the rest of the time the mark falls.
    const int held = std::min(elapsedMs, bar.holdLeftMs);
    bar.holdLeftMs -= held;
    const int falling = elapsedMs - held;
    if (falling > 0 && m_settings.peakSpeed > 0)
        bar.peak -= m_settings.peakSpeed / 100.0 * (falling / 100.0);
    // A mark never sinks into its bar: it rides on top of it.
    bar.peak = std::max(bar.peak, bar.level);
}

bool BarDecay::silent() const
{
    return std::all_of(m_bars.begin(), m_bars.end(), [](const Bar &b) { return b.level <= 0.0 && b.peak <= 0.0; });
}

void BarDecay::reset()
{
    for (Bar &bar : m_bars)
        bar = Bar{};
}

double BarDecay::level(int bar) const
{
    return bar >= 0 && bar < count() ? m_bars[bar].level : 0.0;
}

double BarDecay::peak(int bar) const
{
    return bar >= 0 && bar < count() ? m_bars[bar].peak : 0.0;
}

} // namespace ui
