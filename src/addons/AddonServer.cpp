#include "AddonServer.h"

#include "platform/Components.h"
#include "runtime/ResumeNext.h"
#include "ui/AppContext.h"

namespace addons {

std::string addonServer(ui::AppContext &app)
{
    std::string value;
    rt::ResumeNext step;
    platform::Component<platform::SettingsStore> store(app.components().settingsStore);
    step([&] {
        store->OpenKey(platform::SettingsStore::HKEY_CURRENT_USER, "Software\\Velmora Works\\MP3 Data");
        value = store->ReadValue("AddonServer");
        store->CloseKey();
    });
    while (!value.empty() && value.back() == '/')
        value.pop_back();
    return value.empty() ? std::string(defaultAddonServer) : value;
}

} // namespace addons
