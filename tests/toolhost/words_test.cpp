#include <gtest/gtest.h>

#include "toolhost/words.h"

using toolhost::split_words;
using Words = std::vector<std::string>;

TEST(Words, BlanksPartAndQuotesGroup) {
    EXPECT_EQ(split_words("pdftex -fmt=plain  \"a b.tex\" c\"d e\"f ", 202),
              (Words{"pdftex", "-fmt=plain", "a b.tex", "cd ef"}));
}

TEST(Words, TheSpaceByteAndByteThirtyAreTurnedBack) {
    EXPECT_EQ(split_words("x a\x1f"
                          "b c\x1e"
                          "d",
                          31),
              (Words{"x", "a b", "c:d"}));
    EXPECT_EQ(split_words("x a\xca"
                          "b",
                          202),
              (Words{"x", "a b"}));
}

TEST(Words, EmptyAndOpenQuotes) {
    EXPECT_EQ(split_words("", 31), Words{});
    EXPECT_EQ(split_words(" \t ", 31), Words{});
    EXPECT_EQ(split_words("a \"\" b", 31), (Words{"a", "", "b"}));
    EXPECT_EQ(split_words("a \"b c", 31), (Words{"a", "b c"}));
}

TEST(Words, OptionsInEitherForm) {
    const Words words = {"pdftex", "-ini", "--jobname=a b", "-output-directory", "out", "x.tex"};
    EXPECT_TRUE(toolhost::has_option(words, "ini"));
    EXPECT_FALSE(toolhost::has_option(words, "in"));
    EXPECT_EQ(toolhost::option_value(words, "jobname"), "a b");
    EXPECT_EQ(toolhost::option_value(words, "output-directory"), "out");
    EXPECT_EQ(toolhost::option_value(words, "job"), "");
    EXPECT_EQ(toolhost::option_value({}, "jobname"), "");
    EXPECT_FALSE(toolhost::has_option({}, "ini"));
}

TEST(Words, TheMainFile) {
    EXPECT_EQ(toolhost::main_file({"pdftex", "-ini", "*pdftex.ini"}), "pdftex.ini");
    EXPECT_EQ(toolhost::main_file({"pdftex", "-interaction", "batchmode", "&plain", "x.tex"}), "x.tex");
    EXPECT_EQ(toolhost::main_file({"pdftex", "\\relax"}), "");
    EXPECT_EQ(toolhost::main_file({"pdftex"}), "");
}

TEST(Words, AWordAloneIsNoOption) {
    EXPECT_EQ(toolhost::main_file({"pdftex", "-", "x.tex"}), "-");
    EXPECT_EQ(toolhost::main_file({"pdftex", "&plain", "x.tex"}), "x.tex");
    EXPECT_EQ(toolhost::main_file({"pdftex", "", "x.tex"}), "x.tex");
    EXPECT_FALSE(toolhost::has_option({"-ini", "x"}, "ini"));
}

TEST(Words, EveryOptionThatTakesAValueTakesTheNextWord) {
    for (const char *const option :
         {"-fmt", "--jobname", "-output-directory", "-output-format", "-progname", "-mem", "-interaction",
          "-mktex", "-no-mktex", "-output-comment", "-tcx", "-translate-file", "-kpathsea-debug"}) {
        EXPECT_EQ(toolhost::main_file({"pdftex", option, "value", "x.tex"}), "x.tex") << option;
        EXPECT_EQ(toolhost::main_file({"pdftex", option}), "") << option;
    }
    EXPECT_EQ(toolhost::main_file({"pdftex", "-fmt=plain", "x.tex"}), "x.tex");
}

TEST(Words, TheLastWordMayBeAValueAndNoName) {
    EXPECT_EQ(toolhost::option_value({"pdftex", "-jobname", "a"}, "jobname"), "a");
    EXPECT_EQ(toolhost::option_value({"pdftex", "-jobname"}, "jobname"), "");
    EXPECT_EQ(toolhost::option_value({"-jobname=a", "x"}, "jobname"), "");
}
