#include "QtSupport.h"

#include <QApplication>
#include <QDir>
#include <QWidget>
#include <QWindow>

namespace uiqt {

QString localPath(const std::string &path, const std::string &programFolder)
{
    if (path.empty())
        return {};
    QString p = qs(path);
    p.replace(QLatin1Char('\\'), QLatin1Char('/'));
    if (QDir::isRelativePath(p) && !programFolder.empty())
        p = qs(programFolder).replace(QLatin1Char('\\'), QLatin1Char('/')) + QLatin1Char('/') + p;
    return QDir::cleanPath(p);
}

QString withoutMnemonic(const std::string &caption)
{
    const QString in = qs(caption);
    QString out;
    out.reserve(in.size());
    for (qsizetype i = 0; i < in.size(); ++i) {
        if (in[i] == QLatin1Char('&')) {
            if (i + 1 < in.size() && in[i + 1] == QLatin1Char('&')) {
                out += QLatin1Char('&');
                ++i;
            }
            continue;
        }
        out += in[i];
    }
    return out;
}

QString toEditorText(const std::string &text)
{
    QString t = qs(text);
    t.replace(QLatin1String("\r\n"), QLatin1String("\n"));
    return t;
}

std::string fromEditorText(const QString &text)
{
    QString t = text;
    t.replace(QLatin1String("\n"), QLatin1String("\r\n"));
    return ss(t);
}

void keepAboveActiveWindow(QWidget *dialog)
{
    QWidget *active = QApplication::activeWindow();
    if (!active || active == dialog)
        return;
    dialog->winId();
    active->winId();
    if (dialog->windowHandle() && active->windowHandle())
        dialog->windowHandle()->setTransientParent(active->windowHandle());
}

} // namespace uiqt
