#pragma once

#include <memory>

#include "platform/Components.h"
#include "runtime/VirtualEventLoop.h"
#include "ui/AppContext.h"
#include "ui/ScriptedServices.h"
#include "ui/Window.h"

// A fresh context on virtual time with scripted boxes and dialogs, and no closed components.
struct KitFixture {
    rt::VirtualEventLoop loop;
    ui::ScriptedMessageBoxes boxes;
    ui::ScriptedDialogs dialogs;
    platform::Components components;
    ui::AppContext app{loop, boxes, dialogs, components, "/opt/prog"};
};

// A window with nothing on it, for controls under test.
class TestWindow : public ui::Window {
public:
    static constexpr const char *formName = "TestWindow";
    explicit TestWindow(ui::AppContext &app) : Window(app, formName) {}
};
