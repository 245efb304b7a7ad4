#pragma once

#include <optional>
#include <string>
#include <vector>

#include <QDialog>

#include "ui/FileDialog.h"

class QComboBox;
class QPushButton;

namespace uiqt {

// The wave format chooser: a "Format:" list of tags and an "Attributes:" list of what that tag
// comes in. Each choice of the request reads "TAG, attributes"; the current one is preselected.
class QtWaveFormatDialog : public QDialog {
public:
    explicit QtWaveFormatDialog(const ui::FileDialogRequest &request, QWidget *parent = nullptr);

    // Shows it modal; the chosen text, or nullopt on Cancel.
    static std::optional<std::string> choose(const ui::FileDialogRequest &request);

    // The choice the two lists show now; "" when there is none.
    std::string chosen() const;
    QComboBox *formatList() const { return m_format; }
    QComboBox *attributesList() const { return m_attributes; }
    QPushButton *okButton() const { return m_ok; }

private:
    struct Choice {
        QString tag;
        QString attributes;
        std::string text;
    };
    void fillAttributes(const QString &tag, const std::string &preferred);

    std::vector<Choice> m_choices;
    QComboBox *m_format = nullptr;
    QComboBox *m_attributes = nullptr;
    QPushButton *m_ok = nullptr;
};

} // namespace uiqt
