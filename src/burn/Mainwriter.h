#pragma once

#include <string>

#include "platform/Components.h"
#include "platform/helper/MMHelper.h"
#include "runtime/Integer.h"
#include "ui/Button.h"
#include "ui/Label.h"
#include "ui/ListBox.h"
#include "ui/Meter.h"
#include "ui/Timer.h"
#include "ui/Window.h"

namespace burn {

// The progress window of a burn, and the stage that decodes one MP3 at a time into the work
// file the writer takes: AudioFile -> Trigger -> DstFile.
class Mainwriter : public ui::Window {
public:
    static constexpr const char *formName = "Mainwriter";
    explicit Mainwriter(ui::AppContext &app);

    void Form_Load() override;
    // Refused while the chain is open.
    bool Form_QueryUnload() override;

    // Takes row 0 of the queue for the next track and starts its decoding.
    void IntroPrepare();
    // Sets up and starts one decode.
    void PrepareTrack(rt::Integer &index);
    void changelabel4(const std::string &text);
    // Gives the overall meter its maximum, once per window life; returns the row count.
    void overalltimex(rt::Integer &count);
    void addtooverall();

    std::optional<std::string> member(const std::string &name) const override;
    std::optional<std::string> callRoutine(const std::string &name, const std::vector<std::string> &args) override;

    // Members.
    rt::Integer closeAtEnd = 0;
    rt::Integer tracksLeft = 0;
    rt::Integer trackIndex = 0;
    rt::Integer overallSet = 0;
    rt::Integer cancelled = 0;
    rt::Integer decoding = 0;
    std::string flashText;
    std::string currentFile;
    std::string currentTitle;
    std::string waveName;
    // The two flags of the hidden test button; nothing reads them.
    rt::Integer testFlagA = 0;
    rt::Integer testFlagB = 0;

    ui::Label Label1;
    ui::Label Label2;
    ui::Label Label4;
    ui::Label Label5;
    ui::Meter ctMeter1;
    ui::Meter progressbar1;
    ui::Meter overallmeter;
    ui::Meter Gauge;
    ui::Button ctButton1;
    ui::Button ctButton22;
    ui::Button Command1;
    ui::Button Command2;
    ui::ListBox ctList1;
    ui::ListBox ctList2;
    ui::Timer Timer;
    ui::Timer mp3labelflashwait;
    ui::Timer givemesometime;
    ui::Timer triggerclosewait;
    ui::Timer warner;
    ui::Timer warner2;

    // Closed components, wired as the design stores them.
    platform::Component<platform::AudioFile> AudioFile;
    platform::Component<platform::Trigger> Trigger;
    platform::Component<platform::WaveFile> DstFile;
    platform::MMHelper Helper;

private:
    void layOut();
    void wireChain();
    void Trigger_Started();
    void Trigger_Stopped();
    void Trigger_Closed();
    void Timer_Timer();
    void Label1_Change();
    void mp3labelflashwait_Timer();
    void givemesometime_Timer();
    void safeExit();
    void Command2_Click();
    // Two status routines that no flow calls.
    void showCreatingTrack();
    void clearTrackStatus();

    // The flashing status's own count, kept between ticks.
    rt::Integer m_flashCount = 0;
};

} // namespace burn
