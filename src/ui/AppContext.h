#pragma once

#include <typeindex>
#include <typeinfo>

#include <functional>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "FileDialog.h"
#include "MessageBox.h"
#include "Window.h"
#include "runtime/EventLoop.h"
#include "runtime/Integer.h"

namespace platform {
struct Components;
}

namespace ui {

// The one context of a running program: its loop, its services, its closed components and
// the registry of its windows. A test makes a fresh one, so nothing leaks between scenarios.
class AppContext {
public:
    AppContext(rt::EventLoop &loop, MessageBoxService &boxes, DialogService &dialogs, platform::Components &components,
               std::string programFolder);
    ~AppContext();

    rt::EventLoop &loop() const { return m_loop; }
    MessageBoxService &messageBoxes() const { return m_boxes; }
    DialogService &dialogs() const { return m_dialogs; }
    platform::Components &components() const { return m_components; }
    // App.Path: the program's folder, without a trailing separator.
    const std::string &appPath() const { return m_programFolder; }
    // The application's name, the title of a box that has none of its own.
    std::string appTitle() const { return "MP3 Brasswick"; }

    // A window by its type: the loaded one, or a new one whose load step runs now.
    template <class W>
    W &form()
    {
        if (Window *w = findLoaded(W::formName))
            return static_cast<W &>(*w);
        return static_cast<W &>(create(W::formName, [this] { return std::make_unique<W>(*this); }));
    }
    // A window by its name, loaded on reference; a name the program has no window for is error 424.
    Window &formByName(std::string_view name);
    // The window if it is loaded now; never creates one.
    Window *findLoaded(std::string_view name) const;
    // Windows that exist, in the order they were made.
    std::vector<Window *> windows() const;

    using Factory = std::function<std::unique_ptr<Window>(AppContext &)>;
    void registerForm(const std::string &name, Factory factory) { m_factories[name] = std::move(factory); }
    bool hasForm(std::string_view name) const { return m_factories.count(std::string(name)) > 0; }

    // Unload: the unload step runs, the window leaves the registry and is destroyed once the
    // event in hand is over. The program ends when its last window is gone.
    void unload(Window &w);

    // A modal wait (message box, modal window): windows unloaded meanwhile stay alive until it ends.
    template <class F>
    auto runModal(F &&f)
    {
        ++m_modalDepth;
        struct Leave {
            int &depth;
            ~Leave() { --depth; }
        } leave{m_modalDepth};
        return std::forward<F>(f)();
    }

    // Called after every user event and timer tick: windows unloaded by it are destroyed.
    void afterEvent();

    // The End statement, or a run-time error nobody trapped: every window goes at once.
    void end(int errorNumber = 0);
    bool ended() const { return m_ended; }
    // The run-time error that ended the program, 0 for none.
    int endError() const { return m_endError; }

    // The screen's size in twips, as the view reports it.
    std::pair<int, int> screenSizeTwips() const { return m_screen; }
    void setScreenSizeTwips(int width, int height) { m_screen = {width, height}; }

    // For the views: a window was made or is about to go.
    std::function<void(Window &)> windowCreated;
    std::function<void(Window &)> windowDestroying;
    std::function<void(int errorNumber)> programEnded;

    // Flag shared by the windows: -1 while the listening room is to be shown beside the main window.
    rt::Integer listeningRoomShown = rt::False;

    // The globals of a code module, one set per run of the program, made on first use.
    template <class Module>
    Module &module()
    {
        std::shared_ptr<void> &m = m_modules[std::type_index(typeid(Module))];
        if (!m)
            m = std::make_shared<Module>();
        return *static_cast<Module *>(m.get());
    }
    // Where the listening room stands, kept in memory only while the program runs.
    rt::Integer listeningRoomLeft = 0;
    rt::Integer listeningRoomTop = 0;

private:
    Window &create(const std::string &name, const std::function<std::unique_ptr<Window>()> &make);
    void reportFatal(const rt::RuntimeError &e);
    void destroy(std::unique_ptr<Window> w);

    rt::EventLoop &m_loop;
    MessageBoxService &m_boxes;
    DialogService &m_dialogs;
    platform::Components &m_components;
    std::string m_programFolder;
    std::vector<std::unique_ptr<Window>> m_windows;
    std::vector<std::unique_ptr<Window>> m_unloaded;
    std::map<std::string, Factory, std::less<>> m_factories;
    std::map<std::type_index, std::shared_ptr<void>> m_modules;
    int m_modalDepth = 0;
    bool m_ended = false;
    int m_endError = 0;
    std::pair<int, int> m_screen{1024 * 15, 768 * 15};
};

} // namespace ui
