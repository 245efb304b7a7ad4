#pragma once

#include <string>

namespace ui {
class AppContext;
class ImageBox;
class Window;
} // namespace ui

// The helper module of the cover designer: the error check after an image
// command and the caption line that describes the picture.
namespace cover::imagx {

// The message GetError shows for a code ("" for 0, which shows none).
std::string errorText(int code);

// A box with the code's message; none for 0.
void GetError(ui::AppContext &app, int code);

// Reports the control's last error (and takes its change back), then puts the
// picture's name, size, depth and zoom into the window's caption.
void UpdateProps(ui::Window &window, ui::ImageBox &imageControl);

// The caption line UpdateProps builds.
std::string captionLine(const std::string &fileName, long width, long height, long bpp, double zoom);

} // namespace cover::imagx
