// The Qt views of the tree, the level meters and the spectrum: rows and clicks of the tree both
// ways, and meters that read their feeds at the screen's pace only while they show, drawn as
// their design says. The meters are photographed into the build's screenshot folder.
#include <atomic>
#include <cmath>
#include <filesystem>
#include <iostream>
#include <string>
#include <vector>

#include <QApplication>
#include <QImage>
#include <QKeyEvent>
#include <QTest>
#include <QTreeWidget>

#include <gtest/gtest.h>

#include "platform/Components.h"
#include "ui/AppContext.h"
#include "ui/LevelMeter.h"
#include "ui/ScriptedServices.h"
#include "ui/SpectrumView.h"
#include "ui/TreeView.h"
#include "ui/Window.h"
#include "ui/qt/QtEventLoop.h"
#include "ui/qt/QtFrontEnd.h"
#include "ui/qt/WindowView.h"
#include "QtTestEnvironment.h"

#ifndef BRASSWICK_SCREENSHOT_DIR
#error "BRASSWICK_SCREENSHOT_DIR must name the folder the pictures go to"
#endif

namespace fs = std::filesystem;

namespace {

const auto *const environment = ::testing::AddGlobalTestEnvironment(new QtTestEnvironment("gui_meter_views"));

using Level = ui::TreeView::Level;

// A window with a small tree, two level meters and a spectrum, as the listening room has them.
class MeterTestWindow : public ui::Window {
public:
    static constexpr const char *formName = "MeterTest";
    explicit MeterTestWindow(ui::AppContext &app)
        : Window(app, formName)
        , tree(*this, "TList2")
        , left(*this, "Level", 0)
        , right(*this, "Level", 1)
        , spectrum(*this, "Spectrumx1")
    {
        setCaption("Meters");
        setGeometry(0, 0, 9000, 5400);
        tree.setGeometry(120, 120, 3000, 4500);
        for (auto [label, level] : {std::pair{"Settings", Level::Root}, {"Audio out", Level::Group},
                                    {"Num Buffers", Level::Item}, {"Buffer Size", Level::Item},
                                    {"Ring Buffer", Level::Group}, {"Que Mode", Level::Item}})
            tree.AddRow(label, level);
        left.setGeometry(3360, 120, 5400, 240);
        right.setGeometry(3360, 480, 5400, 240);
        spectrum.setGeometry(3360, 960, 5400, 3600);
    }

    ui::TreeView tree;
    ui::LevelMeter left, right;
    ui::SpectrumView spectrum;
};

class MeterViews : public ::testing::Test {
protected:
    void SetUp() override
    {
        w = &app.form<MeterTestWindow>();
        w->Show();
        QCoreApplication::processEvents();
    }
    void TearDown() override { QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete); }

    QWidget *widget(const ui::Control &c) { return frontEnd.view(*w)->widgetFor(c); }
    QImage picture(const ui::Control &c) { return widget(c)->grab().toImage().convertToFormat(QImage::Format_RGB32); }

    uiqt::QtEventLoop loop;
    ui::ScriptedMessageBoxes boxes;
    ui::ScriptedDialogs dialogs;
    platform::Components components;
    ui::AppContext app{loop, boxes, dialogs, components, "/tmp"};
    uiqt::QtFrontEnd frontEnd{app};
    MeterTestWindow *w = nullptr;
};

bool isWhite(QRgb c)
{
    return qRed(c) > 240 && qGreen(c) > 240 && qBlue(c) > 240;
}

bool isGray(QRgb c)
{
    return qRed(c) == qGreen(c) && qGreen(c) == qBlue(c) && qRed(c) > 100 && qRed(c) < 160;
}

bool isBlack(QRgb c)
{
    return qRed(c) < 20 && qGreen(c) < 20 && qBlue(c) < 20;
}

// The columns of a row of the picture whose pixel passes the test.
int columnsWhere(const QImage &image, int y, bool (*test)(QRgb), int fromX = 0, int toX = -1)
{
    if (toX < 0)
        toX = image.width();
    int n = 0;
    for (int x = fromX; x < toX; ++x)
        n += test(image.pixel(x, y)) ? 1 : 0;
    return n;
}

// Lets the screen's pace run until `done` or about two seconds have passed.
template <class F>
void runUntil(F done)
{
    for (int i = 0; i < 40 && !done(); ++i)
        QTest::qWait(50);
}

TEST_F(MeterViews, TreeShowsEveryRowOpenedAndNested)
{
    auto *tree = qobject_cast<QTreeWidget *>(widget(w->tree));
    ASSERT_NE(tree, nullptr);
    ASSERT_EQ(tree->topLevelItemCount(), 1);
    QTreeWidgetItem *root = tree->topLevelItem(0);
    EXPECT_EQ(root->text(0), "Settings");
    ASSERT_EQ(root->childCount(), 2);
    EXPECT_EQ(root->child(0)->text(0), "Audio out");
    ASSERT_EQ(root->child(0)->childCount(), 2);
    EXPECT_EQ(root->child(0)->child(1)->text(0), "Buffer Size");
    EXPECT_EQ(root->child(1)->child(0)->text(0), "Que Mode");
    EXPECT_TRUE(root->isExpanded());
    EXPECT_TRUE(root->child(0)->isExpanded());
    EXPECT_TRUE(root->child(1)->isExpanded());
    // The last row is in sight below the others: nothing is folded away.
    EXPECT_GT(tree->visualItemRect(root->child(1)->child(0)).top(), tree->visualItemRect(root->child(0)->child(1)).top());

    w->tree.setListIndex(3);
    EXPECT_TRUE(root->child(0)->child(1)->isSelected());
    EXPECT_EQ(tree->selectedItems().size(), 1);
    w->tree.setListIndex(-1);
    EXPECT_TRUE(tree->selectedItems().isEmpty());
}

TEST_F(MeterViews, TreeClicksAndKeysReportRowNumbers)
{
    std::vector<int> seen;
    w->tree.RowSelected = [&](int row) { seen.push_back(row); };
    auto *tree = qobject_cast<QTreeWidget *>(widget(w->tree));
    QTreeWidgetItem *queMode = tree->topLevelItem(0)->child(1)->child(0);
    QTest::mouseClick(tree->viewport(), Qt::LeftButton, {}, tree->visualItemRect(queMode).center());
    ASSERT_EQ(seen, std::vector<int>{5});
    EXPECT_EQ(w->tree.ListIndex(), 5);
    EXPECT_TRUE(queMode->isSelected());
    // A double click folds nothing and reports the row again.
    QTreeWidgetItem *group = tree->topLevelItem(0)->child(0);
    QTest::mouseDClick(tree->viewport(), Qt::LeftButton, {}, tree->visualItemRect(group).center());
    EXPECT_TRUE(group->isExpanded());
    EXPECT_EQ(seen.back(), 1);
    QTest::keyClick(tree, Qt::Key_Down);
    EXPECT_EQ(seen.back(), 2);
    QTest::keyClick(tree, Qt::Key_Up);
    QTest::keyClick(tree, Qt::Key_Up);
    QTest::keyClick(tree, Qt::Key_Up);
    EXPECT_EQ(w->tree.ListIndex(), 0);
    EXPECT_EQ(seen.back(), 0);

    w->tree.setEnabled(false);
    const size_t before = seen.size();
    QTest::mouseClick(tree->viewport(), Qt::LeftButton, {}, tree->visualItemRect(queMode).center());
    EXPECT_EQ(seen.size(), before);
}

TEST_F(MeterViews, MetersReadTheirFeedsOnlyWhileShownAndFed)
{
    std::atomic<int> reads{0};
    // No feed: nothing is read, nothing fails.
    QTest::qWait(150);
    w->left.setFeed([&] {
        ++reads;
        return 0.5;
    });
    runUntil([&] { return reads > 5; });
    EXPECT_GT(reads.load(), 5);

    w->Hide();
    QCoreApplication::processEvents();
    const int whenHidden = reads.load();
    QTest::qWait(200);
    EXPECT_EQ(reads.load(), whenHidden);

    w->Show();
    runUntil([&] { return reads > whenHidden + 3; });
    EXPECT_GT(reads.load(), whenHidden + 3);

    w->left.setFeed(nullptr);
    QCoreApplication::processEvents();
    const int unfed = reads.load();
    QTest::qWait(200);
    EXPECT_EQ(reads.load(), unfed);
}

TEST_F(MeterViews, LevelMeterLightsSpotsUpToItsLevel)
{
    w->left.setFeed([] { return 0.5; });
    w->right.setFeed([] { return 1.0; });
    runUntil([&] {
        const QImage img = picture(w->left);
        return columnsWhere(img, img.height() / 2, isWhite) > 0;
    });
    const QImage left = picture(w->left);
    const int y = left.height() / 2;
    const int half = left.width() / 2;
    // White spots in the lower half, gray ones above, with dark gaps between the spots.
    EXPECT_GT(columnsWhere(left, y, isWhite, 0, half - 8), (half - 8) / 2);
    EXPECT_EQ(columnsWhere(left, y, isWhite, half + 8, left.width() * 3 / 4), 0);
    EXPECT_GT(columnsWhere(left, y, isGray, half + 8, left.width() * 3 / 4), 0);
    EXPECT_GT(columnsWhere(left, y, isBlack, 0, half - 8), 0);

    // At full scale the spots past Point2 (80 %) change colour.
    runUntil([&] {
        const QImage img = picture(w->right);
        return columnsWhere(img, img.height() / 2, isWhite) > 0;
    });
    const QImage right = picture(w->right);
    const int top = right.width() * 9 / 10;
    EXPECT_EQ(columnsWhere(right, y, isWhite, top, right.width()), 0);
    EXPECT_GT(columnsWhere(right, y, [](QRgb c) { return qRed(c) > 200 && qGreen(c) < 60; }, top, right.width()), 0);
}

TEST_F(MeterViews, SpectrumDrawsBarsOverItsGridAndPhotographs)
{
    // 129 bins: a loud tone in bin 9 and a quieter one in bin 20; FrequencyScale 4 shows bins 1 to 32.
    std::vector<float> bins(129, 0.02f);
    bins[9] = 0.95f;
    bins[20] = 0.5f;
    w->spectrum.setFeed([bins] { return bins; });
    w->left.setFeed([] { return 0.62; });
    w->right.setFeed([] { return 0.85; });
    runUntil([&] {
        const QImage img = picture(w->spectrum);
        return columnsWhere(img, img.height() - 2, isWhite) > 0 || columnsWhere(img, img.height() - 1, isWhite) > 0;
    });
    QTest::qWait(100);
    const QImage img = picture(w->spectrum);
    const int width = img.width(), height = img.height();
    // 32 bars four pixels apart over the width: bar 8 (bin 9) is the loud one, bar 19 the quiet one.
    const double barWidth = (width - 4.0 * 31) / 32;
    const auto middleOf = [&](int bar) { return static_cast<int>(bar * (barWidth + 4) + barWidth / 2); };
    const int loudX = middleOf(8);
    const int quietX = middleOf(19);
    auto litIn = [&](int x, int fromY, int toY) {
        int lit = 0;
        for (int y = fromY; y < toY; ++y)
            lit += qRed(img.pixel(x, y)) > 150 ? 1 : 0;
        return lit;
    };
    // The loud bar reaches the top fifth; the quiet one stays below the middle.
    EXPECT_GT(litIn(loudX, height / 10, height / 5), 0);
    EXPECT_GT(litIn(quietX, height * 6 / 10, height), 0);
    EXPECT_EQ(litIn(quietX, height / 10, height * 4 / 10), 0);
    // Dotted bars: every other line of a bar is dark.
    EXPECT_LT(litIn(loudX, height / 2, height), height / 2 * 3 / 4);
    // The grid is teal.
    bool teal = false;
    for (int x = 0; x < width && !teal; ++x) {
        const QRgb c = img.pixel(x, height / 10);
        teal = qRed(c) < 20 && qGreen(c) > 100 && qBlue(c) > 100;
    }
    EXPECT_TRUE(teal);

    fs::create_directories(BRASSWICK_SCREENSHOT_DIR);
    const std::string path = (fs::path(BRASSWICK_SCREENSHOT_DIR) / "meters.png").string();
    ASSERT_TRUE(frontEnd.saveScreenshot(MeterTestWindow::formName, path));
    std::cout << "[ picture ] " << path << "\n";
}

TEST_F(MeterViews, SilenceLetsTheBarsFall)
{
    std::vector<float> bins(129, 0.0f);
    bins[5] = 1.0f;
    bool loud = true;
    w->spectrum.setFeed([&] { return loud ? bins : std::vector<float>{}; });
    runUntil([&] {
        const QImage img = picture(w->spectrum);
        return columnsWhere(img, img.height() - 1, isWhite) > 0;
    });
    loud = false;
    // Decay 7 and the peak's hold and fall take about two seconds; the wait ends when all is gone.
    for (int i = 0; i < 200; ++i) {
        QTest::qWait(50);
        const QImage img = picture(w->spectrum);
        if (columnsWhere(img, img.height() - 1, isWhite) == 0 && columnsWhere(img, img.height() - 2, isWhite) == 0)
            break;
    }
    const QImage img = picture(w->spectrum);
    EXPECT_EQ(columnsWhere(img, img.height() - 1, isWhite), 0);
    EXPECT_EQ(columnsWhere(img, img.height() - 2, isWhite), 0);
}

} // namespace
