#include "kpath/font_map.h"

#include <malloc.h>
#include <sys/resource.h>

#include <cerrno>
#include <cstdint>

#include "kpath/utilities.h"
#include "support/recording_front.h"
#include "support/temporary_home.h"

using namespace quillon;
using namespace quillon::test;

namespace {

class FontMaps : public testing::Test {
  protected:
    TemporaryHome home_;
    RecordingFront front_;

    // A map lives as long as the process.
    static std::vector<FontMap *> &maps() {
        static auto *const made = new std::vector<FontMap *>;
        return *made;
    }
    std::string lookup(const std::string &map_file, const char *name) {
        home_.file("work/texfonts.map", map_file);
        std::string folder = home_.path("work/");
        char *list[] = {folder.data(), nullptr};
        maps().push_back(map_create(list));
        return taken(map_lookup(maps().back(), name));
    }
    std::vector<std::string> lines(const std::string &bytes) {
        home_.file("work/lines", bytes);
        std::FILE *const file = xfopen("lines", "r");
        std::vector<std::string> found;
        while (char *const line = read_line(file))
            found.push_back(taken(line));
        xfclose(file, "lines");
        return found;
    }
    using List = std::vector<std::string>;
};

} // namespace

TEST_F(FontMaps, AliasIsFoundWithAndWithoutItsSuffix) {
    const char *const map = "ptmr8r Times-Roman % comment\n";
    EXPECT_EQ(lookup(map, "Times-Roman.tfm"), "ptmr8r.tfm");
    EXPECT_EQ(lookup(map, "Times-Roman"), "ptmr8r");
    EXPECT_EQ(lookup(map, "Times-Bold"), "(null)");
    EXPECT_EQ(lookup(map, "Times-Bold.tfm"), "(null)");
    EXPECT_EQ(lookup("ptmr8r.pk Times-Roman\n", "Times-Roman.tfm"), "ptmr8r.pk");
    EXPECT_EQ(lookup("other Times.tfm\n", "Times.tfm"), "other.tfm");
}

TEST_F(FontMaps, MissingAliasIsReportedWithItsLine) {
    EXPECT_EQ(lookup("% nothing\n\nlonely\nptmr \t Times more tokens\n", "Times"), "ptmr");
    EXPECT_EQ(front_->printed,
              home_.path("work/texfonts.map") + ":3: Alias missing for filename `lonely'.\n");
}

TEST_F(FontMaps, CommentBeginsAtTheLastPercentSign) {
    EXPECT_EQ(lookup("a%b alias % comment\n", "alias"), "a%b");
}

TEST_F(FontMaps, OfAliasesWithOneByteSumOnlyTheLastIsFound) {
    const char *const map = "one ab\ntwo ba\n";
    EXPECT_EQ(lookup(map, "ab"), "(null)");
    EXPECT_EQ(lookup(map, "ba"), "two");
}

TEST_F(FontMaps, RepeatedAliasKeepsItsFirstFileName) {
    EXPECT_EQ(lookup("one ab\ntwo ab\n", "ab"), "one");
}

TEST_F(FontMaps, BytesAboveAsciiCountAsSigned) {
    // 0xE9 counts as -23, so "\xe9\x18" sums to 1, as "\x01" does: they share a bucket.
    EXPECT_EQ(lookup("one \xe9\x18\ntwo \x01\n", "\xe9\x18"), "(null)");
    EXPECT_EQ(lookup("one \xe9\ntwo \x01\n", "\xe9"), "one");
}

TEST_F(FontMaps, FoldersWithoutAMapAreSkipped) {
    std::string none = home_.path("none/");
    char *list[] = {none.data(), nullptr};
    maps().push_back(map_create(list));
    EXPECT_EQ(taken(map_lookup(maps().back(), "x")), "(null)");
}

TEST_F(FontMaps, LastLineWithoutALineEndIsLost) {
    EXPECT_EQ(lines("a\nb"), List{"a"});
    EXPECT_EQ(lines("a\r\nb\n"), (List{"a", "", "b"}));
    EXPECT_EQ(lines(std::string(1000, 'x') + "\n"), List{std::string(1000, 'x')});
    EXPECT_EQ(lookup("one ab", "ab"), "(null)");
}

TEST_F(FontMaps, SuffixesComeAfterTheLastSlash) {
    EXPECT_EQ(find_suffix("dir.d/file"), nullptr);
    EXPECT_STREQ(find_suffix("file.tex"), "tex");
    EXPECT_STREQ(find_suffix("a.b.c"), "c");
    EXPECT_STREQ(find_suffix("file."), "");
    EXPECT_EQ(find_suffix("file"), nullptr);
    EXPECT_EQ(taken(remove_suffix("dir.d/file.tex")), "dir.d/file");
    EXPECT_EQ(taken(remove_suffix("dir.d/file")), "(null)");
}

TEST_F(FontMaps, NamesAreExtendedOnlyWhenTheyHaveNoSuffix) {
    EXPECT_EQ(taken(extend_filename("cmr10", "tfm")), "cmr10.tfm");
    EXPECT_EQ(taken(extend_filename("cmr10.pk", "tfm")), "cmr10.pk");
    EXPECT_EQ(taken(always_extend_filename("a.b", "tex")), "a.b.tex");
}

TEST_F(FontMaps, AllocationOfNothingIsOneByte) {
    void *const block = xmalloc(0);
    ASSERT_NE(block, nullptr);
    EXPECT_GE(::malloc_usable_size(block), 1u);
    std::free(block);
    void *const cleared = xcalloc(0, 8);
    ASSERT_NE(cleared, nullptr);
    std::free(cleared);
}

TEST_F(FontMaps, FailedAllocationsEndTheRun) {
    volatile std::size_t huge = SIZE_MAX - 8;
    EXPECT_THROW(xmalloc(huge), Waited);
    EXPECT_TRUE(front_->printed.starts_with("xmalloc: request for 18446744073709551607 bytes failed.\n"));
    front_->printed.clear();
    EXPECT_THROW(xcalloc(huge, 2), Waited);
    EXPECT_TRUE(front_->printed.starts_with(
        "xcalloc: request for 18446744073709551607 elements of size 2 failed.\n"));
    front_->printed.clear();
    void *const block = xmalloc(1);
    EXPECT_THROW(static_cast<void>(xrealloc(block, huge)), Waited);
    EXPECT_TRUE(front_->printed.starts_with("xrealloc: request for "));
    EXPECT_NE(front_->printed.find(" to be 18446744073709551607 bytes failed.\n"), std::string::npos);
    EXPECT_EQ(exit_status, 1);
    std::free(block);
    std::free(xrealloc(nullptr, 1));
}

TEST_F(FontMaps, BlocksOfTheOtherAllocatorAreChecked) {
    void *const first = myxmalloc(10), *const second = myxmalloc(0);
    myfree(first);
    myfree(second);
    myfree(nullptr);
    int other = 0;
    EXPECT_THROW(myfree(&other), Waited);
    EXPECT_EQ(exit_status, 1);
}

TEST_F(FontMaps, CopiesAndJoins) {
    EXPECT_EQ(taken(xstrdup("x")), "x");
    EXPECT_EQ(taken(concat("a", "b")), "ab");
    EXPECT_EQ(taken(concat3("a", "", "c")), "ac");
}

TEST_F(FontMaps, OpeningAMissingFileEndsTheRunWithTheSystemsNumber) {
    EXPECT_THROW(xfopen("none", "r"), Waited);
    EXPECT_TRUE(front_->printed.starts_with("none: No such file or directory\n"));
    EXPECT_EQ(exit_status, ENOENT);
}

TEST_F(FontMaps, MapOfCommentsAndBlankLinesAloneIsEmpty) {
    EXPECT_EQ(lookup("% one alias\n\n  \t\n%\n", "alias"), "(null)");
    EXPECT_EQ(lookup("", "alias"), "(null)");
    EXPECT_EQ(front_->printed, "");
    // Only the last "%" of a line begins a comment.
    EXPECT_EQ(lookup("%%%\n", "alias"), "(null)");
    EXPECT_EQ(front_->printed, home_.path("work/texfonts.map") + ":1: Alias missing for filename `%%'.\n");
}

TEST_F(FontMaps, MapOfOneTokenSaysSo) {
    EXPECT_EQ(lookup("lonely\n", "lonely"), "(null)");
    EXPECT_EQ(front_->printed,
              home_.path("work/texfonts.map") + ":1: Alias missing for filename `lonely'.\n");
    front_->printed.clear();
    // A last line without a line end is lost.
    EXPECT_EQ(lookup("lonely", "lonely"), "(null)");
    EXPECT_EQ(front_->printed, "");
}

TEST_F(FontMaps, AHundredMegabytesAreReadByLine) {
    const std::string path = home_.path("work/texfonts.map");
    {
        std::ofstream out(path, std::ios::binary);
        const std::string comment = "%" + std::string(8190, 'c') + "\n";
        for (int i = 0; i < 12800; i++)
            out << comment;
        out << "real alias\n";
    }
    ASSERT_GT(std::filesystem::file_size(path), 100'000'000u);
    const auto high_water = [] {
        rusage usage;
        ::getrusage(RUSAGE_SELF, &usage);
        return usage.ru_maxrss;
    };
    const long before = high_water();
    std::string folder = home_.path("work/");
    char *list[] = {folder.data(), nullptr};
    maps().push_back(map_create(list));
    EXPECT_EQ(taken(map_lookup(maps().back(), "alias")), "real");
#ifndef __SANITIZE_ADDRESS__                     // whose allocator keeps freed memory for a while
    EXPECT_LT(high_water() - before, 20 * 1024); // kilobytes
#else
    static_cast<void>(before);
#endif
}
