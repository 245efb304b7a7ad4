#include "shutdown.h"

#include "playback/Form6.h"
#include "shell/frmMain.h"
#include "ui/AppContext.h"

namespace services {

namespace {

// The unload order; a window that isn't loaded (or that this program hasn't got) is passed by.
constexpr const char *unloadOrder[] = {
    "Form6",   "Form5",   "Mainwriter", "Form1",   "Form2",   "Form6",   "CoverDesigner", "frmMain", "Form4",
    "batcher", "bannerx", "mp3towav",   "connect", "Plugins", "about",   "ConfigDlg",     "connect", "CopyDlg",
    "Form7",   "ISRCDlg", "MainForm",   "CopyDlg", "Form7",   "ISRCDlg", "MainForm",
};

} // namespace

void shutdown::Shutoff()
{
    if (m_running)
        return;
    m_running = true;
    struct Done {
        bool &flag;
        ~Done() { flag = false; }
    } done{m_running};

    if (auto *main = dynamic_cast<shell::frmMain *>(m_app.findLoaded(shell::frmMain::formName))) {
        if (main->isPlaying == -1) {
            main->MMWaveOutX1->Stop();
            main->MMWaveOutX1->Close();
        }
    }
    // Referring to the room makes it if it isn't there; it goes again at once.
    m_app.form<playback::Form6>().UnloadToolbar();
    // One of the two always applies: the call is made twice in all.
    if (m_app.listeningRoomShown == -1)
        m_app.form<playback::Form6>().UnloadToolbar();
    else if (m_app.listeningRoomShown == 0)
        m_app.form<playback::Form6>().UnloadToolbar();
    for (const char *name : unloadOrder) {
        if (ui::Window *w = m_app.findLoaded(name))
            w->Unload();
    }
}

} // namespace services
