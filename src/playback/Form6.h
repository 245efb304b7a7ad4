#pragma once

#include <array>
#include <memory>

#include "ui/Button.h"
#include "ui/Label.h"
#include "ui/LevelMeter.h"
#include "ui/Meter.h"
#include "ui/PictureBox.h"
#include "ui/Window.h"

namespace playback {

// The listening room: the equaliser's band sliders, the two level meters and the player's time,
// in a small tool window that floats beside the main window.
class Form6 : public ui::Window {
public:
    static constexpr const char *formName = "Form6";
    // The room's design height and its folded height, in twips.
    static constexpr int designHeight = 2340;
    static constexpr int foldedHeight = 255;
    // The range of a band slider, in dB.
    static constexpr int sliderMin = -12;
    static constexpr int sliderMax = 12;

    explicit Form6(ui::AppContext &app);

    void Form_Load() override;
    void Form_Unload() override;

    // Shows the room beside its owner, which it then follows.
    void LoadToolbar(ui::Window &ownerWindow);
    void UnloadToolbar();

    std::optional<std::string> callRoutine(const std::string &name, const std::vector<std::string> &args) override;

    // One slider per band; index 15 has no band.
    std::array<std::unique_ptr<ui::Meter>, 16> GSlider8;
    // Left and right.
    std::array<std::unique_ptr<ui::LevelMeter>, 2> Level;
    ui::Label LevelScale;
    ui::Label Label1;
    ui::Label Overflow1;
    std::array<std::unique_ptr<ui::Label>, 2> Label2;
    std::array<std::unique_ptr<ui::Label>, 2> Label4;
    ui::Label tt;
    ui::Label tt2;
    ui::Meter Gauge;
    ui::Button ctButton1;
    ui::Button ctButton2;
    ui::Button ctButton3;
    ui::Button ctButton4;
    ui::PictureBox Picture1;
    ui::PictureBox Picture3;

private:
    void layOut();
    void GSlider8_Change(int index);
    void dragWindow();

    ui::Window *m_owner = nullptr;
};

} // namespace playback
