#include <gtest/gtest.h>

#include "Tokenizer.h"

using namespace scenario;

TEST(Tokenizer, WordsAndTexts)
{
    std::string error;
    auto t = tokenize(R"(expect frmMain.Text1.Text == "a ""quoted"" C:\path")", error);
    ASSERT_TRUE(t);
    ASSERT_EQ(t->size(), 4u);
    EXPECT_EQ((*t)[0].text, "expect");
    EXPECT_FALSE((*t)[0].quoted);
    EXPECT_EQ((*t)[3].text, "a \"quoted\" C:\\path");
    EXPECT_TRUE((*t)[3].quoted);
}

TEST(Tokenizer, EmptyTextIsAToken)
{
    std::string error;
    auto t = tokenize(R"(expect x == "")", error);
    ASSERT_TRUE(t);
    ASSERT_EQ(t->size(), 4u);
    EXPECT_EQ((*t)[3].text, "");
    EXPECT_TRUE((*t)[3].quoted);
}

TEST(Tokenizer, UnclosedTextIsAnError)
{
    std::string error;
    EXPECT_FALSE(tokenize(R"(expect x == "open)", error));
    EXPECT_FALSE(error.empty());
}

TEST(Tokenizer, ReferencesKeepBracketsWhole)
{
    EXPECT_EQ(splitReference("frmMain.mainlist.List(3)"), (std::vector<std::string>{"frmMain", "mainlist", "List(3)"}));
    EXPECT_EQ(splitReference("Form6.Level(1).Value"), (std::vector<std::string>{"Form6", "Level(1)", "Value"}));
    EXPECT_EQ(splitReference("result"), (std::vector<std::string>{"result"}));
}

TEST(Tokenizer, NamesWithArguments)
{
    auto a = parseNameWithArgs("Column(2,1)");
    EXPECT_TRUE(a.valid);
    EXPECT_EQ(a.name, "Column");
    EXPECT_EQ(a.args, (std::vector<int>{2, 1}));
    auto b = parseNameWithArgs("List(-1)");
    EXPECT_EQ(b.args, (std::vector<int>{-1}));
    EXPECT_FALSE(parseNameWithArgs("List(x)").valid);
    EXPECT_FALSE(parseNameWithArgs("List(3").valid);
    EXPECT_TRUE(parseNameWithArgs("mainlist").args.empty());
}
