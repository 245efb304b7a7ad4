#include <gtest/gtest.h>

#include "KitFixture.h"
#include "ui/MessageBox.h"

namespace {

struct MessageBoxTest : KitFixture, ::testing::Test {};

TEST_F(MessageBoxTest, ABoxWithoutTitleShowsTheApplicationsName)
{
    ui::MsgBox(app, "Hello");
    ASSERT_EQ(boxes.shown().size(), 1u);
    EXPECT_EQ(boxes.shown()[0].request.title, "MP3 Brasswick");
    EXPECT_EQ(boxes.shown()[0].result, ui::vbOK);
}

TEST_F(MessageBoxTest, QueuedAnswersComeInOrderThenTheDefault)
{
    boxes.queueAnswer(ui::vbNo);
    EXPECT_EQ(ui::MsgBox(app, "q1", ui::vbYesNo, "T"), ui::vbNo);
    EXPECT_EQ(ui::MsgBox(app, "q2", ui::vbYesNo, "T"), ui::vbYes);
    EXPECT_EQ(ui::MsgBox(app, "q3", ui::vbYesNo | ui::vbDefaultButton2, "T"), ui::vbNo);
    EXPECT_EQ(ui::MsgBox(app, "q4", ui::vbOKCancel), ui::vbOK);
}

TEST_F(MessageBoxTest, StyleSplitsIntoButtonsAndIcon)
{
    ui::MessageBoxRequest r{"p", "t", ui::vbYesNo | ui::vbExclamation};
    EXPECT_EQ(r.buttons(), ui::vbYesNo);
    EXPECT_EQ(r.icon(), ui::vbExclamation);
}

TEST_F(MessageBoxTest, DialogsAnswerFromTheirQueue)
{
    dialogs.queueResult(std::string("/tmp/list.m3u"));
    dialogs.queueResult(std::nullopt);
    EXPECT_EQ(dialogs.run({}).value(), "/tmp/list.m3u");
    EXPECT_FALSE(dialogs.run({}).has_value());
    EXPECT_FALSE(dialogs.run({}).has_value());
    EXPECT_EQ(dialogs.requests().size(), 3u);
}

} // namespace
