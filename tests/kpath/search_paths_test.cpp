#include "kpath/search_paths.h"

#include <algorithm>

#include "files/search.h"
#include "kpath/utilities.h"
#include "support/recording_front.h"
#include "support/temporary_home.h"

using namespace quillon;
using namespace quillon::test;

namespace {

class SearchPaths : public testing::Test {
  protected:
    TemporaryHome home_;
    RecordingFront front_;
    using List = std::vector<std::string>;

    ~SearchPaths() override {
        supportFolder.copy("/tmp/none");
        for (HashList *const list : {&texinputsTable, &tfmTable, &vfTable, &type1Table, &psheadersTable})
            read_hash_table("none", list);
    }

    static List list(char **folders) {
        List found;
        for (; folders && *folders; folders++)
            found.push_back(*folders);
        return found;
    }
    List path_list(const std::string &value) {
        home_.preferences("TEXINPUTS=" + value + "\n");
        return list(initialize_path_list("TEXINPUTS", "."));
    }
    std::string find(const char *name, int kind) { return taken(kpse_find_file(name, kind, 1)); }
    void set_path(const char *key, const std::string &value, int slot) {
        home_.preferences(std::string(key) + "=" + value + "\n");
        setpaths(1u << slot);
    }
};

} // namespace

TEST_F(SearchPaths, UnsetVariableIsTheCurrentFolder) {
    home_.preferences("");
    setpaths(1u << 8);
    EXPECT_EQ(list(search_list(8)), List{"./"});
    home_.file("work/paper.tex");
    EXPECT_EQ(find("paper", 9), "./paper.tex");
}

TEST_F(SearchPaths, ColonAtAnEndStandsForTheDefault) {
    EXPECT_EQ(path_list(":/Vol/tex"), (List{"./", "/Vol/tex/"}));
    EXPECT_EQ(path_list("/Vol/tex:"), (List{"/Vol/tex/", "./"}));
    EXPECT_EQ(path_list("/Vol/a::/Vol/b"), (List{"/Vol/a/", "/Vol/b/"}));
    EXPECT_EQ(path_list(":"), List{"./"});
    EXPECT_EQ(taken(expand_default(nullptr, "d")), "d");
    EXPECT_EQ(taken(expand_default("", "d")), "");
    home_.preferences("");
    EXPECT_EQ(initialize_path_list("TEXINPUTS", ""), nullptr);
}

TEST_F(SearchPaths, TwoSlashesAddEveryFolderBelow) {
    for (const char *const folder : {"data/t/b/z", "data/t/A/y", "data/t/c d"})
        home_.folder(folder);
    home_.file("data/t/file");
    const std::string t = home_.path("data/t/");
    EXPECT_EQ(path_list(t + "/"), (List{t, t + "A/", t + "A/y/", t + "b/", t + "b/z/",
                                        t + "c\xca"
                                            "d/"}));
}

TEST_F(SearchPaths, FolderThatBeginsWithADotIsNotExpanded) {
    home_.folder("work/sub");
    doDebug = 1;
    EXPECT_EQ(path_list("./x//"), List{"./x/"});
    EXPECT_EQ(front_->printed, "\nUnable to search subdirectories of <./x/>\n");
}

TEST_F(SearchPaths, TwoSlashesBehindAFolderOfOneLetterCount) {
    EXPECT_EQ(path_list("x//"), List{"x/"});
}

TEST_F(SearchPaths, OnlyTheFirstCharacterOfAFolderCountsAsItsDot) {
    home_.folder("work/x/below");
    EXPECT_EQ(path_list(home_.path("work/x") + "//"),
              (List{home_.path("work/x/"), home_.path("work/x/below/")}));
    doDebug = 1;
    char **folders = nullptr;
    std::size_t count = 0;
    front_->printed.clear();
    mac_expand_subdir(&folders, &count, ".x");
    EXPECT_EQ(front_->printed, "\nUnable to search subdirectories of <.x>\n");
    EXPECT_EQ(count, 0u);
}

TEST_F(SearchPaths, AliasesOfFoldersAreExpandedOnlyWhenAskedFor) {
    home_.folder("data/t/real/in");
    home_.folder("data/else/deep");
    std::filesystem::create_directory_symlink(home_.path("data/else"), home_.path("data/t/link"));
    std::filesystem::create_directory_symlink(home_.path("data/t"), home_.path("data/else/back"));
    const std::string t = home_.path("data/t/"), e = home_.path("data/else/");
    EXPECT_EQ(path_list(t + "/"), (List{t, t + "real/", t + "real/in/"}));
    doAlias = 1;
    // The link back to where the walk began is not followed again.
    char **found = nullptr;
    std::size_t count = 0;
    mac_expand_subdir(&found, &count, t.c_str());
    List folders;
    for (std::size_t i = 0; i < count; i++)
        folders.push_back(taken(found[i]));
    std::free(found);
    EXPECT_EQ(folders, (List{e, e + "deep/", t + "real/", t + "real/in/"}));
}

TEST_F(SearchPaths, PathOverATreeIsExpandedWhenItsListIsAskedFor) {
    home_.folder("data/lazy/a");
    set_path("TEXINPUTS", home_.path("data/lazy") + "//", 8);
    // The path string is read at the start, and the folders are listed at the first use.
    home_.preferences("TEXINPUTS=/elsewhere\n");
    home_.folder("data/lazy/b");
    const std::string lazy = home_.path("data/lazy/");
    EXPECT_EQ(list(search_list(8)), (List{lazy, lazy + "a/", lazy + "b/"}));
    home_.folder("data/lazy/c");
    EXPECT_EQ(list(search_list(8)).size(), 3u);
    EXPECT_EQ(path_dirs[8], search_list(8));
}

TEST_F(SearchPaths, WhatIsSaidOfAPathIsSaidAtOnce) {
    doDebug = 1;
    set_path("TEXINPUTS", home_.path("data") + "//:./x//", 8);
    EXPECT_EQ(front_->printed, "\nUnable to search subdirectories of <./x/>\n");
}

TEST_F(SearchPaths, TenThousandEntriesInAFolder) {
    home_.folder("data/many");
    const std::string many = home_.path("data/many/"), one = home_.file("data/many/one");
    for (int i = 0; i < 10000; i++) {
        const std::string name = many + std::to_string(100000 + i);
        ASSERT_EQ(i % 20 == 0 ? ::mkdir(name.c_str(), 0755) : ::link(one.c_str(), name.c_str()), 0);
    }
    const List found = path_list(many + "/");
    ASSERT_EQ(found.size(), 501u);
    EXPECT_EQ(found[1], many + "100000/");
    EXPECT_EQ(found[500], many + "109980/");
    EXPECT_TRUE(std::is_sorted(found.begin(), found.end()));
}

TEST_F(SearchPaths, UnreadableFolderIsListedAndNotWalked) {
    home_.folder("data/closed/a/in");
    home_.folder("data/closed/b");
    const std::string t = home_.path("data/closed/");
    give_away(home_.path("data/closed/a"));
    ASSERT_EQ(::chmod(home_.path("data/closed/a").c_str(), 0), 0);
    EXPECT_EQ(as_ordinary_user([&] {
                  char **found = nullptr;
                  std::size_t count = 0;
                  mac_expand_subdir(&found, &count, t.c_str());
                  return count == 2 && found[0] == t + "a/" && found[1] == t + "b/" ? 0 : 1;
              }),
              0);
}

TEST_F(SearchPaths, FoldersWhoseNamesAreNoText) {
    home_.folder("data/bytes/caf\xe9");
    home_.folder("data/bytes/\xff\xfe");
    home_.file("data/bytes/caf\xe9/x.tex");
    space_char = 31;
    const std::string t = home_.path("data/bytes/");
    set_path("TEXINPUTS", t + "/", 8);
    EXPECT_EQ(list(search_list(8)), (List{t, t + "caf\xe9/", t + "\xff\xfe/"}));
    EXPECT_EQ(find("x", 9), t + "caf\xe9/x.tex");
}

TEST_F(SearchPaths, LoopOfLinksEndsAlsoWhenLinksAreFollowed) {
    home_.folder("data/loop/a/b");
    std::filesystem::create_directory_symlink("../..", home_.path("data/loop/a/b/up"));
    std::filesystem::create_directory_symlink(".", home_.path("data/loop/self"));
    std::filesystem::create_symlink("two", home_.path("data/loop/one"));
    std::filesystem::create_symlink("one", home_.path("data/loop/two"));
    const std::string t = home_.path("data/loop/");
    EXPECT_EQ(path_list(t + "/"), (List{t, t + "a/", t + "a/b/"}));
    doAlias = 1;
    char **found = nullptr;
    std::size_t count = 0;
    mac_expand_subdir(&found, &count, t.c_str());
    EXPECT_EQ(count, 2u);
    for (std::size_t i = 0; i < count; i++)
        std::free(found[i]);
    std::free(found);
}

TEST_F(SearchPaths, FoldersThatAllLeadToEachOtherAreWalkedOnce) {
    constexpr int folders = 12;
    for (int from = 0; from < folders; from++) {
        const std::string folder = home_.folder("data/web/" + std::to_string(from));
        for (int to = 0; to < folders; to++)
            std::filesystem::create_directory_symlink("../" + std::to_string(to),
                                                      folder + "/to" + std::to_string(to));
    }
    doAlias = 1;
    char **found = nullptr;
    std::size_t count = 0;
    mac_expand_subdir(&found, &count, home_.path("data/web").c_str());
    // Each folder is listed itself, and each walk of a folder adds at most the others.
    EXPECT_GE(count, static_cast<std::size_t>(folders));
    EXPECT_LE(count, static_cast<std::size_t>(folders + 2 * folders * folders));
    for (std::size_t i = 0; i < count; i++)
        std::free(found[i]);
    std::free(found);
}

TEST_F(SearchPaths, SettingsThatAreEmptyColonsOrTenThousandBytes) {
    EXPECT_EQ(path_list(""), List{"./"});
    EXPECT_EQ(path_list(":"), List{"./"});
    EXPECT_EQ(path_list(":::"), List{"./"});
    const std::string long_element = "/" + std::string(9999, 'd');
    EXPECT_EQ(path_list(long_element), List{long_element + "/"});
    EXPECT_EQ(path_list(long_element + "//"), List{long_element + "/"});
    EXPECT_NE(front_->printed.find("is too long."), std::string::npos);
    std::string many;
    for (int i = 0; i < 2000; i++)
        many += "/V/d" + std::to_string(i % 10) + ":";
    EXPECT_EQ(path_list(many).size(), 2001u); // and the default at its end
    set_path("TEXINPUTS", long_element, 8);
    EXPECT_EQ(find("x", 9), "(null)");
    EXPECT_EQ(find(std::string(10000, 'x').c_str(), 9), "(null)");
}

TEST_F(SearchPaths, TwoHundredLevelsAreExpanded) {
    std::string below = "data/t";
    for (int i = 0; i < 200; i++)
        below += "/d";
    home_.folder(below);
    EXPECT_EQ(path_list(home_.path("data/t") + "//").size(), 201u);
}

TEST_F(SearchPaths, FolderWhosePathDoesNotFitIsNamed) {
    std::string below = "data/t";
    for (int i = 0; i < 6; i++)
        below += "/" + std::string(180, 'd');
    home_.folder(below);
    const List found = path_list(home_.path("data/t") + "//");
    EXPECT_EQ(found.size(), 6u);
    EXPECT_NE(front_->printed.find("too long"), std::string::npos);
}

TEST_F(SearchPaths, TildeStandsForTheBinariesFolder) {
    home = "/TeX/bin";
    shortroot.copy("/TeX");
    EXPECT_EQ(path_list("~/../lib"), List{"/TeX/lib/"});
    EXPECT_EQ(path_list("~:~/x"), (List{"/TeX/bin/", "/TeX/bin/x/"}));
    EXPECT_EQ(taken(expand_tilde("~user/x")), "~user/x");
    home = nullptr;
    EXPECT_EQ(taken(expand_tilde("~/x")), "./x");
    EXPECT_EQ(taken(expand_tilde("~")), ".");
}

TEST_F(SearchPaths, SamePathIsExpandedOnce) {
    home_.folder("data/once/a");
    const std::string value = home_.path("data/once//");
    home_.preferences("TEXINPUTS=" + value + "\nMFINPUTS=" + value + "\n");
    char **const first = initialize_path_list("TEXINPUTS", ".");
    home_.folder("data/once/b");
    EXPECT_EQ(initialize_path_list("MFINPUTS", "."), first);
    EXPECT_EQ(list(first).size(), 2u);
}

TEST_F(SearchPaths, FallbackIsTakenOnlyWhenTheFirstIsNotSet) {
    home_.preferences("TEXFONTS=/Vol/fonts\nTEXINPUTS=/Vol/in\n");
    setpaths(0x7FFFFFF);
    EXPECT_EQ(list(search_list(1)), List{"/Vol/in/"});
    EXPECT_EQ(list(search_list(2)), List{"/Vol/fonts/"});
    EXPECT_EQ(list(search_list(6)), List{"/Vol/fonts/"});
    EXPECT_EQ(list(search_list(11)), List{"/Vol/fonts/"});
    EXPECT_EQ(list(search_list(0)), List{"./"});
    EXPECT_EQ(path_dirs[22], nullptr);
    home_.preferences("TEXFONTS=/Vol/fonts\nTEXPKS=/Vol/pk\nBSTINPUTS=/Vol/bst\n");
    setpaths(1u << 6 | 1u << 1);
    EXPECT_EQ(list(search_list(6)), List{"/Vol/pk/"});
    EXPECT_EQ(list(search_list(1)), List{"/Vol/bst/"});
}

TEST_F(SearchPaths, OnlyTheSlotsOfTheMaskAreFilled) {
    home_.preferences("");
    setpaths(0x04108180);
    for (int slot = 0; slot < search_path_slots; slot++)
        EXPECT_EQ(path_dirs[slot] != nullptr,
                  slot == 7 || slot == 8 || slot == 15 || slot == 20 || slot == 26);
}

TEST_F(SearchPaths, SlotThatWasNotFilledFindsNothing) {
    home_.file("work/x.bib");
    EXPECT_EQ(find("x", 7), "(null)");
    EXPECT_EQ(find("x.bib", 7), "(null)");
}

TEST_F(SearchPaths, DirectNamesDoNotUseTheList) {
    home_.file("data/in/x");
    home_.file("work/y");
    home_.preferences("TEXINPUTS=" + home_.path("data/in") + "\n");
    char **const folders = initialize_path_list("TEXINPUTS", ".");
    static char *empty[] = {nullptr};
    EXPECT_EQ(taken(find_path_filename("x", folders)), home_.path("data/in/x"));
    EXPECT_EQ(taken(find_path_filename("y", folders)), "(null)");
    EXPECT_EQ(taken(find_path_filename("./y", folders)), "./y");
    EXPECT_EQ(taken(find_path_filename("../work/y", folders)), "../work/y");
    EXPECT_EQ(taken(find_path_filename(home_.path("work/y").c_str(), folders)), home_.path("work/y"));
    EXPECT_EQ(taken(find_path_filename(home_.mac("work/y").c_str(), folders)), home_.mac("work/y"));
    EXPECT_EQ(taken(find_path_filename("y", nullptr)), "y");
    EXPECT_EQ(taken(find_path_filename("y", empty)), "(null)");
}

TEST_F(SearchPaths, NameTooLongIsShortenedByComponent) {
    const std::string shorter(255, 'n');
    home_.file("work/" + shorter);
    EXPECT_EQ(taken(readable((shorter + "more").c_str())), shorter);
    EXPECT_EQ(taken(readable("none")), "(null)");
}

TEST_F(SearchPaths, TexInputWithASuffixIsTriedOnceThenWithTex) {
    home_.preferences("");
    setpaths(1u << 8);
    home_.file("work/x.sty.tex");
    EXPECT_EQ(find("x.sty", 9), "./x.sty.tex");
    home_.file("work/x.sty");
    EXPECT_EQ(find("x.sty", 9), "./x.sty");
    home_.file("work/plain");
    EXPECT_EQ(find("plain", 9), "./plain");
    home_.file("work/plain.tex");
    EXPECT_EQ(find("plain", 9), "./plain.tex");
}

TEST_F(SearchPaths, KindsAddTheirSuffixes) {
    static const struct {
        int kind, slot;
        const char *name, *file;
    } kinds[] = {
        {1, 2, "k", "k"},       {2, 17, "k", "k.ocp"}, {3, 16, "k", "k.ofm"},    {4, 19, "k", "k.ovf"},
        {5, 10, "k", "k.tfm"},  {6, 11, "k", "k.vf"},  {7, 0, "k", "k.bib"},     {8, 1, "k", "k.bst"},
        {10, 7, "k", "k.fmt"},  {11, 9, "k", "k"},     {12, 4, "k", "k.mf"},     {13, 5, "k", "k"},
        {14, 3, "k", "k.base"}, {15, 12, "k", "k.mp"}, {16, 14, "k", "k"},       {17, 13, "k", "k.mem"},
        {18, 15, "k", "k.map"}, {19, 6, "k", "k"},     {20, 18, "k", "k"},       {21, 25, "k", "k"},
        {23, 20, "k", "k"},     {24, 21, "k", "k"},    {25, 20, "k", "k"},       {26, 23, "k", "k"},
        {27, 24, "k", "k"},     {28, 26, "k", "k"},    {5, 10, "s.tfm", "s.tfm"}};
    for (const auto &kind : kinds) {
        home_.preferences("");
        for (char **&slot : path_dirs)
            slot = nullptr;
        clearCache();
        const std::string place = home_.file(std::string("work/") + kind.file);
        EXPECT_EQ(find(kind.name, kind.kind), "(null)") << kind.kind;
        setpaths(1u << kind.slot);
        EXPECT_EQ(find(kind.name, kind.kind), std::string("./") + kind.file) << kind.kind;
        std::filesystem::remove(place);
    }
    for (const int none : {22, 0, 29, -1})
        EXPECT_EQ(find("k", none), "(null)");
}

TEST_F(SearchPaths, OmegaMetricsFallBackToTexMetrics) {
    home_.file("work/k.tfm");
    home_.preferences("");
    setpaths(1u << 16 | 1u << 10);
    EXPECT_EQ(find("k", 3), "./k.tfm");
    home_.file("work/k.ofm");
    EXPECT_EQ(find("k", 3), "./k.ofm");
}

TEST_F(SearchPaths, VirtualFontInItsDatabaseHasNoSuffixAdded) {
    home_.file("data/vf/ptmr");
    home_.file("data/vf/ptmr.vf");
    home_.file("data/Quillon/VFFONTS", home_.path("data/vf") + "/\nptmr\nptmr.vf\n");
    home_.file("data/Quillon/TEXFONTS", home_.path("data/vf") + "/\ncmr.tfm\n");
    home_.file("data/vf/cmr.tfm");
    supportFolder.copy(home_.path("data/Quillon"));
    dataBaseSearch = 1;
    read_hash_table("VFFONTS", &vfTable);
    read_hash_table("TEXFONTS", &tfmTable);
    EXPECT_EQ(find("ptmr", 6), home_.path("data/vf/ptmr"));
    EXPECT_EQ(find("cmr", 5), home_.path("data/vf/cmr.tfm"));
}

TEST_F(SearchPaths, AliasOfAFontIsFoundAndCachedUnderTheNameAskedFor) {
    home_.file("data/fonts/texfonts.map", "ptmr8r Times-Roman\n");
    home_.file("data/fonts/ptmr8r.tfm");
    // The map is made once per process, so this test needs a process that has run no other.
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    EXPECT_EXIT(
        {
            set_path("TEXFONTS", home_.path("data/fonts"), 10);
            const std::string place = home_.path("data/fonts/ptmr8r.tfm");
            const bool found = find("Times-Roman", 5) == place;
            const bool cached = taken(searchCache("Times-Roman.tfm")) == place;
            std::filesystem::remove_all(home_.root());
            ::_exit(found && cached ? 0 : found ? 2 : 1);
        },
        testing::ExitedWithCode(0), "");
    GTEST_FLAG_SET(death_test_style, "fast");
}

TEST_F(SearchPaths, FileThatCannotBeFoundEndsTheRun) {
    home_.preferences("");
    setpaths(1u << 8);
    EXPECT_THROW(kpse_open_file("none", 9), Waited);
    EXPECT_EQ(front_->printed, "fatal: File `none' not found.\n\nA serious error has occurred.\n");
    EXPECT_EQ(exit_status, 1);
    home_.file("work/x.tex", "hello");
    std::FILE *const file = kpse_open_file("x", 9);
    ASSERT_NE(file, nullptr);
    std::fclose(file);
}

TEST_F(SearchPaths, FileThatCannotBeOpenedEndsTheRunWithTheSystemsWords) {
    home_.preferences("");
    home_.file("work/x.tex");
    ASSERT_EQ(::chmod(home_.path("work/x.tex").c_str(), 0), 0);
    setpaths(1u << 8);
    EXPECT_EQ(as_ordinary_user([&] {
                  try {
                      kpse_open_file("x", 9);
                  } catch (const Waited &) {
                      return front_->printed.starts_with("./x.tex: Permission denied\n") && exit_status == 1
                                 ? 0
                                 : 1;
                  }
                  return 2;
              }),
              0);
}

TEST_F(SearchPaths, ProgramNamesAreKept) {
    kpse_set_program_name("/bin/x", nullptr);
    EXPECT_STREQ(kpse_program_name, "/bin/x");
    kpse_set_program_name("/bin/x", "y");
    EXPECT_STREQ(kpse_program_name, "y");
    EXPECT_STREQ(program_invocation_name_text, "/bin/x");
    kpse_reset_program_name("z");
    EXPECT_STREQ(kpse_program_name, "z");
}

TEST_F(SearchPaths, SuffixIsChangedWithoutComparingTheOldOne) {
    EXPECT_EQ(taken(basenamechangesuffix("paper.dvi", ".dvi", ".ps")), "paper.ps");
    EXPECT_EQ(taken(basenamechangesuffix("paper", ".dvi", ".ps")), "p.ps");
    EXPECT_EQ(taken(basenamechangesuffix("ab", ".dvi", ".ps")), ".ps");
}

TEST_F(SearchPaths, UsageEndsTheRun) {
    EXPECT_THROW(usage("prog"), Waited);
    EXPECT_TRUE(front_->printed.starts_with("Try `prog --help' for more information.\n"));
    EXPECT_EQ(exit_status, 1);
    front_->printed.clear();
    const char *const lines[] = {"one", "two", nullptr};
    EXPECT_THROW(usagehelp(lines), Waited);
    EXPECT_TRUE(front_->printed.starts_with("one\ntwo\n\n"));
    EXPECT_EQ(exit_status, 0);
}

TEST_F(SearchPaths, FindFileSaysWhatItLooksFor) {
    home_.preferences("");
    setpaths(1u << 8);
    BoundedString<256> wanted;
    wanted.copy("none");
    DoFindFile(wanted);
    EXPECT_EQ(front_->printed, "\nLooking for file <none>.\nInput file not found.\n");
    wanted.copy("none");
    EXPECT_EQ(DoSearchFile(wanted), 0);
    home_.file("work/x.tex");
    wanted.copy("x");
    front_->printed.clear();
    EXPECT_EQ(DoSearchFile(wanted), 1);
    EXPECT_EQ(wanted.view(), home_.mac("work/x.tex"));
    EXPECT_EQ(front_->printed, "");
}

TEST_F(SearchPaths, FoundFileIsNamedWithItsWholePath) {
    home_.preferences("");
    setpaths(1u << 8);
    home_.file("work/x.tex");
    BoundedString<256> wanted;
    wanted.copy("x");
    editor = "";
    DoFindFile(wanted);
    editor = nullptr;
    EXPECT_TRUE(front_->printed.starts_with("\nLooking for file <x>.\nFound file <" +
                                            home_.path("work/x.tex") + ">.\n"))
        << front_->printed;
}
