#include "QtMessageBoxes.h"

#include <vector>

#include <QMessageBox>
#include <QPushButton>

#include "QtSupport.h"

namespace uiqt {

using namespace ui;

namespace {

struct ButtonCode {
    QMessageBox::StandardButton button;
    int result;
};

std::vector<ButtonCode> buttonsOf(int buttons)
{
    switch (buttons) {
    case vbOKCancel: return {{QMessageBox::Ok, vbOK}, {QMessageBox::Cancel, vbCancel}};
    case vbAbortRetryIgnore:
        return {{QMessageBox::Abort, vbAbort}, {QMessageBox::Retry, vbRetry}, {QMessageBox::Ignore, vbIgnore}};
    case vbYesNoCancel: return {{QMessageBox::Yes, vbYes}, {QMessageBox::No, vbNo}, {QMessageBox::Cancel, vbCancel}};
    case vbYesNo: return {{QMessageBox::Yes, vbYes}, {QMessageBox::No, vbNo}};
    case vbRetryCancel: return {{QMessageBox::Retry, vbRetry}, {QMessageBox::Cancel, vbCancel}};
    default: return {{QMessageBox::Ok, vbOK}};
    }
}

QMessageBox::Icon iconOf(int icon)
{
    switch (icon) {
    case vbCritical: return QMessageBox::Critical;
    case vbQuestion: return QMessageBox::Question;
    case vbExclamation: return QMessageBox::Warning;
    case vbInformation: return QMessageBox::Information;
    default: return QMessageBox::NoIcon;
    }
}

} // namespace

int QtMessageBoxes::show(const MessageBoxRequest &request)
{
    QMessageBox box;
    box.setWindowTitle(qs(request.title));
    box.setTextFormat(Qt::PlainText);
    box.setText(qs(request.prompt));
    box.setIcon(iconOf(request.icon()));

    const auto buttons = buttonsOf(request.buttons());
    const int fallback = request.defaultResult();
    for (const auto &b : buttons) {
        QPushButton *button = box.addButton(b.button);
        if (b.result == fallback)
            box.setDefaultButton(button);
    }
    keepAboveActiveWindow(&box);
    box.exec();

    const auto chosen = box.standardButton(box.clickedButton());
    for (const auto &b : buttons) {
        if (b.button == chosen)
            return b.result;
    }
    // Closed without a choice.
    return fallback;
}

} // namespace uiqt
