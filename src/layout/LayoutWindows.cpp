#include "LayoutWindows.h"

#include "Form2.h"
#include "Form5.h"
#include "ui/AppContext.h"

namespace layout {

void registerLayoutWindows(ui::AppContext &app)
{
    app.registerForm(Form2::formName, [](ui::AppContext &a) { return std::make_unique<Form2>(a); });
    app.registerForm(Form5::formName, [](ui::AppContext &a) { return std::make_unique<Form5>(a); });
}

} // namespace layout
