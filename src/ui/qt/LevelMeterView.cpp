#include "LevelMeterView.h"

#include <algorithm>
#include <cmath>

#include <QEvent>
#include <QPainter>
#include <QWidget>

#include "WindowView.h"
#include "ui/LevelMeter.h"

namespace uiqt {

namespace {

// The meters' design: spots three pixels wide, a peak mark two spots wide, white lit and gray
// unlit spots up to Point2, the component's own red above it.
constexpr int SpotWidth = 3;
constexpr int SpotGap = 1;
constexpr int NumPeaks = 2;
const QColor Background(Qt::black);
const QColor Bar1Color(Qt::white);
const QColor Bar3Color(Qt::red);
const QColor Inactive1Color(128, 128, 128);
const QColor Inactive3Color(128, 0, 0);

} // namespace

class LevelMeterWidget : public QWidget {
public:
    LevelMeterWidget(const ui::BarDecay &state, QWidget *parent)
        : QWidget(parent)
        , m_state(&state)
    {
        setAttribute(Qt::WA_OpaquePaintEvent);
    }
    int point2 = 80;
    // The view goes: the meter shows silence from now on.
    void forgetState() { m_state = nullptr; }

protected:
    void paintEvent(QPaintEvent *) override
    {
        QPainter p(this);
        p.fillRect(rect(), Background);
        const int pitch = SpotWidth + SpotGap;
        const int spots = std::max(1, (width() + SpotGap) / pitch);
        const double level = m_state ? m_state->level(0) : 0.0;
        const double peak = m_state ? m_state->peak(0) : 0.0;
        const int lit = static_cast<int>(std::lround(level * spots));
        const int peakSpot = static_cast<int>(std::lround(peak * spots)) - 1;
        const int top = height() > 4 ? 1 : 0;
        const int h = std::max(1, height() - 2 * top);
        for (int i = 0; i < spots; ++i) {
            const bool high = (i + 0.5) * 100.0 / spots >= point2;
            const bool on = i < lit || (peakSpot >= 0 && i <= peakSpot && i > peakSpot - NumPeaks);
            const QColor &colour = on ? (high ? Bar3Color : Bar1Color) : (high ? Inactive3Color : Inactive1Color);
            p.fillRect(i * pitch, top, SpotWidth, h, colour);
        }
    }

private:
    const ui::BarDecay *m_state;
};

LevelMeterView::LevelMeterView(ui::LevelMeter &meter, WindowView &window)
    : ControlView(meter, window)
    , m_meter(new LevelMeterWidget(m_state, window.canvas()))
    , m_poller([this](int elapsedMs) { tick(elapsedMs); })
{
    setWidget(m_meter);
}

LevelMeterView::~LevelMeterView()
{
    m_poller.setActive(false);
    if (m_meter)
        m_meter->forgetState();
}

void LevelMeterView::apply()
{
    auto &meter = *static_cast<ui::LevelMeter *>(m_control);
    if (!m_meter)
        return;
    ui::BarDecay::Settings settings = m_state.settings();
    settings.decay = meter.Decay();
    m_state.setSettings(settings);
    m_meter->point2 = meter.Point2();
    // Without a feed the meter falls silent at once rather than freezing at its last level.
    if ((!meter.hasFeed() || meter.resets() != m_resetsSeen) && m_state.count() > 0) {
        m_state.reset();
        m_meter->update();
    }
    m_resetsSeen = meter.resets();
    updatePolling();
}

void LevelMeterView::updatePolling()
{
    auto *meter = static_cast<ui::LevelMeter *>(m_control);
    m_poller.setActive(meter && m_meter && meter->hasFeed() && m_meter->isVisible());
}

void LevelMeterView::tick(int elapsedMs)
{
    auto *meter = static_cast<ui::LevelMeter *>(m_control);
    if (!meter || !m_meter || !meter->hasFeed() || !m_meter->isVisible()) {
        m_poller.setActive(false);
        return;
    }
    const bool wasSilent = m_state.silent();
    m_state.advance({meter->readPeak()}, elapsedMs);
    // A meter at rest that reads silence again shows the same picture: nothing to draw.
    const bool resting = wasSilent && m_state.silent();
    m_poller.setResting(resting);
    if (resting)
        return;
    m_meter->update();
}

bool LevelMeterView::widgetEvent(QWidget *part, QEvent *event)
{
    if (part == m_meter && (event->type() == QEvent::Show || event->type() == QEvent::Hide))
        updatePolling();
    return false;
}

void LevelMeterView::detached()
{
    m_poller.setActive(false);
}

} // namespace uiqt
