// Which formats an engine looks for, and when the copy of one may be offered.
#include <gtest/gtest.h>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "common/field_files.h"
#include "support/temporary_home.h"
#include "toolhost/format_copies.h"

namespace toolhost {
namespace {

using quillon::test::TemporaryHome;
using Words = std::vector<std::string>;

// The searches as "progname/name", parted by blanks.
std::string searches(const Words &words, const std::string &main = "") {
    std::string text;
    for (const FormatSearch &search : format_searches("/usr/bin/pdftex", words, main)) {
        EXPECT_EQ(search.program, "/usr/bin/pdftex");
        text += (text.empty() ? "" : " ") + search.progname + "/" + search.name;
    }
    return text;
}

TEST(FormatSearches, GoByTheNameOfTheCommandAndByItsOptions) {
    EXPECT_EQ(searches({"pdflatex", "x.tex"}), "pdflatex/pdflatex");
    EXPECT_EQ(searches({"/opt/bin/pdflatex", "x.tex"}), "pdflatex/pdflatex");
    EXPECT_EQ(searches({"pdftex", "-progname=pdflatex", "x.tex"}), "pdflatex/pdflatex");
    EXPECT_EQ(searches({"pdftex", "-fmt=my", "x.tex"}), "my/my");
    EXPECT_EQ(searches({"pdftex", "-fmt", "my.fmt", "x.tex"}), "my/my");
    EXPECT_EQ(searches({"pdftex", "-progname=pdflatex", "-fmt=my", "x.tex"}), "pdflatex/my");
    EXPECT_EQ(searches({"pdftex", "&my", "x.tex"}), "my/my");
    EXPECT_EQ(searches({"pdftex", "-ini", "&my", "x.tex"}), "my/my");
    EXPECT_EQ(searches({"pdftex", "-ini", "x.ini"}), "");
    EXPECT_EQ(searches({"pdftex", "-fmt=/a/my", "x.tex"}), "");
    EXPECT_EQ(searches({"pdftex", "-fmt=./my", "x.tex"}), "");
    EXPECT_EQ(searches({"pdflatex", "-kpathsea-debug=2", "x.tex"}), "");
    EXPECT_EQ(searches({}), "");
}

TEST(FormatSearches, GoByTheFirstLineOfTheDocumentToo) {
    const TemporaryHome home;
    EXPECT_EQ(searches({"pdftex", "x"}, home.file("work/a.tex", "%&my\nx")), "pdftex/pdftex my/my");
    EXPECT_EQ(searches({"pdftex", "x"}, home.file("work/b.tex", "%& -8bit my -x\r\nx")),
              "pdftex/pdftex my/my");
    EXPECT_EQ(searches({"pdftex", "x"}, home.file("work/c.tex", "%&pdftex\n")), "pdftex/pdftex");
    EXPECT_EQ(searches({"pdftex", "x"}, home.file("work/d.tex", "%&-8bit\n&my\n")), "pdftex/pdftex");
    EXPECT_EQ(searches({"pdftex", "x"}, home.file("work/e.tex", "% &my\n")), "pdftex/pdftex");
    EXPECT_EQ(searches({"pdftex", "x"}, home.file("work/f.tex", "%&")), "pdftex/pdftex");
    EXPECT_EQ(searches({"pdftex", "x"}, home.file("work/g.tex", "%&/etc/my\n")), "pdftex/pdftex");
    EXPECT_EQ(searches({"pdftex", "x"}, home.path("work")), "pdftex/pdftex");
}

class FindCopy : public ::testing::Test {
  protected:
    void SetUp() override {
        original_ = home_.file("tree/my.fmt", "packed");
        cnf_ = home_.file("tree/texmf.cnf", "settings");
        stamp_ = stamp_of(original_);
        name_ = copy_name(original_, stamp_);
        copy_ = home_.file("cache/quillon/formats/" + name_ + "/my.fmt", "unpacked");
        ::chmod(home_.path("cache/quillon/formats/" + name_).c_str(), 0700);
        environment_ = {{"HOME", "/h"}, {"TEXMFHOME", "/t"}};
        write({name_, "8"});
    }
    // Writes down that the search finds the original, with the copy that COPY names.
    void write(const Words &copy, const std::string &end = "end") {
        Words fields = search_head(search_);
        fields.insert(fields.end(), {"variable", "TEXMFHOME", "-/t", "variable", "TEXMFVAR", "", "place",
                                     cnf_, stamp_of(cnf_), "place", home_.path("tree/none"), "-", "original",
                                     original_, stamp_, "copy", copy[0], copy[1], end});
        const std::string path = search_file(search_, environment_);
        std::ofstream(path, std::ios::binary) << common::joined_fields(fields);
    }
    CopyState state() {
        found_ = {};
        return find_copy(search_, environment_, home_.path("work"), &found_);
    }

    TemporaryHome home_;
    FormatSearch search_ = {"/usr/bin/pdftex", "my", "my"};
    Variables environment_;
    FormatCopy found_;
    std::string original_, cnf_, stamp_, name_, copy_;
};

TEST_F(FindCopy, ThatIsThereAndWhoseSearchHolds) {
    ASSERT_EQ(state(), CopyState::ready);
    EXPECT_EQ(found_.original, original_);
    EXPECT_EQ(found_.folder + "/my.fmt", copy_);
    Variables environment = {};
    offer_copy(found_, environment);
    EXPECT_EQ(environment["TEXFORMATS"], found_.folder + ":");
    environment["TEXFORMATS"] = "/a:/b";
    offer_copy(found_, environment);
    EXPECT_EQ(environment["TEXFORMATS"], found_.folder + ":/a:/b");
}

TEST_F(FindCopy, NotByAnotherSearch) {
    search_.progname = "other";
    EXPECT_EQ(state(), CopyState::unknown);
    search_ = {"/opt/pdftex", "my", "my"};
    EXPECT_EQ(state(), CopyState::unknown);
    search_ = {"/usr/bin/pdftex", "my", "my"};
    environment_["TEXFORMATS"] = "/x:";
    EXPECT_EQ(state(), CopyState::unknown);
}

TEST_F(FindCopy, NotWhenAnythingThatTheSearchRestsOnHasChanged) {
    home_.file("tree/my.fmt", "packed anew");
    EXPECT_EQ(state(), CopyState::unknown);
    stamp_ = stamp_of(original_);
    write({name_, "8"});
    ASSERT_EQ(state(), CopyState::ready);
    home_.file("tree/texmf.cnf", "other settings");
    EXPECT_EQ(state(), CopyState::unknown);
    write({name_, "8"});
    ASSERT_EQ(state(), CopyState::ready);
    home_.file("tree/none");
    EXPECT_EQ(state(), CopyState::unknown);
    std::filesystem::remove(home_.path("tree/none"));
    ASSERT_EQ(state(), CopyState::ready);
    std::filesystem::remove(original_);
    EXPECT_EQ(state(), CopyState::unknown);
}

TEST_F(FindCopy, NotWhenAVariableHasChanged) {
    environment_["TEXMFVAR"] = "";
    EXPECT_EQ(state(), CopyState::unknown);
    environment_.erase("TEXMFVAR");
    environment_["TEXMFHOME"] = "/u";
    EXPECT_EQ(state(), CopyState::unknown);
    environment_.erase("TEXMFHOME");
    EXPECT_EQ(state(), CopyState::unknown);
    environment_["TEXMFHOME"] = "/t";
    environment_["UNRELATED"] = "x";
    EXPECT_EQ(state(), CopyState::ready);
}

TEST_F(FindCopy, NotWhereTheEngineSearchesByAnotherVariableOrIsToShowHow) {
    for (const char *const name : {"TEXFORMATS.my", "TEXFORMATS_my", "KPATHSEA_DEBUG"}) {
        Variables before = environment_;
        environment_[name] = "1";
        EXPECT_EQ(state(), CopyState::none) << name;
        environment_ = before;
    }
}

TEST_F(FindCopy, NotWhereTheWorkingFolderHasOne) {
    home_.file("work/my.fmt");
    EXPECT_EQ(state(), CopyState::none);
}

TEST_F(FindCopy, NotOfAnotherLength) {
    home_.file("cache/quillon/formats/" + name_ + "/my.fmt", "unpack");
    EXPECT_EQ(state(), CopyState::unknown);
    std::filesystem::remove(copy_);
    EXPECT_EQ(state(), CopyState::unknown);
}

TEST_F(FindCopy, NotOneThatOthersCanWrite) {
    const std::string folder = home_.path("cache/quillon/formats/" + name_);
    ::chmod(folder.c_str(), 0770);
    EXPECT_EQ(state(), CopyState::unknown);
    ::chmod(folder.c_str(), 0707);
    EXPECT_EQ(state(), CopyState::unknown);
    ::chmod(folder.c_str(), 0755);
    EXPECT_EQ(state(), CopyState::ready);
    if (::geteuid() == 0) {
        ASSERT_EQ(::chown(copy_.c_str(), 65534, 65534), 0);
        EXPECT_EQ(state(), CopyState::unknown);
    }
}

TEST_F(FindCopy, NotALink) {
    std::filesystem::rename(copy_, home_.path("elsewhere"));
    std::filesystem::create_symlink(home_.path("elsewhere"), copy_);
    EXPECT_EQ(state(), CopyState::unknown);
}

TEST_F(FindCopy, NoneForAnOriginalThatIsToBeUsed) {
    write({"", ""});
    EXPECT_EQ(state(), CopyState::none);
}

TEST_F(FindCopy, NotByASearchFileThatIsCutOrStrange) {
    write({name_, "8"}, "en");
    EXPECT_EQ(state(), CopyState::unknown);
    const std::string path = search_file(search_, environment_);
    for (const std::string &text : {std::string(), std::string("x"), std::string(5000, '\0')}) {
        std::ofstream(path, std::ios::binary) << text;
        EXPECT_EQ(state(), CopyState::unknown);
    }
    std::filesystem::remove(path);
    EXPECT_EQ(state(), CopyState::unknown);
    std::filesystem::create_directory(path);
    EXPECT_EQ(state(), CopyState::unknown);
}

TEST_F(FindCopy, NotUnderACacheFolderThatASearchPathCannotName) {
    ::setenv("XDG_CACHE_HOME", (home_.path("ca,che")).c_str(), 1);
    EXPECT_EQ(state(), CopyState::none);
}

TEST_F(FindCopy, TheListOfFilesNamesTheOriginal) {
    ASSERT_EQ(state(), CopyState::ready);
    const std::string list = home_.file("work/x.fls", "PWD /w\nINPUT /etc/texmf.cnf\nINPUT " + copy_ +
                                                          "\nINPUT " + copy_ + ".x\nOUTPUT x.log\n");
    name_originals(list, {found_});
    EXPECT_EQ(home_.read("work/x.fls"),
              "PWD /w\nINPUT /etc/texmf.cnf\nINPUT " + original_ + "\nINPUT " + copy_ + ".x\nOUTPUT x.log\n");
    name_originals(home_.path("work/none.fls"), {found_});
    EXPECT_FALSE(std::filesystem::exists(home_.path("work/none.fls")));
}

} // namespace
} // namespace toolhost
