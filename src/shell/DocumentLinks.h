#pragma once

#include <string>

#include "platform/Components.h"

namespace ui {
class AppContext;
}

namespace shell {

// The address of a document in the program's folder, as the desktop opens it: a file URL
// with every byte outside the plain ones percent-encoded.
std::string installedDocumentAddress(const ui::AppContext &app, const std::string &fileName);

// Hands an address to the desktop; when nothing takes it (or there is no desktop shell at
// all), the user is told which address failed.
void openAddressOrTell(ui::AppContext &app, const platform::Component<platform::Shell> &shell, const std::string &address);

} // namespace shell
