#pragma once

namespace ui {
class AppContext;
}

namespace burn {

// Makes the burn's windows known by name to the context.
void registerBurnWindows(ui::AppContext &app);

} // namespace burn
