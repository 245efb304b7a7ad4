#pragma once

#include <cstdint>
#include <string>

#include "RipLog.h"
#include "ui/Button.h"
#include "ui/Label.h"
#include "ui/ListBox.h"
#include "ui/Meter.h"
#include "ui/Timer.h"
#include "ui/Window.h"

namespace extract {

class MainForm;

// The progress of a copy run, and the walk from one selected track to the next. The chain's
// events arrive on the main window, which hands them on here.
class CopyDlg : public ui::Window {
public:
    static constexpr const char *formName = "CopyDlg";
    explicit CopyDlg(ui::AppContext &app);

    void Form_Load() override;
    // While the chain is open the close is refused and the run stopped as by Cancel.
    bool Form_QueryUnload() override;

    // Begins one track: index in the reader's track list.
    void CopyTrack(int32_t index);
    // The next selected audio track after ActiveTrack; ActiveTrack itself when there is none.
    int32_t FindNextTrack();
    void StartTimer();
    void StopTimer();

    void Trigger_Stopped();
    void Trigger_Closed();
    void WaveFile_WriteFailed();
    // What the chain reported with its error event, for the rip log only.
    void noteChainError(int code, const std::string &message);

    std::optional<std::string> member(const std::string &name) const override;
    std::optional<std::string> callRoutine(const std::string &name, const std::vector<std::string> &args) override;

    // Fields.
    int32_t ActiveTrack = -1;
    bool Aborted = false;
    bool CopyErrors = false;
    std::string TargetName;

    ui::Label lblActual;
    ui::Meter Meter1;
    ui::Label lblPercent1;
    ui::Label lblSpeedCaption1;
    ui::Label lblSpeed1;
    ui::Label lblTimeCaption1;
    ui::Label lblTime1;
    ui::Label lblRemainingCaption1;
    ui::Label lblRemaining1;
    ui::Label lblTotal;
    ui::Meter Meter2;
    ui::Label lblPercent2;
    ui::Label lblSpeedCaption2;
    ui::Label lblSpeed2;
    ui::Label lblTimeCaption2;
    ui::Label lblTime2;
    ui::Label lblRemainingCaption2;
    ui::Label lblRemaining2;
    ui::Label lblMessages;
    ui::ListBox Messages;
    ui::Button btnAbort;
    ui::Timer Timer;
    ui::Timer Timer2;

private:
    void layOut();
    MainForm &main();
    int32_t clock();
    void Timer_Timer();
    void Timer2_Timer();
    void btnAbort_Click();
    // The four labels of one meter, for the time t it has taken.
    void showProgress(ui::Meter &meter, ui::Label &percent, ui::Label &speed, ui::Label &time, ui::Label &remaining,
                      int32_t t);
    void showFull(ui::Meter &meter, ui::Label &percent, ui::Label &remaining);
    // The rip log's side of a run; none of it changes what the window does.
    std::string stemOf(const std::string &target);
    void logRunStart();
    void logTrackStart(const platform::CdTrack &track, const std::string &file);
    void logTrackError(const std::string &what);
    void logTrackEnd(bool copiedWhole);
    void logRunEnd(const std::string &result);

    RipLog m_log;
    bool m_logStarted = false;
    std::string m_logTrackFile;
    bool m_logFirstTrack = false;
    bool m_logLastTrack = false;

    int32_t StartTick = 0;
    int32_t TotalElapsed = 0;
    int32_t TrackElapsed = 0;
};

} // namespace extract
