#include "mp3towav.h"

#include <cmath>

#include "runtime/ResumeNext.h"
#include "runtime/RuntimeError.h"
#include "ui/AppContext.h"
#include "ui/MessageBox.h"

namespace convert {

mp3towav::mp3towav(ui::AppContext &app)
    : Window(app, formName)
    , Frame1(*this, "Frame1")
    , ctText1(*this, "ctText1")
    , btnConvert(*this, "btnConvert")
    , Gauge(*this, "Gauge", ui::Meter::Style::ProgressBar)
    , Timer(*this, "Timer", 1000, false)
    , FileDialog(app)
    , AudioFile(app.components().audioFile)
    , Trigger(app.components().trigger)
    , WaveFile(app.components().waveFile)
{
    setCaption("MP3 to Wav - Velmora Works ");
    layOut();
    wireChain();

    btnConvert.Click = [this] { btnConvert_Click(); };
    Timer.Tick = [this] { Timer_Timer(); };
}

void mp3towav::layOut()
{
    setGeometry(0, 0, 6000, 2580);
    centreOnScreen();
    Frame1.setFrame(true);
    Frame1.setCaption("File to Convert");
    Frame1.setGeometry(120, 120, 5640, 840);
    ctText1.setContainer(&Frame1);
    ctText1.setGeometry(240, 420, 5400, 300);
    btnConvert.setCaption("Convert");
    btnConvert.setGeometry(4200, 1140, 1560, 420);
    Gauge.setGeometry(120, 1740, 5640, 300);
}

void mp3towav::wireChain()
{
    rt::ResumeNext step;
    step([&] {
        AudioFile->setOutput(Trigger.get());
        AudioFile->setMpegTrailingHeader(0);
    });
    step([&] {
        Trigger->setInput(AudioFile.get());
        Trigger->setOutput(WaveFile.get());
        Trigger->setBufferSize(32768);
        Trigger->setInterval(0);
        Trigger->OnStarted = componentEvent(std::function<void()>([this] { Trigger_Started(); }));
        Trigger->OnStopped = componentEvent(std::function<void()>([this] { Trigger_Stopped(); }));
    });
    step([&] {
        WaveFile->setInput(Trigger.get());
        WaveFile->setFileMustExist(false);
    });
}

void mp3towav::Form_Load()
{
    rt::ResumeNext step;
    step([&] { setTopmost(true); });
}

void mp3towav::launch()
{
    ctText1.setCaption(DisplayName);
}

void mp3towav::btnConvert_Click()
{
    // Only this handler traps errors: a cancel ends it quietly, anything else shows its text.
    try {
        AudioFile->setFileName(SourcePath);
        FileDialog.Filter = "Wave Files (*.wav)|*.wav";
        FileDialog.DefaultExt = "wav";
        FileDialog.FileName = "";
        FileDialog.DialogTitle = "Save MP3 to Wav file location- Velmora Works";
        FileDialog.CancelError = true;
        FileDialog.ShowSave();
        // An existing file is not cleared first: the sink replaces it.
        WaveFile->setFileName(FileDialog.FileName);
        Trigger->Start();
    } catch (const rt::RuntimeError &e) {
        if (e.number() == rt::ErrCancel)
            return;
        ui::MsgBox(app(), e.description());
    }
}

// The started event and the timer trap nothing; the stopped event goes on after a failure.

void mp3towav::Trigger_Started()
{
    btnConvert.setEnabled(false);
    Timer.setEnabled(true);
}

void mp3towav::Timer_Timer()
{
    const double total = AudioFile->Length();
    if (total == 0)
        rt::raise(rt::ErrDivisionByZero);
    Gauge.setValue(static_cast<int>(std::nearbyint(AudioFile->Position() * 100.0 / total)));
}

void mp3towav::Trigger_Stopped()
{
    rt::ResumeNext step;
    step([&] { Timer.setEnabled(false); });
    step([&] { Trigger->Close(); });
    step([&] { btnConvert.setEnabled(true); });
    step([&] { Gauge.setValue(0); });
    // No message: the window going is the sign that the file is written.
    step([&] { Unload(); });
}

std::optional<std::string> mp3towav::member(const std::string &name) const
{
    if (name == "SourcePath")
        return SourcePath;
    if (name == "DisplayName")
        return DisplayName;
    return Window::member(name);
}

std::optional<std::string> mp3towav::callRoutine(const std::string &name, const std::vector<std::string> &args)
{
    if (name == "launch" && args.empty()) {
        launch();
        return std::string();
    }
    return Window::callRoutine(name, args);
}

} // namespace convert
