#include "ConfigDlg.h"

#include "MainForm.h"
#include "runtime/ResumeNext.h"
#include "ui/AppContext.h"

namespace extract {

const char *const ConfigDlg::deviceTypes[24] = {"AutoDetect", "ATAPI",  "CYBER",    "DEC",     "GRUNDIG", "HITACHI",
                                                "HP",         "IBM",    "IMS",      "KODAK",   "MATSHITA", "MITSUMI",
                                                "MP",         "MS",     "NEC",      "PHILIPS", "PIONEER", "PLASMON",
                                                "PLEXTOR",    "RICOH",  "SONY",     "TOSHIBA", "TEAC",    "YAMAHA"};

ConfigDlg::ConfigDlg(ui::AppContext &app)
    : Window(app, formName)
    , TabStrip1(*this, "TabStrip1")
    , edDeviceName(*this, "edDeviceName")
    , lblDeviceType(*this, "lblDeviceType")
    , comboDeviceType(*this, "comboDeviceType")
    , lblBlockCount(*this, "lblBlockCount")
    , edBlockCount(*this, "edBlockCount")
    , spinBlockcount(*this, "spinBlockcount")
    , ckbIgnoreSpeed(*this, "ckbIgnoreSpeed")
    , Frame1(*this, "Frame1")
    , Option1_0(*this, "Option1", 0)
    , Option1_1(*this, "Option1", 1)
    , Option1_2(*this, "Option1", 2)
    , btnOK(*this, "btnOK")
    , btnCancel(*this, "btnCancel")
{
    setCaption("Options");
    setGeometry(0, 0, 5400, 4560);
    centreOnScreen();
    TabStrip1.setTabs({"General"});
    TabStrip1.setGeometry(120, 120, 5040, 3660);
    edDeviceName.setGeometry(360, 600, 4560, 315);
    edDeviceName.setLocked(true);
    lblDeviceType.setCaption("Drive &Type:");
    lblDeviceType.setGeometry(360, 1080, 1320, 255);
    comboDeviceType.setGeometry(1800, 1040, 3120, 315);
    for (const char *t : deviceTypes)
        comboDeviceType.AddItem(t);
    lblBlockCount.setCaption("&Block count");
    lblBlockCount.setGeometry(360, 1500, 1320, 255);
    edBlockCount.setGeometry(1800, 1460, 720, 315);
    edBlockCount.setMinValue(1);
    edBlockCount.setMaxValue(50);
    edBlockCount.setMaxLength(4);
    edBlockCount.setText("0");
    spinBlockcount.setGeometry(2520, 1460, 255, 315);
    spinBlockcount.setMinValue(1);
    spinBlockcount.setMaxValue(50);
    spinBlockcount.setValue(50);
    ckbIgnoreSpeed.setCaption("Ignore Speed");
    ckbIgnoreSpeed.setGeometry(3120, 1480, 1800, 255);
    Frame1.setFrame(true);
    Frame1.setCaption(" Copy Mode ");
    Frame1.setGeometry(360, 1920, 4560, 1680);
    int top = 300;
    for (auto *o : {&Option1_0, &Option1_1, &Option1_2}) {
        o->setContainer(&Frame1);
        o->setGeometry(240, top, 4080, 315);
        top += 420;
    }
    Option1_0.setCaption("&Normal");
    Option1_1.setCaption("&Burst-Copy");
    Option1_2.setCaption("&Sectorsynchronization");
    btnOK.setCaption("OK");
    btnOK.setGeometry(2520, 3900, 1200, 375);
    btnCancel.setCaption("Cancel");
    btnCancel.setGeometry(3960, 3900, 1200, 375);

    // The two block count controls follow each other.
    spinBlockcount.Change = [this] { edBlockCount.setValue(spinBlockcount.Value()); };
    edBlockCount.Change = [this] { spinBlockcount.setValue(edBlockCount.Value()); };
    btnOK.Click = [this] { btnOK_Click(); };
    btnCancel.Click = [this] { Hide(); };
}

void ConfigDlg::Form_Load()
{
    rt::ResumeNext step;
    MainForm &m = static_cast<MainForm &>(app().formByName(MainForm::formName));
    step([&] { setTopmost(true); });
    step([&] { comboDeviceType.setListIndex(m.CDReader->DeviceType()); });
    step([&] {
        const int count = m.CDReader->BlockCount();
        spinBlockcount.setValue(count);
        edBlockCount.setValue(count);
    });
    step([&] { edDeviceName.setText("<" + m.CDReader->DriveLetter() + ":>  " + m.CDReader->DeviceName()); });
    step([&] { ckbIgnoreSpeed.setValue(m.CDReader->IgnoreSpeed() ? 1 : 0); });
    step([&] {
        ui::OptionButton *options[] = {&Option1_0, &Option1_1, &Option1_2};
        const int mode = m.CDReader->CopyMode();
        if (mode < 0 || mode > 2)
            rt::raise(340); // a control array element that doesn't exist
        options[mode]->setValue(true);
    });
}

void ConfigDlg::btnOK_Click()
{
    rt::ResumeNext step;
    MainForm &m = static_cast<MainForm &>(app().formByName(MainForm::formName));
    step([&] { m.CDReader->setIgnoreSpeed(ckbIgnoreSpeed.Value() == 1); });
    step([&] { m.CDReader->setDeviceType(comboDeviceType.ListIndex()); });
    step([&] { m.CDReader->setBlockCount(spinBlockcount.Value()); });
    step([&] { m.CDReader->setCopyMode(Option1_0.Value() ? 0 : Option1_1.Value() ? 1 : 2); });
    Hide();
}

} // namespace extract
