#include "QtDialogs.h"

#include <QDir>
#include <QFileDialog>
#include <QStringList>

#include "QtSupport.h"
#include "QtWaveFormatDialog.h"

namespace uiqt {

using namespace ui;

namespace {

// cdlOFNOverwritePrompt: without it the save dialog takes an existing name without asking.
constexpr int OverwritePrompt = 2;

QString folderOf(const std::string &path)
{
    QString p = qs(path);
    p.replace(QLatin1Char('\\'), QLatin1Char('/'));
    return p;
}

} // namespace

QString qtNameFilters(const std::string &filter)
{
    const QStringList parts = qs(filter).split(QLatin1Char('|'));
    QStringList filters;
    for (qsizetype i = 0; i + 1 < parts.size(); i += 2) {
        QStringList patterns;
        for (const QString &pattern : parts[i + 1].split(QLatin1Char(';'), Qt::SkipEmptyParts)) {
            const QString trimmed = pattern.trimmed();
            for (const QString &variant : {trimmed, trimmed.toLower(), trimmed.toUpper()}) {
                if (!patterns.contains(variant))
                    patterns << variant;
            }
        }
        QString description = parts[i].trimmed();
        // Qt reads the patterns from the parentheses; a description may have its own.
        filters << description + QLatin1String(" (") + patterns.join(QLatin1Char(' ')) + QLatin1Char(')');
    }
    return filters.join(QLatin1String(";;"));
}

std::optional<std::string> QtDialogs::run(const FileDialogRequest &request)
{
    if (request.kind == FileDialogRequest::Kind::WaveFormat)
        return QtWaveFormatDialog::choose(request);
    QFileDialog dialog(nullptr, qs(request.title));
    QString start = folderOf(request.initialFolder);
    if (request.kind == FileDialogRequest::Kind::Folder) {
        dialog.setFileMode(QFileDialog::Directory);
        dialog.setOption(QFileDialog::ShowDirsOnly);
        dialog.setDirectory(start);
        // The second prompt stands where the dialog names the folder being looked in.
        if (!request.secondPrompt.empty()) {
            dialog.setOption(QFileDialog::DontUseNativeDialog);
            dialog.setLabelText(QFileDialog::LookIn, qs(request.secondPrompt));
        }
    } else {
        // The descriptions alone are shown ("MP3 Files", not "MP3 Files (*.mp3)").
        dialog.setOption(QFileDialog::HideNameFilterDetails);
        const QString filters = qtNameFilters(request.filter);
        if (!filters.isEmpty())
            dialog.setNameFilters(filters.split(QLatin1String(";;")));
        if (request.kind == FileDialogRequest::Kind::Save) {
            dialog.setAcceptMode(QFileDialog::AcceptSave);
            dialog.setFileMode(QFileDialog::AnyFile);
            if (!(request.flags & OverwritePrompt))
                dialog.setOption(QFileDialog::DontConfirmOverwrite);
        } else {
            dialog.setAcceptMode(QFileDialog::AcceptOpen);
            dialog.setFileMode(QFileDialog::ExistingFile);
        }
        if (!start.isEmpty())
            dialog.setDirectory(start);
        if (!request.fileName.empty())
            dialog.selectFile(folderOf(request.fileName));
    }
    keepAboveActiveWindow(&dialog);
    if (dialog.exec() != QDialog::Accepted || dialog.selectedFiles().isEmpty())
        return std::nullopt;
    return ss(dialog.selectedFiles().constFirst());
}

} // namespace uiqt
