#include <fcntl.h>
#include <sys/xattr.h>

#include <filesystem>

#include "files/paths.h"
#include "linux/files/host.h"
#include "support/temporary_home.h"

using namespace quillon;
using namespace quillon::test;

namespace {

class Files : public testing::Test {
  protected:
    TemporaryHome home_;

    FSSpec spec(const std::string &below, OSErr expected = noErr) {
        FSSpec made;
        EXPECT_EQ(FSPathMakeSpec(home_.path(below).c_str(), &made), expected) << below;
        return made;
    }
    std::string posix(const FSSpec &location) {
        BoundedString<4096> path;
        FSpToPosix(&location, path);
        return path.c_str();
    }
    std::string unix_path(const FSSpec &location) {
        BoundedString<1024> path;
        FSSpecToUnixPath(&location, path);
        return path.c_str();
    }
    std::vector<std::string> walk(const FSSpec &folder, bool files_only = false) {
        std::vector<std::string> names;
        std::int32_t id = 0;
        EXPECT_EQ(folder_id(&folder, &id), 1);
        unsigned char name[64];
        for (int index = 1;; index++) {
            CInfoPBRec block = {};
            block.ioNamePtr = name;
            block.ioVRefNum = folder.vRefNum;
            block.ioDirID = id;
            block.ioFDirIndex = index;
            if ((files_only ? PBHGetFInfoSync(&block) : PBGetCatInfoSync(&block)) != noErr)
                return names;
            BoundedString<256> leaf;
            from_pascal(name, leaf);
            names.push_back(leaf.c_str() + std::string(block.ioFlAttrib & kioFlAttribDir ? "/" : "") +
                            (block.ioFlFndrInfo.fdFlags & kIsAlias ? "@" : ""));
        }
    }
    FInfo info(const std::string &below) {
        FInfo result = {};
        const FSSpec location = spec(below);
        EXPECT_EQ(FSpGetFInfo(&location, &result), noErr);
        return result;
    }
};

} // namespace

// The first test of all: a process reads the table of editors once.
TEST_F(Files, EditorsHaveTheirCreator) {
    home_.file("data/Quillon/editors.table", "ed | | +%l %f\n");
    home_.file("work/ed", "#!/bin/sh\n");
    home_.file("work/other", "#!/bin/sh\n");
    ::chmod(home_.path("work/ed").c_str(), 0755);
    ::chmod(home_.path("work/other").c_str(), 0755);
    EXPECT_EQ(info("work/ed").fdCreator, four("!Rch"));
    EXPECT_EQ(info("work/other").fdCreator, four("????"));
}

TEST_F(Files, VolumeIsTheFirstComponentAndItsRootIsFolderTwo) {
    FSSpec volume, inside;
    ASSERT_EQ(FSMakeFSSpec(0, 0, "tmp:", &volume), noErr);
    EXPECT_EQ(volume.parID, 1);
    EXPECT_EQ(posix(volume), "/tmp");
    ASSERT_EQ(FSPathMakeSpec(home_.root().c_str(), &inside), noErr);
    EXPECT_EQ(inside.parID, 2);
    EXPECT_EQ(inside.vRefNum, volume.vRefNum);
    CInfoPBRec block = {};
    block.ioVRefNum = volume.vRefNum;
    block.ioDirID = 2;
    block.ioFDirIndex = -1;
    EXPECT_EQ(PBGetCatInfoSync(&block), noErr);
    EXPECT_EQ(block.ioFlParID, 1);
}

TEST_F(Files, ResultCodesTellWhatIsMissing) {
    FSSpec location;
    EXPECT_EQ(FSMakeFSSpec(0, 0, (home_.mac("work") + ":none").c_str(), &location), fnfErr);
    EXPECT_EQ(posix(location), home_.path("work/none"));
    EXPECT_EQ(FSMakeFSSpec(0, 0, (home_.mac("work") + ":none:x").c_str(), &location), dirNFErr);
    EXPECT_EQ(FSMakeFSSpec(0, 0, "no such volume:x:y", &location), nsvErr);
    EXPECT_EQ(FSMakeFSSpec(0, 0, "relative", &location), nsvErr);
    EXPECT_EQ(FSMakeFSSpec(0, 0, "tmp:a/b", &location), bdNamErr);
}

TEST_F(Files, FileDirectlyInTheRootFolderIsRefused) {
    FSSpec location;
    if (::geteuid() == 0) {
        const std::string name = "quillon-test-" + std::to_string(::getpid());
        std::ofstream("/" + name) << "x";
        EXPECT_EQ(FSPathMakeSpec(("/" + name).c_str(), &location), bdNamErr);
        EXPECT_EQ(FSMakeFSSpec(0, 0, (name + ":").c_str(), &location), bdNamErr);
        std::filesystem::remove("/" + name);
    }
    EXPECT_EQ(FSPathMakeSpec("/", &location), bdNamErr);
    EXPECT_EQ(FSPathMakeSpec("relative", &location), bdNamErr);
}

TEST_F(Files, DoubleColonsStepUpwards) {
    home_.file("work/a/b/x");
    FSSpec location;
    ASSERT_EQ(FSMakeFSSpec(0, 0, (home_.mac("work/a/b") + ":::a:b:x").c_str(), &location), noErr);
    EXPECT_EQ(posix(location), home_.path("work/a/b/x"));
    // Above a volume stand the other volumes.
    ASSERT_EQ(FSMakeFSSpec(0, 0, "tmp::usr:bin", &location), noErr);
    EXPECT_EQ(posix(location), "/usr/bin");
}

TEST_F(Files, SteppingUpFromALinkGoesWhereItPoints) {
    home_.file("data/real/x");
    home_.file("data/y");
    std::filesystem::create_symlink(home_.path("data/real"), home_.path("work/link"));
    FSSpec location;
    ASSERT_EQ(FSPathMakeSpec(home_.path("work/link/../y").c_str(), &location), noErr);
    EXPECT_EQ(posix(location), home_.path("data/y"));
}

TEST_F(Files, ColonInANameStandsAsByteThirty) {
    home_.file("work/a:b");
    const FSSpec location = spec("work/a:b");
    EXPECT_EQ(unix_path(location), home_.path("work/a\x1e"
                                              "b"));
    EXPECT_EQ(posix(location), home_.path("work/a:b"));
    EXPECT_EQ(quillon::access("a\x1e"
                              "b",
                              4),
              0);
}

TEST_F(Files, LongLeavesAreShortenedUniquelyAndComeBackWhole) {
    const std::string stem(180, 'l'), one = stem + "1.tex", two = stem + "2.tex";
    home_.file("work/" + one);
    home_.file("work/" + two);
    const FSSpec first = spec("work/" + one), second = spec("work/" + two);
    EXPECT_LE(first.name[0], 63);
    EXPECT_NE(std::string(first.name + 1, first.name + 1 + first.name[0]),
              std::string(second.name + 1, second.name + 1 + second.name[0]));
    EXPECT_EQ(posix(first), home_.path("work/" + one));
    EXPECT_EQ(unix_path(second), home_.path("work/" + two));
    BoundedString<256> text;
    from_pascal(first.name, text);
    EXPECT_EQ(text.view(), one);
    EXPECT_TRUE(
        std::string_view(reinterpret_cast<const char *>(first.name + 1), first.name[0]).ends_with(".tex"));
}

TEST_F(Files, LongFolderNamesStayWholeInPaths) {
    const std::string folder(100, 'f');
    home_.file("work/" + folder + "/x");
    EXPECT_EQ(unix_path(spec("work/" + folder + "/x")), home_.path("work/" + folder + "/x"));
}

TEST_F(Files, NamesWithTheShellsOwnBytesAreToldApart) {
    home_.file("work/a\x1e"
               "b",
               "byte");
    home_.file("work/a:b", "colon");
    EXPECT_EQ(posix(spec("work/a\x1e"
                         "b")),
              home_.path("work/a\x1e"
                         "b"));
    EXPECT_EQ(posix(spec("work/a:b")), home_.path("work/a:b"));
    EXPECT_EQ(walk(spec("work")).size(), 2u);
}

TEST_F(Files, AnyOtherBytesAreOnlyBytes) {
    for (const std::string &name :
         {std::string("quote\"'`"), std::string("$HOME"), std::string("line\nfeed"), std::string("\xff\xfe"),
          std::string("*?[a]"), std::string("-rf"), std::string("back\\slash")}) {
        home_.file("work/" + name);
        EXPECT_EQ(posix(spec("work/" + name)), home_.path("work/" + name));
        EXPECT_EQ(quillon::access(name.c_str(), 4), 0) << name;
    }
}

TEST_F(Files, EntriesByIndexAreOrderedByFoldedNameThenByte) {
    for (const char *const name : {"b", "B", "a", "C", "_", "10", "9", "\xc3\xa9"})
        home_.file(std::string("work/") + name);
    home_.folder("work/A");
    EXPECT_EQ(walk(spec("work")),
              (std::vector<std::string>{"10", "9", "_", "A/", "a", "B", "b", "C", "\xc3\xa9"}));
    EXPECT_EQ(walk(spec("work"), true),
              (std::vector<std::string>{"10", "9", "_", "a", "B", "b", "C", "\xc3\xa9"}));
}

TEST_F(Files, OneReadServesAWholeWalk) {
    home_.file("work/a");
    home_.file("work/c");
    std::int32_t id = 0;
    const FSSpec folder = spec("work");
    ASSERT_EQ(folder_id(&folder, &id), 1);
    unsigned char name[64];
    CInfoPBRec block = {};
    const auto at = [&](int index) {
        block.ioNamePtr = name;
        block.ioVRefNum = folder.vRefNum;
        block.ioDirID = id;
        block.ioFDirIndex = index;
        return PBGetCatNameSync(&block) == noErr ? std::string(name + 1, name + 1 + name[0]) : "end";
    };
    EXPECT_EQ(at(1), "a");
    home_.file("work/b");
    EXPECT_EQ(at(2), "c");
    EXPECT_EQ(at(3), "end");
    EXPECT_EQ(at(1), "a");
    EXPECT_EQ(at(2), "b");
}

TEST_F(Files, LinksAreAliasesInAWalkAndFollowedByName) {
    home_.file("data/target", "text");
    std::filesystem::create_symlink(home_.path("data/target"), home_.path("work/link"));
    std::filesystem::create_symlink(home_.path("data"), home_.path("work/folder link"));
    EXPECT_EQ(walk(spec("work")), (std::vector<std::string>{"folder link@", "link@"}));
    EXPECT_EQ(info("work/link").fdType, four("TEXT"));
    std::int32_t id;
    const FSSpec folder = spec("work/folder link");
    EXPECT_EQ(folder_id(&folder, &id), 1);
}

TEST_F(Files, AliasesResolveInChainsAndLoopsFail) {
    home_.file("data/end");
    std::filesystem::create_symlink("../data/end", home_.path("work/two"));
    std::filesystem::create_symlink("two", home_.path("work/one"));
    std::filesystem::create_symlink("loop2", home_.path("work/loop1"));
    std::filesystem::create_symlink("loop1", home_.path("work/loop2"));
    int is_folder, was_aliased;
    FSSpec location = spec("work/one");
    EXPECT_EQ(ResolveAliasFile(&location, 0, &is_folder, &was_aliased), noErr);
    EXPECT_EQ(posix(location), home_.path("work/two"));
    location = spec("work/one");
    EXPECT_EQ(ResolveAliasFile(&location, 1, &is_folder, &was_aliased), noErr);
    EXPECT_EQ(posix(location), home_.path("data/end"));
    EXPECT_EQ(was_aliased, 1);
    EXPECT_EQ(is_folder, 0);
    location = spec("work/loop1", fnfErr);
    EXPECT_EQ(ResolveAliasFile(&location, 1, &is_folder, &was_aliased), fnfErr);
    location = spec("data/end");
    EXPECT_EQ(ResolveAliasFile(&location, 1, &is_folder, &was_aliased), noErr);
    EXPECT_EQ(was_aliased, 0);
}

TEST_F(Files, FolderTestsAsAbsentForFinderInfo) {
    FInfo result;
    const FSSpec location = spec("work");
    EXPECT_EQ(FSpGetFInfo(&location, &result), fnfErr);
    EXPECT_EQ(FSFileExists(home_.mac("work").c_str()), 0);
}

static int seen(const std::string &path) {
    return PosixFileExists(path.c_str());
}

TEST_F(Files, ExistenceIsThatOfTheMomentOfAsking) {
    const std::string file = home_.path("work/x");
    EXPECT_EQ(seen(file), 0);
    home_.file("work/x");
    EXPECT_EQ(seen(file), 1);
    ASSERT_EQ(::unlink(file.c_str()), 0);
    EXPECT_EQ(seen(file), 0);
    ASSERT_EQ(::symlink("nowhere", file.c_str()), 0);
    EXPECT_EQ(seen(file), 0);
    home_.file("work/nowhere");
    EXPECT_EQ(seen(file), 1);
    ASSERT_EQ(::unlink(file.c_str()), 0);
    ASSERT_EQ(::mkdir(file.c_str(), 0755), 0);
    EXPECT_EQ(seen(file), 0);
    EXPECT_EQ(seen(home_.path("work/")), 0);
}

TEST_F(Files, ExistenceCheckReadsNoAttributesAndNoContents) {
    home_.file("work/x");
    // Without the right to read, only a look at the catalogue can answer.
    ASSERT_EQ(::chmod(home_.path("work/x").c_str(), 0), 0);
    EXPECT_EQ(as_ordinary_user([&] { return quillon::access("x", 4) == 0 ? 0 : 1; }), 0);
    struct stat before = {}, after = {};
    ::chmod(home_.path("work/x").c_str(), 0644);
    const timespec old[2] = {{1, 0}, {2, 0}};
    ASSERT_EQ(::utimensat(AT_FDCWD, home_.path("work/x").c_str(), old, 0), 0);
    ::stat(home_.path("work/x").c_str(), &before);
    EXPECT_EQ(quillon::access("x", 4), 0);
    ::stat(home_.path("work/x").c_str(), &after);
    EXPECT_EQ(before.st_atim.tv_sec, after.st_atim.tv_sec);
}

TEST_F(Files, TypesAreJudgedFromTheFile) {
    home_.file("work/text.tex", "\\relax caf\xe9\n");
    home_.file("work/empty", "");
    home_.file("work/binary", std::string("a\0b", 3));
    home_.file("work/paper.pdf", "%PDF-1.5\n");
    home_.file("work/script", "#!/bin/sh\n");
    ::chmod(home_.path("work/script").c_str(), 0755);
    home_.file("work/marked.tex", "\\relax\n");
    ::chmod(home_.path("work/marked.tex").c_str(), 0755);
    home_.file("work/app.desktop", "[Desktop Entry]\n");
    EXPECT_EQ(info("work/text.tex").fdType, four("TEXT"));
    EXPECT_EQ(info("work/empty").fdType, four("TEXT"));
    EXPECT_EQ(info("work/binary").fdType, four("????"));
    EXPECT_EQ(info("work/paper.pdf").fdType, four("????"));
    EXPECT_EQ(info("work/script").fdType, four("APPL"));
    EXPECT_EQ(info("work/marked.tex").fdType, four("TEXT"));
    EXPECT_EQ(info("work/app.desktop").fdType, four("APPL"));
    EXPECT_EQ(info("work/script").fdCreator, four("????"));
}

TEST_F(Files, StampsGoBeforeJudgement) {
    home_.file("work/x", "text");
    const FSSpec location = spec("work/x");
    const FInfo stamp = {four("DVI "), four("QVW8"), 0};
    ASSERT_EQ(FSpSetFInfo(&location, &stamp), noErr) << "/tmp has to keep extended attributes";
    EXPECT_EQ(info("work/x").fdType, four("DVI "));
    EXPECT_EQ(info("work/x").fdCreator, four("QVW8"));
    char bytes[4];
    ASSERT_EQ(::getxattr(home_.path("work/x").c_str(), "user.quillon.creator", bytes, 4), 4);
    EXPECT_EQ(std::string(bytes, 4), "QVW8");
}

TEST_F(Files, UnstampedFormatsAreJudgedByTheEngineInTheirHeader) {
    const auto header = [](const std::string &engine) {
        return "W2TX" + std::string(3, '\0') + static_cast<char>(engine.size() + 4 - engine.size() % 4) +
               engine + std::string(20, '\0');
    };
    home_.file("work/a.fmt", header("pdftex"));
    home_.file("work/b.fmt", header("xetex"));
    home_.file("work/c.efmt", header("pdftex"));
    home_.file("work/d.fmt", "nonsense");
    home_.file("work/e.fmt", "");
    EXPECT_EQ(info("work/a.fmt").fdCreator, four("QXET"));
    EXPECT_EQ(info("work/b.fmt").fdCreator, four("????"));
    EXPECT_EQ(info("work/c.efmt").fdCreator, four("QXET"));
    EXPECT_EQ(info("work/d.fmt").fdCreator, four("????"));
    EXPECT_EQ(info("work/e.fmt").fdCreator, four("????"));
    ASSERT_EQ(
        std::system(
            ("gzip -c '" + home_.path("work/a.fmt") + "' > '" + home_.path("work/z.fmt") + "'").c_str()),
        0);
    EXPECT_EQ(info("work/z.fmt").fdCreator, four("QXET"));
}

TEST_F(Files, PipesAreNeverOpened) {
    ASSERT_EQ(::mkfifo(home_.path("work/pipe").c_str(), 0600), 0);
    EXPECT_EQ(info("work/pipe").fdType, four("????"));
    EXPECT_EQ(OpenPosixFile(home_.path("work/pipe").c_str(), "r"), nullptr);
    EXPECT_EQ(OpenPosixFile(home_.path("work").c_str(), "r"), nullptr);
}

TEST_F(Files, OpenFileIsReportedByTheCatalogue) {
    home_.file("work/x");
    EXPECT_EQ(CanIWrite(home_.mac("work/x").c_str()), 1);
    const int fd = ::open(home_.path("work/x").c_str(), O_RDWR | O_CLOEXEC);
    EXPECT_EQ(CanIWrite(home_.mac("work/x").c_str()), 0);
    ::close(fd);
    EXPECT_EQ(CanIWrite(home_.mac("work/x").c_str()), 1);
    EXPECT_EQ(CanIWrite(home_.mac("work/none").c_str()), 1);
}

TEST_F(Files, DataForksAreReadAndWritten) {
    const FSSpec location = spec("work/fork", fnfErr);
    std::int16_t reference;
    EXPECT_EQ(FSpOpenDF(&location, 'r', &reference), fnfErr);
    ASSERT_EQ(FSpCreate(&location, four("R*ch"), four("TEXT")), noErr);
    EXPECT_EQ(FSpCreate(&location, four("R*ch"), four("TEXT")), dupFNErr);
    ASSERT_EQ(FSpOpenDF(&location, 'w', &reference), noErr);
    long count = 5;
    EXPECT_EQ(FSWrite(reference, &count, "hello"), noErr);
    EXPECT_EQ(SetEOF(reference, 4), noErr);
    EXPECT_EQ(FSClose(reference), noErr);
    EXPECT_EQ(FSClose(reference), fnOpnErr);
    ASSERT_EQ(FSpOpenDF(&location, 'r', &reference), noErr);
    char buffer[10] = {};
    count = 10;
    EXPECT_EQ(FSRead(reference, &count, buffer), eofErr);
    EXPECT_EQ(count, 4);
    EXPECT_STREQ(buffer, "hell");
    count = 1;
    EXPECT_EQ(FSWrite(reference, &count, "x"), wPrErr);
    FSClose(reference);
    EXPECT_EQ(FSpDelete(&location), noErr);
    EXPECT_EQ(FSpDelete(&location), fnfErr);
}

TEST_F(Files, RefusalsOfTheHostHaveTheirCodes) {
    home_.file("work/secret");
    ASSERT_EQ(::chmod(home_.path("work/secret").c_str(), 0), 0);
    ASSERT_EQ(::chmod(home_.path("work").c_str(), 0555), 0);
    EXPECT_EQ(as_ordinary_user([&] {
                  FSSpec secret, fresh;
                  std::int16_t reference;
                  if (FSPathMakeSpec(home_.path("work/secret").c_str(), &secret) != noErr ||
                      FSpOpenDF(&secret, 'r', &reference) != permErr)
                      return 1;
                  if (FSPathMakeSpec(home_.path("work/new").c_str(), &fresh) != fnfErr ||
                      FSpCreate(&fresh, 0, 0) != permErr)
                      return 2;
                  return FSpDelete(&secret) == permErr ? 0 : 3;
              }),
              0);
}

TEST_F(Files, TwoHundredLevelsDeep) {
    std::string below = "work";
    for (int i = 0; i < 200; i++)
        below += "/d";
    home_.file(below + "/x");
    EXPECT_EQ(unix_path(spec(below + "/x")), home_.path(below + "/x"));
}

TEST_F(Files, StandardFoldersFollowTheEnvironment) {
    const auto find = [](OSType kind, int create) {
        std::int16_t volume;
        std::int32_t id;
        BoundedString<1024> path;
        return FindFolder(kind, create, &volume, &id) == noErr && get_unixpath_by_dirid(volume, id, path)
                   ? std::string(path.c_str())
                   : std::string("none");
    };
    EXPECT_EQ(find(four("pref"), 0), home_.path("config"));
    EXPECT_EQ(find(four("asup"), 0), home_.path("data"));
    EXPECT_EQ(find(four("temp"), 0), "none");
    EXPECT_EQ(find(four("temp"), 1), home_.path("run/quillon"));
    EXPECT_EQ(std::filesystem::status(home_.path("run/quillon")).permissions(),
              std::filesystem::perms::owner_all);
    EXPECT_EQ(find(four("trns"), 1), home_.path("cache/quillon"));
    ::unsetenv("XDG_CONFIG_HOME");
    EXPECT_EQ(find(four("pref"), 0), "none");
    EXPECT_EQ(find(four("pref"), 1), home_.path("home/.config"));
    ::setenv("XDG_CONFIG_HOME", "relative", 1);
    EXPECT_EQ(find(four("pref"), 0), home_.path("home/.config"));
}

TEST_F(Files, TemporaryFolderThatIsNotOnesOwnIsRefused) {
    std::int16_t volume;
    std::int32_t id;
    ::unsetenv("XDG_RUNTIME_DIR");
    ::setenv("TMPDIR", home_.path("work").c_str(), 1);
    const std::string place = "work/quillon-" + std::to_string(::geteuid());
    EXPECT_EQ(FindFolder(four("temp"), 1, &volume, &id), noErr);
    EXPECT_TRUE(std::filesystem::is_directory(home_.path(place)));
    std::filesystem::remove(home_.path(place));
    home_.folder("data/elsewhere");
    std::filesystem::create_directory_symlink(home_.path("data/elsewhere"), home_.path(place));
    EXPECT_EQ(FindFolder(four("temp"), 1, &volume, &id), permErr);
    std::filesystem::remove(home_.path(place));
    if (::geteuid() == 0) {
        std::filesystem::create_directory(home_.path(place));
        give_away(home_.path(place));
        EXPECT_EQ(FindFolder(four("temp"), 1, &volume, &id), permErr);
    }
    ::unsetenv("TMPDIR");
}
