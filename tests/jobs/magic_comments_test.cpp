#include "jobs/magic_comments.h"

#include <gtest/gtest.h>

#include "jobs/tex_runs.h"
#include "menus/menus.h"
#include "support/recording_front.h"
#include "support/temporary_home.h"

namespace quillon {
namespace {

// What the comments in TEXT say, and nothing else.
struct Said {
    std::string root, program;
};
Said parsed(const std::string &text, int whole = 1) {
    MagicComments comments;
    parse_magic_comments(text.data(), text.size(), whole, &comments);
    return {comments.root.c_str(), comments.program.c_str()};
}

TEST(MagicComments, EverySpellingIsUnderstood) {
    for (const char *text :
         {"% !TEX root = ../main.tex\n", "%!TeX root=../main.tex\n", "  %%  !tex ROOT  =  ../main.tex  \r",
          "\\documentclass{x}\r\n% !TEX root = ../main.tex"})
        EXPECT_EQ(parsed(text).root, "../main.tex") << text;
    EXPECT_EQ(parsed("% !TEX TS-program = xelatex\n").program, "xelatex");
    EXPECT_EQ(parsed("% !TEX program = lualatex\n% !TEX program = xelatex\n").program, "lualatex");
}

TEST(MagicComments, OtherLinesSayNothing) {
    for (const char *text : {"", "%", "% !TEX", "% !TEX root", "% !TEX root x.tex\n", "!TEX root = x.tex\n",
                             "% TEX root = x.tex\n", "x % !TEX root = x.tex\n", "% !TEX rooted = x.tex\n",
                             "% !TEX encoding = UTF-8\n", "% !TEX root =\n"})
        EXPECT_TRUE(parsed(text).root.empty()) << text;
}

TEST(MagicComments, ALineThatIsCutOffSaysNothing) {
    EXPECT_TRUE(parsed("% !TEX root = main.te", 0).root.empty());
    EXPECT_EQ(parsed("% !TEX root = main.te", 1).root, "main.te");
}

TEST(MagicComments, AValueThatDoesNotFitCountsAsNotThere) {
    EXPECT_TRUE(parsed("% !TEX root = " + std::string(256, 'x') + "\n").root.empty());
    EXPECT_EQ(parsed("% !TEX root = " + std::string(255, 'x') + "\n").root.size(), 255u);
}

// Documents in a temporary home. What a run composes is printed without any tool.
class Documents : public ::testing::Test {
  protected:
    void SetUp() override {
        home_.preferences("");
        pdfexe.format("%s/pdftex.app", home_.root().c_str());
        lualatexexe.format("%s/lualatex.app", home_.root().c_str());
        useETeX = addSpecials = parseFirstLine = use8bit = doRecord = doView = 0;
        magicComments = 1;
        exit_status = 0;
        format_name.copy("plain");
        SetUpMenus();
    }
    void TearDown() override { magicComments = 0; }
    std::string write(const std::string &name, const std::string &text) {
        return home_.file("work/" + name, text);
    }
    // Typesets the file at PATH; the command line and the folder that were printed, or what was said instead.
    std::string typeset(const std::string &path) {
        front_->printed.clear();
        DoRecentPdfTeX(path.c_str());
        return front_->printed;
    }
    int runs(const std::string &path, const std::string &line, const std::string &folder) {
        const std::string said = typeset(path);
        const int as_expected =
            said.starts_with("\nProcessing -- " + line + "\nworking directory --  " + folder + "\n");
        EXPECT_TRUE(as_expected) << said;
        return as_expected;
    }
    std::string work() const { return home_.root() + "/work"; }

    test::TemporaryHome home_;
    test::RecordingFront front_;
};

TEST_F(Documents, AChapterIsTypesetThroughItsRoot) {
    std::filesystem::create_directories(work() + "/parts/deep");
    write("main.tex", "x\n");
    const std::string chapter = write("parts/one.tex", "% !TEX root = ../main.tex\n");
    EXPECT_TRUE(runs(chapter, "pdftex -fmt=plain main.tex ", work()));
    EXPECT_TRUE(runs(write("parts/deep/two.tex", "% !TEX root = ./../../main\n"),
                     "pdftex -fmt=plain main.tex ", work()));
    EXPECT_TRUE(runs(write("parts/deep/three.tex", "% !TEX root = ../one.tex\n"),
                     "pdftex -fmt=plain main.tex ", work()));
    EXPECT_TRUE(runs(write("four.tex", "% !TEX root = " + work() + "/main.tex\n"),
                     "pdftex -fmt=plain main.tex ", work()));
}

TEST_F(Documents, WithoutTheSettingCommentsAreComments) {
    magicComments = 0;
    const std::string path = write("x.tex", "% !TEX root = none.tex\n% !TEX program = sh\n");
    EXPECT_TRUE(runs(path, "pdftex -fmt=plain x.tex ", work()));
    EXPECT_EQ(procedure_of_command("lualatex x"), nullptr);
    EXPECT_EQ(procedure_of_command("biber x"), nullptr);
    magicComments = 1;
    EXPECT_NE(procedure_of_command("lualatex x"), nullptr);
    EXPECT_NE(procedure_of_command("xelatex x"), nullptr);
    EXPECT_NE(procedure_of_command("biber x"), nullptr);
    EXPECT_EQ(procedure_of_command("latex x"), nullptr);
    EXPECT_EQ(procedure_of_command("tex x"), nullptr);
}

TEST_F(Documents, ARootThatNamesItselfIsTypeset) {
    EXPECT_TRUE(runs(write("x.tex", "% !TEX root = x.tex\n"), "pdftex -fmt=plain x.tex ", work()));
    EXPECT_TRUE(runs(write("x.tex", "% !TEX root = ./x\n"), "pdftex -fmt=plain x.tex ", work()));
}

TEST_F(Documents, RootsInACircleAreSaid) {
    write("a.tex", "% !TEX root = b.tex\n");
    const std::string b = write("b.tex", "% !TEX root = a.tex\n");
    EXPECT_EQ(typeset(b), "The roots that \"b.tex\" leads to go round in a circle.\n");
    EXPECT_EQ(exit_status, 1);
}

TEST_F(Documents, AMissingRootIsSaid) {
    EXPECT_EQ(typeset(write("x.tex", "% !TEX root = none.tex\n")),
              "The root \"none.tex\" that \"x.tex\" names is not there.\n");
    EXPECT_EQ(exit_status, 1);
}

TEST_F(Documents, TheProgramChoosesTheLine) {
    const struct {
        const char *program, *line;
    } lines[] = {{"pdflatex", "pdftex -synctex=1 -fmt=pdflatex x.tex "},
                 {"pdftex", "pdftex -synctex=1 x.tex "},
                 {"latex", "pdftex -output-format=dvi -src-specials -fmt=latex x.tex "},
                 {"lualatex", "lualatex -synctex=1 x.tex "},
                 {"xelatex", "xelatex -synctex=1 x.tex "}};
    addSpecials = 1;
    for (const auto &[program, line] : lines)
        EXPECT_TRUE(runs(write("x.tex", std::string("% !TEX program = ") + program + "\n"), line, work()));
    useETeX = 1;
    EXPECT_TRUE(runs(write("x.tex", "% !TEX program = pdflatex\n"), "pdfetex -synctex=1 -fmt=pdflatex x.tex ",
                     work()));
}

TEST_F(Documents, TheRootsProgramCounts) {
    write("main.tex", "% !TEX program = lualatex\n");
    EXPECT_TRUE(runs(write("x.tex", "% !TEX root = main.tex\n% !TEX program = xelatex\n"),
                     "lualatex main.tex ", work()));
    write("main.tex", "\n");
    EXPECT_TRUE(runs(write("x.tex", "% !TEX root = main.tex\n% !TEX program = lualatex\n"),
                     "lualatex main.tex ", work()));
}

TEST_F(Documents, AProgramThatIsNoneOfOursRunsNothing) {
    for (const char *program :
         {"sh -c 'touch owned'", "tex", "pdflatex -shell-escape", "../pdflatex", "LuaLaTeX"}) {
        const std::string path = write("x.tex", std::string("% !TEX program = ") + program + "\n");
        EXPECT_EQ(typeset(path), "\"x.tex\" asks for the program \"" + std::string(program) +
                                     "\", which Quillon does not know.\n");
        EXPECT_EQ(exit_status, 1);
    }
}

TEST_F(Documents, OnlyTheFirstBytesAreRead) {
    const std::string comment = "% !TEX program = lualatex\n";
    EXPECT_TRUE(runs(write("x.tex", std::string(1023 - comment.size(), 'x') + "\n" + comment),
                     "lualatex x.tex ", work()));
    EXPECT_TRUE(runs(write("x.tex", std::string(1024 - comment.size(), 'x') + "\n" + comment + "y"),
                     "pdftex -fmt=plain x.tex ", work()));
    // The whole of a file that ends there.
    EXPECT_TRUE(
        runs(write("x.tex", std::string(1025 - comment.size(), '\n') + comment.substr(0, comment.size() - 1)),
             "lualatex x.tex ", work()));
}

} // namespace
} // namespace quillon
