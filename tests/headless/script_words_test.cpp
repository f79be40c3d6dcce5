#include "headless/script_words.h"

#include <gtest/gtest.h>

namespace quillon {
namespace {

using Words = std::vector<std::string>;

TEST(ScriptWords, BlanksSeparateWords) {
    EXPECT_EQ(SplitWords("  a\tb  c \r"), (Words{"a", "b", "c"}));
    EXPECT_EQ(SplitWords(" \t"), Words{});
}

TEST(ScriptWords, QuotesMakeOneWordOfWhatTheyEnclose) {
    EXPECT_EQ(SplitWords("\"a b\" 'c \"d\"' ''"), (Words{"a b", "c \"d\"", ""}));
    EXPECT_EQ(SplitWords("it's"), Words{"it's"});
}

TEST(ScriptWords, ABackslashCountsInDoubleQuotesAlone) {
    EXPECT_EQ(SplitWords("\"a\\nb\\rc\\\"d\\\\e\""), Words{"a\nb\rc\"d\\e"});
    EXPECT_EQ(SplitWords("'a\\nb'"), Words{"a\\nb"});
    EXPECT_EQ(SplitWords("a\\nb"), Words{"a\\nb"});
}

TEST(ScriptWords, TheFirstWordIsTakenOffTheLine) {
    std::string line = "  menu  129 2 ";
    EXPECT_EQ(TakeWord(&line), "menu");
    EXPECT_EQ(line, "129 2");
    EXPECT_EQ(TakeWord(&line), "129");
    EXPECT_EQ(TakeWord(&line), "2");
    EXPECT_EQ(line, "");
    EXPECT_EQ(TakeWord(&line), "");
}

} // namespace
} // namespace quillon
