#include "BurnWindows.h"

#include "Mainwriter.h"
#include "ui/AppContext.h"

namespace burn {

void registerBurnWindows(ui::AppContext &app)
{
    app.registerForm(Mainwriter::formName, [](ui::AppContext &a) { return std::make_unique<Mainwriter>(a); });
}

} // namespace burn
