// The views of the kit's simple control kinds; the list has its own file.
#include <QAction>
#include <QCheckBox>
#include <QComboBox>
#include <QFileInfo>
#include <QFont>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QMouseEvent>
#include <QPalette>
#include <QPixmap>
#include <QPlainTextEdit>
#include <QProgressBar>
#include <QPushButton>
#include <QSignalBlocker>
#include <QSlider>
#include <QToolBar>

#include "ChoiceViews.h"
#include "ControlView.h"
#include "LevelMeterView.h"
#include "ListBoxView.h"
#include "SpectrumBarsView.h"
#include "TreeWidgetView.h"
#include "QtSupport.h"
#include "WindowView.h"
#include "ui/AppContext.h"
#include "ui/Button.h"
#include "ui/CheckBox.h"
#include "ui/ComboBox.h"
#include "ui/HyperLink.h"
#include "ui/Label.h"
#include "ui/LevelMeter.h"
#include "ui/ListBox.h"
#include "ui/MenuItem.h"
#include "ui/Meter.h"
#include "ui/PictureBox.h"
#include "ui/ImageBox.h"
#include "ImageBoxView.h"
#include "ui/SpectrumView.h"
#include "ui/StatusBar.h"
#include "ui/TextBox.h"
#include "ui/Timer.h"
#include "ui/ToolBar.h"
#include "ui/TreeView.h"

namespace uiqt {

using namespace ui;

namespace {

QString picturePath(const Control &c, const std::string &path)
{
    return localPath(path, c.owner().app().appPath());
}

// Click and DblClick of controls that have no click of their own in Qt (labels, frames,
// pictures): a left release inside the control is a click.
bool clickEvent(Control *&control, QWidget *widget, QEvent *event)
{
    if (!control)
        return false;
    if (event->type() == QEvent::MouseButtonRelease) {
        auto *me = static_cast<QMouseEvent *>(event);
        if (me->button() == Qt::LeftButton && control->Click && widget->rect().contains(me->position().toPoint()))
            control->userClick();
    } else if (event->type() == QEvent::MouseButtonDblClick) {
        auto *me = static_cast<QMouseEvent *>(event);
        if (me->button() == Qt::LeftButton && control->DblClick)
            control->userDblClick();
    }
    return false;
}

class LabelView : public ControlView {
public:
    LabelView(Label &label, WindowView &window)
        : ControlView(label, window)
    {
        if (label.isFrame()) {
            m_group = new QGroupBox(window.canvas());
            setWidget(m_group);
        } else {
            m_label = new QLabel(window.canvas());
            m_label->setTextFormat(Qt::PlainText);
            m_label->setWordWrap(true);
            m_label->setAlignment(Qt::AlignLeft | Qt::AlignTop);
            setWidget(m_label);
        }
    }

protected:
    void apply() override
    {
        const auto &caption = static_cast<Label *>(m_control)->Caption();
        if (m_group) {
            if (m_group->title() != qs(caption))
                m_group->setTitle(qs(caption));
        } else {
            const QString text = withoutMnemonic(caption);
            if (m_label->text() != text)
                m_label->setText(text);
        }
    }
    bool widgetEvent(QWidget *part, QEvent *event) override { return clickEvent(m_control, part, event); }

private:
    QLabel *m_label = nullptr;
    QGroupBox *m_group = nullptr;
};

class ButtonView : public ControlView {
public:
    ButtonView(Button &button, WindowView &window)
        : ControlView(button, window)
        , m_button(new QPushButton(window.canvas()))
    {
        m_button->setAutoDefault(false);
        setWidget(m_button);
        QObject::connect(m_button, &QPushButton::clicked, this, [this] {
            if (m_control && !pushing())
                m_control->userClick();
        });
    }

protected:
    void apply() override
    {
        auto &b = *static_cast<Button *>(m_control);
        if (m_button->text() != qs(b.Caption()))
            m_button->setText(qs(b.Caption()));
        if (b.Picture() != m_picture) {
            m_picture = b.Picture();
            const QString path = picturePath(b, m_picture);
            QPixmap pm;
            if (!path.isEmpty() && QFileInfo::exists(path))
                pm.load(path);
            m_button->setIcon(pm.isNull() ? QIcon() : QIcon(pm));
            if (!pm.isNull())
                m_button->setIconSize(pm.size().boundedTo(kitRect().size() - QSize(8, 8)));
        }
    }

private:
    QPushButton *m_button;
    std::string m_picture;
};

class HyperLinkView : public ControlView {
public:
    HyperLinkView(HyperLink &link, WindowView &window)
        : ControlView(link, window)
        , m_label(new QLabel(window.canvas()))
    {
        // Drawn as a link by hand: a rich-text anchor would open the address itself, and
        // what a click does is the window's business.
        m_label->setTextFormat(Qt::PlainText);
        m_label->setAlignment(Qt::AlignLeft | Qt::AlignTop);
        m_label->setCursor(Qt::PointingHandCursor);
        QFont font = m_label->font();
        font.setUnderline(true);
        m_label->setFont(font);
        QPalette palette = m_label->palette();
        for (auto group : {QPalette::Active, QPalette::Inactive})
            palette.setColor(group, QPalette::WindowText, palette.color(group, QPalette::Link));
        m_label->setPalette(palette);
        setWidget(m_label);
    }

protected:
    void apply() override
    {
        auto &link = *static_cast<HyperLink *>(m_control);
        const QString text = withoutMnemonic(link.Caption());
        if (m_label->text() != text)
            m_label->setText(text);
        // Without a tip of its own the link tells where it leads.
        if (link.ToolTipText().empty() && m_label->toolTip() != qs(link.Address()))
            m_label->setToolTip(qs(link.Address()));
    }
    bool widgetEvent(QWidget *part, QEvent *event) override
    {
        // A disabled link (or one in a disabled frame) is text, nothing more.
        if (m_control && m_label->isEnabled() && event->type() == QEvent::MouseButtonRelease) {
            auto *me = static_cast<QMouseEvent *>(event);
            if (me->button() == Qt::LeftButton && part->rect().contains(me->position().toPoint()))
                m_control->userClick();
        }
        return false;
    }

private:
    QLabel *m_label;
};

class CheckBoxView : public ControlView {
public:
    CheckBoxView(CheckBox &check, WindowView &window)
        : ControlView(check, window)
        , m_check(new QCheckBox(window.canvas()))
    {
        setWidget(m_check);
        QObject::connect(m_check, &QCheckBox::clicked, this, [this] {
            if (!m_control || pushing())
                return;
            m_control->userClick();
            // Qt ticked the box already; the control says what it shows.
            sync();
        });
    }

protected:
    void apply() override
    {
        auto &c = *static_cast<CheckBox *>(m_control);
        if (m_check->text() != qs(c.Caption()))
            m_check->setText(qs(c.Caption()));
        const Qt::CheckState state = c.Value() == 1 ? Qt::Checked : c.Value() == 2 ? Qt::PartiallyChecked : Qt::Unchecked;
        if (m_check->checkState() != state) {
            QSignalBlocker block(m_check);
            m_check->setCheckState(state);
        }
    }

private:
    QCheckBox *m_check;
};

class ComboView : public ControlView {
public:
    ComboView(ComboBox &combo, WindowView &window)
        : ControlView(combo, window)
        , m_combo(new QComboBox(window.canvas()))
    {
        m_combo->setEditable(true);
        // The text is the control's: no entries added on Enter, no completion of its own.
        m_combo->setInsertPolicy(QComboBox::NoInsert);
        m_combo->setCompleter(nullptr);
        setWidget(m_combo);
        watchMouse(m_combo->lineEdit());
        QObject::connect(m_combo, &QComboBox::activated, this, [this](int index) {
            if (!m_control || pushing())
                return;
            static_cast<ComboBox *>(m_control)->userPick(ss(m_combo->itemText(index)));
            sync();
        });
        QObject::connect(m_combo->lineEdit(), &QLineEdit::textEdited, this, [this](const QString &text) {
            if (!m_control || pushing())
                return;
            static_cast<ComboBox *>(m_control)->userType(ss(text));
            sync();
        });
    }

    void place() override
    {
        // A combo is as high as its font makes it, whatever Height says.
        QRect r = kitRect();
        r.setHeight(m_combo->sizeHint().height());
        if (m_combo->geometry() != r)
            m_combo->setGeometry(r);
    }

protected:
    void apply() override
    {
        auto &c = *static_cast<ComboBox *>(m_control);
        QSignalBlocker block(m_combo);
        bool same = m_combo->count() == c.ListCount();
        for (int i = 0; same && i < c.ListCount(); ++i)
            same = m_combo->itemText(i) == qs(c.List(i));
        if (!same) {
            m_combo->clear();
            for (int i = 0; i < c.ListCount(); ++i)
                m_combo->addItem(qs(c.List(i)));
        }
        if (m_combo->currentIndex() != c.ListIndex())
            m_combo->setCurrentIndex(c.ListIndex());
        // The text needn't be one of the entries.
        const QString text = qs(c.Text());
        if (m_combo->lineEdit()->text() != text)
            m_combo->lineEdit()->setText(text);
    }

private:
    QComboBox *m_combo;
};

class MeterView : public ControlView {
public:
    MeterView(Meter &meter, WindowView &window)
        : ControlView(meter, window)
    {
        if (meter.style() == Meter::Style::Slider) {
            m_slider = new QSlider(Qt::Horizontal, window.canvas());
            // Change comes when the thumb is let go, not at every step of a drag.
            m_slider->setTracking(false);
            setWidget(m_slider);
            QObject::connect(m_slider, &QSlider::valueChanged, this, [this](int value) {
                if (!m_control || pushing())
                    return;
                static_cast<Meter *>(m_control)->userSlide(value);
                sync();
            });
            // Taking and letting go of the thumb are the slider's mouse down and up; the value it
            // was let go at is in place before the up.
            QObject::connect(m_slider, &QSlider::sliderPressed, this, [this] {
                if (m_control)
                    m_control->userMouse("down", LeftButton, 0, 0);
            });
            QObject::connect(m_slider, &QSlider::sliderReleased, this, [this] {
                if (!m_control)
                    return;
                static_cast<Meter *>(m_control)->userSlide(m_slider->sliderPosition());
                if (m_control)
                    m_control->userMouse("up", LeftButton, 0, 0);
                sync();
            });
        } else {
            m_bar = new QProgressBar(window.canvas());
            m_bar->setTextVisible(false);
            setWidget(m_bar);
        }
    }

protected:
    void apply() override
    {
        auto &m = *static_cast<Meter *>(m_control);
        const Qt::Orientation orientation = m.vertical() ? Qt::Vertical : Qt::Horizontal;
        if (m_slider) {
            QSignalBlocker block(m_slider);
            if (m_slider->orientation() != orientation) {
                m_slider->setOrientation(orientation);
                // A vertical slider has Min at the top, unless the model puts Max there.
                m_slider->setInvertedAppearance(m.vertical() && !m.maxAtTop());
                m_slider->setInvertedControls(m.vertical() && !m.maxAtTop());
            }
            if (m_slider->minimum() != m.Min() || m_slider->maximum() != m.Max())
                m_slider->setRange(m.Min(), m.Max());
            if (m_slider->value() != m.Value())
                m_slider->setValue(m.Value());
        } else {
            if (m_bar->orientation() != orientation)
                m_bar->setOrientation(orientation);
            m_bar->setTextVisible(!m.Caption().empty());
            m_bar->setFormat(QString::fromStdString(m.Caption()));
            // An empty range would make Qt's bar a busy indicator.
            const int max = m.Max() > m.Min() ? m.Max() : m.Min() + 1;
            if (m_bar->minimum() != m.Min() || m_bar->maximum() != max)
                m_bar->setRange(m.Min(), max);
            if (m_bar->value() != m.Value())
                m_bar->setValue(m.Value());
        }
    }

private:
    QProgressBar *m_bar = nullptr;
    QSlider *m_slider = nullptr;
};

class TextBoxView : public ControlView {
public:
    TextBoxView(TextBox &text, WindowView &window)
        : ControlView(text, window)
    {
        if (text.MultiLine()) {
            m_memo = new QPlainTextEdit(window.canvas());
            setWidget(m_memo);
            watchMouse(m_memo->viewport());
            QObject::connect(m_memo, &QPlainTextEdit::textChanged, this, [this] {
                if (!m_control || pushing())
                    return;
                static_cast<TextBox *>(m_control)->userType(fromEditorText(m_memo->toPlainText()));
                sync();
            });
        } else {
            m_line = new QLineEdit(window.canvas());
            setWidget(m_line);
            QObject::connect(m_line, &QLineEdit::textEdited, this, [this](const QString &text) {
                if (!m_control || pushing())
                    return;
                static_cast<TextBox *>(m_control)->userType(ss(text));
                sync();
            });
        }
    }

protected:
    void apply() override
    {
        auto &t = *static_cast<TextBox *>(m_control);
        if (m_memo) {
            const QString text = toEditorText(t.Text());
            if (m_memo->toPlainText() != text)
                m_memo->setPlainText(text);
            if (m_memo->isReadOnly() != t.Locked())
                m_memo->setReadOnly(t.Locked());
        } else {
            const QString text = qs(t.Text());
            if (m_line->text() != text) {
                const int cursor = m_line->cursorPosition();
                m_line->setText(text);
                if (m_line->hasFocus())
                    m_line->setCursorPosition(std::min<int>(cursor, text.size()));
            }
            if (m_line->isReadOnly() != t.Locked())
                m_line->setReadOnly(t.Locked());
        }
    }

private:
    QLineEdit *m_line = nullptr;
    QPlainTextEdit *m_memo = nullptr;
};

class StatusBarView : public ControlView {
public:
    StatusBarView(StatusBar &bar, WindowView &window)
        : ControlView(bar, window)
        , m_row(new QFrame(window.canvas()))
    {
        auto *layout = new QHBoxLayout(m_row);
        layout->setContentsMargins(2, 2, 2, 2);
        layout->setSpacing(2);
        for (int i = 0; i < bar.panelCount(); ++i) {
            auto *panel = new QLabel(m_row);
            panel->setTextFormat(Qt::PlainText);
            panel->setFrameStyle(QFrame::Panel | QFrame::Sunken);
            panel->setObjectName(QStringLiteral("panel%1").arg(i + 1));
            layout->addWidget(panel, 1);
            m_panels.push_back(panel);
        }
        setWidget(m_row);
    }

    // Docked along the bottom of the window, across its whole width.
    void place() override
    {
        QWidget *parent = m_row->parentWidget();
        if (!parent || !m_control)
            return;
        const int height = std::max(toPixels(m_control->Height()), m_row->minimumSizeHint().height());
        const QRect r(0, parent->height() - height, parent->width(), height);
        if (m_row->geometry() != r)
            m_row->setGeometry(r);
    }

protected:
    void apply() override
    {
        auto &bar = *static_cast<StatusBar *>(m_control);
        for (int i = 0; i < bar.panelCount() && i < static_cast<int>(m_panels.size()); ++i) {
            const QString text = qs(bar.Panel(i + 1));
            if (m_panels[i]->text() != text)
                m_panels[i]->setText(text);
        }
    }

private:
    QFrame *m_row;
    std::vector<QLabel *> m_panels;
};

class ToolBarView : public ControlView {
public:
    ToolBarView(ToolBar &bar, WindowView &window)
        : ControlView(bar, window)
        , m_bar(new QToolBar(window.canvas()))
    {
        m_bar->setMovable(false);
        m_bar->setFloatable(false);
        setWidget(m_bar);
    }

    // Docked along the top of the window, across its whole width.
    void place() override
    {
        QWidget *parent = m_bar->parentWidget();
        if (!parent)
            return;
        const QRect r(0, 0, parent->width(), m_bar->sizeHint().height());
        if (m_bar->geometry() != r)
            m_bar->setGeometry(r);
    }

protected:
    void apply() override
    {
        auto &bar = *static_cast<ToolBar *>(m_control);
        const auto &items = bar.items();
        // Buttons are only ever added; their enabled states change.
        std::string enabled;
        for (const auto &item : items)
            enabled += item.enabled ? '1' : '0';
        if (static_cast<int>(items.size()) == m_built) {
            if (enabled != m_enabled) {
                m_enabled = enabled;
                const auto actions = m_bar->actions();
                for (int i = 0; i < static_cast<int>(items.size()) && i < actions.size(); ++i)
                    actions[i]->setEnabled(items[i].enabled);
            }
            return;
        }
        m_enabled = enabled;
        m_bar->clear();
        bool pictures = false;
        for (int i = 0; i < static_cast<int>(items.size()); ++i) {
            const auto &item = items[i];
            if (item.gap) {
                m_bar->addSeparator();
                continue;
            }
            QAction *action = m_bar->addAction(qs(item.caption.empty() ? item.toolTip : item.caption));
            action->setToolTip(qs(item.toolTip.empty() ? item.caption : item.toolTip));
            const QString path = picturePath(bar, item.picture);
            if (!path.isEmpty() && QFileInfo::exists(path)) {
                action->setIcon(QIcon(path));
                pictures = true;
            }
            action->setEnabled(item.enabled);
            const int number = i + 1;
            QObject::connect(action, &QAction::triggered, this, [this, number] {
                if (m_control && !pushing())
                    static_cast<ToolBar *>(m_control)->userButton(number);
            });
        }
        m_bar->setToolButtonStyle(pictures ? Qt::ToolButtonTextUnderIcon : Qt::ToolButtonTextOnly);
        m_built = static_cast<int>(items.size());
        place();
    }

private:
    QToolBar *m_bar;
    int m_built = -1;
    std::string m_enabled;
};

class PictureBoxView : public ControlView {
public:
    PictureBoxView(PictureBox &picture, WindowView &window)
        : ControlView(picture, window)
        , m_label(new QLabel(window.canvas()))
    {
        m_label->setAlignment(Qt::AlignCenter);
        setWidget(m_label);
    }

protected:
    void apply() override
    {
        auto &p = *static_cast<PictureBox *>(m_control);
        bool rescale = m_label->size() != m_scaledFor;
        if (p.Picture() != m_path) {
            m_path = p.Picture();
            const QString path = picturePath(p, m_path);
            m_source = QPixmap();
            if (!path.isEmpty() && QFileInfo::exists(path))
                m_source.load(path);
            rescale = true;
        }
        if (rescale) {
            m_scaledFor = m_label->size();
            if (m_source.isNull() || m_scaledFor.isEmpty())
                m_label->clear();
            else
                m_label->setPixmap(m_source.scaled(m_scaledFor, Qt::KeepAspectRatio, Qt::SmoothTransformation));
        }
    }
    bool widgetEvent(QWidget *part, QEvent *event) override { return clickEvent(m_control, part, event); }

private:
    QLabel *m_label;
    std::string m_path;
    QPixmap m_source;
    QSize m_scaledFor;
};

} // namespace

std::unique_ptr<ControlView> makeControlView(Control &control, WindowView &window)
{
    if (dynamic_cast<MenuItem *>(&control) || dynamic_cast<Timer *>(&control))
        return nullptr;
    if (auto view = makeChoiceView(control, window))
        return view;
    if (auto *c = dynamic_cast<Label *>(&control))
        return std::make_unique<LabelView>(*c, window);
    if (auto *c = dynamic_cast<Button *>(&control))
        return std::make_unique<ButtonView>(*c, window);
    if (auto *c = dynamic_cast<HyperLink *>(&control))
        return std::make_unique<HyperLinkView>(*c, window);
    if (auto *c = dynamic_cast<CheckBox *>(&control))
        return std::make_unique<CheckBoxView>(*c, window);
    if (auto *c = dynamic_cast<ComboBox *>(&control))
        return std::make_unique<ComboView>(*c, window);
    if (auto *c = dynamic_cast<ListBox *>(&control))
        return std::make_unique<ListBoxView>(*c, window);
    if (auto *c = dynamic_cast<Meter *>(&control))
        return std::make_unique<MeterView>(*c, window);
    if (auto *c = dynamic_cast<TextBox *>(&control))
        return std::make_unique<TextBoxView>(*c, window);
    if (auto *c = dynamic_cast<StatusBar *>(&control))
        return std::make_unique<StatusBarView>(*c, window);
    if (auto *c = dynamic_cast<ToolBar *>(&control))
        return std::make_unique<ToolBarView>(*c, window);
    if (auto *c = dynamic_cast<PictureBox *>(&control))
        return std::make_unique<PictureBoxView>(*c, window);
    if (auto *c = dynamic_cast<TreeView *>(&control))
        return std::make_unique<TreeWidgetView>(*c, window);
    if (auto *c = dynamic_cast<LevelMeter *>(&control))
        return std::make_unique<LevelMeterView>(*c, window);
    if (auto *c = dynamic_cast<SpectrumView *>(&control))
        return std::make_unique<SpectrumBarsView>(*c, window);
    if (auto *c = dynamic_cast<ImageBox *>(&control))
        return makeImageBoxView(*c, window);
    return nullptr;
}

} // namespace uiqt
