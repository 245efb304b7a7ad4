#pragma once

namespace ui {
class AppContext;
}

namespace convert {

// Makes the converters' windows known by name: batcher and mp3towav.
void registerConvertWindows(ui::AppContext &app);

} // namespace convert
