#pragma once

#include <memory>

#include "ControlView.h"

namespace ui {
class Control;
}

namespace uiqt {

class WindowView;

// Views of the option button, the spin buttons and the tab strip; nullptr for other controls.
std::unique_ptr<ControlView> makeChoiceView(ui::Control &control, WindowView &window);

} // namespace uiqt
