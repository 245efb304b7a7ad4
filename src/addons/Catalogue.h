#pragma once

#include <functional>
#include <optional>
#include <string>
#include <string_view>

#include "platform/Http.h"

namespace addons {

// What one line of the add-on catalogue means. A line holding ";" is an add-on row and nothing
// else; any other line is tested for each directive in turn, and every one that matches acts.
struct CatalogueLine {
    bool isRow = false;
    std::optional<std::string> downloadAddress; // "URL" found: the line minus "URL-"
    std::optional<std::string> infoAddress;     // "info" found: the line minus "info-"
    std::optional<std::string> fileSize;        // "filesize" found: the line minus "filesize-"
};

CatalogueLine classifyCatalogueLine(const std::string &line, platform::StringOps &strings);

// Reads the catalogue file as the runtime's comma-and-line-end fields (Input #), handing each
// field to `eachLine` until the end of the file. A missing or unreadable file is the runtime's
// error (53 and its kin), raised before the first line.
void readCatalogueLines(std::string_view logicPath, const std::function<void(const std::string &)> &eachLine);

} // namespace addons
