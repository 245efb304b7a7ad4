#pragma once

#include "ui/MessageBox.h"

namespace uiqt {

// Message boxes as Qt's modal QMessageBox; its own nested loop keeps timers ticking.
class QtMessageBoxes : public ui::MessageBoxService {
public:
    int show(const ui::MessageBoxRequest &request) override;
};

} // namespace uiqt
