#include "Form5.h"

#include <filesystem>

#include "LayoutText.h"
#include "SessionFiles.h"
#include "runtime/Conversions.h"
#include "runtime/Paths.h"
#include "runtime/ResumeNext.h"
#include "shell/frmMain.h"
#include "ui/AppContext.h"
#include "ui/FileDialog.h"
#include "ui/MessageBox.h"

namespace layout {

namespace {
std::string numberTextOf(rt::Integer v)
{
    return std::to_string(v.value());
}
} // namespace

Form5::Form5(ui::AppContext &app)
    : Window(app, formName)
    , Label1(*this, "Label1")
    , Label7(*this, "Label7")
    , ctButton3(*this, "ctButton3")
    , ctList1(*this, "ctList1")
    , Label5(*this, "Label5")
    , Label4(*this, "Label4", 0)
    , ctButton1(*this, "ctButton1")
    , ctButton2(*this, "ctButton2")
    , ctList2(*this, "ctList2")
    , Label2(*this, "Label2")
    , Label3(*this, "Label3")
    , progressbar1(*this, "progressbar1", ui::Meter::Style::ProgressBar)
    , ctButton4(*this, "ctButton4")
    , ctButton5(*this, "ctButton5")
    , ctButton6(*this, "ctButton6")
    , ctButton7(*this, "ctButton7")
    , ctButton8(*this, "ctButton8")
    , ctGroup1(*this, "ctGroup1")
    , Check1(*this, "Check1")
    , Check2(*this, "Check2")
    , ctText1(*this, "ctText1")
    , Slider1(*this, "Slider1", ui::Meter::Style::Slider)
    , StatusBar1(*this, "StatusBar1", 2)
    , Timer1(*this, "Timer1", 500, false)
    , Timer2(*this, "Timer2", 4000, false)
    , File1(*this, "File1")
    , List1(*this, "List1")
    , timelist(*this, "timelist")
    , masterpull(*this, "masterpull")
    , list2(*this, "list2")
    , ctList31(*this, "ctList31")
    , ctList3(*this, "ctList3")
    , ctList4(*this, "ctList4")
    , ctList5(*this, "ctList5")
    , bogus(*this, "bogus")
    , Text1(*this, "Text1")
{
    setCaption("Digital MP3 File Control - Studio Edition");
    layOut();
    ctButton3.Click = [this] { ctButton3_Click(); };
    ctList1.Click = [this] { ctList1_Click(); };
    ctButton1.Click = [this] { ctButton1_Click(); };
    ctButton2.Click = [this] { ctButton2_Click(); };
    ctButton4.Click = [this] { ctButton4_Click(); };
    ctButton5.Click = [this] { ctButton5_Click(); };
    ctButton8.Click = [this] { ctButton8_Click(); };
    Timer1.Tick = [this] { Timer1_Timer(); };
    Timer2.Tick = [this] { Timer2_Timer(); };
}

void Form5::layOut()
{
    // About 760 by 560 pixels: the folder on the left, the burn list on the right.
    setGeometry(0, 0, 11400, 8400);
    centreOnScreen();
    ctButton3.setCaption("Load MP3 Files");
    ctButton3.setGeometry(120, 120, 1800, 420);
    Label1.setCaption("Current Folder:");
    Label1.setGeometry(2040, 180, 1440, 300);
    Label1.setVisible(false);
    Label7.setCaption("Position Empty-");
    Label7.setGeometry(3480, 180, 7680, 300);
    Label7.setVisible(false);

    ctList1.setColumnHeaders({"", "MP3 System Files", "Time"});
    ctList1.setMultiSelect(true);
    ctList1.setGeometry(120, 660, 5400, 4800);
    Label5.setCaption("Sample Rate:");
    Label5.setGeometry(120, 5520, 2640, 300);
    Label4.setCaption("Calculated Frames:");
    Label4.setGeometry(2880, 5520, 2640, 300);

    ctButton1.setCaption("Add to Burn List");
    ctButton1.setGeometry(5640, 1800, 1560, 420);
    ctButton2.setCaption("Remove");
    ctButton2.setGeometry(5640, 2340, 1560, 420);
    ctButton6.setCaption("Auto Clean");
    ctButton6.setGeometry(5640, 3420, 1560, 420);
    ctButton7.setCaption("PreX");
    ctButton7.setGeometry(5640, 3960, 1560, 420);

    ctList2.setColumnHeaders({"CD Burn List", "Track Time"});
    ctList2.setGeometry(7320, 660, 3960, 4800);
    Label2.setCaption("Time left on CD-");
    Label2.setGeometry(7320, 5520, 3960, 300);
    Label3.setCaption("CD Overtime Detected");
    Label3.setGeometry(7320, 5880, 3960, 330);
    progressbar1.setGeometry(7320, 5880, 3960, 330);

    ctGroup1.setFrame(true);
    ctGroup1.setCaption("Digital DCX");
    ctGroup1.setGeometry(120, 5940, 5400, 1200);
    Check1.setCaption("On/Off");
    // Inside the frame, positions count from the frame's corner.
    Check1.setGeometry(120, 300, 1500, 300);
    Check1.setContainer(&ctGroup1);
    Check2.setCaption("Cluster Sequence");
    Check2.setGeometry(120, 660, 2200, 300);
    Check2.setContainer(&ctGroup1);
    ctText1.setText("Wide-");
    ctText1.setGeometry(2520, 300, 1200, 330);
    ctText1.setContainer(&ctGroup1);
    Slider1.setGeometry(2520, 720, 2700, 330);
    Slider1.setContainer(&ctGroup1);

    ctButton5.setCaption("Save Session");
    ctButton5.setGeometry(5640, 6360, 1560, 420);
    ctButton8.setCaption("Cancel");
    ctButton8.setGeometry(7320, 6360, 1560, 420);
    ctButton4.setGeometry(9720, 6360, 1560, 420);

    StatusBar1.setGeometry(0, 7620, 11400, 330);
    for (ui::ListBox *hidden : {&File1, &List1, &timelist, &masterpull, &list2, &ctList31, &ctList3, &ctList4, &ctList5, &bogus})
        hidden->setVisible(false);
    Text1.setVisible(false);
}

void Form5::Form_Load()
{
    rt::ResumeNext step;
    // Left only by its own buttons.
    step([&] { setTopmost(true); });
    step([&] { setCloseCommandRemoved(true); });
    step([&] { Text1.setText(rt::nameText(std::filesystem::current_path().string())); });
    step([&] {
        ctList1.AddItem(std::string(";") + "Engine Class Initialized - Velmora Works");
        ctList1.setRowImage(0, 1);
    });
    step([&] { Label3.setVisible(false); });
    step([&] { OvertimeFlag = 0; });
    step([&] { StatusBar1.setPanel(1, "Session Open"); });
    for (ui::Control *c : std::initializer_list<ui::Control *>{&ctButton6, &ctButton7, &ctButton1, &ctButton4, &ctButton5,
                                                              &ctButton2, &ctList2, &ctList1})
        step([&] { c->setEnabled(false); });
    step([&] { TracksLeft = 100; });
    step([&] { m_bitrates.fill(); });
}

void Form5::cdvalue(rt::Integer seconds)
{
    rt::ResumeNext step;
    step([&] { Label2.setCaption("Time left on CD-" + ConvertTime(seconds)); });
    step([&] { SecondsLeft = seconds; });
    step([&] { progressbar1.setMax(seconds.value()); });
    step([&] { progressbar1.setMin(0); });
}

std::string Form5::ConvertTime(rt::Integer t)
{
    rt::ResumeNext step;
    std::string result;
    switch (timeLeftState(t)) {
    case TimeLeftState::Plenty:
        step([&] { result = convertTimeText(t).value_or(""); });
        step([&] { Timer1.setEnabled(false); });
        step([&] { Label3.setVisible(false); });
        step([&] { progressbar1.setVisible(true); });
        step([&] { OvertimeFlag = 0; });
        break;
    case TimeLeftState::Overtime:
        step([&] { progressbar1.setValue(0); });
        step([&] { OvertimeFlag = rt::True; });
        step([&] { Timer1.setEnabled(true); });
        step([&] { result = convertTimeText(t).value_or(""); });
        break;
    case TimeLeftState::ExactlySixty:
        // The gap between the two tests: no text, and the display stays as it was.
        step([&] { OvertimeFlag = 0; });
        break;
    }
    return result;
}

void Form5::Timer1_Timer()
{
    // Over time: the meter gives way to the blinking warning.
    rt::ResumeNext step;
    step([&] { progressbar1.setVisible(false); });
    step([&] { Label3.setVisible(false); });
    step([&] { Label3.setVisible(true); });
}

mp3::FrameScanResult Form5::measure(const std::string &path)
{
    mp3::FrameScanResult r = mp3::scanMp3File(path, m_bitrates);
    if (r.ScanErrorMark == "yes")
        ScanErrorMark = "yes";
    LastBitrate = r.LastBitrate;
    return r;
}

std::string Form5::Getmp3data(const std::string &path)
{
    const auto r = measure(path);
    ctList3.AddItem(r.secondsText);
    return r.secondsText;
}

void Form5::Getmp3data2(const std::string &path)
{
    const auto r = measure(path);
    Label5.setCaption(r.sampleRateCaption());
    Label4.setCaption(r.framesCaption());
}

void Form5::ctButton3_Click()
{
    rt::ResumeNext step;
    step([&] { ctButton7.setEnabled(false); });
    step([&] { ctButton6.setEnabled(false); });
    step([&] { LoadCount += 1; });

    ui::FileDialogRequest request;
    request.kind = ui::FileDialogRequest::Kind::Folder;
    request.title = "Locate MP3 Folder";
    request.secondPrompt = "Velmora Works Technology";
    const auto chosen = app().runModal([&] { return app().dialogs().run(request); });
    if (!chosen)
        return;
    const std::string folder = *chosen;

    step([&] { Label1.setVisible(true); });
    step([&] { Label7.setVisible(true); });
    step([&] { Label7.setCaption(folder); });
    step([&] {
        File1.Clear();
        for (const auto &name : rt::listFiles(folder, "*.mp3"))
            File1.AddItem(name);
    });
    step([&] { writeLastLocal(app().appPath(), folder); });
    step([&] { ctList1.Clear(); });
    step([&] { List1.Clear(); });
    step([&] { ctList3.Clear(); });
    const bool endsWithSeparator = !folder.empty() && folder.back() == '\\';
    for (int i = 0; i < File1.ListCount(); ++i)
        step([&] { List1.AddItem(folder + (endsWithSeparator ? "" : "\\") + File1.List(i)); });
    step([&] { progressbar1.setValue(0); });
    importScan();
}

void Form5::importScan()
{
    rt::ResumeNext step;
    // One set of variables for the whole scan: a step that fails leaves what the row before put there.
    std::string f, title, seconds, time;
    step([&] { DamagedSeen = 0; });
    step([&] { progressbar1.setMax(List1.ListCount()); });
    step([&] { progressbar1.setValue(0); });
    const int count = List1.ListCount();
    for (int i = 0; i < count; ++i) {
        step([&] { f = List1.List(i); });
        step([&] { m_id3.setFileName(f); });
        step([&] { title = pFormatSongTitle(f); });
        step([&] { seconds = Getmp3data(f); });
        step([&] { time = FormatTrackTime(rt::CDbl(seconds)); });
        step([&] { ctList1.AddItem(";" + title + ";" + time); });
        step([&] { seconds = Getmp3data(f); });
        step([&] { time = FormatTrackTime(rt::CDbl(seconds)); });
        step([&] { timelist.AddItem(time); });
        step([&] { ctList1.setRowImage(i, 1); });
        step([&] { progressbar1.setValue(i); });
        step([&] { StatusBar1.setPanel(2, "Scanning MP3 for errors: " + f); });
        step([&] { seconds = Getmp3data(f); });
        step([&] { time = FormatTrackTime(rt::CDbl(seconds)); });
        step.If([&] { return time == "00:00"; }, [&] {
            step([&] { DamagedSeen = rt::True; });
            step([&] { CleanWanted = rt::True; });
        });
    }
    step.IfElse([&] { return LoadCount > 1; },
                [&] {
                    step([&] { progressbar1.setMax(MeterMax.value()); });
                    step([&] { progressbar1.setValue(SecondsLeft.value()); });
                },
                [&] {
                    step([&] { progressbar1.setValue(0); });
                    step([&] { progressbar1.setMax(SecondsLeft.value()); });
                    step([&] { progressbar1.setMin(0); });
                });
    step([&] { StatusBar1.setPanel(2, "Import Complete"); });
    step([&] { Timer2.setEnabled(true); });
    step([&] { ctButton6.setEnabled(false); });
    step.If([&] { return DamagedSeen == rt::True; }, [&] { step([&] { ctButton6.setEnabled(true); }); });
    step.If([&] { return CleanWanted == rt::True; }, [&] {
        step([&] { ctButton6.setEnabled(true); });
        step([&] { CleanWanted = 0; });
    });
    step([&] { ctButton7.setEnabled(false); });
    step([&] { ctButton1.setEnabled(true); });
    step.IfElse([&] { return ctList2.ListCount() > 0; }, [&] { step([&] { ctButton4.setEnabled(true); }); },
                [&] { step([&] { ctButton4.setEnabled(false); }); });
    for (ui::Control *c : std::initializer_list<ui::Control *>{&ctButton5, &ctButton2, &ctList2, &ctList1})
        step([&] { c->setEnabled(true); });
}

void Form5::Timer2_Timer()
{
    rt::ResumeNext step;
    step([&] { StatusBar1.setPanel(1, "CD Tracks:" + numberTextOf(rt::Integer(100) - ChosenCount)); });
    step([&] { StatusBar1.setPanel(2, "Import Complete"); });
    step([&] { Timer2.setEnabled(false); });
}

void Form5::ctList1_Click()
{
    rt::ResumeNext step;
    step([&] { Getmp3data2(List1.List(ctList1.ListIndex())); });
}

void Form5::showTimeLeft(rt::Integer t)
{
    rt::ResumeNext step;
    step([&] { Label2.setCaption("Time left on CD-" + ConvertTime(t)); });
    step([&] { SecondsLeft = t; });
}

void Form5::ctButton1_Click()
{
    rt::ResumeNext step;
    // t lives as long as the click: a subtraction that overflows keeps the time left that the
    // previous row of this Add worked out, and 0 only before the first one.
    std::string f;
    rt::Integer t = 0;
    const int count = ctList1.ListCount();
    for (int i = 0; i <= count; ++i) {
        if (i == count) {
            // The round past the last row only asks whether that row is empty.
            (void)ctList1.List(i).empty();
            break;
        }
        if (ctList1.Selected(i)) {
            step([&] { f = List1.List(i); });
            step([&] { t = rt::CInt(SecondsLeft.value() - rt::Val(Getmp3data(f))); });
            if (Label5.Caption() == "Sample Rate: 0") {
                ui::MsgBox(app(), "The file " + f + " is a damaged MP3 file!  This file cannot be burned", ui::vbExclamation,
                           "MP3 Digital Scan Warning");
                return;
            }
            step([&] { ctList31.AddItem(Getmp3data(f)); });
            const std::string title = ctList1.Column(i, 2);
            step([&] { masterpull.AddItem(title); });
            step([&] {
                const std::string time = FormatTrackTime(rt::CDbl(Getmp3data(f)));
                ctList2.AddItem(std::to_string(ctList2.ListCount() + 1) + ". " + title + "  ;" + time);
            });
            step([&] { list2.AddItem(f); });
            step([&] { ctButton4.setEnabled(true); });
            showTimeLeft(t);
            step([&] { progressbar1.setValue(t.value()); });
            step([&] { ChosenCount = ctList2.ListCount(); });
            step([&] { StatusBar1.setPanel(1, "CD Tracks:" + numberTextOf(TracksLeft - 1)); });
            step([&] { TracksLeft -= 1; });
            step([&] { MeterMax = progressbar1.Max(); });
        }
        step([&] { List1.setSelected(i, false); });
        step([&] { ctList1.setSelected(i, false); });
    }
}

void Form5::ctButton2_Click()
{
    rt::ResumeNext step;
    step([&] { ctButton4.setEnabled(ctList2.ListCount() != 0); });
    const int k = ctList2.ListIndex();
    // A sum that overflows leaves t at 0, as the click found it.
    rt::Integer t = 0;
    step([&] { t = rt::CInt(SecondsLeft.value() + rt::Val(Getmp3data(list2.List(k)))); });
    showTimeLeft(t);
    step([&] { list2.RemoveItem(k); });
    step([&] { ctList2.RemoveItem(k); });
    step([&] { ctList3.RemoveItem(k); });
    step([&] { masterpull.RemoveItem(k); });
    step([&] { progressbar1.setValue(SecondsLeft.value()); });
    step([&] { StatusBar1.setPanel(1, "CD Tracks:" + numberTextOf(TracksLeft + 1)); });
    step([&] { TracksLeft += 1; });
}

void Form5::ctButton4_Click()
{
    rt::ResumeNext step;
    if (OvertimeFlag == rt::True) {
        ui::MsgBox(app(), "Your CD list is overtime! Please remove some songs", ui::vbInformation, "CD Overtime Notification");
        return;
    }
    auto &main = app().form<shell::frmMain>();
    step([&] { main.mainlist.Clear(); });
    step([&] { main.filex.Clear(); });
    step([&] { main.time.Clear(); });
    // Titles in chosen order, times in import order, a bound taken from ctList3: as the list
    // has always been handed over.
    for (int i = 0; i <= ctList2.ListCount() - 1; ++i)
        step([&] { main.mainlist.AddItem(masterpull.List(i) + ";" + timelist.List(i)); });
    for (int i = 0; i <= ctList3.ListCount() - 1; ++i) {
        step([&] {
            // Past the end of ctList31 the read fails and no row is added.
            if (i >= ctList31.ListCount())
                rt::raise(rt::ErrSubscript);
            main.time.AddItem(ctList31.List(i));
        });
    }
    for (int i = 0; i <= list2.ListCount() - 1; ++i)
        step([&] { main.filex.AddItem(list2.List(i)); });
    step([&] { main.Label3.setCaption("CD:" + ConvertTime(SecondsLeft)); });
    for (ui::Control *c : std::initializer_list<ui::Control *>{&main.Check1, &main.Check2, &main.Check3, &main.Check4,
                                                              &main.Check5, &main.Check6, &main.Check7, &main.ctCombo1,
                                                              &main.ctCombo2, &main.ctButton9, &main.ctButton10,
                                                              &main.ctButton13})
        step([&] { c->setEnabled(true); });
    step([&] { ctButton4.setCaption("Start BurnX"); });
    step([&] { setTopmost(false); });
    step([&] { Hide(); });
}

void Form5::ctButton5_Click()
{
    rt::ResumeNext step;
    step([&] { writeListFile(app().appPath() + "\\LocalJ\\localf.dd1", List1); });
    step([&] { writeListFile(app().appPath() + "\\LocalJ\\selections.dd1", ctList2); });
    ui::MsgBox(app(), "Session Data Saved", ui::vbInformation, "Velmora Works - Notification");
}

void Form5::ctButton8_Click()
{
    rt::ResumeNext step;
    step.IfElse([&] { return LoadCount < 2; },
                [&] {
                    step([&] { setTopmost(false); });
                    step([&] { Unload(); });
                },
                [&] { step([&] { Hide(); }); });
}

void Form5::safeclose()
{
    Unload();
}

void Form5::bringmeforward()
{
    setTopmost(true);
    Show();
}

std::optional<std::string> Form5::member(const std::string &name) const
{
    if (name == "SecondsLeft") return numberTextOf(SecondsLeft);
    if (name == "OvertimeFlag") return numberTextOf(OvertimeFlag);
    if (name == "TracksLeft") return numberTextOf(TracksLeft);
    if (name == "ChosenCount") return numberTextOf(ChosenCount);
    if (name == "MeterMax") return numberTextOf(MeterMax);
    if (name == "LoadCount") return numberTextOf(LoadCount);
    if (name == "DamagedSeen") return numberTextOf(DamagedSeen);
    if (name == "CleanWanted") return numberTextOf(CleanWanted);
    if (name == "LastBitrate") return std::to_string(LastBitrate.value());
    if (name == "ScanErrorMark") return ScanErrorMark;
    return std::nullopt;
}

std::optional<std::string> Form5::callRoutine(const std::string &name, const std::vector<std::string> &args)
{
    auto arg = [&](size_t i) -> const std::string & {
        if (i >= args.size())
            rt::raise(449, "Argument not optional");
        return args[i];
    };
    if (name == "cdvalue") {
        cdvalue(rt::CInt(arg(0)));
        return std::string();
    }
    if (name == "ConvertTime")
        return ConvertTime(rt::CInt(arg(0)));
    if (name == "Getmp3data")
        return Getmp3data(arg(0));
    if (name == "Getmp3data2") {
        Getmp3data2(arg(0));
        return std::string();
    }
    if (name == "shift_those_bits")
        return mp3::shift_those_bits(arg(0));
    if (name == "pFormatSongTitle")
        return pFormatSongTitle(arg(0));
    if (name == "FormatTrackTime")
        return FormatTrackTime(rt::CDbl(arg(0)));
    if (name == "safeclose") {
        safeclose();
        return std::string();
    }
    if (name == "bringmeforward") {
        bringmeforward();
        return std::string();
    }
    return std::nullopt;
}

} // namespace layout
