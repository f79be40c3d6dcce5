#include <gtest/gtest.h>

#include <cstdlib>
#include <fstream>
#include <string>
#include <sys/stat.h>

#include "toolhost/run_parser.h"

using toolhost::RunParser;

class RunParserTest : public testing::Test {
  protected:
    void SetUp() override {
        char pattern[] = "/tmp/quillon-parser-XXXXXX";
        folder_ = mkdtemp(pattern);
        mkdir((folder_ + "/sub").c_str(), 0755);
        for (const char *name : {"main.tex", "my part.tex", "sub/deep.tex", "x"})
            std::ofstream(folder_ + "/" + name) << "x";
    }
    void TearDown() override { ASSERT_EQ(std::system(("rm -r " + folder_).c_str()), 0); }

    // Feeds TEXT in blocks of every size; what CHECK finds must not depend on it.
    template <typename Check> void parse(const std::string &text, Check check) {
        for (const std::size_t block : {std::size_t{1}, std::size_t{7}, text.size()}) {
            RunParser parser(folder_, folder_ + "/main.tex");
            for (std::size_t i = 0; i < text.size(); i += block)
                parser.feed(std::string_view(text).substr(i, block));
            parser.finish();
            check(parser);
        }
    }
    std::string folder_;
};

TEST_F(RunParserTest, TheErrorIsInTheFileOnTop) {
    parse("(./main.tex (./sub/deep.tex) (./my part.tex\n! Undefined control sequence.\n<argument> (a\n"
          "l.12 \\x\n       (\n? ",
          [&](const RunParser &parser) {
              EXPECT_EQ(parser.first_error().file, folder_ + "/my part.tex");
              EXPECT_EQ(parser.first_error().line, 12);
          });
}

TEST_F(RunParserTest, AFileThatWasClosedIsLeft) {
    parse("(./main.tex (./sub/deep.tex [1] [2{map}] (no file))\n! Wrong.\nl.3 x\n",
          [&](const RunParser &parser) {
              EXPECT_EQ(parser.first_error().file, folder_ + "/main.tex");
              EXPECT_EQ(parser.pages(), 2);
          });
}

TEST_F(RunParserTest, PagesCountBeforeTheirLineEnds) {
    RunParser parser(folder_, folder_ + "/main.tex");
    parser.feed("(./main.tex [1] [");
    EXPECT_EQ(parser.pages(), 1);
    parser.feed("2] [3");
    EXPECT_EQ(parser.pages(), 3);
    parser.feed("]\n[4]");
    EXPECT_EQ(parser.pages(), 4);
    parser.finish();
    EXPECT_EQ(parser.pages(), 4);
}

TEST_F(RunParserTest, QuotedNamesAndNamesThatDoNotExist) {
    parse("(\"./my part.tex\" (./none.tex\n! Wrong.\nl.3 x\n",
          [&](const RunParser &parser) { EXPECT_EQ(parser.first_error().file, folder_ + "/my part.tex"); });
}

TEST_F(RunParserTest, TheTextOfAnOverfullBoxOpensNothing) {
    parse("(./main.tex\nOverfull \\hbox (3.0pt too wide) in paragraph at lines 1--2\n"
          "\\OT1/cmr/m/n/10 (./sub/deep.tex )))\n! Wrong.\nl.3 x\n",
          [&](const RunParser &parser) { EXPECT_EQ(parser.first_error().file, folder_ + "/main.tex"); });
}

TEST_F(RunParserTest, FirstAndLastError) {
    parse("(./main.tex\n! One.\nl.3 x\n y\n! Two.\nl.9 x\n", [&](const RunParser &parser) {
        EXPECT_EQ(parser.first_error().line, 3);
        EXPECT_EQ(parser.last_error().line, 9);
    });
}

TEST_F(RunParserTest, FileLineErrorStyle) {
    parse("(./main.tex (./my part.tex\n./my part.tex:7: Undefined control sequence.\nl.7 \\x\n",
          [&](const RunParser &parser) {
              EXPECT_EQ(parser.first_error().file, folder_ + "/my part.tex");
              EXPECT_EQ(parser.first_error().line, 7);
          });
    parse("./none.tex:7: Undefined.\nat 12:30: tea\n",
          [&](const RunParser &parser) { EXPECT_FALSE(parser.first_error().known()); });
}

TEST_F(RunParserTest, AnErrorWithoutALineIsNotKnown) {
    parse("! I can't find file `x'.\n<*> x\n     \n! Emergency stop.\n<*> x\n",
          [&](const RunParser &parser) { EXPECT_FALSE(parser.first_error().known()); });
}

TEST_F(RunParserTest, OutputAndFormatNames) {
    parse("Output written on \"out (1)/my file.pdf\" (2 pages, 10 bytes).\r\n", [&](const RunParser &parser) {
        EXPECT_EQ(parser.output_name(), "out (1)/my file.pdf");
        EXPECT_FALSE(parser.said_no_output());
    });
    parse("Beginning to dump on file \"a b.fmt\"\n (preloaded format=a)\nNo pages of output.\n",
          [&](const RunParser &parser) {
              EXPECT_EQ(parser.dumped_format(), "a b.fmt");
              EXPECT_TRUE(parser.said_no_output());
          });
}

TEST_F(RunParserTest, FloodsAreBounded) {
    RunParser parser(folder_, "");
    const std::string flood(1 << 20, '(');
    for (int i = 0; i < 8; i++)
        parser.feed(flood);
    parser.feed("\n! Wrong.\nl.99999999999999999999 x\nl.0 x\n");
    EXPECT_FALSE(parser.first_error().known());
}

TEST_F(RunParserTest, TheTextOfAnUnderfullBoxOpensNothing) {
    parse("(./main.tex\nUnderfull \\hbox (badness 10000) in paragraph at lines 1--2\n"
          "[1](./sub/deep.tex )))\n! Wrong.\nl.3 x\n",
          [&](const RunParser &parser) {
              EXPECT_EQ(parser.first_error().file, folder_ + "/main.tex");
              EXPECT_EQ(parser.pages(), 0);
          });
}

TEST_F(RunParserTest, AFatalErrorDoesNotHideWhatFollows) {
    parse("(./main.tex\n!  ==> Fatal error occurred, no output PDF file produced!\n(./sub/deep.tex\n! "
          "Wrong.\nl.3 x\n",
          [&](const RunParser &parser) { EXPECT_EQ(parser.first_error().file, folder_ + "/sub/deep.tex"); });
    parse("(./main.tex\n./main.tex:4:  ==> Fatal error occurred\n(./sub/deep.tex\n! Wrong.\nl.3 x\n",
          [&](const RunParser &parser) { EXPECT_EQ(parser.last_error().file, folder_ + "/sub/deep.tex"); });
}

TEST_F(RunParserTest, TheFilesInAnErrorsTextAreNotOpened) {
    parse("(./main.tex\n! Wrong.\n(./sub/deep.tex\nl.3 x\n (./sub/deep.tex\n! Two.\nl.4 x\n",
          [&](const RunParser &parser) { EXPECT_EQ(parser.last_error().file, folder_ + "/main.tex"); });
}

TEST_F(RunParserTest, TheMessageAndLongLineNumbers) {
    parse("(./main.tex\n! Undefined control sequence.\nl.1234567890 \\x\n", [&](const RunParser &parser) {
        EXPECT_EQ(parser.first_error().line, 1234567890);
        EXPECT_EQ(parser.first_error().message, "Undefined control sequence.");
    });
    parse("./main.tex:7: Wrong: really.\n",
          [&](const RunParser &parser) { EXPECT_EQ(parser.first_error().message, "Wrong: really."); });
}

TEST_F(RunParserTest, AFileOfColonsIsNoErrorWithoutAName) {
    parse(":7: Wrong.\n", [&](const RunParser &parser) { EXPECT_FALSE(parser.first_error().known()); });
    std::ofstream(folder_ + "/a:1") << "x";
    parse("a:1:7: Wrong.\n", [&](const RunParser &parser) {
        EXPECT_EQ(parser.first_error().file, folder_ + "/a:1");
        EXPECT_EQ(parser.first_error().line, 7);
    });
}
