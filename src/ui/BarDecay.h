#pragma once

#include <vector>

namespace ui {

// What a row of meter bars shows from one reading to the next: a bar steps up at once to a
// louder reading and falls back at its decay speed; over each bar a peak mark holds a while and
// then falls. Plain arithmetic on the time that passed, so that the views only paint it.
class BarDecay {
public:
    // The meters' design values, in their own units.
    struct Settings {
        // Tenths of a second a bar takes to fall the whole scale; 0 or less falls at once.
        int decay = 7;
        // Tenths of a second a peak mark holds before it falls; 0 or less doesn't hold.
        int peakDelay = 7;
        // Percent of the scale a falling peak mark drops per tenth of a second; 0 or less stays.
        int peakSpeed = 7;
    };

    BarDecay() = default;
    explicit BarDecay(Settings settings) : m_settings(settings) {}
    const Settings &settings() const { return m_settings; }
    void setSettings(Settings settings) { m_settings = settings; }

    // Takes the newest readings, one a bar, each 0.0 to 1.0 (others are taken as the nearest
    // end, not-a-number as silence), `elapsedMs` after the last. A change of the number of bars
    // keeps the bars that stay; new ones start silent.
    void advance(const std::vector<double> &readings, int elapsedMs);
    // All bars and marks silent.
    void reset();

    int count() const { return static_cast<int>(m_bars.size()); }
    // Every bar and mark at the bottom: nothing moves until a reading is above silence.
    bool silent() const;
    // 0.0 to 1.0; 0.0 outside the row.
    double level(int bar) const;
    double peak(int bar) const;

private:
    struct Bar {
        double level = 0.0;
        double peak = 0.0;
        int holdLeftMs = 0;
    };
    void advanceBar(Bar &bar, double reading, int elapsedMs) const;

    Settings m_settings;
    std::vector<Bar> m_bars;
};

} // namespace ui
