#include "Form6.h"

#include "runtime/Conversions.h"
#include "shell/frmMain.h"
#include "ui/AppContext.h"

namespace playback {

Form6::Form6(ui::AppContext &app)
    : Window(app, formName)
    , LevelScale(*this, "LevelScale")
    , Label1(*this, "Label1")
    , Overflow1(*this, "Overflow1")
    , tt(*this, "tt")
    , tt2(*this, "tt2")
    , Gauge(*this, "Gauge")
    , ctButton1(*this, "ctButton1")
    , ctButton2(*this, "ctButton2")
    , ctButton3(*this, "ctButton3")
    , ctButton4(*this, "ctButton4")
    , Picture1(*this, "Picture1")
    , Picture3(*this, "Picture3")
{
    for (int i = 0; i < 16; ++i) {
        GSlider8[i] = std::make_unique<ui::Meter>(*this, "GSlider8", ui::Meter::Style::Slider, i);
        GSlider8[i]->Change = [this, i] { GSlider8_Change(i); };
    }
    for (int i = 0; i < 2; ++i) {
        Level[i] = std::make_unique<ui::LevelMeter>(*this, "Level", i);
        Label2[i] = std::make_unique<ui::Label>(*this, "Label2", i);
        Label4[i] = std::make_unique<ui::Label>(*this, "Label4", i);
    }
    setCaption("Listning Room");
    layOut();

    auto mainWindow = [this]() -> shell::frmMain & { return this->app().form<shell::frmMain>(); };
    ctButton1.Click = [this, mainWindow] {
        rt::Integer height = rt::CInt(Height());
        mainWindow().frmmainheight(height);
    };
    ctButton2.Click = [mainWindow] { mainWindow().StatusBar1.setPanel(1, "Watch Audio"); };
    ctButton3.Click = [mainWindow] { mainWindow().saveeq(); };
    ctButton3.MouseMove = [mainWindow](int, int, int) { mainWindow().StatusBar1.setPanel(1, "Save EQ Data"); };
    ctButton4.Click = [this, mainWindow] {
        this->app().listeningRoomShown = 0;
        rt::Integer hide = 0;
        mainWindow().frmmainvis(hide);
    };
    ctButton4.MouseMove = [mainWindow](int, int, int) { mainWindow().StatusBar1.setPanel(1, "Close EQ"); };
    Picture1.MouseDown = [this](int, int, int) { dragWindow(); };
    Picture3.MouseDown = [this](int, int, int) { dragWindow(); };
}

void Form6::layOut()
{
    // Everything fits in what the design height leaves under the title bar.
    setGeometry(0, 0, 7440, designHeight);
    Picture1.setGeometry(0, 0, 7440, 180);
    for (int i = 0; i < 16; ++i) {
        ui::Meter &s = *GSlider8[i];
        s.setVertical(true);
        s.setMaxAtTop(true);
        s.setMin(sliderMin);
        s.setMax(sliderMax);
        s.setGeometry(120 + i * 285, 200, 255, 860);
        s.setToolTipText(i < 15 ? "Band " + std::to_string(i + 1) : std::string());
    }
    Picture3.setGeometry(4740, 200, 2580, 860);
    Label4[0]->setCaption("Time");
    Label4[0]->setGeometry(4800, 200, 900, 240);
    Label1.setCaption("X1 -^0:00.000");
    Label1.setGeometry(4800, 420, 2160, 300);
    Label4[1]->setCaption("Track");
    Label4[1]->setGeometry(4800, 760, 900, 240);
    tt.setCaption("00");
    tt.setGeometry(5700, 760, 450, 240);
    tt2.setCaption("00");
    tt2.setGeometry(6150, 760, 450, 240);
    Gauge.setVertical(true);
    Gauge.setValue(50);
    Gauge.setGeometry(7020, 200, 200, 860);

    Label2[0]->setCaption("R");
    Label2[1]->setCaption("L");
    Label2[1]->setGeometry(120, 1090, 180, 200);
    Level[0]->setGeometry(360, 1110, 5400, 150);
    Label2[0]->setGeometry(120, 1270, 180, 200);
    Level[1]->setGeometry(360, 1290, 5400, 150);
    for (auto &meter : Level) {
        meter->setDecay(9);
        meter->setPoint2(80);
    }
    LevelScale.setGeometry(360, 1450, 5400, 60);
    Overflow1.setCaption("Over");
    Overflow1.setGeometry(5880, 1150, 600, 240);

    ctButton1.setCaption("Fold");
    ctButton1.setGeometry(360, 1530, 900, 260);
    ctButton2.setCaption("Audio");
    ctButton2.setGeometry(1320, 1530, 900, 260);
    ctButton3.setCaption("Save EQ");
    ctButton3.setGeometry(5280, 1530, 1020, 260);
    ctButton4.setCaption("Close");
    ctButton4.setGeometry(6360, 1530, 960, 260);
}

void Form6::Form_Load()
{
    setGeometry(app().listeningRoomLeft.value(), app().listeningRoomTop.value(), Width(), Height());
    app().listeningRoomShown = -1;
}

void Form6::Form_Unload()
{
    app().listeningRoomLeft = rt::CInt(Left());
    app().listeningRoomTop = rt::CInt(Top());
    app().listeningRoomShown = 0;
    // The owner gets the focus back by itself when its tool window goes.
}

void Form6::LoadToolbar(ui::Window &ownerWindow)
{
    m_owner = &ownerWindow;
    Show();
    setOwner(&ownerWindow);
}

void Form6::UnloadToolbar()
{
    Unload();
}

void Form6::GSlider8_Change(int index)
{
    // A slider without a band (the sixteenth) fails here, and the handler ends quietly.
    try {
        app().form<shell::frmMain>().eq->setBandGain(index, static_cast<double>(GSlider8[index]->Value()));
    } catch (const rt::RuntimeError &) {
    }
}

void Form6::dragWindow()
{
    if (beginSystemMove)
        beginSystemMove();
}

std::optional<std::string> Form6::callRoutine(const std::string &name, const std::vector<std::string> &args)
{
    if (name == "LoadToolbar" && args.size() == 1) {
        LoadToolbar(app().formByName(args[0]));
        return std::string();
    }
    if (name == "UnloadToolbar" && args.empty()) {
        UnloadToolbar();
        return std::string();
    }
    return Window::callRoutine(name, args);
}

} // namespace playback
