#include <gtest/gtest.h>

#include "KitFixture.h"
#include "runtime/RuntimeError.h"
#include "ui/ListBox.h"

namespace {

struct ListBoxTest : KitFixture, ::testing::Test {
    TestWindow &w = app.form<TestWindow>();
    ui::ListBox list{w, "list"};
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

TEST_F(ListBoxTest, AddInsertRemoveClearKeepOrder)
{
    list.AddItem("a");
    list.AddItem("c");
    list.AddItem("b", 1);
    ASSERT_EQ(list.ListCount(), 3);
    EXPECT_EQ(list.List(0), "a");
    EXPECT_EQ(list.List(1), "b");
    EXPECT_EQ(list.List(2), "c");
    list.RemoveItem(0);
    EXPECT_EQ(list.List(0), "b");
    list.AddItem("end", 2);
    EXPECT_EQ(list.List(2), "end");
    list.Clear();
    EXPECT_EQ(list.ListCount(), 0);
}

TEST_F(ListBoxTest, ReadOutsideTheListGivesEmptyText)
{
    list.AddItem("only");
    EXPECT_EQ(list.List(-1), "");
    EXPECT_EQ(list.List(1), "");
    EXPECT_EQ(list.Column(5, 1), "");
}

TEST_F(ListBoxTest, RefusedIndicesRaiseErrors)
{
    list.AddItem("x");
    EXPECT_EQ(errorOf([&] { list.RemoveItem(-1); }), 5);
    EXPECT_EQ(errorOf([&] { list.RemoveItem(1); }), 5);
    EXPECT_EQ(errorOf([&] { list.AddItem("y", 3); }), 5);
    EXPECT_EQ(errorOf([&] { list.setSelected(-1, true); }), 381);
    EXPECT_EQ(errorOf([&] { list.setListIndex(4); }), 380);
    EXPECT_EQ(errorOf([&] { list.setListIndex(-1); }), 0);
}

TEST_F(ListBoxTest, ColumnsSplitAtSemicolons)
{
    list.AddItem(";Some Song;04:03");
    EXPECT_EQ(list.Column(0, 1), "");
    EXPECT_EQ(list.Column(0, 2), "Some Song");
    EXPECT_EQ(list.Column(0, 3), "04:03");
    EXPECT_EQ(list.Column(0, 4), "");
}

TEST_F(ListBoxTest, SingleSelectionFollowsTheCurrentRow)
{
    for (const char *t : {"a", "b", "c"})
        list.AddItem(t);
    list.setSelected(1, true);
    EXPECT_EQ(list.ListIndex(), 1);
    list.setSelected(2, true);
    EXPECT_FALSE(list.Selected(1));
    EXPECT_TRUE(list.Selected(2));
    EXPECT_EQ(list.Text(), "c");
}

TEST_F(ListBoxTest, MultiSelectionKeepsEveryMark)
{
    list.setMultiSelect(true);
    for (const char *t : {"a", "b", "c"})
        list.AddItem(t);
    list.setSelected(0, true);
    list.setSelected(2, true);
    EXPECT_TRUE(list.Selected(0));
    EXPECT_FALSE(list.Selected(1));
    EXPECT_TRUE(list.Selected(2));
}

TEST_F(ListBoxTest, UserClickMakesTheRowCurrentThenRaisesClick)
{
    for (const char *t : {"a", "b"})
        list.AddItem(t);
    int seen = -2;
    list.Click = [&] { seen = list.ListIndex(); };
    list.userClickRow(1);
    EXPECT_EQ(seen, 1);
    EXPECT_TRUE(list.Selected(1));
}

TEST_F(ListBoxTest, RowsChangedIsRaisedForEveryChangeOfRows)
{
    int changes = 0;
    list.RowsChanged = [&] { ++changes; };
    list.AddItem("a");
    list.AddItem("b", 0);
    list.RemoveItem(0);
    list.Clear();
    EXPECT_EQ(changes, 4);
}

TEST_F(ListBoxTest, CurrentRowMovesWithInsertAndRemove)
{
    for (const char *t : {"a", "b", "c"})
        list.AddItem(t);
    list.setListIndex(1);
    list.AddItem("z", 0);
    EXPECT_EQ(list.ListIndex(), 2);
    list.RemoveItem(0);
    EXPECT_EQ(list.ListIndex(), 1);
    list.RemoveItem(1);
    EXPECT_EQ(list.ListIndex(), -1);
}

TEST_F(ListBoxTest, PropertiesByName)
{
    list.AddItem("a;b");
    list.setRowImage(0, 1);
    EXPECT_EQ(list.property("ListCount", {}).value(), "1");
    EXPECT_EQ(list.property("List", {0}).value(), "a;b");
    EXPECT_EQ(list.property("List", {7}).value(), "");
    EXPECT_EQ(list.property("Column", {0, 2}).value(), "b");
    EXPECT_EQ(list.property("Selected", {0}).value(), "0");
    EXPECT_EQ(list.property("RowImage", {0}).value(), "1");
    EXPECT_FALSE(list.property("NoSuchThing", {}).has_value());
}

} // namespace
