#pragma once

#include <QPointer>

#include "ControlView.h"
#include "FeedPoller.h"
#include "ui/BarDecay.h"

namespace ui {
class LevelMeter;
}

namespace uiqt {

class LevelMeterWidget;

// A level meter (`MMLevelX`): a horizontal row of spots lit up to the level, with the peak mark,
// fed at the screen's pace while it shows and has a feed.
class LevelMeterView : public ControlView {
public:
    LevelMeterView(ui::LevelMeter &meter, WindowView &window);
    ~LevelMeterView() override;

    const ui::BarDecay &state() const { return m_state; }

protected:
    void apply() override;
    bool widgetEvent(QWidget *part, QEvent *event) override;
    void detached() override;

private:
    void updatePolling();
    void tick(int elapsedMs);

    ui::BarDecay m_state;
    int m_resetsSeen = 0;
    // Guarded: the window's widgets may go before this view does.
    QPointer<LevelMeterWidget> m_meter;
    FeedPoller m_poller;
};

} // namespace uiqt
