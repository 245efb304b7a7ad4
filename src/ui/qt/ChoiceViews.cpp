#include "ChoiceViews.h"

#include <QRadioButton>
#include <QSignalBlocker>
#include <QSpinBox>
#include <QTabBar>

#include "QtSupport.h"
#include "WindowView.h"
#include "ui/OptionButton.h"

namespace uiqt {

namespace {

class OptionButtonView : public ControlView {
public:
    OptionButtonView(ui::OptionButton &option, WindowView &window)
        : ControlView(option, window)
        , m_radio(new QRadioButton(window.canvas()))
    {
        // The control keeps one of its array marked; Qt's own grouping would cross arrays.
        m_radio->setAutoExclusive(false);
        setWidget(m_radio);
        QObject::connect(m_radio, &QRadioButton::clicked, this, [this] {
            if (!m_control || pushing())
                return;
            m_control->userClick();
            sync();
        });
    }

protected:
    void apply() override
    {
        auto &o = *static_cast<ui::OptionButton *>(m_control);
        if (m_radio->text() != qs(o.Caption()))
            m_radio->setText(qs(o.Caption()));
        if (m_radio->isChecked() != o.Value()) {
            QSignalBlocker block(m_radio);
            m_radio->setChecked(o.Value());
        }
    }

private:
    QRadioButton *m_radio;
};

// The arrows only: a spin box whose own text is hidden behind its buttons.
class SpinButtonView : public ControlView {
public:
    SpinButtonView(ui::SpinButton &spin, WindowView &window)
        : ControlView(spin, window)
        , m_spin(new QSpinBox(window.canvas()))
    {
        m_spin->setRange(-1000000, 1000000);
        m_spin->setStyleSheet("QSpinBox { color: transparent; selection-color: transparent; }");
        setWidget(m_spin);
        QObject::connect(m_spin, &QSpinBox::valueChanged, this, [this](int value) {
            if (!m_control || pushing())
                return;
            auto &s = *static_cast<ui::SpinButton *>(m_control);
            s.userStep(value > s.Value() ? 1 : -1);
            sync();
        });
    }

protected:
    void apply() override
    {
        auto &s = *static_cast<ui::SpinButton *>(m_control);
        if (m_spin->value() != s.Value()) {
            QSignalBlocker block(m_spin);
            m_spin->setValue(s.Value());
        }
    }

private:
    QSpinBox *m_spin;
};

class TabStripView : public ControlView {
public:
    TabStripView(ui::TabStrip &tabs, WindowView &window)
        : ControlView(tabs, window)
        , m_bar(new QTabBar(window.canvas()))
    {
        m_bar->setDrawBase(true);
        setWidget(m_bar);
    }

protected:
    void apply() override
    {
        const auto &tabs = static_cast<ui::TabStrip *>(m_control)->Tabs();
        if (m_bar->count() == static_cast<int>(tabs.size()))
            return;
        while (m_bar->count() > 0)
            m_bar->removeTab(0);
        for (const auto &t : tabs)
            m_bar->addTab(withoutMnemonic(t));
    }

private:
    QTabBar *m_bar;
};

} // namespace

std::unique_ptr<ControlView> makeChoiceView(ui::Control &control, WindowView &window)
{
    if (auto *c = dynamic_cast<ui::OptionButton *>(&control))
        return std::make_unique<OptionButtonView>(*c, window);
    if (auto *c = dynamic_cast<ui::SpinButton *>(&control))
        return std::make_unique<SpinButtonView>(*c, window);
    if (auto *c = dynamic_cast<ui::TabStrip *>(&control))
        return std::make_unique<TabStripView>(*c, window);
    return nullptr;
}

} // namespace uiqt
