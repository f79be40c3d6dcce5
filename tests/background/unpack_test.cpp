// Copies of formats as the program in the background makes them. The distribution is a script that answers as
// kpsewhich does.
#include <gtest/gtest.h>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>
#include <zlib.h>

#include "background/format_place.h"
#include "background/unpack.h"
#include "common/field_files.h"
#include "support/temporary_home.h"

namespace background {
namespace {

using quillon::test::TemporaryHome;
using toolhost::CopyState;
using toolhost::FormatCopy;

class Unpacking : public ::testing::Test {
  protected:
    void SetUp() override {
        original_ = home_.folder("tree") + "/my.fmt";
        pack(format());
        home_.file("tree/texmf.cnf", "TEXFORMATS = $TEXMFHOME//${ELSEWHERE}:$TEXEDIT\n");
        distribution("");
        ASSERT_TRUE(tidy_copies());
    }
    // A format of pdfTeX, larger than one piece of work.
    static std::string format(const std::string &engine = "pdftex") {
        std::string text = "W2TX" + std::string("\0\0\0\x08", 4) + engine;
        text.resize(16, '\0');
        for (int i = 0; text.size() < 3 << 20; i++)
            text += std::to_string(i);
        return text;
    }
    void pack(const std::string &text) {
        const gzFile file = gzopen(original_.c_str(), "wb1");
        ASSERT_EQ(gzwrite(file, text.data(), static_cast<unsigned>(text.size())),
                  static_cast<int>(text.size()));
        gzclose(file);
    }
    // kpsewhich; ANSWERS are further cases, which come first.
    void distribution(const std::string &answers) {
        const std::string path = home_.file(
            "bin/kpsewhich", "#!/bin/sh\ncase \"$*\" in\n" + answers + "*show-path=cnf) echo " +
                                 home_.path("tree") + ";;\n*show-path=ls-R) echo " + home_.path("tree") +
                                 ";;\n*show-path=fmt) echo .:" + home_.path("own") + ":'!!'" +
                                 home_.path("tree") + ";;\n*my.fmt) echo " + original_ + ";;\nesac\n");
        ::chmod(path.c_str(), 0755);
        search_.program = home_.path("bin/pdftex");
    }
    CopyState state() {
        found_ = {};
        return find_copy(search_, environment_, home_.path("work"), &found_);
    }
    CopyState copied(const std::function<bool()> &goes_on = [] { return true; }) {
        copy_format(search_, environment_, goes_on);
        return state();
    }
    std::string copy() const {
        std::ifstream in(found_.folder + "/my.fmt", std::ios::binary);
        return {std::istreambuf_iterator<char>(in), {}};
    }
    // The names in the folder of the copies that are neither copies nor searches.
    int leftovers() const {
        int count = 0;
        for (const auto &entry : std::filesystem::directory_iterator(home_.path("cache/quillon/formats")))
            count += entry.path().filename().string().starts_with("part-") ||
                     entry.path().string().ends_with(".tmp");
        return count;
    }

    TemporaryHome home_;
    toolhost::FormatSearch search_ = {"", "my", "my"};
    toolhost::Variables environment_ = {{"HOME", "/h"}};
    FormatCopy found_;
    std::string original_;
};

TEST_F(Unpacking, MakesACopyThatIsTheFormatWithoutCompression) {
    ASSERT_EQ(copied(), CopyState::ready);
    EXPECT_EQ(copy(), format());
    EXPECT_EQ(found_.original, original_);
    EXPECT_EQ(leftovers(), 0);
}

TEST_F(Unpacking, KnowsWhatTheSearchRestsOn) {
    FormatPlace place;
    ASSERT_TRUE(find_format(search_, environment_, place));
    EXPECT_EQ(place.path, original_);
    std::vector<std::string> paths;
    for (const auto &[path, stamp] : place.stamps) {
        EXPECT_EQ(stamp, toolhost::stamp_of(path));
        paths.push_back(path.substr(home_.root().size()));
    }
    EXPECT_EQ(paths, (std::vector<std::string>{"/tree/texmf.cnf", "/tree/ls-R", "/tree/ls-r", "/tree/aliases",
                                               "/own"}));
    EXPECT_EQ(place.variables, (std::vector<std::string>{"ELSEWHERE", "HOME", "TEXFORMATS", "TEXMF",
                                                         "TEXMFCNF", "TEXMFDBS", "TEXMFHOME"}));
}

TEST_F(Unpacking, ANewFormatInAFolderBeforeEndsTheUseOfTheCopy) {
    home_.folder("own");
    ASSERT_EQ(copied(), CopyState::ready);
    home_.file("own/my.fmt");
    EXPECT_EQ(state(), CopyState::unknown);
}

TEST_F(Unpacking, ASearchThatHoldsForOneFolderAloneIsNotWrittenDown) {
    for (const char *const path :
         {"*show-path=fmt) echo ./formats:/tree;;\n", "*show-path=fmt) echo /tree//;;\n",
          "*show-path=cnf) echo;;\n", "*my.fmt) echo ./my.fmt;;\n", "*my.fmt) echo;;\n"}) {
        distribution(path);
        EXPECT_EQ(copied(), CopyState::unknown) << path;
    }
    std::filesystem::remove(home_.path("bin/kpsewhich"));
    EXPECT_EQ(copied(), CopyState::unknown);
    EXPECT_TRUE(std::filesystem::is_empty(home_.path("cache/quillon/formats")));
}

TEST_F(Unpacking, WhatIsDamagedOrNoFormatGetsNoCopyAndIsNotTriedAgain) {
    std::string packed = home_.read("tree/my.fmt");
    std::string broken_sum = packed;
    broken_sum[packed.size() - 6] ^= 1;
    std::string broken = packed;
    broken[packed.size() / 2] ^= 0x55;
    for (const std::string &text : {std::string(), std::string("W2TX"), packed.substr(0, packed.size() / 2),
                                    packed.substr(0, packed.size() - 4), broken_sum, broken, format()}) {
        home_.file("tree/my.fmt", text);
        EXPECT_EQ(copied(), CopyState::none);
        EXPECT_EQ(leftovers(), 0);
    }
    for (const std::string &text :
         {format("tex"), format("pdftexx"), std::string("no format"), std::string(100, 'W')}) {
        pack(text);
        EXPECT_EQ(copied(), CopyState::none);
        EXPECT_EQ(leftovers(), 0);
    }
    pack(format());
    EXPECT_EQ(state(), CopyState::unknown);
    EXPECT_EQ(copied(), CopyState::ready);
}

TEST_F(Unpacking, AFormatThatChangesMeanwhileGetsNoCopy) {
    int asked = 0;
    EXPECT_EQ(copied([&] {
                  if (++asked == 4)
                      pack(format() + "more");
                  return true;
              }),
              CopyState::unknown);
    EXPECT_GE(asked, 4);
    EXPECT_EQ(leftovers(), 0);
    ASSERT_EQ(copied(), CopyState::ready);
    EXPECT_EQ(copy(), format() + "more");
}

TEST_F(Unpacking, WorkThatIsEndedLeavesNothing) {
    int asked = 0;
    ASSERT_EQ(copied([&asked] { return ++asked > 0; }), CopyState::ready);
    EXPECT_GT(asked, 4);
    std::filesystem::remove_all(found_.folder);
    for (int answers = 0; answers < asked; answers++) {
        int left = answers;
        EXPECT_EQ(copied([&left] { return left-- > 0; }), CopyState::unknown) << answers;
        EXPECT_EQ(leftovers(), 0);
    }
}

TEST_F(Unpacking, ACopyThatIsThereIsNotMadeAgain) {
    ASSERT_EQ(copied(), CopyState::ready);
    const auto before = toolhost::stamp_of(found_.folder + "/my.fmt");
    search_.progname = "other";
    ASSERT_EQ(copied(), CopyState::ready);
    EXPECT_EQ(toolhost::stamp_of(found_.folder + "/my.fmt"), before);
}

TEST_F(Unpacking, CopiesWhoseOriginalHasChangedOrGoneAreDropped) {
    ASSERT_EQ(copied(), CopyState::ready);
    ASSERT_TRUE(tidy_copies());
    EXPECT_TRUE(std::filesystem::exists(found_.folder));
    pack(format() + "new");
    ASSERT_TRUE(tidy_copies());
    EXPECT_FALSE(std::filesystem::exists(found_.folder));
    ASSERT_EQ(copied(), CopyState::ready);
    std::filesystem::remove(original_);
    ASSERT_TRUE(tidy_copies());
    EXPECT_FALSE(std::filesystem::exists(found_.folder));
}

TEST_F(Unpacking, WhatWasLeftByAKilledProgramIsRemoved) {
    home_.file("cache/quillon/formats/part-1/my.fmt");
    home_.file("cache/quillon/formats/abc.search.77");
    home_.file("cache/quillon/formats/without-a-note/my.fmt");
    home_.file("cache/quillon/formats/abc.search");
    ASSERT_TRUE(tidy_copies());
    for (const char *const name : {"part-1", "abc.search.77", "without-a-note"})
        EXPECT_FALSE(std::filesystem::exists(home_.path(std::string("cache/quillon/formats/") + name)))
            << name;
    EXPECT_TRUE(std::filesystem::exists(home_.path("cache/quillon/formats/abc.search")));
}

TEST_F(Unpacking, TheCopiesThatWereNotUsedForLongestMakeRoom) {
    // Files with holes, whose length alone counts.
    for (const char *const name : {"old", "new"}) {
        const std::string folder = "cache/quillon/formats/" + std::string(name);
        const std::string big = home_.file(folder + "/big.fmt", "x");
        const std::string its_original = home_.file(std::string("tree/") + name);
        home_.file(folder + "/original",
                   common::joined_fields({its_original, toolhost::stamp_of(its_original)}));
        ASSERT_EQ(::truncate(big.c_str(), 110'000'000), 0);
    }
    struct timespec times[2] = {{1000, 0}, {1000, 0}};
    ASSERT_EQ(::utimensat(AT_FDCWD, home_.path("cache/quillon/formats/old").c_str(), times, 0), 0);
    ASSERT_EQ(copied(), CopyState::ready);
    EXPECT_FALSE(std::filesystem::exists(home_.path("cache/quillon/formats/old")));
    EXPECT_TRUE(std::filesystem::exists(home_.path("cache/quillon/formats/new")));
}

TEST_F(Unpacking, UsingACopyMakesItYoung) {
    ASSERT_EQ(copied(), CopyState::ready);
    struct timespec times[2] = {{1000, 0}, {1000, 0}};
    ASSERT_EQ(::utimensat(AT_FDCWD, found_.folder.c_str(), times, 0), 0);
    ASSERT_EQ(state(), CopyState::ready);
    struct stat status;
    ASSERT_EQ(::stat(found_.folder.c_str(), &status), 0);
    EXPECT_GT(status.st_mtim.tv_sec, 1000);
}

TEST_F(Unpacking, ACacheFolderOfSomebodyElseIsNotUsed) {
    if (::geteuid() != 0)
        GTEST_SKIP() << "only root can give a folder away";
    ASSERT_EQ(::chown(home_.path("cache/quillon/formats").c_str(), 65534, 65534), 0);
    EXPECT_FALSE(tidy_copies());
}

TEST_F(Unpacking, ACacheFolderThatCannotBeWrittenGetsNoCopy) {
    quillon::test::give_away(home_.root());
    for (const auto &entry : std::filesystem::recursive_directory_iterator(home_.root()))
        quillon::test::give_away(entry.path());
    ::chmod(home_.path("cache/quillon/formats").c_str(), 0500);
    EXPECT_EQ(quillon::test::as_ordinary_user([this] { return copied() == CopyState::unknown ? 0 : 1; }), 0);
}

} // namespace
} // namespace background
