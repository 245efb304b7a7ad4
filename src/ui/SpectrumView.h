#pragma once

#include <functional>
#include <vector>

#include "Control.h"

namespace ui {

// A bar spectrum (`MMSpectrumX`): bars of what its feed reports, read at the screen's pace by the
// view, with the decay and the falling peaks of its design values.
class SpectrumView : public Control {
public:
    SpectrumView(Window &owner, std::string name, int index = -1);
    const char *kind() const override;

    // The feed gives the magnitudes of the latest analysis, one per bin from 0 Hz up to half the
    // sample rate, each 0.0 to 1.0 on the meter's log scale; empty when nothing plays.
    void setFeed(std::function<std::vector<float>()> feed);
    bool hasFeed() const { return static_cast<bool>(m_feed); }
    std::vector<float> readBins() const;

    // Design values.
    int Decay() const { return m_decay; }
    void setDecay(int v) { m_decay = v; }
    int PeakDelay() const { return m_peakDelay; }
    void setPeakDelay(int v) { m_peakDelay = v; }
    int PeakSpeed() const { return m_peakSpeed; }
    void setPeakSpeed(int v) { m_peakSpeed = v; }
    int Space() const { return m_space; }
    void setSpace(int v) { m_space = v; }
    int FrequencyScale() const { return m_frequencyScale; }
    void setFrequencyScale(int v) { m_frequencyScale = v; }
    int Point1() const { return m_point1; }
    void setPoint1(int v) { m_point1 = v; }
    int Point2() const { return m_point2; }
    void setPoint2(int v) { m_point2 = v; }

    // "Bins": the bin count of the latest read; "Peak": the index of the strongest bin.
    std::optional<std::string> property(const std::string &name, const Args &args) const override;
    std::vector<std::string> propertyNames() const override;

private:
    std::function<std::vector<float>()> m_feed;
    int m_decay = 7;
    int m_peakDelay = 7;
    int m_peakSpeed = 7;
    int m_space = 4;
    int m_frequencyScale = 4;
    int m_point1 = 70;
    int m_point2 = 80;
};

} // namespace ui
