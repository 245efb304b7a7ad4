#pragma once

#include <QPointer>

#include "ControlView.h"
#include "FeedPoller.h"
#include "ui/BarDecay.h"

namespace ui {
class SpectrumView;
}

namespace uiqt {

class SpectrumWidget;

// A bar spectrum (`MMSpectrumX`): bars over a teal grid on black, with falling peaks, fed at
// the screen's pace while it shows and has a feed.
class SpectrumBarsView : public ControlView {
public:
    SpectrumBarsView(ui::SpectrumView &spectrum, WindowView &window);
    ~SpectrumBarsView() override;

    const ui::BarDecay &state() const { return m_state; }

protected:
    void apply() override;
    bool widgetEvent(QWidget *part, QEvent *event) override;
    void detached() override;

private:
    void updatePolling();
    void tick(int elapsedMs);

    ui::BarDecay m_state;
    // Guarded: the window's widgets may go before this view does.
    QPointer<SpectrumWidget> m_bars;
    FeedPoller m_poller;
};

} // namespace uiqt
