#include "toolhost/results.h"

#include <gtest/gtest.h>

#include <fcntl.h>
#include <sys/mman.h>
#include <sys/xattr.h>

#include "common/preferences.h"
#include "support/temporary_home.h"

using namespace toolhost;
using quillon::test::TemporaryHome;

namespace {

class Results : public testing::Test {
  protected:
    Results() : parser_(home_.path("work"), "") {
        run_.folder = home_.path("work");
        run_.words = {"pdftex", "x.tex"};
        run_.program = "pdftex";
        run_.space = 31;
        home_.file("config/Quillon Preferences", "");
    }
    std::string output() { return engine_output(run_, parser_); }
    // A file of the working folder that was written SECONDS after the start.
    std::string file(const std::string &name, int seconds, int nanoseconds = 0) {
        const std::string path = home_.file("work/" + name);
        run_.started = {1000, 500'000'000};
        const timespec times[2] = {{}, {1000 + seconds, 500'000'000 + nanoseconds}};
        EXPECT_EQ(::utimensat(AT_FDCWD, path.c_str(), times, 0), 0);
        return path;
    }
    std::string preferences() { return home_.read("config/Quillon Preferences"); }
    std::string creator(const std::string &path) {
        char text[8] = {};
        return ::getxattr(path.c_str(), "user.quillon.creator", text, sizeof text) < 0 ? "none" : text;
    }
    // What comes of an edit record with that text.
    ErrorPlace edit(const std::string &text) {
        const int record = memfd_create("edit", MFD_CLOEXEC);
        EXPECT_EQ(::write(record, text.data(), text.size()), static_cast<ssize_t>(text.size()));
        const ErrorPlace place = read_edit_record(record, run_.folder);
        ::close(record);
        return place;
    }

    TemporaryHome home_;
    EngineRun run_;
    RunParser parser_;
};

} // namespace

TEST_F(Results, TheNameThatTheEnginePrintsCounts) {
    parser_.feed("Output written on out.pdf (1 page).\n");
    EXPECT_EQ(output(), "");
    const std::string path = file("out.pdf", -100);
    file("x.dvi", 100);
    EXPECT_EQ(output(), path);
}

TEST_F(Results, TheOutputFolderCounts) {
    run_.words = {"pdftex", "-output-directory=sub", "x.tex"};
    parser_.feed("Output written on out.pdf (1 page).\n");
    const std::string path = file("sub/out.pdf", 1);
    EXPECT_EQ(output(), path);
}

TEST_F(Results, WithoutANameTheNewestFileOfTheJobCounts) {
    const std::string dvi = file("x.dvi", 1), pdf = file("x.pdf", 2);
    EXPECT_EQ(output(), pdf);
    file("x.pdf", -1);
    EXPECT_EQ(output(), dvi);
    file("x.dvi", 0, -20'000'000);
    EXPECT_EQ(output(), "");
    file("x.dvi", 0);
    EXPECT_EQ(output(), dvi);
    run_.words = {"pdftex", "-ini", "x.tex"};
    EXPECT_EQ(output(), "");
}

TEST_F(Results, TheJobsName) {
    const std::string named = file("job.pdf", 1), hidden = file(".x.pdf", 1), dotted = file("a.b.pdf", 1);
    run_.words = {"pdftex", "-jobname", "job", "x.tex"};
    EXPECT_EQ(output(), named);
    run_.words = {"pdftex", ".x"};
    EXPECT_EQ(output(), hidden);
    run_.words = {"pdftex", "/any/a.b.tex"};
    EXPECT_EQ(output(), dotted);
    run_.words = {"pdftex"};
    EXPECT_EQ(output(), "");
}

TEST_F(Results, AnEngineThatMadeNoPageWroteNothing) {
    file("x.pdf", 1);
    parser_.feed("No pages of output.\n");
    EXPECT_EQ(output(), "");
}

TEST_F(Results, TheOutputOfARunThatFailedIsNotViewedByItself) {
    write_results(run_, true, "/a.pdf", false, {});
    EXPECT_NE(preferences().find("PDFTEXOUTPUT=0\n"), std::string::npos) << preferences();
}

TEST_F(Results, TheOutputAndTheErrorAreWritten) {
    write_results(run_, true, "/a b.pdf", true, {"/c d.tex", 7, ""});
    EXPECT_EQ(preferences(), "DVIFILE=\nPDFFILE=/a\\x1fb.pdf\nPDFTEXOUTPUT=1\nFILENAME=/c\\x1f"
                             "d.tex\nLINENUMBER=7\n");
    write_results(run_, true, "/a.dvi", true, {});
    EXPECT_EQ(preferences(), "DVIFILE=/a.dvi\nPDFFILE=\nPDFTEXOUTPUT=2\nFILENAME=/c\\x1f"
                             "d.tex\nLINENUMBER=7\n");
    write_results(run_, true, "", true, {});
    EXPECT_NE(preferences().find("DVIFILE=\nPDFFILE=\nPDFTEXOUTPUT=0\n"), std::string::npos);
    home_.file("config/Quillon Preferences", "");
    write_results(run_, false, "/a.pdf", true, {"", 7, ""});
    EXPECT_EQ(preferences(), "");
}

TEST_F(Results, FormatsAreStampedWithTheirEngine) {
    const std::string path = file("x.fmt", 0);
    if (::setxattr(path.c_str(), "user.quillon.probe", "1", 1, 0) != 0)
        GTEST_SKIP() << "this file system keeps no attributes";
    stamp_format(run_, parser_);
    EXPECT_EQ(creator(path), "none");
    parser_.feed("Beginning to dump on file x.fmt\n");
    for (const auto &[word, program, expected] :
         {std::tuple("pdftex", "pdftex", "QXET"), std::tuple("/bin/pdfetex", "pdftex", "qXET"),
          std::tuple("etex", "pdftex", "qXET"), std::tuple("elatex", "tex", "qXET"),
          std::tuple("tex", "tex", "????")}) {
        run_.words[0] = word;
        run_.program = program;
        stamp_format(run_, parser_);
        EXPECT_EQ(creator(path), expected) << word;
    }
}

TEST_F(Results, TheEditRecord) {
    EXPECT_EQ(edit("12\na b.tex\n").line, 12);
    EXPECT_EQ(edit("12\na b.tex\n").file, home_.path("work/a b.tex"));
    EXPECT_EQ(edit("12\n\"a b.tex\"\n").file, home_.path("work/a b.tex"));
    EXPECT_EQ(edit("12\n/x\ny\n").file, "/x\ny");
    file("part.tex", 0);
    EXPECT_EQ(edit("3\npart\n").file, home_.path("work/part.tex"));
    EXPECT_EQ(edit("3\nother\n").file, home_.path("work/other"));
    file("part", 0);
    EXPECT_EQ(edit("3\npart\n").file, home_.path("work/part"));
    for (const char *const nothing : {"", "12", "12\n", "12\n\n"})
        EXPECT_FALSE(edit(nothing).known()) << nothing;
}
