// These tests look at how a job is chosen and at the files and folders it starts with.
#include <gtest/gtest.h>

#include "jobs/after_run.h"
#include "jobs/tex_runs.h"
#include "menus/menus.h"
#include "support/recording_front.h"
#include "support/temporary_home.h"
#include "toolbox/files.h"

namespace quillon {
namespace {

class JobChoices : public ::testing::Test {
  protected:
    void SetUp() override {
        home_.preferences("SPACECHAR=31\nDEBUG=0\nPDFFILE=old.pdf\nDVIFILE=old.dvi\n");
        pdfexe.format("%s/none.app", home_.root().c_str());
        useETeX = doView = calleditor = tex_error = 0;
        format_name.clear();
        SetUpMenus();
    }
    void TearDown() override { doView = tex_error = 0; }
    int processed(const char *command) {
        front_->printed.clear();
        mycommand.copy(command);
        DoAppleScript();
        return front_->printed.find("\nProcessing -- " + std::string(command)) != std::string::npos;
    }

    test::TemporaryHome home_;
    test::RecordingFront front_;
};

TEST_F(JobChoices, EveryWordThatBeginsWithPdfIsAPdfTeXJob) {
    exit_status = 5;
    EXPECT_EQ(processed("pdf x"), 1);
    EXPECT_EQ(exit_status, 0);
    EXPECT_EQ(get_str_resource("PDFFILE"), nullptr);
    EXPECT_EQ(processed("pd x"), 0);
}

TEST_F(JobChoices, TheOldNamesOfETeXAreTeXJobs) {
    for (const char *const command : {"etex x", "elatex x"}) {
        exit_status = 5;
        EXPECT_EQ(processed(command), 1) << command;
        EXPECT_EQ(exit_status, 0);
        EXPECT_STREQ(get_str_resource("PDFFILE"), "old.pdf"); // which only a pdfTeX job empties
    }
}

TEST_F(JobChoices, ARepeatNeedsBothTheCommandAndItsFolder) {
    lastcommand.copy("pdftex x");
    lastdir.clear();
    DoMenuPdfTeX(1);
    EXPECT_EQ(front_->printed, "");
    lastcommand.clear();
    lastdir.copy(home_.path("work"));
    DoMenuTeX(1);
    EXPECT_EQ(front_->printed, "");
    lastdir.clear();
}

TEST_F(JobChoices, TheCreatorOfTheSourceIsKept) {
    const std::string path = home_.file("work/x.tex");
    FSSpec spec;
    FInfo info = {};
    ASSERT_EQ(FSPathMakeSpec(path.c_str(), &spec), noErr);
    ASSERT_EQ(FSpGetFInfo(&spec, &info), noErr);
    ASSERT_NE(info.fdCreator, 0u);
    default_creator = 1;
    DoPdfTeX(path.c_str());
    EXPECT_EQ(default_creator, info.fdCreator);
}

TEST_F(JobChoices, TheOutputIsViewedOnlyAfterARunWithoutErrorAndWhenAsked) {
    set_str_resource("PDFTEXOUTPUT", "1");
    for (int error = 0; error < 2; error++)
        for (int view = 0; view < 2; view++) {
            set_str_resource("PDFFILE", home_.file("work/x.pdf").c_str());
            tex_error = static_cast<std::uint8_t>(error);
            doView = static_cast<std::uint8_t>(view);
            front_->asked = 0;
            doAfterPdfTeX();
            EXPECT_EQ(front_->asked, view && !error) << error << view;
        }
}

} // namespace
} // namespace quillon
