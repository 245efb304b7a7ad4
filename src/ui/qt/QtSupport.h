#pragma once

#include <cmath>
#include <string>

#include <QString>

class QWidget;

namespace uiqt {

// The kit keeps text in UTF-8.
inline QString qs(const std::string &text)
{
    return QString::fromStdString(text);
}

inline std::string ss(const QString &text)
{
    return text.toStdString();
}

// The kit measures in twips, 15 to a pixel.
inline int toPixels(int twips)
{
    return static_cast<int>(std::lround(twips / 15.0));
}

inline int toTwips(int pixels)
{
    return pixels * 15;
}

// A path as the logic builds it ("\" separators, maybe relative to the program's folder)
// turned into one the file system takes.
QString localPath(const std::string &path, const std::string &programFolder);

// A caption whose "&" marks an access key, shown where no access key applies: "&&" stays
// as one "&", a single "&" goes.
QString withoutMnemonic(const std::string &caption);

// CR LF line ends of the logic's texts, as an editor shows them, and back.
QString toEditorText(const std::string &text);
std::string fromEditorText(const QString &text);

// Keeps a modal box above the window in front without making it that window's child: a
// window unloaded by a timer while the box is open may then go without taking the box along.
void keepAboveActiveWindow(QWidget *dialog);

} // namespace uiqt
