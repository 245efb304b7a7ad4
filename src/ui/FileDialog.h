#pragma once

#include <optional>
#include <string>
#include <vector>

namespace ui {

// One open, save or folder dialog (CommonDialog / BrowseDialog), or the wave format chooser.
struct FileDialogRequest {
    enum class Kind { Open, Save, Folder, WaveFormat };
    Kind kind = Kind::Open;
    std::string title;
    // "MP3 PlayLists|*.M3U": pairs of description and pattern separated by "|".
    std::string filter;
    std::string fileName;
    // A folder dialog's second line of text under its title.
    std::string secondPrompt;
    std::string initialFolder;
    int flags = 0;
    // The wave format chooser: the formats offered, each named as "PCM, 22050 Hz, 16 bit, mono"
    // (tag first, then its attributes); `fileName` holds the current one, if any. The result is
    // one of the choices.
    std::vector<std::string> choices;
};

// Runs file dialogs: Qt's pickers in the program, a script in scenarios.
class DialogService {
public:
    virtual ~DialogService() = default;
    // The chosen path, or nullopt when the user cancelled.
    virtual std::optional<std::string> run(const FileDialogRequest &request) = 0;
};

} // namespace ui
