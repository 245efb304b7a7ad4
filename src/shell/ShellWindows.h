#pragma once

namespace ui {
class AppContext;
}

namespace shell {

// Makes the shell's windows known by name to the context, and starts the program at the splash.
void registerShellWindows(ui::AppContext &app);
void startProgram(ui::AppContext &app);

} // namespace shell
