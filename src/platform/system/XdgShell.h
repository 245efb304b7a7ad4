#pragma once

#include "platform/Shell.h"

namespace platform::system {

// Opens addresses through xdg-open, the desktop's own chooser of the program for a web page
// or a file. The address goes to it as one argument, never through a command shell.
class XdgShell : public Shell {
public:
    int openAddress(const std::string &address) override;
};

} // namespace platform::system
