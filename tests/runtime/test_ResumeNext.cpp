#include <gtest/gtest.h>

#include <stdexcept>
#include <vector>

#include "runtime/Integer.h"
#include "runtime/ResumeNext.h"

using namespace rt;

TEST(ResumeNext, SkipsTheFailingStatementOnly)
{
    ResumeNext on;
    std::vector<int> ran;
    on([&] { ran.push_back(1); });
    on([&] {
        rt::raise(ErrFileNotFound);
        ran.push_back(99); // never reached: the rest of a failing statement is skipped
    });
    on([&] { ran.push_back(3); });
    EXPECT_EQ(ran, (std::vector<int>{1, 3}));
    EXPECT_EQ(on.lastError(), 53);
}

TEST(ResumeNext, LastErrorIsTheLatestAndCanBeCleared)
{
    ResumeNext on;
    EXPECT_EQ(on.lastError(), 0);
    on([] { (void)(Integer(32767) + Integer(1)); });
    EXPECT_EQ(on.lastError(), 6);
    on([] { rt::raise(ErrInputPastEnd); });
    EXPECT_EQ(on.lastError(), 62);
    on([] {});
    EXPECT_EQ(on.lastError(), 62) << "a statement that succeeds leaves Err as it was";
    on.clearError();
    EXPECT_EQ(on.lastError(), 0);
}

TEST(ResumeNext, FailingIfConditionRunsTheBody)
{
    ResumeNext on;
    bool body = false;
    on.If([]() -> bool { rt::raise(ErrTypeMismatch); }, [&] { body = true; });
    EXPECT_TRUE(body);
    EXPECT_EQ(on.lastError(), 13);

    bool falseBody = false;
    on.If([] { return false; }, [&] { falseBody = true; });
    EXPECT_FALSE(falseBody);

    bool trueBody = false;
    on.If([] { return true; }, [&] { trueBody = true; });
    EXPECT_TRUE(trueBody);
}

TEST(ResumeNext, FailingIfElseConditionTakesTheFirstBranch)
{
    ResumeNext on;
    int branch = 0;
    on.IfElse([]() -> bool { rt::raise(ErrSubscript); }, [&] { branch = 1; }, [&] { branch = 2; });
    EXPECT_EQ(branch, 1);
    EXPECT_EQ(on.lastError(), 9);
    on.IfElse([] { return false; }, [&] { branch = 1; }, [&] { branch = 2; });
    EXPECT_EQ(branch, 2);
}

TEST(ResumeNext, EndIsNotSwallowed)
{
    ResumeNext on;
    EXPECT_THROW(on([] { endProgram(); }), ProgramEnd);
    EXPECT_THROW(on.If([]() -> bool { endProgram(); }, [] {}), ProgramEnd);
    EXPECT_THROW(on.If([] { return true; }, [] { endProgram(); }), ProgramEnd);
    EXPECT_EQ(on.lastError(), 0);
}

TEST(ResumeNext, OtherExceptionsPassThrough)
{
    ResumeNext on;
    EXPECT_THROW(on([] { throw std::logic_error("bug"); }), std::logic_error);
}
