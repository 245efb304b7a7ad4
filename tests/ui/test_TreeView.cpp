#include <gtest/gtest.h>

#include "KitFixture.h"
#include "runtime/RuntimeError.h"
#include "ui/TreeView.h"

namespace {

using Level = ui::TreeView::Level;

struct TreeViewTest : KitFixture, ::testing::Test {
    TestWindow &w = app.form<TestWindow>();
    ui::TreeView tree{w, "TList2"};

    void fill()
    {
        tree.AddRow("All", Level::Root);
        tree.AddRow("Out", Level::Group);
        tree.AddRow("Size", Level::Item);
        tree.AddRow("Mode", Level::Item);
        tree.AddRow("Ring", Level::Group);
        tree.AddRow("Size", Level::Item);
    }
};

TEST_F(TreeViewTest, RowsStandInTheOrderOfTheOpenedTree)
{
    fill();
    ASSERT_EQ(tree.ListCount(), 6);
    EXPECT_EQ(tree.List(0), "All");
    EXPECT_EQ(tree.List(5), "Size");
    EXPECT_EQ(tree.List(6), "");
    EXPECT_EQ(tree.List(-1), "");
    EXPECT_EQ(tree.RowLevel(1), Level::Group);
    EXPECT_EQ(tree.RowLevel(3), Level::Item);
    EXPECT_EQ(tree.ParentRow(0), -1);
    EXPECT_EQ(tree.ParentRow(1), 0);
    EXPECT_EQ(tree.ParentRow(3), 1);
    EXPECT_EQ(tree.ParentRow(4), 0);
    EXPECT_EQ(tree.ParentRow(5), 4);
    EXPECT_EQ(tree.ParentRow(6), -1);
    EXPECT_EQ(tree.property("Level", {4}).value(), "group");
    EXPECT_EQ(tree.property("Level", {0}).value(), "root");
    EXPECT_EQ(tree.property("Level", {2}).value(), "item");
    EXPECT_EQ(tree.property("List", {2}).value(), "Size");
    EXPECT_EQ(tree.property("ListCount", {}).value(), "6");
    EXPECT_EQ(tree.property("ListIndex", {}).value(), "-1");
}

TEST_F(TreeViewTest, AnItemWithoutAGroupHangsOnTheRoot)
{
    tree.AddRow("All", Level::Root);
    tree.AddRow("Loose", Level::Item);
    tree.AddRow("Top", Level::Item);
    EXPECT_EQ(tree.ParentRow(1), 0);
    ui::TreeView bare{w, "bare"};
    bare.AddRow("First", Level::Item);
    EXPECT_EQ(bare.ParentRow(0), -1);
}

TEST_F(TreeViewTest, ASelectionReportsTheRowNumberEveryTime)
{
    fill();
    std::vector<int> seen;
    tree.RowSelected = [&](int row) {
        // The row is the selected one by the time the handler runs.
        EXPECT_EQ(tree.ListIndex(), row);
        seen.push_back(row);
    };
    tree.userSelectRow(3);
    tree.userSelectRow(3);
    tree.userSelectRow(0);
    EXPECT_EQ(seen, (std::vector<int>{3, 3, 0}));
    EXPECT_EQ(tree.Text(), "All");
}

TEST_F(TreeViewTest, RowsOutsideTheTreeAndADisabledTreeReportNothing)
{
    fill();
    int events = 0;
    tree.RowSelected = [&](int) { ++events; };
    tree.userSelectRow(6);
    tree.userSelectRow(-1);
    tree.setEnabled(false);
    tree.userSelectRow(2);
    EXPECT_EQ(events, 0);
    EXPECT_EQ(tree.ListIndex(), -1);
}

TEST_F(TreeViewTest, PickByLabelTakesTheFirstRowOfThatLabel)
{
    fill();
    int seen = -1;
    tree.RowSelected = [&](int row) { seen = row; };
    EXPECT_TRUE(tree.userPick("Size"));
    EXPECT_EQ(seen, 2);
    EXPECT_FALSE(tree.userPick("size"));
    EXPECT_FALSE(tree.userPick("Nothing"));
    EXPECT_EQ(seen, 2);
}

TEST_F(TreeViewTest, CodeSelectsWithoutAnEvent)
{
    fill();
    int events = 0;
    tree.RowSelected = [&](int) { ++events; };
    tree.setListIndex(4);
    EXPECT_EQ(tree.ListIndex(), 4);
    EXPECT_TRUE(tree.setProperty("ListIndex", {}, "-1"));
    EXPECT_EQ(tree.ListIndex(), -1);
    EXPECT_EQ(events, 0);
    try {
        tree.setListIndex(6);
        FAIL() << "a row outside the tree was taken";
    } catch (const rt::RuntimeError &e) {
        EXPECT_EQ(e.number(), 380);
    }
}

TEST_F(TreeViewTest, ClearForgetsRowsAndSelection)
{
    fill();
    const int version = tree.rowsVersion();
    tree.setListIndex(2);
    tree.Clear();
    EXPECT_EQ(tree.ListCount(), 0);
    EXPECT_EQ(tree.ListIndex(), -1);
    EXPECT_NE(tree.rowsVersion(), version);
}

TEST_F(TreeViewTest, AnErrorEscapingTheHandlerIsTheRunTimeReport)
{
    fill();
    tree.RowSelected = [](int) { rt::raise(rt::ErrInvalidCall); };
    tree.userSelectRow(1);
    ASSERT_EQ(boxes.shown().size(), 1u);
    EXPECT_EQ(boxes.shown().front().request.prompt.rfind("Run-time error '5':", 0), 0u);
    EXPECT_TRUE(app.ended());
    EXPECT_EQ(app.endError(), 5);
}

} // namespace
