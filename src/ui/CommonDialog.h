#pragma once

#include <string>

#include "FileDialog.h"

namespace ui {

class AppContext;

// The common open and save dialog of a window: set its properties, then show it. With
// `CancelError` set, a cancel raises error 32755; without it, a cancel leaves `FileName` empty.
class CommonDialog {
public:
    explicit CommonDialog(AppContext &app) : m_app(app) {}

    std::string DialogTitle;
    // "Wave Files (*.wav)|*.wav": pairs of description and pattern separated by "|".
    std::string Filter;
    // Added to a chosen name that has no extension, as the platform's dialog does.
    std::string DefaultExt;
    std::string FileName;
    int Flags = 0;
    bool CancelError = false;

    // True when a file was chosen.
    bool ShowOpen() { return show(FileDialogRequest::Kind::Open); }
    bool ShowSave() { return show(FileDialogRequest::Kind::Save); }

private:
    bool show(FileDialogRequest::Kind kind);

    AppContext &m_app;
};

} // namespace ui
