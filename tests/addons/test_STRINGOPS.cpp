// RemoveText takes the first occurrence of the piece out, case counting, and leaves anything else.
#include <gtest/gtest.h>

#include "addons/STRINGOPS.h"

namespace {

TEST(STRINGOPS, RemovesThePieceWhereverItStands)
{
    addons::STRINGOPS s;
    EXPECT_EQ(s.RemoveText("URL-http://a/b", "URL-"), "http://a/b");
    EXPECT_EQ(s.RemoveText("see info-http://a", "info-"), "see http://a");
    EXPECT_EQ(s.RemoveText("filesize-", "filesize-"), "");
}

TEST(STRINGOPS, OnlyTheFirstOccurrenceGoes)
{
    addons::STRINGOPS s;
    EXPECT_EQ(s.RemoveText("URL-URL-x", "URL-"), "URL-x");
}

TEST(STRINGOPS, AMissingPieceLeavesTheSourceAsItIs)
{
    addons::STRINGOPS s;
    EXPECT_EQ(s.RemoveText("info-http://x/URL", "URL-"), "info-http://x/URL");
    EXPECT_EQ(s.RemoveText("url-x", "URL-"), "url-x");
    EXPECT_EQ(s.RemoveText("abc", ""), "abc");
    EXPECT_EQ(s.RemoveText("", "x"), "");
}

TEST(STRINGOPS, BytesOfAnyKindPassThrough)
{
    addons::STRINGOPS s;
    const std::string withNul("a\0URL-b", 7);
    EXPECT_EQ(s.RemoveText(withNul, "URL-"), std::string("a\0b", 3));
}

} // namespace
