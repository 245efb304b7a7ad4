#pragma once

#include <functional>

#include "Control.h"

namespace ui {

// A peak level meter (`MMLevelX`): it shows what its feed reports, read at the screen's pace by
// the view, never pushed by the audio.
class LevelMeter : public Control {
public:
    LevelMeter(Window &owner, std::string name, int index = -1);
    const char *kind() const override;

    // The feed gives the peak since its last read, 0.0 (silence) to 1.0 (full scale). Set by the
    // connector that feeds the meter; without one the meter shows silence.
    void setFeed(std::function<double()> feed);
    bool hasFeed() const { return static_cast<bool>(m_feed); }
    // Reads the feed once (0.0 without one).
    double readPeak() const;

    // Drops what the bar shows to nothing at once (`Reset`); the view follows the count.
    void Reset();
    int resets() const { return m_resets; }

    // Design values the view draws with.
    int Decay() const { return m_decay; }
    void setDecay(int steps) { m_decay = steps; }
    int Point2() const { return m_point2; }
    void setPoint2(int percent) { m_point2 = percent; }

    // "Value": the peak in percent of full scale, as read now.
    std::optional<std::string> property(const std::string &name, const Args &args) const override;
    std::vector<std::string> propertyNames() const override;

private:
    std::function<double()> m_feed;
    int m_decay = 9;
    int m_point2 = 80;
    int m_resets = 0;
};

} // namespace ui
