#pragma once

#include <memory>

#include "SoundAnalyser.h"
#include "platform/AudioChain.h"

namespace platform::audio {

// The connector (`MMConnectorX1`): what the output plays goes to the two level meters and the
// spectrum. The views read it at their own pace through feeds that hold the analysis, so a view
// and the connector may go in either order. Speed is how many new spectra a second the view gets
// (25 when unset); the other settings are kept: the analysis always follows the sound as played.
class ConnectorComponent final : public Connector {
public:
    void setAutoConvert(bool on) override { m_autoConvert = on; }
    void setAutoTrigger(bool on) override { m_autoTrigger = on; }
    void setEnterIdle(bool on) override { m_enterIdle = on; }
    void setRealTime(bool on) override { m_realTime = on; }
    void setRefreshOnStop(bool on) override { m_refreshOnStop = on; }
    void setSpeed(int value) override { m_analyser->setRefreshesPerSecond(value); }
    void setTriggerLevel(int value) override { m_triggerLevel = value; }
    void setTriggerMode(int value) override { m_triggerMode = value; }
    // ui::LevelMeter controls; anything else is passed over.
    void setLevels(ui::Control *left, ui::Control *right) override;
    // A ui::SpectrumView control; anything else is passed over.
    void setSpectrum(ui::Control *spectrum) override;

    const std::shared_ptr<SoundAnalyser> &analyser() const { return m_analyser; }

private:
    std::shared_ptr<SoundAnalyser> m_analyser = std::make_shared<SoundAnalyser>();
    bool m_autoConvert = false;
    bool m_autoTrigger = false;
    bool m_enterIdle = false;
    bool m_realTime = true;
    bool m_refreshOnStop = true;
    int m_triggerLevel = 0;
    int m_triggerMode = 0;
};

} // namespace platform::audio
