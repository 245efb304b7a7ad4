#include "Mainwriter.h"

#include "layout/LayoutText.h"
#include "runtime/Conversions.h"
#include "runtime/ResumeNext.h"
#include "shell/frmMain.h"
#include "ui/AppContext.h"

namespace burn {

namespace {
constexpr const char *flashDesign = "Enhancing and cleaning MP3 file";
}

Mainwriter::Mainwriter(ui::AppContext &app)
    : Window(app, formName)
    , Label1(*this, "Label1")
    , Label2(*this, "Label2")
    , Label4(*this, "Label4")
    , Label5(*this, "Label5")
    , ctMeter1(*this, "ctMeter1")
    , progressbar1(*this, "progressbar1", ui::Meter::Style::ProgressBar)
    , overallmeter(*this, "overallmeter", ui::Meter::Style::ProgressBar)
    , Gauge(*this, "Gauge")
    , ctButton1(*this, "ctButton1")
    , ctButton22(*this, "ctButton22")
    , Command1(*this, "Command1")
    , Command2(*this, "Command2")
    , ctList1(*this, "ctList1")
    , ctList2(*this, "ctList2")
    , Timer(*this, "Timer", 100, false)
    , mp3labelflashwait(*this, "mp3labelflashwait", 1, false)
    , givemesometime(*this, "givemesometime", 4000, false)
    , triggerclosewait(*this, "triggerclosewait", 3000, false)
    , warner(*this, "warner", 1, false)
    , warner2(*this, "warner2", 1, false)
    , AudioFile(app.components().audioFile)
    , Trigger(app.components().trigger)
    , DstFile(app.components().waveFile)
{
    setCaption("Velmora Works Technologies");
    layOut();
    wireChain();

    Timer.Tick = [this] { Timer_Timer(); };
    mp3labelflashwait.Tick = [this] { mp3labelflashwait_Timer(); };
    givemesometime.Tick = [this] { givemesometime_Timer(); };
    Label1.Change = [this] { Label1_Change(); };
    ctButton1.Click = [this] { safeExit(); };
    ctButton22.Click = [this] { safeExit(); };
    Command1.Click = [this] {
        rt::ResumeNext step;
        step([&] { Trigger->Stop(); });
    };
    Command2.Click = [this] { Command2_Click(); };
}

void Mainwriter::layOut()
{
    setGeometry(0, 0, 6900, 4650);
    centreOnScreen();

    Label1.setCaption("Digital MP3 to CD Format");
    Label1.setGeometry(240, 180, 6360, 285);
    Label2.setGeometry(240, 480, 6360, 285);
    ctMeter1.setGeometry(240, 810, 6360, 300);
    Label4.setCaption("CD Recording Status");
    Label4.setGeometry(240, 1260, 6360, 285);
    progressbar1.setGeometry(240, 1590, 6360, 300);
    Label5.setCaption("Completion Status");
    Label5.setGeometry(240, 2040, 6360, 285);
    overallmeter.setGeometry(240, 2370, 6360, 300);
    Gauge.setGeometry(240, 2820, 6360, 240);

    ctButton1.setCaption("Safe Exit");
    ctButton1.setGeometry(240, 3360, 3060, 450);
    ctButton22.setCaption("Safe Exit");
    ctButton22.setGeometry(3540, 3360, 3060, 450);

    // Test buttons of the workshop, never shown.
    Command1.setCaption("fuck off");
    Command1.setVisible(false);
    Command2.setCaption("convert man");
    Command2.setVisible(false);
    ctList1.setVisible(false);
    ctList2.setVisible(false);
}

void Mainwriter::wireChain()
{
    // AudioFile -> Trigger -> DstFile, with the stored settings of the design. The work file is
    // what a recorder takes, whatever the MP3's rate and channels.
    rt::ResumeNext step;
    step([&] {
        AudioFile->setOutput(Trigger.get());
        AudioFile->setMpegTrailingHeader(0);
    });
    step([&] {
        Trigger->setInput(AudioFile.get());
        Trigger->setOutput(DstFile.get());
        Trigger->setBufferSize(32768);
        Trigger->setInterval(0);
        Trigger->OnStarted = componentEvent(std::function<void()>([this] { Trigger_Started(); }));
        Trigger->OnStopped = componentEvent(std::function<void()>([this] { Trigger_Stopped(); }));
        Trigger->OnClosed = componentEvent(std::function<void()>([this] { Trigger_Closed(); }));
    });
    step([&] {
        DstFile->setInput(Trigger.get());
        DstFile->setFileMustExist(false);
        DstFile->setTargetFormat(platform::WaveFormat::cdAudio());
    });
}

void Mainwriter::Form_Load()
{
    rt::ResumeNext step;
    step([&] { setTopmost(true); });
    step([&] { setCloseCommandRemoved(true); });
    step([&] { ctList1.Clear(); });
    step([&] { overallSet = 0; });
    step([&] { flashText = flashDesign; });
    step([&] { ctList2.AddItem("MATRIX Engine Initialized"); });
    step([&] { ctList2.AddItem("Debug Class Ready..."); });
}

bool Mainwriter::Form_QueryUnload()
{
    try {
        return (Trigger->State() & platform::Trigger::StateOpen) != 0;
    } catch (const rt::RuntimeError &) {
        return false;
    }
}

void Mainwriter::IntroPrepare()
{
    rt::ResumeNext step;
    shell::frmMain &main = app().form<shell::frmMain>();
    rt::Integer count = 0;
    step([&] { trackIndex = 0; });
    step([&] { overalltimex(count); });
    step([&] { PrepareTrack(trackIndex); });
    step([&] { tracksLeft = rt::CInt(ctList1.ListCount()); });
    step.IfElse([&] { return closeAtEnd != -1; },
                [&] {
                    step([&] {
                        rt::Integer open = -1;
                        main.results2(open);
                    });
                    step([&] { main.ACDWRITE1->setCloseSessionAfterTrack(false); });
                    step([&] { main.ACDWRITE1->setSwapBytes(true); });
                    step([&] { main.ACDWRITE1->setFifoBufferCount(20); });
                },
                [&] { step.If([&] { return tracksLeft == 1; }, [&] { step([&] { givemesometime.setEnabled(true); }); }); });
}

void Mainwriter::overalltimex(rt::Integer &count)
{
    rt::ResumeNext step;
    step.If([&] { return overallSet != -1; },
            [&] {
                rt::Integer n = 0;
                step([&] { n = rt::CInt(ctList1.ListCount()); });
                // Two hundred steps a track, in 16 bits: 164 tracks overflow, and the maximum stays.
                step([&] { overallmeter.setMax((n * 100 + n * 100).value()); });
                step([&] { overallSet = -1; });
                count = n;
            });
}

void Mainwriter::PrepareTrack(rt::Integer &index)
{
    rt::ResumeNext step;
    std::string f;
    std::string ext;
    int p = 0;
    step([&] { f = ctList1.List(index.value()); });
    step([&] { AudioFile->setFileName(f); });
    step([&] { Label2.setCaption("Processing file-" + ctList1.List(trackIndex.value())); });
    // A stale wave of the old naming beside the MP3 is cleared away.
    step([&] { ext = Helper.ExtractExt(f); });
    step([&] { p = Helper.PosText(ext, f); });
    step([&] { Helper.DeleteTarget(Helper.CopyText(f, 1, p - 1) + "_vel" + ".wav"); });
    step([&] { waveName = app().appPath() + "\\LocalJ\\velmora0" + ".wav"; });
    step([&] { DstFile->setFileName(waveName); });
    step([&] { ctList2.AddItem(waveName); });
    step([&] { Trigger->Start(); });
}

void Mainwriter::Trigger_Started()
{
    rt::ResumeNext step;
    step([&] { ctButton1.setEnabled(true); });
    step([&] { Timer.setEnabled(true); });
    step([&] { decoding = -1; });
}

void Mainwriter::Timer_Timer()
{
    rt::ResumeNext step;
    step([&] { Label1.setCaption("Current-MP3 Position:" + std::to_string(ctMeter1.Value()) + "%"); });
    step([&] {
        const double length = AudioFile->Length();
        if (length == 0)
            rt::raise(rt::ErrDivisionByZero);
        ctMeter1.setValue(rt::CLng(static_cast<double>(AudioFile->Position()) * 100 / length).value());
    });
}

void Mainwriter::Label1_Change()
{
    // The overall meter moves once for each change of the decoding caption.
    rt::ResumeNext step;
    step.If([&] { return decoding == -1; }, [&] { step([&] { addtooverall(); }); });
}

void Mainwriter::addtooverall()
{
    overallmeter.setValue(overallmeter.Value() + 1);
}

void Mainwriter::Trigger_Stopped()
{
    rt::ResumeNext step;
    // cancelled is read unsigned: only -1 (65535) counts.
    const bool wasCancelled = static_cast<uint16_t>(cancelled.value()) >= 65535;
    if (!wasCancelled) {
        step([&] { Timer.setEnabled(false); });
        step([&] { Trigger->Close(); });
        step([&] { ctButton1.setEnabled(false); });
        step([&] { decoding = 0; });
        step([&] { Label1.setCaption("MP3 File Digitally Enhanced:"); });
        step([&] { mp3labelflashwait.setEnabled(true); });
        step([&] { ctButton1.setEnabled(false); });
    } else {
        step([&] { ctButton1.setEnabled(false); });
        step([&] { Trigger->Close(); });
    }
}

void Mainwriter::Trigger_Closed()
{
    rt::ResumeNext step;
    const bool wasCancelled = static_cast<uint16_t>(cancelled.value()) >= 65535;
    if (!wasCancelled) {
        step([&] { currentFile = ctList1.List(0); });
        step([&] { currentTitle = layout::pFormatSongTitle(currentFile); });
        step([&] { ctButton1.setEnabled(false); });
        step([&] { ctButton1.setCaption("Safe Exit"); });
        step([&] { ctList1.RemoveItem(0); });
        // From here the main window leads: the writer takes the work file.
        step([&] { app().form<shell::frmMain>().Disco(); });
    } else {
        step([&] { Unload(); });
        step([&] { app().form<shell::frmMain>().fuckoff(); });
    }
}

void Mainwriter::mp3labelflashwait_Timer()
{
    rt::ResumeNext step;
    step([&] {
        if (m_flashCount < 5)
            Label1.setCaption(flashText);
    });
    step([&] {
        if (m_flashCount > 5)
            Label1.setCaption("");
    });
    step([&] { m_flashCount += 1; });
    step([&] {
        if (m_flashCount > 10)
            m_flashCount = 1;
    });
}

void Mainwriter::givemesometime_Timer()
{
    // The last track of a closing burn: the writer is told to close after it.
    rt::ResumeNext step;
    shell::frmMain &main = app().form<shell::frmMain>();
    step([&] { main.ACDWRITE1->setCloseSessionAfterTrack(true); });
    step([&] { main.ACDWRITE1->setCloseDiscAfterTrack(true); });
    step([&] {
        rt::Integer closes = -1;
        main.results(closes);
    });
    step([&] { givemesometime.setEnabled(false); });
}

void Mainwriter::safeExit()
{
    rt::ResumeNext step;
    step([&] { cancelled = -1; });
    step([&] { Trigger->Close(); });
}

void Mainwriter::Command2_Click()
{
    rt::ResumeNext step;
    step([&] { testFlagA = 0; });
    step([&] { testFlagB = 0; });
    step([&] {
        rt::Integer first = 0;
        PrepareTrack(first);
    });
}

void Mainwriter::changelabel4(const std::string &text)
{
    Label4.setCaption(text);
}

void Mainwriter::showCreatingTrack()
{
    Label4.setCaption("Creating CD Track" + currentTitle);
}

void Mainwriter::clearTrackStatus()
{
    Label4.setCaption("");
}

std::optional<std::string> Mainwriter::member(const std::string &name) const
{
    auto integer = [](rt::Integer v) { return std::to_string(v.value()); };
    if (name == "closeAtEnd") return integer(closeAtEnd);
    if (name == "tracksLeft") return integer(tracksLeft);
    if (name == "trackIndex") return integer(trackIndex);
    if (name == "overallSet") return integer(overallSet);
    if (name == "cancelled") return integer(cancelled);
    if (name == "decoding") return integer(decoding);
    if (name == "flashText") return flashText;
    if (name == "currentFile") return currentFile;
    if (name == "currentTitle") return currentTitle;
    if (name == "waveName") return waveName;
    return std::nullopt;
}

std::optional<std::string> Mainwriter::callRoutine(const std::string &name, const std::vector<std::string> &args)
{
    rt::ResumeNext step;
    if (name == "IntroPrepare") {
        IntroPrepare();
        return std::string();
    }
    if (name == "PrepareTrack") {
        rt::Integer index = args.empty() ? rt::Integer(0) : rt::CInt(args[0]);
        PrepareTrack(index);
        return std::string();
    }
    if (name == "changelabel4") {
        changelabel4(args.empty() ? std::string() : args[0]);
        return std::string();
    }
    if (name == "overalltimex") {
        rt::Integer count = 0;
        overalltimex(count);
        return std::to_string(count.value());
    }
    if (name == "addtooverall") {
        addtooverall();
        return std::string();
    }
    if (name == "pFormatSongTitle")
        return layout::pFormatSongTitle(args.empty() ? std::string() : args[0]);
    if (name == "showCreatingTrack") {
        showCreatingTrack();
        return std::string();
    }
    if (name == "clearTrackStatus") {
        clearTrackStatus();
        return std::string();
    }
    return std::nullopt;
}

} // namespace burn
