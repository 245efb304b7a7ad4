#pragma once

#include <memory>
#include <string>

#include "STRINGOPS.h"
#include "platform/Components.h"
#include "platform/Http.h"
#include "ui/Label.h"
#include "ui/ListBox.h"
#include "ui/Meter.h"
#include "ui/TextBox.h"
#include "ui/Timer.h"
#include "ui/Window.h"

namespace addons {

// The wait dialogue of the add-on catalogue: starts the download of plugins.dat into data.dat,
// fills Plugins from it, and hands over to Plugins when its bar is full. The bar runs by Timer3,
// not by the transfer.
class connect : public ui::Window {
public:
    static constexpr const char *formName = "connect";
    explicit connect(ui::AppContext &app);

    void Form_Load() override;
    void Form_Unload() override;

    // The checks on the catalogue's first row; part of the parser, reachable alone for tests.
    void firstRowTests();

    ui::Label Label2;
    ui::Label Label1;
    ui::Meter progressbar1;
    ui::TextBox Text1;
    ui::ListBox List1;
    ui::Timer Timer1;
    ui::Timer Timer2;
    ui::Timer Timer3;

    platform::Component<platform::HttpDownload> ickHTTP1;

private:
    void layOut();
    void ickHTTP1_Connect();
    void ickHTTP1_Status(int32_t code, const std::string &text);
    void ickHTTP1_EndTransfer();
    void catalogueParser();
    void Timer1_Timer();
    void Timer2_Timer();
    void Timer3_Timer();
    STRINGOPS &strings();

    // Set at load, read by nothing.
    int m_waitCount = 0;
    // Lines of the catalogue read so far, kept and never used.
    long m_lineCount = 0;
    // The add-on server's address, read at load.
    std::string m_server;
    std::unique_ptr<STRINGOPS> m_strings;
};

} // namespace addons
