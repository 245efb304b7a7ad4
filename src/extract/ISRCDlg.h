#pragma once

#include "ui/Button.h"
#include "ui/Label.h"
#include "ui/Meter.h"
#include "ui/Timer.h"
#include "ui/Window.h"

namespace extract {

// Reads the ISRC of every track of the disc into the module's codes, one track after the
// other, from a one-shot tick after the window comes on screen.
class ISRCDlg : public ui::Window {
public:
    static constexpr const char *formName = "ISRCDlg";
    explicit ISRCDlg(ui::AppContext &app);

    void Form_Load() override;
    void Form_Activate() override;
    // The frame's close cancels the reading, and the window closes.
    bool Form_QueryUnload() override;

    std::optional<std::string> member(const std::string &name) const override;

    bool Cancelled = false;

    ui::Timer Timer1;
    ui::Button btnCancel;
    ui::Meter Gauge;
    ui::Label Label1;

private:
    void Timer1_Timer();
    void readCodes();
};

} // namespace extract
