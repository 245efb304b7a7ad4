// The settings editor's conversation with the store, call by call: which key it opens, which
// name it reads and writes, and where it leaves the key open.
#include <gtest/gtest.h>

#include "platform/fake/FakeComponents.h"
#include "runtime/VirtualEventLoop.h"
#include "shell/Form7.h"
#include "ui/AppContext.h"
#include "ui/ScriptedServices.h"

namespace {

const std::string openKey = "OpenKey Software\\Velmora Works\\MP3 Data";

struct Form7Test : ::testing::Test {
    rt::VirtualEventLoop loop;
    ui::ScriptedMessageBoxes boxes;
    ui::ScriptedDialogs dialogs;
    std::shared_ptr<platform::fake::FakeWorld> world = std::make_shared<platform::fake::FakeWorld>();
    platform::Components components = platform::fake::makeFakeComponents(world);
    ui::AppContext app{loop, boxes, dialogs, components, "/opt/prog"};
    shell::Form7 &editor = app.form<shell::Form7>();

    std::vector<std::string> &calls() { return world->registry->calls; }
};

TEST_F(Form7Test, TheTriggerLevelIsReadUnderItsOtherSpellingAndWrittenUnderItsOwn)
{
    world->registry->keys["Software\\Velmora Works\\MP3 Data"]["STriggerLevel"] = "12";
    editor.TList2.userSelectRow(17);
    EXPECT_EQ(calls(), (std::vector<std::string>{openKey, "ReadValue STriggerlevel", "CloseKey"}));
    EXPECT_EQ(editor.Text1.Text(), "12");
    EXPECT_EQ(editor.List1.List(0), "240- STriggerLevel");
    EXPECT_EQ(editor.List1.List(1), "Data port opened!490- STriggerLevel Port Open");

    calls().clear();
    editor.Text1.userType("15");
    editor.ctButton1.userClick();
    EXPECT_EQ(calls(), (std::vector<std::string>{openKey, "WriteValue STriggerLevel", "CloseKey"}));
    EXPECT_EQ(world->registry->keys["Software\\Velmora Works\\MP3 Data"]["STriggerLevel"], "15");
}

TEST_F(Form7Test, GroupsAndTheRootOpenTheKeyAndLeaveItOpen)
{
    for (int row : {0, 1, 7, 11, 15, 24, 29, 34}) {
        calls().clear();
        editor.TList2.userSelectRow(row);
        EXPECT_EQ(calls(), std::vector<std::string>{openKey}) << "row " << row;
        EXPECT_EQ(editor.selectedRow.value(), row);
        // The button after them asks nothing of the store.
        calls().clear();
        editor.ctButton1.userClick();
        EXPECT_TRUE(calls().empty()) << "row " << row;
    }
}

TEST_F(Form7Test, EveryItemReadsAndWritesItsOwnName)
{
    const std::pair<int, const char *> items[] = {
        {2, "CallBackMode"},       {3, "looping"},        {4, "NumBuffers"},    {5, "TimeFormat"},
        {6, "BufferSize"},         {8, "RingLoopIfEmpty"}, {9, "RingQueMode"},   {10, "RingBufferSize"},
        {12, "ADecryptKey"},       {13, "APanning"},       {14, "AVolume"},      {16, "STriggerMode"},
        {18, "SSpeed"},            {19, "SRefreshonStop"}, {20, "SRealTime"},    {21, "SEnterIdle"},
        {22, "SAutoTrigger"},      {23, "SAutoConvert"},   {25, "EQChannel"},    {26, "FFTLength"},
        {27, "SampleRate"},        {28, "Window"},         {30, "FifoBufferCount"}, {31, "ASPIEvents"},
        {32, "PreGapSize"},        {33, "SwapBytes"},      {35, "ShowEQonStartup"},
    };
    for (const auto &[row, name] : items) {
        calls().clear();
        editor.TList2.userSelectRow(row);
        EXPECT_EQ(calls(), (std::vector<std::string>{openKey, std::string("ReadValue ") + name, "CloseKey"})) << row;
        calls().clear();
        editor.ctButton1.userClick();
        EXPECT_EQ(calls(), (std::vector<std::string>{openKey, std::string("WriteValue ") + name, "CloseKey"})) << row;
    }
    EXPECT_TRUE(boxes.shown().empty());
}

TEST_F(Form7Test, LoadingMakesItTopmostCentredAndRetitled)
{
    EXPECT_TRUE(editor.Topmost());
    EXPECT_EQ(editor.Caption(), "Velmora Works - Software Settings");
    const auto [width, height] = app.screenSizeTwips();
    EXPECT_EQ(editor.Left(), width / 2 - editor.Width() / 2);
    EXPECT_EQ(editor.Top(), height / 2 - editor.Height() / 2);
    EXPECT_FALSE(editor.tmrRefresh.Tick);
    EXPECT_FALSE(editor.tmrMonitor.Tick);
}

TEST_F(Form7Test, WithoutAStoreTheFirstSelectionIsTheRunTimeReport)
{
    components.settingsStore = nullptr;
    editor.Unload();
    app.afterEvent();
    auto &bare = app.form<shell::Form7>();
    bare.TList2.userSelectRow(3);
    ASSERT_EQ(boxes.shown().size(), 1u);
    EXPECT_EQ(boxes.shown().front().request.prompt.rfind("Run-time error '91':", 0), 0u);
    EXPECT_TRUE(app.ended());
}

} // namespace
