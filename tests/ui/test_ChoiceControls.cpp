#include <gtest/gtest.h>

#include "KitFixture.h"
#include "runtime/RuntimeError.h"
#include "ui/ListView.h"
#include "ui/NumberEdit.h"
#include "ui/OptionButton.h"

namespace {

struct ChoiceControlsTest : KitFixture, ::testing::Test {
    TestWindow &w = app.form<TestWindow>();
};

int errorOf(const std::function<void()> &f)
{
    try {
        f();
    } catch (const rt::RuntimeError &e) {
        return e.number();
    }
    return 0;
}

TEST_F(ChoiceControlsTest, ListViewCountsItemsFromOneAndKeepsCellsWhole)
{
    ui::ListView view{w, "ListView"};
    view.setMultiSelect(true);
    view.AddRow({"01", "A; with a semicolon", "0:00:00.00"});
    view.AddRow({"02", "B"});
    EXPECT_EQ(view.Count(), 2);
    EXPECT_EQ(view.rowBase(), 1);
    EXPECT_EQ(view.Column(0, 2), "A; with a semicolon");
    EXPECT_EQ(*view.property("Column", {1, 2}), "A; with a semicolon");
    EXPECT_EQ(*view.property("SubItems", {1, 1}), "A; with a semicolon");
    EXPECT_EQ(*view.property("List", {2}), "02");
    EXPECT_EQ(*view.property("Column", {2, 3}), "");
    view.setItemSelected(2, true);
    EXPECT_TRUE(view.ItemSelected(2));
    EXPECT_FALSE(view.ItemSelected(1));
    EXPECT_EQ(*view.property("Selected", {2}), "-1");
    view.setSelectedItem(2);
    EXPECT_EQ(view.SelectedItem(), 2);
    // Selecting an item as current leaves the other marks of a multi-select list.
    view.setItemSelected(1, true);
    view.setSelectedItem(1);
    EXPECT_TRUE(view.ItemSelected(2));
    EXPECT_EQ(errorOf([&] { view.ItemSelected(3); }), 35600);
    EXPECT_EQ(errorOf([&] { view.setItemSelected(0, true); }), 35600);
    view.Clear();
    EXPECT_EQ(view.Count(), 0);
    EXPECT_EQ(view.SelectedItem(), 0);
    view.AddRow({"05"});
    EXPECT_EQ(view.Column(0, 1), "05");
    EXPECT_EQ(view.Column(0, 2), "");
}

TEST_F(ChoiceControlsTest, OptionButtonsOfOneArrayMarkOne)
{
    ui::OptionButton a{w, "Option1", 0}, b{w, "Option1", 1}, other{w, "Other", 0};
    int clicks = 0;
    b.Click = [&] { ++clicks; };
    other.setValue(true);
    a.setValue(true);
    b.userClick();
    EXPECT_FALSE(a.Value());
    EXPECT_TRUE(b.Value());
    EXPECT_TRUE(other.Value());
    EXPECT_EQ(clicks, 1);
    EXPECT_EQ(*b.property("Value", {}), "-1");
}

TEST_F(ChoiceControlsTest, SpinButtonStepsWithinItsBoundsButTakesAnyValueFromCode)
{
    ui::SpinButton spin{w, "spin"};
    spin.setMinValue(1);
    spin.setMaxValue(50);
    int changes = 0;
    spin.Change = [&] { ++changes; };
    spin.setValue(75);
    EXPECT_EQ(spin.Value(), 75);
    spin.userStep(+1);
    EXPECT_EQ(spin.Value(), 50);
    spin.setValue(1);
    spin.userStep(-1);
    EXPECT_EQ(spin.Value(), 1);
    EXPECT_EQ(changes, 3);
}

TEST_F(ChoiceControlsTest, NumberEditReadsItsTextAsANumber)
{
    ui::NumberEdit edit{w, "edit"};
    int changes = 0;
    edit.Change = [&] { ++changes; };
    edit.setValue(12);
    EXPECT_EQ(edit.Text(), "12");
    EXPECT_EQ(edit.Value(), 12);
    edit.userType("7x");
    EXPECT_EQ(edit.Value(), 7);
    edit.userType("none");
    EXPECT_EQ(edit.Value(), 0);
    EXPECT_EQ(changes, 3);
}

} // namespace
