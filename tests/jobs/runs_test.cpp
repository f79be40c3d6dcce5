#include "jobs/tex_runs.h"

#include <gtest/gtest.h>

#include "jobs/after_run.h"
#include "menus/menus.h"
#include "support/recording_front.h"
#include "support/temporary_home.h"

namespace quillon {
namespace {

// Runs without any tool show what a run composes, prints and stores.
class Runs : public ::testing::Test {
  protected:
    void SetUp() override {
        home_.preferences("");
        pdfexe.format("%s/pdftex.app", home_.root().c_str());
        pdfeexe.format("%s/pdfetex.app", home_.root().c_str());
        for (std::uint8_t *const flag :
             {&useETeX, &addSpecials, &parseFirstLine, &use8bit, &doRecord, &doView})
            *flag = 0;
        for (BoundedBuffer *const text :
             {static_cast<BoundedBuffer *>(&format_name), static_cast<BoundedBuffer *>(&lastcommand),
              static_cast<BoundedBuffer *>(&lastdir), static_cast<BoundedBuffer *>(&editfile)})
            text->clear();
        calleditor = tex_error = 0;
        SetUpMenus();
    }
    int printed(const std::string &text) const { return front_->printed.find(text) != std::string::npos; }

    test::TemporaryHome home_;
    test::RecordingFront front_;
};

TEST_F(Runs, APathWithoutASlashIsBothNameAndFolder) {
    DoRecentPdfTeX("alone.tex");
    EXPECT_EQ(fname.view(), "alone.tex");
    EXPECT_EQ(curr_dir.view(), "alone.tex");
    EXPECT_TRUE(printed("\nProcessing -- pdftex alone.tex \nworking directory --  alone.tex\n"));
}

TEST_F(Runs, EveryWordIsFollowedByOneBlank) {
    useETeX = addSpecials = parseFirstLine = use8bit = doRecord = 1;
    format_name.copy("plain");
    DoTeX("/Users/a/doc/x.tex");
    EXPECT_TRUE(
        printed("Processing -- pdfetex -output-format=dvi -src-specials -parse-first-line -8bit -recorder "
                "-fmt=plain x.tex \nworking directory --  /Users/a/doc\n"));
    DoPdfTeX("/Users/a/doc/x.tex");
    EXPECT_TRUE(
        printed("Processing -- pdfetex -synctex=1 -parse-first-line -8bit -recorder -fmt=plain x.tex \n"));
}

TEST_F(Runs, AMissingEngineIsSaidAndTheRunStillEndsInOrder) {
    tex_error = 1;
    DoPdfTeX("/Users/a/doc/x.tex");
    EXPECT_TRUE(
        printed("I can't find " + home_.root() + "/pdftex.app. It should be in the binaries foldeer.\n"));
    EXPECT_EQ(tex_error, 1);
    EXPECT_STREQ(get_str_resource("TEXDIR"), "/Users/a/doc");
    EXPECT_EQ(lastcommand.view(), "pdftex x.tex ");
}

TEST_F(Runs, ACancelledChooserEndsTheJobSilently) {
    DoTeX(nullptr);
    EXPECT_EQ(front_->prompt, "Select a tex file");
    EXPECT_TRUE(fname.empty());
    EXPECT_EQ(front_->printed, "");
}

TEST_F(Runs, ARepeatedCommandIsChosenByItsFirstWord) {
    lastcommand.copy("pdftex x.tex");
    lastdir.copy("/Users/a");
    set_str_resource("PDFFILE", "old.pdf");
    DoMenuTeX(1);
    EXPECT_EQ(get_str_resource("PDFFILE"), nullptr); // emptied: a pdfTeX job
    lastcommand.copy("tex x.tex");
    DoMenuTeX(1);
    EXPECT_FALSE(printed("Processing -- tex"));
}

TEST_F(Runs, ARepeatWithoutACommandDoesNothing) {
    DoMenuPdfTeX(1);
    EXPECT_EQ(front_->printed, "");
}

TEST_F(Runs, APathThatDoesNotFitIsRefusedByName) {
    const std::string path = "/vol/" + std::string(300, 'd') + "/x.tex";
    DoRecentPdfTeX(path.c_str());
    EXPECT_TRUE(printed("The path \"" + path + "\" is too long for Quillon.\n"));
    EXPECT_FALSE(printed("Processing"));
}

TEST_F(Runs, TheOutputIsChosenByWhatTheEngineWrote) {
    const std::string dvi = home_.file("work/x.dvi"), pdf = home_.file("work/x.pdf");
    dvipreview.format("%s/dviview.app", home_.root().c_str());
    set_str_resource("DVIFILE", dvi.c_str());
    set_str_resource("PDFFILE", pdf.c_str());
    set_str_resource("PDFTEXOUTPUT", "2");
    SetViewFile();
    EXPECT_EQ(current_outputfile.view(), dvi);
    EXPECT_TRUE(printed("I can't find dviview. It should be in the binaries folder.\n"));
    EXPECT_FALSE(front_->asked);
    set_str_resource("PDFTEXOUTPUT", "1");
    SetViewFile();
    EXPECT_EQ(current_outputfile.view(), pdf);
    EXPECT_EQ(front_->prompt, "Find a pdf viewer");
}

TEST_F(Runs, NoOutputNumberNoViewer) {
    set_str_resource("PDFFILE", home_.file("work/x.pdf").c_str());
    set_str_resource("DVIFILE", home_.file("work/x.dvi").c_str());
    for (const char *const value : {"", "0", "x"}) {
        set_str_resource("PDFTEXOUTPUT", value);
        SetViewFile();
        EXPECT_TRUE(current_outputfile.empty()) << value;
    }
    EXPECT_EQ(front_->printed, "");
    EXPECT_FALSE(front_->asked);
}

TEST_F(Runs, AnOutputOfAnotherKindIsNotOpened) {
    set_str_resource("PDFTEXOUTPUT", "1");
    set_str_resource("PDFFILE", home_.file("work/x.xdv").c_str());
    SetViewFile();
    EXPECT_EQ(front_->printed, "");
    EXPECT_FALSE(front_->asked);
}

TEST_F(Runs, AnOutputThatIsGoneIsPassedOverInSilence) {
    set_str_resource("PDFTEXOUTPUT", "1");
    set_str_resource("PDFFILE", home_.path("work/gone.pdf").c_str());
    SetViewFile();
    EXPECT_TRUE(current_outputfile.empty());
    EXPECT_EQ(front_->printed, "");
}

TEST_F(Runs, TheErrorLineIsWrittenForEditorScripts) {
    editor = nullptr;
    calleditor = 1;
    set_str_resource("FILENAME", "/vol/x.tex");
    set_str_resource("LINENUMBER", "42");
    CallTheEditor();
    EXPECT_EQ(home_.read("run/quillon/tmpsrclinenumber"), "42\n");
    EXPECT_EQ(calleditor, 0);
    EXPECT_EQ(front_->prompt, "Find the text editor");
    EXPECT_TRUE(printed("\nUse any text editor to edit /vol/x.tex\nat line number 42.\n"));
}

TEST_F(Runs, WithoutAWishForTheEditorNothingHappens) {
    editfile.copy("kept");
    set_str_resource("FILENAME", "/vol/x.tex");
    CallTheEditor();
    EXPECT_EQ(editfile.view(), "kept");
    EXPECT_EQ(front_->printed, "");
}

TEST_F(Runs, WithoutFileOrLineTheOldOnesStay) {
    editor = nullptr;
    editfile.copy("/vol/old.tex");
    editlinenumber = 9;
    calleditor = 1;
    CallTheEditor();
    EXPECT_TRUE(printed("\nUse any text editor to edit /vol/old.tex\nat line number 9.\n"));
}

} // namespace
} // namespace quillon
