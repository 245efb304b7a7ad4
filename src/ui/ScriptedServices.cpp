#include "ScriptedServices.h"

namespace ui {

int ScriptedMessageBoxes::show(const MessageBoxRequest &request)
{
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
    return result;
}

} // namespace ui
