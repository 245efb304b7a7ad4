#include "Form7.h"

#include <array>

#include "frmMain.h"
#include "ui/AppContext.h"

namespace shell {

namespace {

using Level = ui::TreeView::Level;

// One row of the settings tree, in the order the opened tree shows them: its label, and what a
// selection of it does. Groups write their line to the log; items name the stored value.
struct SettingRow {
    const char *label;
    Level level;
    // The stored value an item stands for, as the log names it and the button writes it.
    const char *value;
    // The group's line in the log.
    const char *groupLine;
    // The port line says "Port Open" for the player's values, plain "Open" for the rest.
    bool portWord;
};

constexpr std::array<SettingRow, 36> settingRows{{
    {"Master Audio/MP3 Settings - PC ", Level::Root, nullptr, nullptr, false},
    {"Audio out ", Level::Group, nullptr, "Audio out settings selected", false},
    {"Call Back Mode", Level::Item, "CallBackMode", nullptr, true},
    {"Looping", Level::Item, "looping", nullptr, true},
    {"Num Buffers", Level::Item, "NumBuffers", nullptr, true},
    {"Time Format", Level::Item, "TimeFormat", nullptr, true},
    {"Buffer Size", Level::Item, "BufferSize", nullptr, true},
    {"Ring Buffer", Level::Group, nullptr, "Ring Buffer settings selected", false},
    {"Loop if empty", Level::Item, "RingLoopIfEmpty", nullptr, true},
    {"Que Mode", Level::Item, "RingQueMode", nullptr, true},
    {"Buffer Size", Level::Item, "RingBufferSize", nullptr, true},
    {"Mp3 Data", Level::Group, nullptr, "MP3 Data settings selected", false},
    {"DecryptKey", Level::Item, "ADecryptKey", nullptr, true},
    {"Panning", Level::Item, "APanning", nullptr, true},
    {"Volume", Level::Item, "AVolume", nullptr, true},
    {"Mp3 Connector", Level::Group, nullptr, "MP3 Connector settings selected", false},
    {"TriggerMode", Level::Item, "STriggerMode", nullptr, true},
    {"TriggerLevel", Level::Item, "STriggerLevel", nullptr, true},
    {"Speed", Level::Item, "SSpeed", nullptr, true},
    {"Refresh on Stop", Level::Item, "SRefreshonStop", nullptr, true},
    {"Real Time", Level::Item, "SRealTime", nullptr, true},
    {"Enter Idle", Level::Item, "SEnterIdle", nullptr, true},
    {"Auto Trigger", Level::Item, "SAutoTrigger", nullptr, true},
    {"Auto Convert", Level::Item, "SAutoConvert", nullptr, true},
    {"Equalizer", Level::Group, nullptr, "Equalizer settings selected", false},
    {"EQChannel", Level::Item, "EQChannel", nullptr, true},
    {"FFTLength", Level::Item, "FFTLength", nullptr, true},
    {"SampleRate", Level::Item, "SampleRate", nullptr, true},
    {"Window", Level::Item, "Window", nullptr, true},
    {"CD Burner", Level::Group, nullptr, "CD Burning settings selected", false},
    {"FiFo Buffer Count", Level::Item, "FifoBufferCount", nullptr, false},
    {"ASPI Events", Level::Item, "ASPIEvents", nullptr, false},
    {"Pre-Gap Size", Level::Item, "PreGapSize", nullptr, false},
    {"Swap Bytes", Level::Item, "SwapBytes", nullptr, false},
    {"Listning Room Configs", Level::Group, nullptr, "Global settings selected", false},
    {"Show Listning Room on startup", Level::Item, "ShowEQonStartup", nullptr, false},
}};

// The row of a number, or nullptr for a number no row has.
const SettingRow *rowAt(int row)
{
    return row >= 0 && row < static_cast<int>(settingRows.size()) ? &settingRows[row] : nullptr;
}

bool isItem(int row)
{
    const SettingRow *r = rowAt(row);
    return r && r->level == Level::Item;
}

// The trigger level is read under another spelling; the store ignores the case of names.
std::string readName(int row)
{
    return row == 17 ? "STriggerlevel" : settingRows[row].value;
}

const std::string portLinePrefix = "Data port opened!";

} // namespace

Form7::Form7(ui::AppContext &app)
    : Window(app, formName)
    , TList2(*this, "TList2")
    , Frame1(*this, "Frame1")
    , Text1(*this, "Text1")
    , ctButton1(*this, "ctButton1")
    , List1(*this, "List1")
    , StatusBar1(*this, "StatusBar1", 1)
    , tmrRefresh(*this, "tmrRefresh", 100, true)
    , tmrMonitor(*this, "tmrMonitor", 300, true)
    , reg1(app.components().settingsStore)
{
    setCaption("Global CD-MP3 Settings");
    layOut();
    for (const SettingRow &row : settingRows)
        TList2.AddRow(row.label, row.level);

    TList2.RowSelected = [this](int row) { TList2_RowSelected(row); };
    ctButton1.Click = [this] { ctButton1_Click(); };
}

void Form7::layOut()
{
    setGeometry(0, 0, 10080, 6420);
    TList2.setGeometry(120, 120, 4200, 5400);
    Frame1.setFrame(true);
    Frame1.setCaption("Command Line");
    Frame1.setGeometry(4440, 120, 5400, 900);
    Text1.setContainer(&Frame1);
    Text1.setGeometry(120, 360, 5160, 315);
    ctButton1.setCaption("Change Setting");
    ctButton1.setGeometry(4440, 1140, 2000, 420);
    List1.setGeometry(4440, 1680, 5400, 3840);
    StatusBar1.setGeometry(0, 5640, 9960, 330);
}

void Form7::Form_Load()
{
    setTopmost(true);
    centreOnScreen();
    setCaption("Velmora Works - Software Settings");
}

void Form7::TList2_RowSelected(int row)
{
    selectedRow = row;
    const SettingRow *setting = rowAt(row);
    if (setting && setting->level == Level::Group) {
        Text1.setText("");
        List1.Clear();
        List1.AddItem(setting->groupLine);
        List1.AddItem(portLinePrefix + "701- Selected information stored");
    }
    // Every row opens the key; only an item closes it again.
    reg1->OpenKey(platform::SettingsStore::HKEY_CURRENT_USER, frmMain::settingsKey);
    if (isItem(row)) {
        List1.Clear();
        selectedRow = row;
        Text1.setText(reg1->ReadValue(readName(row)));
        reg1->CloseKey();
        const std::string name = setting->value;
        List1.AddItem("240- " + name);
        List1.AddItem(portLinePrefix + "490- " + name + (setting->portWord ? " Port Open" : " Open"));
    }
}

void Form7::ctButton1_Click()
{
    const int row = selectedRow.value();
    if (!isItem(row))
        return;
    reg1->OpenKey(platform::SettingsStore::HKEY_CURRENT_USER, frmMain::settingsKey);
    const std::string text = Text1.Text();
    reg1->WriteValue(settingRows[row].value, text, platform::SettingsStore::REG_SZ);
    reg1->CloseKey();
}

std::optional<std::string> Form7::member(const std::string &name) const
{
    if (name == "selectedRow")
        return std::to_string(selectedRow.value());
    return std::nullopt;
}

} // namespace shell
