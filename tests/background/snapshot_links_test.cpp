// The proof of source links: which files the preamble opens, and what keeps two runs from going together.
#include <gtest/gtest.h>

#include "background/snapshot_proof.h"
#include "support/temporary_home.h"
#include "toolhost/gzip.h"

namespace background {
namespace {

using quillon::test::TemporaryHome;
using Names = std::vector<std::string>;

class Links : public ::testing::Test {
  protected:
    Links() {
        call_.job = "doc";
        call_.folder = "/w";
        call_.main = "/w/doc.tex";
        shop_.passed_files = 4;
        write("bare", {"/w/./doc.tex", "/t/article.cls", "/w/./own.sty", "/s/out/doc.aux"},
              "x2,3:1,1\nx4,1:1,1\n");
        write("snap", {"/w/./doc.tex", "/dev/null", "/dev/null", "/dev/null", "/dev/null", "/s/out/doc.aux"},
              "x3,3:1,1\nx6,1:1,1\n");
    }
    void write(const std::string &run, const Names &files, const std::string &places) {
        std::string text = "SyncTeX Version:1\n";
        for (std::size_t i = 0; i < files.size(); i++)
            text += "Input:" + std::to_string(i + 1) + ":" + files[i] + "\n";
        const std::string middle = "!" + std::to_string(text.size()) + "\n" + places;
        home_.file(
            run + "/doc.synctex.gz",
            toolhost::gzip_of(text + middle + "!" + std::to_string(middle.size()) + "\nPost scriptum:\n"));
    }
    bool found() {
        bare_.output = home_.path("bare");
        snap_.output = home_.path("snap");
        bare_.list = "PWD /w\nINPUT /f/pdflatex.fmt\nINPUT doc.tex\nOUTPUT doc.log\n" + preamble_read_ +
                     "INPUT /s/out/doc.aux\n";
        texts_ = {};
        return find_links(shop_, bare_, snap_,
                          "PWD /w\nINPUT /s/snapshot.tex\nOUTPUT doc.log\nINPUT /s/lines.tex\n" + dump_read_,
                          &texts_);
    }

    TemporaryHome home_;
    toolhost::SnapshotCall call_;
    const toolhost::Variables none_;
    Workshop shop_ = {call_, none_, "/s", "", {}, [] { return true; }, "", 0};
    EngineRun bare_, snap_;
    toolhost::SnapshotTexts texts_;
    std::string preamble_read_ = "INPUT /t/article.cls\nINPUT /t/article.cls\nINPUT ./own.sty\n",
                dump_read_ = preamble_read_;
};

TEST_F(Links, ThePreamblesFilesAreFoundAndTheFileIsCompleted) {
    EXPECT_EQ(different_file(home_.path("bare"), home_.path("snap"), "doc"), "doc.synctex.gz");
    EXPECT_TRUE(found());
    EXPECT_EQ(texts_.passed_files, 4U);
    EXPECT_EQ(texts_.preamble_files, (Names{"/t/article.cls", "/w/./own.sty"}));
    EXPECT_EQ(different_file(home_.path("bare"), home_.path("snap"), "doc"), "");
    EXPECT_EQ(files_of_links(shop_, snap_), files_of_links(shop_, bare_));
}

TEST_F(Links, ADumpThatReadsOtherFilesIsNone) {
    dump_read_ = "INPUT /t/article.cls\nINPUT ./own.sty\n";
    EXPECT_FALSE(found());
    dump_read_ = preamble_read_ + "INPUT /s/out/doc.aux\nINPUT /t/more.sty\n";
    EXPECT_FALSE(found());
    // Names of files that are written count as little as the driver.
    dump_read_ = "OUTPUT doc.idx\n" + preamble_read_;
    EXPECT_TRUE(found());
}

TEST_F(Links, APreambleThatReadsItsOwnFileAgain) {
    preamble_read_ += "INPUT doc.tex\n";
    dump_read_ = preamble_read_;
    EXPECT_TRUE(found());
}

TEST_F(Links, WhatThePreambleReadsInTheScratchFolderHasNoNameElsewhere) {
    write("bare", {"/w/./doc.tex", "/t/article.cls", "/s/out/doc.own", "/s/out/doc.aux"}, "");
    EXPECT_FALSE(found());
}

TEST_F(Links, NumbersOfFilesThatDoNotFitAreNone) {
    for (const std::size_t passed : {0U, 2U, 6U, 2000U}) {
        shop_.passed_files = passed;
        EXPECT_FALSE(found()) << passed;
    }
    shop_.passed_files = 4;
    write("snap", {"/w/./doc.tex", "/dev/null", "/dev/null", "/dev/null", "/dev/null", "a", "b", "c", "d"},
          "");
    EXPECT_FALSE(found());
}

TEST_F(Links, FilesThatAreNotThereOrNotWholeAreNone) {
    home_.file("snap/doc.synctex.gz", "no such file");
    EXPECT_FALSE(found());
    EXPECT_EQ(different_file(home_.path("bare"), home_.path("snap"), "doc"), "doc.synctex.gz");
    ::unlink(home_.path("snap/doc.synctex.gz").c_str());
    EXPECT_FALSE(found());
    EXPECT_EQ(different_file(home_.path("bare"), home_.path("snap"), "doc"), "doc.synctex.gz");
    home_.file("bare/doc.synctex.gz", "");
    EXPECT_FALSE(found());
    EXPECT_TRUE(files_of_links(shop_, bare_).empty());
}

} // namespace
} // namespace background
