#pragma once

#include <string>

namespace ui {
class AppContext;
}

namespace addons {

// Where the add-on catalogue comes from when the settings name no server.
inline constexpr const char *defaultAddonServer = "https://addons.velmora-works.com";

// The add-on server's address, without a trailing "/": the settings value AddonServer of the
// program's key when it holds one, else the built-in default.
std::string addonServer(ui::AppContext &app);

} // namespace addons
