#include "QtWaveFormatDialog.h"

#include <algorithm>

#include <QComboBox>
#include <QDialogButtonBox>
#include <QGridLayout>
#include <QLabel>
#include <QPushButton>
#include <QSignalBlocker>
#include <QVBoxLayout>

#include "QtSupport.h"

namespace uiqt {

namespace {

// The tag ends at the first comma; the tag names themselves have none.
std::pair<QString, QString> splitChoice(const std::string &text)
{
    const QString t = qs(text);
    const qsizetype comma = t.indexOf(QLatin1String(", "));
    if (comma < 0)
        return {t, QString()};
    return {t.left(comma), t.mid(comma + 2)};
}

} // namespace

QtWaveFormatDialog::QtWaveFormatDialog(const ui::FileDialogRequest &request, QWidget *parent) : QDialog(parent)
{
    setWindowTitle(request.title.empty() ? QStringLiteral("Select...") : qs(request.title));
    setModal(true);

    for (const std::string &text : request.choices) {
        auto [tag, attributes] = splitChoice(text);
        m_choices.push_back(Choice{tag, attributes, text});
    }

    m_format = new QComboBox(this);
    m_attributes = new QComboBox(this);
    m_format->setObjectName(QStringLiteral("format"));
    m_attributes->setObjectName(QStringLiteral("attributes"));
    // Long enough for "48000 Hz, 32 bit, stereo" without cutting it.
    m_attributes->setSizeAdjustPolicy(QComboBox::AdjustToContents);
    m_attributes->setMinimumContentsLength(24);
    m_format->setMinimumContentsLength(12);
    for (const Choice &c : m_choices) {
        if (m_format->findText(c.tag, Qt::MatchExactly) < 0)
            m_format->addItem(c.tag);
    }

    auto *formatLabel = new QLabel(QStringLiteral("&Format:"), this);
    auto *attributesLabel = new QLabel(QStringLiteral("&Attributes:"), this);
    formatLabel->setBuddy(m_format);
    attributesLabel->setBuddy(m_attributes);

    auto *grid = new QGridLayout;
    grid->addWidget(formatLabel, 0, 0);
    grid->addWidget(m_format, 0, 1);
    grid->addWidget(attributesLabel, 1, 0);
    grid->addWidget(m_attributes, 1, 1);
    grid->setColumnStretch(1, 1);

    auto *buttons = new QDialogButtonBox(QDialogButtonBox::Ok | QDialogButtonBox::Cancel, this);
    m_ok = buttons->button(QDialogButtonBox::Ok);
    connect(buttons, &QDialogButtonBox::accepted, this, &QDialog::accept);
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);

    auto *layout = new QVBoxLayout(this);
    layout->addLayout(grid);
    layout->addSpacing(6);
    layout->addWidget(buttons);
    layout->setSizeConstraint(QLayout::SetFixedSize);

    // The current choice if it is offered, else the first one.
    std::string current = request.fileName;
    if (std::none_of(m_choices.begin(), m_choices.end(), [&](const Choice &c) { return c.text == current; }))
        current = m_choices.empty() ? std::string() : m_choices.front().text;
    if (!current.empty()) {
        const QString tag = splitChoice(current).first;
        const QSignalBlocker block(m_format);
        m_format->setCurrentIndex(m_format->findText(tag, Qt::MatchExactly));
        fillAttributes(tag, current);
    }
    // A tag chosen anew keeps the attributes if that tag has them too.
    connect(m_format, &QComboBox::currentTextChanged, this, [this](const QString &tag) {
        const std::string before = ss(m_attributes->currentText());
        std::string preferred;
        for (const Choice &c : m_choices) {
            if (c.tag == tag && ss(c.attributes) == before)
                preferred = c.text;
        }
        fillAttributes(tag, preferred);
    });
    m_ok->setEnabled(!m_choices.empty());
}

void QtWaveFormatDialog::fillAttributes(const QString &tag, const std::string &preferred)
{
    m_attributes->clear();
    int select = 0;
    for (const Choice &c : m_choices) {
        if (c.tag != tag)
            continue;
        if (c.text == preferred)
            select = m_attributes->count();
        m_attributes->addItem(c.attributes);
    }
    m_attributes->setCurrentIndex(m_attributes->count() > 0 ? select : -1);
}

std::string QtWaveFormatDialog::chosen() const
{
    const QString tag = m_format->currentText();
    const QString attributes = m_attributes->currentText();
    for (const Choice &c : m_choices) {
        if (c.tag == tag && c.attributes == attributes)
            return c.text;
    }
    return {};
}

std::optional<std::string> QtWaveFormatDialog::choose(const ui::FileDialogRequest &request)
{
    QtWaveFormatDialog dialog(request);
    keepAboveActiveWindow(&dialog);
    if (dialog.exec() != QDialog::Accepted)
        return std::nullopt;
    std::string text = dialog.chosen();
    if (text.empty())
        return std::nullopt;
    return text;
}

} // namespace uiqt
