#pragma once

#include <string>

#include "platform/Components.h"
#include "ui/Button.h"
#include "ui/CommonDialog.h"
#include "ui/Label.h"
#include "ui/Meter.h"
#include "ui/Timer.h"
#include "ui/Window.h"

namespace convert {

// One MP3 of the main list decoded into a wave file where the user chooses:
// AudioFile -> Trigger -> WaveFile. The window closes itself when the file is written.
class mp3towav : public ui::Window {
public:
    static constexpr const char *formName = "mp3towav";
    explicit mp3towav(ui::AppContext &app);

    void Form_Load() override;

    // Shows the file to convert; the caller sets SourcePath and DisplayName first.
    void launch();

    std::optional<std::string> member(const std::string &name) const override;
    std::optional<std::string> callRoutine(const std::string &name, const std::vector<std::string> &args) override;

    // Set by the caller before Show.
    std::string SourcePath;
    std::string DisplayName;

    ui::Label Frame1;
    ui::Label ctText1;
    ui::Button btnConvert;
    ui::Meter Gauge;
    ui::Timer Timer;
    ui::CommonDialog FileDialog;

    platform::Component<platform::AudioFile> AudioFile;
    platform::Component<platform::Trigger> Trigger;
    platform::Component<platform::WaveFile> WaveFile;

private:
    void layOut();
    void wireChain();
    void btnConvert_Click();
    void Trigger_Started();
    void Trigger_Stopped();
    void Timer_Timer();
};

} // namespace convert
