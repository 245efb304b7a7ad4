#pragma once

#include "platform/Components.h"
#include "ui/Button.h"
#include "ui/HyperLink.h"
#include "ui/Label.h"
#include "ui/Window.h"

namespace shell {

// How to reach Velmora Works: the company and a link to the contact part of the guide. It
// floats over the others from its load.
class Form1 : public ui::Window {
public:
    static constexpr const char *formName = "Form1";
    explicit Form1(ui::AppContext &app);

    void Form_Load() override;

    ui::Label Label1;
    ui::Label Label2;
    ui::HyperLink ctHyperLink1;
    ui::Button ctButton1;

    platform::Component<platform::Shell> Shell;

private:
    void ctHyperLink1_Click();
    void ctButton1_Click();
};

} // namespace shell
