#include "ExtractWindows.h"

#include "ConfigDlg.h"
#include "CopyDlg.h"
#include "ISRCDlg.h"
#include "MainForm.h"
#include "ui/AppContext.h"

namespace extract {

void registerExtractWindows(ui::AppContext &app)
{
    app.registerForm(MainForm::formName, [](ui::AppContext &a) { return std::make_unique<MainForm>(a); });
    app.registerForm(CopyDlg::formName, [](ui::AppContext &a) { return std::make_unique<CopyDlg>(a); });
    app.registerForm(ISRCDlg::formName, [](ui::AppContext &a) { return std::make_unique<ISRCDlg>(a); });
    app.registerForm(ConfigDlg::formName, [](ui::AppContext &a) { return std::make_unique<ConfigDlg>(a); });
}

} // namespace extract
