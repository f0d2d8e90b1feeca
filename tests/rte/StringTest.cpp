#include <RTE/String.h>

#include <gtest/gtest.h>

TEST(StringTest, CaseChangesTouchAsciiLettersOnly)
{
    std::string text = "abc.Set/x_9";
    RTE::String::ToUpper(text);
    EXPECT_EQ(text, "ABC.SET/X_9");
    RTE::String::ToLower(text);
    EXPECT_EQ(text, "abc.set/x_9");

    // UTF-8 and binary bytes pass through unchanged.
    std::string bytes("\xC3\xA4\xFF\0z", 5);
    RTE::String::ToUpper(bytes);
    EXPECT_EQ(bytes, std::string("\xC3\xA4\xFF\0Z", 5));

    std::string empty;
    RTE::String::ToUpper(empty);
    EXPECT_TRUE(empty.empty());
}

TEST(StringTest, EqualsIgnoreCase)
{
    EXPECT_TRUE(RTE::String::EqualsIgnoreCase("C:/Data/Set", "c:/data/SET"));
    EXPECT_FALSE(RTE::String::EqualsIgnoreCase("abc", "abcd"));
    EXPECT_FALSE(RTE::String::EqualsIgnoreCase("a[", "A{")); // no case folding outside letters
    EXPECT_TRUE(RTE::String::EqualsIgnoreCase("", ""));
}
