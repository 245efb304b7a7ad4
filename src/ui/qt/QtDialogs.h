#pragma once

#include <QString>

#include "ui/FileDialog.h"

namespace uiqt {

// Open, save and folder pickers on QFileDialog; the wave format chooser on QtWaveFormatDialog.
class QtDialogs : public ui::DialogService {
public:
    std::optional<std::string> run(const ui::FileDialogRequest &request) override;
};

// "MP3 Files|*.mp3;*.MP3|All|*.*" as Qt writes filters: "MP3 Files (*.mp3 *.MP3);;All (*.*)".
// Each pattern also matches in the other case: "*.mp3" finds "SONG.MP3" too.
QString qtNameFilters(const std::string &filter);

} // namespace uiqt
