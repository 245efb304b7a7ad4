#include "SessionFiles.h"

#include "runtime/ResumeNext.h"
#include "runtime/TextFile.h"
#include "ui/ListBox.h"

namespace layout {

void writeLastLocal(const std::string &programFolder, const std::string &folder)
{
    rt::TextFile file(programFolder + "/LocalJ/lastlocal.vel", rt::TextFile::Mode::Output);
    file.printLine("<LastLocal>" + folder + "</LastLocal>");
    file.close();
}

void writeListFile(const std::string &path, const ui::ListBox &list)
{
    // A failing statement is passed over and the next one runs.
    rt::ResumeNext step;
    rt::TextFile file;
    step([&] { file.open(path, rt::TextFile::Mode::Output); });
    step([&] { file.printNumberLine(list.ListCount()); });
    for (int i = 0; i <= list.ListCount(); ++i)
        step([&] { file.printLine(list.List(i)); });
    step([&] { file.close(); });
}

} // namespace layout
