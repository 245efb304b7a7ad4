#include "ScriptedServices.h"

#include <algorithm>
#include <stdexcept>
#include <string>

namespace ui {

int ScriptedMessageBoxes::show(const MessageBoxRequest &request)
{
    // A box that comes back endlessly (a loop waiting for a disc that never comes) would hang
    // the run: the scripted user gives up.
    if (m_shown.size() >= maxUnchecked)
        throw std::runtime_error("the program showed " + std::to_string(m_shown.size()) +
                                 " message boxes that nobody checked; the last: \"" + request.prompt + "\"");
    int result = request.defaultResult();
    if (!m_answers.empty()) {
        result = m_answers.front();
        m_answers.pop_front();
    }
    m_shown.push_back({request, result});
    return result;
}

std::optional<std::string> ScriptedDialogs::run(const FileDialogRequest &request)
{
    m_requests.push_back(request);
    if (m_results.empty())
        return std::nullopt;
    auto result = std::move(m_results.front());
    m_results.pop_front();
    // The format chooser offers only what the machine can write: a script can't pick past it.
    if (result && request.kind == FileDialogRequest::Kind::WaveFormat &&
        std::find(request.choices.begin(), request.choices.end(), *result) == request.choices.end())
        throw std::runtime_error("the format dialog offers no \"" + *result + "\"");
    return result;
}

} // namespace ui
