#include "common/command_output.h"
#include "common/preferences.h"
#include "setpaths/databases.h"
#include "setpaths/defaults.h"
#include "setpaths/distribution.h"
#include "setpaths/findings.h"
#include "setpaths/ini_text.h"
#include "support/temporary_home.h"

using namespace setpaths;
using quillon::test::in_child;
using quillon::test::TemporaryHome;

namespace {

using Words = std::vector<std::string>;

// A program PATH that is a shell script.
void script(const TemporaryHome &home, const std::string &below, const std::string &lines) {
    const std::string path = home.file(below, "#!/bin/sh\n" + lines);
    ASSERT_EQ(::chmod(path.c_str(), 0755), 0);
}

} // namespace

TEST(Databases, FoldersThenTheirFiles) {
    const TemporaryHome home;
    const std::string root = home.folder("tree");
    home.file("tree/b");
    home.file("tree/a b");
    home.file("tree/0x");
    home.file("tree/.hidden");
    home.file("tree/below/c");
    home.file("tree/.git/d");
    home.folder("tree/empty");
    ASSERT_EQ(::symlink("below", (root + "/link").c_str()), 0);
    ASSERT_EQ(::symlink("b", (root + "/same").c_str()), 0);
    const std::string own = root + "/\n.hidden\na\x1f" + "b\nb\nsame\n";
    EXPECT_EQ(database_text({root}, 31), own);
    EXPECT_EQ(database_text({root + "/"}, 31), own);
    EXPECT_EQ(database_text({root + "//"}, 31), own + root + "/below/\nc\n");
    EXPECT_EQ(database_text({root, "relative", "/none", root + "/below", root + "//"}, 31),
              own + root + "/below/\nc\n");
}

TEST(Databases, NamesThatNoReaderTakesWholeAreLeftOut) {
    const TemporaryHome home;
    const std::string root = home.folder("tree");
    home.file("tree/x");
    home.file("tree/a\nb");
    EXPECT_EQ(database_text({root}, 31), root + "/\nx\n");
}

TEST(Distribution, ElementsOfLists) {
    EXPECT_EQ(split_paths("!!/a//::/b///:!!:c/"), (Words{"/a//", "/b//", "c/"}));
    EXPECT_EQ(split_paths(""), Words{});
}

TEST(Distribution, TheFirstLineOfAProgram) {
    const TemporaryHome home;
    script(home, "one", "echo \"$1-$2\"; echo more; exit 3\n");
    script(home, "killed", "echo text; kill -9 $$\n");
    EXPECT_EQ(common::output_of(home.path("one"), {"a b", "c"}), "a b-c");
    EXPECT_EQ(common::output_of(home.path("killed"), {}), "");
    EXPECT_EQ(common::output_of(home.path("none"), {}), "");
}

TEST(Distribution, WhatItSaysIsTaken) {
    const TemporaryHome home;
    const std::string tree = home.folder("tree"), other = home.folder("other"), own = home.path("own");
    home.folder("tree/tex/latex");
    script(home, "bin/pdftex", "");
    script(home, "bin/kpsewhich",
           "case \"$*\" in\n"
           "*TEXMFHOME) echo " +
               own +
               ";;\n"
               "*'$TEXMF') echo '!!" +
               tree +
               "/';;\n"
               "*'$TEXINPUTS') echo '.:" +
               tree + "/tex/latex//:" + tree + "/tex//:" + own + "/tex//:/none//:" + other +
               "';;\n"
               "*'$T1FONTS') echo '.:" +
               own +
               "/type1';;\n"
               "*) echo \"${4}\";;\nesac\n");
    const Distribution found = find_distribution(home.path("bin/"));
    EXPECT_EQ(found.programs, home.path("bin"));
    EXPECT_FALSE(found.programs_in_every_path);
    EXPECT_EQ(found.trees, (Words{tree, own + "/tex", other}));
    ASSERT_EQ(found.paths.size(), 1u);
    EXPECT_EQ(found.paths.at("TEXINPUTS"), (Words{".", tree + "/tex//", own + "/tex//", other}));
}

TEST(Distribution, AFolderWithoutKpsewhichHasNothing) {
    const TemporaryHome home;
    const Distribution found = find_distribution(home.path("work"));
    EXPECT_EQ(found.programs, home.path("work"));
    EXPECT_TRUE(found.trees.empty() && found.paths.empty());
}

TEST(Findings, WhatIsMissingIsNamedWithItsPackage) {
    const TemporaryHome home;
    EXPECT_EQ(in_child([&] {
                  ::setenv("PATH", home.folder("nothing").c_str(), 1);
                  Proposal proposal;
                  proposal.space = 31;
                  if (findings(proposal).size() != 1 || findings(proposal)[0].good)
                      return 1;
                  script(home, "bin/pdftex", "echo 'pdfTeX 7'\n");
                  script(home, "bin/bibtex", "");
                  home.file("web/plain.fmt");
                  proposal.programs = home.path("bin");
                  proposal.values = {{"TEXFORMATS", home.path("web") + ":/none"}};
                  std::string good, bad;
                  for (const Finding &finding : findings(proposal))
                      (finding.good ? good : bad) += finding.text + "\n";
                  if (good != "pdfTeX 7 in " + home.path("bin") + "\nFormats: plain\nCompanions: bibtex\n")
                      return 2;
                  for (const char *part :
                       {"LaTeX is missing: install the package texlive-latex-base.\n",
                        "mpost (MetaPost figures) is missing: install the package "
                        "texlive-metapost.\n",
                        "ps2pdf (PDF from PostScript files) is missing: install the package "
                        "ghostscript.\n"})
                      if (bad.find(part) == std::string::npos)
                          return 3;
                  return bad.find("bibtex") == std::string::npos ? 0 : 4;
              }),
              0);
}

TEST(Defaults, AFolderWithAColonIsInNoList) {
    const TemporaryHome home;
    script(home, "bin/pdftex", "");
    script(home, "bin/kpsewhich",
           "case \"$*\" in *TEXFORMATS) echo " + home.folder("web") + ";; *) echo '$X';; esac\n");
    const auto formats = [&](const std::string &data) {
        return in_child([&] {
            ::setenv("XDG_DATA_HOME", data.c_str(), 1);
            for (const auto &[key, value] : propose("/q", home.path("bin")).values)
                if (key == "TEXFORMATS")
                    return value == home.path("web")                                ? 1
                           : value == data + "/Quillon/formats:" + home.path("web") ? 2
                                                                                    : 3;
            return 0;
        });
    };
    EXPECT_EQ(formats(home.path("data")), 2);
    EXPECT_EQ(formats("/a:b"), 1);
}

TEST(Defaults, ChangesAreWrittenAndOnlyWhatIsNotSetIsFilledIn) {
    const TemporaryHome home;
    home.file("config/Quillon Preferences", "A=mine\nC=\n");
    const Proposal proposal = {"", {{"A", "1"}, {"B", "2"}, {"C", "3"}, {"D", ""}, {"E", "5"}}, 31};
    EXPECT_TRUE(write_settings({{"E", "chosen"}}, proposal));
    EXPECT_EQ(home.read("config/Quillon Preferences"), "A=mine\nC=\nE=chosen\nB=2\n");
    EXPECT_NE(home.read("data/Quillon/formats/tex.cnf"), "");
    EXPECT_NE(home.read("data/Quillon/formats/pdftex.cnf"), "");
}

TEST(Defaults, AFreshFileIsMadeWhole) {
    const TemporaryHome home;
    home.file("data/Quillon/formats/tex.cnf", "own");
    EXPECT_TRUE(write_settings({}, {"", {{"A", "1"}, {"D", ""}}, 31}));
    EXPECT_EQ(home.read("config/Quillon Preferences"), "A=1\n");
    EXPECT_EQ(home.read("data/Quillon/formats/tex.cnf"), "own");
    int entries = 0;
    for (const auto &entry : std::filesystem::directory_iterator(home.path("config")))
        entries += !entry.path().empty();
    EXPECT_EQ(entries, 1);
}

TEST(IniText, AValueIsTheLastOfItsKeyInItsGroup) {
    std::string value = "before";
    EXPECT_FALSE(ini_value("k=1\n[h]\nk=2\n", "g", "k", &value));
    EXPECT_EQ(value, "before");
    EXPECT_TRUE(ini_value("[g]\nk = 1 \n[h]\nk=2\n[g]\nk[$e]=3=4", "g", "k", &value));
    EXPECT_EQ(value, "3=4");
    EXPECT_FALSE(ini_value("[g]\nk[de]=1\nkk=2\n#k\n", "g", "k", &value));
}

TEST(IniText, OnlyTheLinesOfTheKeysChange) {
    const IniValues values = {{"k", "new"}};
    const std::pair<const char *, const char *> cases[] = {
        {"", "[g]\nk=new\n"},
        {"[g]", "[g]\nk=new\n"},
        {"[g]\n\n[h]\nk=1\n", "[g]\nk=new\n\n[h]\nk=1\n"},
        {"[g]\na=1\n\n", "[g]\na=1\nk=new\n\n"},
        {"[g]\nk=1\nlast", "[g]\nk=new\nlast"},
        {"[g]\r\na=1\r\n[h]\r\n", "[g]\r\na=1\r\nk=new\r\n[h]\r\n"},
        {"[g]\nk=1\n[h]\n[g]\nk=2\n", "[g]\nk=new\n[h]\n[g]\nk=new\n"},
        {"a=1", "a=1\n\n[g]\nk=new\n"},
        {"[g][h]\nk=1\n", "[g][h]\nk=1\n\n[g]\nk=new\n"},
    };
    for (const auto &[before, after] : cases) {
        EXPECT_EQ(with_ini_values(before, "g", values), after) << before;
        EXPECT_EQ(with_ini_values(after, "g", values), after) << before;
    }
}

TEST(IniText, ValuesAreWrittenAsTheProgramsWriteThem) {
    EXPECT_EQ(kde_value("\"/a b\" +%l \\"), "\"/a b\" +%l \\\\");
    EXPECT_EQ(toolkit_value("\"/a b\" +%2"), "\\\"/a b\\\" +%2");
    EXPECT_EQ(toolkit_value("a,b"), "\"a,b\"");
    EXPECT_EQ(toolkit_value("\xC3\xA4"
                            "b g\xE2\x82\xAC"
                            "xA\xF0\x9F\x98\x80"),
              "\\xe4\\x62 g\\x20acxA\\xd83d\\xde00");
}
