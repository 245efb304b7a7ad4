#include "MessageBox.h"

#include "AppContext.h"

namespace ui {

int MessageBoxRequest::defaultResult() const
{
    static const int first[] = {vbOK, vbOK, vbAbort, vbYes, vbYes, vbRetry};
    static const int second[] = {vbOK, vbCancel, vbRetry, vbNo, vbNo, vbCancel};
    static const int third[] = {vbOK, vbCancel, vbIgnore, vbCancel, vbNo, vbCancel};
    const int b = buttons() <= 5 ? buttons() : 0;
    if (style & vbDefaultButton3)
        return third[b];
    if (style & vbDefaultButton2)
        return second[b];
    return first[b];
}

int MsgBox(AppContext &app, const std::string &prompt, int style, const std::string &title)
{
    MessageBoxRequest request{prompt, title.empty() ? app.appTitle() : title, style};
    return app.runModal([&] { return app.messageBoxes().show(request); });
}

} // namespace ui
