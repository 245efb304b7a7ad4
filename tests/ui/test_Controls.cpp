#include <gtest/gtest.h>

#include "KitFixture.h"
#include "runtime/RuntimeError.h"
#include "ui/Button.h"
#include "ui/CheckBox.h"
#include "ui/ComboBox.h"
#include "ui/Label.h"
#include "ui/MenuItem.h"
#include "ui/Meter.h"
#include "ui/StatusBar.h"
#include "ui/TextBox.h"
#include "ui/ToolBar.h"

namespace {

struct ControlsTest : KitFixture, ::testing::Test {
    TestWindow &w = app.form<TestWindow>();
};

TEST_F(ControlsTest, ComboKeepsItsTextUntilAPick)
{
    ui::ComboBox combo(w, "combo");
    combo.setText("Performance()");
    combo.AddItem("10%");
    combo.AddItem("20%");
    EXPECT_EQ(combo.Text(), "Performance()");
    int clicks = 0;
    combo.Click = [&] { ++clicks; };
    EXPECT_TRUE(combo.userPick("20%"));
    EXPECT_EQ(combo.Text(), "20%");
    EXPECT_EQ(combo.ListIndex(), 1);
    EXPECT_EQ(clicks, 1);
    EXPECT_FALSE(combo.userPick("99%"));
}

TEST_F(ControlsTest, DisabledControlsIgnoreTheUser)
{
    ui::ComboBox combo(w, "combo");
    combo.AddItem("1x");
    combo.setEnabled(false);
    int clicks = 0;
    combo.Click = [&] { ++clicks; };
    combo.userPick("1x");
    EXPECT_EQ(clicks, 0);
    EXPECT_EQ(combo.ListIndex(), -1);
}

TEST_F(ControlsTest, CheckBoxClickTogglesThenRaisesClick)
{
    ui::CheckBox check(w, "check");
    int seen = -1;
    check.Click = [&] { seen = check.Value(); };
    check.userClick();
    EXPECT_EQ(seen, 1);
    check.userClick();
    EXPECT_EQ(seen, 0);
    EXPECT_THROW(check.setValue(3), rt::RuntimeError);
}

TEST_F(ControlsTest, MeterRefusesValuesOutsideItsRange)
{
    ui::Meter meter(w, "meter");
    meter.setMax(100);
    meter.setValue(100);
    try {
        meter.setValue(101);
        FAIL() << "no error";
    } catch (const rt::RuntimeError &e) {
        EXPECT_EQ(e.number(), 380);
    }
    EXPECT_EQ(meter.Value(), 100);
    EXPECT_THROW(meter.setValue(-1), rt::RuntimeError);
}

TEST_F(ControlsTest, TextBoxRaisesChangeOnEveryChange)
{
    ui::TextBox text(w, "text");
    int changes = 0;
    text.Change = [&] { ++changes; };
    text.setText("a");
    text.setText("a");
    text.userType("b");
    EXPECT_EQ(changes, 2);
    EXPECT_EQ(text.Text(), "b");
}

TEST_F(ControlsTest, StatusBarPanelsCountFromOne)
{
    ui::StatusBar bar(w, "bar", 2);
    bar.setPanel(1, "Session Open");
    EXPECT_EQ(bar.Panel(1), "Session Open");
    EXPECT_EQ(bar.property("Panel", {1}).value(), "Session Open");
    EXPECT_EQ(bar.property("Panel", {3}).value(), "");
    EXPECT_THROW(bar.setPanel(0, "x"), rt::RuntimeError);
}

TEST_F(ControlsTest, ToolBarReportsTheButtonIndex)
{
    ui::ToolBar bar(w, "bar");
    int reported = 0;
    bar.ButtonClick = [&](int i) { reported = i; };
    bar.userButton(13);
    EXPECT_EQ(reported, 13);
}

TEST_F(ControlsTest, MenuEntriesFormATree)
{
    ui::MenuItem head(w, "head", "XOptions");
    ui::MenuItem entry(w, "entry", "DX SCAN", &head);
    ui::MenuItem separator(w, "sep", "-", &head);
    ASSERT_EQ(w.menuBar().size(), 1u);
    EXPECT_EQ(head.children().size(), 2u);
    EXPECT_TRUE(separator.isSeparator());
    int clicks = 0;
    entry.Click = [&] { ++clicks; };
    entry.userClick();
    entry.setEnabled(false);
    entry.userClick();
    EXPECT_EQ(clicks, 1);
}

TEST_F(ControlsTest, CommonPropertiesAsTruthValues)
{
    ui::Button button(w, "button");
    button.setCaption("Flash Burn>>");
    EXPECT_EQ(button.property("Caption", {}).value(), "Flash Burn>>");
    EXPECT_EQ(button.property("Enabled", {}).value(), "-1");
    button.setEnabled(false);
    EXPECT_EQ(button.property("Enabled", {}).value(), "0");
    EXPECT_TRUE(button.setProperty("Enabled", {}, "True"));
    EXPECT_TRUE(button.Enabled());
    EXPECT_FALSE(button.setProperty("Bogus", {}, "1"));
}

TEST_F(ControlsTest, ControlArraysAreFoundByIndex)
{
    ui::Label a(w, "Level", 0);
    ui::Label b(w, "Level", 1);
    EXPECT_EQ(w.control("Level", 1), &b);
    EXPECT_EQ(w.control("Level", 2), nullptr);
    EXPECT_EQ(b.fullName(), "Level(1)");
}

} // namespace
