#pragma once

#include <string>

namespace ui {

class AppContext;

// Style bits of a message box, as the platform numbers them.
enum MsgBoxStyle : int {
    vbOKOnly = 0,
    vbOKCancel = 1,
    vbAbortRetryIgnore = 2,
    vbYesNoCancel = 3,
    vbYesNo = 4,
    vbRetryCancel = 5,
    vbCritical = 16,
    vbQuestion = 32,
    vbExclamation = 48,
    vbInformation = 64,
    vbDefaultButton2 = 256,
    vbDefaultButton3 = 512,
};

// The button a box was closed with.
enum MsgBoxResult : int { vbOK = 1, vbCancel = 2, vbAbort = 3, vbRetry = 4, vbIgnore = 5, vbYes = 6, vbNo = 7 };

struct MessageBoxRequest {
    std::string prompt;
    std::string title;
    int style = vbOKOnly;

    int buttons() const { return style & 7; }
    int icon() const { return style & 0x70; }
    // The button taken when the box is closed without a choice: the first, unless the style names another.
    int defaultResult() const;
};

// Shows modal message boxes: the Qt dialogs in the program, a script in scenarios.
class MessageBoxService {
public:
    virtual ~MessageBoxService() = default;
    virtual int show(const MessageBoxRequest &request) = 0;
};

// MsgBox of the logic: a box without a title shows the application's name.
int MsgBox(AppContext &app, const std::string &prompt, int style = vbOKOnly, const std::string &title = {});

} // namespace ui
