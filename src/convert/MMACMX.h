#pragma once

#include <optional>
#include <string>

#include "platform/MediaChain.h"

namespace ui {
class AppContext;
}

namespace convert {

// The wave format chooser (`MMACMX`): shows the formats this machine can write, tag first and
// then its attributes, and keeps the one chosen.
class MMACMX {
public:
    explicit MMACMX(ui::AppContext &app) : m_app(app) {}

    // The dialog's title when ChooseFormat is given none.
    std::string Title;
    // The format last chosen; nothing before the first OK.
    std::optional<platform::WaveFormat> WaveFormat;

    // Shows the dialog with `current` preselected; true on OK, with the choice in WaveFormat.
    // Without converting components on the machine there is nothing to choose from: error 91.
    bool ChooseFormat(const std::optional<platform::WaveFormat> &current, const std::string &title);

private:
    ui::AppContext &m_app;
};

} // namespace convert
