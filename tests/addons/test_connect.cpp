// The wait dialogue's flow on the fake download: the first-row tests (reachable only through a
// first row that a catalogue can't give), a missing HTTP component, and the cut-off at unload.
#include <gtest/gtest.h>

#include "addons/AddonWindows.h"
#include "addons/Plugins.h"
#include "addons/connect.h"
#include "platform/fake/FakeComponents.h"
#include "runtime/VirtualEventLoop.h"
#include "ui/AppContext.h"
#include "ui/ScriptedServices.h"

namespace {

struct ConnectTest : ::testing::Test {
    rt::VirtualEventLoop loop;
    ui::ScriptedMessageBoxes boxes;
    ui::ScriptedDialogs dialogs;
    std::shared_ptr<platform::fake::FakeWorld> world = [] {
        auto w = std::make_shared<platform::fake::FakeWorld>();
        return w;
    }();
    platform::Components components = platform::fake::makeFakeComponents(world);
    std::unique_ptr<ui::AppContext> app;

    void SetUp() override
    {
        world->loop = &loop;
        app = std::make_unique<ui::AppContext>(loop, boxes, dialogs, components, "/nonexistent/prog");
        addons::registerAddonWindows(*app);
    }
    void wait(int ms)
    {
        loop.wait(ms);
        app->afterEvent();
    }
};

TEST_F(ConnectTest, UpdateNeededInTheFirstRowTellsTheUserAndCloses)
{
    auto &c = app->form<addons::connect>();
    c.List1.AddItem("Update Needed");
    c.firstRowTests();
    ASSERT_EQ(boxes.shown().size(), 1u);
    EXPECT_EQ(boxes.shown()[0].request.prompt,
              "You need to update your version of MP3 Sleevecraft- goto https://addons.velmora-works.com/updates/");
    EXPECT_EQ(boxes.shown()[0].request.title, "Velmora Works Notification");
    EXPECT_EQ(boxes.shown()[0].request.icon(), ui::vbCritical);
    app->afterEvent();
    EXPECT_EQ(app->findLoaded("connect"), nullptr);
}

TEST_F(ConnectTest, TheUpdateAddressFollowsTheServerTheSettingsName)
{
    world->registry->keys["Software\\Velmora Works\\MP3 Data"]["AddonServer"] = "http://127.0.0.1:8080//";
    auto &c = app->form<addons::connect>();
    EXPECT_EQ(world->properties["ickHTTP1.URL"], "http://127.0.0.1:8080/plugins.dat");
    c.List1.AddItem("Update Needed");
    c.firstRowTests();
    ASSERT_EQ(boxes.shown().size(), 1u);
    EXPECT_EQ(boxes.shown()[0].request.prompt, "You need to update your version of MP3 Sleevecraft- goto http://127.0.0.1:8080/updates/");
}

TEST_F(ConnectTest, ConnectionOkGoesOnThroughTimer1)
{
    world->http.silent = true;
    auto &c = app->form<addons::connect>();
    c.List1.AddItem("Connection OK");
    ASSERT_EQ(c.List1.List(0), "Connection OK");
    c.firstRowTests();
    EXPECT_TRUE(c.Timer1.Enabled());
    EXPECT_TRUE(boxes.shown().empty());
    wait(2000);
    EXPECT_EQ(c.Label1.Caption(), "Setting up data servers");
    EXPECT_FALSE(c.Timer1.Enabled());
    EXPECT_TRUE(c.Timer2.Enabled());
    wait(2000);
    EXPECT_EQ(app->findLoaded("connect"), nullptr);
    ASSERT_NE(app->findLoaded("Plugins"), nullptr);
    EXPECT_TRUE(app->findLoaded("Plugins")->Visible());
}

TEST_F(ConnectTest, WithoutAnHttpComponentTheBarStillHandsOver)
{
    components.httpDownload = nullptr;
    auto &c = app->form<addons::connect>();
    EXPECT_EQ(c.Label1.Caption(), "Connecting...");
    wait(1000);
    EXPECT_EQ(c.progressbar1.Value(), 100);
    wait(2010);
    EXPECT_EQ(app->findLoaded("connect"), nullptr);
    auto *p = dynamic_cast<addons::Plugins *>(app->findLoaded("Plugins"));
    ASSERT_NE(p, nullptr);
    EXPECT_EQ(p->mainlist.ListCount(), 0);
    EXPECT_FALSE(p->ctButton3.Visible());
    EXPECT_FALSE(p->ctButton1.Visible());
    EXPECT_TRUE(boxes.shown().empty());
    EXPECT_FALSE(app->ended());
}

TEST_F(ConnectTest, UnloadingCutsTheTransferOff)
{
    world->http.transferMs = 10000;
    app->form<addons::connect>();
    EXPECT_EQ(world->http.started, 1);
    wait(3010);
    EXPECT_EQ(app->findLoaded("connect"), nullptr);
    EXPECT_EQ(world->http.cancelled, 1);
    wait(10000);
    EXPECT_FALSE(app->ended());
}

TEST(PluginsAddress, OnlyWebAddressesLeave)
{
    EXPECT_TRUE(addons::isWebAddress("http://a"));
    EXPECT_TRUE(addons::isWebAddress("HTTPS://a b"));
    EXPECT_FALSE(addons::isWebAddress("http://"));
    EXPECT_FALSE(addons::isWebAddress(" http://a"));
    EXPECT_FALSE(addons::isWebAddress("file:///etc/passwd"));
    EXPECT_FALSE(addons::isWebAddress("httpx://a"));
    EXPECT_FALSE(addons::isWebAddress("-http://a"));
    EXPECT_FALSE(addons::isWebAddress(""));
}

TEST_F(ConnectTest, WithoutAShellOpeningIsError91)
{
    components.shell = nullptr;
    auto &p = app->form<addons::Plugins>();
    try {
        p.OpenUrl1("http://example.net/");
        FAIL() << "no error";
    } catch (const rt::RuntimeError &e) {
        EXPECT_EQ(e.number(), 91);
    }
    // A refused address never reaches the shell, so it fails nothing.
    p.OpenUrl2("ftp://example.net/");
}

} // namespace
