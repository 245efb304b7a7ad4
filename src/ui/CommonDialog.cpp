#include "CommonDialog.h"

#include "AppContext.h"
#include "runtime/RuntimeError.h"

namespace ui {

bool CommonDialog::show(FileDialogRequest::Kind kind)
{
    FileDialogRequest request;
    request.kind = kind;
    request.title = DialogTitle;
    request.filter = Filter;
    request.fileName = FileName;
    request.flags = Flags;
    const auto chosen = m_app.runModal([&] { return m_app.dialogs().run(request); });
    if (!chosen) {
        FileName.clear();
        if (CancelError)
            rt::raise(rt::ErrCancel);
        return false;
    }
    FileName = *chosen;
    const size_t nameStart = FileName.find_last_of("/\\") == std::string::npos ? 0 : FileName.find_last_of("/\\") + 1;
    const bool hasExtension = FileName.find('.', nameStart) != std::string::npos;
    if (!DefaultExt.empty() && nameStart < FileName.size() && !hasExtension)
        FileName += "." + DefaultExt;
    return true;
}

} // namespace ui
