#include "SpectrumBarsView.h"

#include <algorithm>
#include <cmath>

#include <QEvent>
#include <QPainter>
#include <QWidget>

#include "WindowView.h"
#include "ui/SpectrumBands.h"
#include "ui/SpectrumView.h"

namespace uiqt {

namespace {

// The spectrum's design: white bars up to Point1, silver up to Point2, the component's own red
// above; bars and marks drawn dotted (every other pixel line); a teal grid on black.
const QColor Background(Qt::black);
const QColor GridColor(0, 128, 128);
const QColor Bar1Color(Qt::white);
const QColor Bar2Color(192, 192, 192);
const QColor Bar3Color(Qt::red);
// Grid lines at every tenth of the height and every eighth of the width.
constexpr int GridRows = 10;
constexpr int GridColumns = 8;

} // namespace

class SpectrumWidget : public QWidget {
public:
    SpectrumWidget(const ui::BarDecay &state, QWidget *parent)
        : QWidget(parent)
        , m_state(&state)
    {
        setAttribute(Qt::WA_OpaquePaintEvent);
    }
    // The view goes: the spectrum shows its grid alone from now on.
    void forgetState() { m_state = nullptr; }
    int space = 4;
    int point1 = 70;
    int point2 = 80;

    // The bars that fit the widget's width now.
    int barRoom() const { return ui::spectrumBarRoom(width(), space); }

protected:
    void paintEvent(QPaintEvent *) override
    {
        QPainter p(this);
        p.fillRect(rect(), Background);
        const int w = width(), h = height();
        p.setPen(GridColor);
        for (int i = 1; i < GridRows; ++i)
            p.drawLine(0, h * i / GridRows, w - 1, h * i / GridRows);
        for (int i = 1; i < GridColumns; ++i)
            p.drawLine(w * i / GridColumns, 0, w * i / GridColumns, h - 1);
        p.setPen(Qt::NoPen);

        const int bars = m_state ? m_state->count() : 0;
        if (bars == 0 || h <= 0)
            return;
        const int gap = std::max(space, 0);
        const double barWidth = std::max(1.0, (w - gap * (bars - 1)) / static_cast<double>(bars));
        for (int bar = 0; bar < bars; ++bar) {
            const int left = static_cast<int>(std::lround(bar * (barWidth + gap)));
            const int right = static_cast<int>(std::lround(bar * (barWidth + gap) + barWidth));
            const int bw = std::max(1, right - left);
            const int top = h - static_cast<int>(std::lround(m_state->level(bar) * h));
            // Dotted: the lines of even distance from the bottom are drawn, the others left dark.
            for (int y = h - 1; y >= top; y -= 2)
                p.fillRect(left, y, bw, 1, colourAt(h - y, h));
            const int peakHeight = static_cast<int>(std::lround(m_state->peak(bar) * h));
            if (peakHeight > 0) {
                const int y = std::clamp(h - peakHeight, 0, h - 1);
                p.fillRect(left, y, bw, 1, colourAt(peakHeight, h));
            }
        }
    }

private:
    QColor colourAt(int fromBottom, int h) const
    {
        const double percent = fromBottom * 100.0 / h;
        return percent > point2 ? Bar3Color : percent > point1 ? Bar2Color : Bar1Color;
    }

    const ui::BarDecay *m_state;
};

SpectrumBarsView::SpectrumBarsView(ui::SpectrumView &spectrum, WindowView &window)
    : ControlView(spectrum, window)
    , m_bars(new SpectrumWidget(m_state, window.canvas()))
    , m_poller([this](int elapsedMs) { tick(elapsedMs); })
{
    setWidget(m_bars);
}

SpectrumBarsView::~SpectrumBarsView()
{
    m_poller.setActive(false);
    if (m_bars)
        m_bars->forgetState();
}

void SpectrumBarsView::apply()
{
    auto &s = *static_cast<ui::SpectrumView *>(m_control);
    if (!m_bars)
        return;
    m_state.setSettings({s.Decay(), s.PeakDelay(), s.PeakSpeed()});
    m_bars->space = s.Space();
    m_bars->point1 = s.Point1();
    m_bars->point2 = s.Point2();
    if (!s.hasFeed() && m_state.count() > 0) {
        m_state.advance({}, 0);
        m_bars->update();
    }
    updatePolling();
}

void SpectrumBarsView::updatePolling()
{
    auto *s = static_cast<ui::SpectrumView *>(m_control);
    m_poller.setActive(s && m_bars && s->hasFeed() && m_bars->isVisible());
}

void SpectrumBarsView::tick(int elapsedMs)
{
    auto *s = static_cast<ui::SpectrumView *>(m_control);
    if (!s || !m_bars || !s->hasFeed() || !m_bars->isVisible()) {
        m_poller.setActive(false);
        return;
    }
    const std::vector<double> bars = ui::spectrumBars(s->readBins(), s->FrequencyScale(), m_bars->barRoom());
    // Nothing playing: the bars fall away as they would to silence.
    const bool wasSilent = m_state.silent();
    m_state.advance(bars.empty() ? std::vector<double>(m_state.count(), 0.0) : bars, elapsedMs);
    // Once every bar is down, the picture is the grid alone: nothing to draw again until sound comes.
    const bool resting = wasSilent && m_state.silent();
    m_poller.setResting(resting);
    if (resting)
        return;
    m_bars->update();
}

bool SpectrumBarsView::widgetEvent(QWidget *part, QEvent *event)
{
    if (part == m_bars && (event->type() == QEvent::Show || event->type() == QEvent::Hide))
        updatePolling();
    return false;
}

void SpectrumBarsView::detached()
{
    m_poller.setActive(false);
}

} // namespace uiqt
