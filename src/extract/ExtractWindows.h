#pragma once

namespace ui {
class AppContext;
}

namespace extract {

// Makes the windows of CD audio extraction known to the program by name.
void registerExtractWindows(ui::AppContext &app);

} // namespace extract
