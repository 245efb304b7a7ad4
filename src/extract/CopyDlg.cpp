#include "CopyDlg.h"

#include "MainForm.h"
#include "platform/helper/MMHelper.h"
#include <ctime>

#include "runtime/Format.h"
#include "runtime/Paths.h"
#include "runtime/Integer.h"
#include "runtime/ResumeNext.h"
#include "runtime/RuntimeError.h"
#include "ui/AppContext.h"
#include "ui/MessageBox.h"

namespace extract {

namespace {

constexpr double BytesPerSecondAt1x = 176400.0;

// Floating division as the old runtime does it: by zero is error 11, nought by nought error 6.
double divide(double a, double b)
{
    if (b == 0.0)
        rt::raise(a == 0.0 ? rt::ErrOverflow : rt::ErrDivisionByZero);
    return a / b;
}

} // namespace

CopyDlg::CopyDlg(ui::AppContext &app)
    : Window(app, formName)
    , lblActual(*this, "lblActual")
    , Meter1(*this, "Meter1", ui::Meter::Style::ProgressBar)
    , lblPercent1(*this, "lblPercent1")
    , lblSpeedCaption1(*this, "lblSpeedCaption1")
    , lblSpeed1(*this, "lblSpeed1")
    , lblTimeCaption1(*this, "lblTimeCaption1")
    , lblTime1(*this, "lblTime1")
    , lblRemainingCaption1(*this, "lblRemainingCaption1")
    , lblRemaining1(*this, "lblRemaining1")
    , lblTotal(*this, "lblTotal")
    , Meter2(*this, "Meter2", ui::Meter::Style::ProgressBar)
    , lblPercent2(*this, "lblPercent2")
    , lblSpeedCaption2(*this, "lblSpeedCaption2")
    , lblSpeed2(*this, "lblSpeed2")
    , lblTimeCaption2(*this, "lblTimeCaption2")
    , lblTime2(*this, "lblTime2")
    , lblRemainingCaption2(*this, "lblRemainingCaption2")
    , lblRemaining2(*this, "lblRemaining2")
    , lblMessages(*this, "lblMessages")
    , Messages(*this, "Messages")
    , btnAbort(*this, "btnAbort")
    , Timer(*this, "Timer", 70, false)
    , Timer2(*this, "Timer2", 100, false)
{
    setCaption("Copying Data");
    layOut();
    Timer.Tick = [this] { Timer_Timer(); };
    Timer2.Tick = [this] { Timer2_Timer(); };
    btnAbort.Click = [this] { btnAbort_Click(); };
}

void CopyDlg::layOut()
{
    setGeometry(0, 0, 6600, 5400);
    centreOnScreen();
    struct Block {
        ui::Label &heading;
        const char *title;
        ui::Meter &meter;
        ui::Label &percent, &speedCaption, &speed, &timeCaption, &time, &remainingCaption, &remaining;
        int top;
    };
    for (const Block &b : {Block{lblActual, "actual done", Meter1, lblPercent1, lblSpeedCaption1, lblSpeed1, lblTimeCaption1,
                                 lblTime1, lblRemainingCaption1, lblRemaining1, 120},
                           Block{lblTotal, "totally done", Meter2, lblPercent2, lblSpeedCaption2, lblSpeed2, lblTimeCaption2,
                                 lblTime2, lblRemainingCaption2, lblRemaining2, 1380}}) {
        b.heading.setCaption(b.title);
        b.heading.setGeometry(120, b.top, 3000, 255);
        b.meter.setGeometry(120, b.top + 300, 5160, 255);
        b.percent.setCaption("0.0 %");
        b.percent.setGeometry(5400, b.top + 300, 1000, 255);
        b.speedCaption.setCaption("speed");
        b.speedCaption.setGeometry(120, b.top + 660, 700, 255);
        b.speed.setCaption("0.0 X");
        b.speed.setGeometry(840, b.top + 660, 1000, 255);
        b.timeCaption.setCaption("time");
        b.timeCaption.setGeometry(2040, b.top + 660, 600, 255);
        b.time.setCaption("00:00:00");
        b.time.setGeometry(2640, b.top + 660, 1000, 255);
        b.remainingCaption.setCaption("remaining");
        b.remainingCaption.setGeometry(3960, b.top + 660, 1000, 255);
        b.remaining.setCaption("00:00:00");
        b.remaining.setGeometry(5040, b.top + 660, 1200, 255);
    }
    lblMessages.setCaption("status messages");
    lblMessages.setGeometry(120, 2640, 3000, 255);
    Messages.setGeometry(120, 2940, 6240, 1500);
    btnAbort.setCaption("Cancel");
    btnAbort.setGeometry(5040, 4560, 1320, 375);
}

MainForm &CopyDlg::main()
{
    return static_cast<MainForm &>(app().formByName(MainForm::formName));
}

int32_t CopyDlg::clock()
{
    // timeGetTime: milliseconds of the system clock, wrapping as a 32-bit count does.
    return static_cast<int32_t>(static_cast<uint32_t>(app().loop().now()));
}

void CopyDlg::Form_Load()
{
    rt::ResumeNext step;
    step([&] { setTopmost(true); });
    Messages.Clear();
    btnAbort.setCaption("Cancel");
    TotalElapsed = 0;
    ActiveTrack = -1;
    rt::Long total = 0;
    MainForm &m = main();
    const int rows = m.ListView.Count();
    for (int i = 0; i < rows; ++i) {
        step.If([&] { return m.ListView.ItemSelected(i + 1) && m.CDReader->TracksItem(i).IsAudio; }, [&] {
            step([&] { total = total + rt::Long(m.CDReader->FramesOf(m.CDReader->TracksItem(i).Length)); });
            if (ActiveTrack == -1)
                ActiveTrack = i;
        });
    }
    if (ActiveTrack == -1) {
        // Only a data track was selected, whose neighbour passed the click's test: the track
        // after the selected row again.
        step([&] { ActiveTrack = m.ListView.SelectedItem(); });
        step([&] { total = m.CDReader->FramesOf(m.CDReader->TracksItem(ActiveTrack).Length); });
    }
    step([&] {
        Meter2.setValue(0);
        Meter2.setMin(0);
        Meter2.setMax(total.value());
    });
    Timer2.setEnabled(true);
}

std::string CopyDlg::stemOf(const std::string &target)
{
    const platform::MMHelper &helper = main().Helper;
    const int p = helper.PosText(".", target);
    return p >= 1 ? helper.CopyText(target, 1, p - 1) : target;
}

void CopyDlg::logRunStart()
{
    // The first track starts the log: the window is loaded before its caller names the target.
    if (m_logStarted || TargetName.empty())
        return;
    m_logStarted = true;
    try {
        MainForm &m = main();
        RipLog::Run run;
        const std::time_t now = std::time(nullptr);
        std::tm local{};
        localtime_r(&now, &local);
        char started[32];
        std::strftime(started, sizeof started, "%Y-%m-%d %H:%M:%S", &local);
        run.started = started;
        run.drive = m.CDReader->DriveLetter();
        run.driveName = m.CDReader->DeviceName();
        run.copyMode = m.CDReader->CopyMode();
        try {
            run.discId = m.CDReader->DiscId();
        } catch (const rt::RuntimeError &) {
        }
        for (int i = 0; i < m.CDReader->TracksCount(); ++i)
            run.toc.push_back(m.CDReader->TracksItem(i));
        m_log.begin(rt::nativePath(stemOf(TargetName) + ".log"), std::move(run));
    } catch (const std::exception &) {
        // No log for this run.
    }
}

void CopyDlg::logTrackStart(const platform::CdTrack &track, const std::string &file)
{
    try {
        MainForm &m = main();
        // AccurateRip leaves out the edges of the disc's first track and of its last audio track.
        int lastAudio = -1;
        const int count = m.CDReader->TracksCount();
        for (int i = 0; i < count; ++i)
            if (m.CDReader->TracksItem(i).IsAudio)
                lastAudio = m.CDReader->TracksItem(i).Number;
        m_logFirstTrack = count > 0 && track.Number == m.CDReader->TracksItem(0).Number;
        m_logLastTrack = track.Number == lastAudio;
        m_logTrackFile = file;
        m_log.trackStarted(track.Number, rt::nativePath(file).string(), track.Start, track.Length);
    } catch (const std::exception &) {
    }
}

void CopyDlg::logTrackEnd(bool copiedWhole)
{
    try {
        std::optional<platform::TrackChecksums> sums;
        const auto &checksum = app().components().checksumWaveFile;
        if (copiedWhole && checksum)
            sums = checksum(m_logTrackFile, m_logFirstTrack, m_logLastTrack);
        m_log.trackEnded(sums);
    } catch (const std::exception &) {
    }
}

void CopyDlg::logRunEnd(const std::string &result)
{
    try {
        m_log.runEnded(result);
    } catch (const std::exception &) {
    }
}

void CopyDlg::logTrackError(const std::string &what)
{
    try {
        m_log.trackError(what);
    } catch (const std::exception &) {
    }
}

void CopyDlg::noteChainError(int code, const std::string &message)
{
    logTrackError("error " + std::to_string(code) + (message.empty() ? std::string() : ": " + message));
}

void CopyDlg::Timer2_Timer()
{
    Timer2.setEnabled(false);
    CopyTrack(ActiveTrack);
}

void CopyDlg::CopyTrack(int32_t index)
{
    rt::ResumeNext step;
    MainForm &m = main();
    platform::CdTrack track;
    step([&] {
        track = m.CDReader->TracksItem(index);
        m.CDReader->SelectRange(track.Start, track.Length);
    });
    step([&] {
        Meter1.setValue(0);
        Meter1.setMin(0);
        Meter1.setMax(m.CDReader->FramesOf(track.Length));
    });
    ActiveTrack = index;
    const std::string name = stemOf(TargetName) + rt::Format(index + 1, "00.wav");
    step([&] { m.Helper.DeleteTarget(name); });
    step([&] { m.WaveFile->setFileName(name); });
    logRunStart();
    logTrackStart(track, name);
    try {
        m.Trigger->Start();
    } catch (const rt::RuntimeError &e) {
        noteChainError(e.number(), e.description());
        logTrackEnd(false);
        logRunEnd("The copy could not start.");
        step([&] { m.Trigger->Stop(); });
        step([&] { ui::MsgBox(app(), e.description()); });
        return;
    }
    Messages.AddItem("Copying Track " + rt::Format(index + 1, "00"));
}

int32_t CopyDlg::FindNextTrack()
{
    rt::ResumeNext step;
    int32_t result = ActiveTrack;
    MainForm &m = main();
    const int rows = m.ListView.Count();
    for (int i = 0; i < rows; ++i) {
        bool next = false;
        step.If([&] { return m.ListView.ItemSelected(i + 1) && m.CDReader->TracksItem(i).IsAudio && i > ActiveTrack; },
                [&] { next = true; });
        if (next) {
            result = i;
            break;
        }
    }
    return result;
}

void CopyDlg::StartTimer()
{
    StartTick = clock();
    TrackElapsed = 0;
    Timer.setEnabled(true);
}

void CopyDlg::StopTimer()
{
    rt::ResumeNext step;
    Timer.setEnabled(false);
    if (!CopyErrors)
        showFull(Meter1, lblPercent1, lblRemaining1);
}

void CopyDlg::showFull(ui::Meter &meter, ui::Label &percent, ui::Label &remaining)
{
    rt::ResumeNext step;
    step([&] { meter.setValue(meter.Max()); });
    percent.setCaption("100.0 %");
    remaining.setCaption(main().Helper.TimeText(0));
}

void CopyDlg::Timer_Timer()
{
    if (!Timer.Enabled())
        return;
    rt::ResumeNext step;
    MainForm &m = main();
    const int32_t elapsed = clock() - StartTick;
    TotalElapsed = TotalElapsed + (elapsed - TrackElapsed);
    TrackElapsed = elapsed;
    int32_t done = 0;
    step([&] { done = m.CDReader->ReadPosition() - m.CDReader->RangeStart(); });
    step([&] { Meter2.setValue(Meter2.Value() + (done - Meter1.Value())); });
    step([&] { Meter1.setValue(done); });
    showProgress(Meter1, lblPercent1, lblSpeed1, lblTime1, lblRemaining1, elapsed);
    showProgress(Meter2, lblPercent2, lblSpeed2, lblTime2, lblRemaining2, TotalElapsed);
}

void CopyDlg::showProgress(ui::Meter &meter, ui::Label &percent, ui::Label &speed, ui::Label &time, ui::Label &remaining,
                           int32_t t)
{
    rt::ResumeNext step;
    const platform::MMHelper &helper = main().Helper;
    const rt::Long p = meter.Value();
    const rt::Long u = meter.Max();
    // The products are 32-bit, as the old code computed them; the divisions are floating point.
    step([&] { percent.setCaption(rt::Format(divide((p * 100).value(), u.value()), "0.0") + " %"); });
    step([&] {
        speed.setCaption(rt::Format(divide(divide((p * 2352).value(), t / 1000.0), BytesPerSecondAt1x), "0.0") + " X");
    });
    step([&] { time.setCaption(helper.TimeText(t)); });
    step([&] { remaining.setCaption(helper.TimeText(static_cast<int64_t>(platform::MulDiv(t, u.value(), p.value())) - t)); });
}

void CopyDlg::Trigger_Stopped()
{
    rt::ResumeNext step;
    MainForm &m = main();
    StopTimer();
    if (CopyErrors) {
        logTrackEnd(false);
        logRunEnd("There where Errors, copy not completed.");
        Messages.AddItem("There where Errors, copy not completed.");
        btnAbort.setCaption("Close");
        CopyErrors = false;
        step([&] { m.Trigger->Close(); });
    } else if (Aborted) {
        logTrackError("stopped by the user");
        logTrackEnd(false);
        logRunEnd("Copyprocess terminated by user!");
        showFull(Meter2, lblPercent2, lblRemaining2);
        Messages.AddItem("Copyprocess terminated by user!");
        step([&] { m.Trigger->Close(); });
        step([&] { ui::MsgBox(app(), "Copyprocess terminated by user!"); });
        Hide();
    } else {
        step([&] { m.Trigger->Close(); });
        // The file is complete once the chain has closed it.
        logTrackEnd(true);
        const int32_t next = FindNextTrack();
        if (next == ActiveTrack) {
            logRunEnd("Copy completed without any errors.");
            Messages.AddItem("Copy completed without any errors.");
            btnAbort.setCaption("Close");
            showFull(Meter2, lblPercent2, lblRemaining2);
        } else {
            CopyTrack(next);
        }
    }
}

void CopyDlg::Trigger_Closed()
{
    // The chain closed without a stop first.
    if (CopyErrors) {
        logTrackEnd(false);
        logRunEnd("There where Errors, copy not completed.");
        Messages.AddItem("There where Errors, copy not completed.");
        btnAbort.setCaption("Close");
        CopyErrors = false;
    }
}

void CopyDlg::WaveFile_WriteFailed()
{
    rt::ResumeNext step;
    MainForm &m = main();
    step.If([&] { return (m.Trigger->State() & platform::Trigger::StateFlowing) != 0; }, [&] {
        logTrackError("the file could not be written (is the disk full?)");
        Messages.AddItem("Can''t write to file, disk full ?");
        CopyErrors = true;
        step([&] { m.Trigger->Stop(); });
    });
}

void CopyDlg::btnAbort_Click()
{
    rt::ResumeNext step;
    MainForm &m = main();
    step.IfElse([&] { return (m.Trigger->State() & platform::Trigger::StateOpen) != 0; },
                [&] {
                    Aborted = true;
                    step([&] { m.Trigger->Stop(); });
                },
                [&] { Hide(); });
}

bool CopyDlg::Form_QueryUnload()
{
    rt::ResumeNext step;
    MainForm &m = main();
    bool refuse = false;
    step.If([&] { return (m.Trigger->State() & platform::Trigger::StateOpen) != 0; }, [&] {
        Aborted = true;
        step([&] { m.Trigger->Stop(); });
        refuse = true;
    });
    return refuse;
}

std::optional<std::string> CopyDlg::member(const std::string &name) const
{
    if (name == "ActiveTrack")
        return std::to_string(ActiveTrack);
    if (name == "Aborted")
        return std::string(Aborted ? "-1" : "0");
    if (name == "CopyErrors")
        return std::string(CopyErrors ? "-1" : "0");
    if (name == "TargetName")
        return TargetName;
    if (name == "TotalElapsed")
        return std::to_string(TotalElapsed);
    return Window::member(name);
}

std::optional<std::string> CopyDlg::callRoutine(const std::string &name, const std::vector<std::string> &args)
{
    if (name == "FindNextTrack" && args.empty())
        return std::to_string(FindNextTrack());
    return Window::callRoutine(name, args);
}

} // namespace extract
