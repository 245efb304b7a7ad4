#pragma once

#include <cstdint>
#include <string>

#include "convert/MMACMX.h"
#include "platform/Components.h"
#include "platform/helper/MMHelper.h"
#include "ui/Button.h"
#include "ui/ComboBox.h"
#include "ui/CommonDialog.h"
#include "ui/LevelMeter.h"
#include "ui/ListView.h"
#include "ui/MenuItem.h"
#include "ui/StatusBar.h"
#include "ui/Timer.h"
#include "ui/Window.h"

namespace extract {

// Digital audio extraction: the drive and its disc, the copy of tracks to wave files through
// CDReader -> ACMConverter -> Trigger -> WaveFile, play through the drive, ISRC codes, the
// reader's options, normalising a wave file and the target format. Every handler passes over
// a failed call and goes on with the next statement.
class MainForm : public ui::Window {
public:
    static constexpr const char *formName = "MainForm";
    static constexpr const char *settingsKey = "Software\\Mervane\\DAC";
    explicit MainForm(ui::AppContext &app);

    void Form_Load() override;
    void Form_Unload() override;

    // Display text of a position: "0:03:25", with frames "0:03:25.40" (frames 0 to 74 after the point).
    std::string FormatTime(int32_t position, bool withFrames);
    // Refills the track list; with `readDisc` the table of contents is read first.
    void RefreshTrackList(bool readDisc);

    std::optional<std::string> member(const std::string &name) const override;
    std::optional<std::string> callRoutine(const std::string &name, const std::vector<std::string> &args) override;

    // Fields.
    int32_t DiscIdentity = 0;
    bool Busy = false;
    std::string BaseCaption;
    bool HasText = false;

    ui::ComboBox DevCombo;
    ui::ComboBox SpeedCombo;
    ui::ListView ListView;
    ui::StatusBar StatusBar;
    ui::Timer Timer1;
    ui::Timer Timer2;
    ui::Button btnCopy;
    ui::Button btnPlay;
    ui::Button btnPrev;
    ui::Button btnNext;
    ui::Button btnStop;
    ui::Button btnEject;
    ui::LevelMeter MMLevelX1;
    ui::LevelMeter MMLevelX2;

    ui::MenuItem DAC1;
    ui::MenuItem ConfigDrive;
    ui::MenuItem DacSep1;
    ui::MenuItem SelectWaveformat1;
    ui::MenuItem DacSep2;
    ui::MenuItem Normalize1;
    ui::MenuItem DacSep3;
    ui::MenuItem miExit;
    ui::MenuItem Actions1;
    ui::MenuItem CopyTracks1;
    ui::MenuItem ActSep1;
    ui::MenuItem SelectAll1;
    ui::MenuItem InvertSelection1;
    ui::MenuItem ActSep2;
    ui::MenuItem ReadISRC1;
    ui::MenuItem View1;
    ui::MenuItem ShowStatusBar1;
    ui::MenuItem Help1;
    ui::MenuItem Info1;

    ui::CommonDialog SaveDialog;
    ui::CommonDialog OpenDialog;
    convert::MMACMX ACM;
    platform::MMHelper Helper;
    platform::MMWaveHelper WaveHelper;

    // The chain, wired as the design stores it; the reader comes first so it outlives the trigger.
    platform::Component<platform::CdReader> CDReader;
    platform::Component<platform::FormatConverter> ACMConverter;
    platform::Component<platform::Trigger> Trigger;
    platform::Component<platform::WaveFile> WaveFile;
    // The level chain: the sound card's input to the two meters.
    platform::Component<platform::WaveIn> WaveIn;
    platform::Component<platform::Connector> Connector;
    // The store of this window's own key.
    platform::Component<platform::SettingsStore> Store;

    // The status bar's progress while a file is normalised.
    void NormalizeProgress(int32_t percent, int32_t phase);

private:
    void layOut();
    void wireChains();
    // Selecting an entry from code counts as a click.
    void selectEntry(ui::ComboBox &combo, int index);
    void setCommandsFromList();

    void Timer1_Timer();
    void Timer2_Timer();
    void DevCombo_Click();
    void SpeedCombo_Click();
    void ListView_Click();
    void btnCopy_Click();
    void btnPlay_Click();
    void btnPrev_Click();
    void btnNext_Click();
    void btnStop_Click();
    void btnEject_Click();
    void playTrack(int number);
    void SelectAll1_Click();
    void InvertSelection1_Click();
    void ReadISRC1_Click();
    void ConfigDrive_Click();
    void SelectWaveformat1_Click();
    void Normalize1_Click();
    void ShowStatusBar1_Click();
    void miExit_Click();
    void Info1_Click();

    // The chain's events, handed on to the copy window.
    void Trigger_Started();
    void Trigger_Stopped();
    void Trigger_Closed();
    void Trigger_Error(int code, const std::string &message);
    void WaveFile_WriteFailed();
};

} // namespace extract
