#include "imagx.h"

#include <cstdint>

#include "runtime/Conversions.h"
#include "runtime/Format.h"
#include "ui/AppContext.h"
#include "ui/ImageBox.h"
#include "ui/MessageBox.h"
#include "ui/Window.h"

namespace cover::imagx {

std::string errorText(int code)
{
    switch (code) {
    case 0: return {};
    case -1: return "Cannot find the image file";
    case -2:
        return "The image file type is unknown or unable to read the image file "
               "type";
    case -3: return "Cannot lock memory";
    case -4: return "Cannot dither the image";
    case -5: return "Cannot quantize the image palette";
    case -6: return "Error reading the file";
    case -7: return "Cannot allocate memory for the image";
    case -8: return "Image load or decompression was canceled";
    case -9: return "Cannot create file";
    case -10: return "Error writing file";
    case -11: return "Invalid image format";
    case -12: return "Invalid option";
    case -13: return "Invalid palette file";
    case -14: return "Invalid file extension";
    case -15: return "Cannot paste from clipboard";
    case -16: return "Cannot copy to clipboard";
    case -17: return "Image Format not supported";
    // These five really show the box's title as their message.
    case -18:
    case -36:
    case -38:
    case -100:
    case -101: return "Velmora Works-Error Notification";
    case -1000: return "No textures found.";
    default:
        if (code <= -50 && code >= -61)
            return "TWAIN Error.";
        return "Unknown Error";
    }
}

void GetError(ui::AppContext &app, int code)
{
    if (code == 0)
        return;
    ui::MsgBox(app, errorText(code), ui::vbExclamation, "Velmora Works-Error Notification");
}

std::string captionLine(const std::string &fileName, long width, long height, long bpp, double zoom)
{
    std::string zoomText;
    if (zoom != 1.0)
        zoomText = " " + rt::Format(zoom * 100, "##00") + "%";
    return fileName + " (" + rt::numberText(width) + " X " + rt::numberText(height) + " X " + rt::numberText(bpp)
        + "BPP " + zoomText + ")";
}

void UpdateProps(ui::Window &window, ui::ImageBox &imageControl)
{
    // The code is read as the control's 16-bit value.
    int code = static_cast<int16_t>(imageControl->ImagError());
    if (code == -19 || code == -35)
        code = 0;
    if (code != 0) {
        GetError(window.app(), code);
        imageControl->Undo();
        imageControl->Refresh();
    }
    const double zoom = imageControl->IPZoomF();
    window.setCaption(captionLine(
        imageControl->FileName(), imageControl->IWidth(), imageControl->IHeight(), imageControl->IBPP(), zoom));
}

} // namespace cover::imagx
