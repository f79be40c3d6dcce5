#include "common/utf8.h"

#include <gtest/gtest.h>

#include <string>

namespace common {
namespace {

TEST(TextFeed, ReturnsBecomeLineFeedsAndNulsAreLeftOut) {
    Utf8Feed feed;
    EXPECT_EQ(feed.take({"a\rb\0c", 5}), "a\nbc");
}

TEST(TextFeed, ACharacterSplitOverTwoWritesComesWhole) {
    Utf8Feed feed;
    EXPECT_EQ(feed.take({"x\xE2\x82", 3}), "x");
    EXPECT_EQ(feed.take({"\xAC!", 2}), "\xE2\x82\xAC!");
}

TEST(TextFeed, BytesThatAreNotUtf8AreReplaced) {
    Utf8Feed feed;
    EXPECT_EQ(feed.take({"a\xFF\x62\xC3(", 5}), "a\xEF\xBF\xBD"
                                                "b\xEF\xBF\xBD(");
}

TEST(TextFeed, WhatNeverCompletesIsReplacedAtTheEnd) {
    Utf8Feed feed;
    EXPECT_EQ(feed.take({"\xF0\x9F", 2}), "");
    EXPECT_EQ(feed.finish(), "\xEF\xBF\xBD");
    EXPECT_EQ(feed.finish(), "");
}

TEST(TextFeed, EveryResultIsUtf8HoweverTheBytesAreCut) {
    std::string bytes;
    for (int i = 0; i < 4096; i++)
        bytes += static_cast<char>((i * 7919 + i / 3) % 256);
    for (std::size_t step = 1; step < 9; step++) {
        Utf8Feed feed;
        std::string all;
        for (std::size_t at = 0; at < bytes.size(); at += step) {
            const std::string piece = feed.take(std::string_view(bytes).substr(at, step));
            EXPECT_TRUE(is_utf8(piece));
            all += piece;
        }
        Utf8Feed whole;
        EXPECT_EQ(all, whole.take(bytes)) << step;
    }
}

TEST(Utf8, WellFormedTextIsToldFromOtherBytes) {
    for (const char *const good :
         {"", "abc", "a é € 𝄞", "\xED\x9F\xBF", "\xF4\x8F\xBF\xBF", "\xE0\xA0\x80", "\xF0\x90\x80\x80"})
        EXPECT_TRUE(is_utf8(good)) << good;
    for (const char *const bad :
         {"\xC3", "\x80", "\xC0\x80", "\xC0\xAF", "\xC1\x80", "\xED\xA0\x80", "\xF5\x80\x80\x80",
          "\xE0\x80\x80", "\xF0\x8F\x80\x80", "\xF4\x90\x80\x80", "a\xFF", "\xE2\x82"})
        EXPECT_FALSE(is_utf8(bad)) << bad;
    EXPECT_FALSE(is_utf8(std::string_view("a\0", 2)));
}

TEST(Utf8, AWholeTextShowsThatItsLastCharacterIsCutOff) {
    EXPECT_EQ(valid_utf8("error\r in \xC3\xA9 \xE2\x82"), "error\n in \xC3\xA9 \xEF\xBF\xBD");
    EXPECT_EQ(valid_utf8("abc"), "abc");
    EXPECT_EQ(valid_utf8(""), "");
}

TEST(Utf8, LengthsOfCharacters) {
    const std::string text = "a\xC3\xA9\xE2\x82\xAC\xF0\x9D\x84\x9E\xFF";
    EXPECT_EQ(utf8_length(text, 0), 1u);
    EXPECT_EQ(utf8_length(text, 1), 2u);
    EXPECT_EQ(utf8_length(text, 2), 0u);
    EXPECT_EQ(utf8_length(text, 3), 3u);
    EXPECT_EQ(utf8_length(text, 6), 4u);
    EXPECT_EQ(utf8_length(text, 10), 0u);
    EXPECT_EQ(utf8_length(text, 11), 0u);
}

} // namespace
} // namespace common
