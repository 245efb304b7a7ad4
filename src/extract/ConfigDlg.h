#pragma once

#include "ui/Button.h"
#include "ui/CheckBox.h"
#include "ui/ComboBox.h"
#include "ui/Label.h"
#include "ui/NumberEdit.h"
#include "ui/OptionButton.h"
#include "ui/TextBox.h"
#include "ui/Window.h"

namespace extract {

// The reader's options: drive type, block count, copy mode, speeds ignored. OK sets them on the
// reader at once; OK and Cancel only hide the window, so a later showing shows what it last held.
class ConfigDlg : public ui::Window {
public:
    static constexpr const char *formName = "ConfigDlg";
    explicit ConfigDlg(ui::AppContext &app);

    void Form_Load() override;

    ui::TabStrip TabStrip1;
    ui::TextBox edDeviceName;
    ui::Label lblDeviceType;
    ui::ComboBox comboDeviceType;
    ui::Label lblBlockCount;
    ui::NumberEdit edBlockCount;
    ui::SpinButton spinBlockcount;
    ui::CheckBox ckbIgnoreSpeed;
    ui::Label Frame1;
    ui::OptionButton Option1_0;
    ui::OptionButton Option1_1;
    ui::OptionButton Option1_2;
    ui::Button btnOK;
    ui::Button btnCancel;

    // The drive types, by index: 0 is the reader's own detection.
    static const char *const deviceTypes[24];

private:
    void btnOK_Click();
};

} // namespace extract
