#include "ShellWindows.h"

#include "bannerx.h"
#include "frmMain.h"
#include "ui/AppContext.h"

namespace shell {

void registerShellWindows(ui::AppContext &app)
{
    app.registerForm(bannerx::formName, [](ui::AppContext &a) { return std::make_unique<bannerx>(a); });
    app.registerForm(frmMain::formName, [](ui::AppContext &a) { return std::make_unique<frmMain>(a); });
}

void startProgram(ui::AppContext &app)
{
    app.form<bannerx>().Show();
}

} // namespace shell
