#pragma once

namespace ui {
class AppContext;
}

namespace cover {

// Makes the cover designer known by name: CoverDesigner.
void registerCoverWindows(ui::AppContext &app);

} // namespace cover
