#include "Catalogue.h"

#include "runtime/TextFile.h"

namespace addons {

CatalogueLine classifyCatalogueLine(const std::string &line, platform::StringOps &strings)
{
    CatalogueLine meaning;
    if (line.find(';') != std::string::npos) {
        meaning.isRow = true;
        return meaning;
    }
    // Substrings, not prefixes: "see info-x, URL" counts for both, and only the prefix found goes.
    if (line.find("URL") != std::string::npos)
        meaning.downloadAddress = strings.RemoveText(line, "URL-");
    if (line.find("info") != std::string::npos)
        meaning.infoAddress = strings.RemoveText(line, "info-");
    if (line.find("filesize") != std::string::npos)
        meaning.fileSize = strings.RemoveText(line, "filesize-");
    return meaning;
}

void readCatalogueLines(std::string_view logicPath, const std::function<void(const std::string &)> &eachLine)
{
    rt::TextFile file(logicPath, rt::TextFile::Mode::Input);
    while (!file.eof())
        eachLine(file.inputField());
    file.close();
}

} // namespace addons
