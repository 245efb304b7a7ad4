// The layout workflow as a user goes through it, on the real windows drawn by the Qt front end:
// disc choice, a folder of real MP3s, tracks added, the disc over time, the hand-over to the
// main window. Each stage is photographed into the build's screenshot folder, and what the
// pictures show is checked on the widgets themselves.
#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iomanip>
#include <iostream>
#include <memory>
#include <random>
#include <set>
#include <string>
#include <vector>

#include <QApplication>
#include <QCheckBox>
#include <QElapsedTimer>
#include <QFontMetrics>
#include <QGroupBox>
#include <QHeaderView>
#include <QImage>
#include <QLabel>
#include <QLineEdit>
#include <QProgressBar>
#include <QPushButton>
#include <QScrollBar>
#include <QStyle>
#include <QTest>
#include <QTreeView>
#include <QTreeWidget>

#include <gtest/gtest.h>

#include "CommandOutput.h"
#include "Mp3Maker.h"
#include "WaveMaker.h"
#include "burn/BurnWindows.h"
#include "convert/ConvertWindows.h"
#include "extract/CopyDlg.h"
#include "extract/ExtractWindows.h"
#include "extract/MainForm.h"
#include "platform/cdrom/CdReaderComponent.h"
#include "cover/CoverWindows.h"
#include "cover/CoverDesigner.h"
#include "platform/imaging/GmImageControl.h"
#include "addons/AddonWindows.h"
#include "addons/Plugins.h"
#include "addons/connect.h"
#include "platform/http/CurlHttpDownload.h"
#include "LocalHttpServer.h"
#include <fstream>
#include "convert/batcher.h"
#include "playback/PlaybackWindows.h"
#include "playback/Form6.h"
#include "platform/audio/RealPlayerComponents.h"
#include "burn/Mainwriter.h"
#include "layout/Form2.h"
#include "layout/Form5.h"
#include "layout/LayoutWindows.h"
#include "platform/Components.h"
#include "platform/fake/FakeComponents.h"
#include "platform/media/RealMediaComponents.h"
#include "platform/writer/CdWriterEngine.h"
#include "shell/Form7.h"
#include "shell/ShellWindows.h"
#include "shell/frmMain.h"
#include "ui/AppContext.h"
#include "ui/MessageBox.h"
#include "ui/ScriptedServices.h"
#include "ui/qt/QtEventLoop.h"
#include "ui/qt/QtFrontEnd.h"
#include "ui/qt/WindowView.h"
#include "QtTestEnvironment.h"

#ifndef BRASSWICK_PROGRAM_DIR
#error "BRASSWICK_PROGRAM_DIR must name the program folder of the build"
#endif
#ifndef BRASSWICK_SCREENSHOT_DIR
#error "BRASSWICK_SCREENSHOT_DIR must name the folder the pictures go to"
#endif

namespace fs = std::filesystem;

namespace {

const auto *const environment = ::testing::AddGlobalTestEnvironment(new QtTestEnvironment("gui_workflow_screens"));

// A scratch folder that goes with the test.
class ScratchFolder {
public:
    explicit ScratchFolder(const std::string &stem)
    {
        std::random_device rd;
        m_path = fs::temp_directory_path() / (stem + "-" + std::to_string(rd()));
        fs::create_directories(m_path);
    }
    ~ScratchFolder()
    {
        std::error_code ec;
        fs::remove_all(m_path, ec);
    }
    const fs::path &path() const { return m_path; }

private:
    fs::path m_path;
};

// A running program on Qt's loop with scripted boxes and dialogs and fake components. The
// program folder is a copy of the build's, as the layout writes its last folder into it.
struct Program {
    // With `realBurn`, the decoding chain and the writing engine are the real ones, the Image
    // Recorder writing into work/discs.
    explicit Program(const fs::path &work, bool realBurn = false)
        : prog(work / "prog")
    {
        if (realBurn) {
            platform::media::addRealMediaComponents(components, loop);
            platform::writer::Options o;
            o.imageFolder = work / "discs";
            o.logFolder = work / "state" / "brasswick";
            o.scanSystemRecorders = false;
            components.writerEngine = [this, o] { return std::make_unique<platform::writer::CdWriterEngine>(loop, o); };
        }
        fs::create_directories(prog);
        fs::copy(BRASSWICK_PROGRAM_DIR, prog, fs::copy_options::recursive | fs::copy_options::overwrite_existing);
        app = std::make_unique<ui::AppContext>(loop, boxes, dialogs, components, prog.string());
        frontEnd = std::make_unique<uiqt::QtFrontEnd>(*app);
        shell::registerShellWindows(*app);
        layout::registerLayoutWindows(*app);
        burn::registerBurnWindows(*app);
        convert::registerConvertWindows(*app);
        extract::registerExtractWindows(*app);
        cover::registerCoverWindows(*app);
        addons::registerAddonWindows(*app);
        playback::registerPlaybackWindows(*app);
    }
    ~Program()
    {
        frontEnd.reset();
        app.reset();
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    }

    uiqt::WindowView &view(const std::string &windowName) const
    {
        uiqt::WindowView *v = frontEnd->view(windowName);
        if (!v)
            throw std::runtime_error("no view of " + windowName);
        return *v;
    }
    template <class W>
    W *widget(const std::string &windowName, const ui::Control &control) const
    {
        return qobject_cast<W *>(view(windowName).widgetFor(control));
    }

    fs::path prog;
    uiqt::QtEventLoop loop;
    ui::ScriptedMessageBoxes boxes;
    ui::ScriptedDialogs dialogs;
    std::shared_ptr<platform::fake::FakeWorld> world = std::make_shared<platform::fake::FakeWorld>();
    platform::Components components = platform::fake::makeFakeComponents(world);
    std::unique_ptr<ui::AppContext> app;
    std::unique_ptr<uiqt::QtFrontEnd> frontEnd;
};

// Real time passes and the windows paint.
void settle(int ms = 150)
{
    QTest::qWait(ms);
}

int distinctColours(const QImage &image, int enough)
{
    std::set<QRgb> seen;
    for (int y = 0; y < image.height(); ++y) {
        const auto *line = reinterpret_cast<const QRgb *>(image.constScanLine(y));
        for (int x = 0; x < image.width(); ++x) {
            seen.insert(line[x]);
            if (static_cast<int>(seen.size()) >= enough)
                return enough;
        }
    }
    return static_cast<int>(seen.size());
}

std::string shotPath(const std::string &file)
{
    fs::create_directories(BRASSWICK_SCREENSHOT_DIR);
    return (fs::path(BRASSWICK_SCREENSHOT_DIR) / file).string();
}

// Photographs a window and checks that the picture is a picture, not a blank.
void photograph(const Program &p, const std::string &windowName, const std::string &file)
{
    const std::string path = shotPath(file);
    std::error_code ec;
    fs::remove(path, ec);
    ASSERT_TRUE(p.frontEnd->saveScreenshot(windowName, path)) << file;
    ASSERT_TRUE(fs::exists(path)) << file;
    const QImage image(QString::fromStdString(path));
    ASSERT_FALSE(image.isNull()) << file;
    EXPECT_GT(distinctColours(image.convertToFormat(QImage::Format_RGB32), 64), 20) << file << " is nearly one colour";
    std::cout << "[ picture ] " << path << " (" << image.width() << "x" << image.height() << ")\n";
}

// What a user could not read: a control's widget outside its window, visible controls on top of
// each other, a caption cut off by its control's edges.
// Labels in `free` show texts of any length (a folder's path) and are not measured.
std::vector<std::string> readabilityProblems(uiqt::WindowView &view, const std::vector<const ui::Control *> &free)
{
    std::vector<std::string> problems;
    ui::Window *w = view.window();
    if (!w)
        return {"the window is gone"};
    struct Shown {
        std::string name;
        QWidget *widget;
    };
    std::vector<Shown> shown;
    for (ui::Control *c : w->controls()) {
        QWidget *widget = view.widgetFor(*c);
        if (!widget || widget->isHidden() || !c->Visible())
            continue;
        const std::string name = c->fullName();
        shown.push_back({name, widget});
        if (QWidget *parent = widget->parentWidget(); parent && !parent->rect().contains(widget->geometry()))
            problems.push_back(name + " reaches outside its container");

        const QFontMetrics fm(widget->font());
        const bool measured = std::find(free.begin(), free.end(), c) == free.end();
        if (auto *label = qobject_cast<QLabel *>(widget); label && !label->text().isEmpty() && measured) {
            const QRect room = label->contentsRect();
            const QRect needed = fm.boundingRect(room, Qt::TextWordWrap | label->alignment(), label->text());
            if (needed.height() > room.height() || needed.width() > room.width())
                problems.push_back(name + " cuts off \"" + label->text().toStdString() + "\"");
        } else if (auto *check = qobject_cast<QCheckBox *>(widget)) {
            if (check->sizeHint().width() > check->width() || fm.height() > check->height())
                problems.push_back(name + " cuts off \"" + check->text().toStdString() + "\"");
        } else if (auto *button = qobject_cast<QPushButton *>(widget); button && !button->text().isEmpty()) {
            if (fm.horizontalAdvance(button->text()) + 8 > button->width() || fm.height() + 4 > button->height())
                problems.push_back(name + " cuts off \"" + button->text().toStdString() + "\"");
        } else if (auto *group = qobject_cast<QGroupBox *>(widget)) {
            if (fm.horizontalAdvance(group->title()) + 16 > group->width())
                problems.push_back(name + " cuts off \"" + group->title().toStdString() + "\"");
        } else if (auto *tree = qobject_cast<QTreeView *>(widget)) {
            // Columns that fit without scrolling sideways, and rows that show their whole text.
            if (tree->header()->length() > tree->viewport()->width())
                problems.push_back(name + " has columns wider than the list");
            const QAbstractItemModel *m = tree->model();
            const QFontMetrics rowFont(tree->font());
            const int markRoom = tree->style()->pixelMetric(QStyle::PM_SmallIconSize, nullptr, tree) + 4;
            for (int r = 0; r < std::min(m->rowCount(), 200); ++r) {
                for (int c = 0; c < m->columnCount(); ++c) {
                    const QModelIndex index = m->index(r, c);
                    const QString text = m->data(index).toString();
                    const bool mark = !m->data(index, Qt::DecorationRole).isNull();
                    const int needed = rowFont.horizontalAdvance(text) + (mark ? markRoom : 0) + 6;
                    if (!text.isEmpty() && needed > tree->header()->sectionSize(c))
                        problems.push_back(name + " cuts off \"" + text.toStdString() + "\"");
                }
            }
        }
    }
    for (size_t i = 0; i < shown.size(); ++i) {
        for (size_t j = i + 1; j < shown.size(); ++j) {
            QWidget *a = shown[i].widget;
            QWidget *b = shown[j].widget;
            if (a->parentWidget() != b->parentWidget())
                continue;
            if (a->geometry().intersects(b->geometry()))
                problems.push_back(shown[i].name + " and " + shown[j].name + " overlap");
        }
    }
    return problems;
}

void expectReadable(Program &p, const std::string &windowName, const std::vector<const ui::Control *> &free = {})
{
    for (const auto &problem : readabilityProblems(p.view(windowName), free))
        ADD_FAILURE() << windowName << ": " << problem;
}

// The folder a user loads: short 44100 Hz files, one with a leading track number, two at
// 48000 Hz (which the scan counts as damaged), and one crafted recording of 4341 seconds.
void fillMusicFolder(const fs::path &music)
{
    fs::create_directories(music);
    struct Track {
        const char *name;
        int rate;
        double seconds;
        int channels;
    };
    const Track tracks[] = {
        {"01-Opening_Theme.mp3", 44100, 20, 2}, {"Afternoon Walk.mp3", 44100, 12, 2},
        {"bright morning.mp3", 44100, 15, 2},   {"Closing.mp3", 44100, 12, 1},
        {"Drift.mp3", 44100, 8, 2},             {"Evening Rain.mp3", 44100, 10, 2},
        {"Fjord Lights.mp3", 44100, 9, 1},      {"Glass Harbour.mp3", 48000, 10, 2},
        {"Hollow Hill.mp3", 48000, 6, 2},       {"Indigo.mp3", 44100, 6, 2},
        {"Juniper.mp3", 44100, 7, 2},
    };
    for (const auto &t : tracks) {
        testsupport::Mp3Options o;
        o.sampleRate = t.rate;
        o.seconds = t.seconds;
        o.channels = t.channels;
        ASSERT_TRUE(testsupport::makeMp3((music / t.name).string(), o)) << t.name;
    }
    // One valid first frame (MPEG-1 Layer III, 32 kbit/s, 44100 Hz) before silence, sized so the
    // scan measures 4341 seconds: longer than a 74 minute disc has left after a few tracks.
    std::ofstream big(music / "Zz Long Session.mp3", std::ios::binary);
    const unsigned char frame[] = {0xFF, 0xFB, 0x10, 0x64};
    big.write(reinterpret_cast<const char *>(frame), sizeof frame);
    const std::vector<char> zeros(1 << 16, 0);
    for (long left = 17463296; left > 0; left -= static_cast<long>(zeros.size()))
        big.write(zeros.data(), std::min<long>(left, static_cast<long>(zeros.size())));
    ASSERT_TRUE(big.good());
}

int rows(QTreeView *tree)
{
    return tree && tree->model() ? tree->model()->rowCount() : -1;
}

QString labelText(const Program &p, const std::string &windowName, const ui::Control &label)
{
    auto *l = p.widget<QLabel>(windowName, label);
    return l ? l->text() : QStringLiteral("<no label>");
}

bool labelShown(const Program &p, const std::string &windowName, const ui::Control &label)
{
    auto *l = p.widget<QLabel>(windowName, label);
    return l && l->isVisible();
}

TEST(WorkflowScreens, DiscChoiceLayoutOvertimeAndHandOver)
{
    ScratchFolder work("brasswick-gui-workflow");
    const fs::path music = work.path() / "music";
    ASSERT_NO_FATAL_FAILURE(fillMusicFolder(music));
    Program p(work.path());

    // The splash stands its seven seconds, then the main window comes.
    p.loop.deliver([&] { shell::startProgram(*p.app); });
    settle(500);
    ASSERT_NE(p.app->findLoaded("bannerx"), nullptr);
    settle(6900);
    ASSERT_EQ(p.app->findLoaded("bannerx"), nullptr);
    auto *main = dynamic_cast<shell::frmMain *>(p.app->findLoaded("frmMain"));
    ASSERT_NE(main, nullptr);
    ASSERT_TRUE(main->Visible());
    settle();

    // New layout: the disc choice.
    main->ctToolBar1.userButton(1);
    settle();
    auto *choice = dynamic_cast<layout::Form2 *>(p.app->findLoaded("Form2"));
    ASSERT_NE(choice, nullptr);
    ASSERT_TRUE(p.view("Form2").topLevel()->isVisible());
    EXPECT_EQ(labelText(p, "Form2", choice->Label1), "What kind of CD-R will you burn?");
    EXPECT_TRUE(labelShown(p, "Form2", choice->Label1));
    ASSERT_NE(p.widget<QCheckBox>("Form2", choice->Check1), nullptr);
    EXPECT_EQ(p.widget<QCheckBox>("Form2", choice->Check1)->text(), "74 Minute CD");
    expectReadable(p, "Form2");
    photograph(p, "Form2", "form2.png");

    choice->Check1.userClick();
    settle(50);
    EXPECT_TRUE(p.widget<QCheckBox>("Form2", choice->Check1)->isChecked());
    choice->ctButton1.userClick();
    settle();
    ASSERT_EQ(p.app->findLoaded("Form2"), nullptr);
    auto *builder = dynamic_cast<layout::Form5 *>(p.app->findLoaded("Form5"));
    ASSERT_NE(builder, nullptr);
    ASSERT_TRUE(p.view("Form5").topLevel()->isVisible());

    // Load the folder: every MP3 in it is scanned into the folder list.
    p.dialogs.queueResult(music.string());
    builder->ctButton3.userClick();
    settle();
    ASSERT_EQ(p.dialogs.requests().size(), 1u);
    auto *folderList = p.widget<QTreeView>("Form5", builder->ctList1);
    auto *burnList = p.widget<QTreeView>("Form5", builder->ctList2);
    ASSERT_NE(folderList, nullptr);
    ASSERT_NE(burnList, nullptr);
    ASSERT_EQ(builder->ctList1.ListCount(), 12);
    EXPECT_EQ(rows(folderList), 12);
    EXPECT_TRUE(folderList->isEnabled());
    const QAbstractItemModel *folderModel = folderList->model();
    EXPECT_EQ(folderModel->data(folderModel->index(0, 1)).toString(), "Opening Theme");
    EXPECT_EQ(folderModel->data(folderModel->index(7, 2)).toString(), "00:00"); // 48000 Hz: damaged
    EXPECT_EQ(folderModel->data(folderModel->index(11, 2)).toString(), "01-12:21");
    EXPECT_EQ(labelText(p, "Form5", builder->Label7), QString::fromStdString(music.string()));
    EXPECT_TRUE(labelShown(p, "Form5", builder->Label7));

    // Three tracks to the burn list.
    for (int row : {0, 1, 2})
        builder->ctList1.userClickRow(row);
    settle(50);
    EXPECT_EQ(labelText(p, "Form5", builder->Label5), "Sample Rate: 44100");
    builder->ctButton1.userClick();
    settle();
    ASSERT_EQ(builder->ctList2.ListCount(), 3);
    EXPECT_EQ(rows(burnList), 3);
    EXPECT_TRUE(burnList->model()->data(burnList->model()->index(0, 0)).toString().startsWith("1. Opening Theme"));
    const QString timeLeft = labelText(p, "Form5", builder->Label2);
    EXPECT_EQ(timeLeft.toStdString(), builder->Label2.Caption());
    EXPECT_TRUE(timeLeft.startsWith("Time left on CD-1:1")) << timeLeft.toStdString();
    EXPECT_TRUE(labelShown(p, "Form5", builder->Label2));
    EXPECT_FALSE(labelShown(p, "Form5", builder->Label3));
    EXPECT_TRUE(p.widget<QProgressBar>("Form5", builder->progressbar1)->isVisible());
    expectReadable(p, "Form5", {&builder->Label7});
    photograph(p, "Form5", "form5-loaded.png");

    // The long recording takes the layout over time; the warning takes the meter's place.
    builder->ctList1.userClickRow(11);
    builder->ctButton1.userClick();
    settle(50);
    ASSERT_EQ(builder->ctList2.ListCount(), 4);
    EXPECT_EQ(rows(burnList), 4);
    EXPECT_EQ(builder->OvertimeFlag.value(), rt::True);
    settle(700);
    EXPECT_TRUE(labelShown(p, "Form5", builder->Label3));
    EXPECT_EQ(labelText(p, "Form5", builder->Label3), "CD Overtime Detected");
    EXPECT_FALSE(p.widget<QProgressBar>("Form5", builder->progressbar1)->isVisible());
    const QString overtime = labelText(p, "Form5", builder->Label2);
    EXPECT_EQ(overtime.toStdString(), builder->Label2.Caption());
    EXPECT_TRUE(overtime.startsWith("Time left on CD-00.00.")) << overtime.toStdString();
    EXPECT_TRUE(labelShown(p, "Form5", builder->Label2));
    expectReadable(p, "Form5", {&builder->Label7});
    photograph(p, "Form5", "form5-overtime.png");

    // The hand-over is refused while over time.
    p.boxes.queueAnswer(ui::vbOK);
    builder->ctButton4.userClick();
    settle(50);
    ASSERT_EQ(p.boxes.shown().size(), 1u);
    EXPECT_EQ(p.boxes.shown().back().request.prompt, "Your CD list is overtime! Please remove some songs");
    EXPECT_TRUE(p.view("Form5").topLevel()->isVisible());
    EXPECT_EQ(main->mainlist.ListCount(), 0);

    // Without it the layout fits; handing over fills the main window's burn list.
    builder->ctList2.userClickRow(3);
    builder->ctButton2.userClick();
    settle(700);
    ASSERT_EQ(builder->ctList2.ListCount(), 3);
    EXPECT_EQ(builder->OvertimeFlag.value(), 0);
    EXPECT_FALSE(labelShown(p, "Form5", builder->Label3));
    EXPECT_TRUE(p.widget<QProgressBar>("Form5", builder->progressbar1)->isVisible());
    builder->ctButton4.userClick();
    settle();
    EXPECT_FALSE(p.view("Form5").topLevel()->isVisible());
    ASSERT_EQ(main->mainlist.ListCount(), 3);
    auto *mainList = p.widget<QTreeView>("frmMain", main->mainlist);
    ASSERT_NE(mainList, nullptr);
    EXPECT_EQ(rows(mainList), 3);
    EXPECT_EQ(mainList->model()->data(mainList->model()->index(0, 0)).toString(), "Opening Theme");
    const QString discLeft = labelText(p, "frmMain", main->Label3);
    EXPECT_TRUE(discLeft.startsWith("CD:1:1")) << discLeft.toStdString();
    EXPECT_TRUE(p.view("frmMain").topLevel()->isVisible());
    expectReadable(p, "frmMain");
    photograph(p, "frmMain", "main-after-handover.png");

    EXPECT_EQ(p.boxes.shown().size(), 1u);
    EXPECT_FALSE(p.app->ended());
}

TEST(WorkflowScreens, BurnToTheImageRecorder)
{
    ScratchFolder work("brasswick-gui-burn");
    const fs::path music = work.path() / "music";
    fs::create_directories(music);
    for (const char *name : {"Aurora.mp3", "Breakwater.mp3"}) {
        testsupport::Mp3Options o;
        o.seconds = 6;
        ASSERT_TRUE(testsupport::makeMp3((music / name).string(), o));
    }
    Program p(work.path(), true);
    auto &main = p.app->form<shell::frmMain>();
    main.Show();
    settle();
    EXPECT_EQ(main.Text1.Text(), "Image Recorder");

    // A two-track layout, handed over.
    auto &builder = p.app->form<layout::Form5>();
    builder.cdvalue(4400);
    builder.Show();
    p.dialogs.queueResult(music.string());
    builder.ctButton3.userClick();
    settle();
    builder.ctList1.userClickRow(0);
    builder.ctList1.userClickRow(1);
    builder.ctButton1.userClick();
    builder.ctButton4.userClick();
    settle();
    ASSERT_EQ(main.mainlist.ListCount(), 2);

    // Start, answered Yes: Mainwriter decodes and the Image Recorder sets up and writes.
    p.boxes.queueAnswer(ui::vbYes);
    main.ctButton13.userClick();
    // Past the first track's set-up and writing, into the second track's.
    settle(7000);
    auto *writer = dynamic_cast<burn::Mainwriter *>(p.app->findLoaded("Mainwriter"));
    ASSERT_NE(writer, nullptr);
    ASSERT_TRUE(p.view("Mainwriter").topLevel()->isVisible());
    EXPECT_FALSE(p.view("frmMain").topLevel()->isVisible());
    expectReadable(p, "Mainwriter", {&writer->Label1, &writer->Label2});
    photograph(p, "Mainwriter", "mainwriter-burning.png");
    // The second track is decoded and waits in the recorder's set-up; the first is on disc.
    EXPECT_EQ(writer->ctList1.ListCount(), 0);
    EXPECT_EQ(writer->progressbar1.Value(), 100);
    EXPECT_GE(writer->overallmeter.Value(), 100);

    // Both tracks: two set-ups of five seconds, then the finish.
    QElapsedTimer clock;
    clock.start();
    while (p.app->findLoaded("Mainwriter") && clock.elapsed() < 60000)
        settle(200);
    settle(500);
    ASSERT_EQ(p.app->findLoaded("Mainwriter"), nullptr);
    ASSERT_GE(p.boxes.shown().size(), 2u);
    EXPECT_EQ(p.boxes.shown().back().request.prompt, "Velmora Works has finished your CD");
    EXPECT_TRUE(p.view("frmMain").topLevel()->isVisible());
    photograph(p, "frmMain", "main-after-burn.png");
    int cues = 0;
    for (const auto &e : fs::directory_iterator(work.path() / "discs"))
        cues += e.path().extension() == ".cue";
    EXPECT_EQ(cues, 1);
}

TEST(WorkflowScreens, SettingsEditorWithARowSelected)
{
    ScratchFolder work("brasswick-gui-settings");
    Program p(work.path());
    p.world->registry->keys["Software\\Velmora Works\\MP3 Data"]["NumBuffers"] = "64";
    auto &main = p.app->form<shell::frmMain>();
    main.Show();
    settle();

    // Toolbar button 5 opens the editor; the user clicks "Num Buffers" in its tree.
    main.ctToolBar1.userButton(5);
    settle();
    auto *editor = dynamic_cast<shell::Form7 *>(p.app->findLoaded("Form7"));
    ASSERT_NE(editor, nullptr);
    ASSERT_TRUE(p.view("Form7").topLevel()->isVisible());
    EXPECT_EQ(p.view("Form7").topLevel()->windowTitle(), "Velmora Works - Software Settings");
    auto *tree = p.widget<QTreeWidget>("Form7", editor->TList2);
    ASSERT_NE(tree, nullptr);
    ASSERT_EQ(tree->topLevelItemCount(), 1);
    QTreeWidgetItem *audioOut = tree->topLevelItem(0)->child(0);
    ASSERT_NE(audioOut, nullptr);
    QTreeWidgetItem *numBuffers = audioOut->child(2);
    ASSERT_NE(numBuffers, nullptr);
    EXPECT_EQ(numBuffers->text(0), "Num Buffers");
    tree->scrollToItem(numBuffers);
    QTest::mouseClick(tree->viewport(), Qt::LeftButton, {}, tree->visualItemRect(numBuffers).center());
    settle();
    EXPECT_EQ(editor->selectedRow.value(), 4);
    EXPECT_TRUE(numBuffers->isSelected());
    auto *text = p.widget<QLineEdit>("Form7", editor->Text1);
    ASSERT_NE(text, nullptr);
    EXPECT_EQ(text->text(), "64");
    auto *log = p.widget<QTreeView>("Form7", editor->List1);
    ASSERT_NE(log, nullptr);
    ASSERT_EQ(rows(log), 2);
    EXPECT_EQ(log->model()->data(log->model()->index(1, 0)).toString(), "Data port opened!490- NumBuffers Port Open");
    expectReadable(p, "Form7");
    photograph(p, "Form7", "form7-settings.png");

    // Typed and written back through the widgets.
    QTest::keyClick(text, Qt::Key_A, Qt::ControlModifier);
    QTest::keyClicks(text, "128");
    EXPECT_EQ(editor->Text1.Text(), "128");
    QTest::mouseClick(p.widget<QPushButton>("Form7", editor->ctButton1), Qt::LeftButton);
    settle(50);
    EXPECT_EQ(p.world->registry->keys["Software\\Velmora Works\\MP3 Data"]["NumBuffers"], "128");
    EXPECT_TRUE(p.boxes.shown().empty());
}

TEST(WorkflowScreens, BatchConverterDuringARun)
{
    ScratchFolder work("brasswick-gui-batch");
    const fs::path waves = work.path() / "waves";
    fs::create_directories(waves);
    // Long stereo recordings at 48000 Hz, so that the run lasts while it is photographed.
    const std::vector<std::string> names = {"Harbour Bells.wav", "Night Ferry.wav", "Tide Table.wav"};
    for (const auto &name : names) {
        testsupport::WaveOptions o;
        o.sampleRate = 48000;
        o.channels = 2;
        o.bits = 24;
        o.seconds = 60;
        ASSERT_TRUE(testsupport::makeWave((waves / name).string(), o)) << name;
    }
    Program p(work.path(), true);
    auto &main = p.app->form<shell::frmMain>();
    main.Show();
    settle();

    // Batch Convert from the menu; three files added through the open dialog.
    main.mnubatchconvert.userClick();
    settle();
    auto *b = dynamic_cast<convert::batcher *>(p.app->findLoaded("batcher"));
    ASSERT_NE(b, nullptr);
    ASSERT_TRUE(p.view("batcher").topLevel()->isVisible());
    EXPECT_EQ(p.view("batcher").topLevel()->windowTitle(), "Velmora Works Batch Conversion");
    for (const auto &name : names) {
        p.dialogs.queueResult((waves / name).string());
        b->btnFile.userClick();
    }
    settle(50);
    ASSERT_EQ(b->ListBox.ListCount(), 3);
    auto *gauge = p.widget<QProgressBar>("batcher", b->Gauge);
    ASSERT_NE(gauge, nullptr);
    EXPECT_FALSE(gauge->isVisible());

    // Start: the format chooser is answered, and the run begins with the first file.
    p.dialogs.queueResult(std::string("PCM, 22050 Hz, 16 bit, mono"));
    b->btnStart.userClick();
    ASSERT_EQ(p.dialogs.requests().back().kind, ui::FileDialogRequest::Kind::WaveFormat);
    EXPECT_EQ(p.dialogs.requests().back().title, "Select...");
    // Caught in the middle of a file: the gauge shown, between its ends.
    QElapsedTimer clock;
    clock.start();
    bool midway = false;
    while (!midway && clock.elapsed() < 60000) {
        QTest::qWait(2);
        midway = gauge->isVisible() && gauge->value() >= 25 && gauge->value() < 100 && b->ItemIndex.value() < 3;
    }
    ASSERT_TRUE(midway) << "the run was never seen with its gauge between its ends";
    EXPECT_FALSE(p.widget<QPushButton>("batcher", b->btnStart)->isEnabled());
    EXPECT_TRUE(p.widget<QPushButton>("batcher", b->btnStop)->isEnabled());
    EXPECT_EQ(b->ListBox.ListIndex(), b->ItemIndex.value());
    expectReadable(p, "batcher");
    photograph(p, "batcher", "batcher-converting.png");
    std::cout << "[ batch   ] photographed on file " << b->ItemIndex.value() + 1 << " at " << gauge->value() << "%\n";

    // The run goes on to its end: the done box, the gauge hidden, three targets.
    while (b->Gauge.Visible() && clock.elapsed() < 120000)
        settle(50);
    settle(100);
    EXPECT_FALSE(gauge->isVisible());
    ASSERT_EQ(p.boxes.shown().size(), 1u);
    EXPECT_EQ(p.boxes.shown().back().request.prompt, "Batch conversion done.");
    for (const auto &name : names) {
        const fs::path target = waves / (fs::path(name).stem().string() + "_acm.wav");
        ASSERT_TRUE(fs::exists(target)) << target;
        // 44-byte header, 60 s of 22050 Hz 16-bit mono.
        EXPECT_EQ(fs::file_size(target), 44u + 60u * 22050u * 2u) << target;
    }
}

// Mean time of one scroll step from the top of a list to its bottom, each step painted.
double meanScrollStepMs(QTreeView *tree, int &steps)
{
    QScrollBar *bar = tree->verticalScrollBar();
    bar->setValue(bar->minimum());
    tree->viewport()->repaint();
    QElapsedTimer clock;
    clock.start();
    steps = 0;
    for (int value = bar->minimum(); value <= bar->maximum(); value += std::max(1, bar->pageStep())) {
        bar->setValue(value);
        tree->viewport()->repaint();
        ++steps;
    }
    // And to the last row.
    tree->scrollToBottom();
    tree->viewport()->repaint();
    ++steps;
    return static_cast<double>(clock.nsecsElapsed()) / 1e6 / steps;
}

TEST(WorkflowScreens, TenThousandRowsScrollFluidly)
{
    ScratchFolder work("brasswick-gui-rows");
    Program p(work.path());
    auto &main = p.app->form<shell::frmMain>();
    main.Show();
    auto &builder = p.app->form<layout::Form5>();
    builder.cdvalue(4400);
    builder.Show();
    settle();

    constexpr int count = 10000;
    struct Case {
        const char *title;
        const char *windowName;
        ui::ListBox *list;
        bool columnsWithMark;
    };
    const Case cases[] = {{"Form5.ctList1 (folder)", "Form5", &builder.ctList1, true},
                          {"Form5.ctList2 (burn list)", "Form5", &builder.ctList2, false},
                          {"frmMain.mainlist (burn list)", "frmMain", &main.mainlist, false}};
    for (const auto &c : cases) {
        c.list->Clear();
        c.list->setEnabled(true);
        QElapsedTimer filling;
        filling.start();
        for (int i = 0; i < count; ++i) {
            const std::string time = std::to_string(10 + i % 50) + ":" + std::to_string(10 + i % 49);
            const std::string title = "Track number " + std::to_string(i + 1);
            c.list->AddItem(c.columnsWithMark ? ";" + title + ";" + time : title + ";" + time);
            if (c.columnsWithMark)
                c.list->setRowImage(i, 1);
        }
        const double fillMs = static_cast<double>(filling.nsecsElapsed()) / 1e6;
        settle(50);
        auto *tree = p.widget<QTreeView>(c.windowName, *c.list);
        ASSERT_NE(tree, nullptr) << c.title;
        ASSERT_EQ(c.list->ListCount(), count) << c.title;
        ASSERT_EQ(rows(tree), count) << c.title;
        int steps = 0;
        const double mean = meanScrollStepMs(tree, steps);
        const QRect lastRow = tree->visualRect(tree->model()->index(count - 1, 0));
        const bool lastInSight = tree->viewport()->rect().intersects(lastRow);
        std::cout << "[ scroll  ] " << c.title << ": " << count << " rows added in " << std::fixed
                  << std::setprecision(1) << fillMs << " ms; " << steps << " painted steps top to bottom, "
                  << std::setprecision(3) << mean << " ms per step\n";
        EXPECT_TRUE(lastInSight) << c.title;
    }
}

} // namespace

TEST(WorkflowScreens, PlayingWithTheListeningRoom)
{
    ScratchFolder work("brasswick-gui-play");
    const fs::path music = work.path() / "music";
    fs::create_directories(music);
    testsupport::Mp3Options o;
    o.seconds = 20;
    ASSERT_TRUE(testsupport::makeMp3((music / "Lighthouse.mp3").string(), o));
    Program p(work.path());
    // The real player into its silent sink, which keeps real time.
    platform::audio::PlayerOptions sound;
    sound.soundFolder = work.path() / "sound";
    platform::audio::addRealPlayerComponents(p.components, p.loop, sound);
    auto &main = p.app->form<shell::frmMain>();
    main.Show();
    settle();

    auto &builder = p.app->form<layout::Form5>();
    builder.cdvalue(4400);
    builder.Show();
    p.dialogs.queueResult(music.string());
    builder.ctButton3.userClick();
    settle();
    builder.ctList1.userClickRow(0);
    builder.ctButton1.userClick();
    builder.ctButton4.userClick();
    settle();
    ASSERT_EQ(main.mainlist.ListCount(), 1);

    // The room, with a few bands moved.
    main.ctToolBar1.userButton(13);
    settle();
    auto &room = p.app->form<playback::Form6>();
    ASSERT_TRUE(p.view("Form6").topLevel()->isVisible());
    for (auto [band, gain] : {std::pair{0, 6}, std::pair{1, 9}, std::pair{4, -8}, std::pair{9, 3}, std::pair{13, -12}})
        room.GSlider8[band]->userSlide(gain);
    EXPECT_DOUBLE_EQ(main.eq->BandGain(4), -8.0);

    main.mainlist.userClickRow(0);
    main.ctButton12.userClick();
    settle(2500);
    EXPECT_EQ(main.isPlaying, -1);
    EXPECT_NE(main.Label6.Caption(), "X1 -^0:00.000");
    EXPECT_EQ(room.Label1.Caption(), main.Label6.Caption());
    EXPECT_GT(main.Slider1.Value(), 1000);
    // The analysers see the tone.
    EXPECT_FALSE(main.Spectrumx1.readBins().empty());
    photograph(p, "frmMain", "main-playing.png");
    photograph(p, "Form6", "listening-room.png");

    main.ctButton11.userClick();
    settle(300);
    EXPECT_EQ(main.isPlaying, 0);
    EXPECT_EQ(main.Label6.Caption(), "X1 -^0:00.000");
}

// The cover designer on the real image control: a photograph opened and transferred, a red
// rubber band drawn on the canvas, then the zoom into it.
TEST(WorkflowScreens, CoverDesignerRubberBandAndZoom)
{
    ScratchFolder work("brasswick-gui-cover");
    const fs::path photo = work.path() / "harbour.jpg";
    const std::string make = "gm convert -size 640x480 gradient:'#1b4f8a'-'#f2c45a' -fill '#2d6e3e' -draw 'circle 320,300 320,420' "
                             "-fill '#ffffff' -draw 'rectangle 80,60 200,140' '" + photo.string() + "'";
    ASSERT_TRUE(testsupport::runTool(make).succeeded);
    Program p(work.path());
    auto clipboard = platform::imaging::makeMemoryClipboard();
    p.components.imageClipboard = [clipboard] { return clipboard; };
    p.components.imageControl = [clipboard] { return platform::imaging::makeGmImageControl(clipboard); };
    auto &main = p.app->form<shell::frmMain>();
    main.Show();
    settle();
    main.ctToolBar1.userButton(7);
    settle();
    auto *cd = dynamic_cast<cover::CoverDesigner *>(p.app->findLoaded("CoverDesigner"));
    ASSERT_NE(cd, nullptr);
    ASSERT_TRUE(p.view("CoverDesigner").topLevel()->isVisible());
    EXPECT_EQ(p.view("CoverDesigner").topLevel()->windowTitle(), "Easy Coverlet- Velmora Works");
    p.dialogs.queueResult(photo.string());
    cd->mnuopen.userClick();
    cd->ctButton2.userClick();
    settle();
    ASSERT_EQ(cd->ImagXpress1->IWidth(), 640);
    EXPECT_EQ(cd->lblWidth.Caption(), "Width: 640");
    // A drag from (60, 80) to (260, 200) on the canvas, in twips.
    cd->ImagXpress1.userMouse("down", ui::LeftButton, 60 * 15, 80 * 15);
    cd->ImagXpress1.userMouse("move", ui::LeftButton, 160 * 15, 140 * 15);
    cd->ImagXpress1.userMouse("move", ui::LeftButton, 260 * 15, 200 * 15);
    settle();
    ASSERT_TRUE(cd->ImagXpress1->rubberBand().shown);
    const QImage banded = p.view("CoverDesigner").topLevel()->grab().toImage();
    photograph(p, "CoverDesigner", "cover-rubber-band.png");
    // The frame is pure red somewhere on the canvas.
    bool red = false;
    for (int y = 0; y < banded.height() && !red; ++y)
        for (int x = 0; x < banded.width() && !red; ++x)
            red = banded.pixel(x, y) == qRgb(255, 0, 0);
    EXPECT_TRUE(red) << "no red rubber band on the screen";
    cd->ImagXpress1.userMouse("up", ui::LeftButton, 260 * 15, 200 * 15);
    settle();
    EXPECT_DOUBLE_EQ(cd->ImagXpress1->IPZoomF(), 2.0);
    EXPECT_FALSE(cd->ImagXpress1->rubberBand().shown);
    photograph(p, "CoverDesigner", "cover-zoomed.png");
    cd->Unload();
    settle();
}

// Button 11 with the real download from a local server: connect with its bar part-way, then
// Plugins with the catalogue's rows and both buttons.
TEST(WorkflowScreens, AddOnCatalogueFromALocalServer)
{
    ScratchFolder work("brasswick-gui-addons");
    const fs::path site = work.path() / "site";
    fs::create_directories(site);
    {
        std::ofstream out(site / "plugins.dat", std::ios::binary);
        out << "Echo Remover;1.2;Removes echo;1.2 MB\r\n"
               "URL-http://downloads.example.net/echo.zip\r\ninfo-http://www.example.net/echo.html\r\nfilesize-1.2 MB\r\n"
               "Bass Lift;0.9;More bass;300 kB\r\nTrack Namer;2.1;Names tracks;80 kB\r\n";
    }
    scenario::LocalHttpServer server(site);
    ASSERT_TRUE(server.ok()) << server.error();
    Program p(work.path());
    p.world->registry->keys["Software\\Velmora Works\\MP3 Data"]["AddonServer"] = server.address();
    p.components.httpDownload = [&p] { return std::make_unique<platform::http::CurlHttpDownload>(p.loop); };
    auto &main = p.app->form<shell::frmMain>();
    main.Show();
    settle();

    main.ctToolBar1.userButton(11);
    auto *c = dynamic_cast<addons::connect *>(p.app->findLoaded("connect"));
    ASSERT_NE(c, nullptr);
    for (int i = 0; i < 200 && c->Label1.Caption() != "Please wait for engine query...."; ++i)
        settle(20);
    ASSERT_EQ(c->Label1.Caption(), "Please wait for engine query....");
    settle(400);
    EXPECT_EQ(p.view("connect").topLevel()->windowTitle(), "Connecting to Online Data Server");
    photograph(p, "connect", "addons-connect.png");
    expectReadable(p, "connect");

    // The bar fills and Timer2 hands over.
    for (int i = 0; i < 300 && p.app->findLoaded("connect"); ++i)
        settle(20);
    ASSERT_EQ(p.app->findLoaded("connect"), nullptr);
    auto *plugins = dynamic_cast<addons::Plugins *>(p.app->findLoaded("Plugins"));
    ASSERT_NE(plugins, nullptr);
    settle();
    ASSERT_TRUE(p.view("Plugins").topLevel()->isVisible());
    EXPECT_EQ(plugins->mainlist.ListCount(), 3);
    EXPECT_TRUE(plugins->ctButton3.Visible());
    EXPECT_TRUE(plugins->ctButton1.Visible());
    photograph(p, "Plugins", "addons-plugins.png");
    expectReadable(p, "Plugins");
}

// A disc image for the extraction window: two short tracks of music with CD-Text titles and ISRC
// codes, a long silent one (a sparse file, so the copy lasts while it is photographed), and a
// data track.
void writeDiscImage(const fs::path &discs)
{
    fs::create_directories(discs);
    const int64_t sector = 2352;
    const std::vector<int64_t> lengths = {30 * 75, 45 * 75, 50 * 60 * 75, 10 * 75};
    int64_t total = 0;
    for (int64_t l : lengths)
        total += l;
    {
        std::ofstream bin(discs / "Sampler.bin", std::ios::binary);
        // Two tones for the music tracks; the rest stays a hole of zeros.
        for (int t = 0; t < 2; ++t) {
            const int64_t samples = lengths[static_cast<size_t>(t)] * 588;
            for (int64_t i = 0; i < samples; ++i) {
                const double s = std::sin(2 * M_PI * (t == 0 ? 440.0 : 660.0) * static_cast<double>(i) / 44100.0);
                const auto v = static_cast<int16_t>(12000 * s);
                const char frame[4] = {static_cast<char>(v & 0xFF), static_cast<char>((v >> 8) & 0xFF),
                                       static_cast<char>(v & 0xFF), static_cast<char>((v >> 8) & 0xFF)};
                bin.write(frame, 4);
            }
        }
    }
    fs::resize_file(discs / "Sampler.bin", static_cast<uintmax_t>(total * sector));
    std::ofstream cue(discs / "Sampler.cue");
    cue << "TITLE \"Harbour Sampler\"\nFILE \"Sampler.bin\" BINARY\n";
    const char *titles[] = {"Harbour Bells", "Night Ferry", "Long Silence", ""};
    int64_t start = 0;
    for (size_t i = 0; i < lengths.size(); ++i) {
        char head[64];
        std::snprintf(head, sizeof head, "  TRACK %02zu %s\n", i + 1, i == 3 ? "MODE1/2352" : "AUDIO");
        cue << head;
        if (i < 3)
            cue << "    FLAGS DCP\n    TITLE \"" << titles[i] << "\"\n";
        if (i < 2)
            cue << "    ISRC GBAYE260000" << i + 1 << "\n";
        char index[64];
        std::snprintf(index, sizeof index, "    INDEX 01 %02lld:%02lld:%02lld\n", static_cast<long long>(start / 4500),
                      static_cast<long long>(start / 75 % 60), static_cast<long long>(start % 75));
        cue << index;
        start += lengths[i];
    }
}

TEST(WorkflowScreens, DigitalCopyOfADiscImage)
{
    ScratchFolder work("brasswick-gui-extract");
    writeDiscImage(work.path() / "discs");
    Program p(work.path(), true);
    platform::cdrom::ReaderOptions readerOptions;
    readerOptions.imageFolder = work.path() / "discs";
    readerOptions.scanSystemDrives = false;
    platform::cdrom::addRealCdReader(p.components, p.loop, readerOptions);
    auto &main = p.app->form<shell::frmMain>();
    main.Show();
    settle();

    // Digital CD Copy from the menu: the image is the one drive, read half a second later.
    main.mnucdcopy.userClick();
    auto *m = dynamic_cast<extract::MainForm *>(p.app->findLoaded("MainForm"));
    ASSERT_NE(m, nullptr);
    QElapsedTimer clock;
    clock.start();
    while (m->ListView.Count() == 0 && clock.elapsed() < 10000)
        settle(50);
    settle(600);
    ASSERT_EQ(m->ListView.Count(), 4);
    EXPECT_EQ(p.view("MainForm").topLevel()->windowTitle(), "Digital Audio Copy - Harbour Sampler");
    EXPECT_EQ(m->DevCombo.List(0), "<Sampler.cue:>  Disc Image");
    EXPECT_EQ(m->ListView.Column(0, 2), "Harbour Bells");
    EXPECT_EQ(m->ListView.Column(1, 4), "0:00:45.00");
    EXPECT_EQ(m->ListView.Column(2, 5), "504.68 MB");
    EXPECT_EQ(m->StatusBar.Panel(1), "CD Inserted");
    EXPECT_TRUE(m->btnCopy.Enabled());
    expectReadable(p, "MainForm");
    photograph(p, "MainForm", "extract-contents.png");

    // The codes from the disc, then a copy of the long track through paranoia's checks.
    p.dialogs.queueResult((work.path() / "Track.wav").string());
    // Row 3 alone would ask the button about the data track after it; the data row's own mark
    // lets the click through, and the copy then walks row 3 only.
    m->ListView.setItemSelected(1, false);
    m->ListView.setItemSelected(3, true);
    m->ListView.setItemSelected(4, true);
    m->CDReader->setCopyMode(platform::CdReader::cmSectorSync);
    m->btnCopy.userClick();
    auto *copy = dynamic_cast<extract::CopyDlg *>(p.app->findLoaded("CopyDlg"));
    ASSERT_NE(copy, nullptr);
    bool midway = false;
    clock.restart();
    while (!midway && clock.elapsed() < 60000) {
        QTest::qWait(5);
        midway = copy->Meter1.Value() > copy->Meter1.Max() / 10 && copy->Meter1.Value() < copy->Meter1.Max() * 8 / 10;
    }
    ASSERT_TRUE(midway) << "the copy was never seen between its ends";
    settle(100);
    EXPECT_EQ(copy->Messages.List(0), "Copying Track 03");
    EXPECT_NE(copy->lblSpeed1.Caption(), "0.0 X");
    expectReadable(p, "CopyDlg");
    photograph(p, "CopyDlg", "extract-copying.png");
    std::cout << "[ extract ] photographed at " << copy->lblPercent1.Caption() << ", " << copy->lblSpeed1.Caption() << "\n";
    // Cancel: the box, and the window goes.
    copy->btnAbort.userClick();
    clock.restart();
    while (p.app->findLoaded("CopyDlg") && clock.elapsed() < 10000)
        settle(50);
    EXPECT_EQ(p.app->findLoaded("CopyDlg"), nullptr);
    ASSERT_FALSE(p.boxes.shown().empty());
    EXPECT_EQ(p.boxes.shown().back().request.prompt, "Copyprocess terminated by user!");
    m->Unload();
    settle();
}
