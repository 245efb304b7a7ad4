#include <gtest/gtest.h>

#include "KitFixture.h"
#include "runtime/RuntimeError.h"
#include "ui/Button.h"

namespace {

int loads = 0;
int unloads = 0;

class Counted : public ui::Window {
public:
    static constexpr const char *formName = "Counted";
    explicit Counted(ui::AppContext &app) : Window(app, formName), button(*this, "button") {}
    void Form_Load() override
    {
        ++loads;
        // The load step can refer to its own window without making a second one.
        app().form<Counted>().setCaption("loaded " + std::to_string(loads));
    }
    void Form_Unload() override { ++unloads; }
    ui::Button button;
};

struct AppContextTest : KitFixture, ::testing::Test {
    AppContextTest()
    {
        loads = unloads = 0;
        app.registerForm(Counted::formName, [](ui::AppContext &a) { return std::make_unique<Counted>(a); });
        app.registerForm(TestWindow::formName, [](ui::AppContext &a) { return std::make_unique<TestWindow>(a); });
    }
};

TEST_F(AppContextTest, FirstReferenceCreatesAndLoadsOnce)
{
    EXPECT_EQ(app.findLoaded("Counted"), nullptr);
    Counted &a = app.form<Counted>();
    Counted &b = app.form<Counted>();
    EXPECT_EQ(&a, &b);
    EXPECT_EQ(loads, 1);
    EXPECT_EQ(a.Caption(), "loaded 1");
    EXPECT_EQ(&app.formByName("Counted"), &a);
    EXPECT_FALSE(a.Visible());
}

TEST_F(AppContextTest, UnloadThenReferenceMakesANewWindow)
{
    app.form<TestWindow>(); // keeps the program alive
    Counted &first = app.form<Counted>();
    first.setCaption("changed");
    first.Unload();
    EXPECT_EQ(unloads, 1);
    EXPECT_EQ(app.findLoaded("Counted"), nullptr);
    app.afterEvent();
    Counted &second = app.form<Counted>();
    EXPECT_EQ(loads, 2);
    EXPECT_EQ(second.Caption(), "loaded 2");
}

TEST_F(AppContextTest, UnknownWindowIsObjectRequired)
{
    try {
        app.formByName("Form6");
        FAIL() << "no error";
    } catch (const rt::RuntimeError &e) {
        EXPECT_EQ(e.number(), 424);
    }
    EXPECT_EQ(app.findLoaded("Form6"), nullptr);
}

TEST_F(AppContextTest, ProgramEndsWhenTheLastWindowGoes)
{
    int endedWith = -1;
    app.programEnded = [&](int n) { endedWith = n; };
    app.form<TestWindow>();
    app.form<Counted>().Unload();
    EXPECT_FALSE(app.ended());
    app.form<TestWindow>().Unload();
    EXPECT_TRUE(app.ended());
    EXPECT_EQ(endedWith, 0);
}

TEST_F(AppContextTest, AnUntrappedErrorIsTheFatalReport)
{
    app.form<Counted>();
    loop.deliver([] { rt::raise(6); });
    ASSERT_EQ(boxes.shown().size(), 1u);
    EXPECT_EQ(boxes.shown().front().request.prompt, "Run-time error '6':\n\nOverflow");
    EXPECT_EQ(boxes.shown().front().request.title, "MP3 Brasswick");
    EXPECT_TRUE(app.ended());
    EXPECT_EQ(app.endError(), 6);
    EXPECT_TRUE(app.windows().empty());
}

TEST_F(AppContextTest, TheEndStatementEndsAtOnce)
{
    app.form<Counted>();
    loop.deliver([] { rt::endProgram(); });
    EXPECT_TRUE(app.ended());
    EXPECT_EQ(app.endError(), 0);
    EXPECT_TRUE(boxes.shown().empty());
}

TEST_F(AppContextTest, CloseBoxUnloadsUnlessTheCommandWasRemoved)
{
    app.form<TestWindow>();
    Counted &w = app.form<Counted>();
    w.setCloseCommandRemoved(true);
    w.userClose();
    EXPECT_NE(app.findLoaded("Counted"), nullptr);
    w.setCloseCommandRemoved(false);
    w.userClose();
    EXPECT_EQ(app.findLoaded("Counted"), nullptr);
}

TEST_F(AppContextTest, WindowPropertiesForChecks)
{
    Counted &w = app.form<Counted>();
    w.setTopmost(true);
    w.Show();
    EXPECT_EQ(w.property("Topmost").value(), "-1");
    EXPECT_EQ(w.property("Visible").value(), "-1");
    EXPECT_EQ(w.property("Caption").value(), "loaded 1");
    EXPECT_FALSE(w.property("Nonsense").has_value());
}

TEST_F(AppContextTest, ProgramFolderHasNoTrailingSeparator)
{
    EXPECT_EQ(app.appPath(), "/opt/prog");
}

} // namespace

namespace {

TEST_F(AppContextTest, AClickThatEndsTheProgramTakesItsWindowAway)
{
    Counted &w = app.form<Counted>();
    w.button.Click = [] { rt::raise(6); };
    w.button.userClick();
    EXPECT_TRUE(app.ended());
    EXPECT_EQ(app.endError(), 6);
    EXPECT_TRUE(app.windows().empty());
}

} // namespace
