#include "PlaybackWindows.h"

#include "Form6.h"
#include "ui/AppContext.h"

namespace playback {

void registerPlaybackWindows(ui::AppContext &app)
{
    app.registerForm(Form6::formName, [](ui::AppContext &a) { return std::make_unique<Form6>(a); });
}

} // namespace playback
