#include "CoverWindows.h"

#include "CoverDesigner.h"
#include "ui/AppContext.h"

namespace cover {

void registerCoverWindows(ui::AppContext &app)
{
    app.registerForm(CoverDesigner::formName, [](ui::AppContext &a) { return std::make_unique<CoverDesigner>(a); });
}

} // namespace cover
