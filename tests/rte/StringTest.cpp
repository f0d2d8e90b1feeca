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

TEST(StringTest, Utf8DecodingIsStrictAndRoundTripsWithAppend)
{
    for (const char32_t cp : {char32_t(0x41), char32_t(0xE9), char32_t(0x20AC), char32_t(0x1F600), char32_t(0x10FFFF)}) {
        std::string encoded;
        RTE::String::AppendUtf8(encoded, cp);
        size_t pos = 0;
        char32_t decoded = 0;
        ASSERT_TRUE(RTE::String::DecodeUtf8(encoded, pos, decoded));
        EXPECT_EQ(decoded, cp);
        EXPECT_EQ(pos, encoded.size());
    }
    // Overlong, encoded surrogate, above U+10FFFF, cut short, lone continuation byte, past the end.
    for (const std::string bad : {"\xC0\xAF", "\xED\xA0\x80", "\xF4\x90\x80\x80", "\xE2\x82", "\x80", ""}) {
        size_t pos = 0;
        char32_t decoded = 0;
        EXPECT_FALSE(RTE::String::DecodeUtf8(bad, pos, decoded));
        EXPECT_EQ(pos, 0u);
    }
}
