#pragma once

namespace ui {
class AppContext;
}

namespace playback {

// Makes the listening room known by name.
void registerPlaybackWindows(ui::AppContext &app);

} // namespace playback
