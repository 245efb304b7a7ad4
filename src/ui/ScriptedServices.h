#pragma once

#include <deque>
#include <vector>

#include "FileDialog.h"
#include "MessageBox.h"

namespace ui {

// Message boxes answered from a queue; a box with no queued answer takes its default button.
// Every box shown is kept for the checks.
class ScriptedMessageBoxes : public MessageBoxService {
public:
    struct Shown {
        MessageBoxRequest request;
        int result;
    };
    int show(const MessageBoxRequest &request) override;
    void queueAnswer(int result) { m_answers.push_back(result); }
    std::deque<Shown> &shown() { return m_shown; }
    static constexpr size_t maxUnchecked = 10000;

private:
    std::deque<int> m_answers;
    std::deque<Shown> m_shown;
};

// File dialogs answered from a queue of paths or cancels; with nothing queued a dialog is cancelled.
class ScriptedDialogs : public DialogService {
public:
    std::optional<std::string> run(const FileDialogRequest &request) override;
    void queueResult(std::optional<std::string> result) { m_results.push_back(std::move(result)); }
    const std::vector<FileDialogRequest> &requests() const { return m_requests; }

private:
    std::deque<std::optional<std::string>> m_results;
    std::vector<FileDialogRequest> m_requests;
};

} // namespace ui
