#include "viewers/viewers.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <utility>

#include "jobs/after_run.h"
#include "settings/settings.h"
#include "state/job_scope.h"
#include "state/job_state.h"
#include "support/recording_front.h"
#include "support/temporary_home.h"
#include "toolbox/processes.h"
#include "tools/processes.h"
#include "tools/scripts.h"
#include "tools/shell_commands.h"
#include "viewers/editor.h"
#include "viewers/quoting.h"

namespace quillon {
namespace {

std::string piped;
int pipe_status = 0;

// The shell's commands as they go into the pipe; nothing is run.
class Viewers : public ::testing::Test {
  protected:
    void SetUp() override {
        home_.preferences("SPACECHAR=31\nDEBUG=0\n");
        space_char = 31;
        piped.clear();
        pipe_status = 0;
        BSDpopenFunc = [](const char *command, const char *) {
            piped += std::string(command) + "\n";
            return std::tmpfile();
        };
        BSDfgets = std::fgets;
        BSDpclose = [](std::FILE *pipe) {
            std::fclose(pipe);
            return pipe_status;
        };
        inBackground = calleditor = 0;
    }
    void TearDown() override {
        BSDpopenFunc = nullptr;
        BSDfgets = nullptr;
        BSDpclose = nullptr;
        editor = viewpsexe = pdfview = nullptr;
        ed_creator = four("ttxt");
        haveosx = 1;
        for (BoundedBuffer *const path :
             {static_cast<BoundedBuffer *>(&mypsfile), static_cast<BoundedBuffer *>(&mypdffile),
              static_cast<BoundedBuffer *>(&editfile)})
            path->clear();
        dvipreview.clear();
    }

    std::string bundle(const std::string &name, const std::string &signature) const {
        return home_.silent_bundle("apps/" + name, signature);
    }
    test::TemporaryHome home_;
    test::RecordingFront front_;
};

TEST_F(Viewers, BytesThatAShellReadsAreQuoted) {
    BoundedString<32> quoted;
    EXPECT_EQ(quote_path("a\"b`c$d\\e'f!g", quoted), 1);
    EXPECT_EQ(quoted.view(), "a\\\"b\\`c\\$d\\\\e'f!g");
    BoundedString<4> narrow;
    EXPECT_EQ(quote_path("abc", narrow), 1);
    EXPECT_EQ(quote_path("abcd", narrow), 0);
    EXPECT_EQ(quote_path("ab$", narrow), 0);
    EXPECT_EQ(quote_path("abc$", narrow), 0);
}

TEST_F(Viewers, AWordOfACommandIsQuotedAsAShellNeedsIt) {
    BoundedString<32> word;
    const std::pair<const char *, const char *> words[] = {
        {"aZ09._-/+", "aZ09._-/+"}, {"a b", "'a b'"}, {"a'b", "'a'\\''b'"}, {"$HOME", "'$HOME'"}, {"", "''"}};
    for (const auto &[name, quoted] : words) {
        EXPECT_EQ(quote_word(name, word), 1);
        EXPECT_EQ(word.view(), quoted);
    }
    BoundedString<4> narrow;
    EXPECT_EQ(quote_word("abc", narrow), 1);
    EXPECT_EQ(quote_word("abcd", narrow), 0);
    EXPECT_EQ(quote_word("$", narrow), 1);
    EXPECT_EQ(quote_word("$$", narrow), 0);
    EXPECT_EQ(quote_word("'", narrow), 0);
}

TEST_F(Viewers, ADocumentIsOpenedWithZeroForSuccess) {
    const std::string document = home_.file("work/a $x.pdf");
    std::string unix_path = document;
    std::replace(unix_path.begin(), unix_path.end(), ' ', '\x1F');
    EXPECT_EQ(OpenDocInOSX("/usr/bin/viewer", unix_path.c_str()), 0);
    EXPECT_EQ(piped, "open -a \"/usr/bin/viewer\" \"" + home_.path("work") + "/a \\$x.pdf\" 2>&1\n");
    pipe_status = 256;
    EXPECT_EQ(OpenDocInOSX("/usr/bin/viewer", nullptr), 1);
}

TEST_F(Viewers, WithoutAnApplicationThePersonIsAskedToChooseOne) {
    for (const char *const app : {static_cast<const char *>(nullptr), ""}) {
        front_->printed.clear();
        EXPECT_EQ(OpenDocInOSX(app, "x"), 1);
        EXPECT_EQ(front_->printed,
                  "Please choose an editor with the \"Set apps\" item under the Options Menu.\n");
    }
    EXPECT_EQ(piped, "");
}

TEST_F(Viewers, EachViewerThatIsMissingIsAskedForAndKeptUnderItsOwnKey) {
    mypsfile.copy(home_.file("work/x.ps"));
    mypdffile.copy(home_.file("work/x.pdf"));
    const std::string program = bundle("ps", "PSVW"), other = bundle("pdf", "PDVW");
    front_->answer = program;
    ViewPS();
    EXPECT_EQ(front_->prompt, "Find psglance");
    EXPECT_STREQ(get_str_resource("VIEWPS"), program.c_str());
    EXPECT_EQ(get_str_resource("PDFVIEW"), nullptr);
    EXPECT_EQ(piped, "open -a \"" + program + "\" \"" + home_.path("work/x.ps") + "\" 2>&1\n");
    piped.clear();
    front_->answer = other;
    ViewPdf();
    EXPECT_EQ(front_->prompt, "Find a pdf viewer");
    EXPECT_STREQ(get_str_resource("PDFVIEW"), other.c_str());
    EXPECT_EQ(piped, "open -a \"" + other + "\" \"" + home_.path("work/x.pdf") + "\" 2>&1\n");
    for (const char **const chosen : {&viewpsexe, &pdfview})
        std::free(const_cast<char *>(std::exchange(*chosen, nullptr)));
}

TEST_F(Viewers, WithoutADocumentNothingIsAsked) {
    ViewPS();
    ViewPdf();
    OpenDviFile("");
    EXPECT_EQ(front_->asked, 0);
    EXPECT_EQ(piped + front_->printed, "");
}

TEST_F(Viewers, ADocumentEventSaysWhatIsMissing) {
    const std::string app = bundle("viewer", "VIEW");
    EXPECT_EQ(LaunchAndSendODOC(nullptr, "/vol/x", 1), 0);
    EXPECT_EQ(LaunchAndSendODOC(app.c_str(), home_.path("work/none").c_str(), 1), 0);
    EXPECT_EQ(front_->printed, "Can't make filespec.\n");
    front_->printed.clear();
    EXPECT_EQ(LaunchAndSendODOC(home_.path("none.app").c_str(), home_.file("work/x").c_str(), 1), 0);
    EXPECT_EQ(front_->printed, "didlaunch = 0\n");
}

TEST_F(Viewers, AnApplicationIsLaunchedInFrontOrBehind) {
    const JobScope scope; // no script steps in the waits
    const std::string document = home_.file("work/x"), app = bundle("viewer", "VIEW");
    EXPECT_EQ(LaunchAndSendODOC(app.c_str(), document.c_str(), 0), 1);
    EXPECT_EQ(myLaunchStuff.launchControlFlags & launchDontSwitch, launchDontSwitch);
    EXPECT_EQ(KillApp(app.c_str()), procNotFound);
    EXPECT_EQ(LaunchAndSendODOC(app.c_str(), document.c_str(), 1), 1);
    EXPECT_EQ(myLaunchStuff.launchControlFlags & launchDontSwitch, 0);
    EXPECT_EQ(KillApp(app.c_str()), procNotFound);
    EXPECT_EQ(front_->printed, "");
}

TEST_F(Viewers, OnAnEarlierSystemThePreviewerIsTriedTwice) {
    const JobScope scope;
    haveosx = 0;
    const std::string app = bundle("dviview", "QVW8"), document = home_.file("work/x.dvi");
    dvipreview.copy(app);
    OpenDviFile(document.c_str());
    EXPECT_EQ(front_->printed, "");
    const std::string refused = "Can't make filespec.\n";
    const std::string twice = refused +
                              "An error occurred in either launching dviview\n"
                              "or sending an Apple Event to it.\nI'll try again.\n" +
                              refused;
    OpenDviFile(home_.path("work/none.dvi").c_str());
    EXPECT_EQ(front_->printed, twice + "An error occurred trying to open the dvifile.\n");
    front_->printed.clear();
    current_outputfile.copy(home_.path("work/none.dvi"));
    AutoViewDviFile();
    EXPECT_EQ(front_->printed, twice + "An error occurred trying to open dvifile.\n");
    current_outputfile.clear();
    EXPECT_EQ(KillApp(app.c_str()), procNotFound);
    EXPECT_EQ(piped, "");
}

TEST_F(Viewers, TheLineIsShownByTheCommandOfTheEditor) {
    home_.file("vol/x.tex");
    const auto command = [&](OSType creator, const char *path) {
        piped.clear();
        editor = path;
        ed_creator = creator;
        SetLineInEditorOSX(home_.path("vol/x.tex").c_str(), 7);
        return piped;
    };
    const std::string line = " +7 \"" + home_.path("vol/x.tex") + "\" 2>&1\n";
    EXPECT_EQ(command(four("R*ch"), "/apps/one"), "bbedit" + line);
    EXPECT_EQ(command(four("!Rch"), "/apps/one"), "edit" + line);
    EXPECT_EQ(command(four("ttxt"), "/apps/BBEdit.app"), "edit" + line);
    EXPECT_EQ(command(four("R*ch"), "/apps/BBEdit Lite.app"), "");
    EXPECT_EQ(command(four("ttxt"), "/apps/one"), "");
    EXPECT_EQ(command(four("ALFA"), "/apps/one"), "");
}

TEST_F(Viewers, OnAnEarlierSystemAnEditorThatCannotBeReachedIsSaid) {
    const JobScope scope;
    const std::string app = bundle("editor", "EDTR"), file = home_.file("work/x.tex");
    editor = app.c_str();
    editfile.copy(file);
    editlinenumber = 3;
    haveosx = 0;
    calleditor = 1;
    CallTheEditor();
    EXPECT_EQ(front_->printed, "editfile = " + file +
                                   "\nAn error has occurred while sending an Apple Event to the editor.\n"
                                   "\nUse any text editor to edit " +
                                   file + "\nat line number 3.\n");
    EXPECT_EQ(calleditor, 0);
    EXPECT_EQ(piped, "");
    EXPECT_EQ(KillApp(app.c_str()), procNotFound);
}

TEST_F(Viewers, OnAnEarlierSystemEveryStepThatFailsIsAFailure) {
    const JobScope scope;
    haveosx = 0;
    const std::string app = bundle("editor", "EDTR"), file = home_.file("work/x.tex");
    editfile.copy(file);
    EXPECT_EQ(OpenEditor(3), 0); // no editor
    editor = "";
    EXPECT_EQ(OpenEditor(3), 0);
    editor = app.c_str();
    editfile.copy(home_.path("work/none.tex"));
    EXPECT_EQ(OpenEditor(3), 0);
    editfile.copy(file);
    const std::string gone = home_.path("gone.app");
    editor = gone.c_str();
    EXPECT_EQ(OpenEditor(3), 0);
    EXPECT_EQ(front_->printed, "");
}

TEST_F(Viewers, AlphaIsToldTheGreatestLine) {
    const JobScope scope;
    editor = "/apps/one";
    ed_creator = four("ALFA");
    // Nobody of that signature runs, so the event goes nowhere.
    EXPECT_EQ(SetLineInEditorOSX("/vol/x.tex", INT32_MAX), 1);
    EXPECT_EQ(piped, "");
}

TEST_F(Viewers, TheScriptToAnEditorGoesToItsHfsPath) {
    callScript3("/vol/my\x1F"
                "apps/BBEdit",
                12);
    EXPECT_EQ(cmd.view(),
              "tell application \"vol:my apps:BBEdit\"\r\t\t\t\tselect display_line 12 of text window 1\r"
              "\t\t\tend tell\r");
}

} // namespace
} // namespace quillon
