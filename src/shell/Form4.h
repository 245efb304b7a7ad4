#pragma once

#include <string>

#include "platform/Components.h"
#include "ui/Button.h"
#include "ui/HyperLink.h"
#include "ui/Label.h"
#include "ui/Window.h"

namespace ui {
class AppContext;
}

namespace shell {

// The help window: links to the documents installed with the program. It floats over the
// others from its load.
class Form4 : public ui::Window {
public:
    static constexpr const char *formName = "Form4";
    explicit Form4(ui::AppContext &app);

    void Form_Load() override;

    ui::Label Label1;
    ui::HyperLink ctHyperLink1;
    ui::HyperLink ctHyperLink2;
    ui::Button ctButton1;

    platform::Component<platform::Shell> Shell;

private:
    void ctHyperLink1_Click();
    void ctHyperLink2_Click();
    void ctButton1_Click();
};

} // namespace shell
