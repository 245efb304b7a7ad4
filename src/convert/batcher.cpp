#include "batcher.h"

#include "runtime/Conversions.h"
#include "runtime/ResumeNext.h"
#include "ui/AppContext.h"
#include "ui/MessageBox.h"

namespace convert {

batcher::batcher(ui::AppContext &app)
    : Window(app, formName)
    , ListBox(*this, "ListBox")
    , btnFile(*this, "btnFile")
    , btnStart(*this, "btnStart")
    , btnStop(*this, "btnStop")
    , Gauge(*this, "Gauge", ui::Meter::Style::ProgressBar)
    , WaveOpenDialog(app)
    , ACM(app)
    , SrcFile(app.components().waveFile)
    , Trigger(app.components().trigger)
    , ACMConverter(app.components().formatConverter)
    , DstFile(app.components().waveFile)
{
    setCaption("Velmora Works Batch Conversion");
    layOut();
    wireChain();

    WaveOpenDialog.DialogTitle = "Open Wave File";
    WaveOpenDialog.Filter = "Wave-Files(*.wav)|*.wav";
    ACM.Title = "Select...";

    btnFile.Click = [this] { btnFile_Click(); };
    btnStart.Click = [this] { btnStart_Click(); };
    btnStop.Click = [this] { btnStop_Click(); };
}

void batcher::layOut()
{
    setGeometry(0, 0, 6360, 4200);
    centreOnScreen();
    ListBox.setGeometry(120, 120, 6000, 2400);
    btnFile.setCaption("Add File...");
    btnFile.setGeometry(120, 2640, 1800, 420);
    btnStart.setCaption("Start");
    btnStart.setGeometry(2280, 2640, 1800, 420);
    btnStop.setCaption("Stop");
    btnStop.setGeometry(4320, 2640, 1800, 420);
    btnStop.setEnabled(false);
    Gauge.setCaption("Converting...");
    Gauge.setGeometry(120, 3240, 6000, 300);
    Gauge.setVisible(false);
}

void batcher::wireChain()
{
    rt::ResumeNext step;
    step([&] { SrcFile->setOutput(Trigger.get()); });
    step([&] {
        Trigger->setInput(SrcFile.get());
        Trigger->setOutput(ACMConverter.get());
        Trigger->setInterval(0);
        Trigger->OnStarted = componentEvent(std::function<void()>([this] { Trigger_Started(); }));
        Trigger->OnBufferDone = componentEvent(std::function<void()>([this] { Trigger_BufferDone(); }));
        Trigger->OnStopped = componentEvent(std::function<void()>([this] { Trigger_Stopped(); }));
        Trigger->OnClosed = componentEvent(std::function<void()>([this] { Trigger_Closed(); }));
    });
    step([&] {
        ACMConverter->setInput(Trigger.get());
        ACMConverter->setOutput(DstFile.get());
    });
    step([&] {
        DstFile->setInput(ACMConverter.get());
        DstFile->setFileMustExist(false);
        DstFile->OnWriteFailed = componentEvent(std::function<void()>([this] { DstFile_WriteFailed(); }));
    });
}

void batcher::Form_Load()
{
    rt::ResumeNext step;
    step([&] { setTopmost(true); });
}

bool batcher::Form_QueryUnload()
{
    try {
        return (Trigger->State() & platform::Trigger::StateOpen) != 0;
    } catch (const rt::RuntimeError &) {
        return false;
    }
}

// The click handlers and ConvertItem trap nothing: an error in them is the program's
// run-time error report.

void batcher::btnFile_Click()
{
    if (WaveOpenDialog.ShowOpen()) {
        ListBox.AddItem(WaveOpenDialog.FileName);
        btnStart.setEnabled(true);
    }
}

void batcher::btnStart_Click()
{
    if (!ACM.ChooseFormat(std::nullopt, ""))
        return;
    ItemIndex = 0;
    StopRequested = false;
    ConvertItem(0);
}

void batcher::ConvertItem(rt::Integer index)
{
    ListBox.setListIndex(index.value());
    const std::string name = ListBox.List(index.value());
    SrcFile->setFileName(name);
    const std::string ext = Helper.ExtractExt(name);
    const int p = Helper.PosText(ext, name);
    // C:\a\song.wav gives C:\a\song_acm.wav.
    const std::string target = Helper.CopyText(name, 1, p - 1) + "_acm" + ext;
    Helper.DeleteTarget(target);
    DstFile->setFileName(target);
    // The format is set anew for every file.
    ACMConverter->setWaveFormat(ACM.WaveFormat);
    Trigger->Start();
}

void batcher::btnStop_Click()
{
    StopRequested = true;
    // Straight to closing, not through Stop.
    Trigger->Close();
}

// The chain's events go on at the next statement after a failure.

void batcher::Trigger_Started()
{
    rt::ResumeNext step;
    step([&] { Gauge.setVisible(true); });
    step([&] { btnStart.setEnabled(false); });
    step([&] { btnStop.setEnabled(true); });
}

void batcher::Trigger_BufferDone()
{
    rt::ResumeNext step;
    step([&] {
        const int64_t total = SrcFile->DataSize();
        if (total == 0)
            rt::raise(rt::ErrDivisionByZero);
        Gauge.setValue(static_cast<int>(SrcFile->DataPosition() * 100 / total));
    });
}

void batcher::Trigger_Stopped()
{
    rt::ResumeNext step;
    step([&] { Trigger->Close(); });
}

void batcher::Trigger_Closed()
{
    rt::ResumeNext step;
    step([&] { ItemIndex += 1; });
    step.IfElse([&] { return ItemIndex.value() < ListBox.ListCount() && !StopRequested; },
                [&] { step([&] { ConvertItem(ItemIndex); }); },
                [&] {
                    step([&] { Gauge.setVisible(false); });
                    step([&] { btnStart.setEnabled(true); });
                    step([&] { btnStop.setEnabled(false); });
                    // OK and Cancel do the same: the answer is not looked at.
                    step.If([&] { return !StopRequested; },
                            [&] { step([&] { ui::MsgBox(app(), "Batch conversion done.", ui::vbOKCancel, "Batch Convert"); }); });
                });
}

void batcher::DstFile_WriteFailed()
{
    rt::ResumeNext step;
    step.If([&] { return (Trigger->State() & platform::Trigger::StateFlowing) != 0; },
            [&] {
                step([&] { StopRequested = true; });
                step([&] { Trigger->Stop(); });
                step([&] { ui::MsgBox(app(), "Can't write to file, disk full ?", ui::vbOKCancel, "Error"); });
            });
}

std::optional<std::string> batcher::member(const std::string &name) const
{
    if (name == "ItemIndex")
        return std::to_string(ItemIndex.value());
    if (name == "StopRequested")
        return std::string(StopRequested ? "-1" : "0");
    return Window::member(name);
}

std::optional<std::string> batcher::callRoutine(const std::string &name, const std::vector<std::string> &args)
{
    if (name == "ConvertItem" && args.size() == 1) {
        ConvertItem(rt::CInt(std::stod(args[0])));
        return std::string();
    }
    return Window::callRoutine(name, args);
}

} // namespace convert
