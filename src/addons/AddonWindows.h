#pragma once

namespace ui {
class AppContext;
}

namespace addons {

// Makes the add-on windows known by name: connect and Plugins.
void registerAddonWindows(ui::AppContext &app);

} // namespace addons
