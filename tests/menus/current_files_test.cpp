#include "menus/current_files.h"

#include <gtest/gtest.h>

#include "menus/menus.h"
#include "menus/recent_files.h"
#include "support/recording_front.h"
#include "support/temporary_home.h"

namespace quillon {
namespace {

class CurrentFiles : public ::testing::Test {
  protected:
    void SetUp() override {
        home_.preferences("SPACECHAR=31\n");
        space_char = 31;
        SetUpMenus();
        lastcommand.clear();
    }
    std::string item(std::int16_t number) const {
        BoundedString<1024> text;
        GetMenuItemText(fileMenu, number, text);
        return text.c_str();
    }
    std::string setting(const char *key) const {
        const char *const value = get_str_resource(key);
        return value ? value : "(none)";
    }
    std::string work() const { return home_.path("work"); }

    test::TemporaryHome home_;
    test::RecordingFront front_;
};

TEST_F(CurrentFiles, TheSourceOfACommandLineBecomesCurrentAndHeadsTheRecentFiles) {
    home_.file("work/paper.tex");
    NewSetTeXFile("latex paper.tex", work().c_str());
    EXPECT_EQ(setting("TEXFILE"), work() + "/paper.tex");
    EXPECT_EQ(RecentFile[1].view(), work() + "/paper.tex");
}

TEST_F(CurrentFiles, NoExtensionIsAddedToTheSource) {
    home_.file("work/paper.tex");
    NewSetTeXFile("latex paper", work().c_str());
    EXPECT_EQ(setting("LASTCOMMAND"), "latex paper");
    EXPECT_EQ(setting("LASTDIR"), work());
    EXPECT_EQ(setting("TEXFILE"), "(none)");
}

TEST_F(CurrentFiles, OptionsFormatsAndControlSequencesArePassedOver) {
    home_.file("work/x.tex");
    NewSetTeXFile("pdftex -interaction=nonstopmode &pdflatex \\input x.tex", work().c_str());
    EXPECT_EQ(setting("TEXFILE"), work() + "/x.tex");
}

TEST_F(CurrentFiles, OnlyTwentyWordsAreLookedAt) {
    home_.file("work/x.tex");
    std::string line = "pdftex";
    for (int i = 0; i < 18; i++)
        line += " -opt";
    NewSetTeXFile((line + " x.tex").c_str(), work().c_str());
    EXPECT_EQ(setting("TEXFILE"), work() + "/x.tex");
    set_str_resource("TEXFILE", "");
    NewSetTeXFile((line + " -opt x.tex").c_str(), work().c_str());
    EXPECT_EQ(setting("TEXFILE"), "(none)");
}

TEST_F(CurrentFiles, TheAuxNameIsCutAtTheLastDotOfTheWholePath) {
    home_.file("work/a/b.c/report");
    home_.file("work/a/b.aux");
    set_str_resource("TEXFILE", (work() + "/a/b.c/report").c_str());
    OldTeXFile();
    EXPECT_EQ(mybibfile.view(), work() + "/a/b.aux");
    EXPECT_EQ(item(8), "bibtex \"b.aux\"");
}

TEST_F(CurrentFiles, OutputItemsEndInABlankAndTheOthersDoNot) {
    home_.file("work/paper.tex");
    home_.file("work/paper.dvi");
    home_.file("work/paper.pdf");
    home_.file("work/paper.aux");
    set_str_resource("TEXFILE", (work() + "/paper.tex").c_str());
    OldTeXFile();
    EXPECT_EQ(item(2), "Typeset \"paper.tex\"");
    EXPECT_EQ(item(8), "bibtex \"paper.aux\"");
    EXPECT_EQ(item(10), "View \"paper.dvi\" ");
    EXPECT_EQ(item(11), "dvips \"paper.dvi\" ");
    EXPECT_EQ(item(13), "View");
    EXPECT_EQ(item(14), "ps2pdf");
    EXPECT_EQ(item(16), "View \"paper.pdf\" ");
}

TEST_F(CurrentFiles, BlanksAreRestoredInTheOutputItemsOnly) {
    home_.file("work/my paper.tex");
    home_.file("work/my paper.dvi");
    home_.file("work/my paper.aux");
    set_str_resource("TEXFILE", (work() + "/my\x1Fpaper.tex").c_str());
    OldTeXFile();
    EXPECT_EQ(item(2), "Typeset \"my\x1Fpaper.tex\"");
    EXPECT_EQ(item(8), "bibtex \"my\x1Fpaper.aux\"");
    EXPECT_EQ(item(10), "View \"my paper.dvi\" ");
}

TEST_F(CurrentFiles, WithoutASourceEveryItemShowsItsLabel) {
    set_str_resource("TEXFILE", (work() + "/gone.tex").c_str());
    OldTeXFile();
    EXPECT_TRUE(dotexfile.empty());
    EXPECT_EQ(item(2), "Typeset");
    EXPECT_EQ(item(8), "bibtex");
    EXPECT_EQ(item(16), "View");
}

TEST_F(CurrentFiles, AFileThatIsGoneClears) {
    home_.file("work/x.ps");
    SetPSFile((work() + "/x.ps").c_str());
    EXPECT_EQ(item(14), "ps2pdf \"x.ps\" ");
    std::filesystem::remove(home_.path("work/x.ps"));
    SetPSFile((work() + "/x.ps").c_str());
    EXPECT_TRUE(mypsfile.empty());
    EXPECT_EQ(item(14), "ps2pdf");
}

TEST_F(CurrentFiles, SetAllFilesLeavesThePdfFile) {
    home_.file("work/x.tex");
    home_.file("work/x.pdf");
    set_str_resource("TEXFILE", (work() + "/x.tex").c_str());
    mypdffile.copy("kept");
    SetAllFiles();
    EXPECT_EQ(mypdffile.view(), "kept");
    OldTeXFile1();
    EXPECT_EQ(mypdffile.view(), work() + "/x.pdf");
}

TEST_F(CurrentFiles, SetTeXFileStoresAndShows) {
    SetTeXFile("/vol/a.tex");
    EXPECT_EQ(setting("TEXFILE"), "/vol/a.tex");
    EXPECT_EQ(item(2), "Typeset \"a.tex\"");
}

} // namespace
} // namespace quillon
