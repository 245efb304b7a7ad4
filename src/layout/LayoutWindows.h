#pragma once

namespace ui {
class AppContext;
}

namespace layout {

// Makes the layout's windows known by name to the context.
void registerLayoutWindows(ui::AppContext &app);

} // namespace layout
