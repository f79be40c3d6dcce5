#include "linux/text_feed.h"

#include <gtest/gtest.h>

#include <cstring>

#include "linux/ae_codec.h"

namespace quillon {
namespace {

TEST(TextFeed, ReturnsBecomeLineFeedsAndNulsAreLeftOut) {
    Utf8Feed feed;
    EXPECT_EQ(feed.take("a\rb\0c", 5), "a\nbc");
}

TEST(TextFeed, ACharacterSplitOverTwoWritesComesWhole) {
    Utf8Feed feed;
    EXPECT_EQ(feed.take("x\xE2\x82", 3), "x");
    EXPECT_EQ(feed.take("\xAC!", 2), "\xE2\x82\xAC!");
}

TEST(TextFeed, BytesThatAreNotUtf8AreReplaced) {
    Utf8Feed feed;
    EXPECT_EQ(feed.take("a\xFF\x62\xC3(", 5), "a\xEF\xBF\xBD"
                                              "b\xEF\xBF\xBD(");
}

TEST(TextFeed, WhatNeverCompletesIsReplacedAtTheEnd) {
    Utf8Feed feed;
    EXPECT_EQ(feed.take("\xF0\x9F", 2), "");
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
            const std::string piece = feed.take(bytes.data() + at, std::min(step, bytes.size() - at));
            EXPECT_TRUE(is_utf8(piece.data(), piece.size()));
            all += piece;
        }
        Utf8Feed whole;
        EXPECT_EQ(all, whole.take(bytes.data(), bytes.size())) << step;
    }
}

TEST(Codes, FourCharactersAndNoOthers) {
    OSType code = 0;
    EXPECT_EQ(parse_code("QUIL", &code), 1);
    EXPECT_EQ(code, four("QUIL"));
    EXPECT_EQ(code_text(code), "QUIL");
    EXPECT_EQ(parse_code("abc", &code), 0);
    EXPECT_EQ(parse_code("abcde", &code), 0);
}

TEST(Codes, Utf8IsToldFromOtherBytes) {
    for (const char *const good : {"", "abc", "\xC3\xA9", "\xF0\x9F\x98\x80"})
        EXPECT_TRUE(is_utf8(good, std::strlen(good))) << good;
    for (const char *const bad :
         {"\xC3", "\x80", "\xC0\xAF", "\xED\xA0\x80", "\xF5\x80\x80\x80", "\xE0\x80\x80"})
        EXPECT_FALSE(is_utf8(bad, std::strlen(bad))) << bad;
}

} // namespace
} // namespace quillon
