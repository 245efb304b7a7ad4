#pragma once

#include "ui/PictureBox.h"
#include "ui/Timer.h"
#include "ui/Window.h"

namespace shell {

// The splash: shown at entry; after its fixed seven seconds it brings up the main window.
class bannerx : public ui::Window {
public:
    static constexpr const char *formName = "bannerx";
    explicit bannerx(ui::AppContext &app);

    ui::PictureBox Image1;
    ui::Timer Timer1;

private:
    void Timer1_Timer();
};

} // namespace shell
