#pragma once

#include <string>

#include "platform/Components.h"
#include "ui/Button.h"
#include "ui/CheckBox.h"
#include "ui/Label.h"
#include "ui/ListBox.h"
#include "ui/PictureBox.h"
#include "ui/StatusBar.h"
#include "ui/TextBox.h"
#include "ui/Window.h"

namespace addons {

// The add-on window: the catalogue's rows, and two ways out to the browser with the download
// and information addresses the catalogue named as a whole.
class Plugins : public ui::Window {
public:
    static constexpr const char *formName = "Plugins";
    explicit Plugins(ui::AppContext &app);

    void Form_Load() override;

    // Open the address in the user's browser and return at once; OpenUrl1 serves the download,
    // OpenUrl2 the information.
    void OpenUrl1(const std::string &address);
    void OpenUrl2(const std::string &address);

    std::optional<std::string> callRoutine(const std::string &name, const std::vector<std::string> &args) override;

    ui::Label Label1;
    ui::ListBox mainlist;
    ui::TextBox Text1;
    ui::TextBox Text2;
    ui::TextBox Text3;
    ui::Button ctButton3;
    ui::Button ctButton1;
    ui::Button ctButton2;
    ui::CheckBox Check1;
    ui::PictureBox ctClip1;
    ui::StatusBar StatusBar1;

private:
    void layOut();
    void openInBrowser(const std::string &address);
    void ctButton1_Click();
    void ctButton2_Click();
    void ctButton3_Click();

    platform::Component<platform::Shell> m_shell;
};

// Only web addresses leave the program: "http://" or "https://" at the start, in any case.
bool isWebAddress(const std::string &address);

} // namespace addons
