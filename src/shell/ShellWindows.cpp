#include "ShellWindows.h"

#include "Form1.h"
#include "Form4.h"
#include "Form7.h"
#include "about.h"
#include "bannerx.h"
#include "frmMain.h"
#include "ui/AppContext.h"

namespace shell {

void registerShellWindows(ui::AppContext &app)
{
    app.registerForm(bannerx::formName, [](ui::AppContext &a) { return std::make_unique<bannerx>(a); });
    app.registerForm(frmMain::formName, [](ui::AppContext &a) { return std::make_unique<frmMain>(a); });
    app.registerForm(Form1::formName, [](ui::AppContext &a) { return std::make_unique<Form1>(a); });
    app.registerForm(Form4::formName, [](ui::AppContext &a) { return std::make_unique<Form4>(a); });
    app.registerForm(Form7::formName, [](ui::AppContext &a) { return std::make_unique<Form7>(a); });
    app.registerForm(about::formName, [](ui::AppContext &a) { return std::make_unique<about>(a); });
}

void startProgram(ui::AppContext &app)
{
    app.form<bannerx>().Show();
}

} // namespace shell
