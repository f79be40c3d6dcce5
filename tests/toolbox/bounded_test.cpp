// The bounded string at its limits: what fits exactly, what is one byte too long, and what lies in the buffer
// itself.
#include "toolbox/bounded.h"

#include <gtest/gtest.h>

#include <string>
#include <string_view>

using quillon::BoundedBuffer;
using quillon::BoundedString;

namespace {

// A buffer for seven bytes of text that holds TEXT.
class Bounded : public testing::Test {
  protected:
    void hold(std::string_view text) { ASSERT_EQ(buffer.copy(text), 1); }

    BoundedString<8> buffer;
};

// Buffers of one byte hold the empty text only.
class Smallest : public testing::Test {
  protected:
    BoundedString<1> buffer;
};

} // namespace

TEST_F(Bounded, IsEmptyAtFirst) {
    EXPECT_EQ(buffer.capacity(), 8u);
    EXPECT_EQ(buffer.length(), 0u);
    EXPECT_TRUE(buffer.empty());
    EXPECT_EQ(buffer.view(), "");
    EXPECT_STREQ(buffer.c_str(), "");
    EXPECT_EQ(buffer.data(), buffer.c_str());
}

TEST_F(Bounded, ClearForgetsTheText) {
    hold("seventh");
    EXPECT_FALSE(buffer.empty());
    buffer.clear();
    EXPECT_TRUE(buffer.empty());
    EXPECT_EQ(buffer.length(), 0u);
}

TEST_F(Bounded, StorageWithoutAFinalNulCountsAsFull) {
    for (std::size_t i = 0; i < buffer.capacity(); i++)
        buffer.data()[i] = 'x';
    EXPECT_EQ(buffer.length(), buffer.capacity());
    EXPECT_EQ(buffer.view(), "xxxxxxxx");
    EXPECT_EQ(buffer.append("y"), 0);
    EXPECT_EQ(buffer.append(""), 0);
    EXPECT_EQ(buffer.prepend(""), 0);
    EXPECT_EQ(buffer.append_format("%s", ""), 0);
    EXPECT_EQ(buffer.view(), "xxxxxxxx");
}

TEST_F(Bounded, CopyTakesWhatFitsExactly) {
    EXPECT_EQ(buffer.copy("seventh"), 1);
    EXPECT_EQ(buffer.length(), 7u);
    EXPECT_STREQ(buffer.c_str(), "seventh");
}

TEST_F(Bounded, CopyOfOneByteTooManyLeavesTheText) {
    hold("before");
    EXPECT_EQ(buffer.copy("8 bytes."), 0);
    EXPECT_EQ(buffer.view(), "before");
    EXPECT_EQ(buffer.copy(std::string(1000, 'x')), 0);
    EXPECT_EQ(buffer.view(), "before");
}

TEST_F(Bounded, CopyOfNothingEmpties) {
    hold("before");
    EXPECT_EQ(buffer.copy(""), 1);
    EXPECT_TRUE(buffer.empty());
    hold("before");
    EXPECT_EQ(buffer.copy(std::string_view()), 1);
    EXPECT_TRUE(buffer.empty());
}

TEST_F(Bounded, CopyTakesAPartOfItself) {
    hold("abcdefg");
    EXPECT_EQ(buffer.copy(buffer.view().substr(2)), 1);
    EXPECT_EQ(buffer.view(), "cdefg");
    EXPECT_EQ(buffer.copy(buffer.view().substr(0, 3)), 1);
    EXPECT_EQ(buffer.view(), "cde");
    EXPECT_EQ(buffer.copy(buffer.view()), 1);
    EXPECT_EQ(buffer.view(), "cde");
    EXPECT_EQ(buffer.copy(buffer.view().substr(3)), 1);
    EXPECT_TRUE(buffer.empty());
}

TEST_F(Bounded, CopyTakesItsStorageOnlyWithRoomForTheNul) {
    hold("abcdefg");
    EXPECT_EQ(buffer.copy(std::string_view(buffer.c_str(), buffer.capacity())), 0);
    EXPECT_EQ(buffer.view(), "abcdefg");
}

TEST_F(Bounded, AppendFillsToTheLastByte) {
    hold("abcd");
    EXPECT_EQ(buffer.append("efg"), 1);
    EXPECT_EQ(buffer.view(), "abcdefg");
    EXPECT_EQ(buffer.append(""), 1);
    EXPECT_EQ(buffer.append("h"), 0);
    EXPECT_EQ(buffer.view(), "abcdefg");
}

TEST_F(Bounded, AppendOfOneByteTooManyLeavesTheText) {
    hold("abcd");
    EXPECT_EQ(buffer.append("efgh"), 0);
    EXPECT_EQ(buffer.view(), "abcd");
}

TEST_F(Bounded, AppendToNothing) {
    EXPECT_EQ(buffer.append(std::string_view()), 1);
    EXPECT_TRUE(buffer.empty());
    EXPECT_EQ(buffer.append("8 bytes."), 0);
    EXPECT_TRUE(buffer.empty());
    EXPECT_EQ(buffer.append("seventh"), 1);
    EXPECT_EQ(buffer.view(), "seventh");
}

TEST_F(Bounded, AppendTakesAPartOfItself) {
    hold("abc");
    EXPECT_EQ(buffer.append(buffer.view()), 1);
    EXPECT_EQ(buffer.view(), "abcabc");
    EXPECT_EQ(buffer.append(buffer.view().substr(1, 2)), 0);
    EXPECT_EQ(buffer.view(), "abcabc");
    EXPECT_EQ(buffer.append(buffer.view().substr(5)), 1);
    EXPECT_EQ(buffer.view(), "abcabcc");
}

TEST_F(Bounded, PrependFillsToTheLastByte) {
    hold("efg");
    EXPECT_EQ(buffer.prepend("abcd"), 1);
    EXPECT_EQ(buffer.view(), "abcdefg");
    EXPECT_EQ(buffer.prepend(""), 1);
    EXPECT_EQ(buffer.prepend("x"), 0);
    EXPECT_EQ(buffer.view(), "abcdefg");
}

TEST_F(Bounded, PrependOfOneByteTooManyLeavesTheText) {
    hold("efg");
    EXPECT_EQ(buffer.prepend("abcde"), 0);
    EXPECT_EQ(buffer.view(), "efg");
}

TEST_F(Bounded, PrependToNothing) {
    EXPECT_EQ(buffer.prepend(std::string_view()), 1);
    EXPECT_TRUE(buffer.empty());
    EXPECT_EQ(buffer.prepend("8 bytes."), 0);
    EXPECT_TRUE(buffer.empty());
    EXPECT_EQ(buffer.prepend("seventh"), 1);
    EXPECT_EQ(buffer.view(), "seventh");
}

TEST_F(Bounded, PrependTakesAPartOfItself) {
    hold("abc");
    EXPECT_EQ(buffer.prepend(buffer.view()), 1);
    EXPECT_EQ(buffer.view(), "abcabc");
    EXPECT_EQ(buffer.prepend(buffer.view().substr(4)), 0);
    EXPECT_EQ(buffer.view(), "abcabc");
    EXPECT_EQ(buffer.prepend(buffer.view().substr(5)), 1);
    EXPECT_EQ(buffer.view(), "cabcabc");
    hold("abcd");
    EXPECT_EQ(buffer.prepend(buffer.view().substr(1, 3)), 1);
    EXPECT_EQ(buffer.view(), "bcdabcd");
}

TEST_F(Bounded, FormatFillsToTheLastByte) {
    hold("before");
    EXPECT_EQ(buffer.format("%d-%s", 42, "four"), 1);
    EXPECT_EQ(buffer.view(), "42-four");
}

TEST_F(Bounded, FormatOfOneByteTooManyLeavesTheText) {
    hold("before");
    EXPECT_EQ(buffer.format("%d-%s", 42, "fives"), 0);
    EXPECT_EQ(buffer.view(), "before");
    EXPECT_EQ(buffer.format("%2000d", 1), 0);
    EXPECT_EQ(buffer.view(), "before");
}

TEST_F(Bounded, FormatOfNothingEmpties) {
    hold("before");
    EXPECT_EQ(buffer.format("%s", ""), 1);
    EXPECT_TRUE(buffer.empty());
}

TEST_F(Bounded, AppendFormatFillsToTheLastByte) {
    hold("ab");
    EXPECT_EQ(buffer.append_format("%03d%c%c", 7, 'x', 'y'), 1);
    EXPECT_EQ(buffer.view(), "ab007xy");
    EXPECT_EQ(buffer.append_format("%s", ""), 1);
    EXPECT_EQ(buffer.append_format("%d", 1), 0);
    EXPECT_EQ(buffer.view(), "ab007xy");
}

TEST_F(Bounded, AppendFormatOfOneByteTooManyLeavesTheText) {
    hold("ab");
    EXPECT_EQ(buffer.append_format("%06d", 7), 0);
    EXPECT_EQ(buffer.view(), "ab");
}

TEST_F(Bounded, CopyCutTakesWhatFitsAndSaysWhetherThatWasAll) {
    EXPECT_EQ(buffer.copy_cut("seventh"), 1);
    EXPECT_EQ(buffer.view(), "seventh");
    EXPECT_EQ(buffer.copy_cut("8 bytes."), 0);
    EXPECT_EQ(buffer.view(), "8 bytes");
    EXPECT_EQ(buffer.copy_cut(""), 1);
    EXPECT_TRUE(buffer.empty());
}

TEST_F(Bounded, CutShortensAndNeverLengthens) {
    hold("abcdefg");
    buffer.cut(7);
    EXPECT_EQ(buffer.view(), "abcdefg");
    buffer.cut(8);
    EXPECT_EQ(buffer.view(), "abcdefg");
    buffer.cut(1000);
    EXPECT_EQ(buffer.view(), "abcdefg");
    buffer.cut(3);
    EXPECT_EQ(buffer.view(), "abc");
    buffer.cut(5);
    EXPECT_EQ(buffer.view(), "abc");
    buffer.cut(0);
    EXPECT_TRUE(buffer.empty());
}

TEST_F(Bounded, ComparesWholeTexts) {
    hold("abc");
    EXPECT_TRUE(buffer == "abc");
    EXPECT_FALSE(buffer == "ab");
    EXPECT_FALSE(buffer == "abcd");
    EXPECT_FALSE(buffer == "abC");
    EXPECT_FALSE(buffer == "");
    EXPECT_TRUE(buffer != "abd");
    // A NUL ends the buffer's text, not the other's.
    EXPECT_FALSE(buffer == std::string_view("abc\0d", 5));
    EXPECT_FALSE(buffer == std::string_view("abc\0", 4));
}

TEST_F(Bounded, AnyBytesButNulAreText) {
    EXPECT_EQ(buffer.copy("\xff\xfe\r\n\t\x01"), 1);
    EXPECT_EQ(buffer.length(), 6u);
    EXPECT_EQ(buffer.copy(std::string_view("a\0b", 3)), 1);
    EXPECT_EQ(buffer.view(), "a");
}

TEST_F(Bounded, AProcedureTakesABufferOfAnySize) {
    BoundedBuffer &any = buffer;
    EXPECT_EQ(any.copy("seventh"), 1);
    EXPECT_EQ(any.copy("8 bytes."), 0);
    BoundedString<9> larger;
    BoundedBuffer &other = larger;
    EXPECT_EQ(other.copy("8 bytes."), 1);
    EXPECT_EQ(other.copy(any.view()), 1);
    EXPECT_TRUE(other == any.view());
}

TEST_F(Smallest, HoldsNothing) {
    EXPECT_EQ(buffer.capacity(), 1u);
    EXPECT_EQ(buffer.copy(""), 1);
    EXPECT_EQ(buffer.append(""), 1);
    EXPECT_EQ(buffer.prepend(""), 1);
    EXPECT_EQ(buffer.format("%s", ""), 1);
    EXPECT_EQ(buffer.append_format("%s", ""), 1);
    EXPECT_EQ(buffer.copy("x"), 0);
    EXPECT_EQ(buffer.append("x"), 0);
    EXPECT_EQ(buffer.prepend("x"), 0);
    EXPECT_EQ(buffer.format("%c", 'x'), 0);
    EXPECT_EQ(buffer.append_format("%c", 'x'), 0);
    EXPECT_EQ(buffer.copy_cut("x"), 0);
    EXPECT_EQ(buffer.copy_cut(""), 1);
    buffer.cut(0);
    buffer.cut(1);
    EXPECT_TRUE(buffer.empty());
}
