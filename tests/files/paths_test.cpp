#include "files/paths.h"

#include <cerrno>

#include "support/recording_front.h"
#include "support/temporary_home.h"

using namespace quillon;
using namespace quillon::test;

namespace {

class Paths : public testing::Test {
  protected:
    TemporaryHome home_;
    RecordingFront front_;
    BoundedString<1024> out_;

    std::string mac(const std::string &path) {
        convert_path(path.c_str(), out_);
        return out_.c_str();
    }
    std::string absolute(const char *path) { return add_current_dir(out_, path); }
    FSSpec spec(const std::string &below) {
        FSSpec made;
        EXPECT_EQ(FSPathMakeSpec(home_.path(below).c_str(), &made), noErr);
        return made;
    }
};

} // namespace

TEST_F(Paths, ConvertPathRestoresSpaces) {
    EXPECT_EQ(mac("/Vol/a\xca"
                  "b/x"),
              "Vol:a b:x");
    space_char = 31;
    EXPECT_EQ(mac("/Vol/a\x1f"
                  "b/\xca"),
              "Vol:a b:\xca");
}

TEST_F(Paths, ConvertPathTurnsUpwardStepsIntoColons) {
    EXPECT_EQ(mac("../x"), ":x");
    EXPECT_EQ(mac("a/../b"), "a::b");
    EXPECT_EQ(mac("a/../../b"), "a:::b");
}

TEST_F(Paths, ConvertPathLeavesSlashColonUnchanged) {
    EXPECT_EQ(mac("/:x"), "/:x");
    EXPECT_EQ(mac("/:x\xca"), "/:x\xca");
}

TEST_F(Paths, ConvertPathSkipsTheThirdCharacterAfterTwoSlashes) {
    EXPECT_EQ(mac("//Xab"), "/:ab");
    EXPECT_EQ(mac("//"), "/:");
    EXPECT_EQ(mac("//X"), "/:");
}

TEST_F(Paths, ConvertPathOfTheUsualForms) {
    EXPECT_EQ(mac("/Volume/dir/file"), "Volume:dir:file");
    EXPECT_EQ(mac("dir/file"), "dir:file");
    EXPECT_EQ(mac("./x"), "x");
    EXPECT_EQ(mac("/Vol/work:f"), "Vol:work:f");
    EXPECT_EQ(mac("/Vol/work/:f"), "Vol:work:f");
    EXPECT_EQ(mac("/Vol/dir/"), "Vol:dir:");
    EXPECT_EQ(mac(""), "");
}

TEST_F(Paths, ConvertPathRefusesWhatDoesNotFit) {
    BoundedString<8> small;
    small.copy("old");
    EXPECT_EQ(convert_path("/Volume/dir", small), 0);
    EXPECT_TRUE(small.empty());
    EXPECT_EQ(convert_path(std::string(5000, 'x').c_str(), out_), 0);
    EXPECT_TRUE(out_.empty());
}

TEST_F(Paths, RelativeNamesStandBelowTheCurrentFolder) {
    curr_dir.copy("/Vol/work");
    EXPECT_EQ(absolute("f.tex"), "/Vol/work/f.tex");
    EXPECT_EQ(absolute("sub/f"), "/Vol/work/sub/f");
    EXPECT_EQ(absolute("Vol2:f"), "Vol2:f");
    EXPECT_EQ(absolute("/Vol/f"), "/Vol/f");
    EXPECT_EQ(absolute(":f"), "/Vol/work:f");
    EXPECT_EQ(absolute("./:f"), "/Vol/work:f");
    EXPECT_EQ(absolute("./f"), "/Vol/work/f");
    EXPECT_EQ(absolute("../f"), "/Vol/work/../f");
    EXPECT_EQ(absolute("/Vol:f"), "/Vol:f");
    EXPECT_EQ(absolute("a:b/c"), "/Vol/work/a:b/c");
    curr_dir.clear();
    EXPECT_EQ(absolute("f.tex"), "f.tex");
}

TEST_F(Paths, AbsolutePathMayBeWrittenOverItsName) {
    curr_dir.copy("/Vol/work");
    out_.copy("f.tex");
    EXPECT_STREQ(add_current_dir(out_, out_.c_str()), "/Vol/work/f.tex");
}

TEST_F(Paths, AccessFindsFilesAndNoFolders) {
    home_.file("work/f.tex");
    home_.file("data/g.tex");
    home_.folder("work/folder");
    EXPECT_EQ(quillon::access("f.tex", 4), 0);
    EXPECT_EQ(quillon::access("./f.tex", 4), 0);
    EXPECT_EQ(quillon::access("../data/g.tex", 4), 0);
    EXPECT_EQ(quillon::access(home_.path("work/f.tex").c_str(), 0), 0);
    EXPECT_EQ(quillon::access("none", 4), -1);
    EXPECT_EQ(quillon::access("folder", 4), -1);
    EXPECT_EQ(quillon::access("", 4), -1);
}

TEST_F(Paths, AccessOfFiveHundredAndTwelveCharactersFailsWithoutTouchingTheDisk) {
    // 511 characters that name a file: "./" again and again makes a long name of a short one.
    home_.file("work/x");
    const std::string longest =
        home_.path("work/") + std::string(511 - curr_dir.length() - home_.path("work/").size(), 'y');
    errno = 0;
    EXPECT_EQ(quillon::access(longest.c_str(), 4), -1);
    std::string padded = "sub";
    home_.folder("work/sub");
    while (padded.size() + 7 + curr_dir.length() <= 511 - 1)
        padded += "/../sub";
    std::string name = padded.substr(0, padded.rfind("/sub")) + "/x";
    ASSERT_LE(name.size() + curr_dir.length(), 511u);
    EXPECT_EQ(quillon::access(name.c_str(), 4), 0);
    while (name.size() + curr_dir.length() < 512)
        name.insert(0, "./");
    ASSERT_GE(name.size() + curr_dir.length(), 512u);
    EXPECT_EQ(quillon::access(name.c_str(), 4), -1);
    EXPECT_EQ(errno, ENAMETOOLONG);
}

TEST_F(Paths, AccessThroughAliasesTellsWhatItFound) {
    home_.file("work/f.tex");
    doAlias = doDebug = 1;
    EXPECT_EQ(quillon::access("f.tex", 4), 0);
    EXPECT_EQ(front_->printed, "\nFound <" + home_.path("work/f.tex") + ">.\n");
    EXPECT_EQ(quillon::access("none", 4), -1);
}

TEST_F(Paths, VolumeRootGivesTheVolume) {
    FSSpec volume;
    ASSERT_EQ(FSMakeFSSpec(0, 0, "tmp:", &volume), noErr);
    EXPECT_EQ(get_unixpath_by_dirid(volume.vRefNum, 2, out_), 1);
    EXPECT_EQ(out_.view(), "/tmp");
    EXPECT_EQ(get_macpath_by_dirid(volume.vRefNum, 2, out_), 1);
    EXPECT_EQ(out_.view(), "tmp");
    EXPECT_EQ(get_unixpath_by_dirid(volume.vRefNum, 99999999, out_), 0);
    EXPECT_EQ(get_unixpath_by_dirid(99, 2, out_), 0);
}

TEST_F(Paths, LocationsBecomePathsWithSpacesReplaced) {
    home_.file("work/a b/c d");
    const FSSpec location = spec("work/a b/c d");
    FSSpecToUnixPath(&location, out_);
    EXPECT_EQ(out_.view(), home_.path("work/a\xca"
                                      "b/c\xca"
                                      "d"));
    FSSpecToMacPath(&location, out_);
    EXPECT_EQ(out_.view(), home_.mac("work/a b/c d"));
    BoundedString<1024> posix;
    FSSpecToUnixPath(&location, out_);
    UnixFileToPosixFile(out_.c_str(), posix);
    EXPECT_EQ(posix.view(), home_.path("work/a b/c d"));
}

TEST_F(Paths, LocationOfAMissingFileIsNoSuccess) {
    FSSpec location;
    home_.file("work/f");
    EXPECT_EQ(UnixToFSS(home_.path("work").c_str(), "none", &location), 0);
    EXPECT_EQ(UnixToFSS(home_.path("work/none").c_str(), nullptr, &location), 0);
    EXPECT_EQ(UnixToFSS(home_.path("work").c_str(), "f", &location), 1);
    EXPECT_EQ(UnixToFSS(home_.path("work").c_str(), nullptr, &location), 1);
    EXPECT_EQ(UnixToFSS((home_.path("work") + "/").c_str(), nullptr, &location), 1);
}

TEST_F(Paths, FoldersAreToldFromFiles) {
    FSSpec location;
    home_.file("work/f");
    EXPECT_EQ(UnixPathToFolder(home_.path("work").c_str(), &location), 1);
    EXPECT_EQ(UnixPathToFolder(home_.path("work/f").c_str(), &location), 0);
    EXPECT_EQ(UnixPathToFolder(home_.path("none").c_str(), &location), 0);
    EXPECT_EQ(UnixPathToFolder("/tmp", &location), 1);
    EXPECT_EQ(UnixPathToFolder("", &location), 0);
}

TEST_F(Paths, PosixPathsNeedTheFolder) {
    EXPECT_EQ(MacFolderToPosixDir(home_.mac("work").c_str(), out_), noErr);
    EXPECT_EQ(out_.view(), home_.path("work"));
    EXPECT_NE(MacFolderToPosixDir(home_.mac("none/deeper").c_str(), out_), noErr);
    EXPECT_TRUE(out_.empty());
    EXPECT_STREQ(MacFileToPosixFile((home_.mac("work") + ":new").c_str(), out_),
                 home_.path("work/new").c_str());
    EXPECT_STREQ(MacFileToPosixFile((home_.mac("none") + ":new").c_str(), out_), "");
    // A name without ":" is a Unix name.
    EXPECT_STREQ(MacFileToPosixFile("new", out_), home_.path("work/new").c_str());
    EXPECT_STREQ(UnixFolderToPosixFolder(home_.path("work").c_str(), out_), home_.path("work").c_str());
}

TEST_F(Paths, ExtensionsAreComparedByCase) {
    EXPECT_EQ(has_extension("a.tex", ".tex"), 1);
    EXPECT_EQ(has_extension("a.TEX", ".tex"), 0);
    EXPECT_EQ(has_extension("tex", ".tex"), 0);
    EXPECT_EQ(has_extension("a", ""), 1);
}

TEST_F(Paths, DirectoriesAreSimplified) {
    home_.folder("work/a");
    out_.copy(home_.path("work/a/../a"));
    simplify_directory(out_);
    EXPECT_EQ(out_.view(), home_.path("work/a"));
    const std::string long_path = home_.path("work") + std::string(250, '/');
    out_.copy(long_path);
    simplify_directory(out_);
    EXPECT_EQ(out_.view(), long_path);
    out_.copy("/no such volume/x");
    simplify_directory(out_);
    EXPECT_EQ(out_.view(), "/no such volume/x");
}

TEST_F(Paths, TildeIsTheFolderThatHoldsTheApplication) {
    const FSSpec folder = spec("work");
    home_.folder("work/TeX/bin/Quillon.app/Contents/Linux");
    const FSSpec program = spec("work/TeX/bin/Quillon.app/Contents/Linux");
    appvol = program.vRefNum;
    ASSERT_EQ(folder_id(&program, &appdir), 1);
    supportFolder.copy("/Vol/support");
    doDebug = 1;
    EXPECT_STREQ(SetTilde(), home_.path("work/TeX/bin").c_str());
    EXPECT_EQ(contentsFolder.view(), home_.path("work/TeX/bin/Quillon.app/Contents"));
    EXPECT_EQ(shortroot.view(), home_.path("work/TeX"));
    EXPECT_EQ(front_->printed, "Application directory:\n<" + home_.path("work/TeX/bin") +
                                   ">\nDatabase directory:\n</Vol/support>\n");
    appdir = 99999999;
    EXPECT_EQ(SetTilde(), nullptr);
    EXPECT_EQ(folder.parID > 0, true);
}

TEST_F(Paths, SettingsTakeThePlaceOfEnvironmentVariables) {
    home_.preferences("TEXINPUTS=/Vol/tex\n");
    ::setenv("OFMFONTS", "/from/the/environment", 1);
    EXPECT_EQ(taken(mygetenv("TEXINPUTS")), "/Vol/tex");
    EXPECT_EQ(taken(mygetenv("OFMFONTS")), "(null)");
    ::unsetenv("OFMFONTS");
}

TEST_F(Paths, ChangingTheFolderDoesNothing) {
    EXPECT_EQ(quillon::chdir("/nowhere"), 0);
    EXPECT_EQ(curr_dir.view(), home_.path("work"));
}

TEST_F(Paths, PathsAreSplitAtTheLastSlash) {
    BoundedString<64> folder, leaf;
    EXPECT_EQ(split_path("/a/b/c", folder, leaf), 1);
    EXPECT_EQ(folder.view(), "/a/b");
    EXPECT_EQ(leaf.view(), "c");
    EXPECT_EQ(split_path("c", folder, leaf), 1);
    EXPECT_TRUE(folder.empty());
}

TEST_F(Paths, SystemFontsHaveAUnixPath) {
    SYSTEMFONTPATH.clear();
    home_.folder("data/fonts");
    SetSystemFontPath();
    EXPECT_TRUE(SYSTEMFONTPATH.view().ends_with("/fonts"));
}

TEST_F(Paths, ExistenceFollowsTheConversionWhateverThePathHolds) {
    home_.file("work/x");
    home_.file("work/a b");
    home_.file("work/sub/y");
    home_.folder("work/dot.");
    home_.file("work/a:b");
    home_.file("work/.hidden");
    home_.file("work/" + std::string(100, 'l'));
    const std::string w = home_.path("work");
    // access must agree with the conversions and a look at the disk.
    for (const std::string &path : {w + "/x",
                                    w + "/none",
                                    w,
                                    w + "/",
                                    w + "/x/",
                                    w + "//x",
                                    w + "/./x",
                                    w + "/sub/../x",
                                    w + "/sub/..",
                                    w + "/sub/.",
                                    w + "/a\xca"
                                        "b",
                                    w + "/a b",
                                    w + "/a\x1e"
                                        "b",
                                    w + "/a:b",
                                    w + "/x../y",
                                    w + "/sub../x",
                                    w + "/.hidden",
                                    w + "/" + std::string(100, 'l'),
                                    w + "/x/y",
                                    w + "/\x1d"
                                        "1",
                                    std::string("/none"),
                                    std::string("/"),
                                    std::string(""),
                                    std::string("//x"),
                                    std::string("/:x"),
                                    std::string("x"),
                                    std::string("./x"),
                                    std::string("sub/y"),
                                    w + "/" + std::string(300, 'm')}) {
        BoundedString<1024> absolute, hfs;
        const int there =
            convert_path(add_current_dir(absolute, path.c_str()), hfs) && FSFileExists(hfs.c_str());
        EXPECT_EQ(quillon::access(path.c_str(), 4) == 0, there != 0) << path;
    }
    EXPECT_EQ(quillon::access((w + "/a\xca"
                                   "b")
                                  .c_str(),
                              4),
              0);
    EXPECT_EQ(quillon::access((w + "/a\x1e"
                                   "b")
                                  .c_str(),
                              4),
              0);
}

TEST_F(Paths, PathMayBeMadeAbsoluteInPlace) {
    curr_dir.copy("/V/w");
    for (const auto &[path, whole] : {std::pair("x", "/V/w/x"),
                                      {"./x", "/V/w/x"},
                                      {"./:x", "/V/w:x"},
                                      {":x", "/V/w:x"},
                                      {"../x", "/V/w/../x"},
                                      {"a/b", "/V/w/a/b"},
                                      {"/a", "/a"},
                                      {"V:a", "V:a"}}) {
        out_.copy(path);
        EXPECT_STREQ(add_current_dir(out_, out_.c_str()), whole);
    }
    BoundedString<8> small;
    EXPECT_STREQ(add_current_dir(small, "abcd"), "");
}
