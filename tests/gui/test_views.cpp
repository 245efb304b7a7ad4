// The Qt views of the kit: what the logic sets shows in the widgets, and what the user does
// in the widgets reaches the logic through the controls' user-action entry points.
#include <atomic>
#include <filesystem>
#include <fstream>
#include <string>
#include <thread>

#include <QAction>
#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QFileDialog>
#include <QGroupBox>
#include <QImage>
#include <QLabel>
#include <QLineEdit>
#include <QMainWindow>
#include <QMenu>
#include <QMenuBar>
#include <QMessageBox>
#include <QMouseEvent>
#include <QPlainTextEdit>
#include <QProgressBar>
#include <QPushButton>
#include <QSlider>
#include <QTest>
#include <QTimer>
#include <QToolBar>
#include <QToolButton>
#include <QTreeView>

#include <gtest/gtest.h>

#include "platform/Components.h"
#include "ui/AppContext.h"
#include "ui/Button.h"
#include "ui/CheckBox.h"
#include "ui/ComboBox.h"
#include "ui/HyperLink.h"
#include "ui/Label.h"
#include "ui/ListBox.h"
#include "ui/MenuItem.h"
#include "ui/Meter.h"
#include "ui/PictureBox.h"
#include "ui/ScriptedServices.h"
#include "ui/StatusBar.h"
#include "ui/TextBox.h"
#include "ui/Timer.h"
#include "ui/ToolBar.h"
#include "ui/qt/QtDialogs.h"
#include "ui/qt/QtEventLoop.h"
#include "ui/qt/QtFrontEnd.h"
#include "ui/qt/QtMessageBoxes.h"
#include "ui/qt/WindowView.h"
#include "QtTestEnvironment.h"

namespace {

const auto *const environment = ::testing::AddGlobalTestEnvironment(new QtTestEnvironment("gui_view_tests"));

// A window with one control of every kind.
class ViewTestWindow : public ui::Window {
public:
    static constexpr const char *formName = "ViewTest";
    explicit ViewTestWindow(ui::AppContext &app)
        : Window(app, formName)
        , mnuFile(*this, "mnuFile", "&File")
        , mnuOpen(*this, "mnuOpen", "&Open", &mnuFile)
        , mnuSep(*this, "mnuSep", "-", &mnuFile)
        , mnuLoop(*this, "mnuLoop", "&Loop", &mnuFile)
        , tools(*this, "tools")
        , frame(*this, "Frame1")
        , inFrame(*this, "Label1")
        , button(*this, "cmdGo")
        , check(*this, "chkLoop")
        , combo(*this, "cmbSpeed")
        , list(*this, "mainlist")
        , meter(*this, "ctMeter1")
        , progress(*this, "pbDone", ui::Meter::Style::ProgressBar)
        , slider(*this, "Slider1", ui::Meter::Style::Slider)
        , text(*this, "Text1")
        , memo(*this, "Text2")
        , picture(*this, "Picture1")
        , link(*this, "ctHyperLink1")
        , status(*this, "StatusBar1", 3)
        , timer(*this, "Timer1", 0, false)
    {
        setCaption("View test");
        setGeometry(0, 0, 9000, 7500);
        tools.addItem({"New", "Make a new list", {}, false});
        tools.addItem({{}, {}, {}, true});
        tools.addItem({{}, "Open a list", {}, false});
        frame.setFrame(true);
        frame.setCaption("Options");
        frame.setGeometry(120, 600, 3000, 1200);
        inFrame.setCaption("In the &frame");
        inFrame.setGeometry(120, 300, 2000, 255);
        inFrame.setContainer(&frame);
        button.setCaption("&Go");
        button.setGeometry(120, 1900, 1200, 375);
        check.setCaption("Loop");
        check.setGeometry(120, 2400, 1500, 300);
        combo.setGeometry(120, 2800, 2000, 315);
        list.setColumnHeaders({"CD Burn List", "Track Time"});
        list.setGeometry(3300, 600, 5400, 3000);
        meter.setGeometry(120, 3300, 2000, 300);
        progress.setGeometry(120, 3700, 300, 1500);
        progress.setVertical(true);
        slider.setGeometry(600, 3700, 2400, 450);
        text.setGeometry(3300, 3800, 3000, 315);
        memo.setMultiLine(true);
        memo.setGeometry(3300, 4200, 3000, 900);
        picture.setGeometry(600, 4300, 1500, 1500);
        link.setGeometry(3300, 5300, 3000, 300);
    }

    ui::MenuItem mnuFile, mnuOpen, mnuSep, mnuLoop;
    ui::ToolBar tools;
    ui::Label frame, inFrame;
    ui::Button button;
    ui::CheckBox check;
    ui::ComboBox combo;
    ui::ListBox list;
    ui::Meter meter, progress, slider;
    ui::TextBox text, memo;
    ui::PictureBox picture;
    ui::HyperLink link;
    ui::StatusBar status;
    ui::Timer timer;
};

class Views : public ::testing::Test {
protected:
    void SetUp() override
    {
        w = &app.form<ViewTestWindow>();
        w->Show();
        QCoreApplication::processEvents();
    }
    void TearDown() override { QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete); }

    uiqt::WindowView &view() { return *frontEnd.view(*w); }
    template <class W>
    W *widget(const ui::Control &c)
    {
        return qobject_cast<W *>(view().widgetFor(c));
    }

    uiqt::QtEventLoop loop;
    ui::ScriptedMessageBoxes boxes;
    ui::ScriptedDialogs dialogs;
    platform::Components components;
    ui::AppContext app{loop, boxes, dialogs, components, "/tmp"};
    uiqt::QtFrontEnd frontEnd{app};
    ViewTestWindow *w = nullptr;
};

QString cell(QAbstractItemModel *m, int row, int column)
{
    return m->data(m->index(row, column)).toString();
}

TEST_F(Views, ListShowsTenThousandRowsFromTheModel)
{
    for (int i = 0; i < 10000; ++i)
        w->list.AddItem("Track " + std::to_string(i) + ";" + std::to_string(i % 60) + ":00");
    auto *tree = widget<QTreeView>(w->list);
    ASSERT_NE(tree, nullptr);
    QAbstractItemModel *m = tree->model();
    EXPECT_EQ(m->rowCount(), 10000);
    EXPECT_EQ(m->columnCount(), 2);
    EXPECT_EQ(cell(m, 9999, 0), "Track 9999");
    EXPECT_EQ(cell(m, 9999, 1), "39:00");
    EXPECT_EQ(m->headerData(1, Qt::Horizontal).toString(), "Track Time");
    EXPECT_FALSE(tree->isHeaderHidden());
    // Rows are painted from the model; no widget is made per row.
    EXPECT_LT(tree->findChildren<QWidget *>().size(), 30);

    w->list.setList(5, "Changed;1:00");
    EXPECT_EQ(cell(m, 5, 0), "Changed");
    w->list.RemoveItem(0);
    EXPECT_EQ(m->rowCount(), 9999);
    EXPECT_EQ(cell(m, 0, 0), "Track 1");
    w->list.AddItem("First;0:01", 0);
    EXPECT_EQ(m->rowCount(), 10000);
    EXPECT_EQ(cell(m, 0, 0), "First");
    EXPECT_EQ(cell(m, 1, 0), "Track 1");

    w->list.setRowImage(3, 1);
    const auto mark = [&](int row) { return qvariant_cast<QIcon>(m->data(m->index(row, 0), Qt::DecorationRole)); };
    EXPECT_FALSE(mark(3).isNull());
    EXPECT_NE(mark(3).cacheKey(), mark(4).cacheKey());
    EXPECT_EQ(mark(4).cacheKey(), mark(5).cacheKey());

    w->list.setListIndex(9000);
    EXPECT_TRUE(tree->selectionModel()->isRowSelected(9000, {}));
    // The current row is scrolled into sight.
    EXPECT_TRUE(tree->viewport()->rect().intersects(tree->visualRect(m->index(9000, 0))));
    // Something else changing on the list leaves the rows alone.
    w->list.setToolTipText("The burn list");
    EXPECT_EQ(m->rowCount(), 10000);
    EXPECT_EQ(tree->toolTip(), "The burn list");

    w->list.Clear();
    EXPECT_EQ(m->rowCount(), 0);
}

TEST_F(Views, ListClicksReachTheLogic)
{
    int clicks = 0, doubles = 0;
    w->list.Click = [&] { ++clicks; };
    w->list.DblClick = [&] { ++doubles; };
    for (int i = 0; i < 10000; ++i)
        w->list.AddItem("Track " + std::to_string(i) + ";3:00");
    w->list.setListIndex(42);
    auto *tree = widget<QTreeView>(w->list);
    QAbstractItemModel *m = tree->model();

    tree->scrollTo(m->index(5000, 0));
    QCoreApplication::processEvents();
    const QRect r = tree->visualRect(m->index(5000, 0));
    ASSERT_TRUE(r.isValid());
    QTest::mouseClick(tree->viewport(), Qt::LeftButton, {}, r.center());
    EXPECT_EQ(clicks, 1);
    EXPECT_EQ(w->list.ListIndex(), 5000);
    EXPECT_TRUE(w->list.Selected(5000));
    EXPECT_TRUE(tree->selectionModel()->isRowSelected(5000, {}));
    EXPECT_FALSE(tree->selectionModel()->isRowSelected(42, {}));

    QTest::mouseDClick(tree->viewport(), Qt::LeftButton, {}, r.center());
    EXPECT_EQ(doubles, 1);

    // Keys move the current row and click it.
    clicks = 0;
    QTest::keyClick(tree, Qt::Key_Down);
    EXPECT_EQ(w->list.ListIndex(), 5001);
    EXPECT_EQ(clicks, 1);

    // A disabled list takes no clicks.
    w->list.setEnabled(false);
    EXPECT_FALSE(tree->isEnabled());
    QTest::mouseClick(tree->viewport(), Qt::LeftButton, {}, r.center());
    EXPECT_EQ(clicks, 1);
}

TEST_F(Views, MultiSelectListMirrorsEveryRow)
{
    w->list.setMultiSelect(true);
    for (int i = 0; i < 100; ++i)
        w->list.AddItem("Track " + std::to_string(i));
    auto *tree = widget<QTreeView>(w->list);
    w->list.setSelected(3, true);
    w->list.setSelected(7, true);
    EXPECT_TRUE(tree->selectionModel()->isRowSelected(3, {}));
    EXPECT_TRUE(tree->selectionModel()->isRowSelected(7, {}));
    w->list.setSelected(3, false);
    EXPECT_FALSE(tree->selectionModel()->isRowSelected(3, {}));
    EXPECT_TRUE(tree->selectionModel()->isRowSelected(7, {}));

    const QRect r = tree->visualRect(tree->model()->index(1, 0));
    QTest::mouseClick(tree->viewport(), Qt::LeftButton, {}, r.center());
    EXPECT_TRUE(w->list.Selected(1));
    EXPECT_TRUE(tree->selectionModel()->isRowSelected(1, {}));
    EXPECT_TRUE(tree->selectionModel()->isRowSelected(7, {}));
}

TEST_F(Views, ComboShowsItsTextAndTakesPicksAndTyping)
{
    int clicks = 0, changes = 0;
    w->combo.Click = [&] { ++clicks; };
    w->combo.Change = [&] { ++changes; };
    w->combo.AddItem("Slow");
    w->combo.AddItem("Fast");
    w->combo.setText("Custom");
    auto *box = widget<QComboBox>(w->combo);
    ASSERT_NE(box, nullptr);
    EXPECT_EQ(box->count(), 2);
    EXPECT_EQ(box->itemText(1), "Fast");
    // The text needn't be one of the entries.
    EXPECT_EQ(box->lineEdit()->text(), "Custom");
    changes = 0;

    emit box->activated(1);
    EXPECT_EQ(w->combo.ListIndex(), 1);
    EXPECT_EQ(w->combo.Text(), "Fast");
    EXPECT_EQ(clicks, 1);
    EXPECT_EQ(box->lineEdit()->text(), "Fast");

    box->lineEdit()->setFocus();
    box->lineEdit()->end(false);
    QTest::keyClicks(box->lineEdit(), "er");
    EXPECT_EQ(w->combo.Text(), "Faster");
    EXPECT_EQ(changes, 2);
    EXPECT_EQ(box->count(), 2);

    w->combo.setListIndex(0);
    EXPECT_EQ(box->currentIndex(), 0);
    EXPECT_EQ(box->lineEdit()->text(), "Slow");
    w->combo.Clear();
    EXPECT_EQ(box->count(), 0);
    EXPECT_EQ(box->lineEdit()->text(), "");
}

TEST_F(Views, TextBoxesFollowBothWays)
{
    int changes = 0;
    w->text.Change = [&] { ++changes; };
    w->text.setText("abc");
    auto *line = widget<QLineEdit>(w->text);
    ASSERT_NE(line, nullptr);
    EXPECT_EQ(line->text(), "abc");
    changes = 0;
    line->end(false);
    QTest::keyClicks(line, "de");
    EXPECT_EQ(w->text.Text(), "abcde");
    EXPECT_EQ(changes, 2);

    // A handler that rewrites the text is shown what it wrote.
    w->text.Change = [&] {
        if (w->text.Text() == "abcdef")
            w->text.setText("ABCDEF");
    };
    QTest::keyClicks(line, "f");
    EXPECT_EQ(line->text(), "ABCDEF");

    w->text.setLocked(true);
    EXPECT_TRUE(line->isReadOnly());
    QTest::keyClicks(line, "x");
    EXPECT_EQ(w->text.Text(), "ABCDEF");

    auto *memo = widget<QPlainTextEdit>(w->memo);
    ASSERT_NE(memo, nullptr);
    w->memo.setText("one\r\ntwo");
    EXPECT_EQ(memo->toPlainText(), "one\ntwo");
    memo->moveCursor(QTextCursor::End);
    QTest::keyClicks(memo, "!");
    EXPECT_EQ(w->memo.Text(), "one\r\ntwo!");
}

TEST_F(Views, CheckBoxTicksThroughTheControl)
{
    int clicks = 0;
    w->check.Click = [&] { ++clicks; };
    auto *box = widget<QCheckBox>(w->check);
    ASSERT_NE(box, nullptr);
    EXPECT_EQ(box->text(), "Loop");
    w->check.setValue(1);
    EXPECT_EQ(box->checkState(), Qt::Checked);
    clicks = 0;
    QTest::mouseClick(box, Qt::LeftButton, {}, QPoint(6, box->height() / 2));
    EXPECT_EQ(w->check.Value(), 0);
    EXPECT_EQ(clicks, 1);
    EXPECT_EQ(box->checkState(), Qt::Unchecked);
    w->check.setValue(2);
    EXPECT_EQ(box->checkState(), Qt::PartiallyChecked);
    QTest::mouseClick(box, Qt::LeftButton, {}, QPoint(6, box->height() / 2));
    EXPECT_EQ(w->check.Value(), 1);
    EXPECT_EQ(box->checkState(), Qt::Checked);
}

TEST_F(Views, MetersAndSliders)
{
    auto *bar = widget<QProgressBar>(w->meter);
    auto *upright = widget<QProgressBar>(w->progress);
    auto *slider = widget<QSlider>(w->slider);
    ASSERT_TRUE(bar && upright && slider);
    w->meter.setMax(200);
    w->meter.setValue(150);
    EXPECT_EQ(bar->maximum(), 200);
    EXPECT_EQ(bar->value(), 150);
    EXPECT_EQ(bar->orientation(), Qt::Horizontal);
    EXPECT_EQ(upright->orientation(), Qt::Vertical);

    int changes = 0;
    w->slider.Change = [&] { ++changes; };
    w->slider.setValue(30);
    EXPECT_EQ(slider->value(), 30);
    changes = 0;
    QTest::keyClick(slider, Qt::Key_Right);
    EXPECT_EQ(w->slider.Value(), 31);
    EXPECT_EQ(changes, 1);
    w->slider.setEnabled(false);
    EXPECT_FALSE(slider->isEnabled());
}

TEST_F(Views, StatusBarPanels)
{
    auto *row = view().widgetFor(w->status);
    ASSERT_NE(row, nullptr);
    w->status.setPanel(2, "Ready");
    auto *panel = row->findChild<QLabel *>("panel2");
    ASSERT_NE(panel, nullptr);
    EXPECT_EQ(panel->text(), "Ready");
    EXPECT_EQ(row->findChildren<QLabel *>().size(), 3);
    // Docked along the bottom of the window.
    EXPECT_EQ(row->geometry().bottom(), view().canvas()->height() - 1);
    EXPECT_EQ(row->width(), view().canvas()->width());
}

TEST_F(Views, ToolBarButtonsCountTheGaps)
{
    std::vector<int> pressed;
    w->tools.ButtonClick = [&](int i) { pressed.push_back(i); };
    auto *bar = widget<QToolBar>(w->tools);
    ASSERT_NE(bar, nullptr);
    const auto actions = bar->actions();
    ASSERT_EQ(actions.size(), 3);
    EXPECT_EQ(actions[0]->text(), "New");
    EXPECT_TRUE(actions[1]->isSeparator());
    // A button without a caption shows its tip.
    EXPECT_EQ(actions[2]->text(), "Open a list");
    QTest::mouseClick(bar->widgetForAction(actions[2]), Qt::LeftButton);
    actions[0]->trigger();
    EXPECT_EQ(pressed, (std::vector<int>{3, 1}));
}

TEST_F(Views, MenuFollowsTheEntries)
{
    QMenuBar *menuBar = view().menuBar();
    ASSERT_NE(menuBar, nullptr);
    QAction *file = view().actionFor(w->mnuFile);
    QAction *open = view().actionFor(w->mnuOpen);
    QAction *sep = view().actionFor(w->mnuSep);
    QAction *loopEntry = view().actionFor(w->mnuLoop);
    ASSERT_TRUE(file && open && sep && loopEntry);
    EXPECT_EQ(file->text(), "&File");
    EXPECT_TRUE(sep->isSeparator());
    ASSERT_NE(file->menu(), nullptr);
    EXPECT_EQ(file->menu()->actions().size(), 3);

    int fileClicks = 0, opens = 0, loops = 0;
    w->mnuFile.Click = [&] {
        ++fileClicks;
        w->mnuOpen.setCaption("&Open...");
    };
    w->mnuOpen.Click = [&] { ++opens; };
    w->mnuLoop.Click = [&] { ++loops; };

    file->menu()->popup(QPoint(0, 0));
    EXPECT_EQ(fileClicks, 1);
    EXPECT_EQ(open->text(), "&Open...");
    file->menu()->hide();

    open->trigger();
    EXPECT_EQ(opens, 1);

    w->mnuLoop.setChecked(true);
    EXPECT_TRUE(loopEntry->isCheckable());
    EXPECT_TRUE(loopEntry->isChecked());
    // The handler leaves Checked alone, so the tick stays.
    loopEntry->trigger();
    EXPECT_EQ(loops, 1);
    EXPECT_TRUE(loopEntry->isChecked());

    w->mnuOpen.setEnabled(false);
    EXPECT_FALSE(open->isEnabled());
    open->trigger();
    EXPECT_EQ(opens, 1);
    w->mnuOpen.setVisible(false);
    EXPECT_FALSE(open->isVisible());
}

TEST_F(Views, LabelsFramesButtonsAndPictures)
{
    auto *group = widget<QGroupBox>(w->frame);
    ASSERT_NE(group, nullptr);
    EXPECT_EQ(group->title(), "Options");
    auto *label = widget<QLabel>(w->inFrame);
    ASSERT_NE(label, nullptr);
    EXPECT_EQ(label->parentWidget(), group);
    EXPECT_EQ(label->text(), "In the frame");
    EXPECT_EQ(label->geometry(), QRect(8, 20, 133, 17));
    w->inFrame.setCaption("Fish && Chips");
    EXPECT_EQ(label->text(), "Fish & Chips");
    w->frame.setVisible(false);
    EXPECT_FALSE(label->isVisible());

    int clicks = 0;
    w->button.Click = [&] { ++clicks; };
    w->button.setToolTipText("Go now");
    auto *button = widget<QPushButton>(w->button);
    ASSERT_NE(button, nullptr);
    EXPECT_EQ(button->text(), "&Go");
    EXPECT_EQ(button->toolTip(), "Go now");
    QTest::mouseClick(button, Qt::LeftButton);
    EXPECT_EQ(clicks, 1);
    w->button.setEnabled(false);
    QTest::mouseClick(button, Qt::LeftButton);
    EXPECT_EQ(clicks, 1);
    w->button.setGeometry(1500, 1500, 1500, 450);
    EXPECT_EQ(button->geometry(), QRect(100, 100, 100, 30));

    int moveX = -1, moveY = -1;
    w->picture.MouseMove = [&](int, int x, int y) {
        moveX = x;
        moveY = y;
    };
    auto *picture = view().widgetFor(w->picture);
    ASSERT_NE(picture, nullptr);
    QMouseEvent move(QEvent::MouseMove, QPointF(10, 20), picture->mapToGlobal(QPointF(10, 20)), Qt::NoButton,
                     Qt::NoButton, Qt::NoModifier);
    QCoreApplication::sendEvent(picture, &move);
    EXPECT_EQ(moveX, 150);
    EXPECT_EQ(moveY, 300);
}

TEST_F(Views, HyperLinkShowsALinkAndReportsClicks)
{
    w->link.setCaption("User &guide");
    w->link.setAddress("file:///tmp/README.md");
    auto *label = widget<QLabel>(w->link);
    ASSERT_NE(label, nullptr);
    EXPECT_EQ(label->text(), "User guide");
    EXPECT_EQ(label->textFormat(), Qt::PlainText);
    EXPECT_TRUE(label->font().underline());
    EXPECT_EQ(label->cursor().shape(), Qt::PointingHandCursor);
    EXPECT_EQ(label->geometry(), QRect(220, 353, 200, 20));
    // Without a tip of its own it tells where it leads.
    EXPECT_EQ(label->toolTip(), "file:///tmp/README.md");
    w->link.setToolTipText("Open the guide");
    EXPECT_EQ(label->toolTip(), "Open the guide");
    w->link.setCaption("Licence");
    EXPECT_EQ(label->text(), "Licence");

    // A click is only reported: the address is the logic's to open.
    int clicks = 0;
    w->link.Click = [&] { ++clicks; };
    QTest::mouseClick(label, Qt::LeftButton);
    EXPECT_EQ(clicks, 1);
    EXPECT_EQ(w->link.Address(), "file:///tmp/README.md");
    QTest::mouseClick(label, Qt::RightButton);
    EXPECT_EQ(clicks, 1);
    w->link.setEnabled(false);
    EXPECT_FALSE(label->isEnabled());
    QTest::mouseClick(label, Qt::LeftButton);
    EXPECT_EQ(clicks, 1);
    w->link.setEnabled(true);
    w->link.Click = [&] { w->Unload(); };
    QTest::mouseClick(label, Qt::LeftButton);
    EXPECT_EQ(app.findLoaded("ViewTest"), nullptr);
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
}

TEST_F(Views, WindowFollowsCaptionVisibilityAndClose)
{
    QWidget *top = view().topLevel();
    ASSERT_NE(top, nullptr);
    EXPECT_NE(qobject_cast<QMainWindow *>(top), nullptr);
    EXPECT_TRUE(top->isVisible());
    EXPECT_EQ(top->windowTitle(), "View test");
    w->setCaption("Renamed");
    EXPECT_EQ(top->windowTitle(), "Renamed");
    w->setTopmost(true);
    EXPECT_TRUE(top->windowFlags() & Qt::WindowStaysOnTopHint);
    EXPECT_TRUE(top->isVisible());

    int moves = 0;
    w->MouseMove = [&](int, int x, int) {
        ++moves;
        EXPECT_EQ(x, 75);
    };
    QMouseEvent move(QEvent::MouseMove, QPointF(5, 5), view().canvas()->mapToGlobal(QPointF(5, 5)), Qt::NoButton,
                     Qt::NoButton, Qt::NoModifier);
    QCoreApplication::sendEvent(view().canvas(), &move);
    EXPECT_EQ(moves, 1);

    w->Hide();
    EXPECT_FALSE(top->isVisible());
    w->Show();
    EXPECT_TRUE(top->isVisible());

    // With the close command removed the close box does nothing.
    w->setCloseCommandRemoved(true);
    EXPECT_FALSE(top->windowFlags() & Qt::WindowCloseButtonHint);
    EXPECT_FALSE(top->close());
    EXPECT_EQ(app.findLoaded("ViewTest"), w);

    // Otherwise it unloads the window, and the view goes with it.
    w->setCloseCommandRemoved(false);
    QPointer<QWidget> watched = top;
    EXPECT_FALSE(top->close());
    EXPECT_EQ(app.findLoaded("ViewTest"), nullptr);
    EXPECT_EQ(frontEnd.view("ViewTest"), nullptr);
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    EXPECT_TRUE(watched.isNull());
}

// A handler may unload the window whose widget it came from; the widgets go after the event.
TEST_F(Views, HandlersMayUnloadTheirOwnWindow)
{
    w->button.Click = [&] { w->Unload(); };
    auto *button = widget<QPushButton>(w->button);
    QPointer<QWidget> top = view().topLevel();
    QTest::mouseClick(button, Qt::LeftButton);
    EXPECT_EQ(app.findLoaded("ViewTest"), nullptr);
    EXPECT_FALSE(top->isVisible());
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    EXPECT_TRUE(top.isNull());

    for (auto unloadFrom : {0, 1, 2, 3, 4}) {
        w = &app.form<ViewTestWindow>();
        w->Show();
        QCoreApplication::processEvents();
        for (int i = 0; i < 50; ++i)
            w->list.AddItem("Track " + std::to_string(i));
        auto *tree = widget<QTreeView>(w->list);
        auto *line = widget<QLineEdit>(w->text);
        auto *check = widget<QCheckBox>(w->check);
        auto *slider = widget<QSlider>(w->slider);
        QAction *open = view().actionFor(w->mnuOpen);
        const QRect r = tree->visualRect(tree->model()->index(3, 0));
        switch (unloadFrom) {
        case 0:
            w->list.Click = [&] { w->Unload(); };
            QTest::mouseClick(tree->viewport(), Qt::LeftButton, {}, r.center());
            break;
        case 1:
            w->text.Change = [&] { w->Unload(); };
            QTest::keyClicks(line, "x");
            break;
        case 2:
            w->mnuOpen.Click = [&] { w->Unload(); };
            open->trigger();
            break;
        case 3:
            w->check.Click = [&] { w->Unload(); };
            QTest::mouseClick(check, Qt::LeftButton, {}, QPoint(6, check->height() / 2));
            break;
        case 4:
            w->slider.Change = [&] { w->Unload(); };
            QTest::keyClick(slider, Qt::Key_Right);
            break;
        }
        EXPECT_EQ(app.findLoaded("ViewTest"), nullptr) << unloadFrom;
        QCoreApplication::processEvents();
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    }
}

// A window made again after its unload gets a new view of its own.
TEST_F(Views, ReloadedWindowGetsANewView)
{
    w->Unload();
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    w = &app.form<ViewTestWindow>();
    w->list.AddItem("again");
    auto *tree = widget<QTreeView>(w->list);
    ASSERT_NE(tree, nullptr);
    EXPECT_EQ(tree->model()->rowCount(), 1);
    EXPECT_FALSE(view().topLevel()->isVisible());
    w->Show();
    EXPECT_TRUE(view().topLevel()->isVisible());
}

TEST_F(Views, ScreenshotIsAPicture)
{
    const auto path = std::filesystem::temp_directory_path() / "gui_view_tests_shot.png";
    std::filesystem::remove(path);
    ASSERT_TRUE(frontEnd.saveScreenshot("ViewTest", path.string()));
    QImage image(QString::fromStdString(path.string()));
    EXPECT_EQ(image.size(), view().topLevel()->size());
    std::filesystem::remove(path);
    EXPECT_FALSE(frontEnd.saveScreenshot("NoSuchWindow", path.string()));
}

TEST_F(Views, ProgramEndQuitsWithItsCode)
{
    QTimer::singleShot(0, [&] { app.end(7); });
    QTimer::singleShot(5000, [] { QCoreApplication::exit(-1); });
    EXPECT_EQ(QCoreApplication::exec(), 7);
    EXPECT_EQ(frontEnd.view("ViewTest"), nullptr);
}

TEST(QtEventLoop, TimersTickAndPostsArriveFromOtherThreads)
{
    uiqt::QtEventLoop loop;
    int ticks = 0;
    const auto id = loop.startTimer(5, [&] { ++ticks; });
    const auto start = loop.now();
    EXPECT_TRUE(loop.runUntil([&] { return ticks >= 3; }));
    EXPECT_GE(loop.now() - start, 10);
    loop.stopTimer(id);
    const int stopped = ticks;
    QTest::qWait(30);
    EXPECT_EQ(ticks, stopped);

    // A timer that stops itself from its own tick.
    int once = 0;
    uiqt::QtEventLoop::TimerId self = 0;
    self = loop.startTimer(1, [&] {
        ++once;
        loop.stopTimer(self);
    });
    QTest::qWait(30);
    EXPECT_EQ(once, 1);
    EXPECT_EQ(loop.timerCount(), 0);

    std::atomic<bool> arrived{false};
    std::thread worker([&] { loop.post([&] { arrived = true; }); });
    worker.join();
    EXPECT_TRUE(loop.runUntil([&] { return arrived.load(); }));

    bool ran = false;
    loop.post([&] { ran = true; });
    loop.doEvents();
    EXPECT_TRUE(ran);
}

TEST(QtMessageBoxes, ButtonsDefaultsAndAnswers)
{
    uiqt::QtMessageBoxes boxes;
    QMessageBox::StandardButton defaultButton = QMessageBox::NoButton;
    QString title;
    QTimer::singleShot(0, [&] {
        auto *box = qobject_cast<QMessageBox *>(QApplication::activeModalWidget());
        ASSERT_NE(box, nullptr);
        title = box->windowTitle();
        defaultButton = box->standardButton(box->defaultButton());
        box->button(QMessageBox::Cancel)->click();
    });
    const int result =
        boxes.show({"Save the list?", "MP3 Brasswick", ui::vbYesNoCancel | ui::vbQuestion | ui::vbDefaultButton2});
    EXPECT_EQ(result, ui::vbCancel);
    EXPECT_EQ(defaultButton, QMessageBox::No);
    EXPECT_EQ(title, "MP3 Brasswick");

    QTimer::singleShot(0, [] {
        auto *box = qobject_cast<QMessageBox *>(QApplication::activeModalWidget());
        ASSERT_NE(box, nullptr);
        box->button(QMessageBox::Retry)->click();
    });
    EXPECT_EQ(boxes.show({"Drive not ready", "Error", ui::vbAbortRetryIgnore | ui::vbCritical}), ui::vbRetry);
}

// What the dialog's own Open or Save button does.
void acceptDialog(QFileDialog &d)
{
    static_cast<QDialog &>(d).accept();
}

// Finds the dialog open now and does what the user would, once the dialog's loop runs.
template <class F>
void whenDialogOpens(F answer)
{
    QTimer::singleShot(0, [answer] {
        auto *dialog = qobject_cast<QFileDialog *>(QApplication::activeModalWidget());
        ASSERT_NE(dialog, nullptr);
        answer(*dialog);
    });
}

TEST(QtDialogs, OpenSaveAndFolder)
{
    const auto folder = std::filesystem::temp_directory_path() / "gui_view_tests_dialogs";
    std::filesystem::create_directories(folder);
    { std::ofstream(folder / "list.M3U") << "#EXTM3U\n"; }
    const QString qFolder = QString::fromStdString(folder.string());
    uiqt::QtDialogs dialogs;

    ui::FileDialogRequest open;
    open.title = "Open a play list";
    open.filter = "MP3 PlayLists|*.m3u";
    open.initialFolder = folder.string();
    QString title, directory;
    whenDialogOpens([&](QFileDialog &d) {
        title = d.windowTitle();
        directory = d.directory().absolutePath();
        d.selectFile(QStringLiteral("list.M3U"));
        acceptDialog(d);
    });
    EXPECT_EQ(dialogs.run(open), (folder / "list.M3U").string());
    EXPECT_EQ(title, "Open a play list");
    EXPECT_EQ(directory, qFolder);

    whenDialogOpens([](QFileDialog &d) { d.reject(); });
    EXPECT_EQ(dialogs.run(open), std::nullopt);

    ui::FileDialogRequest save;
    save.kind = ui::FileDialogRequest::Kind::Save;
    save.filter = "MP3 PlayLists|*.m3u";
    save.initialFolder = folder.string();
    save.fileName = "new.m3u";
    whenDialogOpens([](QFileDialog &d) { acceptDialog(d); });
    EXPECT_EQ(dialogs.run(save), (folder / "new.m3u").string());

    ui::FileDialogRequest pick;
    pick.kind = ui::FileDialogRequest::Kind::Folder;
    pick.initialFolder = folder.parent_path().string();
    whenDialogOpens([&](QFileDialog &d) {
        d.selectFile(qFolder);
        acceptDialog(d);
    });
    EXPECT_EQ(dialogs.run(pick), folder.string());
    std::filesystem::remove_all(folder);
}

TEST(QtDialogs, FiltersInQtsForm)
{
    EXPECT_EQ(uiqt::qtNameFilters("MP3 PlayLists|*.M3U|All Files|*.*"),
              "MP3 PlayLists (*.M3U *.m3u);;All Files (*.*)");
    EXPECT_EQ(uiqt::qtNameFilters("Music|*.mp3;*.wav"), "Music (*.mp3 *.MP3 *.wav *.WAV)");
    EXPECT_EQ(uiqt::qtNameFilters(""), "");
}

} // namespace
