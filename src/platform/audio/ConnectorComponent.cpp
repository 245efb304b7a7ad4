#include "ConnectorComponent.h"

#include "ui/LevelMeter.h"
#include "ui/SpectrumView.h"

namespace platform::audio {

void ConnectorComponent::setLevels(ui::Control *left, ui::Control *right)
{
    int channel = 0;
    for (ui::Control *c : {left, right}) {
        if (auto *meter = dynamic_cast<ui::LevelMeter *>(c)) {
            meter->setFeed([analyser = m_analyser, channel] { return analyser->takePeak(channel); });
        }
        ++channel;
    }
}

void ConnectorComponent::setSpectrum(ui::Control *spectrum)
{
    if (auto *view = dynamic_cast<ui::SpectrumView *>(spectrum))
        view->setFeed([analyser = m_analyser] { return analyser->spectrum(); });
}

} // namespace platform::audio
