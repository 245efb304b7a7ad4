#include "MainForm.h"

#include <algorithm>
#include <cmath>

#include "CopyDlg.h"
#include "ISRC.h"
#include "platform/helper/RegistryValues.h"
#include "platform/helper/WaveFormatText.h"
#include "runtime/Conversions.h"
#include "runtime/Format.h"
#include "runtime/Integer.h"
#include "runtime/ResumeNext.h"
#include "runtime/RuntimeError.h"
#include "ui/AppContext.h"
#include "ui/MessageBox.h"

namespace extract {

namespace {

constexpr int32_t HKEY_CURRENT_USER = platform::SettingsStore::HKEY_CURRENT_USER;
constexpr int ErrCancel = 32755;
// The largest wave format record the chooser keeps.
constexpr int32_t MaxFormatSize = 256;
const char *const waveFilter = "Wave-Files (*.wav)|*.wav|All Files (*.*)|*.*";

// CD-Text entry n of the disc (0 the disc, n track n); one that isn't there is error 9.
platform::CdTextEntry textEntry(platform::CdReader &reader, int n)
{
    const auto text = reader.CDText();
    if (n < 0 || n >= static_cast<int>(text.size()))
        rt::raise(rt::ErrSubscript);
    return text[static_cast<size_t>(n)];
}

} // namespace

MainForm::MainForm(ui::AppContext &app)
    : Window(app, formName)
    , DevCombo(*this, "DevCombo")
    , SpeedCombo(*this, "SpeedCombo")
    , ListView(*this, "ListView")
    , StatusBar(*this, "StatusBar", 3)
    , Timer1(*this, "Timer1", 500, false)
    , Timer2(*this, "Timer2", 500, false)
    , btnCopy(*this, "btnCopy")
    , btnPlay(*this, "btnPlay")
    , btnPrev(*this, "btnPrev")
    , btnNext(*this, "btnNext")
    , btnStop(*this, "btnStop")
    , btnEject(*this, "btnEject")
    , MMLevelX1(*this, "MMLevelX1")
    , MMLevelX2(*this, "MMLevelX2")
    , DAC1(*this, "DAC1", "&DAC")
    , ConfigDrive(*this, "ConfigDrive", "&Configure...", &DAC1)
    , DacSep1(*this, "DacSep1", "-", &DAC1)
    , SelectWaveformat1(*this, "SelectWaveformat1", "&Select Waveformat...", &DAC1)
    , DacSep2(*this, "DacSep2", "-", &DAC1)
    , Normalize1(*this, "Normalize1", "&Normalize", &DAC1)
    , DacSep3(*this, "DacSep3", "-", &DAC1)
    , miExit(*this, "miExit", "E&xit", &DAC1)
    , Actions1(*this, "Actions1", "&Actions")
    , CopyTracks1(*this, "CopyTracks1", "&Copy Tracks", &Actions1)
    , ActSep1(*this, "ActSep1", "-", &Actions1)
    , SelectAll1(*this, "SelectAll1", "Select &All", &Actions1)
    , InvertSelection1(*this, "InvertSelection1", "&Invert Selection", &Actions1)
    , ActSep2(*this, "ActSep2", "-", &Actions1)
    , ReadISRC1(*this, "ReadISRC1", "Read ISRC-Code", &Actions1)
    , View1(*this, "View1", "&View")
    , ShowStatusBar1(*this, "ShowStatusBar1", "&Statusbar", &View1)
    , Help1(*this, "Help1", "About")
    , Info1(*this, "Info1", "&Info...", &Help1)
    , SaveDialog(app)
    , OpenDialog(app)
    , ACM(app)
    , CDReader(app.components().cdReader)
    , ACMConverter(app.components().formatConverter)
    , Trigger(app.components().trigger)
    , WaveFile(app.components().waveFile)
    , WaveIn(app.components().waveIn)
    , Connector(app.components().connector)
    , Store(app.components().extractionStore)
{
    setCaption("Digital Audio Copy");
    layOut();
    wireChains();

    SaveDialog.DefaultExt = "wav";
    SaveDialog.FileName = "Track";
    SaveDialog.Filter = waveFilter;
    SaveDialog.CancelError = true;
    OpenDialog.DefaultExt = "*.wav";
    OpenDialog.Filter = waveFilter;
    OpenDialog.CancelError = true;
    ACM.Title = "Select...";

    Timer1.Tick = [this] { Timer1_Timer(); };
    Timer2.Tick = [this] { Timer2_Timer(); };
    DevCombo.Click = [this] { DevCombo_Click(); };
    SpeedCombo.Click = [this] { SpeedCombo_Click(); };
    ListView.Click = [this] { ListView_Click(); };
    btnCopy.Click = [this] { btnCopy_Click(); };
    btnPlay.Click = [this] { btnPlay_Click(); };
    btnPrev.Click = [this] { btnPrev_Click(); };
    btnNext.Click = [this] { btnNext_Click(); };
    btnStop.Click = [this] { btnStop_Click(); };
    btnEject.Click = [this] { btnEject_Click(); };
    ConfigDrive.Click = [this] { ConfigDrive_Click(); };
    SelectWaveformat1.Click = [this] { SelectWaveformat1_Click(); };
    Normalize1.Click = [this] { Normalize1_Click(); };
    miExit.Click = [this] { miExit_Click(); };
    // Copying starts from the button alone: the menu entry is enabled and disabled, nothing more.
    CopyTracks1.Click = [] {};
    SelectAll1.Click = [this] { SelectAll1_Click(); };
    InvertSelection1.Click = [this] { InvertSelection1_Click(); };
    ReadISRC1.Click = [this] { ReadISRC1_Click(); };
    ShowStatusBar1.Click = [this] { ShowStatusBar1_Click(); };
    Info1.Click = [this] { Info1_Click(); };
}

void MainForm::layOut()
{
    setGeometry(0, 0, 11880, 6600);
    centreOnScreen();
    DevCombo.setGeometry(120, 120, 5400, 315);
    SpeedCombo.setGeometry(5640, 120, 1560, 315);
    SpeedCombo.AddItem("Default");
    MMLevelX1.setGeometry(7440, 120, 4200, 140);
    MMLevelX2.setGeometry(7440, 300, 4200, 140);
    const int buttonTop = 540;
    int left = 120;
    for (auto *b : {&btnCopy, &btnPlay, &btnPrev, &btnNext, &btnStop, &btnEject}) {
        b->setGeometry(left, buttonTop, 1320, 375);
        left += 1440;
    }
    btnCopy.setCaption("Copy");
    btnPlay.setCaption("Play");
    btnPrev.setCaption("<<");
    btnNext.setCaption(">>");
    btnStop.setCaption("Stop");
    btnEject.setCaption("Eject");
    for (auto *b : {&btnCopy, &btnPlay, &btnPrev, &btnNext, &btnStop})
        b->setEnabled(false);
    ListView.setGeometry(120, 1020, 11520, 4260);
    ListView.setColumnWidths({900, 2640, 1260, 1260, 1260, 1500, 1380, 1200});
    ListView.setMultiSelect(true);
    ListView.setColumnHeaders({"Track", "Title", "Starttime", "Playtime", "Filesize", "Copyprotection", "Pre-Emphasis", "ISRC"});
    StatusBar.setGeometry(0, 5400, 11760, 330);
    StatusBar.setPanel(1, "no CD inserted");
    ShowStatusBar1.setChecked(true);
    for (auto *m : {&CopyTracks1, &ReadISRC1})
        m->setEnabled(false);
}

void MainForm::wireChains()
{
    rt::ResumeNext step;
    step([&] { CDReader->setOutput(ACMConverter.get()); });
    step([&] {
        ACMConverter->setInput(CDReader.get());
        ACMConverter->setOutput(Trigger.get());
    });
    step([&] {
        Trigger->setInput(ACMConverter.get());
        Trigger->setOutput(WaveFile.get());
        // 15 frames of 2352 bytes at a time.
        Trigger->setBufferSize(35280);
        Trigger->setInterval(0);
        Trigger->OnStarted = componentEvent(std::function<void()>([this] { Trigger_Started(); }));
        Trigger->OnStopped = componentEvent(std::function<void()>([this] { Trigger_Stopped(); }));
        Trigger->OnClosed = componentEvent(std::function<void()>([this] { Trigger_Closed(); }));
        Trigger->OnError = componentEvent(std::function<void(int, const std::string &)>(
            [this](int code, const std::string &message) { Trigger_Error(code, message); }));
    });
    step([&] {
        WaveFile->setInput(Trigger.get());
        WaveFile->setFileMustExist(false);
        WaveFile->OnWriteFailed = componentEvent(std::function<void()>([this] { WaveFile_WriteFailed(); }));
    });
    step([&] {
        WaveIn->setOutput(Connector.get());
        WaveIn->setBufferSize(4096);
        WaveIn->setCallBackMode(1);
        WaveIn->setDeviceID(-1);
        WaveIn->setChannels(2);
        WaveIn->setBitLength(16);
        WaveIn->setSampleRate(44100);
    });
    step([&] {
        Connector->setInput(WaveIn.get());
        Connector->setEnterIdle(false);
        Connector->setLevels(&MMLevelX1, &MMLevelX2);
    });
}

void MainForm::Form_Load()
{
    rt::ResumeNext step;
    step([&] { setTopmost(true); });
    Busy = false;
    BaseCaption = "Digital Audio Copy";
    HasText = false;
    step([&] { selectEntry(SpeedCombo, 0); });

    step([&] {
        std::string buffer;
        const int32_t got = platform::ReadRegBinary(*Store, HKEY_CURRENT_USER, settingsKey, "WaveFormat", buffer, MaxFormatSize);
        ACM.WaveFormat = platform::parseWaveFormatRecord(buffer);
        if (got >= 1) {
            if (!ACM.WaveFormat)
                rt::raise(rt::ErrInvalidCall);
            ACMConverter->setWaveFormat(ACM.WaveFormat);
        }
    });

    int32_t deviceId = 0;
    step([&] { deviceId = platform::ReadRegInt(*Store, HKEY_CURRENT_USER, settingsKey, "DeviceID", CDReader->DeviceID()); });
    step([&] { CDReader->setBlockCount(platform::ReadRegInt(*Store, HKEY_CURRENT_USER, settingsKey, "BlockCount", 26)); });
    step([&] { CDReader->setCopyMode(platform::ReadRegInt(*Store, HKEY_CURRENT_USER, settingsKey, "CopyMode", 1)); });
    step([&] {
        CDReader->setIgnoreSpeed(platform::ReadRegInt(*Store, HKEY_CURRENT_USER, settingsKey, "IgnoreSpeed",
                                                      CDReader->IgnoreSpeed() ? -1 : 0) != 0);
    });

    bool inert = false;
    step.If([&] { return CDReader->DevicesCount() == 0; }, [&] { inert = true; });
    if (inert)
        return;

    int count = 0;
    step([&] { count = CDReader->DevicesCount(); });
    for (int i = 0; i < count; ++i) {
        step([&] {
            const int type = CDReader->DevicesItem(i).Type;
            CDReader->setDevicesItemType(i, platform::ReadRegInt(*Store, HKEY_CURRENT_USER, settingsKey,
                                                                 "DeviceType" + std::to_string(i), type));
        });
        step([&] {
            const platform::CdDrive d = CDReader->DevicesItem(i);
            DevCombo.AddItem("<" + d.DriveLetter + ":>  " + d.Name);
        });
    }
    step([&] {
        deviceId = std::max(deviceId, 0);
        deviceId = std::min(deviceId, CDReader->DevicesCount() - 1);
    });
    step([&] { CDReader->setDeviceType(CDReader->DevicesItem(deviceId).Type); });
    step([&] { selectEntry(DevCombo, deviceId); });
    step([&] { Timer1.setEnabled(true); });
    step([&] { Timer2.setEnabled(true); });
}

void MainForm::Form_Unload()
{
    rt::ResumeNext step;
    step([&] { Timer1.setEnabled(false); });
    step([&] { WaveIn->Stop(); });
    step([&] { CDReader->Close(); });
    step([&] {
        const auto format = ACMConverter->waveFormat();
        if (!format)
            rt::raise(rt::ErrInvalidCall);
        platform::WriteRegBinary(*Store, HKEY_CURRENT_USER, settingsKey, "WaveFormat", platform::waveFormatRecord(*format),
                                 WaveHelper.FormatSize(*format));
    });
    step([&] { platform::WriteRegInt(*Store, HKEY_CURRENT_USER, settingsKey, "BlockCount", CDReader->BlockCount()); });
    step([&] { platform::WriteRegInt(*Store, HKEY_CURRENT_USER, settingsKey, "CopyMode", CDReader->CopyMode()); });
    step([&] { platform::WriteRegInt(*Store, HKEY_CURRENT_USER, settingsKey, "IgnoreSpeed", CDReader->IgnoreSpeed() ? -1 : 0); });
    step([&] { platform::WriteRegInt(*Store, HKEY_CURRENT_USER, settingsKey, "DeviceID", CDReader->DeviceID()); });
    int count = 0;
    step([&] { count = CDReader->DevicesCount(); });
    for (int i = 0; i < count; ++i) {
        step([&] {
            platform::WriteRegInt(*Store, HKEY_CURRENT_USER, settingsKey, "DeviceType" + std::to_string(i),
                                  CDReader->DevicesItem(i).Type);
        });
    }
}

void MainForm::selectEntry(ui::ComboBox &combo, int index)
{
    combo.setListIndex(index);
    if (combo.Click)
        combo.Click();
}

void MainForm::Timer2_Timer()
{
    DevCombo_Click();
    Timer2.setEnabled(false);
}

void MainForm::DevCombo_Click()
{
    if (!Timer1.Enabled())
        return;
    // The first failure ends the handling.
    try {
        app().module<ISRC>().clear();
        CDReader->Close();
        CDReader->setDeviceID(DevCombo.ListIndex());
        CDReader->Open();
        RefreshTrackList(true);
        if (!CDReader->IgnoreSpeed()) {
            SpeedCombo.Clear();
            SpeedCombo.AddItem("Detecting...");
            selectEntry(SpeedCombo, 0);
            app().loop().doEvents();
            CDReader->DetectSpeeds();
            SpeedCombo.Clear();
            for (int i = 0; i < CDReader->SpeedsCount(); ++i)
                SpeedCombo.AddItem(CDReader->SpeedsText(i));
            if (SpeedCombo.ListCount() > 0)
                selectEntry(SpeedCombo, 0);
        }
        ReadISRC1.setEnabled(CDReader->CanReadISRC());
    } catch (const rt::RuntimeError &) {
    }
}

void MainForm::SpeedCombo_Click()
{
    rt::ResumeNext step;
    step.If([&] { return Timer1.Enabled() && SpeedCombo.ListIndex() >= 0; },
            [&] { step([&] { CDReader->SetSpeed(CDReader->SpeedValue(SpeedCombo.ListIndex())); }); });
}

std::string MainForm::FormatTime(int32_t position, bool withFrames)
{
    const int32_t frames = CDReader->FramesOf(position);
    int32_t seconds = frames / 75;
    const int32_t rest = frames % 75;
    const int32_t hours = seconds / 3600;
    seconds %= 3600;
    const int32_t minutes = seconds / 60;
    seconds %= 60;
    std::string text = rt::Format(hours, "0:") + rt::Format(minutes, "00:") + rt::Format(seconds, "00");
    if (withFrames)
        text += "." + rt::Format(rest, "00");
    return text;
}

void MainForm::RefreshTrackList(bool readDisc)
{
    rt::ResumeNext step;
    ISRC &isrc = app().module<ISRC>();
    step([&] { ListView.Clear(); });
    bool endNow = false;
    step.If([&] { return CDReader->DiscPresent(); }, [&] {
        if (readDisc) {
            step.IfElse([&] { return !CDReader->ReadContents(); },
                        [&] {
                            step([&] { ui::MsgBox(app(), "Unable to read CD directory"); });
                            endNow = true;
                        },
                        [&] {
                            step([&] { DiscIdentity = CDReader->DiscId(); });
                            step([&] { HasText = CDReader->HasCDText(); });
                            step.IfElse([&] { return HasText; },
                                        [&] { step([&] { setCaption(BaseCaption + " - " + textEntry(*CDReader, 0).Title); }); },
                                        [&] { step([&] { setCaption(BaseCaption); }); });
                        });
            if (endNow)
                return;
        }
        int count = 0;
        step([&] { count = CDReader->TracksCount(); });
        for (int i = 0; i < count; ++i) {
            platform::CdTrack t;
            step([&] { t = CDReader->TracksItem(i); });
            double sizeMb = 0;
            step([&] { sizeMb = static_cast<double>(CDReader->FramesOf(t.Length)) * 2352 / 1024 / 1024; });
            std::string title;
            step.If([&] { return HasText; }, [&] { step([&] { title = textEntry(*CDReader, i + 1).Title; }); });
            std::string code;
            step.If([&] { return HasText; }, [&] { step([&] { code = textEntry(*CDReader, i + 1).ISRC; }); });
            step.If([&] { return code.empty(); }, [&] { step([&] { code = isrc.code(i); }); });
            step.If([&] { return code.empty(); }, [&] { code = "---"; });
            std::vector<std::string> cells{rt::Format(t.Number, "00"), title, "", "", rt::Format(sizeMb, "0.00 MB"),
                                           t.CopyProtected ? "Yes" : "No", t.PreEmphasis ? "Yes" : "No", code};
            step([&] { cells[2] = FormatTime(t.Start, true); });
            step([&] { cells[3] = FormatTime(t.Length, true); });
            ListView.AddRow(cells);
            ListView.setRowImage(ListView.Count() - 1, t.IsAudio ? 2 : 1);
        }
    });
    if (endNow)
        return;
    step.If([&] { return ListView.Count() > 0; }, [&] {
        step([&] { ListView.setSelectedItem(1); });
        step([&] { ListView.setItemSelected(1, true); });
    });
    setCommandsFromList();
}

void MainForm::setCommandsFromList()
{
    // Beside the row count the old test only asks whether the selected item is an empty
    // reference, which an object reference never is: the selection doesn't matter.
    const bool rows = ListView.Count() > 0;
    btnCopy.setEnabled(rows);
    ReadISRC1.setEnabled(rows);
    CopyTracks1.setEnabled(rows);
}

void MainForm::ListView_Click()
{
    btnCopy.setEnabled(ListView.Count() > 0);
}

void MainForm::SelectAll1_Click()
{
    rt::ResumeNext step;
    for (int i = 1; i <= ListView.Count(); ++i)
        step([&] { ListView.setItemSelected(i, true); });
}

void MainForm::InvertSelection1_Click()
{
    rt::ResumeNext step;
    for (int i = 1; i <= ListView.Count(); ++i)
        step([&] { ListView.setItemSelected(i, !ListView.ItemSelected(i)); });
}

void MainForm::Timer1_Timer()
{
    rt::ResumeNext step;
    int status = 0;
    step([&] { status = CDReader->Status(); });
    if (status == platform::CdReader::StatusReady) {
        ReadISRC1.setEnabled(true);
        CopyTracks1.setEnabled(true);
        btnPlay.setEnabled(true);
        btnPrev.setEnabled(false);
        btnNext.setEnabled(false);
        btnStop.setEnabled(false);
        btnEject.setEnabled(true);
        step([&] { WaveIn->Stop(); });
        MMLevelX1.Reset();
        MMLevelX2.Reset();
    } else if (status == platform::CdReader::StatusPlaying) {
        ReadISRC1.setEnabled(true);
        CopyTracks1.setEnabled(true);
        btnPlay.setEnabled(false);
        btnPrev.setEnabled(true);
        btnNext.setEnabled(true);
        btnStop.setEnabled(true);
        btnEject.setEnabled(true);
        step.If([&] { return (WaveIn->State() & platform::WaveIn::StateRunning) == 0; }, [&] { step([&] { WaveIn->Start(); }); });
    } else {
        ReadISRC1.setEnabled(false);
        CopyTracks1.setEnabled(false);
        btnCopy.setEnabled(false);
        btnPlay.setEnabled(false);
        btnPrev.setEnabled(false);
        btnNext.setEnabled(false);
        btnStop.setEnabled(false);
        btnEject.setEnabled(status != platform::CdReader::StatusNoDrive);
        step([&] { WaveIn->Stop(); });
    }

    if (Busy)
        return;
    step.IfElse([&] { return CDReader->DiscPresent(); },
                [&] {
                    step([&] { StatusBar.setPanel(1, "CD Inserted"); });
                    step.If([&] { return DiscIdentity != CDReader->DiscId(); }, [&] { RefreshTrackList(true); });
                    step([&] { StatusBar.setPanel(2, "Playtime: " + FormatTime(CDReader->PlayPosition(), false)); });
                    std::string text;
                    step([&] { text = "Track:" + rt::Format(CDReader->CurrentTrack(), "00"); });
                    step.If([&] { return HasText; },
                            [&] { step([&] { text += " - " + textEntry(*CDReader, CDReader->CurrentTrack()).Title; }); });
                    step.If([&] { return StatusBar.Panel(3) != text; }, [&] { step([&] { StatusBar.setPanel(3, text); }); });
                },
                [&] {
                    step([&] { StatusBar.setPanel(1, "no CD Inserted"); });
                    step.If([&] { return DiscIdentity != -1; }, [&] {
                        DiscIdentity = -1;
                        step([&] { ListView.Clear(); });
                        HasText = false;
                        step([&] { setCaption(BaseCaption); });
                        app().module<ISRC>().clear();
                    });
                    step([&] { StatusBar.setPanel(2, ""); });
                    step([&] { StatusBar.setPanel(3, ""); });
                });
}

void MainForm::btnCopy_Click()
{
    rt::ResumeNext step;
    bool found = false;
    for (int i = 1; i <= ListView.Count() && !found; ++i) {
        // Row i (from 1) is handed to the track list (from 0) as it stands: the test looks at the
        // track after the row, and the last row's missing track counts as found.
        step.If([&] { return ListView.ItemSelected(i); },
                [&] { step.If([&] { return CDReader->TracksItem(i).IsAudio; }, [&] { found = true; }); });
    }
    if (!found) {
        step([&] { ui::MsgBox(app(), "No Audio Track selected !"); });
        return;
    }
    try {
        SaveDialog.ShowSave();
    } catch (const rt::RuntimeError &e) {
        if (e.number() != ErrCancel)
            step([&] { ui::MsgBox(app(), e.description()); });
        return;
    }
    Timer1.setEnabled(false);
    try {
        auto &dlg = static_cast<CopyDlg &>(app().formByName(CopyDlg::formName));
        dlg.TargetName = SaveDialog.FileName;
        dlg.ShowModal(this, [app = &app(), self = this] {
            if (app->findLoaded(formName) != self)
                return;
            // Each run gets a fresh window.
            if (ui::Window *w = app->findLoaded(CopyDlg::formName))
                w->Unload();
            self->Timer1.setEnabled(true);
        });
    } catch (const rt::RuntimeError &) {
        Timer1.setEnabled(true);
    }
}

void MainForm::btnPlay_Click()
{
    rt::ResumeNext step;
    if (!btnPlay.Enabled())
        return;
    rt::Long start = -1;
    rt::Long length = -1;
    int count = ListView.Count();
    for (int i = 0; i < count; ++i) {
        bool take = false;
        step([&] { take = ListView.ItemSelected(i + 1) && CDReader->TracksItem(i).IsAudio; });
        if (take) {
            step([&] {
                const platform::CdTrack t = CDReader->TracksItem(i);
                if (start == -1) {
                    start = t.Start;
                    length = t.Length;
                } else {
                    length = length + rt::Long(t.Length);
                }
            });
        } else if (start != -1) {
            break;
        }
    }
    if (start == -1)
        step([&] { ui::MsgBox(app(), "No Audio Track selected !"); });
    else
        step([&] { CDReader->Play(start.value(), length.value()); });
}

void MainForm::playTrack(int number)
{
    rt::ResumeNext step;
    step([&] {
        const platform::CdTrack t = CDReader->TracksItem(number - 1);
        CDReader->Play(t.Start, t.Length);
    });
}

void MainForm::btnPrev_Click()
{
    rt::ResumeNext step;
    int t = 0;
    step([&] { t = CDReader->CurrentTrack() - 1; });
    step.If([&] { return t < 1; }, [&] { step([&] { t = CDReader->TracksCount(); }); });
    playTrack(t);
}

void MainForm::btnNext_Click()
{
    rt::ResumeNext step;
    int t = 0;
    step([&] { t = CDReader->CurrentTrack() + 1; });
    step.If([&] { return t > CDReader->TracksCount(); }, [&] { t = 1; });
    playTrack(t);
}

void MainForm::btnStop_Click()
{
    rt::ResumeNext step;
    step([&] { CDReader->Stop(); });
}

void MainForm::btnEject_Click()
{
    rt::ResumeNext step;
    step.IfElse([&] { return CDReader->Status() == platform::CdReader::StatusTrayOpen; },
                [&] { step([&] { CDReader->SetDoor(true); }); },
                [&] { step([&] { CDReader->SetDoor(false); }); });
}

void MainForm::ReadISRC1_Click()
{
    rt::ResumeNext step;
    step([&] {
        ui::Window &dlg = app().formByName("ISRCDlg");
        dlg.ShowModal(this, [app = &app(), self = this] {
            if (app->findLoaded(formName) == self)
                self->RefreshTrackList(false);
        });
    });
}

void MainForm::ConfigDrive_Click()
{
    rt::ResumeNext step;
    step([&] { app().formByName("ConfigDlg").Show(); });
}

void MainForm::Info1_Click()
{
    rt::ResumeNext step;
    step([&] { app().formByName("about").Show(); });
}

void MainForm::miExit_Click()
{
    // Ends the whole program on the spot; nothing is saved.
    app().end();
}

void MainForm::SelectWaveformat1_Click()
{
    rt::ResumeNext step;
    step.If([&] { return ACM.ChooseFormat(ACMConverter->waveFormat(), ""); },
            [&] { step([&] { ACMConverter->setWaveFormat(ACM.WaveFormat); }); });
}

void MainForm::NormalizeProgress(int32_t percent, int32_t phase)
{
    rt::ResumeNext step;
    step([&] { StatusBar.setPanel(1, std::string(phase != 0 ? "Normalize " : "Scanning ") + rt::Str(percent) + "%"); });
}

void MainForm::Normalize1_Click()
{
    // One trap for the whole command: after a failure past the dialog, Busy and the panel stay.
    try {
        OpenDialog.ShowOpen();
        Busy = true;
        const std::string kept = StatusBar.Panel(1);
        const auto &normalizeFile = app().components().normalizeFile;
        if (!normalizeFile)
            rt::raise(rt::ErrFileNotFound, "File not found: mmtoolsx.ocx");
        normalizeFile(OpenDialog.FileName, 100, [this](int32_t percent, int32_t phase) { NormalizeProgress(percent, phase); });
        StatusBar.setPanel(1, kept);
        Busy = false;
    } catch (const rt::RuntimeError &e) {
        if (e.number() != ErrCancel) {
            rt::ResumeNext step;
            step([&] { ui::MsgBox(app(), e.description()); });
        }
    }
}

void MainForm::ShowStatusBar1_Click()
{
    rt::ResumeNext step;
    StatusBar.setVisible(!StatusBar.Visible());
    if (StatusBar.Visible()) {
        ShowStatusBar1.setChecked(true);
        ListView.setGeometry(ListView.Left(), ListView.Top(), ListView.Width(), ListView.Height() - StatusBar.Height());
    } else {
        ShowStatusBar1.setChecked(false);
        ListView.setGeometry(ListView.Left(), ListView.Top(), ListView.Width(), ListView.Height() + StatusBar.Height());
    }
}

void MainForm::Trigger_Started()
{
    if (auto *dlg = dynamic_cast<CopyDlg *>(app().findLoaded(CopyDlg::formName)))
        dlg->StartTimer();
}

void MainForm::Trigger_Stopped()
{
    if (auto *dlg = dynamic_cast<CopyDlg *>(app().findLoaded(CopyDlg::formName)))
        dlg->Trigger_Stopped();
}

void MainForm::Trigger_Closed()
{
    if (auto *dlg = dynamic_cast<CopyDlg *>(app().findLoaded(CopyDlg::formName)))
        dlg->Trigger_Closed();
}

void MainForm::Trigger_Error(int code, const std::string &message)
{
    if (auto *dlg = dynamic_cast<CopyDlg *>(app().findLoaded(CopyDlg::formName))) {
        dlg->CopyErrors = true;
        dlg->noteChainError(code, message);
    }
}

void MainForm::WaveFile_WriteFailed()
{
    if (auto *dlg = dynamic_cast<CopyDlg *>(app().findLoaded(CopyDlg::formName)))
        dlg->WaveFile_WriteFailed();
}

std::optional<std::string> MainForm::member(const std::string &name) const
{
    if (name == "DiscIdentity")
        return std::to_string(DiscIdentity);
    if (name == "Busy")
        return std::string(Busy ? "-1" : "0");
    if (name == "BaseCaption")
        return BaseCaption;
    if (name == "HasText")
        return std::string(HasText ? "-1" : "0");
    return Window::member(name);
}

std::optional<std::string> MainForm::callRoutine(const std::string &name, const std::vector<std::string> &args)
{
    if (name == "FormatTime" && args.size() == 2)
        return FormatTime(rt::CLng(args[0]).value(), rt::CBool(args[1]));
    if (name == "RefreshTrackList" && args.size() == 1) {
        RefreshTrackList(rt::CBool(args[0]));
        return std::string();
    }
    return Window::callRoutine(name, args);
}

} // namespace extract
