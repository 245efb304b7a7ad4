#include "AddonWindows.h"

#include "Plugins.h"
#include "connect.h"
#include "ui/AppContext.h"

namespace addons {

void registerAddonWindows(ui::AppContext &app)
{
    app.registerForm(connect::formName, [](ui::AppContext &a) { return std::make_unique<connect>(a); });
    app.registerForm(Plugins::formName, [](ui::AppContext &a) { return std::make_unique<Plugins>(a); });
}

} // namespace addons
