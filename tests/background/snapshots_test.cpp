// The parts of snapshots that need no engine: what may be cut where, what was searched for, what two runs
// differ in, and what a note holds.
#include <gtest/gtest.h>

#include <sys/stat.h>
#include <unistd.h>

#include "background/snapshot_cut.h"
#include "background/snapshot_proof.h"
#include "background/snapshot_search.h"
#include "common/field_files.h"
#include "common/places.h"
#include "support/temporary_home.h"
#include "toolhost/snapshot_use.h"
#include "toolhost/snapshots.h"

namespace background {
namespace {

using quillon::test::TemporaryHome;
using toolhost::Preamble;
using toolhost::SnapshotCall;
using toolhost::SnapshotState;

class Snapshots : public ::testing::Test {
  protected:
    Preamble preamble(const std::string &text) {
        Preamble result;
        good_ = toolhost::read_preamble(home_.file("work/doc.tex", text), &result);
        return result;
    }
    std::string fill(const std::vector<std::string> &words, const std::string &name = "doc.tex") {
        call_ = {};
        return toolhost::fill_call("/usr/bin/pdftex", words, home_.path("work"), home_.path("work/" + name),
                                   &call_);
    }
    TemporaryHome home_;
    SnapshotCall call_;
    bool good_ = false;
};

TEST_F(Snapshots, ThePreambleEndsBeforeTheLineOfTheBody) {
    const Preamble found =
        preamble("\\documentclass{a}\r\n\\x % \\begin{document}\r\\y\n\\begin {document}z\n");
    EXPECT_TRUE(good_);
    EXPECT_EQ(found.text, "\\documentclass{a}\r\n\\x % \\begin{document}\r\\y\n");
    EXPECT_EQ(found.lines, (std::vector<std::size_t>{0, 19, 41}));
    for (const char *const text : {"", "\\begin{document}", "\\documentclass{a}\n\\\\begin{document}\n",
                                   "\\documentclass{a}\n\\beginning{document}\n"}) {
        preamble(text);
        EXPECT_FALSE(good_) << text;
    }
    preamble(std::string("\\documentclass{a}\n\0\n\\begin{document}", 34));
    EXPECT_FALSE(good_);
    preamble(std::string(300000, '%') + "\n\\begin{document}");
    EXPECT_FALSE(good_);
}

TEST_F(Snapshots, CutsLieBetweenCommandsBehindTheClass) {
    const Preamble found = preamble("% a\n\\documentclass{a}\n\\a\n  \\b{%\n\\c}\nd\n\\e % {\n\\f\\{\n\\g\n"
                                    "\\begin{document}");
    EXPECT_EQ(cuts_of(found), (std::vector<std::size_t>{3, 4, 7, 8, 9}));
}

TEST_F(Snapshots, OnlyPlainRunsOfPdfTeXCount) {
    home_.file("work/doc.tex", "\\documentclass{a}");
    home_.file("work/first.tex", "%&other\n\\documentclass{a}");
    EXPECT_EQ(fill({"pdftex", "-fmt=pdflatex", "doc.tex"}), "");
    EXPECT_EQ(call_.job, "doc");
    EXPECT_EQ(call_.search.name, "pdflatex");
    EXPECT_EQ(fill({"pdflatex", "-interaction=nonstopmode", "-file-line-error", "--recorder", "doc"}), "");
    EXPECT_EQ(fill({"pdftex", "&pdflatex", "doc"}), "");
    EXPECT_EQ(fill({"pdflatex", "-shell-escape", "doc"}), "the option -shell-escape");
    EXPECT_EQ(fill({"pdflatex", "-interaction", "doc"}), "the option -interaction");
    EXPECT_EQ(fill({"pdflatex", "doc", "more"}), "more than one file");
    EXPECT_EQ(fill({"pdflatex", "\\input doc"}), "the name of the document");
    EXPECT_EQ(fill({"pdflatex", "./doc.tex"}), "the name of the document");
    EXPECT_EQ(fill({"pdflatex"}), "the name of the document");
    EXPECT_EQ(fill({"pdflatex", "first"}, "first.tex"), "the format that it asks for");
    EXPECT_EQ(fill({"pdflatex", "-fmt=/x/pdflatex", "doc"}), "the format that it asks for");
    EXPECT_EQ(toolhost::fill_call("/usr/bin/luatex", {"lualatex", "doc"}, "/", "/doc.tex", &call_),
              "the engine is not pdfTeX");
}

TEST_F(Snapshots, VariablesOfASessionDoNotCount) {
    EXPECT_EQ(toolhost::seen_environment(
                  {{"DISPLAY", ":0"}, {"XDG_SEAT", "x"}, {"TEXINPUTS", "a:"}, {"HOME", "b"}}),
              "HOME=b\nTEXINPUTS=a:\n");
}

TEST_F(Snapshots, NamesAreFoundWithoutRegardToCase) {
    home_.file("work/A.cfg", "");
    home_.file("work/b.cfg", "");
    EXPECT_EQ(toolhost::found_names({home_.path("work"), {"a.cfg", "c.cfg"}}), "A.cfg/");
    EXPECT_EQ(toolhost::found_names({home_.path("none"), {"a.cfg"}}), "");
    EXPECT_EQ(toolhost::folded("\xc3\xa9"
                               "Ab"),
              "ab");
}

TEST_F(Snapshots, AStampTellsAFileThatGotItsOldTimeBack) {
    const std::string path = home_.file("work/x", "a");
    const std::string before = toolhost::snapshot_stamp(path);
    EXPECT_EQ(toolhost::snapshot_stamp(path), before);
    // The time of change moves on with the clock of the file system, which is coarse.
    while (toolhost::snapshot_stamp(path) == before)
        ::chmod(path.c_str(), 0600);
    EXPECT_EQ(toolhost::snapshot_stamp(home_.path("none")), "-");
}

TEST_F(Snapshots, SearchesAreReadFromWhatTheEngineSays) {
    home_.folder("tree/tex/deep");
    home_.file("tree/tex/deep/x.sty", "");
    home_.file("work/local.cfg", "");
    const std::string path = ".:" + home_.path("tree") + "/tex//:" + home_.path("flat") + ":!!/usr/share";
    const std::string said =
        "kdebug:kpse_find_file: searching for x.fmt of type fmt (from texmf.cnf)\n"
        "kdebug:start generic search(files=[x.fmt], must_exist=1, find_all=0, path=/formats)\n"
        "kdebug:kpse_find_file: searching for Local.cfg of type tex (from texmf.cnf)\n"
        "kdebug:start generic search(files=[Local.cfg.tex Local.cfg], must_exist=0, find_all=0, path=" +
        path +
        ")\nkdebug:kpse_find_file: searching for /scratch/lines.tex of type tex (from texmf.cnf)\n"
        "kdebug:start generic search(files=[/scratch/lines.tex], must_exist=0, find_all=0, path=/own)\n";
    toolhost::SnapshotGround ground;
    EXPECT_EQ(add_searches(said, home_.path("work"), {"/scratch/"}, &ground), "");
    std::vector<std::string> places;
    for (const auto &[place, stamp] : ground.places)
        places.push_back(place);
    EXPECT_EQ(places, (std::vector<std::string>{home_.path("flat"), home_.path("tree/tex"),
                                                home_.path("tree/tex/deep")}));
    ASSERT_EQ(ground.names.size(), 1U);
    EXPECT_EQ(ground.names[0].first.names, (std::vector<std::string>{"local.cfg", "local.cfg.tex"}));
    EXPECT_EQ(ground.names[0].second, "local.cfg/");
    EXPECT_TRUE(toolhost::still_holds(ground));
    home_.file("work/LOCAL.cfg.tex", "");
    EXPECT_FALSE(toolhost::still_holds(ground));
}

TEST_F(Snapshots, SearchesThatCannotBeFollowedAreRefused) {
    const std::string head = "kdebug:kpse_find_file: searching for ",
                      tail = " of type tex (from texmf.cnf)\n";
    const auto with = [&](const std::string &name, const std::string &path) {
        toolhost::SnapshotGround ground;
        return add_searches(head + name + tail + "kdebug:start generic search(files=[" + name +
                                "], must_exist=0, find_all=0, path=" + path + ")\n",
                            home_.path("work"), {}, &ground);
    };
    EXPECT_EQ(with("a", "."), "");
    EXPECT_EQ(with("a b", "."), "it looks for a file with a blank in its name");
    EXPECT_EQ(with("|ls", "."), "it reads what a program prints");
    EXPECT_EQ(with("a", ".//"), "its search path has all folders below a relative one");
    EXPECT_EQ(with("a", "/x//y//"), "its search path has folders in the middle of an element");
    toolhost::SnapshotGround ground;
    EXPECT_EQ(add_searches("kpathsea: Running mktextfm x\n", "/", {}, &ground), "it makes a font");
    EXPECT_EQ(add_searches("runpopen command not allowed: x\n", "/", {}, &ground),
              "it reads what a program prints");
}

class Proof : public Snapshots {
  protected:
    bool texts(const std::string &bare, const std::string &snap) {
        const std::string head = "This (preloaded format=pdflatex 2026.1.1) X\n",
                          other = "This (preloaded format=doc 2000.1.1) X\n",
                          list = "PWD /\nINPUT /f/pdflatex.fmt\nINPUT a.sty\nINPUT b.aux\n",
                          short_list = "PWD /\nINPUT /s/pdflatex.fmt\nINPUT b.aux\n";
        EngineRun first, second;
        first.said = bare;
        second.said = snap;
        first.log = head + bare + "\nHere is how much of TeX's memory 1";
        second.log = other + snap + "\nHere is how much of TeX's memory 2";
        first.list = list;
        second.list = short_list;
        texts_ = {};
        call_.search.name = "pdflatex";
        call_.job = "doc";
        const toolhost::Variables none;
        const Workshop shop = {call_, none, "/s", "", {}, [] { return true; }, ""};
        return find_texts(shop, first, second, "/s", &texts_);
    }
    toolhost::SnapshotTexts texts_;
};

TEST_F(Proof, ThePreamblesPieceIsFound) {
    const std::string marks = std::string(toolhost::snapshot_begins) + "again\n" + toolhost::snapshot_ends;
    EXPECT_TRUE(texts("head (a.sty) (b.aux)", "head\n" + marks + "(b.aux)"));
    EXPECT_EQ(texts_.said, " (a.sty) ");
    EXPECT_TRUE(texts_.said_joins);
    EXPECT_EQ(texts_.logged, " (a.sty) ");
    EXPECT_EQ(texts_.banner, "(preloaded format=pdflatex 2026.1.1)");
    EXPECT_EQ(texts_.list, std::vector<std::string>{"INPUT a.sty"});
    EXPECT_EQ(texts_.list_at, 2U);
    EXPECT_TRUE(texts("head\n(a.sty) (b.aux)", "head\n" + marks + "(b.aux)"));
    EXPECT_FALSE(texts_.said_joins);
}

TEST_F(Proof, ADifferenceElsewhereIsNone) {
    const std::string marks = std::string(toolhost::snapshot_begins) + toolhost::snapshot_ends;
    EXPECT_FALSE(texts("head (a.sty) (b.aux)", "Head\n" + marks + "(b.aux)"));
    EXPECT_FALSE(texts("head (a.sty) (b.aux)", "head\n" + marks + "(c.aux)"));
    EXPECT_FALSE(texts("head (a.sty)", "head"));
    EXPECT_FALSE(texts("head (a.sty)", std::string("head\n") + toolhost::snapshot_begins));
}

TEST_F(Proof, FilesAreComparedByTheirBytes) {
    for (const char *const folder : {"one", "two"}) {
        home_.file(std::string(folder) + "/doc.pdf", "same");
        home_.file(std::string(folder) + "/doc.log", folder);
        home_.file(std::string(folder) + "/parts/a.aux", "same");
    }
    const auto different = [&] { return different_file(home_.path("one"), home_.path("two"), "doc"); };
    EXPECT_EQ(different(), "");
    home_.file("two/parts/a.aux", "Same");
    EXPECT_EQ(different(), "parts/a.aux");
    home_.file("two/parts/a.aux", "same");
    home_.file("two/new", "");
    EXPECT_EQ(different(), "new");
}

TEST_F(Proof, WhatARunSaysIsPutTogetherHoweverItIsCut) {
    const std::string whole =
        std::string("head\n") + toolhost::snapshot_begins + toolhost::snapshot_ends + "tail";
    toolhost::SnapshotTexts piece;
    piece.said = " (a.sty) ";
    piece.said_joins = true;
    for (std::size_t cut = 0; cut <= whole.size(); cut++) {
        toolhost::SnapshotOutput output;
        output.begin(piece);
        std::string said = output.take(whole.substr(0, cut));
        said += output.take(whole.substr(cut));
        EXPECT_EQ(said + output.finish(), "head (a.sty) tail") << cut;
    }
    toolhost::SnapshotOutput other;
    other.begin(piece);
    EXPECT_EQ(other.take("no start") + other.finish(), "no start");
    other.begin(piece);
    const std::string much(20000, 'x');
    EXPECT_EQ(other.take(much), much);
    EXPECT_FALSE(other.looks());
}

TEST_F(Proof, TheListNamesTheFormatAndWhatThePreambleReads) {
    const toolhost::Snapshot snapshot = {"/cache/doc-1", "/formats/pdflatex.fmt", "", ""};
    toolhost::SnapshotTexts piece;
    piece.list_at = 2;
    piece.start = {"OUTPUT doc.idx"};
    piece.list = {"INPUT a.sty", "OUTPUT doc.idx"};
    const std::string path =
        home_.file("work/doc.fls", "PWD /\nINPUT /cache/doc-1/pdflatex.fmt\nOUTPUT doc.idx\nINPUT b.aux\n");
    EXPECT_TRUE(toolhost::complete_list(path, snapshot, piece));
    EXPECT_EQ(home_.read("work/doc.fls"),
              "PWD /\nINPUT /formats/pdflatex.fmt\nINPUT a.sty\nOUTPUT doc.idx\nINPUT b.aux\n");
    // Another format was read: the run was an ordinary one.
    EXPECT_FALSE(toolhost::complete_list(path, snapshot, piece));
}

TEST_F(Proof, ANoteIsReadAsItWasWritten) {
    home_.file("work/doc.tex", "\\documentclass{a}\n\\begin{document}");
    ASSERT_EQ(fill({"pdftex", "-fmt=pdflatex", "doc"}), "");
    ASSERT_TRUE(common::make_private_folder(common::transcripts_folder()));
    ASSERT_TRUE(common::make_private_folder(common::snapshots_folder()));
    const toolhost::Variables environment = {{"HOME", home_.root()}};
    toolhost::SnapshotGround ground;
    ground.preamble = "\\documentclass{a}\n";
    ground.places.emplace_back(home_.path("none"), "-");
    const std::string folder = common::snapshots_folder() + "/doc-1";
    ASSERT_EQ(::mkdir(folder.c_str(), 0700), 0);
    ASSERT_TRUE(common::replace_file(folder + "/pdflatex.fmt", "format"));
    ASSERT_TRUE(toolhost::write_note(call_, environment, ground, "doc-1", "/f/pdflatex.fmt", ""));
    toolhost::Snapshot found;
    EXPECT_EQ(toolhost::find_snapshot(call_, environment, &found), SnapshotState::ready);
    EXPECT_EQ(found.folder, folder);
    EXPECT_EQ(found.original, "/f/pdflatex.fmt");
    EXPECT_EQ(toolhost::find_snapshot(call_, {{"HOME", "/other"}}, &found), SnapshotState::unknown);
    home_.file("none", "");
    EXPECT_EQ(toolhost::find_snapshot(call_, environment, &found), SnapshotState::unknown);
    ::unlink(home_.path("none").c_str());
    ASSERT_TRUE(toolhost::write_note(call_, environment, ground, "", "", "a reason"));
    EXPECT_EQ(toolhost::find_snapshot(call_, environment, &found), SnapshotState::refused);
    EXPECT_EQ(found.reason, "a reason");
}

} // namespace
} // namespace background
