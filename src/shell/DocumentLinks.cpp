#include "DocumentLinks.h"

#include "ui/AppContext.h"
#include "ui/MessageBox.h"

namespace shell {

std::string installedDocumentAddress(const ui::AppContext &app, const std::string &fileName)
{
    static const char hex[] = "0123456789ABCDEF";
    const std::string path = app.appPath() + "/" + fileName;
    std::string address = "file://";
    for (unsigned char c : path) {
        const bool plain = (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || (c >= '0' && c <= '9') || c == '-' ||
                           c == '.' || c == '_' || c == '~' || c == '/';
        if (plain) {
            address += static_cast<char>(c);
        } else {
            address += '%';
            address += hex[c >> 4];
            address += hex[c & 15];
        }
    }
    return address;
}

void openAddressOrTell(ui::AppContext &app, const platform::Component<platform::Shell> &shell, const std::string &address)
{
    if (!shell || shell->openAddress(address) != 0)
        ui::MsgBox(app, "Could not open " + address, ui::vbExclamation, "Velmora Works - Notification");
}

} // namespace shell
