#include "MMACMX.h"

#include <algorithm>

#include "platform/Components.h"
#include "platform/helper/WaveFormatText.h"
#include "runtime/RuntimeError.h"
#include "ui/AppContext.h"

namespace convert {

bool MMACMX::ChooseFormat(const std::optional<platform::WaveFormat> &current, const std::string &title)
{
    const auto &offered = m_app.components().writableWaveFormats;
    if (!offered)
        rt::raise(rt::ErrObjectVariableNotSet);
    ui::FileDialogRequest request;
    request.kind = ui::FileDialogRequest::Kind::WaveFormat;
    request.title = title.empty() ? Title : title;
    for (const platform::WaveFormat &f : offered())
        request.choices.push_back(platform::waveFormatText(f));
    if (current)
        request.fileName = platform::waveFormatText(*current);
    const auto chosen = m_app.runModal([&] { return m_app.dialogs().run(request); });
    if (!chosen)
        return false;
    const auto format = platform::parseWaveFormatText(*chosen);
    if (!format || std::find(request.choices.begin(), request.choices.end(), *chosen) == request.choices.end())
        return false;
    WaveFormat = format;
    return true;
}

} // namespace convert
