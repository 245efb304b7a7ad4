#pragma once

#include <array>
#include <memory>
#include <string>

#include "platform/Components.h"
#include "runtime/Integer.h"
#include "ui/Button.h"
#include "ui/CheckBox.h"
#include "ui/ComboBox.h"
#include "ui/Label.h"
#include "ui/ListBox.h"
#include "ui/MenuItem.h"
#include "ui/Meter.h"
#include "ui/PictureBox.h"
#include "ui/StatusBar.h"
#include "ui/TextBox.h"
#include "ui/SpectrumView.h"
#include "ui/Timer.h"
#include "platform/helper/MMHelper.h"
#include "ui/ToolBar.h"
#include "ui/Window.h"

namespace services {
class shutdown;
}

namespace shell {

// The main window: the CD list, the writer, the player chain and the burn settings. It stays
// loaded for the whole run; every other window is opened from it.
class frmMain : public ui::Window {
public:
    static constexpr const char *formName = "frmMain";
    static constexpr const char *settingsKey = "Software\\Velmora Works\\MP3 Data";
    explicit frmMain(ui::AppContext &app);
    ~frmMain() override;

    void Form_Load() override;
    void Form_Unload() override;

    // Connects to the writing engine and makes the first recorder it knows current.
    void writerInit();
    // The earlier form of writerInit: the close flags are left as they are.
    void startme_up();
    // Writes the paths of the CD list, one a line; any failure shows one message.
    void pOutputPlayList(const std::string &path);

    // The burn (its steps live with the burn engine): the Start command behind both doors,
    // the hand-over of each decoded track to the writer, and the ways back.
    void startBurn();
    void startme_upx();
    void Disco();
    void letsburn(std::string &file);
    void results(rt::Integer &flag);
    void results2(rt::Integer &flag);
    void fuckoff();
    void triggerhappy(std::string &text);

    // The player and the listening room (their steps live with the playback code).
    void frmmainvis(rt::Integer &flag);
    void frmmainheight(rt::Integer &height);
    void saveeq();
    // Toolbar 13: the first opening stores that the room opens at every start; then it shows.
    void openListeningRoom();
    // Ends the program in order: the player stops, every window goes.
    void Shutoff();

    std::optional<std::string> member(const std::string &name) const override;
    std::optional<std::string> callRoutine(const std::string &name, const std::vector<std::string> &args) override;

    // Members.
    rt::Integer isPlaying = 0;
    std::string eqIniPath;
    std::string eqFirstOpen;
    std::string eqState;
    rt::Integer sliderHeld = 0;
    std::string mediaErrorText;
    rt::Integer lastTrackCloses = 0;
    rt::Integer sessionStaysOpen = 0;
    rt::Integer closeSession = 0;
    rt::Integer selectedRow = 0;
    rt::Integer selectedRowAlso = 0;
    // Edges of the fifteen equaliser bands in hertz; band i runs from entry i-1 to entry i.
    std::array<double, 16> bandEdges{};

    // Menu.
    ui::MenuItem mndigitaloptions;
    ui::MenuItem mnuscan;
    ui::MenuItem mnBuildSkin;
    ui::MenuItem mnSkin1;
    ui::MenuItem mnSkin2;
    ui::MenuItem mnSep10;
    ui::MenuItem mnSkin3;
    ui::MenuItem mnubatchconvert;
    ui::MenuItem mnucdcopy;
    ui::MenuItem mnuexit;
    ui::MenuItem mnuhelp;
    ui::MenuItem mnuhelponline;
    ui::MenuItem mnuxinfo;
    ui::MenuItem mnAbout;
    ui::MenuItem mnuinfo;

    ui::ToolBar ctToolBar1;

    // The writer.
    ui::Label lblDevices;
    ui::ListBox List1;
    ui::Label lblWriter;
    ui::TextBox Text1;
    ui::Label lblDriverType;
    ui::TextBox Text2;
    ui::Button ctButton8;
    ui::ComboBox cdlist;
    // The burn's status lines.
    ui::Label Label1;
    ui::Label Label5;

    // The burn settings.
    ui::ComboBox ctCombo1;
    ui::ComboBox ctCombo2;
    ui::CheckBox Check1;
    ui::CheckBox Check2;
    ui::CheckBox Check3;
    ui::CheckBox Check4;
    ui::CheckBox Check5;
    ui::CheckBox Check6;
    ui::CheckBox Check7;

    // The CD list: three parallel lists, row i of each the same track.
    ui::ListBox mainlist;
    ui::ListBox filex;
    ui::ListBox time;

    ui::Button ctButton2;
    ui::Button ctButton3;
    ui::Button ctButton9;
    ui::Button ctButton10;
    ui::Button ctButton5;
    ui::Button ctButton1;
    ui::Button ctButton4;

    // The player.
    ui::Button ctButton12;
    ui::Button ctButton11;
    ui::Button ctButton14;
    ui::Meter Slider1;
    ui::Label Label6;
    ui::SpectrumView Spectrumx1;
    // Opens the equaliser editor; saves the equaliser.
    ui::Button Command02;
    ui::Button Command1876;
    // Lists of the design that no code fills or reads.
    ui::ListBox playformat;
    ui::ListBox playtime;
    ui::ListBox playfile;

    ui::Button ctButton13;
    // The time left on the handed-over layout.
    ui::Label Label3;
    ui::Label lblMemory;
    ui::Meter ctMeter1;
    ui::PictureBox Picture4;
    ui::StatusBar StatusBar1;

    ui::Timer Timer2;
    ui::Timer Timer3;
    ui::Timer slider1timer;
    ui::Timer MMHiTimerX1;
    ui::Timer waiter;
    ui::Timer donewait;
    ui::Timer Timer1;

    // Closed components.
    platform::Component<platform::SettingsStore> reg1;
    platform::Component<platform::SystemInfo> SysOCX1;
    platform::Component<platform::WriterEngine> ACDWRITE1;
    platform::Component<platform::WaveOut> MMWaveOutX1;
    platform::Component<platform::RingBuffer> MMRingBufferX1;
    platform::Component<platform::Equalizer> eq;
    platform::Component<platform::Connector> MMConnectorX1;
    platform::Component<platform::Mp3Decoder> giveamp3;
    // The time formatter of the player.
    platform::MMHelper Helper;

private:
    void layOut();
    void applyComponentDesign();
    void fillDriverList();
    void applyStoredSettings();
    void Timer2_Timer();
    void Timer3_Timer();
    void cdlist_Click();
    void List1_DblClick();
    void ctButton8_Click();
    // The engine's steps shared by writerInit and startme_up.
    void connectWriter();
    void wireWriterEvents();
    void Check1_Click();
    void Check2_Click();
    void ctCombo1_Click();
    void ACDWRITE1_OnWriteProgress(int percent);
    void ACDWRITE1_OnClosingDisc();
    void ACDWRITE1_OnTrackDone();
    void finishBurn(bool reset);
    void ctToolBar1_ButtonClick(int index);
    void newLayout();
    void ctButton10_Click();
    void moveRow(int by);
    void ctButton9_Click();
    void mainlist_Click();
    void mainlist_RowsChanged();
    void ctButton1_Click();
    void ctButton5_Click();
    void toggleOff(ui::MenuItem &entry);
    void showWindow(const char *name);
    void hover(const char *text);
    // The player.
    void wirePlayer();
    void ctButton12_Click();
    void ctButton11_Click();
    void MMWaveOutX1_OnPlayStart();
    void MMWaveOutX1_OnPlayStop();
    void slider1timer_Timer();
    void MMHiTimerX1_Timer();
    void Slider1_ThumbTaken();
    void Slider1_ThumbReleased();

    std::unique_ptr<services::shutdown> m_shutdown;
};

} // namespace shell
