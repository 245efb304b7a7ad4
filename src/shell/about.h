#pragma once

#include "ui/Button.h"
#include "ui/Label.h"
#include "ui/PictureBox.h"
#include "ui/Window.h"

namespace shell {

// The about box: the splash picture, the program, its maker and its licence.
class about : public ui::Window {
public:
    static constexpr const char *formName = "about";
    explicit about(ui::AppContext &app);

    ui::PictureBox Image1;
    ui::Label Label1;
    ui::Label Label2;
    ui::Label Label3;
    ui::Button cmdOK;

private:
    void cmdOK_Click();
};

} // namespace shell
