#pragma once

#include <string>

#include "mp3/FrameScan.h"
#include "mp3/cIDV3.h"
#include "runtime/Integer.h"
#include "ui/Button.h"
#include "ui/CheckBox.h"
#include "ui/Label.h"
#include "ui/ListBox.h"
#include "ui/Meter.h"
#include "ui/StatusBar.h"
#include "ui/TextBox.h"
#include "ui/Timer.h"
#include "ui/Window.h"

namespace layout {

// The layout builder: a folder of MP3s on one side, the burn list on the other, the time left
// on the disc counting down between them.
class Form5 : public ui::Window {
public:
    static constexpr const char *formName = "Form5";
    explicit Form5(ui::AppContext &app);

    void Form_Load() override;

    // The disc's capacity in seconds: 4400 for the 74 minute choice, 4800 for the 80 minute one.
    void cdvalue(rt::Integer seconds);
    // The time-left text for t seconds, and the over-time display that goes with it.
    std::string ConvertTime(rt::Integer t);
    // The seconds of a file as Str text (" 243"); each call also lands in ctList3.
    std::string Getmp3data(const std::string &path);
    // The same measure, shown in Label5 (sample rate) and Label4(0) (frames).
    void Getmp3data2(const std::string &path);
    void safeclose();
    // Back on top of the other windows, position and size untouched.
    void bringmeforward();

    std::optional<std::string> member(const std::string &name) const override;
    std::optional<std::string> callRoutine(const std::string &name, const std::vector<std::string> &args) override;

    // The layout.
    rt::Integer SecondsLeft = 0;
    rt::Integer OvertimeFlag = 0;
    rt::Integer TracksLeft = 0;
    rt::Integer ChosenCount = 0;
    rt::Integer MeterMax = 0;
    rt::Integer LoadCount = 0;
    rt::Integer DamagedSeen = 0;
    rt::Integer CleanWanted = 0;
    rt::Long LastBitrate = 0;
    std::string ScanErrorMark;

    ui::Label Label1;
    ui::Label Label7;
    ui::Button ctButton3;
    ui::ListBox ctList1;
    ui::Label Label5;
    ui::Label Label4;
    ui::Button ctButton1;
    ui::Button ctButton2;
    ui::ListBox ctList2;
    ui::Label Label2;
    ui::Label Label3;
    ui::Meter progressbar1;
    ui::Button ctButton4;
    ui::Button ctButton5;
    ui::Button ctButton6;
    ui::Button ctButton7;
    ui::Button ctButton8;
    ui::Label ctGroup1;
    ui::CheckBox Check1;
    ui::CheckBox Check2;
    ui::TextBox ctText1;
    ui::Meter Slider1;
    ui::StatusBar StatusBar1;
    ui::Timer Timer1;
    ui::Timer Timer2;

    // Lists the window keeps out of sight, as arrays of texts.
    ui::ListBox File1;
    ui::ListBox List1;
    ui::ListBox timelist;
    ui::ListBox masterpull;
    ui::ListBox list2;
    ui::ListBox ctList31;
    ui::ListBox ctList3;
    ui::ListBox ctList4;
    ui::ListBox ctList5;
    ui::ListBox bogus;
    ui::TextBox Text1;

private:
    void layOut();
    void ctButton3_Click();
    void importScan();
    void ctList1_Click();
    void ctButton1_Click();
    void ctButton2_Click();
    void ctButton4_Click();
    void ctButton5_Click();
    void ctButton8_Click();
    void Timer1_Timer();
    void Timer2_Timer();
    // The time left shown with its over-time display: caption, member and meter.
    void showTimeLeft(rt::Integer t);
    mp3::FrameScanResult measure(const std::string &path);

    mp3::BitrateTable m_bitrates;
    mp3::cIDV3 m_id3;
};

} // namespace layout
