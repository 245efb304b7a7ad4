#pragma once

#include <string>

#include "platform/Components.h"
#include "runtime/Integer.h"
#include "ui/Button.h"
#include "ui/Label.h"
#include "ui/ListBox.h"
#include "ui/StatusBar.h"
#include "ui/TextBox.h"
#include "ui/Timer.h"
#include "ui/TreeView.h"
#include "ui/Window.h"

namespace ui {
class AppContext;
}

namespace shell {

// The Software Settings window: a raw editor of the settings key the main window reads at start.
// A row of the tree shows the stored text of its setting; the button writes the text back. What
// it stores counts from the next start: no running component is touched.
class Form7 : public ui::Window {
public:
    static constexpr const char *formName = "Form7";
    explicit Form7(ui::AppContext &app);

    void Form_Load() override;

    std::optional<std::string> member(const std::string &name) const override;

    // The row last selected; 0 until one is.
    rt::Integer selectedRow = 0;

    ui::TreeView TList2;
    ui::Label Frame1;
    ui::TextBox Text1;
    ui::Button ctButton1;
    ui::ListBox List1;
    ui::StatusBar StatusBar1;
    // Carried by the design; nothing handles their ticks.
    ui::Timer tmrRefresh;
    ui::Timer tmrMonitor;

    platform::Component<platform::SettingsStore> reg1;

private:
    void layOut();
    void TList2_RowSelected(int row);
    void ctButton1_Click();
};

} // namespace shell
