#include "ConvertWindows.h"

#include "batcher.h"
#include "mp3towav.h"
#include "ui/AppContext.h"

namespace convert {

void registerConvertWindows(ui::AppContext &app)
{
    app.registerForm(batcher::formName, [](ui::AppContext &a) { return std::make_unique<batcher>(a); });
    app.registerForm(mp3towav::formName, [](ui::AppContext &a) { return std::make_unique<mp3towav>(a); });
}

} // namespace convert
